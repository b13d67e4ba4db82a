// CPacket queries (available values, searches, extremes and their cache),
// transforms, arithmetic, and randomised comparisons with plain loops.
#include <cmath>
#include <limits>
#include <random>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "chartcore/packets/packet.h"
#include "packets/packet_test_util.h"

using packets_test::Bits;
using packets_test::E;
using packets_test::kNoMax;
using packets_test::Make;
using packets_test::Values;
using V = std::vector<double>;

namespace {

const double kNaN = std::numeric_limits<double>::quiet_NaN();

// Compares element bit patterns, so NaN, -0.0 and the empty value count.
::testing::AssertionResult SameBits(const V& a, const V& b) {
  if (a.size() != b.size()) return ::testing::AssertionFailure() << "sizes " << a.size() << " vs " << b.size();
  for (std::size_t i = 0; i < a.size(); ++i) {
    if (Bits(a[i]) != Bits(b[i])) return ::testing::AssertionFailure() << "differ at " << i;
  }
  return ::testing::AssertionSuccess();
}

}  // namespace

TEST(PacketAvail, FirstAndLastAvailableWithinStartAndEnd) {
  CPacket p = Make({E, 2, E, 4, E});
  EXPECT_EQ(p.GetFirstAvailIndex(), 1);
  EXPECT_EQ(p.GetLastAvailIndex(), 3);
  int idx = 99;
  EXPECT_EQ(p.GetFirstAvailValue(idx), 2);
  EXPECT_EQ(idx, 1);
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
  EXPECT_EQ(CPacket().GetLastAvailValue(), E);
}

TEST(PacketSearch, ValueSearchesFromTheStartIndex) {
  CPacket p = Make({1, 3, 5});
  EXPECT_EQ(p.FindIndexOverValue(3), 1);
  EXPECT_EQ(p.FindIndexOverValue(6), -1);
  EXPECT_EQ(p.FindIndexOverValue(E), -1);  // an empty argument is rejected
  EXPECT_EQ(Make({1, E, 5}).FindIndexOverValue(4), 1);  // empty is the largest
  EXPECT_EQ(p.FindIndexBetweenValues(2, 4), 1);
  EXPECT_EQ(p.FindIndexBetweenValues(E, 4), -1);
  p.SetStartIndex(2);
  EXPECT_EQ(p.FindIndexOverValue(1), 2);
  EXPECT_EQ(p.FindValuePos(1, 1), 0);  // exact search ignores the start index

  CPacket dates = Make({10, 20, 30});
  EXPECT_EQ(dates.FindIndexClosestValues(25), 1);  // 20 <= 25 <= 30
  EXPECT_EQ(dates.FindIndexClosestValues(30), 1);  // bracketed by 20..30
  EXPECT_EQ(dates.FindIndexClosestValues(35), 1);  // i = size-2 ends the search
  EXPECT_EQ(dates.FindIndexClosestValues(5), -1);
  EXPECT_EQ(Make({10}).FindIndexClosestValues(15), 0);  // slot after reads empty

  int first = 7, second = 7;
  EXPECT_EQ(Make({2, 2}).FindIndexsBetweenValues(2, 2, first, second), 1);
  EXPECT_EQ(first, 0);
  EXPECT_EQ(second, 1);
  EXPECT_EQ(Make({1, 2, 3}).FindIndexsBetweenValues(3, 1, first, second), 0);
  EXPECT_EQ(first, 2);
  EXPECT_EQ(second, -1);
  EXPECT_EQ(CPacket().FindIndexsBetweenValues(1, 1, first, second), 0);
  EXPECT_EQ(first, -1);

  CPacket pos = Make({5, 1, 5, kNaN});
  EXPECT_EQ(pos.FindValuePos(5, 1), 0);
  EXPECT_EQ(pos.FindValuePos(5, 0), 2);
  EXPECT_EQ(pos.FindValuePos(kNaN, 1), -1);  // NaN equals nothing
}

TEST(PacketExtremes, RangesSkipEmptyAndFirstIndexWins) {
  CPacket p = Make({3, E, 7, 7, 1});
  EXPECT_EQ(p.GetMaxIndex(0, 4), 2);
  EXPECT_EQ(p.GetMaxPacketIndex(), 2);
  EXPECT_EQ(p.GetMaxPacketValue(), 7);
  EXPECT_EQ(p.GetMinIndex(0, 4), 4);
  double mx = 0, mn = 0;
  EXPECT_EQ(p.GetMaxMinValue(0, 4, mx, mn), 6);
  EXPECT_EQ(mx, 7);
  EXPECT_EQ(mn, 1);

  EXPECT_EQ(p.GetMaxIndex(3, 2), -1);  // valid but empty: caches "none"
  EXPECT_EQ(p.GetMaxPacketIndex(), -1);
  EXPECT_EQ(Bits(p.GetMaxPacketValue()), Bits(kNoMax));
  EXPECT_EQ(Bits(p.GetMaxValue(0, 5)), Bits(kNoMax));  // to == size: invalid
  EXPECT_EQ(p.GetMinValue(-1, 2), E);
  EXPECT_EQ(p.GetMaxMinValue(0, 5, mx, mn), E);  // invalid: the empty value
  EXPECT_EQ(Bits(mx), Bits(kNoMax));
  EXPECT_EQ(mn, E);
  EXPECT_EQ(p.GetMaxMinValue(3, 2, mx, mn), kNoMax - E);  // empty range
  int idx = 5;
  EXPECT_EQ(CPacket().GetMaxValueIndex(0, 0, idx), kNoMax);
  EXPECT_EQ(idx, -1);
}

TEST(PacketExtremes, CacheFlagDecidesWhatIsStored) {
  CPacket p = Make({3, E, 7, 7, 1});
  EXPECT_EQ(p.GetMaxValue(0, 4, 0), 7);
  EXPECT_EQ(Bits(p.GetMaxValue()), Bits(kNoMax));  // flag 0: nothing stored
  EXPECT_EQ(p.GetMaxValue(0, 0, 1), 3);
  EXPECT_EQ(p.GetMaxValue(), 3);
  EXPECT_EQ(p.GetMaxPacketIndex(), -1);  // value only
  int idx = 0;
  EXPECT_EQ(p.GetMinValueIndex(0, 3, idx, 1), 3);
  EXPECT_EQ(idx, 0);
  EXPECT_EQ(p.GetMinPacketIndex(), 0);
  double mx, mn;
  int mxi, mni;
  EXPECT_EQ(p.GetMaxMinValueIndex(0, 4, mx, mn, mxi, mni, 1), 6);
  EXPECT_EQ(mxi, 2);
  EXPECT_EQ(mni, 4);
  EXPECT_EQ(p.GetMinPacketIndex(), 0);  // indexes are not cached by this one
  EXPECT_EQ(p.GetMinValue(), 1);
  EXPECT_EQ(p.GetMaxMinValue(mx, mn), 6);  // cached read-back
  EXPECT_EQ(p.GetMaxMinValueIndex(mx, mn, mxi, mni), 6);
  EXPECT_EQ(mxi, -1);
  EXPECT_EQ(mni, 0);
  EXPECT_EQ(p.GetMinValue(0, 5, 1), E);  // an invalid range resets the cache
  EXPECT_EQ(p.GetMinValue(), E);

  // Below the no-maximum value: the index queries take the first available
  // value unconditionally, the value scans never rise above their start.
  CPacket low = Make({-2e30, E});
  EXPECT_EQ(low.GetMaxIndex(0, 1), 0);
  EXPECT_EQ(low.GetMaxValueIndex(0, 1, idx), -2e30);
  EXPECT_EQ(Bits(low.GetMaxValue(0, 1)), Bits(kNoMax));
  EXPECT_EQ(low.GetMaxMinValue(0, 1, mx, mn), kNoMax - (-2e30));
  EXPECT_EQ(Bits(mx), Bits(kNoMax));
  // A leading NaN is available, taken first, and never beaten.
  EXPECT_EQ(Make({kNaN, 1}).GetMaxIndex(0, 1), 0);
  CPacket nan = Make({kNaN, 1});
  EXPECT_EQ(nan.GetMaxMinValue(0, 1, mx, mn), 0);
  EXPECT_EQ(mx, 1);
}

TEST(PacketTransforms, TrimKeepsEqualValuesInsideTheRange) {
  CPacket p = Make({5, 1, 5});
  EXPECT_EQ(p.Trim(0, 2, 5, 1), 1);
  EXPECT_EQ(Values(p), V({5, 5}));
  EXPECT_EQ(p.GetEndIndex(), 1);
  EXPECT_EQ(p.GetValidStartIndex(), 0);
  EXPECT_EQ(p.GetValidEndIndex(), -1);
  CPacket q = Make({1, 2, 3});
  EXPECT_EQ(q.Trim(1, 1, 9, 0), 1);  // without shrink the tail keeps its value
  EXPECT_EQ(Values(q), V({1, 3, 3}));
  EXPECT_EQ(q.Trim(0, 3, 9, 1), 0);
  EXPECT_EQ(q.Trim(-1, 1, 9, 1), 0);
  CPacket r = Make({1, 1, 2, 1});
  EXPECT_EQ(r.TrimLeft(2, 1, 1), 1);  // both equal 1: nothing dropped
  EXPECT_EQ(r.GetPacketSize(), 4);
  EXPECT_EQ(r.TrimRight(2, 1, 1), 1);  // 2 dropped, the trailing 1 kept
  EXPECT_EQ(Values(r), V({1, 1, 1}));
  EXPECT_EQ(r.TrimLeft(0, 1, 1), 0);
  EXPECT_EQ(r.TrimRight(4, 1, 1), 0);  // from -1
}

TEST(PacketTransforms, ReverseOverStartToEndAndSort) {
  CPacket p = Make({1, 2, 3, 4});
  EXPECT_EQ(p.ReversePacket(), 1);
  EXPECT_EQ(Values(p), V({4, 3, 2, 1}));
  CPacket mid = Make({1, 2, 3, 4});
  mid.SetStartIndex(1);
  mid.SetEndIndex(2);
  mid.ReversePacket();
  EXPECT_EQ(Values(mid), V({1, 3, 2, 4}));
  CPacket head = Make({1, 2, 3, 4});
  head.SetEndIndex(1);  // element i := old[size-1-i] for i in 0..1 only
  head.ReversePacket();
  EXPECT_EQ(Values(head), V({4, 3, 3, 4}));
  CPacket neg;
  neg.SetPacketSize(-1);
  EXPECT_EQ(neg.ReversePacket(), 0);
  EXPECT_EQ(CPacket().ReversePacket(), 1);

  CPacket s = Make({1, 3, 2});
  EXPECT_EQ(s.SortPacket(0), 1);
  EXPECT_EQ(Values(s), V({3, 2, 1}));
  CPacket e = Make({E, 2, 1});
  e.SortPacket(1);
  EXPECT_EQ(Values(e), V({1, 2, E}));
  CPacket n = Make({3, kNaN, 1, 2});  // NaN compares false: it never moves
  n.SortPacket(1);
  EXPECT_TRUE(SameBits(Values(n), V({1, kNaN, 2, 3})));
}

TEST(PacketArithmetic, ElementWiseWithEmptyPropagationAndCarry) {
  CPacket a = Make({1, 2, 3});
  CPacket sum = a + Make({10, 20, 30});
  EXPECT_EQ(Values(sum), V({11, 22, 33}));
  EXPECT_EQ(sum.GetEndIndex(), 2);
  EXPECT_EQ(Values(Make({1, E, 3}) * 2.0), V({2, E, 6}));
  EXPECT_EQ(Values(Make({4, 6, 8}) / Make({2, 0, 4})), V({2, 2, 2}));  // carry
  EXPECT_EQ(Values(Make({0, 6}) / Make({0, 3})), V({E, 2}));  // carry before 0
  EXPECT_EQ(Values(Make({10, 20}) - 3.0), V({7, 17}));
  EXPECT_EQ(Values(CPacket(5.0) + Make({1, 2, 3})), V({6, 7, 8}));  // broadcast left
  EXPECT_EQ(Values(Make({7, 8}) % Make({2, 3})), V({E, E}));  // % computes nothing
  EXPECT_EQ((CPacket() + Make({1, 2})).GetPacketSize(), 0);  // empty left wins
  EXPECT_EQ(Values(Make({1, 2}) + CPacket()), V({1, 2}));   // copy of the left

  // A shorter right operand marks the left operand's own elements empty.
  CPacket left = Make({1, 2, 3, 4});
  EXPECT_EQ(Values(left + Make({10, 20})), V({11, 22, E, E}));
  EXPECT_EQ(Values(left), V({1, 2, E, E}));
  // A shorter left operand is not written beyond its size.
  CPacket shorter = Make({1, 2});
  EXPECT_EQ(Values(shorter + Make({10, 20, 30})), V({11, 22, E}));
  EXPECT_EQ(shorter.GetPacketSize(), 2);

  // The result starts at the later start index; below it nothing is computed.
  CPacket l(8, 0), r(8, 0);
  for (int i = 0; i < 8; ++i) {
    l.SetValue(i, i);
    r.SetValue(i, 1);
  }
  l.SetStartIndex(2);
  r.SetStartIndex(5);
  CPacket lr = l + r;
  EXPECT_EQ(lr.GetStartIndex(), 5);
  EXPECT_EQ(Values(lr), V({E, E, E, E, E, 6, 7, 8}));
}

TEST(PacketArithmetic, CompoundFormsCollectResultsInElementZero) {
  CPacket a = Make({1, 2, 3});
  a += Make({10, 20, 30});
  EXPECT_EQ(Values(a), V({33, 2, 3}));
  CPacket b = Make({1, 2, 3});
  b += Make({10});  // indexes at or beyond the right's size become empty
  EXPECT_EQ(Values(b), V({11, E, E}));
  CPacket c = Make({5});
  c /= Make({0});
  EXPECT_EQ(Values(c), V({E}));
  CPacket f = Make({7.9});
  f %= Make({-2.5});  // truncated: 7 % -2
  EXPECT_EQ(Values(f), V({1}));
  CPacket g = Make({-7});
  g %= Make({-1});  // no overflow trap: 0
  EXPECT_EQ(Values(g), V({0}));
  CPacket h = Make({7});
  h %= Make({0.5});  // not 0.0, but truncates to 0: empty
  EXPECT_EQ(Values(h), V({E}));
  CPacket k = Make({E});
  k -= Make({1});  // the single-number path tests no empty value
  EXPECT_EQ(Values(k), V({E - 1}));
  CPacket m = Make({4, 6});
  m /= Make({0, 3});  // zero test on the right's element 0 at every index
  EXPECT_EQ(Values(m), V({E, 6}));
  CPacket n = Make({7, 9});
  n %= Make({2, 4});
  EXPECT_EQ(Values(n), V({1, 9}));
  CPacket self = Make({1, 2, 3});
  self += self;  // right is the left: element 0 changes as the loop runs
  EXPECT_EQ(Values(self), V({6, 2, 3}));
  CPacket s1 = Make({1, 2});
  s1.SetStartIndex(1);
  CPacket s2 = Make({1, 2});
  s2.SetEndIndex(5);
  s1 *= s2;
  EXPECT_EQ(s1.GetStartIndex(), 1);
  EXPECT_EQ(s1.GetEndIndex(), 5);
  CPacket empty;
  empty += Make({1});
  EXPECT_EQ(empty.GetPacketSize(), 0);
}

TEST(PacketRandomised, MatchesPlainLoops) {
  std::mt19937 rng(12345);
  std::uniform_real_distribution<double> value(-1000, 1000);
  std::uniform_int_distribution<int> pick(0, 19);
  for (int round = 0; round < 40; ++round) {
    const int n = 1 + static_cast<int>(rng() % 3000);
    CPacket a, b;
    V va, vb;
    for (int i = 0; i < n; ++i) {
      const double x = pick(rng) == 0 ? E : value(rng);
      const double y = pick(rng) == 0 ? E : value(rng);
      a.Add(x);
      b.Add(y);
      va.push_back(x);
      vb.push_back(y);
    }
    V sum(static_cast<std::size_t>(n)), prod(static_cast<std::size_t>(n));
    double mx = kNoMax, mn = E;
    int mxi = -1, mni = -1;
    for (int i = 0; i < n; ++i) {
      const double x = va[static_cast<std::size_t>(i)], y = vb[static_cast<std::size_t>(i)];
      sum[static_cast<std::size_t>(i)] = (x == E || y == E) ? E : x + y;
      prod[static_cast<std::size_t>(i)] = (x == E || y == E) ? E : x * y;
      if (x == E) continue;
      if (x > mx) mx = x, mxi = i;
      if (x < mn) mn = x, mni = i;
    }
    EXPECT_TRUE(SameBits(Values(a + b), sum));
    EXPECT_TRUE(SameBits(Values(a * b), prod));
    double gmx, gmn;
    int gmxi, gmni;
    a.GetMaxMinValueIndex(0, n - 1, gmx, gmn, gmxi, gmni);
    EXPECT_EQ(gmxi, mxi);
    EXPECT_EQ(gmni, mni);
    EXPECT_EQ(a.GetMaxMinValue(0, n - 1, gmx, gmn), mx - mn);
    EXPECT_EQ(a.GetMaxIndex(0, n - 1), mxi);
  }
}

TEST(PacketRandomised, SortEqualsTheExchangeRuleWithNaNAndSignedZeros) {
  std::mt19937 rng(777);
  const double pool[] = {0.0, -0.0, 1.0, -1.0, 2.5, kNaN, E, 3.0};
  for (int round = 0; round < 200; ++round) {
    const int n = static_cast<int>(rng() % 12);
    V values;
    CPacket p;
    for (int i = 0; i < n; ++i) {
      values.push_back(pool[rng() % 8]);
      p.Add(values.back());
    }
    const int dir = static_cast<int>(rng() % 2);
    for (int i = 0; i + 1 < n; ++i) {
      for (int j = i + 1; j < n; ++j) {
        double& x = values[static_cast<std::size_t>(i)];
        double& y = values[static_cast<std::size_t>(j)];
        if (dir == 1 ? x > y : y > x) std::swap(x, y);
      }
    }
    p.SortPacket(dir);
    EXPECT_TRUE(SameBits(Values(p), values)) << "round " << round;
  }
}
