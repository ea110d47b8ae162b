// The market-detail words: DYNAINFO reads a figure of the stock's live quote, FINANCE one of its
// financial record, MFLOW a series of order-flow figures from its extended day file. DYNAINFO and
// FINANCE give the value of now; their caller drops the code, so a stock without data reads 0.

#include <cstring>
#include <string>

#include "engine/eval_code.h"
#include "engine/eval_context.h"
#include "engine/eval_util.h"
#include "engine/function_util.h"
#include "host/files.h"
#include "host/stockdb.h"
#include "model/indicator.h"

namespace {

// DYNAINFO numbers that exist but hold no figure of the quote: they read 0.
bool IsEmptyQuoteNumber(short id) { return id == 40 || (id >= 50 && id <= 58); }

// Shares and money of the financial record are stored in units of 10,000.
float Scaled(double stored) { return static_cast<float>(stored * 10000.0); }

// Size of one record of the extended day file, and the number of its 32-bit words.
constexpr size_t kFlowRecordBytes = 260;

float FlowWord(const char* record, int word) {
    float value;
    std::memcpy(&value, record + 4 * word, sizeof(value));
    return value;
}

// The value of MFLOW(n) in one record, or false where n writes nothing. The sums are taken in
// double and rounded once.
bool FlowValue(const char* record, int n, float* value) {
    auto sum = [record](int first, int count) {
        double total = 0;
        for (int k = first; k < first + count; ++k) total += FlowWord(record, k);
        return static_cast<float>(total);
    };
    // Word 24, the huge sell orders' count, is read too, as the catalog's text for 24 promises.
    if (n >= 1 && n <= 24) {
        *value = FlowWord(record, n);
        return true;
    }
    // Two or four words summed: the first word of the sum and how many.
    static const struct {
        int n, first, count;
    } kSums[] = {{26, 11, 2}, {27, 9, 2}, {29, 15, 2}, {30, 13, 2}, {31, 1, 4}, {32, 3, 2},
                 {33, 1, 2},  {34, 5, 4}, {35, 7, 2},  {36, 5, 2}};
    for (const auto& entry : kSums) {
        if (entry.n != n) continue;
        *value = sum(entry.first, entry.count);
        return true;
    }
    return false;
}

// Order-flow formulas refuse a stock without extended data: the A shares have it.
bool IsOrderFlowFormula(const CString& name) {
    return name == "DDX" || name == "DDY" || name == "DDZ" || name == "DDJ";
}
bool HasOrderFlow(const CStock& stock) { return (stock.m_dwKind & (NY_KIND_SH_A | NY_KIND_SZ_A)) != 0; }

}  // namespace

char CIndicator::ReadDYNAINFO(float* out, short id) {
    if (id < 3 || id > 59) return 0;
    const CStock* stock = g_MyGetStock(m_lStockID);
    if (stock == nullptr) return NY_EVAL_NO_DATA;
    if (IsEmptyQuoteNumber(id)) {
        out[0] = 0.0f;
        return 0;
    }
    const short code = ny::DynaInfoQuoteCode(id);
    if (code >= 0) out[0] = stock->GetValue(code);
    return 0;
}

char CIndicator::ReadFINANCE(float* out, short id) {
    out[0] = 0.0f;
    if (id < 1 || id > 41) return 0;
    const CStock* stock = g_MyGetStock(m_lStockID);
    if (stock == nullptr) return NY_EVAL_NO_DATA;
    const double total = stock->GetFinanceValue(NY_FINANCE_TOTAL_SHARES);
    const double floating = stock->GetFinanceValue(NY_FINANCE_FLOAT_SHARES);
    switch (id) {
        case 7: out[0] = Scaled(floating); break;
        case 18: case 33: case 34: out[0] = stock->GetFinanceValue(id); break;
        case 32:
            if (total > 0) out[0] = static_cast<float>(stock->GetFinanceValue(NY_FINANCE_UNDISTRIBUTED) / total);
            break;
        case 40: out[0] = Scaled(floating * stock->m_fNew); break;
        case 41: out[0] = Scaled(total * stock->m_fNew); break;
        case 1: case 5: case 6: case 10: case 17: case 19: case 21: case 28: case 30: case 31:
            out[0] = Scaled(stock->GetFinanceValue(id));
            break;
        default: break;
    }
    return 0;
}

char CIndicator::ReadMFlow(char*, float* out, short* from, short* to, char permission, char*) {
    if (m_nPeriod != 1) return NY_EVAL_EMPTY_RANGE;
    if (const char rc = BeginCall(1)) return rc;
    int n = 0;
    {
        ny::PooledBuffer argument(Context().pool, m_nBarCount);
        char flag = static_cast<char>(permission + 2);
        if (const char rc = ReadExp(argument.floats(), from, to, &flag, nullptr)) return rc;
        n = static_cast<short>(ny::TruncToInt(argument.floats()[0]));
    }
    if (n < 1 || n > 48) return NY_EVAL_OUT_OF_RANGE;
    const CStock* stock = g_MyGetStock(m_lStockID);
    if (stock == nullptr) return NY_EVAL_NO_DATA;
    if (!HasOrderFlow(*stock) && m_lStockID != 1 && IsOrderFlowFormula(m_strName))
        return NY_EVAL_NO_DATA;
    std::string bytes;
    if (!ny::ReadWholeFile(stock->GetExtDayFilePath(), &bytes)) return 0;
    const size_t records = bytes.size() / kFlowRecordBytes;
    if (records == 0) return NY_EVAL_NO_DATA;
    const ny::BarSpan span(*from, *to, m_nBarCount);
    size_t start = 0;
    for (int i = span.first; i <= span.last; ++i) {
        for (size_t r = start; r < records; ++r) {
            const char* record = bytes.data() + r * kFlowRecordBytes;
            int date;
            std::memcpy(&date, record, sizeof(date));
            if (date != m_pHisDay[i].m_lTime) continue;
            float value;
            if (FlowValue(record, n, &value)) out[i] = value;
            start = r + 1;
            break;
        }
    }
    return 0;
}
