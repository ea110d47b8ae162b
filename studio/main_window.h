#pragma once
// The main window of nystudio: the stock list of the installation with its quotes, the chart of
// the selected stock (candles with the main-chart formula, volume, and an indicator's pane) in a
// chosen period, and the menus that open the formula manager, the formula dialog and the picking
// dialog, whose result block replaces the list. A missing installation, an unreadable stock or a
// failed formula is said in the window (status line or message box); the program goes on.
// GUI thread only.

#include <QMainWindow>
#include <QTableWidget>
#include <string>
#include <vector>

#include "chart/chart_scene.h"
#include "host/hisday.h"
#include "studio/qt_dialogs.h"

class QComboBox;
class QLabel;

namespace ny::studio {

// Opens the installation at `home` for the program: stock list and quotes, the function catalog,
// the formula library, the clock after the close of the last trading day. False with a message
// (GBK) when there is no installation or no stock list there.
bool OpenSession(const std::string& home, std::string* message);
// Stores the user's formulas and lets the installation go. False with a message (GBK) if the
// formulas could not be stored.
bool CloseSession(std::string* message);

// The chart pane: the scene of the stock, painted with QPainter.
class ChartView : public QWidget {
public:
    explicit ChartView(QWidget* parent) : QWidget(parent) { setMinimumSize(300, 240); }
    void SetScene(ChartScene scene);
    const ChartScene& Scene() const { return m_scene; }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    ChartScene m_scene;
};

class MainWindow : public QMainWindow {
public:
    explicit MainWindow(bool lightTheme);

    // Fills the list with all stocks of the installation; false (and a message) without any.
    bool ShowAllStocks();
    // Selects a row of the list and charts its stock.
    void SelectRow(int row);
    void SetPeriod(short period);
    void SetIndicator(const std::string& gbkName);
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
    void resizeEvent(QResizeEvent* event) override;
    void closeEvent(QCloseEvent* event) override;

private:
    void BuildMenus();
    void BuildToolBar();
    void FillIndicators();
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
    std::string m_strIndicator;
};

// Applies the dark or the light palette to the whole program.
void ApplyTheme(bool light);

}  // namespace ny::studio
