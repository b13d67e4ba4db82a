#include "chartcore/properties/chart_property.h"

CProperty_BASE::CProperty_BASE() = default;
CProperty_BASE::~CProperty_BASE() = default;

CString CProperty_BASE::GetName() const { return m_strName; }

CProperty_ANAL::CProperty_ANAL() = default;
CProperty_ANAL::~CProperty_ANAL() = default;

CProperty_DRAW::CProperty_DRAW() = default;
CProperty_DRAW::~CProperty_DRAW() = default;

CProperty_PRICE::CProperty_PRICE() = default;
CProperty_PRICE::~CProperty_PRICE() = default;

CProperty_VOLUME::CProperty_VOLUME() = default;
CProperty_VOLUME::~CProperty_VOLUME() = default;

CString CProperty_VOLUME::GetName() const {
  return CString(L"\uAC70\uB798\uB7C9");  // "거래량"
}
