#include "check/syntax_result.h"

namespace ny {

void AppendTestedStatements(const SYNTestResult& result, CIndicator& indicator) {
    for (const SYNLineItem& item : result.arItems) {
        auto* expression = new CExpression;
        expression->m_strName = item.strName;
        expression->m_strText = item.strExpress;
        expression->m_nType = static_cast<short>(item.nType);
        expression->m_lColor = item.lColor;
        expression->m_nWidth = static_cast<short>(item.nWidth);
        expression->m_nHasDraw = 0;
        expression->m_pPoints = nullptr;
        indicator.m_arExpressions.push_back(expression);
    }
}

}  // namespace ny
