// Run-time classes: registration, lookup by name, derivation and dynamic
// creation through the DECLARE_/IMPLEMENT_ macros.
#include "chartcore/platform/object.h"

#include <memory>

#include <gtest/gtest.h>

#include "chartcore/platform/archive.h"
#include "chartcore/platform/file.h"

namespace {

class CObjTestBase : public CObject {
  DECLARE_DYNAMIC(CObjTestBase)
};

class CObjTestCreatable : public CObjTestBase {
  DECLARE_DYNCREATE(CObjTestCreatable)
 public:
  int m_value = 17;
};

class CObjTestRecord : public CObjTestCreatable {
  DECLARE_SERIAL(CObjTestRecord)
 public:
  void Serialize(CArchive& ar) override {
    if (ar.IsStoring()) {
      ar << m_value;
    } else {
      ar >> m_value;
    }
  }
};

}  // namespace

IMPLEMENT_DYNAMIC(CObjTestBase, CObject)
IMPLEMENT_DYNCREATE(CObjTestCreatable, CObjTestBase)
IMPLEMENT_SERIAL(CObjTestRecord, CObjTestCreatable, VERSIONABLE_SCHEMA | 3)

TEST(RuntimeClass, FieldsAndDerivation) {
  const CRuntimeClass* base = RUNTIME_CLASS(CObjTestBase);
  const CRuntimeClass* record = RUNTIME_CLASS(CObjTestRecord);
  EXPECT_STREQ(record->m_lpszClassName, "CObjTestRecord");
  EXPECT_EQ(record->m_nObjectSize, static_cast<int>(sizeof(CObjTestRecord)));
  EXPECT_EQ(record->m_wSchema, 0x80000003u);  // VERSIONABLE_SCHEMA kept in memory
  EXPECT_EQ(base->m_wSchema, 0xFFFFu);        // dynamic only: not serializable
  EXPECT_EQ(record->GetBaseClass(), RUNTIME_CLASS(CObjTestCreatable));
  EXPECT_EQ(RUNTIME_CLASS(CObject)->GetBaseClass(), nullptr);
  // A class derives from itself and from every ancestor, never from null.
  EXPECT_TRUE(record->IsDerivedFrom(base) && record->IsDerivedFrom(record) &&
              record->IsDerivedFrom(RUNTIME_CLASS(CObject)));
  EXPECT_FALSE(base->IsDerivedFrom(record) || base->IsDerivedFrom(nullptr) ||
               base->IsDerivedFrom(RUNTIME_CLASS(CFile)));
  EXPECT_TRUE(record->IsSerializable());
  EXPECT_FALSE(base->IsSerializable());
  CObjTestRecord r;
  const CObject& asObject = r;
  EXPECT_EQ(asObject.GetRuntimeClass(), record);  // the most derived class
  EXPECT_TRUE(asObject.IsKindOf(base));
  EXPECT_FALSE(asObject.IsKindOf(RUNTIME_CLASS(CMemFile)));
  CMemFile memFile;
  EXPECT_TRUE(memFile.IsKindOf(RUNTIME_CLASS(CFile)));
  EXPECT_FALSE(memFile.IsSerializable());
}

TEST(RuntimeClass, RegistryLookupAndDynamicCreation) {
  EXPECT_EQ(CRuntimeClass::FromName("CObjTestRecord"), RUNTIME_CLASS(CObjTestRecord));
  EXPECT_EQ(CRuntimeClass::FromName(L"CObjTestRecord"), RUNTIME_CLASS(CObjTestRecord));
  EXPECT_EQ(CRuntimeClass::FromName("CObject"), RUNTIME_CLASS(CObject));
  // Names are case-sensitive and whole; non-ASCII names name nothing.
  for (const char* name : {"cobjtestrecord", "CObjTestRecor", "", static_cast<const char*>(nullptr)}) {
    EXPECT_EQ(CRuntimeClass::FromName(name), nullptr) << (name ? name : "null");
  }
  EXPECT_EQ(CRuntimeClass::FromName(L"CObjTest\xD55C"), nullptr);

  std::unique_ptr<CObject> made(RUNTIME_CLASS(CObjTestCreatable)->CreateObject());
  ASSERT_NE(made, nullptr);
  EXPECT_EQ(made->GetRuntimeClass(), RUNTIME_CLASS(CObjTestCreatable));
  EXPECT_EQ(static_cast<CObjTestCreatable*>(made.get())->m_value, 17);
  std::unique_ptr<CObject> byName(CRuntimeClass::CreateObject(L"CObjTestRecord"));
  ASSERT_NE(byName, nullptr);
  EXPECT_EQ(byName->GetRuntimeClass(), RUNTIME_CLASS(CObjTestRecord));
  EXPECT_EQ(RUNTIME_CLASS(CObjTestBase)->CreateObject(), nullptr);  // no dynamic creation
  EXPECT_EQ(CRuntimeClass::CreateObject("CObjTestBase"), nullptr);
  EXPECT_EQ(CRuntimeClass::CreateObject("NoSuchClass"), nullptr);
}

TEST(RuntimeClass, RegistrationUnlinksOnDestruction) {
  // A class registered late (as a module loaded at run time would) is found
  // while its registration lives, and forgotten after, without disturbing
  // the classes around it.
  static CRuntimeClass late = {"CObjTestLate", 8, 1, nullptr, &CObject::GetThisClass, nullptr};
  {
    AFX_CLASSINIT registration(&late);
    AFX_CLASSINIT again(&late);  // registering twice links it once
    EXPECT_EQ(CRuntimeClass::FromName("CObjTestLate"), &late);
  }
  EXPECT_EQ(CRuntimeClass::FromName("CObjTestLate"), nullptr);
  EXPECT_EQ(CRuntimeClass::FromName("CObjTestRecord"), RUNTIME_CLASS(CObjTestRecord));
}
