// The editor's tips: the usage of the function whose arguments are being typed, and the list of
// a referenced library indicator's output lines.

#include "catalog/function_manager.h"
#include "editor/color_edit_wnd.h"
#include "model/library.h"

namespace {

// Height of the reference list and its distance below the caret, in pixels.
constexpr int kRefListBottom = 86;
constexpr int kRefListTop = 16;
// Width of the reference list: enough for a line name of a dozen letters.
constexpr int kRefListWidth = 120;

// A function's tip: description, usage and, for the call being typed, the example.
CString FunctionTip(const FUN_ITEM& row, bool withExample) {
    CString tip = row.m_strDesc + "\r\n用法\r\n" + row.m_strUsage;
    if (withExample) tip += "\r\n  例如:" + row.m_strExample;
    return tip;
}

}  // namespace

// Rebuilds the stack of open calls from the tokens of the cursor's line: the tip describes the
// last call of the line that is still open at its end. Then offers the lines of an indicator
// that the last word refers to.
void ColorEditWnd::UpdateTips() {
    m_arTipStack.clear();
    if (m_pfnLexical == nullptr) return;
    const CString line = GetTextLine(m_nCursorY);
    CMyLexicalAnaly sink;
    m_pfnLexical(line.c_str(), &sink);
    const ny::Point caret{(m_nCursorX - m_nFirstCol) * m_nCharWidth - 1, (m_nCursorY - m_nFirstLine) * m_nLineHeight};
    const ny::Point screen = m_platform.window != nullptr ? m_platform.window->ClientToScreen(caret) : caret;
    CString lastWord;
    for (int i = 0; i < sink.GetTokenCount(); ++i) {
        const LEX_TOKEN token = sink.GetToken(static_cast<unsigned>(i));
        lastWord = line.substr(static_cast<size_t>(token.nPos), static_cast<size_t>(token.nLen));
        if (token.nType == NY_TOKEN_CALL) {
            if (FUN_ITEM* row = g_MyFunsMng.FindFun(lastWord.c_str(), 0)) {
                m_Tip.AddFunTip(FunctionTip(*row, true).c_str(), screen);
                m_arTipStack.push_back(row);
            }
        } else if (token.nType == NY_TOKEN_RPAREN && !m_arTipStack.empty()) {
            m_arTipStack.pop_back();
            if (m_arTipStack.empty()) m_Tip.Hide();
            else m_Tip.AddFunTip(FunctionTip(*m_arTipStack.back(), false).c_str(), screen);
        }
    }
    if (m_arTipStack.empty()) m_Tip.Hide();
    if (sink.GetTokenCount() == 0) return;
    char kind = 0;
    CString indicatorName, lineName;
    CIndicator* indicator = IsIndicatorName(lastWord.c_str(), kind, indicatorName, lineName);
    // A word that ends in a full stop refers to no line yet; the list opens for its indicator.
    if (indicator == nullptr && lastWord.size() > 1 && lastWord.back() == '.')
        indicator = g_MyGetIndicator(indicatorName, NY_KIND_INDICATOR);
    if (indicator != nullptr) ShowRefTip(indicator, lineName);
    else HiddRefTip();
}

void ColorEditWnd::ShowRefTip(CIndicator* indicator, const CString& prefix) {
    ny::ListBox* list = m_platform.refList;
    if (list == nullptr || indicator == nullptr) return;
    if (!list->IsVisible()) {
        int x = (m_nCursorX - m_nFirstCol) * m_nCharWidth - 1;
        int y = (m_nCursorY - m_nFirstLine) * m_nLineHeight;
        if (m_platform.window != nullptr && y + kRefListBottom > m_platform.window->GetClientRect().bottom)
            y -= kRefListBottom;
        list->Place({x, y + kRefListTop, x + kRefListWidth, y + kRefListBottom});
        list->Show();
        list->Clear();
        for (const CExpression* expression : indicator->m_arExpressions) list->Insert(0, expression->m_strName);
        return;
    }
    if (prefix.empty()) return;
    int match = 0;
    for (int i = 0; i < list->Count(); ++i) {
        if (list->Text(i).compare(0, prefix.size(), prefix) == 0) {
            match = i;
            break;
        }
    }
    list->SetFocus();
    list->ClearSelection();
    list->Select(match);
}

void ColorEditWnd::HiddRefTip() {
    if (m_platform.refList != nullptr && m_platform.refList->IsVisible()) m_platform.refList->Hide();
}

void ColorEditWnd::HandRefTipMsg(unsigned key) {
    ny::ListBox* list = m_platform.refList;
    if (list == nullptr || !list->IsVisible()) return;
    const int count = list->Count();
    const int selected = list->Selected();
    switch (key) {
        case ny::kKeyUp:
            list->SetFocus();
            list->Select(selected < 0 ? 0 : (selected + count - 1) % count);
            break;
        case ny::kKeyDown:
            list->SetFocus();
            list->Select(selected < 0 ? 0 : (selected + 1) % count);
            break;
        case ny::kKeyReturn: {
            const CString choice = list->Text(selected < 0 ? 0 : selected);
            SetSelRange();
            ReplaceSelText(choice.c_str());
            list->Hide();
            ShowTranslation();
            break;
        }
        case ny::kKeyEscape: list->Hide(); break;
        default: break;
    }
}

void ColorEditWnd::OnRefListKey(unsigned key, ny::Modifiers modifiers) {
    if (key == ny::kKeyReturn || key == ny::kKeyUp || key == ny::kKeyDown || key == ny::kKeyEscape) {
        HandRefTipMsg(key);
        return;
    }
    if (m_platform.window != nullptr) m_platform.window->SetFocus();
    OnKeyDown(key, modifiers);
}

// Marks what a chosen line name replaces: from behind the nearest full stop left of the cursor
// (or from column 0) to the cursor.
void ColorEditWnd::SetSelRange() {
    if (m_platform.window != nullptr) m_platform.window->SetFocus();
    _SetAnchorPos(CursorPos());
    const CString line = GetTextLine(m_nCursorY);
    const size_t stop = m_nCursorX > 0 ? line.rfind('.', static_cast<size_t>(m_nCursorX - 1)) : CString::npos;
    m_nCursorX = stop == CString::npos ? 0 : static_cast<int>(stop) + 1;
    Selected();
}
