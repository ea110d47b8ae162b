// Every formula of the system set, drawn over a sample stock of the embedded installation: each
// one computes all its statements and comes out as a picture and an SVG with its name, with its
// columns and text marks where its statements put them.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <vector>

#include "chart/cairo/chart_file.h"
#include "chart/chart_scene.h"
#include "chart/svg_painter.h"
#include "engine/evaluate.h"
#include "host/encoding.h"
#include "host/installation.h"
#include "model/library.h"
#include "picker/pick_request.h"

namespace {

constexpr int kSampleStock = 600001;  // SH600001
constexpr int kSampleIndex = 1;       // SH000001: market-breadth formulas read its advance and decline counts

struct Bars {
    int stockId;
    std::vector<CHisDay> bars;
};

// What the draw commands show in the formula's pane: a filled STICKLINE column in its colour at its
// tallest bar, and a DRAWTEXT mark at every bar whose condition holds. Counts the checks.
void CheckDrawn(const CIndicator& f, const ny::ChartScene& scene, const std::string& svg,
                const std::vector<ny::Colour>& pixels, int* checks) {
    const ny::ChartPane& pane = scene.panes.at(f.m_cDrawPos == 1 ? 0 : 2);
    for (const CExpression* s : f.m_arExpressions) {
        int shown = 0, tallest = -1;
        double tallestPixels = 3;  // a column too short to hold a pixel of its own isn't looked at
        for (int bar = std::max<int>(pane.firstBar, s->m_nFirst); bar < pane.firstBar + pane.barsShown; ++bar) {
            if (s->m_pData[bar] == 0) continue;
            ++shown;
            const double pixelsTall = std::fabs(pane.YOfValue(s->m_pDrawData[4 * bar]) - pane.YOfValue(s->m_pDrawData[4 * bar + 1]));
            if (pixelsTall > tallestPixels) tallest = bar, tallestPixels = pixelsTall;
        }
        if (s->m_nType == 23 && s->m_DrawParams[4] == 0 && s->m_DrawParams[5] == 0 && tallest >= 0) {
            const double middle = (s->m_pDrawData[4 * tallest] + s->m_pDrawData[4 * tallest + 1]) / 2;
            const auto at = static_cast<size_t>(pane.YOfValue(middle)) * scene.size.width + static_cast<size_t>(pane.XOfBar(tallest));
            EXPECT_EQ(pixels.at(at), static_cast<ny::Colour>(s->m_lColor)) << ny::GbkToUtf8(f.m_strName);
            ++*checks;
        }
        if (s->m_nType != 26) continue;
        const std::string mark = ">" + ny::GbkToUtf8(s->m_DrawParams) + "</text>";
        int found = 0;
        for (size_t at = svg.find(mark); at != std::string::npos; at = svg.find(mark, at + 1)) ++found;
        EXPECT_EQ(found, shown) << ny::GbkToUtf8(f.m_strName) << mark;
        *checks += shown;
    }
}

TEST(SystemSetChart, EveryFormulaRendersOverASampleStock) {
    ASSERT_TRUE(ny::OpenInstallation(NY_BINARY_DIR "/install"));
    g_MyInitIndicator();
    Bars stock{kSampleStock, {}}, index{kSampleIndex, {}};
    ASSERT_TRUE(ny::LoadStockBars(stock.stockId, NY_PERIOD_DAY, false, &stock.bars));
    ASSERT_TRUE(ny::LoadStockBars(index.stockId, NY_PERIOD_DAY, false, &index.bars));
    ASSERT_FALSE(g_MyIndicatorArray.empty());
    int drawnChecks = 0;
    for (const CIndicator* library : g_MyIndicatorArray) {
        const bool breadth = library->m_MainType == NY_KIND_INDICATOR && library->m_SubType == 0;
        std::vector<CHisDay>& bars = breadth ? index.bars : stock.bars;
        const auto count = static_cast<short>(bars.size());
        CIndicator formula;
        formula = *library;
        ny::EvaluateOver(formula, breadth ? index.stockId : stock.stockId, bars.data(), count);
        const std::string name = ny::GbkToUtf8(formula.m_strName);
        for (const CExpression* s : formula.m_arExpressions)
            EXPECT_EQ(s->m_cComputed, 1) << name << " " << ny::GbkToUtf8(s->m_strName);

        ny::ChartRequest request;
        request.bars = bars.data();
        request.barCount = count;
        request.formulas = {&formula};
        request.size = {400, 300};
        const ny::ChartScene scene = ny::BuildChartScene(request);
        EXPECT_EQ(scene.panes.size(), formula.m_cDrawPos == 1 ? 2u : 3u) << name;
        const std::string svg = ny::RenderChartSvg(scene);
        const std::vector<ny::Colour> pixels = ny::RenderChartPixels(scene);
        EXPECT_NE(svg.find(">" + name + "<"), std::string::npos) << name;
        ASSERT_EQ(pixels.size(), 400u * 300u) << name;
        CheckDrawn(formula, scene, svg, pixels, &drawnChecks);
    }
    EXPECT_GE(drawnChecks, 3) << "red and green columns, text marks";
    g_MyRemoveIndicators();
    ny::CloseInstallation();
}

}  // namespace
