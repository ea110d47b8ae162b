// DRAWSIGN(A, B, C): the calls of the built-in SAR expert on a chart. A shows the core text in
// the corner (and the position on every bar), B the entry and exit marks with their tips, C the
// flag at the last bar. The expert runs on the stock's own day file with the step of the stock's
// expert file, whatever bars the formula has.

#include <algorithm>
#include <cstdio>
#include <memory>
#include <string>

#include "engine/draw_record.h"
#include "engine/eval_code.h"
#include "engine/expert_sar.h"
#include "engine/text_scan.h"
#include "host/files.h"
#include "host/stockdb.h"
#include "model/indicator.h"

namespace {

using ny::DrawRecord;
using ny::Operand;

// The stock's expert settings: bytes 0..3 the stock id, byte 8 the kind, bytes 9..12 the step.
struct ExpertSettings {
    enum { Read, Missing, Short, Foreign } state = Missing;
    int kind = 0;
    float step = 0;
};

ExpertSettings ReadExpertFile(const CStock& stock) {
    constexpr size_t kShortest = 33, kRead = 37;
    ExpertSettings settings;
    std::string bytes;
    if (!ny::ReadWholeFile(stock.GetOptInfoFilePathLocal(), &bytes)) return settings;
    bytes.resize(std::min(bytes.size(), kRead));
    if (bytes.size() < kShortest) settings.state = ExpertSettings::Short;
    else if (ny::LoadInt(bytes.data()) != stock.m_lStockID) settings.state = ExpertSettings::Foreign;
    else settings = {ExpertSettings::Read, static_cast<unsigned char>(bytes[8]), ny::LoadFloat(bytes.data() + 9)};
    return settings;
}

// Kinds of expert file the SAR expert serves.
bool ServesKind(int kind) { return kind == 0 || kind == 3 || kind == 4 || kind == 6; }

std::string Format(const char* pattern, float price) {
    char text[128];
    std::snprintf(text, sizeof(text), pattern, price);
    return text;
}

// Appends a tip record and gives its id.
int AddTip(CIndicator& ind, const std::string& tip) {
    tagHisTechInfoFile record;
    record.m_lID = ind.m_nNextInfoID++;
    tip.copy(record.m_szText, std::min(tip.size(), sizeof(record.m_szText) - 1));
    ind.m_arInfoRecords.push_back(record);
    return record.m_lID;
}

// Position of a time among the file's bars (oldest first), or -1.
int FindFileBar(const CSysExpert_SAR& expert, int time) {
    const CHisDay* first = expert.m_pFileBars.get();
    const CHisDay* last = first + expert.m_nFileBars;
    const CHisDay* found =
        std::lower_bound(first, last, time, [](const CHisDay& bar, int t) { return bar.m_lTime < t; });
    return found != last && found->m_lTime == time ? static_cast<int>(found - first) : -1;
}

// The core text and tip of the latest signal, and the position on every bar of the formula.
void ShowCoreText(CIndicator& ind, const CSysExpert_SAR& expert, int kind, DrawRecord& record) {
    record.SetArg(0, 1.0f);
    record.expr().m_strDrawText = "该股不适合本系统的的优化模型!";
    if (!ServesKind(kind) || expert.m_arStates.empty() || expert.m_arSignals.empty()) return;
    const tagSIGNAL& signal = expert.m_arSignals.back();
    record.SetArg(3, signal.m_fPrice);
    const bool toLong = signal.m_nType == NY_SIGNAL_TO_LONG;
    AddTip(ind, Format(toLong ? "看多,多转空转价位:%.2f" : "看空,空转多转价位:%.2f", signal.m_fPrice));
    record.expr().m_strDrawText =
        Format(toLong ? "看多, 明天开盘价在%.2f以下看空" : "看空, 明天收盘价在%.2f以上看多", signal.m_fPrice);
    const int offset = ind.m_nBarCount > 0 ? FindFileBar(expert, ind.m_pHisDay[0].m_lTime) : -1;
    if (offset < 0) return;
    for (int i = 0; i < ind.m_nBarCount && offset + i < static_cast<int>(expert.m_arStates.size()); ++i)
        record.Set(i, 0, static_cast<float>(expert.m_arStates[offset + i]));
}

// Entry and exit marks on the bars from..to: f0 the tip's id, f1 the direction.
void ShowMarks(CIndicator& ind, const CSysExpert_SAR& expert, int kind, short from, short to, DrawRecord& record) {
    if (from < 0 || from >= ind.m_nBarCount || !ServesKind(kind)) return;
    const int p = FindFileBar(expert, ind.m_pHisDay[from].m_lTime);
    if (p < 0) return;
    record.SetArg(1, 1.0f);
    for (const tagSYSEXPERTUNIT& unit : expert.m_arExpertUnits) {
        const int bar = from + unit.m_lIndex - p;
        if (unit.m_lIndex < p || bar > to) continue;
        char tip[128];
        const bool entry = unit.m_nDirection == 1;
        std::snprintf(tip, sizeof(tip), entry ? "入场价位:%.02f %.08d %d个bar" : "出场价位:%.02f %.08d %d个bar",
                      unit.m_fPrice, unit.m_lDate, unit.m_lBars);
        record.Set(bar, 0, static_cast<float>(AddTip(ind, tip)));
        record.Set(bar, 1, unit.m_nDirection);
    }
}

}  // namespace

char CIndicator::ReadDrawFunc_DRAWSIGN(char*, float*, short* from, short* to, char, char*, CExpression* expr) {
    if (expr == nullptr) return 0;
    if (const char rc = BeginCall(3)) return rc;
    Operand a(*this, *from, *to), b(*this, *from, *to), c(*this, *from, *to);
    char rc = ny::ReadSwitchArgument(*this, a, false);
    if (rc == 0) rc = ny::ReadSwitchArgument(*this, b, false);
    // C stands last but is read as a middle argument: it ends at the ")" with a code that only
    // counts for a constant 0.
    if (rc == 0) rc = ny::ReadSwitchArgument(*this, c, false);
    if (rc == 0) rc = ny::StepBehindParenthesis(*this);
    if (rc == 0) rc = MergeRange(from, to, a.from, a.to);
    if (rc == 0) rc = MergeRange(from, to, c.from, c.to);
    if (rc != 0) return rc;
    DrawRecord record(*expr);
    expr->m_nType = ny::kDrawSign;
    CStock* stock = g_MyGetStock(m_lStockID);
    const ExpertSettings settings = stock != nullptr ? ReadExpertFile(*stock) : ExpertSettings{ExpertSettings::Short};
    if (settings.state == ExpertSettings::Short) {
        expr->m_strDrawText = "该股不适合本系统的的优化模型.";
        return 0;
    }
    if (settings.state == ExpertSettings::Foreign) {
        record.SetArg(0, 1.0f);
        expr->m_strDrawText = "该股不适合本系统的的优化模型。";
        return 0;
    }
    const auto expert = std::make_unique<CSysExpert_SAR>(settings.step, stock);
    if (ny::SwitchOn(a, a.from)) ShowCoreText(*this, *expert, settings.kind, record);
    if (ny::SwitchOn(b, a.from)) ShowMarks(*this, *expert, settings.kind, *from, *to, record);
    if (ny::SwitchOn(c, a.from)) {
        record.SetArg(2, 1.0f);
        record.Put<short>(0, 1);
    }
    return 0;
}
