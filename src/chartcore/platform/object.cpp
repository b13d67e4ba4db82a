#include "chartcore/platform/object.h"

#include <cstring>
#include <mutex>
#include <new>

#include "chartcore/platform/archive.h"
#include "chartcore/platform/exceptions.h"

namespace {

// The class registry: an intrusive list through m_pNextClass, in order of
// registration. Function-local statics, so registration from any module's
// static initialisation finds them constructed.
struct Registry {
  std::mutex lock;
  CRuntimeClass* head = nullptr;
};

Registry& TheRegistry() {
  static Registry registry;
  return registry;
}

// Registry lookups hold the lock only while walking the list.
CRuntimeClass* FindByName(const char* name) {
  if (name == nullptr) return nullptr;
  Registry& reg = TheRegistry();
  std::lock_guard<std::mutex> guard(reg.lock);
  for (CRuntimeClass* p = reg.head; p != nullptr; p = p->m_pNextClass) {
    if (std::strcmp(p->m_lpszClassName, name) == 0) return p;
  }
  return nullptr;
}

// Class names are ASCII identifiers; a wide name with anything else (or an
// absurd length) cannot name a class.
bool NarrowClassName(const wchar_t* wide, char (&out)[256]) {
  if (wide == nullptr) return false;
  size_t i = 0;
  for (; wide[i] != L'\0'; ++i) {
    if (i + 1 >= sizeof(out) || wide[i] > 0x7F) return false;
    out[i] = static_cast<char>(wide[i]);
  }
  out[i] = '\0';
  return true;
}

}  // namespace

// ---------------------------------------------------------------------------
// CRuntimeClass
// ---------------------------------------------------------------------------

CObject* CRuntimeClass::CreateObject() const {
  if (m_pfnCreateObject == nullptr) return nullptr;
  try {
    return m_pfnCreateObject();
  } catch (const std::bad_alloc&) {
    AfxThrowMemoryException();
  }
}

BOOL CRuntimeClass::IsDerivedFrom(const CRuntimeClass* pBaseClass) const {
  if (pBaseClass == nullptr) return FALSE;
  for (const CRuntimeClass* p = this; p != nullptr; p = p->GetBaseClass()) {
    if (p == pBaseClass) return TRUE;
  }
  return FALSE;
}

CRuntimeClass* CRuntimeClass::FromName(const char* lpszClassName) { return FindByName(lpszClassName); }

CRuntimeClass* CRuntimeClass::FromName(const wchar_t* lpszClassName) {
  char narrow[256];
  return NarrowClassName(lpszClassName, narrow) ? FindByName(narrow) : nullptr;
}

CObject* CRuntimeClass::CreateObject(const char* lpszClassName) {
  const CRuntimeClass* p = FromName(lpszClassName);
  return p ? p->CreateObject() : nullptr;
}

CObject* CRuntimeClass::CreateObject(const wchar_t* lpszClassName) {
  const CRuntimeClass* p = FromName(lpszClassName);
  return p ? p->CreateObject() : nullptr;
}

// ---------------------------------------------------------------------------
// Registration
// ---------------------------------------------------------------------------

AFX_CLASSINIT::AFX_CLASSINIT(CRuntimeClass* pNewClass) : m_pClass(pNewClass) {
  Registry& reg = TheRegistry();
  std::lock_guard<std::mutex> guard(reg.lock);
  CRuntimeClass** link = &reg.head;
  while (*link != nullptr) {
    if (*link == pNewClass) return;  // already registered
    link = &(*link)->m_pNextClass;
  }
  pNewClass->m_pNextClass = nullptr;
  *link = pNewClass;
}

AFX_CLASSINIT::~AFX_CLASSINIT() {
  Registry& reg = TheRegistry();
  std::lock_guard<std::mutex> guard(reg.lock);
  for (CRuntimeClass** link = &reg.head; *link != nullptr; link = &(*link)->m_pNextClass) {
    if (*link == m_pClass) {
      *link = m_pClass->m_pNextClass;
      m_pClass->m_pNextClass = nullptr;
      return;
    }
  }
}

// ---------------------------------------------------------------------------
// CObject
// ---------------------------------------------------------------------------

CRuntimeClass CObject::classCObject = {"CObject", static_cast<int>(sizeof(CObject)), 0xFFFF, nullptr, nullptr,
                                       nullptr};
static const AFX_CLASSINIT chartcore_classinit_CObject(&CObject::classCObject);

CObject::~CObject() = default;

CRuntimeClass* CObject::GetThisClass() { return &CObject::classCObject; }

CRuntimeClass* CObject::GetRuntimeClass() const { return &CObject::classCObject; }

void CObject::Serialize(CArchive&) {}

BOOL CObject::IsKindOf(const CRuntimeClass* pClass) const { return GetRuntimeClass()->IsDerivedFrom(pClass); }

BOOL CObject::IsSerializable() const { return GetRuntimeClass()->IsSerializable(); }

namespace chartcore {
namespace internal {

CObject* ReadObjectOf(CArchive& ar, const CRuntimeClass* pClass) { return ar.ReadObject(pClass); }

}  // namespace internal
}  // namespace chartcore
