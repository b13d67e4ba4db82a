// Definition records: what the seven kinds of the user's trading logic share.
//
// Every definition record (function, indicator, signal, region, fill, pattern,
// optimisation) is a CObject kept one per file in the workspace's logic
// folders. Each starts with the same five header fields and writes its format
// version first; a reader upgrades older files field by field, so a record
// read from any version always writes back the current one. This unit holds
// that common header (CDBSubBase), the version gate, the count-then-elements
// framing of element arrays and the variable shape the kinds share.
//
//   CDBSubINDICA rec;                      // header defaults, version 7
//   CMemFile mem;
//   { CArchive ar(&mem, CArchive::store); rec.Serialize(ar); }
//   mem.SeekToBegin();
//   { CArchive ar(&mem, CArchive::load); CDBSubINDICA back; back.Serialize(ar); }
#ifndef CHARTCORE_LOGIC_DEFINITION_RECORD_H_
#define CHARTCORE_LOGIC_DEFINITION_RECORD_H_

#include <utility>

#include "chartcore/platform/archive.h"
#include "chartcore/platform/arrays.h"
#include "chartcore/platform/cstring.h"
#include "chartcore/platform/export.h"
#include "chartcore/platform/object.h"
#include "chartcore/platform/types.h"

namespace chartcore {

// ---------------------------------------------------------------------------
// Shared values
// ---------------------------------------------------------------------------

// The no-value mark a record's m_dValue holds until the host sets a value:
// the largest finite double.
constexpr double kDefinitionNoValue = 1.7976931348623157e308;

// Colours the record kinds use as defaults and as old-file values (0x00BBGGRR).
constexpr COLORREF kDefinitionRed = 0x000000FF;
constexpr COLORREF kDefinitionBlue = 0x00FF0000;
constexpr COLORREF kDefinitionLightGreen = 0x0090EE90;  // RGB(144, 238, 144)

// ---------------------------------------------------------------------------
// Variable shapes
// ---------------------------------------------------------------------------

// LogicVariable: one variable of a piece of logic, the shape that the
// indicator, signal, region, fill and pattern variables share and that a
// chart object's parameter keeps its own value in. Archive order is the
// declaration order: text, integer, double.
//   strText  the variable's text (its name as the formula uses it)
//   nValue   the integer setting the editor keeps with it
//   dValue   the variable's value
class CHARTCORE_API LogicVariable {
 public:
  CString strText;
  int nValue = 0;
  double dValue = 0.0;
};

// OptimizeVariable: one variable of an optimisation run: the variable shape
// followed by four doubles (declaration and archive order alike).
//   strText, nValue     as LogicVariable
//   dValue1 … dValue4   the four values the optimiser keeps for the variable
//                       (as the host's optimisation editor sets them)
class CHARTCORE_API OptimizeVariable {
 public:
  CString strText;
  int nValue = 0;
  double dValue1 = 0.0;
  double dValue2 = 0.0;
  double dValue3 = 0.0;
  double dValue4 = 0.0;
};

}  // namespace chartcore

// ---------------------------------------------------------------------------
// CDBSubBase: the common header
// ---------------------------------------------------------------------------

// CDBSubBase: the base of the seven definition records. It holds the five
// header fields every record writes first and the rules for reading them;
// it is not created on its own (only the seven kinds are serial classes).
class CHARTCORE_API CDBSubBase : public CObject {
  DECLARE_DYNAMIC(CDBSubBase)

 public:
  ~CDBSubBase() override;

  // Records are not copied as objects; CopyDataBase copies their data.
  CDBSubBase(const CDBSubBase&) = delete;

  // The header, in archive order. m_nVersion is the current format version
  // of the record's class; loading never changes it, so a record read from
  // an older file writes the current version back.
  int m_nVersion;
  CString m_strText1;
  int m_nFlag = 1;
  double m_dValue = chartcore::kDefinitionNoValue;
  CString m_strText2;

 protected:
  // Sets the header defaults with the class's current format version.
  explicit CDBSubBase(int currentVersion) : m_nVersion(currentVersion) {}
  // Moves take the header fields; the run-time class stays the object's own.
  CDBSubBase(CDBSubBase&& other) noexcept;
  CDBSubBase& operator=(CDBSubBase&& other) noexcept;

  // SerializeHeader: storing writes m_nVersion and the header and returns
  // chartcore::internal::kEveryField (every gate open); loading reads the
  // header and returns the file's version for the gates of the caller, while
  // m_nVersion keeps the current version.
  int SerializeHeader(CArchive& ar);

  // Copies the five header fields, m_nVersion included: the base of each
  // record's member-wise copy, which its CopyDataBase is made of.
  CDBSubBase& operator=(const CDBSubBase& source) = default;
};

// ---------------------------------------------------------------------------
// Archive framing shared by the record kinds (not part of the contract)
// ---------------------------------------------------------------------------
namespace chartcore {
namespace internal {

// The gate value that opens every gate: a file version of -1 compares above
// every format version when compared unsigned, so such a file reads every
// field, and a record being written writes every field.
constexpr int kEveryField = -1;

// HasField: whether a file of fileVersion holds a field added in format
// version `since`. The comparison is unsigned, as the format has always
// done it: -1 (0xFFFFFFFF) holds every field.
constexpr bool HasField(int fileVersion, int since) {
  return static_cast<UINT>(fileVersion) >= static_cast<UINT>(since);
}

// Exchange: writes value when the archive stores, reads it when it loads,
// so one function states a record's field order for both directions.
template <class T>
inline void Exchange(CArchive& ar, T& value) {
  if (ar.IsStoring()) {
    ar << value;
  } else {
    ar >> value;
  }
}

// NoDeduce: keeps an argument out of template deduction, so an old-file
// value written as a literal takes the field's own type.
template <class T>
struct NoDeduce {
  using type = T;
};

// ExchangeSince: a field added in format version `since`. A file older than
// that lacks it; the field then takes oldValue.
template <class T>
inline void ExchangeSince(CArchive& ar, int fileVersion, int since, T& value,
                          typename NoDeduce<T>::type oldValue) {
  if (HasField(fileVersion, since)) {
    Exchange(ar, value);
  } else {
    value = std::move(oldValue);
  }
}

// ExchangeIfPresent: a field added in format version `since` that an older
// file lacks; it then keeps what the record held before the read.
template <class T>
inline void ExchangeIfPresent(CArchive& ar, int fileVersion, int since, T& value) {
  if (HasField(fileVersion, since)) Exchange(ar, value);
}

// ExchangeArray: an element array as a 32-bit count followed by the
// elements. Loading empties the array, reads the count and reads that many
// elements one by one into fresh elements at the next index (a count below 1
// leaves the array empty). The array grows only as elements actually arrive,
// so a corrupt count ends in an end-of-file exception, never in a huge
// allocation; each element is read in place, so its strings are allocated
// once.
template <class ELM, class ARG, class ExchangeElement>
void ExchangeArray(CArchive& ar, CArray<ELM, ARG>& array, ExchangeElement exchangeElement) {
  if (ar.IsStoring()) {
    const INT_PTR size = array.GetSize();
    ar << static_cast<int>(size);
    for (INT_PTR i = 0; i < size; ++i) exchangeElement(ar, array.ElementAt(i));
    return;
  }
  array.RemoveAll();
  int count = 0;
  ar >> count;
  for (int i = 0; i < count; ++i) exchangeElement(ar, array.ElementAt(array.Add(ELM())));
}

// Exchange of the two variable shapes, field by field in archive order.
CHARTCORE_API void ExchangeVariable(CArchive& ar, LogicVariable& variable);
CHARTCORE_API void ExchangeVariable(CArchive& ar, OptimizeVariable& variable);

// ExchangeVariables: a variable array of either shape.
template <class VAR, class ARG>
void ExchangeVariables(CArchive& ar, CArray<VAR, ARG>& array) {
  ExchangeArray(ar, array, [](CArchive& a, VAR& variable) { ExchangeVariable(a, variable); });
}

}  // namespace internal
}  // namespace chartcore

#endif  // CHARTCORE_LOGIC_DEFINITION_RECORD_H_
