#include "chartcore/logic/indica.h"

#include <climits>

#include <gtest/gtest.h>

#include "logic/record_bytes.h"

using testing_records::ByteWriter;
using testing_records::Bytes;
using testing_records::Load;
using testing_records::Store;

namespace {

// The indicator file as the format lays it out, holding r's values, with
// only the fields a file of `version` has (gates per field, as the format
// history added them).
Bytes IndicaFile(const CDBSubINDICA& r, int version) {
  ByteWriter w;
  w.Header(version, r.m_strText1.str(), r.m_nFlag, r.m_dValue, r.m_strText2.str());
  w.Int(r.nA01).Int(r.nA02);
  if (version >= 4) w.Int(r.nA03);
  if (version >= 1) w.Int(r.nA04);
  w.Int(r.nA05).Int(r.nA06).Int(r.nA07);
  if (version >= 5) w.Dword(r.clrA08).Dword(r.clrA09);
  w.Int(r.nA10).Int(r.nA11);
  if (version >= 6) w.Int(r.nA12);
  w.Str(r.m_strText3.str());
  w.Int(static_cast<int>(r.m_arrElement.GetSize()));
  for (const CDBSubINDICA_ELM& e : r.m_arrElement) {
    w.Str(e.strE00.str()).Int(e.nE01).Int(e.nE02).Int(e.nE03).Int(e.nE04).Int(e.nE05).Int(e.nE06);
    w.Str(e.strE11.str());
    if (version >= 3) w.Int(e.nE07).Dword(e.clrE08).Dword(e.clrE09).Int(e.nE12).Int(e.nE13);
    if (version >= 7) w.Int(e.nE10);
  }
  w.Int(r.nB01).Int(r.nB02).Int(r.nB03).Int(r.nB04).Int(r.nB05).Int(r.nB06).Int(r.nB07);
  if (version >= 2) w.Dword(r.clrB08).Dword(r.clrB09);
  if (version >= 3) w.Int(r.nB10).Dword(r.clrB11).Dword(r.clrB12).Int(r.nB14).Int(r.nB15);
  if (version >= 7) w.Int(r.nB13);
  w.Int(static_cast<int>(r.m_arrVariable.GetSize()));
  for (const CDBSubINDICA_VAR& v : r.m_arrVariable) w.Str(v.strText.str()).Int(v.nValue).Double(v.dValue);
  w.Int(static_cast<int>(r.m_arrBase.GetSize()));
  for (const CDBSubINDICA_BASE& b : r.m_arrBase) {
    w.Int(b.nBase0).Double(b.dBase1).Int(b.nBase2).Int(b.nBase3).Int(b.nBase4).Int(b.nBase5);
  }
  w.Int(r.nTail);
  return w.bytes;
}

// An indicator whose every field differs from its default and from the
// old-file values, so a field read, kept or reset is told apart.
void FillDistinct(CDBSubINDICA& r) {
  r.m_strText1 = L"\uC774\uB3D9\uD3C9\uADE0";  // 이동평균
  r.m_nFlag = 3;
  r.m_dValue = 2.5;
  r.m_strText2 = L"t2";
  r.nA01 = 11; r.nA02 = 12; r.nA03 = 13; r.nA04 = 14; r.nA05 = 15; r.nA06 = 16; r.nA07 = 17;
  r.clrA08 = 0x080808; r.clrA09 = 0x090909; r.nA10 = 20; r.nA11 = 21; r.nA12 = 22;
  r.m_strText3 = L"MA(C, Period)";
  for (int i = 0; i < 2; ++i) {
    CDBSubINDICA_ELM e;
    e.strE00 = i == 0 ? L"\uB2E8\uAE30" : L"long";  // 단기
    e.nE01 = 101 + i; e.nE02 = 102; e.nE03 = 103; e.nE04 = 104; e.nE05 = 105; e.nE06 = 106;
    e.nE07 = 107; e.clrE08 = 0x108; e.clrE09 = 0x109; e.nE10 = 110; e.strE11 = L"e11"; e.nE12 = 112; e.nE13 = 113;
    r.m_arrElement.Add(e);
  }
  r.nB01 = 201; r.nB02 = 202; r.nB03 = 203; r.nB04 = 204; r.nB05 = 205; r.nB06 = 206; r.nB07 = 207;
  r.clrB08 = 0x208; r.clrB09 = 0x209; r.nB10 = 210; r.clrB11 = 0x211; r.clrB12 = 0x212;
  r.nB13 = 213; r.nB14 = 214; r.nB15 = 215;
  for (int i = 0; i < 3; ++i) {
    CDBSubINDICA_VAR v;
    v.strText = i == 0 ? L"Period" : L"\uAE30\uAC04";  // 기간
    v.nValue = i;
    v.dValue = 10.5 * (i + 1);
    r.m_arrVariable.Add(v);
  }
  for (int i = 0; i < 2; ++i) {
    CDBSubINDICA_BASE b;
    b.nBase0 = 300 + i; b.dBase1 = -0.25; b.nBase2 = 302; b.nBase3 = 303; b.nBase4 = 304; b.nBase5 = 305;
    r.m_arrBase.Add(b);
  }
  r.nTail = 999;
}

// The fields a reader keeps from before the read hold these on the dirty
// record (the reader must not touch them for old files).
void MakeDirty(CDBSubINDICA& r) {
  r.nA03 = -703; r.nA04 = -704; r.clrA08 = 0xA08; r.clrA09 = 0xA09; r.nA12 = -712;
  r.clrB08 = 0xB08; r.clrB09 = 0xB09;
  r.nB10 = -810; r.clrB11 = 0xB11; r.clrB12 = 0xB12; r.nB13 = -813; r.nB14 = -814; r.nB15 = -815;
}

}  // namespace

TEST(IndicaArchive, FreshRecordWritesExactBytes) {
  CDBSubINDICA fresh;
  ByteWriter w;
  w.Header(7);                                                     // version 7, empty texts, flag 1, no value
  w.Int(0).Int(-1).Int(-1).Int(4).Int(-1).Int(1).Int(0);           // nA01 … nA07
  w.Dword(0x000000FF).Dword(0x00FF0000).Int(-1).Int(0).Int(0);     // red, blue, nA10 … nA12
  w.Str(L"").Int(0);                                               // text 3, no elements
  w.Int(5).Int(0).Int(5).Int(1).Int(2).Int(0).Int(0);              // nB01 … nB07
  w.Dword(0x005BADFF).Dword(0x00C09E7D);                           // RGB(255,173,91), RGB(125,158,192)
  w.Int(0).Dword(0x00FF0000).Dword(0x000000FF).Int(1).Int(0).Int(0);  // nB10, blue, red, nB14, nB15, nB13
  w.Int(0).Int(0).Int(0);                                          // no variables, no bases, nTail 0
  EXPECT_EQ(Store(fresh), w.bytes);
  EXPECT_EQ(w.bytes.size(), 152u);  // header 24 + A 48 + text 4 + count 4 + B 60 + counts 8 + tail 4

  // Written, read back and written again: the same bytes.
  CDBSubINDICA back;
  Load(w.bytes, back);
  EXPECT_EQ(Store(back), w.bytes);
  EXPECT_EQ(back.m_nVersion, 7);
  EXPECT_EQ(back.m_dValue, 1.7976931348623157e308);
}

TEST(IndicaArchive, ElementsVariablesAndBasesInFormatOrder) {
  CDBSubINDICA r;
  FillDistinct(r);
  // strE11 right after nE06, nE10 last in an element; nB13 after nB15.
  ByteWriter e0;
  e0.Str(L"\uB2E8\uAE30").Int(101).Int(102).Int(103).Int(104).Int(105).Int(106).Str(L"e11");
  e0.Int(107).Dword(0x108).Dword(0x109).Int(112).Int(113).Int(110);
  const Bytes written = Store(r);
  const Bytes hand = IndicaFile(r, 7);
  EXPECT_EQ(written, hand);
  // The first element starts after the header (version, a 4-character
  // text, flag, value, a 2-character text), the A block 48, text 3
  // "MA(C, Period)" 4+26 and the count 4.
  const std::size_t firstElement = 4 + (4 + 8) + 4 + 8 + (4 + 4) + 48 + (4 + 26) + 4;
  ASSERT_GT(written.size(), firstElement + e0.bytes.size());
  EXPECT_EQ(Bytes(written.begin() + firstElement, written.begin() + firstElement + e0.bytes.size()), e0.bytes);

  CDBSubINDICA back;
  Load(written, back);
  ASSERT_EQ(back.m_arrElement.GetSize(), 2);
  ASSERT_EQ(back.m_arrVariable.GetSize(), 3);
  ASSERT_EQ(back.m_arrBase.GetSize(), 2);
  EXPECT_EQ(back.m_arrElement[1].strE00, L"long");
  EXPECT_EQ(back.m_arrElement[1].nE01, 102);
  EXPECT_EQ(back.m_arrVariable[2].dValue, 31.5);
  EXPECT_EQ(back.m_arrBase[1].nBase0, 301);
  EXPECT_EQ(back.m_strText1, L"\uC774\uB3D9\uD3C9\uADE0");
  EXPECT_EQ(Store(back), written);
}

TEST(IndicaArchive, LongStringsUseTheLengthEscapes) {
  CDBSubINDICA r;
  r.m_strText1 = CString(L'\uAC00', 300);      // 300 < 0xFFFE: FF then a 16-bit length
  r.m_strText2 = CString(L'x', 70000);         // >= 0xFFFE: FF FFFF then a 32-bit length
  r.m_strText3 = CString(L'y', 254);           // < 0xFF: one length byte
  const Bytes bytes = Store(r);
  const Bytes text1Start = {0xFF, 0xFE, 0xFF, 0xFF, 0x2C, 0x01, 0x00, 0xAC};
  EXPECT_EQ(Bytes(bytes.begin() + 4, bytes.begin() + 12), text1Start);
  const std::size_t text2 = 4 + (6 + 600) + 4 + 8;
  const Bytes text2Start = {0xFF, 0xFE, 0xFF, 0xFF, 0xFF, 0xFF, 0x70, 0x11, 0x01, 0x00, 'x', 0};
  EXPECT_EQ(Bytes(bytes.begin() + text2, bytes.begin() + text2 + 12), text2Start);
  EXPECT_EQ(bytes, IndicaFile(r, 7));

  CDBSubINDICA back;
  Load(bytes, back);
  EXPECT_EQ(back.m_strText1.GetLength(), 300);
  EXPECT_EQ(back.m_strText2.GetLength(), 70000);
  EXPECT_EQ(back.m_strText3, r.m_strText3);
}

TEST(IndicaOldVersions, EachGateReadsKeepsOrResetsItsFields) {
  CDBSubINDICA src;
  FillDistinct(src);
  for (int v = 0; v <= 7; ++v) {
    SCOPED_TRACE(v);
    CDBSubINDICA r;
    MakeDirty(r);
    Load(IndicaFile(src, v), r);
    // Always present.
    EXPECT_EQ(r.nA01, 11);
    EXPECT_EQ(r.nA10, 20);
    EXPECT_EQ(r.m_strText3, L"MA(C, Period)");
    EXPECT_EQ(r.nB07, 207);
    EXPECT_EQ(r.nTail, 999);
    EXPECT_EQ(r.m_nVersion, 7);  // the record keeps its own version
    // Kept when absent.
    EXPECT_EQ(r.nA04, v >= 1 ? 14 : -704);
    EXPECT_EQ(r.clrB08, v >= 2 ? 0x208u : 0xB08u);
    EXPECT_EQ(r.clrB09, v >= 2 ? 0x209u : 0xB09u);
    EXPECT_EQ(r.nA03, v >= 4 ? 13 : -703);
    EXPECT_EQ(r.clrA08, v >= 5 ? 0x080808u : 0xA08u);
    EXPECT_EQ(r.clrA09, v >= 5 ? 0x090909u : 0xA09u);
    EXPECT_EQ(r.nA12, v >= 6 ? 22 : -712);
    // Reset to the old-file values when absent, even on a used record.
    EXPECT_EQ(r.nB10, v >= 3 ? 210 : 0);
    EXPECT_EQ(r.clrB11, v >= 3 ? 0x211u : 0x00FF0000u);
    EXPECT_EQ(r.clrB12, v >= 3 ? 0x212u : 0x000000FFu);
    EXPECT_EQ(r.nB14, v >= 3 ? 214 : 1);
    EXPECT_EQ(r.nB15, v >= 3 ? 215 : 0);
    EXPECT_EQ(r.nB13, v >= 7 ? 213 : 0);
    ASSERT_EQ(r.m_arrElement.GetSize(), 2);
    for (const CDBSubINDICA_ELM& e : r.m_arrElement) {
      EXPECT_EQ(e.nE06, 106);
      EXPECT_EQ(e.strE11, L"e11");
      EXPECT_EQ(e.nE07, v >= 3 ? 107 : 0);
      EXPECT_EQ(e.clrE08, v >= 3 ? 0x108u : 0x00FF0000u);
      EXPECT_EQ(e.clrE09, v >= 3 ? 0x109u : 0x000000FFu);
      EXPECT_EQ(e.nE12, v >= 3 ? 112 : 1);
      EXPECT_EQ(e.nE13, v >= 3 ? 113 : 0);
      EXPECT_EQ(e.nE10, v >= 7 ? 110 : 0);
    }
    EXPECT_EQ(r.m_arrVariable.GetSize(), 3);
    EXPECT_EQ(r.m_arrBase.GetSize(), 2);
    // Written back: version 7 with every field.
    const Bytes again = Store(r);
    EXPECT_EQ(again, IndicaFile(r, 7));
    EXPECT_EQ(again[0], 7);
  }
}

TEST(IndicaOldVersions, VersionZeroIntoFreshRecordGivesDefaults) {
  CDBSubINDICA src;
  FillDistinct(src);
  CDBSubINDICA r;
  Load(IndicaFile(src, 0), r);
  EXPECT_EQ(r.nA04, 4);
  EXPECT_EQ(r.nA03, -1);
  EXPECT_EQ(r.clrA08, 0x000000FFu);
  EXPECT_EQ(r.clrA09, 0x00FF0000u);
  EXPECT_EQ(r.nA12, 0);
  EXPECT_EQ(r.clrB08, 0x005BADFFu);
  EXPECT_EQ(r.clrB09, 0x00C09E7Du);
}

TEST(IndicaOldVersions, VersionGateComparesUnsigned) {
  CDBSubINDICA src;
  FillDistinct(src);
  // -1, INT_MIN and a future version are all at least 7 when unsigned: every
  // field is read.
  for (int v : {-1, INT_MIN, 8, 1000}) {
    SCOPED_TRACE(v);
    Bytes file = IndicaFile(src, 7);
    ByteWriter version;
    version.Int(v);
    std::copy(version.bytes.begin(), version.bytes.end(), file.begin());
    CDBSubINDICA r;
    MakeDirty(r);
    Load(file, r);
    EXPECT_EQ(Store(r), IndicaFile(src, 7));
  }
}

TEST(IndicaArchive, CountsOfZeroAndBelowLeaveArraysEmpty) {
  for (int count : {0, -1, INT_MIN}) {
    SCOPED_TRACE(count);
    ByteWriter w;
    w.Header(7).Int(0).Int(-1).Int(-1).Int(4).Int(-1).Int(1).Int(0).Dword(0).Dword(0).Int(-1).Int(0).Int(0);
    w.Str(L"").Int(count);                                       // elements
    w.Int(41).Int(0).Int(5).Int(1).Int(2).Int(0).Int(0).Dword(0).Dword(0);
    w.Int(0).Dword(0).Dword(0).Int(1).Int(0).Int(0);
    w.Int(count).Int(count).Int(77);                            // variables, bases, nTail
    CDBSubINDICA r;
    FillDistinct(r);  // arrays that the read must empty
    Load(w.bytes, r);
    EXPECT_EQ(r.m_arrElement.GetSize(), 0);
    EXPECT_EQ(r.m_arrVariable.GetSize(), 0);
    EXPECT_EQ(r.m_arrBase.GetSize(), 0);
    EXPECT_EQ(r.nB01, 41);  // reading went on right after the count
    EXPECT_EQ(r.nTail, 77);
  }
}

TEST(IndicaCopy, CopyDataBaseReplacesArraysAndCopiesEveryField) {
  CDBSubINDICA src;
  FillDistinct(src);
  src.m_nVersion = 5;  // the version is copied like any header field
  CDBSubINDICA dst;
  for (int i = 0; i < 5; ++i) {
    dst.m_arrElement.Add(CDBSubINDICA_ELM());
    dst.m_arrVariable.Add(CDBSubINDICA_VAR());
    dst.m_arrBase.Add(CDBSubINDICA_BASE());
  }
  dst.CopyDataBase(&src);
  EXPECT_EQ(dst.m_nVersion, 5);
  EXPECT_EQ(dst.m_arrElement.GetSize(), 2);  // five replaced by the source's two
  EXPECT_EQ(dst.m_arrVariable.GetSize(), 3);
  EXPECT_EQ(dst.m_arrBase.GetSize(), 2);
  EXPECT_EQ(Store(dst), Store(src));

  // A null source and the record itself leave it as it is.
  const Bytes before = Store(dst);
  dst.CopyDataBase(nullptr);
  dst.CopyDataBase(&dst);
  EXPECT_EQ(Store(dst), before);
}
