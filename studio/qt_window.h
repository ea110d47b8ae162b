#pragma once
// The window-system interfaces of platform/ on Qt 6 Widgets, for the controls that paint
// themselves: a paint surface over an image in the fixed-width CJK font, the self-painting child
// window with its scroll bars, caret, line list, tip and menu, the clipboard and the timers.
// Text crosses into Qt as UTF-8 here and nowhere else. Everything runs on the GUI thread; the
// widgets belong to their Qt parents.

#include <QAbstractScrollArea>
#include <QColor>
#include <QFont>
#include <QImage>
#include <QListWidget>
#include <QPainter>
#include <QString>
#include <QTimer>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>

#include "platform/timer.h"
#include "platform/window.h"

namespace ny::studio {

QString FromGbk(std::string_view gbk);
std::string ToGbk(const QString& text);
QColor ToQColor(Colour colour);

// The fixed-width font of the editor and the charts: a CJK monospace font at `pixels`.
QFont MonoFont(int pixels = 14);

// Paints on an image, placing every character in its own cells of the font's grid so that a
// double-byte character takes exactly two, whatever the font's advances.
class ImageSurface : public PaintSurface {
public:
    ImageSurface(QImage& image, const QFont& font, std::function<void()> present);

    Size GetSize() const override { return {m_image.width(), m_image.height()}; }
    FontMetrics GetFontMetrics() const override { return m_metrics; }
    void FillRect(const Rect& rect, Colour colour) override;
    void FillRoundRect(const Rect& rect, int corner, Colour colour) override;
    void SetTextColour(Colour colour) override { m_textColour = ToQColor(colour); }
    void DrawText(Point at, std::string_view gbk) override;
    int TextWidth(std::string_view gbk) const override;
    void Present() override;
    // From now on, appends each text drawn to `log`, one line for each call.
    void KeepText(std::string* log) { m_pTextLog = log; }

    static FontMetrics CellMetrics(const QFont& font);

private:
    QImage& m_image;
    QPainter m_painter;
    FontMetrics m_metrics;
    int m_nAscent = 0;
    QColor m_textColour = Qt::black;
    std::function<void()> m_present;
    std::string* m_pTextLog = nullptr;
};

class QtCaret : public Caret {
public:
    explicit QtCaret(QWidget& owner);
    void Create(Size size) override;
    void Destroy() override;
    void Show() override;
    void Hide() override;
    void SetPos(Point clientPos) override;
    bool Exists() const override { return m_bExists; }
    // Draws the bar when it is shown and in the visible half of its blink.
    void Paint(QPainter& painter) const;

private:
    void Refresh();
    QWidget& m_owner;
    QTimer m_blink;
    bool m_bExists = false, m_bShown = false, m_bBlinkOn = true;
    QRect m_rect;
};

class QtClipboard : public Clipboard {
public:
    bool HasText() const override;
    bool GetText(std::string& out) const override;
    void SetText(const std::string& gbk) override;
};

class QtTimer : public Timer {
public:
    void Start(int id, int milliseconds, std::function<void()> callback) override;
    void Stop(int id) override;

private:
    std::map<int, std::unique_ptr<QTimer>> m_timers;
};

class QtPopupMenu : public PopupMenu {
public:
    unsigned Track(const std::vector<MenuItem>& items, Point screen) override;
};

// The list of a referenced indicator's lines, floating over the text. Its named keys and double
// clicks go to the window's client; a character typed in it goes to the text it floats over.
class QtListBox : public QListWidget, public ListBox {
public:
    QtListBox(QWidget* parent, std::function<WindowClient*()> client);
    void Place(const Rect& clientRect) override;
    void Show() override { show(); raise(); }
    void Hide() override { hide(); }
    bool IsVisible() const override { return isVisible(); }
    void SetFocus() override { setFocus(); }
    void Clear() override { clear(); }
    void Insert(int index, const std::string& gbk) override { insertItem(index, FromGbk(gbk)); }
    int Count() const override { return count(); }
    std::string Text(int index) const override;
    int Selected() const override { return currentRow(); }
    void Select(int index) override { setCurrentRow(index); }
    void ClearSelection() override { setCurrentRow(-1); }

protected:
    void keyPressEvent(QKeyEvent* event) override;

private:
    std::function<WindowClient*()> m_client;
};

// The tip: painted once when shown; its text is also the window's accessible description, for
// screen readers (and for a look from outside).
class QtTipWindow : public QWidget, public TipWindow {
public:
    QtTipWindow();
    Size MeasureLine(std::string_view gbk) const override;
    void SetShape(Point screenTopLeft, Size size, int corner) override;
    void ShowNoActivate(std::function<void(PaintSurface&)> painter) override;
    void Hide() override { hide(); }
    bool IsVisible() const override { return isVisible(); }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QImage m_picture;
};

// A child window that a control paints itself in (the script editor), with its scroll bars, its
// caret and the text control's services.
class PaintedWindow : public QAbstractScrollArea, public Window {
public:
    explicit PaintedWindow(QWidget* parent, std::function<void(unsigned code, int id)> notify = {});
    ~PaintedWindow() override;

    Rect GetClientRect() const override;
    FontMetrics GetFontMetrics() const override { return ImageSurface::CellMetrics(m_font); }
    void Invalidate(const Rect& rect) override;
    void InvalidateAll() override { viewport()->update(); }
    void UpdateNow() override { viewport()->repaint(); }
    void SetFocus() override { setFocus(); }
    bool HasFocus() const override { return hasFocus(); }
    void SetCapture() override { grabMouse(); }
    void ReleaseCapture() override { releaseMouse(); }
    Point ClientToScreen(Point client) const override;
    void SetScrollBar(ScrollBarKind bar, const ScrollBarState& state) override;
    void ShiftPicture(int dx, int dy) override;
    PaintSurface& BeginPaint() override;
    void NotifyParent(unsigned code, int controlId) override;
    void SetClient(WindowClient* client) override { m_pClient = client; }
    Caret* GetCaret() override { return &m_caret; }
    Clipboard* GetClipboard() override { return &m_clipboard; }
    PopupMenu* GetPopupMenu() override { return &m_menu; }
    ListBox* GetListBox() override { return m_pList; }
    TipWindow* GetTipWindow() override { return m_pTip.get(); }

    // The picture as last painted, for a look from outside (tests, screenshots).
    const QImage& Picture() const { return m_picture; }

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void inputMethodEvent(QInputMethodEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;
    bool focusNextPrevChild(bool) override { return false; }  // Tab is typed into the text

private:
    void OnScrollAction(ScrollBarKind bar, int action);
    void Mouse(MouseAction action, QMouseEvent* event);
    void TypeText(const QString& text, Modifiers modifiers);

    WindowClient* m_pClient = nullptr;
    std::function<void(unsigned, int)> m_notify;
    QFont m_font;
    QImage m_picture;
    std::unique_ptr<ImageSurface> m_pSurface;
    bool m_bInPaint = false;
    bool m_bShown = false;
    QtCaret m_caret;
    QtClipboard m_clipboard;
    QtPopupMenu m_menu;
    QtListBox* m_pList;
    std::unique_ptr<QtTipWindow> m_pTip;
};

// Modifiers of a Qt event as the platform passes them.
Modifiers ModifiersOf(Qt::KeyboardModifiers modifiers);

}  // namespace ny::studio
