// An SVG painter: each call of the painter becomes one element.

#include "chart/svg_painter.h"

#include <cstdio>

#include "host/encoding.h"

namespace ny {
namespace {

constexpr const char* kFontFamily = "Noto Sans Mono CJK SC, monospace";

std::string Number(double value) {
    char text[32];
    std::snprintf(text, sizeof text, "%.2f", value);
    return text;
}

std::string Hex(Colour colour) {
    char text[8];
    std::snprintf(text, sizeof text, "#%02x%02x%02x", RedOf(colour), GreenOf(colour), BlueOf(colour));
    return text;
}

std::string Escaped(const std::string& utf8) {
    std::string out;
    for (char c : utf8) {
        switch (c) {
            case '<': out += "&lt;"; break;
            case '>': out += "&gt;"; break;
            case '&': out += "&amp;"; break;
            case '"': out += "&quot;"; break;
            default: out += c;
        }
    }
    return out;
}

std::string PointList(const std::vector<PointF>& points) {
    std::string list;
    for (const PointF& p : points) list += (list.empty() ? "" : " ") + Number(p.x) + "," + Number(p.y);
    return list;
}

std::string RectAttributes(const RectF& r) {
    return "x=\"" + Number(r.left) + "\" y=\"" + Number(r.top) + "\" width=\"" + Number(r.Width()) + "\" height=\"" +
           Number(r.Height()) + "\"";
}

class SvgPainter : public ChartPainter {
public:
    explicit SvgPainter(Size size) {
        m_svg = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"" +
                std::to_string(size.width) + "\" height=\"" + std::to_string(size.height) + "\" viewBox=\"0 0 " +
                std::to_string(size.width) + " " + std::to_string(size.height) + "\">\n";
    }
    std::string Finish() { return m_svg + "</svg>\n"; }

    void SetClip(const RectF& area) override {
        const std::string id = "clip" + std::to_string(++m_ids);
        m_svg += "<clipPath id=\"" + id + "\"><rect " + RectAttributes(area) + "/></clipPath>\n<g clip-path=\"url(#" +
                 id + ")\">\n";
    }
    void ResetClip() override { m_svg += "</g>\n"; }
    void FillRect(const RectF& rect, Colour colour) override {
        m_svg += "<rect " + RectAttributes(rect) + " fill=\"" + Hex(colour) + "\"/>\n";
    }
    void FillGradient(const RectF& rect, Colour top, Colour bottom) override {
        const std::string id = "fill" + std::to_string(++m_ids);
        m_svg += "<linearGradient id=\"" + id + "\" x1=\"0\" y1=\"0\" x2=\"0\" y2=\"1\"><stop offset=\"0\" stop-color=\"" +
                 Hex(top) + "\"/><stop offset=\"1\" stop-color=\"" + Hex(bottom) + "\"/></linearGradient>\n<rect " +
                 RectAttributes(rect) + " fill=\"url(#" + id + ")\"/>\n";
    }
    void Polyline(const std::vector<PointF>& points, Colour colour, double width, bool dashed) override {
        m_svg += "<polyline points=\"" + PointList(points) + "\" fill=\"none\" stroke=\"" + Hex(colour) +
                 "\" stroke-width=\"" + Number(width) + "\"" + (dashed ? " stroke-dasharray=\"4,3\"" : "") + "/>\n";
    }
    void FillPolygon(const std::vector<PointF>& points, Colour colour) override {
        m_svg += "<polygon points=\"" + PointList(points) + "\" fill=\"" + Hex(colour) + "\"/>\n";
    }
    void Circle(PointF centre, double radius, Colour colour, bool filled) override {
        const std::string paint = filled ? "fill=\"" + Hex(colour) + "\"" : "fill=\"none\" stroke=\"" + Hex(colour) + "\"";
        m_svg += "<circle cx=\"" + Number(centre.x) + "\" cy=\"" + Number(centre.y) + "\" r=\"" + Number(radius) + "\" " +
                 paint + "/>\n";
    }
    void Text(PointF anchor, const std::string& gbk, Colour colour, TextAlign align, double fontPixels) override {
        static constexpr const char* kAnchors[] = {"start", "middle", "end"};
        m_svg += "<text x=\"" + Number(anchor.x) + "\" y=\"" + Number(anchor.y) + "\" font-family=\"" + kFontFamily +
                 "\" font-size=\"" + Number(fontPixels) + "\" dominant-baseline=\"central\" text-anchor=\"" +
                 kAnchors[static_cast<int>(align)] + "\" fill=\"" + Hex(colour) + "\">" + Escaped(GbkToUtf8(gbk)) +
                 "</text>\n";
    }

private:
    std::string m_svg;
    int m_ids = 0;
};

}  // namespace

std::string RenderChartSvg(const ChartScene& scene) {
    SvgPainter painter(scene.size);
    PaintChart(scene, painter);
    return painter.Finish();
}

}  // namespace ny
