// The draw commands: each leaves a description of what to draw in its statement (kind, four
// floats per bar, parameters, argument slots, a text) for the chart to read after Calc, and its
// condition as the statement's series. DRAWNULL is the no-value word. The field layout of every
// command is in docs/drawing.md.

#include <cstring>
#include <string>
#include <string_view>
#include <unordered_map>

#include "engine/eval_context.h"
#include "engine/argument_scan.h"
#include "engine/draw_record.h"
#include "engine/eval_code.h"
#include "engine/function_util.h"
#include "engine/text_scan.h"
#include "model/indicator.h"

namespace {

using ny::DrawRecord;
using ny::Operand;
using ny::SpreadRule;
using ny::ReadQuotedText;
using ny::SkipBlanks;
using ny::StepBehindParenthesis;

// What a constant condition may be: PLOYLINE and DRAWLINE refuse any, the others a false one.
enum class ConstantCondition { Refused, TrueOnly };

char ReadValue(CIndicator& ind, Operand& a, bool last) {
    return ind.ReadValueArgument(a.values(), &a.from, &a.to, &a.isSeries, 1, last);
}

char ReadCondition(CIndicator& ind, Operand& a, bool last, ConstantCondition rule) {
    if (const char rc = ind.ReadConditionArgument(a.truth(), &a.from, &a.to, &a.isSeries, 1, last))
        return rc;
    if (!a.isSeries && (rule == ConstantCondition::Refused || a.truth()[0] == 0))
        return NY_EVAL_CONSTANT_ARGUMENT;
    return 0;
}

// A colour or another whole value taken from element 0 by truncation.
int WholeValue(const Operand& a) { return ny::TruncToInt(a.values()[0]); }

// A TYPE or EXPAND argument: element 0 within 1e-6 of a whole number, else code 15.
char ReadWholeArgument(CIndicator& ind, Operand& a, bool last, int* value) {
    if (const char rc = ReadValue(ind, a, last)) return rc;
    if (!ny::IsWholeNumber(a.values()[0])) return NY_EVAL_BAD_PERIOD;
    *value = ny::RoundedPeriod(a.values()[0]);
    return 0;
}

// A switch of DRAWGBK: a whole number from the value at the first bar of the range; a constant 1
// is 1 wherever the range starts. A constant 0 whose reading failed gives 16.
char ReadSwitch(CIndicator& ind, Operand& a, bool last, bool* on) {
    if (const char rc = ny::ReadSwitchArgument(ind, a, last)) return rc;
    *on = ny::SwitchOn(a, a.from);
    return 0;
}

void WriteTruth(float* out, const Operand& cond, short from, short to, short count) {
    const ny::BarSpan span(from, to, count);
    for (int i = span.first; i <= span.last; ++i) out[i] = cond.TruthAt(i);
}

}  // namespace

char CIndicator::ReadDrawFunc(char* word, float* out, short* from, short* to, char permission,
                              char* isSeries, CExpression* expr) {
    using Command = char (CIndicator::*)(char*, float*, short*, short*, char, char*, CExpression*);
    static const std::unordered_map<std::string_view, Command> commands = {
        {"PLOYLINE", &CIndicator::ReadDrawFunc_PLOYLINE},
        {"DRAWLINE", &CIndicator::ReadDrawFunc_DRAWLINE},
        {"DRAWKLINE", &CIndicator::ReadDrawFunc_DRAWKLINE},
        {"STICKLINE", &CIndicator::ReadDrawFunc_STICKLINE},
        {"DRAWICON", &CIndicator::ReadDrawFunc_DRAWICON},
        {"DRAWTEXT", &CIndicator::ReadDrawFunc_DRAWTEXT},
        {"DRAWTEXT_FIX", &CIndicator::ReadDrawFunc_DRAWTEXTFIX},
        {"DRAWTEXT_OFFSET", &CIndicator::ReadDrawFunc_DRAWTEXTOFFSET},
        {"DRAWNUMBER", &CIndicator::ReadDrawFunc_DRAWNUMBER},
        {"DRAWBAND", &CIndicator::ReadDrawFunc_DRAWBAND},
        {"FILLRGN", &CIndicator::ReadDrawFunc_FILLRGN},
        {"DRAWHITTIP", &CIndicator::ReadDrawFunc_HITTIP},
        {"DRAWBMP", &CIndicator::ReadDrawFunc_BMP},
        {"DRAWGBK", &CIndicator::ReadDrawFunc_BACKGBK},
        {"DRAWSIGN", &CIndicator::ReadDrawFunc_DRAWSIGN},
    };
    if (std::strcmp(word, "DRAWNULL") == 0) {
        const ny::BarSpan span(*from, *to, m_nBarCount);
        for (int i = span.first; i <= span.last; ++i) out[i] = DRAWNULL;
        return 0;
    }
    if (expr == nullptr) return NY_EVAL_DRAW_NESTED;
    const auto found = commands.find(word);
    if (found == commands.end()) return NY_EVAL_NO_DATA;
    return (this->*found->second)(word, out, from, to, permission, isSeries, expr);
}

char CIndicator::ReadDrawFunc_PLOYLINE(char*, float* out, short* from, short* to, char, char*,
                                       CExpression* expr) {
    if (const char rc = BeginCall(2)) return rc;
    ny::FirstArgumentLast order(*this);
    Operand cond(*this, *from, *to), price(*this, *from, *to);
    char rc = order.Skip();
    if (rc == 0) rc = ReadValue(*this, price, true);
    if (rc != 0) return rc;
    order.ReturnToFirst();
    if ((rc = ReadCondition(*this, cond, false, ConstantCondition::Refused)) != 0) return rc;
    order.Finish();
    *from = std::max(price.from, cond.from);
    *to = std::min(price.to, cond.to);
    DrawRecord record(*expr);
    const ny::BarSpan span(*from, *to, m_nBarCount);
    for (int i = span.first; i <= span.last; ++i) {
        out[i] = cond.TruthAt(i);
        if (out[i] != 0) record.Set(i, 0, price.ValueAt(i, SpreadRule::Never));
    }
    expr->m_nType = ny::kDrawPolyline;
    return 0;
}

char CIndicator::ReadDrawFunc_DRAWLINE(char*, float* out, short* from, short* to, char, char*,
                                       CExpression* expr) {
    if (const char rc = BeginCall(5)) return rc;
    Operand cond1(*this, *from, *to), price1(*this, *from, *to), cond2(*this, *from, *to),
        price2(*this, *from, *to);
    char rc = ReadCondition(*this, cond1, false, ConstantCondition::Refused);
    if (rc == 0) rc = ReadValue(*this, price1, false);
    if (rc == 0) rc = ReadCondition(*this, cond2, false, ConstantCondition::Refused);
    if (rc == 0) rc = ReadValue(*this, price2, false);
    if (rc != 0) return rc;
    DrawRecord record(*expr);
    WriteTruth(out, cond1, cond1.from, cond1.to, m_nBarCount);
    record.Fill(0, price1, price1.from, price1.to, m_nBarCount, SpreadRule::Never);
    record.FillTruth(1, cond2, cond2.from, cond2.to, m_nBarCount);
    record.Fill(2, price2, price2.from, price2.to, m_nBarCount, SpreadRule::Never);
    for (const Operand* a : {&cond1, &price1, &cond2, &price2})
        if ((rc = MergeRange(from, to, a->from, a->to)) != 0) return rc;
    Operand expand(*this, *from, *to);
    int value = 0;
    if ((rc = ReadWholeArgument(*this, expand, true, &value)) != 0) return rc;
    record.Put<signed char>(0, static_cast<signed char>(value));
    expr->m_nType = ny::kDrawLine;
    return 0;
}

char CIndicator::ReadDrawFunc_DRAWKLINE(char*, float*, short* from, short* to, char, char*,
                                        CExpression* expr) {
    if (const char rc = BeginCall(4)) return rc;
    // High, open, low, close land in f1, f0, f2, f3.
    static const int kFields[4] = {1, 0, 2, 3};
    DrawRecord record(*expr);
    for (int k = 0; k < 4; ++k) {
        Operand price(*this, *from, *to);
        if (const char rc = ReadValue(*this, price, k == 3)) return rc;
        record.Fill(kFields[k], price, price.from, price.to, m_nBarCount, SpreadRule::Never);
        if (const char rc = MergeRange(from, to, price.from, price.to)) return rc;
    }
    expr->m_nType = ny::kDrawCandle;
    return 0;
}

char CIndicator::ReadDrawFunc_STICKLINE(char*, float* out, short* from, short* to, char, char*,
                                        CExpression* expr) {
    if (const char rc = BeginCall(5)) return rc;
    Operand cond(*this, *from, *to), price1(*this, *from, *to), price2(*this, *from, *to);
    char rc = ReadCondition(*this, cond, false, ConstantCondition::TrueOnly);
    if (rc == 0) rc = ReadValue(*this, price1, false);
    if (rc == 0) rc = ReadValue(*this, price2, false);
    if (rc != 0) return rc;
    DrawRecord record(*expr);
    WriteTruth(out, cond, cond.from, cond.to, m_nBarCount);
    record.Fill(0, price1, price1.from, price1.to, m_nBarCount, SpreadRule::NotNegative);
    record.Fill(1, price2, price2.from, price2.to, m_nBarCount, SpreadRule::NotNegative);
    for (const Operand* a : {&cond, &price1, &price2})
        if ((rc = MergeRange(from, to, a->from, a->to)) != 0) return rc;
    Operand width(*this, *from, *to), empty(*this, *from, *to);
    if ((rc = ReadValue(*this, width, false)) != 0) return rc;
    if ((rc = ReadValue(*this, empty, true)) != 0) return rc;
    record.Put<float>(0, width.values()[0]);
    record.Put<short>(4, static_cast<short>(WholeValue(empty)));
    expr->m_nType = ny::kDrawStick;
    return 0;
}

char CIndicator::ReadDrawFunc_DRAWICON(char*, float* out, short* from, short* to, char, char*,
                                       CExpression* expr) {
    if (const char rc = BeginCall(3)) return rc;
    Operand cond(*this, *from, *to), price(*this, *from, *to), type(*this, *from, *to);
    int value = 0;
    char rc = ReadCondition(*this, cond, false, ConstantCondition::TrueOnly);
    if (rc == 0) rc = ReadValue(*this, price, false);
    if (rc == 0) rc = ReadWholeArgument(*this, type, true, &value);
    if (rc != 0) return rc;
    DrawRecord record(*expr);
    WriteTruth(out, cond, cond.from, cond.to, m_nBarCount);
    record.Fill(0, price, price.from, price.to, m_nBarCount, SpreadRule::Always);
    record.Put<short>(0, static_cast<short>(value));
    if ((rc = MergeRange(from, to, cond.from, cond.to)) != 0) return rc;
    if ((rc = MergeRange(from, to, price.from, price.to)) != 0) return rc;
    expr->m_nType = ny::kDrawIcon;
    return 0;
}

char CIndicator::ReadDrawFunc_DRAWBAND(char*, float*, short* from, short* to, char, char*,
                                       CExpression* expr) {
    if (const char rc = BeginCall(4)) return rc;
    Operand value1(*this, *from, *to), color1(*this, *from, *to), value2(*this, *from, *to),
        color2(*this, *from, *to);
    char rc = ReadValue(*this, value1, false);
    if (rc == 0) rc = ReadValue(*this, color1, false);
    if (rc == 0) rc = ReadValue(*this, value2, false);
    if (rc == 0) rc = ReadValue(*this, color2, true);
    if (rc != 0) return rc;
    DrawRecord record(*expr);
    record.Fill(0, value1, value1.from, value1.to, m_nBarCount, SpreadRule::Never);
    record.Fill(1, value2, value2.from, value2.to, m_nBarCount, SpreadRule::Never);
    record.Put<int>(0, WholeValue(color1));
    record.Put<int>(4, WholeValue(color2));
    if ((rc = MergeRange(from, to, value1.from, value1.to)) != 0) return rc;
    if ((rc = MergeRange(from, to, value2.from, value2.to)) != 0) return rc;
    expr->m_nType = ny::kDrawBand;
    return 0;
}

char CIndicator::ReadDrawFunc_FILLRGN(char*, float*, short* from, short* to, char, char*,
                                      CExpression* expr) {
    if (const char rc = BeginCall(4)) return rc;
    Operand cond(*this, *from, *to), value1(*this, *from, *to), value2(*this, *from, *to),
        color(*this, *from, *to);
    char rc = ReadValue(*this, cond, false);
    if (rc == 0) rc = ReadValue(*this, value1, false);
    if (rc == 0) rc = ReadValue(*this, value2, false);
    if (rc == 0) rc = ReadValue(*this, color, true);
    if (rc != 0) return rc;
    DrawRecord record(*expr);
    // VAL1 is drawn where COND has values; its own range plays no part.
    record.Fill(0, value1, cond.from, cond.to, m_nBarCount, SpreadRule::Never);
    record.Fill(1, cond, cond.from, cond.to, m_nBarCount, SpreadRule::Never);
    record.Fill(2, value2, value2.from, value2.to, m_nBarCount, SpreadRule::Never);
    record.Put<int>(0, WholeValue(color));
    if ((rc = MergeRange(from, to, cond.from, cond.to)) != 0) return rc;
    if ((rc = MergeRange(from, to, value2.from, value2.to)) != 0) return rc;
    expr->m_nType = ny::kDrawRegion;
    return 0;
}

char CIndicator::ReadDrawFunc_DRAWNUMBER(char*, float*, short* from, short* to, char, char*,
                                         CExpression* expr) {
    if (const char rc = BeginCall(3)) return rc;
    Operand cond(*this, *from, *to), price(*this, *from, *to), number(*this, *from, *to);
    char rc = ReadCondition(*this, cond, false, ConstantCondition::TrueOnly);
    if (rc == 0) rc = ReadValue(*this, price, false);
    if (rc != 0) return rc;
    // A NUMBER that fails to read is drawn as 0; the command itself still succeeds.
    if (ReadValue(*this, number, true) != 0) {
        number.isSeries = 0;
        number.values()[0] = 0.0f;
    }
    DrawRecord record(*expr);
    record.FillTruth(0, cond, cond.from, cond.to, m_nBarCount);
    record.Fill(2, price, price.from, price.to, m_nBarCount, SpreadRule::NonZero);
    record.Fill(1, number, cond.from, cond.to, m_nBarCount, SpreadRule::NonZero);
    while (*Context().m_pCursor != ';' && *Context().m_pCursor != '\0') ++Context().m_pCursor;
    expr->m_nType = ny::kDrawNumber;
    return 0;
}

char CIndicator::ReadDrawFunc_BMP(char*, float* out, short* from, short* to, char, char*,
                                  CExpression* expr) {
    if (const char rc = BeginCall(3)) return rc;
    Operand cond(*this, *from, *to), price(*this, *from, *to);
    char rc = ReadCondition(*this, cond, false, ConstantCondition::TrueOnly);
    if (rc == 0) rc = ReadValue(*this, price, false);
    std::string file;
    if (rc == 0) rc = ReadQuotedText(*this, &file);
    if (rc == 0) rc = StepBehindParenthesis(*this);
    if (rc != 0) return rc;
    DrawRecord record(*expr);
    WriteTruth(out, cond, cond.from, cond.to, m_nBarCount);
    record.Fill(0, price, price.from, price.to, m_nBarCount, SpreadRule::Always);
    expr->m_strDrawText = file;
    if ((rc = MergeRange(from, to, cond.from, cond.to)) != 0) return rc;
    if ((rc = MergeRange(from, to, price.from, price.to)) != 0) return rc;
    expr->m_nType = ny::kDrawBitmap;
    return 0;
}

char CIndicator::ReadDrawFunc_HITTIP(char*, float*, short* from, short* to, char, char*,
                                     CExpression* expr) {
    if (const char rc = BeginCall(3)) return rc;
    Operand info(*this, *from, *to), type(*this, *from, *to), price(*this, *from, *to);
    // INFO gets the statement, so that a reader of information records can leave them there.
    char flag = 1;
    char rc = ReadExp(info.values(), &info.from, &info.to, &flag, expr);
    if (rc == 0) rc = ReadValue(*this, type, false);
    if (rc != 0) return rc;
    char* closing = ny::FindClosingParenthesis(Context().m_pCursor);
    if (closing == nullptr) return NY_EVAL_UNTERMINATED;
    ReadValue(*this, price, true);
    Context().m_pCursor = closing + 1;
    if (!price.isSeries && price.values()[0] == 0.0f) return NY_EVAL_CONSTANT_ARGUMENT;
    DrawRecord record(*expr);
    record.SetArg(0, type.values()[0]);
    const bool constantOne = !price.isSeries && price.values()[0] == 1.0f;
    const bool inside = info.from >= 0 && info.from < m_nBarCount;
    record.SetArg(1, constantOne ? 1.0f : inside ? price.values()[info.from] : 0.0f);
    expr->m_nType = ny::kDrawHitTip;
    return 0;
}

char CIndicator::ReadDrawFunc_BACKGBK(char*, float*, short* from, short* to, char, char*,
                                      CExpression* expr) {
    if (const char rc = BeginCall(6)) return rc;
    Operand cond(*this, *from, *to), color1(*this, *from, *to), color2(*this, *from, *to),
        gradient(*this, *from, *to), stretch(*this, *from, *to);
    bool condOn = false, gradientOn = false, stretchOn = false;
    std::string picture;
    char rc = ReadSwitch(*this, cond, false, &condOn);
    if (rc == 0) rc = ReadValue(*this, color1, false);
    if (rc == 0) rc = ReadValue(*this, color2, false);
    if (rc == 0) rc = ReadSwitch(*this, gradient, false, &gradientOn);
    if (rc == 0) rc = ReadQuotedText(*this, &picture);
    if (rc != 0) return rc;
    SkipBlanks(*this);
    if (*Context().m_pCursor != ',') return NY_EVAL_ARGUMENT_COUNT;
    ++Context().m_pCursor;
    char* closing = ny::FindClosingParenthesis(Context().m_pCursor);
    if (closing == nullptr) return NY_EVAL_UNTERMINATED;
    if ((rc = ReadSwitch(*this, stretch, true, &stretchOn)) != 0) return rc;
    Context().m_pCursor = closing + 1;
    DrawRecord record(*expr);
    record.Put<int>(0, WholeValue(color1));
    record.Put<int>(4, WholeValue(color2));
    // A slot is set when its switch is on and left as it was otherwise.
    if (condOn) record.SetArg(0, 1.0f);
    if (gradientOn) record.SetArg(1, 1.0f);
    if (stretchOn) record.SetArg(2, 1.0f);
    expr->m_strDrawText = picture;
    if ((rc = MergeRange(from, to, stretch.from, stretch.to)) != 0) return rc;
    expr->m_nType = ny::kDrawBackground;
    return 0;
}

char CIndicator::ReadDrawFunc_DRAWTEXT(char*, float* out, short* from, short* to, char, char*,
                                       CExpression* expr) {
    if (const char rc = BeginCall(3)) return rc;
    Operand cond(*this, *from, *to), price(*this, *from, *to);
    char rc = ReadCondition(*this, cond, false, ConstantCondition::TrueOnly);
    if (rc == 0) rc = ReadValue(*this, price, false);
    if (rc != 0) return rc;
    DrawRecord record(*expr);
    WriteTruth(out, cond, cond.from, cond.to, m_nBarCount);
    record.Fill(0, price, price.from, price.to, m_nBarCount, SpreadRule::NonZero);
    return ReadDrawText(ny::kDrawText, cond, price, from, to, expr);
}

char CIndicator::ReadDrawFunc_DRAWTEXTOFFSET(char*, float* out, short* from, short* to, char,
                                             char*, CExpression* expr) {
    if (const char rc = BeginCall(4)) return rc;
    Operand cond(*this, *from, *to), price(*this, *from, *to), offset(*this, *from, *to);
    char rc = ReadCondition(*this, cond, false, ConstantCondition::TrueOnly);
    if (rc == 0) rc = ReadValue(*this, price, false);
    if (rc == 0) rc = ReadValue(*this, offset, false);
    if (rc != 0) return rc;
    DrawRecord record(*expr);
    WriteTruth(out, cond, cond.from, cond.to, m_nBarCount);
    record.Fill(0, price, price.from, price.to, m_nBarCount, SpreadRule::NonZero);
    record.SetArg(0, offset.values()[0]);
    return ReadDrawText(ny::kDrawText, cond, offset, from, to, expr);
}

char CIndicator::ReadDrawFunc_DRAWTEXTFIX(char*, float*, short* from, short* to, char, char*,
                                          CExpression* expr) {
    if (const char rc = BeginCall(5)) return rc;
    Operand cond(*this, *from, *to), x(*this, *from, *to), y(*this, *from, *to),
        type(*this, *from, *to);
    char rc = ReadCondition(*this, cond, false, ConstantCondition::TrueOnly);
    if (rc == 0) rc = ReadValue(*this, x, false);
    if (rc == 0) rc = ReadValue(*this, y, false);
    if (rc == 0) rc = ReadValue(*this, type, false);
    if (rc != 0) return rc;
    DrawRecord record(*expr);
    record.Fill(0, x, x.from, x.to, m_nBarCount, SpreadRule::NonZero);
    const bool condTrue = cond.isSeries ? cond.from >= 0 && cond.truth()[cond.from] != 0 : true;
    record.SetArg(0, condTrue ? 1.0f : 0.0f);
    int slot = 1;
    for (const Operand* a : {&x, &y, &type})
        record.SetArg(slot++, a->isSeries ? a->AtFirstBar() : a->values()[0]);
    return ReadDrawText(ny::kDrawFixedText, cond, type, from, to, expr);
}

// The text argument of DRAWTEXT, DRAWTEXT_OFFSET and DRAWTEXT_FIX, and the call's range: a quoted
// text, an expression whose text function sets the statement's text, or the name of a statement
// whose text is shown. The statement gets its kind once the text has been read.
char CIndicator::ReadDrawText(short kind, const ny::Operand& cond, const ny::Operand& lastValue,
                              short* from, short* to, CExpression* expr) {
    const char rc = ReadTextArgument(cond, lastValue, from, to, expr);
    if (rc == 0) expr->m_nType = kind;
    return rc;
}

char CIndicator::ReadTextArgument(const ny::Operand& cond, const ny::Operand& lastValue,
                                  short* from, short* to, CExpression* expr) {
    DrawRecord record(*expr);
    SkipBlanks(*this);
    if (*Context().m_pCursor == '\'') {
        std::string text;
        char rc = ReadQuotedText(*this, &text);
        if (rc == 0) rc = StepBehindParenthesis(*this);
        if (rc != 0) return rc;
        record.PutText(text);
        if ((rc = MergeRange(from, to, cond.from, cond.to)) != 0) return rc;
        return MergeRange(from, to, lastValue.from, lastValue.to);
    }
    char* start = Context().m_pCursor;
    const CString before = expr->m_strDrawText;
    Operand text(*this, 0, *to);
    char flag = 3;
    ReadExp(text.values(), &text.from, &text.to, &flag, expr);
    if (expr->m_strDrawText != before) {
        record.PutText(expr->m_strDrawText);
        if (const char rc = MergeRange(from, to, cond.from, cond.to)) return rc;
        return MergeRange(from, to, text.from, text.to);
    }
    Context().m_pCursor = start;
    char* closing = ny::FindClosingParenthesis(Context().m_pCursor);
    if (closing == nullptr) return NY_EVAL_UNTERMINATED;
    const std::string name(start, std::min<size_t>(closing - start, ny::kDrawTextBytes));
    Context().m_pCursor = closing + 1;
    for (const CExpression* statement : m_arExpressions) {
        if (statement->m_strName != name) continue;
        if (!statement->m_cComputed) return NY_EVAL_UNKNOWN_WORD;
        record.PutText(statement->m_strDrawText);
        return 0;
    }
    return NY_EVAL_UNKNOWN_WORD;
}
