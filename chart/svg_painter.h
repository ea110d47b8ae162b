#pragma once
// The chart as an SVG document, written by hand rather than through Cairo so that texts stay
// texts (searchable, selectable) and every line keeps the scene's coordinates. Text goes out as
// UTF-8. Nothing fails.

#include <string>

#include "chart/chart_scene.h"

namespace ny {

std::string RenderChartSvg(const ChartScene& scene);

}  // namespace ny
