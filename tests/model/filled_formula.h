#pragma once

#include "model/indicator.h"

// A formula with every stored field set to something other than its default.
inline void FillFormula(CIndicator& f) {
    f.m_strName = "均线MA";
    f.m_strTitle = "移动平均线";
    f.m_strSource = "MA1:MA(CLOSE,N);\r\nMA2:MA(CLOSE,M);";
    f.m_cDrawPos = 1;
    f.m_cHasPassword = 1;
    f.m_strUsage = "用法注释";
    f.m_strExtra = "N日均线上穿M日均线";
    f.m_strPassword = "secret";
    f.m_strAxes = "20;80";
    f.m_SysIndex = 3;
    f.m_MainType = 1;
    f.m_SubType = -25;
    const struct { const char* name; const char* text; short type; int color; short width; } statements[] = {
        {"MA1", "MA(CLOSE,N)", 1, 0x00FF00FF, 2}, {"", "CROSS(MA1,MA2)", 0, -1, -3}};
    for (const auto& s : statements) {
        auto* e = new CExpression;
        e->m_strName = s.name, e->m_strText = s.text, e->m_nType = s.type, e->m_lColor = s.color, e->m_nWidth = s.width;
        f.m_arExpressions.push_back(e);
    }
    const struct { const char* name; short max, min, def; } params[] = {{"N", 250, -250, 5}, {"M", 32767, -32768, 10}};
    for (const auto& p : params) {
        auto* param = new CParam;
        param->m_strName = p.name, param->m_nMax = p.max, param->m_nMin = p.min, param->m_nDefault = p.def;
        f.m_arParams.push_back(param);
    }
    f.m_arParams[0]->SetParam(1, 7);
    f.m_arParams[0]->SetParam(10, -9);
    for (short value : {20, -80}) {
        f.m_arAxes.push_back(new CAxeValue);
        f.m_arAxes.back()->m_nValue = value;
        f.m_arAxes.back()->m_cCritical = 1;
    }
}
