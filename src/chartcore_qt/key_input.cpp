#include "chartcore_qt/key_input.h"

#include <QList>

namespace chartcore {
namespace qt {

namespace {

// The shifted symbols of the US layout, by the key that types them.
UINT ShiftedSymbolKey(int key) {
  switch (key) {
    case Qt::Key_Exclam: return '1';
    case Qt::Key_At: return '2';
    case Qt::Key_NumberSign: return '3';
    case Qt::Key_Dollar: return '4';
    case Qt::Key_Percent: return '5';
    case Qt::Key_AsciiCircum: return '6';
    case Qt::Key_Ampersand: return '7';
    case Qt::Key_Asterisk: return '8';
    case Qt::Key_ParenLeft: return '9';
    case Qt::Key_ParenRight: return '0';
    case Qt::Key_Underscore: return kVkOemMinus;
    case Qt::Key_Plus: return kVkOemPlus;
    case Qt::Key_BraceLeft: return kVkOem4;
    case Qt::Key_BraceRight: return kVkOem6;
    case Qt::Key_Bar: return kVkOem5;
    case Qt::Key_Colon: return kVkOem1;
    case Qt::Key_QuoteDbl: return kVkOem7;
    case Qt::Key_Less: return kVkOemComma;
    case Qt::Key_Greater: return kVkOemPeriod;
    case Qt::Key_Question: return kVkOem2;
    case Qt::Key_AsciiTilde: return kVkOem3;
    default: return 0;
  }
}

UINT KeypadKey(int key) {
  if (key >= Qt::Key_0 && key <= Qt::Key_9) return kVkNumpad0 + static_cast<UINT>(key - Qt::Key_0);
  switch (key) {
    case Qt::Key_Asterisk: return kVkMultiply;
    case Qt::Key_Plus: return kVkAdd;
    case Qt::Key_Minus: return kVkSubtract;
    case Qt::Key_Period:
    case Qt::Key_Comma: return kVkDecimal;
    case Qt::Key_Slash: return kVkDivide;
    default: return 0;
  }
}

}  // namespace

UINT VirtualKeyFromQt(int key, Qt::KeyboardModifiers modifiers) {
  if (modifiers.testFlag(Qt::KeypadModifier)) {
    const UINT pad = KeypadKey(key);
    if (pad != 0) return pad;
  }
  if (key >= Qt::Key_A && key <= Qt::Key_Z) return static_cast<UINT>(key);  // 'A'..'Z' share the codes
  if (key >= Qt::Key_0 && key <= Qt::Key_9) return static_cast<UINT>(key);
  if (key >= Qt::Key_F1 && key <= Qt::Key_F24) return VK_F1 + static_cast<UINT>(key - Qt::Key_F1);
  const UINT shifted = ShiftedSymbolKey(key);
  if (shifted != 0) return shifted;
  switch (key) {
    case Qt::Key_Backspace: return VK_BACK;
    case Qt::Key_Tab:
    case Qt::Key_Backtab: return VK_TAB;
    case Qt::Key_Return:
    case Qt::Key_Enter: return VK_RETURN;
    case Qt::Key_Shift: return VK_SHIFT;
    case Qt::Key_Control: return VK_CONTROL;
    case Qt::Key_Alt:
    case Qt::Key_AltGr: return VK_MENU;
    case Qt::Key_CapsLock: return kVkCapital;
    case Qt::Key_Escape: return VK_ESCAPE;
    case Qt::Key_Space: return VK_SPACE;
    case Qt::Key_PageUp: return VK_PRIOR;
    case Qt::Key_PageDown: return VK_NEXT;
    case Qt::Key_End: return VK_END;
    case Qt::Key_Home: return VK_HOME;
    case Qt::Key_Left: return VK_LEFT;
    case Qt::Key_Up: return VK_UP;
    case Qt::Key_Right: return VK_RIGHT;
    case Qt::Key_Down: return VK_DOWN;
    case Qt::Key_Insert: return VK_INSERT;
    case Qt::Key_Delete: return VK_DELETE;
    case Qt::Key_Hangul: return kVkHangul;
    case Qt::Key_Hangul_Hanja: return kVkHanja;
    case Qt::Key_Semicolon: return kVkOem1;
    case Qt::Key_Equal: return kVkOemPlus;
    case Qt::Key_Comma: return kVkOemComma;
    case Qt::Key_Minus: return kVkOemMinus;
    case Qt::Key_Period: return kVkOemPeriod;
    case Qt::Key_Slash: return kVkOem2;
    case Qt::Key_QuoteLeft: return kVkOem3;
    case Qt::Key_BracketLeft: return kVkOem4;
    case Qt::Key_Backslash: return kVkOem5;
    case Qt::Key_BracketRight: return kVkOem6;
    case Qt::Key_Apostrophe: return kVkOem7;
    default: return 0;
  }
}

bool IsModifierKey(int key) {
  switch (key) {
    case Qt::Key_Shift:
    case Qt::Key_Control:
    case Qt::Key_Alt:
    case Qt::Key_AltGr:
    case Qt::Key_Meta:
    case Qt::Key_Super_L:
    case Qt::Key_Super_R:
    case Qt::Key_CapsLock:
    case Qt::Key_NumLock:
    case Qt::Key_ScrollLock: return true;
    default: return false;
  }
}

bool IsExtendedKey(int key, Qt::KeyboardModifiers modifiers) {
  const bool keypad = modifiers.testFlag(Qt::KeypadModifier);
  switch (key) {
    case Qt::Key_Left:
    case Qt::Key_Up:
    case Qt::Key_Right:
    case Qt::Key_Down:
    case Qt::Key_Insert:
    case Qt::Key_Delete:
    case Qt::Key_Home:
    case Qt::Key_End:
    case Qt::Key_PageUp:
    case Qt::Key_PageDown: return !keypad;
    case Qt::Key_Enter:
    case Qt::Key_Slash: return keypad;
    default: return false;
  }
}

std::wstring TranslatedChars(int key, Qt::KeyboardModifiers modifiers, const QString& text) {
  const bool ctrl = modifiers.testFlag(Qt::ControlModifier);
  const bool alt = modifiers.testFlag(Qt::AltModifier);
  if (ctrl && !alt) {
    if (key >= Qt::Key_A && key <= Qt::Key_Z) return std::wstring(1, static_cast<wchar_t>(key - Qt::Key_A + 1));
    switch (key) {
      case Qt::Key_BracketLeft: return std::wstring(1, L'\x1B');
      case Qt::Key_Backslash: return std::wstring(1, L'\x1C');
      case Qt::Key_BracketRight: return std::wstring(1, L'\x1D');
      case Qt::Key_Return:
      case Qt::Key_Enter: return std::wstring(1, L'\n');
      case Qt::Key_Backspace: return std::wstring(1, L'\x7F');
      default: return std::wstring();
    }
  }
  if (alt && !ctrl) return std::wstring();  // the system keys: WM_SYSCHAR, not WM_CHAR
  switch (key) {
    case Qt::Key_Backspace: return std::wstring(1, L'\b');
    case Qt::Key_Return:
    case Qt::Key_Enter: return std::wstring(1, L'\r');
    case Qt::Key_Escape: return std::wstring(1, L'\x1B');
    case Qt::Key_Tab:
    case Qt::Key_Backtab: return std::wstring(1, L'\t');
    case Qt::Key_Delete: return std::wstring();
    default: break;
  }
  std::wstring out;
  for (char32_t cp : text.toUcs4()) {
    if (cp < 0x20 || cp == 0x7F) continue;
    if (sizeof(wchar_t) == 2 && cp >= 0x10000) {
      out.push_back(static_cast<wchar_t>(QChar::highSurrogate(cp)));
      out.push_back(static_cast<wchar_t>(QChar::lowSurrogate(cp)));
    } else {
      out.push_back(static_cast<wchar_t>(cp));
    }
  }
  return out;
}

LPARAM KeyMessageLParam(bool keyUp, bool autoRepeat, bool extended, bool alt) {
  DWORD value = 1;  // repeat count
  if (extended) value |= 1u << 24;
  if (alt) value |= 1u << 29;
  if (keyUp || autoRepeat) value |= 1u << 30;
  if (keyUp) value |= 1u << 31;
  // Sign-extended from 32 bits, as a message's lParam carries it.
  return static_cast<LPARAM>(static_cast<LONG>(value));
}

}  // namespace qt
}  // namespace chartcore
