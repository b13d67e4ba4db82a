#include "chartcore/packets/packet.h"

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstdint>
#include <new>
#include <utility>
#include <vector>

#include "chartcore/packets/packet_internal.h"

using chartcore::kPacketEmptyValue;
using chartcore::kPacketNoMaxValue;
namespace internal = chartcore::internal;

namespace {

constexpr double kEmpty = kPacketEmptyValue;

}  // namespace

// ---------------------------------------------------------------------------
// Construction
// ---------------------------------------------------------------------------

CPacket::CPacket() : m_pData(nullptr), m_nAlloc(0) { InitPacket(); }

CPacket::CPacket(int n, int fill) : m_pData(nullptr), m_nAlloc(0) {
  InitPacket();
  if (n >= 1) {
    AllocPacket(n);
    if (fill != 0) internal::FillColumn(m_pData, m_nAlloc, 0, n, kEmpty);
  }
}

CPacket::CPacket(double v) : m_pData(nullptr), m_nAlloc(0) {
  InitPacket();
  m_pData = internal::AllocValues(1);
  m_nAlloc = 1;
  m_pData[0] = v;
  m_nMaxPacketSize = 1;
  m_nPacketSize = 1;
}

CPacket::CPacket(const CPacket& other) : m_pData(nullptr), m_nAlloc(0) {
  InitPacket();
  CopyPacket(other);
}

CPacket::CPacket(CPacket&& other) noexcept : m_pData(nullptr), m_nAlloc(0) {
  InitPacket();
  *this = std::move(other);
}

CPacket::~CPacket() { ReleaseData(); }

CPacket& CPacket::operator=(const CPacket& other) {
  if (this == &other) return *this;
  ClearPacket();
  if (other.m_nPacketSize < 1) return *this;
  const int alloc = internal::CopyAllocFor(other.m_nMaxPacketSize, other.m_nPacketSize);
  m_pData = internal::AllocValues(alloc);
  m_nAlloc = alloc;
  const int stored = internal::Stored(other.Ref());
  internal::CopyColumn(m_pData, m_nAlloc, other.m_pData, other.m_nAlloc, stored);
  internal::FillColumn(m_pData, m_nAlloc, stored, other.m_nPacketSize, kEmpty);
  CopyFieldsFrom(other);
  return *this;
}

CPacket& CPacket::operator=(CPacket&& other) noexcept {
  if (this == &other) return *this;
  ReleaseData();
  m_pData = other.m_pData;
  m_nAlloc = other.m_nAlloc;
  CopyFieldsFrom(other);
  m_dOutOfRange = kEmpty;
  other.m_pData = nullptr;
  other.m_nAlloc = 0;
  other.InitPacket();
  return *this;
}

CPacket& CPacket::operator=(const double& v) {
  const double value = v;  // v may live in this packet's array
  ClearPacket();
  m_pData = internal::AllocValues(1);
  m_nAlloc = 1;
  m_pData[0] = value;
  m_nMaxPacketSize = 1;
  m_nBlockCount = 1;
  return *this;
}

// ---------------------------------------------------------------------------
// Allocation
// ---------------------------------------------------------------------------

void CPacket::AllocPacket(int n) {
  if (n == m_nPacketSize) return;
  ClearPacket();
  if (n <= 0) return;
  const int blocks = std::max(internal::BlockCountFor(n), 1);
  const int capacity = internal::CapacityOfBlocks(blocks);
  m_pData = internal::AllocValues(capacity);
  m_nAlloc = capacity;
  m_nPacketSize = n;
  m_nBlockCount = blocks;
  m_nMaxPacketSize = capacity;
}

void CPacket::AllocPacketFirst() {
  ReleaseData();
  m_nBlockCount = 0;
  m_nMaxPacketSize = 0;
  m_pData = internal::AllocValues(0);
  m_nRealPacketSize = 0;
  m_nPacketSize = 0;
  m_nValidStartIndex = -1;
  m_nValidEndIndex = -1;
  m_nStartIndex = 0;
  m_nEndIndex = -1;
  m_nDayChangeSize = 0;
  m_nTurnUpDnReal = 0;
}

void CPacket::AllocPacketMemory(int n) {
  int count = n < 1 ? m_nMaxPacketSize : n;
  if (count < 0) count = 0;
  double* fresh = internal::AllocValues(count);
  ReleaseData();
  m_pData = fresh;
  m_nAlloc = count;
}

void CPacket::ReAllocPacket(int n, int keep) {
  if (n == m_nPacketSize) return;
  if (n < 1) {
    ClearPacket();
    return;
  }
  if (keep == 0 || m_nPacketSize == 0) {
    AllocPacket(n);
    return;
  }
  internal::ResizeKeeping(m_pData, m_nAlloc, n, m_nPacketSize);
  if (n < m_nPacketSize) {
    // Only what fits survived; the size and end index follow.
    m_nPacketSize = n;
    if (m_nEndIndex > n - 1) m_nEndIndex = n - 1;
  }
}

void CPacket::InitPacket() {
  ReleaseData();
  m_nShiftXSize = 0;
  m_dOutOfRange = kEmpty;
  m_nValidStartIndex = -1;
  m_nValidEndIndex = -1;
  m_nStartIndex = 0;
  m_nEndIndex = -1;
  m_nDayChangeSize = 0;
  m_nTurnUpDnReal = 0;
  m_nBlockCount = 0;
  m_nMaxPacketSize = 0;
  m_nPacketSize = 0;
  m_nRealPacketSize = 0;
  ResetExtremes();
}

void CPacket::ClearPacket() {
  ReleaseData();
  ResetExtremes();
  m_nValidStartIndex = -1;
  m_nStartIndex = 0;
  m_nEndIndex = -1;
  m_nDayChangeSize = 0;
  m_nTurnUpDnReal = 0;
  m_nRealPacketSize = 0;
  m_nBlockCount = 0;
  m_nMaxPacketSize = chartcore::kPacketBlockSize;
  m_nPacketSize = 0;
}

void CPacket::ResetPacket() {
  if (m_nPacketSize > 0) ClearPacket();
  AllocPacketFirst();
}

void CPacket::DeletePacket() { ReleaseData(); }

int CPacket::CheckPacketBoundary(int i) {
  return internal::CheckBoundary(i, m_nPacketSize, m_nBlockCount, m_nMaxPacketSize);
}

int CPacket::CheckPacketBoundary() { return CheckPacketBoundary(m_nPacketSize); }

int CPacket::CheckBoundaryRange(int i) const { return (i >= 0 && i < m_nPacketSize) ? 1 : 0; }

// ---------------------------------------------------------------------------
// Elements
// ---------------------------------------------------------------------------

double CPacket::GetValue(int i) const { return internal::ReadAt(Ref(), i); }

int CPacket::SetValue(int i, double v) { return internal::WriteAt(Ref(), i, v) ? 1 : 0; }

int CPacket::Update(int i, double v) { return SetValue(i, v); }

int CPacket::UpdateAdd(int i, double v) {
  if (i < 0 || i >= internal::Stored(Ref())) return 0;
  m_pData[i] += v;
  return 1;
}

int CPacket::Update(double v) { return SetValue(m_nPacketSize - 1, v); }

int CPacket::SetLastValue(double v) { return SetValue(m_nPacketSize - 1, v); }

int CPacket::SetLastPrevValue(double v) { return SetValue(m_nPacketSize - 1, v); }

int CPacket::UpdatePrev(double v) { return m_nPacketSize >= 2 ? SetValue(m_nPacketSize - 2, v) : 0; }

int CPacket::UpdateAdd(double v) { return UpdateAdd(m_nPacketSize - 1, v); }

int CPacket::UpdateSum(double v, int i) {
  if (m_nPacketSize < 1 || m_pData == nullptr) return 0;
  double* slot = i >= 0 ? internal::SlotAt(Ref(), i)
                        : (internal::Stored(Ref()) == m_nPacketSize ? m_pData + m_nPacketSize - 1 : nullptr);
  if (slot == nullptr) return 0;
  *slot += v;
  return 1;
}

int CPacket::UpdateAll(double v) {
  if (m_nPacketSize < 1 || m_pData == nullptr) return 0;
  Fill(v);
  return 1;
}

void CPacket::Fill(double v) { internal::FillColumn(m_pData, m_nAlloc, 0, m_nPacketSize, v); }

int CPacket::UpdateLastAvail(double v) {
  const int k = GetLastAvailIndex();
  return k < 0 ? 0 : SetValue(k, v);
}

double CPacket::GetFirstValue() const { return GetValue(0); }

double CPacket::GetLastValue() const { return GetValue(m_nPacketSize - 1); }

double CPacket::GetLastPrevValue() const { return GetValue(m_nPacketSize - 2); }

double CPacket::GetLastPrePrevValue() const { return GetValue(m_nPacketSize - 3); }

double CPacket::GetLastFromIndexValue(int k) const {
  return GetValue(internal::NarrowIndex(static_cast<std::int64_t>(m_nPacketSize) - k));
}

double CPacket::GetReverseValue(int i) const {
  if (i < 0 || i >= m_nPacketSize) return kEmpty;
  return GetValue(m_nPacketSize - 1 - i);
}

double& CPacket::operator[](int i) {
  double* p = internal::RefAt(Ref(), i);
  if (p != nullptr) return *p;
  m_dOutOfRange = kEmpty;
  return m_dOutOfRange;
}

const double& CPacket::operator[](int i) const {
  static const double kEmptySlot = kEmpty;
  const double* p = internal::RefAt(Ref(), i);
  return p != nullptr ? *p : kEmptySlot;
}

// ---------------------------------------------------------------------------
// Appending
// ---------------------------------------------------------------------------

int CPacket::GrowForAppend() {
  if (m_nPacketSize < 0) m_nPacketSize = 0;
  const int n = m_nPacketSize;
  if (n >= internal::kMaxPacketElements) throw std::bad_alloc();
  if (CheckPacketBoundary(n + 1) == 0) {
    ReAllocPacket(m_nMaxPacketSize, 1);
    // Growing an empty packet goes through AllocPacket, which sets the size
    // to the capacity; every append writes at the size it found.
    m_nPacketSize = n;
  }
  EnsureStorage(n + 1);
  return n;
}

void CPacket::EnsureStorage(int n) {
  if (m_pData != nullptr && m_nAlloc >= n) return;
  const int target = internal::GrowthTarget(m_nAlloc, n);
  m_pData = internal::ResizeValues(m_pData, m_nAlloc, target, m_nPacketSize);
  m_nAlloc = target;
}

int CPacket::AddGrowing(double v) {
  const int n = GrowForAppend();
  m_pData[n] = v;
  m_nEndIndex = n;
  return m_nPacketSize = n + 1;
}

void CPacket::AddLast() { AddSameLast(); }

int CPacket::AddSameLast() {
  const double last = m_nPacketSize >= 1 ? GetLastValue() : kEmpty;
  return Add(last);
}

void CPacket::AccumAdd(double v) {
  const int n = GrowForAppend();
  m_pData[n] += v;
  m_nEndIndex = n;
  m_nPacketSize = n + 1;
}

int CPacket::AddLastAvail(double v) {
  const int n = GrowForAppend();
  const int k = GetLastAvailIndex();
  const std::int64_t after_end = static_cast<std::int64_t>(m_nEndIndex) + 1;
  // The appended bar starts empty; then the slot after the end is emptied
  // before v is placed, so v survives when it belongs right after the end.
  m_pData[n] = kEmpty;
  const bool end_in_use = after_end >= 0 && after_end <= n;
  if (end_in_use) m_pData[after_end] = kEmpty;
  if (k >= 0) {
    m_pData[k + 1] = v;
  } else if (end_in_use) {
    m_pData[after_end] = v;
  }
  m_nEndIndex = n;
  return m_nPacketSize = n + 1;
}

int CPacket::AddShift(double v, int mode) {
  if (m_nPacketSize < 1 || m_pData == nullptr) return -1;
  internal::RollColumn(Ref(), v, mode);
  return m_nPacketSize;
}

void CPacket::AddShiftLast(int mode) {
  if (m_nPacketSize < 1 || m_pData == nullptr) return;
  AddShift(GetLastValue(), mode);
}

void CPacket::AddShiftLastAvail(double v, int mode) {
  if (m_nPacketSize < 1 || m_pData == nullptr) return;
  const int k = GetLastAvailIndex();
  if (k < 0) return;
  Insert(k + 1, v);
  const internal::SeriesRef s = Ref();
  const int n = internal::Stored(s);
  if (mode == 1) {
    internal::ShiftLeftColumn(s, 1);
  } else if (mode == 0 && n >= 2) {
    std::copy_backward(m_pData, m_pData + n - 1, m_pData + n);
  }
}

int CPacket::AddShiftSameLast() {
  if (m_nPacketSize < 1) return -1;
  AddSameLast();
  const int n = internal::Stored(Ref());
  if (n >= 2) std::copy(m_pData + 1, m_pData + n, m_pData);
  return m_nPacketSize;
}

// ---------------------------------------------------------------------------
// Inserting, removing, rearranging
// ---------------------------------------------------------------------------

int CPacket::Insert(int i, double v) {
  if (i < 0 || i > std::max(m_nPacketSize, 0)) return 0;
  const int n = GrowForAppend();
  if (i == n) {
    m_pData[n] = v;
  } else {
    internal::InsertColumn(internal::SeriesRef{m_pData, m_nAlloc, n, m_nStartIndex, m_nEndIndex}, i, v);
  }
  m_nEndIndex = n;
  m_nPacketSize = n + 1;
  return 1;
}

int CPacket::Remove(int i, int shrink) {
  const internal::SeriesRef s = Ref();
  if (i < 0 || i >= internal::Stored(s)) return 0;
  const int moved = internal::RemoveOneColumn(s, i) ? 1 : 0;
  if (shrink == 1) --m_nPacketSize;
  return moved;
}

int CPacket::Remove(int i, int n, int shrink) {
  if (!internal::RemoveRangeColumn(Ref(), i, n)) return 0;
  if (shrink == 1) m_nPacketSize -= n;
  return 1;
}

int CPacket::RemoveLeft(int n, int shrink) { return Remove(0, n, shrink); }

int CPacket::RemoveRight(int n, int shrink) {
  const int from = internal::NarrowIndex(static_cast<std::int64_t>(m_nPacketSize) - n);
  return Remove(from, n, shrink);
}

int CPacket::Replace(double a, double b) {
  if (m_nPacketSize < 1 || m_pData == nullptr || a == b) return 0;
  internal::ReplaceInColumn(Ref(), a, b);
  return 1;
}

int CPacket::Swap(int i, int j) {
  double* a = internal::SlotAt(Ref(), i);
  double* b = internal::SlotAt(Ref(), j);
  if (a == nullptr || b == nullptr) return 0;
  std::swap(*a, *b);
  return 1;
}

int CPacket::VShift(double d) {
  if (m_nPacketSize < 1 || m_pData == nullptr || d == 0.0) return 0;
  internal::AddToColumn(Ref(), d);
  return 1;
}

int CPacket::Shift(int direction, int n) {
  if (m_nPacketSize <= 0 || n <= 0 || m_pData == nullptr) return 0;
  if (direction == 1) {
    internal::ShiftLeftColumn(Ref(), n);
    return 1;
  }
  if (direction != 0) return 0;
  const std::int64_t grown = static_cast<std::int64_t>(m_nPacketSize) + n;
  if (grown > internal::kMaxPacketElements) throw std::bad_alloc();
  const int old_start = m_nStartIndex;
  const std::vector<double> old(m_pData, m_pData + internal::Stored(Ref()));
  AllocPacket(static_cast<int>(grown));
  const int new_size = m_nPacketSize;
  const std::int64_t start = static_cast<std::int64_t>(old_start) + n;
  m_nStartIndex = internal::NarrowIndex(start);
  const int first = static_cast<int>(std::max<std::int64_t>(std::min<std::int64_t>(start, new_size), 0));
  internal::PlaceShiftedRight(m_pData, m_nAlloc, old.data(), static_cast<int>(old.size()), first, new_size, n);
  m_nShiftXSize = n;
  return 1;
}

CPacket& CPacket::Copy(const double* values, int n) {
  if (n < 1 || values == nullptr) {
    ClearPacket();
    return *this;
  }
  // values may point into this packet's own array: fill the new array before
  // the clear releases the old one. The clear leaves the capacity at one block.
  const int alloc = std::max(n, chartcore::kPacketBlockSize);
  double* fresh = internal::AllocValues(alloc);
  std::copy(values, values + n, fresh);
  ClearPacket();
  m_pData = fresh;
  m_nAlloc = alloc;
  m_nValidStartIndex = 0;
  m_nValidEndIndex = n - 1;
  m_nStartIndex = 0;
  m_nEndIndex = n - 1;
  m_nPacketSize = n;
  return *this;
}

int CPacket::CopyPacket(const CPacket& src) {
  if (this != &src) *this = src;
  return m_nPacketSize >= 1 ? 1 : 0;
}

int CPacket::CopyPacket(const CPacket* src) { return src == nullptr ? 0 : CopyPacket(*src); }

int CPacket::AccumPacket(const CPacket* src) {
  if (src == this) {
    const CPacket copy(*this);
    return AccumPacket(&copy);
  }
  ClearPacket();
  if (src == nullptr || src->m_nPacketSize < 1) return 0;
  const int alloc = internal::CopyAllocFor(src->m_nMaxPacketSize, src->m_nPacketSize);
  m_pData = internal::AllocValues(alloc);
  m_nAlloc = alloc;
  internal::AccumulateColumn(Ref(), src->Ref(), 0);
  CopyFieldsFrom(*src);
  return 1;
}

CPacket CPacket::operator!() const {
  CPacket result;
  const int n = m_nPacketSize;
  if (n < 1) return result;
  result.AllocPacket(n);
  result.m_nStartIndex = m_nStartIndex;
  const int first = std::min(std::max(m_nStartIndex, 0), n);
  internal::FillColumn(result.m_pData, result.m_nAlloc, 0, first, kEmpty);
  for (int i = first; i < n; ++i) result.m_pData[i] = GetValue(i) == 0.0 ? 1.0 : 0.0;
  return result;
}

CPacket CPacket::operator()(int shift) const {
  CPacket result;
  const int n = m_nPacketSize;
  if (n < 1) return result;
  result.AllocPacket(n);
  const std::int64_t s = static_cast<std::int64_t>(shift) + m_nStartIndex;
  const std::int64_t first = std::max<std::int64_t>(s, 0);
  if (first >= n) {
    internal::FillColumn(result.m_pData, result.m_nAlloc, 0, n, kEmpty);
  } else {
    internal::FillColumn(result.m_pData, result.m_nAlloc, 0, static_cast<int>(first), kEmpty);
    result.m_nStartIndex = static_cast<int>(first);
    for (int i = static_cast<int>(first); i < n; ++i) {
      const std::int64_t from = static_cast<std::int64_t>(i) - shift;
      result.m_pData[i] = from < n ? GetValue(internal::NarrowIndex(from)) : kEmpty;
    }
  }
  if (shift < 0) {
    result.m_nShiftXSize = shift;
    result.m_nEndIndex = internal::NarrowIndex(static_cast<std::int64_t>(n) - shift + 1);
  }
  return result;
}

// ---------------------------------------------------------------------------
// Queries
// ---------------------------------------------------------------------------

int CPacket::GetFirstAvailIndex() const {
  return internal::FirstAvailIndex(Ref(), m_nStartIndex, m_nEndIndex);
}

int CPacket::GetLastAvailIndex() const { return internal::LastAvailIndex(Ref(), m_nStartIndex, m_nEndIndex); }

double CPacket::GetFirstAvailValue() const {
  int idx;
  return GetFirstAvailValue(idx);
}

double CPacket::GetFirstAvailValue(int& idx) const {
  return GetFirstAvailValue(m_nStartIndex, m_nEndIndex, idx);
}

double CPacket::GetFirstAvailValue(int from, int to, int& idx) const {
  return internal::FirstAvailValue(Ref(), from, to, idx);
}

double CPacket::GetLastAvailValue() const {
  int idx;
  return GetLastAvailValue(idx);
}

double CPacket::GetLastAvailValue(int& idx) const { return GetLastAvailValue(m_nStartIndex, m_nEndIndex, idx); }

double CPacket::GetLastAvailValue(int from, int to, int& idx) const {
  return internal::LastAvailValue(Ref(), from, to, idx);
}

int CPacket::FindIndexOverValue(double v) const { return internal::FindOver(Ref(), v); }

int CPacket::FindIndexBetweenValues(double a, double b) const { return internal::FindBetween(Ref(), a, b); }

int CPacket::FindIndexClosestValues(double v) const { return internal::FindClosest(Ref(), v); }

int CPacket::FindIndexsBetweenValues(double a, double b, int& first, int& second) const {
  return internal::FindPair(Ref(), a, b, first, second);
}

int CPacket::FindValuePos(double v, int dir) const { return internal::FindPos(Ref(), v, dir); }

int CPacket::GetMaxIndex(int from, int to) { return internal::QueryMaxIndex(Ref(), from, to, Cache()); }

int CPacket::GetMinIndex(int from, int to) { return internal::QueryMinIndex(Ref(), from, to, Cache()); }

double CPacket::GetMaxValue(int from, int to, int cache) {
  return internal::QueryMaxValue(Ref(), from, to, cache, Cache());
}

double CPacket::GetMinValue(int from, int to, int cache) {
  return internal::QueryMinValue(Ref(), from, to, cache, Cache());
}

double CPacket::GetMaxValueIndex(int from, int to, int& idx, int cache) {
  return internal::QueryMaxValueIndex(Ref(), from, to, idx, cache, Cache());
}

double CPacket::GetMinValueIndex(int from, int to, int& idx, int cache) {
  return internal::QueryMinValueIndex(Ref(), from, to, idx, cache, Cache());
}

double CPacket::GetMaxMinValue(int from, int to, double& max, double& min, int cache) {
  return internal::QueryMaxMin(Ref(), from, to, max, min, nullptr, nullptr, cache, Cache());
}

double CPacket::GetMaxMinValueIndex(int from, int to, double& max, double& min, int& max_index, int& min_index,
                                    int cache) {
  return internal::QueryMaxMin(Ref(), from, to, max, min, &max_index, &min_index, cache, Cache());
}

double CPacket::GetMaxValueIndex(int& idx) const {
  idx = m_nMaxPacketIndex;
  return m_dMaxPacketValue;
}

double CPacket::GetMinValueIndex(int& idx) const {
  idx = m_nMinPacketIndex;
  return m_dMinPacketValue;
}

double CPacket::GetMaxMinValue(double& max, double& min) const {
  max = m_dMaxPacketValue;
  min = m_dMinPacketValue;
  return max - min;
}

double CPacket::GetMaxMinValueIndex(double& max, double& min, int& max_index, int& min_index) const {
  max_index = m_nMaxPacketIndex;
  min_index = m_nMinPacketIndex;
  return GetMaxMinValue(max, min);
}

// ---------------------------------------------------------------------------
// Transforms
// ---------------------------------------------------------------------------

int CPacket::Trim(int from, int to, double v, int shrink) {
  if (from < 0 || to >= m_nPacketSize || m_pData == nullptr) return 0;
  const int n = internal::Stored(Ref());
  int kept = 0;
  for (int i = 0; i < n; ++i) {
    // Inside the range only elements equal to v survive.
    if (i < from || i > to || m_pData[i] == v) m_pData[kept++] = m_pData[i];
  }
  if (shrink != 0) m_nPacketSize -= n - kept;
  m_nValidStartIndex = 0;
  m_nValidEndIndex = -1;
  m_nStartIndex = 0;
  m_nEndIndex = m_nPacketSize - 1;
  return 1;
}

int CPacket::TrimLeft(int n, double v, int shrink) {
  if (n < 1 || m_pData == nullptr) return 0;
  return Trim(0, n - 1, v, shrink);
}

int CPacket::TrimRight(int n, double v, int shrink) {
  if (n < 1 || m_pData == nullptr) return 0;
  return Trim(internal::NarrowIndex(static_cast<std::int64_t>(m_nPacketSize) - n), m_nPacketSize - 1, v, shrink);
}

int CPacket::ReversePacket() {
  if (m_nPacketSize < 0) return 0;
  internal::ReverseColumn(Ref());
  return 1;
}

namespace {

// The exchange sort as the chart code defines it: for each i, each later j
// is exchanged with i when out of order.
void ExchangeSort(double* d, int n, bool ascending) {
  for (int i = 0; i + 1 < n; ++i) {
    for (int j = i + 1; j < n; ++j) {
      if (ascending ? d[i] > d[j] : d[j] > d[i]) std::swap(d[i], d[j]);
    }
  }
}

// Same result as ExchangeSort, fast where it can be. NaN compares false both
// ways, so NaN elements never move and never meet the others: the rest sorts
// among the remaining positions. Among those, a library sort gives the same
// array unless both zeros (+0.0 and -0.0, equal yet distinct) are present.
void SortLikeExchange(double* d, int n, bool ascending) {
  std::vector<int> nan_positions;
  bool has_pos_zero = false;
  bool has_neg_zero = false;
  for (int i = 0; i < n; ++i) {
    if (std::isnan(d[i])) {
      nan_positions.push_back(i);
    } else if (d[i] == 0.0) {
      (std::signbit(d[i]) ? has_neg_zero : has_pos_zero) = true;
    }
  }
  std::vector<double> rest;
  double* work = d;
  int count = n;
  if (!nan_positions.empty()) {
    rest.reserve(static_cast<std::size_t>(n) - nan_positions.size());
    for (int i = 0; i < n; ++i) {
      if (!std::isnan(d[i])) rest.push_back(d[i]);
    }
    work = rest.data();
    count = static_cast<int>(rest.size());
  }
  if (has_pos_zero && has_neg_zero) {
    ExchangeSort(work, count, ascending);
  } else if (ascending) {
    std::sort(work, work + count);
  } else {
    std::sort(work, work + count, [](double a, double b) { return a > b; });
  }
  if (!nan_positions.empty()) {
    std::size_t k = 0;
    std::size_t next_nan = 0;
    for (int i = 0; i < n; ++i) {
      if (next_nan < nan_positions.size() && nan_positions[next_nan] == i) {
        ++next_nan;
      } else {
        d[i] = rest[k++];
      }
    }
  }
}

}  // namespace

int CPacket::SortPacket(int dir) {
  SortLikeExchange(m_pData, internal::Stored(Ref()), dir == 1);
  return 1;
}

int CPacket::CopyPacket(const CPacket* src, int from, int to) {
  if (src == this) {
    const CPacket copy(*this);
    return CopyPacket(&copy, from, to);
  }
  ClearPacket();
  if (src == nullptr || src->m_nPacketSize < 1 || from < src->m_nStartIndex || to > src->m_nEndIndex) return 0;
  const std::int64_t wanted = static_cast<std::int64_t>(to) - from + 1;
  if (wanted > internal::kMaxPacketElements) throw std::bad_alloc();
  const int count = static_cast<int>(std::max<std::int64_t>(wanted, 0));
  CheckPacketBoundary(src->m_nPacketSize);
  const int alloc = std::max(internal::CopyAllocFor(m_nMaxPacketSize, 0), count);
  m_pData = internal::AllocValues(alloc);
  m_nAlloc = alloc;
  for (int k = 0; k < count; ++k) m_pData[k] = src->GetValue(from + k);
  m_nShiftXSize = src->m_nShiftXSize;
  m_nValidStartIndex = src->m_nValidStartIndex;
  m_nValidEndIndex = src->m_nValidEndIndex;
  m_nDayChangeSize = src->m_nDayChangeSize;
  m_nTurnUpDnReal = src->m_nTurnUpDnReal;
  m_nStartIndex = 0;
  m_nEndIndex = count - 1;
  m_nPacketSize = count;
  return 1;
}

// ---------------------------------------------------------------------------
// Arithmetic
// ---------------------------------------------------------------------------

CPacket CPacket::CalcOperator1(ENOperatorCalcType code, const CPacket& right) {
  const int ln = std::max(m_nPacketSize, 0);
  const int rn = std::max(right.m_nPacketSize, 0);
  const int n = std::max(ln, rn);
  if (n == 0 || (ln == 0) != (rn == 0)) return CPacket(*this);
  const int s = std::max(m_nStartIndex, right.m_nStartIndex);
  const int e = std::max(m_nEndIndex, right.m_nEndIndex);
  CPacket result;
  result.AllocPacket(n);
  internal::FillColumn(result.m_pData, result.m_nAlloc, 0, std::min(std::max(s, 0), n), kEmpty);
  internal::CalcColumn1(code, Ref(), right.Ref(), result.m_pData, s, n);
  result.m_nStartIndex = s;
  result.m_nEndIndex = e;
  return result;
}

CPacket& CPacket::CalcOperator2(ENOperatorCalcType code, const CPacket& right) {
  if (m_nPacketSize <= 0) return *this;
  const int s = std::max(m_nStartIndex, right.m_nStartIndex);
  const int e = std::max(m_nEndIndex, right.m_nEndIndex);
  const bool single = m_nPacketSize == 1;
  internal::CalcColumn2(code, Ref(), right.Ref());
  if (!single) {
    m_nStartIndex = s;
    m_nEndIndex = e;
  }
  return *this;
}

CPacket CPacket::operator+(const CPacket& right) { return CalcOperator1(OCT_PLUS, right); }
CPacket CPacket::operator+(double right) { return CalcOperator1(OCT_PLUS, CPacket(right)); }
CPacket CPacket::operator-(const CPacket& right) { return CalcOperator1(OCT_MINUS, right); }
CPacket CPacket::operator-(double right) { return CalcOperator1(OCT_MINUS, CPacket(right)); }
CPacket CPacket::operator*(const CPacket& right) { return CalcOperator1(OCT_MULTIPLY, right); }
CPacket CPacket::operator*(double right) { return CalcOperator1(OCT_MULTIPLY, CPacket(right)); }
CPacket CPacket::operator/(const CPacket& right) { return CalcOperator1(OCT_DIVIDE, right); }
CPacket CPacket::operator/(double right) { return CalcOperator1(OCT_DIVIDE, CPacket(right)); }
CPacket CPacket::operator%(const CPacket& right) { return CalcOperator1(OCT_MODULO, right); }
CPacket CPacket::operator%(double right) { return CalcOperator1(OCT_MODULO, CPacket(right)); }
CPacket& CPacket::operator+=(const CPacket& right) { return CalcOperator2(OCT_PLUS, right); }
CPacket& CPacket::operator-=(const CPacket& right) { return CalcOperator2(OCT_MINUS, right); }
CPacket& CPacket::operator*=(const CPacket& right) { return CalcOperator2(OCT_MULTIPLY, right); }
CPacket& CPacket::operator/=(const CPacket& right) { return CalcOperator2(OCT_DIVIDE, right); }
CPacket& CPacket::operator%=(const CPacket& right) { return CalcOperator2(OCT_MODULO, right); }

// ---------------------------------------------------------------------------
// Private helpers
// ---------------------------------------------------------------------------

internal::SeriesRef CPacket::Ref() const {
  return internal::SeriesRef{m_pData, m_nAlloc, m_nPacketSize, m_nStartIndex, m_nEndIndex};
}

internal::ExtremeSlots CPacket::Cache() {
  return internal::ExtremeSlots{m_nMaxPacketIndex, m_nMinPacketIndex, m_dMaxPacketValue, m_dMinPacketValue};
}

void CPacket::ReleaseData() {
  internal::FreeValues(m_pData);
  m_pData = nullptr;
  m_nAlloc = 0;
}

void CPacket::CopyFieldsFrom(const CPacket& src) {
  m_nShiftXSize = src.m_nShiftXSize;
  m_nValidStartIndex = src.m_nValidStartIndex;
  m_nValidEndIndex = src.m_nValidEndIndex;
  m_nStartIndex = src.m_nStartIndex;
  m_nEndIndex = src.m_nEndIndex;
  m_nDayChangeSize = src.m_nDayChangeSize;
  m_nTurnUpDnReal = src.m_nTurnUpDnReal;
  m_nMaxPacketIndex = src.m_nMaxPacketIndex;
  m_nMinPacketIndex = src.m_nMinPacketIndex;
  m_dMaxPacketValue = src.m_dMaxPacketValue;
  m_dMinPacketValue = src.m_dMinPacketValue;
  m_nBlockCount = src.m_nBlockCount;
  m_nMaxPacketSize = src.m_nMaxPacketSize;
  m_nPacketSize = src.m_nPacketSize;
  m_nRealPacketSize = src.m_nRealPacketSize;
}

void CPacket::ResetExtremes() {
  m_nMaxPacketIndex = -1;
  m_nMinPacketIndex = -1;
  m_dMaxPacketValue = kPacketNoMaxValue;
  m_dMinPacketValue = kEmpty;
}
