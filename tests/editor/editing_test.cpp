// Editing: the scripted sessions of sessions.txt, pasting, loading and joining text, the script
// text's longest line, notifications, the context menu and scrolling.

#include <gtest/gtest.h>

#include <map>
#include <sstream>

#include "host/encoding.h"

#include "tests/editor/editor_fixture.h"
#include "tests/case_file.h"

namespace {

using ny::InputEvent;
using ny::MouseAction;
constexpr ny::Modifiers kControl{false, true};

// The fields of a text between "|", each without the one blank on either side of a "|".
std::vector<std::string> Fields(const std::string& text) {
    std::vector<std::string> fields;
    for (size_t start = 0;;) {
        const size_t bar = text.find('|', start);
        std::string field = text.substr(start, bar - start);
        if (start > 0 && !field.empty() && field.front() == ' ') field.erase(0, 1);
        if (bar != std::string::npos && !field.empty() && field.back() == ' ') field.pop_back();
        fields.push_back(field);
        if (bar == std::string::npos) return fields;
        start = bar + 1;
    }
}

std::vector<CString> Lines(const std::string& text) {
    std::vector<CString> lines;
    std::istringstream in(ny::Utf8ToGbk(text) + "/");
    for (std::string line; std::getline(in, line, '/');) lines.push_back(line);
    return lines;
}

ny::Point PointOf(const std::string& text) { return {std::stoi(text), std::stoi(text.substr(text.find(',') + 1))}; }

// The events of a session, written as the head of sessions.txt says.
std::vector<InputEvent> Events(const std::string& text) {
    static const std::map<std::string, unsigned> kKeys = {
        {"Left", ny::kKeyLeft}, {"Right", ny::kKeyRight}, {"Up", ny::kKeyUp},         {"Down", ny::kKeyDown},
        {"Home", ny::kKeyHome}, {"End", ny::kKeyEnd},     {"Back", ny::kKeyBack},     {"Delete", ny::kKeyDelete},
        {"Return", ny::kKeyReturn}};
    static const std::map<std::string, MouseAction> kMouse = {
        {"press", MouseAction::Press}, {"release", MouseAction::Release}, {"move", MouseAction::Move},
        {"double", MouseAction::DoubleClick}};
    std::vector<InputEvent> events;
    std::istringstream in(text);
    for (std::string word; in >> word;) {
        ny::Modifiers m;
        if (word.size() > 2 && word[1] == '-') m = {word[0] == 'S', word[0] == 'C'}, word.erase(0, 2);
        if (const size_t at = word.find('@'); at != std::string::npos)
            events.push_back(InputEvent::Mouse(kMouse.at(word.substr(0, at)), PointOf(word.substr(at + 1)), m));
        else if (kKeys.count(word) != 0 || m.control)
            events.push_back(InputEvent::Key(kKeys.count(word) != 0 ? kKeys.at(word) : word[0], m));
        else if (word == "tab")
            events.push_back(InputEvent::Char('\t'));
        else
            for (const char byte : ny::Utf8ToGbk(word)) events.push_back(InputEvent::Char(static_cast<unsigned char>(byte)));
    }
    return events;
}

TEST(EditorSessions, LeaveTextCursorAndAnchorAsExpected) {
    testcases::ForEachRow("editor/sessions.txt", [](const std::string& row) {
        std::string start, result;
        ASSERT_TRUE(testcases::SplitAtArrow(row, &start, &result));
        const std::vector<std::string> given = Fields(start), want = Fields(result);
        ASSERT_TRUE(given.size() == 4 && want.size() >= 3);
        nytest::HeadlessEditor h;
        h.editor.m_Text.m_arLines.clear();
        h.editor.m_Text.m_arLineColors.clear();
        const std::vector<CString> lines = Lines(given[1]);
        for (size_t i = 0; i < lines.size(); ++i) h.editor.InsertTextLine(lines[i], static_cast<int>(i), 1, FALSE);
        h.editor._SetCursorPos(PointOf(given[2]));
        h.editor._SetAnchorPos(PointOf(given[2]));
        const std::vector<InputEvent> events = Events(given[3]);
        ny::PlayEvents(h.editor, events.data(), static_cast<int>(events.size()));
        EXPECT_EQ(h.Lines(), Lines(want[0]));
        EXPECT_EQ(h.editor.GetCursorPos(), PointOf(want[1]));
        EXPECT_EQ(h.editor.GetAnchorPos(), PointOf(want[2]));
        if (want.size() > 3) {
            std::string clipboard = want[3];
            for (size_t at; (at = clipboard.find("\\r\\n")) != std::string::npos;) clipboard.replace(at, 4, "\r\n");
            EXPECT_EQ(h.clipboard.m_text, clipboard);
        }
    });
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
