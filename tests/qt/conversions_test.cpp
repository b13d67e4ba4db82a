// Text, geometry, font and key conversions between the framework and Qt.
#include "chartcore_qt/conversions.h"

#include <QFontInfo>

#include <cwchar>

#include <gtest/gtest.h>

#include "chartcore/platform/system.h"
#include "chartcore_qt/key_input.h"

using namespace chartcore::qt;

namespace {

TEST(QtConversions, TextRoundTripsAndBadUnitsBecomeReplacements) {
  // Hangul and a character beyond the basic plane (one wchar_t on Linux, a
  // surrogate pair in Qt).
  const wchar_t text[] = {L'한', L'a', static_cast<wchar_t>(0x1F600), 0};
  EXPECT_EQ(ToQString(CString(text)), QString::fromUtf8("한a\xF0\x9F\x98\x80"));
  EXPECT_EQ(ToCString(ToQString(CString(text))), CString(text));
  // A lone surrogate from Qt, and code units that are no character.
  EXPECT_EQ(ToCString(QString(QChar(0xD800)) + QLatin1Char('x')), CString(L"\xFFFDx"));
  if (sizeof(wchar_t) == 4) {
    const wchar_t bad[] = {static_cast<wchar_t>(0x110000), static_cast<wchar_t>(0xDC00), L'y'};
    EXPECT_EQ(ToQString(bad, 3), QString::fromUtf8("\xEF\xBF\xBD\xEF\xBF\xBDy"));
  }
  EXPECT_TRUE(ToQString(nullptr, 5).isEmpty());
  EXPECT_TRUE(ToQString(text, -1).isEmpty());
  EXPECT_TRUE(ToCString(QString()).IsEmpty());
}

TEST(QtConversions, RectanglesKeepPixelsAndColoursKeepChannels) {
  // CRect's right and bottom are outside it; QRect's width counts pixels.
  EXPECT_EQ(ToQRect(CRect(10, 20, 30, 25)), QRect(10, 20, 20, 5));
  EXPECT_EQ(ToCRect(QRect(10, 20, 20, 5)), CRect(10, 20, 30, 25));
  EXPECT_TRUE(ToQRect(CRect(30, 20, 10, 25)).isEmpty());  // inverted
  EXPECT_EQ(ToQColor(RGB(162, 40, 202)), QColor(162, 40, 202));
  EXPECT_EQ(ToQColor(0xFF0000FFu), QColor(255, 0, 0));  // high byte ignored
  EXPECT_EQ(ToColorRef(QColor(0, 128, 128, 10)), RGB(0, 128, 128));
}

TEST(QtConversions, LogicalFontsMapAsTheSystemMapperReadsThem) {
  // Negative height: the em size in pixels; one no screen has is clamped
  // rather than asked of the font engine.
  LOGFONT lf{};
  lf.lfHeight = -20;
  EXPECT_EQ(FontFromLogFont(&lf).pixelSize(), 20);
  lf.lfHeight = -2000000000;
  EXPECT_EQ(FontFromLogFont(&lf).pixelSize(), 2000);
  // Positive height: the cell (ascent + descent) fits it, and only just.
  lf.lfHeight = 15;
  EXPECT_LE(FontMetricsOf(&lf).height(), 15);
  EXPECT_GE(FontMetricsOf(&lf).height(), 12);
  QFont bigger = FontFromLogFont(&lf);
  bigger.setPixelSize(bigger.pixelSize() + 1);
  EXPECT_GT(QFontMetrics(bigger).height(), 15);
  // Runs measure as the sum of their characters (no kerning).
  lf.lfHeight = -16;
  const QFontMetrics& fm = FontMetricsOf(&lf);
  EXPECT_EQ(fm.horizontalAdvance("AVAV"), 2 * fm.horizontalAdvance("A") + 2 * fm.horizontalAdvance("V"));
  // No face but a fixed pitch: the editor's monospace face, really fixed.
  lf.lfHeight = -14;
  lf.lfPitchAndFamily = kFixedPitch;
  EXPECT_EQ(QFontInfo(FontFromLogFont(&lf)).family(), MonospaceFamily());
  EXPECT_EQ(FontMetricsOf(&lf).horizontalAdvance(QLatin1Char('i')),
            FontMetricsOf(&lf).horizontalAdvance(QLatin1Char('W')));
  LOGFONT bold{};
  bold.lfWeight = FW_BOLD;
  bold.lfItalic = 1;
  bold.lfQuality = kNonAntialiasedQuality;
  EXPECT_EQ(FontFromLogFont(&bold).weight(), QFont::Bold);
  EXPECT_TRUE(FontFromLogFont(&bold).italic());
  EXPECT_EQ(FontFromLogFont(&bold).styleStrategy() & QFont::NoAntialias, QFont::NoAntialias);
  // The editor font: its height from the screen's pixels per inch, rounded
  // to nearest; below 1 point counts as 10.
  const auto previous = chartcore::SetScreenPixelsPerInchProvider([] { return 96; });
  const LOGFONT editor = MonospaceLogFont(10);
  EXPECT_EQ(editor.lfHeight, -13);  // 13.33
  EXPECT_EQ(MonospaceLogFont(9).lfHeight, -12);
  EXPECT_EQ(MonospaceLogFont(0).lfHeight, -13);
  EXPECT_EQ(MonospaceLogFont(-4).lfHeight, -13);
  EXPECT_EQ(ToQString(editor.lfFaceName, static_cast<int>(std::wcslen(editor.lfFaceName))), MonospaceFamily());
  chartcore::SetScreenPixelsPerInchProvider([] { return 120; });
  EXPECT_EQ(MonospaceLogFont(10).lfHeight, -17);  // 16.67
  EXPECT_EQ(MonospaceLogFont(9).lfHeight, -15);
  chartcore::SetScreenPixelsPerInchProvider(previous);
}

constexpr Qt::KeyboardModifiers kNone = Qt::NoModifier, kShift = Qt::ShiftModifier, kCtrl = Qt::ControlModifier,
                                kAlt = Qt::AltModifier, kPad = Qt::KeypadModifier;

TEST(QtKeys, VirtualKeysNameThePhysicalKeyNotTheSymbol) {
  // Qt's symbol codes collide with virtual keys; a symbol maps to the key
  // that types it. The keypad has keys of its own, but its Enter and arrows
  // are the main ones. 0: no virtual key.
  struct Case { int key; Qt::KeyboardModifiers mods; UINT vk; };
  const Case cases[] = {
      {Qt::Key_ParenLeft, kShift, '9'},  // 0x28 is VK_DOWN
      {Qt::Key_Ampersand, kNone, '7'},   // 0x26 is VK_UP
      {Qt::Key_Dollar, kNone, '4'},      // 0x24 is VK_HOME
      {Qt::Key_Percent, kNone, '5'},     // 0x25 is VK_LEFT
      {Qt::Key_Apostrophe, kNone, 0xDE}, // 0x27 is VK_RIGHT
      {Qt::Key_Period, kNone, 0xBE},     // 0x2E is VK_DELETE
      {Qt::Key_Minus, kNone, 0xBD},      // 0x2D is VK_INSERT
      {Qt::Key_Down, kNone, VK_DOWN}, {Qt::Key_A, kCtrl, 'A'}, {Qt::Key_Space, kNone, VK_SPACE},
      {Qt::Key_5, kPad, 0x65}, {Qt::Key_Plus, kPad, 0x6B}, {Qt::Key_Enter, kPad, VK_RETURN},
      {Qt::Key_Down, kPad, VK_DOWN}, {Qt::Key_Backtab, kShift, VK_TAB}, {Qt::Key_F3, kNone, VK_F3},
      {Qt::Key_Hangul, kNone, 0x15}, {Qt::Key_Adiaeresis, kNone, 0}, {Qt::Key_unknown, kNone, 0},
  };
  for (const Case& c : cases) EXPECT_EQ(VirtualKeyFromQt(c.key, c.mods), c.vk) << std::hex << c.key;
}

TEST(QtKeys, TranslationMakesTheCharactersWindowsWould) {
  // Enter, Backspace, Tab and Escape have their own character whatever text
  // Qt attached, and Delete none; Ctrl+letter is its control character,
  // Ctrl+digit nothing, Ctrl+Enter a line feed; Alt combinations are system
  // keys, AltGr (Ctrl+Alt) types; text beyond the basic plane is one unit.
  struct Case { int key; Qt::KeyboardModifiers mods; const char* text; std::wstring chars; };
  const Case cases[] = {
      {Qt::Key_A, kNone, "a", L"a"}, {Qt::Key_ParenLeft, kShift, "(", L"("}, {Qt::Key_Return, kNone, "\r", L"\r"},
      {Qt::Key_Enter, kPad, "", L"\r"}, {Qt::Key_Backspace, kNone, "", L"\b"}, {Qt::Key_Backtab, kShift, "", L"\t"},
      {Qt::Key_Escape, kNone, "\x1b", L"\x1b"}, {Qt::Key_Delete, kNone, "\x7f", L""},
      {Qt::Key_A, kCtrl, "a", L"\x01"}, {Qt::Key_Z, kCtrl | kShift, "Z", L"\x1a"},
      {Qt::Key_BracketLeft, kCtrl, "[", L"\x1b"}, {Qt::Key_1, kCtrl, "1", L""}, {Qt::Key_Return, kCtrl, "\r", L"\n"},
      {Qt::Key_F, kAlt, "f", L""}, {Qt::Key_At, kCtrl | kAlt, "@", L"@"},
      {Qt::Key_unknown, kNone, "한\xF0\x9F\x98\x80", std::wstring(L"한") + static_cast<wchar_t>(0x1F600)},
  };
  for (const Case& c : cases)
    EXPECT_EQ(TranslatedChars(c.key, c.mods, QString::fromUtf8(c.text)), c.chars) << std::hex << c.key << " "
                                                                                   << c.mods.toInt();
}

TEST(QtKeys, KeyMessageFlagsAsTheSystemSetsThem) {
  // The high word is what handlers see as nFlags; the low word the repeat count.
  EXPECT_EQ(KeyMessageLParam(false, false, false, false), 1);
  EXPECT_EQ(HIWORD(KeyMessageLParam(false, true, false, false)), 0x4000);  // auto-repeat: was down
  EXPECT_EQ(HIWORD(KeyMessageLParam(true, false, false, false)), 0xC000);  // key-up: was down, going up
  EXPECT_EQ(HIWORD(KeyMessageLParam(false, false, true, false)), 0x0100);  // extended key
  EXPECT_EQ(HIWORD(KeyMessageLParam(false, false, false, true)), 0x2000);  // Alt held
  EXPECT_TRUE(IsExtendedKey(Qt::Key_Down, kNone));
  EXPECT_FALSE(IsExtendedKey(Qt::Key_Down, kPad));
  EXPECT_TRUE(IsExtendedKey(Qt::Key_Enter, kPad));
  EXPECT_TRUE(IsModifierKey(Qt::Key_Shift));
  EXPECT_TRUE(IsModifierKey(Qt::Key_CapsLock));
  EXPECT_FALSE(IsModifierKey(Qt::Key_Hangul));  // switching input modes ends a syllable
}

}  // namespace
