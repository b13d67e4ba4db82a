// CPacket: construction, allocation, growth, element access, appends and the
// deliberate rearranging rules.
#include "chartcore/packets/packet.h"

#include <cmath>
#include <vector>

#include <gtest/gtest.h>

#include "packets/packet_test_util.h"

using packets_test::Bits;
using packets_test::E;
using packets_test::kNoMax;
using packets_test::Make;
using packets_test::Values;
using V = std::vector<double>;

TEST(PacketTypes, MarkerValuesHaveTheirExactBits) {
  EXPECT_EQ(Bits(E), 0x7FEFFFFFFFFFFFFFull);
  EXPECT_EQ(Bits(kNoMax), 0xC6293E5940000000ull);  // -1e30f widened, not -1e30
  EXPECT_NE(kNoMax, -1e30);
  EXPECT_FALSE(chartcore::IsEmptyValue(std::nan("")));
  tagPacketCoreData basic;
  EXPECT_EQ(basic.m_dClose, E);
  EXPECT_EQ(basic.m_dRatio, 1.0);  // an unadjusted bar
  tagPacketCoreDataExtra extra;
  EXPECT_EQ(extra.m_dRatio, E);
  EXPECT_EQ(extra.m_dExtra2, E);
}

TEST(PacketConstruction, FreshAndSizedPacketsStartWithTheirIndexFields) {
  CPacket p;
  EXPECT_EQ(p.GetPacketSize(), 0);
  EXPECT_EQ(p.GetMaxPacketSize(), 0);
  EXPECT_EQ(p.GetStartIndex(), 0);
  EXPECT_EQ(p.GetEndIndex(), -1);
  EXPECT_EQ(p.GetValidStartIndex(), -1);
  EXPECT_EQ(p.GetValidEndIndex(), -1);
  EXPECT_EQ(Bits(p.GetMaxPacketValue()), Bits(kNoMax));
  EXPECT_EQ(p.GetMinPacketValue(), E);
  EXPECT_EQ(p.GetPacket(), nullptr);

  CPacket filled(10, 1);  // one block, all empty, nothing written yet
  EXPECT_EQ(filled.GetPacketSize(), 10);
  EXPECT_EQ(filled.GetMaxPacketSize(), 1024);
  EXPECT_EQ(Values(filled), V(10, E));

  CPacket unfilled(3, 0);  // never-written slots read 0.0
  EXPECT_EQ(Values(unfilled), V(3, 0.0));

  CPacket one(2.5);  // a number as a series: size 1, capacity 1, real size 0
  EXPECT_EQ(one.GetPacketSize(), 1);
  EXPECT_EQ(one.GetMaxPacketSize(), 1);
  EXPECT_EQ(one.GetRealPacketSize(), 0);
  EXPECT_EQ(one.GetValue(0), 2.5);

  CPacket none(0, 1);
  EXPECT_EQ(none.GetPacketSize(), 0);
  EXPECT_EQ(none.GetMaxPacketSize(), 0);
}

TEST(PacketConstruction, AssignedNumberIsUnreadableUntilSizedAndAppendsStayInside) {
  CPacket p = Make({1, 2, 3});
  p = 2.5;
  EXPECT_EQ(p.GetPacketSize(), 0);      // deliberately left at 0
  EXPECT_EQ(p.GetValue(0), E);
  EXPECT_EQ(p.GetMaxPacketSize(), 1);
  p.SetPacketSize(1);
  EXPECT_EQ(p.GetValue(0), 2.5);
  // Capacity 1 with block count 1: every append up to 1024 "fits", so the
  // recorded capacity stays 1 while the values land in grown storage.
  for (int i = 1; i < 10; ++i) EXPECT_EQ(p.Add(i * 10.0), i + 1);
  EXPECT_EQ(p.GetMaxPacketSize(), 1);
  EXPECT_EQ(p.GetValue(0), 2.5);
  EXPECT_EQ(p.GetValue(9), 90.0);
}

TEST(PacketAlloc, ClearResetsAllButValidEndAndShiftX) {
  CPacket p = Make({4, 9, 1});
  p.SetValidStartIndex(0);
  p.SetValidEndIndex(7);
  p.SetShiftXSize(3);
  p.SetRealPacketSize(5);
  p.SetDayChangeSize(2);
  p.SetTurnUpDnReal(1);
  p.SetStartIndex(1);
  p.GetMaxIndex(0, 2);
  p.GetMinIndex(0, 2);
  ASSERT_EQ(p.GetMaxPacketIndex(), 1);
  p.ClearPacket();
  EXPECT_EQ(p.GetPacket(), nullptr);
  EXPECT_EQ(p.GetPacketSize(), 0);
  EXPECT_EQ(p.GetMaxPacketSize(), 1024);  // a clear reports one block
  EXPECT_EQ(p.GetStartIndex(), 0);
  EXPECT_EQ(p.GetEndIndex(), -1);
  EXPECT_EQ(p.GetValidStartIndex(), -1);
  EXPECT_EQ(p.GetValidEndIndex(), 7);  // kept
  EXPECT_EQ(p.GetShiftXSize(), 3);     // kept
  EXPECT_EQ(p.GetRealPacketSize(), 0);
  EXPECT_EQ(p.GetDayChangeSize(), 0);
  EXPECT_EQ(p.IsTurnUpDnReal(), 0);
  EXPECT_EQ(p.GetMaxPacketIndex(), -1);
  EXPECT_EQ(p.GetMinPacketIndex(), -1);
  EXPECT_EQ(Bits(p.GetMaxPacketValue()), Bits(kNoMax));

  p.InitPacket();  // the full reset
  EXPECT_EQ(p.GetValidEndIndex(), -1);
  EXPECT_EQ(p.GetShiftXSize(), 0);
  EXPECT_EQ(p.GetMaxPacketSize(), 0);

  CPacket q = Make({1, 2});
  q.SetValidEndIndex(1);
  q.ResetPacket();  // clear, then a zero-length array ready for appends
  EXPECT_NE(q.GetPacket(), nullptr);
  EXPECT_EQ(q.GetMaxPacketSize(), 0);
  EXPECT_EQ(q.GetValidEndIndex(), -1);
  EXPECT_EQ(q.Add(5), 1);
  EXPECT_EQ(q.GetMaxPacketSize(), 1024);

  CPacket r = Make({1, 2, 3});
  r.AllocPacket(3);  // same size: nothing happens
  EXPECT_EQ(Values(r), V({1, 2, 3}));
  r.DeletePacket();  // array gone, fields kept
  EXPECT_EQ(r.GetPacketSize(), 3);
  EXPECT_EQ(r.GetValue(0), E);
  EXPECT_EQ(r.Add(9), 4);  // the append rebuilds storage; older bars read empty
  EXPECT_EQ(Values(r), V({E, E, E, 9}));
}

TEST(PacketGrowth, CapacityMovesInBlocksAndKeepsEveryElement) {
  CPacket p;
  EXPECT_EQ(p.Add(0), 1);
  EXPECT_EQ(p.GetMaxPacketSize(), 1024);  // empty to one element: one block
  for (int i = 1; i < 1024; ++i) p.Add(i);
  EXPECT_EQ(p.GetPacketSize(), 1024);
  EXPECT_EQ(p.GetMaxPacketSize(), 1024);  // index 1023 written without growing
  p.Add(1024);
  EXPECT_EQ(p.GetMaxPacketSize(), 2048);
  EXPECT_EQ(p.GetEndIndex(), 1024);
  for (int i = 1025; i < 5000; ++i) p.Add(i);
  EXPECT_EQ(p.GetMaxPacketSize(), 5120);  // ceil(5000 / 1024) = 5 blocks
  bool all_kept = true;
  for (int i = 0; i < 5000; ++i) all_kept = all_kept && p.GetValue(i) == i;
  EXPECT_TRUE(all_kept);

  CPacket full(1024, 1);
  full.Add(7);
  EXPECT_EQ(full.GetMaxPacketSize(), 2048);
  EXPECT_EQ(full.GetValue(1024), 7);
  EXPECT_EQ(full.GetValue(1023), E);

  CPacket c;
  EXPECT_EQ(c.CheckPacketBoundary(0), 1);  // 0 blocks, as many as it has
  EXPECT_EQ(c.GetMaxPacketSize(), 0);
  EXPECT_EQ(c.CheckPacketBoundary(1), 0);  // needs a block: stores it
  EXPECT_EQ(c.GetMaxPacketSize(), 1024);
  EXPECT_EQ(c.CheckPacketBoundary(1), 1);  // empty, but same block count
  EXPECT_EQ(c.CheckPacketBoundary(2049), 0);
  EXPECT_EQ(c.GetMaxPacketSize(), 3072);
  EXPECT_EQ(c.CheckBoundaryRange(0), 0);  // plain index test against size 0
}

TEST(PacketAlloc, ReAllocKeepsGrowsOrCutsToWhatFits) {
  CPacket p = Make({1, 2, 3, 4, 5});
  p.ReAllocPacket(3000, 1);
  EXPECT_EQ(p.GetPacketSize(), 5);        // no field changes
  EXPECT_EQ(p.GetMaxPacketSize(), 1024);
  EXPECT_EQ(Values(p), V({1, 2, 3, 4, 5}));
  p.ReAllocPacket(2, 1);  // fewer than the size: only what fits survives
  EXPECT_EQ(p.GetPacketSize(), 2);
  EXPECT_EQ(p.GetEndIndex(), 1);
  EXPECT_EQ(Values(p), V({1, 2}));
  EXPECT_EQ(p.Add(3), 3);
  p.ReAllocPacket(10, 0);  // without keep: a fresh AllocPacket
  EXPECT_EQ(p.GetPacketSize(), 10);
  EXPECT_EQ(p.GetValue(0), 0.0);
  p.ReAllocPacket(0, 1);
  EXPECT_EQ(p.GetPacketSize(), 0);
  EXPECT_EQ(p.GetMaxPacketSize(), 1024);
}

TEST(PacketElements, ReadsAndWritesHonourTheRange) {
  CPacket p = Make({1, 2, 3});
  EXPECT_EQ(p.GetValue(-1), E);
  EXPECT_EQ(p.GetValue(3), E);
  EXPECT_EQ(p.SetValue(3, 9), 0);
  EXPECT_EQ(p.SetValue(1, 9), 1);
  EXPECT_EQ(p.UpdateAdd(1, 1), 1);
  EXPECT_EQ(p.GetValue(1), 10);
  EXPECT_EQ(p.Update(7), 1);
  EXPECT_EQ(p.SetLastPrevValue(8), 1);  // the twin of SetLastValue
  EXPECT_EQ(Values(p), V({1, 10, 8}));
  EXPECT_EQ(p.UpdatePrev(5), 1);
  EXPECT_EQ(p.UpdateAdd(0.5), 1);
  EXPECT_EQ(Values(p), V({1, 5, 8.5}));
  EXPECT_EQ(p.GetLastPrevValue(), 5);
  EXPECT_EQ(p.GetLastPrePrevValue(), 1);
  EXPECT_EQ(p.GetLastFromIndexValue(1), 8.5);
  EXPECT_EQ(p.GetLastFromIndexValue(3), 1);
  EXPECT_EQ(p.GetLastFromIndexValue(0), E);   // slot after the last
  EXPECT_EQ(p.GetLastFromIndexValue(-2147483647 - 1), E);
  EXPECT_EQ(p.GetReverseValue(0), 8.5);
  EXPECT_EQ(p.GetReverseValue(3), E);

  CPacket one = Make({4});
  EXPECT_EQ(one.GetLastPrevValue(), E);  // too short: empty, no read before 0
  EXPECT_EQ(one.GetLastPrePrevValue(), E);
  EXPECT_EQ(one.UpdatePrev(1), 0);

  // UpdateSum is not checked against the size: the slot after the last is
  // written, and AccumAdd then adds to that slot's content.
  EXPECT_EQ(p.UpdateSum(4, 3), 1);
  p.AccumAdd(1);
  EXPECT_EQ(p.GetValue(3), 5);
  EXPECT_EQ(p.UpdateSum(2, -1), 1);
  EXPECT_EQ(p.GetValue(3), 7);
  EXPECT_EQ(p.UpdateSum(1, 1 << 20), 0);  // outside the array: refused

  CPacket empty;
  EXPECT_EQ(empty.SetLastValue(1), 0);
  EXPECT_EQ(empty.UpdateAll(1), 0);
  EXPECT_EQ(empty.UpdateSum(1, 0), 0);
  EXPECT_EQ(empty.UpdateLastAvail(1), 0);

  CPacket q = Make({1, E, 3, E});
  EXPECT_EQ(q.UpdateLastAvail(30), 1);  // index 2, the last non-empty
  EXPECT_EQ(Values(q), V({1, E, 30, E}));
  EXPECT_EQ(q.UpdateAll(6), 1);
  EXPECT_EQ(Values(q), V(4, 6));
}

TEST(PacketElements, OutOfRangeReferenceNeverAliasesAnElement) {
  CPacket p = Make({1, 2, 3});
  p.SetStartIndex(1);
  double& below = p[0];  // below the start index counts as out of range
  EXPECT_EQ(below, E);
  below = 42;
  EXPECT_EQ(p.GetValue(0), 1);
  EXPECT_EQ(p[0], E);  // handed out fresh each time
  EXPECT_EQ(p[3], E);
  p[1] = 20;
  EXPECT_EQ(p.GetValue(1), 20);
  const CPacket& c = p;
  EXPECT_EQ(c[0], E);
  EXPECT_EQ(c[2], 3);
  EXPECT_EQ(&*p, &p);
}

TEST(PacketAppend, VariantsWriteAtTheOldSize) {
  CPacket p;
  p.AddLast();  // empty packet: appends the empty value
  EXPECT_EQ(Values(p), V({E}));
  EXPECT_EQ(p.AddSameLast(), 2);
  CPacket acc;
  acc.AccumAdd(5);  // a never-written slot holds 0.0
  EXPECT_EQ(Values(acc), V({5}));
  EXPECT_EQ(acc.GetEndIndex(), 0);

  CPacket first;
  EXPECT_EQ(first.AddLastAvail(7), 1);  // nothing available: end+1 = 0
  EXPECT_EQ(Values(first), V({7}));

  CPacket gap = Make({1, 2, E, E});
  EXPECT_EQ(gap.AddLastAvail(9), 5);  // 9 follows the 2; the new bar is empty
  EXPECT_EQ(Values(gap), V({1, 2, 9, E, E}));
  EXPECT_EQ(gap.GetEndIndex(), 4);

  CPacket tight = Make({1, 2, 3});
  EXPECT_EQ(tight.AddLastAvail(9), 4);  // last is available: 9 lands after it
  EXPECT_EQ(Values(tight), V({1, 2, 3, 9}));

  CPacket blank = Make({E, E});
  blank.AddLastAvail(4);
  EXPECT_EQ(Values(blank), V({E, E, 4}));
}

TEST(PacketRolling, FixedWindowModes) {
  CPacket p = Make({1, 2, 3, 4});
  EXPECT_EQ(p.AddShift(5, 1), 4);  // drop first
  EXPECT_EQ(Values(p), V({2, 3, 4, 5}));
  EXPECT_EQ(p.AddShift(6, 0), 4);  // 0..size-3 move right, element 0 stays
  EXPECT_EQ(Values(p), V({2, 2, 3, 6}));
  EXPECT_EQ(p.AddShift(7, 9), 4);  // other: overwrite last
  EXPECT_EQ(Values(p), V({2, 2, 3, 7}));
  CPacket empty;
  EXPECT_EQ(empty.AddShift(1, 1), -1);
  EXPECT_EQ(empty.AddShiftSameLast(), -1);

  CPacket q = Make({1, 2, 3});
  q.AddShiftLast(1);
  EXPECT_EQ(Values(q), V({2, 3, 3}));
  CPacket r = Make({1, 2, 3});
  EXPECT_EQ(r.AddShiftSameLast(), 4);  // grows by one, then rolls left
  EXPECT_EQ(Values(r), V({2, 3, 3, 3}));

  // Insert after the last available value, then roll: the size stays grown.
  CPacket s = Make({1, 2, 3});
  s.AddShiftLastAvail(9, 1);  // the read past the end gives the empty value
  EXPECT_EQ(Values(s), V({2, 3, 9, E}));
  CPacket t = Make({1, 2, E});
  t.AddShiftLastAvail(9, 0);  // Insert(2, 9) moves nothing, then right-roll
  EXPECT_EQ(Values(t), V({1, 1, 2, 9}));
  CPacket u = Make({E, E});
  u.AddShiftLastAvail(9, 1);  // nothing available: nothing happens
  EXPECT_EQ(Values(u), V({E, E}));
}

TEST(PacketInsertRemove, DeliberateMoveCounts) {
  CPacket p = Make({1, 2, 3});
  EXPECT_EQ(p.Insert(1, 9), 1);  // moves size-1-i = 1 element: 3 is lost
  EXPECT_EQ(p.GetPacketSize(), 4);
  EXPECT_EQ(p.GetEndIndex(), 3);
  EXPECT_EQ(p.GetValue(0), 1);
  EXPECT_EQ(p.GetValue(1), 9);
  EXPECT_EQ(p.GetValue(2), 2);
  EXPECT_NE(p.GetValue(3), 3);  // the new last slot is not written
  CPacket a = Make({1, 2, 3});
  EXPECT_EQ(a.Insert(3, 4), 1);  // at the size: an append
  EXPECT_EQ(Values(a), V({1, 2, 3, 4}));
  EXPECT_EQ(a.Insert(-1, 0), 0);
  EXPECT_EQ(a.Insert(6, 0), 0);
  EXPECT_EQ(a.GetPacketSize(), 4);

  CPacket r = Make({1, 2, 3});
  EXPECT_EQ(r.Remove(2, 1), 0);  // last index: emptied, shrunk, result 0
  EXPECT_EQ(Values(r), V({1, 2}));
  EXPECT_EQ(r.Remove(5, 1), 0);  // out of range: no data lost
  EXPECT_EQ(r.GetPacketSize(), 2);
  CPacket r2 = Make({1, 2, 3});
  EXPECT_EQ(r2.Remove(0, 0), 1);  // moved, but shrink is not 1
  EXPECT_EQ(Values(r2), V({2, 3, 3}));

  CPacket m = Make({1, 2, 3, 4, 5, 6});
  EXPECT_EQ(m.Remove(1, 2, 1), 1);  // k = 6-1-2-1 = 2 elements from index 3
  EXPECT_EQ(Values(m), V({1, 4, 5, 4}));
  CPacket m2 = Make({1, 2, 3, 4, 5, 6});
  EXPECT_EQ(m2.Remove(3, 2, 1), 0);  // k = 0: nothing
  EXPECT_EQ(m2.Remove(-1, 2, 1), 0);
  EXPECT_EQ(m2.Remove(1, -2, 1), 0);
  EXPECT_EQ(m2.RemoveLeft(1, 1), 1);  // k = 4: the old last (6) is not moved
  EXPECT_EQ(Values(m2), V({2, 3, 4, 5, 5}));
  EXPECT_EQ(m2.RemoveRight(1, 1), 0);  // k is always -1
  EXPECT_EQ(m2.RemoveRight(100, 1), 0);
  EXPECT_EQ(m2.GetPacketSize(), 5);

  CPacket x = Make({1, 2, 1});
  EXPECT_EQ(x.Replace(1, 7), 1);
  EXPECT_EQ(x.Replace(7, 7), 0);
  EXPECT_EQ(Values(x), V({7, 2, 7}));
  EXPECT_EQ(x.Swap(0, 1), 1);
  EXPECT_EQ(Values(x), V({2, 7, 7}));
  EXPECT_EQ(x.Swap(0, -1), 0);
  EXPECT_EQ(x.Swap(0, 1 << 20), 0);

  CPacket v = Make({1, E});
  EXPECT_EQ(v.VShift(1.0), 1);  // the empty value absorbs a small shift
  EXPECT_EQ(Values(v), V({2, E}));
  EXPECT_EQ(v.VShift(0.0), 0);
}

TEST(PacketShift, LeftEmptiesTheTailAndRightReallocates) {
  CPacket p = Make({1, 2, 3, 4, 5});
  EXPECT_EQ(p.Shift(1, 2), 1);
  EXPECT_EQ(Values(p), V({3, 4, 5, E, E}));
  CPacket q = Make({1, 2, 3});
  EXPECT_EQ(q.Shift(1, 7), 1);  // beyond the size: all empty, no read past it
  EXPECT_EQ(Values(q), V({E, E, E}));

  CPacket r = Make({1, 2, 3});
  r.SetStartIndex(1);
  r.SetRealPacketSize(3);
  r.SetValidStartIndex(0);
  EXPECT_EQ(r.Shift(0, 2), 1);
  EXPECT_EQ(r.GetStartIndex(), 3);  // old start + n
  EXPECT_EQ(r.GetShiftXSize(), 2);
  EXPECT_EQ(r.GetRealPacketSize(), 0);  // fresh allocation resets fields
  EXPECT_EQ(r.GetEndIndex(), -1);
  EXPECT_EQ(r.GetValidStartIndex(), -1);
  EXPECT_EQ(Values(r), V({E, E, E, 2, 3}));  // old[1..2] land at 3..4

  EXPECT_EQ(r.Shift(2, 1), 0);
  EXPECT_EQ(r.Shift(0, 0), 0);
  CPacket empty;
  EXPECT_EQ(empty.Shift(0, 3), 0);
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
  EXPECT_EQ(c.GetStartIndex(), 1);
  EXPECT_EQ(c.GetEndIndex(), 2);
  EXPECT_EQ(c.GetValidEndIndex(), 2);
  EXPECT_EQ(c.GetShiftXSize(), 4);
  EXPECT_EQ(c.GetDayChangeSize(), 5);
  EXPECT_EQ(c.IsTurnUpDnReal(), 1);
  EXPECT_EQ(c.GetRealPacketSize(), 3);
  EXPECT_EQ(c.GetMaxPacketIndex(), 1);
  EXPECT_EQ(c.GetMaxPacketSize(), 1024);
  for (int i = 0; i < 2000; ++i) c.Add(i);  // appends trust the copied capacity
  EXPECT_EQ(c.GetValue(2002), 1999);

  CPacket moved(std::move(c));
  EXPECT_EQ(moved.GetPacketSize(), 2003);
  EXPECT_EQ(c.GetPacketSize(), 0);  // left as a new packet
  c = moved;
  EXPECT_EQ(c.GetValue(2002), 1999);
  const CPacket& alias = c;
  c = alias;  // self-assignment keeps the data
  EXPECT_EQ(c.GetPacketSize(), 2003);

  CPacket target = Make({9});
  target = CPacket();  // copying an empty packet leaves the target cleared
  EXPECT_EQ(target.GetPacketSize(), 0);
  EXPECT_EQ(target.CopyPacket(nullptr), 0);
  EXPECT_EQ(target.CopyPacket(CPacket()), 0);

  // Copy allocates n values while the capacity stays at the clear's 1024.
  std::vector<double> many(2000);
  for (int i = 0; i < 2000; ++i) many[static_cast<std::size_t>(i)] = i;
  CPacket big;
  big.Copy(many.data(), 2000);
  EXPECT_EQ(big.GetMaxPacketSize(), 1024);
  EXPECT_EQ(big.GetValidEndIndex(), 1999);
  big.Add(2000);
  EXPECT_EQ(big.GetMaxPacketSize(), 2048);
  EXPECT_EQ(big.GetValue(1999), 1999);
  EXPECT_EQ(big.GetValue(2000), 2000);
  big.Copy(nullptr, 3);
  EXPECT_EQ(big.GetPacketSize(), 0);
}

TEST(PacketCopy, AccumAndRangeCopies) {
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

  CPacket part;
  src.SetShiftXSize(2);
  EXPECT_EQ(part.CopyPacket(&src, 1, 2), 1);
  EXPECT_EQ(Values(part), V({2, 3}));
  EXPECT_EQ(part.GetEndIndex(), 1);
  EXPECT_EQ(part.GetShiftXSize(), 2);
  EXPECT_EQ(part.GetRealPacketSize(), 0);  // not taken by a range copy
  EXPECT_EQ(part.CopyPacket(&src, 0, 3), 0);  // beyond the source's end
  EXPECT_EQ(part.GetPacketSize(), 0);
  src.SetStartIndex(1);
  EXPECT_EQ(part.CopyPacket(&src, 0, 1), 0);  // before the source's start
  EXPECT_EQ(part.CopyPacket(&src, 2, 1), 1);  // reversed range: no bars
  EXPECT_EQ(part.GetPacketSize(), 0);
}

TEST(PacketUnary, NotAndMoveAlongX) {
  CPacket p = Make({0, 5, E});
  CPacket n = !p;
  EXPECT_EQ(Values(n), V({1, 0, 0}));  // empty is not zero
  CPacket q = Make({0, 0, 5});
  q.SetStartIndex(1);
  CPacket nq = !q;
  EXPECT_EQ(Values(nq), V({E, 1, 0}));
  EXPECT_EQ(nq.GetStartIndex(), 1);
  EXPECT_EQ((!CPacket()).GetPacketSize(), 0);

  CPacket s = Make({1, 2, 3, 4});
  CPacket right = s(2);
  EXPECT_EQ(Values(right), V({E, E, 1, 2}));
  EXPECT_EQ(right.GetStartIndex(), 2);
  EXPECT_EQ(right.GetEndIndex(), -1);  // shift >= 0 leaves end and shift-x
  EXPECT_EQ(right.GetShiftXSize(), 0);
  CPacket left = s(-1);
  EXPECT_EQ(Values(left), V({2, 3, 4, E}));
  EXPECT_EQ(left.GetShiftXSize(), -1);
  EXPECT_EQ(left.GetEndIndex(), 6);  // size - shift + 1
  CPacket gone = s(5);
  EXPECT_EQ(Values(gone), V(4, E));
  EXPECT_EQ(gone.GetStartIndex(), 0);
  EXPECT_EQ(CPacket()(1).GetPacketSize(), 0);
}
