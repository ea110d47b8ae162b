// The main window, its chart pane and the session over the installation.

#include "studio/main_window.h"

#include <QActionGroup>
#include <QApplication>
#include <QComboBox>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLabel>
#include <QMenu>
#include <QMenuBar>
#include <QMouseEvent>
#include <QPainterPath>
#include <QSplitter>
#include <QStatusBar>
#include <QStyleFactory>
#include <QToolBar>
#include <QVBoxLayout>

#include "catalog/function_manager.h"
#include "dialogs/auto_select_dialog.h"
#include "dialogs/formula_dialog.h"
#include "dialogs/formula_manager_dialog.h"
#include "engine/evaluate.h"
#include "host/clock.h"
#include "host/comm_data.h"
#include "host/encoding.h"
#include "host/global.h"
#include "host/installation.h"
#include "host/stockdb.h"
#include "model/library.h"
#include "model/period.h"
#include "picker/pick_request.h"

namespace ny::studio {

namespace {

constexpr int kAfterCloseTime = 153000;  // the clock of a session: the last trading day, after the close
const char* const kMainFormula = "MA";
const char* const kStartPanes[] = {"VOL", "MACD"};
const char* const kAllStocks = "全部股票";

enum Column { kCode, kName, kPrice, kChange, kPercent, kColumns };

// The periods offered on the tool bar.
constexpr short kToolBarPeriods[] = {NY_PERIOD_DAY, NY_PERIOD_WEEK, NY_PERIOD_MONTH, NY_PERIOD_MIN5, NY_PERIOD_MIN30, NY_PERIOD_MIN60};

class QtChartPainter : public ChartPainter {
public:
    explicit QtChartPainter(QPainter& painter) : m_painter(painter) { m_painter.setRenderHint(QPainter::Antialiasing); }

    void SetClip(const RectF& area) override { m_painter.setClipRect(Q(area)); }
    void ResetClip() override { m_painter.setClipping(false); }
    void FillRect(const RectF& rect, Colour colour) override { m_painter.fillRect(Q(rect), ToQColor(colour)); }
    void FillGradient(const RectF& rect, Colour top, Colour bottom) override {
        QLinearGradient gradient(rect.left, rect.top, rect.left, rect.bottom);
        gradient.setColorAt(0, ToQColor(top));
        gradient.setColorAt(1, ToQColor(bottom));
        m_painter.fillRect(Q(rect), gradient);
    }
    void Polyline(const std::vector<PointF>& points, Colour colour, double width, bool dashed) override {
        QPen pen(ToQColor(colour), width);
        if (dashed) pen.setStyle(Qt::DashLine);
        m_painter.setPen(pen);
        m_painter.setBrush(Qt::NoBrush);
        m_painter.drawPolyline(Polygon(points));
    }
    void FillPolygon(const std::vector<PointF>& points, Colour colour) override {
        m_painter.setPen(Qt::NoPen);
        m_painter.setBrush(ToQColor(colour));
        m_painter.drawPolygon(Polygon(points));
    }
    void Circle(PointF centre, double radius, Colour colour, bool filled) override {
        m_painter.setPen(ToQColor(colour));
        m_painter.setBrush(filled ? QBrush(ToQColor(colour)) : QBrush(Qt::NoBrush));
        m_painter.drawEllipse(QPointF(centre.x, centre.y), radius, radius);
    }
    void Text(PointF anchor, const std::string& gbk, Colour colour, TextAlign align, double fontPixels) override {
        m_painter.setFont(MonoFont(static_cast<int>(fontPixels + 0.5)));
        m_painter.setPen(ToQColor(colour));
        const double width = TextWidth(gbk, fontPixels);
        const double left = align == TextAlign::Left ? anchor.x : align == TextAlign::Centre ? anchor.x - width / 2 : anchor.x - width;
        m_painter.drawText(QRectF(left, anchor.y - fontPixels, width + fontPixels, 2 * fontPixels), Qt::AlignLeft | Qt::AlignVCenter,
                           FromGbk(gbk));
    }

private:
    static QRectF Q(const RectF& r) { return QRectF(r.left, r.top, r.Width(), r.Height()); }
    static QPolygonF Polygon(const std::vector<PointF>& points) {
        QPolygonF polygon;
        for (const PointF& p : points) polygon << QPointF(p.x, p.y);
        return polygon;
    }
    QPainter& m_painter;
};

QString PriceText(float value) { return value == 0 ? QStringLiteral("--") : QString::number(value, 'f', 2); }

}  // namespace

// ---- Session ----

bool OpenSession(const std::string& home, std::string* message) {
    g_MySetMessageHook([](const CString& text, const CString& caption, unsigned) {
        QtMessageBoxes(QApplication::activeWindow()).Show(text, MessageButtons::Ok, MessageIcon::Information, caption);
        return 1;
    });
    const bool market = OpenInstallation(home);
    CClockModule::SetClock(g_MyCurTradeDate, kAfterCloseTime);
    static bool catalogLoaded = false;
    if (!catalogLoaded) {
        g_MyFunsMng.LoadFun();
        catalogLoaded = true;
    }
    g_MyInitIndicator();
    if (!market) *message = "没有找到股票列表: " + Utf8ToGbk(home);
    return market;
}

bool CloseSession(std::string* message) {
    const bool saved = SaveUserFormulas(message);
    g_MyRemoveIndicators();
    CloseInstallation();
    return saved;
}

// ---- ChartView ----

void ChartView::SetLayout(Layout layout) {
    m_layout = std::move(layout);
    m_scene = m_layout ? m_layout({width(), height()}) : ChartScene{};
    update();
}

void ChartView::resizeEvent(QResizeEvent*) {
    if (m_layout) m_scene = m_layout({width(), height()});
}

void ChartView::mousePressEvent(QMouseEvent* event) {
    if (!onPanePressed) return;
    const QPointF at = event->position();
    int pane = -1;
    for (size_t i = 0; i < m_scene.panes.size(); ++i) {
        const RectF& area = m_scene.panes[i].area;
        // The title line above the plot area belongs to the pane too.
        if (at.x() >= area.left && at.x() <= area.right && at.y() >= area.top - m_scene.fontPixels - 6 && at.y() <= area.bottom)
            pane = static_cast<int>(i);
    }
    onPanePressed(pane, event->globalPosition().toPoint(), event->button() == Qt::RightButton);
}

void ChartView::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.fillRect(rect(), ToQColor(m_scene.background));
    QtChartPainter chartPainter(painter);
    PaintChart(m_scene, chartPainter);
}

// ---- MainWindow ----

MainWindow::MainWindow(bool lightTheme)
    : m_qtServices(this), m_services(m_qtServices.Services()), m_pList(new QTableWidget(0, kColumns)),
      m_pChart(new ChartView(nullptr)), m_pListTitle(new QLabel), m_bLight(lightTheme), m_nPeriod(NY_PERIOD_DAY),
      m_strMainFormula(kMainFormula), m_arPanes(std::begin(kStartPanes), std::end(kStartPanes)),
      m_nActivePane(static_cast<int>(m_arPanes.size()) - 1) {
    setWindowTitle(QStringLiteral("nystudio"));
    m_pList->setHorizontalHeaderLabels({FromGbk("代码"), FromGbk("名称"), FromGbk("现价"), FromGbk("涨跌"), FromGbk("涨幅%")});
    m_pList->verticalHeader()->hide();
    m_pList->verticalHeader()->setDefaultSectionSize(20);
    m_pList->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_pList->setSelectionMode(QAbstractItemView::SingleSelection);
    m_pList->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_pList->horizontalHeader()->setSectionResizeMode(QHeaderView::ResizeToContents);
    connect(m_pList, &QTableWidget::currentCellChanged, [this](int row) { SelectRow(row); });

    auto* side = new QWidget;
    auto* sideLayout = new QVBoxLayout(side);
    sideLayout->setContentsMargins(2, 2, 2, 2);
    sideLayout->addWidget(m_pListTitle);
    sideLayout->addWidget(m_pList);
    auto* splitter = new QSplitter;
    splitter->addWidget(side);
    splitter->addWidget(m_pChart);
    splitter->setStretchFactor(1, 1);
    splitter->setSizes({380, 900});
    m_pChart->onPanePressed = [this](int pane, const QPoint& global, bool menu) { OnPanePressed(pane, global, menu); };
    setCentralWidget(splitter);
    BuildMenus();
    BuildToolBar();
    resize(1280, 720);
}

void MainWindow::BuildMenus() {
    QMenu* formulas = menuBar()->addMenu(FromGbk("公式(&F)"));
    formulas->addAction(FromGbk("公式管理器..."), QKeySequence(Qt::CTRL | Qt::Key_F), [this] { OpenFormulaManager(); });
    formulas->addAction(FromGbk("新建技术指标公式..."), QKeySequence(Qt::CTRL | Qt::Key_N), [this] { OpenNewFormula(); });
    QMenu* pick = menuBar()->addMenu(FromGbk("选股(&P)"));
    pick->addAction(FromGbk("智能选股..."), QKeySequence(Qt::CTRL | Qt::Key_P), [this] { OpenPicker(); });
    pick->addAction(FromGbk(kAllStocks), [this] { ShowAllStocks(); });
    QMenu* view = menuBar()->addMenu(FromGbk("查看(&V)"));
    view->addAction(FromGbk("更换指标..."), QKeySequence(Qt::CTRL | Qt::Key_I), [this] {
        ShowPaneMenu(m_nActivePane, m_pChart->mapToGlobal(QPoint(m_pChart->width() / 2, m_pChart->height() / 2)));
    });
    QAction* light = view->addAction(FromGbk("浅色主题"));
    light->setCheckable(true);
    light->setChecked(m_bLight);
    connect(light, &QAction::toggled, [this](bool on) { SetLightTheme(on); });
    view->addAction(FromGbk("退出"), QKeySequence(Qt::CTRL | Qt::Key_Q), [this] { close(); });
}

void MainWindow::BuildToolBar() {
    QToolBar* bar = addToolBar(FromGbk("周期"));
    bar->setMovable(false);
    auto* periods = new QActionGroup(bar);
    for (short number : kToolBarPeriods) {
        const PeriodRow* row = FindPeriod(number);
        QAction* action = bar->addAction(FromGbk(row->label), [this, number] { SetPeriod(number); });
        action->setCheckable(true);
        action->setChecked(number == m_nPeriod);
        periods->addAction(action);
    }
    bar->addSeparator();
    bar->addWidget(new QLabel(FromGbk(" 指标 ")));
    m_pIndicator = new QComboBox;
    m_pIndicator->setMinimumContentsLength(10);
    m_pIndicator->setObjectName(QStringLiteral("indicator"));
    bar->addWidget(m_pIndicator);
    connect(m_pIndicator, &QComboBox::activated, [this] { SetIndicator(ToGbk(m_pIndicator->currentText())); });
}

bool MainWindow::ShowAllStocks() {
    std::vector<int> ids;
    for (const CStock* stock : g_MyStocksArray) ids.push_back(stock->GetID());
    FillIndicators();
    FillList(ids, FromGbk(kAllStocks));
    if (ids.empty()) Say("没有股票: 安装目录中没有股票列表");
    return !ids.empty();
}

// The indicators of the library that draw in a pane of their own, for the chosen indicator pane.
void MainWindow::FillIndicators() {
    m_pIndicator->clear();
    for (const CIndicator* formula : g_MyIndicatorArray)
        if (formula->m_MainType == NY_KIND_INDICATOR && formula->m_cDrawPos != 1) m_pIndicator->addItem(FromGbk(formula->m_strName));
    m_pIndicator->setCurrentText(FromGbk(m_arPanes[m_nActivePane]));
}

// A submenu of the library's indicators, main-chart ones or the others, with `current` ticked.
void MainWindow::AddIndicatorMenu(QMenu* menu, const char* title, bool mainChart, const std::string& current,
                                  const std::function<void(const std::string&)>& choose) {
    QMenu* list = menu->addMenu(FromGbk(title));
    for (const CIndicator* formula : g_MyIndicatorArray) {
        if (formula->m_MainType != NY_KIND_INDICATOR || (formula->m_cDrawPos == 1) != mainChart) continue;
        const std::string name = formula->m_strName;
        QAction* action = list->addAction(FromGbk(name + "  " + formula->m_strTitle), [choose, name] { choose(name); });
        action->setCheckable(true);
        action->setChecked(name == current);
    }
}

void MainWindow::ShowPaneMenu(int pane, const QPoint& global) {
    QMenu menu(this);
    if (pane < 0) {
        AddIndicatorMenu(&menu, "主图指标", true, m_strMainFormula, [this](const std::string& name) { SetMainFormula(name); });
    } else {
        m_nActivePane = pane;
        AddIndicatorMenu(&menu, "更换指标", false, m_arPanes[pane], [this](const std::string& name) { SetIndicator(name); });
        AddIndicatorMenu(&menu, "增加指标窗口", false, "", [this](const std::string& name) { AddPane(name); });
        menu.actions().back()->setEnabled(m_arPanes.size() < kMaxPanes);
        menu.addAction(FromGbk("关闭指标窗口"), [this, pane] { ClosePane(pane); })->setEnabled(m_arPanes.size() > 1);
    }
    menu.exec(global);
}

// A press on an indicator pane makes it the one the tool bar's list changes; a right click on the
// main pane or an indicator pane opens its menu.
void MainWindow::OnPanePressed(int scenePane, const QPoint& global, bool menu) {
    if (scenePane < 0) return;
    const int pane = m_pChart->Scene().panes[scenePane].formula;
    if (scenePane > 0 && pane < 0) return;  // a pane of the chart's own, not a formula's
    if (pane >= 0) {
        m_nActivePane = pane;
        m_pIndicator->setCurrentText(FromGbk(m_arPanes[pane]));
    }
    if (menu) ShowPaneMenu(pane, global);
}

void MainWindow::FillList(const std::vector<int>& stockIds, const QString& title) {
    const QSignalBlocker quiet(m_pList);
    m_pList->setRowCount(0);
    m_pListTitle->setText(title + QStringLiteral("  (") + QString::number(stockIds.size()) + QLatin1Char(')'));
    for (int id : stockIds) {
        const CStock* stock = g_MyGetStock(id);
        if (stock == nullptr) continue;
        const int row = m_pList->rowCount();
        m_pList->insertRow(row);
        const float change = stock->m_fNew != 0 && stock->m_fPreClose != 0 ? stock->m_fNew - stock->m_fPreClose : 0;
        const QString cells[kColumns] = {
            FromGbk(stock->m_strCode), FromGbk(stock->m_strName), PriceText(stock->m_fNew),
            change == 0 ? QStringLiteral("0.00") : QString::number(change, 'f', 2),
            stock->m_fPreClose == 0 ? QStringLiteral("--") : QString::number(change / stock->m_fPreClose * 100, 'f', 2)};
        // Red is up and green is down; an unchanged price keeps the text colour.
        const QColor colour = change > 0 ? QColor(240, 60, 60) : change < 0 ? QColor(40, 190, 80) : m_pList->palette().text().color();
        for (int column = 0; column < kColumns; ++column) {
            auto* item = new QTableWidgetItem(cells[column]);
            item->setData(Qt::UserRole, id);
            if (column >= kPrice) {
                item->setTextAlignment(Qt::AlignRight | Qt::AlignVCenter);
                item->setForeground(colour);
            }
            m_pList->setItem(row, column, item);
        }
    }
    if (m_pList->rowCount() > 0) {
        m_pList->setCurrentCell(0, 0);
        SelectRow(0);
    }
}

void MainWindow::SelectRow(int row) {
    const QTableWidgetItem* item = m_pList->item(row, 0);
    if (item == nullptr) return;
    if (m_pList->currentRow() != row) {
        const QSignalBlocker quiet(m_pList);
        m_pList->setCurrentCell(row, 0);
    }
    m_nStock = item->data(Qt::UserRole).toInt();
    Redraw();
}

void MainWindow::SetPeriod(short period) {
    m_nPeriod = period;
    Redraw();
}

void MainWindow::SetIndicator(const std::string& gbkName) {
    m_arPanes[m_nActivePane] = gbkName;
    m_pIndicator->setCurrentText(FromGbk(gbkName));
    Redraw();
}

void MainWindow::SetMainFormula(const std::string& gbkName) {
    m_strMainFormula = gbkName;
    Redraw();
}

void MainWindow::AddPane(const std::string& gbkName) {
    if (m_arPanes.size() >= kMaxPanes) return;
    m_arPanes.push_back(gbkName);
    m_nActivePane = static_cast<int>(m_arPanes.size()) - 1;
    SetIndicator(gbkName);
}

void MainWindow::ClosePane(int pane) {
    if (m_arPanes.size() <= 1 || pane < 0 || pane >= static_cast<int>(m_arPanes.size())) return;
    m_arPanes.erase(m_arPanes.begin() + pane);
    m_nActivePane = std::min(m_nActivePane, static_cast<int>(m_arPanes.size()) - 1);
    m_pIndicator->setCurrentText(FromGbk(m_arPanes[m_nActivePane]));
    Redraw();
}

void MainWindow::SetLightTheme(bool light) {
    m_bLight = light;
    ApplyTheme(light);
    Redraw();
}

void MainWindow::Say(const std::string& gbk) { statusBar()->showMessage(FromGbk(gbk)); }

QString MainWindow::Status() const { return statusBar()->currentMessage(); }

// Builds the chart of the selected stock: its bars in the period, the main-chart formula and each
// pane's indicator evaluated over them once; the view lays them out at its size. What fails is
// said on the status line; the chart then shows what could be drawn (nothing without bars).
void MainWindow::Redraw() {
    const CStock* stock = g_MyGetStock(m_nStock);
    if (stock == nullptr) return;
    auto data = std::make_unique<ChartData>(m_arPanes.size());
    if (!LoadStockBars(m_nStock, m_nPeriod, false, &data->bars) || data->bars.empty()) {
        m_pChartData.reset();
        m_pChart->SetLayout(nullptr);
        Say(stock->m_strName + " " + FindPeriod(m_nPeriod)->label + ": 没有数据");
        return;
    }
    std::vector<CHisDay>& bars = data->bars;
    if (bars.size() > 32767) bars.erase(bars.begin(), bars.end() - 32767);
    const auto evaluate = [&](const std::string& name, CIndicator& copy) {
        const CIndicator* original = g_MyGetIndicator(name, NY_KIND_INDICATOR);
        if (original == nullptr) return false;
        copy = *original;
        copy.m_nPeriod = m_nPeriod;
        EvaluateOver(copy, m_nStock, bars.data(), static_cast<short>(bars.size()));
        return true;
    };
    data->hasMain = evaluate(m_strMainFormula, data->main);
    std::string missing;
    for (size_t i = 0; i < m_arPanes.size(); ++i) {
        const bool found = evaluate(m_arPanes[i], data->panes[i]);
        data->formulas.push_back(found ? &data->panes[i] : nullptr);
        if (!found) missing += " " + m_arPanes[i];
    }
    const std::string label = FormatStockCode(m_nStock) + " " + stock->m_strName + " " + FindPeriod(m_nPeriod)->label;
    m_pChartData = std::move(data);
    m_pChart->SetLayout([this, label, minute = IsMinutePeriod(m_nPeriod), theme = m_bLight ? &LightTheme() : &DarkTheme()](Size size) {
        const ChartData& d = *m_pChartData;
        ChartRequest request;
        request.bars = d.bars.data();
        request.barCount = static_cast<int>(d.bars.size());
        request.minuteBars = minute;
        request.mainFormula = d.hasMain ? &d.main : nullptr;
        request.formulas = d.formulas;
        request.volumePane = false;  // VOL is a pane's formula like any other
        request.label = label;
        request.theme = theme;
        request.size = size;
        return BuildChartScene(request);
    });
    Say(missing.empty() ? label : "没有这个指标:" + missing);
}

void MainWindow::keyPressEvent(QKeyEvent* event) {
    // Up, down and the page keys walk the list wherever the focus is in the window.
    const int page = std::max(1, m_pList->viewport()->height() / std::max(1, m_pList->verticalHeader()->defaultSectionSize()));
    const std::map<int, int> steps = {{Qt::Key_Up, -1}, {Qt::Key_Down, 1}, {Qt::Key_PageUp, -page}, {Qt::Key_PageDown, page}};
    auto step = steps.find(event->key());
    if (step == steps.end() || m_pList->rowCount() == 0) {
        QMainWindow::keyPressEvent(event);
        return;
    }
    SelectRow(std::clamp(m_pList->currentRow() + step->second, 0, m_pList->rowCount() - 1));
}

void MainWindow::closeEvent(QCloseEvent* event) {
    std::string error;
    if (!SaveUserFormulas(&error)) m_services.messages->Show("公式没有保存: " + error, MessageButtons::Ok, MessageIcon::Error);
    QMainWindow::closeEvent(event);
}

// After a dialog that may have changed the library, the user's formulas are stored at once and
// the chart shows the library as it now is.
static void StoreLibrary(MessageBoxes& messages) {
    std::string error;
    if (!SaveUserFormulas(&error)) messages.Show("公式没有保存: " + error, MessageButtons::Ok, MessageIcon::Error);
}

void MainWindow::OpenFormulaManager() {
    CFormulaManagerDialog dialog(m_services);
    dialog.DoModal();
    StoreLibrary(*m_services.messages);
    FillIndicators();
    Redraw();
}

void MainWindow::OpenNewFormula() {
    CFormulaDialog dialog(m_services);
    dialog.SetTarget(NY_KIND_INDICATOR, 0);
    if (dialog.DoModal() == kDialogOk) StoreLibrary(*m_services.messages);
    FillIndicators();
    Redraw();
}

void MainWindow::OpenPicker() {
    g_MyChildView->m_bShowQuoteTable = false;
    CAutoSelectDialog dialog(m_services);
    dialog.DoModal();
    const CQuoteTableView& table = g_MyChildView->m_QuoteTable;
    if (g_MyChildView->m_bShowQuoteTable) FillList(table.m_arStockIDs, FromGbk(table.m_strCategory + " - " + table.m_strName));
}

void ApplyTheme(bool light) {
    QApplication::setStyle(QStyleFactory::create(QStringLiteral("Fusion")));
    if (light) {
        QApplication::setPalette(QApplication::style()->standardPalette());
        return;
    }
    QPalette dark;
    const QColor window(37, 37, 40), base(20, 20, 22), text(220, 220, 220);
    dark.setColor(QPalette::Window, window);
    dark.setColor(QPalette::WindowText, text);
    dark.setColor(QPalette::Base, base);
    dark.setColor(QPalette::AlternateBase, window);
    dark.setColor(QPalette::Text, text);
    dark.setColor(QPalette::Button, window);
    dark.setColor(QPalette::ButtonText, text);
    dark.setColor(QPalette::Highlight, QColor(40, 80, 150));
    dark.setColor(QPalette::HighlightedText, Qt::white);
    dark.setColor(QPalette::ToolTipBase, base);
    dark.setColor(QPalette::ToolTipText, text);
    dark.setColor(QPalette::Disabled, QPalette::Text, QColor(120, 120, 120));
    dark.setColor(QPalette::Disabled, QPalette::ButtonText, QColor(120, 120, 120));
    QApplication::setPalette(dark);
}

}  // namespace ny::studio
