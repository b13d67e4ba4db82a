// Indicator definitions: CDBSubINDICA and its element classes.
//
// An indicator definition holds, beside the common header, two blocks of
// integer settings (A and B, several of them colours), a third text, its
// output elements, its variables and its base entries. It is the kind with
// the longest format history (current version 7): a reader takes files of
// every version from 0 on and fills what an older file lacks with the values
// such files always meant. The setting names are field labels; what each one
// selects is decided by the host's indicator editor.
//
//   CDBSubINDICA ind;
//   CDBSubINDICA_ELM line;  line.strE00 = L"MA";  ind.m_arrElement.Add(line);
//   CDBSubINDICA_VAR period;  period.strText = L"Period";  period.dValue = 20;
//   ind.m_arrVariable.Add(period);
//   ind.Serialize(ar);                     // writes version 7 and every field
#ifndef CHARTCORE_LOGIC_INDICA_H_
#define CHARTCORE_LOGIC_INDICA_H_

#include "chartcore/logic/definition_record.h"

// ---------------------------------------------------------------------------
// Element classes
// ---------------------------------------------------------------------------

// CDBSubINDICA_ELM: one output element of an indicator (a line or series the
// indicator draws). The group nE07, clrE08, clrE09, nE10, nE12, nE13 is the
// element's own copy of the record's group nB10, clrB11, clrB12, nB13, nB14,
// nB15, with the same version history. In the archive strE11 comes right
// after nE06 and nE10 comes last.
class CHARTCORE_API CDBSubINDICA_ELM {
 public:
  CString strE00;
  int nE01 = 0;
  int nE02 = 0;
  int nE03 = 0;
  int nE04 = 0;
  int nE05 = 0;
  int nE06 = 0;
  int nE07 = 0;         // since version 3; older files: 0
  COLORREF clrE08 = 0;  // since version 3; older files: blue
  COLORREF clrE09 = 0;  // since version 3; older files: red
  int nE10 = 0;         // since version 7; older files: 0
  CString strE11;
  int nE12 = 0;  // since version 3; older files: 1
  int nE13 = 0;  // since version 3; older files: 0
};

// CDBSubINDICA_VAR: one variable of an indicator (text, integer, double).
class CHARTCORE_API CDBSubINDICA_VAR : public chartcore::LogicVariable {};

// CDBSubINDICA_BASE: one base entry of an indicator: an integer, a double,
// then four integers (archive order as declared).
class CHARTCORE_API CDBSubINDICA_BASE {
 public:
  int nBase0 = 0;
  double dBase1 = 0.0;
  int nBase2 = 0;
  int nBase3 = 0;
  int nBase4 = 0;
  int nBase5 = 0;
};

// ---------------------------------------------------------------------------
// CDBSubINDICA
// ---------------------------------------------------------------------------

// CDBSubINDICA: the definition record of a user indicator (format version 7).
// Fields marked "since N" are missing from files older than version N; the
// comment says what such a file leaves in them ("kept": what the record held
// before the read, the constructor default on a fresh record).
class CHARTCORE_API CDBSubINDICA : public CDBSubBase {
  DECLARE_SERIAL(CDBSubINDICA)

 public:
  // The format version this class writes.
  static constexpr int kCurrentVersion = 7;

  CDBSubINDICA();
  ~CDBSubINDICA() override;
  CDBSubINDICA(CDBSubINDICA&&) = default;
  CDBSubINDICA& operator=(CDBSubINDICA&&) = default;

  // Serialize: writes version 7 and every field, or reads a file of any
  // version (gates compared unsigned, so a version of -1 reads every field).
  // A truncated file throws CArchiveException (endOfFile) and leaves the
  // record partly read.
  void Serialize(CArchive& ar) override;

  // CopyDataBase: makes this record a full copy of pSource: header (version
  // included), the A block, m_strText3, the B block, the three arrays (this
  // record's elements are replaced by copies of the source's, in order) and
  // nTail. A null source or the record itself changes nothing.
  void CopyDataBase(const CDBSubINDICA* pSource);

  int nA01 = 0;
  int nA02 = -1;
  int nA03 = -1;                      // since version 4; kept
  int nA04 = 4;                       // since version 1; kept
  int nA05 = -1;
  int nA06 = 1;
  int nA07 = 0;
  COLORREF clrA08 = chartcore::kDefinitionRed;   // since version 5; kept
  COLORREF clrA09 = chartcore::kDefinitionBlue;  // since version 5; kept
  int nA10 = -1;
  int nA11 = 0;
  int nA12 = 0;  // since version 6; kept
  CString m_strText3;
  CArray<CDBSubINDICA_ELM, CDBSubINDICA_ELM> m_arrElement;
  int nB01 = 5;
  int nB02 = 0;
  int nB03 = 5;
  int nB04 = 1;
  int nB05 = 2;
  int nB06 = 0;
  int nB07 = 0;
  COLORREF clrB08 = RGB(255, 173, 91);   // since version 2; kept
  COLORREF clrB09 = RGB(125, 158, 192);  // since version 2; kept
  int nB10 = 0;                                   // since version 3; older files: 0
  COLORREF clrB11 = chartcore::kDefinitionBlue;  // since version 3; older files: blue
  COLORREF clrB12 = chartcore::kDefinitionRed;   // since version 3; older files: red
  int nB13 = 0;  // since version 7 (written after nB15); older files: 0
  int nB14 = 1;  // since version 3; older files: 1
  int nB15 = 0;  // since version 3; older files: 0
  CArray<CDBSubINDICA_VAR, CDBSubINDICA_VAR> m_arrVariable;
  CArray<CDBSubINDICA_BASE, CDBSubINDICA_BASE> m_arrBase;
  int nTail = 0;

 private:
  // The member-wise copy CopyDataBase is made of.
  CDBSubINDICA& operator=(const CDBSubINDICA&) = default;
};

#endif  // CHARTCORE_LOGIC_INDICA_H_
