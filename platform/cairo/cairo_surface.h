#pragma once
// A paint surface that renders into an image through Cairo, in a fixed-width CJK font (Noto Sans
// Mono CJK SC: a byte of GBK takes one cell, a double-byte character two). Tests read its pixels
// and people look at what it drew as a PNG file. Owned by its creator; one thread at a time.

#include <cstdint>
#include <memory>
#include <string>

#include "platform/paint_surface.h"

typedef struct _cairo cairo_t;
typedef struct _cairo_surface cairo_surface_t;

namespace ny {

class CairoSurface : public PaintSurface {
public:
    // An image of this size, white, with the font at `fontPixels` pixels.
    explicit CairoSurface(Size size, double fontPixels = 16.0);
    ~CairoSurface() override;
    CairoSurface(const CairoSurface&) = delete;
    CairoSurface& operator=(const CairoSurface&) = delete;

    Size GetSize() const override { return m_size; }
    FontMetrics GetFontMetrics() const override { return m_metrics; }
    void FillRect(const Rect& rect, Colour colour) override;
    void FillRoundRect(const Rect& rect, int corner, Colour colour) override;
    void SetTextColour(Colour colour) override { m_textColour = colour; }
    void DrawText(Point at, std::string_view gbk) override;
    int TextWidth(std::string_view gbk) const override;
    void Present() override;

    // The colour of a pixel of the image, red in the low byte.
    Colour PixelAt(Point p) const;
    // Writes the image as PNG; false if the file cannot be written.
    bool SavePng(const std::string& path) const;
    // How many times the picture was presented.
    int m_nPresented = 0;

private:
    void SetSource(Colour colour);

    Size m_size;
    cairo_surface_t* m_image = nullptr;
    cairo_t* m_cr = nullptr;
    FontMetrics m_metrics;
    double m_ascent = 0;
    Colour m_textColour = 0;
};

}  // namespace ny
