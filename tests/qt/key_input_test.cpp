// Qt keys to the framework's key messages.
#include "chartcore_qt/key_input.h"

#include <gtest/gtest.h>

using chartcore::qt::IsExtendedKey;
using chartcore::qt::IsModifierKey;
using chartcore::qt::KeyMessageLParam;
using chartcore::qt::TranslatedChars;
using chartcore::qt::VirtualKeyFromQt;

namespace {

TEST(KeyInput, VirtualKeysNameThePhysicalKeyNotTheSymbol) {
  // Qt's symbol codes collide with virtual keys: Key_ParenLeft is 0x28,
  // VK_DOWN. The shifted symbols map to the key that types them.
  EXPECT_EQ(VirtualKeyFromQt(Qt::Key_ParenLeft, Qt::ShiftModifier), static_cast<UINT>('9'));
  EXPECT_EQ(VirtualKeyFromQt(Qt::Key_Down, Qt::NoModifier), VK_DOWN);
  EXPECT_EQ(VirtualKeyFromQt(Qt::Key_Ampersand, Qt::NoModifier), static_cast<UINT>('7'));  // 0x26 is VK_UP
  EXPECT_EQ(VirtualKeyFromQt(Qt::Key_Dollar, Qt::NoModifier), static_cast<UINT>('4'));     // 0x24 is VK_HOME
  EXPECT_EQ(VirtualKeyFromQt(Qt::Key_Percent, Qt::NoModifier), static_cast<UINT>('5'));    // 0x25 is VK_LEFT
  EXPECT_EQ(VirtualKeyFromQt(Qt::Key_Apostrophe, Qt::NoModifier), 0xDEu);                  // 0x27 is VK_RIGHT
  EXPECT_EQ(VirtualKeyFromQt(Qt::Key_Period, Qt::NoModifier), 0xBEu);                      // 0x2E is VK_DELETE
  EXPECT_EQ(VirtualKeyFromQt(Qt::Key_Minus, Qt::NoModifier), 0xBDu);                       // 0x2D is VK_INSERT
  // Letters, digits and space share their codes.
  EXPECT_EQ(VirtualKeyFromQt(Qt::Key_A, Qt::ControlModifier), static_cast<UINT>('A'));
  EXPECT_EQ(VirtualKeyFromQt(Qt::Key_Space, Qt::NoModifier), VK_SPACE);
  // The keypad has keys of its own; its Enter is Enter.
  EXPECT_EQ(VirtualKeyFromQt(Qt::Key_5, Qt::KeypadModifier), 0x65u);
  EXPECT_EQ(VirtualKeyFromQt(Qt::Key_Plus, Qt::KeypadModifier), 0x6Bu);
  EXPECT_EQ(VirtualKeyFromQt(Qt::Key_Enter, Qt::KeypadModifier), VK_RETURN);
  EXPECT_EQ(VirtualKeyFromQt(Qt::Key_Down, Qt::KeypadModifier), VK_DOWN);
  // Shift+Tab is Tab; function keys in order; Korean keys.
  EXPECT_EQ(VirtualKeyFromQt(Qt::Key_Backtab, Qt::ShiftModifier), VK_TAB);
  EXPECT_EQ(VirtualKeyFromQt(Qt::Key_F3, Qt::NoModifier), VK_F3);
  EXPECT_EQ(VirtualKeyFromQt(Qt::Key_Hangul, Qt::NoModifier), 0x15u);
  // No virtual key: a letter outside ASCII, an unknown key.
  EXPECT_EQ(VirtualKeyFromQt(Qt::Key_Adiaeresis, Qt::NoModifier), 0u);
  EXPECT_EQ(VirtualKeyFromQt(Qt::Key_unknown, Qt::NoModifier), 0u);
}

TEST(KeyInput, TranslationMakesTheCharactersWindowsWould) {
  EXPECT_EQ(TranslatedChars(Qt::Key_A, Qt::NoModifier, "a"), L"a");
  EXPECT_EQ(TranslatedChars(Qt::Key_ParenLeft, Qt::ShiftModifier, "("), L"(");
  // Keys with a character of their own, whatever text Qt attached.
  EXPECT_EQ(TranslatedChars(Qt::Key_Return, Qt::NoModifier, "\r"), L"\r");
  EXPECT_EQ(TranslatedChars(Qt::Key_Enter, Qt::KeypadModifier, QString()), L"\r");
  EXPECT_EQ(TranslatedChars(Qt::Key_Backspace, Qt::NoModifier, QString()), L"\b");
  EXPECT_EQ(TranslatedChars(Qt::Key_Backtab, Qt::ShiftModifier, QString()), L"\t");
  EXPECT_EQ(TranslatedChars(Qt::Key_Escape, Qt::NoModifier, "\x1b"), L"\x1b");
  // Delete types nothing (Qt reports DEL as its text).
  EXPECT_EQ(TranslatedChars(Qt::Key_Delete, Qt::NoModifier, "\x7f"), L"");
  // Ctrl with a letter is its control character, whatever Qt's text says;
  // Ctrl with a digit types nothing; Ctrl+Enter is a line feed.
  EXPECT_EQ(TranslatedChars(Qt::Key_A, Qt::ControlModifier, "a"), L"\x01");
  EXPECT_EQ(TranslatedChars(Qt::Key_Z, Qt::ControlModifier | Qt::ShiftModifier, "Z"), L"\x1a");
  EXPECT_EQ(TranslatedChars(Qt::Key_BracketLeft, Qt::ControlModifier, "["), L"\x1b");
  EXPECT_EQ(TranslatedChars(Qt::Key_1, Qt::ControlModifier, "1"), L"");
  EXPECT_EQ(TranslatedChars(Qt::Key_Return, Qt::ControlModifier, "\r"), L"\n");
  // Alt combinations are system keys (no WM_CHAR); AltGr (Ctrl+Alt) types.
  EXPECT_EQ(TranslatedChars(Qt::Key_F, Qt::AltModifier, "f"), L"");
  EXPECT_EQ(TranslatedChars(Qt::Key_At, Qt::ControlModifier | Qt::AltModifier, "@"), L"@");
  // Text beyond the basic plane and Hangul come through as code points.
  EXPECT_EQ(TranslatedChars(Qt::Key_unknown, Qt::NoModifier, QString::fromUtf8("한\xF0\x9F\x98\x80")),
            std::wstring(L"한") + static_cast<wchar_t>(0x1F600));
}

TEST(KeyInput, KeyMessageFlagsAsTheSystemSetsThem) {
  // The high word is what handlers see as nFlags.
  EXPECT_EQ(HIWORD(KeyMessageLParam(false, false, false, false)), 0x0000);
  EXPECT_EQ(LOWORD(KeyMessageLParam(false, false, false, false)), 1);  // repeat count
  EXPECT_EQ(HIWORD(KeyMessageLParam(false, true, false, false)), 0x4000);   // auto-repeat: was down
  EXPECT_EQ(HIWORD(KeyMessageLParam(true, false, false, false)), 0xC000);   // key-up: was down, going up
  EXPECT_EQ(HIWORD(KeyMessageLParam(false, false, true, false)), 0x0100);   // extended key
  EXPECT_EQ(HIWORD(KeyMessageLParam(false, false, false, true)), 0x2000);   // Alt held
  EXPECT_TRUE(IsExtendedKey(Qt::Key_Down, Qt::NoModifier));
  EXPECT_FALSE(IsExtendedKey(Qt::Key_Down, Qt::KeypadModifier));
  EXPECT_TRUE(IsExtendedKey(Qt::Key_Enter, Qt::KeypadModifier));
  EXPECT_TRUE(IsModifierKey(Qt::Key_Shift));
  EXPECT_TRUE(IsModifierKey(Qt::Key_CapsLock));
  EXPECT_FALSE(IsModifierKey(Qt::Key_Hangul));  // switching input modes ends a syllable
}

}  // namespace
