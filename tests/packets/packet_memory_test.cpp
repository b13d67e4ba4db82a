// CPacketMemory: layouts and their columns, records, per-column queries and
// caches, whole-packet operations and arithmetic.
#include "chartcore/packets/packet_memory.h"

#include <vector>

#include <gtest/gtest.h>

#include "packets/packet_test_util.h"

using packets_test::Bits;
using packets_test::E;
using packets_test::kNoMax;
using V = std::vector<double>;

namespace {

tagPacketCoreData Bar(double date, double o, double h, double l, double c, double vol) {
  tagPacketCoreData r;
  r.m_dDate = date;
  r.m_dOpen = o;
  r.m_dHigh = h;
  r.m_dLow = l;
  r.m_dClose = c;
  r.m_dVolume = vol;
  return r;
}

// Column t of every bar, as GetValue reads it.
V Column(const CPacketMemory& m, ENPacketDataType t) {
  V out;
  for (int i = 0; i < m.GetPacketSize(); ++i) out.push_back(m.GetValue(i, t));
  return out;
}

// A PST_OHLCV_RATIO packet of bars whose prices are date*10 + column.
CPacketMemory Bars(int n) {
  CPacketMemory m;
  m.SetPacketStructType(PST_OHLCV_RATIO);
  for (int i = 1; i <= n; ++i) m.AddBasic(Bar(i, i * 10 + 1, i * 10 + 2, i * 10 + 3, i * 10 + 4, i * 100));
  return m;
}

}  // namespace

TEST(PacketMemoryConstruction, ConstructorsAndTheirColumns) {
  CPacketMemory m(10, 1);  // layout PST_VALUE: only the close column
  EXPECT_EQ(m.GetPacketStructType(), PST_VALUE);
  ASSERT_NE(m.GetPacket(PDT_CLOSE), nullptr);
  EXPECT_EQ(Column(m, PDT_CLOSE), V(10, E));
  EXPECT_EQ(m.GetMaxPacketSize(), 1024);
  EXPECT_EQ(m.GetColumnCount(), 1);

  CPacketMemory number(2.5);  // capacity 1, nothing stored
  EXPECT_EQ(number.GetMaxPacketSize(), 1);
  EXPECT_EQ(number.GetPacketSize(), 0);
  EXPECT_EQ(number.GetColumnCount(), 0);
  number.ClearPacket();  // size 0: every field stays
  EXPECT_EQ(number.GetMaxPacketSize(), 1);

  CPacketMemory open(PDT_OPEN, 3.0);  // one element, size 0: owned and freed
  ASSERT_NE(open.GetPacket(PDT_OPEN), nullptr);
  EXPECT_EQ(open.GetPacket(PDT_OPEN)[0], 3.0);
  EXPECT_EQ(open.GetValue(0, PDT_OPEN), E);
  open.SetPacketSize(1);
  EXPECT_EQ(open.GetValue(0, PDT_OPEN), 3.0);
  EXPECT_EQ(open.GetValue(0, POT_OPEN), 3.0);  // the other column names alias
  EXPECT_EQ(open.GetPacket(PIT_OPEN), open.GetPacket(PDT_OPEN));
  CPacketMemory foreign(static_cast<ENPacketDataType>(12), 1.0);
  EXPECT_EQ(foreign.GetColumnCount(), 0);

  CPacketMemory bars = Bars(3);
  bars.SetValidEndIndex(2);
  bars.SetShiftXSize(1);
  bars.ClearPacket();
  EXPECT_EQ(bars.GetMaxPacketSize(), 0);  // unlike CPacket, a clear reports 0
  EXPECT_EQ(bars.GetColumnCursor(), -1);
  EXPECT_EQ(bars.GetValidEndIndex(), 2);
  EXPECT_EQ(bars.GetShiftXSize(), 1);
  EXPECT_EQ(bars.GetPacket(PDT_DATE), nullptr);
  EXPECT_EQ(bars.GetPacketStructType(), PST_OHLCV_RATIO);
}

TEST(PacketMemoryLayout, EachLayoutAllocatesItsColumnsOnly) {
  const unsigned expected[] = {0x10, 0x11, 0x31, 0x1F, 0x3F, 0x7F, 0x1FF, 0x0};
  for (int layout = 0; layout <= 7; ++layout) {
    CPacketMemory m;
    m.SetPacketStructType(static_cast<ENPacketStructType>(layout));
    m.AllocPacket(3);
    unsigned got = 0;
    for (int t = 0; t < 9; ++t) {
      if (m.GetPacket(static_cast<ENPacketDataType>(t)) != nullptr) got |= 1u << t;
      EXPECT_EQ(CPacketMemory::IsLayoutColumn(static_cast<ENPacketStructType>(layout), static_cast<ENPacketDataType>(t)),
                (expected[layout] >> t) & 1u);
    }
    EXPECT_EQ(got, expected[layout]) << "layout " << layout;
  }
  // A foreign layout has no storage: bars are counted, nothing is stored.
  CPacketMemory none;
  none.SetPacketStructType(static_cast<ENPacketStructType>(42));
  EXPECT_EQ(none.AddBasic(Bar(1, 2, 3, 4, 5, 6)), 1);
  EXPECT_EQ(none.GetBasic(0).m_dClose, E);

  CPacketMemory dv;
  dv.SetPacketStructType(PST_DATE_VALUE);
  dv.AddBasic(Bar(20240102, 1, 2, 3, 4, 5));
  tagPacketCoreData r = dv.GetBasic(0);  // date and close; others default
  EXPECT_EQ(r.m_dDate, 20240102);
  EXPECT_EQ(r.m_dClose, 4);
  EXPECT_EQ(r.m_dOpen, E);
  EXPECT_EQ(r.m_dRatio, 1.0);
  EXPECT_EQ(dv.GetBasic(1).m_dDate, E);  // out of range: default record
  EXPECT_EQ(dv.AddDateValue(20240103, 9), 2);
  EXPECT_EQ(Column(dv, PDT_CLOSE), V({4, 9}));
  EXPECT_EQ(dv.GetEndIndex(), 1);

  // Widening the layout allocates nothing until the next growth; the new
  // column then reads empty for the older bars.
  dv.SetPacketStructType(PST_OHLCV);
  EXPECT_EQ(dv.GetPacket(PDT_OPEN), nullptr);
  dv.AddBasic(Bar(20240104, 11, 12, 13, 14, 15));
  EXPECT_EQ(Column(dv, PDT_OPEN), V({E, E, 11}));
  EXPECT_EQ(Column(dv, PDT_DATE), V({20240102, 20240103, 20240104}));

  CPacketMemory reset = Bars(2);
  reset.SetValidEndIndex(1);
  reset.ResetPacket(PST_OHLC);
  EXPECT_EQ(reset.GetPacketSize(), 0);
  EXPECT_EQ(reset.GetValidEndIndex(), -1);
  EXPECT_EQ(reset.GetColumnCount(), 0);
  reset.AddBasic(Bar(1, 2, 3, 4, 5, 6));
  EXPECT_EQ(reset.GetColumnCount(), 5);
  EXPECT_EQ(reset.GetPacket(PDT_VOLUME), nullptr);
}

TEST(PacketMemoryRecords, AppendGrowsEveryColumnAcrossBlocks) {
  CPacketMemory m = Bars(2000);
  EXPECT_EQ(m.GetPacketSize(), 2000);
  EXPECT_EQ(m.GetMaxPacketSize(), 2048);
  EXPECT_EQ(m.GetEndIndex(), 1999);
  EXPECT_EQ(m.GetColumnCursor(), 7);
  bool kept = true;
  for (int i = 0; i < 2000; ++i) {
    const tagPacketCoreData r = m.GetBasic(i);
    kept = kept && r.m_dDate == i + 1 && r.m_dLow == (i + 1) * 10 + 3 && r.m_dRatio == 1.0;
  }
  EXPECT_TRUE(kept);
  EXPECT_EQ(m.GetPacket(PDT_EXTRA1), nullptr);

  CPacketMemory full;
  full.SetPacketStructType(PST_FULL);
  tagPacketCoreDataExtra x;
  x.m_dExtra1 = 7;
  full.AddExtra(x);
  EXPECT_EQ(full.GetColumnCursor(), 9);
  full.AddBasic(Bar(2, 1, 1, 1, 1, 1));  // a basic record leaves new extras empty
  EXPECT_EQ(Column(full, PDT_EXTRA1), V({7, E}));
  EXPECT_EQ(full.GetExtra(0).m_dExtra1, 7);

  CPacketMemory last = Bars(1);
  EXPECT_EQ(last.AddLastBasic(), 2);
  EXPECT_EQ(last.GetLastBasic().m_dClose, 14);
  CPacketMemory empty;
  empty.SetPacketStructType(PST_OHLCV_RATIO);
  empty.AddLastBasic();  // empty: a default record, ratio 1.0
  EXPECT_EQ(empty.GetFirstBasic().m_dRatio, 1.0);
  EXPECT_EQ(empty.GetFirstBasic().m_dClose, E);
}

TEST(PacketMemoryRecords, UpdatesAndSumsTouchOnlyWhatTheyName) {
  CPacketMemory m;
  m.SetPacketStructType(PST_FULL);
  tagPacketCoreDataExtra x;
  x.m_dExtra1 = 70;
  x.m_dExtra2 = 80;
  m.AddExtra(x);
  m.AddExtra(x);
  EXPECT_EQ(m.UpdateBasicExcept(-1, Bar(9, 1, 2, 3, 4, 5), PDT_CLOSE), 1);
  const tagPacketCoreDataExtra r = m.GetLastExtra();
  EXPECT_EQ(r.m_dDate, 9);
  EXPECT_EQ(r.m_dOpen, 1);
  EXPECT_EQ(r.m_dClose, E);    // excepted
  EXPECT_EQ(r.m_dRatio, 1.0);  // the record's default ratio is written
  EXPECT_EQ(r.m_dExtra1, 70);  // extras untouched
  EXPECT_EQ(m.GetFirstExtra().m_dDate, E);
  EXPECT_EQ(m.UpdateBasicExcept(2, Bar(1, 1, 1, 1, 1, 1), PDT_DATE), 0);
  EXPECT_EQ(CPacketMemory().UpdateBasicExcept(-1, Bar(1, 1, 1, 1, 1, 1), PDT_DATE), 0);

  CPacketMemory b = Bars(3);
  EXPECT_EQ(b.UpdateSum(PDT_VOLUME, 5, -1), 305);
  EXPECT_EQ(b.UpdateSum(PDT_VOLUME, 5, 1), 205);
  EXPECT_EQ(b.UpdateSum(PDT_EXTRA1, 5, 1), E);  // no such column
  EXPECT_EQ(b.UpdatePrevSum(PDT_CLOSE, 1), 25);
  EXPECT_EQ(b.VShiftRatio(1, PDT_CLOSE, 2.0), 1);
  EXPECT_EQ(b.GetValue(1, PDT_CLOSE), 50);
  EXPECT_EQ(b.GetColumnCursor(), 1);  // the bar it shifted
  EXPECT_EQ(b.VShiftRatio(3, PDT_CLOSE, 2.0), 0);
  EXPECT_EQ(b.VShiftRatio(0, PDT_CLOSE, 0.0), 0);

  EXPECT_EQ(b.VShiftBasicRatio(0, 1.0, 2), 0);  // ratio 1.0: nothing, any mode
  EXPECT_EQ(b.VShiftBasicRatio(0, 1.0, 0), 0);  // even when adding
  EXPECT_EQ(b.VShiftBasicRatio(0, E, 2), 0);
  EXPECT_EQ(b.VShiftBasicRatio(0, 2.0, 2), 1);
  const tagPacketCoreData d = b.GetBasic(0);
  EXPECT_EQ(d.m_dOpen, 22);
  EXPECT_EQ(d.m_dClose, 28);
  EXPECT_EQ(d.m_dVolume, 100);  // volume, date and ratio never move
  EXPECT_EQ(d.m_dDate, 1);
  EXPECT_EQ(b.GetColumnCursor(), 7);
  b.VShiftBasicRatio(0, 4.0, 1);
  EXPECT_EQ(b.GetBasic(0).m_dHigh, 20);
  b.VShiftBasicRatio(0, 2.0, 3);
  EXPECT_EQ(b.GetBasic(0).m_dHigh, 10);
  EXPECT_EQ(b.VShiftBasicRatio(1 << 20, 2.0, 2), 1);  // outside the arrays: ignored
}

TEST(PacketMemoryRecords, RollingInsertRemoveKeepColumnsAligned) {
  CPacketMemory m = Bars(3);
  EXPECT_EQ(m.AddShiftBasic(Bar(4, 41, 42, 43, 44, 400), 1), 3);
  EXPECT_EQ(Column(m, PDT_DATE), V({2, 3, 4}));
  EXPECT_EQ(m.AddShiftLastBasic(0), 3);
  EXPECT_EQ(Column(m, PDT_CLOSE), V({24, 24, 44}));
  EXPECT_EQ(CPacketMemory().AddShiftBasic(Bar(1, 1, 1, 1, 1, 1), 1), -1);

  CPacketMemory ins = Bars(3);
  EXPECT_EQ(ins.InsertBasic(1, Bar(9, 9, 9, 9, 9, 9), 0), 1);  // CPacket::Insert rule
  EXPECT_EQ(ins.GetValue(1, PDT_DATE), 9);
  EXPECT_EQ(ins.GetValue(2, PDT_DATE), 2);
  EXPECT_NE(ins.GetValue(3, PDT_DATE), 3);  // the old last bar was overwritten
  CPacketMemory all = Bars(3);
  EXPECT_EQ(all.InsertBasic(1, Bar(9, 9, 9, 9, 9, 9), 1), 1);  // nothing lost
  EXPECT_EQ(Column(all, PDT_DATE), V({1, 9, 2, 3}));
  EXPECT_EQ(all.InsertBasic(5, Bar(9, 9, 9, 9, 9, 9), 1), 0);

  CPacketMemory rev = Bars(2);
  EXPECT_EQ(rev.AddBasicReverse(Bar(0, 1, 1, 1, 1, 1), 0), 3);  // prepend, grow
  EXPECT_EQ(Column(rev, PDT_DATE), V({0, 1, 2}));
  EXPECT_EQ(rev.GetEndIndex(), 2);
  EXPECT_EQ(rev.AddBasicReverse(Bar(-1, 1, 1, 1, 1, 1), 1), 3);  // fixed window
  EXPECT_EQ(Column(rev, PDT_DATE), V({-1, 0, 1}));

  CPacketMemory rm = Bars(4);
  EXPECT_EQ(rm.RemoveBasic(0, 1), 1);
  EXPECT_EQ(Column(rm, PDT_DATE), V({2, 3, 4}));
  EXPECT_EQ(Column(rm, PDT_VOLUME), V({200, 300, 400}));
  EXPECT_EQ(rm.RemoveBasic(2, 1), 0);  // the last bar: emptied and dropped
  EXPECT_EQ(rm.GetPacketSize(), 2);
  EXPECT_EQ(rm.RemoveRightBasic(1, 1), 0);
  CPacketMemory rn = Bars(6);
  EXPECT_EQ(rn.RemoveExtra(1, 2, 1), 1);  // k = 2 bars from index 3
  EXPECT_EQ(Column(rn, PDT_DATE), V({1, 4, 5, 4}));
  EXPECT_EQ(rn.GetColumnCursor(), 9);
  EXPECT_EQ(rn.RemoveLeftBasic(1, 1), 1);  // k = 2: the old last bar stays put
  EXPECT_EQ(Column(rn, PDT_DATE), V({4, 5, 5}));

  CPacketMemory sw = Bars(2);
  EXPECT_EQ(sw.SwapBasic(0, 1), 1);
  EXPECT_EQ(sw.GetBasic(0).m_dVolume, 200);
  EXPECT_EQ(sw.SwapBasic(0, -1), 0);

  CPacketMemory sh = Bars(3);
  EXPECT_EQ(sh.ShiftBasic(1, 1), 1);
  EXPECT_EQ(Column(sh, PDT_DATE), V({2, 3, E}));
  EXPECT_EQ(sh.ShiftBasic(0, 2), 1);
  EXPECT_EQ(Column(sh, PDT_DATE), V({E, E, 2, 3, E}));
  EXPECT_EQ(sh.GetStartIndex(), 2);
  EXPECT_EQ(sh.GetShiftXSize(), 2);
}

TEST(PacketMemoryRecords, SettersAndLastAvailableFollowTheDefaultColumn) {
  CPacketMemory m = Bars(3);
  m.SetValue(2, PDT_CLOSE, E);  // the last bar has no close yet
  EXPECT_EQ(m.GetLastAvailBasic().m_dDate, 2);
  EXPECT_EQ(m.UpdateLastAvailBasic(Bar(20, 0, 0, 0, 1, 0)), 1);
  EXPECT_EQ(m.GetBasic(1).m_dDate, 20);
  EXPECT_EQ(m.SetLastPrevBasic(Bar(30, 0, 0, 0, 2, 0)), 1);  // writes the last bar
  EXPECT_EQ(m.GetLastBasic().m_dDate, 30);
  EXPECT_EQ(m.UpdatePrevBasic(Bar(21, 0, 0, 0, 3, 0)), 1);
  EXPECT_EQ(m.GetLastPrevBasic().m_dDate, 21);
  EXPECT_EQ(m.GetLastPrePrevBasic().m_dDate, 1);
  EXPECT_EQ(m.GetReverseBasic(0).m_dDate, 30);
  EXPECT_EQ(m.GetLastFromIndexBasic(3).m_dDate, 1);
  EXPECT_EQ(m.SetBasic(3, Bar(1, 1, 1, 1, 1, 1)), 0);

  CPacketMemory gap = Bars(2);
  gap.AddBasic(Bar(3, E, E, E, E, E));
  EXPECT_EQ(gap.AddLastAvailBasic(Bar(9, 9, 9, 9, 9, 9)), 4);  // follows bar 1
  EXPECT_EQ(Column(gap, PDT_DATE), V({1, 2, 9, E}));
  // Insert at bar 3 moves nothing and leaves the new last slot as it was
  // (never written: 0.0); the left roll then reads empty past the end.
  EXPECT_EQ(gap.AddShiftLastAvailBasic(Bar(8, 8, 8, 8, 8, 8), 1), 1);
  EXPECT_EQ(Column(gap, PDT_DATE), V({2, 9, 8, 0, E}));

  CPacketMemory shift = Bars(2);
  EXPECT_EQ(shift.VShiftBasic(1.0), 1);  // prices only
  EXPECT_EQ(shift.GetBasic(0).m_dOpen, 12);
  EXPECT_EQ(shift.GetBasic(0).m_dVolume, 100);
  tagPacketCoreData add = Bar(0, 0, 0, 0, 0, 5);
  add.m_dRatio = 0.0;
  EXPECT_EQ(shift.VShiftBasic(add), 1);  // zero and empty fields are skipped
  EXPECT_EQ(shift.GetBasic(1).m_dVolume, 205);
  EXPECT_EQ(shift.GetBasic(1).m_dRatio, 1.0);
}

TEST(PacketMemoryQueries, PerColumnQueriesAndTheirTwoCaches) {
  CPacketMemory m = Bars(3);
  m.SetValue(1, PDT_HIGH, 99);
  EXPECT_EQ(m.GetMaxIndex(0, 2, PDT_HIGH), 1);
  EXPECT_EQ(m.GetMaxPacketIndex(PDT_HIGH), 1);
  EXPECT_EQ(m.GetMaxPacketValue(PDT_HIGH), 99);
  EXPECT_EQ(m.GetMaxValue(0, 2, PDT_HIGH, 1, 1), 99);  // to the second cache
  EXPECT_EQ(m.GetMaxPacketValue(PDT_HIGH, 1), 99);
  EXPECT_EQ(m.GetMaxPacketIndex(PDT_HIGH, 1), -1);  // value only
  EXPECT_EQ(m.GetMinValue(0, 2, PDT_LOW, 1), 13);
  EXPECT_EQ(m.GetMinPacketValue(PDT_LOW), 13);
  EXPECT_EQ(m.GetMinPacketValue(PDT_LOW, 1), E);
  double mx, mn;
  int mxi, mni, idx;
  EXPECT_EQ(m.GetMaxMinValueIndex(0, 2, PDT_CLOSE, mx, mn, mxi, mni, 1, 1), 20);
  EXPECT_EQ(mxi, 2);
  EXPECT_EQ(m.GetMaxPacketValue(PDT_CLOSE, 1), 34);
  EXPECT_EQ(m.GetMaxMinValue(0, 3, PDT_CLOSE, mx, mn), E);  // invalid range
  EXPECT_EQ(m.GetMinValueIndex(0, 2, PDT_VOLUME, idx), 100);
  EXPECT_EQ(m.GetMaxValueIndex(0, 2, PDT_EXTRA1, idx), kNoMax);  // no column
  EXPECT_EQ(idx, -1);
  EXPECT_EQ(m.GetMinIndex(0, 2, static_cast<ENPacketDataType>(20)), -1);
  EXPECT_EQ(m.GetMaxPacketIndex(static_cast<ENPacketDataType>(20)), -1);
  m.ClearPacket();  // both caches reset
  EXPECT_EQ(m.GetMaxPacketIndex(PDT_HIGH), -1);
  EXPECT_EQ(Bits(m.GetMaxPacketValue(PDT_HIGH, 1)), Bits(kNoMax));

  CPacketMemory d;
  d.SetPacketStructType(PST_DATE_VALUE);
  for (double x : {10.0, 20.0, 30.0}) d.AddDateValue(x, x / 10);
  EXPECT_EQ(d.GetPacketIndex(PDT_DATE, 5, 1), 0);
  EXPECT_EQ(d.GetPacketIndex(PDT_DATE, 15, 1), 1);
  EXPECT_EQ(d.GetPacketIndex(PDT_DATE, 20, 1), 1);
  EXPECT_EQ(d.GetPacketIndex(PDT_DATE, 35, 1), -1);
  EXPECT_EQ(d.GetPacketIndex(PDT_OPEN, 15, 1), -1);
  d.ReversePacket(PDT_DATE);  // descending dates [30, 20, 10]
  EXPECT_EQ(Column(d, PDT_CLOSE), V({1, 2, 3}));
  EXPECT_EQ(d.GetPacketIndex(PDT_DATE, 15, 0), 1);  // 20 above, 10 below
  EXPECT_EQ(d.GetPacketIndex(PDT_DATE, 20, 0), 1);
  EXPECT_EQ(d.GetPacketIndex(PDT_DATE, 35, 0), -1);
  EXPECT_EQ(d.GetPacketIndex(PDT_DATE, 5, 0), 0);
  EXPECT_EQ(d.FindIndexOverValue(PDT_CLOSE, 2), 1);
  EXPECT_EQ(d.FindValuePos(PDT_DATE, 10, 1), 2);
  EXPECT_EQ(d.GetLastAvailValue(PDT_CLOSE), 3);
  EXPECT_EQ(d.ReversePacket(), 1);
  EXPECT_EQ(Column(d, PDT_DATE), V({10, 20, 30}));
  EXPECT_EQ(d.ReversePacket(PDT_VOLUME), 0);
}

TEST(PacketMemoryWhole, FillAndAccumTakeFieldsButNotTheRealSize) {
  CPacketMemory src = Bars(3);
  src.SetRealPacketSize(3);
  src.SetValidEndIndex(2);
  src.GetMaxIndex(0, 2, PDT_CLOSE);
  src.GetMaxIndex(0, 2, PDT_CLOSE, 1);
  CPacketMemory fill;
  fill.SetPacketStructType(PST_OHLCV);
  EXPECT_EQ(fill.FillPacket(&src, PDT_CLOSE), 1);
  const tagPacketCoreData b = fill.GetBasic(1);
  EXPECT_EQ(b.m_dDate, 2);
  EXPECT_EQ(b.m_dOpen, 24);  // every price is the close series
  EXPECT_EQ(b.m_dVolume, 200);
  EXPECT_EQ(b.m_dRatio, 1.0);  // no ratio column in this layout
  EXPECT_EQ(fill.GetPacketSize(), 3);
  EXPECT_EQ(fill.GetValidEndIndex(), 2);
  EXPECT_EQ(fill.GetRealPacketSize(), 0);
  EXPECT_EQ(fill.GetMaxPacketIndex(PDT_CLOSE), 2);  // first cache taken
  EXPECT_EQ(fill.GetMaxPacketIndex(PDT_CLOSE, 1), -1);  // second stays reset
  EXPECT_EQ(fill.GetPacketStructType(), PST_OHLCV);
  EXPECT_EQ(fill.FillPacket(nullptr, PDT_CLOSE), 0);

  CPacketMemory acc;
  acc.SetPacketStructType(PST_DATE_VALUE_VOLUME);
  EXPECT_EQ(acc.AccumPacket(&src), 1);
  EXPECT_EQ(Column(acc, PDT_CLOSE), V({0, 14, 38}));
  EXPECT_EQ(Column(acc, PDT_DATE), V({0, 1, 3}));
  EXPECT_EQ(acc.GetRealPacketSize(), 0);
  EXPECT_EQ(acc.GetMaxPacketIndex(PDT_CLOSE, 1), 2);  // both caches taken
  CPacketMemory lacking;
  lacking.SetPacketStructType(PST_OHLC);
  CPacketMemory value_only(2, 1);
  EXPECT_EQ(lacking.AccumPacket(&value_only), 1);  // src has no open column
  EXPECT_EQ(Column(lacking, PDT_OPEN), V({E, E}));
  EXPECT_EQ(acc.AccumPacket(&acc), 1);
  EXPECT_EQ(Column(acc, PDT_CLOSE), V({0, 0, 14}));
}

TEST(PacketMemoryWhole, CopiesInsertsAndValueColumns) {
  CPacketMemory src = Bars(4);
  src.SetDefaultDataType(PDT_OPEN);
  CPacketMemory copy(src);
  EXPECT_EQ(copy.GetPacketStructType(), PST_OHLCV_RATIO);
  EXPECT_EQ(copy.GetDefaultDataType(), PDT_OPEN);
  EXPECT_EQ(Column(copy, PDT_HIGH), Column(src, PDT_HIGH));
  copy.AddBasic(Bar(5, 1, 1, 1, 1, 1));
  EXPECT_EQ(src.GetPacketSize(), 4);  // deep
  CPacketMemory layout_only;
  layout_only.SetPacketStructType(PST_OHLC);
  CPacketMemory empty_copy(layout_only);
  EXPECT_EQ(empty_copy.GetPacketStructType(), PST_OHLC);
  EXPECT_EQ(copy.CopyPacket(layout_only), 0);
  EXPECT_EQ(copy.GetPacketSize(), 0);

  CPacketMemory part;
  EXPECT_EQ(part.CopyPacket(&src, 1, 2), 1);
  EXPECT_EQ(Column(part, PDT_DATE), V({2, 3}));
  EXPECT_EQ(part.GetEndIndex(), 1);
  EXPECT_EQ(part.CopyPacket(&src, 1, 9), 0);

  CPacketMemory host;
  host.SetPacketStructType(PST_OHLCV_RATIO);
  const double closes[] = {1, 2, 3};
  EXPECT_EQ(host.CopyValues(PDT_CLOSE, closes, 3), 1);
  EXPECT_EQ(Column(host, PDT_OPEN), V(3, E));
  const double dates[] = {10, 20, 30, 40};
  EXPECT_EQ(host.CopyValues(PDT_DATE, dates, 4), 1);  // grows: new bar empty
  EXPECT_EQ(Column(host, PDT_CLOSE), V({1, 2, 3, E}));
  EXPECT_EQ(host.GetValidEndIndex(), 3);
  CPacket series;
  series.Add(7);
  series.Add(8);
  EXPECT_EQ(host.CopyValues(PDT_VOLUME, &series), 1);  // shrinks to 2 bars
  EXPECT_EQ(Column(host, PDT_DATE), V({10, 20}));
  EXPECT_EQ(host.CopyValues(PDT_EXTRA1, closes, 3), 0);  // not in the layout
  EXPECT_EQ(host.CopyValues(PDT_CLOSE, nullptr, 3), 0);

  CPacketMemory base = Bars(2);
  CPacketMemory more;
  more.SetPacketStructType(PST_DATE_VALUE);
  more.AddDateValue(7, 70);
  EXPECT_EQ(base.InsertPacket(&more, 1), 1);
  EXPECT_EQ(Column(base, PDT_DATE), V({1, 7, 2}));
  EXPECT_EQ(Column(base, PDT_OPEN), V({11, E, 21}));  // missing in the source
  EXPECT_EQ(Column(base, PDT_CLOSE), V({14, 70, 24}));
  EXPECT_EQ(base.AddPacket(&base), 6);
  EXPECT_EQ(Column(base, PDT_DATE), V({1, 7, 2, 1, 7, 2}));
  EXPECT_EQ(base.InsertPacket(&more, 9), 0);
  EXPECT_EQ(base.AddPacket(nullptr), 0);
  EXPECT_EQ(base.ClonePacket(PDT_OPEN, PDT_DATE), 1);
  EXPECT_EQ(Column(base, PDT_OPEN), Column(base, PDT_DATE));
  EXPECT_EQ(base.ClonePacket(PDT_EXTRA1, PDT_DATE), 0);

  CPacketMemory re = Bars(5);
  re.ReAllocPacket(2, 1);
  EXPECT_EQ(re.GetPacketSize(), 2);
  EXPECT_EQ(re.GetLastBasic().m_dDate, 2);
  re.ReAllocPacket(0, 1);
  EXPECT_EQ(re.GetMaxPacketSize(), 0);
}

TEST(PacketMemoryArithmetic, ColumnWiseRulesOfTheSingleSeries) {
  CPacketMemory a = Bars(2);
  CPacketMemory b = Bars(2);
  CPacketMemory sum = a + b;
  EXPECT_EQ(sum.GetPacketStructType(), PST_OHLCV_RATIO);
  EXPECT_EQ(Column(sum, PDT_CLOSE), V({28, 48}));
  EXPECT_EQ(Column(sum, PDT_RATIO), V({2, 2}));
  CPacketMemory twice = a * 2.0;
  EXPECT_EQ(Column(twice, PDT_HIGH), V({24, 44}));
  CPacketMemory half = a / 0.0;  // zero divisor: carry, before index 0 empty
  EXPECT_EQ(Column(half, PDT_OPEN), V({E, E}));

  CPacketMemory shorter = Bars(2);
  CPacketMemory left = Bars(3);
  CPacketMemory marked = left - shorter;
  EXPECT_EQ(Column(marked, PDT_DATE), V({0, 0, E}));
  EXPECT_EQ(Column(left, PDT_DATE), V({1, 2, E}));  // the left is marked too
  CPacketMemory one = Bars(1);
  EXPECT_EQ(Column(Bars(3) - one, PDT_DATE), V({0, 1, 2}));  // size 1 broadcasts

  CPacketMemory c = Bars(3);
  c += Bars(3);
  EXPECT_EQ(Column(c, PDT_DATE), V({6, 2, 3}));  // results land in bar 0
  CPacketMemory d = Bars(2);
  d %= Bars(2);
  EXPECT_EQ(Column(d, PDT_VOLUME), V({0, 200}));  // 200 % 200 last
  CPacketMemory value(2, 1);
  CPacketMemory result = value + 1.0;  // empty stays empty
  EXPECT_EQ(Column(result, PDT_CLOSE), V({E, E}));
  EXPECT_EQ((CPacketMemory() - a).GetPacketSize(), 0);
}
