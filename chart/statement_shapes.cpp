// The shapes of one statement: line styles by m_nType, and the draw commands by the fields they
// leave in the statement (see docs/drawing.md for the fields, docs/chart.md for their looks).

#include "chart/statement_shapes.h"

#include <cmath>
#include <cstdint>
#include <cstring>
#include <functional>

#include "catalog/styles.h"
#include "engine/draw_kind.h"
#include "host/hisday.h"
#include "model/indicator.h"

namespace ny {
namespace {

constexpr double kColumnWidth = 0.7;  // a candle's or column's body, in bar spacings
constexpr float kNoValue = -1e30f;    // DRAWNULL is -1e36: anything this low has no value
constexpr double kIconSize = 5;

using Shapes = std::vector<PlotShape>;

float DrawValue(const CExpression& s, int bar, int field) { return s.m_pDrawData[4 * bar + field]; }

float DrawArg(const CExpression& s, int slot) {
    float value;
    std::memcpy(&value, &s.m_lDrawArgs[slot], sizeof value);
    return value;
}

template <typename T>
T DrawParam(const CExpression& s, size_t offset) {
    T value;
    std::memcpy(&value, s.m_DrawParams + offset, sizeof value);
    return value;
}

std::string DrawParamText(const CExpression& s) {
    return std::string(s.m_DrawParams, strnlen(s.m_DrawParams, sizeof s.m_DrawParams));
}

bool Usable(float value) { return std::isfinite(value) && value > kNoValue; }

// Bars where the statement's own series is on (a draw command's condition).
bool ConditionOn(const CExpression& s, int bar) { return HasPlotValue(s, bar) && s.m_pData[bar] != 0; }

bool InRange(const CExpression& s, int bar) {
    return s.m_cComputed == 1 && bar >= s.m_nFirst && bar < s.m_nEnd && bar < s.m_nAllocBars;
}

bool CandleUp(const CHisDay& bar) { return bar.m_fClose >= bar.m_fOpen; }

PlotShape MakeShape(ChartShape::Kind kind, Colour colour, std::vector<PointF> points) {
    PlotShape p;
    p.shape.kind = kind;
    p.shape.colour = colour;
    p.shape.points = std::move(points);
    return p;
}

PlotShape Column(double bar, double from, double to, double width, Colour colour, bool filled = true) {
    PlotShape p = MakeShape(ChartShape::Kind::Rect, colour, {{bar - width / 2, from}, {bar + width / 2, to}});
    p.shape.filled = filled;
    return p;
}

PlotShape Segment(PointF a, PointF b, Colour colour, double width) {
    PlotShape p = MakeShape(ChartShape::Kind::Line, colour, {a, b});
    p.shape.width = width;
    return p;
}

PlotShape MarkerAt(PointF at, Marker marker, Colour colour, double size) {
    PlotShape p = MakeShape(ChartShape::Kind::Marker, colour, {at});
    p.shape.marker = marker;
    p.shape.size = size;
    return p;
}

PlotShape TextAt(PointF at, std::string text, Colour colour, TextAlign align = TextAlign::Centre) {
    PlotShape p = MakeShape(ChartShape::Kind::Text, colour, {at});
    p.shape.text = std::move(text);
    p.shape.align = align;
    return p;
}

// Polylines through the points that `valueAt` gives, broken where it gives none unless `joinGaps`.
void PlotPolyline(const PlotContext& c, const std::function<bool(int, double*)>& valueAt, Colour colour,
                  double width, bool dashed, bool joinGaps, Shapes* out) {
    std::vector<PointF> run;
    auto flush = [&] {
        if (run.size() > 1) {
            PlotShape p = MakeShape(ChartShape::Kind::Line, colour, run);
            p.shape.width = width;
            p.shape.dashed = dashed;
            out->push_back(std::move(p));
        } else if (run.size() == 1) {
            out->push_back(MarkerAt(run[0], Marker::Dot, colour, width));
        }
        run.clear();
    };
    for (int bar = c.firstBar; bar < c.endBar; ++bar) {
        double value = 0;
        if (valueAt(bar, &value))
            run.push_back({static_cast<double>(bar), value});
        else if (!joinGaps)
            flush();
    }
    flush();
}

void PlotValueLine(const CExpression& s, Colour colour, const PlotContext& c, bool dashed, Shapes* out) {
    PlotPolyline(c, [&](int bar, double* v) { return HasPlotValue(s, bar) && (*v = s.m_pData[bar], true); }, colour,
                 std::max<short>(s.m_nWidth, 1), dashed, false, out);
}

// One column or stick per bar from zero to the value, coloured bar by bar.
void PlotFromZero(const CExpression& s, const PlotContext& c, double width,
                  const std::function<Colour(int bar, float value)>& colourAt, Shapes* out) {
    for (int bar = c.firstBar; bar < c.endBar; ++bar) {
        if (!HasPlotValue(s, bar)) continue;
        const float v = s.m_pData[bar];
        if (width > 0)
            out->push_back(Column(bar, 0, v, width, colourAt(bar, v)));
        else
            out->push_back(Segment({double(bar), 0}, {double(bar), v}, colourAt(bar, v), std::max<short>(s.m_nWidth, 1)));
    }
}

void PlotStyledLine(const CExpression& s, Colour colour, const PlotContext& c, Shapes* out) {
    const ChartTheme& t = *c.theme;
    auto fixed = [colour](int, float) { return colour; };
    switch (s.m_nType) {
        case NY_STYLE_VOLSTICK:
            return PlotFromZero(s, c, kColumnWidth, [&](int bar, float) { return CandleUp(c.bars[bar]) ? t.up : t.down; }, out);
        case NY_STYLE_COLORSTICK:
            return PlotFromZero(s, c, 0, [&](int, float v) { return v >= 0 ? t.up : t.down; }, out);
        case NY_STYLE_STICK:
            return PlotFromZero(s, c, 0, fixed, out);
        case NY_STYLE_LINESTICK:
            PlotFromZero(s, c, 0, fixed, out);
            return PlotValueLine(s, colour, c, false, out);
        case NY_STYLE_COLORBAR:
            return PlotFromZero(s, c, kColumnWidth, [&](int bar, float v) {
                return HasPlotValue(s, bar - 1) && v < s.m_pData[bar - 1] ? t.down : t.up;
            }, out);
        case NY_STYLE_CIRCLEDOT:
        case NY_STYLE_CROSSDOT:
        case NY_STYLE_POINTDOT: {
            const Marker marker = s.m_nType == NY_STYLE_CIRCLEDOT ? Marker::Circle
                                  : s.m_nType == NY_STYLE_CROSSDOT ? Marker::Cross : Marker::Dot;
            for (int bar = c.firstBar; bar < c.endBar; ++bar)
                if (HasPlotValue(s, bar)) out->push_back(MarkerAt({double(bar), s.m_pData[bar]}, marker, colour, 2.5));
            return;
        }
        case NY_STYLE_NODRAW:
            return;
        default:
            return PlotValueLine(s, colour, c, s.m_nType == NY_STYLE_DOTLINE, out);
    }
}

// DRAWLINE: from the latest bar of the first condition to the next bar of the second; EXPAND 1
// carries the line on to the right edge, 10 back to the left edge, 11 both ways.
void PlotDrawLine(const CExpression& s, Colour colour, const PlotContext& c, Shapes* out) {
    const int expand = static_cast<signed char>(s.m_DrawParams[0]);
    int start = -1;
    for (int bar = s.m_nFirst; bar < c.endBar; ++bar) {
        if (!InRange(s, bar)) continue;
        if (start >= 0 && bar > start && DrawValue(s, bar, 1) != 0) {
            PointF a{double(start), DrawValue(s, start, 0)}, b{double(bar), DrawValue(s, bar, 2)};
            const double slope = (b.y - a.y) / (b.x - a.x);
            if (expand == 10 || expand == 11) a = {c.firstBar - 0.5, a.y + slope * (c.firstBar - 0.5 - a.x)};
            if (expand == 1 || expand == 11) b = {c.endBar - 0.5, b.y + slope * (c.endBar - 0.5 - b.x)};
            if (b.x >= c.firstBar) out->push_back(Segment(a, b, colour, std::max<short>(s.m_nWidth, 1)));
            start = -1;
        }
        if (ConditionOn(s, bar)) start = bar;
    }
}

void PlotKLine(const CExpression& s, const PlotContext& c, Shapes* out) {
    for (int bar = c.firstBar; bar < c.endBar; ++bar) {
        if (!InRange(s, bar)) continue;
        const float open = DrawValue(s, bar, 0), high = DrawValue(s, bar, 1), low = DrawValue(s, bar, 2),
                    close = DrawValue(s, bar, 3);
        const Colour colour = close >= open ? c.theme->up : c.theme->down;
        out->push_back(Segment({double(bar), low}, {double(bar), high}, colour, 1));
        out->push_back(Column(bar, open, close, kColumnWidth, colour));
    }
}

// STICKLINE: WIDTH 10 is one bar spacing; EMPTY 0 fills, -1 draws a dashed outline, else solid.
void PlotStickLine(const CExpression& s, Colour colour, const PlotContext& c, Shapes* out) {
    const double width = std::clamp(DrawParam<float>(s, 0) / 10.0, 0.0, 1.0);
    const int16_t empty = DrawParam<int16_t>(s, 4);
    for (int bar = c.firstBar; bar < c.endBar; ++bar) {
        if (!ConditionOn(s, bar)) continue;
        const float from = DrawValue(s, bar, 0), to = DrawValue(s, bar, 1);
        if (width <= 0) {
            out->push_back(Segment({double(bar), from}, {double(bar), to}, colour, 1));
            continue;
        }
        PlotShape stick = Column(bar, from, to, width, colour, empty == 0);
        stick.shape.dashed = empty == -1;
        out->push_back(std::move(stick));
    }
}

// DRAWBAND and FILLRGN: the area between two series, from one bar to the next in the colour that
// `colourAt` gives for the pair of bars (or none). Neighbouring steps of one colour make one
// polygon, so that no seams show between the bars.
void PlotBand(const CExpression& s, const PlotContext& c, int upperField, int lowerField,
              const std::function<bool(int bar, Colour*)>& colourAt, Shapes* out) {
    std::vector<PointF> upper, lower;
    Colour runColour = 0;
    auto flush = [&] {
        if (upper.empty()) return;
        upper.insert(upper.end(), lower.rbegin(), lower.rend());
        out->push_back(MakeShape(ChartShape::Kind::Polygon, runColour, std::move(upper)));
        upper.clear();
        lower.clear();
    };
    for (int bar = std::max<int>(c.firstBar, s.m_nFirst); bar + 1 < c.endBar; ++bar) {
        Colour colour = 0;
        if (!InRange(s, bar) || !InRange(s, bar + 1) || !colourAt(bar, &colour)) {
            flush();
            continue;
        }
        if (!upper.empty() && colour != runColour) flush();
        if (upper.empty()) {
            runColour = colour;
            upper.push_back({double(bar), DrawValue(s, bar, upperField)});
            lower.push_back({double(bar), DrawValue(s, bar, lowerField)});
        }
        upper.push_back({double(bar + 1), DrawValue(s, bar + 1, upperField)});
        lower.push_back({double(bar + 1), DrawValue(s, bar + 1, lowerField)});
    }
    flush();
}

// DRAWICON: odd types are red signals, even ones green; the shape goes round a cycle of five. An
// arrow points at its price from beyond it, so that a buy arrow at the low sits under the candle
// and a sell arrow at the high above it; other shapes are centred on the price.
void PlotIcons(const CExpression& s, const PlotContext& c, Shapes* out) {
    static constexpr Marker kShapes[] = {Marker::TriangleUp, Marker::TriangleDown, Marker::Circle, Marker::Diamond,
                                         Marker::Square};
    const int type = std::max<int>(DrawParam<int16_t>(s, 0), 1);
    const Marker marker = kShapes[(type - 1) % 5];
    const Colour colour = type % 2 == 1 ? c.theme->up : c.theme->down;
    const double lift = marker == Marker::TriangleUp ? -(kIconSize + 1) : marker == Marker::TriangleDown ? kIconSize + 1 : 0;
    for (int bar = c.firstBar; bar < c.endBar; ++bar) {
        if (!ConditionOn(s, bar)) continue;
        PlotShape icon = MarkerAt({double(bar), DrawValue(s, bar, 0)}, marker, colour, kIconSize);
        icon.lift = lift;
        out->push_back(std::move(icon));
    }
}

// DRAWTEXT and DRAWTEXT_OFFSET; the offset moves the text up by that many pixels.
void PlotTexts(const CExpression& s, Colour colour, const PlotContext& c, Shapes* out) {
    const std::string text = DrawParamText(s);
    for (int bar = c.firstBar; bar < c.endBar; ++bar) {
        if (!ConditionOn(s, bar)) continue;
        PlotShape label = TextAt({double(bar), DrawValue(s, bar, 0)}, text, colour);
        label.lift = DrawArg(s, 0);
        out->push_back(std::move(label));
    }
}

// DRAWTEXT_FIX: X and Y as fractions of the pane; TYPE 0 aligns left, 1 right.
void PlotFixedText(const CExpression& s, Colour colour, Shapes* out) {
    if (DrawArg(s, 0) == 0) return;
    PlotShape label = TextAt({DrawArg(s, 1), DrawArg(s, 2)}, DrawParamText(s), colour,
                             DrawArg(s, 3) == 1 ? TextAlign::Right : TextAlign::Left);
    label.paneFraction = true;
    out->push_back(std::move(label));
}

void PlotNumbers(const CExpression& s, Colour colour, const PlotContext& c, Shapes* out) {
    for (int bar = c.firstBar; bar < c.endBar; ++bar) {
        if (!InRange(s, bar) || DrawValue(s, bar, 0) == 0) continue;
        char digits[32];
        std::snprintf(digits, sizeof digits, "%.2f", DrawValue(s, bar, 1));
        out->push_back(TextAt({double(bar), DrawValue(s, bar, 2)}, digits, colour));
    }
}

// DRAWBMP: pictures are not loaded; a hollow square with the file's name marks the spot.
void PlotPictures(const CExpression& s, Colour colour, const PlotContext& c, Shapes* out) {
    for (int bar = c.firstBar; bar < c.endBar; ++bar) {
        if (!ConditionOn(s, bar)) continue;
        PlotShape frame = MarkerAt({double(bar), DrawValue(s, bar, 0)}, Marker::Square, colour, kIconSize);
        frame.shape.filled = false;
        out->push_back(std::move(frame));
    }
}

// DRAWGBK: the pane's background, one colour or a gradient from the first colour to the second.
void PlotBackground(const CExpression& s, Shapes* out) {
    if (DrawArg(s, 0) == 0) return;
    const Colour top = static_cast<uint32_t>(DrawParam<int32_t>(s, 0));
    PlotShape fill = MakeShape(ChartShape::Kind::Gradient, top, {{0, 0}, {1, 1}});
    fill.shape.colour2 = DrawArg(s, 1) != 0 ? static_cast<uint32_t>(DrawParam<int32_t>(s, 4)) : top;
    fill.paneFraction = true;
    out->push_back(std::move(fill));
}

// DRAWSIGN: an entry mark (red, under the low) or exit mark (green, over the high) at each bar
// whose f1 holds a direction, the core text in the top left corner, red while the expert is long,
// and with the flag on a "多" under or a "空" over the last bar for the position held there.
void PlotSigns(const CExpression& s, const PlotContext& c, Shapes* out) {
    constexpr int kLong = 1, kShort = 2;
    const bool longNow = s.m_strDrawText.rfind("看多", 0) == 0;
    if (DrawArg(s, 0) != 0 && !s.m_strDrawText.empty()) {
        PlotShape text = TextAt({0.01, 0.04}, s.m_strDrawText, longNow ? c.theme->up : c.theme->down, TextAlign::Left);
        text.paneFraction = true;
        out->push_back(std::move(text));
    }
    int position = 0;
    for (int bar = c.firstBar; bar < c.endBar; ++bar) {
        const int direction = InRange(s, bar) ? static_cast<int>(DrawValue(s, bar, 1)) : 0;
        const int state = InRange(s, bar) && DrawArg(s, 0) != 0 ? static_cast<int>(DrawValue(s, bar, 0)) : 0;
        if (direction == kLong || direction == kShort) position = direction;
        else if (state == kLong || state == kShort) position = state;
        if (direction != kLong && direction != kShort) continue;
        const bool entry = direction == kLong;
        const CHisDay& b = c.bars[bar];
        PlotShape mark = MarkerAt({double(bar), entry ? b.m_fLow : b.m_fHigh}, entry ? Marker::TriangleUp : Marker::TriangleDown,
                                  entry ? c.theme->up : c.theme->down, kIconSize);
        mark.lift = entry ? -kIconSize - 3 : kIconSize + 3;  // clear of the wick
        out->push_back(std::move(mark));
    }
    if (DrawParam<int16_t>(s, 0) != 1 || position == 0 || c.endBar <= c.firstBar) return;
    const CHisDay& last = c.bars[c.endBar - 1];
    const bool isLong = position == kLong;
    PlotShape flag = TextAt({c.endBar - 0.5, isLong ? last.m_fLow : last.m_fHigh}, isLong ? "多" : "空",
                            isLong ? c.theme->up : c.theme->down, TextAlign::Right);
    flag.lift = isLong ? -3 * kIconSize - 6 : 3 * kIconSize + 6;  // clear of the bar and its mark
    out->push_back(std::move(flag));
}

}  // namespace

bool HasPlotValue(const CExpression& s, int bar) {
    return bar >= 0 && InRange(s, bar) && s.m_pData != nullptr && Usable(s.m_pData[bar]);
}

void PlotStatement(const CExpression& s, Colour colour, const PlotContext& c, Shapes* out) {
    if (s.m_cComputed != 1 || s.m_pData == nullptr) return;
    if (s.m_nType < NY_STYLE_FIRST_DRAW_KIND) return s.m_nType == NY_STYLE_ASSIGNMENT ? void() : PlotStyledLine(s, colour, c, out);
    if (s.m_pDrawData == nullptr) return;
    const int width = std::max<short>(s.m_nWidth, 1);
    switch (s.m_nType) {
        case kDrawPolyline:
            return PlotPolyline(c, [&](int bar, double* v) { return ConditionOn(s, bar) && (*v = DrawValue(s, bar, 0), true); },
                                colour, width, false, true, out);
        case kDrawLine: return PlotDrawLine(s, colour, c, out);
        case kDrawCandle: return PlotKLine(s, c, out);
        case kDrawStick: return PlotStickLine(s, colour, c, out);
        case kDrawBand:
            return PlotBand(s, c, 0, 1, [&](int bar, Colour* col) {
                const bool above = DrawValue(s, bar, 0) + DrawValue(s, bar + 1, 0) > DrawValue(s, bar, 1) + DrawValue(s, bar + 1, 1);
                *col = static_cast<uint32_t>(DrawParam<int32_t>(s, above ? 0 : 4));
                return true;
            }, out);
        case kDrawRegion:
            return PlotBand(s, c, 0, 2, [&](int bar, Colour* col) {
                *col = static_cast<uint32_t>(DrawParam<int32_t>(s, 0));
                return DrawValue(s, bar, 1) != 0;
            }, out);
        case kDrawIcon: return PlotIcons(s, c, out);
        case kDrawText: return PlotTexts(s, colour, c, out);
        case kDrawFixedText: return PlotFixedText(s, colour, out);
        case kDrawNumber: return PlotNumbers(s, colour, c, out);
        case kDrawBitmap: return PlotPictures(s, colour, c, out);
        case kDrawBackground: return PlotBackground(s, out);
        case kDrawSign: return PlotSigns(s, c, out);
        default: return;  // tips have nothing to draw on a still picture
    }
}

}  // namespace ny
