// Text, geometry and font conversions between the framework and Qt.
#include "chartcore_qt/conversions.h"

#include <QFontInfo>

#include <cstring>
#include <cwchar>

#include <gtest/gtest.h>

#include "chartcore/platform/system.h"

using chartcore::qt::FontFromLogFont;
using chartcore::qt::FontMetricsOf;
using chartcore::qt::ToCString;
using chartcore::qt::ToQString;

namespace {

LOGFONT ZeroFont() {
  LOGFONT lf;
  std::memset(&lf, 0, sizeof(lf));
  return lf;
}

TEST(QtConversions, TextRoundTripsAndBadUnitsBecomeReplacements) {
  // Hangul and a character beyond the basic plane (one wchar_t on Linux,
  // a surrogate pair in Qt).
  const wchar_t text[] = {L'한', L'a', static_cast<wchar_t>(0x1F600), 0};
  const QString q = ToQString(CString(text));
  EXPECT_EQ(q.size(), 4);
  EXPECT_EQ(q, QString::fromUtf8("한a\xF0\x9F\x98\x80"));
  EXPECT_EQ(ToCString(q), CString(text));
  // A lone surrogate from Qt, and code units that are no character.
  QString lone;
  lone.append(QChar(0xD800));
  lone.append(QLatin1Char('x'));
  EXPECT_EQ(ToCString(lone), CString(L"\xFFFDx"));
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
  EXPECT_EQ(chartcore::qt::ToQRect(CRect(10, 20, 30, 25)), QRect(10, 20, 20, 5));
  EXPECT_EQ(chartcore::qt::ToCRect(QRect(10, 20, 20, 5)), CRect(10, 20, 30, 25));
  EXPECT_TRUE(chartcore::qt::ToQRect(CRect(30, 20, 10, 25)).isEmpty());  // inverted
  EXPECT_EQ(chartcore::qt::ToQColor(RGB(162, 40, 202)), QColor(162, 40, 202));
  EXPECT_EQ(chartcore::qt::ToQColor(0xFF0000FFu), QColor(255, 0, 0));  // high byte ignored
  EXPECT_EQ(chartcore::qt::ToColorRef(QColor(0, 128, 128, 10)), RGB(0, 128, 128));
}

TEST(QtConversions, LogicalFontsMapAsTheSystemMapperReadsThem) {
  // Negative height: the em size in pixels.
  LOGFONT em = ZeroFont();
  em.lfHeight = -20;
  EXPECT_EQ(FontFromLogFont(&em).pixelSize(), 20);
  // Positive height: the cell (ascent + descent) fits it, and only just.
  LOGFONT cell = ZeroFont();
  cell.lfHeight = 15;
  const int height = FontMetricsOf(&cell).height();
  EXPECT_LE(height, 15);
  EXPECT_GE(height, 12);
  QFont bigger = FontFromLogFont(&cell);
  bigger.setPixelSize(bigger.pixelSize() + 1);
  EXPECT_GT(QFontMetrics(bigger).height(), 15);
  // Weight, italic and quality.
  LOGFONT bold = ZeroFont();
  bold.lfWeight = FW_BOLD;
  bold.lfItalic = 1;
  bold.lfQuality = chartcore::qt::kNonAntialiasedQuality;
  const QFont b = FontFromLogFont(&bold);
  EXPECT_EQ(b.weight(), QFont::Bold);
  EXPECT_TRUE(b.italic());
  EXPECT_EQ(b.styleStrategy() & QFont::NoAntialias, QFont::NoAntialias);
  // No face but a fixed pitch: the editor's monospace face, really fixed.
  LOGFONT fixed = ZeroFont();
  fixed.lfHeight = -14;
  fixed.lfPitchAndFamily = chartcore::qt::kFixedPitch;
  EXPECT_EQ(QFontInfo(FontFromLogFont(&fixed)).family(), chartcore::qt::MonospaceFamily());
  EXPECT_EQ(FontMetricsOf(&fixed).horizontalAdvance(QLatin1Char('i')),
            FontMetricsOf(&fixed).horizontalAdvance(QLatin1Char('W')));
  // Runs measure as the sum of their characters (no kerning).
  LOGFONT sans = ZeroFont();
  sans.lfHeight = -16;
  const QFontMetrics& fm = FontMetricsOf(&sans);
  EXPECT_EQ(fm.horizontalAdvance("AVAV"), 2 * fm.horizontalAdvance("A") + 2 * fm.horizontalAdvance("V"));
  // The editor font: its height from the screen's pixels per inch.
  const LOGFONT editor = chartcore::qt::MonospaceLogFont(10);
  EXPECT_EQ(editor.lfHeight, -MulDiv(10, chartcore::GetScreenPixelsPerInchY(), 72));
  EXPECT_EQ(chartcore::qt::ToQString(editor.lfFaceName, static_cast<int>(std::wcslen(editor.lfFaceName))),
            chartcore::qt::MonospaceFamily());
  EXPECT_EQ(chartcore::qt::MonospaceLogFont(0).lfHeight, editor.lfHeight);  // below 1 counts as 10
  // A height no screen has is clamped rather than asked of the font engine.
  LOGFONT huge = ZeroFont();
  huge.lfHeight = -2000000000;
  EXPECT_EQ(FontFromLogFont(&huge).pixelSize(), 2000);
}

}  // namespace
