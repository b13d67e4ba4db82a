#include "chartcore/platform/chartype.h"

#include <cwctype>

#if !defined(_WIN32)
#include <clocale>
#include <locale.h>
#endif

namespace chartcore {
namespace {

#if !defined(_WIN32)
// One C.UTF-8 locale object, made on first use and never freed: the classes
// come from it, never from the process locale a host may have set.
locale_t UnicodeLocale() {
  static const locale_t loc = [] {
    locale_t l = newlocale(LC_CTYPE_MASK, "C.UTF-8", static_cast<locale_t>(0));
    if (!l) l = newlocale(LC_CTYPE_MASK, "C.utf8", static_cast<locale_t>(0));
    if (!l) l = newlocale(LC_CTYPE_MASK, "en_US.UTF-8", static_cast<locale_t>(0));
    return l;
  }();
  return loc;
}
#define CC_CLASS(fn, ch) (UnicodeLocale() ? fn##_l(static_cast<wint_t>(ch), UnicodeLocale()) != 0 : fn(static_cast<wint_t>(ch)) != 0)
#else
#define CC_CLASS(fn, ch) (fn(static_cast<wint_t>(ch)) != 0)
#endif

bool IsSurrogate(wchar_t ch) { return ch >= 0xD800 && ch <= 0xDFFF; }

#if defined(_WIN32)
// The runtime's towupper maps only ASCII in its default locale; the system's
// invariant mapping covers all of Unicode whatever the user's settings.
wchar_t MapCase(wchar_t ch, DWORD how) {
  wchar_t out = ch;
  return LCMapStringEx(LOCALE_NAME_INVARIANT, how, &ch, 1, &out, 1, nullptr, nullptr, 0) == 1 ? out : ch;
}
#endif

}  // namespace

bool IsAlnumW(wchar_t ch) { return !IsSurrogate(ch) && CC_CLASS(iswalnum, ch); }
bool IsAlphaW(wchar_t ch) { return !IsSurrogate(ch) && CC_CLASS(iswalpha, ch); }
bool IsDigitW(wchar_t ch) { return ch >= L'0' && ch <= L'9'; }
bool IsSpaceW(wchar_t ch) {
#if !defined(_WIN32)
  // The C library leaves the no-break spaces out of its space class; Unicode
  // and the Windows runtime count them, and trimming must agree on both.
  if (ch == 0x00A0 || ch == 0x2007 || ch == 0x202F) return true;
#endif
  return !IsSurrogate(ch) && CC_CLASS(iswspace, ch);
}
bool IsUpperW(wchar_t ch) { return !IsSurrogate(ch) && CC_CLASS(iswupper, ch); }
bool IsLowerW(wchar_t ch) { return !IsSurrogate(ch) && CC_CLASS(iswlower, ch); }
bool IsXDigitW(wchar_t ch) {
  return (ch >= L'0' && ch <= L'9') || (ch >= L'a' && ch <= L'f') || (ch >= L'A' && ch <= L'F');
}
bool IsPunctW(wchar_t ch) { return !IsSurrogate(ch) && CC_CLASS(iswpunct, ch); }

wchar_t ToUpperW(wchar_t ch) {
  if (ch < 0x80) return (ch >= L'a' && ch <= L'z') ? static_cast<wchar_t>(ch - L'a' + L'A') : ch;
  if (IsSurrogate(ch)) return ch;
#if defined(_WIN32)
  return MapCase(ch, LCMAP_UPPERCASE);
#else
  if (UnicodeLocale()) return static_cast<wchar_t>(towupper_l(static_cast<wint_t>(ch), UnicodeLocale()));
  return static_cast<wchar_t>(towupper(static_cast<wint_t>(ch)));
#endif
}

wchar_t ToLowerW(wchar_t ch) {
  if (ch < 0x80) return (ch >= L'A' && ch <= L'Z') ? static_cast<wchar_t>(ch - L'A' + L'a') : ch;
  if (IsSurrogate(ch)) return ch;
#if defined(_WIN32)
  return MapCase(ch, LCMAP_LOWERCASE);
#else
  if (UnicodeLocale()) return static_cast<wchar_t>(towlower_l(static_cast<wint_t>(ch), UnicodeLocale()));
  return static_cast<wchar_t>(towlower(static_cast<wint_t>(ch)));
#endif
}

}  // namespace chartcore

#if !defined(_WIN32)
BOOL IsDBCSLeadByte(BYTE ch) { return (ch >= 0x81 && ch <= 0xFE) ? TRUE : FALSE; }
#endif
