// The seven definition record kinds through one table (bytes, older files,
// truncation, copies, object streams), then the indicator's format history.
#include "chartcore/logic/definition_record.h"

#include <climits>
#include <memory>
#include <tuple>
#include <type_traits>

#include <gtest/gtest.h>

#include "chartcore/logic/funct.h"
#include "chartcore/logic/indica.h"
#include "chartcore/logic/optimize.h"
#include "chartcore/logic/pattern.h"
#include "chartcore/logic/record_file.h"
#include "chartcore/logic/signal_region_fill.h"
#include "logic/record_bytes.h"

using namespace testing_records;

// Fill: every field of the kind off its default and off the old-file values,
// one more element in each array.
void Fill(CDBSubFUNCT& r) { r.nU01 = 2; r.m_strText3 = L"Value = (H + L) / 2;"; r.m_strText4 = L"t4"; }
void Fill(CDBSubINDICA& r) {
  r.nA01 = 11; r.nA02 = 12; r.nA03 = 13; r.nA04 = 14; r.nA05 = 15; r.nA06 = 16; r.nA07 = 17;
  r.clrA08 = 0x080808; r.clrA09 = 0x090909; r.nA10 = 20; r.nA11 = 21; r.nA12 = 22; r.m_strText3 = L"MA(C, Period)";
  r.m_arrElement.Add({L"\uB2E8\uAE30", 101, 102, 103, 104, 105, 106, 107, 0x108, 0x109, 110, L"e11", 112, 113});
  r.nB01 = 201; r.nB02 = 202; r.nB03 = 203; r.nB04 = 204; r.nB05 = 205; r.nB06 = 206; r.nB07 = 207;
  r.clrB08 = 0x208; r.clrB09 = 0x209; r.nB10 = 210; r.clrB11 = 0x211; r.clrB12 = 0x212;
  r.nB13 = 213; r.nB14 = 214; r.nB15 = 215; r.nTail = 999;
  AddVar(r.m_arrVariable); r.m_arrBase.Add({300, -0.25, 302, 303, 304, 305});
}
void Fill(CDBSubSIGNAL& r) {
  r.nS01 = 1; r.nS02 = 2; r.nS03 = 3; r.clrS04 = 0x123456; r.nS05 = 5; r.nS06 = 6;
  r.m_strText3 = L"t3"; r.m_strText4 = L"t4"; AddVar(r.m_arrVariable); r.nTail = 42;
}
void Fill(CDBSubREGION& r) {
  r.nR01 = 1; r.nR02 = 2; r.nR03 = 3; r.clrR04 = 4; r.nR05 = 5; r.nR06 = 6; r.nR07 = 7; r.nR08 = 8;
  r.m_strText3 = L"t3"; r.m_strText4 = L"t4"; AddVar(r.m_arrVariable); r.nTail = 42;
}
void Fill(CDBSubFILL& r) {
  r.nF01 = 1; r.nF02 = 2; r.nF03 = 3; r.nF04 = 4; r.nF05 = 5; r.clrF06 = 6; r.nF07 = 7; r.nF08 = 8; r.nF09 = 9;
  r.m_strText3 = L"t3"; r.m_strText4 = L"t4"; r.m_strText5 = L"t5"; AddVar(r.m_arrVariable); r.nTail = 42;
}
void Fill(CDBSubPATTERN& r) {
  r.nP01 = 1; r.nP02 = 2; r.nP03 = 3; r.nP04 = 4; r.nP05 = 5; r.nP06 = 6; r.nP07 = 7; r.nP08 = 8; r.nP09 = 9;
  r.nP10 = 10; r.m_strText3 = L"t3"; r.m_strText4 = L"t4"; AddVar(r.m_arrVariable); r.nTail = 42;
  r.m_arrBong.Add({11, 12, 13, 14}); r.m_arrLine.Add({15});
}
void Fill(CDBSubOPTIMIZE& r) {
  r.nO01 = 1; r.nO02 = 2; r.nO03 = 3; r.nO04 = 4; r.clrO05 = 5; r.clrO06 = 6; r.nO07 = 7; r.nO08 = 8; r.nO09 = 9;
  r.m_strText3 = L"t3"; r.nTail = 42;
  r.m_arrElement.Add({11, 12, 13, 14, L"net"}); r.m_arrVariable.Add({{kVarText, 2, 5, 60, 7, 20}});
}

// AsCopied: what CopyDataBase makes of a source whose target Fill filled
// three times: a pattern keeps its own variables, an optimisation clears nO09.
template <class R>
void AsCopied(R&) {}
void AsCopied(CDBSubPATTERN& r) { AddVar(r.m_arrVariable); AddVar(r.m_arrVariable); }
void AsCopied(CDBSubOPTIMIZE& r) { r.nO09 = 0; }

namespace {

template <class R>
R Filled() {
  R r;
  r.m_strText1 = kText1; r.m_nFlag = 3; r.m_dValue = 2.5; r.m_strText2 = L"t2";  // as FilledHeader writes
  Fill(r);
  return r;
}

// IndicaFile: r as an indicator file of `version` (with the variable and
// base Fill adds), holding only the fields that version has; strE11 follows
// nE06, nE10 ends an element, nB13 follows nB15.
Bytes IndicaFile(const CDBSubINDICA& r, int version) {
  ByteWriter w;
  w.Header(version, r.m_strText1.str(), r.m_nFlag, r.m_dValue, r.m_strText2.str()).Int(r.nA01).Int(r.nA02);
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
  return w.OneVar().Int(1).Int(300).Double(-0.25).Ints({302, 303, 304, 305, r.nTail}).bytes;
}

// Kind: a record class, its current format version and its files by hand: a
// new record's, Filled's, and for a gated kind a file of the version before
// (oldFile) with what a filled record writes after reading it (oldRead).
template <class R>
struct Kind {
  using Record = R;
  int version;
  Bytes fresh;
  Bytes filled;
  Bytes oldFile = {};
  Bytes oldRead = {};
};

template <class F>
void ForEachKind(F check) {
  using W = ByteWriter;
  check(Kind<CDBSubFUNCT>{0, W().Header(0).Int(0).Str(L"").Str(L"").bytes,
                          W().FilledHeader(0).Int(2).Str(L"Value = (H + L) / 2;").Str(L"t4").bytes});
  // nA01 … nA07, red, blue, nA10 … nA12, text 3, no elements; nB01 … nB07,
  // RGB(255, 173, 91), RGB(125, 158, 192), nB10, blue, red, nB14, nB15, nB13;
  // no variables, no bases, nTail.
  check(Kind<CDBSubINDICA>{
      7,
      W().Header(7).Ints({0, -1, -1, 4, -1, 1, 0}).Dword(0xFF).Dword(0xFF0000).Ints({-1, 0, 0}).Str(L"").Int(0)
          .Ints({5, 0, 5, 1, 2, 0, 0}).Dword(0x5BADFF).Dword(0xC09E7D).Int(0).Dword(0xFF0000).Dword(0xFF)
          .Ints({1, 0, 0, 0, 0, 0}).bytes,
      IndicaFile(Filled<CDBSubINDICA>(), 7)});
  check(Kind<CDBSubSIGNAL>{
      0, W().Header(0).Ints({0, 1, 0}).Dword(0xFF).Ints({-1, -1}).Str(L"").Str(L"").Ints({0, -1}).bytes,
      W().FilledHeader(0).Ints({1, 2, 3, 0x123456, 5, 6}).Str(L"t3").Str(L"t4").OneVar().Int(42).bytes});
  check(Kind<CDBSubREGION>{
      0, W().Header(0).Ints({0, 1, 0}).Dword(0x90EE90).Ints({0, 1, -1, 0}).Str(L"").Str(L"").Ints({0, -1}).bytes,
      W().FilledHeader(0).Ints({1, 2, 3, 4, 5, 6, 7, 8}).Str(L"t3").Str(L"t4").OneVar().Int(42).bytes});
  // Version 0 lacks nF02, which then reads -1 even on a used record.
  check(Kind<CDBSubFILL>{
      1, W().Header(1).Ints({0, -1, 1, 0, 4, 0x90EE90, 0, 1, 0}).Str(L"").Str(L"").Str(L"").Ints({0, -1}).bytes,
      W().FilledHeader(1).Ints({1, 2, 3, 4, 5, 6, 7, 8, 9}).Str(L"t3").Str(L"t4").Str(L"t5").OneVar().Int(42).bytes,
      W().Header(0).Ints({51, 53, 54, 55, 56, 57, 58, 59}).Str(L"a").Str(L"b").Str(L"c").Ints({0, 60}).bytes,
      W().Header(1).Ints({51, -1, 53, 54, 55, 56, 57, 58, 59}).Str(L"a").Str(L"b").Str(L"c").Ints({0, 60}).bytes});
  // Version 0 goes from nP07 straight to nP10; nP08 and nP09 keep their values.
  check(Kind<CDBSubPATTERN>{
      1, W().Header(1).Ints({0, -1, 0, 1, 0, -1, -1, 0, 1, 0}).Str(L"").Str(L"").Ints({0, 0, 0, 0}).bytes,
      W().FilledHeader(1).Ints({1, 2, 3, 4, 5, 6, 7, 8, 9, 10}).Str(L"t3").Str(L"t4").Ints({1, 11, 12, 13, 14, 1, 15})
          .OneVar().Int(42).bytes,
      W().Header(0).Ints({61, 62, 63, 64, 65, 66, 67, 70}).Str(L"a").Str(L"b").Ints({0, 1, 71, 0, -3}).bytes,
      W().Header(1).Ints({61, 62, 63, 64, 65, 66, 67, 8, 9, 70}).Str(L"a").Str(L"b").Ints({0, 1, 71, 0, -3}).bytes});
  // Version 0 goes from nO03 straight to text 3; nO04 … nO09 keep their values.
  check(Kind<CDBSubOPTIMIZE>{
      1, W().Header(1).Ints({0, 1, 0, 1}).Dword(0xFF).Dword(0xFF0000).Ints({0, 1, 1}).Str(L"").Ints({0, 0, -1}).bytes,
      W().FilledHeader(1).Ints({1, 2, 3, 4, 5, 6, 7, 8, 9}).Str(L"t3").Ints({1, 11, 12, 13, 14}).Str(L"net")
          .Int(1).Str(kVarText).Int(2).Double(5).Double(60).Double(7).Double(20).Int(42).bytes,
      W().Header(0).Ints({61, 62, 63}).Str(L"a").Ints({0, 0, 6}).bytes,
      W().Header(1).Ints({61, 62, 63, 4, 5, 6, 7, 8, 9}).Str(L"a").Ints({0, 0, 6}).bytes});
}

#define RECORD_OF(kind) typename std::decay_t<decltype(kind)>::Record

// Bytes of an object stream: the object written with `ar << &object`.
Bytes StoreObject(const CObject& object) {
  CMemFile file;
  CArchive ar(&file, CArchive::store);
  ar << &object;
  ar.Close();
  return Bytes(file.GetData(), file.GetData() + file.GetLength());
}

// ReadObjectCause: ReadCause of reading one record from an object stream.
int ReadObjectCause(const Bytes& bytes) {
  return ReadCause(bytes, [](CArchive& ar) { chartcore::ReadRecordObject(ar); });
}

}  // namespace

TEST(DefinitionRecord, EachKindWritesExactBytesReadsEveryVersionAndRefusesEveryCut) {
  ForEachKind([](const auto& kind) {
    using R = RECORD_OF(kind);
    R fresh;
    R filled = Filled<R>();
    const CRuntimeClass* rc = fresh.GetRuntimeClass();
    SCOPED_TRACE(rc->m_lpszClassName);
    EXPECT_EQ(rc->m_wSchema, VERSIONABLE_SCHEMA | 0);
    EXPECT_EQ(Store(fresh), kind.fresh);
    EXPECT_EQ(Store(filled), kind.filled);
    // The current or a later version, and -1 or INT_MIN (gates compare
    // unsigned), read every field; the record writes its own version back.
    for (int v : {kind.version, kind.version + 1, 1000, -1, INT_MIN}) {
      R back;
      ASSERT_EQ(Load(WithVersion(kind.filled, v), back), -1);
      EXPECT_EQ(Store(back), kind.filled) << v;
    }
    // As an object: new-class tag, schema 0 (the versionable flag is not
    // written), the class name, then the record's bytes; read back as a
    // record created by that name.
    const Bytes object = StoreObject(filled);
    EXPECT_EQ(object, ByteWriter().ClassTag(rc->m_lpszClassName).Append(kind.filled).bytes);
    EXPECT_EQ(ReadCause(object, [rc](CArchive& ar) {
                EXPECT_EQ(chartcore::ReadRecordObject(ar)->GetRuntimeClass(), rc);
              }), -1);
    // Every cut of either form ends in end-of-file.
    for (std::size_t n = 0; n < kind.filled.size(); ++n) {
      R r;
      ASSERT_EQ(Load(Bytes(kind.filled.begin(), kind.filled.begin() + static_cast<long>(n)), r),
                CArchiveException::endOfFile) << n;
    }
    for (std::size_t n = 0; n < object.size(); ++n) {
      ASSERT_EQ(ReadObjectCause(Bytes(object.begin(), object.begin() + static_cast<long>(n))),
                CArchiveException::endOfFile) << n;
    }
    if (!kind.oldFile.empty()) {
      ASSERT_EQ(Load(kind.oldFile, filled), -1);
      EXPECT_EQ(Store(filled), kind.oldRead);
    }
  });
}

TEST(DefinitionRecord, CorruptCountsAndForeignObjectsAreRefused) {
  // A count of 0 or below empties the array and reading goes on after it.
  const auto signal = [](int count) {
    return ByteWriter().Header(0).Ints({0, 1, 0, 0xFF, -1, -1}).Str(L"").Str(L"").Int(count);
  };
  for (int count : {0, -1, INT_MIN}) {
    CDBSubSIGNAL s = Filled<CDBSubSIGNAL>();
    ASSERT_EQ(Load(signal(count).Int(77).bytes, s), -1);
    EXPECT_EQ(s.m_arrVariable.GetSize(), 0) << count;
    EXPECT_EQ(s.nTail, 77) << count;
  }
  // 0x7FFFFFFF with one element's worth of data: the reader runs out of
  // input instead of allocating for two billion elements.
  CDBSubSIGNAL s;
  EXPECT_EQ(Load(signal(0x7FFFFFFF).Var(L"v", 1, 2.0).bytes, s), CArchiveException::endOfFile);
  EXPECT_EQ(s.m_arrVariable.GetSize(), 2);  // the one read, and the one whose read failed

  // Object streams without a record: a null object, a registered class that
  // is not a record (a memory file), an unknown name, and the common base,
  // which is a run-time class but not one to create.
  EXPECT_EQ(ReadObjectCause({0x00, 0x00}), CArchiveException::badClass);
  const auto named = [&s](const std::string& name) { return ByteWriter().ClassTag(name).Append(Store(s)).bytes; };
  EXPECT_EQ(ReadObjectCause(named("CMemFile")), CArchiveException::badClass);
  EXPECT_EQ(ReadObjectCause(named("CDBSubNOPE")), CArchiveException::badClass);
  EXPECT_EQ(ReadObjectCause(named("CDBSubBase")), CArchiveException::badClass);
  EXPECT_EQ(CRuntimeClass::CreateObject("CDBSubBase"), nullptr);
}

TEST(DefinitionRecord, CopyDataBaseTakesTheHeaderAndReplacesArrays) {
  ForEachKind([](const auto& kind) {
    using R = RECORD_OF(kind);
    R src = Filled<R>();
    src.m_nVersion = 99;  // the version is copied like any header field
    R dst;
    for (int i = 0; i < 3; ++i) Fill(dst);  // more elements than the source
    dst.CopyDataBase(&src);
    SCOPED_TRACE(src.GetRuntimeClass()->m_lpszClassName);
    AsCopied(src);
    EXPECT_EQ(Store(dst), Store(src));
    // A null source and the record itself leave it as it is.
    const Bytes before = Store(dst);
    dst.CopyDataBase(nullptr);
    dst.CopyDataBase(&dst);
    EXPECT_EQ(Store(dst), before);
  });
  // A move takes every field, the nO09 a copy clears included.
  CDBSubOPTIMIZE opt = Filled<CDBSubOPTIMIZE>(), assigned;
  const Bytes before = Store(opt);
  CDBSubOPTIMIZE moved(std::move(opt));
  assigned = std::move(moved);
  EXPECT_EQ(Store(assigned), before);
}

TEST(IndicaVersions, EachGateReadsKeepsOrResets) {
  const CDBSubINDICA src = Filled<CDBSubINDICA>();
  for (int v = 0; v <= 7; ++v) {
    SCOPED_TRACE(v);
    // A used record, whose "kept" fields a file without them must not touch.
    CDBSubINDICA r;
    r.nA03 = -703; r.nA04 = -704; r.clrA08 = 0xA08; r.clrA09 = 0xA09; r.nA12 = -712; r.clrB08 = 0xB08;
    r.clrB09 = 0xB09; r.nB10 = -810; r.clrB11 = 0xB11; r.clrB12 = 0xB12; r.nB13 = -813; r.nB14 = -814; r.nB15 = -815;
    ASSERT_EQ(Load(IndicaFile(src, v), r), -1);
    // What it then holds: the file's values where it has the field, else the
    // kept value, or the old-file value: 0, blue, red, 1, 0 for the version 3
    // group of the record and of its element, 0 for the version 7 fields.
    CDBSubINDICA want = Filled<CDBSubINDICA>();
    CDBSubINDICA_ELM& e = want.m_arrElement[0];
    if (v < 1) want.nA04 = -704;
    if (v < 2) std::tie(want.clrB08, want.clrB09) = std::make_pair(0xB08, 0xB09);
    if (v < 3) {
      std::tie(want.nB10, want.clrB11, want.clrB12, want.nB14, want.nB15) = std::make_tuple(0, 0xFF0000, 0xFF, 1, 0);
      std::tie(e.nE07, e.clrE08, e.clrE09, e.nE12, e.nE13) = std::make_tuple(0, 0xFF0000, 0xFF, 1, 0);
    }
    if (v < 4) want.nA03 = -703;
    if (v < 5) std::tie(want.clrA08, want.clrA09) = std::make_pair(0xA08, 0xA09);
    if (v < 6) want.nA12 = -712;
    if (v < 7) want.nB13 = e.nE10 = 0;
    EXPECT_EQ(Store(r), IndicaFile(want, 7));  // and written back as version 7 with every field
  }
}
