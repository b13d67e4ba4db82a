// Keyboard translation from Qt's key events to the framework's key messages.
//
// The editor reads keys as a Windows message loop delivers them: WM_KEYDOWN
// with a virtual-key code, then (through the system's translation) WM_CHAR
// with the typed character, then WM_KEYUP. Qt reports the symbol a key
// produced (Qt::Key_ParenLeft for Shift+9), so the virtual key is taken from
// the US layout the way Windows names the physical key ('9'), never from the
// symbol: 0x28 is VK_DOWN, and '(' must not move the caret.
//
//   UINT vk = chartcore::qt::VirtualKeyFromQt(Qt::Key_ParenLeft, Qt::ShiftModifier);  // '9'
//   std::wstring typed = chartcore::qt::TranslatedChars(Qt::Key_A, Qt::ControlModifier, "a");  // L"\x01"
#ifndef CHARTCORE_QT_KEY_INPUT_H_
#define CHARTCORE_QT_KEY_INPUT_H_

#include <QString>
#include <Qt>

#include <string>

#include "chartcore/platform/types.h"
#include "chartcore/platform/window.h"
#include "chartcore_qt/export.h"

namespace chartcore {
namespace qt {

// Virtual-key codes beyond those the framework layer names.
enum : UINT {
  kVkHangul = 0x15,
  kVkHanja = 0x19,
  kVkCapital = 0x14,
  kVkNumpad0 = 0x60,
  kVkMultiply = 0x6A,
  kVkAdd = 0x6B,
  kVkSubtract = 0x6D,
  kVkDecimal = 0x6E,
  kVkDivide = 0x6F,
  kVkOem1 = 0xBA,       // ;:
  kVkOemPlus = 0xBB,    // =+
  kVkOemComma = 0xBC,   // ,<
  kVkOemMinus = 0xBD,   // -_
  kVkOemPeriod = 0xBE,  // .>
  kVkOem2 = 0xBF,       // /?
  kVkOem3 = 0xC0,       // `~
  kVkOem4 = 0xDB,       // [{
  kVkOem5 = 0xDC,       // \|
  kVkOem6 = 0xDD,       // ]}
  kVkOem7 = 0xDE,       // '"
};

// VirtualKeyFromQt: the virtual-key code of a Qt key as the US layout names
// the physical key: letters 'A'..'Z', digits and their shifted symbols
// '0'..'9', punctuation the VK_OEM codes, navigation and editing keys their
// VK_ codes, the keypad (with Qt::KeypadModifier) VK_NUMPAD0.. and the
// operator keys, modifiers VK_SHIFT / VK_CONTROL / VK_MENU. 0 for a key with
// no virtual key (a letter outside ASCII, Qt::Key_unknown).
CHARTCORE_QT_API UINT VirtualKeyFromQt(int key, Qt::KeyboardModifiers modifiers);

// IsModifierKey: Shift, Control, Alt, Meta, AltGr and the lock keys, which
// type nothing and do not end an input-method composition.
CHARTCORE_QT_API bool IsModifierKey(int key);

// IsExtendedKey: the keys Windows flags as extended in a key message (the
// arrows, Insert, Delete, Home, End, Page Up and Page Down off the keypad,
// the keypad's Enter and '/').
CHARTCORE_QT_API bool IsExtendedKey(int key, Qt::KeyboardModifiers modifiers);

// TranslatedChars: the WM_CHAR characters the system's translation makes of
// a key-down that was not consumed. Backspace 0x08, Enter 0x0D, Escape 0x1B,
// Tab (also Shift+Tab) 0x09; Ctrl with a letter its control character
// (Ctrl+A 0x01), Ctrl with '[', '\' and ']' 0x1B..0x1D, Ctrl+Enter 0x0A,
// Ctrl+Backspace 0x7F; any other Ctrl or Alt combination (but AltGr, which
// is Ctrl+Alt) nothing; otherwise the event's text as code points, without
// the control characters Qt adds for keys that type nothing on Windows
// (Delete's 0x7F).
CHARTCORE_QT_API std::wstring TranslatedChars(int key, Qt::KeyboardModifiers modifiers, const QString& text);

// KeyMessageLParam: the lParam of a key message: repeat count 1, the
// extended flag (bit 24), the Alt context (bit 29), the previous key state
// (bit 30: set for an auto-repeated key-down and for every key-up) and the
// transition state (bit 31: set for key-up).
CHARTCORE_QT_API LPARAM KeyMessageLParam(bool keyUp, bool autoRepeat, bool extended, bool alt);

}  // namespace qt
}  // namespace chartcore

#endif  // CHARTCORE_QT_KEY_INPUT_H_
