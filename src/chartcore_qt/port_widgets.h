// The widgets behind a Qt window port (internal to the backend).
//
// Each window is two widgets: a frame, which is what is moved, shown and
// hidden, and inside it the client area, which paints and takes the input,
// with the scroll bars of a WS_VSCROLL / WS_HSCROLL window beside it (on
// Windows they belong to the non-client area, so the client rectangle the
// core sees excludes them). The port turns the core's drawing calls into
// QPainter calls during the client's paint event and the client's events into
// the framework's messages.
//
//   // Made by QtPortFactory::CreatePort for every window; never by hand.
//   internal::QtWindowPort* port = internal::QtWindowPort::Of(&editor);
//   QWidget* client = port->Client();
#ifndef CHARTCORE_QT_PORT_WIDGETS_H_
#define CHARTCORE_QT_PORT_WIDGETS_H_

#include <QPointer>
#include <QRegion>
#include <QScrollBar>
#include <QTimer>
#include <QWidget>

#include <map>
#include <memory>

#include "chartcore/platform/window.h"
#include "chartcore/script_editor/text_view.h"
#include "chartcore_qt/qt_backend.h"

class QPainter;

namespace chartcore {
namespace qt {
namespace internal {

class PortFrame;
class PortClient;

// ---------------------------------------------------------------------------
// QtWindowPort
// ---------------------------------------------------------------------------
class QtWindowPort : public chartcore::WindowPort {
 public:
  QtWindowPort(QtPortFactory* factory, CWnd* owner);
  ~QtWindowPort() override;

  // The Qt port of a window, or nullptr.
  static QtWindowPort* Of(const CWnd* wnd);

  void Create(const chartcore::WindowCreateInfo& info) override;
  void Destroy() override;
  void Show(int nCmdShow) override;
  bool IsVisible() const override;
  void Move(const CRect& rect) override;
  CRect GetWindowRect() const override;
  CRect GetClientRect() const override;
  CPoint ClientToScreen(CPoint pt) const override;
  CPoint ScreenToClient(CPoint pt) const override;
  void SetText(const CString& text) override;
  void SetEnabled(bool enabled) override;
  void Invalidate(const CRect* rect) override;
  void Update() override;
  CRect BeginPaint() override;
  void EndPaint() override;
  void FillRect(const CRect& rect, COLORREF color) override;
  void FrameRect(const CRect& rect, COLORREF color) override;
  void DrawLine(CPoint from, CPoint to, COLORREF color, int width) override;
  void DrawText(int x, int y, const wchar_t* text, int length, const LOGFONT* font, COLORREF color, bool opaque,
                COLORREF background) override;
  CSize MeasureText(const LOGFONT* font, const wchar_t* text, int length) override;
  void GetTextMetrics(const LOGFONT* font, TEXTMETRIC* metrics) override;
  void SetTimer(UINT_PTR id, UINT elapse) override;
  bool KillTimer(UINT_PTR id) override;
  void CreateCaret(int width, int height) override;
  void DestroyCaret() override;
  void SetCaretPos(CPoint pt) override;
  CPoint GetCaretPos() const override { return m_ptCaret; }
  void ShowCaret(bool show) override;
  void SetFocus() override;
  void SetCapture(bool capture) override;

  CWnd* Owner() const { return m_pOwner; }
  QtPortFactory* Factory() const { return m_pFactory; }
  PortFrame* Frame() const;
  PortClient* Client() const;
  // False once the port is destroyed: handlers that called into the core
  // check it before touching the port again.
  std::shared_ptr<bool> AliveToken() const { return m_alive; }
  bool IsPopup() const { return m_bPopup; }
  // The editor and the text view behind the window, when it is one.
  CCrystalEditWnd* Edit() const { return m_pEdit; }
  CCrystalTextWnd* View() const { return m_pView; }

  // Called by the client's paint event: fills the area, lets the window
  // paint (WM_PAINT) and draws the caret on top.
  void Paint(QPainter& painter, const QRect& rect);
  // Places the client and the scroll bars inside the frame.
  void LayoutFrame();
  // Brings the scroll bars in line with the text view's scrolling.
  void SyncScrollBars();
  // The caret rectangle in client pixels (empty when there is none).
  QRect CaretRect() const;
  bool Embed(QWidget* host);

 private:
  const LOGFONT* FontOrDefault(const LOGFONT* font) const;
  void ScrollFromBar(Qt::Orientation orientation, int value);
  void RestartBlink();
  void UpdateCaretArea();

  QtPortFactory* m_pFactory;
  CWnd* m_pOwner;
  CCrystalEditWnd* m_pEdit = nullptr;
  CCrystalTextWnd* m_pView = nullptr;
  std::shared_ptr<bool> m_alive = std::make_shared<bool>(true);
  QPointer<PortFrame> m_frame;
  QPointer<PortClient> m_client;
  QPointer<QScrollBar> m_vbar;
  QPointer<QScrollBar> m_hbar;
  bool m_bPopup = false;
  bool m_bSyncing = false;
  // Text views without a font of their own draw in the editor font.
  bool m_bDefaultMonospace = false;
  LOGFONT m_lfMonospace;

  // Painting.
  QPainter* m_pPainter = nullptr;
  QRect m_rcPaint;
  QRegion m_dirty;

  // Timers by id; they live as children of the client widget.
  std::map<UINT_PTR, QPointer<QTimer>> m_timers;

  // The caret.
  bool m_bHasCaret = false;
  bool m_bCaretShown = false;
  bool m_bBlinkOn = true;
  QSize m_sizeCaret;
  CPoint m_ptCaret;
  QPointer<QTimer> m_blink;
};

// ---------------------------------------------------------------------------
// PortFrame: the outer widget
// ---------------------------------------------------------------------------
class PortFrame : public QWidget {
  Q_OBJECT

 public:
  PortFrame(QtWindowPort* port, QWidget* parent, Qt::WindowFlags flags);
  void Detach() { m_pPort = nullptr; }

 protected:
  bool event(QEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;
  void closeEvent(QCloseEvent* event) override;

 private:
  QtWindowPort* m_pPort;
  QtPortFactory* m_pFactory;
};

// ---------------------------------------------------------------------------
// PortClient: the client area
// ---------------------------------------------------------------------------
class PortClient : public QWidget {
  Q_OBJECT

 public:
  PortClient(QtWindowPort* port, QWidget* parent);
  void Detach() { m_pPort = nullptr; }
  QtWindowPort* Port() const { return m_pPort; }

  // Ends an input-method composition of an editor: the syllable being
  // composed is committed once, where it was composed. With askPlatform the
  // platform's input method is asked first to deliver its own commit (it
  // then arrives as an input-method event) and is reset afterwards, so it
  // cannot deliver the same syllable again.
  void FinishComposition(bool askPlatform);

 protected:
  bool event(QEvent* event) override;
  void paintEvent(QPaintEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;
  void focusInEvent(QFocusEvent* event) override;
  void focusOutEvent(QFocusEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  void keyReleaseEvent(QKeyEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  void mouseReleaseEvent(QMouseEvent* event) override;
  void mouseDoubleClickEvent(QMouseEvent* event) override;
  void mouseMoveEvent(QMouseEvent* event) override;
  void wheelEvent(QWheelEvent* event) override;
  void inputMethodEvent(QInputMethodEvent* event) override;
  QVariant inputMethodQuery(Qt::InputMethodQuery query) const override;

 private:
  // Delivers a message as the message loop does (PreTranslateMessage first);
  // returns whether it was consumed. The port may be gone afterwards: callers
  // check its alive token before touching it again.
  BOOL Dispatch(UINT message, WPARAM wParam, LPARAM lParam);
  void SendMouse(UINT message, QMouseEvent* event);
  // The left or right button's message for a press, release or double click.
  void SendButton(QMouseEvent* event, UINT left, UINT right);
  void AfterInput();

  QtWindowPort* m_pPort;
  QtPortFactory* m_pFactory;
  // What this window committed of a composition on its own, until the next
  // input-method event: the platform may still deliver the same commit.
  QString m_selfCommitted;
  // Wheel movement not yet worth a message (Windows' notch is 120).
  int m_nWheelRest = 0;
};

}  // namespace internal
}  // namespace qt
}  // namespace chartcore

#endif  // CHARTCORE_QT_PORT_WIDGETS_H_
