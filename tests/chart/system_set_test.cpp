// Every formula of the system set, drawn over a sample stock of the embedded installation: each
// one computes all its statements and comes out as a picture and an SVG with its name.

#include <gtest/gtest.h>

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

TEST(SystemSetChart, EveryFormulaRendersOverASampleStock) {
    ASSERT_TRUE(ny::OpenInstallation(NY_BINARY_DIR "/install"));
    g_MyInitIndicator();
    Bars stock{kSampleStock, {}}, index{kSampleIndex, {}};
    ASSERT_TRUE(ny::LoadStockBars(stock.stockId, NY_PERIOD_DAY, false, &stock.bars));
    ASSERT_TRUE(ny::LoadStockBars(index.stockId, NY_PERIOD_DAY, false, &index.bars));
    ASSERT_FALSE(g_MyIndicatorArray.empty());
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
        request.formula = &formula;
        request.size = {400, 300};
        const ny::ChartScene scene = ny::BuildChartScene(request);
        EXPECT_EQ(scene.panes.size(), formula.m_cDrawPos == 1 ? 2u : 3u) << name;
        EXPECT_NE(ny::RenderChartSvg(scene).find(">" + name + "<"), std::string::npos) << name;
        EXPECT_EQ(ny::RenderChartPixels(scene).size(), 400u * 300u) << name;
    }
    g_MyRemoveIndicators();
    ny::CloseInstallation();
}

}  // namespace
