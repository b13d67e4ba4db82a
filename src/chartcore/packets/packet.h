// CPacket: one chart data series.
//
// A packet is a growable series of doubles indexed by bar (x position), with
// the empty value (chartcore::kPacketEmptyValue) in every slot that holds no
// data. It keeps the chart's index fields (start and end index, the valid
// range, the shift along x, a real-data count) and a cache of the last
// extremes asked for. Indicator code appends bar by bar, updates the forming
// last bar, rolls fixed windows and combines whole series with + - * / %.
//
//   CPacket close;
//   for (double c : {101.0, 102.5, 101.75}) close.Add(c);   // size 3, end 2
//   close.SetLastValue(102.0);                               // forming bar
//   double range = close.GetMaxMinValue(0, 2, hi, lo, 1);    // 1.0, cached
//
// Storage: the capacity the packet reports (GetMaxPacketSize) moves in blocks
// of 1024 elements as the chart code expects. The physical array behind it
// grows geometrically, so appends cost O(1) amortised; slots never written
// hold 0.0. No operation reads or writes outside that array: where an index
// is not checked against the size, it is still checked against the array.
// Where the bookkeeping alone would lead outside it, the packet does this:
//  - copies and Copy() size the array for the capacity they record, and
//    every append makes room for its write whatever the capacity says;
//  - growing an empty packet resets its fields as AllocPacket does but the
//    append still writes at the size it found;
//  - GetLastPrevValue/GetLastPrePrevValue on a shorter packet give empty;
//  - ReAllocPacket below the size keeps what fits (size and end follow);
//  - Shift(0, n) fills up to the new size only, Shift(1, n) reads no slot
//    past the size, AddShiftLastAvail's left roll reads empty past the end;
//  - AddLastAvail puts v after the last element when that one is available;
//  - arithmetic marks only the left operand's own elements, and result
//    elements that are not computed hold the empty value;
//  - a negative size left by SetPacketSize counts as 0 for appends, and an
//    array beyond 2^29 elements fails as an allocation (std::bad_alloc).
#ifndef CHARTCORE_PACKETS_PACKET_H_
#define CHARTCORE_PACKETS_PACKET_H_

#include "chartcore/packets/packet_types.h"
#include "chartcore/platform/export.h"

namespace chartcore {
namespace internal {
struct SeriesRef;
struct ExtremeSlots;
}  // namespace internal
}  // namespace chartcore

// A single bar-indexed series of doubles with the chart's index fields.
class CHARTCORE_API CPacket {
 public:
  // Operator codes of the arithmetic (OCT_PLUS .. OCT_MODULO).
  typedef ::ENOperatorCalcType ENOperatorCalcType;

  // -------------------------------------------------------------------------
  // Construction
  // -------------------------------------------------------------------------

  // Empty packet: no array, size and capacity 0, start 0, end -1, valid
  // range -1/-1, cached max at the no-maximum value and min at empty.
  CPacket();

  // n elements (AllocPacket(n)); with fill non-zero every element is the
  // empty value, else they read 0.0. n < 1 gives an empty packet.
  CPacket(int n, int fill);

  // A one-element series holding v (size 1, capacity 1, real size 0): the
  // form a number takes when broadcast over a series.
  explicit CPacket(double v);

  // Deep copy (CopyPacket).
  CPacket(const CPacket& other);

  // Takes the other packet's array; the other is left as a new packet.
  CPacket(CPacket&& other) noexcept;

  ~CPacket();

  // Clears, then copies the elements and every index field of a source of
  // size >= 1; a smaller source leaves this packet cleared.
  CPacket& operator=(const CPacket& other);

  // Takes the other packet's array and fields.
  CPacket& operator=(CPacket&& other) noexcept;

  // Clears and stores v in a one-element array with capacity and block
  // count 1, but leaves the size at 0: the value is not readable until the
  // caller sets the size (SetPacketSize(1)).
  CPacket& operator=(const double& v);

  // -------------------------------------------------------------------------
  // Allocation
  // -------------------------------------------------------------------------

  // Nothing when n equals the size. Otherwise clears, and for n > 0 sets the
  // size to n and the capacity to whole 1024-blocks (at least one) of
  // unfilled elements (they read 0.0).
  void AllocPacket(int n);

  // Drops the array for a zero-length one: capacity 0, size 0, real size 0,
  // valid range -1/-1, start 0, end -1, day-change 0, flag 0; ready for
  // appends. The extremes and the shift-x size are kept.
  void AllocPacketFirst();

  // Replaces the array by a fresh one of n elements (capacity elements when
  // n < 1) without touching any field. The old array is released.
  void AllocPacketMemory(int n);

  // Nothing when n equals the size; ClearPacket when n < 1; with keep
  // non-zero and a non-zero size the array is resized to n keeping the first
  // elements (no other field changes, except that resizing below the size
  // keeps only what fits: the size and end index are cut to n); otherwise
  // AllocPacket(n).
  void ReAllocPacket(int n, int keep);

  // Sets every field to its initial value. The array, which the initial
  // state no longer refers to, is released rather than leaked.
  void InitPacket();

  // Frees the array and resets: extremes, valid start -1, start 0, end -1,
  // day-change 0, flag 0, real size 0, block count 0, capacity 1024, size 0.
  // The valid end index and the shift-x size are deliberately kept.
  void ClearPacket();

  // ClearPacket when the size is above 0, then AllocPacketFirst.
  void ResetPacket();

  // Frees the array (the data pointer becomes null); no field changes.
  void DeletePacket();

  // Growth check for a requested count i: 1 when i is below the capacity of
  // a non-empty packet, or when i needs as many blocks as the packet has;
  // otherwise stores the new block count and capacity and returns 0.
  int CheckPacketBoundary(int i);

  // CheckPacketBoundary(size).
  int CheckPacketBoundary();

  // 1 when 0 <= i < size, else 0.
  int CheckBoundaryRange(int i) const;

  // -------------------------------------------------------------------------
  // Index fields
  // -------------------------------------------------------------------------

  int GetPacketSize() const { return m_nPacketSize; }
  // Sets the number of elements in use. Creates no elements: indexes beyond
  // the array read as the empty value until an append grows it.
  void SetPacketSize(int n) { m_nPacketSize = n; }
  int GetMaxPacketSize() const { return m_nMaxPacketSize; }
  void SetMaxPacketSize(int n) { m_nMaxPacketSize = n; }
  int GetRealPacketSize() const { return m_nRealPacketSize; }
  void SetRealPacketSize(int n) { m_nRealPacketSize = n; }
  // Increments the real size and returns the new value.
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
  int GetDayChangeSize() const { return m_nDayChangeSize; }
  void SetDayChangeSize(int n) { m_nDayChangeSize = n; }
  int IsTurnUpDnReal() const { return m_nTurnUpDnReal; }
  void SetTurnUpDnReal(int flag) { m_nTurnUpDnReal = flag; }
  double GetMaxPacketValue() const { return m_dMaxPacketValue; }
  int GetMaxPacketIndex() const { return m_nMaxPacketIndex; }
  double GetMinPacketValue() const { return m_dMinPacketValue; }
  int GetMinPacketIndex() const { return m_nMinPacketIndex; }

  // -------------------------------------------------------------------------
  // Reading and writing elements
  // -------------------------------------------------------------------------
  // Reads give the empty value and writes 0 when the index is out of range,
  // the size is below 1 or there is no array; writes give 1 on success.

  double GetValue(int i) const;
  int SetValue(int i, double v);
  // Same as SetValue.
  int Update(int i, double v);
  // Element i += v.
  int UpdateAdd(int i, double v);
  // Last element := v.
  int Update(double v);
  int SetLastValue(double v);
  // Writes the last element, exactly like SetLastValue (not the one before).
  int SetLastPrevValue(double v);
  // Element size-2 := v; needs size >= 2.
  int UpdatePrev(double v);
  // Last element += v.
  int UpdateAdd(double v);
  // Element i += v for i >= 0, else the last element. i is not checked
  // against the size, only against the array (0 when outside it).
  int UpdateSum(double v, int i);
  // Every element in use := v.
  int UpdateAll(double v);
  // Every element in use := v (no result).
  void Fill(double v);
  // The element at GetLastAvailIndex() := v; 0 when there is none.
  int UpdateLastAvail(double v);

  double GetFirstValue() const;
  double GetLastValue() const;
  // Element size-2 (empty when the packet is shorter).
  double GetLastPrevValue() const;
  // Element size-3 (empty when the packet is shorter).
  double GetLastPrePrevValue() const;
  // Element size-k; k is not range-checked, but a slot outside 0..size-1
  // reads as the empty value.
  double GetLastFromIndexValue(int k) const;
  // Element size-1-i for 0 <= i < size.
  double GetReverseValue(int i) const;

  // Reference to element i when start index <= i < size; otherwise a
  // reference to this packet's out-of-range slot, reset to the empty value
  // each time, so writing through it changes no element.
  double& operator[](int i);
  // Element i when start index <= i < size, else a shared empty value.
  const double& operator[](int i) const;

  CPacket* operator->() { return this; }
  CPacket& operator*() { return *this; }

  // The raw array (null when none); size elements are in use.
  double* GetPacket() { return m_pData; }
  const double* GetPacket() const { return m_pData; }

  // -------------------------------------------------------------------------
  // Appending
  // -------------------------------------------------------------------------
  // Each append grows for one more element (CheckPacketBoundary(size + 1),
  // then ReAllocPacket keeping the elements), writes at the old size, sets
  // the end index to it and increments the size. Growth of an empty packet
  // resets its fields as AllocPacket does but never moves the write index.

  // Appends v; returns the new size.
  int Add(double v) {
    const int n = m_nPacketSize;
    if (n > 0 && n < m_nAlloc && n + 1 < m_nMaxPacketSize) {
      m_pData[n] = v;
      m_nEndIndex = n;
      return m_nPacketSize = n + 1;
    }
    return AddGrowing(v);
  }
  // Appends a copy of the last element (empty when the packet was empty).
  void AddLast();
  // As AddLast; returns the new size.
  int AddSameLast();
  // The slot at the old size is increased by v (not set first: a slot never
  // written holds 0.0, one left behind by a shrinking Remove its old value).
  void AccumAdd(double v);
  // Appends so that v follows the last available value: with k the last
  // available index, the appended bar is first made empty and then element
  // k+1 := v (so v lands after the last element when that one is
  // available); without an available value, element end+1 := v. Returns the
  // new size.
  int AddLastAvail(double v);

  // Rolling window of fixed size. mode 1: drop the first element and put v
  // last; mode 0: move elements 0..size-3 one place right (element 0 keeps
  // its value) and put v last; other: overwrite the last element. Returns the
  // size, or -1 when the packet is empty.
  int AddShift(double v, int mode);
  // AddShift with the last element as v.
  void AddShiftLast(int mode);
  // With k the last available index (nothing when none): Insert(k+1, v),
  // then mode 1 moves every element one place left (the last becomes empty,
  // being read from past the end) and mode 0 moves elements 0..size-2 one
  // place right. The size stays grown by one.
  void AddShiftLastAvail(double v, int mode);
  // Appends a copy of the last element, then moves elements 1..size-1 one
  // place left; returns the new size (-1 when empty).
  int AddShiftSameLast();

  // -------------------------------------------------------------------------
  // Inserting, removing, rearranging
  // -------------------------------------------------------------------------

  // Inserts v at i (0 <= i <= size; else 0). At i == size it appends.
  // Otherwise it moves only size-1-i elements: the old last element is
  // overwritten and the new last slot is not written (AddShiftLastAvail
  // relies on this count). End index := old size. Returns 1.
  int Insert(int i, double v);
  // When elements follow i, moves them one place left and returns 1; for
  // the last index sets it empty and returns 0. The size shrinks by one when
  // shrink is 1. An index outside 0..size-1 changes nothing and gives 0.
  int Remove(int i, int shrink);
  // k = size-i-n-1: when k >= 1 moves k elements from i+n to i (the last
  // element before the removal stays where it was), shrinks by n when shrink
  // is 1 and returns 1; else 0. i or n below 0 gives 0.
  int Remove(int i, int n, int shrink);
  // Remove(0, n, shrink).
  int RemoveLeft(int n, int shrink);
  // Remove(size-n, n, shrink): k is always below 1, so this removes nothing
  // and returns 0.
  int RemoveRight(int n, int shrink);
  // Every element equal to a becomes b; 0 when the packet is empty or a
  // equals b.
  int Replace(double a, double b);
  // Exchanges elements i and j (not checked against the size); 0 when either
  // lies outside the array.
  int Swap(int i, int j);
  // Adds d to every element in use, empty ones included; 0 when d is 0.0 or
  // the packet is empty.
  int VShift(double d);
  // direction 1: elements move n places left and the last n become empty.
  // direction 0: the packet is reallocated to size+n (fields reset as by
  // AllocPacket), start := old start + n, shift-x := n, and the old elements
  // land n places right; the slots below the new start are empty. Other
  // directions, n <= 0 or an empty packet: nothing (0).
  int Shift(int direction, int n);
  // Clears, then holds n values (valid range and start..end = 0..n-1). The
  // capacity stays as the clear left it.
  CPacket& Copy(const double* values, int n);
  // As operator=; 0 when there is nothing to copy.
  int CopyPacket(const CPacket& src);
  int CopyPacket(const CPacket* src);
  // Clears; then element i := sum of src elements 0..i-1 for i from 0 to
  // src's end index (element 0 is 0.0), every field taken from src. 0 when
  // src is null or empty.
  int AccumPacket(const CPacket* src);

  // 1.0 where the element is 0.0, else 0.0 (empty gives 0.0), from the start
  // index on; below it the result is empty. Same size and start index.
  CPacket operator!() const;
  // The series moved along x by shift bars. The first max(shift+start, 0)
  // elements are empty and that is the result's start. For shift < 0 the
  // result's shift-x is shift and its end index size-shift+1; for shift >= 0
  // both stay as a new packet has them (0 and -1).
  CPacket operator()(int shift) const;

  // -------------------------------------------------------------------------
  // Queries: available values and searches
  // -------------------------------------------------------------------------
  // "Available" means not the empty value (NaN is available). The available
  // range is start index .. end index.

  int GetFirstAvailIndex() const;
  int GetLastAvailIndex() const;
  // The first available value (empty when none; idx -1).
  double GetFirstAvailValue() const;
  double GetFirstAvailValue(int& idx) const;
  // Over from..to; indexes outside the stored range count as empty.
  double GetFirstAvailValue(int from, int to, int& idx) const;
  double GetLastAvailValue() const;
  double GetLastAvailValue(int& idx) const;
  double GetLastAvailValue(int from, int to, int& idx) const;

  // First index from the start index with element >= v (-1; also for an
  // empty v). Empty elements match, being the largest value.
  int FindIndexOverValue(double v) const;
  // First index from the start index with a <= element <= b.
  int FindIndexBetweenValues(double a, double b) const;
  // First index i with element i <= v and element i+1 >= v (or i = size-2),
  // bracketing v in an ascending series; the slot after the last reads
  // empty, so a last element <= v is found.
  int FindIndexClosestValues(double v) const;
  // first := first index equal to a from the start index, second := first
  // index equal to b after it; 1 only when both were found.
  int FindIndexsBetweenValues(double a, double b, int& first, int& second) const;
  // Exact search of the whole array: forward when dir is 1, else backward.
  int FindValuePos(double v, int dir) const;

  // -------------------------------------------------------------------------
  // Queries: extremes
  // -------------------------------------------------------------------------
  // A range [from, to] is invalid when from < 0, size < 1 or to >= size;
  // from > to is valid but empty. With cache equal to 1 the result is stored
  // in the cached extremes (on every path, so an invalid range resets them).

  // Index of the first maximum; -1 when none. Always caches index and value.
  int GetMaxIndex(int from, int to);
  int GetMinIndex(int from, int to);
  // Maximum (no-maximum value when none or invalid); caches the value only.
  double GetMaxValue(int from, int to, int cache = 0);
  // Minimum (empty when none or invalid).
  double GetMinValue(int from, int to, int cache = 0);
  // Maximum with its first index in idx (-1 when none).
  double GetMaxValueIndex(int from, int to, int& idx, int cache = 0);
  double GetMinValueIndex(int from, int to, int& idx, int cache = 0);
  // max - min with both set; a value not above the no-maximum value never
  // becomes the maximum. Invalid range: the empty value. Caches both values.
  double GetMaxMinValue(int from, int to, double& max, double& min, int cache = 0);
  // As GetMaxMinValue with the first indexes; caches the values only.
  double GetMaxMinValueIndex(int from, int to, double& max, double& min, int& max_index, int& min_index,
                             int cache = 0);

  // Cached extremes.
  double GetMaxValue() const { return m_dMaxPacketValue; }
  double GetMinValue() const { return m_dMinPacketValue; }
  double GetMaxValueIndex(int& idx) const;
  double GetMinValueIndex(int& idx) const;
  double GetMaxMinValue(double& max, double& min) const;
  double GetMaxMinValueIndex(double& max, double& min, int& max_index, int& min_index) const;

  // -------------------------------------------------------------------------
  // Transforms
  // -------------------------------------------------------------------------

  // Compacts to the front: elements outside [from, to] stay, inside it only
  // those equal to v stay. shrink non-zero cuts the size by the number
  // dropped (else the tail keeps its old contents). Then valid start 0, valid
  // end -1, start 0, end size-1. 0 when from < 0, to >= size or no array.
  int Trim(int from, int to, double v, int shrink);
  // Trim over 0..n-1; 0 when n < 1.
  int TrimLeft(int n, double v, int shrink);
  // Trim over size-n..size-1; 0 when n < 1.
  int TrimRight(int n, double v, int shrink);
  // Element i := old element size-1-i for i from start to end; the rest is
  // not rewritten. 0 only for a negative size.
  int ReversePacket();
  // Sorts the whole array ascending (dir 1) or descending (other dir) by the
  // exchange rule; empty values sort last when ascending. Returns 1.
  int SortPacket(int dir);
  // Clears, then copies src elements from..to to 0..; takes shift-x, the
  // valid range, day-change and flag from src; start 0, end count-1. 0 when
  // src is null or empty, from < src start or to > src end.
  int CopyPacket(const CPacket* src, int from, int to);

  // -------------------------------------------------------------------------
  // Arithmetic
  // -------------------------------------------------------------------------
  // Element-wise with empty propagation. A number acts as a one-element
  // packet broadcast over every index. Deliberate behaviours: an operand
  // shorter than the other (and not of size 1) marks the left operand's own
  // element empty at those indexes; division by exactly 0.0 repeats the
  // previous result; % of two packets computes nothing (all empty).

  // New packet: the result of this op right. An empty left operand, or
  // exactly one empty operand, gives a copy of this packet.
  CPacket CalcOperator1(ENOperatorCalcType code, const CPacket& right);
  // Changes this packet: every computed result is stored in element 0 (it
  // ends holding the last one); indexes at or beyond the right operand's
  // size, and empty operands, become empty. A one-element left operand is
  // combined with the right's element 0 without empty tests; / and % by
  // zero give empty. Returns this packet.
  CPacket& CalcOperator2(ENOperatorCalcType code, const CPacket& right);

  CPacket operator+(const CPacket& right);
  CPacket operator+(double right);
  CPacket operator-(const CPacket& right);
  CPacket operator-(double right);
  CPacket operator*(const CPacket& right);
  CPacket operator*(double right);
  CPacket operator/(const CPacket& right);
  CPacket operator/(double right);
  CPacket operator%(const CPacket& right);
  CPacket operator%(double right);
  CPacket& operator+=(const CPacket& right);
  CPacket& operator-=(const CPacket& right);
  CPacket& operator*=(const CPacket& right);
  CPacket& operator/=(const CPacket& right);
  CPacket& operator%=(const CPacket& right);

 private:
  friend class CPacketMemory;

  chartcore::internal::SeriesRef Ref() const;
  chartcore::internal::ExtremeSlots Cache();
  int AddGrowing(double v);
  // Grows for one more element; returns the write index (the old size).
  int GrowForAppend();
  // Makes the array hold at least n elements, keeping its contents.
  void EnsureStorage(int n);
  void ReleaseData();
  void CopyFieldsFrom(const CPacket& src);
  void ResetExtremes();

  double* m_pData;
  int m_nShiftXSize;
  double m_dOutOfRange;
  int m_nValidStartIndex;
  int m_nValidEndIndex;
  int m_nStartIndex;
  int m_nEndIndex;
  int m_nDayChangeSize;
  int m_nTurnUpDnReal;
  int m_nBlockCount;
  int m_nMaxPacketSize;
  int m_nPacketSize;
  int m_nRealPacketSize;
  int m_nMaxPacketIndex;
  int m_nMinPacketIndex;
  double m_dMaxPacketValue;
  double m_dMinPacketValue;
  // Physical length of m_pData (0 when null).
  int m_nAlloc;
};

#endif  // CHARTCORE_PACKETS_PACKET_H_
