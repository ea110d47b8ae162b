#include "model/indicator.h"

#include <algorithm>
#include <cstring>

short CParam::GetParam(short period) const {
    if (period >= 1 && period <= 10 && m_nPeriodValue[period] != 0) return m_nPeriodValue[period];
    return m_nDefault;
}

void CParam::SetParam(short period, short value) {
    if (period >= 1 && period <= 10) m_nPeriodValue[period] = value;
}

CExpression& CExpression::operator=(const CExpression& other) {
    m_strName = other.m_strName;
    m_strText = other.m_strText;
    m_nType = other.m_nType;
    m_lColor = other.m_lColor;
    m_nWidth = other.m_nWidth;
    return *this;
}

CExpression::~CExpression() {
    delete[] m_pData;
    delete[] m_pDrawData;
    delete[] m_pPoints;
}

bool CExpression::HasRoomFor(short bars) const {
    return bars > 0 && bars <= m_nCapacity && m_pData != nullptr && m_pDrawData != nullptr;
}

void CExpression::ClearBars(short first, short bars) {
    std::memset(m_pData + first, 0, sizeof(float) * (bars - first));
    std::memset(m_pDrawData + 4 * first, 0, sizeof(float) * 4 * (bars - first));
}

void CExpression::ReuseBuffers(short bars, short kept) {
    std::memset(m_lDrawArgs, 0, sizeof(m_lDrawArgs));
    ClearBars(kept, bars);
    m_nAllocBars = bars;
}

void CExpression::AllocMem(short bars) {
    if (HasRoomFor(bars)) {
        // As for nearly every stock of a pick: the buffers are kept, and hold what fresh ones
        // would, without touching new memory.
        ReuseBuffers(bars, bars > m_nAllocBars ? m_nAllocBars : 0);
        return;
    }
    std::memset(m_lDrawArgs, 0, sizeof(m_lDrawArgs));
    const short oldBars = m_nAllocBars;
    float* oldData = m_pData;
    float* oldDraw = m_pDrawData;
    m_nAllocBars = bars;
    m_nCapacity = bars > 0 ? bars : 0;
    m_pData = nullptr;
    m_pDrawData = nullptr;
    if (bars > 0) {
        m_pData = new float[bars]();
        m_pDrawData = new float[bars * 4]();
        if (oldData != nullptr && oldDraw != nullptr && oldBars > 0 && oldBars < bars) {
            std::memcpy(m_pData, oldData, sizeof(float) * oldBars);
            std::memcpy(m_pDrawData, oldDraw, sizeof(float) * oldBars * 4);
        }
    }
    delete[] oldData;
    delete[] oldDraw;
}

void CExpression::Change() {
    ForgetResult();
    if (m_nAllocBars > 0 && m_pData != nullptr && m_pDrawData != nullptr) ClearBars(0, m_nAllocBars);
}

void CExpression::ForgetResult() {
    m_nFirst = 30000;
    m_nEnd = 0;
    m_cIsSeries = 0;
    m_cComputed = 0;
    m_cFailCode = 0;
}

// Buffers with room are zeroed once, none of their values kept; new ones copy the old values,
// which Change must have zeroed first.
void CExpression::Renew(short bars) {
    if (HasRoomFor(bars)) {
        ForgetResult();
        ReuseBuffers(bars, 0);
        return;
    }
    Change();
    AllocMem(bars);
}

void CExpression::ResetPoints(short barCount) {
    const short bars = barCount > 0 ? barCount : 0;
    if (m_pPoints == nullptr || bars > m_nPointsCapacity) {
        delete[] m_pPoints;
        m_pPoints = new char[static_cast<size_t>(bars) * 12 + 1];
        m_nPointsCapacity = bars;
    }
    std::memset(m_pPoints, 0, static_cast<size_t>(bars) * 8);
}

CIndicator::~CIndicator() {
    DeleteParam();
    DeleteAxeValue();
    DeleteExpression();
    delete[] m_pIndexDay;
}

const CIndicator& CIndicator::operator=(const CIndicator& other) {
    if (this == &other) return *this;
    m_strSource = other.m_strSource;
    m_strUsage = other.m_strUsage;
    m_strName = other.m_strName;
    m_strTitle = other.m_strTitle;
    m_cDrawPos = other.m_cDrawPos;
    m_IsEditable = other.m_IsEditable;
    m_cHasPassword = other.m_cHasPassword;
    m_strPassword = other.m_strPassword;
    m_strAxes = other.m_strAxes;
    m_MainType = other.m_MainType;
    m_SubType = other.m_SubType;
    m_SysIndex = other.m_SysIndex;
    m_nPeriod = other.m_nPeriod;

    DeleteParam();
    DeleteAxeValue();
    DeleteExpression();
    for (const CParam* param : other.m_arParams) m_arParams.push_back(new CParam(*param));
    for (const CAxeValue* axe : other.m_arAxes) m_arAxes.push_back(new CAxeValue(*axe));
    for (const CExpression* expr : other.m_arExpressions) {
        CExpression* copy = new CExpression;
        *copy = *expr;
        m_arExpressions.push_back(copy);
    }
    return *this;
}

void CIndicator::AllocMem(short bars) {
    m_nAllocBars = bars;
    for (CExpression* expr : m_arExpressions) expr->AllocMem(bars);
}

void CIndicator::Renew(short bars) {
    m_nAllocBars = bars;
    for (CExpression* expr : m_arExpressions) expr->Renew(bars);
}

void CIndicator::Change() {
    for (CExpression* expr : m_arExpressions) expr->Change();
}

namespace {
template <typename T>
void DeleteAll(std::vector<T*>& items) {
    for (T* item : items) delete item;
    items.clear();
}
}  // namespace

void CIndicator::DeleteParam() { DeleteAll(m_arParams); }
void CIndicator::DeleteAxeValue() { DeleteAll(m_arAxes); }
void CIndicator::DeleteExpression() { DeleteAll(m_arExpressions); }

CExpression* CIndicator::Find(const CString& name) const {
    for (CExpression* expr : m_arExpressions)
        if (expr->m_strName == name) return expr;
    return nullptr;
}
