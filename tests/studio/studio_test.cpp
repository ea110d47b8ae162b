// nystudio driven as a user drives it, on Qt's offscreen platform: real key and mouse events into
// the windows, screenshots of each step in the build tree (studio-screens/), and checks of what
// the pictures and the widget tree show.

#include <gtest/gtest.h>

#include <QApplication>
#include <QKeyEvent>
#include <QLabel>
#include <QMessageBox>
#include <QListWidget>
#include <QMenu>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTest>
#include <QTimer>
#include <QTreeWidget>
#include <functional>

#include "host/global.h"
#include "host/group.h"
#include "host/stockdb.h"
#include "model/library.h"
#include "model/period.h"
#include "picker/pick_request.h"
#include "studio/main_window.h"
#include "tests/cli/nyind_runner.h"

namespace {

using namespace ny::studio;
namespace fs = nyind_test::fs;

void StartApplication() {
    static int argc = 1;
    static char* argv[] = {const_cast<char*>("test_studio"), nullptr};
    if (QApplication::instance() != nullptr) return;
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
    new QApplication(argc, argv);
    ApplyTheme(false);
}

// Types text as key presses that carry it, one per character, as a keyboard or an input method
// does, into whatever has the focus in the widget's window; a newline is the Enter key.
void TypeKeys(QWidget* first, const QString& text) {
    for (const QChar ch : text) {
        QWidget* target = first->window()->focusWidget() != nullptr ? first->window()->focusWidget() : first;
        const int key = ch == '\n' ? Qt::Key_Return : ch.isLetter() && ch.unicode() < 128 ? ch.toUpper().unicode() : int(Qt::Key_unknown);
        QKeyEvent press(QEvent::KeyPress, key, Qt::NoModifier, ch == '\n' ? QString() : QString(ch));
        QApplication::sendEvent(target, &press);
    }
}

QImage Shot(QWidget& widget, const std::string& name) {
    const fs::path folder = NY_BINARY_DIR "/studio-screens";
    fs::create_directories(folder);
    QImage image = widget.grab().toImage().convertToFormat(QImage::Format_RGB32);
    image.save(QString::fromStdString((folder / (name + ".png")).string()));
    return image;
}

// Runs `act` on the window of type W that the next call opens (a modal window or a popup menu),
// once its loop runs.
template <class W>
void WhenModal(std::function<void(W&)> act) {
    QTimer::singleShot(0, [act] {
        QWidget* popup = QApplication::activePopupWidget();
        auto* window = dynamic_cast<W*>(popup != nullptr ? popup : QApplication::activeModalWidget());
        ASSERT_NE(window, nullptr) << "no window opened";
        act(*window);
    });
}

// Answers the next message box with a button and keeps its text.
std::shared_ptr<QString> AnswerMessage(QMessageBox::StandardButton answer) {
    auto text = std::make_shared<QString>();
    WhenModal<QMessageBox>([text, answer](QMessageBox& box) {
        ASSERT_NE(box.button(answer), nullptr);
        *text = box.text(), box.button(answer)->click();
    });
    return text;
}

// The button with this text, or the field that the label with this text names.
QWidget& Control(QWidget& dialog, const char* gbk) {
    for (QPushButton* button : dialog.findChildren<QPushButton*>())
        if (button->text() == FromGbk(gbk)) return *button;
    for (QLabel* label : dialog.findChildren<QLabel*>())
        if (label->text() == FromGbk(gbk) && label->buddy() != nullptr) return *label->buddy();
    throw std::runtime_error("no such button or field");
}

// How many pixels of a rectangle of the image have this colour, give or take what smoothing the
// edges of text and lines changes (`slack` in each channel).
int CountColour(const QImage& image, QRect area, ny::Colour colour, int slack = 0) {
    const QColor want = ToQColor(colour);
    int count = 0;
    area = area.intersected(image.rect());
    for (int y = area.top(); y <= area.bottom(); ++y)
        for (int x = area.left(); x <= area.right(); ++x) {
            const QColor c = image.pixelColor(x, y);
            count += std::max({std::abs(c.red() - want.red()), std::abs(c.green() - want.green()), std::abs(c.blue() - want.blue())}) <= slack;
        }
    return count;
}

bool HasText(const ny::ChartScene& scene, const std::string& gbk) {
    return std::any_of(scene.overlay.begin(), scene.overlay.end(), [&](const ny::ChartShape& s) { return s.text.find(gbk) != std::string::npos; });
}

class StudioTest : public ::testing::Test {
protected:
    void SetUp() override {
        StartApplication();
        nyind_test::LinkInstallation(m_dir.path() / "home");
        Open(m_dir.path() / "home");
    }
    void TearDown() override { Close(); }
    void Open(const fs::path& home) {
        std::string message;
        m_bMarket = OpenSession(home.string(), &message);
        m_window = std::make_unique<MainWindow>(false);
        m_window->resize(1366, 768);
        m_window->ShowAllStocks();
        m_window->show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(m_window.get()));
    }
    void Close() {
        m_window.reset();
        std::string message;
        CloseSession(&message);
    }
    int RowStock() { return m_window->StockList().item(m_window->StockList().currentRow(), 0)->data(Qt::UserRole).toInt(); }

    nyind_test::TempDir m_dir;
    std::unique_ptr<MainWindow> m_window;
    bool m_bMarket = false;
};

// The chart fills its pane at every size and shows the main pane and one pane per indicator, which
// the pane's menu changes and adds to.
TEST_F(StudioTest, KeysWalkTheListAndTheChartFollowsStockPeriodAndPanes) {
    ASSERT_GT(m_window->StockList().rowCount(), 40);
    ChartView& chart = m_window->Chart();
    // A right click in the scene's pane `pane`, with the menu's choice ready.
    const auto paneMenu = [&](int pane, const char* submenu, const char* entry) {
        WhenModal<QMenu>([submenu, entry](QMenu& menu) {
            for (QAction* group : menu.actions())
                for (QAction* action : group->text() == FromGbk(submenu) ? group->menu()->actions() : QList<QAction*>{})
                    if (action->text().startsWith(FromGbk(entry) + "  ")) action->trigger();
            menu.close();
        });
        QTest::mouseClick(&chart, Qt::RightButton, {}, QPoint(60, int(chart.Scene().panes.at(pane).area.top + 20)));
    };
    const struct {
        const char* name;
        std::function<void()> act;
        int row;  // the list's row afterwards; -1: some other row than before, -2: the same
        short period;
        std::vector<std::string> panes;
    } steps[] = {
        {"first", [] {}, 0, NY_PERIOD_DAY, {"VOL", "MACD"}},
        {"down", [&] { QTest::keyClick(m_window->StockList().viewport(), Qt::Key_Down); }, 1, NY_PERIOD_DAY, {"VOL", "MACD"}},
        {"down-on-chart", [&] { QTest::keyClick(&chart, Qt::Key_Down); }, 2, NY_PERIOD_DAY, {"VOL", "MACD"}},
        {"page-down", [&] { QTest::keyClick(&chart, Qt::Key_PageDown); }, -1, NY_PERIOD_DAY, {"VOL", "MACD"}},
        {"up", [&] { QTest::keyClick(&chart, Qt::Key_Up); }, -1, NY_PERIOD_DAY, {"VOL", "MACD"}},
        {"week", [&] { m_window->SetPeriod(NY_PERIOD_WEEK); }, -2, NY_PERIOD_WEEK, {"VOL", "MACD"}},
        {"change-pane", [&] { paneMenu(2, "更换指标", "KDJ"); }, -2, NY_PERIOD_WEEK, {"VOL", "KDJ"}},
        {"add-pane", [&] { paneMenu(1, "增加指标窗口", "RSI"); }, -2, NY_PERIOD_WEEK, {"VOL", "KDJ", "RSI"}},
        {"small-window", [&] { m_window->resize(1000, 600); }, -2, NY_PERIOD_WEEK, {"VOL", "KDJ", "RSI"}},
    };
    int previousRow = 0;
    for (const auto& step : steps) {
        step.act();
        QApplication::processEvents();
        const QImage shot = Shot(*m_window, std::string("main-") + step.name);
        const int row = m_window->StockList().currentRow();
        if (step.row >= 0) EXPECT_EQ(row, step.row) << step.name;
        else EXPECT_EQ(row == previousRow, step.row == -2) << step.name;
        previousRow = row;
        EXPECT_EQ(m_window->ChartedStock(), RowStock()) << step.name;
        const ny::ChartScene& scene = chart.Scene();
        EXPECT_TRUE(HasText(scene, ny::FormatStockCode(RowStock())) && HasText(scene, ny::FindPeriod(step.period)->label)) << step.name;
        EXPECT_EQ(m_window->Panes(), step.panes) << step.name;
        ASSERT_EQ(scene.panes.size(), step.panes.size() + 1) << step.name;
        for (const std::string& name : step.panes) EXPECT_TRUE(HasText(scene, name)) << step.name << ": " << name;
        EXPECT_EQ(QSize(scene.size.width, scene.size.height), chart.size()) << step.name;
        const ny::RectF& last = scene.panes.back().area;
        EXPECT_TRUE(last.right > chart.width() - 80 && last.bottom > chart.height() - 30) << step.name << ": the chart fills its pane";
        // Each candle shows red where it rose and green where it fell; a line over it may blend a pixel.
        std::vector<CHisDay> bars;
        ASSERT_TRUE(ny::LoadStockBars(RowStock(), step.period, false, &bars));
        const ny::ChartPane& main = scene.panes.at(0);
        const QPoint offset = chart.mapTo(m_window.get(), QPoint(0, 0));
        for (int bar = main.firstBar; bar < static_cast<int>(bars.size()); ++bar) {
            const CHisDay& day = bars[bar];
            const double top = main.YOfValue(day.m_fHigh), x = main.XOfBar(bar);
            const QRect column = QRect(int(x) - 1, int(top), 3, int(main.YOfValue(day.m_fLow) - top) + 1).translated(offset);
            const auto [rose, fell] = day.m_fClose > day.m_fOpen ? std::pair{ny::DarkTheme().up, ny::DarkTheme().down} : std::pair{ny::DarkTheme().down, ny::DarkTheme().up};
            EXPECT_TRUE(day.m_fClose == day.m_fOpen || CountColour(shot, column, rose, 40) > 4 * CountColour(shot, column, fell, 40))
                << step.name << ", bar " << bar;
        }
    }
}

TEST_F(StudioTest, WithoutBarsOrInstallationTheWindowSaysSoAndStaysUp) {
    Close();
    const fs::path bare = m_dir.path() / "bare", empty = m_dir.path() / "empty";
    nyind_test::CopyInstallationBasics(bare);  // stocks and quotes, but no bars
    fs::create_directories(empty);
    for (const auto& [home, market, status] : {std::tuple{bare, true, "没有数据"}, {empty, false, "没有股票"}}) {
        Open(home);
        EXPECT_EQ(m_bMarket, market);
        EXPECT_TRUE(m_window->Status().contains(FromGbk(status))) << m_window->Status().toStdString();
        EXPECT_TRUE(m_window->Chart().Scene().panes.empty());
        EXPECT_TRUE(m_window->isVisible());
        Close();
    }
    Open(m_dir.path() / "home");
}

// The tip of the open call and the reference list of a library indicator's lines follow the keys;
// the list completes a line name, the translation changes on each step.
TEST_F(StudioTest, AFormulaTypedIntoTheEditorIsColouredTestedSavedAndCharted) {
    const std::string name = "MYMA";
    WhenModal<QtDialog>([&](QtDialog& dialog) {
        PaintedWindow* editor = nullptr;
        for (QAbstractScrollArea* area : dialog.findChildren<QAbstractScrollArea*>())
            if (auto* painted = dynamic_cast<PaintedWindow*>(area)) editor = painted;
        ASSERT_NE(editor, nullptr);
        auto& info = *dialog.findChild<QPlainTextEdit*>();
        auto& lines = *editor->findChild<QListWidget*>();
        QtTipWindow* tip = nullptr;
        for (QWidget* window : QApplication::topLevelWidgets())
            if (auto* found = dynamic_cast<QtTipWindow*>(window)) tip = found;
        ASSERT_NE(tip, nullptr);
        editor->setFocus();
        const struct {
            const char* keys;
            const char* tip;  // in the visible tip; null: no tip
            std::vector<const char*> lines;
        } steps[] = {
            // A double-byte comment first: every token behind it stands two cells per character further.
            {"{五日}X:MA(", "MA(X,M): X的M日简单移动平均.", {}},
            {"CLOSE,5);", nullptr, {}},
            {"\nY:MA(MACD.", "MA(X,M)", {"MACD", "DEA", "DIF"}},
            {"DI\n,5);", nullptr, {}},  // "DI" picks DIF in the list, Enter takes it
        };
        for (const auto& step : steps) {
            const QString before = info.toPlainText();
            TypeKeys(editor, FromGbk(step.keys));
            EXPECT_NE(info.toPlainText(), before) << step.keys << ": the translation follows the keys";
            EXPECT_TRUE(step.tip == nullptr ? !tip->isVisible() : tip->isVisible() && tip->accessibleDescription().contains(FromGbk(step.tip)))
                << step.keys;
            EXPECT_EQ(lines.isVisible() ? lines.count() : 0, int(step.lines.size())) << step.keys;
            for (int i = 0; i < lines.count() && i < int(step.lines.size()); ++i) EXPECT_EQ(lines.item(i)->text(), FromGbk(step.lines[i]));
        }
        editor->viewport()->repaint();
        Shot(dialog, "formula-typed");
        const ny::FontMetrics cell = editor->GetFontMetrics();
        // The comment's six cells, the function MA at column 8, the number 5 at column 17.
        for (const auto& [column, cells, colour] : {std::tuple{0, 6, 0xC8C8C8u}, {8, 2, 0xC08000u}, {17, 1, 0x0080FFu}}) {
            const QRect area(column * cell.averageCharWidth, 0, cells * cell.averageCharWidth, cell.height);
            EXPECT_GT(CountColour(editor->Picture(), area, colour, 24), 0) << "column " << column;
        }
        QTest::mouseClick(&Control(dialog, "确定"), Qt::LeftButton);
        EXPECT_TRUE(info.toPlainText().startsWith(FromGbk("当前公式: 请写公式名字."))) << "a nameless formula is refused";
        QTest::keyClicks(&Control(dialog, "公式名称"), QString::fromStdString(name));
        QTest::mouseClick(&Control(dialog, "测试公式"), Qt::LeftButton);
        EXPECT_EQ(info.toPlainText(), FromGbk("通过测试"));
        Shot(dialog, "formula-tested");
        QTest::mouseClick(&Control(dialog, "确定"), Qt::LeftButton);
    });
    m_window->OpenNewFormula();
    ASSERT_NE(g_MyGetIndicator(name, NY_KIND_INDICATOR), nullptr);
    EXPECT_NE(g_MyGetIndicator(name, NY_KIND_INDICATOR)->m_strSource.find("Y:MA(MACD.DIF,5);"), std::string::npos);
    EXPECT_NE(nyind_test::ReadText(g_MyGetFilePath(NY_FILE_USER_SET)).find(name), std::string::npos) << "stored at once";
    m_window->SetIndicator(name);
    EXPECT_TRUE(HasText(m_window->Chart().Scene(), name));
    Shot(*m_window, "main-new-formula");
}

// The formula manager refuses with the system's messages; a pick from the picking dialog fills the list.
TEST_F(StudioTest, TheManagerRefusesAndAPickFillsTheList) {
    WhenModal<QtDialog>([&](QtDialog& dialog) {
        const auto* tree = dialog.findChild<QTreeWidget*>();
        ASSERT_NE(tree, nullptr);
        EXPECT_GT(tree->topLevelItemCount(), 0);
        Shot(dialog, "manager");
        for (const auto& [button, refusal] : {std::pair{"新建", "请在左边公式树中选定一个与新建公式类型相同的结点!"}, {"导出", "请选中可编辑的指标!"}}) {
            const auto message = AnswerMessage(QMessageBox::Ok);
            QTest::mouseClick(&Control(dialog, button), Qt::LeftButton);
            EXPECT_EQ(*message, FromGbk(refusal)) << button;
        }
        QTest::mouseClick(&Control(dialog, "关闭"), Qt::LeftButton);
    });
    m_window->OpenFormulaManager();
    EXPECT_EQ(QApplication::activeModalWidget(), nullptr);
    WhenModal<QtDialog>([&](QtDialog& dialog) {
        const auto trees = dialog.findChildren<QTreeWidget*>();
        ASSERT_GE(trees.size(), 2);
        const auto find = [](QTreeWidget* tree, const char* gbk) {
            return tree->findItems(FromGbk(gbk), Qt::MatchExactly | Qt::MatchRecursive).value(0, tree->invisibleRootItem());
        };
        trees[0]->setCurrentItem(find(trees[0], "LXSZ 连续上涨"));
        QTest::mouseClick(&Control(dialog, "加入条件"), Qt::LeftButton);
        find(trees[1], "上海A股")->setCheckState(0, Qt::Checked);
        const auto question = AnswerMessage(QMessageBox::No);  // no download: the stored data will do
        QTest::mouseClick(&Control(dialog, "执行选股"), Qt::LeftButton);
        EXPECT_FALSE(question->isEmpty());
        QPlainTextEdit* status = dialog.findChildren<QPlainTextEdit*>().front();
        EXPECT_TRUE(QTest::qWaitFor([&] { return !status->toPlainText().isEmpty(); }, 60000)) << "the pick did not end";
        Shot(dialog, "pick-done");
        QTest::mouseClick(&Control(dialog, "关闭"), Qt::LeftButton);
    });
    m_window->OpenPicker();
    const std::vector<int> block = CGroup::ReadGroupFile("自定义", "智能选股");
    ASSERT_FALSE(block.empty());
    EXPECT_EQ(m_window->StockList().rowCount(), static_cast<int>(block.size()));
    EXPECT_EQ(RowStock(), block.front());
    Shot(*m_window, "main-pick-result");
}

}  // namespace
