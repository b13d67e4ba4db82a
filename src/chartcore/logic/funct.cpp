#include "chartcore/logic/funct.h"

using chartcore::internal::Exchange;

IMPLEMENT_SERIAL(CDBSubFUNCT, CDBSubBase, VERSIONABLE_SCHEMA | 0)

CDBSubFUNCT::CDBSubFUNCT() : CDBSubBase(kCurrentVersion) {}

CDBSubFUNCT::~CDBSubFUNCT() = default;

void CDBSubFUNCT::Serialize(CArchive& ar) {
  SerializeHeader(ar);  // never changed: the file's version steers nothing
  Exchange(ar, nU01);
  Exchange(ar, m_strText3);
  Exchange(ar, m_strText4);
}

void CDBSubFUNCT::CopyDataBase(const CDBSubFUNCT* pSource) {
  if (pSource != nullptr && pSource != this) *this = *pSource;
}
