#pragma once
// How statements and bars look on the outside: colours, bar times, and the JSON of a statement.

#include <string>

#include <nlohmann/json.hpp>

#include "model/indicator.h"

namespace nyind {

// "#RRGGBB" for a colour (red in the low byte), "" for -1 (no colour given).
std::string ColorText(int color);
// "2021-06-30" for a day stamp, "2021-06-30 14:55" for a YYMMDDHHMM minute stamp.
std::string BarTimeText(int stamp, bool minute);
// A float as a JSON number with the digits a float holds, or null when it is not finite.
nlohmann::ordered_json JsonNumber(float value);
// name, text, type, colour and width of a statement.
nlohmann::ordered_json StatementDefinition(const CExpression& statement);
// A column heading for a statement: its name, else its expression.
std::string StatementHeading(const CExpression& statement);

}  // namespace nyind
