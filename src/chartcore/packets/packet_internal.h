// Storage and series kernels shared by CPacket and CPacketMemory.
//
// Not part of the library's contract. A packet's observable capacity moves in
// 1024-element blocks, but its physical array is sized here: it grows
// geometrically (or in place), is zero-filled where nothing was written, and
// every kernel reads and writes only inside it. A series is described by a
// SeriesRef (array, physical length, packet size, start and end index), so a
// single-series packet and each column of a structured packet share one code.
//
//   internal::SeriesRef s{data, alloc, size, start, end};
//   int last = internal::LastAvailIndex(s, s.start, s.end);
#ifndef CHARTCORE_PACKETS_PACKET_INTERNAL_H_
#define CHARTCORE_PACKETS_PACKET_INTERNAL_H_

#include <climits>
#include <cstdint>

#include "chartcore/packets/packet_types.h"

namespace chartcore {
namespace internal {

// ---------------------------------------------------------------------------
// Physical storage
// ---------------------------------------------------------------------------

// Largest element count a packet array may have (2^29 doubles); a larger
// request fails as an allocation failure (std::bad_alloc).
constexpr int kMaxPacketElements = 1 << 29;

// A zero-filled array of n elements (at least one physically, so a zero-length
// packet still owns an array). Throws std::bad_alloc beyond the limit.
double* AllocValues(int n);

// Grows or shrinks p from old_alloc to n elements keeping min(old_alloc, n)
// leading values; the new tail is zero, except that slots below fill_empty_to
// get the empty value. p may be null. Throws std::bad_alloc (p then unchanged).
double* ResizeValues(double* p, int old_alloc, int n, int fill_empty_to);

// Releases an array from AllocValues/ResizeValues (null is fine).
void FreeValues(double* p);

// Physical length to allocate when `need` elements must fit into an array of
// `alloc`: at least half as much again as before, so n appends cost O(n).
int GrowthTarget(int alloc, int need);

// Number of blocks the growth policy gives for a requested element count.
int BlockCountFor(int count);

// Capacity of a block count, saturated to the int range.
int CapacityOfBlocks(int blocks);

// The growth check of both packet classes for a requested count i: 1 when
// i is below the capacity of a non-empty packet or needs as many blocks as
// it has; otherwise stores the new block count and capacity and gives 0.
int CheckBoundary(int i, int size, int& block_count, int& capacity);

// Physical length for a copy of a packet: its recorded capacity when that is
// a sane figure, so appends after the copy need no reallocation; never less
// than the copied size.
inline int CopyAllocFor(int capacity, int size) {
  const int cap = capacity > kMaxPacketElements ? 0 : capacity;
  const int need = size > 0 ? size : 0;
  return cap > need ? cap : need;
}

// The storage step of ReAllocPacket for one column that keeps its values,
// from a packet of `size` elements to n: a shrink (n < size) keeps the first
// n values in an array of exactly n; otherwise a missing array, or one
// shorter than n, grows by GrowthTarget with the slots below `size` that had
// no storage reading empty. Returns true when a missing array was made by a
// growth (a shrink never counts as a new column).
bool ResizeKeeping(double*& data, int& alloc, int n, int size);

// An index computed in 64 bits, or -1 (out of range for every packet) when
// it does not fit an int.
inline int NarrowIndex(std::int64_t i) { return (i < INT_MIN || i > INT_MAX) ? -1 : static_cast<int>(i); }

// ---------------------------------------------------------------------------
// Series view
// ---------------------------------------------------------------------------

// One series as the kernels see it. `alloc` is the physical length of
// `data`; `size`, `start` and `end` are the packet's index fields.
struct SeriesRef {
  double* data;
  int alloc;
  int size;
  int start;
  int end;
};

// Elements that are both in use and physically present (0 when no array).
inline int Stored(const SeriesRef& s) {
  if (s.data == nullptr || s.size <= 0) return 0;
  return s.size < s.alloc ? s.size : s.alloc;
}

// Element i when 0 <= i < size (and present), else the empty value.
inline double ReadAt(const SeriesRef& s, int i) {
  return (i >= 0 && i < Stored(s)) ? s.data[i] : kPacketEmptyValue;
}

// Writes element i when 0 <= i < size (and present); false otherwise.
inline bool WriteAt(const SeriesRef& s, int i, double v) {
  if (i < 0 || i >= Stored(s)) return false;
  s.data[i] = v;
  return true;
}

// Slot i of the physical array, for the operations that deliberately do not
// check their index against the size: null when outside the array.
inline double* SlotAt(const SeriesRef& s, int i) {
  return (s.data != nullptr && i >= 0 && i < s.alloc) ? s.data + i : nullptr;
}

// Reference to element i with the element-reference rule: an array exists
// and start <= i < size; null otherwise.
inline double* RefAt(const SeriesRef& s, int i) {
  return (i >= s.start && i >= 0 && i < Stored(s)) ? s.data + i : nullptr;
}

// ---------------------------------------------------------------------------
// Available values and searches
// ---------------------------------------------------------------------------

// First index in [from, to] whose value is not empty, -1 if none. Indexes
// outside the stored range count as empty.
int FirstAvailIndex(const SeriesRef& s, int from, int to);

// Last index in [from, to] (scanning down) whose value is not empty.
int LastAvailIndex(const SeriesRef& s, int from, int to);

// First index from the start index with element >= v; -1 (also for empty v).
int FindOver(const SeriesRef& s, double v);

// First index from the start index with a <= element <= b.
int FindBetween(const SeriesRef& s, double a, double b);

// First index from the start index bracketing v in an ascending series.
int FindClosest(const SeriesRef& s, double v);

// First index equal to a from the start index, then first equal to b after
// it; 1 only when both were found.
int FindPair(const SeriesRef& s, double a, double b, int& first, int& second);

// Exact search over 0..size-1: forward when dir is 1, else backward.
int FindPos(const SeriesRef& s, double v, int dir);

// Position of v in a date-like column; see CPacketMemory::GetPacketIndex.
int FindPacketIndex(const SeriesRef& s, double v, int dir);

// ---------------------------------------------------------------------------
// Extremes
// ---------------------------------------------------------------------------

// A range [from, to] is valid when an array exists, size >= 1, from >= 0 and
// to < size; from > to is valid but empty.
bool ValidRange(const SeriesRef& s, int from, int to);

// Index of the first maximum (the first available value taken
// unconditionally, replaced only by strictly greater ones); -1 if none.
int ScanMaxIndex(const SeriesRef& s, int from, int to);
int ScanMinIndex(const SeriesRef& s, int from, int to);

// Maximum replacing on >= from the no-maximum value (minimum: <= from empty).
double ScanMaxValue(const SeriesRef& s, int from, int to);
double ScanMinValue(const SeriesRef& s, int from, int to);

// Both extremes from no-maximum and empty, strict comparisons; the index
// outputs may be null when not wanted.
void ScanMaxMin(const SeriesRef& s, int from, int to, double& max_value, double& min_value,
                int* max_index, int* min_index);

// The cached extremes a query may write: a packet's own fields, or one set
// of a structured packet's per-column caches.
struct ExtremeSlots {
  int& max_index;
  int& min_index;
  double& max_value;
  double& min_value;
};

// Throw-away cache slots for a query on a column that has no cache.
struct ScratchCache {
  int index[2];
  double value[2];
};

// The extreme queries with their cache rules (see CPacket::GetMaxIndex and
// kin): the index queries always cache index and value; the others cache
// when `cache` is 1, on every path.
int QueryMaxIndex(const SeriesRef& s, int from, int to, const ExtremeSlots& c);
int QueryMinIndex(const SeriesRef& s, int from, int to, const ExtremeSlots& c);
double QueryMaxValue(const SeriesRef& s, int from, int to, int cache, const ExtremeSlots& c);
double QueryMinValue(const SeriesRef& s, int from, int to, int cache, const ExtremeSlots& c);
double QueryMaxValueIndex(const SeriesRef& s, int from, int to, int& idx, int cache, const ExtremeSlots& c);
double QueryMinValueIndex(const SeriesRef& s, int from, int to, int& idx, int cache, const ExtremeSlots& c);
// max_index / min_index may be null for the form without indexes.
double QueryMaxMin(const SeriesRef& s, int from, int to, double& max, double& min, int* max_index,
                   int* min_index, int cache, const ExtremeSlots& c);

// Available value in [from, to] scanning up (first) or down (last); idx -1
// and the empty value when none.
double FirstAvailValue(const SeriesRef& s, int from, int to, int& idx);
double LastAvailValue(const SeriesRef& s, int from, int to, int& idx);

// ---------------------------------------------------------------------------
// Column mutations (the caller owns the size and index fields)
// ---------------------------------------------------------------------------

// Rolling append of v with mode 1 (drop first), 0 (move right) or other
// (overwrite last). Needs size >= 1 and the array.
void RollColumn(const SeriesRef& s, double v, int mode);

// Insert's element move: old i..size-2 to i+1..size-1, v at i (size is the
// size before the insert; writes stay inside the array).
void InsertColumn(const SeriesRef& s, int i, double v);

// Moves elements i+1..size-1 one place left; false when nothing follows i,
// in which case element i becomes empty.
bool RemoveOneColumn(const SeriesRef& s, int i);

// The element count a range removal of n elements at i moves in a series of
// `count` elements: k = count-i-n-1, computed without overflow; 0 when i or
// n is negative. Nothing is removed unless it is at least 1.
inline std::int64_t RemoveRangeMoves(int count, int i, int n) {
  if (i < 0 || n < 0) return 0;
  return static_cast<std::int64_t>(count) - i - n - 1;
}

// Moves k = RemoveRangeMoves(stored elements, i, n) elements from i+n to i
// when k >= 1.
bool RemoveRangeColumn(const SeriesRef& s, int i, int n);

// Element i := old element (size-1-i) for i from start to end.
void ReverseColumn(const SeriesRef& s);

// Left shift by n: elements move n places left, the last n become empty.
void ShiftLeftColumn(const SeriesRef& s, int n);

// Fills a column reallocated for a right shift by n: slots below `first`
// (the new start) are empty, slot i >= first takes old[i - n] (empty where
// that lies outside old), up to new_size.
void PlaceShiftedRight(double* data, int alloc, const double* old, int old_count, int first, int new_size,
                       int n);

// Adds d to every element in use.
void AddToColumn(const SeriesRef& s, double d);

// Every element equal to a becomes b.
void ReplaceInColumn(const SeriesRef& s, double a, double b);

// Element i := sum of src elements from..i-1 for i from `from` to src's end
// index (bounded by dst's array; src read by the stored-range rule).
void AccumulateColumn(const SeriesRef& dst, const SeriesRef& src, int from);

// Copies n elements, or nothing for null/short arrays (n clamped to both).
void CopyColumn(double* dst, int dst_alloc, const double* src, int src_alloc, int n);

// Fills elements [from, to) with v, clamped to the array.
void FillColumn(double* data, int alloc, int from, int to, double v);

// ---------------------------------------------------------------------------
// Arithmetic
// ---------------------------------------------------------------------------

// Computes the result column of L op R over [s_index, n) into out (an array of
// at least n elements, the rest already empty): the CPacket::CalcOperator1
// rules, including marking L's element i empty when R is too short. s_index
// is the later of the two start indexes, so every index read lies at or
// after R's start.
void CalcColumn1(int code, const SeriesRef& left, const SeriesRef& right, double* out, int s_index,
                 int n);

// Applies the CPacket::CalcOperator2 rules to L in place (results collect in
// element 0).
void CalcColumn2(int code, const SeriesRef& left, const SeriesRef& right);


// (a truncated) modulo (b truncated) without undefined behaviour: a zero
// divisor gives the empty value, INT_MIN % -1 gives 0.
double TruncatedModulo(double a, double b);

}  // namespace internal
}  // namespace chartcore

#endif  // CHARTCORE_PACKETS_PACKET_INTERNAL_H_
