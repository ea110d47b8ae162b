#include "engine/expert_sar.h"

#include <algorithm>
#include <limits>

#include "host/files.h"
#include "host/stockdb.h"

namespace {

constexpr float kLimit = 0.2f;        // highest acceleration
constexpr float kTurnFactor = 0.02f;  // acceleration after a turn, whatever the step

// One step of the stop from `from` toward the extreme point.
float StepToward(float extreme, float from, float af) {
    return static_cast<float>((static_cast<double>(extreme) - from) * af + from);
}

int StateOf(const tagEXPERT_SARUNIT& unit) {
    if (!(unit.m_fLow < unit.m_fSAR)) return NY_SAR_LONG;
    if (!(unit.m_fHigh > unit.m_fSAR)) return NY_SAR_SHORT;
    return NY_SAR_INSIDE;
}

}  // namespace

void CTradeS_SAR::Calc(const std::vector<CHisDay>& bars) {
    m_arUnits.clear();
    if (!bars.empty()) {
        float extreme = bars[0].m_fHigh;
        float af = m_fStep;
        bool isLong = true;
        for (size_t i = 0; i < bars.size(); ++i) {
            const CHisDay& bar = bars[i];
            const float turnLine = i < 2 ? float{bars[0].m_fLow} : float{m_arUnits[i - 1].m_fSAR};
            const float previous = i == 0 ? float{bars[0].m_fLow} : float{m_arUnits[i - 1].m_fSAR};
            const bool rising = isLong ? bar.m_fHigh > extreme : bar.m_fLow < extreme;
            if (rising) {
                af += m_fStep;
                extreme = isLong ? bar.m_fHigh : bar.m_fLow;
            }
            if (af > kLimit) af = kLimit;
            tagEXPERT_SARUNIT unit{bar.m_lTime, 1, bar.m_fOpen, bar.m_fHigh, bar.m_fLow, bar.m_fClose, 0};
            const bool turns = isLong ? turnLine > bar.m_fLow : turnLine < bar.m_fHigh;
            if (turns) {
                // One step from the old extreme toward the new one, on the far side of the bar.
                af = kTurnFactor;
                const float oldExtreme = extreme;
                isLong = !isLong;
                extreme = isLong ? bar.m_fHigh : bar.m_fLow;
                unit.m_fSAR = StepToward(extreme, oldExtreme, af);
            } else {
                unit.m_fSAR = StepToward(extreme, previous, af);
            }
            // The stop never lies inside the bar on the side of the position.
            if (isLong && bar.m_fLow < unit.m_fSAR) unit.m_fSAR = bar.m_fLow;
            if (!isLong && bar.m_fHigh > unit.m_fSAR) unit.m_fSAR = bar.m_fHigh;
            m_arUnits.push_back(unit);
        }
    }
    MakeSignals();
}

void CTradeS_SAR::MakeSignals() {
    m_arStates.clear();
    m_arSignals.clear();
    if (m_arUnits.size() < 3) return;
    int last = -1;
    for (size_t i = 0; i < m_arUnits.size(); ++i) {
        const int state = StateOf(m_arUnits[i]);
        m_arStates.push_back(state);
        if (state == last) continue;
        // Bars with the stop inside are passed over: the position is what the last clear bar said.
        if (last < 0 || state < 0) {
            if (state > 0) last = state;
            continue;
        }
        tagSIGNAL signal;
        signal.m_nType = last == NY_SAR_LONG ? NY_SIGNAL_TO_SHORT : NY_SIGNAL_TO_LONG;
        signal.m_fPrice = m_arUnits[i].m_fClose;
        signal.m_lDate = m_arUnits[i].m_lDate;
        signal.m_nFlag = 1;
        signal.m_lIndex = static_cast<int>(i);
        m_arSignals.push_back(signal);
        last = state;
    }
}

CSysExpert_SAR::CSysExpert_SAR(float step, CStock* stock) {
    m_fStep = step;
    if (stock == nullptr) return;
    ReadDayFile(*stock);
    if (m_nFileBars > 0) {
        if (stock->m_cMarket == NY_MARKET_SH) g_MyLoadPowerById(m_arPower, stock->m_lStockID);
        else if (stock->m_cMarket == NY_MARKET_SZ) g_MyLoadPowerById(m_arPower, stock->m_lStockID % 1000000);
    }
    m_arRawBars.assign(m_pFileBars.get(), m_pFileBars.get() + m_nFileBars);
    Adjust();
    Calc(m_arAdjusted);
    MakeExpertUnits();
}

// The whole day file; a file longer than a bar count can hold keeps its newest bars.
void CSysExpert_SAR::ReadDayFile(const CStock& stock) {
    std::vector<CHisDay> bars = ny::ReadBarFile(stock.GetDayFilePath());
    const size_t keep = std::min<size_t>(bars.size(), std::numeric_limits<short>::max());
    m_nFileBars = static_cast<short>(keep);
    m_pFileBars = std::make_unique<CHisDay[]>(keep);
    std::copy(bars.end() - keep, bars.end(), m_pFileBars.get());
}

// From the newest bar back: prices before each ex-rights event are scaled, so the newest stand as
// stored.
void CSysExpert_SAR::Adjust() {
    const int count = static_cast<int>(m_arRawBars.size());
    m_arAdjusted.resize(count);
    if (count == 0) return;
    size_t index = 0;
    while (index < m_arPower.size() && m_arPower[index].m_lDate > m_arRawBars[count - 1].m_lTime) ++index;
    float ratio = 1.0f;
    for (int i = count - 1; i >= 0; --i) {
        const CHisDay& raw = m_arRawBars[i];
        CHisDay& adjusted = m_arAdjusted[i];
        adjusted = raw;
        adjusted.m_fOpen = raw.m_fOpen * ratio;
        adjusted.m_fHigh = raw.m_fHigh * ratio;
        adjusted.m_fLow = raw.m_fLow * ratio;
        adjusted.m_fClose = raw.m_fClose * ratio;
        for (; i > 0 && index < m_arPower.size() && m_arPower[index].m_lDate <= raw.m_lTime &&
               m_arPower[index].m_lDate > m_arRawBars[i - 1].m_lTime;
             ++index)
            ratio = ny::ScaleForEvent(ratio, m_arPower[index], m_arRawBars[i - 1].m_fClose);
        adjusted.m_fPreClose = i == 0 ? raw.m_fOpen : m_arRawBars[i - 1].m_fClose * ratio;
    }
}

void CSysExpert_SAR::MakeExpertUnits() {
    m_arExpertUnits.clear();
    for (const tagSIGNAL& signal : m_arSignals) {
        if (signal.m_nType != NY_SIGNAL_TO_LONG && signal.m_nType != NY_SIGNAL_TO_SHORT) continue;
        tagSYSEXPERTUNIT unit;
        unit.m_lDate = signal.m_lDate;
        unit.m_nFlag = signal.m_nFlag;
        unit.m_nDirection = signal.m_nType == NY_SIGNAL_TO_LONG ? 1 : 2;
        unit.m_fPrice = signal.m_fPrice;
        unit.m_lIndex = signal.m_lIndex;
        m_arExpertUnits.push_back(unit);
    }
    for (size_t k = 0; k < m_arExpertUnits.size(); ++k) {
        const int next = k + 1 < m_arExpertUnits.size() ? m_arExpertUnits[k + 1].m_lIndex
                                                        : static_cast<int>(m_arUnits.size()) - 1;
        m_arExpertUnits[k].m_lBars = next - m_arExpertUnits[k].m_lIndex;
    }
}
