// CPacket: construction, allocation, growth, element access, appends and the
// deliberate rearranging rules; the single-series accessors CPacketMemory
// shares with it run against both classes.
#include "chartcore/packets/packet.h"

#include <climits>
#include <cmath>
#include <numeric>
#include <type_traits>
#include <vector>

#include <gtest/gtest.h>

#include "chartcore/packets/packet_memory.h"
#include "packets/packet_test_util.h"

using namespace packets_test;

namespace {

// A value-layout CPacketMemory's close column under CPacket's member names.
class CloseColumn : public CPacketMemory {
 public:
  using CPacketMemory::CPacketMemory;
  int Add(double v) { return AddDateValue(0, v); }
  double GetValue(int i) const { return CPacketMemory::GetValue(i, PDT_CLOSE); }
  int SetValue(int i, double v) { return CPacketMemory::SetValue(i, PDT_CLOSE, v); }
  int UpdateAdd(int i, double v) { return CPacketMemory::UpdateAdd(i, PDT_CLOSE, v); }
  double GetLastPrevValue() const { return CPacketMemory::GetLastPrevValue(PDT_CLOSE); }
  double GetLastPrePrevValue() const { return CPacketMemory::GetLastPrePrevValue(PDT_CLOSE); }
  double GetLastFromIndexValue(int k) const { return CPacketMemory::GetLastFromIndexValue(k, PDT_CLOSE); }
  double GetReverseValue(int i) const { return CPacketMemory::GetReverseValue(i, PDT_CLOSE); }
  double& operator[](int i) { return (*this)(i, PDT_CLOSE); }
  const double& operator[](int i) const { return (*this)(i, PDT_CLOSE); }
  int UpdateAll(double v) { return CPacketMemory::UpdateAll(PDT_CLOSE, v); }
  int Replace(double a, double b) { return CPacketMemory::Replace(PDT_CLOSE, a, b); }
  int VShift(double d) { return CPacketMemory::VShift(PDT_CLOSE, d); }
};

template <class P>
class PacketShared : public ::testing::Test {};
using PacketKinds = ::testing::Types<CPacket, CloseColumn>;
TYPED_TEST_SUITE(PacketShared, PacketKinds);

}  // namespace

TEST(PacketTypes, MarkerValuesHaveTheirExactBits) {
  EXPECT_EQ(Bits(E), 0x7FEFFFFFFFFFFFFFull);
  EXPECT_EQ(Bits(kNoMax), 0xC6293E5940000000ull);  // -1e30f widened, not -1e30
  EXPECT_FALSE(chartcore::IsEmptyValue(std::nan("")));
}

TYPED_TEST(PacketShared, SizedPacketsAndBlockGrowth) {
  EXPECT_EQ(Fields(TypeParam()), (Ints{0, 0, 0, -1, -1, -1, 0, 0}));
  EXPECT_EQ(Fields(TypeParam(0, 1)), Fields(TypeParam()));
  EXPECT_EQ(Fields(TypeParam(10, 1)), (Ints{10, 1024, 0, -1, -1, -1, 0, 0}));
  EXPECT_EQ(Values(TypeParam(10, 1)), V(10, E));  // filled: empty, though never written
  EXPECT_EQ(Values(TypeParam(3, 0)), V(3, 0.0));  // never-written slots read 0.0

  // Empty to one element: one block; index 1023 fits it; 5000 need 5 blocks.
  TypeParam p;
  Ints capacities;
  for (int i = 0; i < 5000; ++i) {
    ASSERT_EQ(p.Add(i), i + 1);
    if (i == 0 || i == 1023 || i == 1024 || i == 4999) capacities.push_back(p.GetMaxPacketSize());
  }
  EXPECT_EQ(capacities, (Ints{1024, 1024, 2048, 5120}));
  V ramp(5000);
  std::iota(ramp.begin(), ramp.end(), 0.0);
  EXPECT_EQ(Values(p), ramp);

  TypeParam c;  // 0 needs the blocks it has; 1 stores a block, then fits though empty
  const struct { int i, result, capacity; } checks[] = {{0, 1, 0}, {1, 0, 1024}, {1, 1, 1024}, {2049, 0, 3072}};
  for (const auto& k : checks) {
    EXPECT_EQ(c.CheckPacketBoundary(k.i), k.result) << k.i;
    EXPECT_EQ(c.GetMaxPacketSize(), k.capacity) << k.i;
  }
  EXPECT_EQ(c.CheckBoundaryRange(0), 0);  // plain index test against size 0
}

TYPED_TEST(PacketShared, ClearKeepsValidEndAndShiftXAndReAllocCutsToWhatFits) {
  const int cleared = std::is_same<TypeParam, CPacket>::value ? 1024 : 0;  // CPacket reports one block
  TypeParam p = Make<TypeParam>({4, 9, 1});
  p.SetValidStartIndex(0);
  p.SetValidEndIndex(7);
  p.SetShiftXSize(3);
  p.SetRealPacketSize(5);
  p.SetStartIndex(1);
  p.ClearPacket();
  EXPECT_EQ(Fields(p), (Ints{0, cleared, 0, -1, -1, 7, 3, 0}));

  TypeParam r = Make<TypeParam>({1, 2, 3, 4, 5});
  r.ReAllocPacket(3000, 1);  // more room, no field changes
  EXPECT_EQ(Fields(r), (Ints{5, 1024, 0, 4, -1, -1, 0, 0}));
  EXPECT_EQ(Values(r), V({1, 2, 3, 4, 5}));
  r.ReAllocPacket(2, 1);  // fewer than the size: only what fits survives
  EXPECT_EQ(r.GetEndIndex(), 1);
  EXPECT_EQ(Values(r), V({1, 2}));
  r.ReAllocPacket(10, 0);  // without keep: a fresh AllocPacket
  EXPECT_EQ(Values(r), V(10, 0.0));
  r.ReAllocPacket(0, 1);
  EXPECT_EQ(Fields(r), (Ints{0, cleared, 0, -1, -1, -1, 0, 0}));
}

TYPED_TEST(PacketShared, ElementAccessNeverLeavesTheRange) {
  TypeParam p = Make<TypeParam>({1, 2, 3});
  EXPECT_EQ(p.GetValue(-1), E);
  EXPECT_EQ(p.SetValue(3, 9), 0);
  EXPECT_EQ(p.SetValue(1, 9), 1);
  EXPECT_EQ(p.UpdateAdd(1, 1), 1);
  EXPECT_EQ(Values(p), V({1, 10, 3}));
  EXPECT_EQ(p.GetLastPrevValue(), 10);
  EXPECT_EQ(p.GetLastPrePrevValue(), 1);
  // k = 0 is the slot after the last; size - INT_MIN does not fit an int.
  const struct { int k; double v; } from_end[] = {{0, E}, {1, 3}, {3, 1}, {4, E}, {INT_MIN, E}};
  for (const auto& c : from_end) EXPECT_EQ(p.GetLastFromIndexValue(c.k), c.v) << "k " << c.k;
  EXPECT_EQ(p.GetReverseValue(0), 3);
  EXPECT_EQ(p.GetReverseValue(3), E);
  const TypeParam one = Make<TypeParam>({4});
  EXPECT_EQ(one.GetLastPrevValue(), E);  // too short: empty, no read before 0
  EXPECT_EQ(one.GetLastPrePrevValue(), E);

  p.SetStartIndex(1);  // below the start or past the size: a spare slot
  double& below = p[0];
  EXPECT_EQ(below, E);
  below = 42;  // changes no element, and the slot is reset each time
  EXPECT_EQ(p.GetValue(0), 1);
  EXPECT_EQ(p[0], E);
  p[1] = 20;
  EXPECT_EQ(p.GetValue(1), 20);
  const TypeParam& c = p;
  EXPECT_EQ(c[0], E);
  EXPECT_EQ(c[2], 3);

  TypeParam q = Make<TypeParam>({1, E, 1});
  EXPECT_EQ(q.VShift(1.0), 1);  // the empty value absorbs a small shift
  EXPECT_EQ(q.VShift(0.0), 0);
  EXPECT_EQ(Values(q), V({2, E, 2}));
  EXPECT_EQ(q.Replace(2, 7), 1);
  EXPECT_EQ(q.Replace(7, 7), 0);
  EXPECT_EQ(Values(q), V({7, E, 7}));
  EXPECT_EQ(q.UpdateAll(6), 1);
  EXPECT_EQ(Values(q), V(3, 6));
  EXPECT_EQ(TypeParam().UpdateAll(1), 0);
}

TEST(PacketAlloc, NumbersClearInitResetAndDelete) {
  EXPECT_EQ(Fields(CPacket(2.5)), (Ints{1, 1, 0, -1, -1, -1, 0, 0}));  // a number as a series

  CPacket n = Make({1, 2, 3});
  n = 2.5;
  EXPECT_EQ(Fields(n), (Ints{0, 1, 0, -1, -1, -1, 0, 0}));  // the size deliberately left at 0
  n.SetPacketSize(1);
  EXPECT_EQ(n.GetValue(0), 2.5);
  // Capacity 1, one block: appends up to 1024 "fit", so the capacity stays 1.
  for (int i = 1; i < 10; ++i) EXPECT_EQ(n.Add(i * 10.0), i + 1);
  EXPECT_EQ(n.GetMaxPacketSize(), 1);
  EXPECT_EQ(Values(n), V({2.5, 10, 20, 30, 40, 50, 60, 70, 80, 90}));

  CPacket p = Make({4, 9, 1});
  p.SetDayChangeSize(2);
  p.SetTurnUpDnReal(1);
  ASSERT_EQ(p.GetMaxIndex(0, 2), 1);
  p.SetValidEndIndex(7);
  p.ClearPacket();  // the shared index fields are checked for both classes
  EXPECT_EQ(p.GetPacket(), nullptr);
  EXPECT_EQ(p.GetDayChangeSize(), 0);
  EXPECT_EQ(p.IsTurnUpDnReal(), 0);
  EXPECT_EQ(p.GetMaxPacketIndex(), -1);
  EXPECT_EQ(Bits(p.GetMaxPacketValue()), Bits(kNoMax));
  p.InitPacket();  // the full reset, valid end and capacity included
  EXPECT_EQ(Fields(p), Fields(CPacket()));

  CPacket q = Make({1, 2});
  q.SetValidEndIndex(1);
  q.ResetPacket();  // clear, then a zero-length array ready for appends
  EXPECT_NE(q.GetPacket(), nullptr);
  EXPECT_EQ(Fields(q), Fields(CPacket()));
  EXPECT_EQ(q.Add(5), 1);

  CPacket r = Make({1, 2, 3});
  r.AllocPacket(3);  // same size: nothing happens
  EXPECT_EQ(Values(r), V({1, 2, 3}));
  r.DeletePacket();  // array gone, fields kept
  EXPECT_EQ(r.GetValue(0), E);
  EXPECT_EQ(r.Add(9), 4);  // the append rebuilds storage; older bars read empty
  EXPECT_EQ(Values(r), V({E, E, E, 9}));
}

TEST(PacketElements, LastBarWritersAndUncheckedSums) {
  ExpectMutations({
      {"SetLastPrevValue writes the last bar", {1, 2, 3}, [](Pk& p) { return p.SetLastPrevValue(8); }, 1, {1, 2, 8}, 2},
      {"Update(v) writes the last bar", {1, 2, 3}, [](Pk& p) { return p.Update(7); }, 1, {1, 2, 7}, 2},
      {"UpdatePrev", {1, 2, 3}, [](Pk& p) { return p.UpdatePrev(5); }, 1, {1, 5, 3}, 2},
      {"UpdatePrev needs two bars", {4}, [](Pk& p) { return p.UpdatePrev(5); }, 0, {4}, 0},
      {"UpdateAdd(v) adds to the last bar", {1, 2, 3}, [](Pk& p) { return p.UpdateAdd(0.5); }, 1, {1, 2, 3.5}, 2},
      {"UpdateLastAvail: index 2", {1, E, 3, E}, [](Pk& p) { return p.UpdateLastAvail(30); }, 1, {1, E, 30, E}, 3},
      {"UpdateLastAvail, empty", {}, [](Pk& p) { return p.UpdateLastAvail(1); }, 0, {}, -1},
      {"SetLastValue, empty", {}, [](Pk& p) { return p.SetLastValue(1); }, 0, {}, -1},
  });
  CPacket p = Make({1, 2, 3});
  // UpdateSum writes the slot after the last (no size check); AccumAdd adds to it.
  EXPECT_EQ(p.UpdateSum(4, 3), 1);
  p.AccumAdd(1);
  EXPECT_EQ(p.GetValue(3), 5);
  EXPECT_EQ(p.UpdateSum(2, -1), 1);
  EXPECT_EQ(p.GetValue(3), 7);
  EXPECT_EQ(p.UpdateSum(1, 1 << 20), 0);  // outside the array: refused

  EXPECT_EQ(CPacket().UpdateSum(1, 0), 0);
}

TEST(PacketAppend, AppendsWriteAtTheOldSizeAndWindowsRoll) {
  ExpectMutations({
      {"AddLast on empty appends empty", {}, [](Pk& p) { p.AddLast(); return 0; }, 0, {E}, 0},
      {"AddSameLast", {1, 2}, [](Pk& p) { return p.AddSameLast(); }, 3, {1, 2, 2}, 2},
      {"AccumAdd to a never-written 0.0", {}, [](Pk& p) { p.AccumAdd(5); return 0; }, 0, {5}, 0},
      {"AddLastAvail, none available: end+1", {}, [](Pk& p) { return p.AddLastAvail(7); }, 1, {7}, 0},
      {"AddLastAvail after the 2", {1, 2, E, E}, [](Pk& p) { return p.AddLastAvail(9); }, 5, {1, 2, 9, E, E}, 4},
      {"AddLastAvail after the last", {1, 2, 3}, [](Pk& p) { return p.AddLastAvail(9); }, 4, {1, 2, 3, 9}, 3},
      {"AddLastAvail, all empty", {E, E}, [](Pk& p) { return p.AddLastAvail(4); }, 3, {E, E, 4}, 2},
      {"mode 1 drops the first", {1, 2, 3, 4}, [](Pk& p) { return p.AddShift(5, 1); }, 4, {2, 3, 4, 5}, 3},
      {"mode 0: 0..size-3 right", {2, 3, 4, 5}, [](Pk& p) { return p.AddShift(6, 0); }, 4, {2, 2, 3, 6}, 3},
      {"other modes overwrite the last", {2, 3, 6}, [](Pk& p) { return p.AddShift(7, 9); }, 3, {2, 3, 7}, 2},
      {"AddShift on empty", {}, [](Pk& p) { return p.AddShift(1, 1); }, -1, {}, -1},
      {"AddShiftSameLast on empty", {}, [](Pk& p) { return p.AddShiftSameLast(); }, -1, {}, -1},
      {"AddShiftLast", {1, 2, 3}, [](Pk& p) { p.AddShiftLast(1); return 0; }, 0, {2, 3, 3}, 2},
      {"AddShiftSameLast grows, rolls left", {1, 2, 3}, [](Pk& p) { return p.AddShiftSameLast(); }, 4, {2, 3, 3, 3}, 3},
      // Insert after the last available value, then roll; the size stays grown.
      {"roll left, empty past the end", {1, 2, 3}, [](Pk& p) { p.AddShiftLastAvail(9, 1); return 0; }, 0,
       {2, 3, 9, E}, 3},
      {"Insert(2, 9) moves nothing", {1, 2, E}, [](Pk& p) { p.AddShiftLastAvail(9, 0); return 0; }, 0, {1, 1, 2, 9}, 3},
      {"none available: nothing", {E, E}, [](Pk& p) { p.AddShiftLastAvail(9, 1); return 0; }, 0, {E, E}, 1},
  });
}

TEST(PacketInsertRemove, DeliberateMoveCounts) {
  ExpectMutations({
      // Only size-1-i elements move: the old last is lost, the new slot never written.
      {"Insert inside", {1, 2, 3}, [](Pk& p) { return p.Insert(1, 9); }, 1, {1, 9, 2, 0}, 3},
      {"Insert at the size appends", {1, 2, 3}, [](Pk& p) { return p.Insert(3, 4); }, 1, {1, 2, 3, 4}, 3},
      {"Insert below 0", {1, 2, 3}, [](Pk& p) { return p.Insert(-1, 0); }, 0, {1, 2, 3}, 2},
      {"Insert past the size", {1, 2, 3}, [](Pk& p) { return p.Insert(4, 0); }, 0, {1, 2, 3}, 2},
      {"Remove the last: emptied, shrunk", {1, 2, 3}, [](Pk& p) { return p.Remove(2, 1); }, 0, {1, 2}, 2},
      {"Remove at the size", {1, 2, 3}, [](Pk& p) { return p.Remove(3, 1); }, 0, {1, 2, 3}, 2},
      {"Remove without shrink 1", {1, 2, 3}, [](Pk& p) { return p.Remove(0, 0); }, 1, {2, 3, 3}, 2},
      {"k = 6-1-2-1 = 2 from 3", {1, 2, 3, 4, 5, 6}, [](Pk& p) { return p.Remove(1, 2, 1); }, 1, {1, 4, 5, 4}, 5},
      {"k = 0: nothing", {1, 2, 3, 4, 5, 6}, [](Pk& p) { return p.Remove(3, 2, 1); }, 0, {1, 2, 3, 4, 5, 6}, 5},
      {"negative i", {1, 2, 3}, [](Pk& p) { return p.Remove(-1, 1, 1); }, 0, {1, 2, 3}, 2},
      {"negative n", {1, 2, 3}, [](Pk& p) { return p.Remove(0, -1, 1); }, 0, {1, 2, 3}, 2},
      {"lowest i", {1, 2, 3}, [](Pk& p) { return p.Remove(INT_MIN, 0, 1); }, 0, {1, 2, 3}, 2},
      {"lowest n", {1, 2, 3}, [](Pk& p) { return p.Remove(0, INT_MIN, 1); }, 0, {1, 2, 3}, 2},
      {"highest i and n", {1, 2, 3}, [](Pk& p) { return p.Remove(INT_MAX, INT_MAX, 1); }, 0, {1, 2, 3}, 2},
      {"RemoveLeft: the last stays", {1, 2, 3, 4, 5, 6}, [](Pk& p) { return p.RemoveLeft(1, 1); }, 1,
       {2, 3, 4, 5, 5}, 5},
      {"RemoveRight: k is always -1", {1, 2, 3}, [](Pk& p) { return p.RemoveRight(1, 1); }, 0, {1, 2, 3}, 2},
      {"RemoveRight past the start", {1, 2, 3}, [](Pk& p) { return p.RemoveRight(100, 1); }, 0, {1, 2, 3}, 2},
      {"RemoveRight by the lowest n", {1, 2, 3}, [](Pk& p) { return p.RemoveRight(INT_MIN, 1); }, 0, {1, 2, 3}, 2},
      {"Swap", {7, 2, 7}, [](Pk& p) { return p.Swap(0, 1); }, 1, {2, 7, 7}, 2},
      {"Swap checks the array, not the size", {1, 2, 3}, [](Pk& p) { return p.Swap(0, 3); }, 1, {0, 2, 3}, 2},
      {"Swap below 0", {1, 2}, [](Pk& p) { return p.Swap(0, -1); }, 0, {1, 2}, 1},
      {"Swap outside the array", {1, 2}, [](Pk& p) { return p.Swap(0, 1 << 20); }, 0, {1, 2}, 1},
      {"Shift left empties the tail", {1, 2, 3, 4, 5}, [](Pk& p) { return p.Shift(1, 2); }, 1, {3, 4, 5, E, E}, 4},
      {"Shift left past the size", {1, 2, 3}, [](Pk& p) { return p.Shift(1, 7); }, 1, {E, E, E}, 2},
      {"Shift, other direction", {1, 2}, [](Pk& p) { return p.Shift(2, 1); }, 0, {1, 2}, 1},
      {"Shift by 0", {1, 2}, [](Pk& p) { return p.Shift(0, 0); }, 0, {1, 2}, 1},
      {"Shift of an empty packet", {}, [](Pk& p) { return p.Shift(0, 3); }, 0, {}, -1},
  });

  // A right shift reallocates (fields reset), start := old start + n.
  CPacket r = Make({1, 2, 3});
  r.SetStartIndex(1);
  r.SetRealPacketSize(3);
  r.SetValidStartIndex(0);
  EXPECT_EQ(r.Shift(0, 2), 1);
  EXPECT_EQ(Fields(r), (Ints{5, 1024, 3, -1, -1, -1, 2, 0}));
  EXPECT_EQ(Values(r), V({E, E, E, 2, 3}));  // old[1..2] land at 3..4
}

TEST(PacketCopy, CopiesTakeEveryFieldAndStayAppendable) {
  CPacket src = Make({1, 5, 3});
  src.SetStartIndex(1);
  src.SetValidStartIndex(0);
  src.SetValidEndIndex(2);
  src.SetShiftXSize(4);
  src.SetDayChangeSize(5);
  src.SetTurnUpDnReal(1);
  src.SetRealPacketSize(3);
  src.GetMaxIndex(0, 2);
  CPacket c(src);
  EXPECT_EQ(Values(c), V({1, 5, 3}));
  EXPECT_EQ(Fields(c), Fields(src));
  EXPECT_EQ(c.GetDayChangeSize(), 5);
  EXPECT_EQ(c.IsTurnUpDnReal(), 1);
  EXPECT_EQ(c.GetMaxPacketIndex(), 1);
  for (int i = 0; i < 2000; ++i) c.Add(i);  // appends trust the copied capacity
  EXPECT_EQ(c.GetValue(2002), 1999);

  CPacket moved(std::move(c));
  EXPECT_EQ(Fields(c), Fields(CPacket()));  // left as a new packet
  const CPacket& alias = moved;
  moved = alias;  // self-assignment keeps the data
  EXPECT_EQ(moved.GetValue(2002), 1999);

  CPacket target = Make({9});
  target = CPacket();  // copying an empty packet leaves the target cleared
  EXPECT_EQ(target.GetPacketSize(), 0);
  EXPECT_EQ(target.CopyPacket(nullptr), 0);

  // Copy allocates n values while the capacity stays at the clear's 1024.
  V many(2001);
  std::iota(many.begin(), many.end(), 0.0);
  CPacket big;
  big.Copy(many.data(), 2000);
  EXPECT_EQ(Fields(big), (Ints{2000, 1024, 0, 1999, 0, 1999, 0, 0}));
  big.Add(2000);
  EXPECT_EQ(big.GetMaxPacketSize(), 2048);
  EXPECT_EQ(Values(big), many);
  big.Copy(big.GetPacket() + 1, 2000);  // a source inside its own array
  EXPECT_EQ(Values(big), V(many.begin() + 1, many.end()));
  big.Copy(nullptr, 3);
  EXPECT_EQ(big.GetPacketSize(), 0);
}

TEST(PacketCopy, AccumAndRangeCopiesOfASource) {
  CPacket src = Make({1, 2, 3});
  src.SetRealPacketSize(3);
  CPacket acc;
  EXPECT_EQ(acc.AccumPacket(&src), 1);  // running sum excluding the element
  EXPECT_EQ(Values(acc), V({0, 1, 3}));
  EXPECT_EQ(acc.GetRealPacketSize(), 3);  // every field from the source
  EXPECT_EQ(acc.AccumPacket(&acc), 1);
  EXPECT_EQ(Values(acc), V({0, 0, 1}));
  EXPECT_EQ(acc.AccumPacket(nullptr), 0);
  EXPECT_EQ(acc.GetPacketSize(), 0);

  CPacket slice;
  src.SetShiftXSize(2);
  EXPECT_EQ(slice.CopyPacket(&src, 1, 2), 1);
  EXPECT_EQ(Values(slice), V({2, 3}));
  // Start 0, end count-1 and src's shift-x; the real size is not taken.
  EXPECT_EQ(Fields(slice), (Ints{2, 1024, 0, 1, -1, -1, 2, 0}));
  EXPECT_EQ(slice.CopyPacket(&src, 0, 3), 0);  // beyond the source's end
  EXPECT_EQ(slice.GetPacketSize(), 0);
  src.SetStartIndex(1);
  EXPECT_EQ(slice.CopyPacket(&src, 0, 1), 0);  // before the source's start
  EXPECT_EQ(slice.CopyPacket(&src, 2, 1), 1);  // reversed range: no bars
  EXPECT_EQ(slice.GetPacketSize(), 0);
}

TEST(PacketUnary, NotAndMoveAlongX) {
  EXPECT_EQ(Values(!Make({0, 5, E})), V({1, 0, 0}));  // empty is not zero
  CPacket q = Make({0, 0, 5});
  q.SetStartIndex(1);
  const CPacket nq = !q;
  EXPECT_EQ(Values(nq), V({E, 1, 0}));
  EXPECT_EQ(nq.GetStartIndex(), 1);
  EXPECT_EQ((!CPacket()).GetPacketSize(), 0);

  // Only a shift < 0 sets shift-x (the shift) and the end (size-shift+1).
  const CPacket s = Make({1, 2, 3, 4});
  const struct { int shift; V values; Ints fields; } cases[] = {{2, {E, E, 1, 2}, {4, 1024, 2, -1, -1, -1, 0, 0}},
                                                                {-1, {2, 3, 4, E}, {4, 1024, 0, 6, -1, -1, -1, 0}},
                                                                {5, {E, E, E, E}, {4, 1024, 0, -1, -1, -1, 0, 0}}};
  for (const auto& c : cases) {
    EXPECT_EQ(Values(s(c.shift)), c.values) << c.shift;
    EXPECT_EQ(Fields(s(c.shift)), c.fields) << c.shift;
  }
  EXPECT_EQ(CPacket()(1).GetPacketSize(), 0);
}
