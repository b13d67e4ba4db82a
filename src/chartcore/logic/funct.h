// User function definitions: CDBSubFUNCT.
//
// A user function of the logic language is the smallest definition record:
// the common header, one integer and two texts, no element arrays. Function
// definition files (".bic", ".fct") hold one such record each; the script
// editor reads the formula and comment from them for its parameter tip.
//
//   CDBSubFUNCT fn;
//   fn.m_strText3 = L"Value = (H + L) / 2;";
//   fn.Serialize(ar);                      // header, nU01, two texts
#ifndef CHARTCORE_LOGIC_FUNCT_H_
#define CHARTCORE_LOGIC_FUNCT_H_

#include "chartcore/logic/definition_record.h"

// CDBSubFUNCT: the definition record of a user function (format version 0).
// Archive order is the declaration order.
class CHARTCORE_API CDBSubFUNCT : public CDBSubBase {
  DECLARE_SERIAL(CDBSubFUNCT)

 public:
  static constexpr int kCurrentVersion = 0;

  CDBSubFUNCT();
  ~CDBSubFUNCT() override;
  CDBSubFUNCT(CDBSubFUNCT&&) = default;
  CDBSubFUNCT& operator=(CDBSubFUNCT&&) = default;

  // Serialize: writes or reads the header, nU01, m_strText3 and m_strText4;
  // the version a file carries is read and ignored. A truncated file throws
  // CArchiveException (endOfFile).
  void Serialize(CArchive& ar) override;

  // CopyDataBase: copies all eight fields of pSource, the version included.
  // A null source or the record itself changes nothing.
  void CopyDataBase(const CDBSubFUNCT* pSource);

  int nU01 = 0;
  CString m_strText3;
  CString m_strText4;

 private:
  // The member-wise copy CopyDataBase is made of.
  CDBSubFUNCT& operator=(const CDBSubFUNCT&) = default;
};

#endif  // CHARTCORE_LOGIC_FUNCT_H_
