#pragma once
// Internal to the chart: the shapes of one statement in value space, before the pane's scale is
// known. x counts bars (bar i is centred on x = i), y is a value; a shape marked `paneFraction`
// instead places its points as fractions of the pane (0 left/top, 1 right/bottom).

#include <vector>

#include "chart/chart_scene.h"

class CExpression;

namespace ny {

struct PlotShape {
    ChartShape shape;
    bool paneFraction = false;
    double lift = 0;  // pixels to move the shape up once it is placed, e.g. a text off its price
};

// The bars on show, [firstBar, endBar), and what the shapes take their colours from.
struct PlotContext {
    const CHisDay* bars = nullptr;
    int firstBar = 0;
    int endBar = 0;
    const ChartTheme* theme = nullptr;
};

// Appends the shapes of a computed statement drawn in `colour` (its own, or the one the chart gave
// it). Statements that draw nothing (assignments, NODRAW, tips) append nothing.
void PlotStatement(const CExpression& statement, Colour colour, const PlotContext& context,
                   std::vector<PlotShape>* shapes);

// True where a statement has a value to show at a bar: inside its range, and not DRAWNULL.
bool HasPlotValue(const CExpression& statement, int bar);

}  // namespace ny
