#pragma once
// Points, sizes and rectangles in pixels, and colours, as every window-system interface of
// platform/ passes them. A rectangle includes left and top and excludes right and bottom.

namespace ny {

struct Point {
    int x = 0;
    int y = 0;
    bool operator==(const Point&) const = default;
};

struct Size {
    int width = 0;
    int height = 0;
    bool operator==(const Size&) const = default;
};

struct Rect {
    int left = 0;
    int top = 0;
    int right = 0;
    int bottom = 0;
    int Width() const { return right - left; }
    int Height() const { return bottom - top; }
    bool IsEmpty() const { return right <= left || bottom <= top; }
    bool Contains(Point p) const { return p.x >= left && p.x < right && p.y >= top && p.y < bottom; }
    bool operator==(const Rect&) const = default;
};

// A colour with red in the low byte, green in the next and blue in the third.
using Colour = unsigned long;

constexpr unsigned RedOf(Colour c) { return c & 0xFF; }
constexpr unsigned GreenOf(Colour c) { return (c >> 8) & 0xFF; }
constexpr unsigned BlueOf(Colour c) { return (c >> 16) & 0xFF; }

}  // namespace ny
