// The Cairo paint surface.

#include "platform/cairo/cairo_surface.h"

#include <cairo.h>

#include <cmath>

#include "host/encoding.h"

namespace ny {

namespace {
constexpr const char* kFontFace = "Noto Sans Mono CJK SC";
}

CairoSurface::CairoSurface(Size size, double fontPixels) : m_size(size) {
    m_image = cairo_image_surface_create(CAIRO_FORMAT_RGB24, size.width, size.height);
    m_cr = cairo_create(m_image);
    cairo_select_font_face(m_cr, kFontFace, CAIRO_FONT_SLANT_NORMAL, CAIRO_FONT_WEIGHT_NORMAL);
    cairo_set_font_size(m_cr, fontPixels);
    cairo_font_extents_t font;
    cairo_font_extents(m_cr, &font);
    cairo_text_extents_t cell;
    cairo_text_extents(m_cr, "0", &cell);
    m_metrics = {static_cast<int>(std::lround(cell.x_advance)), static_cast<int>(std::ceil(font.height))};
    m_ascent = font.ascent;
    FillRect({0, 0, size.width, size.height}, 0xFFFFFF);
}

CairoSurface::~CairoSurface() {
    cairo_destroy(m_cr);
    cairo_surface_destroy(m_image);
}

void CairoSurface::SetSource(Colour colour) {
    cairo_set_source_rgb(m_cr, RedOf(colour) / 255.0, GreenOf(colour) / 255.0, BlueOf(colour) / 255.0);
}

void CairoSurface::FillRect(const Rect& rect, Colour colour) {
    SetSource(colour);
    cairo_rectangle(m_cr, rect.left, rect.top, rect.Width(), rect.Height());
    cairo_fill(m_cr);
}

void CairoSurface::FillRoundRect(const Rect& rect, int corner, Colour colour) {
    const double r = corner / 2.0;
    cairo_new_sub_path(m_cr);
    cairo_arc(m_cr, rect.right - r, rect.top + r, r, -M_PI / 2, 0);
    cairo_arc(m_cr, rect.right - r, rect.bottom - r, r, 0, M_PI / 2);
    cairo_arc(m_cr, rect.left + r, rect.bottom - r, r, M_PI / 2, M_PI);
    cairo_arc(m_cr, rect.left + r, rect.top + r, r, M_PI, 3 * M_PI / 2);
    cairo_close_path(m_cr);
    SetSource(colour);
    cairo_fill(m_cr);
}

// Each character is placed in its own cells, so that the grid holds whatever the font's
// advances: one cell for a single byte, two for a double-byte character.
void CairoSurface::DrawText(Point at, std::string_view gbk) {
    SetSource(m_textColour);
    int x = at.x;
    for (size_t i = 0; i < gbk.size();) {
        const size_t length = static_cast<unsigned char>(gbk[i]) >= 0x81 && i + 1 < gbk.size() ? 2 : 1;
        const std::string utf8 = GbkToUtf8(std::string(gbk.substr(i, length)));
        cairo_move_to(m_cr, x, at.y + m_ascent);
        cairo_show_text(m_cr, utf8.c_str());
        x += static_cast<int>(length) * m_metrics.averageCharWidth;
        i += length;
    }
}

int CairoSurface::TextWidth(std::string_view gbk) const {
    return static_cast<int>(gbk.size()) * m_metrics.averageCharWidth;
}

void CairoSurface::Present() {
    cairo_surface_flush(m_image);
    ++m_nPresented;
}

Colour CairoSurface::PixelAt(Point p) const {
    if (p.x < 0 || p.y < 0 || p.x >= m_size.width || p.y >= m_size.height) return 0;
    cairo_surface_flush(m_image);
    const unsigned char* data = cairo_image_surface_get_data(m_image);
    const int stride = cairo_image_surface_get_stride(m_image);
    const uint32_t pixel = *reinterpret_cast<const uint32_t*>(data + p.y * stride + p.x * 4);
    return ((pixel >> 16) & 0xFF) | (pixel & 0xFF00) | ((pixel & 0xFF) << 16);
}

bool CairoSurface::SavePng(const std::string& path) const {
    return cairo_surface_write_to_png(m_image, path.c_str()) == CAIRO_STATUS_SUCCESS;
}

}  // namespace ny
