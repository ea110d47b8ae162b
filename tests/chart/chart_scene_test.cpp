// Charts checked by what they show: candle colours in the picture, a line's path and a text in the
// SVG, a failed statement named in the title line, and files that cannot be written.

#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
#include <functional>
#include <filesystem>
#include <regex>
#include <string>
#include <vector>

#include "chart/cairo/chart_file.h"
#include "chart/chart_scene.h"
#include "chart/svg_painter.h"
#include "host/encoding.h"
#include "model/indicator.h"
#include "tests/engine/formula_fixture.h"

namespace {

namespace fs = std::filesystem;

struct Candle {
    float open, close;
};

// Bars 0, 2 and 3 rise, bar 1 and 4 fall.
constexpr Candle kCandles[] = {{10, 12}, {12, 10.5f}, {10.5f, 11}, {11, 13}, {13, 12}};

std::vector<CHisDay> Bars() {
    std::vector<CHisDay> bars;
    for (const Candle& c : kCandles) {
        bars.push_back({.m_lTime = 20240102 + static_cast<int>(bars.size()), .m_fOpen = c.open,
                        .m_fHigh = std::max(c.open, c.close) + 0.5f, .m_fLow = std::min(c.open, c.close) - 0.5f,
                        .m_fClose = c.close, .m_fVolume = 1000});
    }
    return bars;
}

// A statement as the evaluator leaves it: computed over all bars with these values.
CExpression* Statement(CIndicator& formula, const std::string& name, short type, const std::vector<float>& values) {
    CExpression* s = nytest::AddSeries(formula, name, values, 0, static_cast<short>(values.size()));
    s->m_nType = type;
    return s;
}

struct ChartFixture : ::testing::Test {
    std::vector<CHisDay> bars = Bars();
    CIndicator formula;
    CIndicator mainFormula;

    ny::ChartScene Scene(const ny::ChartTheme& theme = ny::DarkTheme()) {
        ny::ChartRequest request;
        request.bars = bars.data();
        request.barCount = static_cast<int>(bars.size());
        request.formulas = {&formula};
        request.mainFormula = &mainFormula;
        request.theme = &theme;
        request.size = {600, 400};
        return ny::BuildChartScene(request);
    }
};

void PutDraw(CExpression* s, int field, const std::vector<float>& values) {
    for (size_t bar = 0; bar < values.size(); ++bar) s->m_pDrawData[4 * bar + field] = values[bar];
}

template <typename T>
void PutParam(CExpression* s, size_t offset, T value) {
    std::memcpy(s->m_DrawParams + offset, &value, sizeof value);
}

// Over a blue area from 9 to 14 on the main pane: the candles keep their colours on top of it, the
// area shows half way between blue and the ground, and a buy arrow at 10 under bar 3 points up
// at that price from below.
TEST_F(ChartFixture, CandlesAreRedUpAndGreenDownOverAreasInBothThemes) {
    formula.m_strName = "AREA";
    formula.m_cDrawPos = 1;
    CExpression* area = Statement(formula, "", 40, {0, 0, 0, 0, 0});
    PutDraw(area, 0, {14, 14, 14, 14, 14});
    PutDraw(area, 1, {1, 1, 1, 1, 1});
    PutDraw(area, 2, {9, 9, 9, 9, 9});
    PutParam(area, 0, 0xC80000);
    CExpression* arrow = Statement(formula, "", 25, {0, 0, 0, 1, 0});
    PutDraw(arrow, 0, {0, 0, 0, 10, 0});
    PutParam<int16_t>(arrow, 0, 1);
    const struct {
        const ny::ChartTheme* theme;
        ny::Colour area;
    } themes[] = {{&ny::DarkTheme(), 0x640000}, {&ny::LightTheme(), 0xE48080}};
    for (const auto& [theme, areaColour] : themes) {
        const ny::ChartScene scene = Scene(*theme);
        const std::vector<ny::Colour> pixels = ny::RenderChartPixels(scene);
        const ny::ChartPane& main = scene.panes.at(0);
        auto pixelAt = [&](double x, double y) {
            return pixels.at(static_cast<size_t>(y) * scene.size.width + static_cast<size_t>(x));
        };
        EXPECT_EQ(pixelAt((main.XOfBar(0) + main.XOfBar(1)) / 2, main.YOfValue(13.5)), areaColour);
        EXPECT_EQ(pixelAt(main.XOfBar(3), main.YOfValue(10) - 3), areaColour) << "nothing above the arrow's tip";
        EXPECT_EQ(pixelAt(main.XOfBar(3), main.YOfValue(10) + 5), theme->up) << "the arrow below its tip";
        for (int bar = 0; bar < 5; ++bar) {
            const Candle c = kCandles[bar];
            const int x = static_cast<int>(main.XOfBar(bar));
            const int y = static_cast<int>(main.YOfValue((c.open + c.close) / 2));
            const ny::Colour pixel = pixelAt(x, y);
            const bool up = c.close > c.open;
            const unsigned strong = up ? ny::RedOf(pixel) : ny::GreenOf(pixel);
            const unsigned weak = up ? ny::GreenOf(pixel) : ny::RedOf(pixel);
            EXPECT_GT(strong, 0x90u) << "bar " << bar;
            EXPECT_GT(strong, weak + 0x60) << "bar " << bar;
        }
    }
}

// The points of every polyline of a colour in an SVG document.
std::vector<ny::PointF> PolylinePoints(const std::string& svg, const std::string& colour) {
    std::vector<ny::PointF> points;
    const std::regex polyline("<polyline points=\"([^\"]*)\" fill=\"none\" stroke=\"" + colour + "\"");
    for (std::sregex_iterator it(svg.begin(), svg.end(), polyline), end; it != end; ++it) {
        const std::string list = (*it)[1];
        const std::regex pair("([-0-9.]+),([-0-9.]+)");
        for (std::sregex_iterator p(list.begin(), list.end(), pair); p != end; ++p)
            points.push_back({std::stod((*p)[1]), std::stod((*p)[2])});
    }
    return points;
}

TEST_F(ChartFixture, SvgLinePassesThroughTheValuesAndTextsAreThere) {
    formula.m_strName = "TEST";
    const std::vector<float> mid{11, 11.25f, 10.75f, 12, 12.5f};  // (open + close) / 2
    Statement(formula, "MID", 1, mid)->m_lColor = 0xFF0000;  // blue
    Statement(formula, "PLAIN", 1, mid);  // the theme's first line colour: MID has its own
    Statement(formula, "HIDDEN", 32, {0, 0, 0, 0, 7});
    CExpression* text = Statement(formula, "", 26, {0, 1, 0, 0, 1});
    text->m_pDrawData[4 * 1] = 10;
    std::snprintf(text->m_DrawParams, sizeof text->m_DrawParams, "%s", "买入");
    CExpression* failed = Statement(formula, "BAD", 1, {0, 0, 0, 0, 0});
    failed->m_cComputed = 0;

    const ny::ChartScene scene = Scene();
    const std::string svg = ny::RenderChartSvg(scene);
    const ny::ChartPane& pane = scene.panes.at(2);
    const std::vector<ny::PointF> drawn = PolylinePoints(svg, "#0000ff");
    ASSERT_EQ(drawn.size(), mid.size());
    for (size_t bar = 0; bar < mid.size(); ++bar) {
        EXPECT_NEAR(drawn[bar].x, pane.XOfBar(bar), 0.01) << bar;
        EXPECT_NEAR(drawn[bar].y, pane.YOfValue(mid[bar]), 0.01) << bar;
    }
    EXPECT_EQ(PolylinePoints(svg, "#ffffff").size(), mid.size());
    for (const char* shown : {"买入", "MID:12.50", "HIDDEN:7.00", "BAD 计算失败"})
        EXPECT_NE(svg.find(ny::GbkToUtf8(shown)), std::string::npos) << ny::GbkToUtf8(shown);
    EXPECT_EQ(svg.find("MID:12.50"), svg.rfind("MID:12.50")) << "one title entry per statement";
}

void PutArgs(CExpression* s, const std::vector<float>& args) {
    std::memcpy(s->m_lDrawArgs, args.data(), args.size() * sizeof(float));
}

// Each draw command, with the fields the evaluator leaves, shows up as the element it should.
TEST_F(ChartFixture, EachDrawCommandDrawsItsElement) {
    struct Row {
        const char* name;
        short type;
        std::function<void(CExpression*)> fill;
        const char* element;  // a pattern of the SVG
    } rows[] = {
        {"PLOYLINE", 20, [](CExpression* s) { std::copy_n(std::vector<float>{1, 0, 1, 0, 1}.data(), 5, s->m_pData);
                                              PutDraw(s, 0, {10, 0, 11, 0, 12}); },
         "<polyline points=\"[^ \"]+ [^ \"]+ [^ \"]+\" fill=\"none\" stroke=\"#0000ff\""},
        {"DRAWLINE", 21, [](CExpression* s) { s->m_pData[0] = 1; PutDraw(s, 0, {10}); PutDraw(s, 1, {0, 0, 0, 1});
                                              PutDraw(s, 2, {0, 0, 0, 12}); },
         "<polyline points=\"[^ \"]+ [^ \"]+\" fill=\"none\" stroke=\"#0000ff\""},
        {"STICKLINE", 23, [](CExpression* s) { s->m_pData[1] = 1; PutDraw(s, 1, {0, 12}); PutParam(s, 0, 8.0f); },
         "<rect [^>]*fill=\"#0000ff\""},
        {"DRAWBAND", 24, [](CExpression* s) { PutDraw(s, 0, {13, 13, 13, 13, 13}); PutDraw(s, 1, {9, 9, 9, 9, 9});
                                              PutParam(s, 0, 0x00FFFF); },
         "<polygon [^>]*fill=\"#808000\""},
        {"DRAWICON", 25, [](CExpression* s) { s->m_pData[2] = 1; PutDraw(s, 0, {0, 0, 11}); PutParam<int16_t>(s, 0, 1); },
         "<polygon [^>]*fill=\"#ff3c3c\""},
        {"DRAWTEXT_FIX", 27, [](CExpression* s) { PutArgs(s, {1, 0.5f, 0.5f, 0}); PutParam(s, 0, '!'); },
         ">!</text>"},
        {"DRAWGBK", 31, [](CExpression* s) { PutArgs(s, {1, 1}); PutParam(s, 0, 0x400000); PutParam(s, 4, 0x000040); },
         "stop-color=\"#000040\"/><stop offset=\"1\" stop-color=\"#400000\""},
        {"DRAWNUMBER", 33, [](CExpression* s) { PutDraw(s, 0, {0, 0, 0, 1}); PutDraw(s, 1, {0, 0, 0, 7.25f});
                                                PutDraw(s, 2, {0, 0, 0, 11}); },
         ">7.25</text>"},
        {"FILLRGN", 40, [](CExpression* s) { PutDraw(s, 0, {13, 13, 13}); PutDraw(s, 1, {1, 1, 1}); PutDraw(s, 2, {9, 9, 9});
                                             PutParam(s, 0, 0x808000); },
         "<polygon [^>]*fill=\"#004040\""},
    };
    formula.m_strName = "DRAW";
    for (const Row& row : rows) {
        formula.DeleteExpression();
        CExpression* s = Statement(formula, "", row.type, {0, 0, 0, 0, 0});
        s->m_lColor = 0xFF0000;
        row.fill(s);
        EXPECT_TRUE(std::regex_search(ny::RenderChartSvg(Scene()), std::regex(row.element))) << row.name;
    }
}

// Its lines take the theme's line colours after those of the main-chart formula.
TEST_F(ChartFixture, FormulaOverTheMainPaneHasNoPaneOfItsOwn) {
    formula.m_strName = "OVER";
    formula.m_cDrawPos = 1;
    Statement(formula, "HIGHER", 1, {20, 20, 20, 20, 20});
    mainFormula.m_strName = "MA";
    Statement(mainFormula, "MA1", 1, {11, 11, 11, 11, 11});
    const ny::ChartScene scene = Scene();
    ASSERT_EQ(scene.panes.size(), 2u);
    EXPECT_GT(scene.panes[0].high, 20) << "the main scale takes the formula's values in";
    const std::string svg = ny::RenderChartSvg(scene);
    EXPECT_EQ(PolylinePoints(svg, "#ffffff").size(), 5u) << "MA1";
    EXPECT_EQ(PolylinePoints(svg, "#ffff00").size(), 5u) << "HIGHER";
}

// Each formula with a pane of its own gets one below the main and volume panes, in turn; the main
// pane keeps the larger share and the volume pane is lower than a formula's.
TEST_F(ChartFixture, EachFormulaGetsItsOwnPaneBelow) {
    CIndicator over, below;
    over.m_cDrawPos = 1;
    Statement(formula, "A", 1, {1, 2, 3, 4, 5});
    Statement(below, "B", 1, {5, 4, 3, 2, 1});
    const struct {
        bool volume;
        std::vector<const CIndicator*> formulas;
        std::vector<int> paneFormulas;
        std::vector<double> bottoms;  // of the plot areas, 374 pixels shared from y = 3
    } rows[] = {
        {true, {&formula, &over, &below}, {-1, -1, 0, 2}, {175.04, 222.0718, 299.5359, 377}},
        {false, {&formula, &below}, {-1, 0, 1}, {208.7, 292.85, 377}},
        {false, {}, {-1}, {377}},
    };
    for (const auto& row : rows) {
        ny::ChartRequest request;
        request.bars = bars.data();
        request.barCount = static_cast<int>(bars.size());
        request.formulas = row.formulas;
        request.volumePane = row.volume;
        request.size = {600, 400};
        const ny::ChartScene scene = ny::BuildChartScene(request);
        ASSERT_EQ(scene.panes.size(), row.paneFormulas.size());
        for (size_t i = 0; i < scene.panes.size(); ++i) {
            EXPECT_EQ(scene.panes[i].formula, row.paneFormulas[i]) << i;
            EXPECT_NEAR(scene.panes[i].area.bottom, row.bottoms[i], 1e-3) << i;
        }
    }
}

TEST_F(ChartFixture, UnwritableFilesFailAndLeaveNothingBehind) {
    formula.m_strName = "EMPTY";
    const ny::ChartScene scene = Scene();
    const fs::path folder = fs::temp_directory_path() / ("chart_test_" + std::to_string(::getpid()));
    fs::create_directories(folder);
    std::FILE* blocker = std::fopen((folder / "file").c_str(), "w");
    std::fclose(blocker);
    for (const char* name : {"file/chart.png", "file/chart.svg", "file/inner/chart.pdf", "chart.gif"}) {
        std::string error;
        EXPECT_FALSE(ny::WriteChartFile(scene, (folder / name).string(), &error)) << name;
        EXPECT_FALSE(error.empty()) << name;
    }
    EXPECT_EQ(std::distance(fs::directory_iterator(folder), fs::directory_iterator()), 1);
    std::string error;
    EXPECT_TRUE(ny::WriteChartFile(scene, (folder / "chart.pdf").string(), &error)) << error;
    fs::remove_all(folder);
}

}  // namespace
