// The text functions: STRCAT, CON2STR and STRING build the statement's text, the block words
// (HYBLOCK, DYBLOCK, GNBLOCK, FGBLOCK) name the blocks that hold the stock, and INFOFILE marks the
// dates of an information file on the bars. Text grows in the statement's m_strDrawText, which a
// later statement or a draw command reads by the statement's name.

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "engine/argument_scan.h"
#include "engine/draw_record.h"
#include "engine/eval_code.h"
#include "engine/eval_context.h"
#include "engine/function_util.h"
#include "engine/text_scan.h"
#include "host/encoding.h"
#include "host/files.h"
#include "host/global.h"
#include "host/group.h"
#include "host/text_fields.h"
#include "model/indicator.h"

namespace {

// Statement kinds of the text functions.
constexpr short kTextOfBlocks = 100;
constexpr short kBuiltText = 101;

// One parsed line of an information file.
struct tagDbInfoFile {
    int m_lDate = 0;
    char m_szTitle[64] = {};  // not zero-terminated when 64 long
    float m_fValue1 = 0;
    float m_fValue2 = 0;  // the value that is drawn
    float m_fValue3 = 0;
};

// The field up to the next "|" of a line from `pos`, moving `pos` behind it; false if there is no
// further "|".
bool NextField(const std::string& line, size_t* pos, std::string* field) {
    const size_t bar = line.find('|', *pos);
    if (bar == std::string::npos) return false;
    *field = line.substr(*pos, bar - *pos);
    *pos = bar + 1;
    return true;
}

// The records of an information file: date|title|first|second|third per line, in date order. A
// line without its date, first or second number ends the reading; what came before counts.
std::vector<tagDbInfoFile> ParseInfoFile(const std::string& text) {
    std::vector<tagDbInfoFile> records;
    size_t start = 0;
    while (start < text.size()) {
        size_t end = text.find_first_of("\r\n", start);
        if (end == std::string::npos) end = text.size();
        const std::string line = text.substr(start, end - start);
        start = end + 1;
        if (line.empty()) continue;
        tagDbInfoFile record;
        size_t pos = 0;
        std::string field;
        if (!NextField(line, &pos, &field)) break;
        record.m_lDate = std::atoi(field.c_str());
        if (!NextField(line, &pos, &field)) field = line.substr(pos), pos = line.size();
        const std::string title = ny::Trim(field);
        std::memcpy(record.m_szTitle, title.data(), std::min(title.size(), sizeof(record.m_szTitle)));
        if (!NextField(line, &pos, &field)) break;
        record.m_fValue1 = static_cast<float>(std::atof(ny::Trim(field).c_str()));
        if (!NextField(line, &pos, &field)) break;
        record.m_fValue2 = static_cast<float>(std::atof(ny::Trim(field).c_str()));
        if (!NextField(line, &pos, &field)) field = line.substr(pos);
        record.m_fValue3 = static_cast<float>(std::atof(ny::Trim(field).c_str()));
        records.push_back(record);
    }
    return records;
}

// The information file of a kind and a stock: data/infofile/<kind>/<sz|sh>/<code>.dat.
std::string InfoFilePath(const std::string& kind, int stockId) {
    char name[32];
    std::snprintf(name, sizeof(name), "%s/%06d.dat", stockId / 1000000 == 1 ? "sz" : "sh", stockId % 1000000);
    return g_MyExePath + "data/infofile/" + ny::GbkToUtf8(kind) + "/" + name;
}

// The format of CON2STR by its number of decimals: 0 to 8, 2 for anything else below 8.
const char* DecimalsFormat(int n) {
    static const char* const kFormats[] = {"%.0f", "%.01f", "%.02f", "%.03f", "%.04f",
                                           "%.05f", "%.06f", "%.07f", "%.08f"};
    if (n >= 8) return kFormats[8];
    return n >= 0 ? kFormats[n] : kFormats[2];
}

}  // namespace

// A text argument of STRCAT, appended to the statement's text: a quoted literal, an expression
// whose text function appends by itself, or the name of a statement whose text is taken. Blanks
// around a name are left out. Code 16 for a name that is no statement, 7 for a failed one.
char CIndicator::AppendTextArgument(CExpression* expr, bool last) {
    ny::SkipBlanks(*this);
    char* const start = Context().m_pCursor;
    char* const delimiter = last ? ny::FindClosingParenthesis(start) : ny::FindTopLevelComma(start);
    if (delimiter == nullptr) return NY_EVAL_UNTERMINATED;
    if (*start == '\'') {
        std::string literal;
        if (const char rc = ny::ReadQuotedText(*this, &literal)) return rc;
        expr->m_strDrawText += literal;
        char* const end = last ? ny::FindClosingParenthesis(Context().m_pCursor) : ny::FindTopLevelComma(Context().m_pCursor);
        if (end == nullptr) return NY_EVAL_UNTERMINATED;
        Context().m_pCursor = end + 1;
        return 0;
    }
    const CString before = expr->m_strDrawText;
    {
        ny::Operand trial(*this, 0, static_cast<short>(m_nBarCount - 1));
        char flag = static_cast<char>(last ? 3 : 1);
        ReadExp(trial.values(), &trial.from, &trial.to, &flag, expr);
    }
    Context().m_pCursor = delimiter + 1;
    if (expr->m_strDrawText != before) return 0;
    const std::string name = ny::Trim(std::string(start, std::min<size_t>(delimiter - start, ny::kDrawTextBytes)));
    for (const CExpression* statement : m_arExpressions) {
        if (statement->m_strName != name) continue;
        if (!statement->m_cComputed) return NY_EVAL_UNKNOWN_WORD;
        expr->m_strDrawText += statement->m_strDrawText;
        return 0;
    }
    return NY_EVAL_CONSTANT_ARGUMENT;
}

char CIndicator::ReadSTRCAT(char*, float*, short*, short*, char, char*, CExpression* expr) {
    if (expr == nullptr) return 0;
    expr->m_nType = kBuiltText;
    if (const char rc = BeginCall(2)) return rc;
    if (const char rc = AppendTextArgument(expr, false)) return rc;
    return AppendTextArgument(expr, true);
}

char CIndicator::ReadCON2STR(char*, float* out, short* from, short* to, char, char* isSeries,
                             CExpression* expr) {
    if (const char rc = BeginCall(2)) return rc;
    ny::Operand x(*this, *from, *to), decimals(*this, 0, *to);
    if (const char rc = ReadValueArgument(x.values(), &x.from, &x.to, &x.isSeries, 1, false)) return rc;
    if (!x.isSeries && x.values()[0] == 0.0f) return NY_EVAL_CONSTANT_ARGUMENT;
    if (const char rc = ReadValueArgument(decimals.values(), &decimals.from, &decimals.to,
                                          &decimals.isSeries, 1, true))
        return rc;
    if (const char rc = MergeRange(from, to, x.from, x.to)) return rc;
    const ny::BarSpan span(*from, *to, m_nBarCount);
    for (int i = span.first; i <= span.last; ++i) out[i] = x.ValueAt(i, ny::SpreadRule::Always);
    if (!x.isSeries) out[0] = x.values()[0];
    *isSeries = x.isSeries;
    if (expr == nullptr) return 0;
    char text[400];
    // A negative count, however small, takes the two decimals of any count out of the table.
    const double count = decimals.values()[0];
    const int n = count < 0 ? -1 : ny::TruncToInt(count + 0.5);
    std::snprintf(text, sizeof(text), DecimalsFormat(n), static_cast<double>(x.values()[0]));
    expr->m_strDrawText += text;
    expr->m_nType = kBuiltText;
    return 0;
}

char CIndicator::ReadSTRING(char*, float*, short* from, short* to, char permission, char*,
                            CExpression* expr) {
    if (expr == nullptr) return 0;
    expr->m_nType = kBuiltText;
    if (const char rc = BeginCall(3)) return rc;
    ny::PooledBuffer truth(Context().pool, m_nBarCount);
    char isSeries = 0;
    if (const char rc = ReadConditionArgument(truth.bytes(), from, to, &isSeries, permission, false)) return rc;
    const bool holds = truth.bytes()[isSeries && *to >= 0 ? *to : 0] != 0;
    std::string yes, no;
    if (const char rc = ny::ReadQuotedText(*this, &yes)) return rc;
    char* second = std::strchr(Context().m_pCursor, '\'');
    if (second == nullptr) return NY_EVAL_UNTERMINATED;
    Context().m_pCursor = second;
    if (const char rc = ny::ReadQuotedText(*this, &no)) return rc;
    if (const char rc = ny::StepBehindParenthesis(*this)) return rc;
    expr->m_strDrawText += holds ? yes : no;
    return 0;
}

char CIndicator::ReadINDUSTRY(char* word, float*, short*, short*, char, char*, CExpression* expr) {
    if (expr == nullptr) return 0;
    expr->m_nType = kTextOfBlocks;
    static const struct {
        const char* word;
        const char* category;
        bool firstOnly;
    } kWords[] = {{"HYBLOCK", "行业", true}, {"DYBLOCK", "地区", true},
                  {"GNBLOCK", "概念", false}, {"FGBLOCK", "风格", false}};
    for (const auto& entry : kWords) {
        if (std::strcmp(word, entry.word) != 0) continue;
        std::vector<CString> names;
        CGroup::GetGroup(entry.category, names);
        for (const CString& name : names) {
            CGroup group;
            group.m_strCategory = entry.category;
            group.m_strName = name;
            group.init();
            if (group.ID2Pos(m_lStockID) < 0) continue;
            expr->m_strDrawText += name + " ";
            if (entry.firstOnly) return 0;
        }
        return entry.firstOnly ? NY_EVAL_NOT_FOUND : 0;
    }
    return NY_EVAL_NOT_FOUND;
}

char CIndicator::ReadINFOFILE(char*, float*, short* from, short* to, char, char*, CExpression* expr) {
    if (const char rc = BeginCall(2)) return rc;
    std::string kind;
    if (const char rc = ny::ReadQuotedText(*this, &kind)) return rc;
    // The comma follows the closing quote at once.
    if (*Context().m_pCursor == '\0' || *Context().m_pCursor == ';') return NY_EVAL_UNTERMINATED;
    ++Context().m_pCursor;
    ny::Operand idArgument(*this, *from, *to);
    char flag = 1;
    const char idCode = ReadExp(idArgument.values(), &idArgument.from, &idArgument.to, &flag, nullptr);
    const float constant = idArgument.values()[0];
    if (!flag && constant == 0.0f) return NY_EVAL_CONSTANT_ARGUMENT;
    const float v = !flag && (constant == 1.0f || constant == -1.0f) ? constant : idArgument.AtFirstBar();
    if (v != -1.0f && !(v > 0.0f)) return idCode;
    if (expr == nullptr) return NY_EVAL_DRAW_NESTED;
    const int stockId = v == -1.0f ? m_lStockID : ny::TruncToInt(v);
    std::string text;
    if (!ny::ReadWholeFile(InfoFilePath(kind, stockId), &text) || text.empty()) return NY_EVAL_UNKNOWN_WORD;
    ny::DrawRecord record(*expr);
    const ny::BarSpan span(*from, *to, m_nBarCount);
    int start = span.first;
    for (const tagDbInfoFile& info : ParseInfoFile(text)) {
        const int id = m_nNextInfoID++;
        for (int j = start; j <= span.last; ++j) {
            if (m_pHisDay[j].m_lTime != info.m_lDate) {
                record.Set(j, 0, -1.0f);
                record.Set(j, 1, DRAWNULL);
                continue;
            }
            record.Set(j, 0, static_cast<float>(id));
            record.Set(j, 1, info.m_fValue2);
            if (info.m_szTitle[0] != '\0') {
                tagHisTechInfoFile tip;
                tip.m_lID = id;
                std::memcpy(tip.m_szText, info.m_szTitle, strnlen(info.m_szTitle, sizeof(info.m_szTitle)));
                m_arInfoRecords.push_back(tip);
            }
            start = j + 1;
            break;
        }
    }
    return ny::StepBehindParenthesis(*this);
}
