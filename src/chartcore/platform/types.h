// Fixed-width types, character types and small value types of the framework.
//
// The library is written in the vocabulary of the Windows framework its hosts
// use (BYTE, DWORD, COLORREF, TCHAR, CPoint, CRect, ...). These names keep the
// framework's exact widths on every platform: on Linux `long` is 64 bits, so
// DWORD and COLORREF are std::uint32_t, never `unsigned long`.
//
//   COLORREF c = RGB(255, 0, 0);          // 0x000000FF
//   CRect r(0, 0, 100, 50);  r.Width();   // 100
#ifndef CHARTCORE_PLATFORM_TYPES_H_
#define CHARTCORE_PLATFORM_TYPES_H_

#include <cstddef>
#include <cstdint>

#include "chartcore/platform/export.h"

#if defined(_WIN32)
// On Windows the system headers define the base types; we take them from there
// so host code mixing <windows.h> and our headers sees one set of names.
#ifndef NOMINMAX
#define NOMINMAX
#endif
#ifndef WIN32_LEAN_AND_MEAN
#define WIN32_LEAN_AND_MEAN
#endif
#include <windows.h>
#include <tchar.h>
#else

// ---------------------------------------------------------------------------
// Integer and character types
// ---------------------------------------------------------------------------
typedef std::uint8_t BYTE;
typedef std::uint16_t WORD;
typedef std::uint32_t DWORD;
typedef std::int32_t BOOL;
typedef std::int32_t LONG;
typedef std::uint32_t ULONG;
typedef std::uint32_t UINT;
typedef std::int32_t INT;
// long long as on Windows, not std::int64_t (which is long on Linux): an
// archive stores LONGLONG in 8 bytes and long in 4, so they must differ.
typedef long long LONGLONG;
typedef unsigned long long ULONGLONG;
typedef std::uint32_t COLORREF;
typedef std::int32_t HRESULT;
typedef std::intptr_t INT_PTR;
typedef std::uintptr_t UINT_PTR;
typedef std::intptr_t LPARAM;
typedef std::uintptr_t WPARAM;
typedef std::intptr_t LRESULT;
typedef double DATE;
typedef wchar_t WCHAR;
typedef wchar_t TCHAR;
typedef const wchar_t* LPCTSTR;
typedef wchar_t* LPTSTR;
typedef const wchar_t* LPCWSTR;
typedef wchar_t* LPWSTR;
typedef const char* LPCSTR;
typedef char* LPSTR;
typedef void* LPVOID;

#ifndef TRUE
#define TRUE 1
#endif
#ifndef FALSE
#define FALSE 0
#endif

#define _T(x) L##x
#define _TEXT(x) L##x

// ---------------------------------------------------------------------------
// Colours (0x00BBGGRR)
// ---------------------------------------------------------------------------
constexpr COLORREF RGB(int r, int g, int b) {
  return static_cast<COLORREF>((static_cast<BYTE>(r)) | (static_cast<WORD>(static_cast<BYTE>(g)) << 8) |
                               (static_cast<DWORD>(static_cast<BYTE>(b)) << 16));
}
constexpr BYTE GetRValue(COLORREF c) { return static_cast<BYTE>(c & 0xFF); }
constexpr BYTE GetGValue(COLORREF c) { return static_cast<BYTE>((c >> 8) & 0xFF); }
constexpr BYTE GetBValue(COLORREF c) { return static_cast<BYTE>((c >> 16) & 0xFF); }

// ---------------------------------------------------------------------------
// COM-style results
// ---------------------------------------------------------------------------
constexpr HRESULT S_OK = 0;
constexpr HRESULT S_FALSE = 1;
constexpr HRESULT E_FAIL = static_cast<HRESULT>(0x80004005u);
constexpr HRESULT E_INVALIDARG = static_cast<HRESULT>(0x80070057u);
constexpr HRESULT E_OUTOFMEMORY = static_cast<HRESULT>(0x8007000Eu);
constexpr bool SUCCEEDED(HRESULT hr) { return hr >= 0; }
constexpr bool FAILED(HRESULT hr) { return hr < 0; }

// ---------------------------------------------------------------------------
// Geometry structs
// ---------------------------------------------------------------------------
struct POINT {
  LONG x;
  LONG y;
};
struct SIZE {
  LONG cx;
  LONG cy;
};
struct RECT {
  LONG left;
  LONG top;
  LONG right;
  LONG bottom;
};
typedef RECT* LPRECT;
typedef const RECT* LPCRECT;

#endif  // !_WIN32

static_assert(sizeof(BYTE) == 1 && sizeof(WORD) == 2 && sizeof(DWORD) == 4, "fixed widths");
static_assert(sizeof(COLORREF) == 4 && sizeof(LONG) == 4 && sizeof(LONGLONG) == 8, "fixed widths");

// ---------------------------------------------------------------------------
// CPoint, CSize, CRect: the framework's value wrappers over the structs.
// ---------------------------------------------------------------------------
class CSize : public SIZE {
 public:
  CSize() { cx = cy = 0; }
  CSize(int x, int y) { cx = x; cy = y; }
  CSize(SIZE s) { cx = s.cx; cy = s.cy; }
  bool operator==(const SIZE& o) const { return cx == o.cx && cy == o.cy; }
  bool operator!=(const SIZE& o) const { return !(*this == o); }
  CSize operator+(SIZE o) const { return CSize(cx + o.cx, cy + o.cy); }
  CSize operator-(SIZE o) const { return CSize(cx - o.cx, cy - o.cy); }
};

class CPoint : public POINT {
 public:
  CPoint() { x = y = 0; }
  CPoint(int ix, int iy) { x = ix; y = iy; }
  CPoint(POINT p) { x = p.x; y = p.y; }
  void SetPoint(int ix, int iy) { x = ix; y = iy; }
  void Offset(int dx, int dy) { x += dx; y += dy; }
  bool operator==(const POINT& o) const { return x == o.x && y == o.y; }
  bool operator!=(const POINT& o) const { return !(*this == o); }
  CPoint operator+(SIZE s) const { return CPoint(x + s.cx, y + s.cy); }
  CPoint operator-(SIZE s) const { return CPoint(x - s.cx, y - s.cy); }
  CPoint operator+(POINT p) const { return CPoint(x + p.x, y + p.y); }
  CSize operator-(POINT p) const { return CSize(x - p.x, y - p.y); }
  CPoint& operator+=(SIZE s) { x += s.cx; y += s.cy; return *this; }
  CPoint& operator-=(SIZE s) { x -= s.cx; y -= s.cy; return *this; }
};

class CRect : public RECT {
 public:
  CRect() { left = top = right = bottom = 0; }
  CRect(int l, int t, int r, int b) { left = l; top = t; right = r; bottom = b; }
  CRect(const RECT& r) { left = r.left; top = r.top; right = r.right; bottom = r.bottom; }
  CRect(POINT tl, SIZE s) { left = tl.x; top = tl.y; right = tl.x + s.cx; bottom = tl.y + s.cy; }
  CRect(POINT tl, POINT br) { left = tl.x; top = tl.y; right = br.x; bottom = br.y; }
  int Width() const { return right - left; }
  int Height() const { return bottom - top; }
  CSize Size() const { return CSize(Width(), Height()); }
  CPoint TopLeft() const { return CPoint(left, top); }
  CPoint BottomRight() const { return CPoint(right, bottom); }
  CPoint CenterPoint() const { return CPoint((left + right) / 2, (top + bottom) / 2); }
  bool IsRectEmpty() const { return right <= left || bottom <= top; }
  bool IsRectNull() const { return left == 0 && top == 0 && right == 0 && bottom == 0; }
  bool PtInRect(POINT p) const { return p.x >= left && p.x < right && p.y >= top && p.y < bottom; }
  void SetRect(int l, int t, int r, int b) { left = l; top = t; right = r; bottom = b; }
  void SetRectEmpty() { left = top = right = bottom = 0; }
  void OffsetRect(int dx, int dy) { left += dx; right += dx; top += dy; bottom += dy; }
  void OffsetRect(POINT p) { OffsetRect(p.x, p.y); }
  void InflateRect(int dx, int dy) { left -= dx; right += dx; top -= dy; bottom += dy; }
  void DeflateRect(int dx, int dy) { InflateRect(-dx, -dy); }
  void NormalizeRect() {
    if (left > right) { LONG t = left; left = right; right = t; }
    if (top > bottom) { LONG t = top; top = bottom; bottom = t; }
  }
  bool operator==(const RECT& o) const {
    return left == o.left && top == o.top && right == o.right && bottom == o.bottom;
  }
  bool operator!=(const RECT& o) const { return !(*this == o); }
  operator LPRECT() { return this; }
  operator LPCRECT() const { return this; }
};

#endif  // CHARTCORE_PLATFORM_TYPES_H_
