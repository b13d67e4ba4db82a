#include "chartcore/logic/pattern.h"

#include <gtest/gtest.h>

#include "logic/record_bytes.h"

using testing_records::ByteWriter;
using testing_records::Load;
using testing_records::Store;

namespace {

// A pattern file by hand: ten settings, Korean text 3, three candles, one
// line, two variables.
ByteWriter PatternFile() {
  ByteWriter w;
  w.Header(1).Ints({1, -1, 0, 1, 5, -1, -1, 8, 9, 10}).Str(L"\uC0C1\uC2B9\uC7A5\uC545").Str(L"");  // 상승장악
  w.Ints({3, 1, 2, 3, 4, 11, 12, 13, 14, 21, 22, 23, 24}).Ints({1, 5});  // candles, a line
  return w.Int(2).Var(L"a", 0, 0.5).Var(L"b", 1, 1.5).Int(4);
}

}  // namespace

TEST(PatternArchive, FreshAndFilledRecordsWriteExactBytes) {
  ByteWriter fresh;
  fresh.Header(1).Ints({0, -1, 0, 1, 0, -1, -1, 0, 1, 0}).Str(L"").Str(L"");
  fresh.Ints({0, 0, 0, 0});  // three empty arrays, nTail 0
  CDBSubPATTERN p;
  EXPECT_EQ(Store(p), fresh.bytes);

  // Fields land where their names say: nP05, the last candle, the line, a variable.
  const ByteWriter w = PatternFile();
  Load(w.bytes, p);
  EXPECT_EQ(p.nP05 * 100 + p.nP10, 510);
  ASSERT_EQ(p.m_arrBong.GetSize(), 3);
  EXPECT_EQ(p.m_arrBong[2].nBong1 * 100 + p.m_arrBong[2].nBong4, 2124);
  ASSERT_EQ(p.m_arrLine.GetSize(), 1);
  EXPECT_EQ(p.m_arrLine[0].nLine, 5);
  ASSERT_EQ(p.m_arrVariable.GetSize(), 2);
  EXPECT_EQ(p.m_arrVariable[1].dValue, 1.5);
  EXPECT_EQ(Store(p), w.bytes);
}

TEST(PatternArchive, VersionZeroGoesFromP07ToP10) {
  ByteWriter v0;
  v0.Header(0).Ints({1, 2, 3, 4, 5, 6, 7, 10});  // nP10 follows nP07
  v0.Str(L"t3").Str(L"t4").Ints({0, 2, 70, 71, 0, -3});
  CDBSubPATTERN fresh;
  Load(v0.bytes, fresh);
  EXPECT_EQ(fresh.nP07, 7);
  EXPECT_EQ(fresh.nP08, 0);
  EXPECT_EQ(fresh.nP09, 1);
  EXPECT_EQ(fresh.nP10, 10);
  ASSERT_EQ(fresh.m_arrLine.GetSize(), 2);
  EXPECT_EQ(fresh.m_arrLine[1].nLine, 71);
  EXPECT_EQ(fresh.nTail, -3);

  CDBSubPATTERN used;
  used.nP08 = 80;
  used.nP09 = 90;
  Load(v0.bytes, used);
  EXPECT_EQ(used.nP08, 80);  // absent fields keep what the record held
  EXPECT_EQ(used.nP09, 90);
  EXPECT_EQ(Store(used)[0], 1);  // written back as version 1
}

TEST(PatternCopy, CopyDataBaseLeavesTheVariablesOut) {
  CDBSubPATTERN src;
  Load(PatternFile().bytes, src);
  // A destination's own variables survive; everything else is the source's.
  CDBSubPATTERN dst;
  CDBSubPATTERN_VAR own;
  own.strText = L"own";
  dst.m_arrVariable.Add(own);
  for (int i = 0; i < 5; ++i) dst.m_arrBong.Add(CDBSubPATTERN_BONG());
  dst.CopyDataBase(&src);
  ASSERT_EQ(dst.m_arrVariable.GetSize(), 1);
  EXPECT_EQ(dst.m_arrVariable[0].strText, L"own");
  src.m_arrVariable.RemoveAll();
  src.m_arrVariable.Add(own);
  EXPECT_EQ(Store(dst), Store(src));
}
