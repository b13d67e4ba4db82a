#include "chartcore/logic/definition_record.h"

#include <cstring>
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
using testing_records::FirstTruncationWithoutEndOfFile;
using testing_records::Load;
using testing_records::Store;

namespace {

// Bytes as an object stream: a record (or anything) written with `ar << p`.
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

template <class RECORD>
void ExpectHeaderDefaults(int version) {
  RECORD r;
  EXPECT_EQ(r.m_nVersion, version);
  EXPECT_TRUE(r.m_strText1.IsEmpty());
  EXPECT_EQ(r.m_nFlag, 1);
  EXPECT_EQ(r.m_dValue, 1.7976931348623157e308);
  EXPECT_TRUE(r.m_strText2.IsEmpty());
  const CRuntimeClass* rc = r.GetRuntimeClass();
  EXPECT_EQ(rc->m_wSchema, VERSIONABLE_SCHEMA | 0);
  EXPECT_TRUE(rc->IsDerivedFrom(RUNTIME_CLASS(CDBSubBase)));
  // Dynamic creation by the class name archives write.
  std::unique_ptr<CObject> made(CRuntimeClass::CreateObject(rc->m_lpszClassName));
  ASSERT_NE(made, nullptr);
  EXPECT_EQ(made->GetRuntimeClass(), rc);
  EXPECT_EQ(Store(*made), Store(r));
}

// A record of every kind with texts, elements and variables, so that every
// byte position of its file falls inside some field.
template <class RECORD>
void ExpectEveryTruncationEndsInEndOfFile(RECORD& rich) {
  rich.m_strText1 = L"\uD55C\uAE00 text";
  const Bytes bytes = Store(rich);
  EXPECT_EQ(FirstTruncationWithoutEndOfFile<RECORD>(bytes), -1) << rich.GetRuntimeClass()->m_lpszClassName;
  RECORD whole;
  Load(bytes, whole);
  EXPECT_EQ(Store(whole), bytes);

  const Bytes object = StoreObjects({&rich});
  for (std::size_t n = 0; n < object.size(); ++n) {
    ASSERT_EQ(ReadObjectCause(Bytes(object.begin(), object.begin() + static_cast<long>(n))),
              CArchiveException::endOfFile)
        << n;
  }
}

}  // namespace

TEST(DefinitionRecord, HeaderDefaultsSchemaAndCreationByName) {
  ExpectHeaderDefaults<CDBSubFUNCT>(0);
  ExpectHeaderDefaults<CDBSubINDICA>(7);
  ExpectHeaderDefaults<CDBSubSIGNAL>(0);
  ExpectHeaderDefaults<CDBSubREGION>(0);
  ExpectHeaderDefaults<CDBSubFILL>(1);
  ExpectHeaderDefaults<CDBSubPATTERN>(1);
  ExpectHeaderDefaults<CDBSubOPTIMIZE>(1);
  // The common base is a run-time class, but not one to create.
  EXPECT_EQ(CRuntimeClass::CreateObject("CDBSubBase"), nullptr);
  EXPECT_EQ(CRuntimeClass::CreateObject(L"CDBSubNOPE"), nullptr);
}

TEST(DefinitionRecord, EveryTruncationOfEveryKindEndsInEndOfFile) {
  CDBSubFUNCT fn;
  fn.m_strText3 = L"Value = C;";
  ExpectEveryTruncationEndsInEndOfFile(fn);

  CDBSubINDICA ind;
  ind.m_arrElement.Add(CDBSubINDICA_ELM());
  ind.m_arrElement[0].strE11 = L"e";
  ind.m_arrVariable.Add(CDBSubINDICA_VAR());
  ind.m_arrBase.Add(CDBSubINDICA_BASE());
  ExpectEveryTruncationEndsInEndOfFile(ind);

  CDBSubSIGNAL sig;
  sig.m_arrVariable.Add(CDBSubSIGNAL_VAR());
  ExpectEveryTruncationEndsInEndOfFile(sig);
  CDBSubREGION reg;
  reg.m_arrVariable.Add(CDBSubREGION_VAR());
  ExpectEveryTruncationEndsInEndOfFile(reg);
  CDBSubFILL fill;
  fill.m_arrVariable.Add(CDBSubFILL_VAR());
  ExpectEveryTruncationEndsInEndOfFile(fill);

  CDBSubPATTERN pat;
  pat.m_arrBong.Add(CDBSubPATTERN_BONG());
  pat.m_arrLine.Add(CDBSubPATTERN_LINE());
  pat.m_arrVariable.Add(CDBSubPATTERN_VAR());
  ExpectEveryTruncationEndsInEndOfFile(pat);

  CDBSubOPTIMIZE opt;
  opt.m_arrElement.Add(CDBSubOPTIMIZE_ELM());
  opt.m_arrVariable.Add(CDBSubOPTIMIZE_VAR());
  ExpectEveryTruncationEndsInEndOfFile(opt);
}

TEST(DefinitionRecord, HugeCountsEndInEndOfFile) {
  // A count of 0x7FFFFFFF with one element's worth of data: the reader must
  // run out of input, not allocate for two billion elements.
  ByteWriter w;
  w.Header(0).Int(0).Int(1).Int(0).Dword(0).Int(-1).Int(-1).Str(L"").Str(L"");
  w.Int(0x7FFFFFFF).Str(L"v").Int(1).Double(2.0);
  CDBSubSIGNAL s;
  EXPECT_EQ(testing_records::LoadCause(w.bytes, s), CArchiveException::endOfFile);
  EXPECT_LE(s.m_arrVariable.GetSize(), 2);  // grown only as far as data arrived
}

TEST(DefinitionRecord, ObjectOperatorRoundTripsAndTellsTheKind) {
  CDBSubINDICA a, b;
  a.nA01 = 1;
  b.nA01 = 2;
  CDBSubPATTERN p;
  const Bytes bytes = StoreObjects({&a, &b, &p});

  // First object: new-class tag, schema 0 (the versionable flag is not
  // written), name length and name, then the record's own bytes.
  ByteWriter head;
  head.Word(0xFFFF).Word(0).Word(12);
  for (char c : std::string("CDBSubINDICA")) head.Byte(static_cast<unsigned char>(c));
  head.Append(Store(a));
  ASSERT_GE(bytes.size(), head.bytes.size() + 2);
  EXPECT_EQ(Bytes(bytes.begin(), bytes.begin() + static_cast<long>(head.bytes.size())), head.bytes);
  // The second of the same class refers to class 1.
  EXPECT_EQ(bytes[head.bytes.size()], 0x01);
  EXPECT_EQ(bytes[head.bytes.size() + 1], 0x80);

  Bytes copy(bytes);
  CMemFile file(copy.data(), static_cast<UINT>(copy.size()));
  CArchive ar(&file, CArchive::load);
  CDBSubINDICA* ra = nullptr;
  CDBSubINDICA* rb = nullptr;
  ar >> ra >> rb;
  std::unique_ptr<CDBSubINDICA> ownA(ra), ownB(rb);
  ASSERT_NE(ra, nullptr);
  ASSERT_NE(rb, nullptr);
  EXPECT_EQ(ra->nA01, 1);
  EXPECT_EQ(rb->nA01, 2);
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
}

TEST(DefinitionRecord, ObjectStreamsThatHoldNoRecordAreRefused) {
  // A null object.
  EXPECT_EQ(ReadObjectCause({0x00, 0x00}), CArchiveException::badClass);
  // A registered class that is not a record (a memory file), and an unknown one.
  const auto named = [](const std::string& name) {
    ByteWriter w;
    w.Word(0xFFFF).Word(0).Word(static_cast<unsigned>(name.size()));
    for (char c : name) w.Byte(static_cast<unsigned char>(c));
    return w.Append(Store(*std::make_unique<CDBSubFUNCT>())).bytes;
  };
  EXPECT_EQ(ReadObjectCause(named("CMemFile")), CArchiveException::badClass);
  EXPECT_EQ(ReadObjectCause(named("CDBSubNOPE")), CArchiveException::badClass);
  // The common base names a record kind no file can hold.
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
  EXPECT_EQ(assigned.GetRuntimeClass(), RUNTIME_CLASS(CDBSubOPTIMIZE));
}
