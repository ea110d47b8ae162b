// The element-wise math functions of one, two and three arguments. They work on constants as well
// as on series: a constant in, a constant out. Each value is computed in double from the 32-bit
// operands and rounded to a float as it is stored.

#include <cmath>
#include <cstdlib>
#include <cstring>
#include <string_view>
#include <unordered_map>

#include "engine/eval_code.h"
#include "engine/eval_context.h"
#include "engine/eval_util.h"
#include "engine/function_util.h"
#include "model/indicator.h"

namespace {

enum class Func1 {
    Reverse, Abs, Sign, Sqrt, Not, Sin, Cos, Tan, Asin, Acos, Atan, Ln, Log, Exp, Ceiling, Floor,
    IntPart, FracPart, Round, Rand, DynaInfo, Finance
};

bool FindFunc1(const char* word, Func1* kind) {
    static const std::unordered_map<std::string_view, Func1> names = {
        {"REVERSE", Func1::Reverse}, {"ABS", Func1::Abs}, {"SIGN", Func1::Sign},
        {"SQRT", Func1::Sqrt}, {"NOT", Func1::Not}, {"SIN", Func1::Sin}, {"COS", Func1::Cos},
        {"TAN", Func1::Tan}, {"ASIN", Func1::Asin}, {"ACOS", Func1::Acos}, {"ATAN", Func1::Atan},
        {"LN", Func1::Ln}, {"LOG", Func1::Log}, {"EXP", Func1::Exp}, {"CEILING", Func1::Ceiling},
        {"FLOOR", Func1::Floor}, {"INTPART", Func1::IntPart}, {"FRACPART", Func1::FracPart},
        {"ROUND", Func1::Round}, {"RAND", Func1::Rand}, {"DYNAINFO", Func1::DynaInfo},
        {"FINANCE", Func1::Finance},
    };
    const auto found = names.find(word);
    if (found == names.end()) return false;
    *kind = found->second;
    return true;
}

// The value of a one-argument function that needs nothing but its operand. SQRT's operand is
// known to be above the tolerance here.
float Apply1(Func1 kind, float value) {
    const double x = value;
    switch (kind) {
        case Func1::Reverse: return static_cast<float>(-x);
        case Func1::Abs: return static_cast<float>(std::fabs(x));
        case Func1::Sign: return x > ny::kZeroTolerance ? 1.0f : (x < -ny::kZeroTolerance ? -1.0f : 0.0f);
        case Func1::Sqrt: return static_cast<float>(std::sqrt(x));
        case Func1::Not: return value == 0.0f ? 1.0f : 0.0f;
        case Func1::Sin: return static_cast<float>(std::sin(x));
        case Func1::Cos: return static_cast<float>(std::cos(x));
        case Func1::Tan: return static_cast<float>(std::tan(x));
        case Func1::Asin: return static_cast<float>(std::asin(x));
        case Func1::Acos: return static_cast<float>(std::acos(x));
        case Func1::Atan: return static_cast<float>(std::atan(x));
        case Func1::Ln: return static_cast<float>(std::log(x));
        case Func1::Log: return static_cast<float>(std::log10(x));
        case Func1::Exp: return static_cast<float>(std::exp(x));
        // CEILING and FLOOR are one step beyond the truncation, also for whole numbers.
        case Func1::Ceiling: return static_cast<float>(static_cast<double>(ny::TruncToInt(x)) + 1);
        case Func1::Floor: return static_cast<float>(static_cast<double>(ny::TruncToInt(x)) - 1);
        case Func1::IntPart: return static_cast<float>(ny::TruncToInt(x));
        case Func1::FracPart: return static_cast<float>(x - ny::TruncToInt(x));
        case Func1::Round: return static_cast<float>(ny::TruncToInt(x + 0.5));
        default: return 0.0f;
    }
}

// One draw for the whole call: rand() modulo the truncated argument, at least 1. An argument
// that truncates to 0 gives that floor too, so no modulo by zero is ever made.
float DrawRandom(float argument) {
    const int n = ny::TruncToInt(argument);
    const int r = n == 0 ? 0 : std::rand() % n;
    return static_cast<float>(r < 1 ? 1 : r);
}

enum class Func2 { Mod, Max, Min, Pow };

Func2 FindFunc2(const char* word) {
    if (std::strcmp(word, "MOD") == 0) return Func2::Mod;
    if (std::strcmp(word, "MAX") == 0) return Func2::Max;
    if (std::strcmp(word, "MIN") == 0) return Func2::Min;
    return Func2::Pow;
}

float Apply2(Func2 kind, float a, float b) {
    switch (kind) {
        case Func2::Mod: return static_cast<float>(std::fmod(static_cast<double>(a), b));
        case Func2::Max: return b > a ? b : a;
        case Func2::Min: return b < a ? b : a;
        case Func2::Pow: return static_cast<float>(std::pow(static_cast<double>(a), b));
    }
    return 0.0f;
}

// The colour number 0x00BBGGRR of three channel values, each truncated and cut to its low byte.
float ColourOf(float r, float g, float b) {
    const int colour = (ny::TruncToInt(r) & 255) | ((ny::TruncToInt(g) & 255) << 8) |
                       ((ny::TruncToInt(b) & 255) << 16);
    return static_cast<float>(colour);
}

}  // namespace

char CIndicator::ReadMathFunc1(char* word, float* out, short* from, short* to, char permission,
                               char* isSeries) {
    Func1 kind;
    if (!FindFunc1(word, &kind)) return NY_EVAL_UNKNOWN_WORD;
    ny::PooledBuffer argument(Context().pool, m_nBarCount);
    float* x = argument.floats();
    if (const char rc = ReadSoleArgument(x, from, to, isSeries, permission)) return rc;

    switch (kind) {
        case Func1::Rand:
            out[0] = DrawRandom(x[0]);
            if (*isSeries) ny::Spread(out, *from, *to, m_nBarCount);
            return 0;
        case Func1::DynaInfo:
        case Func1::Finance: {
            // The id is the argument's 16 bits; only element 0 is written, and a stock without
            // data leaves the value as the reader left it, without an error.
            const auto id = static_cast<short>(static_cast<unsigned short>(ny::TruncToInt(x[0])));
            if (kind == Func1::DynaInfo) ReadDYNAINFO(out, id);
            else ReadFINANCE(out, id);
            return 0;
        }
        default: break;
    }
    if (!*isSeries) {
        if (kind == Func1::Sqrt && !(x[0] > ny::kZeroTolerance)) return NY_EVAL_ZERO_DIVISOR;
        out[0] = Apply1(kind, x[0]);
        return 0;
    }
    const ny::BarSpan span(*from, *to, m_nBarCount);
    for (int i = span.first; i <= span.last; ++i) {
        if (kind == Func1::Sqrt && !(x[i] > ny::kZeroTolerance))
            out[i] = i == *from ? 0.0f : out[i - 1];  // a root near zero repeats the bar before
        else
            out[i] = Apply1(kind, x[i]);
    }
    return 0;
}

char CIndicator::ReadMathFunc2(char* word, float* out, short* from, short* to, char permission,
                               char* isSeries) {
    const Func2 kind = FindFunc2(word);
    char rc = BeginCall(2);
    if (rc != 0) return rc;
    ny::PooledBuffer bufferA(Context().pool, m_nBarCount);
    ny::PooledBuffer bufferB(Context().pool, m_nBarCount);
    float* a = bufferA.floats();
    float* b = bufferB.floats();
    short aFrom = *from, aTo = *to, bFrom = *from, bTo = *to;
    char aSeries = 0, bSeries = 0;
    if ((rc = ReadValueArgument(a, &aFrom, &aTo, &aSeries, permission, false)) != 0) return rc;
    if ((rc = ReadValueArgument(b, &bFrom, &bTo, &bSeries, permission, true)) != 0) return rc;
    if ((rc = MergeRange(from, to, aFrom, aTo)) != 0) return rc;
    if ((rc = MergeRange(from, to, bFrom, bTo)) != 0) return rc;

    const bool isMod = kind == Func2::Mod;
    if (!aSeries && !bSeries) {
        if (isMod && ny::IsZeroDivisor(b[0])) return NY_EVAL_ZERO_DIVISOR;
        out[0] = Apply2(kind, a[0], b[0]);
        return 0;
    }
    *isSeries = 1;
    if (!aSeries) ny::Spread(a, *from, *to, m_nBarCount);
    if (!bSeries) {
        if (isMod && ny::IsZeroDivisor(b[0])) return NY_EVAL_ZERO_DIVISOR;
        ny::Spread(b, *from, *to, m_nBarCount);
    }
    const ny::BarSpan span(*from, *to, m_nBarCount);
    for (int i = span.first; i <= span.last; ++i) {
        if (isMod && ny::IsZeroDivisor(b[i]))
            out[i] = i == *from ? 0.0f : out[i - 1];  // a divisor near zero repeats the bar before
        else
            out[i] = Apply2(kind, a[i], b[i]);
    }
    return 0;
}

char CIndicator::ReadMathFunc3(char* word, float* out, short* from, short* to, char permission,
                               char* isSeries) {
    const bool isRgb = std::strcmp(word, "RGB") == 0;
    char rc = BeginCall(3);
    if (rc != 0) return rc;
    ny::PooledBuffer buffers[3] = {{Context().pool, static_cast<size_t>(m_nBarCount)},
                                   {Context().pool, static_cast<size_t>(m_nBarCount)},
                                   {Context().pool, static_cast<size_t>(m_nBarCount)}};
    short argFrom[3], argTo[3];
    char argSeries[3] = {};
    for (int k = 0; k < 3; ++k) {
        argFrom[k] = *from;
        argTo[k] = *to;
        rc = ReadValueArgument(buffers[k].floats(), &argFrom[k], &argTo[k], &argSeries[k],
                               permission, k == 2);
        if (rc != 0) return rc;
    }
    for (int k = 0; k < 3; ++k)
        if ((rc = MergeRange(from, to, argFrom[k], argTo[k])) != 0) return rc;

    const float* a = buffers[0].floats();
    const float* b = buffers[1].floats();
    const float* c = buffers[2].floats();
    if (!argSeries[0] && !argSeries[1] && !argSeries[2]) {
        if (isRgb)
            out[0] = ColourOf(a[0], b[0], c[0]);
        else  // the bounds may stand in either order
            out[0] = ((b[0] <= a[0] && a[0] <= c[0]) || (c[0] <= a[0] && a[0] <= b[0])) ? 1.0f : 0.0f;
        return 0;
    }
    *isSeries = 1;
    for (int k = 0; k < 3; ++k)
        if (!argSeries[k]) ny::Spread(buffers[k].floats(), *from, *to, m_nBarCount);
    const ny::BarSpan span(*from, *to, m_nBarCount);
    for (int i = span.first; i <= span.last; ++i) {
        if (isRgb)
            out[i] = ColourOf(a[i], b[i], c[i]);
        else  // over a series the second argument is the lower bound
            out[i] = (b[i] <= a[i] && a[i] <= c[i]) ? 1.0f : 0.0f;
    }
    return 0;
}
