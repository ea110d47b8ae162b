#pragma once
// The main window of nystudio: the stock list of the installation with its quotes, the chart of
// the selected stock (candles with the main-chart formula over them, and indicator panes below,
// VOL and MACD at start, each of which the user may change, add or close) in a chosen period, and the menus that open the formula manager, the formula dialog and the picking
// dialog, whose result block replaces the list. A missing installation, an unreadable stock or a
// failed formula is said in the window (status line or message box); the program goes on.
// GUI thread only.

#include <QMainWindow>
#include <QTableWidget>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "chart/chart_scene.h"
#include "host/hisday.h"
#include "model/indicator.h"
#include "studio/qt_dialogs.h"

class QComboBox;
class QLabel;
class QMenu;

namespace ny::studio {

// Opens the installation at `home` for the program: stock list and quotes, the function catalog,
// the formula library, the clock after the close of the last trading day. False with a message
// (GBK) when there is no installation or no stock list there.
bool OpenSession(const std::string& home, std::string* message);
// Stores the user's formulas and lets the installation go. False with a message (GBK) if the
// formulas could not be stored.
bool CloseSession(std::string* message);

// The chart pane: a scene laid out at the view's own size, again after each resize, painted with
// QPainter. A mouse press tells `onPanePressed` the scene's pane under it (-1: none) and whether
// it asks for the context menu.
class ChartView : public QWidget {
public:
    using Layout = std::function<ChartScene(Size)>;
    explicit ChartView(QWidget* parent) : QWidget(parent) { setMinimumSize(300, 240); }
    // Shows what `layout` lays out; an empty layout shows an empty chart.
    void SetLayout(Layout layout);
    const ChartScene& Scene() const { return m_scene; }
    std::function<void(int pane, const QPoint& global, bool menu)> onPanePressed;

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;

private:
    Layout m_layout;
    ChartScene m_scene;
};

// What the chart of a stock shows, evaluated once: its bars and copies of the formulas computed
// over them. `formulas` has one entry per indicator pane, null where the library has no such one.
struct ChartData {
    explicit ChartData(size_t panes) : panes(panes) {}
    std::vector<CHisDay> bars;
    CIndicator main;
    bool hasMain = false;
    std::vector<CIndicator> panes;
    std::vector<const CIndicator*> formulas;
};

class MainWindow : public QMainWindow {
public:
    static constexpr size_t kMaxPanes = 4;  // indicator panes; more leave too little room for each
    explicit MainWindow(bool lightTheme);

    // Fills the list with all stocks of the installation; false (and a message) without any.
    bool ShowAllStocks();
    // Selects a row of the list and charts its stock.
    void SelectRow(int row);
    void SetPeriod(short period);
    // Puts an indicator of the library into the active indicator pane.
    void SetIndicator(const std::string& gbkName);
    void SetMainFormula(const std::string& gbkName);
    // Adds a pane with an indicator below the others (at most kMaxPanes), or closes a pane (not the last).
    void AddPane(const std::string& gbkName);
    void ClosePane(int pane);
    // The names of the indicator panes' formulas, top to bottom, and the one the tool bar changes.
    const std::vector<std::string>& Panes() const { return m_arPanes; }
    int ActivePane() const { return m_nActivePane; }
    // The context menu of an indicator pane (-1: the main pane), as a right click opens it.
    void ShowPaneMenu(int pane, const QPoint& global);
    void SetLightTheme(bool light);

    void OpenFormulaManager();
    void OpenNewFormula();
    void OpenPicker();

    QTableWidget& StockList() { return *m_pList; }
    ChartView& Chart() { return *m_pChart; }
    // The id of the stock in the chart, 0 when none.
    int ChartedStock() const { return m_nStock; }
    // The text of the status line.
    QString Status() const;
    DialogServices& Services() { return m_services; }

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void closeEvent(QCloseEvent* event) override;

private:
    void BuildMenus();
    void BuildToolBar();
    void FillIndicators();
    void OnPanePressed(int scenePane, const QPoint& global, bool menu);
    void AddIndicatorMenu(QMenu* menu, const char* title, bool mainChart, const std::string& current,
                          const std::function<void(const std::string&)>& choose);
    void FillList(const std::vector<int>& stockIds, const QString& title);
    void Redraw();
    void Say(const std::string& gbk);

    QtDialogServices m_qtServices;
    DialogServices m_services;
    QTableWidget* m_pList;
    ChartView* m_pChart;
    QComboBox* m_pIndicator = nullptr;
    QLabel* m_pListTitle;
    bool m_bLight;
    short m_nPeriod;
    int m_nStock = 0;
    std::string m_strMainFormula;
    std::vector<std::string> m_arPanes;
    int m_nActivePane;
    std::unique_ptr<ChartData> m_pChartData;
};

// Applies the dark or the light palette to the whole program.
void ApplyTheme(bool light);

}  // namespace ny::studio
