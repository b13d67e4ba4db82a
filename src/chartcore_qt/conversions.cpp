#include "chartcore_qt/conversions.h"

#include <QApplication>
#include <QFontDatabase>
#include <QFontInfo>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <memory>
#include <string>
#include <unordered_map>

#include "chartcore/foundation/colours_geometry.h"

namespace chartcore {
namespace qt {

// ---------------------------------------------------------------------------
// Text
// ---------------------------------------------------------------------------
QString ToQString(const wchar_t* text, int length) {
  QString out;
  if (text == nullptr || length < 1) return out;
  out.reserve(length);
  for (int i = 0; i < length; ++i) {
    const char32_t unit = static_cast<char32_t>(text[i]);
    if (sizeof(wchar_t) == 2) {
      // UTF-16 already: pairs pass through, a lone half becomes U+FFFD.
      const bool high = unit >= 0xD800 && unit <= 0xDBFF;
      const bool low = unit >= 0xDC00 && unit <= 0xDFFF;
      if (high && i + 1 < length && static_cast<char32_t>(text[i + 1]) >= 0xDC00 &&
          static_cast<char32_t>(text[i + 1]) <= 0xDFFF) {
        out.append(QChar(static_cast<char16_t>(unit)));
        out.append(QChar(static_cast<char16_t>(text[++i])));
      } else {
        out.append(high || low ? QChar(QChar::ReplacementCharacter) : QChar(static_cast<char16_t>(unit)));
      }
      continue;
    }
    if (unit > 0x10FFFF || (unit >= 0xD800 && unit <= 0xDFFF)) {
      out.append(QChar(QChar::ReplacementCharacter));
    } else if (unit >= 0x10000) {
      out.append(QChar(QChar::highSurrogate(unit)));
      out.append(QChar(QChar::lowSurrogate(unit)));
    } else {
      out.append(QChar(static_cast<char16_t>(unit)));
    }
  }
  return out;
}

QString ToQString(const CString& text) { return ToQString(text.GetString(), text.GetLength()); }

CString ToCString(const QString& text) {
  std::wstring out;
  out.reserve(static_cast<size_t>(text.size()));
  for (qsizetype i = 0; i < text.size(); ++i) {
    const char16_t unit = text.at(i).unicode();
    const bool high = QChar::isHighSurrogate(unit);
    const bool pairs = high && i + 1 < text.size() && QChar::isLowSurrogate(text.at(i + 1).unicode());
    if (pairs) {
      if (sizeof(wchar_t) == 2) {
        out.push_back(static_cast<wchar_t>(unit));
        out.push_back(static_cast<wchar_t>(text.at(i + 1).unicode()));
      } else {
        out.push_back(static_cast<wchar_t>(QChar::surrogateToUcs4(unit, text.at(i + 1).unicode())));
      }
      ++i;
    } else if (high || QChar::isLowSurrogate(unit)) {
      out.push_back(static_cast<wchar_t>(0xFFFD));
    } else {
      out.push_back(static_cast<wchar_t>(unit));
    }
  }
  return CString(out.c_str(), static_cast<int>(out.size()));
}

// ---------------------------------------------------------------------------
// Fonts
// ---------------------------------------------------------------------------
namespace {

// Every field that changes the font picked; the face name up to its end.
std::string FontKey(const LOGFONT* lf) {
  if (lf == nullptr) return std::string();
  std::string key(reinterpret_cast<const char*>(lf), offsetof(LOGFONT, lfFaceName));
  for (int i = 0; i < 32 && lf->lfFaceName[i] != L'\0'; ++i) {
    const auto unit = static_cast<std::uint32_t>(lf->lfFaceName[i]);
    key.append(reinterpret_cast<const char*>(&unit), sizeof(unit));
  }
  return key;
}

QFont BuildFont(const LOGFONT* lf) {
  QFont font = QApplication::font();
  if (lf == nullptr) {
    font.setKerning(false);
    font.setHintingPreference(QFont::PreferFullHinting);
    return font;
  }
  int nameLength = 0;
  while (nameLength < 32 && lf->lfFaceName[nameLength] != L'\0') ++nameLength;
  const QString face = ToQString(lf->lfFaceName, nameLength);
  const bool fixed = (lf->lfPitchAndFamily & 0x03) == kFixedPitch || (lf->lfPitchAndFamily & 0xF0) == kFamilyModern;
  if (!face.isEmpty()) {
    font.setFamilies(QStringList{face});
  } else if (fixed) {
    font.setFamilies(QStringList{MonospaceFamily()});
  }
  if (fixed) {
    font.setStyleHint(QFont::Monospace);
    font.setFixedPitch(true);
  }
  font.setWeight(lf->lfWeight <= 0 ? QFont::Normal : static_cast<QFont::Weight>(qBound(1, static_cast<int>(lf->lfWeight), 1000)));
  font.setItalic(lf->lfItalic != 0);
  font.setUnderline(lf->lfUnderline != 0);
  font.setStrikeOut(lf->lfStrikeOut != 0);
  font.setKerning(false);
  // Hinted glyphs advance by whole pixels, so a run measures as the sum of
  // its characters and draws in one call.
  font.setHintingPreference(QFont::PreferFullHinting);
  if (lf->lfQuality == kNonAntialiasedQuality) {
    font.setStyleStrategy(QFont::NoAntialias);
  } else if (lf->lfQuality == kAntialiasedQuality || lf->lfQuality == kClearTypeQuality) {
    font.setStyleStrategy(QFont::PreferAntialias);
  }
  // A height beyond any screen is clamped; the system's mapper does the same.
  const int height = static_cast<int>(qBound(-2000L, static_cast<long>(lf->lfHeight), 2000L));
  if (height < 0) {
    font.setPixelSize(-height);
  } else if (height > 0) {
    // The cell height: scale the em size until ascent + descent fits.
    font.setPixelSize(height);
    const int cell = QFontMetrics(font).height();
    if (cell > 0 && cell != height) {
      int em = std::max(1, static_cast<int>(std::lround(static_cast<double>(height) * height / cell)));
      font.setPixelSize(em);
      while (em > 1 && QFontMetrics(font).height() > height) font.setPixelSize(--em);
      // The largest em size whose cell still fits.
      QFont next = font;
      for (next.setPixelSize(em + 1); QFontMetrics(next).height() <= height; next.setPixelSize(++em + 1)) font = next;
    }
  }
  return font;
}

}  // namespace

FontData::FontData(const QFont& font)
    : m_font(font), m_metrics(font), m_bFixedPitch(QFontInfo(font).fixedPitch()) {}

int FontData::Advance(wchar_t ch) const {
  auto it = m_advances.find(ch);
  if (it != m_advances.end()) return it->second;
  const char32_t cp = static_cast<char32_t>(ch);
  // A single UTF-16 unit measures without shaping.
  const int advance = cp < 0x10000 && !(cp >= 0xD800 && cp <= 0xDFFF)
                          ? m_metrics.horizontalAdvance(QChar(static_cast<char16_t>(cp)))
                          : m_metrics.horizontalAdvance(ToQString(&ch, 1));
  m_advances.emplace(ch, advance);
  return advance;
}

const QStaticText& FontData::Layout(const QString& run) const {
  // Some dozens of screens of runs.
  constexpr qsizetype kMaxLayouts = 8192;
  auto it = m_layouts.find(run);
  if (it != m_layouts.end()) return it.value();
  if (m_layouts.size() >= kMaxLayouts) m_layouts.clear();
  QStaticText text(run);
  text.setTextFormat(Qt::PlainText);
  text.prepare(QTransform(), m_font);
  return m_layouts.insert(run, text).value();
}

const FontData& FontDataOf(const LOGFONT* lf) {
  static std::unordered_map<std::string, std::unique_ptr<FontData>> cache;
  // The same font asked for again (a repaint draws run after run in it).
  static LOGFONT lastFont;
  static const FontData* last = nullptr;
  static bool lastWasNull = false;
  if (last != nullptr && (lf == nullptr ? lastWasNull : !lastWasNull && std::memcmp(lf, &lastFont, sizeof(LOGFONT)) == 0))
    return *last;
  const std::string key = FontKey(lf);
  auto it = cache.find(key);
  if (it == cache.end()) it = cache.emplace(key, std::unique_ptr<FontData>(new FontData(BuildFont(lf)))).first;
  last = it->second.get();
  lastWasNull = lf == nullptr;
  if (lf != nullptr) lastFont = *lf;
  return *last;
}

QFont FontFromLogFont(const LOGFONT* lf) { return FontDataOf(lf).Font(); }

const QFontMetrics& FontMetricsOf(const LOGFONT* lf) { return FontDataOf(lf).Metrics(); }

QString MonospaceFamily() {
  static const QString family = [] {
    const QStringList installed = QFontDatabase::families();
    for (const char* wanted : {"NanumGothicCoding", "D2Coding", "Noto Sans Mono CJK KR"}) {
      if (installed.contains(QString::fromLatin1(wanted), Qt::CaseInsensitive)) return QString::fromLatin1(wanted);
    }
    return QFontDatabase::systemFont(QFontDatabase::FixedFont).family();
  }();
  return family;
}

LOGFONT MonospaceLogFont(int pointSize) {
  LOGFONT lf;
  std::memset(&lf, 0, sizeof(lf));
  if (pointSize < 1) pointSize = 10;
  lf.lfHeight = GetFontHeightFromPoint(pointSize);
  lf.lfWeight = FW_NORMAL;
  lf.lfPitchAndFamily = kFixedPitch | kFamilyModern;
  const CString face = ToCString(MonospaceFamily());
  for (int i = 0; i < face.GetLength() && i < 31; ++i) lf.lfFaceName[i] = face[i];
  return lf;
}

}  // namespace qt
}  // namespace chartcore
