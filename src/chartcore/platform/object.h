// CObject and run-time classes: the framework's object base with class names,
// dynamic creation and archive support.
//
// A class that is stored in archives names itself with DECLARE_SERIAL in its
// body and IMPLEMENT_SERIAL in one source file. Its CRuntimeClass then carries
// the class name that archives write, the schema number, a way to create an
// empty object, and the link to its base class. Every run-time class is
// registered during static initialisation, so an archive can find a class by
// the name it reads from a file. The macros declare GetRuntimeClass with
// `override`, so the class's own overrides (Serialize) are marked so too.
//
//   class CHARTCORE_API CDBSubFUNCT : public CObject {
//     DECLARE_SERIAL(CDBSubFUNCT)
//    public:
//     void Serialize(CArchive& ar) override;
//   };
//   IMPLEMENT_SERIAL(CDBSubFUNCT, CObject, VERSIONABLE_SCHEMA | 0)   // in the .cpp
//
//   CObject* p = CRuntimeClass::CreateObject("CDBSubFUNCT");
//   p->IsKindOf(RUNTIME_CLASS(CDBSubFUNCT));                      // TRUE
#ifndef CHARTCORE_PLATFORM_OBJECT_H_
#define CHARTCORE_PLATFORM_OBJECT_H_

#include "chartcore/platform/types.h"

class CArchive;
class CObject;

// VERSIONABLE_SCHEMA: or-ed into a schema, it lets the class read objects
// written with any schema number (the stored number is then available through
// CArchive::GetObjectSchema). Archives never write the flag itself.
#define VERSIONABLE_SCHEMA (0x80000000u)

// ---------------------------------------------------------------------------
// CRuntimeClass
// ---------------------------------------------------------------------------

// CRuntimeClass: what the framework knows of a class at run time. One static
// instance per class, made by the IMPLEMENT_ macros; never copied.
struct CHARTCORE_API CRuntimeClass {
  // The class name as archives store it (narrow ASCII).
  const char* m_lpszClassName;
  // sizeof the class.
  int m_nObjectSize;
  // The schema number; 0xFFFF for classes that are not serializable; may
  // carry VERSIONABLE_SCHEMA.
  UINT m_wSchema;
  // Creates an empty object (nullptr for classes without dynamic creation).
  CObject* (*m_pfnCreateObject)();
  // Returns the base class's run-time class (nullptr for CObject itself).
  // A function, so the link is valid whatever order static initialisation
  // takes.
  CRuntimeClass* (*m_pfnGetBaseClass)();
  // Next class in the registry (kept by the registry).
  CRuntimeClass* m_pNextClass;

  // GetBaseClass: the run-time class of the base, or nullptr for CObject.
  CRuntimeClass* GetBaseClass() const { return m_pfnGetBaseClass ? m_pfnGetBaseClass() : nullptr; }

  // CreateObject: a new empty object of this class (owned by the caller), or
  // nullptr when the class has no dynamic creation. Allocation failure throws
  // CMemoryException.
  CObject* CreateObject() const;

  // IsDerivedFrom: TRUE when this class is pBaseClass or derives from it;
  // FALSE for a null pBaseClass.
  BOOL IsDerivedFrom(const CRuntimeClass* pBaseClass) const;

  // IsSerializable: TRUE when the class has a schema (DECLARE_SERIAL).
  BOOL IsSerializable() const { return m_wSchema != 0xFFFF; }

  // FromName: the registered class of that exact (case-sensitive) name, or
  // nullptr. If two registered classes share a name, the first registered
  // is found.
  static CRuntimeClass* FromName(const char* lpszClassName);
  // FromName: as above for a wide name; non-ASCII names find nothing.
  static CRuntimeClass* FromName(const wchar_t* lpszClassName);

  // CreateObject by name: a new object of the named class, or nullptr when
  // the name is unknown or the class has no dynamic creation.
  static CObject* CreateObject(const char* lpszClassName);
  static CObject* CreateObject(const wchar_t* lpszClassName);
};

// ---------------------------------------------------------------------------
// CObject
// ---------------------------------------------------------------------------

// CObject: the base of every class with run-time class information.
class CHARTCORE_API CObject {
 public:
  virtual ~CObject();

  // GetRuntimeClass: the object's own (most derived) run-time class.
  virtual CRuntimeClass* GetRuntimeClass() const;

  // Serialize: stores or loads the object's fields (as ar.IsStoring() says).
  // CObject itself has no fields and does nothing.
  virtual void Serialize(CArchive& ar);

  // IsKindOf: TRUE when the object's class is pClass or derives from it.
  BOOL IsKindOf(const CRuntimeClass* pClass) const;

  // IsSerializable: TRUE when the object's class was declared serializable.
  BOOL IsSerializable() const;

  static CRuntimeClass classCObject;
  static CRuntimeClass* GetThisClass();

 protected:
  CObject() = default;
  // Copying copies no state of CObject; derived value classes may default
  // their own copies and moves.
  CObject(const CObject&) = default;
  CObject(CObject&&) = default;
  CObject& operator=(const CObject&) = default;
  CObject& operator=(CObject&&) = default;
};

// ---------------------------------------------------------------------------
// Registration (used by the IMPLEMENT_ macros)
// ---------------------------------------------------------------------------

// AFX_CLASSINIT: a static object whose construction registers a run-time
// class and whose destruction (when a module unloads) removes it again.
struct CHARTCORE_API AFX_CLASSINIT {
  explicit AFX_CLASSINIT(CRuntimeClass* pNewClass);
  ~AFX_CLASSINIT();
  AFX_CLASSINIT(const AFX_CLASSINIT&) = delete;
  AFX_CLASSINIT& operator=(const AFX_CLASSINIT&) = delete;

 private:
  CRuntimeClass* m_pClass;
};

namespace chartcore {
namespace internal {
// ReadObjectOf: reads an object that must be of class pClass or derived from
// it (the body of the extraction operator DECLARE_SERIAL declares).
CHARTCORE_API CObject* ReadObjectOf(CArchive& ar, const CRuntimeClass* pClass);
}  // namespace internal
}  // namespace chartcore

// ---------------------------------------------------------------------------
// Macros
// ---------------------------------------------------------------------------

// RUNTIME_CLASS(name): the CRuntimeClass* of a class.
#define RUNTIME_CLASS(class_name) (class_name::GetThisClass())

// DECLARE_DYNAMIC(name): run-time class information (IsKindOf, the name).
// Like the other DECLARE_ macros it leaves the class body in `public:`.
#define DECLARE_DYNAMIC(class_name)               \
 public:                                          \
  static CRuntimeClass class##class_name;         \
  static CRuntimeClass* GetThisClass();           \
  CRuntimeClass* GetRuntimeClass() const override;

// DECLARE_DYNCREATE(name): DECLARE_DYNAMIC plus creation by class.
#define DECLARE_DYNCREATE(class_name) \
  DECLARE_DYNAMIC(class_name)         \
 public:                              \
  static CObject* CreateObject();

// DECLARE_SERIAL(name): DECLARE_DYNCREATE plus `ar >> pObject`, which reads
// an object of this class or a class derived from it (CArchiveException
// badClass for any other class; a null pointer for a null tag).
#define DECLARE_SERIAL(class_name)                                                                   \
  DECLARE_DYNCREATE(class_name)                                                                      \
 public:                                                                                             \
  [[maybe_unused]] friend CArchive& operator>>(CArchive& ar, class_name*& pOb) {                                    \
    pOb = static_cast<class_name*>(::chartcore::internal::ReadObjectOf(ar, class_name::GetThisClass())); \
    return ar;                                                                                       \
  }

#define CHARTCORE_IMPLEMENT_RUNTIMECLASS(class_name, base_class_name, wSchema, pfnNew)             \
  CRuntimeClass class_name::class##class_name = {#class_name,                                      \
                                                 static_cast<int>(sizeof(class_name)),             \
                                                 static_cast<UINT>(wSchema),                       \
                                                 pfnNew,                                           \
                                                 &base_class_name::GetThisClass,                   \
                                                 nullptr};                                         \
  CRuntimeClass* class_name::GetThisClass() { return &class_name::class##class_name; }             \
  CRuntimeClass* class_name::GetRuntimeClass() const { return &class_name::class##class_name; }    \
  static const AFX_CLASSINIT chartcore_classinit_##class_name(&class_name::class##class_name);

// IMPLEMENT_DYNAMIC(name, base): defines what DECLARE_DYNAMIC declared.
#define IMPLEMENT_DYNAMIC(class_name, base_class_name) \
  CHARTCORE_IMPLEMENT_RUNTIMECLASS(class_name, base_class_name, 0xFFFF, nullptr)

// IMPLEMENT_DYNCREATE(name, base): defines what DECLARE_DYNCREATE declared.
#define IMPLEMENT_DYNCREATE(class_name, base_class_name)                              \
  CObject* class_name::CreateObject() { return new class_name; }                     \
  CHARTCORE_IMPLEMENT_RUNTIMECLASS(class_name, base_class_name, 0xFFFF, &class_name::CreateObject)

// IMPLEMENT_SERIAL(name, base, schema): defines what DECLARE_SERIAL declared,
// with the schema number archives write (VERSIONABLE_SCHEMA may be or-ed in).
#define IMPLEMENT_SERIAL(class_name, base_class_name, wSchema)                        \
  CObject* class_name::CreateObject() { return new class_name; }                     \
  CHARTCORE_IMPLEMENT_RUNTIMECLASS(class_name, base_class_name, wSchema, &class_name::CreateObject)

#endif  // CHARTCORE_PLATFORM_OBJECT_H_
