// Layout of the chart: panes, value scales, the time axis and the title lines, and the painting of
// a finished scene.

#include "chart/chart_scene.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <iterator>
#include <limits>

#include "chart/statement_shapes.h"
#include "catalog/styles.h"
#include "host/hisday.h"
#include "model/indicator.h"

namespace ny {
namespace {

constexpr double kScaleWidth = 66;     // the value labels right of the panes
constexpr double kTimeAxisHeight = 20;
constexpr double kMargin = 6;
constexpr double kComfortableSpacing = 7;  // pixels per bar when the caller leaves the count open
constexpr double kTickSpacing = 30;        // pixels between value labels, at least
constexpr double kHeadroom = 0.06;         // share of a scale kept free above and below the values

// The main pane's share of the height by the number of panes below it; from five on it keeps the last.
constexpr double kMainShares[] = {1.0, 0.72, 0.55, 0.46, 0.40, 0.34};
// The volume pane's height beside a formula's pane below the main pane: volume columns read well lower.
constexpr double kVolumeWeight = 0.17 / 0.28;

struct TitlePart {
    std::string text;
    Colour colour;
};

// A pane while it is being built: shapes still in value space, and its title line.
struct PaneDraft {
    std::vector<PlotShape> plots;
    std::vector<TitlePart> title;
    bool fromZero = false;  // the scale includes 0 (volume)
    int themeColours = 0;   // statements so far that took the theme's next line colour
};

ChartShape TextShape(PointF at, std::string text, Colour colour, TextAlign align) {
    ChartShape s;
    s.kind = ChartShape::Kind::Text;
    s.points = {at};
    s.text = std::move(text);
    s.colour = colour;
    s.align = align;
    return s;
}

ChartShape LineShape(PointF a, PointF b, Colour colour, bool dashed) {
    ChartShape s;
    s.points = {a, b};
    s.colour = colour;
    s.dashed = dashed;
    return s;
}

std::string FormatValue(double value, int decimals) {
    char text[48];
    std::snprintf(text, sizeof text, "%.*f", decimals, value);
    return text;
}

int DecimalsFor(double value) {
    const double size = std::fabs(value);
    return size >= 100000 ? 0 : size >= 1 || size == 0 ? 2 : 3;
}

// A statement's own colour, else the theme's next line colour: the drawn statements of all formulas
// in a pane take them in turn, so that two formulas over the main pane don't draw alike. A NODRAW
// value, shown in the title line only, takes the text colour and leaves the turn to the lines.
Colour StatementColour(const CExpression& s, const ChartTheme& theme, PaneDraft* pane) {
    if (s.m_lColor >= 0) return static_cast<Colour>(s.m_lColor) & 0xFFFFFF;
    if (s.m_nType == NY_STYLE_NODRAW) return theme.text;
    return theme.lines[pane->themeColours++ % theme.lines.size()];
}

std::string StatementLabel(const CExpression& s, int index) {
    if (!s.m_strName.empty()) return s.m_strName;
    return "第" + std::to_string(index + 1) + "句";
}

// The title part of a statement: its name and last value, or its name marked as failed. Unnamed
// statements and draw commands that worked say nothing; a NODRAW line shows its value here only.
void AddStatementTitle(const CExpression& s, int index, Colour colour, int lastBar, const ChartTheme& theme,
                       std::vector<TitlePart>* title) {
    if (s.m_cComputed != 1) {
        title->push_back({StatementLabel(s, index) + " 计算失败", theme.text});
        return;
    }
    const bool drawCommand = s.m_nType >= NY_STYLE_FIRST_DRAW_KIND && s.m_nType != NY_STYLE_NODRAW;
    if (s.m_strName.empty() || s.m_nType == 0 || drawCommand) return;
    const std::string value = HasPlotValue(s, lastBar) ? FormatValue(s.m_pData[lastBar], DecimalsFor(s.m_pData[lastBar])) : "-";
    title->push_back({s.m_strName + ":" + value, colour});
}

// Adds a formula's statements and axis lines to a pane, and its name and values to the title.
void AddFormula(const CIndicator& formula, const PlotContext& context, bool withAxes, PaneDraft* pane) {
    const ChartTheme& theme = *context.theme;
    if (withAxes)
        for (const CAxeValue* axis : formula.m_arAxes) {
            PlotShape line;
            line.shape = LineShape({context.firstBar - 0.5, double(axis->m_nValue)},
                                   {context.endBar - 0.5, double(axis->m_nValue)}, theme.frame, true);
            pane->plots.push_back(line);
        }
    pane->title.push_back({formula.m_strName, theme.text});
    for (size_t i = 0; i < formula.m_arExpressions.size(); ++i) {
        const CExpression& s = *formula.m_arExpressions[i];
        if (s.m_nType == 0 && s.m_cComputed == 1) continue;
        const Colour colour = StatementColour(s, theme, pane);
        PlotStatement(s, colour, context, &pane->plots);
        AddStatementTitle(s, static_cast<int>(i), colour, context.endBar - 1, theme, &pane->title);
    }
}

PaneDraft MainPane(const ChartRequest& r, const PlotContext& c) {
    PaneDraft pane;
    for (int bar = c.firstBar; bar < c.endBar; ++bar) {
        const CHisDay& b = r.bars[bar];
        PlotShape wick, body;
        const Colour colour = b.m_fClose >= b.m_fOpen ? c.theme->up : c.theme->down;
        wick.shape = LineShape({double(bar), b.m_fLow}, {double(bar), b.m_fHigh}, colour, false);
        body.shape.kind = ChartShape::Kind::Rect;
        body.shape.colour = colour;
        body.shape.points = {{bar - 0.35, b.m_fOpen}, {bar + 0.35, b.m_fClose}};
        pane.plots.push_back(wick);
        pane.plots.push_back(body);
    }
    if (!r.label.empty()) pane.title.push_back({r.label, c.theme->text});
    if (r.mainFormula != nullptr) AddFormula(*r.mainFormula, c, false, &pane);
    for (const CIndicator* formula : r.formulas)
        if (formula != nullptr && formula->m_cDrawPos == 1) AddFormula(*formula, c, false, &pane);
    return pane;
}

PaneDraft VolumePane(const ChartRequest& r, const PlotContext& c) {
    PaneDraft pane;
    pane.fromZero = true;
    for (int bar = c.firstBar; bar < c.endBar; ++bar) {
        const CHisDay& b = r.bars[bar];
        PlotShape column;
        column.shape.kind = ChartShape::Kind::Rect;
        column.shape.colour = b.m_fClose >= b.m_fOpen ? c.theme->up : c.theme->down;
        column.shape.points = {{bar - 0.35, 0}, {bar + 0.35, b.m_fVolume}};
        pane.plots.push_back(column);
    }
    pane.title.push_back({"VOL:" + FormatValue(r.bars[c.endBar - 1].m_fVolume, 0), c.theme->text});
    return pane;
}

// The value range of a pane's shapes, with some room above and below.
void FitScale(const PaneDraft& draft, ChartPane* pane) {
    double low = draft.fromZero ? 0 : std::numeric_limits<double>::max();
    double high = draft.fromZero ? 0 : std::numeric_limits<double>::lowest();
    for (const PlotShape& p : draft.plots)
        if (!p.paneFraction)
            for (const PointF& point : p.shape.points)
                if (std::isfinite(point.y) && std::fabs(point.y) < 1e30) {
                    low = std::min(low, point.y);
                    high = std::max(high, point.y);
                }
    if (low > high) low = 0, high = 1;
    if (high - low < 1e-9) {
        const double pad = std::max(std::fabs(high) * 0.05, 1e-3);
        low -= pad, high += pad;
    }
    const double room = (high - low) * kHeadroom;
    pane->low = draft.fromZero && low >= 0 ? 0 : low - room;
    pane->high = high + room;
}

// Half way from one colour to another, channel by channel.
Colour HalfWay(Colour from, Colour to) {
    auto channel = [](unsigned a, unsigned b) { return (a + b + 1) / 2; };
    return channel(RedOf(from), RedOf(to)) | channel(GreenOf(from), GreenOf(to)) << 8 |
           channel(BlueOf(from), BlueOf(to)) << 16;
}

// Backgrounds first, then areas (bands, filled regions), then all else in order: an area is laid
// under the candles and lines it surrounds instead of hiding them.
std::vector<PlotShape> Layered(std::vector<PlotShape> plots) {
    auto layer = [](const PlotShape& p) {
        return p.shape.kind == ChartShape::Kind::Gradient ? 0 : p.shape.kind == ChartShape::Kind::Polygon ? 1 : 2;
    };
    std::stable_sort(plots.begin(), plots.end(), [&](const PlotShape& a, const PlotShape& b) { return layer(a) < layer(b); });
    return plots;
}

PointF ToPixels(const ChartPane& pane, const PlotShape& p, PointF point) {
    if (p.paneFraction)
        return {pane.area.left + point.x * pane.area.Width(), pane.area.top + point.y * pane.area.Height()};
    return {pane.XOfBar(point.x), pane.YOfValue(point.y) - p.lift};
}

double NiceStep(double rough) {
    const double power = std::pow(10.0, std::floor(std::log10(rough)));
    for (double factor : {1.0, 2.0, 5.0})
        if (factor * power >= rough) return factor * power;
    return 10 * power;
}

// Grid lines behind the pane's shapes and value labels right of it.
void AddValueScale(const ChartTheme& theme, double fontPixels, ChartPane* pane, std::vector<ChartShape>* overlay) {
    const double ticks = std::max(3.0, std::floor(pane->area.Height() / kTickSpacing));
    const double step = NiceStep((pane->high - pane->low) / ticks);
    const int decimals = std::max(0, static_cast<int>(-std::floor(std::log10(step))));
    std::vector<ChartShape> grid;
    for (double v = std::ceil(pane->low / step) * step; v <= pane->high; v += step) {
        const double y = pane->YOfValue(v);
        grid.push_back(LineShape({pane->area.left, y}, {pane->area.right, y}, theme.grid, true));
        if (y > pane->area.top + fontPixels / 2 && y < pane->area.bottom - fontPixels / 2)
            overlay->push_back(TextShape({pane->area.right + 4, y}, FormatValue(std::fabs(v) < step / 2 ? 0 : v, decimals),
                                         theme.text, TextAlign::Left));
    }
    pane->shapes.insert(pane->shapes.begin(), grid.begin(), grid.end());
}

void AddTitleLine(const std::vector<TitlePart>& title, const ChartPane& pane, double fontPixels,
                  std::vector<ChartShape>* overlay) {
    double x = pane.area.left + 2;
    const double y = pane.area.top - fontPixels * 0.5 - 3;
    for (const TitlePart& part : title) {
        overlay->push_back(TextShape({x, y}, part.text, part.colour, TextAlign::Left));
        x += TextWidth(part.text, fontPixels) + fontPixels;
    }
}

// Dates under the last pane where the month changes (day-based bars) or the day (minute bars),
// as far apart as the labels need.
void AddTimeAxis(const ChartRequest& r, const ChartPane& pane, double fontPixels, std::vector<ChartShape>* overlay) {
    const ChartTheme& theme = *r.theme;
    auto dateOf = [&](int bar) { return r.minuteBars ? 20000000 + r.bars[bar].m_lTime / 10000 : r.bars[bar].m_lTime; };
    double lastRight = pane.area.left - 1000;
    for (int bar = pane.firstBar; bar < pane.firstBar + pane.barsShown; ++bar) {
        const int date = dateOf(bar);
        const bool change = bar == pane.firstBar ||
                            (r.minuteBars ? date != dateOf(bar - 1) : date / 100 != dateOf(bar - 1) / 100);
        if (!change) continue;
        char text[16];
        if (r.minuteBars)
            std::snprintf(text, sizeof text, "%02d-%02d", date / 100 % 100, date % 100);
        else
            std::snprintf(text, sizeof text, "%04d-%02d", date / 10000, date / 100 % 100);
        const double x = pane.XOfBar(bar);
        if (x - lastRight < fontPixels || x + TextWidth(text, fontPixels) > pane.area.right) continue;
        overlay->push_back(LineShape({x, pane.area.bottom}, {x, pane.area.bottom + 4}, theme.frame, false));
        overlay->push_back(TextShape({x, pane.area.bottom + kTimeAxisHeight / 2 + 1}, text, theme.text, TextAlign::Left));
        lastRight = x + TextWidth(text, fontPixels);
    }
}

ChartShape Frame(const RectF& area, Colour colour) {
    ChartShape frame;
    frame.kind = ChartShape::Kind::Rect;
    frame.filled = false;
    frame.colour = colour;
    frame.points = {{area.left, area.top}, {area.right, area.bottom}};
    return frame;
}

// Turns a draft into a pane in pixels below `top`, of the given total height (title line included).
ChartPane FinishPane(const PaneDraft& draft, const PlotContext& c, double top, double height, const ChartScene& scene,
                     const ChartTheme& theme, std::vector<ChartShape>* overlay) {
    const double titleHeight = scene.fontPixels + 6;
    ChartPane pane;
    pane.area = {kMargin, top + titleHeight, scene.size.width - kScaleWidth, top + height};
    pane.firstBar = c.firstBar;
    pane.barsShown = c.endBar - c.firstBar;
    FitScale(draft, &pane);
    for (const PlotShape& p : Layered(draft.plots)) {
        ChartShape shape = p.shape;
        // Areas show half-transparent over the ground, so that one colour reads well in both themes.
        if (shape.kind == ChartShape::Kind::Polygon) shape.colour = HalfWay(shape.colour, theme.background);
        for (PointF& point : shape.points) point = ToPixels(pane, p, point);
        pane.shapes.push_back(std::move(shape));
    }
    AddValueScale(theme, scene.fontPixels, &pane, overlay);
    AddTitleLine(draft.title, pane, scene.fontPixels, overlay);
    overlay->push_back(Frame(pane.area, theme.frame));
    return pane;
}

// Heights of `count` panes sharing `total` pixels: the main pane's share, and the rest split among
// the panes below, the volume pane lower than a formula's.
std::vector<double> PaneHeights(double total, bool volumePane, size_t count) {
    const size_t below = count - 1;
    const double mainShare = kMainShares[std::min(below, std::size(kMainShares) - 1)];
    const bool lowVolume = volumePane && below > 1;
    const double weights = below - (lowVolume ? 1 - kVolumeWeight : 0);
    std::vector<double> heights{total * mainShare};
    for (size_t pane = 1; pane < count; ++pane)
        heights.push_back(total * (1 - mainShare) * (pane == 1 && lowVolume ? kVolumeWeight : 1) / weights);
    return heights;
}

}  // namespace

const ChartTheme& DarkTheme() {
    static const ChartTheme theme{0x000000, 0x404080, 0x302020, 0xC0C0C0, 0x3C3CFF, 0x54FF54,
                                  {0xFFFFFF, 0x00FFFF, 0xFF00FF, 0x00FF00, 0xFFFF00, 0x0080FF}};
    return theme;
}

const ChartTheme& LightTheme() {
    static const ChartTheme theme{0xFFFFFF, 0x909090, 0xE0E0E0, 0x202020, 0x2020E0, 0x1E9600,
                                  {0x202020, 0x0080D0, 0xB000B0, 0x008000, 0xA06000, 0x0000C0}};
    return theme;
}

double TextWidth(const std::string& gbk, double fontPixels) { return gbk.size() * fontPixels / 2; }

ChartScene BuildChartScene(const ChartRequest& r) {
    ChartScene scene;
    scene.size = r.size;
    scene.background = r.theme->background;
    if (r.bars == nullptr || r.barCount <= 0 || r.size.width <= kScaleWidth + kMargin) return scene;
    const double plotWidth = r.size.width - kScaleWidth - kMargin;
    const int wanted = r.barsShown > 0 ? r.barsShown : static_cast<int>(plotWidth / kComfortableSpacing);
    PlotContext context{r.bars, r.barCount - std::clamp(wanted, 1, r.barCount), r.barCount, r.theme};

    std::vector<PaneDraft> drafts{MainPane(r, context)};
    std::vector<int> formulaOfPane{-1};
    if (r.volumePane) {
        drafts.push_back(VolumePane(r, context));
        formulaOfPane.push_back(-1);
    }
    for (size_t i = 0; i < r.formulas.size(); ++i)
        if (r.formulas[i] != nullptr && r.formulas[i]->m_cDrawPos != 1) {
            drafts.emplace_back();
            AddFormula(*r.formulas[i], context, true, &drafts.back());
            formulaOfPane.push_back(static_cast<int>(i));
        }
    const std::vector<double> heights = PaneHeights(r.size.height - kTimeAxisHeight - kMargin, r.volumePane, drafts.size());
    double top = kMargin / 2;
    for (size_t i = 0; i < drafts.size(); ++i) {
        scene.panes.push_back(FinishPane(drafts[i], context, top, heights[i], scene, *r.theme, &scene.overlay));
        scene.panes.back().formula = formulaOfPane[i];
        top += heights[i];
    }
    AddTimeAxis(r, scene.panes.back(), scene.fontPixels, &scene.overlay);
    return scene;
}

namespace {

RectF Normalised(const ChartShape& shape) {
    const PointF a = shape.points[0], b = shape.points[1];
    RectF rect{std::min(a.x, b.x), std::min(a.y, b.y), std::max(a.x, b.x), std::max(a.y, b.y)};
    if (rect.Height() < 1) rect.bottom = rect.top + 1;  // a flat candle still shows
    if (rect.Width() < 1) rect.right = rect.left + 1;
    return rect;
}

std::vector<PointF> Outline(const RectF& r) {
    return {{r.left, r.top}, {r.right, r.top}, {r.right, r.bottom}, {r.left, r.bottom}, {r.left, r.top}};
}

void PaintMarker(const ChartShape& shape, ChartPainter& painter) {
    const PointF c = shape.points[0];
    const double s = shape.size;
    switch (shape.marker) {
        case Marker::Circle: return painter.Circle(c, s, shape.colour, false);
        case Marker::Dot: return painter.Circle(c, s, shape.colour, true);
        case Marker::Cross:
            painter.Polyline({{c.x - s, c.y - s}, {c.x + s, c.y + s}}, shape.colour, 1, false);
            return painter.Polyline({{c.x - s, c.y + s}, {c.x + s, c.y - s}}, shape.colour, 1, false);
        case Marker::TriangleUp:
            return painter.FillPolygon({{c.x, c.y - s}, {c.x + s, c.y + s}, {c.x - s, c.y + s}}, shape.colour);
        case Marker::TriangleDown:
            return painter.FillPolygon({{c.x, c.y + s}, {c.x + s, c.y - s}, {c.x - s, c.y - s}}, shape.colour);
        case Marker::Diamond:
            return painter.FillPolygon({{c.x, c.y - s}, {c.x + s, c.y}, {c.x, c.y + s}, {c.x - s, c.y}}, shape.colour);
        case Marker::Square: {
            const RectF square{c.x - s, c.y - s, c.x + s, c.y + s};
            return shape.filled ? painter.FillRect(square, shape.colour) : painter.Polyline(Outline(square), shape.colour, 1, false);
        }
    }
}

void PaintShape(const ChartShape& shape, double fontPixels, ChartPainter& painter) {
    switch (shape.kind) {
        case ChartShape::Kind::Rect: {
            const RectF rect = Normalised(shape);
            return shape.filled ? painter.FillRect(rect, shape.colour)
                                : painter.Polyline(Outline(rect), shape.colour, shape.width, shape.dashed);
        }
        case ChartShape::Kind::Line: return painter.Polyline(shape.points, shape.colour, shape.width, shape.dashed);
        case ChartShape::Kind::Polygon: return painter.FillPolygon(shape.points, shape.colour);
        case ChartShape::Kind::Marker: return PaintMarker(shape, painter);
        case ChartShape::Kind::Text: return painter.Text(shape.points[0], shape.text, shape.colour, shape.align, fontPixels);
        case ChartShape::Kind::Gradient: return painter.FillGradient(Normalised(shape), shape.colour, shape.colour2);
    }
}

}  // namespace

void PaintChart(const ChartScene& scene, ChartPainter& painter) {
    painter.FillRect({0, 0, double(scene.size.width), double(scene.size.height)}, scene.background);
    for (const ChartPane& pane : scene.panes) {
        painter.SetClip(pane.area);
        for (const ChartShape& shape : pane.shapes) PaintShape(shape, scene.fontPixels, painter);
        painter.ResetClip();
    }
    for (const ChartShape& shape : scene.overlay) PaintShape(shape, scene.fontPixels, painter);
}

}  // namespace ny
