#include "chartcore/logic/definition_record.h"

#include <memory>

#include <gtest/gtest.h>

#include "chartcore/logic/funct.h"
#include "chartcore/logic/indica.h"
#include "chartcore/logic/optimize.h"
#include "chartcore/logic/pattern.h"
#include "chartcore/logic/record_file.h"
#include "chartcore/logic/signal_region_fill.h"
#include "logic/record_bytes.h"

using testing_records::ByteWriter;
using testing_records::Bytes;
using testing_records::Store;

namespace {

// Bytes as an object stream: each object written with `ar << p`.
Bytes StoreObjects(std::initializer_list<const CObject*> objects) {
  CMemFile file;
  CArchive ar(&file, CArchive::store);
  for (const CObject* p : objects) ar << p;
  ar.Close();
  return Bytes(file.GetData(), file.GetData() + file.GetLength());
}

// Reads one record from an object stream; the archive cause, or -1 when a
// record was read (then *kind gets its class name).
int ReadObjectCause(const Bytes& bytes, std::string* kind = nullptr) {
  Bytes copy(bytes);
  copy.push_back(0);
  CMemFile file(copy.data(), static_cast<UINT>(bytes.size()));
  CArchive ar(&file, CArchive::load);
  try {
    std::unique_ptr<CDBSubBase> record = chartcore::ReadRecordObject(ar);
    if (kind != nullptr) *kind = record->GetRuntimeClass()->m_lpszClassName;
  } catch (const CArchiveException& e) {
    return e.m_cause;
  }
  return -1;
}

// Grow: one more element in every array of the record (and a text), so every
// byte of its file lies inside some field.
void Grow(CDBSubFUNCT& r) { r.m_strText3 = L"Value = C;"; }
void Grow(CDBSubINDICA& r) {
  CDBSubINDICA_ELM e;
  e.strE11 = L"e";
  r.m_arrElement.Add(e);
  r.m_arrVariable.Add(CDBSubINDICA_VAR());
  r.m_arrBase.Add(CDBSubINDICA_BASE());
}
void Grow(CDBSubSIGNAL& r) { r.m_arrVariable.Add(CDBSubSIGNAL_VAR()); }
void Grow(CDBSubREGION& r) { r.m_arrVariable.Add(CDBSubREGION_VAR()); }
void Grow(CDBSubFILL& r) { r.m_arrVariable.Add(CDBSubFILL_VAR()); }
void Grow(CDBSubPATTERN& r) {
  r.m_arrBong.Add(CDBSubPATTERN_BONG());
  r.m_arrLine.Add(CDBSubPATTERN_LINE());
  r.m_arrVariable.Add(CDBSubPATTERN_VAR());
}
void Grow(CDBSubOPTIMIZE& r) {
  r.m_arrElement.Add(CDBSubOPTIMIZE_ELM());
  r.m_arrVariable.Add(CDBSubOPTIMIZE_VAR());
}

// Kind: a record class, its current format version, and whether its copy
// takes everything (the pattern keeps its own variables, the optimisation
// clears nO09).
template <class R>
struct Kind {
  using Record = R;
  int version;
  bool copiesAll;
};

template <class F>
void ForEachKind(F check) {
  check(Kind<CDBSubFUNCT>{0, true});
  check(Kind<CDBSubINDICA>{7, true});
  check(Kind<CDBSubSIGNAL>{0, true});
  check(Kind<CDBSubREGION>{0, true});
  check(Kind<CDBSubFILL>{1, true});
  check(Kind<CDBSubPATTERN>{1, false});
  check(Kind<CDBSubOPTIMIZE>{1, false});
}

}  // namespace

TEST(DefinitionRecord, HeaderDefaultsSchemaAndCreationByName) {
  ForEachKind([](auto kind) {
    typename decltype(kind)::Record r;
    const CRuntimeClass* rc = r.GetRuntimeClass();
    SCOPED_TRACE(rc->m_lpszClassName);
    EXPECT_EQ(r.m_nVersion, kind.version);
    EXPECT_TRUE(r.m_strText1.IsEmpty() && r.m_strText2.IsEmpty());
    EXPECT_EQ(r.m_nFlag, 1);
    EXPECT_EQ(r.m_dValue, 1.7976931348623157e308);  // the no-value mark
    EXPECT_EQ(rc->m_wSchema, VERSIONABLE_SCHEMA | 0);
    EXPECT_TRUE(rc->IsDerivedFrom(RUNTIME_CLASS(CDBSubBase)));
    // Dynamic creation by the class name archives write.
    std::unique_ptr<CObject> made(CRuntimeClass::CreateObject(rc->m_lpszClassName));
    ASSERT_NE(made, nullptr);
    EXPECT_EQ(made->GetRuntimeClass(), rc);
    EXPECT_EQ(Store(*made), Store(r));
  });
  // The common base is a run-time class, but not one to create.
  EXPECT_EQ(CRuntimeClass::CreateObject("CDBSubBase"), nullptr);
  EXPECT_EQ(CRuntimeClass::CreateObject(L"CDBSubNOPE"), nullptr);
}

TEST(DefinitionRecord, EveryTruncationOfEveryKindEndsInEndOfFile) {
  ForEachKind([](auto kind) {
    using R = typename decltype(kind)::Record;
    R rich;
    Grow(rich);
    rich.m_strText1 = L"\uD55C\uAE00 text";  // 한글
    SCOPED_TRACE(rich.GetRuntimeClass()->m_lpszClassName);
    const Bytes bytes = Store(rich);
    for (std::size_t n = 0; n < bytes.size(); ++n) {
      R r;
      ASSERT_EQ(testing_records::LoadCause(Bytes(bytes.begin(), bytes.begin() + static_cast<long>(n)), r),
                CArchiveException::endOfFile)
          << n;
    }
    EXPECT_EQ(testing_records::Reloaded<R>(bytes), bytes);
    const Bytes object = StoreObjects({&rich});
    for (std::size_t n = 0; n < object.size(); ++n) {
      ASSERT_EQ(ReadObjectCause(Bytes(object.begin(), object.begin() + static_cast<long>(n))),
                CArchiveException::endOfFile)
          << n;
    }
  });

  // A count of 0x7FFFFFFF with one element's worth of data: the reader must
  // run out of input, not allocate for two billion elements.
  ByteWriter w;
  w.Header(0).Ints({0, 1, 0, 0, -1, -1}).Str(L"").Str(L"").Int(0x7FFFFFFF).Var(L"v", 1, 2.0);
  CDBSubSIGNAL s;
  EXPECT_EQ(testing_records::LoadCause(w.bytes, s), CArchiveException::endOfFile);
  EXPECT_LE(s.m_arrVariable.GetSize(), 2);  // grown only as far as data arrived
}

TEST(DefinitionRecord, CopyDataBaseReplacesArraysAndTakesTheHeader) {
  ForEachKind([](auto kind) {
    using R = typename decltype(kind)::Record;
    R src;
    Grow(src);
    src.m_strText2 = L"copied";
    src.m_nVersion = 99;  // the version is copied like any header field
    R dst;
    for (int i = 0; i < 3; ++i) Grow(dst);  // more elements than the source
    dst.CopyDataBase(&src);
    SCOPED_TRACE(src.GetRuntimeClass()->m_lpszClassName);
    EXPECT_EQ(dst.m_nVersion, 99);
    EXPECT_EQ(dst.m_strText2, L"copied");
    if (kind.copiesAll) {
      EXPECT_EQ(Store(dst), Store(src));
    }
    // A null source and the record itself leave it as it is.
    const Bytes before = Store(dst);
    dst.CopyDataBase(nullptr);
    dst.CopyDataBase(&dst);
    EXPECT_EQ(Store(dst), before);
  });
}

TEST(DefinitionRecord, ObjectOperatorRoundTripsAndTellsTheKind) {
  CDBSubINDICA a, b;
  a.nA01 = 1;
  b.nA01 = 2;
  CDBSubPATTERN p;
  const Bytes bytes = StoreObjects({&a, &b, &p});

  // First object: new-class tag, schema 0 (the versionable flag is not
  // written), the name, then the record's own bytes; the second of the same
  // class refers to class 1 (0x8001).
  ByteWriter head;
  head.ClassTag("CDBSubINDICA").Append(Store(a)).Word(0x8001);
  ASSERT_GE(bytes.size(), head.bytes.size());
  EXPECT_EQ(Bytes(bytes.begin(), bytes.begin() + static_cast<long>(head.bytes.size())), head.bytes);

  Bytes copy(bytes);
  CMemFile file(copy.data(), static_cast<UINT>(copy.size()));
  CArchive ar(&file, CArchive::load);
  CDBSubINDICA* ra = nullptr;
  CDBSubINDICA* rb = nullptr;
  ar >> ra >> rb;
  std::unique_ptr<CDBSubINDICA> ownA(ra), ownB(rb);
  ASSERT_TRUE(ra != nullptr && rb != nullptr);
  EXPECT_EQ(ra->nA01 * 10 + rb->nA01, 12);
  // The third is a pattern: asking for an indicator is refused.
  CDBSubINDICA* wrong = nullptr;
  try {
    ar >> wrong;
    ADD_FAILURE() << "a pattern read as an indicator";
  } catch (const CArchiveException& e) {
    EXPECT_EQ(e.m_cause, CArchiveException::badClass);
  }

  // Read without knowing the kind.
  std::string kind;
  EXPECT_EQ(ReadObjectCause(StoreObjects({&p}), &kind), -1);
  EXPECT_EQ(kind, "CDBSubPATTERN");

  // Streams that hold no record: a null object, a registered class that is
  // not a record (a memory file), an unknown name, and the common base.
  EXPECT_EQ(ReadObjectCause({0x00, 0x00}), CArchiveException::badClass);
  const auto named = [](const std::string& name) {
    return ByteWriter().ClassTag(name).Append(Store(*std::make_unique<CDBSubFUNCT>())).bytes;
  };
  EXPECT_EQ(ReadObjectCause(named("CMemFile")), CArchiveException::badClass);
  EXPECT_EQ(ReadObjectCause(named("CDBSubNOPE")), CArchiveException::badClass);
  EXPECT_NE(ReadObjectCause(named("CDBSubBase")), -1);
  EXPECT_EQ(ReadObjectCause(named("CDBSubFUNCT")), -1);
}

TEST(DefinitionRecord, RecordsMoveWithEveryField) {
  CDBSubOPTIMIZE src;
  src.m_strText1 = L"name";
  src.nO09 = 7;  // CopyDataBase would clear it; a move keeps it
  src.m_arrElement.Add(CDBSubOPTIMIZE_ELM());
  const Bytes before = Store(src);
  CDBSubOPTIMIZE moved(std::move(src));
  EXPECT_EQ(Store(moved), before);
  CDBSubOPTIMIZE assigned;
  assigned = std::move(moved);
  EXPECT_EQ(Store(assigned), before);
}
