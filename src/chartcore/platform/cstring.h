// CString: the framework's wide string, a value class over wchar_t text.
//
// Every text the library passes or returns is a CString. In memory it holds
// the platform's wchar_t code units (UTF-16 on Windows, UTF-32 on Linux); at
// every byte boundary (archives, profile files, log files) text is converted
// explicitly. Format follows the Microsoft C runtime's wide printf on every
// platform: %s is a wide string, the 0 flag pads strings too, and numbers that
// lie exactly halfway round away from zero.
//
//   CString s;
//   s.Format(L"%4s%02s%02s", L"2024", L"1", L"5");   // "20240105"
//   s.Find(L"01");                                    // 4
#ifndef CHARTCORE_PLATFORM_CSTRING_H_
#define CHARTCORE_PLATFORM_CSTRING_H_

#include <cstdarg>
#include <string>

#include "chartcore/platform/types.h"

class CHARTCORE_API CString {
 public:
  // -------------------------------------------------------------------------
  // Construction
  // -------------------------------------------------------------------------
  CString() = default;
  CString(const wchar_t* text) : m_str(text ? text : L"") {}
  CString(const wchar_t* text, int count) : m_str(text ? text : L"", text && count > 0 ? static_cast<size_t>(count) : 0) {}
  CString(wchar_t ch, int repeat = 1) : m_str(repeat > 0 ? static_cast<size_t>(repeat) : 0, ch) {}
  explicit CString(const std::wstring& s) : m_str(s) {}
  explicit CString(std::wstring&& s) : m_str(std::move(s)) {}
  CString(const CString&) = default;
  CString(CString&&) noexcept = default;
  CString& operator=(const CString&) = default;
  CString& operator=(CString&&) noexcept = default;
  CString& operator=(const wchar_t* text) { m_str.assign(text ? text : L""); return *this; }
  CString& operator=(wchar_t ch) { m_str.assign(1, ch); return *this; }

  // -------------------------------------------------------------------------
  // Length and characters
  // -------------------------------------------------------------------------
  int GetLength() const { return static_cast<int>(m_str.size()); }
  bool IsEmpty() const { return m_str.empty(); }
  void Empty() { m_str.clear(); }
  // GetAt, SetAt, operator[]: an index outside 0..GetLength()-1 throws
  // CInvalidArgException (SetAt, GetAt) as the framework does.
  wchar_t GetAt(int index) const;
  void SetAt(int index, wchar_t ch);
  wchar_t operator[](int index) const { return GetAt(index); }
  const wchar_t* GetString() const { return m_str.c_str(); }
  operator const wchar_t*() const { return m_str.c_str(); }
  // GetBuffer: a writable buffer of at least minLength characters (plus the
  // terminator); ReleaseBuffer(n) sets the length to n, or with -1 to the
  // position of the first terminator.
  wchar_t* GetBuffer(int minLength = 0);
  wchar_t* GetBufferSetLength(int length);
  void ReleaseBuffer(int newLength = -1);
  void Preallocate(int length) { if (length > 0) m_str.reserve(static_cast<size_t>(length)); }
  const std::wstring& str() const { return m_str; }
  std::wstring& str() { return m_str; }

  // -------------------------------------------------------------------------
  // Concatenation and comparison
  // -------------------------------------------------------------------------
  CString& operator+=(const CString& s) { m_str += s.m_str; return *this; }
  CString& operator+=(const wchar_t* s) { if (s) m_str += s; return *this; }
  CString& operator+=(wchar_t ch) { m_str += ch; return *this; }
  void Append(const wchar_t* s, int count) { if (s && count > 0) m_str.append(s, static_cast<size_t>(count)); }
  void AppendChar(wchar_t ch) { m_str += ch; }

  // Compare, CompareNoCase: <0, 0 or >0 by code unit; NoCase folds with the
  // locale-independent towupper of the framework layer.
  int Compare(const wchar_t* s) const;
  int CompareNoCase(const wchar_t* s) const;

  // -------------------------------------------------------------------------
  // Searching and extracting
  // -------------------------------------------------------------------------
  // Find: index of the first occurrence at or after start, or -1. A start
  // beyond the length finds nothing; an empty sub finds nothing.
  int Find(const wchar_t* sub, int start = 0) const;
  int Find(wchar_t ch, int start = 0) const;
  int ReverseFind(wchar_t ch) const;
  int FindOneOf(const wchar_t* chars) const;
  // Left, Mid, Right clamp their arguments to the string as the framework does.
  CString Left(int count) const;
  CString Mid(int first) const;
  CString Mid(int first, int count) const;
  CString Right(int count) const;
  CString SpanIncluding(const wchar_t* chars) const;
  CString SpanExcluding(const wchar_t* chars) const;
  CString Tokenize(const wchar_t* tokens, int& start) const;

  // -------------------------------------------------------------------------
  // Editing
  // -------------------------------------------------------------------------
  // Insert: an index past the end appends; returns the new length.
  int Insert(int index, const wchar_t* text);
  int Insert(int index, wchar_t ch);
  // Delete: removes up to count characters at index; returns the new length.
  int Delete(int index, int count = 1);
  // Replace: replaces every occurrence; returns the number replaced.
  int Replace(const wchar_t* oldText, const wchar_t* newText);
  int Replace(wchar_t oldCh, wchar_t newCh);
  // Remove: removes every ch; returns the number removed.
  int Remove(wchar_t ch);
  CString& Trim();
  CString& Trim(wchar_t ch);
  CString& Trim(const wchar_t* chars);
  CString& TrimLeft();
  CString& TrimLeft(wchar_t ch);
  CString& TrimLeft(const wchar_t* chars);
  CString& TrimRight();
  CString& TrimRight(wchar_t ch);
  CString& TrimRight(const wchar_t* chars);
  CString& MakeUpper();
  CString& MakeLower();
  CString& MakeReverse();

  // -------------------------------------------------------------------------
  // Formatting (Microsoft wide printf rules; see chartcore/platform/format.h)
  // -------------------------------------------------------------------------
  void Format(const wchar_t* format, ...);
  void AppendFormat(const wchar_t* format, ...);
  void FormatV(const wchar_t* format, va_list args);
  void AppendFormatV(const wchar_t* format, va_list args);

 private:
  std::wstring m_str;
};

// ---------------------------------------------------------------------------
// Free operators
// ---------------------------------------------------------------------------
CHARTCORE_API CString operator+(const CString& a, const CString& b);
CHARTCORE_API CString operator+(const CString& a, const wchar_t* b);
CHARTCORE_API CString operator+(const wchar_t* a, const CString& b);
CHARTCORE_API CString operator+(const CString& a, wchar_t b);
CHARTCORE_API CString operator+(wchar_t a, const CString& b);

inline bool operator==(const CString& a, const CString& b) { return a.str() == b.str(); }
inline bool operator==(const CString& a, const wchar_t* b) { return a.Compare(b) == 0; }
inline bool operator==(const wchar_t* a, const CString& b) { return b.Compare(a) == 0; }
inline bool operator!=(const CString& a, const CString& b) { return !(a == b); }
inline bool operator!=(const CString& a, const wchar_t* b) { return !(a == b); }
inline bool operator!=(const wchar_t* a, const CString& b) { return !(a == b); }
inline bool operator<(const CString& a, const CString& b) { return a.str() < b.str(); }
inline bool operator<(const CString& a, const wchar_t* b) { return a.Compare(b) < 0; }
inline bool operator<(const wchar_t* a, const CString& b) { return b.Compare(a) > 0; }
inline bool operator>(const CString& a, const CString& b) { return b < a; }
inline bool operator<=(const CString& a, const CString& b) { return !(b < a); }
inline bool operator>=(const CString& a, const CString& b) { return !(a < b); }

#endif  // CHARTCORE_PLATFORM_CSTRING_H_
