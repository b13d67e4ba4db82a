#include "chartcore/foundation/colours_geometry.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

#include "chartcore/packets/packet_types.h"
#include "chartcore/platform/int_conversion_internal.h"
#include "chartcore/platform/system.h"

namespace {

// Applies a per-channel formula to red, green and blue; the high byte goes.
template <typename Channel>
COLORREF MapChannels(COLORREF color, Channel channel) {
  return RGB(channel(GetRValue(color)), channel(GetGValue(color)), channel(GetBValue(color)));
}

// Keeps a truncated channel value to its low 8 bits, as a BYTE store does.
int LowByte(double value) { return static_cast<int>(static_cast<std::int64_t>(value) & 0xFF); }

bool InShadeRange(double factor) { return factor > 0.0 && factor <= 1.0; }

// Two's-complement negation without overflow for INT_MIN.
int Negate(int value) { return static_cast<int>(0u - static_cast<unsigned>(value)); }

// 32-bit products and differences that wrap as the screen code's LONG
// arithmetic does, without signed overflow.
using chartcore::internal::WrapToInt32;
std::int32_t Sub32(std::int32_t a, std::int32_t b) {
  return WrapToInt32(static_cast<std::int64_t>(a) - b);
}
std::int32_t Mul32(std::int32_t a, std::int32_t b) {
  return WrapToInt32(static_cast<std::int64_t>(a) * b);
}

// The slope of a vertical line, and the mark of a bar without data.
const double kEmptyValue = chartcore::kPacketEmptyValue;

// A screen coordinate from a computed position: clamped to the 32-bit range so
// a far-off or wrapped result never overflows the conversion.
double ClampToLong(double v) {
  if (std::isnan(v)) return 0.0;
  return std::min(std::max(v, -2147483648.0), 2147483647.0);
}
LONG TruncToLong(double v) { return static_cast<LONG>(std::trunc(ClampToLong(v))); }
LONG RoundToLong(double v) { return static_cast<LONG>(std::llround(ClampToLong(v))); }

}  // namespace

// ---------------------------------------------------------------------------
// Colours
// ---------------------------------------------------------------------------

COLORREF DarkenColor(COLORREF color, double factor) {
  if (!InShadeRange(factor)) return color;
  return MapChannels(color, [factor](int c) { return LowByte(std::trunc(c - c * factor)); });
}

COLORREF LightenColor(COLORREF color, double factor) {
  if (!InShadeRange(factor)) return color;
  return MapChannels(color, [factor](int c) { return LowByte(std::trunc((255 - c) * factor + c)); });
}

COLORREF InvertColor(COLORREF color) { return ~color & 0xFFFFFFu; }

COLORREF ChangeXORColor(COLORREF color, COLORREF mask) { return color ^ mask; }

COLORREF MakeUniqueColor(COLORREF color, int index) {
  if (index < 1) return color;
  const int step = static_cast<int>((10LL * index) % 256);
  return MapChannels(color, [step](int c) { return c < 255 ? (c + step) % 256 : 255 - step; });
}

// ---------------------------------------------------------------------------
// Font and marker sizes
// ---------------------------------------------------------------------------

int GetFontSizeOfItemWidth(double itemWidth) {
  if (itemWidth >= 20) return 15;
  if (itemWidth >= 13) return 13;
  if (itemWidth >= 9) return 11;
  if (itemWidth >= 6) return 9;
  return 8;
}

int GetSignalSizeOfItemWidth(double itemWidth) {
  if (itemWidth >= 30) return 20;
  if (itemWidth >= 20) return 15;
  if (itemWidth >= 15) return 10;
  if (itemWidth >= 9) return 7;
  if (itemWidth >= 7) return 5;
  if (itemWidth >= 5) return 4;
  return 3;
}

int GetFontHeightFromPoint(int points) {
  return Negate(MulDiv(points, chartcore::GetScreenPixelsPerInchY(), 72));
}

int GetFontPointFromHeight(int height) {
  return Negate(MulDiv(height, 72, chartcore::GetScreenPixelsPerInchY()));
}

// ---------------------------------------------------------------------------
// Line geometry
// ---------------------------------------------------------------------------

double GetLineSlope(CPoint p1, CPoint p2) {
  if (p1.x == p2.x) return kEmptyValue;
  return (static_cast<double>(p2.y) - p1.y) / (static_cast<double>(p2.x) - p1.x);
}

CPoint GetCenterPoint(CPoint p1, CPoint p2) {
  auto mid = [](std::int64_t a, std::int64_t b) {
    const std::int64_t lo = std::min(a, b);
    const std::int64_t half = (std::max(a, b) - lo) / 2;
    return static_cast<int>(lo + half);
  };
  return CPoint(mid(p1.x, p2.x), mid(p1.y, p2.y));
}

int CalcANALInfo(CPoint p1, CPoint p2, double& slope, double& intercept) {
  slope = 0.0;
  intercept = 0.0;
  if (p1 == p2) return ANAL_DIRECT_NONE;
  const double dx = static_cast<double>(p1.x) - p2.x;
  const double dy = static_cast<double>(p1.y) - p2.y;
  if (std::fabs(dx) < std::fabs(dy)) {
    slope = (p1.y == p2.y) ? 0.0 : dx / dy;
    intercept = p1.x - p1.y * slope;
    return ANAL_DIRECT_STEEP;
  }
  slope = (p1.x == p2.x) ? 0.0 : dy / dx;
  intercept = p1.y - p1.x * slope;
  return ANAL_DIRECT_SHALLOW;
}

int CheckLine(CPoint p1, CPoint p2, CPoint point) {
  const int kTolerance = 5;
  double slope = 0.0;
  double intercept = 0.0;
  const int kind = CalcANALInfo(p1, p2, slope, intercept);
  if (kind == ANAL_DIRECT_NONE) return point == p1 ? ANAL_DIRECT_POINT : ANAL_DIRECT_NONE;

  // Along the main axis the point must lie within the segment; across it the
  // line's position is truncated to a whole pixel before the distance check.
  // The distance is taken in double so far-off points cannot overflow.
  if (kind == ANAL_DIRECT_SHALLOW) {
    if (point.x < std::min(p1.x, p2.x) || point.x > std::max(p1.x, p2.x)) return ANAL_DIRECT_NONE;
    const double lineY = std::trunc(point.x * slope + intercept);
    return std::fabs(lineY - point.y) < kTolerance ? ANAL_DIRECT_SHALLOW : ANAL_DIRECT_NONE;
  }
  if (point.y < std::min(p1.y, p2.y) || point.y > std::max(p1.y, p2.y)) return ANAL_DIRECT_NONE;
  const double lineX = std::trunc(point.y * slope + intercept);
  return std::fabs(lineX - point.x) < kTolerance ? ANAL_DIRECT_STEEP : ANAL_DIRECT_NONE;
}

int GetANALQuarterDirect(CPoint p1, CPoint p2) {
  std::int64_t dx = static_cast<std::int64_t>(p2.x) - p1.x;
  std::int64_t dy = static_cast<std::int64_t>(p2.y) - p1.y;
  if (dx == 0) dx = 1;
  if (dy == 0) dy = 1;
  if (dx > 0) return dy < 0 ? ANAL_QUARTER_RIGHT_UP : ANAL_QUARTER_RIGHT_DOWN;
  return dy > 0 ? ANAL_QUARTER_LEFT_DOWN : ANAL_QUARTER_LEFT_UP;
}

bool GetIntersectPoint(const POINT& a1, const POINT& a2, const POINT& b1, const POINT& b2,
                       POINT* out) {
  const std::int32_t adx = Sub32(a2.x, a1.x);
  const std::int32_t ady = Sub32(a2.y, a1.y);
  const std::int32_t bdx = Sub32(b2.x, b1.x);
  const std::int32_t bdy = Sub32(b2.y, b1.y);
  const std::int32_t abx = Sub32(a1.x, b1.x);
  const std::int32_t aby = Sub32(a1.y, b1.y);

  const std::int32_t d = Sub32(Mul32(adx, bdy), Mul32(bdx, ady));
  if (d == 0) return false;
  const double ua = static_cast<double>(Sub32(Mul32(aby, bdx), Mul32(abx, bdy))) / d;
  const double ub = static_cast<double>(Sub32(Mul32(aby, adx), Mul32(abx, ady))) / d;
  if (ua < 0.0 || ua > 1.0 || ub < 0.0 || ub > 1.0) return false;
  if (out != nullptr) {
    out->x = TruncToLong(a1.x + adx * ua);
    out->y = TruncToLong(a1.y + ady * ua);
  }
  return true;
}

// ---------------------------------------------------------------------------
// Rotation and ranges
// ---------------------------------------------------------------------------

void RotateRectByCenter(const CRect& rect, const POINT& center, double degrees, POINT corners[4]) {
  if (corners == nullptr) return;
  const double turn = std::isfinite(degrees) ? std::fmod(degrees, 360.0) : 0.0;
  const double radians = turn * (3.14159265358979323846 / 180.0);
  const double c = std::cos(radians);
  const double s = std::sin(radians);
  const POINT source[4] = {{rect.left, rect.top}, {rect.right, rect.top},
                           {rect.right, rect.bottom}, {rect.left, rect.bottom}};
  for (int i = 0; i < 4; ++i) {
    const double dx = static_cast<double>(source[i].x) - center.x;
    const double dy = static_cast<double>(source[i].y) - center.y;
    // y grows downward, so a counter-clockwise turn on screen subtracts.
    corners[i].x = RoundToLong(center.x + dx * c + dy * s);
    corners[i].y = RoundToLong(center.y - dx * s + dy * c);
  }
}

void RotateRectByCenter(const CRect& rect, double degrees, POINT corners[4]) {
  RotateRectByCenter(rect, rect.CenterPoint(), degrees, corners);
}

CRect RotateRectByCenter(const CRect& rect, double degrees) {
  POINT corners[4];
  RotateRectByCenter(rect, degrees, corners);
  CRect bounds(corners[0].x, corners[0].y, corners[0].x, corners[0].y);
  for (const POINT& p : corners) {
    bounds.left = std::min(bounds.left, p.x);
    bounds.top = std::min(bounds.top, p.y);
    bounds.right = std::max(bounds.right, p.x);
    bounds.bottom = std::max(bounds.bottom, p.y);
  }
  return bounds;
}

int CalcHighestLowest(const double* values, int count, int first, int last, double& highest,
                      double& lowest) {
  highest = kEmptyValue;
  lowest = kEmptyValue;
  if (values == nullptr || count <= 0) return 0;
  if (first > last) std::swap(first, last);
  first = std::max(first, 0);
  last = std::min(last, count - 1);
  bool found = false;
  for (int i = first; i <= last; ++i) {
    const double v = values[i];
    if (v == kEmptyValue || std::isnan(v)) continue;
    if (!found || v > highest) highest = v;
    if (!found || v < lowest) lowest = v;
    found = true;
  }
  return found ? 1 : 0;
}
