// Signal, region and fill definitions: CDBSubSIGNAL, CDBSubREGION, CDBSubFILL.
//
// The three kinds share one shape: the common header, a block of integer
// settings (one of them a colour), two or three further texts, an array of
// variables and a trailing integer. Signal and region have never changed
// (format version 0: the version a file carries is read and not used); fill
// is at version 1, which added nF02. Setting names are field labels; their
// meaning belongs to the host's editors.
//
//   CDBSubSIGNAL sig;
//   sig.m_strText3 = L"CrossUp(C, MA(C, 20))";
//   CDBSubSIGNAL_VAR v;  v.strText = L"Period";  v.dValue = 20;
//   sig.m_arrVariable.Add(v);
//   sig.Serialize(ar);
#ifndef CHARTCORE_LOGIC_SIGNAL_REGION_FILL_H_
#define CHARTCORE_LOGIC_SIGNAL_REGION_FILL_H_

#include "chartcore/logic/definition_record.h"

// ---------------------------------------------------------------------------
// Variable classes (text, integer, double)
// ---------------------------------------------------------------------------

// CDBSubSIGNAL_VAR: one variable of a signal.
class CHARTCORE_API CDBSubSIGNAL_VAR : public chartcore::LogicVariable {};

// CDBSubREGION_VAR: one variable of a region.
class CHARTCORE_API CDBSubREGION_VAR : public chartcore::LogicVariable {};

// CDBSubFILL_VAR: one variable of a fill.
class CHARTCORE_API CDBSubFILL_VAR : public chartcore::LogicVariable {};

// ---------------------------------------------------------------------------
// CDBSubSIGNAL
// ---------------------------------------------------------------------------

// CDBSubSIGNAL: the definition record of a signal (format version 0).
// Archive order is the declaration order.
class CHARTCORE_API CDBSubSIGNAL : public CDBSubBase {
  DECLARE_SERIAL(CDBSubSIGNAL)

 public:
  static constexpr int kCurrentVersion = 0;

  CDBSubSIGNAL();
  ~CDBSubSIGNAL() override;
  CDBSubSIGNAL(CDBSubSIGNAL&&) = default;
  CDBSubSIGNAL& operator=(CDBSubSIGNAL&&) = default;

  // Serialize: writes or reads every field; the version a file carries is
  // read and ignored. A truncated file throws CArchiveException (endOfFile).
  void Serialize(CArchive& ar) override;

  // CopyDataBase: makes this record a full copy of pSource, variables
  // included. A null source or the record itself changes nothing.
  void CopyDataBase(const CDBSubSIGNAL* pSource);

  int nS01 = 0;
  int nS02 = 1;
  int nS03 = 0;
  COLORREF clrS04 = chartcore::kDefinitionRed;
  int nS05 = -1;
  int nS06 = -1;
  CString m_strText3;
  CString m_strText4;
  CArray<CDBSubSIGNAL_VAR, CDBSubSIGNAL_VAR> m_arrVariable;
  int nTail = -1;

 private:
  // The member-wise copy CopyDataBase is made of.
  CDBSubSIGNAL& operator=(const CDBSubSIGNAL&) = default;
};

// ---------------------------------------------------------------------------
// CDBSubREGION
// ---------------------------------------------------------------------------

// CDBSubREGION: the definition record of a region (format version 0).
// Archive order is the declaration order.
class CHARTCORE_API CDBSubREGION : public CDBSubBase {
  DECLARE_SERIAL(CDBSubREGION)

 public:
  static constexpr int kCurrentVersion = 0;

  CDBSubREGION();
  ~CDBSubREGION() override;
  CDBSubREGION(CDBSubREGION&&) = default;
  CDBSubREGION& operator=(CDBSubREGION&&) = default;

  // Serialize: writes or reads every field; the version a file carries is
  // read and ignored. A truncated file throws CArchiveException (endOfFile).
  void Serialize(CArchive& ar) override;

  // CopyDataBase: makes this record a full copy of pSource, variables
  // included. A null source or the record itself changes nothing.
  void CopyDataBase(const CDBSubREGION* pSource);

  int nR01 = 0;
  int nR02 = 1;
  int nR03 = 0;
  COLORREF clrR04 = chartcore::kDefinitionLightGreen;
  int nR05 = 0;
  int nR06 = 1;
  int nR07 = -1;
  int nR08 = 0;
  CString m_strText3;
  CString m_strText4;
  CArray<CDBSubREGION_VAR, CDBSubREGION_VAR> m_arrVariable;
  int nTail = -1;

 private:
  // The member-wise copy CopyDataBase is made of.
  CDBSubREGION& operator=(const CDBSubREGION&) = default;
};

// ---------------------------------------------------------------------------
// CDBSubFILL
// ---------------------------------------------------------------------------

// CDBSubFILL: the definition record of a fill (format version 1). Archive
// order is the declaration order; nF02 is missing from version 0 files, which
// leave it at -1.
class CHARTCORE_API CDBSubFILL : public CDBSubBase {
  DECLARE_SERIAL(CDBSubFILL)

 public:
  static constexpr int kCurrentVersion = 1;

  CDBSubFILL();
  ~CDBSubFILL() override;
  CDBSubFILL(CDBSubFILL&&) = default;
  CDBSubFILL& operator=(CDBSubFILL&&) = default;

  // Serialize: writes version 1 and every field, or reads a file of version
  // 0 or later (a version of -1, compared unsigned, reads nF02 too). A
  // truncated file throws CArchiveException (endOfFile).
  void Serialize(CArchive& ar) override;

  // CopyDataBase: makes this record a full copy of pSource, variables
  // included. A null source or the record itself changes nothing.
  void CopyDataBase(const CDBSubFILL* pSource);

  int nF01 = 0;
  int nF02 = -1;  // since version 1; older files: -1
  int nF03 = 1;
  int nF04 = 0;
  int nF05 = 4;
  COLORREF clrF06 = chartcore::kDefinitionLightGreen;
  int nF07 = 0;
  int nF08 = 1;
  int nF09 = 0;
  CString m_strText3;
  CString m_strText4;
  CString m_strText5;
  CArray<CDBSubFILL_VAR, CDBSubFILL_VAR> m_arrVariable;
  int nTail = -1;

 private:
  // The member-wise copy CopyDataBase is made of.
  CDBSubFILL& operator=(const CDBSubFILL&) = default;
};

#endif  // CHARTCORE_LOGIC_SIGNAL_REGION_FILL_H_
