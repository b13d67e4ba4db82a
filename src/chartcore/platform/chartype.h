// Locale-independent character classes.
//
// The system classifies wide characters by their Unicode class whatever the
// process locale is: a Hangul syllable is alphanumeric, U+3000 (ideographic
// space) is white space. These are the classes the editor's word scanning and
// the string helpers use. The narrow forms stay ASCII.
//
//   chartcore::IsAlnumW(L'한');   // true
//   chartcore::IsSpaceW(0x3000);  // true
#ifndef CHARTCORE_PLATFORM_CHARTYPE_H_
#define CHARTCORE_PLATFORM_CHARTYPE_H_

#include "chartcore/platform/types.h"

namespace chartcore {

// Unicode-class tests on one wide code unit (a lone surrogate is none of them).
CHARTCORE_API bool IsAlnumW(wchar_t ch);
CHARTCORE_API bool IsAlphaW(wchar_t ch);
CHARTCORE_API bool IsDigitW(wchar_t ch);   // '0'..'9' only, as iswdigit
CHARTCORE_API bool IsSpaceW(wchar_t ch);
CHARTCORE_API bool IsUpperW(wchar_t ch);
CHARTCORE_API bool IsLowerW(wchar_t ch);
CHARTCORE_API bool IsXDigitW(wchar_t ch);  // ASCII hex digits only
CHARTCORE_API bool IsPunctW(wchar_t ch);
// Simple case mapping by Unicode; characters without a mapping are returned.
CHARTCORE_API wchar_t ToUpperW(wchar_t ch);
CHARTCORE_API wchar_t ToLowerW(wchar_t ch);

// ASCII-only narrow forms (bytes above 0x7F are never letters or digits).
inline bool IsAlnumA(int c) { return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z'); }
inline int ToUpperA(int c) { return (c >= 'a' && c <= 'z') ? c - 'a' + 'A' : c; }
inline int ToLowerA(int c) { return (c >= 'A' && c <= 'Z') ? c - 'A' + 'a' : c; }

}  // namespace chartcore

// IsDBCSLeadByte: on Windows the system's test for the active code page;
// elsewhere the lead bytes of code page 949 (0x81 to 0xFE).
#if !defined(_WIN32)
CHARTCORE_API BOOL IsDBCSLeadByte(BYTE ch);
#endif

#endif  // CHARTCORE_PLATFORM_CHARTYPE_H_
