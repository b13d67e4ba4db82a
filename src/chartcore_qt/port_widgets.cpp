#include "chartcore_qt/port_widgets.h"

#include <QApplication>
#include <QCloseEvent>
#include <QCursor>
#include <QFocusEvent>
#include <QGuiApplication>
#include <QInputMethod>
#include <QInputMethodEvent>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QPaintEvent>
#include <QResizeEvent>
#include <QWheelEvent>
#include <QWindow>

#include <algorithm>
#include <cstring>

#include "chartcore_qt/conversions.h"
#include "chartcore_qt/key_input.h"

namespace chartcore {
namespace qt {
namespace internal {

namespace {

// Caret width of a text view when it asks for none.
constexpr int kMinCaretWidth = 1;

// Paint events running now: a window asked to paint at once from inside
// another's paint (UpdateWindow from a handler the paint set off) is painted
// with the next cycle instead, as Qt cannot nest paints.
int g_paintDepth = 0;

// Counts a handler of the backend's widgets as running, so a window destroyed
// from inside it is deleted later rather than under the handler's feet.
class EventScope {
 public:
  explicit EventScope(QtPortFactory* factory) : m_pFactory(factory) {
    if (m_pFactory != nullptr) m_pFactory->EnterEvent();
  }
  ~EventScope() {
    if (m_pFactory != nullptr) m_pFactory->LeaveEvent();
  }
  EventScope(const EventScope&) = delete;
  EventScope& operator=(const EventScope&) = delete;

 private:
  QtPortFactory* m_pFactory;
};

UINT MouseKeyFlags(Qt::MouseButtons buttons, Qt::KeyboardModifiers modifiers) {
  UINT flags = 0;
  if (buttons.testFlag(Qt::LeftButton)) flags |= MK_LBUTTON;
  if (buttons.testFlag(Qt::RightButton)) flags |= MK_RBUTTON;
  if (modifiers.testFlag(Qt::ShiftModifier)) flags |= MK_SHIFT;
  if (modifiers.testFlag(Qt::ControlModifier)) flags |= MK_CONTROL;
  return flags;
}

}  // namespace

// ===========================================================================
// QtWindowPort
// ===========================================================================
QtWindowPort::QtWindowPort(QtPortFactory* factory, CWnd* owner) : m_pFactory(factory), m_pOwner(owner) {
  std::memset(&m_lfMonospace, 0, sizeof(m_lfMonospace));
  m_pFactory->AddPort(this);
}

QtWindowPort::~QtWindowPort() {
  Destroy();
  m_pFactory->RemovePort(this);
}

QtWindowPort* QtWindowPort::Of(const CWnd* wnd) {
  return wnd != nullptr ? dynamic_cast<QtWindowPort*>(wnd->GetPort()) : nullptr;
}

PortFrame* QtWindowPort::Frame() const { return m_frame.data(); }
PortClient* QtWindowPort::Client() const { return m_client.data(); }

void QtWindowPort::Create(const chartcore::WindowCreateInfo& info) {
  m_pEdit = dynamic_cast<CCrystalEditWnd*>(m_pOwner);
  m_pView = dynamic_cast<CCrystalTextWnd*>(m_pOwner);
  if (m_pView != nullptr) {
    m_bDefaultMonospace = true;
    m_lfMonospace = MonospaceLogFont(10);
  }
  QtWindowPort* parentPort = Of(info.parent);
  QWidget* qtParent = parentPort != nullptr ? parentPort->Client() : nullptr;
  Qt::WindowFlags flags = Qt::Widget;
  if ((info.style & WS_CHILD) == 0) {
    if ((info.style & WS_POPUP) != 0) {
      // The list and the tip: shown beside the caret, never taking the
      // keyboard from the editor.
      m_bPopup = true;
      flags = Qt::ToolTip | Qt::FramelessWindowHint | Qt::WindowDoesNotAcceptFocus;
    } else {
      flags = Qt::Window;
    }
  }
  m_frame = new PortFrame(this, qtParent, flags);
  if (m_bPopup) m_frame->setAttribute(Qt::WA_ShowWithoutActivating);
  m_client = new PortClient(this, m_frame);
  if ((info.style & WS_VSCROLL) != 0) {
    m_vbar = new QScrollBar(Qt::Vertical, m_frame);
    m_vbar->setFocusPolicy(Qt::NoFocus);
    // The bar is emitting: a window destroyed from its WM_VSCROLL must not
    // delete the bar under it.
    QObject::connect(m_vbar.data(), &QScrollBar::valueChanged, m_frame.data(),
                     [this, alive = m_alive, factory = m_pFactory](int value) {
                       EventScope scope(factory);
                       if (*alive) ScrollFromBar(Qt::Vertical, value);
                     });
  }
  if ((info.style & WS_HSCROLL) != 0) {
    m_hbar = new QScrollBar(Qt::Horizontal, m_frame);
    m_hbar->setFocusPolicy(Qt::NoFocus);
    QObject::connect(m_hbar.data(), &QScrollBar::valueChanged, m_frame.data(),
                     [this, alive = m_alive, factory = m_pFactory](int value) {
                       EventScope scope(factory);
                       if (*alive) ScrollFromBar(Qt::Horizontal, value);
                     });
  }
  if (!info.text.IsEmpty()) m_frame->setWindowTitle(ToQString(info.text));
  CRect rect = info.rect;
  rect.NormalizeRect();
  m_frame->setGeometry(ToQRect(rect));
  LayoutFrame();
  SyncScrollBars();
}

void QtWindowPort::Destroy() {
  if (!*m_alive) return;
  *m_alive = false;
  for (auto& entry : m_timers) {
    if (entry.second) entry.second->stop();
  }
  m_timers.clear();
  if (m_blink) m_blink->stop();
  if (m_client) m_client->Detach();
  PortFrame* frame = m_frame.data();
  if (frame != nullptr) {
    frame->Detach();
    frame->hide();
    // A window may destroy itself from one of its own handlers (WM_CLOSE):
    // its widgets then go once the handler has returned.
    if (m_pFactory->InEvent()) {
      frame->deleteLater();
    } else {
      delete frame;
    }
  }
  m_frame.clear();
  m_client.clear();
}

void QtWindowPort::Show(int nCmdShow) {
  if (!m_frame) return;
  if (nCmdShow == SW_HIDE) {
    m_frame->hide();
    return;
  }
  const bool activate = !m_bPopup && nCmdShow != SW_SHOWNA && nCmdShow != SW_SHOWNOACTIVATE;
  m_frame->setAttribute(Qt::WA_ShowWithoutActivating, !activate);
  m_frame->show();
}

bool QtWindowPort::IsVisible() const { return m_frame && !m_frame->isHidden(); }

void QtWindowPort::Move(const CRect& rect) {
  if (!m_frame) return;
  CRect r = rect;
  r.NormalizeRect();
  m_frame->setGeometry(ToQRect(r));
  LayoutFrame();
}

CRect QtWindowPort::GetWindowRect() const { return m_frame ? ToCRect(m_frame->geometry()) : CRect(); }

CRect QtWindowPort::GetClientRect() const {
  if (!m_frame) return CRect();
  const int barWidth = m_vbar ? m_vbar->sizeHint().width() : 0;
  const int barHeight = m_hbar ? m_hbar->sizeHint().height() : 0;
  return CRect(0, 0, std::max(0, m_frame->width() - barWidth), std::max(0, m_frame->height() - barHeight));
}

CPoint QtWindowPort::ClientToScreen(CPoint pt) const {
  if (!m_client) return pt;
  return ToCPoint(m_client->mapToGlobal(ToQPoint(pt)));
}

CPoint QtWindowPort::ScreenToClient(CPoint pt) const {
  if (!m_client) return pt;
  return ToCPoint(m_client->mapFromGlobal(ToQPoint(pt)));
}

void QtWindowPort::SetText(const CString& text) {
  if (m_frame) m_frame->setWindowTitle(ToQString(text));
}

void QtWindowPort::SetEnabled(bool enabled) {
  if (m_frame) m_frame->setEnabled(enabled);
}

void QtWindowPort::LayoutFrame() {
  if (!m_frame || !m_client) return;
  const CRect client = GetClientRect();
  m_client->setGeometry(0, 0, client.Width(), client.Height());
  if (m_vbar) m_vbar->setGeometry(client.Width(), 0, m_frame->width() - client.Width(), client.Height());
  if (m_hbar) m_hbar->setGeometry(0, client.Height(), client.Width(), m_frame->height() - client.Height());
}

// ---------------------------------------------------------------------------
// Painting
// ---------------------------------------------------------------------------
void QtWindowPort::Invalidate(const CRect* rect) {
  if (!m_client) return;
  if (rect == nullptr) {
    m_dirty = QRegion(m_client->rect());
    m_client->update();
    return;
  }
  const QRect r = ToQRect(*rect);
  if (r.isEmpty()) return;
  m_dirty += r;
  m_client->update(r);
}

void QtWindowPort::Update() {
  if (!m_client || g_paintDepth > 0 || m_dirty.isEmpty() || !m_client->isVisible()) return;
  m_client->repaint(m_dirty);
}

CRect QtWindowPort::BeginPaint() {
  // Outside a paint event the whole client area is what a paint would cover.
  if (m_pPainter == nullptr) return GetClientRect();
  return ToCRect(m_rcPaint);
}

void QtWindowPort::EndPaint() {}

void QtWindowPort::Paint(QPainter& painter, const QRect& rect) {
  painter.fillRect(rect, ToQColor(m_pFactory->GetSysColor(COLOR_WINDOW)));
  m_pPainter = &painter;
  m_rcPaint = rect;
  m_dirty = QRegion();
  const std::shared_ptr<bool> alive = m_alive;
  ++g_paintDepth;
  m_pOwner->SendMessage(WM_PAINT);
  --g_paintDepth;
  if (!*alive) return;
  m_pPainter = nullptr;
  const QRect caret = CaretRect();
  if (!caret.isEmpty() && m_bCaretShown && m_bBlinkOn && caret.intersects(rect)) {
    // Inverted like a system caret, so it shows on any background.
    painter.save();
    painter.setCompositionMode(QPainter::CompositionMode_Difference);
    painter.fillRect(caret, Qt::white);
    painter.restore();
  }
  SyncScrollBars();
}

void QtWindowPort::FillRect(const CRect& rect, COLORREF color) {
  if (m_pPainter == nullptr) {
    Invalidate(&rect);
    return;
  }
  m_pPainter->fillRect(ToQRect(rect), ToQColor(color));
}

void QtWindowPort::FrameRect(const CRect& rect, COLORREF color) {
  if (m_pPainter == nullptr) {
    Invalidate(&rect);
    return;
  }
  const QRect r = ToQRect(rect);
  if (r.isEmpty()) return;
  const QColor c = ToQColor(color);
  m_pPainter->fillRect(QRect(r.left(), r.top(), r.width(), 1), c);
  m_pPainter->fillRect(QRect(r.left(), r.bottom(), r.width(), 1), c);
  m_pPainter->fillRect(QRect(r.left(), r.top(), 1, r.height()), c);
  m_pPainter->fillRect(QRect(r.right(), r.top(), 1, r.height()), c);
}

void QtWindowPort::DrawLine(CPoint from, CPoint to, COLORREF color, int width) {
  if (m_pPainter == nullptr) {
    CRect area(std::min(from.x, to.x) - width, std::min(from.y, to.y) - width, std::max(from.x, to.x) + width + 1,
               std::max(from.y, to.y) + width + 1);
    Invalidate(&area);
    return;
  }
  if (from == to) return;
  // A flat cap ends the line at its end point, which LineTo leaves out.
  QPen pen(ToQColor(color));
  pen.setWidth(std::max(1, width));
  pen.setCapStyle(Qt::FlatCap);
  m_pPainter->save();
  m_pPainter->setRenderHint(QPainter::Antialiasing, false);
  m_pPainter->setPen(pen);
  m_pPainter->drawLine(ToQPoint(from), ToQPoint(to));
  m_pPainter->restore();
}

const LOGFONT* QtWindowPort::FontOrDefault(const LOGFONT* font) const {
  if (font != nullptr) return font;
  return m_bDefaultMonospace ? &m_lfMonospace : nullptr;
}

namespace {

// Characters that shaping never joins, splits or moves: plain Latin text
// (no combining marks) and Hangul.
bool IsPlainChar(wchar_t ch) {
  const auto cp = static_cast<char32_t>(ch);
  return (cp >= 0x20 && cp < 0x300) || (cp >= 0x3130 && cp <= 0x318F) || (cp >= 0xAC00 && cp <= 0xD7A3);
}

}  // namespace

void QtWindowPort::DrawText(int x, int y, const wchar_t* text, int length, const LOGFONT* font, COLORREF color,
                            bool opaque, COLORREF background) {
  if (text == nullptr || length < 1) return;
  const FontData& data = FontDataOf(FontOrDefault(font));
  const QFontMetrics& fm = data.Metrics();
  int sum = 0;
  bool plain = data.IsFixedPitch();
  for (int i = 0; i < length; ++i) {
    sum += data.Advance(text[i]);
    plain = plain && IsPlainChar(text[i]);
  }
  if (m_pPainter == nullptr) {
    CRect area(x, y, x + sum, y + fm.height());
    Invalidate(&area);
    return;
  }
  const QString run = ToQString(text, length);
  if (opaque) m_pPainter->fillRect(QRect(x, y, sum, fm.height()), ToQColor(background));
  m_pPainter->setFont(data.Font());
  m_pPainter->setPen(ToQColor(color));
  const int baseline = y + fm.ascent();
  // The view places every character at the sum of the advances before it. A
  // fixed-pitch run of plain characters lands there as shaped; any other run
  // is measured, and drawn character by character when its shaped width
  // differs.
  if (plain || sum == fm.horizontalAdvance(run)) {
    m_pPainter->drawStaticText(QPoint(x, y), data.Layout(run));
    return;
  }
  int pen = x;
  for (int i = 0; i < length; ++i) {
    m_pPainter->drawText(QPoint(pen, baseline), ToQString(text + i, 1));
    pen += data.Advance(text[i]);
  }
}

CSize QtWindowPort::MeasureText(const LOGFONT* font, const wchar_t* text, int length) {
  const FontData& data = FontDataOf(FontOrDefault(font));
  const int height = data.Metrics().height();
  if (text == nullptr || length < 1) return CSize(0, height);
  if (length == 1) return CSize(data.Advance(text[0]), height);
  return CSize(data.Metrics().horizontalAdvance(ToQString(text, length)), height);
}

void QtWindowPort::GetTextMetrics(const LOGFONT* font, TEXTMETRIC* metrics) {
  if (metrics == nullptr) return;
  const LOGFONT* lf = FontOrDefault(font);
  const QFontMetrics& fm = FontMetricsOf(lf);
  const QFont qfont = FontFromLogFont(lf);
  std::memset(metrics, 0, sizeof(*metrics));
  metrics->tmHeight = fm.height();
  metrics->tmAscent = fm.ascent();
  metrics->tmDescent = fm.descent();
  const int em = qfont.pixelSize() > 0 ? qfont.pixelSize() : fm.height();
  metrics->tmInternalLeading = std::max(0, fm.height() - em);
  metrics->tmExternalLeading = std::max(0, fm.leading());
  metrics->tmAveCharWidth = std::max(1, fm.averageCharWidth());
  metrics->tmMaxCharWidth = std::max(1, fm.maxWidth());
  metrics->tmWeight = qfont.weight();
}

// ---------------------------------------------------------------------------
// Timers
// ---------------------------------------------------------------------------
void QtWindowPort::SetTimer(UINT_PTR id, UINT elapse) {
  if (!m_client) return;
  QPointer<QTimer>& timer = m_timers[id];
  if (!timer) {
    timer = new QTimer(m_client);
    // A window timer never fires early; Qt's coarse timers may by 5 %.
    timer->setTimerType(Qt::PreciseTimer);
    const std::shared_ptr<bool> alive = m_alive;
    CWnd* owner = m_pOwner;
    QtPortFactory* factory = m_pFactory;
    // The timer is emitting: a window destroyed from its WM_TIMER must not
    // delete the timer under it.
    QObject::connect(timer.data(), &QTimer::timeout, m_client.data(), [alive, owner, factory, id] {
      EventScope scope(factory);
      if (*alive) owner->SendMessage(WM_TIMER, static_cast<WPARAM>(id), 0);
    });
  }
  timer->start(static_cast<int>(std::min<UINT>(elapse, 0x7FFFFFFF)));
}

bool QtWindowPort::KillTimer(UINT_PTR id) {
  auto it = m_timers.find(id);
  if (it == m_timers.end() || !it->second || !it->second->isActive()) return false;
  it->second->stop();
  return true;
}

// ---------------------------------------------------------------------------
// Caret
// ---------------------------------------------------------------------------
QRect QtWindowPort::CaretRect() const {
  if (!m_bHasCaret) return QRect();
  return QRect(m_ptCaret.x, m_ptCaret.y, std::max(kMinCaretWidth, m_sizeCaret.width()), std::max(1, m_sizeCaret.height()));
}

void QtWindowPort::UpdateCaretArea() {
  const QRect r = CaretRect();
  if (m_client && !r.isEmpty()) m_client->update(r);
}

void QtWindowPort::RestartBlink() {
  m_bBlinkOn = true;
  if (!m_client) return;
  const int flash = QApplication::cursorFlashTime();
  if (!m_bHasCaret || !m_bCaretShown || flash <= 0) {
    if (m_blink) m_blink->stop();
    return;
  }
  if (!m_blink) {
    m_blink = new QTimer(m_client);
    QObject::connect(m_blink.data(), &QTimer::timeout, m_client.data(), [this, alive = m_alive] {
      if (!*alive) return;
      m_bBlinkOn = !m_bBlinkOn;
      UpdateCaretArea();
    });
  }
  m_blink->start(flash / 2);
}

void QtWindowPort::CreateCaret(int width, int height) {
  UpdateCaretArea();
  m_bHasCaret = true;
  m_bCaretShown = false;  // a new caret starts hidden, as the system's does
  m_sizeCaret = QSize(width, height);
  RestartBlink();
}

void QtWindowPort::DestroyCaret() {
  UpdateCaretArea();
  m_bHasCaret = false;
  m_bCaretShown = false;
  RestartBlink();
}

void QtWindowPort::SetCaretPos(CPoint pt) {
  if (pt == m_ptCaret) return;
  UpdateCaretArea();
  m_ptCaret = pt;
  UpdateCaretArea();
  RestartBlink();
  // The input method places its candidate window at the caret.
  if (m_client && m_client->hasFocus()) QGuiApplication::inputMethod()->update(Qt::ImCursorRectangle);
}

void QtWindowPort::ShowCaret(bool show) {
  if (m_bCaretShown == show) return;
  m_bCaretShown = show;
  UpdateCaretArea();
  RestartBlink();
}

// ---------------------------------------------------------------------------
// Focus, capture, scrolling, embedding
// ---------------------------------------------------------------------------
void QtWindowPort::SetFocus() {
  if (!m_client || m_bPopup) return;
  QWidget* window = m_client->window();
  if (window != nullptr && window->isVisible() && !window->isActiveWindow()) window->activateWindow();
  m_client->setFocus(Qt::OtherFocusReason);
}

void QtWindowPort::SetCapture(bool /*capture*/) {
  // Qt already sends every mouse event of a press to the widget that got the
  // press, which is all the editor's drags ask of a capture.
}

void QtWindowPort::SyncScrollBars() {
  if (m_pView == nullptr || (!m_vbar && !m_hbar)) return;
  m_bSyncing = true;
  if (m_vbar) {
    const int lines = m_pView->GetLineCount();
    const int page = m_pView->GetScreenLines();
    const int top = m_pView->GetTopLine();
    m_vbar->setRange(0, std::max(top, std::max(0, lines - page)));
    m_vbar->setPageStep(std::max(1, page));
    m_vbar->setSingleStep(1);
    m_vbar->setValue(top);
  }
  if (m_hbar) {
    const CRect client = GetClientRect();
    const int width = std::max(1, client.Width() - m_pView->GetMarginWidth());
    const long long content = static_cast<long long>(m_pView->GetMaxLineLength()) * m_pView->GetCharWidth();
    const int offset = m_pView->GetHorzOffset();
    const int maximum = static_cast<int>(std::min<long long>(0x3FFFFFFF, std::max<long long>(0, content - width)));
    m_hbar->setRange(0, std::max(offset, maximum));
    m_hbar->setPageStep(width);
    m_hbar->setSingleStep(std::max(1, m_pView->GetCharWidth()));
    m_hbar->setValue(offset);
  }
  m_bSyncing = false;
}

void QtWindowPort::ScrollFromBar(Qt::Orientation orientation, int value) {
  if (m_bSyncing || !*m_alive) return;
  if (m_pView != nullptr) {
    // The view's own calls take 32-bit positions; a thumb message carries 16.
    if (orientation == Qt::Vertical) {
      m_pView->ScrollToLine(value);
    } else {
      m_pView->ScrollToHorz(value);
    }
    return;
  }
  const UINT message = orientation == Qt::Vertical ? WM_VSCROLL : WM_HSCROLL;
  m_pOwner->SendMessage(message, MAKEWPARAM(SB_THUMBTRACK, std::min(value, 0x7FFF)), 0);
}

bool QtWindowPort::Embed(QWidget* host) {
  if (!m_frame || host == nullptr) return false;
  m_frame->setParent(host, Qt::Widget);
  m_bPopup = false;
  LayoutFrame();
  return true;
}

// ===========================================================================
// PortFrame
// ===========================================================================
PortFrame::PortFrame(QtWindowPort* port, QWidget* parent, Qt::WindowFlags flags)
    : QWidget(parent, flags), m_pPort(port), m_pFactory(port->Factory()) {
  setAttribute(Qt::WA_DeleteOnClose, false);
}

bool PortFrame::event(QEvent* event) {
  EventScope scope(m_pFactory);
  return QWidget::event(event);
}

void PortFrame::resizeEvent(QResizeEvent* event) {
  QWidget::resizeEvent(event);
  if (m_pPort != nullptr) m_pPort->LayoutFrame();
}

void PortFrame::closeEvent(QCloseEvent* event) {
  // The window decides, as with WM_CLOSE: by default it destroys itself.
  event->ignore();
  if (m_pPort != nullptr) m_pPort->Owner()->SendMessage(WM_CLOSE);
}

// ===========================================================================
// PortClient
// ===========================================================================
PortClient::PortClient(QtWindowPort* port, QWidget* parent)
    : QWidget(parent), m_pPort(port), m_pFactory(port->Factory()) {
  setAttribute(Qt::WA_OpaquePaintEvent);
  setAutoFillBackground(false);
  setMouseTracking(true);
  setFocusPolicy(port->IsPopup() ? Qt::NoFocus : Qt::StrongFocus);
  if (port->Edit() != nullptr) {
    setAttribute(Qt::WA_InputMethodEnabled);
    setCursor(Qt::IBeamCursor);
  }
}

bool PortClient::event(QEvent* event) {
  EventScope scope(m_pFactory);
  if (event->type() == QEvent::ShortcutOverride && m_pPort != nullptr && m_pPort->Edit() != nullptr) {
    // Keys the editor itself handles win over the host's shortcuts: typing,
    // and the clipboard, undo and select-all keys. Function keys (F3 among
    // them) stay the host's.
    auto* key = static_cast<QKeyEvent*>(event);
    const Qt::KeyboardModifiers mods = key->modifiers() & ~Qt::KeypadModifier;
    const int k = key->key();
    const bool plain = mods == Qt::NoModifier || mods == Qt::ShiftModifier;
    const bool editing = mods == Qt::ControlModifier &&
                         (k == Qt::Key_A || k == Qt::Key_C || k == Qt::Key_X || k == Qt::Key_V || k == Qt::Key_Z ||
                          k == Qt::Key_Y || k == Qt::Key_Insert || k == Qt::Key_Left || k == Qt::Key_Right ||
                          k == Qt::Key_Home || k == Qt::Key_End);
    const bool redo = mods == (Qt::ControlModifier | Qt::ShiftModifier) && k == Qt::Key_Z;
    if ((plain && !(k >= Qt::Key_F1 && k <= Qt::Key_F35)) || editing || redo) {
      event->accept();
      return true;
    }
  }
  return QWidget::event(event);
}

BOOL PortClient::Dispatch(UINT message, WPARAM wParam, LPARAM lParam) {
  MSG msg;
  std::memset(&msg, 0, sizeof(msg));
  msg.hwnd = m_pPort->Owner()->GetSafeHwnd();
  msg.message = message;
  msg.wParam = wParam;
  msg.lParam = lParam;
  msg.time = m_pFactory->GetTickCount();
  const QPoint global = QCursor::pos();
  msg.pt.x = global.x();
  msg.pt.y = global.y();
  return chartcore::DispatchWindowMessage(&msg);
}

void PortClient::AfterInput() {
  if (m_pPort != nullptr) m_pPort->SyncScrollBars();
}

void PortClient::paintEvent(QPaintEvent* event) {
  QPainter painter(this);
  if (m_pPort == nullptr) {
    painter.fillRect(event->rect(), palette().base());
    return;
  }
  m_pPort->Paint(painter, event->rect());
}

void PortClient::resizeEvent(QResizeEvent* event) {
  QWidget::resizeEvent(event);
  if (m_pPort == nullptr) return;
  m_pPort->Owner()->SendMessage(WM_SIZE, 0, MAKELPARAM(width(), height()));
}

void PortClient::focusInEvent(QFocusEvent* event) {
  QWidget::focusInEvent(event);
  if (m_pPort == nullptr) return;
  CWnd* owner = m_pPort->Owner();
  if (m_pFactory->GetFocusWindow() != owner) m_pFactory->SetFocusWindow(owner);
}

void PortClient::focusOutEvent(QFocusEvent* event) {
  QWidget::focusOutEvent(event);
  if (m_pPort == nullptr) return;
  const std::shared_ptr<bool> alive = m_pPort->AliveToken();
  // The platform has already moved its input context on: commit here.
  FinishComposition(false);
  if (!*alive) return;
  // A menu or popup opening keeps the focus where it was, as on Windows.
  if (event->reason() == Qt::PopupFocusReason || event->reason() == Qt::MenuBarFocusReason) return;
  if (m_pFactory->GetFocusWindow() == m_pPort->Owner()) m_pFactory->SetFocusWindow(nullptr);
}

// ---------------------------------------------------------------------------
// Keys
// ---------------------------------------------------------------------------
void PortClient::keyPressEvent(QKeyEvent* event) {
  if (m_pPort == nullptr) {
    QWidget::keyPressEvent(event);
    return;
  }
  const std::shared_ptr<bool> alive = m_pPort->AliveToken();
  const int key = event->key();
  const Qt::KeyboardModifiers mods = event->modifiers();
  // Some platforms leave a modifier out of its own key-down; it is down.
  Qt::KeyboardModifiers down = mods;
  if (key == Qt::Key_Shift) down |= Qt::ShiftModifier;
  if (key == Qt::Key_Control) down |= Qt::ControlModifier;
  if (key == Qt::Key_Alt) down |= Qt::AltModifier;
  m_pFactory->NoteModifiers(down);
  if (!IsModifierKey(key)) {
    // A key the input method let through ends the composition first, so
    // the syllable lands before what the key does (a blank, a new line, a
    // caret move), exactly once.
    if (m_pPort->Edit() != nullptr && m_pPort->Edit()->IsComposing()) {
      FinishComposition(true);
      if (!*alive) return;
    } else {
      m_selfCommitted.clear();
    }
  }
  const UINT vk = VirtualKeyFromQt(key, mods);
  const bool alt = down.testFlag(Qt::AltModifier) && !down.testFlag(Qt::ControlModifier);
  BOOL consumed = FALSE;
  if (vk != 0) {
    m_pFactory->NoteKey(vk, true);
    const LPARAM lParam = KeyMessageLParam(false, event->isAutoRepeat(), IsExtendedKey(key, mods), alt);
    consumed = Dispatch(alt ? WM_SYSKEYDOWN : WM_KEYDOWN, vk, lParam);
    if (!*alive) return;
  }
  // The system's translation: a key-down that a window consumed makes no
  // character, so Enter, Tab and Space handled on key-down insert once.
  if (!consumed) {
    const LPARAM lParam = KeyMessageLParam(false, event->isAutoRepeat(), false, false);
    for (wchar_t ch : TranslatedChars(key, mods, event->text())) {
      Dispatch(WM_CHAR, static_cast<WPARAM>(ch), lParam);
      if (!*alive) return;
    }
  }
  event->accept();
  AfterInput();
}

void PortClient::keyReleaseEvent(QKeyEvent* event) {
  if (m_pPort == nullptr || event->isAutoRepeat()) {
    QWidget::keyReleaseEvent(event);
    return;
  }
  const std::shared_ptr<bool> alive = m_pPort->AliveToken();
  const Qt::KeyboardModifiers mods = event->modifiers();
  const UINT vk = VirtualKeyFromQt(event->key(), mods);
  if (vk == 0) return;
  m_pFactory->NoteKey(vk, false);
  // The modifier released is no longer down for handlers of its key-up.
  Qt::KeyboardModifiers after = mods;
  if (vk == VK_SHIFT) after &= ~Qt::ShiftModifier;
  if (vk == VK_CONTROL) after &= ~Qt::ControlModifier;
  if (vk == VK_MENU) after &= ~Qt::AltModifier;
  m_pFactory->NoteModifiers(after);
  const bool alt = mods.testFlag(Qt::AltModifier) && !mods.testFlag(Qt::ControlModifier);
  Dispatch(alt ? WM_SYSKEYUP : WM_KEYUP, vk, KeyMessageLParam(true, false, IsExtendedKey(event->key(), mods), alt));
  if (!*alive) return;
  event->accept();
  AfterInput();
}

// ---------------------------------------------------------------------------
// Mouse
// ---------------------------------------------------------------------------
void PortClient::SendMouse(UINT message, QMouseEvent* event) {
  m_pFactory->NoteModifiers(event->modifiers());
  m_pFactory->NoteMouseButtons(event->buttons());
  const QPoint pos = event->position().toPoint();
  Dispatch(message, MouseKeyFlags(event->buttons(), event->modifiers()), MAKELPARAM(pos.x(), pos.y()));
}

void PortClient::SendButton(QMouseEvent* event, UINT left, UINT right) {
  const std::shared_ptr<bool> alive = m_pPort->AliveToken();
  if (event->button() == Qt::LeftButton) {
    SendMouse(left, event);
  } else if (event->button() == Qt::RightButton) {
    SendMouse(right, event);
  } else {
    return;
  }
  if (*alive) AfterInput();
}

void PortClient::mousePressEvent(QMouseEvent* event) {
  if (m_pPort == nullptr) return;
  const std::shared_ptr<bool> alive = m_pPort->AliveToken();
  // A click elsewhere ends the composition where it was typed.
  FinishComposition(true);
  if (!*alive) return;
  m_selfCommitted.clear();
  SendButton(event, WM_LBUTTONDOWN, WM_RBUTTONDOWN);
}

void PortClient::mouseReleaseEvent(QMouseEvent* event) {
  if (m_pPort != nullptr) SendButton(event, WM_LBUTTONUP, WM_RBUTTONUP);
}

void PortClient::mouseDoubleClickEvent(QMouseEvent* event) {
  // A right double click is a second right press, as without CS_DBLCLKS.
  if (m_pPort != nullptr) SendButton(event, WM_LBUTTONDBLCLK, WM_RBUTTONDOWN);
}

void PortClient::mouseMoveEvent(QMouseEvent* event) {
  if (m_pPort == nullptr) return;
  const std::shared_ptr<bool> alive = m_pPort->AliveToken();
  SendMouse(WM_MOUSEMOVE, event);
  if (!*alive) return;
  if (event->buttons() != Qt::NoButton) AfterInput();
}

void PortClient::wheelEvent(QWheelEvent* event) {
  if (m_pPort == nullptr) return;
  const std::shared_ptr<bool> alive = m_pPort->AliveToken();
  m_pFactory->NoteModifiers(event->modifiers());
  // High-resolution wheels report fractions of a notch: pass whole notches.
  m_nWheelRest += event->angleDelta().y();
  const int notches = m_nWheelRest / 120;
  if (notches == 0) {
    event->accept();
    return;
  }
  m_nWheelRest -= notches * 120;
  const int delta = std::max(-0x7FFF, std::min(0x7FFF, notches * 120));
  const QPoint global = event->globalPosition().toPoint();
  const UINT flags = MouseKeyFlags(event->buttons(), event->modifiers());
  Dispatch(WM_MOUSEWHEEL, MAKEWPARAM(flags, static_cast<WORD>(static_cast<short>(delta))),
           MAKELPARAM(global.x(), global.y()));
  if (!*alive) return;
  event->accept();
  AfterInput();
}

// ---------------------------------------------------------------------------
// Input method
// ---------------------------------------------------------------------------
void PortClient::FinishComposition(bool askPlatform) {
  if (m_pPort == nullptr) return;
  CCrystalEditWnd* edit = m_pPort->Edit();
  if (edit == nullptr || !edit->IsComposing()) return;
  const std::shared_ptr<bool> alive = m_pPort->AliveToken();
  const CString pending = edit->GetCompositionText();
  const bool platform = askPlatform && hasFocus();
  if (platform) {
    QGuiApplication::inputMethod()->commit();
    if (!*alive) return;
  }
  if (!edit->IsComposing()) return;  // the platform's commit arrived
  edit->CommitComposition(pending);
  if (!*alive) return;
  m_selfCommitted = ToQString(pending);
  if (platform) QGuiApplication::inputMethod()->reset();
}

void PortClient::inputMethodEvent(QInputMethodEvent* event) {
  CCrystalEditWnd* edit = m_pPort != nullptr ? m_pPort->Edit() : nullptr;
  if (edit == nullptr) {
    event->ignore();
    return;
  }
  const std::shared_ptr<bool> alive = m_pPort->AliveToken();
  QString commit = event->commitString();
  const QString preedit = event->preeditString();
  // The platform delivering a syllable this window already committed itself
  // (at a key, a click or a focus change) must not add it a second time.
  if (!commit.isEmpty() && preedit.isEmpty() && commit == m_selfCommitted) commit.clear();
  m_selfCommitted.clear();
  if (!commit.isEmpty() && event->replacementLength() > 0) {
    // The commit replaces text around the caret (counted in UTF-16 units).
    const CPoint caret = edit->GetCursorPos();
    const QString line = ToQString(edit->GetLineText(caret.y));
    const int caretUnits = ToQString(edit->GetLineText(caret.y).Left(caret.x)).size();
    const int from = std::max(0, std::min(static_cast<int>(line.size()), caretUnits + event->replacementStart()));
    const int to = std::max(from, std::min(static_cast<int>(line.size()), from + event->replacementLength()));
    const int fromColumn = ToCString(line.left(from)).GetLength();
    const int toColumn = ToCString(line.left(to)).GetLength();
    edit->SetSelection(CPoint(fromColumn, caret.y), CPoint(toColumn, caret.y));
  }
  if (!commit.isEmpty()) {
    edit->CommitComposition(ToCString(commit));
    if (!*alive) return;
  }
  if (!preedit.isEmpty()) {
    edit->SetCompositionText(ToCString(preedit));
  } else if (edit->IsComposing()) {
    edit->CancelComposition();
  }
  if (!*alive) return;
  event->accept();
  QGuiApplication::inputMethod()->update(Qt::ImCursorRectangle);
  AfterInput();
}

QVariant PortClient::inputMethodQuery(Qt::InputMethodQuery query) const {
  CCrystalEditWnd* edit = m_pPort != nullptr ? m_pPort->Edit() : nullptr;
  if (edit == nullptr) return QWidget::inputMethodQuery(query);
  const CPoint caret = edit->GetCursorPos();
  switch (query) {
    case Qt::ImEnabled: return true;
    case Qt::ImCursorRectangle: {
      // Where the composition starts: the candidate window goes below it.
      const CPoint at = edit->TextToClient(caret);
      return QRect(at.x, at.y, 1, edit->GetLineHeight());
    }
    case Qt::ImFont: return font();
    case Qt::ImSurroundingText: return ToQString(edit->GetLineText(caret.y));
    case Qt::ImCursorPosition:
    case Qt::ImAnchorPosition: return static_cast<int>(ToQString(edit->GetLineText(caret.y).Left(caret.x)).size());
    case Qt::ImCurrentSelection: return ToQString(edit->GetSelectedText());
    case Qt::ImHints: return static_cast<int>(Qt::ImhMultiLine);
    default: return QWidget::inputMethodQuery(query);
  }
}

}  // namespace internal
}  // namespace qt
}  // namespace chartcore
