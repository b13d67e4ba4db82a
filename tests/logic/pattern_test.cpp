#include "chartcore/logic/pattern.h"

#include <gtest/gtest.h>

#include "logic/record_bytes.h"

using testing_records::ByteWriter;
using testing_records::Bytes;
using testing_records::Load;
using testing_records::Store;

namespace {

// Three candles, no lines, two variables.
void FillPattern(CDBSubPATTERN& p) {
  p.nP01 = 1; p.nP05 = 5; p.nP08 = 8; p.nP09 = 9; p.nP10 = 10;
  p.m_strText3 = L"\uC0C1\uC2B9\uC7A5\uC545";  // 상승장악
  for (int i = 0; i < 3; ++i) {
    CDBSubPATTERN_BONG b;
    b.nBong1 = 10 * i + 1; b.nBong2 = 10 * i + 2; b.nBong3 = 10 * i + 3; b.nBong4 = 10 * i + 4;
    p.m_arrBong.Add(b);
  }
  for (int i = 0; i < 2; ++i) {
    CDBSubPATTERN_VAR v;
    v.strText = i == 0 ? L"a" : L"b";
    v.nValue = i;
    v.dValue = 0.5 + i;
    p.m_arrVariable.Add(v);
  }
  p.nTail = 4;
}

}  // namespace

TEST(PatternArchive, FreshAndFilledRecordsWriteExactBytes) {
  ByteWriter fresh;
  fresh.Header(1).Int(0).Int(-1).Int(0).Int(1).Int(0).Int(-1).Int(-1).Int(0).Int(1).Int(0);
  fresh.Str(L"").Str(L"").Int(0).Int(0).Int(0).Int(0);  // three empty arrays, nTail 0
  CDBSubPATTERN p;
  EXPECT_EQ(Store(p), fresh.bytes);

  FillPattern(p);
  ByteWriter w;
  w.Header(1).Int(1).Int(-1).Int(0).Int(1).Int(5).Int(-1).Int(-1).Int(8).Int(9).Int(10);
  w.Str(L"\uC0C1\uC2B9\uC7A5\uC545").Str(L"");
  w.Int(3).Int(1).Int(2).Int(3).Int(4).Int(11).Int(12).Int(13).Int(14).Int(21).Int(22).Int(23).Int(24);
  w.Int(0);                                                        // no lines
  w.Int(2).Str(L"a").Int(0).Double(0.5).Str(L"b").Int(1).Double(1.5);
  w.Int(4);
  EXPECT_EQ(Store(p), w.bytes);

  CDBSubPATTERN back;
  Load(w.bytes, back);
  EXPECT_EQ(back.m_arrBong.GetSize(), 3);
  EXPECT_EQ(back.m_arrBong[2].nBong4, 24);
  EXPECT_EQ(back.m_arrLine.GetSize(), 0);
  EXPECT_EQ(back.m_arrVariable[1].dValue, 1.5);
  EXPECT_EQ(Store(back), w.bytes);
}

TEST(PatternArchive, VersionZeroGoesFromP07ToP10) {
  ByteWriter v0;
  v0.Header(0).Int(1).Int(2).Int(3).Int(4).Int(5).Int(6).Int(7).Int(10);  // nP10 follows nP07
  v0.Str(L"t3").Str(L"t4").Int(0).Int(2).Int(70).Int(71).Int(0).Int(-3);
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
  FillPattern(src);
  CDBSubPATTERN_LINE line;
  line.nLine = 5;
  src.m_arrLine.Add(line);

  CDBSubPATTERN fresh;
  fresh.CopyDataBase(&src);
  EXPECT_EQ(fresh.m_arrVariable.GetSize(), 0);  // the source's two are not copied
  EXPECT_EQ(fresh.m_arrBong.GetSize(), 3);
  EXPECT_EQ(fresh.m_arrBong[1].nBong2, 12);
  ASSERT_EQ(fresh.m_arrLine.GetSize(), 1);
  EXPECT_EQ(fresh.m_arrLine[0].nLine, 5);
  EXPECT_EQ(fresh.m_strText3, src.m_strText3);
  EXPECT_EQ(fresh.nP09, 9);
  EXPECT_EQ(fresh.nTail, 4);

  // A destination's own variables survive; its candles are replaced.
  CDBSubPATTERN dst;
  CDBSubPATTERN_VAR own;
  own.strText = L"own";
  dst.m_arrVariable.Add(own);
  for (int i = 0; i < 5; ++i) dst.m_arrBong.Add(CDBSubPATTERN_BONG());
  dst.CopyDataBase(&src);
  ASSERT_EQ(dst.m_arrVariable.GetSize(), 1);
  EXPECT_EQ(dst.m_arrVariable[0].strText, L"own");
  EXPECT_EQ(dst.m_arrBong.GetSize(), 3);
}
