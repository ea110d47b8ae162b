// A Cairo painter for charts, and the chart files written through it.

#include "chart/cairo/chart_file.h"

#include <cairo-pdf.h>
#include <cairo.h>

#include <algorithm>
#include <cstring>
#include <memory>

#include "chart/svg_painter.h"
#include "host/encoding.h"
#include "host/files.h"

namespace ny {
namespace {

constexpr const char* kFontFace = "Noto Sans Mono CJK SC";

class CairoChartPainter : public ChartPainter {
public:
    explicit CairoChartPainter(cairo_t* cr) : m_cr(cr) {
        cairo_select_font_face(cr, kFontFace, CAIRO_FONT_SLANT_NORMAL, CAIRO_FONT_WEIGHT_NORMAL);
    }

    void SetClip(const RectF& area) override {
        cairo_save(m_cr);
        cairo_rectangle(m_cr, area.left, area.top, area.Width(), area.Height());
        cairo_clip(m_cr);
    }
    void ResetClip() override { cairo_restore(m_cr); }
    void FillRect(const RectF& rect, Colour colour) override {
        SetSource(colour);
        cairo_rectangle(m_cr, rect.left, rect.top, rect.Width(), rect.Height());
        cairo_fill(m_cr);
    }
    void FillGradient(const RectF& rect, Colour top, Colour bottom) override {
        cairo_pattern_t* pattern = cairo_pattern_create_linear(0, rect.top, 0, rect.bottom);
        AddStop(pattern, 0, top);
        AddStop(pattern, 1, bottom);
        cairo_set_source(m_cr, pattern);
        cairo_rectangle(m_cr, rect.left, rect.top, rect.Width(), rect.Height());
        cairo_fill(m_cr);
        cairo_pattern_destroy(pattern);
    }
    void Polyline(const std::vector<PointF>& points, Colour colour, double width, bool dashed) override {
        if (points.empty()) return;
        static constexpr double kDash[] = {4, 3};
        SetSource(colour);
        cairo_set_line_width(m_cr, width);
        cairo_set_dash(m_cr, kDash, dashed ? 2 : 0, 0);
        Trace(points);
        cairo_stroke(m_cr);
    }
    void FillPolygon(const std::vector<PointF>& points, Colour colour) override {
        if (points.empty()) return;
        SetSource(colour);
        Trace(points);
        cairo_close_path(m_cr);
        cairo_fill(m_cr);
    }
    void Circle(PointF centre, double radius, Colour colour, bool filled) override {
        SetSource(colour);
        cairo_new_path(m_cr);
        cairo_arc(m_cr, centre.x, centre.y, radius, 0, 6.283185307179586);
        if (filled) return cairo_fill(m_cr);
        cairo_set_line_width(m_cr, 1);
        cairo_set_dash(m_cr, nullptr, 0, 0);
        cairo_stroke(m_cr);
    }
    void Text(PointF anchor, const std::string& gbk, Colour colour, TextAlign align, double fontPixels) override {
        const std::string utf8 = GbkToUtf8(gbk);
        cairo_set_font_size(m_cr, fontPixels);
        cairo_font_extents_t font;
        cairo_font_extents(m_cr, &font);
        cairo_text_extents_t extents;
        cairo_text_extents(m_cr, utf8.c_str(), &extents);
        const double shift = align == TextAlign::Left ? 0 : align == TextAlign::Centre ? extents.x_advance / 2 : extents.x_advance;
        SetSource(colour);
        cairo_move_to(m_cr, anchor.x - shift, anchor.y + (font.ascent - font.descent) / 2);
        cairo_show_text(m_cr, utf8.c_str());
        cairo_new_path(m_cr);
    }

private:
    void SetSource(Colour c) { cairo_set_source_rgb(m_cr, RedOf(c) / 255.0, GreenOf(c) / 255.0, BlueOf(c) / 255.0); }
    static void AddStop(cairo_pattern_t* pattern, double offset, Colour c) {
        cairo_pattern_add_color_stop_rgb(pattern, offset, RedOf(c) / 255.0, GreenOf(c) / 255.0, BlueOf(c) / 255.0);
    }
    void Trace(const std::vector<PointF>& points) {
        cairo_new_path(m_cr);
        cairo_move_to(m_cr, points[0].x, points[0].y);
        for (size_t i = 1; i < points.size(); ++i) cairo_line_to(m_cr, points[i].x, points[i].y);
    }

    cairo_t* m_cr;
};

struct SurfaceDeleter {
    void operator()(cairo_surface_t* s) const { cairo_surface_destroy(s); }
};
using Surface = std::unique_ptr<cairo_surface_t, SurfaceDeleter>;

void Paint(const ChartScene& scene, cairo_surface_t* surface) {
    cairo_t* cr = cairo_create(surface);
    CairoChartPainter painter(cr);
    PaintChart(scene, painter);
    cairo_destroy(cr);
    cairo_surface_flush(surface);
}

Surface PaintImage(const ChartScene& scene) {
    Surface image(cairo_image_surface_create(CAIRO_FORMAT_RGB24, std::max(scene.size.width, 1), std::max(scene.size.height, 1)));
    Paint(scene, image.get());
    return image;
}

cairo_status_t AppendBytes(void* closure, const unsigned char* data, unsigned int length) {
    static_cast<std::string*>(closure)->append(reinterpret_cast<const char*>(data), length);
    return CAIRO_STATUS_SUCCESS;
}

bool EncodePng(const ChartScene& scene, std::string* bytes) {
    return cairo_surface_write_to_png_stream(PaintImage(scene).get(), AppendBytes, bytes) == CAIRO_STATUS_SUCCESS;
}

bool EncodePdf(const ChartScene& scene, std::string* bytes) {
    Surface pdf(cairo_pdf_surface_create_for_stream(AppendBytes, bytes, scene.size.width, scene.size.height));
    Paint(scene, pdf.get());
    cairo_surface_finish(pdf.get());
    return cairo_surface_status(pdf.get()) == CAIRO_STATUS_SUCCESS;
}

std::string LowerExtension(const std::string& path) {
    const size_t dot = path.find_last_of('.');
    if (dot == std::string::npos || path.find('/', dot) != std::string::npos) return "";
    std::string extension = path.substr(dot + 1);
    std::transform(extension.begin(), extension.end(), extension.begin(), [](unsigned char c) { return std::tolower(c); });
    return extension;
}

}  // namespace

std::vector<Colour> RenderChartPixels(const ChartScene& scene) {
    Surface image = PaintImage(scene);
    const int width = cairo_image_surface_get_width(image.get()), height = cairo_image_surface_get_height(image.get());
    const int stride = cairo_image_surface_get_stride(image.get());
    const unsigned char* data = cairo_image_surface_get_data(image.get());
    std::vector<Colour> pixels;
    pixels.reserve(static_cast<size_t>(width) * height);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            uint32_t xrgb;
            std::memcpy(&xrgb, data + y * stride + 4 * x, sizeof xrgb);
            pixels.push_back(((xrgb >> 16) & 0xFF) | (xrgb & 0xFF00) | ((xrgb & 0xFF) << 16));
        }
    return pixels;
}

bool WriteChartFile(const ChartScene& scene, const std::string& path, std::string* error) {
    const std::string extension = LowerExtension(path);
    std::string bytes;
    bool encoded = true;
    if (extension == "png")
        encoded = EncodePng(scene, &bytes);
    else if (extension == "pdf")
        encoded = EncodePdf(scene, &bytes);
    else if (extension == "svg")
        bytes = RenderChartSvg(scene);
    else
        return *error = "cannot tell the format of " + path + ": give a .png, .svg or .pdf file", false;
    if (!encoded) return *error = "cannot draw the chart as " + extension, false;
    if (!WriteFileAtomic(path, bytes)) return *error = "cannot write " + path, false;
    return true;
}

}  // namespace ny
