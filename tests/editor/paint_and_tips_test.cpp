// What the editor paints and which tips it shows.

#include <gtest/gtest.h>

#include <cstdlib>

#include "catalog/function_manager.h"
#include "platform/cairo/cairo_surface.h"
#include "tests/check/check_fixture.h"
#include "tests/editor/editor_fixture.h"

namespace {

using Op = ny::HeadlessSurface::Operation;
constexpr unsigned long kText = 0x000000, kNumber = 0x0080FF, kKeyWord = 0x009600, kFunction = 0xC08000,
                        kComment = 0xC8C8C8, kSelection = 0x800000;

struct Piece {
    CString text;
    unsigned long colour;
};

// The pieces of text drawn on the line at y, in order.
std::vector<Piece> DrawnAt(const ny::HeadlessSurface& surface, int y) {
    std::vector<Piece> pieces;
    for (const Op& op : surface.m_operations)
        if (op.kind == Op::Kind::Text && op.rect.top == y) pieces.push_back({op.text, op.colour});
    return pieces;
}

TEST(EditorPaint, TokensInTheColourOfTheirClass) {
    nytest::LoadGlobalCatalog();
    nytest::LibraryMacd macd;
    nytest::HeadlessEditor h;
    h.editor.SetText("a:=ma(close,5)+macd.dif;{note\r\nstill}x");
    h.editor.OnPaint();
    const std::vector<Piece> first = DrawnAt(h.window.m_surface, 0);
    const std::vector<std::pair<CString, unsigned long>> expected = {
        {"A", kText}, {":=", kText}, {"MA", kFunction}, {"(", kText}, {"CLOSE", kKeyWord}, {",", kText},
        {"5", kNumber}, {")", kText}, {"+", kText}, {"MACD.DIF", kFunction}, {";", kText}, {"{NOTE", kComment}};
    ASSERT_EQ(first.size(), expected.size());
    for (size_t i = 0; i < expected.size(); ++i) {
        EXPECT_EQ(first[i].text, expected[i].first) << i;
        EXPECT_EQ(first[i].colour, expected[i].second) << first[i].text;
    }
    const std::vector<Piece> second = DrawnAt(h.window.m_surface, 16);
    ASSERT_EQ(second.size(), 2u) << "the comment goes on to its close, then code";
    EXPECT_EQ(second[0].text, "STILL}");
    EXPECT_EQ(second[0].colour, kComment);
    EXPECT_EQ(second[1].colour, kText);
    EXPECT_EQ(h.editor.GetLine(0).substr(0, 3), "a:=") << "the text keeps its case";
    EXPECT_EQ(h.window.m_surface.m_nPresented, 1);
}

TEST(EditorPaint, SelectionCellsAndNoCaretWithoutFocus) {
    nytest::LoadGlobalCatalog();
    nytest::HeadlessEditor h;
    h.editor.SetText("ab\r\ncd");
    h.editor.SetSelection(1, 0, 1, 1);
    h.window.m_bFocus = false;
    h.caret = {};
    h.editor.OnPaint();
    std::vector<ny::Rect> selected;
    for (const Op& op : h.window.m_surface.m_operations)
        if (op.kind == Op::Kind::Fill && op.colour == kSelection) selected.push_back(op.rect);
    EXPECT_EQ(selected, (std::vector<ny::Rect>{{8, 0, 16, 16}, {0, 16, 8, 32}}));
    EXPECT_FALSE(h.caret.m_bExists);
}

// The class colour of a token shows in its cells: the most strongly inked pixel there is that
// colour blended over white.
void ExpectInked(const ny::CairoSurface& image, ny::Rect cells, unsigned long colour, const char* what) {
    int best = -1;
    unsigned long inked = 0xFFFFFF;
    for (int y = cells.top; y < cells.bottom; ++y) {
        for (int x = cells.left; x < cells.right; ++x) {
            const unsigned long p = image.PixelAt({x, y});
            const int ink = 765 - static_cast<int>(ny::RedOf(p) + ny::GreenOf(p) + ny::BlueOf(p));
            if (ink > best) best = ink, inked = p;
        }
    }
    const unsigned channels[3][2] = {{ny::RedOf(inked), ny::RedOf(colour)},
                                     {ny::GreenOf(inked), ny::GreenOf(colour)},
                                     {ny::BlueOf(inked), ny::BlueOf(colour)}};
    for (const auto& c : channels) EXPECT_LE(std::abs(static_cast<int>(c[0]) - static_cast<int>(c[1])), 40) << what;
}

TEST(EditorPaint, RenderedImageShowsClassColoursAndSelection) {
    nytest::LoadGlobalCatalog();
    ny::CairoSurface image({480, 120}, 24);
    nytest::HeadlessEditor h;
    h.window.m_pPaintTarget = &image;
    h.editor.OnFirstShow();
    h.editor.SetText("X:MA(CLOSE,25);{注释}");
    h.editor.SetSelection(5, 0, 10, 0);
    h.editor.OnPaint();
    const int w = image.GetFontMetrics().averageCharWidth;
    const int lh = image.GetFontMetrics().height;
    const auto cells = [&](int first, int count) { return ny::Rect{first * w, 0, (first + count) * w, lh}; };
    ExpectInked(image, cells(2, 2), kFunction, "MA");
    ExpectInked(image, cells(11, 2), kNumber, "25");
    ExpectInked(image, cells(0, 1), kText, "X");
    ExpectInked(image, cells(16, 4), kComment, "注释");
    EXPECT_EQ(image.PixelAt({5 * w + 1, 1}), kSelection) << "CLOSE is selected";
    EXPECT_EQ(image.PixelAt({10 * w + 1, 1}), 0xFFFFFFul) << "the selection ends before column 10";
    const char* out = std::getenv("NY_EDITOR_PNG");
    if (out != nullptr) image.SavePng(out);
}

TEST(EditorTips, FunctionTipFollowsOpenCalls) {
    nytest::LoadGlobalCatalog();
    nytest::HeadlessEditor h;
    const FUN_ITEM* ma = g_MyFunsMng.FindFun("MA", 0);
    ASSERT_NE(ma, nullptr);
    const CString full = ma->m_strDesc + "\r\n用法\r\n" + ma->m_strUsage + "\r\n  例如:" + ma->m_strExample;
    const CString brief = ma->m_strDesc + "\r\n用法\r\n" + ma->m_strUsage;
    h.Type("MA(");
    EXPECT_TRUE(h.tip.m_bVisible);
    EXPECT_EQ(CString(h.editor.m_Tip.m_szText), full);
    EXPECT_EQ(h.tip.m_topLeft, (ny::Point{1000 + 3 * 8 - 1 - 4, 500 + 16})) << "below the caret, on the screen";
    h.Type("C,ABS(");
    EXPECT_EQ(h.editor.m_arTipStack.size(), 2u);
    h.Type(")");
    EXPECT_EQ(CString(h.editor.m_Tip.m_szText), brief) << "the outer call again, without its example";
    h.Type(")");
    EXPECT_FALSE(h.tip.m_bVisible);
    h.Type(")");
    EXPECT_FALSE(h.tip.m_bVisible) << "a parenthesis too many changes nothing";
    h.editor.Reset();
    h.Type("NOSUCH(");
    EXPECT_FALSE(h.tip.m_bVisible);
    EXPECT_FALSE(h.translations.empty()) << "each character shows the translation";
}

TEST(EditorTips, ReferenceListOffersAndCompletesLines) {
    nytest::LoadGlobalCatalog();
    nytest::LibraryMacd macd;
    nytest::HeadlessEditor h;
    h.Type("X:MACD.");
    ASSERT_TRUE(h.refList.m_bVisible);
    EXPECT_EQ(h.refList.m_entries, (std::vector<std::string>{"MACD", "DEA", "DIF"})) << "last statement first";
    h.Type("DI");
    EXPECT_EQ(h.refList.m_nSelected, 2);
    h.Type("Q");
    EXPECT_EQ(h.refList.m_nSelected, 0) << "no match selects entry 0";
    h.editor.OnKeyDown(ny::kKeyDown, {});
    EXPECT_EQ(h.refList.m_nSelected, 1);
    h.editor.OnRefListKey(ny::kKeyReturn, {});
    EXPECT_EQ(h.editor.GetLine(0), "X:MACD.DEA");
    EXPECT_FALSE(h.refList.m_bVisible);
    EXPECT_EQ(h.editor.GetCursorPos(), (ny::Point{10, 0}));

    h.editor.Reset();
    h.Type("MACD");
    ASSERT_TRUE(h.refList.m_bVisible) << "a plain indicator name opens the list too";
    h.refList.ClearSelection();
    h.editor.HandRefTipMsg(ny::kKeyReturn);
    EXPECT_EQ(h.editor.GetLine(0), "MACD") << "entry 0 replaces the line from its start";
    h.Type(".");
    h.editor.OnKeyDown(ny::kKeyEscape, {});
    EXPECT_FALSE(h.refList.m_bVisible);
    EXPECT_EQ(h.editor.GetLine(0), "MACD.");
}

TEST(EditorTips, LongTipIsCutOnACharacterBoundary) {
    nytest::HeadlessEditor h;
    const CString exact(1023, 'a');
    h.editor.m_Tip.AddFunTip(exact.c_str(), {0, 0});
    EXPECT_EQ(CString(h.editor.m_Tip.m_szText), exact);
    const CString wide = CString(1022, 'a') + "中中";
    h.editor.m_Tip.AddFunTip(wide.c_str(), {0, 0});
    EXPECT_EQ(CString(h.editor.m_Tip.m_szText), CString(1022, 'a'));
    h.editor.m_Tip.RelayEvent(TipRelayedEvent::ButtonPress);
    EXPECT_FALSE(h.tip.m_bVisible);
}

}  // namespace
