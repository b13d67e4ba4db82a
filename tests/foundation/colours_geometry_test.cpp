#include "chartcore/foundation/colours_geometry.h"

#include <climits>
#include <cmath>
#include <limits>

#include <gtest/gtest.h>

#include "chartcore/platform/system.h"

namespace {
const double kEmpty = 1.7976931348623157e308;
}  // namespace

TEST(ColourShades, DarkenAndLightenTruncate) {
  EXPECT_EQ(DarkenColor(0xFFFFFF, 0.5), 0x7F7F7Fu);  // 255 - 127.5 = 127.5 truncates to 127
  EXPECT_EQ(DarkenColor(RGB(200, 100, 1), 0.3), RGB(140, 70, 0));  // 1 - 0.3 truncates to 0
  EXPECT_EQ(DarkenColor(0xFFFFFF, 1e-9), 0xFEFEFEu);  // 254.99999... still truncates down
  EXPECT_EQ(DarkenColor(RGB(9, 9, 9), 1.0), 0u);  // full factor is black
  EXPECT_EQ(LightenColor(0x000000, 1.0), 0xFFFFFFu);
  EXPECT_EQ(LightenColor(RGB(100, 0, 255), 0.5), RGB(177, 127, 255));  // 177.5 -> 177, 127.5 -> 127
}

TEST(ColourShades, FactorOutsideRangeKeepsColourAndHighByte) {
  const COLORREF withHigh = 0xAB123456u;
  EXPECT_EQ(DarkenColor(withHigh, 0.0), withHigh);  // 0 is outside 0 < f
  EXPECT_EQ(DarkenColor(withHigh, -0.5), withHigh);
  EXPECT_EQ(DarkenColor(withHigh, 1.0000001), withHigh);
  EXPECT_EQ(LightenColor(withHigh, 1.5), withHigh);
  EXPECT_EQ(LightenColor(withHigh, std::nan("")), withHigh);
  // Inside the range the high byte is dropped.
  EXPECT_EQ(DarkenColor(withHigh, 1.0), 0u);
  EXPECT_EQ(LightenColor(0xFF000000u, 1.0), 0xFFFFFFu);
}

TEST(ColourShades, InvertXorAndUniqueColours) {
  EXPECT_EQ(InvertColor(0x00123456u), 0xEDCBA9u);
  EXPECT_EQ(InvertColor(0xFF000000u), 0xFFFFFFu);  // complement masked to three bytes
  EXPECT_EQ(ChangeXORColor(0xFF00FF00u, 0x0F0F0F0Fu), 0xF00FF00Fu);  // all 32 bits
  EXPECT_EQ(ChangeXORColor(ChangeXORColor(0x123456u, 0xFFFFFFu), 0xFFFFFFu), 0x123456u);

  EXPECT_EQ(MakeUniqueColor(0x0000FF, 1), 0x0A0AF5u);  // red 255 -> 245, others +10
  EXPECT_EQ(MakeUniqueColor(0xAB0000FFu, 0), 0xAB0000FFu);  // index < 1: as it is
  EXPECT_EQ(MakeUniqueColor(0xAB0000FFu, -3), 0xAB0000FFu);
  EXPECT_EQ(MakeUniqueColor(0xAB0000FFu, 1), 0x0A0AF5u);  // high byte dropped
  EXPECT_EQ(MakeUniqueColor(RGB(255, 251, 0), 26), RGB(251, 255, 4));  // step 260 mod 256 = 4
  EXPECT_EQ(MakeUniqueColor(RGB(10, 255, 0), 25), RGB(4, 5, 250));  // 260 wraps to 4
  // 10 * INT_MAX mod 256 = 246 (no overflow): 10 -> 0, 255 -> 9, 0 -> 246.
  EXPECT_EQ(MakeUniqueColor(RGB(10, 255, 0), INT_MAX), RGB(0, 9, 246));
}

TEST(ItemWidthSizes, EveryThresholdAtItsBoundary) {
  EXPECT_EQ(GetFontSizeOfItemWidth(20.0), 15);
  EXPECT_EQ(GetFontSizeOfItemWidth(19.99), 13);
  EXPECT_EQ(GetFontSizeOfItemWidth(13.0), 13);
  EXPECT_EQ(GetFontSizeOfItemWidth(12.99), 11);
  EXPECT_EQ(GetFontSizeOfItemWidth(9.0), 11);
  EXPECT_EQ(GetFontSizeOfItemWidth(8.99), 9);
  EXPECT_EQ(GetFontSizeOfItemWidth(6.0), 9);
  EXPECT_EQ(GetFontSizeOfItemWidth(5.99), 8);
  EXPECT_EQ(GetFontSizeOfItemWidth(-1.0), 8);
  EXPECT_EQ(GetFontSizeOfItemWidth(std::nan("")), 8);

  EXPECT_EQ(GetSignalSizeOfItemWidth(30.0), 20);
  EXPECT_EQ(GetSignalSizeOfItemWidth(29.99), 15);
  EXPECT_EQ(GetSignalSizeOfItemWidth(20.0), 15);
  EXPECT_EQ(GetSignalSizeOfItemWidth(19.99), 10);
  EXPECT_EQ(GetSignalSizeOfItemWidth(15.0), 10);
  EXPECT_EQ(GetSignalSizeOfItemWidth(14.99), 7);
  EXPECT_EQ(GetSignalSizeOfItemWidth(9.0), 7);
  EXPECT_EQ(GetSignalSizeOfItemWidth(8.99), 5);
  EXPECT_EQ(GetSignalSizeOfItemWidth(7.0), 5);
  EXPECT_EQ(GetSignalSizeOfItemWidth(6.99), 4);
  EXPECT_EQ(GetSignalSizeOfItemWidth(5.0), 4);
  EXPECT_EQ(GetSignalSizeOfItemWidth(4.99), 3);
  EXPECT_EQ(GetSignalSizeOfItemWidth(std::nan("")), 3);
}

TEST(ItemWidthSizes, FontHeightAndPointAtDefaultScreen) {
  // Without a window backend the screen has 96 pixels per inch.
  EXPECT_EQ(GetFontHeightFromPoint(9), -12);  // 9 * 96 / 72 = 12
  EXPECT_EQ(GetFontHeightFromPoint(10), -13);  // 13.33 rounds to 13
  EXPECT_EQ(GetFontHeightFromPoint(11), -15);  // 14.67 rounds to 15
  EXPECT_EQ(GetFontPointFromHeight(-13), 10);  // -9.75 rounds to -10
  EXPECT_EQ(GetFontPointFromHeight(-12), 9);
  EXPECT_EQ(GetFontPointFromHeight(2), -2);  // 1.5 rounds away from zero
  EXPECT_EQ(GetFontPointFromHeight(-2), 2);
  EXPECT_EQ(GetFontPointFromHeight(0), 0);
}

TEST(ItemWidthSizes, FontHeightFollowsTheScreen) {
  auto previous = chartcore::SetScreenPixelsPerInchProvider([] { return 120; });
  EXPECT_EQ(GetFontHeightFromPoint(9), -15);  // 9 * 120 / 72 = 15
  EXPECT_EQ(GetFontPointFromHeight(-16), 10);  // -9.6 rounds to -10
  EXPECT_EQ(GetFontPointFromHeight(-15), 9);
  chartcore::SetScreenPixelsPerInchProvider([] { return 0; });  // no answer: 96
  EXPECT_EQ(GetFontHeightFromPoint(9), -12);
  chartcore::SetScreenPixelsPerInchProvider(previous);
}

TEST(LineGeometry, SlopeCentreAndLineForm) {
  EXPECT_EQ(GetLineSlope(CPoint(3, 0), CPoint(3, 9)), kEmpty);  // vertical
  EXPECT_DOUBLE_EQ(GetLineSlope(CPoint(0, 0), CPoint(4, 2)), 0.5);
  EXPECT_DOUBLE_EQ(GetLineSlope(CPoint(4, 2), CPoint(0, 0)), 0.5);  // order does not matter
  EXPECT_DOUBLE_EQ(GetLineSlope(CPoint(0, 0), CPoint(3, -1)), -1.0 / 3.0);

  EXPECT_EQ(GetCenterPoint(CPoint(0, 0), CPoint(5, 5)), CPoint(2, 2));
  EXPECT_EQ(GetCenterPoint(CPoint(5, 5), CPoint(0, 0)), CPoint(2, 2));  // leans to the smaller
  EXPECT_EQ(GetCenterPoint(CPoint(-5, 7), CPoint(0, 7)), CPoint(-3, 7));  // -5 + trunc(5 / 2)
  EXPECT_EQ(GetCenterPoint(CPoint(INT_MIN, 0), CPoint(INT_MAX, 0)), CPoint(-1, 0));  // no overflow

  double slope = 7.0, intercept = 7.0;
  EXPECT_EQ(CalcANALInfo(CPoint(1, 1), CPoint(1, 1), slope, intercept), ANAL_DIRECT_NONE);
  EXPECT_EQ(slope, 0.0);  // reset even when there is no line
  EXPECT_EQ(intercept, 0.0);
  EXPECT_EQ(CalcANALInfo(CPoint(0, 0), CPoint(10, 5), slope, intercept), ANAL_DIRECT_SHALLOW);
  EXPECT_DOUBLE_EQ(slope, 0.5);
  EXPECT_DOUBLE_EQ(intercept, 0.0);
  EXPECT_EQ(CalcANALInfo(CPoint(2, 1), CPoint(4, 5), slope, intercept), ANAL_DIRECT_STEEP);
  EXPECT_DOUBLE_EQ(slope, 0.5);  // x = 0.5 y + 1.5
  EXPECT_DOUBLE_EQ(intercept, 1.5);
  EXPECT_EQ(CalcANALInfo(CPoint(0, 0), CPoint(3, 3), slope, intercept), ANAL_DIRECT_SHALLOW);  // 45 degrees
}

TEST(LineGeometry, HitTestStrictFivePixels) {
  EXPECT_EQ(CheckLine(CPoint(0, 0), CPoint(100, 0), CPoint(50, 4)), 1);
  EXPECT_EQ(CheckLine(CPoint(0, 0), CPoint(100, 0), CPoint(50, 5)), -1);
  EXPECT_EQ(CheckLine(CPoint(0, 0), CPoint(100, 0), CPoint(50, -4)), 1);
  EXPECT_EQ(CheckLine(CPoint(0, 0), CPoint(100, 0), CPoint(50, -5)), -1);
  EXPECT_EQ(CheckLine(CPoint(0, 0), CPoint(100, 0), CPoint(100, 0)), 1);  // end of span included
  EXPECT_EQ(CheckLine(CPoint(0, 0), CPoint(100, 0), CPoint(101, 0)), -1);  // past the span
  EXPECT_EQ(CheckLine(CPoint(0, 0), CPoint(0, 100), CPoint(3, 50)), 2);
  EXPECT_EQ(CheckLine(CPoint(0, 0), CPoint(0, 100), CPoint(4, 50)), 2);
  EXPECT_EQ(CheckLine(CPoint(0, 0), CPoint(0, 100), CPoint(5, 50)), -1);
  EXPECT_EQ(CheckLine(CPoint(0, 0), CPoint(0, 100), CPoint(-4, 100)), 2);
  EXPECT_EQ(CheckLine(CPoint(0, 0), CPoint(0, 100), CPoint(0, -1)), -1);
  // A single-point line: only the point itself hits, as 0.
  EXPECT_EQ(CheckLine(CPoint(3, 3), CPoint(3, 3), CPoint(3, 3)), 0);
  EXPECT_EQ(CheckLine(CPoint(3, 3), CPoint(3, 3), CPoint(4, 3)), -1);
}

TEST(LineGeometry, HitTestTruncatesTheLinePosition) {
  // y = 0.3 x: at x = 5 the line is at 1.5, truncated to 1, so 6 (4.5 away)
  // misses while -3 (4.5 away) hits.
  EXPECT_EQ(CheckLine(CPoint(0, 0), CPoint(10, 3), CPoint(5, 5)), 1);
  EXPECT_EQ(CheckLine(CPoint(0, 0), CPoint(10, 3), CPoint(5, 6)), -1);
  EXPECT_EQ(CheckLine(CPoint(0, 0), CPoint(10, 3), CPoint(5, -3)), 1);
  EXPECT_EQ(CheckLine(CPoint(0, 0), CPoint(10, 3), CPoint(5, -4)), -1);
  // Below zero truncation goes toward zero: -1.5 becomes -1.
  EXPECT_EQ(CheckLine(CPoint(0, 0), CPoint(10, -3), CPoint(5, 3)), 1);
  EXPECT_EQ(CheckLine(CPoint(0, 0), CPoint(10, -3), CPoint(5, -6)), -1);
  // Far-off coordinates neither overflow nor hit.
  EXPECT_EQ(CheckLine(CPoint(INT_MIN, INT_MIN), CPoint(INT_MAX, INT_MAX - 1), CPoint(0, INT_MAX)), -1);
}

TEST(LineGeometry, QuarterOfADrag) {
  EXPECT_EQ(GetANALQuarterDirect(CPoint(0, 0), CPoint(0, 0)), ANAL_QUARTER_RIGHT_DOWN);  // zeros count as 1
  EXPECT_EQ(GetANALQuarterDirect(CPoint(0, 0), CPoint(5, -5)), ANAL_QUARTER_RIGHT_UP);
  EXPECT_EQ(GetANALQuarterDirect(CPoint(0, 0), CPoint(5, 5)), ANAL_QUARTER_RIGHT_DOWN);
  EXPECT_EQ(GetANALQuarterDirect(CPoint(0, 0), CPoint(-5, 5)), ANAL_QUARTER_LEFT_DOWN);
  EXPECT_EQ(GetANALQuarterDirect(CPoint(0, 0), CPoint(-5, -5)), ANAL_QUARTER_LEFT_UP);
  EXPECT_EQ(GetANALQuarterDirect(CPoint(0, 0), CPoint(0, -5)), ANAL_QUARTER_RIGHT_UP);  // vertical: right
  EXPECT_EQ(GetANALQuarterDirect(CPoint(0, 0), CPoint(-5, 0)), ANAL_QUARTER_LEFT_DOWN);  // horizontal: down
  EXPECT_EQ(GetANALQuarterDirect(CPoint(0, 0), CPoint(1, -100)), ANAL_QUARTER_RIGHT_UP);  // quotient 0
  EXPECT_EQ(GetANALQuarterDirect(CPoint(INT_MAX, 0), CPoint(INT_MIN, 1)), ANAL_QUARTER_LEFT_DOWN);
}

TEST(LineGeometry, IntersectionsCrossTouchParallelMiss) {
  POINT out{-1, -1};
  EXPECT_TRUE(GetIntersectPoint({0, 0}, {10, 10}, {0, 10}, {10, 0}, &out));
  EXPECT_EQ(out.x, 5);
  EXPECT_EQ(out.y, 5);
  // Touching at an end point counts (inclusive bounds).
  EXPECT_TRUE(GetIntersectPoint({0, 0}, {10, 0}, {10, 0}, {10, 10}, &out));
  EXPECT_EQ(out.x, 10);
  EXPECT_EQ(out.y, 0);
  EXPECT_TRUE(GetIntersectPoint({0, 0}, {10, 0}, {5, 0}, {5, 10}, &out));  // T-junction
  EXPECT_EQ(out.x, 5);
  EXPECT_EQ(out.y, 0);
  // Parallel and collinear-overlapping segments are no crossing.
  out = POINT{-1, -1};
  EXPECT_FALSE(GetIntersectPoint({0, 0}, {10, 0}, {0, 5}, {10, 5}, &out));
  EXPECT_FALSE(GetIntersectPoint({0, 0}, {10, 0}, {5, 0}, {15, 0}, &out));
  EXPECT_EQ(out.x, -1);  // untouched on failure
  // The lines cross at (5, 5), outside both segments.
  EXPECT_FALSE(GetIntersectPoint({0, 0}, {4, 4}, {10, 0}, {6, 4}, &out));
  // Just short of reaching the other segment.
  EXPECT_FALSE(GetIntersectPoint({0, 0}, {10, 0}, {5, 1}, {5, 10}, &out));
  // The crossing (1.5, 0.5) truncates to (1, 0); mirrored, toward zero.
  EXPECT_TRUE(GetIntersectPoint({0, 0}, {3, 1}, {0, 1}, {3, 0}, &out));
  EXPECT_EQ(out.x, 1);
  EXPECT_EQ(out.y, 0);
  EXPECT_TRUE(GetIntersectPoint({0, 0}, {-3, -1}, {0, -1}, {-3, 0}, &out));
  EXPECT_EQ(out.x, -1);
  EXPECT_EQ(out.y, 0);
  EXPECT_TRUE(GetIntersectPoint({0, 0}, {10, 10}, {0, 10}, {10, 0}, nullptr));  // no output wanted
  // Huge coordinates wrap like the 32-bit screen arithmetic, without a crash.
  GetIntersectPoint({INT_MIN, INT_MIN}, {INT_MAX, INT_MAX}, {INT_MIN, INT_MAX}, {INT_MAX, INT_MIN}, &out);
}

TEST(RectRotation, QuarterTurnsAndCorners) {
  EXPECT_EQ(RotateRectByCenter(CRect(0, 0, 4, 2), 90.0), CRect(1, -1, 3, 3));
  EXPECT_EQ(RotateRectByCenter(CRect(0, 0, 4, 2), -90.0), CRect(1, -1, 3, 3));
  EXPECT_EQ(RotateRectByCenter(CRect(0, 0, 4, 2), 180.0), CRect(0, 0, 4, 2));
  EXPECT_EQ(RotateRectByCenter(CRect(0, 0, 4, 2), 720.0), CRect(0, 0, 4, 2));
  // Odd sizes turn about the whole-pixel centre (1, 1) and keep their size.
  const CRect turned = RotateRectByCenter(CRect(0, 0, 3, 2), 90.0);
  EXPECT_EQ(turned.Width(), 2);
  EXPECT_EQ(turned.Height(), 3);

  // Counter-clockwise on screen: the top-right corner moves up and left.
  POINT c[4];
  RotateRectByCenter(CRect(0, 0, 4, 2), 90.0, c);
  EXPECT_EQ(c[0].x, 1); EXPECT_EQ(c[0].y, 3);
  EXPECT_EQ(c[1].x, 1); EXPECT_EQ(c[1].y, -1);
  EXPECT_EQ(c[2].x, 3); EXPECT_EQ(c[2].y, -1);
  EXPECT_EQ(c[3].x, 3); EXPECT_EQ(c[3].y, 3);

  RotateRectByCenter(CRect(0, 0, 2, 2), POINT{0, 0}, 90.0, c);  // about a corner
  EXPECT_EQ(c[1].x, 0); EXPECT_EQ(c[1].y, -2);
  EXPECT_EQ(c[2].x, 2); EXPECT_EQ(c[2].y, -2);
  RotateRectByCenter(CRect(-10, -10, 10, 10), 45.0, c);  // -10 sqrt 2 = -14.14
  EXPECT_EQ(c[0].x, -14); EXPECT_EQ(c[0].y, 0);
  RotateRectByCenter(CRect(1, 2, 3, 4), std::nan(""), c);  // no angle: no turn
  EXPECT_EQ(c[2].x, 3); EXPECT_EQ(c[2].y, 4);
}

TEST(HighestLowestRange, SkipsEmptyClampsAndSwaps) {
  const double v[] = {5.0, kEmpty, 9.0, -2.0, std::nan(""), 7.0};
  double hi = 0, lo = 0;
  EXPECT_EQ(CalcHighestLowest(v, 6, 0, 5, hi, lo), 1);
  EXPECT_EQ(hi, 9.0);  // the empty value is not a price
  EXPECT_EQ(lo, -2.0);
  EXPECT_EQ(CalcHighestLowest(v, 6, 5, 0, hi, lo), 1);  // reversed range
  EXPECT_EQ(hi, 9.0);
  EXPECT_EQ(CalcHighestLowest(v, 6, -10, 100, hi, lo), 1);  // clamped
  EXPECT_EQ(lo, -2.0);
  EXPECT_EQ(CalcHighestLowest(v, 6, 3, 3, hi, lo), 1);
  EXPECT_EQ(hi, -2.0);
  EXPECT_EQ(lo, -2.0);
  EXPECT_EQ(CalcHighestLowest(v, 6, 4, 5, hi, lo), 1);  // NaN skipped
  EXPECT_EQ(hi, 7.0);

  EXPECT_EQ(CalcHighestLowest(v, 6, 1, 1, hi, lo), 0);  // only an empty slot
  EXPECT_EQ(hi, kEmpty);
  EXPECT_EQ(lo, kEmpty);
  EXPECT_EQ(CalcHighestLowest(v, 6, 10, 20, hi, lo), 0);  // wholly past the end
  EXPECT_EQ(CalcHighestLowest(v, 0, 0, 5, hi, lo), 0);
  EXPECT_EQ(CalcHighestLowest(nullptr, 6, 0, 5, hi, lo), 0);
}
