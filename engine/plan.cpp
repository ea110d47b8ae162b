#include "engine/plan.h"

#include <algorithm>

namespace ny {

namespace {

bool SameDefinition(const CIndicator& formula, const std::vector<CString>& paramNames,
                    const std::vector<StatementPlan>& statements) {
    if (paramNames.size() != formula.m_arParams.size()) return false;
    if (statements.size() != formula.m_arExpressions.size()) return false;
    for (size_t i = 0; i < paramNames.size(); ++i)
        if (paramNames[i] != formula.m_arParams[i]->m_strName) return false;
    for (size_t i = 0; i < statements.size(); ++i) {
        const CExpression& expr = *formula.m_arExpressions[i];
        if (statements[i].name != expr.m_strName || statements[i].text != expr.m_strText) return false;
    }
    return true;
}

}  // namespace

void FormulaPlan::Match(const CIndicator& formula) {
    if (SameDefinition(formula, m_paramNames, m_statements)) return;
    m_paramNames.clear();
    for (const CParam* param : formula.m_arParams) m_paramNames.push_back(param->m_strName);
    m_statements.clear();
    for (const CExpression* expr : formula.m_arExpressions) {
        // One place per byte of the line, made at once so that a word stays where it is while a
        // reader works with it.
        const size_t places = std::min<size_t>(expr->m_strText.size(), NY_STATEMENT_BYTES) + 2;
        m_statements.push_back({expr->m_strName, expr->m_strText, std::vector<PlannedWord>(places)});
    }
}

PlanPlace FormulaPlan::Enter(size_t statement, const char* line) {
    return {statement < m_statements.size() ? &m_statements[statement] : nullptr, line};
}

PlannedWord* PlanPlace::WordAt(const char* cursor) const {
    if (statement == nullptr || cursor < line) return nullptr;
    const size_t offset = static_cast<size_t>(cursor - line);
    return offset < statement->words.size() ? &statement->words[offset] : nullptr;
}

}  // namespace ny
