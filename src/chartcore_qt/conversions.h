// Conversions between the framework's values and Qt's: text, colours,
// rectangles and logical fonts.
//
// The core speaks CString (wchar_t code units of the platform: UTF-32 on
// Linux), COLORREF (0x00BBGGRR), CRect (right and bottom exclusive) and
// LOGFONT; Qt speaks QString (UTF-16), QColor, QRect and QFont. The window
// backend converts at this one place. A LOGFONT becomes a QFont the way the
// system's font mapper reads it: a negative height is the character height in
// pixels, a positive one the cell height (ascent plus descent), zero the
// default size; an empty face name means the system's default face.
//
//   QString s = chartcore::qt::ToQString(CString(L"한국어"));
//   QColor red = chartcore::qt::ToQColor(RGB(255, 0, 0));
//   LOGFONT lf = chartcore::qt::MonospaceLogFont(10);   // the editor's font
//   QFont f = chartcore::qt::FontFromLogFont(&lf);
#ifndef CHARTCORE_QT_CONVERSIONS_H_
#define CHARTCORE_QT_CONVERSIONS_H_

#include <QColor>
#include <QFont>
#include <QFontMetrics>
#include <QHash>
#include <QPoint>
#include <QRect>
#include <QStaticText>
#include <QString>

#include <unordered_map>

#include "chartcore/platform/cstring.h"
#include "chartcore/platform/types.h"
#include "chartcore/platform/window.h"
#include "chartcore_qt/export.h"

namespace chartcore {
namespace qt {

// ---------------------------------------------------------------------------
// Text
// ---------------------------------------------------------------------------

// ToQString: the text as UTF-16; a null pointer or a length below 1 gives an
// empty string. Code units that are no character (lone surrogates, values
// above U+10FFFF) become U+FFFD, so nothing invalid reaches Qt.
CHARTCORE_QT_API QString ToQString(const wchar_t* text, int length);
CHARTCORE_QT_API QString ToQString(const CString& text);
// ToCString: the text in the platform's wchar_t units; an unpaired surrogate
// becomes U+FFFD.
CHARTCORE_QT_API CString ToCString(const QString& text);

// ---------------------------------------------------------------------------
// Colours and geometry
// ---------------------------------------------------------------------------

// ToQColor: the red, green and blue of a COLORREF (the high byte is ignored),
// opaque.
inline QColor ToQColor(COLORREF color) { return QColor(GetRValue(color), GetGValue(color), GetBValue(color)); }
// ToColorRef: the colour's red, green and blue as a COLORREF (alpha dropped).
inline COLORREF ToColorRef(const QColor& color) { return RGB(color.red(), color.green(), color.blue()); }
// ToQRect: the same pixels (CRect's right and bottom are exclusive); an
// inverted rectangle gives an empty QRect.
inline QRect ToQRect(const CRect& rect) {
  return QRect(rect.left, rect.top, rect.right > rect.left ? rect.right - rect.left : 0,
               rect.bottom > rect.top ? rect.bottom - rect.top : 0);
}
inline CRect ToCRect(const QRect& rect) {
  return CRect(rect.x(), rect.y(), rect.x() + rect.width(), rect.y() + rect.height());
}
inline QPoint ToQPoint(const POINT& pt) { return QPoint(pt.x, pt.y); }
inline CPoint ToCPoint(const QPoint& pt) { return CPoint(pt.x(), pt.y()); }

// ---------------------------------------------------------------------------
// Fonts
// ---------------------------------------------------------------------------

// LOGFONT field values the mapping reads (from the system headers on Windows).
enum : BYTE {
  kFixedPitch = 1,               // lfPitchAndFamily & 3
  kFamilyModern = 0x30,          // lfPitchAndFamily & 0xF0: a monospace family
  kNonAntialiasedQuality = 3,    // lfQuality
  kAntialiasedQuality = 4,
  kClearTypeQuality = 5,
};

// FontData: a logical font as Qt draws it, with what measuring needs.
class CHARTCORE_QT_API FontData {
 public:
  explicit FontData(const QFont& font);
  FontData(const FontData&) = delete;
  FontData& operator=(const FontData&) = delete;

  const QFont& Font() const { return m_font; }
  const QFontMetrics& Metrics() const { return m_metrics; }
  // The advance of one character, as a run's layout places the next one
  // after it (cached: a repaint asks for every character on the screen).
  int Advance(wchar_t ch) const;
  // Whether the face is fixed-pitch: its runs of plain letters, digits,
  // punctuation and Hangul then measure as the sum of their advances.
  bool IsFixedPitch() const { return m_bFixedPitch; }
  // The run laid out once for drawing again and again (a repaint draws the
  // same runs as the one before); the cache forgets everything when full.
  const QStaticText& Layout(const QString& run) const;

 private:
  QFont m_font;
  QFontMetrics m_metrics;
  bool m_bFixedPitch;
  mutable std::unordered_map<wchar_t, int> m_advances;
  mutable QHash<QString, QStaticText> m_layouts;
};

// FontDataOf: the font for a logical font; nullptr gives the system font
// (the application's default). Height: negative = the em size in pixels,
// positive = the cell height (ascent + descent) in pixels, 0 = the default
// size. A weight of 0 is normal; italic, underline and strike-out are kept; a
// fixed pitch or the modern family asks for a monospace face; quality 3 turns
// antialiasing off. Kerning is off and hinting full, so glyphs advance by
// whole pixels and a run measures as the sum of its characters, as the
// editor lays text out. Cached per LOGFONT for the life of the process.
CHARTCORE_QT_API const FontData& FontDataOf(const LOGFONT* lf);
// FontFromLogFont, FontMetricsOf: FontDataOf(lf)'s font and metrics.
CHARTCORE_QT_API QFont FontFromLogFont(const LOGFONT* lf);
CHARTCORE_QT_API const QFontMetrics& FontMetricsOf(const LOGFONT* lf);
// MonospaceFamily: the installed monospace face the editor uses: one that
// also draws Hangul at a fixed width when there is one ("NanumGothicCoding",
// "D2Coding"), else the system's fixed font.
CHARTCORE_QT_API QString MonospaceFamily();
// MonospaceLogFont: a logical font of pointSize points in MonospaceFamily(),
// its height converted with the screen's pixels per inch (a point size below
// 1 counts as 10).
CHARTCORE_QT_API LOGFONT MonospaceLogFont(int pointSize);

}  // namespace qt
}  // namespace chartcore

#endif  // CHARTCORE_QT_CONVERSIONS_H_
