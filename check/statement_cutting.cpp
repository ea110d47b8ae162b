#include "check/statement_cutting.h"

#include "check/gbk_text.h"

namespace ny {
namespace {

constexpr std::string_view kStatementEnds = "; \r\n";

}  // namespace

std::vector<FormulaStatement> CutStatements(std::string_view all) {
    std::vector<FormulaStatement> statements;
    size_t semi = all.find(';');
    if (semi == std::string_view::npos || semi == 0) {
        statements.push_back({CString(all), false});
        return statements;
    }
    size_t start = 0;
    while (semi != std::string_view::npos) {
        CString statement(TrimBytes(all.substr(start, semi - start), kStatementEnds));
        // A ";" inside a comment does not end the statement.
        const size_t close = all.find('}', semi);
        if (statement.find('{') != CString::npos && close != std::string_view::npos &&
            statement.find('}') == CString::npos) {
            statement += all.substr(semi, close - semi + 1);
            semi = close + 1;
        }
        if (statement.empty()) {
            ++start;
            semi = all.find(';', start + 1);
            continue;
        }
        statements.push_back({std::move(statement), true});
        start = semi;
        semi = all.find(';', start + 1);
    }
    const std::string_view rest =
        start + 1 < all.size() ? TrimBytes(all.substr(start + 1), kStatementEnds) : std::string_view();
    if (!rest.empty()) statements.push_back({CString(rest), false});
    return statements;
}

}  // namespace ny
