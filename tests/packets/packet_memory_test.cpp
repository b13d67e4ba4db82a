// CPacketMemory: layouts and their columns, records, per-column queries and
// caches, whole-packet operations and arithmetic. The single-column accessors
// it shares with CPacket are held to CPacket's rules in packet_test.cpp.
#include "chartcore/packets/packet_memory.h"

#include <climits>
#include <vector>

#include <gtest/gtest.h>

#include "packets/packet_test_util.h"

using namespace packets_test;
using Bar = tagPacketCoreData;
using Mem = CPacketMemory;

namespace {

// Column t of every bar, as GetValue reads it.
V Column(const CPacketMemory& m, ENPacketDataType t) {
  V out;
  for (int i = 0; i < m.GetPacketSize(); ++i) out.push_back(m.GetValue(i, t));
  return out;
}

// A record's columns in column order, so a whole bar compares at once.
V Row(const Bar& r) { return {r.m_dDate, r.m_dOpen, r.m_dHigh, r.m_dLow, r.m_dClose, r.m_dVolume, r.m_dRatio}; }
V Row(const tagPacketCoreDataExtra& r) {
  return {r.m_dDate, r.m_dOpen, r.m_dHigh, r.m_dLow, r.m_dClose, r.m_dVolume, r.m_dRatio, r.m_dExtra1, r.m_dExtra2};
}

// The bar dated d: open..close d*10+1..d*10+4, volume d*100, ratio 1.0.
Bar At(double d) { return {d, d * 10 + 1, d * 10 + 2, d * 10 + 3, d * 10 + 4, d * 100}; }

// A packet of the bars dated 1..n.
CPacketMemory Bars(int n, ENPacketStructType layout = PST_OHLCV_RATIO) {
  CPacketMemory m;
  m.SetPacketStructType(layout);
  for (int i = 1; i <= n; ++i) m.AddBasic(At(i));
  return m;
}

// Column t's cache set: max index, max value, min index, min value.
V Cached(const CPacketMemory& m, ENPacketDataType t, int set) {
  return {double(m.GetMaxPacketIndex(t, set)), m.GetMaxPacketValue(t, set), double(m.GetMinPacketIndex(t, set)),
          m.GetMinPacketValue(t, set)};
}

}  // namespace

TEST(PacketMemoryConstruction, ConstructorsAndTheirColumns) {
  EXPECT_EQ(Row(Bar()), V({E, E, E, E, E, E, 1.0}));  // an unadjusted bar
  EXPECT_EQ(Row(tagPacketCoreDataExtra()), V(9, E));
  EXPECT_EQ(CPacketMemory(10, 1).GetColumnCount(), 1);  // only the close column
  CPacketMemory number(2.5);  // capacity 1, nothing stored
  EXPECT_EQ(Fields(number), (Ints{0, 1, 0, -1, -1, -1, 0, 0}));
  EXPECT_EQ(number.GetColumnCount(), 0);
  number.ClearPacket();  // size 0: every field stays
  EXPECT_EQ(number.GetMaxPacketSize(), 1);

  CPacketMemory open(PDT_OPEN, 3.0);  // one element, size 0: owned and freed
  open.SetPacketSize(1);
  EXPECT_EQ(open.GetValue(0, PDT_OPEN), 3.0);
  EXPECT_EQ(open.GetValue(0, POT_OPEN), 3.0);  // the other column names alias
  EXPECT_EQ(open.GetPacket(PIT_OPEN), open.GetPacket(PDT_OPEN));
  EXPECT_EQ(CPacketMemory(static_cast<ENPacketDataType>(12), 1.0).GetColumnCount(), 0);

  CPacketMemory bars = Bars(3);
  bars.ClearPacket();  // frees the columns but keeps the layout
  EXPECT_EQ(bars.GetColumnCursor(), -1);
  EXPECT_EQ(bars.GetPacket(PDT_DATE), nullptr);
  EXPECT_EQ(bars.GetPacketStructType(), PST_OHLCV_RATIO);
}

TEST(PacketMemoryLayout, EachLayoutAllocatesItsColumnsOnly) {
  const unsigned expected[] = {0x10, 0x11, 0x31, 0x1F, 0x3F, 0x7F, 0x1FF, 0x0};
  for (int layout = 0; layout <= 7; ++layout) {
    const auto type = static_cast<ENPacketStructType>(layout);
    CPacketMemory m = Bars(0, type);
    m.AllocPacket(3);
    unsigned got = 0, listed = 0;
    for (int t = 0; t < 9; ++t) {
      if (m.GetPacket(static_cast<ENPacketDataType>(t)) != nullptr) got |= 1u << t;
      listed |= static_cast<unsigned>(CPacketMemory::IsLayoutColumn(type, static_cast<ENPacketDataType>(t))) << t;
    }
    EXPECT_EQ(got, expected[layout]) << "layout " << layout;
    EXPECT_EQ(listed, expected[layout]) << "layout " << layout;
  }
  const CPacketMemory none = Bars(1, static_cast<ENPacketStructType>(42));  // bars counted, nothing stored
  EXPECT_EQ(none.GetPacketSize(), 1);
  EXPECT_EQ(Row(none.GetBasic(0)), Row(Bar()));

  CPacketMemory dv = Bars(2, PST_DATE_VALUE);
  EXPECT_EQ(Row(dv.GetBasic(1)), V({2, E, E, E, 24, E, 1.0}));  // the others keep their default
  EXPECT_EQ(Row(dv.GetBasic(2)), Row(Bar()));                      // out of range
  EXPECT_EQ(dv.AddDateValue(3, 9), 3);
  EXPECT_EQ(Column(dv, PDT_CLOSE), V({14, 24, 9}));
  // A wider layout allocates on the next growth; the new column is empty before.
  dv.SetPacketStructType(PST_OHLCV);
  EXPECT_EQ(dv.GetPacket(PDT_OPEN), nullptr);
  dv.AddBasic(At(4));
  EXPECT_EQ(Column(dv, PDT_OPEN), V({E, E, E, 41}));
  EXPECT_EQ(Column(dv, PDT_DATE), V({1, 2, 3, 4}));

  CPacketMemory reset = Bars(2);
  reset.SetValidEndIndex(1);
  reset.ResetPacket(PST_OHLC);
  EXPECT_EQ(Fields(reset), Fields(CPacketMemory()));
  EXPECT_EQ(reset.GetColumnCount(), 0);
  EXPECT_EQ(reset.GetPacketStructType(), PST_OHLC);
}

TEST(PacketMemoryRecords, AppendGrowsEveryColumnAcrossBlocks) {
  const CPacketMemory m = Bars(2000);
  EXPECT_EQ(Fields(m), (Ints{2000, 2048, 0, 1999, -1, -1, 0, 0}));
  EXPECT_EQ(m.GetColumnCursor(), 7);
  bool kept = true;
  for (int i = 0; i < 2000; ++i) kept = kept && Row(m.GetBasic(i)) == Row(At(i + 1));
  EXPECT_TRUE(kept);
  EXPECT_EQ(m.GetPacket(PDT_EXTRA1), nullptr);

  CPacketMemory full = Bars(0, PST_FULL);
  full.AddExtra({E, E, E, E, E, E, E, 7});
  EXPECT_EQ(full.GetColumnCursor(), 9);
  full.AddBasic(At(2));  // a basic record leaves the new bar's extras empty
  EXPECT_EQ(Column(full, PDT_EXTRA1), V({7, E}));

  CPacketMemory last = Bars(1);
  EXPECT_EQ(last.AddLastBasic(), 2);
  EXPECT_EQ(Row(last.GetLastBasic()), Row(At(1)));
  CPacketMemory empty = Bars(0);
  empty.AddLastBasic();  // empty: a default record, ratio 1.0
  EXPECT_EQ(Row(empty.GetFirstBasic()), Row(Bar()));
}

TEST(PacketMemoryRecords, UpdatesAndSumsTouchOnlyWhatTheyName) {
  CPacketMemory m = Bars(0, PST_FULL);
  const tagPacketCoreDataExtra x{E, E, E, E, E, E, E, 70};
  m.AddExtra(x);
  m.AddExtra(x);
  EXPECT_EQ(m.UpdateBasicExcept(-1, At(9), PDT_CLOSE), 1);  // close excepted, the ratio written, extras kept
  EXPECT_EQ(Row(m.GetLastExtra()), V({9, 91, 92, 93, E, 900, 1.0, 70, E}));
  EXPECT_EQ(Row(m.GetFirstExtra()), V({E, E, E, E, E, E, E, 70, E}));
  EXPECT_EQ(m.UpdateBasicExcept(2, At(1), PDT_DATE), 0);
  EXPECT_EQ(CPacketMemory().UpdateBasicExcept(-1, At(1), PDT_DATE), 0);

  CPacketMemory b = Bars(3);
  EXPECT_EQ(b.UpdateSum(PDT_VOLUME, 5, -1), 305);  // the new value
  EXPECT_EQ(b.UpdateSum(PDT_VOLUME, 5, 1), 205);
  EXPECT_EQ(b.UpdateSum(PDT_EXTRA1, 5, 1), E);  // no such column
  EXPECT_EQ(b.UpdatePrevSum(PDT_CLOSE, 1), 25);
  EXPECT_EQ(b.VShiftRatio(1, PDT_CLOSE, 2.0), 1);
  EXPECT_EQ(b.GetValue(1, PDT_CLOSE), 50);
  EXPECT_EQ(b.GetColumnCursor(), 1);  // the bar it shifted
  EXPECT_EQ(b.VShiftRatio(3, PDT_CLOSE, 2.0), 0);
  EXPECT_EQ(b.VShiftRatio(0, PDT_CLOSE, 0.0), 0);

  // Bar 0's prices in turn; exactly 1.0 (even added) and the empty value shift nothing.
  const struct { double d; int mode, result; double high; } shifts[] = {
      {1.0, 2, 0, 12}, {1.0, 0, 0, 12}, {E, 2, 0, 12}, {2.0, 2, 1, 24}, {4.0, 1, 1, 20}, {2.0, 3, 1, 10}};
  for (const auto& s : shifts) {
    EXPECT_EQ(b.VShiftBasicRatio(0, s.d, s.mode), s.result) << s.d << " mode " << s.mode;
    EXPECT_EQ(b.GetBasic(0).m_dHigh, s.high) << s.d << " mode " << s.mode;
  }
  EXPECT_EQ(Row(b.GetBasic(0)), V({1, 9, 10, 11, 12, 100, 1.0}));  // date, volume and ratio never move
  EXPECT_EQ(b.GetColumnCursor(), 7);
  EXPECT_EQ(b.VShiftBasicRatio(1 << 20, 2.0, 2), 1);  // outside the arrays: ignored
}

TEST(PacketMemoryRecords, BarsMoveInEveryColumnAlike) {
  const struct { const char* what; int bars; int (*op)(Mem&); int result; V dates; int end; } cases[] = {
      {"roll, mode 1", 3, [](Mem& m) { return m.AddShiftBasic(At(4), 1); }, 3, {2, 3, 4}, 2},
      {"roll the last bar, mode 0", 3, [](Mem& m) { return m.AddShiftLastBasic(0); }, 3, {1, 1, 3}, 2},
      {"roll an empty packet", 0, [](Mem& m) { return m.AddShiftBasic(At(1), 1); }, -1, {}, -1},
      // The CPacket::Insert rule: the old last bar is lost, the new slot never written.
      {"insert, move 0", 3, [](Mem& m) { return m.InsertBasic(1, At(9), 0); }, 1, {1, 9, 2, 0}, 3},
      {"insert, move all", 3, [](Mem& m) { return m.InsertBasic(1, At(9), 1); }, 1, {1, 9, 2, 3}, 3},
      {"insert past the size", 3, [](Mem& m) { return m.InsertBasic(4, At(9), 1); }, 0, {1, 2, 3}, 2},
      {"prepend and grow", 2, [](Mem& m) { return m.AddBasicReverse(At(0), 0); }, 3, {0, 1, 2}, 2},
      {"prepend, fixed window", 3, [](Mem& m) { return m.AddBasicReverse(At(-1), 1); }, 3, {-1, 1, 2}, 2},
      {"remove the first", 4, [](Mem& m) { return m.RemoveBasic(0, 1); }, 1, {2, 3, 4}, 3},
      {"remove the last: emptied, dropped", 3, [](Mem& m) { return m.RemoveBasic(2, 1); }, 0, {1, 2}, 2},
      {"remove right: nothing", 3, [](Mem& m) { return m.RemoveRightBasic(1, 1); }, 0, {1, 2, 3}, 2},
      {"remove at the lowest index", 3, [](Mem& m) { return m.RemoveBasic(INT_MIN, 0, 1); }, 0, {1, 2, 3}, 2},
      {"remove right the lowest n", 3, [](Mem& m) { return m.RemoveRightExtra(INT_MIN, 1); }, 0, {1, 2, 3}, 2},
      {"k = 2 bars from index 3", 6, [](Mem& m) { return m.RemoveExtra(1, 2, 1); }, 1, {1, 4, 5, 4}, 5},
      {"k = 2: the old last bar stays", 4, [](Mem& m) { return m.RemoveLeftBasic(1, 1); }, 1, {2, 3, 3}, 3},
      {"swap", 2, [](Mem& m) { return m.SwapBasic(0, 1); }, 1, {2, 1}, 1},
      {"swap below 0", 2, [](Mem& m) { return m.SwapBasic(0, -1); }, 0, {1, 2}, 1},
      {"shift left", 3, [](Mem& m) { return m.ShiftBasic(1, 1); }, 1, {2, 3, E}, 2},
      {"shift right reallocates", 3, [](Mem& m) { return m.ShiftBasic(0, 2); }, 1, {E, E, 1, 2, 3}, -1},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    CPacketMemory m = Bars(c.bars);
    EXPECT_EQ(c.op(m), c.result);
    EXPECT_EQ(Column(m, PDT_DATE), c.dates);
    EXPECT_EQ(m.GetEndIndex(), c.end);
    V volumes;  // the other columns moved with the dates
    for (double d : c.dates) volumes.push_back(d == E ? E : d * 100);
    EXPECT_EQ(Column(m, PDT_VOLUME), volumes);
  }
  CPacketMemory sh = Bars(3);
  sh.ShiftBasic(0, 2);  // fields reset, start and shift-x 2
  EXPECT_EQ(Fields(sh), (Ints{5, 1024, 2, -1, -1, -1, 2, 0}));
  EXPECT_EQ(sh.RemoveExtra(0, 1, 1), 1);
  EXPECT_EQ(sh.GetColumnCursor(), 9);
}

TEST(PacketMemoryRecords, SettersAndLastAvailableFollowTheDefaultColumn) {
  CPacketMemory m = Bars(3);
  m.SetValue(2, PDT_CLOSE, E);  // the last bar has no close yet
  EXPECT_EQ(Row(m.GetLastAvailBasic()), Row(At(2)));
  EXPECT_EQ(m.UpdateLastAvailBasic(At(20)), 1);
  EXPECT_EQ(m.SetLastPrevBasic(At(30)), 1);  // writes the last bar
  EXPECT_EQ(Column(m, PDT_DATE), V({1, 20, 30}));
  EXPECT_EQ(m.UpdatePrevBasic(At(21)), 1);
  EXPECT_EQ(Row(m.GetLastPrevBasic()), Row(At(21)));
  EXPECT_EQ(Row(m.GetLastPrePrevBasic()), Row(At(1)));
  EXPECT_EQ(Row(m.GetReverseBasic(0)), Row(At(30)));
  EXPECT_EQ(Row(m.GetLastFromIndexBasic(3)), Row(At(1)));
  EXPECT_EQ(m.SetBasic(3, At(1)), 0);

  CPacketMemory gap = Bars(2);
  gap.AddBasic({3, E, E, E, E, E});
  EXPECT_EQ(gap.AddLastAvailBasic(At(9)), 4);  // follows bar 1
  EXPECT_EQ(Column(gap, PDT_DATE), V({1, 2, 9, E}));
  // Insert at bar 3 leaves the new last slot unwritten (0.0); the roll reads empty past it.
  EXPECT_EQ(gap.AddShiftLastAvailBasic(At(8), 1), 1);
  EXPECT_EQ(Column(gap, PDT_DATE), V({2, 9, 8, 0, E}));

  CPacketMemory shift = Bars(2);
  EXPECT_EQ(shift.VShiftBasic(1.0), 1);  // prices only
  EXPECT_EQ(shift.VShiftBasic(Bar{0, 0, 0, 0, 0, 5, 0.0}), 1);  // zero and empty fields are skipped
  EXPECT_EQ(Row(shift.GetBasic(1)), V({2, 22, 23, 24, 25, 205, 1.0}));
}

TEST(PacketMemoryQueries, PerColumnQueriesAndTheirTwoCaches) {
  CPacketMemory m = Bars(3);
  m.SetValue(1, PDT_HIGH, 99);
  const V none{-1, kNoMax, -1, E};
  EXPECT_EQ(m.GetMaxIndex(0, 2, PDT_HIGH), 1);
  EXPECT_EQ(m.GetMaxValue(0, 2, PDT_HIGH, 1, 1), 99);  // the value only, to the second cache
  EXPECT_EQ(Cached(m, PDT_HIGH, 0), V({1, 99, -1, E}));
  EXPECT_EQ(Cached(m, PDT_HIGH, 1), V({-1, 99, -1, E}));
  EXPECT_EQ(m.GetMinValue(0, 2, PDT_LOW, 1), 13);
  EXPECT_EQ(Cached(m, PDT_LOW, 0), V({-1, kNoMax, -1, 13}));
  EXPECT_EQ(Cached(m, PDT_LOW, 1), none);
  double mx, mn;
  int mxi, mni, idx;
  EXPECT_EQ(m.GetMaxMinValueIndex(0, 2, PDT_CLOSE, mx, mn, mxi, mni, 1, 1), 20);
  EXPECT_EQ(mxi, 2);
  EXPECT_EQ(Cached(m, PDT_CLOSE, 1), V({-1, 34, -1, 14}));
  EXPECT_EQ(m.GetMaxMinValue(0, 3, PDT_CLOSE, mx, mn), E);  // invalid range
  EXPECT_EQ(m.GetMinValueIndex(0, 2, PDT_VOLUME, idx), 100);
  EXPECT_EQ(m.GetMaxValueIndex(0, 2, PDT_EXTRA1, idx), kNoMax);  // no column
  EXPECT_EQ(idx, -1);
  EXPECT_EQ(m.GetMinIndex(0, 2, static_cast<ENPacketDataType>(20)), -1);
  EXPECT_EQ(Cached(m, static_cast<ENPacketDataType>(20), 0), none);
  m.ClearPacket();  // both caches reset
  EXPECT_EQ(Cached(m, PDT_HIGH, 0), none);
  EXPECT_EQ(Cached(m, PDT_HIGH, 1), none);

  CPacketMemory d = Bars(0, PST_DATE_VALUE);  // dates 10, 20, 30: ascending for dir 1
  for (double x : {10.0, 20.0, 30.0}) d.AddDateValue(x, x / 10);
  EXPECT_EQ(d.GetPacketIndex(PDT_OPEN, 15, 1), -1);
  const struct { double v; int up, down; } dates[] = {{5, 0, 0}, {15, 1, 1}, {20, 1, 1}, {35, -1, -1}};
  for (const auto& c : dates) EXPECT_EQ(d.GetPacketIndex(PDT_DATE, c.v, 1), c.up) << c.v;
  EXPECT_EQ(d.ReversePacket(PDT_DATE), 1);
  EXPECT_EQ(Column(d, PDT_CLOSE), V({1, 2, 3}));  // only the date column turned
  for (const auto& c : dates) EXPECT_EQ(d.GetPacketIndex(PDT_DATE, c.v, 0), c.down) << c.v;
  EXPECT_EQ(d.FindIndexOverValue(PDT_CLOSE, 2), 1);
  EXPECT_EQ(d.FindValuePos(PDT_DATE, 10, 1), 2);
  EXPECT_EQ(d.GetLastAvailValue(PDT_CLOSE), 3);
  EXPECT_EQ(d.ReversePacket(), 1);
  EXPECT_EQ(Column(d, PDT_DATE), V({10, 20, 30}));
  EXPECT_EQ(d.ReversePacket(PDT_VOLUME), 0);
}

TEST(PacketMemoryWhole, FillAccumCopiesAndInserts) {
  CPacketMemory src = Bars(3);
  src.SetRealPacketSize(3);
  src.SetValidEndIndex(2);
  src.GetMaxIndex(0, 2, PDT_CLOSE);
  src.GetMaxIndex(0, 2, PDT_CLOSE, 1);
  CPacketMemory fill = Bars(0, PST_OHLCV);
  EXPECT_EQ(fill.FillPacket(&src, PDT_CLOSE), 1);
  EXPECT_EQ(Row(fill.GetBasic(1)), V({2, 24, 24, 24, 24, 200, 1.0}));  // every price the close; no ratio column
  EXPECT_EQ(Fields(fill), (Ints{3, 1024, 0, 2, -1, 2, 0, 0}));
  EXPECT_EQ(Cached(fill, PDT_CLOSE, 0), Cached(src, PDT_CLOSE, 0));  // the first cache taken
  EXPECT_EQ(Cached(fill, PDT_CLOSE, 1), V({-1, kNoMax, -1, E}));    // the second stays reset
  EXPECT_EQ(fill.GetPacketStructType(), PST_OHLCV);
  EXPECT_EQ(fill.FillPacket(nullptr, PDT_CLOSE), 0);

  CPacketMemory acc = Bars(0, PST_DATE_VALUE_VOLUME);
  EXPECT_EQ(acc.AccumPacket(&src), 1);
  EXPECT_EQ(Column(acc, PDT_CLOSE), V({0, 14, 38}));
  EXPECT_EQ(Column(acc, PDT_DATE), V({0, 1, 3}));
  EXPECT_EQ(acc.GetRealPacketSize(), 0);
  CPacketMemory stale;  // empty, so the clear keeps its start index
  stale.SetStartIndex(2);
  EXPECT_EQ(stale.AccumPacket(&src), 1);
  EXPECT_EQ(Column(stale, PDT_CLOSE), V({0, 14, 38}));
  EXPECT_EQ(Cached(acc, PDT_CLOSE, 1), Cached(src, PDT_CLOSE, 1));  // both caches taken
  CPacketMemory lacking = Bars(0, PST_OHLC);
  CPacketMemory value_only(2, 1);
  EXPECT_EQ(lacking.AccumPacket(&value_only), 1);  // src has no open column
  EXPECT_EQ(Column(lacking, PDT_OPEN), V({E, E}));
  EXPECT_EQ(acc.AccumPacket(&acc), 1);
  EXPECT_EQ(Column(acc, PDT_CLOSE), V({0, 0, 14}));

  src.AddBasic(At(4));
  src.SetDefaultDataType(PDT_OPEN);
  CPacketMemory copy(src);
  EXPECT_EQ(copy.GetDefaultDataType(), PDT_OPEN);
  EXPECT_EQ(Column(copy, PDT_HIGH), Column(src, PDT_HIGH));
  copy.AddBasic(At(5));
  EXPECT_EQ(src.GetPacketSize(), 4);  // deep
  CPacketMemory layout_only = Bars(0, PST_OHLC);
  EXPECT_EQ(CPacketMemory(layout_only).GetPacketStructType(), PST_OHLC);
  EXPECT_EQ(copy.CopyPacket(layout_only), 0);
  EXPECT_EQ(copy.GetPacketSize(), 0);

  CPacketMemory slice;
  EXPECT_EQ(slice.CopyPacket(&src, 1, 2), 1);
  EXPECT_EQ(Column(slice, PDT_DATE), V({2, 3}));
  EXPECT_EQ(slice.CopyPacket(&src, 1, 9), 0);

  CPacketMemory host = Bars(0);
  const double closes[] = {1, 2, 3};
  EXPECT_EQ(host.CopyValues(PDT_CLOSE, closes, 3), 1);
  EXPECT_EQ(Column(host, PDT_OPEN), V(3, E));
  const double dates[] = {10, 20, 30, 40};
  EXPECT_EQ(host.CopyValues(PDT_DATE, dates, 4), 1);  // grows: the new bar is empty
  EXPECT_EQ(Column(host, PDT_CLOSE), V({1, 2, 3, E}));
  EXPECT_EQ(host.GetValidEndIndex(), 3);
  const CPacket series = Make({7, 8});
  EXPECT_EQ(host.CopyValues(PDT_VOLUME, &series), 1);  // shrinks to 2 bars
  EXPECT_EQ(Column(host, PDT_DATE), V({10, 20}));
  EXPECT_EQ(host.CopyValues(PDT_EXTRA1, closes, 3), 0);  // not in the layout
  EXPECT_EQ(host.CopyValues(PDT_CLOSE, nullptr, 3), 0);
  CPacketMemory own = Bars(3);  // values from its own columns, cut to 2 bars
  EXPECT_EQ(own.CopyValues(PDT_CLOSE, own.GetPacket(PDT_CLOSE) + 1, 2), 1);
  EXPECT_EQ(own.CopyValues(PDT_HIGH, own.GetPacket(PDT_OPEN), 1), 1);
  EXPECT_EQ(Column(own, PDT_CLOSE), V({24}));
  EXPECT_EQ(Column(own, PDT_HIGH), V({11}));

  CPacketMemory base = Bars(2);
  CPacketMemory more = Bars(0, PST_DATE_VALUE);
  more.AddDateValue(7, 70);
  EXPECT_EQ(base.InsertPacket(&more, 1), 1);
  EXPECT_EQ(Column(base, PDT_DATE), V({1, 7, 2}));
  EXPECT_EQ(Column(base, PDT_OPEN), V({11, E, 21}));  // missing in the source
  EXPECT_EQ(Column(base, PDT_CLOSE), V({14, 70, 24}));
  EXPECT_EQ(base.AddPacket(&base), 6);
  EXPECT_EQ(Column(base, PDT_DATE), V({1, 7, 2, 1, 7, 2}));
  EXPECT_EQ(base.InsertPacket(&more, 7), 0);
  EXPECT_EQ(base.AddPacket(nullptr), 0);
  EXPECT_EQ(base.ClonePacket(PDT_OPEN, PDT_DATE), 1);
  EXPECT_EQ(Column(base, PDT_OPEN), Column(base, PDT_DATE));
  EXPECT_EQ(base.ClonePacket(PDT_EXTRA1, PDT_DATE), 0);
}

TEST(PacketMemoryArithmetic, ColumnWiseRulesOfTheSingleSeries) {
  CPacketMemory a = Bars(2);
  const CPacketMemory sum = a + Bars(2);
  EXPECT_EQ(Column(sum, PDT_CLOSE), V({28, 48}));
  EXPECT_EQ(Column(sum, PDT_RATIO), V({2, 2}));
  EXPECT_EQ(Column(a * 2.0, PDT_HIGH), V({24, 44}));
  EXPECT_EQ(Column(a / 0.0, PDT_OPEN), V({E, E}));  // zero divisor: carry, nothing before bar 0

  CPacketMemory left = Bars(3);
  EXPECT_EQ(Column(left - Bars(2), PDT_DATE), V({0, 0, E}));
  EXPECT_EQ(Column(left, PDT_DATE), V({1, 2, E}));  // the left is marked too
  EXPECT_EQ(Column(Bars(3) - Bars(1), PDT_DATE), V({0, 1, 2}));  // size 1 broadcasts

  CPacketMemory c = Bars(3);
  c += Bars(3);
  EXPECT_EQ(Column(c, PDT_DATE), V({6, 2, 3}));  // results land in bar 0
  CPacketMemory d = Bars(2);
  d %= Bars(2);
  EXPECT_EQ(Column(d, PDT_VOLUME), V({0, 200}));  // 200 % 200 last
  EXPECT_EQ(Column(CPacketMemory(2, 1) + 1.0, PDT_CLOSE), V({E, E}));  // empty stays empty
  EXPECT_EQ((CPacketMemory() - a).GetPacketSize(), 0);
}
