#include "chartcore/logic/signal_region_fill.h"

#include <gtest/gtest.h>

#include "logic/record_bytes.h"

using testing_records::ByteWriter;
using testing_records::Bytes;
using testing_records::Load;
using testing_records::Store;

TEST(SignalRegionFillArchive, FreshRecordsWriteExactBytes) {
  ByteWriter signal;
  signal.Header(0).Int(0).Int(1).Int(0).Dword(0x000000FF).Int(-1).Int(-1).Str(L"").Str(L"").Int(0).Int(-1);
  CDBSubSIGNAL s;
  EXPECT_EQ(Store(s), signal.bytes);
  EXPECT_EQ(signal.bytes.size(), 64u);  // header 24, six settings 24, two texts 8, count 4, tail 4

  ByteWriter region;
  region.Header(0).Int(0).Int(1).Int(0).Dword(0x0090EE90).Int(0).Int(1).Int(-1).Int(0);
  region.Str(L"").Str(L"").Int(0).Int(-1);
  CDBSubREGION r;
  EXPECT_EQ(Store(r), region.bytes);

  ByteWriter fill;
  fill.Header(1).Int(0).Int(-1).Int(1).Int(0).Int(4).Dword(0x0090EE90).Int(0).Int(1).Int(0);
  fill.Str(L"").Str(L"").Str(L"").Int(0).Int(-1);
  CDBSubFILL f;
  EXPECT_EQ(Store(f), fill.bytes);
}

TEST(SignalRegionFillArchive, SignalAndRegionIgnoreTheFileVersion) {
  for (int version : {0, 5, -1}) {
    SCOPED_TRACE(version);
    ByteWriter w;
    w.Header(version, L"\uB9E4\uC218", 0, 12.5, L"sig");  // 매수
    w.Int(1).Int(2).Int(3).Dword(0x123456).Int(5).Int(6).Str(L"CrossUp(C, MA)").Str(L"");
    w.Int(2).Str(L"a").Int(1).Double(1.5).Str(L"\uAE30\uAC04").Int(2).Double(-2.0);  // 기간
    w.Int(42);
    CDBSubSIGNAL s;
    Load(w.bytes, s);
    EXPECT_EQ(s.m_nVersion, 0);
    EXPECT_EQ(s.m_strText1, L"\uB9E4\uC218");
    EXPECT_EQ(s.m_nFlag, 0);
    EXPECT_EQ(s.clrS04, 0x123456u);
    EXPECT_EQ(s.nS06, 6);
    ASSERT_EQ(s.m_arrVariable.GetSize(), 2);
    EXPECT_EQ(s.m_arrVariable[1].strText, L"\uAE30\uAC04");
    EXPECT_EQ(s.m_arrVariable[1].dValue, -2.0);
    EXPECT_EQ(s.nTail, 42);
    // Written back with the class's own version 0.
    Bytes expected = w.bytes;
    expected[0] = expected[1] = expected[2] = expected[3] = 0;
    EXPECT_EQ(Store(s), expected);
  }

  ByteWriter region;
  region.Header(9).Int(1).Int(2).Int(3).Dword(4).Int(5).Int(6).Int(7).Int(8).Str(L"x").Str(L"y").Int(0).Int(-7);
  CDBSubREGION r;
  Load(region.bytes, r);
  EXPECT_EQ(r.nR08, 8);
  EXPECT_EQ(r.m_strText4, L"y");
  EXPECT_EQ(r.nTail, -7);  // read right after a count of 0
}

TEST(SignalRegionFillArchive, FillVersionZeroHasNoF02) {
  ByteWriter v0;
  v0.Header(0).Int(1).Int(3).Int(4).Int(5).Dword(6).Int(7).Int(8).Int(9).Str(L"a").Str(L"b").Str(L"c");
  v0.Int(1).Str(L"v").Int(1).Double(2.0).Int(10);
  CDBSubFILL f;
  f.nF02 = 55;  // reset to -1 by a version 0 file, used record or not
  Load(v0.bytes, f);
  EXPECT_EQ(f.nF01, 1);
  EXPECT_EQ(f.nF02, -1);
  EXPECT_EQ(f.nF03, 3);
  EXPECT_EQ(f.m_strText5, L"c");
  EXPECT_EQ(f.nTail, 10);

  ByteWriter v1;
  v1.Header(1).Int(1).Int(-1).Int(3).Int(4).Int(5).Dword(6).Int(7).Int(8).Int(9).Str(L"a").Str(L"b").Str(L"c");
  v1.Int(1).Str(L"v").Int(1).Double(2.0).Int(10);
  EXPECT_EQ(Store(f), v1.bytes);  // written back as version 1 with nF02

  // -1 as the file version is above 1 when compared unsigned: nF02 is read.
  Bytes minusOne = v1.bytes;
  minusOne[0] = minusOne[1] = minusOne[2] = minusOne[3] = 0xFF;
  const std::size_t f02 = 4 + 4 + 4 + 8 + 4 + 4;  // version, text 1, flag, value, text 2, nF01
  minusOne[f02] = 0x21;                            // nF02 = 0x21 (was -1)
  minusOne[f02 + 1] = minusOne[f02 + 2] = minusOne[f02 + 3] = 0;
  CDBSubFILL g;
  Load(minusOne, g);
  EXPECT_EQ(g.nF02, 0x21);
}

TEST(SignalRegionFillCopy, CopyDataBaseTakesEveryFieldAndTheVariables) {
  CDBSubREGION src;
  src.m_strText2 = L"r";
  src.nR05 = 50;
  src.clrR04 = 0x010203;
  src.nTail = 3;
  for (int i = 0; i < 3; ++i) {
    CDBSubREGION_VAR v;
    v.strText.Format(L"v%d", i);
    v.dValue = i;
    src.m_arrVariable.Add(v);
  }
  CDBSubREGION dst;
  for (int i = 0; i < 5; ++i) dst.m_arrVariable.Add(CDBSubREGION_VAR());
  dst.CopyDataBase(&src);
  ASSERT_EQ(dst.m_arrVariable.GetSize(), 3);
  EXPECT_EQ(dst.m_arrVariable[2].strText, L"v2");
  EXPECT_EQ(Store(dst), Store(src));

  CDBSubSIGNAL s1, s2;
  s1.nS03 = 9;
  s1.m_arrVariable.Add(CDBSubSIGNAL_VAR());
  s2.CopyDataBase(&s1);
  EXPECT_EQ(Store(s2), Store(s1));
  CDBSubFILL f1, f2;
  f1.nF02 = 2;
  f1.m_strText5 = L"five";
  f2.CopyDataBase(&f1);
  EXPECT_EQ(Store(f2), Store(f1));
}
