// CPacketMemory: a series of bars held as parallel columns.
//
// A structured packet keeps up to nine columns of doubles (date, open, high,
// low, close, volume, ratio and two extras, ENPacketDataType), all of one
// length and sharing one set of index fields. Its record layout
// (ENPacketStructType) decides which columns exist: a value line needs only
// close, a candle series date and four prices, a full bar all nine. Bars are
// read and written whole as tagPacketCoreData (columns 0-6) or
// tagPacketCoreDataExtra (0-8), or a column at a time.
//
//   CPacketMemory bars;
//   bars.SetPacketStructType(PST_OHLCV);
//   bars.AddBasic({20240102, 100, 105, 99, 104, 1200});   // ratio 1.0
//   double last_close = bars.GetLastBasic().m_dClose;      // 104
//
// Rules shared by every member: a column the layout does not allocate is
// never touched (reads give the empty value). The record-wide members apply
// the single-series rule of the CPacket member of the same stem: values go
// to the record's columns that exist (Basic: 0-6, Extra: 0-8), while bars
// move (append, insert, remove, shift, swap, roll) in every existing column
// alike so the columns stay aligned, a column beyond the record getting the
// empty value in a new bar. They leave the column cursor (GetColumnCursor)
// at the number of record columns walked, 7 or 9. Members that look for
// "available" bars test the default data type column (close unless set). Storage grows as in
// CPacket: block capacity observable, geometric growth underneath.
#ifndef CHARTCORE_PACKETS_PACKET_MEMORY_H_
#define CHARTCORE_PACKETS_PACKET_MEMORY_H_

#include "chartcore/packets/packet.h"
#include "chartcore/packets/packet_types.h"
#include "chartcore/platform/export.h"

namespace chartcore {
namespace internal {
struct ScratchCache;
}  // namespace internal
}  // namespace chartcore

// Bars of a chart item as parallel columns chosen by a record layout.
class CHARTCORE_API CPacketMemory {
 public:
  // Operator codes of the arithmetic (the CPacket codes).
  typedef ::ENOperatorCalcType ENOperatorType;

  // -------------------------------------------------------------------------
  // Construction
  // -------------------------------------------------------------------------

  // Empty packet of layout PST_VALUE, no column allocated.
  CPacketMemory();
  // Layout PST_VALUE with n bars (AllocPacket(n)) when n >= 1; fill
  // non-zero makes every element of the layout's columns empty.
  CPacketMemory(int n, int fill);
  // Capacity 1, size 0, real size 0; no column is allocated and v is not
  // stored (the form the number takes in a structured context).
  explicit CPacketMemory(double v);
  // A one-element column t holding v, capacity 1, but size 0: v is not
  // readable until the size is set. The column is still owned and freed.
  CPacketMemory(ENPacketDataType t, double v);
  // Deep copy (CopyPacket).
  CPacketMemory(const CPacketMemory& other);
  CPacketMemory(CPacketMemory&& other) noexcept;
  // Frees every column, including one allocated while the size stayed 0.
  ~CPacketMemory();
  // CopyPacket(other).
  CPacketMemory& operator=(const CPacketMemory& other);
  CPacketMemory& operator=(CPacketMemory&& other) noexcept;

  // -------------------------------------------------------------------------
  // Allocation and layout
  // -------------------------------------------------------------------------

  // Every field to its initial value (the layout only when all is 1). The
  // columns, which the initial state no longer refers to, are released.
  void InitPacket(int all);
  // Nothing when the size is below 1. Otherwise frees every column, resets
  // both extreme caches of every column, valid start -1, start 0, end -1,
  // real size 0, block count 0, capacity 0, size 0 and the column cursor -1.
  // The valid end index and the shift-x size are kept.
  void ClearPacket();
  // ClearPacket; for n > 0 size n, capacity in whole 1024-blocks (at least
  // one), and an array of capacity elements for each layout column.
  void AllocPacket(int n);
  // Gives each layout column a fresh array of n elements (capacity elements
  // when n < 1); no column for a layout outside 0..6.
  void AllocPacketMemory(int n);
  // ClearPacket when n < 1; nothing when n equals the size; with keep and a
  // non-zero size every layout column is resized to n keeping its first
  // elements (below the size only what fits: size and end are cut to n);
  // otherwise AllocPacket(n).
  void ReAllocPacket(int n, int keep);
  // Growth check, as CPacket::CheckPacketBoundary.
  int CheckPacketBoundary(int i);
  int CheckPacketBoundary();
  // 1 when 0 <= i < size.
  int CheckBoundaryRange(int i) const;

  ENPacketStructType GetPacketStructType() const { return m_nPacketStructType; }
  // Sets the layout; allocates and frees nothing (a column the new layout
  // adds appears, empty, on the next growth).
  void SetPacketStructType(ENPacketStructType t) { m_nPacketStructType = t; }
  // Frees everything and starts over as a new packet of layout t: every
  // field initial, the valid end and shift-x included, no column allocated
  // until the first append.
  void ResetPacket(ENPacketStructType t);
  // 1 when layout `layout` allocates column t.
  static int IsLayoutColumn(ENPacketStructType layout, ENPacketDataType t);

  // The column used by operations that take none (AddDateValue).
  ENPacketDataType GetDefaultDataType() const { return m_nDefaultDataType; }
  void SetDefaultDataType(ENPacketDataType t) { m_nDefaultDataType = t; }
  // Number of columns that currently hold an array.
  int GetColumnCount() const { return m_nColumnCount; }
  // Loop counter of the last record-wide walk (7 Basic, 9 Extra), the bar
  // of the last VShiftRatio, or -1 after a clear.
  int GetColumnCursor() const { return m_nColumnCursor; }

  // -------------------------------------------------------------------------
  // Index fields and cached extremes
  // -------------------------------------------------------------------------

  int GetPacketSize() const { return m_nPacketSize; }
  // Creates no elements: bars beyond the arrays read empty.
  void SetPacketSize(int n) { m_nPacketSize = n; }
  int GetMaxPacketSize() const { return m_nMaxPacketSize; }
  void SetMaxPacketSize(int n) { m_nMaxPacketSize = n; }
  int GetRealPacketSize() const { return m_nRealPacketSize; }
  void SetRealPacketSize(int n) { m_nRealPacketSize = n; }
  int AddRealPacketSize() { return ++m_nRealPacketSize; }
  int GetStartIndex() const { return m_nStartIndex; }
  void SetStartIndex(int i) { m_nStartIndex = i; }
  int GetEndIndex() const { return m_nEndIndex; }
  void SetEndIndex(int i) { m_nEndIndex = i; }
  int GetValidStartIndex() const { return m_nValidStartIndex; }
  void SetValidStartIndex(int i) { m_nValidStartIndex = i; }
  int GetValidEndIndex() const { return m_nValidEndIndex; }
  void SetValidEndIndex(int i) { m_nValidEndIndex = i; }
  int GetShiftXSize() const { return m_nShiftXSize; }
  void SetShiftXSize(int n) { m_nShiftXSize = n; }

  // Cached extremes of column t. cache_set 0 is the first cache (written by
  // the queries by default), any other value the second (written when a
  // query is given cache_set 1): a chart keeps e.g. the visible range in one
  // and the whole series in the other. A column outside 0..8 gives -1, the
  // no-maximum value or the empty value.
  double GetMaxPacketValue(ENPacketDataType t, int cache_set = 0) const;
  int GetMaxPacketIndex(ENPacketDataType t, int cache_set = 0) const;
  double GetMinPacketValue(ENPacketDataType t, int cache_set = 0) const;
  int GetMinPacketIndex(ENPacketDataType t, int cache_set = 0) const;

  // -------------------------------------------------------------------------
  // Columns and single elements
  // -------------------------------------------------------------------------

  // The raw array of column t, null when it does not exist.
  double* GetPacket(ENPacketDataType t);
  double* GetPacket(ENPacketIndustryType t);
  double* GetPacket(ENPacketOptionType t);
  const double* GetPacket(ENPacketDataType t) const;
  // Copies the size elements of column `from` into column `to`; 0 when
  // either does not exist.
  int ClonePacket(ENPacketDataType to, ENPacketDataType from);

  // Element i of column t (empty when out of range or no column).
  double GetValue(int i, ENPacketDataType t) const;
  double GetValue(int i, ENPacketIndustryType t) const;
  double GetValue(int i, ENPacketOptionType t) const;
  // Element i of column t := v; 1, or 0 when out of range or no column.
  int SetValue(int i, ENPacketDataType t, double v);
  // Element i of column t += v.
  int UpdateAdd(int i, ENPacketDataType t, double v);
  double GetFirstValue(ENPacketDataType t) const;
  double GetLastValue(ENPacketDataType t) const;
  double GetLastPrevValue(ENPacketDataType t) const;
  double GetLastPrePrevValue(ENPacketDataType t) const;
  // Element size-k (empty outside 0..size-1).
  double GetLastFromIndexValue(int k, ENPacketDataType t) const;
  // Element size-1-i for 0 <= i < size.
  double GetReverseValue(int i, ENPacketDataType t) const;
  // Reference to element i of column t when start <= i < size, else to the
  // out-of-range slot (reset to empty each time).
  double& operator()(int i, ENPacketDataType t);
  const double& operator()(int i, ENPacketDataType t) const;
  // Every element of column t := v; 0 when empty or no column.
  int UpdateAll(ENPacketDataType t, double v);
  // Every element of column t equal to a becomes b; 0 when empty, no column
  // or a equals b.
  int Replace(ENPacketDataType t, double a, double b);
  // Adds d to every element of column t; 0 when d is 0.0.
  int VShift(ENPacketDataType t, double d);

  // Element i (i >= 0, checked only against the array) or the last element
  // (i < 0) of column t += v; returns the new value, or the empty value when
  // the packet is empty, the column does not exist or i is outside it.
  double UpdateSum(ENPacketDataType t, double v, int i);
  // Element size-2 of column t += v; the new value, or empty when size < 2.
  double UpdatePrevSum(ENPacketDataType t, double v);
  // Element i of column t *= d when 0 <= i < size and d != 0.0; the column
  // cursor becomes i. 1 when applied.
  int VShiftRatio(int i, ENPacketDataType t, double d);
  // Adjusts open, high, low and close of bar i: + d (mode 0), - d (1),
  // × d (2), / d (3). Nothing when the packet is empty or d is exactly 1.0 (in
  // every mode, so ±1.0 is deliberately no shift) or the empty value. Date,
  // volume and ratio are never touched; i is checked only against the
  // arrays. 1 when applied.
  int VShiftBasicRatio(int i, double d, int mode);

  // Position of v in column t. dir 1 (ascending column): the first index
  // whose element equals v or is the first one above it. Other dir
  // (descending): scanning down, the index whose element equals v or lies
  // above v with the later element below. -1 when none or no column.
  int GetPacketIndex(ENPacketDataType t, double v, int dir) const;

  // -------------------------------------------------------------------------
  // Records: reading
  // -------------------------------------------------------------------------
  // A default record (basic: empty with ratio 1.0; extra: all empty) when
  // the bar is out of range; a missing column keeps its default.

  tagPacketCoreData GetBasic(int i) const;
  tagPacketCoreDataExtra GetExtra(int i) const;
  tagPacketCoreData GetFirstBasic() const;
  tagPacketCoreDataExtra GetFirstExtra() const;
  tagPacketCoreData GetLastBasic() const;
  tagPacketCoreDataExtra GetLastExtra() const;
  tagPacketCoreData GetLastPrevBasic() const;
  tagPacketCoreDataExtra GetLastPrevExtra() const;
  tagPacketCoreData GetLastPrePrevBasic() const;
  tagPacketCoreDataExtra GetLastPrePrevExtra() const;
  // Bar size-k.
  tagPacketCoreData GetLastFromIndexBasic(int k) const;
  tagPacketCoreDataExtra GetLastFromIndexExtra(int k) const;
  // The last bar whose default column value is available.
  tagPacketCoreData GetLastAvailBasic() const;
  tagPacketCoreDataExtra GetLastAvailExtra() const;
  // Bar size-1-i.
  tagPacketCoreData GetReverseBasic(int i) const;
  tagPacketCoreDataExtra GetReverseExtra(int i) const;

  // -------------------------------------------------------------------------
  // Records: appending
  // -------------------------------------------------------------------------
  // Appends grow as CPacket appends do (every column keeps its bars), write
  // at the old size, set the end index to it and return the new size. A
  // column beyond the record (the extras, for a basic record) gets the empty
  // value in the new bar.

  int AddBasic(const tagPacketCoreData& r);
  int AddExtra(const tagPacketCoreDataExtra& r);
  // A bar with only a date (column 0) and a value (default column).
  int AddDateValue(double date, double value);
  // Appends a copy of the last bar (a default record when empty).
  int AddLastBasic();
  int AddLastExtra();
  // CPacket::AddLastAvail per column, with the last available bar of the
  // default column as k for all of them.
  int AddLastAvailBasic(const tagPacketCoreData& r);
  int AddLastAvailExtra(const tagPacketCoreDataExtra& r);
  // Rolling append (CPacket::AddShift modes); -1 when empty.
  int AddShiftBasic(const tagPacketCoreData& r, int mode);
  int AddShiftExtra(const tagPacketCoreDataExtra& r, int mode);
  // AddShiftBasic with the last bar.
  int AddShiftLastBasic(int mode);
  int AddShiftLastExtra(int mode);
  // CPacket::AddShiftLastAvail per column, k from the default column; 1
  // when done, 0 when empty or no bar is available.
  int AddShiftLastAvailBasic(const tagPacketCoreData& r, int mode);
  int AddShiftLastAvailExtra(const tagPacketCoreDataExtra& r, int mode);
  // Puts r before bar 0 (data arriving newest first). keep_size 0: every bar
  // moves one place right and the packet grows (end := new last index);
  // non-zero: a fixed window, the last bar drops out (0 when empty).
  // Returns the size.
  int AddBasicReverse(const tagPacketCoreData& r, int keep_size);
  int AddExtraReverse(const tagPacketCoreDataExtra& r, int keep_size);
  // Inserts r at bar i (0 <= i <= size, else 0). move_all 0 applies
  // CPacket::Insert's rule (only size-1-i bars move: the old last bar is
  // overwritten, the new last slot keeps what it held); non-zero moves every
  // bar from i one place right so none is lost. End := old size. 1.
  int InsertBasic(int i, const tagPacketCoreData& r, int move_all);
  int InsertExtra(int i, const tagPacketCoreDataExtra& r, int move_all);

  // -------------------------------------------------------------------------
  // Records: updating and removing
  // -------------------------------------------------------------------------

  // Bar i := r (0 <= i < size); 1, else 0.
  int SetBasic(int i, const tagPacketCoreData& r);
  int SetExtra(int i, const tagPacketCoreDataExtra& r);
  int SetLastBasic(const tagPacketCoreData& r);
  int SetLastExtra(const tagPacketCoreDataExtra& r);
  // Writes the last bar, like SetLastBasic (the CPacket twin).
  int SetLastPrevBasic(const tagPacketCoreData& r);
  int SetLastPrevExtra(const tagPacketCoreDataExtra& r);
  // UpdateBasic(i, r) = SetBasic; UpdateBasic(r) = SetLastBasic.
  int UpdateBasic(int i, const tagPacketCoreData& r);
  int UpdateBasic(const tagPacketCoreData& r);
  int UpdateExtra(int i, const tagPacketCoreDataExtra& r);
  int UpdateExtra(const tagPacketCoreDataExtra& r);
  // The last available bar (default column) := r; 0 when none.
  int UpdateLastAvailBasic(const tagPacketCoreData& r);
  int UpdateLastAvailExtra(const tagPacketCoreDataExtra& r);
  // Bar size-2 := r; needs size >= 2.
  int UpdatePrevBasic(const tagPacketCoreData& r);
  int UpdatePrevExtra(const tagPacketCoreDataExtra& r);
  // Bar i (i < 0: the last; 0 when empty or i >= size) := r in every
  // existing column 0..6 except `except`. Columns 7 and 8 are left alone.
  int UpdateBasicExcept(int i, const tagPacketCoreData& r, ENPacketDataType except);

  // CPacket::Remove(i, shrink) per column; the size shrinks once.
  int RemoveBasic(int i, int shrink);
  int RemoveExtra(int i, int shrink);
  // CPacket::Remove(i, n, shrink) per column.
  int RemoveBasic(int i, int n, int shrink);
  int RemoveExtra(int i, int n, int shrink);
  int RemoveLeftBasic(int n, int shrink);
  int RemoveLeftExtra(int n, int shrink);
  // As CPacket::RemoveRight: removes nothing and returns 0.
  int RemoveRightBasic(int n, int shrink);
  int RemoveRightExtra(int n, int shrink);
  // CPacket::Shift per column (direction 0 reallocates and resets fields).
  int ShiftBasic(int direction, int n);
  int ShiftExtra(int direction, int n);
  // Exchanges bars i and j (checked only against the arrays); 0 when
  // nothing was exchanged.
  int SwapBasic(int i, int j);
  int SwapExtra(int i, int j);
  // Adds d to the price columns (open, high, low, close) of every bar.
  int VShiftBasic(double d);
  int VShiftExtra(double d);
  // Adds each record value to its column, skipping values that are 0.0 or
  // empty (pass ratio 0.0 to leave the ratio alone).
  int VShiftBasic(const tagPacketCoreData& r);
  int VShiftExtra(const tagPacketCoreDataExtra& r);

  // -------------------------------------------------------------------------
  // Queries per column
  // -------------------------------------------------------------------------
  // The CPacket queries on column t (a missing column finds nothing). The
  // trailing `cache` is the CPacket cache flag (1: store the result); the
  // trailing `cache_set` picks which of the column's two caches it goes to.

  int GetFirstAvailIndex(ENPacketDataType t) const;
  int GetLastAvailIndex(ENPacketDataType t) const;
  double GetFirstAvailValue(ENPacketDataType t) const;
  double GetFirstAvailValue(ENPacketDataType t, int& idx) const;
  double GetFirstAvailValue(int from, int to, ENPacketDataType t, int& idx) const;
  double GetLastAvailValue(ENPacketDataType t) const;
  double GetLastAvailValue(ENPacketDataType t, int& idx) const;
  double GetLastAvailValue(int from, int to, ENPacketDataType t, int& idx) const;
  int FindIndexOverValue(ENPacketDataType t, double v) const;
  int FindIndexBetweenValues(ENPacketDataType t, double a, double b) const;
  int FindIndexClosestValues(ENPacketDataType t, double v) const;
  int FindIndexsBetweenValues(ENPacketDataType t, double a, double b, int& first, int& second) const;
  int FindValuePos(ENPacketDataType t, double v, int dir) const;

  int GetMaxIndex(int from, int to, ENPacketDataType t, int cache_set = 0);
  int GetMinIndex(int from, int to, ENPacketDataType t, int cache_set = 0);
  double GetMaxValue(int from, int to, ENPacketDataType t, int cache = 0, int cache_set = 0);
  double GetMinValue(int from, int to, ENPacketDataType t, int cache = 0, int cache_set = 0);
  double GetMaxValueIndex(int from, int to, ENPacketDataType t, int& idx, int cache = 0, int cache_set = 0);
  double GetMinValueIndex(int from, int to, ENPacketDataType t, int& idx, int cache = 0, int cache_set = 0);
  double GetMaxMinValue(int from, int to, ENPacketDataType t, double& max, double& min, int cache = 0,
                        int cache_set = 0);
  double GetMaxMinValueIndex(int from, int to, ENPacketDataType t, double& max, double& min, int& max_index,
                             int& min_index, int cache = 0, int cache_set = 0);

  // -------------------------------------------------------------------------
  // Whole-packet operations
  // -------------------------------------------------------------------------

  // Builds this packet, in its own layout, from column t of src so that a
  // single series stands for a whole bar (open, high, low and close all the
  // series); date, volume, ratio and extras come from src's own columns
  // (empty where src lacks them). Takes src's index fields, capacity and
  // first extreme cache; the real size is deliberately not taken (it stays
  // as the clear left it). 0 when src is null or empty.
  int FillPacket(const CPacketMemory* src, ENPacketDataType t);
  // Every layout column := running sum of src's same column (element i =
  // sum of elements 0..i-1, element 0 = 0.0); a column src lacks becomes
  // empty. Takes src's index fields and both caches, not the real size.
  int AccumPacket(const CPacketMemory* src);
  // Reverses every column over start..end as CPacket::ReversePacket. 0 only
  // for a negative size.
  int ReversePacket();
  // Reverses column t only; 0 when it does not exist.
  int ReversePacket(ENPacketDataType t);

  // Deep copy of src: layout, default data type, every field and column.
  // A src of size 0 leaves this packet empty with src's layout and gives 0.
  int CopyPacket(const CPacketMemory& src);
  int CopyPacket(const CPacketMemory* src);
  // Bars from..to of src (every column of src's layout), as
  // CPacket::CopyPacket(src, from, to): start 0, end count-1, src's shift-x
  // and valid range. 0 when src is null or empty, from < src start or
  // to > src end.
  int CopyPacket(const CPacketMemory* src, int from, int to);
  // Column t (which the layout must allocate) := values[0..n-1]. When n
  // differs from the size the packet is resized to n bars, keeping the
  // other columns' first bars and leaving new bars empty there. Afterwards
  // start and valid start 0, end and valid end n-1. 0 for bad arguments.
  int CopyValues(ENPacketDataType t, const double* values, int n);
  // CopyValues from a single-series packet's elements.
  int CopyValues(ENPacketDataType t, const CPacket* src);
  // Inserts every bar of src before bar `index` (0..size); src's missing
  // columns give empty values. 1, or 0 for a null/empty src or bad index.
  int InsertPacket(const CPacketMemory* src, int index);
  // Appends every bar of src; returns the new size (0 when nothing added).
  int AddPacket(const CPacketMemory* src);

  // -------------------------------------------------------------------------
  // Arithmetic
  // -------------------------------------------------------------------------
  // The CPacket rules applied to each column of this packet's layout with
  // the same column of the right operand (a column the right lacks reads as
  // empty). A number is broadcast to every column.

  CPacketMemory operator+(const CPacketMemory& right);
  CPacketMemory operator+(double right);
  CPacketMemory operator-(const CPacketMemory& right);
  CPacketMemory operator-(double right);
  CPacketMemory operator*(const CPacketMemory& right);
  CPacketMemory operator*(double right);
  CPacketMemory operator/(const CPacketMemory& right);
  CPacketMemory operator/(double right);
  CPacketMemory operator%(const CPacketMemory& right);
  CPacketMemory operator%(double right);
  CPacketMemory& operator+=(const CPacketMemory& right);
  CPacketMemory& operator-=(const CPacketMemory& right);
  CPacketMemory& operator*=(const CPacketMemory& right);
  CPacketMemory& operator/=(const CPacketMemory& right);
  CPacketMemory& operator%=(const CPacketMemory& right);

 private:
  // ClearPacket, then one-element default column holding v when the layout
  // is PST_VALUE; capacity and block count 1, size 0.
  CPacketMemory& operator=(const double& v);
  CPacketMemory CalcOperatorType1(ENOperatorType code, const CPacketMemory& right);
  CPacketMemory& CalcOperatorType2(ENOperatorType code, const CPacketMemory& right);
  // A one-bar packet of `layout` with v in every layout column.
  static CPacketMemory MakeScalar(ENPacketStructType layout, double v);

  chartcore::internal::SeriesRef Col(int t) const;
  chartcore::internal::ExtremeSlots Cache(int t, int cache_set, chartcore::internal::ScratchCache& scratch);
  bool HasColumn(int t) const;
  void SetColumn(int t, double* data, int alloc);
  void FreeAllColumns();
  void ResetCaches();
  void CopyFieldsFrom(const CPacketMemory& src);
  // Grows for `extra` more bars as appends do; returns the old size.
  int GrowFor(int extra);
  // Every existing or layout column holds at least n elements.
  void EnsureStorage(int n);
  int LastAvailBar() const;
  void ReadRow(int i, double* row, int ncols) const;
  int WriteRow(int i, const double* row, int ncols);
  int AppendRow(const double* row, int ncols);
  int AddLastAvailRow(const double* row, int ncols);
  int AddShiftRow(const double* row, int mode, int ncols);
  int AddShiftLastAvailRow(const double* row, int mode, int ncols);
  int AddRowReverse(const double* row, int keep_size, int ncols);
  int InsertRow(int i, const double* row, int move_all, int ncols);
  int RemoveRow(int i, int shrink, int ncols);
  int RemoveRows(int i, int n, int shrink, int ncols);
  int ShiftRows(int direction, int n, int ncols);
  int SwapRows(int i, int j, int ncols);
  int VShiftPrices(double d, int ncols);
  int VShiftRow(const double* row, int ncols);

  int m_nColumnCount;
  int m_nColumnCursor;
  ENPacketStructType m_nPacketStructType;
  double* m_apData[PACKET_DATA_TYPE_COUNT];
  double m_dOutOfRange;
  ENPacketDataType m_nDefaultDataType;
  int m_nShiftXSize;
  int m_nValidStartIndex;
  int m_nValidEndIndex;
  int m_nStartIndex;
  int m_nEndIndex;
  int m_nBlockCount;
  int m_nMaxPacketSize;
  int m_nPacketSize;
  int m_nRealPacketSize;
  int m_anMaxPacketIndex[PACKET_DATA_TYPE_COUNT];
  int m_anMinPacketIndex[PACKET_DATA_TYPE_COUNT];
  int m_anMaxPacketIndex2[PACKET_DATA_TYPE_COUNT];
  int m_anMinPacketIndex2[PACKET_DATA_TYPE_COUNT];
  double m_adMaxPacketValue[PACKET_DATA_TYPE_COUNT];
  double m_adMinPacketValue[PACKET_DATA_TYPE_COUNT];
  double m_adMaxPacketValue2[PACKET_DATA_TYPE_COUNT];
  double m_adMinPacketValue2[PACKET_DATA_TYPE_COUNT];
  // Physical length of each column's array.
  int m_anAlloc[PACKET_DATA_TYPE_COUNT];
};

#endif  // CHARTCORE_PACKETS_PACKET_MEMORY_H_
