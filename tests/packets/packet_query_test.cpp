// CPacket queries (available values, searches, extremes and their cache),
// transforms, arithmetic, and the sort against the exchange rule it keeps.
#include <cmath>
#include <limits>
#include <random>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "chartcore/packets/packet.h"
#include "packets/packet_test_util.h"

using namespace packets_test;

namespace {

const double kNaN = std::numeric_limits<double>::quiet_NaN();

CPacket Binary(CPacket a, char op, const CPacket& b) {
  return op == '+' ? a + b : op == '-' ? a - b : op == '*' ? a * b : op == '/' ? a / b : a % b;
}

void Compound(CPacket& a, char op, const CPacket& b) {
  op == '+' ? a += b : op == '-' ? a -= b : op == '*' ? a *= b : op == '/' ? a /= b : a %= b;
}

// The cached extremes: max index, max value, min index, min value.
V Cached(const CPacket& p) {
  return {double(p.GetMaxPacketIndex()), p.GetMaxPacketValue(), double(p.GetMinPacketIndex()), p.GetMinPacketValue()};
}

}  // namespace

TEST(PacketSearch, AvailableValuesWithinStartAndEndAndValueSearches) {
  CPacket p = Make({E, 2, E, 4, E});
  EXPECT_EQ(p.GetFirstAvailIndex(), 1);
  EXPECT_EQ(p.GetLastAvailIndex(), 3);
  int idx = 99;
  p.SetStartIndex(2);
  EXPECT_EQ(p.GetFirstAvailValue(idx), 4);
  EXPECT_EQ(idx, 3);
  p.SetEndIndex(2);  // start 2..end 2 holds only an empty slot
  EXPECT_EQ(p.GetLastAvailValue(idx), E);
  EXPECT_EQ(idx, -1);
  // Explicit ranges are not checked against the size; past it reads empty.
  EXPECT_EQ(p.GetLastAvailValue(0, 1000, idx), 4);
  EXPECT_EQ(idx, 3);
  EXPECT_EQ(p.GetFirstAvailValue(-5, 0, idx), E);
  EXPECT_EQ(idx, -1);

  CPacket nan = Make({E, kNaN});  // NaN is available, only the empty value is not
  EXPECT_EQ(nan.GetFirstAvailIndex(), 1);
  EXPECT_TRUE(std::isnan(nan.GetLastAvailValue()));
  EXPECT_EQ(CPacket().GetFirstAvailIndex(), -1);

  CPacket s = Make({1, 3, 5});
  EXPECT_EQ(s.FindIndexOverValue(6), -1);
  EXPECT_EQ(s.FindIndexOverValue(E), -1);  // an empty argument is rejected
  EXPECT_EQ(Make({1, E, 5}).FindIndexOverValue(4), 1);  // empty is the largest
  EXPECT_EQ(s.FindIndexBetweenValues(2, 4), 1);
  EXPECT_EQ(s.FindIndexBetweenValues(E, 4), -1);
  s.SetStartIndex(2);
  EXPECT_EQ(s.FindIndexOverValue(1), 2);
  EXPECT_EQ(s.FindValuePos(1, 1), 0);  // exact search ignores the start index

  const CPacket dates = Make({10, 20, 30});  // ascending; i = size-2 ends the search
  const struct { double v; int idx; } closest[] = {{25, 1}, {30, 1}, {35, 1}, {5, -1}};
  for (const auto& c : closest) EXPECT_EQ(dates.FindIndexClosestValues(c.v), c.idx) << c.v;
  EXPECT_EQ(Make({10}).FindIndexClosestValues(15), 0);  // the slot after the last reads empty

  const struct { V values; double a, b; int found, first, second; } pairs[] = {
      {{2, 2}, 2, 2, 1, 0, 1}, {{1, 2, 3}, 3, 1, 0, 2, -1}, {{}, 1, 1, 0, -1, -1}};
  for (const auto& c : pairs) {
    int first = 7, second = 7;  // both are always written
    EXPECT_EQ(Make(c.values).FindIndexsBetweenValues(c.a, c.b, first, second), c.found);
    EXPECT_EQ(Ints({first, second}), Ints({c.first, c.second}));
  }

  const CPacket pos = Make({5, 1, 5, kNaN});
  EXPECT_EQ(pos.FindValuePos(5, 1), 0);
  EXPECT_EQ(pos.FindValuePos(5, 0), 2);
  EXPECT_EQ(pos.FindValuePos(kNaN, 1), -1);  // NaN equals nothing
}

TEST(PacketExtremes, RangesSkipEmptyFirstIndexWinsAndTheCacheFlag) {
  CPacket p = Make({3, E, 7, 7, 1});
  double mx = 0, mn = 0;
  int idx = 5, mxi, mni;
  EXPECT_EQ(p.GetMaxValue(0, 4, 0), 7);
  EXPECT_EQ(Cached(p), V({-1, kNoMax, -1, E}));  // flag 0: nothing stored
  EXPECT_EQ(p.GetMaxValue(0, 0, 1), 3);
  EXPECT_EQ(p.GetMinValueIndex(0, 3, idx, 1), 3);
  EXPECT_EQ(idx, 0);
  EXPECT_EQ(Cached(p), V({-1, 3, 0, 3}));  // the value forms cache the index only with it
  EXPECT_EQ(p.GetMaxMinValueIndex(0, 4, mx, mn, mxi, mni, 1), 6);
  EXPECT_EQ(V({mx, mn}), V({7, 1}));
  EXPECT_EQ(Ints({mxi, mni}), Ints({2, 4}));  // the first of two maxima
  EXPECT_EQ(p.GetMaxMinValueIndex(mx, mn, mxi, mni), 6);  // cached read-back: values, not indexes
  EXPECT_EQ(Ints({mxi, mni}), Ints({-1, 0}));
  EXPECT_EQ(p.GetMinValue(0, 5, 1), E);  // an invalid range resets the cache
  EXPECT_EQ(p.GetMinValue(), E);

  EXPECT_EQ(p.GetMaxIndex(0, 4), 2);
  EXPECT_EQ(p.GetMinIndex(0, 4), 4);
  EXPECT_EQ(Cached(p), V({2, 7, 4, 1}));  // the index queries always cache index and value
  EXPECT_EQ(p.GetMaxIndex(3, 2), -1);     // valid but empty: caches "none"
  EXPECT_EQ(Cached(p), V({-1, kNoMax, 4, 1}));
  EXPECT_EQ(Bits(p.GetMaxValue(0, 5)), Bits(kNoMax));  // to == size: invalid
  EXPECT_EQ(p.GetMinValue(-1, 2), E);
  EXPECT_EQ(p.GetMaxMinValue(0, 5, mx, mn), E);  // invalid: the empty value
  EXPECT_EQ(V({mx, mn}), V({kNoMax, E}));
  EXPECT_EQ(p.GetMaxMinValue(3, 2, mx, mn), kNoMax - E);  // empty range
  EXPECT_EQ(CPacket().GetMaxValueIndex(0, 0, idx), kNoMax);
  EXPECT_EQ(idx, -1);

  // Below the no-maximum value: the index queries take the first value, the value scans keep their start.
  CPacket low = Make({-2e30, E});
  EXPECT_EQ(low.GetMaxIndex(0, 1), 0);
  EXPECT_EQ(low.GetMaxValueIndex(0, 1, idx), -2e30);
  EXPECT_EQ(Bits(low.GetMaxValue(0, 1)), Bits(kNoMax));
  EXPECT_EQ(low.GetMaxMinValue(0, 1, mx, mn), kNoMax - (-2e30));
  EXPECT_EQ(Bits(mx), Bits(kNoMax));
  // A leading NaN is available, taken first, and never beaten.
  CPacket nan = Make({kNaN, 1});
  EXPECT_EQ(nan.GetMaxIndex(0, 1), 0);
  EXPECT_EQ(nan.GetMaxMinValue(0, 1, mx, mn), 0);
  EXPECT_EQ(mx, 1);
}

TEST(PacketTransforms, TrimReverseAndSort) {
  ExpectMutations({
      // Inside the range only elements equal to v stay; end := size-1.
      {"Trim with shrink", {5, 1, 5}, [](Pk& p) { return p.Trim(0, 2, 5, 1); }, 1, {5, 5}, 1},
      {"Trim without shrink keeps the tail", {1, 2, 3}, [](Pk& p) { return p.Trim(1, 1, 9, 0); }, 1, {1, 3, 3}, 2},
      {"Trim to = size", {1, 2, 3}, [](Pk& p) { return p.Trim(0, 3, 9, 1); }, 0, {1, 2, 3}, 2},
      {"Trim from < 0", {1, 2, 3}, [](Pk& p) { return p.Trim(-1, 1, 9, 1); }, 0, {1, 2, 3}, 2},
      {"TrimLeft, all equal", {1, 1, 2, 1}, [](Pk& p) { return p.TrimLeft(2, 1, 1); }, 1, {1, 1, 2, 1}, 3},
      {"TrimRight drops the 2", {1, 1, 2, 1}, [](Pk& p) { return p.TrimRight(2, 1, 1); }, 1, {1, 1, 1}, 2},
      {"TrimLeft of 0", {1, 2}, [](Pk& p) { return p.TrimLeft(0, 1, 1); }, 0, {1, 2}, 1},
      {"TrimRight from -1", {1, 2, 3}, [](Pk& p) { return p.TrimRight(4, 1, 1); }, 0, {1, 2, 3}, 2},
      {"Reverse", {1, 2, 3, 4}, [](Pk& p) { return p.ReversePacket(); }, 1, {4, 3, 2, 1}, 3},
      {"Reverse start..end only", {1, 2, 3, 4},
       [](Pk& p) { p.SetStartIndex(1); p.SetEndIndex(2); return p.ReversePacket(); }, 1, {1, 3, 2, 4}, 2},
      {"up to end only", {1, 2, 3, 4}, [](Pk& p) { p.SetEndIndex(1); return p.ReversePacket(); }, 1, {4, 3, 3, 4}, 1},
      {"Reverse, negative size", {}, [](Pk& p) { p.SetPacketSize(-1); return p.ReversePacket(); }, 0, {}, -1},
      {"Reverse of an empty packet", {}, [](Pk& p) { return p.ReversePacket(); }, 1, {}, -1},
      {"Sort descending", {1, 3, 2}, [](Pk& p) { return p.SortPacket(0); }, 1, {3, 2, 1}, 2},
      {"empty sorts last", {E, 2, 1}, [](Pk& p) { return p.SortPacket(1); }, 1, {1, 2, E}, 2},
      {"NaN never moves", {3, kNaN, 1, 2}, [](Pk& p) { return p.SortPacket(1); }, 1, {1, kNaN, 2, 3}, 3},
  });
  CPacket p = Make({5, 1, 5});
  p.Trim(0, 2, 5, 1);
  EXPECT_EQ(Fields(p), (Ints{2, 1024, 0, 1, 0, -1, 0, 0}));  // valid 0..-1
}

TEST(PacketArithmetic, ElementWiseWithEmptyPropagationAndCarry) {
  const struct { V left; char op; V right; V result; } cases[] = {
      {{1, 2, 3}, '+', {10, 20, 30}, {11, 22, 33}},
      {{4, 6, 8}, '/', {2, 0, 4}, {2, 2, 2}},  // a zero divisor carries the previous result
      {{0, 6}, '/', {0, 3}, {E, 2}},           // before index 0 there is nothing to carry
      {{7, 8}, '%', {2, 3}, {E, E}},           // % of two packets computes nothing
      {{5}, '+', {1, 2, 3}, {6, 7, 8}},        // one element broadcasts
      {{}, '+', {1, 2}, {}},  // one empty operand: a copy of the left
      {{1, 2}, '+', {}, {1, 2}},
      {{1, 2, 3, 4}, '+', {10, 20}, {11, 22, E, E}},
      {{1, 2}, '+', {10, 20, 30}, {11, 22, E}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(::testing::PrintToString(c.left) + c.op + ::testing::PrintToString(c.right));
    const CPacket result = Binary(Make(c.left), c.op, Make(c.right));
    EXPECT_EQ(Values(result), c.result);
    EXPECT_EQ(result.GetEndIndex(), static_cast<int>(c.result.size()) - 1);
  }
  EXPECT_EQ(Values(Make({1, E, 3}) * 2.0), V({2, E, 6}));
  EXPECT_EQ(Values(Make({10, 20}) - 3.0), V({7, 17}));

  // A short right operand empties the left operand's own elements; a short left is not grown.
  CPacket left = Make({1, 2, 3, 4});
  left + Make({10, 20});
  EXPECT_EQ(Values(left), V({1, 2, E, E}));
  CPacket shorter = Make({1, 2});
  shorter + Make({10, 20, 30});
  EXPECT_EQ(Values(shorter), V({1, 2}));

  // The result starts at the later start index; below it nothing is computed.
  CPacket l = Make({0, 1, 2, 3, 4, 5, 6, 7});
  CPacket r = Make({1, 1, 1, 1, 1, 1, 1, 1});
  l.SetStartIndex(2);
  r.SetStartIndex(5);
  const CPacket lr = l + r;
  EXPECT_EQ(lr.GetStartIndex(), 5);
  EXPECT_EQ(Values(lr), V({E, E, E, E, E, 6, 7, 8}));
}

TEST(PacketArithmetic, CompoundFormsCollectResultsInElementZero) {
  const struct { V left; char op; V right; V result; } cases[] = {
      {{1, 2, 3}, '+', {10, 20, 30}, {33, 2, 3}},
      {{1, 2, 3}, '+', {10}, {11, E, E}},  // at or beyond the right's size: empty
      {{4, 6}, '/', {0, 3}, {E, 6}},       // the zero test reads the right's element 0
      {{7, 9}, '%', {2, 4}, {1, 9}},
      // A one-element left: no empty test, zero divisors give empty, % truncates.
      {{E}, '-', {1}, {E - 1}},
      {{5}, '/', {0}, {E}},
      {{7.9}, '%', {-2.5}, {1}},
      {{7}, '%', {0.5}, {E}},
      {{-2147483648.0}, '%', {-1}, {0}},
      {{}, '+', {1}, {}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(::testing::PrintToString(c.left) + c.op + ::testing::PrintToString(c.right));
    CPacket left = Make(c.left);
    Compound(left, c.op, Make(c.right));
    EXPECT_EQ(Values(left), c.result);
  }
  CPacket self = Make({1, 2, 3});
  self += self;  // right is the left: element 0 changes as the loop runs
  EXPECT_EQ(Values(self), V({6, 2, 3}));
  CPacket s1 = Make({1, 2});
  s1.SetStartIndex(1);
  CPacket s2 = Make({1, 2});
  s2.SetEndIndex(5);
  s1 *= s2;
  EXPECT_EQ(Fields(s1), (Ints{2, 1024, 1, 5, -1, -1, 0, 0}));  // the later start, the later end
}

TEST(PacketRandomised, SortEqualsTheExchangeRuleWithNaNAndSignedZeros) {
  std::mt19937 rng(777);
  const double pool[] = {0.0, -0.0, 1.0, -1.0, 2.5, kNaN, E, 3.0};
  for (int round = 0; round < 200; ++round) {
    V values(rng() % 12);
    for (double& v : values) v = pool[rng() % 8];
    CPacket p = Make(values);
    const int dir = static_cast<int>(rng() % 2);
    for (std::size_t i = 0; i + 1 < values.size(); ++i) {
      for (std::size_t j = i + 1; j < values.size(); ++j) {
        if (dir == 1 ? values[i] > values[j] : values[j] > values[i]) std::swap(values[i], values[j]);
      }
    }
    p.SortPacket(dir);
    EXPECT_TRUE(SameBits(Values(p), values)) << "round " << round;
  }
}
