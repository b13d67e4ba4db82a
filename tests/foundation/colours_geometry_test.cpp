#include "chartcore/foundation/colours_geometry.h"

#include <climits>
#include <cmath>
#include <string>

#include <gtest/gtest.h>

#include "chartcore/platform/system.h"

namespace {

const double kEmpty = 1.7976931348623157e308;
const double kNaN = std::nan("");

CPoint P(int x, int y) { return CPoint(x, y); }

// The crossing of two segments as "x,y", or "none".
std::string Cross(POINT a1, POINT a2, POINT b1, POINT b2) {
  POINT out{-99, -99};
  if (!GetIntersectPoint(a1, a2, b1, b2, &out)) {
    return out.x == -99 && out.y == -99 ? "none" : "written on failure";
  }
  return std::to_string(out.x) + "," + std::to_string(out.y);
}

}  // namespace

TEST(ColourShades, DarkenLightenInvertXorAndUniqueColours) {
  const COLORREF withHigh = 0xAB123456u;
  const struct { COLORREF got, expected; } cases[] = {
      {DarkenColor(0xFFFFFF, 0.5), 0x7F7F7F},                     // 255 - 127.5 = 127.5 truncates to 127
      {DarkenColor(RGB(200, 100, 1), 0.3), RGB(140, 70, 0)},      // 1 - 0.3 truncates to 0
      {DarkenColor(0xFFFFFF, 1e-9), 0xFEFEFE},                    // 254.99999... still truncates down
      {LightenColor(0x000000, 1.0), 0xFFFFFF},
      {LightenColor(RGB(100, 0, 255), 0.5), RGB(177, 127, 255)},  // 177.5 -> 177, 127.5 -> 127
      // Outside 0 < f <= 1 the colour comes back whole, high byte included;
      // inside, the high byte is dropped.
      {DarkenColor(withHigh, 0.0), withHigh}, {DarkenColor(withHigh, 1.0000001), withHigh},
      {LightenColor(withHigh, 1.5), withHigh}, {LightenColor(withHigh, kNaN), withHigh},
      {DarkenColor(withHigh, 1.0), 0}, {LightenColor(0xFF000000u, 1.0), 0xFFFFFF},
      {InvertColor(0x00123456u), 0xEDCBA9}, {InvertColor(0xFF000000u), 0xFFFFFF},  // masked to three bytes
      {ChangeXORColor(0xFF00FF00u, 0x0F0F0F0Fu), 0xF00FF00Fu},                    // all 32 bits
      {MakeUniqueColor(0x0000FF, 1), 0x0A0AF5},                                   // red 255 -> 245, others +10
      {MakeUniqueColor(0xAB0000FFu, 0), 0xAB0000FFu},                             // index < 1: as it is
      {MakeUniqueColor(0xAB0000FFu, 1), 0x0A0AF5},                                // high byte dropped
      {MakeUniqueColor(RGB(255, 251, 0), 26), RGB(251, 255, 4)},                  // step 260 mod 256 = 4
      {MakeUniqueColor(RGB(10, 255, 0), 25), RGB(4, 5, 250)},                     // 260 wraps to 4
      // 10 * INT_MAX mod 256 = 246 (no overflow): 10 -> 0, 255 -> 9, 0 -> 246.
      {MakeUniqueColor(RGB(10, 255, 0), INT_MAX), RGB(0, 9, 246)},
  };
  int row = 0;
  for (const auto& c : cases) EXPECT_EQ(c.got, c.expected) << "row " << row++;
}

TEST(ItemWidthSizes, EveryThresholdAtItsBoundary) {
  // Each threshold itself and just below it.
  const struct { double width; int font; int signal; } cases[] = {
      {30.0, 15, 20}, {29.99, 15, 15}, {20.0, 15, 15}, {19.99, 13, 10}, {15.0, 13, 10}, {14.99, 13, 7},
      {13.0, 13, 7},  {12.99, 11, 7},  {9.0, 11, 7},   {8.99, 9, 5},    {7.0, 9, 5},    {6.99, 9, 4},
      {6.0, 9, 4},    {5.99, 8, 4},    {5.0, 8, 4},    {4.99, 8, 3},    {-1.0, 8, 3},   {kNaN, 8, 3}};
  for (const auto& c : cases) {
    EXPECT_EQ(GetFontSizeOfItemWidth(c.width), c.font) << c.width;
    EXPECT_EQ(GetSignalSizeOfItemWidth(c.width), c.signal) << c.width;
  }
}

TEST(ItemWidthSizes, FontHeightAndPointFollowTheScreen) {
  // Without a window backend the screen has 96 pixels per inch.
  EXPECT_EQ(GetFontHeightFromPoint(9), -12);   // 9 * 96 / 72 = 12
  EXPECT_EQ(GetFontHeightFromPoint(11), -15);  // 14.67 rounds to 15
  EXPECT_EQ(GetFontPointFromHeight(-13), 10);  // -9.75 rounds to -10
  EXPECT_EQ(GetFontPointFromHeight(2), -2);    // 1.5 rounds away from zero
  EXPECT_EQ(GetFontPointFromHeight(-2), 2);
  auto previous = chartcore::SetScreenPixelsPerInchProvider([] { return 120; });
  EXPECT_EQ(GetFontHeightFromPoint(9), -15);   // 9 * 120 / 72 = 15
  EXPECT_EQ(GetFontPointFromHeight(-16), 10);  // -9.6 rounds to -10
  chartcore::SetScreenPixelsPerInchProvider(previous);
}

TEST(LineGeometry, SlopeCentreAndLineForm) {
  EXPECT_EQ(GetLineSlope(P(3, 0), P(3, 9)), kEmpty);  // vertical
  EXPECT_DOUBLE_EQ(GetLineSlope(P(4, 2), P(0, 0)), 0.5);
  EXPECT_EQ(GetCenterPoint(P(5, 5), P(0, 0)), P(2, 2));               // leans to the smaller
  EXPECT_EQ(GetCenterPoint(P(-5, 7), P(0, 7)), P(-3, 7));             // -5 + trunc(5 / 2)
  EXPECT_EQ(GetCenterPoint(P(INT_MIN, 0), P(INT_MAX, 0)), P(-1, 0));  // no overflow

  const struct { CPoint a, b; int kind; double slope, intercept; } lines[] = {
      {P(1, 1), P(1, 1), ANAL_DIRECT_NONE, 0.0, 0.0},  // reset even when there is no line
      {P(0, 0), P(10, 5), ANAL_DIRECT_SHALLOW, 0.5, 0.0},
      {P(2, 1), P(4, 5), ANAL_DIRECT_STEEP, 0.5, 1.5},   // x = 0.5 y + 1.5
      {P(0, 0), P(3, 3), ANAL_DIRECT_SHALLOW, 1.0, 0.0}};  // 45 degrees
  for (const auto& c : lines) {
    double slope = 7.0, intercept = 7.0;
    EXPECT_EQ(CalcANALInfo(c.a, c.b, slope, intercept), c.kind) << c.b.x << "," << c.b.y;
    EXPECT_DOUBLE_EQ(slope, c.slope) << c.b.x << "," << c.b.y;
    EXPECT_DOUBLE_EQ(intercept, c.intercept) << c.b.x << "," << c.b.y;
  }
}

TEST(LineGeometry, HitTestStrictFivePixelsAndQuarterOfADrag) {
  const struct { CPoint a, b, at; int hit; } hits[] = {
      {P(0, 0), P(100, 0), P(50, 4), 1}, {P(0, 0), P(100, 0), P(50, 5), -1},    // strictly under 5 pixels
      {P(0, 0), P(100, 0), P(100, 0), 1}, {P(0, 0), P(100, 0), P(101, 0), -1},  // end of span included
      {P(0, 0), P(0, 100), P(3, 50), 2}, {P(0, 0), P(0, 100), P(-4, 100), 2}, {P(0, 0), P(0, 100), P(5, 50), -1},
      {P(3, 3), P(3, 3), P(3, 3), 0}, {P(3, 3), P(3, 3), P(4, 3), -1},         // a single-point line
      // y = 0.3 x is at 1.5 for x = 5, truncated to 1: 6 (4.5 away) misses
      // while -3 (4.5 away) hits; below zero, -1.5 truncates toward zero.
      {P(0, 0), P(10, 3), P(5, 6), -1}, {P(0, 0), P(10, 3), P(5, -3), 1},
      {P(0, 0), P(10, -3), P(5, 3), 1}, {P(0, 0), P(10, -3), P(5, -6), -1},
      {P(INT_MIN, INT_MIN), P(INT_MAX, INT_MAX - 1), P(0, INT_MAX), -1}};  // no overflow
  for (const auto& c : hits) EXPECT_EQ(CheckLine(c.a, c.b, c.at), c.hit) << c.at.x << "," << c.at.y;

  const struct { CPoint from, to; int quarter; } drags[] = {
      {P(0, 0), P(0, 0), ANAL_QUARTER_RIGHT_DOWN},  // zeros count as 1
      {P(0, 0), P(5, -5), ANAL_QUARTER_RIGHT_UP}, {P(0, 0), P(-5, 5), ANAL_QUARTER_LEFT_DOWN},
      {P(0, 0), P(-5, -5), ANAL_QUARTER_LEFT_UP}, {P(0, 0), P(0, -5), ANAL_QUARTER_RIGHT_UP},  // vertical: right
      {P(0, 0), P(-5, 0), ANAL_QUARTER_LEFT_DOWN}, {P(0, 0), P(1, -100), ANAL_QUARTER_RIGHT_UP},  // horizontal: down
      {P(INT_MAX, 0), P(INT_MIN, 1), ANAL_QUARTER_LEFT_DOWN}};
  for (const auto& c : drags) EXPECT_EQ(GetANALQuarterDirect(c.from, c.to), c.quarter) << c.to.x << "," << c.to.y;
}

TEST(LineGeometry, IntersectionsCrossTouchParallelMiss) {
  const struct { POINT a1, a2, b1, b2; const char* at; } cases[] = {
      {{0, 0}, {10, 10}, {0, 10}, {10, 0}, "5,5"}, {{0, 0}, {10, 0}, {10, 0}, {10, 10}, "10,0"},  // ends touch
      {{0, 0}, {10, 0}, {5, 0}, {5, 10}, "5,0"},                                                 // T-junction
      {{0, 0}, {10, 0}, {0, 5}, {10, 5}, "none"}, {{0, 0}, {10, 0}, {5, 0}, {15, 0}, "none"},    // parallel, collinear
      {{0, 0}, {4, 4}, {10, 0}, {6, 4}, "none"},    // lines meet at (5, 5), off both
      {{0, 0}, {10, 0}, {5, 1}, {5, 10}, "none"},   // one pixel short
      {{0, 0}, {3, 1}, {0, 1}, {3, 0}, "1,0"}, {{0, 0}, {-3, -1}, {0, -1}, {-3, 0}, "-1,0"}};  // truncated to 0
  for (const auto& c : cases) EXPECT_EQ(Cross(c.a1, c.a2, c.b1, c.b2), c.at) << c.b1.x << "," << c.b1.y;
  EXPECT_TRUE(GetIntersectPoint({0, 0}, {10, 10}, {0, 10}, {10, 0}, nullptr));
  // Huge coordinates wrap like 32-bit screen arithmetic, without a crash.
  Cross({INT_MIN, INT_MIN}, {INT_MAX, INT_MAX}, {INT_MIN, INT_MAX}, {INT_MAX, INT_MIN});
}

TEST(RectRotation, QuarterTurnsAndCorners) {
  EXPECT_EQ(RotateRectByCenter(CRect(0, 0, 4, 2), 90.0), CRect(1, -1, 3, 3));
  EXPECT_EQ(RotateRectByCenter(CRect(0, 0, 4, 2), 720.0), CRect(0, 0, 4, 2));
  // Odd sizes turn about the whole-pixel centre (1, 1) and keep their size.
  EXPECT_EQ(RotateRectByCenter(CRect(0, 0, 3, 2), 90.0), CRect(0, -1, 2, 2));

  // Counter-clockwise on screen: the top-right corner moves up and left.
  POINT c[4];
  RotateRectByCenter(CRect(0, 0, 4, 2), 90.0, c);
  EXPECT_EQ(CPoint(c[1]), P(1, -1));
  RotateRectByCenter(CRect(0, 0, 2, 2), POINT{0, 0}, 90.0, c);  // about a corner
  EXPECT_EQ(CPoint(c[2]), P(2, -2));
  RotateRectByCenter(CRect(-10, -10, 10, 10), 45.0, c);  // -10 sqrt 2 = -14.14
  EXPECT_EQ(CPoint(c[0]), P(-14, 0));
  RotateRectByCenter(CRect(1, 2, 3, 4), kNaN, c);  // no angle: no turn
  EXPECT_EQ(CPoint(c[2]), P(3, 4));
}

TEST(HighestLowestRange, SkipsEmptyClampsAndSwaps) {
  const double v[] = {5.0, kEmpty, 9.0, -2.0, kNaN, 7.0};
  const struct { int first, last, found; double highest, lowest; } cases[] = {
      {5, 0, 1, 9.0, -2.0},       // reversed range; the empty value is not a price
      {4, 100, 1, 7.0, 7.0},      // clamped; NaN skipped
      {1, 1, 0, kEmpty, kEmpty},  // only an empty slot
      {10, 20, 0, kEmpty, kEmpty}};  // wholly past the end
  for (const auto& c : cases) {
    double hi = 0, lo = 0;
    EXPECT_EQ(CalcHighestLowest(v, 6, c.first, c.last, hi, lo), c.found) << c.first << ".." << c.last;
    EXPECT_EQ(hi, c.highest) << c.first << ".." << c.last;
    EXPECT_EQ(lo, c.lowest) << c.first << ".." << c.last;
  }
}
