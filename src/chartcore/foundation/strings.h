// Wildcard matching, substring search, deletion and cutting on plain wide
// character arrays.
//
// The host's parsers of settings and list texts work on zero-terminated
// wchar_t buffers they own, not on CString, so these helpers change the
// caller's array in place and return pointers into it. Case folding is ASCII
// only (a to z), whatever the process locale. A null argument is treated as
// an empty text.
//
//   wchar_t text[] = L"Period=20";
//   wchar_t head[32];
//   CutStringUntilKey(text, head, const_cast<wchar_t*>(L"="));
//   // head is L"Period", text is L"=20"
#ifndef CHARTCORE_FOUNDATION_STRINGS_H_
#define CHARTCORE_FOUNDATION_STRINGS_H_

#include "chartcore/platform/types.h"

// ---------------------------------------------------------------------------
// Matching and searching
// ---------------------------------------------------------------------------

// WildCmp: 1 when the whole text matches the whole pattern, else 0. In the
// pattern "*" matches any run of characters (also none), "?" exactly one
// character; every other character only itself, case-sensitively. An empty
// text matches only a pattern that is empty or all stars.
//   WildCmp(L"a*c", L"abbbc") == 1;  WildCmp(L"A*", L"abc") == 0
CHARTCORE_API int WildCmp(const wchar_t* pattern, const wchar_t* text);

// FindString: the first case-sensitive occurrence of sub in text, or null.
// An empty text or an empty sub is never searched: the result is null.
CHARTCORE_API wchar_t* FindString(wchar_t* text, wchar_t* sub);

// FindStringNoCase: the first occurrence of sub in text with the ASCII
// letters folded to upper case (other characters compare as they are), or
// null; null also for an empty text or sub.
//   FindStringNoCase(L"Price=10", L"PRICE") points at the 'P'.
CHARTCORE_API wchar_t* FindStringNoCase(wchar_t* text, wchar_t* sub);

// ---------------------------------------------------------------------------
// Editing in place
// ---------------------------------------------------------------------------

// StrDel: removes the first case-sensitive occurrence of sub from text by
// moving the rest of the text (with its terminator) left over it. Returns the
// position where the occurrence stood, or null (text unchanged) when sub is
// not found or is empty.
CHARTCORE_API wchar_t* StrDel(wchar_t* text, wchar_t* sub);

// DeleteString: the same as StrDel; both names are in use by hosts.
CHARTCORE_API wchar_t* DeleteString(wchar_t* text, wchar_t* sub);

// CutStringUntilKey: splits text at the first occurrence of key (ASCII case
// folded). head receives the part before the key and text keeps the key and
// what follows it; the result points at the terminator in head where the key
// began. When the key is missing, head receives a copy of the whole text, text
// stays as it was and the result is null. When the key starts the text, head
// is empty and text stays whole (an empty head is never deleted).
// head must hold at least as many characters as text, terminator included;
// it is not checked.
//   text L"abc=def", key L"=": head L"abc", text L"=def"
CHARTCORE_API wchar_t* CutStringUntilKey(wchar_t* text, wchar_t* head, wchar_t* key);

#endif  // CHARTCORE_FOUNDATION_STRINGS_H_
