// Colour arithmetic, font and signal-marker sizes, and the geometry of the
// analysis lines a user drags on a chart.
//
// Chart drawing derives shades of a series colour (darker, lighter, inverted,
// one distinct colour per like line), picks font and marker sizes from the
// width of one bar, and hit-tests and intersects trend lines in device pixels
// (y grows downward). Colours are COLORREF 0x00BBGGRR; the colour functions
// return red, green and blue only and drop any high byte, except
// ChangeXORColor. All functions are stateless.
//
//   COLORREF shade = DarkenColor(RGB(200, 100, 0), 0.5);    // RGB(100, 50, 0)
//   double slope, intercept;
//   if (CheckLine(start, end, mouse) > 0) { /* the user grabbed the line */ }
#ifndef CHARTCORE_FOUNDATION_COLOURS_GEOMETRY_H_
#define CHARTCORE_FOUNDATION_COLOURS_GEOMETRY_H_

#include "chartcore/platform/types.h"

// ---------------------------------------------------------------------------
// Line kinds and drag directions
// ---------------------------------------------------------------------------

// ENANALDirectType: how an analysis line is written, and what a hit test hit.
enum ENANALDirectType {
  ANAL_DIRECT_NONE = -1,   // no line (both points equal), or no hit
  ANAL_DIRECT_POINT = 0,   // a hit on a degenerate line (its single point)
  ANAL_DIRECT_SHALLOW = 1, // y = slope * x + intercept (|dx| >= |dy|)
  ANAL_DIRECT_STEEP = 2,   // x = slope * y + intercept (|dx| < |dy|)
};

// ENANALQuarterType: the quadrant of a drag from its first to its second
// point, on screen (up is a smaller y).
enum ENANALQuarterType {
  ANAL_QUARTER_NONE = -1,
  ANAL_QUARTER_RIGHT_UP = 0,
  ANAL_QUARTER_RIGHT_DOWN = 1,
  ANAL_QUARTER_LEFT_DOWN = 2,
  ANAL_QUARTER_LEFT_UP = 3,
};

// ---------------------------------------------------------------------------
// Colours
// ---------------------------------------------------------------------------

// DarkenColor: each channel c becomes trunc(c - c * factor). A factor outside
// 0 < factor <= 1 (or NaN) returns the colour unchanged, high byte included.
//   DarkenColor(0xFFFFFF, 0.5) == 0x7F7F7F   (255 - 127.5 truncates to 127)
CHARTCORE_API COLORREF DarkenColor(COLORREF color, double factor);

// LightenColor: each channel c becomes trunc((255 - c) * factor + c); the
// factor's range and the unchanged result as for DarkenColor.
//   LightenColor(0x000000, 1.0) == 0xFFFFFF
CHARTCORE_API COLORREF LightenColor(COLORREF color, double factor);

// InvertColor: the complement of the colour's three channels.
CHARTCORE_API COLORREF InvertColor(COLORREF color);

// ChangeXORColor: the bitwise exclusive or of the two values, all 32 bits
// (for drawing rubber-band lines that erase themselves when drawn twice).
CHARTCORE_API COLORREF ChangeXORColor(COLORREF color, COLORREF mask);

// MakeUniqueColor: a colour for the index-th of several like lines. With
// step = (10 * index) mod 256, a channel below 255 becomes (c + step) mod 256
// and a channel of 255 becomes 255 - step. An index below 1 returns the
// colour unchanged.
//   MakeUniqueColor(0x0000FF, 1) == 0x0A0AF5
CHARTCORE_API COLORREF MakeUniqueColor(COLORREF color, int index);

// ---------------------------------------------------------------------------
// Font and marker sizes
// ---------------------------------------------------------------------------

// GetFontSizeOfItemWidth: the font size in points for labels over bars of the
// given width in pixels: 15 from 20, 13 from 13, 11 from 9, 9 from 6, else 8.
CHARTCORE_API int GetFontSizeOfItemWidth(double itemWidth);

// GetSignalSizeOfItemWidth: the size of a signal marker for bars of the given
// width: 20 from 30, 15 from 20, 10 from 15, 7 from 9, 5 from 7, 4 from 5,
// else 3.
CHARTCORE_API int GetSignalSizeOfItemWidth(double itemWidth);

// GetFontHeightFromPoint: the (negative) font height in pixels of a point
// size on the screen: -MulDiv(points, pixels per inch, 72).
//   At 96 pixels per inch: GetFontHeightFromPoint(9) == -12
CHARTCORE_API int GetFontHeightFromPoint(int points);

// GetFontPointFromHeight: the point size of a font height in pixels:
// -MulDiv(height, 72, pixels per inch).
//   At 96 pixels per inch: GetFontPointFromHeight(-13) == 10
CHARTCORE_API int GetFontPointFromHeight(int height);

// ---------------------------------------------------------------------------
// Line geometry
// ---------------------------------------------------------------------------

// GetLineSlope: (y2 - y1) / (x2 - x1); the largest finite double when the
// line is vertical (x1 == x2).
CHARTCORE_API double GetLineSlope(CPoint p1, CPoint p2);

// GetCenterPoint: the midpoint, per axis min + trunc(|difference| / 2), so it
// never leaves the pixel grid and leans toward the smaller coordinate.
CHARTCORE_API CPoint GetCenterPoint(CPoint p1, CPoint p2);

// CalcANALInfo: writes the line through p1 and p2 as y = slope * x + intercept
// (result 1, shallow) or x = slope * y + intercept (result 2, steep). Equal
// points give -1 with slope and intercept 0.
CHARTCORE_API int CalcANALInfo(CPoint p1, CPoint p2, double& slope, double& intercept);

// CheckLine: hit test of the point against the segment p1-p2 with a tolerance
// of strictly less than 5 pixels across the line, inside the segment's span
// along its main axis. Returns 1 or 2 (the line's kind) on a hit, 0 when the
// segment is a single point and the point is that point, else -1.
//   CheckLine({0,0}, {100,0}, {50,4}) == 1;  ... {50,5} == -1
CHARTCORE_API int CheckLine(CPoint p1, CPoint p2, CPoint point);

// GetANALQuarterDirect: the ENANALQuarterType of the drag from p1 to p2. A
// zero difference counts as 1, so a horizontal or vertical drag (and no drag
// at all) counts as moving right or down.
CHARTCORE_API int GetANALQuarterDirect(CPoint p1, CPoint p2);

// GetIntersectPoint: true when segment a1-a2 meets segment b1-b2 (end points
// included); the crossing point, truncated toward zero, goes to *out when out
// is not null. Parallel or collinear segments give false.
CHARTCORE_API bool GetIntersectPoint(const POINT& a1, const POINT& a2, const POINT& b1,
                                     const POINT& b2, POINT* out);

// ---------------------------------------------------------------------------
// Rotation and ranges
// ---------------------------------------------------------------------------

// RotateRectByCenter: the corners of rect rotated by degrees about center,
// counter-clockwise on screen for a positive angle (as font escapements
// turn), rounded to the nearest pixel. corners receives top-left, top-right,
// bottom-right, bottom-left of the original rectangle, in that order.
CHARTCORE_API void RotateRectByCenter(const CRect& rect, const POINT& center, double degrees,
                                      POINT corners[4]);

// RotateRectByCenter: as above about the rectangle's own centre
// (CRect::CenterPoint, so quarter turns stay on whole pixels).
CHARTCORE_API void RotateRectByCenter(const CRect& rect, double degrees, POINT corners[4]);

// RotateRectByCenter: the bounding rectangle of rect turned by degrees about
// its own centre; a quarter turn swaps width and height about the centre.
//   RotateRectByCenter(CRect(0, 0, 4, 2), 90.0) == CRect(1, -1, 3, 3)
CHARTCORE_API CRect RotateRectByCenter(const CRect& rect, double degrees);

// CalcHighestLowest: the highest and lowest of values[first..last] (indexes
// taken in either order and clamped to 0..count-1), skipping slots without
// data (the packets' empty value, the largest finite double) and NaN.
// Returns 1 when a value was found; otherwise 0 with both outputs set to the
// empty value.
CHARTCORE_API int CalcHighestLowest(const double* values, int count, int first, int last,
                                    double& highest, double& lowest);

#endif  // CHARTCORE_FOUNDATION_COLOURS_GEOMETRY_H_
