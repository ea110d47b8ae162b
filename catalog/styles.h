#pragma once
// Values of CExpression::m_nType that the style keywords give a statement, and the two that a
// statement has without one. The syntax test sets them; the chart view draws by them.

enum : int {
    NY_STYLE_ASSIGNMENT = 0,   // a variable: draws nothing
    NY_STYLE_LINE = 1,         // a plain line: an output statement without a style keyword
    NY_STYLE_VOLSTICK = 2,
    NY_STYLE_COLORSTICK = 3,
    NY_STYLE_STICK = 4,
    NY_STYLE_CIRCLEDOT = 6,
    NY_STYLE_CROSSDOT = 7,
    NY_STYLE_POINTDOT = 8,
    NY_STYLE_LINESTICK = 9,
    NY_STYLE_COLORBAR = 11,
    NY_STYLE_DOTLINE = 13,
    NY_STYLE_NODRAW = 32,      // computed but not drawn; also makes the width 0
};

// Draw commands set their own kinds from 20 up. A computed statement whose type is above 0 and
// below NY_STYLE_DRAWN_END gets a point buffer for the chart: every line style but NODRAW, and the
// first draw kinds.
constexpr int NY_STYLE_FIRST_DRAW_KIND = 20;
constexpr int NY_STYLE_DRAWN_END = 25;

namespace ny {
constexpr bool StyleIsDrawn(int nType) { return nType > 0 && nType < NY_STYLE_DRAWN_END; }
}  // namespace ny
