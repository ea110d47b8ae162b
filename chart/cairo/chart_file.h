#pragma once
// Charts as files and pictures: PNG and PDF painted through Cairo, SVG through the core chart's
// SVG painter, all with the CJK font Noto Sans Mono CJK SC so that Chinese names show.

#include <string>
#include <vector>

#include "chart/chart_scene.h"

namespace ny {

// The chart as pixels, row by row from the top, red in the low byte: what a PNG file shows.
std::vector<Colour> RenderChartPixels(const ChartScene& scene);

// Writes the chart to `path` in the format its extension names: .png, .svg or .pdf. The file
// appears whole or not at all. False with a message (UTF-8) in `error` otherwise.
bool WriteChartFile(const ChartScene& scene, const std::string& path, std::string* error);

}  // namespace ny
