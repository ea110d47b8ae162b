// The self-painting child window and its services on Qt.

#include "studio/qt_window.h"

#include <QApplication>
#include <QBitmap>
#include <QClipboard>
#include <QInputMethodEvent>
#include <QKeyEvent>
#include <QMenu>
#include <QPainterPath>
#include <QScrollBar>

#include "host/encoding.h"

namespace ny::studio {

QString FromGbk(std::string_view gbk) { return QString::fromStdString(GbkToUtf8(std::string(gbk))); }

std::string ToGbk(const QString& text) {
    std::string gbk;
    // A character GBK lacks cannot reach the system; the text is dropped rather than mangled.
    return TryUtf8ToGbk(text.toStdString(), &gbk) ? gbk : std::string();
}

QColor ToQColor(Colour colour) { return QColor(RedOf(colour), GreenOf(colour), BlueOf(colour)); }

QFont MonoFont(int pixels) {
    QFont font("Noto Sans Mono CJK SC");
    font.setStyleHint(QFont::Monospace);
    font.setPixelSize(pixels);
    return font;
}

Modifiers ModifiersOf(Qt::KeyboardModifiers modifiers) {
    return {(modifiers & Qt::ShiftModifier) != 0, (modifiers & Qt::ControlModifier) != 0};
}

// ---- ImageSurface ----

ImageSurface::ImageSurface(QImage& image, const QFont& font, std::function<void()> present)
    : m_image(image), m_painter(&image), m_metrics(CellMetrics(font)), m_present(std::move(present)) {
    m_painter.setFont(font);
    m_nAscent = QFontMetrics(font).ascent();
}

FontMetrics ImageSurface::CellMetrics(const QFont& font) {
    const QFontMetrics metrics(font);
    return {metrics.horizontalAdvance(QLatin1Char('0')), metrics.height()};
}

void ImageSurface::FillRect(const Rect& rect, Colour colour) {
    m_painter.fillRect(QRect(rect.left, rect.top, rect.Width(), rect.Height()), ToQColor(colour));
}

void ImageSurface::FillRoundRect(const Rect& rect, int corner, Colour colour) {
    m_painter.save();
    m_painter.setRenderHint(QPainter::Antialiasing);
    m_painter.setPen(ToQColor(colour));
    m_painter.setBrush(ToQColor(colour));
    m_painter.drawRoundedRect(QRectF(rect.left, rect.top, rect.Width() - 1, rect.Height() - 1), corner / 2.0, corner / 2.0);
    m_painter.restore();
}

void ImageSurface::DrawText(Point at, std::string_view gbk) {
    if (m_pTextLog != nullptr) m_pTextLog->append(gbk).push_back('\n');
    m_painter.setPen(m_textColour);
    int column = 0;
    for (size_t i = 0; i < gbk.size();) {
        const bool wide = static_cast<unsigned char>(gbk[i]) > 0x80 && i + 1 < gbk.size();
        const size_t bytes = wide ? 2 : 1;
        if (gbk[i] != ' ')
            m_painter.drawText(at.x + column * m_metrics.averageCharWidth, at.y + m_nAscent, FromGbk(gbk.substr(i, bytes)));
        column += static_cast<int>(bytes);
        i += bytes;
    }
}

int ImageSurface::TextWidth(std::string_view gbk) const { return static_cast<int>(gbk.size()) * m_metrics.averageCharWidth; }

void ImageSurface::Present() {
    if (m_present) m_present();
}

// ---- QtCaret ----

QtCaret::QtCaret(QWidget& owner) : m_owner(owner) {
    m_blink.setInterval(QApplication::cursorFlashTime() > 0 ? QApplication::cursorFlashTime() / 2 : 500);
    QObject::connect(&m_blink, &QTimer::timeout, [this] {
        m_bBlinkOn = !m_bBlinkOn;
        Refresh();
    });
}

void QtCaret::Create(Size size) {
    m_bExists = true;
    m_bShown = false;
    m_rect.setSize(QSize(size.width, size.height));
}

void QtCaret::Destroy() {
    Hide();
    m_bExists = false;
}

void QtCaret::Show() {
    if (!m_bExists) return;
    m_bShown = m_bBlinkOn = true;
    m_blink.start();
    Refresh();
}

void QtCaret::Hide() {
    m_bShown = false;
    m_blink.stop();
    Refresh();
}

void QtCaret::SetPos(Point clientPos) {
    Refresh();
    m_rect.moveTo(clientPos.x, clientPos.y);
    m_bBlinkOn = true;
    Refresh();
}

void QtCaret::Paint(QPainter& painter) const {
    if (!m_bShown || !m_bBlinkOn) return;
    // The bar inverts what lies under it, so it shows on any background.
    painter.save();
    painter.setCompositionMode(QPainter::RasterOp_SourceXorDestination);
    painter.fillRect(m_rect, Qt::white);
    painter.restore();
}

void QtCaret::Refresh() { m_owner.update(m_rect.adjusted(-1, -1, 1, 1)); }

// ---- Clipboard, timers, menu ----

bool QtClipboard::HasText() const { return !QGuiApplication::clipboard()->text().isEmpty(); }

bool QtClipboard::GetText(std::string& out) const {
    const QString text = QGuiApplication::clipboard()->text();
    if (text.isEmpty()) return false;
    out = ToGbk(text);
    return !out.empty();
}

void QtClipboard::SetText(const std::string& gbk) { QGuiApplication::clipboard()->setText(FromGbk(gbk)); }

void QtTimer::Start(int id, int milliseconds, std::function<void()> callback) {
    Stop(id);
    auto timer = std::make_unique<QTimer>();
    QObject::connect(timer.get(), &QTimer::timeout, std::move(callback));
    timer->start(milliseconds);
    m_timers[id] = std::move(timer);
}

void QtTimer::Stop(int id) {
    auto found = m_timers.find(id);
    // A timer may be stopped or restarted from its own callback: it is deleted once control is
    // back in Qt's loop.
    if (found != m_timers.end()) {
        found->second->stop();
        found->second.release()->deleteLater();
        m_timers.erase(found);
    }
}

unsigned QtPopupMenu::Track(const std::vector<MenuItem>& items, Point screen) {
    QMenu menu;
    for (const MenuItem& item : items) {
        if (item.text.empty()) {
            menu.addSeparator();
            continue;
        }
        QAction* action = menu.addAction(FromGbk(item.text));
        action->setData(item.command);
        action->setEnabled(item.enabled);
    }
    QAction* chosen = menu.exec(QPoint(screen.x, screen.y));
    return chosen == nullptr ? 0 : chosen->data().toUInt();
}

// ---- QtListBox ----

QtListBox::QtListBox(QWidget* parent, std::function<WindowClient*()> client) : QListWidget(parent), m_client(std::move(client)) {
    hide();
    connect(this, &QListWidget::itemDoubleClicked, [this] {
        if (WindowClient* target = m_client()) target->OnListDoubleClick();
    });
}

void QtListBox::Place(const Rect& clientRect) { setGeometry(clientRect.left, clientRect.top, clientRect.Width(), clientRect.Height()); }

std::string QtListBox::Text(int index) const {
    const QListWidgetItem* entry = item(index);
    return entry == nullptr ? std::string() : ToGbk(entry->text());
}

// The keys the platform names, by Qt key.
unsigned PlatformKey(int qtKey) {
    static const std::map<int, unsigned> keys = {
        {Qt::Key_Backspace, kKeyBack}, {Qt::Key_Return, kKeyReturn}, {Qt::Key_Enter, kKeyReturn},
        {Qt::Key_Escape, kKeyEscape}, {Qt::Key_PageUp, kKeyPageUp}, {Qt::Key_PageDown, kKeyPageDown},
        {Qt::Key_End, kKeyEnd}, {Qt::Key_Home, kKeyHome}, {Qt::Key_Left, kKeyLeft}, {Qt::Key_Up, kKeyUp},
        {Qt::Key_Right, kKeyRight}, {Qt::Key_Down, kKeyDown}, {Qt::Key_Delete, kKeyDelete},
    };
    auto found = keys.find(qtKey);
    return found == keys.end() ? 0 : found->second;
}

void QtListBox::keyPressEvent(QKeyEvent* event) {
    WindowClient* target = m_client();
    const unsigned key = PlatformKey(event->key());
    if (target != nullptr && key != 0) return target->OnListKey(key, ModifiersOf(event->modifiers()));
    // A character goes back to the text, with the focus, and is typed there: the line name goes on.
    for (QWidget* up = parentWidget(); target != nullptr && !event->text().isEmpty() && up != nullptr; up = up->parentWidget())
        if (auto* window = dynamic_cast<PaintedWindow*>(up)) {
            window->setFocus();
            QApplication::sendEvent(window, event);
            return;
        }
    QListWidget::keyPressEvent(event);
}

// ---- QtTipWindow ----

QtTipWindow::QtTipWindow() : QWidget(nullptr, Qt::ToolTip | Qt::FramelessWindowHint) {
    setAttribute(Qt::WA_ShowWithoutActivating);
}

Size QtTipWindow::MeasureLine(std::string_view gbk) const {
    const QFontMetrics metrics(font());
    return {metrics.horizontalAdvance(FromGbk(gbk)), metrics.height()};
}

void QtTipWindow::SetShape(Point screenTopLeft, Size size, int corner) {
    setGeometry(screenTopLeft.x, screenTopLeft.y, size.width, size.height);
    QPainterPath outline;
    outline.addRoundedRect(QRectF(0, 0, size.width, size.height), corner / 2.0, corner / 2.0);
    setMask(QRegion(outline.toFillPolygon().toPolygon()));
}

void QtTipWindow::ShowNoActivate(std::function<void(PaintSurface&)> painter) {
    m_picture = QImage(size(), QImage::Format_RGB32);
    m_picture.fill(Qt::white);
    std::string text;
    {
        ImageSurface surface(m_picture, font(), {});
        surface.KeepText(&text);
        painter(surface);
    }
    setAccessibleDescription(FromGbk(text));
    show();
    update();
}

void QtTipWindow::paintEvent(QPaintEvent*) { QPainter(this).drawImage(0, 0, m_picture); }

// ---- PaintedWindow ----

PaintedWindow::PaintedWindow(QWidget* parent, std::function<void(unsigned, int)> notify)
    : QAbstractScrollArea(parent), m_notify(std::move(notify)), m_font(MonoFont()), m_caret(*viewport()),
      m_pList(new QtListBox(viewport(), [this] { return m_pClient; })), m_pTip(std::make_unique<QtTipWindow>()) {
    setFocusPolicy(Qt::StrongFocus);
    setAttribute(Qt::WA_InputMethodEnabled);
    viewport()->setCursor(Qt::IBeamCursor);
    m_pList->setFont(m_font);
    const std::pair<QScrollBar*, ScrollBarKind> bars[] = {{verticalScrollBar(), ScrollBarKind::Vertical},
                                                          {horizontalScrollBar(), ScrollBarKind::Horizontal}};
    setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOn);
    for (auto [bar, kind] : bars)
        connect(bar, &QScrollBar::actionTriggered, [this, kind = kind](int action) { OnScrollAction(kind, action); });
}

PaintedWindow::~PaintedWindow() { m_pSurface.reset(); }

Rect PaintedWindow::GetClientRect() const { return {0, 0, viewport()->width(), viewport()->height()}; }

void PaintedWindow::Invalidate(const Rect& rect) { viewport()->update(rect.left, rect.top, rect.Width(), rect.Height()); }

Point PaintedWindow::ClientToScreen(Point client) const {
    const QPoint screen = viewport()->mapToGlobal(QPoint(client.x, client.y));
    return {screen.x(), screen.y()};
}

void PaintedWindow::SetScrollBar(ScrollBarKind bar, const ScrollBarState& state) {
    QScrollBar* scroll = bar == ScrollBarKind::Vertical ? verticalScrollBar() : horizontalScrollBar();
    const QSignalBlocker quiet(scroll);
    // The platform's range counts the page in, Qt's does not.
    scroll->setRange(state.min, std::max(state.min, state.max - std::max(state.page - 1, 0)));
    scroll->setPageStep(std::max(state.page, 1));
    scroll->setValue(state.pos);
}

void PaintedWindow::OnScrollAction(ScrollBarKind bar, int action) {
    if (m_pClient == nullptr) return;
    QScrollBar* scroll = bar == ScrollBarKind::Vertical ? verticalScrollBar() : horizontalScrollBar();
    static const std::map<int, ScrollCode> codes = {
        {QAbstractSlider::SliderSingleStepAdd, ScrollCode::LineForward}, {QAbstractSlider::SliderSingleStepSub, ScrollCode::LineBack},
        {QAbstractSlider::SliderPageStepAdd, ScrollCode::PageForward},   {QAbstractSlider::SliderPageStepSub, ScrollCode::PageBack},
        {QAbstractSlider::SliderToMinimum, ScrollCode::Start},           {QAbstractSlider::SliderToMaximum, ScrollCode::End},
        {QAbstractSlider::SliderMove, ScrollCode::ThumbTrack},
    };
    auto found = codes.find(action);
    if (found == codes.end()) return;
    m_pClient->OnScroll(bar, found->second, scroll->sliderPosition());
    // The client sets the bar itself; Qt must not move it on its own afterwards.
    SetScrollBar(bar, {scroll->minimum(), scroll->maximum() + scroll->pageStep() - 1, scroll->pageStep(), scroll->value()});
}

void PaintedWindow::ShiftPicture(int dx, int dy) {
    if (m_picture.isNull()) return;
    QImage shifted(m_picture.size(), m_picture.format());
    shifted.fill(Qt::black);
    QPainter(&shifted).drawImage(dx, dy, m_picture);
    m_picture = shifted;
    viewport()->update();
}

PaintSurface& PaintedWindow::BeginPaint() {
    const QSize size = viewport()->size();
    if (m_picture.size() != size) {
        m_pSurface.reset();
        m_picture = QImage(size, QImage::Format_RGB32);
        m_picture.fill(Qt::white);
    }
    m_pSurface.reset();
    m_pSurface = std::make_unique<ImageSurface>(m_picture, m_font, [this] {
        if (!m_bInPaint) viewport()->update();
    });
    return *m_pSurface;
}

void PaintedWindow::NotifyParent(unsigned code, int controlId) {
    if (m_notify) m_notify(code, controlId);
}

void PaintedWindow::paintEvent(QPaintEvent*) {
    if (m_pClient != nullptr) {
        m_bInPaint = true;
        m_pClient->OnPaint();
        m_pSurface.reset();  // ends the painter on the picture
        m_bInPaint = false;
    }
    QPainter painter(viewport());
    painter.drawImage(0, 0, m_picture);
    m_caret.Paint(painter);
}

void PaintedWindow::resizeEvent(QResizeEvent* event) {
    QAbstractScrollArea::resizeEvent(event);
    if (m_pClient != nullptr && m_bShown) m_pClient->OnSize();
}

void PaintedWindow::showEvent(QShowEvent* event) {
    QAbstractScrollArea::showEvent(event);
    if (m_bShown || m_pClient == nullptr) return;
    m_bShown = true;
    m_pClient->OnFirstShow();
    m_pClient->OnSize();
}

void PaintedWindow::focusInEvent(QFocusEvent* event) {
    QAbstractScrollArea::focusInEvent(event);
    if (m_pClient != nullptr) m_pClient->OnSetFocus();
}

void PaintedWindow::focusOutEvent(QFocusEvent* event) {
    QAbstractScrollArea::focusOutEvent(event);
    if (m_pClient != nullptr) m_pClient->OnKillFocus();
}

// A key reaches the control as a key event when it is one the platform names, or with Control
// held (Control+C ...); otherwise as the GBK bytes of the text it types. Enter and Backspace come
// only as keys, Tab only as a character.
void PaintedWindow::keyPressEvent(QKeyEvent* event) {
    if (m_pClient == nullptr) return;
    const Modifiers modifiers = ModifiersOf(event->modifiers());
    if (const unsigned key = PlatformKey(event->key())) {
        m_pClient->OnKeyDown(key, modifiers);
    } else if (event->key() == Qt::Key_Tab) {
        m_pClient->OnChar(kKeyTab, modifiers);
    } else if (modifiers.control && event->key() >= Qt::Key_A && event->key() <= Qt::Key_Z) {
        m_pClient->OnKeyDown(static_cast<unsigned>(event->key()), modifiers);
    } else {
        TypeText(event->text(), modifiers);
    }
}

void PaintedWindow::inputMethodEvent(QInputMethodEvent* event) {
    TypeText(event->commitString(), {});
    event->accept();
}

void PaintedWindow::TypeText(const QString& text, Modifiers modifiers) {
    if (m_pClient == nullptr) return;
    for (const char byte : ToGbk(text))
        if (static_cast<unsigned char>(byte) >= 0x20) m_pClient->OnChar(static_cast<unsigned char>(byte), modifiers);
}

void PaintedWindow::Mouse(MouseAction action, QMouseEvent* event) {
    if (m_pClient == nullptr || (action != MouseAction::Move && event->button() != Qt::LeftButton)) return;
    const QPoint at = event->position().toPoint();
    m_pClient->OnMouse(action, {at.x(), at.y()}, ModifiersOf(event->modifiers()), 0);
}

void PaintedWindow::mousePressEvent(QMouseEvent* event) {
    setFocus();
    Mouse(MouseAction::Press, event);
}
void PaintedWindow::mouseMoveEvent(QMouseEvent* event) { Mouse(MouseAction::Move, event); }
void PaintedWindow::mouseReleaseEvent(QMouseEvent* event) { Mouse(MouseAction::Release, event); }
void PaintedWindow::mouseDoubleClickEvent(QMouseEvent* event) { Mouse(MouseAction::DoubleClick, event); }

void PaintedWindow::wheelEvent(QWheelEvent* event) {
    if (m_pClient == nullptr) return;
    const QPoint at = event->position().toPoint();
    m_pClient->OnMouse(MouseAction::Wheel, {at.x(), at.y()}, ModifiersOf(event->modifiers()), event->angleDelta().y() / 120);
}

void PaintedWindow::contextMenuEvent(QContextMenuEvent* event) {
    if (m_pClient == nullptr) return;
    m_pClient->OnMouse(MouseAction::ContextMenu, {event->pos().x(), event->pos().y()}, {}, 0);
}

}  // namespace ny::studio
