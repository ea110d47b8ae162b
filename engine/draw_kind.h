#pragma once
// Kinds of draw commands that a statement leaves in m_nType for the chart (fields in
// docs/drawing.md). The evaluator sets them; the chart draws by them.

namespace ny {

enum DrawKind : short {
    kDrawPolyline = 20, kDrawLine = 21, kDrawCandle = 22, kDrawStick = 23, kDrawBand = 24,
    kDrawIcon = 25, kDrawText = 26, kDrawFixedText = 27, kDrawHitTip = 28, kDrawSign = 29, kDrawBitmap = 30,
    kDrawBackground = 31, kDrawNumber = 33, kDrawRegion = 40
};

}  // namespace ny
