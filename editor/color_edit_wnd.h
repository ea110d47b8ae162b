#pragma once
// The script editor: a grid of fixed-width cells over a CScriptText, with a cursor, an anchor
// and a selection between them, painted in token colours, with the function tip and the list of
// a referenced indicator's lines. All positions are byte columns of GBK text; the cursor never
// rests inside a double-byte character. It also holds the lexer module and the word classes
// that the syntax test (check/syntax_checker.h) and the translation run over.
//
// The window system reaches it through the events of ny::InputTarget and OnPaint; it reaches
// the window system through ny::EditorPlatform. Without a window it is a plain text model (the
// syntax test and the command-line tool use it so). One thread: the window's.

#include <string_view>
#include <vector>

#include "check/lexical.h"
#include "check/syntax_result.h"
#include "editor/editor_platform.h"
#include "editor/script_text.h"
#include "editor/tooltip_ex.h"
#include "host/types.h"
#include "model/indicator.h"
#include "platform/input_events.h"

struct FUN_ITEM;

// Notifications to the parent, in the high word of a command message.
enum : unsigned {
    NY_EDIT_NOTIFY_SETFOCUS = 256,
    NY_EDIT_NOTIFY_KILLFOCUS = 512,
    NY_EDIT_NOTIFY_CLEARED = 768,
};

// Commands of the editor's context menu.
enum : unsigned {
    NY_EDIT_CMD_COPY = 33047,
    NY_EDIT_CMD_PASTE = 33048,
    NY_EDIT_CMD_CUT = 33049,
    NY_EDIT_CMD_SELECTALL = 33050,
};

// The column x of a line is a character start: below 1, not below length, or reached by a walk
// from column 0 that steps 1 over a byte below 129 and 2 over any other.
bool IsCharStart(const char* bytes, int length, int x);

class ColorEditWnd : public ny::WindowClient {
public:
    // An editor without a window: text model, word classes and syntax test.
    ColorEditWnd();
    // The editor in a window: Create, then Reset. Font size and name are carried, not used.
    ColorEditWnd(const ny::EditorPlatform& platform, ny::EditorOwner* dialog, int id, int tabWidth,
                 int fontSize, const char* fontName, bool horizontalBar);
    ~ColorEditWnd() override;
    ColorEditWnd(const ColorEditWnd&) = delete;
    ColorEditWnd& operator=(const ColorEditWnd&) = delete;

    // What creating the editor does for its language, after the font: loads the keywords and
    // opens the lexer module from the first place that has it (see LexicalModulePaths).
    void PrepareLanguage();

    // Opens the lexer module at `path` and looks up its entry points, closing any module opened
    // before. False, with both entry points null, if the file does not open; an entry point that
    // the module lacks stays null.
    BOOL OpenLexical(const CString& path);
    void CloseLexical();
    // Where the module is looked for, in order: beside the running program, in the installation
    // (g_MyExePath), in the build tree that this library was built with.
    static std::vector<CString> LexicalModulePaths();

    // Fills an empty editor with text as the dialog does: Reset, then ReplaceSelText.
    void SetText(const CString& text);

    // ---- Word classes. ----
    void LoadKeyWord();
    // Word, without leading white space, is a keyword; case counts.
    BOOL IsKeyWord(const CString& word) const;
    // The catalog has a row of that exact word (FINANCE(7), not FINANCE).
    BOOL IsFunName(const CString& word) const;
    // Word, without leading white space, names one of the parameters; case does not count.
    BOOL IsParamName(const std::vector<CParam>& params, const CString& word) const;
    // Word, without white space at either end, names a statement that passed the test so far.
    BOOL IsIdentifyName(const char* word) const;
    // The library's indicator (of kind 0) that word refers to, or null. A dotted word names an
    // indicator and one of its lines: kind 1, `indicator` and `line` in upper case. Otherwise kind
    // is 2 and `indicator` the word as given.
    CIndicator* IsIndicatorName(const char* word, char& kind, CString& indicator, CString& line) const;
    // Colour of a colour class: 1 numbers, 2 keywords, 3 functions, other plain text.
    int GetColor(int colourClass) const;

    // ---- Syntax test: CSyntaxChecker over the text, m_arIdentifiers and the lexer. ----
    // Tests the editor's text and cuts it into statements; params are the formula's parameters.
    SYNTestResult GetTestResult(const std::vector<CParam>& params);
    // Tests one upper-cased statement. A statement that passes adds its name to m_arIdentifiers.
    SYNTestLineResult GetLineTestResult(const char* line, const std::vector<CParam>& params);
    // Tests that an expression reduces to one value, and each argument of its calls too.
    SYNTestLineResult CheckLineExpress(const char* express, const std::vector<CParam>& params);
    // The postfix list reduces to exactly one value.
    static int IsValidAfExpress(const std::vector<AfPressItem>& items);
    // The stack holds an opening parenthesis.
    static int CheckLParen(const std::vector<OPITEM>& ops);

    // ---- Translation. ----
    // The sentences of the editor's text, one line per statement (see ny::FormulaTranslator).
    // Run after each keystroke; never fails.
    CString GetTranslate();

    // The lexer module and its entry points; null when it did not open.
    void* m_hLexical = nullptr;
    NyLexicalAnalysisFn m_pfnLexical = nullptr;
    NyPaintLexicalAnalysisFn m_pfnPaintLexical = nullptr;

    std::vector<CString> m_arKeyWords;
    // Names of the statements of the current formula that have passed the test so far.
    std::vector<CString> m_arIdentifiers;

    // Colours, red in the low byte.
    int m_crText = 0x000000;
    int m_crNumber = 0x0080FF;
    int m_crKeyWord = 0x009600;
    int m_crFunction = 0xC08000;

    // ---- Text (the wrappers of CScriptText; their repaint flags have no effect). ----
    void InsertTextLine(const CString& line, int index, int updateMax, BOOL repaint);
    void SetTextLine(const CString& line, int index, BOOL repaint, BOOL updateScroll);
    void RemoveTextLine(int index, BOOL repaint, BOOL updateScroll);
    // Empties the text to one empty line and tells the parent (768).
    void RemoveAllText();
    CString GetTextLine(int index) const;
    int GetTextSize() const { return static_cast<int>(m_Text._GetSize()); }
    // Replaces all the text, for the host. Tabs become blanks; line ends are LF, CR LF or CR.
    void LoadText(const char* text);
    // The lines, each followed by LF when there is more than one.
    void UnloadText(CString& out) const;
    // The lines joined by blank, CR, LF: the form that the test, the translation and the
    // dialog read.
    CString GetText() const;

    // ---- Editing, for the dialog and the host. ----
    void Reset();
    void ReplaceSelText(const char* text);
    void SetLine(const char* text, int index);
    void SetSelection(int anchorX, int anchorY, int cursorX, int cursorY);
    void SetCursorPos(ny::Point pos);
    void SetAnchorPos(ny::Point pos);
    ny::Point GetCursorPos() const { return CursorPos(); }
    ny::Point GetAnchorPos() const { return AnchorPos(); }
    CString GetLine(int index) const { return GetTextLine(index); }
    int GetLineCount() const { return GetTextSize(); }
    void ScrollToLine(int line);
    void SoftScrollToLine(int line);
    void ScrollToCursor();
    void Recolorize();
    void DoCopy();
    void DoCut();
    void DoPaste();
    void OnCopy();
    void OnCut();
    void OnPaste();
    void OnSelectall();
    int VisibleColumns() const;
    int FirstVisibleLine() const { return m_nFirstLine; }
    int VisibleLines(bool whole) const;
    int LastVisibleLine() const;
    ny::Rect GetLineRect(int line) const { return GetLineRect(line, line); }
    ny::Rect GetLineRect(int first, int last) const;

    // ---- Events from the window system. ----
    void OnKeyDown(unsigned key, ny::Modifiers modifiers) override;
    void OnChar(unsigned char byte, ny::Modifiers modifiers) override;
    void OnMouse(ny::MouseAction action, ny::Point at, ny::Modifiers modifiers, int wheelNotches) override;
    void OnSetFocus() override;
    void OnKillFocus() override;
    // The window's client area changed size.
    void OnSize() override;
    // A scroll-bar event; thumb is the position of a thumb event.
    void OnScroll(ny::ScrollBarKind bar, ny::ScrollCode code, int thumb) override;
    // The window was first shown: take the cell size from the font.
    void OnFirstShow() override;
    void OnListKey(unsigned key, ny::Modifiers modifiers) override { OnRefListKey(key, modifiers); }
    void OnListDoubleClick() override { OnRefListDoubleClick(); }

    // ---- Painting. ----
    void OnPaint() override;
    void DrawSingleLineColorText(ny::PaintSurface& surface, const CString& text, ny::Rect rect, int line, int y);
    void DrawColorText(ny::PaintSurface& surface, ny::Rect& rect, const CString& text, unsigned long colour,
                       int line, int y);
    void DrawCursor(bool show);
    void ShiftDisplay(int dx, int dy);

    // ---- Tips. ----
    void ShowRefTip(CIndicator* indicator, const CString& prefix);
    void HiddRefTip();
    void HandRefTipMsg(unsigned key);
    // A key that reaches the editor while the reference list has the focus.
    void OnRefListKey(unsigned key, ny::Modifiers modifiers);
    // A double click on an entry of the reference list.
    void OnRefListDoubleClick() { HandRefTipMsg(ny::kKeyReturn); }

    // ---- Internals and accessors (positions as they stand, without clipping). ----
    void InsertChar(int ch, bool repaint);
    void InsertString(const CString& text, bool repaint);
    void DeletePrevChar(int);
    void DeleteNextChar();
    void DoEnter();
    void RemoveSelected();
    bool Selected();
    bool IsSelected(int x, int y) const;
    void UpdateAnchor(bool keepIfShift);
    void ClipCursorPosition();
    void ClipAnchorPosition();
    CString MakeTab(int column) const;
    void InsertTab();
    void _ReplaceSelText(const char* text);
    void NotifyParent(unsigned code);
    bool IsAllSeperator() const;
    void UpdateScrollSizes();
    ny::Point CursorPos() const { return {m_nCursorX, m_nCursorY}; }
    int CursorPosX() const { return m_nCursorX; }
    int CursorPosY() const { return m_nCursorY; }
    ny::Point AnchorPos() const { return {m_nAnchorX, m_nAnchorY}; }
    int AnchorPosX() const { return m_nAnchorX; }
    int AnchorPosY() const { return m_nAnchorY; }
    void _SetCursorPos(ny::Point p) { m_nCursorX = p.x; m_nCursorY = p.y; }
    void _SetCursorPosX(int x) { m_nCursorX = x; }
    void _SetCursorPosY(int y) { m_nCursorY = y; }
    void _SetAnchorPos(ny::Point p) { m_nAnchorX = p.x; m_nAnchorY = p.y; }
    void _SetAnchorPosX(int x) { m_nAnchorX = x; }
    void _SetAnchorPosY(int y) { m_nAnchorY = y; }

    // ---- State. ----
    int m_nCharWidth = 10;
    int m_nLineHeight = 10;
    int m_nTabWidth = 4;
    int m_nFirstCol = 0;
    int m_nFirstLine = 0;
    int m_nAnchorX = 0;
    int m_nAnchorY = 0;
    int m_nCursorX = 0;
    int m_nCursorY = 0;
    CScriptText m_Text;
    bool m_bHasSelection = false;
    bool m_bMouseDown = false;
    bool m_bCaretShown = false;
    int m_nDownX = 0;
    int m_nDownY = 0;
    int m_nControlId = 0;
    ny::EditorOwner* m_pDialog = nullptr;
    char m_cDbcsBuf[3] = {0, 0, 0};
    int m_bDbcsPending = 0;
    int m_nDbcsState = 0;

    unsigned long m_crBackground = 0xFFFFFF;
    unsigned long m_crSelection = 0x800000;
    int m_bInComment = 0;
    bool m_bHorizontalBar = false;

    // Functions whose tips are open, innermost last; pointers into the catalog.
    std::vector<FUN_ITEM*> m_arTipStack;
    CToolTipEx m_Tip;

private:
    // Whether Shift is held during the event being handled.
    bool m_bShiftDown = false;
    ny::EditorPlatform m_platform;

    void Create(int id, int tabWidth);
    void ReplaceSelBytes(std::string_view bytes);
    void Repaint(const ny::Rect& rect);
    void RepaintAll();
    void RepaintLines(int first, int last);
    // Runs GetTranslate and shows the sentence in the dialog.
    void ShowTranslation();
    // What follows a change by a character, cut or paste: tips and translation.
    void AfterTextChange();
    void UpdateTips();
    void SetSelRange();
    void MoveCursorByKey(unsigned key, bool control);
    void MoveWordLeft();
    void MoveWordRight();
    void MoveLines(int delta);
    ny::Point CellAt(ny::Point at, bool charStartCorrection) const;
    void OnLButtonDown(ny::Point at);
    void OnMouseDrag(ny::Point at);
    void OnDoubleClick(ny::Point at);
    void OnWheel(int notches, ny::Modifiers modifiers);
    void OnContextMenu(ny::Point at);
    void ScrollVertical(ny::ScrollCode code, int thumb);
    void ScrollHorizontal(ny::ScrollCode code, int thumb);
    void SetFirstLine(int line);
    void SetFirstCol(int col);
    void ClipPosition(int& x, int& y) const;
    bool IsCharStartAt(int line, int x) const;
    // Column x of line y cut to the line and moved off the second byte of a character.
    int FitColumn(int y, int x) const;
};
