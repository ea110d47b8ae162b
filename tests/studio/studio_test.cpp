// nystudio driven as a user drives it, on Qt's offscreen platform: real key and mouse events into
// the windows, screenshots of each step in the build tree (studio-screens/), and checks of what
// the pictures and the widget tree show.

#include <gtest/gtest.h>

#include <QApplication>
#include <QGridLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QMessageBox>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTest>
#include <QTimer>
#include <QTreeWidget>
#include <functional>

#include "dialogs/formula_dialog.h"
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
    static char name[] = "test_studio";
    static char* argv[] = {name, nullptr};
    if (QApplication::instance() != nullptr) return;
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
    new QApplication(argc, argv);
    ApplyTheme(false);
}

// Types text as key presses that carry it, one per character, as a keyboard or an input method does.
void TypeKeys(QWidget* widget, const QString& text) {
    for (const QChar ch : text) {
        const int key = ch.isLetter() && ch.unicode() < 128 ? ch.toUpper().unicode() : static_cast<int>(Qt::Key_unknown);
        QKeyEvent press(QEvent::KeyPress, key, Qt::NoModifier, QString(ch));
        QApplication::sendEvent(widget, &press);
    }
}

QImage Shot(QWidget& widget, const std::string& name) {
    const fs::path folder = NY_BINARY_DIR "/studio-screens";
    fs::create_directories(folder);
    QImage image = widget.grab().toImage().convertToFormat(QImage::Format_RGB32);
    image.save(QString::fromStdString((folder / (name + ".png")).string()));
    return image;
}

// Runs `act` on the modal window of type W that the next call opens, once its loop runs.
template <class W>
void WhenModal(std::function<void(W&)> act) {
    QTimer::singleShot(0, [act] {
        auto* window = dynamic_cast<W*>(QApplication::activeModalWidget());
        ASSERT_NE(window, nullptr) << "no modal window opened";
        act(*window);
    });
}

// Answers the next message box with a button and keeps its text.
std::shared_ptr<QString> AnswerMessage(QMessageBox::StandardButton answer) {
    auto text = std::make_shared<QString>();
    WhenModal<QMessageBox>([text, answer](QMessageBox& box) {
        *text = box.text();
        ASSERT_NE(box.button(answer), nullptr);
        box.button(answer)->click();
    });
    return text;
}

QPushButton& Button(QWidget& dialog, const char* gbk) {
    for (QPushButton* button : dialog.findChildren<QPushButton*>())
        if (button->text() == FromGbk(gbk)) return *button;
    throw std::runtime_error("no button");
}

// The field of the grid that stands right of the label with this text.
QWidget& FieldOf(QWidget& dialog, const char* gbk) {
    for (QLabel* label : dialog.findChildren<QLabel*>()) {
        if (label->text() != FromGbk(gbk)) continue;
        for (QGridLayout* layout : dialog.findChildren<QGridLayout*>())
            if (const int index = layout->indexOf(label); index >= 0) return *layout->itemAt(index + 1)->widget();
    }
    throw std::runtime_error("no field");
}

// How many pixels of a rectangle of the image have this colour, give or take what smoothing the
// edges of text and lines changes (`slack` in each channel).
int CountColour(const QImage& image, QRect area, ny::Colour colour, int slack = 0) {
    const QColor want = ToQColor(colour);
    int count = 0;
    area = area.intersected(image.rect());
    for (int y = area.top(); y <= area.bottom(); ++y)
        for (int x = area.left(); x <= area.right(); ++x) {
            const QColor have = image.pixelColor(x, y);
            count += std::abs(have.red() - want.red()) <= slack && std::abs(have.green() - want.green()) <= slack &&
                     std::abs(have.blue() - want.blue()) <= slack;
        }
    return count;
}

bool HasText(const ny::ChartScene& scene, const std::string& gbk) {
    for (const ny::ChartShape& shape : scene.overlay)
        if (shape.kind == ny::ChartShape::Kind::Text && shape.text.find(gbk) != std::string::npos) return true;
    return false;
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

TEST_F(StudioTest, KeysWalkTheListAndTheChartFollowsStockAndPeriod) {
    ASSERT_TRUE(m_bMarket);
    ASSERT_GT(m_window->StockList().rowCount(), 40);
    const struct {
        const char* name;
        std::function<void()> act;
        int row;             // the list's row afterwards; -1: some other row than before, -2: the same
        const char* period;  // in the chart's title
    } steps[] = {
        {"first", [] {}, 0, "日线"},
        {"down", [&] { QTest::keyClick(m_window->StockList().viewport(), Qt::Key_Down); }, 1, "日线"},
        {"down-on-chart", [&] { QTest::keyClick(&m_window->Chart(), Qt::Key_Down); }, 2, "日线"},
        {"page-down", [&] { QTest::keyClick(&m_window->Chart(), Qt::Key_PageDown); }, -1, "日线"},
        {"up", [&] { QTest::keyClick(&m_window->Chart(), Qt::Key_Up); }, -1, "日线"},
        {"week", [&] { m_window->SetPeriod(NY_PERIOD_WEEK); }, -2, "周线"},
    };
    int previousRow = 0;
    for (const auto& step : steps) {
        step.act();
        QApplication::processEvents();
        Shot(*m_window, std::string("main-") + step.name);
        const int row = m_window->StockList().currentRow();
        if (step.row >= 0) EXPECT_EQ(row, step.row) << step.name;
        else EXPECT_EQ(row == previousRow, step.row == -2) << step.name;
        previousRow = row;
        EXPECT_EQ(m_window->ChartedStock(), RowStock()) << step.name;
        const auto& scene = m_window->Chart().Scene();
        EXPECT_TRUE(HasText(scene, ny::FormatStockCode(RowStock()))) << step.name;
        EXPECT_TRUE(HasText(scene, step.period)) << step.name;
    }
}

TEST_F(StudioTest, CandlesAreRedWhenTheyRiseAndGreenWhenTheyFall) {
    std::vector<CHisDay> bars;
    ASSERT_TRUE(ny::LoadStockBars(RowStock(), NY_PERIOD_DAY, false, &bars));
    const QImage image = Shot(m_window->Chart(), "chart-candles");
    const ny::ChartPane& pane = m_window->Chart().Scene().panes.at(0);
    int checked = 0;
    for (int bar = pane.firstBar; bar < static_cast<int>(bars.size()); ++bar) {
        const CHisDay& day = bars[bar];
        if (day.m_fClose == day.m_fOpen) continue;
        const int x = static_cast<int>(pane.XOfBar(bar));
        const QRect column(x - 1, static_cast<int>(pane.YOfValue(day.m_fHigh)), 3,
                           static_cast<int>(pane.YOfValue(day.m_fLow) - pane.YOfValue(day.m_fHigh)) + 1);
        const bool up = day.m_fClose > day.m_fOpen;
        const auto& theme = ny::DarkTheme();
        EXPECT_GT(CountColour(image, column, up ? theme.up : theme.down, 40), 0) << "bar " << bar;
        EXPECT_EQ(CountColour(image, column, up ? theme.down : theme.up, 40), 0) << "bar " << bar;
        ++checked;
    }
    EXPECT_GT(checked, 20);
}

TEST_F(StudioTest, WithoutBarsOrInstallationTheWindowSaysSoAndStaysUp) {
    Close();
    const fs::path bare = m_dir.path() / "bare", empty = m_dir.path() / "empty";
    nyind_test::CopyInstallationBasics(bare);  // stocks and quotes, but no bars
    fs::create_directories(empty);
    const struct {
        fs::path home;
        bool market;
        const char* status;
    } rows[] = {{bare, true, "没有数据"}, {empty, false, "没有股票"}};
    for (const auto& row : rows) {
        Open(row.home);
        EXPECT_EQ(m_bMarket, row.market);
        EXPECT_TRUE(m_window->Status().contains(FromGbk(row.status))) << m_window->Status().toStdString();
        EXPECT_TRUE(m_window->Chart().Scene().panes.empty());
        EXPECT_TRUE(m_window->isVisible());
        Close();
    }
    Open(m_dir.path() / "home");
}

TEST_F(StudioTest, AFormulaTypedIntoTheEditorIsColouredTestedSavedAndCharted) {
    const std::string name = "MYMA";
    WhenModal<QtDialog>([&](QtDialog& dialog) {
        PaintedWindow* editor = nullptr;
        for (QAbstractScrollArea* area : dialog.findChildren<QAbstractScrollArea*>())
            if (auto* painted = dynamic_cast<PaintedWindow*>(area)) editor = painted;
        ASSERT_NE(editor, nullptr);
        auto& info = *dialog.findChild<QPlainTextEdit*>();
        editor->setFocus();
        // A double-byte comment first: every token behind it stands two cells per character further.
        TypeKeys(editor, FromGbk("{五日}X:MA(CLOSE,5);"));
        EXPECT_FALSE(info.toPlainText().isEmpty()) << "the translation follows each key";
        editor->viewport()->repaint();
        Shot(dialog, "formula-typed");
        const ny::FontMetrics cell = editor->GetFontMetrics();
        const struct {
            int column, cells;
            ny::Colour colour;
        } tokens[] = {{0, 6, 0xC8C8C8}, {8, 2, 0xC08000}, {17, 1, 0x0080FF}};
        for (const auto& token : tokens) {
            const QRect cells(token.column * cell.averageCharWidth, 0, token.cells * cell.averageCharWidth, cell.height);
            EXPECT_GT(CountColour(editor->Picture(), cells, token.colour, 24), 0) << "column " << token.column;
        }
        QTest::mouseClick(&Button(dialog, "确定"), Qt::LeftButton);
        EXPECT_TRUE(info.toPlainText().startsWith(FromGbk("当前公式: 请写公式名字."))) << "a nameless formula is refused";
        QTest::keyClicks(&FieldOf(dialog, "公式名称"), QString::fromStdString(name));
        QTest::mouseClick(&Button(dialog, "测试公式"), Qt::LeftButton);
        EXPECT_EQ(info.toPlainText(), FromGbk("通过测试"));
        Shot(dialog, "formula-tested");
        QTest::mouseClick(&Button(dialog, "确定"), Qt::LeftButton);
    });
    m_window->OpenNewFormula();
    ASSERT_NE(g_MyGetIndicator(name, NY_KIND_INDICATOR), nullptr);
    std::ifstream stored(g_MyGetFilePath(NY_FILE_USER_SET), std::ios::binary);
    const std::string bytes((std::istreambuf_iterator<char>(stored)), std::istreambuf_iterator<char>());
    EXPECT_NE(bytes.find(name), std::string::npos) << "the new formula is stored at once";
    m_window->SetIndicator(name);
    EXPECT_TRUE(HasText(m_window->Chart().Scene(), name));
    Shot(*m_window, "main-new-formula");
}

TEST_F(StudioTest, TheFormulaManagerShowsTheLibraryAndRefusesWithTheSystemsMessages) {
    WhenModal<QtDialog>([&](QtDialog& dialog) {
        const auto* tree = dialog.findChild<QTreeWidget*>();
        ASSERT_NE(tree, nullptr);
        EXPECT_GT(tree->topLevelItemCount(), 0);
        Shot(dialog, "manager");
        const struct {
            const char* button;
            const char* message;
        } refusals[] = {{"新建", "请在左边公式树中选定一个与新建公式类型相同的结点!"}, {"导出", "请选中可编辑的指标!"}};
        for (const auto& refusal : refusals) {
            const auto message = AnswerMessage(QMessageBox::Ok);
            QTest::mouseClick(&Button(dialog, refusal.button), Qt::LeftButton);
            EXPECT_EQ(*message, FromGbk(refusal.message)) << refusal.button;
        }
        QTest::mouseClick(&Button(dialog, "关闭"), Qt::LeftButton);
    });
    m_window->OpenFormulaManager();
    EXPECT_EQ(QApplication::activeModalWidget(), nullptr);
}

TEST_F(StudioTest, APickFromThePickingDialogFillsTheList) {
    WhenModal<QtDialog>([&](QtDialog& dialog) {
        const auto trees = dialog.findChildren<QTreeWidget*>();
        ASSERT_GE(trees.size(), 2);
        auto find = [](QTreeWidget* tree, const std::vector<const char*>& path) {
            QTreeWidgetItem* item = tree->invisibleRootItem();
            for (const char* text : path)
                for (int i = 0, n = item->childCount(); i < n; ++i)
                    if (item->child(i)->text(0) == FromGbk(text)) {
                        item = item->child(i);
                        break;
                    }
            return item;
        };
        trees[0]->setCurrentItem(find(trees[0], {"系统指标", "行情选股", "LXSZ 连续上涨"}));
        QTest::mouseClick(&Button(dialog, "加入条件"), Qt::LeftButton);
        find(trees[1], {"系统版块", "上海A股"})->setCheckState(0, Qt::Checked);
        const auto question = AnswerMessage(QMessageBox::No);  // no download: the stored data will do
        QTest::mouseClick(&Button(dialog, "执行选股"), Qt::LeftButton);
        EXPECT_FALSE(question->isEmpty());
        QPlainTextEdit* status = dialog.findChildren<QPlainTextEdit*>().front();
        EXPECT_TRUE(QTest::qWaitFor([&] { return !status->toPlainText().isEmpty(); }, 60000)) << "the pick did not end";
        Shot(dialog, "pick-done");
        QTest::mouseClick(&Button(dialog, "关闭"), Qt::LeftButton);
    });
    m_window->OpenPicker();
    const std::vector<int> block = CGroup::ReadGroupFile("自定义", "智能选股");
    ASSERT_FALSE(block.empty());
    EXPECT_EQ(m_window->StockList().rowCount(), static_cast<int>(block.size()));
    EXPECT_EQ(RowStock(), block.front());
    Shot(*m_window, "main-pick-result");
}

}  // namespace
