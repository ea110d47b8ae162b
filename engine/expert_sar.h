#pragma once
// The built-in expert of DRAWSIGN: a parabolic stop with an extreme point over a stock's own day
// bars (CTradeS_SAR), the trade signals where the bars cross it, and the positions between them
// (CSysExpert_SAR, which reads and adjusts the stock's day file first). Unlike the evaluator's
// SAR, the acceleration returns to 0.02 at each turn and is capped at exactly 0.2.

#include <memory>
#include <vector>

#include "host/hisday.h"
#include "host/power.h"

class CStock;

#pragma pack(push, 1)
// One bar of the stop, packed (26 bytes).
struct tagEXPERT_SARUNIT {
    int m_lDate;
    short m_nFlag;  // always 1
    float m_fOpen;
    float m_fHigh;
    float m_fLow;
    float m_fClose;
    float m_fSAR;  // the stop at this bar
};
#pragma pack(pop)
static_assert(sizeof(tagEXPERT_SARUNIT) == 26, "the units are used packed");

// Signal types: the position turns from short to long, or from long to short.
constexpr short NY_SIGNAL_TO_LONG = 4;
constexpr short NY_SIGNAL_TO_SHORT = 12;

// One change of position.
struct tagSIGNAL {
    short m_nType = 0;  // NY_SIGNAL_...
    float m_fPrice = 0;  // the bar's close
    int m_lDate = 0;
    short m_nFlag = 0;
    int m_lIndex = 0;  // the bar's index in the units
};

// One held position: from its signal to the next.
struct tagSYSEXPERTUNIT {
    int m_lDate = 0;
    short m_nFlag = 0;
    short m_nDirection = 0;  // 1 long (entered at a turn to long), 2 short
    float m_fPrice = 0;
    int m_lBars = 0;  // bars to the next signal; for the last one, to the last unit
    int m_lIndex = 0;
};

// Positions per bar in m_arStates: long (the stop at or below the low), short (the stop at or
// above the high), and a stop inside the bar.
constexpr int NY_SAR_LONG = 1;
constexpr int NY_SAR_SHORT = 2;
constexpr int NY_SAR_INSIDE = -1;

class CTradeS_SAR {
public:
    virtual ~CTradeS_SAR() = default;

    float m_fStep = 0.02f;                     // acceleration step
    std::vector<tagEXPERT_SARUNIT> m_arUnits;  // the stop, one unit a bar
    std::vector<tagSIGNAL> m_arSignals;        // oldest first
    std::vector<int> m_arStates;               // NY_SAR_... per unit

    // The stop over the bars, one unit each, then MakeSignals.
    virtual void Calc(const std::vector<CHisDay>& bars);
    // States and signals from the units; nothing with fewer than 3 units.
    virtual void MakeSignals();
};

class CSysExpert_SAR : public CTradeS_SAR {
public:
    // Reads the stock's day file, adjusts it for ex-rights events, runs the stop and turns its
    // signals into positions. A null stock or a missing file gives no units.
    CSysExpert_SAR(float step, CStock* stock);

    std::vector<tagSYSEXPERTUNIT> m_arExpertUnits;
    std::vector<CHisDay> m_arAdjusted;
    std::vector<CHisDay> m_arRawBars;
    std::unique_ptr<CHisDay[]> m_pFileBars;  // the day file as read
    short m_nFileBars = 0;
    std::vector<CPowerData> m_arPower;  // newest first

private:
    void ReadDayFile(const CStock& stock);
    void Adjust();
    void MakeExpertUnits();
};
