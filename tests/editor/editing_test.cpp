// Scripted editing sessions: each row starts from a text and a cursor, plays events and checks
// text, cursor, anchor and clipboard.

#include <gtest/gtest.h>

#include "tests/editor/editor_fixture.h"

namespace {

using ny::InputEvent;
using ny::MouseAction;
constexpr ny::Modifiers kShift{true, false};
constexpr ny::Modifiers kControl{false, true};

InputEvent Key(unsigned key, ny::Modifiers m = {}) { return InputEvent::Key(key, m); }
InputEvent Char(char byte) { return InputEvent::Char(static_cast<unsigned char>(byte)); }
InputEvent Mouse(MouseAction action, int x, int y, ny::Modifiers m = {}) { return InputEvent::Mouse(action, {x, y}, m); }

struct Session {
    const char* name;
    std::vector<CString> start;  // lines
    ny::Point cursor;            // anchor starts there too
    std::vector<InputEvent> events;
    std::vector<CString> lines;
    ny::Point expectCursor;
    ny::Point expectAnchor;
    const char* clipboard = nullptr;  // expected clipboard text, when the row copies
};

TEST(EditorSessions, LeaveTextCursorAndAnchorAsExpected) {
    const ny::Point p00{0, 0};
    const std::vector<Session> sessions = {
        {"typing", {""}, p00, {Char('a'), Char('b')}, {"ab"}, {2, 0}, {2, 0}},
        {"double-byte typed as two bytes", {""}, p00, {Char('\xD6'), Char('\xD0')}, {"中"}, {2, 0}, {2, 0}},
        {"left over a double-byte character", {"a中b"}, {3, 0}, {Key(ny::kKeyLeft)}, {"a中b"}, {1, 0}, {1, 0}},
        {"right over a double-byte character", {"a中b"}, {1, 0}, {Key(ny::kKeyRight)}, {"a中b"}, {3, 0}, {3, 0}},
        {"left at column 0 goes to the previous line's end", {"ab", "c"}, {0, 1}, {Key(ny::kKeyLeft)}, {"ab", "c"}, {2, 0}, {2, 0}},
        {"right at a line's end goes to the next line", {"ab", "c"}, {2, 0}, {Key(ny::kKeyRight)}, {"ab", "c"}, {0, 1}, {0, 1}},
        {"end then home", {"abc"}, {1, 0}, {Key(ny::kKeyEnd), Key(ny::kKeyHome)}, {"abc"}, {0, 0}, {0, 0}},
        {"control end", {"ab", "cde"}, p00, {Key(ny::kKeyEnd, kControl)}, {"ab", "cde"}, {3, 1}, {3, 1}},
        {"shift-right selects", {"abc"}, p00, {Key(ny::kKeyRight, kShift), Key(ny::kKeyRight, kShift)}, {"abc"}, {2, 0}, {0, 0}},
        {"typing replaces the selection", {"abc"}, p00, {Key(ny::kKeyRight, kShift), Key(ny::kKeyRight, kShift), Char('X')}, {"Xc"}, {1, 0}, {1, 0}},
        {"a plain motion drops the selection", {"abc"}, p00, {Key(ny::kKeyRight, kShift), Key(ny::kKeyRight)}, {"abc"}, {2, 0}, {2, 0}},
        {"up keeps the column on line 0", {"abc"}, {2, 0}, {Key(ny::kKeyUp)}, {"abc"}, {2, 0}, {2, 0}},
        {"down never lands inside a character", {"abcd", "中x"}, {1, 0}, {Key(ny::kKeyDown)}, {"abcd", "中x"}, {0, 1}, {0, 1}},
        {"control-left", {"AB CD"}, {5, 0}, {Key(ny::kKeyLeft, kControl)}, {"AB CD"}, {3, 0}, {3, 0}},
        {"control-right", {"AB CD"}, p00, {Key(ny::kKeyRight, kControl)}, {"AB CD"}, {2, 0}, {2, 0}},
        {"control-left ends on a character start", {"a中"}, {3, 0}, {Key(ny::kKeyLeft, kControl)}, {"a中"}, {1, 0}, {1, 0}},
        {"backspace joins lines", {"ab", "cd"}, {0, 1}, {Key(ny::kKeyBack)}, {"abcd"}, {2, 0}, {2, 0}},
        {"backspace at the start does nothing", {"ab"}, p00, {Key(ny::kKeyBack)}, {"ab"}, p00, p00},
        {"backspace removes a double-byte character", {"a中"}, {3, 0}, {Key(ny::kKeyBack)}, {"a"}, {1, 0}, {1, 0}},
        {"delete removes a double-byte character", {"中b"}, p00, {Key(ny::kKeyDelete)}, {"b"}, p00, p00},
        {"delete joins lines", {"ab", "cd"}, {2, 0}, {Key(ny::kKeyDelete)}, {"abcd"}, {2, 0}, {2, 0}},
        {"delete at the end of the last line", {"ab"}, {2, 0}, {Key(ny::kKeyDelete)}, {"ab"}, {2, 0}, {2, 0}},
        {"enter splits the line", {"abcd"}, {2, 0}, {Key(ny::kKeyReturn)}, {"ab", "cd"}, {0, 1}, {0, 1}},
        {"tab to the next stop", {"ab"}, {2, 0}, {Char('\t')}, {"ab  "}, {4, 0}, {4, 0}},
        {"selection made upwards", {"abc", "def"}, {1, 1}, {Key(ny::kKeyUp, kShift), Key(ny::kKeyDelete)}, {"aef"}, {1, 0}, {1, 0}},
        {"selection made downwards", {"abc", "def"}, {1, 0}, {Key(ny::kKeyDown, kShift), Key(ny::kKeyDelete)}, {"aef"}, {1, 0}, {1, 0}},
        {"cut and paste", {"abc"}, p00,
         {Key(ny::kKeyRight, kShift), Key(ny::kKeyRight, kShift), Key('X', kControl), Key(ny::kKeyEnd), Key('V', kControl)},
         {"cab"}, {3, 0}, {3, 0}, "ab"},
        {"copy over two lines", {"ab", "cd"}, {1, 0}, {Key(ny::kKeyDown, kShift), Key('C', kControl)}, {"ab", "cd"}, {1, 1}, {1, 0}, "b\r\nc"},
        {"select all", {"ab", "cd"}, p00, {Key('A', kControl)}, {"ab", "cd"}, {2, 1}, p00},
        {"click counts to the nearer cell border", {"abc"}, p00, {Mouse(MouseAction::Press, 11, 3), Mouse(MouseAction::Release, 11, 3)}, {"abc"}, {1, 0}, {1, 0}},
        {"click on the right half of a cell", {"abc"}, p00, {Mouse(MouseAction::Press, 14, 3)}, {"abc"}, {2, 0}, {2, 0}},
        {"click on a second byte", {"a中b"}, p00, {Mouse(MouseAction::Press, 13, 3)}, {"a中b"}, {1, 0}, {1, 0}},
        {"click below the text", {"ab", "cd"}, p00, {Mouse(MouseAction::Press, 100, 150)}, {"ab", "cd"}, {2, 1}, {2, 1}},
        {"drag selects", {"abcd"}, p00, {Mouse(MouseAction::Press, 0, 3), Mouse(MouseAction::Move, 20, 3), Mouse(MouseAction::Release, 20, 3)}, {"abcd"}, {2, 0}, {0, 0}},
        {"drag back over a double-byte character", {"a中b"}, {4, 0},
         {Mouse(MouseAction::Press, 32, 3), Mouse(MouseAction::Move, 17, 3)}, {"a中b"}, {1, 0}, {4, 0}},
        {"shift-click extends", {"abcd"}, {1, 0}, {Mouse(MouseAction::Press, 24, 3, kShift)}, {"abcd"}, {3, 0}, {1, 0}},
        {"double click marks a name", {"AB CD"}, p00, {Mouse(MouseAction::DoubleClick, 28, 3)}, {"AB CD"}, {3, 0}, {5, 0}},
        {"double click on a blank", {"AB CD"}, p00, {Mouse(MouseAction::DoubleClick, 16, 3)}, {"AB CD"}, {3, 0}, {2, 0}},
        {"cursor past the end by a script", {"ab"}, {99, 99}, {Char('x')}, {"abx"}, {3, 0}, {3, 0}},
        {"cursor inside a character by a script", {"中"}, {1, 0}, {Char('x')}, {"x中"}, {1, 0}, {1, 0}},
    };
    for (const Session& s : sessions) {
        nytest::HeadlessEditor h;
        h.editor.m_Text.m_arLines.clear();
        h.editor.m_Text.m_arLineColors.clear();
        for (size_t i = 0; i < s.start.size(); ++i) h.editor.InsertTextLine(s.start[i], static_cast<int>(i), 1, FALSE);
        h.editor._SetCursorPos(s.cursor);
        h.editor._SetAnchorPos(s.cursor);
        ny::PlayEvents(h.editor, s.events.data(), static_cast<int>(s.events.size()));
        EXPECT_EQ(h.Lines(), s.lines) << s.name;
        EXPECT_EQ(h.editor.GetCursorPos(), s.expectCursor) << s.name;
        EXPECT_EQ(h.editor.GetAnchorPos(), s.expectAnchor) << s.name;
        if (s.clipboard != nullptr) {
            EXPECT_EQ(h.clipboard.m_text, s.clipboard) << s.name;
        }
    }
}

struct Replacement {
    const char* name;
    CString line;
    int cursor;
    CString text;
    std::vector<CString> lines;
    ny::Point expectCursor;
};

TEST(EditorSessions, ReplaceSelTextSplitsLinesAndCleansBytes) {
    using namespace std::string_literals;
    const std::vector<Replacement> rows = {
        {"CR LF in the middle", "xy", 1, "A\r\nB", {"xA", "By"}, {2, 1}},
        {"a lone CR is a line end", "xy", 1, "A\rB", {"xA", "By"}, {2, 1}},
        {"NUL bytes are dropped", "", 0, "A\0B"s, {"AB"}, {2, 0}},
        {"tabs become blanks from the column", "ab", 2, "\tc", {"ab  c"}, {5, 0}},
        {"a trailing break leaves the cursor on the next line", "", 0, "A:C;\r\n", {"A:C;"}, {0, 1}},
    };
    for (const Replacement& r : rows) {
        nytest::HeadlessEditor h;
        h.editor.SetLine(r.line.c_str(), 0);
        h.editor._SetCursorPos({r.cursor, 0});
        h.editor._SetAnchorPos({r.cursor, 0});
        h.clipboard.SetText(r.text);
        h.editor.DoPaste();
        EXPECT_EQ(h.Lines(), r.lines) << r.name;
        EXPECT_EQ(h.editor.GetCursorPos(), r.expectCursor) << r.name;
    }
}

TEST(EditorSessions, TypingAfterATrailingBreakStartsANewLine) {
    nytest::HeadlessEditor h;
    h.editor.SetText("A:C;\r\n");
    h.Type("B");
    EXPECT_EQ(h.Lines(), (std::vector<CString>{"A:C;", "B"}));
    EXPECT_EQ(h.editor.GetText(), "A:C; \r\nB");
}

TEST(EditorText, LoadAndJoin) {
    struct Row {
        const char* loaded;
        std::vector<CString> lines;
        CString unloaded;
    };
    const std::vector<Row> rows = {
        {"", {"", ""}, "\n\n"},
        {"A\nB", {"A", "B", ""}, "A\nB\n\n"},
        {"A\r\nB\r\n", {"A", "B", ""}, "A\nB\n\n"},
        {"\tX\x01中", {"    X中", ""}, "    X中\n\n"},
    };
    for (const Row& row : rows) {
        nytest::HeadlessEditor h;
        h.editor.LoadText(row.loaded);
        EXPECT_EQ(h.Lines(), row.lines) << row.loaded;
        CString unloaded;
        h.editor.UnloadText(unloaded);
        EXPECT_EQ(unloaded, row.unloaded) << row.loaded;
    }
}

TEST(EditorText, ScriptTextKeepsTheLongestLine) {
    CScriptText text;
    text._RemoveAll();
    EXPECT_EQ(text._GetSize(), 1);
    EXPECT_EQ(text.m_nMaxLineLen, 0);
    text._InsertLine("abcdef", 0, 1);
    text._InsertLine("中文", 1, 1);
    text._InsertLine(CString(70000, 'x'), 2, 0);
    EXPECT_EQ(text.m_nMaxLineLen, 6) << "no update asked for";
    text.FullUpdate();
    EXPECT_EQ(text.m_nMaxLineLen, 70000);
    text._RemoveLine(2);
    EXPECT_EQ(text.m_nMaxLineLen, 6);
    text._RemoveLine(0);
    EXPECT_EQ(text.m_nMaxLineLen, 4);
    EXPECT_EQ(text._GetLineColors(0).size(), 0u);
    EXPECT_EQ(text.m_arLineColors.size(), text.m_arLines.size());
}

TEST(EditorText, GetTextJoinsWithBlankCrLf) {
    nytest::HeadlessEditor h;
    EXPECT_EQ(h.editor.GetText(), "");
    h.editor.SetText("A\r\nB");
    EXPECT_EQ(h.editor.GetText(), "A \r\nB");
    h.editor.OnSelectall();
    h.editor.OnKeyDown(ny::kKeyDelete, {});
    EXPECT_EQ(h.editor.GetText(), "");
}

TEST(EditorText, MakeTabAndCharStarts) {
    nytest::HeadlessEditor h;
    EXPECT_EQ(h.editor.MakeTab(0), "    ");
    EXPECT_EQ(h.editor.MakeTab(3), " ");
    EXPECT_EQ(h.editor.MakeTab(4), "    ");
    const char* text = "a中\xB0";  // a lone lead byte at the end
    const struct { int x; bool start; } rows[] = {{0, true}, {1, true}, {2, false}, {3, true}, {4, true}, {-1, true}};
    for (const auto& row : rows) EXPECT_EQ(IsCharStart(text, 4, row.x), row.start) << row.x;
}

TEST(EditorNotifications, FocusAndClearTellTheParent) {
    nytest::HeadlessEditor h;
    h.window.m_notifications.clear();
    h.editor.OnSetFocus();
    h.editor.OnKillFocus();
    h.editor.RemoveAllText();
    EXPECT_EQ(h.window.m_notifications, (std::vector<unsigned>{256u << 16 | 1001, 512u << 16 | 1001, 768u << 16 | 1001}));
    EXPECT_FALSE(h.caret.m_bExists) << "leaving hides the caret";
}

TEST(EditorNotifications, ContextMenuOffersWhatCanBeDone) {
    nytest::HeadlessEditor h;
    h.editor.SetText("abc");
    h.editor.SetSelection(0, 0, 2, 0);
    h.menu.m_answers = {NY_EDIT_CMD_CUT};
    h.editor.OnMouse(MouseAction::ContextMenu, {5, 5}, {}, 0);
    ASSERT_EQ(h.menu.m_lastItems.size(), 5u);
    EXPECT_TRUE(h.menu.m_lastItems[0].enabled);
    EXPECT_FALSE(h.menu.m_lastItems[2].enabled) << "the clipboard was empty";
    EXPECT_EQ(h.menu.m_lastPoint, (ny::Point{1005, 505}));
    EXPECT_EQ(h.Lines(), (std::vector<CString>{"c"}));
    EXPECT_EQ(h.clipboard.m_text, "ab");
}

TEST(EditorScrolling, CursorStaysInView) {
    nytest::HeadlessEditor h;
    for (int i = 0; i < 30; ++i) h.editor.OnKeyDown(ny::kKeyReturn, {});
    EXPECT_EQ(h.editor.GetCursorPos(), (ny::Point{0, 30}));
    EXPECT_GE(h.editor.m_nCursorY, h.editor.FirstVisibleLine());
    EXPECT_LT(h.editor.m_nCursorY, h.editor.LastVisibleLine());
    h.editor.OnKeyDown(ny::kKeyHome, kControl);
    EXPECT_EQ(h.editor.FirstVisibleLine(), 0);
    h.editor.OnMouse(MouseAction::Wheel, {0, 0}, {}, -1);
    EXPECT_EQ(h.editor.FirstVisibleLine(), 5);
    EXPECT_EQ(h.window.m_scrollBars[ny::ScrollBarKind::Vertical], (ny::ScrollBarState{0, 30, 10, 5}));
}

}  // namespace
