#include "chartcore_qt/qt_backend.h"

#include <QApplication>
#include <QClipboard>
#include <QElapsedTimer>
#include <QGuiApplication>
#include <QMimeData>
#include <QPalette>
#include <QScreen>

#include <algorithm>
#include <cmath>
#include <functional>
#include <vector>

#include "chartcore/platform/system.h"
#include "chartcore_qt/conversions.h"
#include "chartcore_qt/port_widgets.h"

namespace chartcore {
namespace qt {

using internal::QtWindowPort;

namespace {
#ifndef VK_RBUTTON
// The right mouse button's virtual key, missing from the platform's list.
constexpr UINT VK_RBUTTON = 0x02;
#endif
}  // namespace

struct QtPortFactory::State {
  QElapsedTimer clock;
  Qt::KeyboardModifiers modifiers = Qt::NoModifier;
  Qt::MouseButtons buttons = Qt::NoButton;
  std::vector<UINT> keysDown;
  std::vector<QtWindowPort*> ports;
  int eventDepth = 0;
};

QtPortFactory::QtPortFactory() : m_state(new State) { m_state->clock.start(); }

QtPortFactory::~QtPortFactory() = default;

std::unique_ptr<chartcore::WindowPort> QtPortFactory::CreatePort(CWnd* wnd) {
  return std::unique_ptr<chartcore::WindowPort>(new QtWindowPort(this, wnd));
}

// ---------------------------------------------------------------------------
// Desktop
// ---------------------------------------------------------------------------
BOOL QtPortFactory::SetClipboardText(const CString& text) {
  QClipboard* clipboard = QGuiApplication::clipboard();
  if (clipboard == nullptr) return FALSE;
  QString plain = ToQString(text);
  plain.replace(QStringLiteral("\r\n"), QStringLiteral("\n"));
  clipboard->setText(plain);
  return TRUE;
}

BOOL QtPortFactory::GetClipboardText(CString& text) {
  text.Empty();
  QClipboard* clipboard = QGuiApplication::clipboard();
  const QMimeData* data = clipboard != nullptr ? clipboard->mimeData() : nullptr;
  if (data == nullptr || !data->hasText()) return FALSE;
  text = ToCString(data->text());
  return TRUE;
}

SHORT QtPortFactory::GetKeyState(int nVirtKey) {
  bool down = false;
  switch (nVirtKey) {
    case VK_SHIFT: down = m_state->modifiers.testFlag(Qt::ShiftModifier); break;
    case VK_CONTROL: down = m_state->modifiers.testFlag(Qt::ControlModifier); break;
    case VK_MENU: down = m_state->modifiers.testFlag(Qt::AltModifier); break;
    case VK_LBUTTON: down = m_state->buttons.testFlag(Qt::LeftButton); break;
    case VK_RBUTTON: down = m_state->buttons.testFlag(Qt::RightButton); break;
    default: {
      const auto& keys = m_state->keysDown;
      down = std::find(keys.begin(), keys.end(), static_cast<UINT>(nVirtKey)) != keys.end();
      break;
    }
  }
  return down ? static_cast<SHORT>(-32768) : static_cast<SHORT>(0);
}

DWORD QtPortFactory::GetTickCount() { return static_cast<DWORD>(m_state->clock.elapsed()); }

COLORREF QtPortFactory::GetSysColor(int nIndex) {
  const QPalette palette = QApplication::palette();
  switch (nIndex) {
    case COLOR_WINDOW: return ToColorRef(palette.color(QPalette::Active, QPalette::Base));
    case COLOR_WINDOWTEXT: return ToColorRef(palette.color(QPalette::Active, QPalette::Text));
    case COLOR_HIGHLIGHT: return ToColorRef(palette.color(QPalette::Active, QPalette::Highlight));
    case COLOR_HIGHLIGHTTEXT: return ToColorRef(palette.color(QPalette::Active, QPalette::HighlightedText));
    case COLOR_SCROLLBAR:
    case COLOR_BTNFACE: return ToColorRef(palette.color(QPalette::Active, QPalette::Button));
    case COLOR_GRAYTEXT: return ToColorRef(palette.color(QPalette::Disabled, QPalette::Text));
    case COLOR_INFOTEXT: return ToColorRef(palette.color(QPalette::Active, QPalette::ToolTipText));
    case COLOR_INFOBK: return ToColorRef(palette.color(QPalette::Active, QPalette::ToolTipBase));
    default: return RGB(0, 0, 0);
  }
}

int QtPortFactory::ScreenPixelsPerInchY() const {
  QScreen* screen = nullptr;
  QtWindowPort* focus = QtWindowPort::Of(GetFocusWindow());
  if (focus != nullptr && focus->Client() != nullptr) screen = focus->Client()->screen();
  if (screen == nullptr) {
    for (QtWindowPort* port : m_state->ports) {
      if (port->View() != nullptr && port->Client() != nullptr && port->IsVisible()) {
        screen = port->Client()->screen();
        break;
      }
    }
  }
  if (screen == nullptr) {
    for (QtWindowPort* port : m_state->ports) {
      if (port->Client() != nullptr) {
        screen = port->Client()->screen();
        break;
      }
    }
  }
  if (screen == nullptr) screen = QGuiApplication::primaryScreen();
  if (screen == nullptr) return 96;
  const int dpi = static_cast<int>(std::lround(screen->logicalDotsPerInchY()));
  return dpi > 0 ? dpi : 96;
}

// ---------------------------------------------------------------------------
// Input state and bookkeeping
// ---------------------------------------------------------------------------
void QtPortFactory::NoteModifiers(Qt::KeyboardModifiers modifiers) { m_state->modifiers = modifiers; }

void QtPortFactory::NoteMouseButtons(Qt::MouseButtons buttons) { m_state->buttons = buttons; }

void QtPortFactory::NoteKey(UINT nVirtKey, bool down) {
  auto& keys = m_state->keysDown;
  auto it = std::find(keys.begin(), keys.end(), nVirtKey);
  if (down && it == keys.end()) keys.push_back(nVirtKey);
  if (!down && it != keys.end()) keys.erase(it);
}

void QtPortFactory::AddPort(QtWindowPort* port) { m_state->ports.push_back(port); }

void QtPortFactory::RemovePort(QtWindowPort* port) {
  auto& ports = m_state->ports;
  ports.erase(std::remove(ports.begin(), ports.end(), port), ports.end());
}

void QtPortFactory::EnterEvent() { ++m_state->eventDepth; }
void QtPortFactory::LeaveEvent() { --m_state->eventDepth; }
bool QtPortFactory::InEvent() const { return m_state->eventDepth > 0; }

// ---------------------------------------------------------------------------
// Installation
// ---------------------------------------------------------------------------
namespace {

struct Installation {
  bool installed = false;
  chartcore::WindowPortFactory* previousFactory = nullptr;
  std::function<int()> previousProvider;
};

Installation& TheInstallation() {
  static Installation installation;
  return installation;
}

QtPortFactory& TheFactory() {
  static QtPortFactory factory;
  return factory;
}

}  // namespace

QtPortFactory* InstallQtBackend() {
  if (QApplication::instance() == nullptr) return nullptr;
  Installation& inst = TheInstallation();
  QtPortFactory& factory = TheFactory();
  if (inst.installed) return &factory;
  inst.previousFactory = chartcore::SetWindowPortFactory(&factory);
  inst.previousProvider =
      chartcore::SetScreenPixelsPerInchProvider([] { return TheFactory().ScreenPixelsPerInchY(); });
  inst.installed = true;
  return &factory;
}

void UninstallQtBackend() {
  Installation& inst = TheInstallation();
  if (!inst.installed) return;
  chartcore::WindowPortFactory* previous = inst.previousFactory;
  // The headless factory is what nullptr reinstalls.
  if (previous == &chartcore::GetHeadlessPortFactory()) previous = nullptr;
  chartcore::SetWindowPortFactory(previous);
  chartcore::SetScreenPixelsPerInchProvider(inst.previousProvider);
  inst = Installation();
}

bool IsQtBackendInstalled() { return &chartcore::GetWindowPortFactory() == &TheFactory(); }

// ---------------------------------------------------------------------------
// Windows and their widgets
// ---------------------------------------------------------------------------
QWidget* WindowWidget(const CWnd* wnd) {
  QtWindowPort* port = QtWindowPort::Of(wnd);
  return port != nullptr ? port->Frame() : nullptr;
}

QWidget* ClientWidget(const CWnd* wnd) {
  QtWindowPort* port = QtWindowPort::Of(wnd);
  return port != nullptr ? port->Client() : nullptr;
}

BOOL EmbedWindow(CWnd* wnd, QWidget* host) {
  QtWindowPort* port = QtWindowPort::Of(wnd);
  return port != nullptr && port->Embed(host) ? TRUE : FALSE;
}

}  // namespace qt
}  // namespace chartcore
