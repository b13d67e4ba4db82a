#include "chartcore/logic/definition_record.h"

IMPLEMENT_DYNAMIC(CDBSubBase, CObject)

CDBSubBase::~CDBSubBase() = default;

CDBSubBase::CDBSubBase(CDBSubBase&& other) noexcept
    : CObject(),
      m_nVersion(other.m_nVersion),
      m_strText1(std::move(other.m_strText1)),
      m_nFlag(other.m_nFlag),
      m_dValue(other.m_dValue),
      m_strText2(std::move(other.m_strText2)) {}

CDBSubBase& CDBSubBase::operator=(CDBSubBase&& other) noexcept {
  m_nVersion = other.m_nVersion;
  m_strText1 = std::move(other.m_strText1);
  m_nFlag = other.m_nFlag;
  m_dValue = other.m_dValue;
  m_strText2 = std::move(other.m_strText2);
  return *this;
}

int CDBSubBase::SerializeHeader(CArchive& ar) {
  int gate = chartcore::internal::kEveryField;
  if (ar.IsStoring()) {
    ar << m_nVersion;
  } else {
    // The file's version only steers this read; the record keeps its own.
    ar >> gate;
  }
  chartcore::internal::Exchange(ar, m_strText1);
  chartcore::internal::Exchange(ar, m_nFlag);
  chartcore::internal::Exchange(ar, m_dValue);
  chartcore::internal::Exchange(ar, m_strText2);
  return gate;
}

namespace chartcore {
namespace internal {

void ExchangeVariable(CArchive& ar, LogicVariable& variable) {
  Exchange(ar, variable.strText);
  Exchange(ar, variable.nValue);
  Exchange(ar, variable.dValue);
}

void ExchangeVariable(CArchive& ar, OptimizeVariable& variable) {
  Exchange(ar, variable.strText);
  Exchange(ar, variable.nValue);
  Exchange(ar, variable.dValue1);
  Exchange(ar, variable.dValue2);
  Exchange(ar, variable.dValue3);
  Exchange(ar, variable.dValue4);
}

}  // namespace internal
}  // namespace chartcore
