#pragma once
// The text of the script editor: an array of GBK lines without line ends, with the length of the
// longest line, which sizes the horizontal scroll range. Plain data: no cursor, no selection, no
// window. ColorEditWnd owns one and reaches it through wrappers that add the scroll update.
//
// Invariant once _RemoveAll has run: at least one line. Indexes that a method documents as
// "inside the array" are the caller's duty; the editor's wrappers check them.

#include <vector>

#include "host/types.h"

class CScriptText {
public:
    CScriptText() = default;
    CScriptText(const CScriptText&) = default;

    // Inserts line before index (index may equal the size) with an empty colour array; with
    // updateMax non-zero the longest line is found again.
    void _InsertLine(const CString& line, int index, int updateMax);
    // Replaces the line at index, which must be inside the array.
    void _SetLine(const CString& line, int index);
    // Removes the line at index with its colours.
    void _RemoveLine(int index);
    // Empties the text, then inserts the one empty line that an empty editor holds.
    void _RemoveAll();
    long _GetSize() const { return static_cast<long>(m_arLines.size()); }
    // A copy of the line at index, which must be inside the array.
    CString _GetLine(int index) const { return m_arLines[static_cast<size_t>(index)]; }
    // A read-only view of the line at index, for the editor's byte walks.
    const CString& LineRef(int index) const { return m_arLines[static_cast<size_t>(index)]; }
    // The colour array of a line. Nothing fills them: colours are worked out at paint time.
    const std::vector<unsigned long>& _GetLineColors(int index) const {
        return m_arLineColors[static_cast<size_t>(index)];
    }
    void FullUpdate() { FindMaxLineLen(); }
    // Sets m_nMaxLineLen to the greatest line length in bytes (0 for no lines) and returns it.
    long FindMaxLineLen();

    // Copies lines and colour arrays; m_nMaxLineLen stays as it was until FullUpdate.
    CScriptText& operator=(const CScriptText& other);

    int m_nMaxLineLen = 0;
    std::vector<CString> m_arLines;
    std::vector<std::vector<unsigned long>> m_arLineColors;
};
