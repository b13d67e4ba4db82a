#include "chartcore/logic/signal_region_fill.h"

#include <gtest/gtest.h>

#include "logic/record_bytes.h"

using testing_records::ByteWriter;
using testing_records::Bytes;
using testing_records::Load;
using testing_records::Store;
using testing_records::WithVersion;

TEST(SignalRegionFillArchive, FreshRecordsWriteExactBytes) {
  ByteWriter signal;
  signal.Header(0).Ints({0, 1, 0}).Dword(0x000000FF).Ints({-1, -1}).Str(L"").Str(L"").Ints({0, -1});
  CDBSubSIGNAL s;
  EXPECT_EQ(Store(s), signal.bytes);
  EXPECT_EQ(signal.bytes.size(), 64u);  // header 24, six settings 24, two texts 8, count 4, tail 4

  ByteWriter region;
  region.Header(0).Ints({0, 1, 0}).Dword(0x0090EE90).Ints({0, 1, -1, 0}).Str(L"").Str(L"").Ints({0, -1});
  CDBSubREGION r;
  EXPECT_EQ(Store(r), region.bytes);

  ByteWriter fill;
  fill.Header(1).Ints({0, -1, 1, 0, 4}).Dword(0x0090EE90).Ints({0, 1, 0}).Str(L"").Str(L"").Str(L"").Ints({0, -1});
  CDBSubFILL f;
  EXPECT_EQ(Store(f), fill.bytes);
}

TEST(SignalRegionFillArchive, SignalAndRegionIgnoreTheFileVersion) {
  ByteWriter w;
  w.Header(0, L"\uB9E4\uC218", 0, 12.5, L"sig");  // 매수
  w.Ints({1, 2, 3}).Dword(0x123456).Ints({5, 6}).Str(L"CrossUp(C, MA)").Str(L"");
  w.Int(2).Var(L"a", 1, 1.5).Var(L"\uAE30\uAC04", 2, -2.0).Int(42);  // 기간
  for (int version : {0, 5, -1}) {
    SCOPED_TRACE(version);
    CDBSubSIGNAL s;
    Load(WithVersion(w.bytes, version), s);
    EXPECT_EQ(s.m_nVersion, 0);
    EXPECT_EQ(s.m_strText1, L"\uB9E4\uC218");
    EXPECT_EQ(s.clrS04, 0x123456u);
    ASSERT_EQ(s.m_arrVariable.GetSize(), 2);
    EXPECT_EQ(s.m_arrVariable[1].strText, L"\uAE30\uAC04");
    EXPECT_EQ(s.nTail, 42);
    EXPECT_EQ(Store(s), w.bytes);  // written back with the class's own version 0
    CDBSubSIGNAL copy;
    copy.CopyDataBase(&s);
    EXPECT_EQ(Store(copy), w.bytes);
  }

  ByteWriter region;
  region.Header(9).Ints({1, 2, 3, 4, 5, 6, 7, 8}).Str(L"x").Str(L"y").Ints({0, -7});
  CDBSubREGION r;
  Load(region.bytes, r);
  EXPECT_EQ(r.nR08, 8);
  EXPECT_EQ(r.m_strText4, L"y");
  EXPECT_EQ(r.nTail, -7);  // read right after a count of 0
  CDBSubREGION copy;
  copy.CopyDataBase(&r);
  EXPECT_EQ(Store(copy), WithVersion(region.bytes, 0));
}

TEST(SignalRegionFillArchive, FillVersionZeroHasNoF02AndTheGateIsUnsigned) {
  ByteWriter v0;
  v0.Header(0).Ints({1, 3, 4, 5, 6, 7, 8, 9}).Str(L"a").Str(L"b").Str(L"c").Int(1).Var(L"v", 1, 2.0).Int(10);
  CDBSubFILL f;
  f.nF02 = 55;  // reset to -1 by a version 0 file, used record or not
  Load(v0.bytes, f);
  EXPECT_EQ(f.nF01 * 10 + f.nF03, 13);
  EXPECT_EQ(f.nF02, -1);
  EXPECT_EQ(f.m_strText5, L"c");
  EXPECT_EQ(f.nTail, 10);

  ByteWriter v1;
  v1.Header(1).Ints({1, -1, 3, 4, 5, 6, 7, 8, 9}).Str(L"a").Str(L"b").Str(L"c").Int(1).Var(L"v", 1, 2.0).Int(10);
  EXPECT_EQ(Store(f), v1.bytes);  // written back as version 1 with nF02
  CDBSubFILL copy;
  copy.CopyDataBase(&f);
  EXPECT_EQ(Store(copy), v1.bytes);

  // -1 as the file version is above 1 when compared unsigned: nF02 is read.
  Bytes minusOne = WithVersion(v1.bytes, -1);
  const std::size_t f02 = 4 + 4 + 4 + 8 + 4 + 4;  // version, text 1, flag, value, text 2, nF01
  minusOne[f02] = 0x21;                            // nF02 = 0x21 (was -1)
  minusOne[f02 + 1] = minusOne[f02 + 2] = minusOne[f02 + 3] = 0;
  CDBSubFILL g;
  Load(minusOne, g);
  EXPECT_EQ(g.nF02, 0x21);
}
