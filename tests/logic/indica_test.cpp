#include "chartcore/logic/indica.h"

#include <climits>
#include <tuple>

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
  w.Ints({r.nA05, r.nA06, r.nA07});
  if (version >= 5) w.Dword(r.clrA08).Dword(r.clrA09);
  w.Int(r.nA10).Int(r.nA11);
  if (version >= 6) w.Int(r.nA12);
  w.Str(r.m_strText3.str()).Int(static_cast<int>(r.m_arrElement.GetSize()));
  for (const CDBSubINDICA_ELM& e : r.m_arrElement) {
    w.Str(e.strE00.str()).Ints({e.nE01, e.nE02, e.nE03, e.nE04, e.nE05, e.nE06}).Str(e.strE11.str());
    if (version >= 3) w.Int(e.nE07).Dword(e.clrE08).Dword(e.clrE09).Int(e.nE12).Int(e.nE13);
    if (version >= 7) w.Int(e.nE10);
  }
  w.Ints({r.nB01, r.nB02, r.nB03, r.nB04, r.nB05, r.nB06, r.nB07});
  if (version >= 2) w.Dword(r.clrB08).Dword(r.clrB09);
  if (version >= 3) w.Int(r.nB10).Dword(r.clrB11).Dword(r.clrB12).Int(r.nB14).Int(r.nB15);
  if (version >= 7) w.Int(r.nB13);
  w.Int(static_cast<int>(r.m_arrVariable.GetSize()));
  for (const CDBSubINDICA_VAR& v : r.m_arrVariable) w.Var(v.strText.str(), v.nValue, v.dValue);
  w.Int(static_cast<int>(r.m_arrBase.GetSize()));
  for (const CDBSubINDICA_BASE& b : r.m_arrBase) {
    w.Int(b.nBase0).Double(b.dBase1).Ints({b.nBase2, b.nBase3, b.nBase4, b.nBase5});
  }
  return w.Int(r.nTail).bytes;
}

// An indicator whose every field differs from its default and from the
// old-file values, so a field read, kept or reset is told apart; Korean
// texts and several elements per array.
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

TEST(IndicaArchive, ExactBytesFreshAndFilled) {
  ByteWriter w;
  w.Header(7);                                                     // version 7, empty texts, flag 1, no value
  w.Ints({0, -1, -1, 4, -1, 1, 0});                                // nA01 … nA07
  w.Dword(0x000000FF).Dword(0x00FF0000).Ints({-1, 0, 0});          // red, blue, nA10 … nA12
  w.Str(L"").Int(0);                                               // text 3, no elements
  w.Ints({5, 0, 5, 1, 2, 0, 0});                                   // nB01 … nB07
  w.Dword(0x005BADFF).Dword(0x00C09E7D);                           // RGB(255,173,91), RGB(125,158,192)
  w.Int(0).Dword(0x00FF0000).Dword(0x000000FF).Ints({1, 0, 0});    // nB10, blue, red, nB14, nB15, nB13
  w.Ints({0, 0, 0});                                               // no variables, no bases, nTail 0
  CDBSubINDICA fresh;
  EXPECT_EQ(Store(fresh), w.bytes);
  EXPECT_EQ(w.bytes.size(), 152u);  // header 24 + A 48 + text 4 + count 4 + B 60 + counts 8 + tail 4

  // strE11 right after nE06, nE10 last in an element, nB13 after nB15 (read
  // back: IndicaVersions); a copy takes every field.
  CDBSubINDICA r;
  FillDistinct(r);
  const Bytes filled = IndicaFile(r, 7);
  EXPECT_EQ(Store(r), filled);
  CDBSubINDICA copy;
  copy.CopyDataBase(&r);
  EXPECT_EQ(Store(copy), filled);
}

TEST(IndicaArchive, LongStringsUseTheLengthEscapes) {
  CDBSubINDICA r;
  r.m_strText1 = CString(L'\uAC00', 300);      // 300 < 0xFFFE: FF then a 16-bit length
  r.m_strText2 = CString(L'x', 70000);         // >= 0xFFFE: FF FFFF then a 32-bit length
  r.m_strText3 = CString(L'y', 254);           // < 0xFF: one length byte
  const Bytes bytes = Store(r);
  EXPECT_EQ(Bytes(bytes.begin() + 4, bytes.begin() + 12), (Bytes{0xFF, 0xFE, 0xFF, 0xFF, 0x2C, 0x01, 0x00, 0xAC}));
  const std::size_t text2 = 4 + (6 + 600) + 4 + 8;
  EXPECT_EQ(Bytes(bytes.begin() + text2, bytes.begin() + text2 + 12),
            (Bytes{0xFF, 0xFE, 0xFF, 0xFF, 0xFF, 0xFF, 0x70, 0x11, 0x01, 0x00, 'x', 0}));
  EXPECT_EQ(bytes, IndicaFile(r, 7));
  EXPECT_EQ(testing_records::Reloaded<CDBSubINDICA>(bytes), bytes);
}

TEST(IndicaVersions, EachGateReadsKeepsOrResetsAndComparesUnsigned) {
  CDBSubINDICA src;
  FillDistinct(src);
  for (int v = 0; v <= 7; ++v) {
    SCOPED_TRACE(v);
    CDBSubINDICA r;
    MakeDirty(r);
    Load(IndicaFile(src, v), r);
    // Always present.
    EXPECT_EQ(r.nA10 + r.nB07 + r.nTail, 20 + 207 + 999);
    EXPECT_EQ(r.m_strText3, L"MA(C, Period)");
    EXPECT_EQ(r.m_nVersion, 7);  // the record keeps its own version
    // Kept when absent.
    EXPECT_EQ(r.nA04, v >= 1 ? 14 : -704);
    EXPECT_EQ(r.clrB08, v >= 2 ? 0x208u : 0xB08u);
    EXPECT_EQ(r.clrB09, v >= 2 ? 0x209u : 0xB09u);
    EXPECT_EQ(r.nA03, v >= 4 ? 13 : -703);
    EXPECT_EQ(r.clrA08, v >= 5 ? 0x080808u : 0xA08u);
    EXPECT_EQ(r.clrA09, v >= 5 ? 0x090909u : 0xA09u);
    EXPECT_EQ(r.nA12, v >= 6 ? 22 : -712);
    // Reset to the old-file values when absent, even on a used record: the
    // version 3 group of the record and of each element reads 0, blue, red,
    // 1, 0 from older files; the version 7 field reads 0.
    const auto group = [v](int n, COLORREF up, COLORREF down, int flag, int last) {
      const auto old = std::make_tuple(0, COLORREF{0x00FF0000}, COLORREF{0x000000FF}, 1, 0);
      return v >= 3 ? std::make_tuple(n, up, down, flag, last) : old;
    };
    EXPECT_EQ(std::make_tuple(r.nB10, r.clrB11, r.clrB12, r.nB14, r.nB15), group(210, 0x211, 0x212, 214, 215));
    EXPECT_EQ(r.nB13, v >= 7 ? 213 : 0);
    ASSERT_EQ(r.m_arrElement.GetSize(), 2);
    for (const CDBSubINDICA_ELM& e : r.m_arrElement) {
      EXPECT_EQ(e.strE11, L"e11");
      EXPECT_EQ(std::make_tuple(e.nE07, e.clrE08, e.clrE09, e.nE12, e.nE13), group(107, 0x108, 0x109, 112, 113));
      EXPECT_EQ(e.nE10, v >= 7 ? 110 : 0);
    }
    EXPECT_EQ(r.m_arrVariable.GetSize() + r.m_arrBase.GetSize(), 5);
    // Written back: version 7 with every field.
    EXPECT_EQ(Store(r), IndicaFile(r, 7));
  }
  // -1, INT_MIN and a future version are all at least 7 when unsigned: every
  // field is read.
  for (int v : {-1, INT_MIN, 8, 1000}) {
    SCOPED_TRACE(v);
    CDBSubINDICA r;
    MakeDirty(r);
    Load(testing_records::WithVersion(IndicaFile(src, 7), v), r);
    EXPECT_EQ(Store(r), IndicaFile(src, 7));
  }
}

TEST(IndicaArchive, CountsOfZeroAndBelowLeaveArraysEmpty) {
  for (int count : {0, -1, INT_MIN}) {
    SCOPED_TRACE(count);
    ByteWriter w;
    w.Header(7).Ints({0, -1, -1, 4, -1, 1, 0, 0, 0, -1, 0, 0}).Str(L"").Int(count);  // elements
    w.Ints({41, 0, 5, 1, 2, 0, 0, 0, 0, 0, 0, 0, 1, 0, 0});
    w.Ints({count, count, 77});  // variables, bases, nTail
    CDBSubINDICA r;
    FillDistinct(r);  // arrays that the read must empty
    Load(w.bytes, r);
    EXPECT_EQ(r.m_arrElement.GetSize() + r.m_arrVariable.GetSize() + r.m_arrBase.GetSize(), 0);
    EXPECT_EQ(r.nB01, 41);  // reading went on right after the count
    EXPECT_EQ(r.nTail, 77);
  }
}
