#pragma once
// The formula objects: one formula (CIndicator), one statement with its result (CExpression),
// one parameter (CParam) and one fixed axis line (CAxeValue).
//
// The classes have public fields: the evaluator, the dialogs, the picker and the host's chart
// view all read and write them directly. A CIndicator carries the definition of a formula, the
// data context of one evaluation and the results, which live in its statements.
//
// Calling sequence of an evaluation:
//   1. set m_lStockID;  2. Change();  3. set m_pHisDay, m_nBarCount, m_nDrawStart = 0,
//   m_nDrawEnd = bar count (and m_nPeriod if the caller knows the period);  4. AllocMem(count);
//   5. Calc(0, count);  6. read each statement with m_cComputed == 1 over m_nFirst..m_nEnd-1.
// Steps 1 to 5 are ny::EvaluateOver (engine/evaluate.h); set m_nPeriod before it.

#include <memory>
#include <vector>

#include "host/hisday.h"
#include "host/types.h"
#include "model/binstream.h"
#include "model/period.h"

namespace ny {
struct GrammarLevel;
class FormulaPlan;
struct PlannedWord;
class Operand;
struct EvalContext;
}

// Longest texts the file records can hold (field width minus the terminating zero).
constexpr int NY_NAME_BYTES = 31;
constexpr int NY_STATEMENT_BYTES = 511;

// The largest source the long file form holds and the largest the formula dialog accepts.
constexpr int NY_SOURCE_FILE_BYTES = 10239;
constexpr int NY_SOURCE_DIALOG_CHARS = 10000;

// Formula kinds (m_MainType).
enum : short { NY_KIND_INDICATOR = 0, NY_KIND_CONDITION = 1, NY_KIND_TRADE = 2, NY_KIND_CANDLE = 3 };

// A no-value mark for bars of a statement's series that have nothing to draw.
constexpr float DRAWNULL = -1e36f;

// One record for the chart's tip display, gathered during an evaluation.
struct tagHisTechInfoFile {
    int m_lID = 0;
    char m_szText[80] = {};
};

class CParam {
public:
    CString m_strName;
    short m_nMax = 0;
    short m_nMin = 0;
    short m_nDefault = 0;
    short m_nPeriodValue[11] = {};  // index 1 to 10 by period; 0 means that none is set

    CParam() = default;
    CParam(const CParam&) = default;
    CParam& operator=(const CParam&) = default;
    virtual ~CParam() = default;

    // The value for a bar period: the period's own value if one is set, else the default.
    short GetParam(short period) const;
    void SetParam(short period, short value);

    void Save(CBinStream& stream) const;
    void Load(CBinStream& stream);
};

class CAxeValue {
public:
    short m_nValue = 0;
    char m_cCritical = 0;  // copied with the object, never stored

    CAxeValue() = default;
    CAxeValue(const CAxeValue&) = default;
    CAxeValue& operator=(const CAxeValue&) = default;
    virtual ~CAxeValue() = default;

    void Save(CBinStream& stream) const;
    void Load(CBinStream& stream);
};

class CExpression {
public:
    // Definition.
    CString m_strName;
    CString m_strText;  // upper case, as the syntax test left it
    short m_nType = 0;  // 0 assignment; else a line style or a draw command's kind
    int m_lColor = -1;  // -1: no colour given
    short m_nWidth = 1;

    // Result of the evaluations since the last Change.
    short m_nFirst = 30000;  // 30000: nothing computed yet
    short m_nEnd = 0;
    char m_cIsSeries = 0;
    char m_cComputed = 0;
    unsigned char m_cFailCode = 0;  // the evaluator's code of the last run that failed, else 0
    float* m_pData = nullptr;      // m_nAllocBars values
    short m_nAllocBars = 0;
    short m_nCapacity = 0;         // bars the buffers have room for, at least m_nAllocBars
    float* m_pDrawData = nullptr;  // 4 floats per bar for draw commands
    char m_DrawParams[128] = {};
    CString m_strDrawText;
    int m_lDrawArgs[4] = {};
    int m_nHasDraw = 0;
    char* m_pPoints = nullptr;  // 12 bytes per bar for the chart view; unused inside the module

    CExpression() = default;
    // A shallow copy, pointers included: only one of the two copies may own the buffers.
    CExpression(const CExpression&) = default;
    // Copies the definition only.
    CExpression& operator=(const CExpression& other);
    ~CExpression();

    // Buffers of `bars` values, zero but for the values of a smaller earlier size, which a
    // growing size keeps. Buffers with room enough are reused: a pick's stocks of different
    // lengths do not allocate.
    void AllocMem(short bars);
    void Change();
    // Change and then AllocMem(bars), each buffer zeroed once instead of twice.
    void Renew(short bars);
    // Makes the per-bar chart area 12 bytes per bar, first 8 per bar zeroed.
    void ResetPoints(short barCount);

    void Save(CBinStream& stream) const;
    void Load(CBinStream& stream);

private:
    // Resets the result fields to "nothing computed", leaving the buffers as they are.
    void ForgetResult();
    bool HasRoomFor(short bars) const;
    // Zeroes bars first .. bars - 1 of both buffers.
    void ClearBars(short first, short bars);
    // Takes `bars` of the buffers' room, keeping the values of the first `kept`.
    void ReuseBuffers(short bars, short kept);

    short m_nPointsCapacity = 0;  // bars the chart area has room for
};

class CIndicator {
public:
    // Definition, stored in files.
    CString m_strName;
    CString m_strTitle;
    char m_cDrawPos = 0;  // 0 own chart, 1 over the main chart
    std::vector<CParam*> m_arParams;
    std::vector<CAxeValue*> m_arAxes;
    std::vector<CExpression*> m_arExpressions;
    CString m_strSource;
    CString m_strUsage;
    CString m_strExtra;
    char m_cHasPassword = 0;
    CString m_strPassword;
    CString m_strAxes;
    short m_MainType = 0;
    short m_SubType = 0;
    char m_SysIndex = 0;

    // Further properties, not stored in files.
    int m_IsEditable = 1;
    int m_nBaseSet = 0;
    std::vector<CString> m_arPYCodes;

    // Data context, set by the caller before Calc.
    CHisDay* m_pHisDay = nullptr;
    short m_nBarCount = 0;
    short m_nDrawStart = 0;
    short m_nDrawEnd = 0;
    int m_lStockID = 0;
    short m_nPeriod = 1;
    short m_nAllocBars = 0;

    // Results and per-evaluation stores beyond the statements.
    int m_nNextInfoID = 1;
    std::vector<tagHisTechInfoFile> m_arInfoRecords;
    CHisDay* m_pIndexDay = nullptr;

    CIndicator() = default;
    CIndicator(const CIndicator&) = delete;
    virtual ~CIndicator();
    // Copies the definition and m_nPeriod; the copy's statements have no buffers.
    const CIndicator& operator=(const CIndicator& other);

    void AllocMem(short bars);
    void Change();
    // Change and then AllocMem(bars) for every statement, each buffer zeroed once.
    void Renew(short bars);
    int Calc(short from, short to);
    void DeleteParam();
    void DeleteAxeValue();
    void DeleteExpression();
    CExpression* Find(const CString& name) const;

    void Save(CBinStream& stream, BOOL bLong) const;
    void Load(CBinStream& stream, BOOL bLong);

    int LoadIndexDay(int);

    // ---- Evaluator. Every method returns an 8-bit code, 0 for success. ----
    char CalExp(char* line, float* out, short* from, short* to, char* flag, CExpression* expr);

    // Value grammar.
    char ReadExp(float* out, short* from, short* to, char* flag, CExpression* expr);
    char ReadExp1(float* out, short* from, short* to, char* flag, CExpression* expr);
    char ReadExp2(float* out, short* from, short* to, char* flag, CExpression* expr);
    char ReadItem(float* out, short* from, short* to, char* flag, CExpression* expr);
    char ReadNumber(float* out, short* from, short* to, char* flag, CExpression* expr);

    // Condition grammar.
    char ReadLogical(char* out, short* from, short* to, char* flag);
    char ReadLogItem(char* out, short* from, short* to, char* flag);
    char ReadLogNum(char* out, short* from, short* to, char* flag);

    char CountCuma();

    // Function calls. BeginCall checks the "(" and the comma count (codes 7, 10, 11). Each
    // argument is then read with a private copy of the range into a zeroed buffer, `allowSeries`
    // being the function's own rule for that argument and `last` telling that ")" closes it.
    // MergeRange narrows the call's range by an argument's: the highest first bar and the lowest
    // last bar win, and an empty range gives 14.
    char BeginCall(int argumentCount);
    char ReadValueArgument(float* out, short* from, short* to, char* isSeries, char allowSeries,
                           bool last);
    char ReadConditionArgument(char* out, short* from, short* to, char* isSeries, char allowSeries,
                               bool last);
    static char MergeRange(short* from, short* to, short argumentFrom, short argumentTo);
    // A call of one argument: BeginCall(1) and that argument, closed by ")".
    char ReadSoleArgument(float* out, short* from, short* to, char* isSeries, char allowSeries);
    char ReadSoleCondition(char* out, short* from, short* to, char* isSeries);

    // Averages, window statistics, references to other bars, and the conditional.
    char ReadMA(char* word, float* out, short* from, short* to, char permission, char* isSeries);
    char ReadSMA(char* word, float* out, short* from, short* to, char permission, char* isSeries);
    char ReadIf(char* word, float* out, short* from, short* to, char permission, char* isSeries);

    // Math functions: element-wise, constants in and constants out.
    char ReadMathFunc1(char* word, float* out, short* from, short* to, char permission, char* isSeries);
    char ReadMathFunc2(char* word, float* out, short* from, short* to, char permission, char* isSeries);
    char ReadMathFunc3(char* word, float* out, short* from, short* to, char permission, char* isSeries);

    // Market-detail values of DYNAINFO and FINANCE (write out[0] only) and the order-flow series
    // of MFLOW.
    char ReadDYNAINFO(float* out, short id);
    char ReadFINANCE(float* out, short id);
    char ReadMFlow(char* word, float* out, short* from, short* to, char permission, char* isSeries);

    // Text functions: the statement's text built from literals, numbers, other statements' texts
    // and the stock's blocks, and the dates of an information file marked on the bars.
    char ReadSTRCAT(char* word, float* out, short* from, short* to, char permission, char* isSeries, CExpression* expr);
    char ReadCON2STR(char* word, float* out, short* from, short* to, char permission, char* isSeries, CExpression* expr);
    char ReadSTRING(char* word, float* out, short* from, short* to, char permission, char* isSeries, CExpression* expr);
    char ReadINDUSTRY(char* word, float* out, short* from, short* to, char permission, char* isSeries, CExpression* expr);
    char ReadINFOFILE(char* word, float* out, short* from, short* to, char permission, char* isSeries, CExpression* expr);

    // Logic and statistics: crossings, counts of conditions, distances, run lengths, window
    // statistics, the ordered search of a window and the four-series transform.
    char ReadCROSS(char* word, float* out, short* from, short* to, char permission, char* isSeries);
    char ReadLONGCROSS(char* word, float* out, short* from, short* to, char permission, char* isSeries);
    char ReadCOUNT(char* word, float* out, short* from, short* to, char permission, char* isSeries);
    char ReadLAST(char* word, float* out, short* from, short* to, char permission, char* isSeries);
    char ReadLogicalFun(char* word, float* out, short* from, short* to, char permission, char* isSeries);
    char ReadBARSCOUNT(char* word, float* out, short* from, short* to, char permission, char* isSeries);
    char ReadFINDHIGH(char* word, float* out, short* from, short* to, char permission, char* isSeries);
    char ReadForCla(char* word, float* out, short* from, short* to, char permission, char* isSeries);

    // Date and time: the words of the bar's time stamp, the conversions and BETA.
    char ReadDATETIME(char* word, float* out, short* from, short* to, char permission, char* isSeries);
    char ReadDATETODAY(char* word, float* out, short* from, short* to, char permission, char* isSeries);
    char ReadBeta(int period, float* out, short* from, short* to);

    // Words of the market: prices and volumes, and the other market words.
    char ReadMarketWord(char* word, float* out, short* from, short* to, char permission,
                        char* isSeries);

    // The words of the statements as first read, kept for the next runs of this object.
    std::shared_ptr<ny::FormulaPlan> m_pPlan;

    // Draw commands: each fills its statement's draw fields (docs/drawing.md); DRAWNULL is the
    // no-value word and works anywhere, the commands only as a statement's whole expression.
    char ReadDrawFunc(char* word, float* out, short* from, short* to, char permission,
                      char* isSeries, CExpression* expr);
    char ReadDrawFunc_PLOYLINE(char* word, float* out, short* from, short* to, char permission, char* isSeries, CExpression* expr);
    char ReadDrawFunc_DRAWLINE(char* word, float* out, short* from, short* to, char permission, char* isSeries, CExpression* expr);
    char ReadDrawFunc_DRAWKLINE(char* word, float* out, short* from, short* to, char permission, char* isSeries, CExpression* expr);
    char ReadDrawFunc_STICKLINE(char* word, float* out, short* from, short* to, char permission, char* isSeries, CExpression* expr);
    char ReadDrawFunc_DRAWICON(char* word, float* out, short* from, short* to, char permission, char* isSeries, CExpression* expr);
    char ReadDrawFunc_DRAWTEXT(char* word, float* out, short* from, short* to, char permission, char* isSeries, CExpression* expr);
    char ReadDrawFunc_DRAWTEXTFIX(char* word, float* out, short* from, short* to, char permission, char* isSeries, CExpression* expr);
    char ReadDrawFunc_DRAWTEXTOFFSET(char* word, float* out, short* from, short* to, char permission, char* isSeries, CExpression* expr);
    char ReadDrawFunc_DRAWNUMBER(char* word, float* out, short* from, short* to, char permission, char* isSeries, CExpression* expr);
    char ReadDrawFunc_DRAWBAND(char* word, float* out, short* from, short* to, char permission, char* isSeries, CExpression* expr);
    char ReadDrawFunc_FILLRGN(char* word, float* out, short* from, short* to, char permission, char* isSeries, CExpression* expr);
    char ReadDrawFunc_HITTIP(char* word, float* out, short* from, short* to, char permission, char* isSeries, CExpression* expr);
    char ReadDrawFunc_BMP(char* word, float* out, short* from, short* to, char permission, char* isSeries, CExpression* expr);
    char ReadDrawFunc_DRAWSIGN(char* word, float* out, short* from, short* to, char permission, char* isSeries, CExpression* expr);
    char ReadDrawFunc_BACKGBK(char* word, float* out, short* from, short* to, char permission, char* isSeries, CExpression* expr);

    // Turning points: the zigzag, its peaks and troughs, and the stop-and-reverse line.
    char ReadZIG(char* word, float* out, short* from, short* to, char permission, char* isSeries);
    char ReadPEAK(char* word, float* out, short* from, short* to, char permission, char* isSeries);
    char ReadSAR(char* word, float* out, short* from, short* to, char permission, char* isSeries);

    // Blocks and strategy tables: one number for now in out[0], from quoted group and column names.
    char ReadINModule(char* word, float* out, short* from, short* to, char permission, char* isSeries, CExpression* expr);
    char ReadModuleSORT(char* word, float* out, short* from, short* to, char permission, char* isSeries, CExpression* expr);
    char ReadSTRATEGY(char* word, float* out, short* from, short* to, char permission, char* isSeries, CExpression* expr);
    char ReadSTRATEGYSTRCMP(char* word, float* out, short* from, short* to, char permission, char* isSeries, CExpression* expr);
    char ReadSTRATEGYSORT(char* word, float* out, short* from, short* to, char permission, char* isSeries, CExpression* expr);

    // The chip distribution: WINNER and COST.
    char ReadWINNER(char* word, float* out, short* from, short* to, char permission, char* isSeries);

    // The working state of this object's evaluations (engine/eval_context.h): cursor, current
    // range, buffer pool, place in the plan. Made on first use and not copied with the formula;
    // a shared pointer takes its deleter from where it is made, so this header needs only the name.
    std::shared_ptr<ny::EvalContext> m_pContext;
    ny::EvalContext& Context();  // defined in engine/eval_context.h

    // The operand of the multiplication level: a parenthesis or a word.
    char ReadFactor(float* out, short* from, short* to, char* flag, CExpression* expr);

private:
    char ReadLevel(const ny::GrammarLevel& level, float* out, short* from, short* to,
                   char permission, char* isSeries, CExpression* expr, bool outIsZero);
    // CalExp and ReadExp; `outIsZero` tells that `out` is zero-filled, so that the first operand
    // may be read straight into it.
    char ReadLine(char* line, float* out, short* from, short* to, char* flag, CExpression* expr,
                  bool outIsZero);
    char ReadExpInto(float* out, short* from, short* to, char* flag, CExpression* expr,
                        bool outIsZero);
    char ReadNegatedLeaf(char* out, short* from, short* to, char* flag, char permission);
    void CopyStatement(const CExpression& source, float* out, short* from, short* to,
                       char* isSeries) const;
    void ResolveWord(ny::PlannedWord* planned);
    char ReadResolvedWord(ny::PlannedWord& planned, float* out, short* from, short* to, char* flag,
                          char permission, CExpression* expr);
    char ReadFormulaReference(const char* word, float* out, short* from, short* to, char* isSeries);
    char ReadDrawText(short kind, const ny::Operand& cond, const ny::Operand& lastValue,
                      short* from, short* to, CExpression* expr);
    char AppendTextArgument(CExpression* expr, bool last);
    char ReadTextArgument(const ny::Operand& cond, const ny::Operand& lastValue, short* from,
                          short* to, CExpression* expr);
    void EvaluateStatement(CExpression& expr, char* line, float* result, short* from, short* to,
                           bool buffersZeroed);
};
