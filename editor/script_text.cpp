// The script editor's line array.

#include "editor/script_text.h"

#include <algorithm>

void CScriptText::_InsertLine(const CString& line, int index, int updateMax) {
    m_arLines.insert(m_arLines.begin() + index, line);
    m_arLineColors.insert(m_arLineColors.begin() + index, std::vector<unsigned long>());
    if (updateMax != 0) FindMaxLineLen();
}

void CScriptText::_SetLine(const CString& line, int index) {
    m_arLines[static_cast<size_t>(index)] = line;
    FindMaxLineLen();
}

void CScriptText::_RemoveLine(int index) {
    m_arLines.erase(m_arLines.begin() + index);
    m_arLineColors.erase(m_arLineColors.begin() + index);
    FindMaxLineLen();
}

void CScriptText::_RemoveAll() {
    m_arLines.clear();
    m_arLineColors.clear();
    FindMaxLineLen();
    _InsertLine(CString(), 0, 0);
}

long CScriptText::FindMaxLineLen() {
    size_t longest = 0;
    for (const CString& line : m_arLines) longest = std::max(longest, line.size());
    m_nMaxLineLen = static_cast<int>(longest);
    return m_nMaxLineLen;
}

CScriptText& CScriptText::operator=(const CScriptText& other) {
    m_arLines = other.m_arLines;
    m_arLineColors = other.m_arLineColors;
    return *this;
}
