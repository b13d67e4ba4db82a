// The Qt 6 window backend: every CWnd becomes a real Qt widget.
//
// Installing the backend makes the windows the core creates from then on
// (the script editor, its completion list and its parameter tip, any other
// CWnd) real widgets: they paint through QPainter with real font metrics,
// take keys, mouse and input-method events and hand them to the core as the
// framework's messages, run their timers on QTimer and use the system
// clipboard. The screen's pixels per inch come from the screen the editor
// window is on. A QApplication must exist before the backend is installed.
//
//   QApplication app(argc, argv);
//   chartcore::qt::InstallQtBackend();
//   CScriptEdit edit;
//   edit.InitWindow();                          // a top-level editor window
//   edit.InitBasicFunctionList(L"/home/u/ws", L"", L"", 2);
//   edit.SetFocus();
//   return app.exec();
#ifndef CHARTCORE_QT_QT_BACKEND_H_
#define CHARTCORE_QT_QT_BACKEND_H_

#include <QWidget>
#include <Qt>

#include <memory>

#include "chartcore/platform/window.h"
#include "chartcore_qt/export.h"

namespace chartcore {
namespace qt {

namespace internal {
class QtWindowPort;
}  // namespace internal

// ---------------------------------------------------------------------------
// The port factory
// ---------------------------------------------------------------------------

// QtPortFactory: makes a Qt port for each window and answers for the desktop
// (clipboard, key state, clock, system colours) from Qt.
//
// Windows map to widgets by their style: WS_CHILD becomes a child widget of
// the parent window's client area; WS_POPUP (the list and the tip) a
// frameless popup that never takes the keyboard focus; any other window a
// top-level window. WS_VSCROLL and WS_HSCROLL add scroll bars beside the
// client area. A text view without a font of its own draws in the monospace
// editor font (MonospaceLogFont(10)).
class CHARTCORE_QT_API QtPortFactory : public chartcore::WindowPortFactory {
 public:
  QtPortFactory();
  ~QtPortFactory() override;
  QtPortFactory(const QtPortFactory&) = delete;
  QtPortFactory& operator=(const QtPortFactory&) = delete;

  std::unique_ptr<chartcore::WindowPort> CreatePort(CWnd* wnd) override;
  // The system clipboard. Line ends are stored as "\n", as other programs on
  // this desktop expect; FALSE when the clipboard holds no text.
  BOOL SetClipboardText(const CString& text) override;
  BOOL GetClipboardText(CString& text) override;
  // Down (high bit) for Shift, Ctrl and Alt by the modifiers of the last input
  // event, for the mouse buttons by the last mouse event, and for a key whose
  // key-down reached a window and whose key-up did not yet.
  SHORT GetKeyState(int nVirtKey) override;
  // Milliseconds since the factory was made.
  DWORD GetTickCount() override;
  // The application palette: COLOR_WINDOW the base colour, COLOR_WINDOWTEXT
  // the text colour, the highlight pair, the button face, grey text and the
  // tool-tip pair; COLOR_SCROLLBAR the button face. Black for any other index.
  COLORREF GetSysColor(int nIndex) override;

  // The vertical logical pixels per inch of the screen the editor is on: the
  // screen of the window with the focus, else of the first shown text view,
  // else of any window, else the primary screen; 96 without a screen.
  int ScreenPixelsPerInchY() const;

  // Input state the windows report as events arrive.
  void NoteModifiers(Qt::KeyboardModifiers modifiers);
  void NoteMouseButtons(Qt::MouseButtons buttons);
  void NoteKey(UINT nVirtKey, bool down);

  // Bookkeeping of the ports (internal to the backend).
  void AddPort(internal::QtWindowPort* port);
  void RemovePort(internal::QtWindowPort* port);
  // Nesting of event handlers of the backend's widgets: a window destroyed
  // while one runs is deleted once control is back in the event loop.
  void EnterEvent();
  void LeaveEvent();
  bool InEvent() const;

 private:
  struct State;
  std::unique_ptr<State> m_state;
};

// ---------------------------------------------------------------------------
// Installation
// ---------------------------------------------------------------------------

// InstallQtBackend: makes the process's Qt factory the installed window
// factory and installs the screen's pixels per inch provider. Idempotent.
// Returns the factory, or nullptr when no QApplication exists (nothing is
// installed then).
CHARTCORE_QT_API QtPortFactory* InstallQtBackend();
// UninstallQtBackend: puts back the factory and the provider that were
// installed before InstallQtBackend (windows created meanwhile keep their
// Qt ports). Harmless when the backend is not installed.
CHARTCORE_QT_API void UninstallQtBackend();
// IsQtBackendInstalled: whether the installed factory is the Qt one.
CHARTCORE_QT_API bool IsQtBackendInstalled();

// ---------------------------------------------------------------------------
// Windows and their widgets
// ---------------------------------------------------------------------------

// WindowWidget: the outer widget of a window (its geometry and visibility,
// scroll bars included); nullptr when the window has no Qt port.
CHARTCORE_QT_API QWidget* WindowWidget(const CWnd* wnd);
// ClientWidget: the widget of the client area, which paints and takes input;
// nullptr when the window has no Qt port.
CHARTCORE_QT_API QWidget* ClientWidget(const CWnd* wnd);
// EmbedWindow: makes the window's widget a child of host, so a window of the
// core can live inside a Qt layout (add WindowWidget(wnd) to the layout
// afterwards). The window's coordinates become host's. FALSE when the window
// has no Qt port or host is nullptr.
CHARTCORE_QT_API BOOL EmbedWindow(CWnd* wnd, QWidget* host);

}  // namespace qt
}  // namespace chartcore

#endif  // CHARTCORE_QT_QT_BACKEND_H_
