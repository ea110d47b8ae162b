// Dialog windows, their controls, message boxes and file dialogs on Qt.

#include "studio/qt_dialogs.h"

#include <QCheckBox>
#include <QCloseEvent>
#include <QComboBox>
#include <QDateEdit>
#include <QFileDialog>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QTabBar>
#include <QToolButton>
#include <QTreeWidget>
#include <algorithm>
#include <numeric>

namespace ny::studio {

// The dialog's own painting, across the top of its body; controls the logic places itself sit on it.
class PaintedStrip : public QWidget {
public:
    explicit PaintedStrip(std::function<void(PaintSurface&)> painter) : m_painter(std::move(painter)) {
        setMinimumHeight(110);
        setFont(MonoFont(13));
    }

protected:
    void paintEvent(QPaintEvent*) override {
        QImage picture(size(), QImage::Format_RGB32);
        picture.fill(palette().window().color());
        {
            ImageSurface surface(picture, font(), {});
            // The palette gives 0xRRGGBB; the platform's colours keep red in the low byte.
            const QColor text = palette().windowText().color();
            surface.SetTextColour(static_cast<Colour>(text.red() | text.green() << 8 | text.blue() << 16));
            m_painter(surface);
        }
        QPainter(this).drawImage(0, 0, picture);
    }

private:
    std::function<void(PaintSurface&)> m_painter;
};

namespace {

// What every control shares: its widget, the label beside it, and the move onto the painted strip
// when the logic places it.
template <class Interface, class Widget>
class QtControl : public Interface {
public:
    QtControl(QtDialog& dialog, Widget* widget) : m_dialog(dialog), m_pWidget(widget) {}

    void Place(const Rect& rect) override {
        m_rect = rect;
        QWidget& strip = m_dialog.Strip();
        if (m_pWidget->parentWidget() != &strip) {
            const bool visible = !m_pWidget->isHidden();
            m_pWidget->setParent(&strip);
            m_pWidget->setVisible(visible);
            if (m_pLabel != nullptr) m_pLabel->hide();
        }
        m_pWidget->setGeometry(rect.left, rect.top, rect.Width(), rect.Height());
    }
    Rect GetRect() const override { return m_rect; }
    void Show(bool show) override {
        m_pWidget->setVisible(show);
        if (m_pLabel != nullptr && m_pWidget->parentWidget() != &m_dialog.Strip()) m_pLabel->setVisible(show);
    }
    bool IsVisible() const override { return !m_pWidget->isHidden(); }
    void Enable(bool enable) override {
        m_pWidget->setEnabled(enable);
        if (m_pLabel != nullptr) m_pLabel->setEnabled(enable);
    }
    bool IsEnabled() const override { return m_pWidget->isEnabled(); }

    QtDialog& m_dialog;
    Widget* m_pWidget;
    QLabel* m_pLabel = nullptr;
    Rect m_rect;
};

class QtLabel : public QtControl<Control, QWidget> {
public:
    using QtControl::QtControl;
};

// Passes a typed key on only when the box's filter takes every byte it types.
class CharFilter : public QObject {
public:
    CharFilter(QObject* parent, std::function<bool(char)>& filter) : QObject(parent), m_filter(filter) {}
    bool eventFilter(QObject*, QEvent* event) override {
        if (event->type() != QEvent::KeyPress || !m_filter) return false;
        const auto* key = static_cast<QKeyEvent*>(event);
        if (key->text().isEmpty() || key->text().at(0) < QChar(0x20)) return false;
        for (char byte : ToGbk(key->text()))
            if (!m_filter(byte)) return true;
        return false;
    }

private:
    std::function<bool(char)>& m_filter;
};

class QtLineBox : public QtControl<TextBox, QLineEdit> {
public:
    QtLineBox(QtDialog& dialog, bool password) : QtControl(dialog, new QLineEdit) {
        if (password) m_pWidget->setEchoMode(QLineEdit::Password);
        QObject::connect(m_pWidget, &QLineEdit::textEdited, [this] { if (onChange) onChange(); });
        m_pWidget->installEventFilter(new CharFilter(m_pWidget, charFilter));
    }
    void SetText(const std::string& gbk) override { m_pWidget->setText(FromGbk(gbk)); }
    std::string GetText() const override { return ToGbk(m_pWidget->text()); }
    void SetReadOnly(bool readOnly) override { m_pWidget->setReadOnly(readOnly); }
    bool IsReadOnly() const override { return m_pWidget->isReadOnly(); }
    void SetFocus() override { m_pWidget->setFocus(); }
};

class QtTextArea : public QtControl<TextBox, QPlainTextEdit> {
public:
    explicit QtTextArea(QtDialog& dialog) : QtControl(dialog, new QPlainTextEdit) {
        QObject::connect(m_pWidget, &QPlainTextEdit::textChanged, [this] { if (!m_bSetting && onChange) onChange(); });
        m_pWidget->installEventFilter(new CharFilter(m_pWidget, charFilter));
    }
    void SetText(const std::string& gbk) override {
        m_bSetting = true;
        m_pWidget->setPlainText(FromGbk(gbk));
        m_bSetting = false;
    }
    std::string GetText() const override {
        // The system's multi-line text ends its lines with CR LF.
        return ToGbk(m_pWidget->toPlainText().replace(QLatin1Char('\n'), QStringLiteral("\r\n")));
    }
    void SetReadOnly(bool readOnly) override { m_pWidget->setReadOnly(readOnly); }
    bool IsReadOnly() const override { return m_pWidget->isReadOnly(); }
    void SetFocus() override { m_pWidget->setFocus(); }

private:
    bool m_bSetting = false;
};

class QtButton : public QtControl<PushButton, QPushButton> {
public:
    QtButton(QtDialog& dialog, const std::string& label) : QtControl(dialog, new QPushButton(FromGbk(label))) {
        m_pWidget->setAutoDefault(false);
        QObject::connect(m_pWidget, &QPushButton::clicked, [this] { if (onClick) onClick(); });
    }
    void SetPressed(bool pressed) override {
        m_pWidget->setCheckable(true);
        m_pWidget->setChecked(pressed);
    }
    bool IsPressed() const override { return m_pWidget->isChecked(); }
};

class QtCheck : public QtControl<CheckBox, QCheckBox> {
public:
    QtCheck(QtDialog& dialog, const std::string& label) : QtControl(dialog, new QCheckBox(FromGbk(label))) {
        QObject::connect(m_pWidget, &QCheckBox::clicked, [this] { if (onClick) onClick(); });
    }
    void SetChecked(bool checked) override { m_pWidget->setChecked(checked); }
    bool IsChecked() const override { return m_pWidget->isChecked(); }
};

class QtCombo : public QtControl<ComboBox, QComboBox> {
public:
    explicit QtCombo(QtDialog& dialog) : QtControl(dialog, new QComboBox) {
        QObject::connect(m_pWidget, &QComboBox::activated, [this] { if (onSelChange) onSelChange(); });
    }
    void ResetContent() override { m_pWidget->clear(); }
    void AddString(const std::string& gbk) override { m_pWidget->addItem(FromGbk(gbk)); }
    int GetCount() const override { return m_pWidget->count(); }
    std::string GetText(int row) const override { return ToGbk(m_pWidget->itemText(row)); }
    int GetCurSel() const override { return m_pWidget->currentIndex(); }
    void SetCurSel(int row) override { m_pWidget->setCurrentIndex(row >= 0 && row < GetCount() ? row : -1); }
};

class QtTabs : public QtControl<TabControl, QTabBar> {
public:
    explicit QtTabs(QtDialog& dialog) : QtControl(dialog, new QTabBar) {
        m_pWidget->setExpanding(false);
        QObject::connect(m_pWidget, &QTabBar::tabBarClicked, [this](int index) {
            if (index < 0 || index == m_pWidget->currentIndex()) return;
            m_pWidget->setCurrentIndex(index);
            if (onSelChange) onSelChange();
        });
    }
    void InsertItem(int index, const std::string& gbk) override {
        const QSignalBlocker quiet(m_pWidget);
        m_pWidget->insertTab(index, FromGbk(gbk));
    }
    int GetItemCount() const override { return m_pWidget->count(); }
    std::string GetItemText(int index) const override { return ToGbk(m_pWidget->tabText(index)); }
    int GetCurSel() const override { return m_pWidget->currentIndex(); }
    void SetCurSel(int index) override {
        const QSignalBlocker quiet(m_pWidget);
        if (index >= 0 && index < GetItemCount()) m_pWidget->setCurrentIndex(index);
    }
};

class QtTree : public QtControl<TreeControl, QTreeWidget> {
public:
    QtTree(QtDialog& dialog, bool checkBoxes) : QtControl(dialog, new QTreeWidget), m_bCheckBoxes(checkBoxes) {
        m_pWidget->setHeaderHidden(true);
        QObject::connect(m_pWidget, &QTreeWidget::currentItemChanged, [this] { if (!m_bQuiet && onSelChange) onSelChange(); });
        QObject::connect(m_pWidget, &QTreeWidget::itemDoubleClicked, [this] { if (onDblClick) onDblClick(); });
        QObject::connect(m_pWidget, &QTreeWidget::itemChanged, [this](QTreeWidgetItem* item) {
            if (m_bQuiet || !onCheckClick) return;
            onCheckClick(HandleOf(item), item->checkState(0) != Qt::Checked);
        });
    }
    TreeItem InsertItem(const std::string& gbk, int image, TreeItem parent, void* data) override {
        Quiet quiet(*this);
        auto* item = new QTreeWidgetItem(QStringList(FromGbk(gbk)));
        if (m_bCheckBoxes) {
            item->setFlags(item->flags() | Qt::ItemIsUserCheckable);
            item->setCheckState(0, Qt::Unchecked);
        }
        if (QTreeWidgetItem* above = ItemOf(parent)) above->addChild(item);
        else m_pWidget->addTopLevelItem(item);
        const TreeItem handle = m_nNext++;
        m_items[handle] = {item, image, data};
        return handle;
    }
    void DeleteItem(TreeItem handle) override {
        QTreeWidgetItem* item = ItemOf(handle);
        if (item == nullptr) return;
        Quiet quiet(*this);
        Forget(item);
        delete item;
    }
    void DeleteAllItems() override {
        Quiet quiet(*this);
        m_pWidget->clear();
        m_items.clear();
    }
    std::vector<TreeItem> GetChildren(TreeItem parent) const override {
        std::vector<TreeItem> children;
        const QTreeWidgetItem* above = ItemOf(parent);
        if (parent != kNoItem && above == nullptr) return children;
        const int count = above ? above->childCount() : m_pWidget->topLevelItemCount();
        for (int i = 0; i < count; ++i) children.push_back(HandleOf(above ? above->child(i) : m_pWidget->topLevelItem(i)));
        return children;
    }
    TreeItem GetParentItem(TreeItem item) const override {
        const QTreeWidgetItem* found = ItemOf(item);
        return found == nullptr ? kNoItem : HandleOf(found->parent());
    }
    std::string GetItemText(TreeItem item) const override {
        const QTreeWidgetItem* found = ItemOf(item);
        return found == nullptr ? std::string() : ToGbk(found->text(0));
    }
    int GetItemImage(TreeItem item) const override { return m_items.count(item) ? m_items.at(item).image : 0; }
    void* GetItemData(TreeItem item) const override { return m_items.count(item) ? m_items.at(item).data : nullptr; }
    TreeItem GetSelectedItem() const override { return HandleOf(m_pWidget->currentItem()); }
    void SelectItem(TreeItem item) override {
        Quiet quiet(*this);
        m_pWidget->setCurrentItem(ItemOf(item));
    }
    void Expand(TreeItem item) override {
        if (QTreeWidgetItem* found = ItemOf(item)) found->setExpanded(true);
    }
    bool IsExpanded(TreeItem item) const override {
        const QTreeWidgetItem* found = ItemOf(item);
        return found != nullptr && found->isExpanded();
    }
    void SelectSetFirstVisible(TreeItem item) override {
        if (QTreeWidgetItem* found = ItemOf(item)) m_pWidget->scrollToItem(found, QAbstractItemView::PositionAtTop);
    }
    void SetCheck(TreeItem item, bool checked) override {
        Quiet quiet(*this);
        if (QTreeWidgetItem* found = ItemOf(item)) found->setCheckState(0, checked ? Qt::Checked : Qt::Unchecked);
    }
    bool GetCheck(TreeItem item) const override {
        const QTreeWidgetItem* found = ItemOf(item);
        return found != nullptr && found->checkState(0) == Qt::Checked;
    }

private:
    struct Entry {
        QTreeWidgetItem* item;
        int image;
        void* data;
    };
    // Changes made by the program run no handler.
    struct Quiet {
        explicit Quiet(QtTree& tree) : m_tree(tree), m_bWas(tree.m_bQuiet) { tree.m_bQuiet = true; }
        ~Quiet() { m_tree.m_bQuiet = m_bWas; }
        QtTree& m_tree;
        bool m_bWas;
    };
    QTreeWidgetItem* ItemOf(TreeItem handle) const {
        auto found = m_items.find(handle);
        return found == m_items.end() ? nullptr : found->second.item;
    }
    TreeItem HandleOf(const QTreeWidgetItem* item) const {
        for (const auto& [handle, entry] : m_items)
            if (entry.item == item) return handle;
        return kNoItem;
    }
    void Forget(QTreeWidgetItem* item) {
        for (int i = 0; i < item->childCount(); ++i) Forget(item->child(i));
        m_items.erase(HandleOf(item));
    }

    bool m_bCheckBoxes;
    bool m_bQuiet = false;
    TreeItem m_nNext = 1;
    std::map<TreeItem, Entry> m_items;
};

class QtList : public QtControl<ListView, QTreeWidget> {
public:
    explicit QtList(QtDialog& dialog) : QtControl(dialog, new QTreeWidget) {
        m_pWidget->setRootIsDecorated(false);
        m_pWidget->setColumnCount(0);
        m_pWidget->header()->setSectionsClickable(true);
        QObject::connect(m_pWidget, &QTreeWidget::itemSelectionChanged, [this] { if (!m_bQuiet && onSelChange) onSelChange(); });
        QObject::connect(m_pWidget, &QTreeWidget::itemDoubleClicked, [this] { if (onDblClick) onDblClick(); });
        QObject::connect(m_pWidget->header(), &QHeaderView::sectionClicked, [this](int column) { if (onColumnClick) onColumnClick(column); });
    }
    void InsertColumn(int column, const std::string& gbk, int width) override {
        m_columns.insert(m_columns.begin() + std::clamp(column, 0, static_cast<int>(m_columns.size())), FromGbk(gbk));
        m_pWidget->setColumnCount(static_cast<int>(m_columns.size()));
        m_pWidget->setHeaderLabels(m_columns);
        m_pWidget->setColumnWidth(column, width);
    }
    int GetColumnCount() const override { return static_cast<int>(m_columns.size()); }
    std::string GetColumnText(int column) const override {
        return column >= 0 && column < m_columns.size() ? ToGbk(m_columns[column]) : std::string();
    }
    void DeleteAllItems() override {
        m_bQuiet = true;
        m_pWidget->clear();
        m_bQuiet = false;
    }
    int InsertItem(int row, const std::string& gbk, void* data) override {
        const int at = std::clamp(row, 0, GetItemCount());
        auto* item = new QTreeWidgetItem(QStringList(FromGbk(gbk)));
        item->setData(0, Qt::UserRole, QVariant::fromValue(reinterpret_cast<quintptr>(data)));
        m_pWidget->insertTopLevelItem(at, item);
        return at;
    }
    void DeleteItem(int row) override { delete m_pWidget->topLevelItem(row); }
    void SetItemText(int row, int column, const std::string& gbk) override {
        if (QTreeWidgetItem* item = m_pWidget->topLevelItem(row)) item->setText(column, FromGbk(gbk));
    }
    std::string GetItemText(int row, int column) const override {
        const QTreeWidgetItem* item = m_pWidget->topLevelItem(row);
        return item == nullptr ? std::string() : ToGbk(item->text(column));
    }
    void* GetItemData(int row) const override {
        const QTreeWidgetItem* item = m_pWidget->topLevelItem(row);
        return item == nullptr ? nullptr : reinterpret_cast<void*>(item->data(0, Qt::UserRole).value<quintptr>());
    }
    int GetItemCount() const override { return m_pWidget->topLevelItemCount(); }
    int GetSelectedRow() const override {
        const QList<QTreeWidgetItem*> selected = m_pWidget->selectedItems();
        return selected.isEmpty() ? -1 : m_pWidget->indexOfTopLevelItem(selected.front());
    }
    void SelectRow(int row) override {
        m_bQuiet = true;
        m_pWidget->clearSelection();
        if (QTreeWidgetItem* item = m_pWidget->topLevelItem(row)) item->setSelected(true);
        m_bQuiet = false;
    }
    void SortItems(const std::function<bool(int, int)>& less) override {
        std::vector<int> order(GetItemCount());
        std::iota(order.begin(), order.end(), 0);
        std::stable_sort(order.begin(), order.end(), less);
        std::vector<QTreeWidgetItem*> items;
        for (int row : order) items.push_back(m_pWidget->topLevelItem(row));
        for (QTreeWidgetItem* item : items) m_pWidget->takeTopLevelItem(m_pWidget->indexOfTopLevelItem(item));
        for (QTreeWidgetItem* item : items) m_pWidget->addTopLevelItem(item);
    }
    void SetProperty(const std::string& name, int value) override { m_properties[name] = value; }
    int GetProperty(const std::string& name) const override {
        auto found = m_properties.find(name);
        return found == m_properties.end() ? 0 : found->second;
    }

private:
    QStringList m_columns;
    std::map<std::string, int> m_properties;
    bool m_bQuiet = false;
};

// Two small arrow buttons that step the buddy's number.
class QtSpin : public QtControl<SpinBox, QWidget> {
public:
    explicit QtSpin(QtDialog& dialog) : QtControl(dialog, new QWidget) {
        auto* arrows = new QVBoxLayout(m_pWidget);
        arrows->setContentsMargins(0, 0, 0, 0);
        arrows->setSpacing(0);
        for (auto [arrow, delta] : {std::pair{Qt::UpArrow, 1}, std::pair{Qt::DownArrow, -1}}) {
            auto* button = new QToolButton;
            button->setArrowType(arrow);
            button->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
            button->setAutoRepeat(true);
            QObject::connect(button, &QToolButton::clicked, [this, delta = delta] { Step(delta); });
            arrows->addWidget(button);
        }
    }
    void SetBuddy(TextBox* buddy) override { m_pBuddy = buddy; }
    void SetRange(int lower, int upper) override { m_nLower = lower, m_nUpper = upper; }
    int GetLower() const override { return m_nLower; }
    int GetUpper() const override { return m_nUpper; }

private:
    void Step(int delta) {
        if (m_pBuddy == nullptr) return;
        const int value = std::clamp(ReadNumber(m_pBuddy->GetText()) + delta, std::min(m_nLower, m_nUpper), std::max(m_nLower, m_nUpper));
        m_pBuddy->SetText(std::to_string(value));
        if (m_pBuddy->onChange) m_pBuddy->onChange();
    }
    static int ReadNumber(const std::string& text) {
        try {
            return std::stoi(text);
        } catch (const std::exception&) {
            return 0;
        }
    }
    TextBox* m_pBuddy = nullptr;
    int m_nLower = 0, m_nUpper = 100;
};

class QtDate : public QtControl<DatePicker, QDateEdit> {
public:
    explicit QtDate(QtDialog& dialog) : QtControl(dialog, new QDateEdit) {
        m_pWidget->setCalendarPopup(true);
        m_pWidget->setDisplayFormat(QStringLiteral("yyyy-MM-dd"));
    }
    void SetDate(int yyyymmdd) override {
        const QDate date(yyyymmdd / 10000, yyyymmdd / 100 % 100, yyyymmdd % 100);
        if (date.isValid()) m_pWidget->setDate(date);
    }
    int GetDate() const override {
        const QDate date = m_pWidget->date();
        return date.year() * 10000 + date.month() * 100 + date.day();
    }
};

class QtProgress : public QtControl<ProgressBar, QProgressBar> {
public:
    explicit QtProgress(QtDialog& dialog) : QtControl(dialog, new QProgressBar) {}
    void SetRange(int lower, int upper) override { m_pWidget->setRange(lower, upper); }
    void SetPos(int pos) override { m_pWidget->setValue(pos); }
    int GetPos() const override { return m_pWidget->value(); }
};

// A heading whose columns are separated by tabs, one label per column.
QWidget* MakeLabel(const std::string& gbk) {
    const QStringList columns = FromGbk(gbk).split(QLatin1Char('\t'));
    if (columns.size() == 1) return new QLabel(columns.front().trimmed());
    auto* row = new QWidget;
    auto* layout = new QHBoxLayout(row);
    layout->setContentsMargins(0, 0, 0, 0);
    for (const QString& column : columns) layout->addWidget(new QLabel(column.trimmed()), 1);
    return row;
}

constexpr int kGridCells = 4;

}  // namespace

// ---- QtDialog ----

QtDialog::QtDialog(QWidget* parent) : QDialog(parent), m_pBody(new QVBoxLayout), m_pButtons(new QVBoxLayout) {
    auto* root = new QHBoxLayout(this);
    root->addLayout(m_pBody, 1);
    root->addLayout(m_pButtons);
    m_pButtons->addStretch(1);
}

QtDialog::~QtDialog() {
    m_children.clear();
    m_controls.clear();
}

template <class T>
T& QtDialog::Keep(int id, std::unique_ptr<T> control) {
    T& kept = *control;
    m_controls.emplace_back(id, std::move(control));
    return kept;
}

Control* QtDialog::Find(int id) const {
    for (const auto& [controlId, control] : m_controls)
        if (controlId == id) return control.get();
    return nullptr;
}

QLabel* QtDialog::AddField(QWidget* widget, const std::string& label, int cells) {
    m_pSideBySide = nullptr;
    if (m_pGrid == nullptr) {
        m_pGrid = new QGridLayout;
        m_pBody->addLayout(m_pGrid);
        m_nCell = 0;
    }
    // A label added just before with the same text already names this field.
    QLabel* named = m_pLastLabel != nullptr && !label.empty() && m_pLastLabel->text() == FromGbk(label) ? m_pLastLabel : nullptr;
    m_pLastLabel = nullptr;
    const bool ownLabel = !label.empty() && named == nullptr;
    const int width = cells + (ownLabel ? 1 : 0);
    if (m_nCell % kGridCells + width > kGridCells) m_nCell += kGridCells - m_nCell % kGridCells;
    const int row = m_nCell / kGridCells, column = m_nCell % kGridCells;
    if (ownLabel) {
        named = new QLabel(FromGbk(label));
        m_pGrid->addWidget(named, row, column);
    }
    m_pGrid->addWidget(widget, row, column + (ownLabel ? 1 : 0), 1, cells);
    if (named != nullptr) named->setBuddy(widget);  // its shortcut and screen readers lead to the field
    m_nCell += width;
    return named;
}

void QtDialog::AddBody(QWidget* widget, Slot slot, int stretch) {
    m_pGrid = nullptr;
    if (slot == Slot::SideBySide) {
        if (m_pSideBySide == nullptr) {
            m_pSideBySide = new QHBoxLayout;
            m_pBody->addLayout(m_pSideBySide, stretch);
        }
        m_pSideBySide->addWidget(widget, 1);
        return;
    }
    m_pSideBySide = nullptr;
    m_pBody->addWidget(widget, stretch);
}

Control& QtDialog::AddLabel(int id, const std::string& gbk) {
    QWidget* label = MakeLabel(gbk);
    // A heading of columns takes a row of its own.
    const bool heading = gbk.find('\t') != std::string::npos;
    if (heading) m_nCell += (kGridCells - m_nCell % kGridCells) % kGridCells;
    AddField(label, {}, heading ? kGridCells : 2);
    m_pLastLabel = qobject_cast<QLabel*>(label);
    return Keep(id, std::make_unique<QtLabel>(*this, label));
}

TextBox& QtDialog::AddTextBox(int id, const std::string& label, TextStyle style) {
    if (style == TextStyle::MultiLine) {
        auto box = std::make_unique<QtTextArea>(*this);
        AddBody(box->m_pWidget, Slot::Across, 1);
        return Keep(id, std::move(box));
    }
    auto box = std::make_unique<QtLineBox>(*this, style == TextStyle::Password);
    box->m_pLabel = AddField(box->m_pWidget, label, 1);
    return Keep(id, std::move(box));
}

PushButton& QtDialog::AddButton(int id, const std::string& label) {
    auto button = std::make_unique<QtButton>(*this, label);
    m_pButtons->insertWidget(m_pButtons->count() - 1, button->m_pWidget);
    return Keep(id, std::move(button));
}

CheckBox& QtDialog::AddCheckBox(int id, const std::string& label) {
    auto box = std::make_unique<QtCheck>(*this, label);
    AddField(box->m_pWidget, {}, 1);
    return Keep(id, std::move(box));
}

ComboBox& QtDialog::AddComboBox(int id, const std::string& label) {
    auto box = std::make_unique<QtCombo>(*this);
    box->m_pLabel = AddField(box->m_pWidget, label, 1);
    return Keep(id, std::move(box));
}

TabControl& QtDialog::AddTabControl(int id) {
    auto tabs = std::make_unique<QtTabs>(*this);
    AddBody(tabs->m_pWidget, Slot::Across, 0);
    return Keep(id, std::move(tabs));
}

TreeControl& QtDialog::AddTree(int id, bool checkBoxes) {
    auto tree = std::make_unique<QtTree>(*this, checkBoxes);
    AddBody(tree->m_pWidget, Slot::SideBySide, 3);
    return Keep(id, std::move(tree));
}

ListView& QtDialog::AddListView(int id) {
    auto list = std::make_unique<QtList>(*this);
    AddBody(list->m_pWidget, Slot::SideBySide, 3);
    return Keep(id, std::move(list));
}

SpinBox& QtDialog::AddSpinBox(int id) {
    auto spin = std::make_unique<QtSpin>(*this);
    AddField(spin->m_pWidget, {}, 1);
    return Keep(id, std::move(spin));
}

DatePicker& QtDialog::AddDatePicker(int id, const std::string& label) {
    auto picker = std::make_unique<QtDate>(*this);
    picker->m_pLabel = AddField(picker->m_pWidget, label, 1);
    return Keep(id, std::move(picker));
}

ProgressBar& QtDialog::AddProgressBar(int id) {
    auto bar = std::make_unique<QtProgress>(*this);
    AddBody(bar->m_pWidget, Slot::Across, 0);
    return Keep(id, std::move(bar));
}

Window& QtDialog::AddChildWindow(int, const Rect& rect) {
    auto window = std::make_unique<PaintedWindow>(this);
    window->setMinimumSize(rect.Width(), rect.Height());
    AddBody(window.get(), Slot::Across, 4);
    m_children.push_back(std::move(window));
    return *m_children.back();
}

QWidget& QtDialog::Strip() {
    if (m_pStrip == nullptr) SetPainter([](PaintSurface&) {});
    return *m_pStrip;
}

void QtDialog::SetPainter(std::function<void(PaintSurface&)> painter) {
    if (m_pStrip != nullptr) {
        m_pStrip->deleteLater();
    }
    m_pStrip = new PaintedStrip(std::move(painter));
    m_pBody->insertWidget(0, m_pStrip);
}

void QtDialog::Redraw() {
    if (m_pStrip != nullptr) m_pStrip->update();
}

int QtDialog::RunModal(std::function<void()> onInit) {
    onInit();
    return exec();
}

void QtDialog::closeEvent(QCloseEvent* event) {
    if (!onClose) {
        QDialog::closeEvent(event);
        return;
    }
    event->ignore();
    onClose();
}

// Enter and Esc belong to the controls; the dialog ends only through its buttons or its close box.
void QtDialog::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Escape && onClose) {
        onClose();
        return;
    }
    if (event->key() == Qt::Key_Escape) {
        reject();
        return;
    }
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) return;
    QDialog::keyPressEvent(event);
}

std::unique_ptr<DialogWindow> QtDialogFactory::CreateDialog(const std::string&) {
    auto dialog = std::make_unique<QtDialog>(m_pParent);
    dialog->resize(880, 600);
    return dialog;
}

// ---- Message boxes and file dialogs ----

MessageAnswer QtMessageBoxes::Show(const std::string& text, MessageButtons buttons, MessageIcon icon, const std::string& caption) {
    static const std::map<MessageIcon, QMessageBox::Icon> icons = {
        {MessageIcon::None, QMessageBox::NoIcon}, {MessageIcon::Information, QMessageBox::Information},
        {MessageIcon::Question, QMessageBox::Question}, {MessageIcon::Error, QMessageBox::Critical}};
    static const std::map<MessageButtons, QMessageBox::StandardButtons> choices = {
        {MessageButtons::Ok, QMessageBox::Ok}, {MessageButtons::OkCancel, QMessageBox::Ok | QMessageBox::Cancel},
        {MessageButtons::YesNo, QMessageBox::Yes | QMessageBox::No}};
    QMessageBox box(icons.at(icon), caption.empty() ? QStringLiteral("nystudio") : FromGbk(caption), FromGbk(text),
                    choices.at(buttons), m_pParent);
    box.setObjectName(QStringLiteral("message"));
    switch (box.exec()) {
        case QMessageBox::Cancel: return MessageAnswer::Cancel;
        case QMessageBox::Yes: return MessageAnswer::Yes;
        case QMessageBox::No: return MessageAnswer::No;
        default: return buttons == MessageButtons::OkCancel || buttons == MessageButtons::Ok ? MessageAnswer::Ok : MessageAnswer::No;
    }
}

// "label|pattern|label|pattern||" as Qt's "label (pattern);;label (pattern)".
static QString QtFilter(const std::string& filter) {
    const QStringList parts = FromGbk(filter).split(QLatin1Char('|'), Qt::SkipEmptyParts);
    QStringList filters;
    for (int i = 0; i + 1 < parts.size(); i += 2)
        filters << parts[i] + QStringLiteral(" (") + QString(parts[i + 1]).replace(QLatin1Char(';'), QLatin1Char(' ')) + QLatin1Char(')');
    return filters.join(QStringLiteral(";;"));
}

bool QtFileDialogs::AskOpen(const FileDialogRequest& request, std::string* path) {
    const QString chosen = QFileDialog::getOpenFileName(m_pParent, {}, {}, QtFilter(request.filter));
    if (chosen.isEmpty()) return false;
    *path = ToGbk(chosen);
    return true;
}

bool QtFileDialogs::AskSave(const FileDialogRequest& request, std::string* path) {
    QFileDialog dialog(m_pParent, {}, FromGbk(request.proposedName), QtFilter(request.filter));
    dialog.setAcceptMode(QFileDialog::AcceptSave);
    dialog.setDefaultSuffix(FromGbk(request.defaultExtension));
    if (!request.confirmOverwrite) dialog.setOption(QFileDialog::DontConfirmOverwrite);
    if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty()) return false;
    *path = ToGbk(dialog.selectedFiles().front());
    return true;
}

}  // namespace ny::studio
