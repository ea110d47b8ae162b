#pragma once
// The chart of formulas over a stock's bars. BuildChartScene lays everything out once, in pixels:
// the main pane with candles and the main-chart formula, a volume pane, a pane of its own for each
// indicator formula (or its lines over the main pane), value scales, the time axis and a title line per pane with
// the last values. PaintChart then replays the scene on any ChartPainter, so that files and the
// desktop program show the same picture. The scene owns copies of all it shows: the bars and the
// formulas may go away once it is built. One thread at a time.
//
// Nothing here fails: a statement that was not computed is left out of the drawing and named in
// its pane's title line; bars without a value (outside a statement's range, or DRAWNULL) are gaps.

#include <string>
#include <vector>

#include "platform/geometry.h"

class CIndicator;
struct CHisDay;

namespace ny {

struct PointF {
    double x = 0;
    double y = 0;
};

struct RectF {
    double left = 0, top = 0, right = 0, bottom = 0;
    double Width() const { return right - left; }
    double Height() const { return bottom - top; }
};

enum class TextAlign { Left, Centre, Right };

// A point symbol of a fixed size in pixels, centred on its point.
enum class Marker { Circle, Dot, Cross, TriangleUp, TriangleDown, Diamond, Square };

// One thing to draw. Which fields count depends on the kind:
//   Rect      points[0], points[1]: opposite corners; filled, else outlined with `width`
//   Line      points: a polyline of `width` pixels, dashed or solid
//   Polygon   points: a filled polygon
//   Marker    points[0]: centre; `marker`, `size` (half the symbol's extent)
//   Text      points[0]: anchor, left/centre/right by `align` and the vertical middle of the text
//   Gradient  points[0], points[1]: corners; from `colour` at the top to `colour2` at the bottom
struct ChartShape {
    enum class Kind { Rect, Line, Polygon, Marker, Text, Gradient };
    Kind kind = Kind::Line;
    std::vector<PointF> points;
    Colour colour = 0;
    Colour colour2 = 0;
    double width = 1;
    bool filled = true;
    bool dashed = false;
    Marker marker = Marker::Dot;
    double size = 3;
    TextAlign align = TextAlign::Left;
    std::string text;  // GBK
};

// One pane: its plot area, its value scale and what is drawn inside it (clipped to the area).
struct ChartPane {
    RectF area;
    double low = 0, high = 1;  // values at the bottom and the top of the area
    int firstBar = 0;          // the bar shown leftmost
    int barsShown = 1;
    int formula = -1;  // the index in ChartRequest::formulas of the formula drawn here; -1: main or volume
    std::vector<ChartShape> shapes;

    double BarSpacing() const { return area.Width() / barsShown; }
    double XOfBar(double bar) const { return area.left + (bar - firstBar + 0.5) * BarSpacing(); }
    double YOfValue(double value) const { return area.bottom - (value - low) / (high - low) * area.Height(); }
};

struct ChartTheme {
    Colour background, frame, grid, text, up, down;
    std::vector<Colour> lines;  // colours of statements that name none, in turn
};
const ChartTheme& DarkTheme();
const ChartTheme& LightTheme();

struct ChartScene {
    Size size;
    double fontPixels = 12;
    Colour background = 0;
    std::vector<ChartPane> panes;     // main, volume if asked for, then one per formula with a pane of its own
    std::vector<ChartShape> overlay;  // frames, scales, dates and title lines, not clipped
};

// What a chart shows. The formulas are evaluated over all `barCount` bars already; `mainFormula`
// may be null. Each of `formulas` gets a pane of its own below the main and volume panes, in turn,
// or draws over the candles when it is a main-chart formula (`m_cDrawPos` 1). `label` (GBK) opens
// the main pane's title line, e.g. the stock's code and name.
struct ChartRequest {
    const CHisDay* bars = nullptr;
    int barCount = 0;
    bool minuteBars = false;
    int barsShown = 0;  // the newest bars to show; 0: as many as fit comfortably
    const CIndicator* mainFormula = nullptr;
    std::vector<const CIndicator*> formulas;
    bool volumePane = true;  // the built-in volume pane right below the main pane
    std::string label;
    const ChartTheme* theme = &DarkTheme();
    Size size{1000, 700};
};

ChartScene BuildChartScene(const ChartRequest& request);

// What a painter can do; coordinates are pixels with the origin at the top left.
class ChartPainter {
public:
    virtual ~ChartPainter() = default;
    virtual void SetClip(const RectF& area) = 0;
    virtual void ResetClip() = 0;
    virtual void FillRect(const RectF& rect, Colour colour) = 0;
    virtual void FillGradient(const RectF& rect, Colour top, Colour bottom) = 0;
    virtual void Polyline(const std::vector<PointF>& points, Colour colour, double width, bool dashed) = 0;
    virtual void FillPolygon(const std::vector<PointF>& points, Colour colour) = 0;
    virtual void Circle(PointF centre, double radius, Colour colour, bool filled) = 0;
    // `gbk` in the scene's font size, anchored as ChartShape::Kind::Text describes.
    virtual void Text(PointF anchor, const std::string& gbk, Colour colour, TextAlign align, double fontPixels) = 0;
};

void PaintChart(const ChartScene& scene, ChartPainter& painter);

// Width in pixels of GBK text in the chart's fixed-width CJK font: a byte is half the font size.
double TextWidth(const std::string& gbk, double fontPixels);

}  // namespace ny
