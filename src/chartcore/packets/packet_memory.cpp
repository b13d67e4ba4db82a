#include "chartcore/packets/packet_memory.h"

#include <algorithm>
#include <climits>
#include <cstdint>
#include <cstring>
#include <functional>
#include <new>
#include <utility>
#include <vector>

#include "chartcore/packets/packet_internal.h"

using chartcore::kPacketEmptyValue;
using chartcore::kPacketNoMaxValue;
namespace internal = chartcore::internal;

namespace {

constexpr double kEmpty = kPacketEmptyValue;
constexpr int kColumns = PACKET_DATA_TYPE_COUNT;
constexpr int kBasicColumns = 7;
constexpr int kExtraColumns = 9;

// Columns allocated by each layout, as bit masks over ENPacketDataType.
constexpr unsigned kLayoutMasks[] = {
    1u << PDT_CLOSE,                                                      // PST_VALUE
    (1u << PDT_DATE) | (1u << PDT_CLOSE),                                 // PST_DATE_VALUE
    (1u << PDT_DATE) | (1u << PDT_CLOSE) | (1u << PDT_VOLUME),            // PST_DATE_VALUE_VOLUME
    0x1Fu,                                                                // PST_OHLC
    0x3Fu,                                                                // PST_OHLCV
    0x7Fu,                                                                // PST_OHLCV_RATIO
    0x1FFu,                                                               // PST_FULL
};

unsigned LayoutMask(int layout) { return (layout >= 0 && layout <= PST_FULL) ? kLayoutMasks[layout] : 0u; }

bool ValidColumn(int t) { return t >= 0 && t < kColumns; }

// Record <-> row of doubles in column order.
void ToRow(const tagPacketCoreData& r, double* row) {
  const double values[kBasicColumns] = {r.m_dDate, r.m_dOpen, r.m_dHigh, r.m_dLow, r.m_dClose, r.m_dVolume, r.m_dRatio};
  std::copy(values, values + kBasicColumns, row);
}

void ToRow(const tagPacketCoreDataExtra& r, double* row) {
  const double values[kExtraColumns] = {r.m_dDate,  r.m_dOpen,   r.m_dHigh,   r.m_dLow,   r.m_dClose,
                                        r.m_dVolume, r.m_dRatio, r.m_dExtra1, r.m_dExtra2};
  std::copy(values, values + kExtraColumns, row);
}

tagPacketCoreData ToBasic(const double* row) {
  tagPacketCoreData r;
  r.m_dDate = row[0];
  r.m_dOpen = row[1];
  r.m_dHigh = row[2];
  r.m_dLow = row[3];
  r.m_dClose = row[4];
  r.m_dVolume = row[5];
  r.m_dRatio = row[6];
  return r;
}

tagPacketCoreDataExtra ToExtra(const double* row) {
  tagPacketCoreDataExtra r;
  r.m_dDate = row[0];
  r.m_dOpen = row[1];
  r.m_dHigh = row[2];
  r.m_dLow = row[3];
  r.m_dClose = row[4];
  r.m_dVolume = row[5];
  r.m_dRatio = row[6];
  r.m_dExtra1 = row[7];
  r.m_dExtra2 = row[8];
  return r;
}

// A row holding the default record of the given width.
struct Row {
  explicit Row(int ncols) {
    std::fill(v, v + kColumns, kEmpty);
    if (ncols == kBasicColumns) v[PDT_RATIO] = 1.0;
  }
  template <typename Record>
  explicit Row(const Record& r) : Row(kExtraColumns) {
    ToRow(r, v);
  }
  double v[kColumns];
};

// Value a record row gives column c (columns beyond the record: empty).
inline double RowValue(const double* row, int ncols, int c) { return c < ncols ? row[c] : kEmpty; }


}  // namespace

// ---------------------------------------------------------------------------
// Construction
// ---------------------------------------------------------------------------

CPacketMemory::CPacketMemory() {
  std::fill(m_apData, m_apData + kColumns, nullptr);
  std::fill(m_anAlloc, m_anAlloc + kColumns, 0);
  InitPacket(1);
}

CPacketMemory::CPacketMemory(int n, int fill) : CPacketMemory() {
  if (n < 1) return;
  AllocPacket(n);
  if (fill == 0) return;
  for (int t = 0; t < kColumns; ++t) {
    if (LayoutMask(m_nPacketStructType) & (1u << t)) internal::FillColumn(m_apData[t], m_anAlloc[t], 0, n, kEmpty);
  }
}

CPacketMemory::CPacketMemory(double) : CPacketMemory() { m_nMaxPacketSize = 1; }

CPacketMemory::CPacketMemory(ENPacketDataType t, double v) : CPacketMemory() {
  if (ValidColumn(t)) {
    double* data = internal::AllocValues(1);
    data[0] = v;
    SetColumn(t, data, 1);
  }
  m_nMaxPacketSize = 1;
}

CPacketMemory::CPacketMemory(const CPacketMemory& other) : CPacketMemory() { CopyPacket(other); }

CPacketMemory::CPacketMemory(CPacketMemory&& other) noexcept : CPacketMemory() { *this = std::move(other); }

CPacketMemory::~CPacketMemory() { FreeAllColumns(); }

CPacketMemory& CPacketMemory::operator=(const CPacketMemory& other) {
  CopyPacket(other);
  return *this;
}

CPacketMemory& CPacketMemory::operator=(CPacketMemory&& other) noexcept {
  if (this == &other) return *this;
  FreeAllColumns();
  for (int t = 0; t < kColumns; ++t) {
    m_apData[t] = other.m_apData[t];
    m_anAlloc[t] = other.m_anAlloc[t];
    other.m_apData[t] = nullptr;
    other.m_anAlloc[t] = 0;
  }
  CopyFieldsFrom(other);
  m_nColumnCount = other.m_nColumnCount;
  other.InitPacket(1);
  return *this;
}

CPacketMemory& CPacketMemory::operator=(const double& v) {
  const double value = v;
  ClearPacket();
  if (m_nPacketStructType == PST_VALUE && ValidColumn(m_nDefaultDataType)) {
    double* data = internal::AllocValues(1);
    data[0] = value;
    SetColumn(m_nDefaultDataType, data, 1);
  }
  m_nMaxPacketSize = 1;
  m_nBlockCount = 1;
  return *this;
}

// ---------------------------------------------------------------------------
// Allocation and layout
// ---------------------------------------------------------------------------

void CPacketMemory::InitPacket(int all) {
  FreeAllColumns();
  m_nColumnCount = 0;
  m_nColumnCursor = -1;
  if (all == 1) m_nPacketStructType = PST_VALUE;
  m_dOutOfRange = kEmpty;
  m_nDefaultDataType = PDT_CLOSE;
  m_nShiftXSize = 0;
  m_nValidStartIndex = -1;
  m_nValidEndIndex = -1;
  m_nStartIndex = 0;
  m_nEndIndex = -1;
  m_nBlockCount = 0;
  m_nMaxPacketSize = 0;
  m_nPacketSize = 0;
  m_nRealPacketSize = 0;
  ResetCaches();
}

void CPacketMemory::ClearPacket() {
  if (m_nPacketSize < 1) return;
  FreeAllColumns();
  ResetCaches();
  m_nValidStartIndex = -1;
  m_nStartIndex = 0;
  m_nEndIndex = -1;
  m_nRealPacketSize = 0;
  m_nBlockCount = 0;
  m_nMaxPacketSize = 0;
  m_nPacketSize = 0;
  m_nColumnCursor = -1;
}

void CPacketMemory::AllocPacket(int n) {
  ClearPacket();
  if (n <= 0) return;
  const int blocks = std::max(internal::BlockCountFor(n), 1);
  const int capacity = internal::CapacityOfBlocks(blocks);
  AllocPacketMemory(capacity);
  m_nPacketSize = n;
  m_nBlockCount = blocks;
  m_nMaxPacketSize = capacity;
}

void CPacketMemory::AllocPacketMemory(int n) {
  int count = n < 1 ? m_nMaxPacketSize : n;
  if (count < 0) count = 0;
  const unsigned mask = LayoutMask(m_nPacketStructType);
  for (int t = 0; t < kColumns; ++t) {
    if (mask & (1u << t)) SetColumn(t, internal::AllocValues(count), count);
  }
}

void CPacketMemory::ReAllocPacket(int n, int keep) {
  if (n < 1) {
    ClearPacket();
    return;
  }
  if (n == m_nPacketSize) return;
  if (keep == 0 || m_nPacketSize == 0) {
    AllocPacket(n);
    return;
  }
  const unsigned mask = LayoutMask(m_nPacketStructType);
  const bool shrink = n < m_nPacketSize;
  for (int t = 0; t < kColumns; ++t) {
    // On a shrink only what fits survives; a growth may make a column.
    if (!(mask & (1u << t))) continue;
    if (internal::ResizeKeeping(m_apData[t], m_anAlloc[t], n, m_nPacketSize)) ++m_nColumnCount;
  }
  if (shrink) {
    m_nPacketSize = n;
    if (m_nEndIndex > n - 1) m_nEndIndex = n - 1;
  }
}

int CPacketMemory::CheckPacketBoundary(int i) {
  return internal::CheckBoundary(i, m_nPacketSize, m_nBlockCount, m_nMaxPacketSize);
}

int CPacketMemory::CheckPacketBoundary() { return CheckPacketBoundary(m_nPacketSize); }

int CPacketMemory::CheckBoundaryRange(int i) const { return (i >= 0 && i < m_nPacketSize) ? 1 : 0; }

void CPacketMemory::ResetPacket(ENPacketStructType t) {
  InitPacket(1);
  m_nPacketStructType = t;
}

int CPacketMemory::IsLayoutColumn(ENPacketStructType layout, ENPacketDataType t) {
  return (ValidColumn(t) && (LayoutMask(layout) & (1u << t))) ? 1 : 0;
}

double CPacketMemory::GetMaxPacketValue(ENPacketDataType t, int cache_set) const {
  if (!ValidColumn(t)) return kPacketNoMaxValue;
  return cache_set == 0 ? m_adMaxPacketValue[t] : m_adMaxPacketValue2[t];
}

int CPacketMemory::GetMaxPacketIndex(ENPacketDataType t, int cache_set) const {
  if (!ValidColumn(t)) return -1;
  return cache_set == 0 ? m_anMaxPacketIndex[t] : m_anMaxPacketIndex2[t];
}

double CPacketMemory::GetMinPacketValue(ENPacketDataType t, int cache_set) const {
  if (!ValidColumn(t)) return kEmpty;
  return cache_set == 0 ? m_adMinPacketValue[t] : m_adMinPacketValue2[t];
}

int CPacketMemory::GetMinPacketIndex(ENPacketDataType t, int cache_set) const {
  if (!ValidColumn(t)) return -1;
  return cache_set == 0 ? m_anMinPacketIndex[t] : m_anMinPacketIndex2[t];
}

// ---------------------------------------------------------------------------
// Columns and single elements
// ---------------------------------------------------------------------------

double* CPacketMemory::GetPacket(ENPacketDataType t) { return ValidColumn(t) ? m_apData[t] : nullptr; }

double* CPacketMemory::GetPacket(ENPacketIndustryType t) { return GetPacket(static_cast<ENPacketDataType>(t)); }

double* CPacketMemory::GetPacket(ENPacketOptionType t) { return GetPacket(static_cast<ENPacketDataType>(t)); }

const double* CPacketMemory::GetPacket(ENPacketDataType t) const { return ValidColumn(t) ? m_apData[t] : nullptr; }

int CPacketMemory::ClonePacket(ENPacketDataType to, ENPacketDataType from) {
  if (!HasColumn(to) || !HasColumn(from)) return 0;
  internal::CopyColumn(m_apData[to], m_anAlloc[to], m_apData[from], m_anAlloc[from], m_nPacketSize);
  return 1;
}

double CPacketMemory::GetValue(int i, ENPacketDataType t) const { return internal::ReadAt(Col(t), i); }

double CPacketMemory::GetValue(int i, ENPacketIndustryType t) const {
  return GetValue(i, static_cast<ENPacketDataType>(t));
}

double CPacketMemory::GetValue(int i, ENPacketOptionType t) const {
  return GetValue(i, static_cast<ENPacketDataType>(t));
}

int CPacketMemory::SetValue(int i, ENPacketDataType t, double v) { return internal::WriteAt(Col(t), i, v) ? 1 : 0; }

int CPacketMemory::UpdateAdd(int i, ENPacketDataType t, double v) {
  const internal::SeriesRef s = Col(t);
  if (i < 0 || i >= internal::Stored(s)) return 0;
  s.data[i] += v;
  return 1;
}

double CPacketMemory::GetFirstValue(ENPacketDataType t) const { return GetValue(0, t); }

double CPacketMemory::GetLastValue(ENPacketDataType t) const { return GetValue(m_nPacketSize - 1, t); }

double CPacketMemory::GetLastPrevValue(ENPacketDataType t) const { return GetValue(m_nPacketSize - 2, t); }

double CPacketMemory::GetLastPrePrevValue(ENPacketDataType t) const { return GetValue(m_nPacketSize - 3, t); }

double CPacketMemory::GetLastFromIndexValue(int k, ENPacketDataType t) const {
  return GetValue(internal::NarrowIndex(static_cast<std::int64_t>(m_nPacketSize) - k), t);
}

double CPacketMemory::GetReverseValue(int i, ENPacketDataType t) const {
  if (i < 0 || i >= m_nPacketSize) return kEmpty;
  return GetValue(m_nPacketSize - 1 - i, t);
}

double& CPacketMemory::operator()(int i, ENPacketDataType t) {
  double* p = internal::RefAt(Col(t), i);
  if (p != nullptr) return *p;
  m_dOutOfRange = kEmpty;
  return m_dOutOfRange;
}

const double& CPacketMemory::operator()(int i, ENPacketDataType t) const {
  static const double kEmptySlot = kEmpty;
  const double* p = internal::RefAt(Col(t), i);
  return p != nullptr ? *p : kEmptySlot;
}

int CPacketMemory::UpdateAll(ENPacketDataType t, double v) {
  if (m_nPacketSize < 1 || !HasColumn(t)) return 0;
  internal::FillColumn(m_apData[t], m_anAlloc[t], 0, m_nPacketSize, v);
  return 1;
}

int CPacketMemory::Replace(ENPacketDataType t, double a, double b) {
  if (m_nPacketSize < 1 || !HasColumn(t) || a == b) return 0;
  internal::ReplaceInColumn(Col(t), a, b);
  return 1;
}

int CPacketMemory::VShift(ENPacketDataType t, double d) {
  if (m_nPacketSize < 1 || !HasColumn(t) || d == 0.0) return 0;
  internal::AddToColumn(Col(t), d);
  return 1;
}

double CPacketMemory::UpdateSum(ENPacketDataType t, double v, int i) {
  if (m_nPacketSize < 1 || !HasColumn(t)) return kEmpty;
  const internal::SeriesRef s = Col(t);
  double* slot = i >= 0 ? internal::SlotAt(s, i)
                        : (internal::Stored(s) == m_nPacketSize ? s.data + m_nPacketSize - 1 : nullptr);
  if (slot == nullptr) return kEmpty;
  *slot += v;
  return *slot;
}

double CPacketMemory::UpdatePrevSum(ENPacketDataType t, double v) {
  if (m_nPacketSize < 2 || !HasColumn(t)) return kEmpty;
  const internal::SeriesRef s = Col(t);
  const int i = m_nPacketSize - 2;
  if (i >= internal::Stored(s)) return kEmpty;
  s.data[i] += v;
  return s.data[i];
}

int CPacketMemory::VShiftRatio(int i, ENPacketDataType t, double d) {
  if (m_nPacketSize <= 0 || !HasColumn(t) || d == 0.0) return 0;
  const internal::SeriesRef s = Col(t);
  if (i < 0 || i >= internal::Stored(s)) return 0;
  s.data[i] *= d;
  m_nColumnCursor = i;
  return 1;
}

int CPacketMemory::VShiftBasicRatio(int i, double d, int mode) {
  if (m_nPacketSize < 1 || d == 1.0 || d == kEmpty) return 0;
  for (m_nColumnCursor = 0; m_nColumnCursor < kBasicColumns; ++m_nColumnCursor) {
    const int c = m_nColumnCursor;
    if (c < PDT_OPEN || c > PDT_CLOSE) continue;
    double* slot = internal::SlotAt(Col(c), i);
    if (slot == nullptr) continue;
    switch (mode) {
      case 0:
        *slot += d;
        break;
      case 1:
        *slot -= d;
        break;
      case 2:
        *slot *= d;
        break;
      case 3:
        *slot /= d;
        break;
      default:
        break;
    }
  }
  return 1;
}

int CPacketMemory::GetPacketIndex(ENPacketDataType t, double v, int dir) const {
  if (m_nPacketSize < 1) return -1;
  return internal::FindPacketIndex(Col(t), v, dir);
}

// ---------------------------------------------------------------------------
// Records: reading
// ---------------------------------------------------------------------------

void CPacketMemory::ReadRow(int i, double* row, int ncols) const {
  if (i < 0 || i >= m_nPacketSize) return;
  for (int c = 0; c < ncols; ++c) {
    if (m_apData[c] != nullptr) row[c] = internal::ReadAt(Col(c), i);
  }
}

int CPacketMemory::LastAvailBar() const { return internal::LastAvailIndex(Col(m_nDefaultDataType), m_nStartIndex, m_nEndIndex); }

tagPacketCoreData CPacketMemory::GetBasic(int i) const {
  Row row(kBasicColumns);
  ReadRow(i, row.v, kBasicColumns);
  return ToBasic(row.v);
}

tagPacketCoreDataExtra CPacketMemory::GetExtra(int i) const {
  Row row(kExtraColumns);
  ReadRow(i, row.v, kExtraColumns);
  return ToExtra(row.v);
}

tagPacketCoreData CPacketMemory::GetFirstBasic() const { return GetBasic(0); }
tagPacketCoreDataExtra CPacketMemory::GetFirstExtra() const { return GetExtra(0); }
tagPacketCoreData CPacketMemory::GetLastBasic() const { return GetBasic(m_nPacketSize - 1); }
tagPacketCoreDataExtra CPacketMemory::GetLastExtra() const { return GetExtra(m_nPacketSize - 1); }
tagPacketCoreData CPacketMemory::GetLastPrevBasic() const { return GetBasic(m_nPacketSize - 2); }
tagPacketCoreDataExtra CPacketMemory::GetLastPrevExtra() const { return GetExtra(m_nPacketSize - 2); }
tagPacketCoreData CPacketMemory::GetLastPrePrevBasic() const { return GetBasic(m_nPacketSize - 3); }
tagPacketCoreDataExtra CPacketMemory::GetLastPrePrevExtra() const { return GetExtra(m_nPacketSize - 3); }

tagPacketCoreData CPacketMemory::GetLastFromIndexBasic(int k) const {
  return GetBasic(internal::NarrowIndex(static_cast<std::int64_t>(m_nPacketSize) - k));
}

tagPacketCoreDataExtra CPacketMemory::GetLastFromIndexExtra(int k) const {
  return GetExtra(internal::NarrowIndex(static_cast<std::int64_t>(m_nPacketSize) - k));
}

tagPacketCoreData CPacketMemory::GetLastAvailBasic() const { return GetBasic(LastAvailBar()); }
tagPacketCoreDataExtra CPacketMemory::GetLastAvailExtra() const { return GetExtra(LastAvailBar()); }

tagPacketCoreData CPacketMemory::GetReverseBasic(int i) const {
  return (i < 0 || i >= m_nPacketSize) ? tagPacketCoreData() : GetBasic(m_nPacketSize - 1 - i);
}

tagPacketCoreDataExtra CPacketMemory::GetReverseExtra(int i) const {
  return (i < 0 || i >= m_nPacketSize) ? tagPacketCoreDataExtra() : GetExtra(m_nPacketSize - 1 - i);
}

// ---------------------------------------------------------------------------
// Records: appending
// ---------------------------------------------------------------------------

int CPacketMemory::GrowFor(int extra) {
  if (m_nPacketSize < 0) m_nPacketSize = 0;
  const int n = m_nPacketSize;
  const std::int64_t need = static_cast<std::int64_t>(n) + extra;
  if (need > internal::kMaxPacketElements) throw std::bad_alloc();
  if (CheckPacketBoundary(static_cast<int>(need)) == 0) {
    ReAllocPacket(m_nMaxPacketSize, 1);
    // Growing an empty packet goes through AllocPacket, which sets the size
    // to the capacity; the bars are written at the size found.
    m_nPacketSize = n;
  }
  EnsureStorage(static_cast<int>(need));
  return n;
}

void CPacketMemory::EnsureStorage(int n) {
  const unsigned mask = LayoutMask(m_nPacketStructType);
  for (int t = 0; t < kColumns; ++t) {
    if (m_apData[t] == nullptr && !(mask & (1u << t))) continue;
    if (m_apData[t] != nullptr && m_anAlloc[t] >= n) continue;
    const bool fresh = m_apData[t] == nullptr;
    const int target = internal::GrowthTarget(m_anAlloc[t], n);
    m_apData[t] = internal::ResizeValues(m_apData[t], m_anAlloc[t], target, m_nPacketSize);
    m_anAlloc[t] = target;
    if (fresh) ++m_nColumnCount;
  }
}

int CPacketMemory::AppendRow(const double* row, int ncols) {
  const int n = GrowFor(1);
  for (int c = 0; c < kColumns; ++c) {
    if (m_apData[c] != nullptr) m_apData[c][n] = RowValue(row, ncols, c);
  }
  m_nEndIndex = n;
  m_nPacketSize = n + 1;
  m_nColumnCursor = ncols;
  return m_nPacketSize;
}

int CPacketMemory::AddBasic(const tagPacketCoreData& r) {
  // The hot path of a chart feed: seven stores, no row staging.
  const int n = m_nPacketSize;
  if (n > 0 && n + 1 < m_nMaxPacketSize && m_nPacketStructType == PST_OHLCV_RATIO) {
    bool fits = true;
    for (int c = 0; c < kBasicColumns; ++c) fits = fits && m_apData[c] != nullptr && n < m_anAlloc[c];
    if (fits && m_apData[PDT_EXTRA1] == nullptr && m_apData[PDT_EXTRA2] == nullptr) {
      m_apData[PDT_DATE][n] = r.m_dDate;
      m_apData[PDT_OPEN][n] = r.m_dOpen;
      m_apData[PDT_HIGH][n] = r.m_dHigh;
      m_apData[PDT_LOW][n] = r.m_dLow;
      m_apData[PDT_CLOSE][n] = r.m_dClose;
      m_apData[PDT_VOLUME][n] = r.m_dVolume;
      m_apData[PDT_RATIO][n] = r.m_dRatio;
      m_nEndIndex = n;
      m_nColumnCursor = kBasicColumns;
      return m_nPacketSize = n + 1;
    }
  }
  const Row row(r);
  return AppendRow(row.v, kBasicColumns);
}

int CPacketMemory::AddExtra(const tagPacketCoreDataExtra& r) {
  const Row row(r);
  return AppendRow(row.v, kExtraColumns);
}

int CPacketMemory::AddDateValue(double date, double value) {
  const int n = GrowFor(1);
  if (m_apData[PDT_DATE] != nullptr) m_apData[PDT_DATE][n] = date;
  if (HasColumn(m_nDefaultDataType)) m_apData[m_nDefaultDataType][n] = value;
  m_nEndIndex = n;
  return m_nPacketSize = n + 1;
}

int CPacketMemory::AddLastBasic() {
  const Row row(GetLastBasic());
  return AppendRow(row.v, kBasicColumns);
}

int CPacketMemory::AddLastExtra() {
  const Row row(GetLastExtra());
  return AppendRow(row.v, kExtraColumns);
}

int CPacketMemory::AddLastAvailRow(const double* row, int ncols) {
  const int n = GrowFor(1);
  const int k = LastAvailBar();
  const std::int64_t after_end = static_cast<std::int64_t>(m_nEndIndex) + 1;
  const bool end_in_use = after_end >= 0 && after_end <= n;
  for (int c = 0; c < kColumns; ++c) {
    double* d = m_apData[c];
    if (d == nullptr) continue;
    const double v = RowValue(row, ncols, c);
    d[n] = kEmpty;
    if (end_in_use) d[after_end] = kEmpty;
    if (k >= 0) {
      d[k + 1] = v;
    } else if (end_in_use) {
      d[after_end] = v;
    }
  }
  m_nEndIndex = n;
  m_nPacketSize = n + 1;
  m_nColumnCursor = ncols;
  return m_nPacketSize;
}

int CPacketMemory::AddLastAvailBasic(const tagPacketCoreData& r) { return AddLastAvailRow(Row(r).v, kBasicColumns); }

int CPacketMemory::AddLastAvailExtra(const tagPacketCoreDataExtra& r) {
  return AddLastAvailRow(Row(r).v, kExtraColumns);
}

int CPacketMemory::AddShiftRow(const double* row, int mode, int ncols) {
  if (m_nPacketSize < 1 || m_nColumnCount == 0) return -1;
  for (int c = 0; c < kColumns; ++c) {
    if (m_apData[c] != nullptr) internal::RollColumn(Col(c), RowValue(row, ncols, c), mode);
  }
  m_nColumnCursor = ncols;
  return m_nPacketSize;
}

int CPacketMemory::AddShiftBasic(const tagPacketCoreData& r, int mode) { return AddShiftRow(Row(r).v, mode, kBasicColumns); }

int CPacketMemory::AddShiftExtra(const tagPacketCoreDataExtra& r, int mode) {
  return AddShiftRow(Row(r).v, mode, kExtraColumns);
}

int CPacketMemory::AddShiftLastBasic(int mode) { return AddShiftRow(Row(GetLastBasic()).v, mode, kBasicColumns); }

int CPacketMemory::AddShiftLastExtra(int mode) { return AddShiftRow(Row(GetLastExtra()).v, mode, kExtraColumns); }

int CPacketMemory::AddShiftLastAvailRow(const double* row, int mode, int ncols) {
  if (m_nPacketSize < 1 || m_nColumnCount == 0) return 0;
  const int k = LastAvailBar();
  if (k < 0) return 0;
  InsertRow(k + 1, row, 0, ncols);
  for (int c = 0; c < kColumns; ++c) {
    const internal::SeriesRef s = Col(c);
    const int n = internal::Stored(s);
    if (s.data == nullptr) continue;
    if (mode == 1) {
      internal::ShiftLeftColumn(s, 1);
    } else if (mode == 0 && n >= 2) {
      std::copy_backward(s.data, s.data + n - 1, s.data + n);
    }
  }
  m_nColumnCursor = ncols;
  return 1;
}

int CPacketMemory::AddShiftLastAvailBasic(const tagPacketCoreData& r, int mode) {
  return AddShiftLastAvailRow(Row(r).v, mode, kBasicColumns);
}

int CPacketMemory::AddShiftLastAvailExtra(const tagPacketCoreDataExtra& r, int mode) {
  return AddShiftLastAvailRow(Row(r).v, mode, kExtraColumns);
}

int CPacketMemory::AddRowReverse(const double* row, int keep_size, int ncols) {
  int n;
  if (keep_size == 0) {
    n = GrowFor(1) + 1;
  } else {
    if (m_nPacketSize < 1) return 0;
    n = m_nPacketSize;
  }
  for (int c = 0; c < kColumns; ++c) {
    double* d = m_apData[c];
    if (d == nullptr) continue;
    const int moved = std::min(n, m_anAlloc[c]) - 1;
    if (moved > 0) std::memmove(d + 1, d, static_cast<std::size_t>(moved) * sizeof(double));
    d[0] = RowValue(row, ncols, c);
  }
  if (keep_size == 0) {
    m_nEndIndex = n - 1;
    m_nPacketSize = n;
  }
  m_nColumnCursor = ncols;
  return m_nPacketSize;
}

int CPacketMemory::AddBasicReverse(const tagPacketCoreData& r, int keep_size) {
  return AddRowReverse(Row(r).v, keep_size, kBasicColumns);
}

int CPacketMemory::AddExtraReverse(const tagPacketCoreDataExtra& r, int keep_size) {
  return AddRowReverse(Row(r).v, keep_size, kExtraColumns);
}

int CPacketMemory::InsertRow(int i, const double* row, int move_all, int ncols) {
  if (i < 0 || i > std::max(m_nPacketSize, 0)) return 0;
  const int n = GrowFor(1);
  for (int c = 0; c < kColumns; ++c) {
    double* d = m_apData[c];
    if (d == nullptr) continue;
    const double v = RowValue(row, ncols, c);
    if (move_all != 0) {
      std::memmove(d + i + 1, d + i, static_cast<std::size_t>(n - i) * sizeof(double));
      d[i] = v;
    } else {
      internal::InsertColumn(internal::SeriesRef{d, m_anAlloc[c], n, m_nStartIndex, m_nEndIndex}, i, v);
    }
  }
  m_nEndIndex = n;
  m_nPacketSize = n + 1;
  m_nColumnCursor = ncols;
  return 1;
}

int CPacketMemory::InsertBasic(int i, const tagPacketCoreData& r, int move_all) {
  return InsertRow(i, Row(r).v, move_all, kBasicColumns);
}

int CPacketMemory::InsertExtra(int i, const tagPacketCoreDataExtra& r, int move_all) {
  return InsertRow(i, Row(r).v, move_all, kExtraColumns);
}

// ---------------------------------------------------------------------------
// Records: updating and removing
// ---------------------------------------------------------------------------

int CPacketMemory::WriteRow(int i, const double* row, int ncols) {
  if (i < 0 || i >= m_nPacketSize) return 0;
  for (int c = 0; c < ncols; ++c) {
    if (m_apData[c] != nullptr) internal::WriteAt(Col(c), i, row[c]);
  }
  m_nColumnCursor = ncols;
  return 1;
}

int CPacketMemory::SetBasic(int i, const tagPacketCoreData& r) { return WriteRow(i, Row(r).v, kBasicColumns); }
int CPacketMemory::SetExtra(int i, const tagPacketCoreDataExtra& r) { return WriteRow(i, Row(r).v, kExtraColumns); }
int CPacketMemory::SetLastBasic(const tagPacketCoreData& r) { return SetBasic(m_nPacketSize - 1, r); }
int CPacketMemory::SetLastExtra(const tagPacketCoreDataExtra& r) { return SetExtra(m_nPacketSize - 1, r); }
int CPacketMemory::SetLastPrevBasic(const tagPacketCoreData& r) { return SetBasic(m_nPacketSize - 1, r); }
int CPacketMemory::SetLastPrevExtra(const tagPacketCoreDataExtra& r) { return SetExtra(m_nPacketSize - 1, r); }
int CPacketMemory::UpdateBasic(int i, const tagPacketCoreData& r) { return SetBasic(i, r); }
int CPacketMemory::UpdateBasic(const tagPacketCoreData& r) { return SetLastBasic(r); }
int CPacketMemory::UpdateExtra(int i, const tagPacketCoreDataExtra& r) { return SetExtra(i, r); }
int CPacketMemory::UpdateExtra(const tagPacketCoreDataExtra& r) { return SetLastExtra(r); }

int CPacketMemory::UpdateLastAvailBasic(const tagPacketCoreData& r) {
  const int k = LastAvailBar();
  return k < 0 ? 0 : SetBasic(k, r);
}

int CPacketMemory::UpdateLastAvailExtra(const tagPacketCoreDataExtra& r) {
  const int k = LastAvailBar();
  return k < 0 ? 0 : SetExtra(k, r);
}

int CPacketMemory::UpdatePrevBasic(const tagPacketCoreData& r) {
  return m_nPacketSize >= 2 ? SetBasic(m_nPacketSize - 2, r) : 0;
}

int CPacketMemory::UpdatePrevExtra(const tagPacketCoreDataExtra& r) {
  return m_nPacketSize >= 2 ? SetExtra(m_nPacketSize - 2, r) : 0;
}

int CPacketMemory::UpdateBasicExcept(int i, const tagPacketCoreData& r, ENPacketDataType except) {
  if (i < 0) {
    if (m_nPacketSize < 1) return 0;
    i = m_nPacketSize - 1;
  }
  if (i >= m_nPacketSize) return 0;
  const Row row(r);
  for (m_nColumnCursor = 0; m_nColumnCursor < kBasicColumns; ++m_nColumnCursor) {
    const int c = m_nColumnCursor;
    if (c != except && m_apData[c] != nullptr) internal::WriteAt(Col(c), i, row.v[c]);
  }
  return 1;
}

int CPacketMemory::RemoveRow(int i, int shrink, int ncols) {
  if (i < 0 || i >= m_nPacketSize) return 0;
  const int moved = i < m_nPacketSize - 1 ? 1 : 0;
  for (int c = 0; c < kColumns; ++c) {
    if (m_apData[c] != nullptr) internal::RemoveOneColumn(Col(c), i);
  }
  if (shrink == 1) --m_nPacketSize;
  m_nColumnCursor = ncols;
  return moved;
}

int CPacketMemory::RemoveRows(int i, int n, int shrink, int ncols) {
  if (internal::RemoveRangeMoves(m_nPacketSize, i, n) < 1) return 0;
  for (int c = 0; c < kColumns; ++c) {
    if (m_apData[c] != nullptr) internal::RemoveRangeColumn(Col(c), i, n);
  }
  if (shrink == 1) m_nPacketSize -= n;
  m_nColumnCursor = ncols;
  return 1;
}

int CPacketMemory::RemoveBasic(int i, int shrink) { return RemoveRow(i, shrink, kBasicColumns); }
int CPacketMemory::RemoveExtra(int i, int shrink) { return RemoveRow(i, shrink, kExtraColumns); }
int CPacketMemory::RemoveBasic(int i, int n, int shrink) { return RemoveRows(i, n, shrink, kBasicColumns); }
int CPacketMemory::RemoveExtra(int i, int n, int shrink) { return RemoveRows(i, n, shrink, kExtraColumns); }
int CPacketMemory::RemoveLeftBasic(int n, int shrink) { return RemoveRows(0, n, shrink, kBasicColumns); }
int CPacketMemory::RemoveLeftExtra(int n, int shrink) { return RemoveRows(0, n, shrink, kExtraColumns); }

int CPacketMemory::RemoveRightBasic(int n, int shrink) {
  return RemoveRows(internal::NarrowIndex(static_cast<std::int64_t>(m_nPacketSize) - n), n, shrink, kBasicColumns);
}

int CPacketMemory::RemoveRightExtra(int n, int shrink) {
  return RemoveRows(internal::NarrowIndex(static_cast<std::int64_t>(m_nPacketSize) - n), n, shrink, kExtraColumns);
}

int CPacketMemory::ShiftRows(int direction, int n, int ncols) {
  if (m_nPacketSize <= 0 || n <= 0 || m_nColumnCount == 0) return 0;
  if (direction == 1) {
    for (int c = 0; c < kColumns; ++c) {
      if (m_apData[c] != nullptr) internal::ShiftLeftColumn(Col(c), n);
    }
    m_nColumnCursor = ncols;
    return 1;
  }
  if (direction != 0) return 0;
  const std::int64_t grown = static_cast<std::int64_t>(m_nPacketSize) + n;
  if (grown > internal::kMaxPacketElements) throw std::bad_alloc();
  std::vector<std::vector<double>> old(static_cast<std::size_t>(kColumns));
  for (int c = 0; c < kColumns; ++c) {
    const internal::SeriesRef s = Col(c);
    if (s.data != nullptr) old[static_cast<std::size_t>(c)].assign(s.data, s.data + internal::Stored(s));
  }
  const int old_start = m_nStartIndex;
  AllocPacket(static_cast<int>(grown));
  const int new_size = m_nPacketSize;
  const std::int64_t start = static_cast<std::int64_t>(old_start) + n;
  m_nStartIndex = internal::NarrowIndex(start);
  const int first = static_cast<int>(std::max<std::int64_t>(std::min<std::int64_t>(start, new_size), 0));
  for (int c = 0; c < kColumns; ++c) {
    double* d = m_apData[c];
    if (d == nullptr) continue;
    const std::vector<double>& col = old[static_cast<std::size_t>(c)];
    internal::PlaceShiftedRight(d, m_anAlloc[c], col.data(), static_cast<int>(col.size()), first, new_size, n);
  }
  m_nShiftXSize = n;
  m_nColumnCursor = ncols;
  return 1;
}

int CPacketMemory::ShiftBasic(int direction, int n) { return ShiftRows(direction, n, kBasicColumns); }
int CPacketMemory::ShiftExtra(int direction, int n) { return ShiftRows(direction, n, kExtraColumns); }

int CPacketMemory::SwapRows(int i, int j, int ncols) {
  int swapped = 0;
  for (int c = 0; c < kColumns; ++c) {
    double* a = internal::SlotAt(Col(c), i);
    double* b = internal::SlotAt(Col(c), j);
    if (a == nullptr || b == nullptr) continue;
    std::swap(*a, *b);
    swapped = 1;
  }
  m_nColumnCursor = ncols;
  return swapped;
}

int CPacketMemory::SwapBasic(int i, int j) { return SwapRows(i, j, kBasicColumns); }
int CPacketMemory::SwapExtra(int i, int j) { return SwapRows(i, j, kExtraColumns); }

int CPacketMemory::VShiftPrices(double d, int ncols) {
  if (m_nPacketSize < 1 || d == 0.0) return 0;
  for (int c = PDT_OPEN; c <= PDT_CLOSE; ++c) {
    if (m_apData[c] != nullptr) internal::AddToColumn(Col(c), d);
  }
  m_nColumnCursor = ncols;
  return 1;
}

int CPacketMemory::VShiftRow(const double* row, int ncols) {
  if (m_nPacketSize < 1) return 0;
  for (int c = 0; c < ncols; ++c) {
    if (m_apData[c] != nullptr && row[c] != 0.0 && row[c] != kEmpty) internal::AddToColumn(Col(c), row[c]);
  }
  m_nColumnCursor = ncols;
  return 1;
}

int CPacketMemory::VShiftBasic(double d) { return VShiftPrices(d, kBasicColumns); }
int CPacketMemory::VShiftExtra(double d) { return VShiftPrices(d, kExtraColumns); }
int CPacketMemory::VShiftBasic(const tagPacketCoreData& r) { return VShiftRow(Row(r).v, kBasicColumns); }
int CPacketMemory::VShiftExtra(const tagPacketCoreDataExtra& r) { return VShiftRow(Row(r).v, kExtraColumns); }

// ---------------------------------------------------------------------------
// Queries per column
// ---------------------------------------------------------------------------

int CPacketMemory::GetFirstAvailIndex(ENPacketDataType t) const {
  return internal::FirstAvailIndex(Col(t), m_nStartIndex, m_nEndIndex);
}

int CPacketMemory::GetLastAvailIndex(ENPacketDataType t) const {
  return internal::LastAvailIndex(Col(t), m_nStartIndex, m_nEndIndex);
}

double CPacketMemory::GetFirstAvailValue(ENPacketDataType t) const {
  int idx;
  return GetFirstAvailValue(t, idx);
}

double CPacketMemory::GetFirstAvailValue(ENPacketDataType t, int& idx) const {
  return internal::FirstAvailValue(Col(t), m_nStartIndex, m_nEndIndex, idx);
}

double CPacketMemory::GetFirstAvailValue(int from, int to, ENPacketDataType t, int& idx) const {
  return internal::FirstAvailValue(Col(t), from, to, idx);
}

double CPacketMemory::GetLastAvailValue(ENPacketDataType t) const {
  int idx;
  return GetLastAvailValue(t, idx);
}

double CPacketMemory::GetLastAvailValue(ENPacketDataType t, int& idx) const {
  return internal::LastAvailValue(Col(t), m_nStartIndex, m_nEndIndex, idx);
}

double CPacketMemory::GetLastAvailValue(int from, int to, ENPacketDataType t, int& idx) const {
  return internal::LastAvailValue(Col(t), from, to, idx);
}

int CPacketMemory::FindIndexOverValue(ENPacketDataType t, double v) const { return internal::FindOver(Col(t), v); }

int CPacketMemory::FindIndexBetweenValues(ENPacketDataType t, double a, double b) const {
  return internal::FindBetween(Col(t), a, b);
}

int CPacketMemory::FindIndexClosestValues(ENPacketDataType t, double v) const {
  return internal::FindClosest(Col(t), v);
}

int CPacketMemory::FindIndexsBetweenValues(ENPacketDataType t, double a, double b, int& first, int& second) const {
  return internal::FindPair(Col(t), a, b, first, second);
}

int CPacketMemory::FindValuePos(ENPacketDataType t, double v, int dir) const {
  return internal::FindPos(Col(t), v, dir);
}

int CPacketMemory::GetMaxIndex(int from, int to, ENPacketDataType t, int cache_set) {
  internal::ScratchCache scratch;
  return internal::QueryMaxIndex(Col(t), from, to, Cache(t, cache_set, scratch));
}

int CPacketMemory::GetMinIndex(int from, int to, ENPacketDataType t, int cache_set) {
  internal::ScratchCache scratch;
  return internal::QueryMinIndex(Col(t), from, to, Cache(t, cache_set, scratch));
}

double CPacketMemory::GetMaxValue(int from, int to, ENPacketDataType t, int cache, int cache_set) {
  internal::ScratchCache scratch;
  return internal::QueryMaxValue(Col(t), from, to, cache, Cache(t, cache_set, scratch));
}

double CPacketMemory::GetMinValue(int from, int to, ENPacketDataType t, int cache, int cache_set) {
  internal::ScratchCache scratch;
  return internal::QueryMinValue(Col(t), from, to, cache, Cache(t, cache_set, scratch));
}

double CPacketMemory::GetMaxValueIndex(int from, int to, ENPacketDataType t, int& idx, int cache, int cache_set) {
  internal::ScratchCache scratch;
  return internal::QueryMaxValueIndex(Col(t), from, to, idx, cache, Cache(t, cache_set, scratch));
}

double CPacketMemory::GetMinValueIndex(int from, int to, ENPacketDataType t, int& idx, int cache, int cache_set) {
  internal::ScratchCache scratch;
  return internal::QueryMinValueIndex(Col(t), from, to, idx, cache, Cache(t, cache_set, scratch));
}

double CPacketMemory::GetMaxMinValue(int from, int to, ENPacketDataType t, double& max, double& min, int cache,
                                     int cache_set) {
  internal::ScratchCache scratch;
  return internal::QueryMaxMin(Col(t), from, to, max, min, nullptr, nullptr, cache, Cache(t, cache_set, scratch));
}

double CPacketMemory::GetMaxMinValueIndex(int from, int to, ENPacketDataType t, double& max, double& min,
                                          int& max_index, int& min_index, int cache, int cache_set) {
  internal::ScratchCache scratch;
  return internal::QueryMaxMin(Col(t), from, to, max, min, &max_index, &min_index, cache, Cache(t, cache_set, scratch));
}

// ---------------------------------------------------------------------------
// Whole-packet operations
// ---------------------------------------------------------------------------

namespace {

// dst := src's first count elements, the rest of [0, count) empty.
void CopyOrEmpty(double* dst, int dst_alloc, const internal::SeriesRef& src, int count) {
  const int stored = std::min(internal::Stored(src), count);
  internal::CopyColumn(dst, dst_alloc, src.data, src.alloc, stored);
  internal::FillColumn(dst, dst_alloc, std::max(stored, 0), count, kEmpty);
}

}  // namespace

int CPacketMemory::FillPacket(const CPacketMemory* src, ENPacketDataType t) {
  if (src == this) {
    const CPacketMemory copy(*this);
    return FillPacket(&copy, t);
  }
  ClearPacket();
  if (src == nullptr || src->m_nPacketSize < 1) return 0;
  AllocPacketMemory(internal::CopyAllocFor(src->m_nMaxPacketSize, src->m_nPacketSize));
  const int count = src->m_nPacketSize;
  const int layout = m_nPacketStructType;
  for (int c = 0; c < kColumns; ++c) {
    if (m_apData[c] == nullptr || !(LayoutMask(layout) & (1u << c))) continue;
    // Prices all follow the chosen series; the other columns come from the
    // same column of the source.
    const bool price = c == PDT_CLOSE || (layout >= PST_OHLC && c >= PDT_OPEN && c <= PDT_CLOSE);
    CopyOrEmpty(m_apData[c], m_anAlloc[c], src->Col(price ? static_cast<int>(t) : c), count);
  }
  m_nShiftXSize = src->m_nShiftXSize;
  m_nValidStartIndex = src->m_nValidStartIndex;
  m_nValidEndIndex = src->m_nValidEndIndex;
  m_nStartIndex = src->m_nStartIndex;
  m_nEndIndex = src->m_nEndIndex;
  m_nBlockCount = src->m_nBlockCount;
  m_nMaxPacketSize = src->m_nMaxPacketSize;
  m_nPacketSize = src->m_nPacketSize;
  std::copy(src->m_anMaxPacketIndex, src->m_anMaxPacketIndex + kColumns, m_anMaxPacketIndex);
  std::copy(src->m_anMinPacketIndex, src->m_anMinPacketIndex + kColumns, m_anMinPacketIndex);
  std::copy(src->m_adMaxPacketValue, src->m_adMaxPacketValue + kColumns, m_adMaxPacketValue);
  std::copy(src->m_adMinPacketValue, src->m_adMinPacketValue + kColumns, m_adMinPacketValue);
  return 1;
}

int CPacketMemory::AccumPacket(const CPacketMemory* src) {
  if (src == this) {
    const CPacketMemory copy(*this);
    return AccumPacket(&copy);
  }
  ClearPacket();
  if (src == nullptr || src->m_nPacketSize < 1) return 0;
  AllocPacketMemory(internal::CopyAllocFor(src->m_nMaxPacketSize, src->m_nPacketSize));
  const unsigned mask = LayoutMask(m_nPacketStructType);
  for (int c = 0; c < kColumns; ++c) {
    if (m_apData[c] == nullptr || !(mask & (1u << c))) continue;
    const internal::SeriesRef from = src->Col(c);
    const internal::SeriesRef to{m_apData[c], m_anAlloc[c], src->m_nPacketSize, 0, src->m_nEndIndex};
    if (from.data == nullptr) {
      internal::FillColumn(to.data, to.alloc, 0, src->m_nPacketSize, kEmpty);
    } else {
      // From element 0: a clear of an empty packet keeps a stale start index.
      internal::AccumulateColumn(to, from, 0);
    }
  }
  // Everything but the real size, the layout and the default column.
  const int real = m_nRealPacketSize;
  const ENPacketStructType layout = m_nPacketStructType;
  const ENPacketDataType default_type = m_nDefaultDataType;
  const int cursor = m_nColumnCursor;
  CopyFieldsFrom(*src);
  m_nRealPacketSize = real;
  m_nPacketStructType = layout;
  m_nDefaultDataType = default_type;
  m_nColumnCursor = cursor;
  return 1;
}

int CPacketMemory::ReversePacket() {
  if (m_nPacketSize < 0) return 0;
  for (int c = 0; c < kColumns; ++c) {
    if (m_apData[c] != nullptr) internal::ReverseColumn(Col(c));
  }
  return 1;
}

int CPacketMemory::ReversePacket(ENPacketDataType t) {
  if (m_nPacketSize < 0 || !HasColumn(t)) return 0;
  internal::ReverseColumn(Col(t));
  return 1;
}

int CPacketMemory::CopyPacket(const CPacketMemory& src) {
  if (this == &src) return m_nPacketSize >= 1 ? 1 : 0;
  ClearPacket();
  FreeAllColumns();
  m_nPacketStructType = src.m_nPacketStructType;
  m_nDefaultDataType = src.m_nDefaultDataType;
  if (src.m_nPacketSize < 1) return 0;
  const int alloc = internal::CopyAllocFor(src.m_nMaxPacketSize, src.m_nPacketSize);
  for (int c = 0; c < kColumns; ++c) {
    if (src.m_apData[c] == nullptr) continue;
    SetColumn(c, internal::AllocValues(alloc), alloc);
    CopyOrEmpty(m_apData[c], alloc, src.Col(c), src.m_nPacketSize);
  }
  CopyFieldsFrom(src);
  return 1;
}

int CPacketMemory::CopyPacket(const CPacketMemory* src) { return src == nullptr ? 0 : CopyPacket(*src); }

int CPacketMemory::CopyPacket(const CPacketMemory* src, int from, int to) {
  if (src == this) {
    const CPacketMemory copy(*this);
    return CopyPacket(&copy, from, to);
  }
  ClearPacket();
  FreeAllColumns();
  if (src == nullptr || src->m_nPacketSize < 1 || from < src->m_nStartIndex || to > src->m_nEndIndex) return 0;
  const std::int64_t wanted = static_cast<std::int64_t>(to) - from + 1;
  if (wanted > internal::kMaxPacketElements) throw std::bad_alloc();
  const int count = static_cast<int>(std::max<std::int64_t>(wanted, 0));
  m_nPacketStructType = src->m_nPacketStructType;
  m_nDefaultDataType = src->m_nDefaultDataType;
  CheckPacketBoundary(src->m_nPacketSize);
  const int alloc = std::max(internal::CopyAllocFor(m_nMaxPacketSize, 0), count);
  for (int c = 0; c < kColumns; ++c) {
    if (!(LayoutMask(m_nPacketStructType) & (1u << c))) continue;
    SetColumn(c, internal::AllocValues(alloc), alloc);
    for (int k = 0; k < count; ++k) m_apData[c][k] = src->GetValue(from + k, static_cast<ENPacketDataType>(c));
  }
  m_nShiftXSize = src->m_nShiftXSize;
  m_nValidStartIndex = src->m_nValidStartIndex;
  m_nValidEndIndex = src->m_nValidEndIndex;
  m_nStartIndex = 0;
  m_nEndIndex = count - 1;
  m_nPacketSize = count;
  return 1;
}

int CPacketMemory::CopyValues(ENPacketDataType t, const double* values, int n) {
  if (values == nullptr || n < 1 || !IsLayoutColumn(m_nPacketStructType, t)) return 0;
  // values may lie in one of this packet's columns, which the resize below
  // can move, cut or fill: take them out first.
  std::vector<double> staged;
  const std::less<const double*> before;
  for (int c = 0; c < kColumns; ++c) {
    const double* d = m_apData[c];
    if (d != nullptr && !before(values, d) && before(values, d + m_anAlloc[c])) {
      staged.assign(values, values + n);
      values = staged.data();
      break;
    }
  }
  const int old_size = std::max(m_nPacketSize, 0);
  if (n != m_nPacketSize) {
    ReAllocPacket(n, 1);
    if (m_nPacketSize != n) {
      EnsureStorage(n);
      m_nPacketSize = n;
    }
    // Bars that did not exist before hold no data in the other columns.
    const int keep = std::min(old_size, n);
    for (int c = 0; c < kColumns; ++c) {
      if (c != t && m_apData[c] != nullptr) internal::FillColumn(m_apData[c], m_anAlloc[c], keep, n, kEmpty);
    }
  }
  EnsureStorage(n);
  std::copy(values, values + n, m_apData[t]);
  m_nStartIndex = 0;
  m_nEndIndex = n - 1;
  m_nValidStartIndex = 0;
  m_nValidEndIndex = n - 1;
  return 1;
}

int CPacketMemory::CopyValues(ENPacketDataType t, const CPacket* src) {
  if (src == nullptr) return 0;
  const internal::SeriesRef s = src->Ref();
  return CopyValues(t, s.data, internal::Stored(s));
}

int CPacketMemory::InsertPacket(const CPacketMemory* src, int index) {
  if (src == this) {
    const CPacketMemory copy(*this);
    return InsertPacket(&copy, index);
  }
  if (src == nullptr || src->m_nPacketSize < 1 || index < 0 || index > std::max(m_nPacketSize, 0)) return 0;
  const int m = src->m_nPacketSize;
  const int n = GrowFor(m);
  for (int c = 0; c < kColumns; ++c) {
    double* d = m_apData[c];
    if (d == nullptr) continue;
    std::memmove(d + index + m, d + index, static_cast<std::size_t>(n - index) * sizeof(double));
    CopyOrEmpty(d + index, m, src->Col(c), m);
  }
  m_nPacketSize = n + m;
  m_nEndIndex = m_nPacketSize - 1;
  return 1;
}

int CPacketMemory::AddPacket(const CPacketMemory* src) {
  return InsertPacket(src, std::max(m_nPacketSize, 0)) ? m_nPacketSize : 0;
}

// ---------------------------------------------------------------------------
// Arithmetic
// ---------------------------------------------------------------------------

CPacketMemory CPacketMemory::MakeScalar(ENPacketStructType layout, double v) {
  // Each assignment of a number (size still 0, so nothing is cleared) puts a
  // one-element array in the default column; walking the default column
  // over the layout gives every column its element.
  CPacketMemory scalar;
  const unsigned mask = LayoutMask(layout);
  for (int c = 0; c < kColumns; ++c) {
    if (!(mask & (1u << c))) continue;
    scalar.m_nDefaultDataType = static_cast<ENPacketDataType>(c);
    scalar = v;
  }
  scalar.m_nPacketStructType = layout;
  scalar.m_nDefaultDataType = PDT_CLOSE;
  scalar.m_nPacketSize = 1;
  return scalar;
}

CPacketMemory CPacketMemory::CalcOperatorType1(ENOperatorType code, const CPacketMemory& right) {
  const int ln = std::max(m_nPacketSize, 0);
  const int rn = std::max(right.m_nPacketSize, 0);
  const int n = std::max(ln, rn);
  if (n == 0 || (ln == 0) != (rn == 0)) return CPacketMemory(*this);
  const int s = std::max(m_nStartIndex, right.m_nStartIndex);
  const int e = std::max(m_nEndIndex, right.m_nEndIndex);
  CPacketMemory result;
  result.m_nPacketStructType = m_nPacketStructType;
  result.m_nDefaultDataType = m_nDefaultDataType;
  result.AllocPacket(n);
  for (int c = 0; c < kColumns; ++c) {
    double* out = result.m_apData[c];
    if (out == nullptr) continue;
    if (m_apData[c] == nullptr) {
      internal::FillColumn(out, result.m_anAlloc[c], 0, n, kEmpty);
      continue;
    }
    internal::FillColumn(out, result.m_anAlloc[c], 0, std::min(std::max(s, 0), n), kEmpty);
    internal::CalcColumn1(code, Col(c), right.Col(c), out, s, n);
  }
  result.m_nStartIndex = s;
  result.m_nEndIndex = e;
  return result;
}

CPacketMemory& CPacketMemory::CalcOperatorType2(ENOperatorType code, const CPacketMemory& right) {
  if (m_nPacketSize <= 0) return *this;
  const int s = std::max(m_nStartIndex, right.m_nStartIndex);
  const int e = std::max(m_nEndIndex, right.m_nEndIndex);
  const unsigned mask = LayoutMask(m_nPacketStructType);
  for (int c = 0; c < kColumns; ++c) {
    if (m_apData[c] != nullptr && (mask & (1u << c))) internal::CalcColumn2(code, Col(c), right.Col(c));
  }
  if (m_nPacketSize != 1) {
    m_nStartIndex = s;
    m_nEndIndex = e;
  }
  return *this;
}

CPacketMemory CPacketMemory::operator+(const CPacketMemory& r) { return CalcOperatorType1(OCT_PLUS, r); }
CPacketMemory CPacketMemory::operator-(const CPacketMemory& r) { return CalcOperatorType1(OCT_MINUS, r); }
CPacketMemory CPacketMemory::operator*(const CPacketMemory& r) { return CalcOperatorType1(OCT_MULTIPLY, r); }
CPacketMemory CPacketMemory::operator/(const CPacketMemory& r) { return CalcOperatorType1(OCT_DIVIDE, r); }
CPacketMemory CPacketMemory::operator%(const CPacketMemory& r) { return CalcOperatorType1(OCT_MODULO, r); }

CPacketMemory CPacketMemory::operator+(double r) {
  return CalcOperatorType1(OCT_PLUS, MakeScalar(m_nPacketStructType, r));
}

CPacketMemory CPacketMemory::operator-(double r) {
  return CalcOperatorType1(OCT_MINUS, MakeScalar(m_nPacketStructType, r));
}

CPacketMemory CPacketMemory::operator*(double r) {
  return CalcOperatorType1(OCT_MULTIPLY, MakeScalar(m_nPacketStructType, r));
}

CPacketMemory CPacketMemory::operator/(double r) {
  return CalcOperatorType1(OCT_DIVIDE, MakeScalar(m_nPacketStructType, r));
}

CPacketMemory CPacketMemory::operator%(double r) {
  return CalcOperatorType1(OCT_MODULO, MakeScalar(m_nPacketStructType, r));
}

CPacketMemory& CPacketMemory::operator+=(const CPacketMemory& r) { return CalcOperatorType2(OCT_PLUS, r); }
CPacketMemory& CPacketMemory::operator-=(const CPacketMemory& r) { return CalcOperatorType2(OCT_MINUS, r); }
CPacketMemory& CPacketMemory::operator*=(const CPacketMemory& r) { return CalcOperatorType2(OCT_MULTIPLY, r); }
CPacketMemory& CPacketMemory::operator/=(const CPacketMemory& r) { return CalcOperatorType2(OCT_DIVIDE, r); }
CPacketMemory& CPacketMemory::operator%=(const CPacketMemory& r) { return CalcOperatorType2(OCT_MODULO, r); }

// ---------------------------------------------------------------------------
// Private helpers
// ---------------------------------------------------------------------------

internal::SeriesRef CPacketMemory::Col(int t) const {
  if (!ValidColumn(t)) return internal::SeriesRef{nullptr, 0, m_nPacketSize, m_nStartIndex, m_nEndIndex};
  return internal::SeriesRef{m_apData[t], m_anAlloc[t], m_nPacketSize, m_nStartIndex, m_nEndIndex};
}

internal::ExtremeSlots CPacketMemory::Cache(int t, int cache_set, internal::ScratchCache& scratch) {
  // A foreign column has no cache: its results go to the caller's scratch.
  if (!ValidColumn(t)) return internal::ExtremeSlots{scratch.index[0], scratch.index[1], scratch.value[0], scratch.value[1]};
  if (cache_set == 0) {
    return internal::ExtremeSlots{m_anMaxPacketIndex[t], m_anMinPacketIndex[t], m_adMaxPacketValue[t],
                                  m_adMinPacketValue[t]};
  }
  return internal::ExtremeSlots{m_anMaxPacketIndex2[t], m_anMinPacketIndex2[t], m_adMaxPacketValue2[t],
                                m_adMinPacketValue2[t]};
}

bool CPacketMemory::HasColumn(int t) const { return ValidColumn(t) && m_apData[t] != nullptr; }

void CPacketMemory::SetColumn(int t, double* data, int alloc) {
  if (m_apData[t] == nullptr) ++m_nColumnCount;
  internal::FreeValues(m_apData[t]);
  m_apData[t] = data;
  m_anAlloc[t] = alloc;
}

void CPacketMemory::FreeAllColumns() {
  for (int t = 0; t < kColumns; ++t) {
    internal::FreeValues(m_apData[t]);
    m_apData[t] = nullptr;
    m_anAlloc[t] = 0;
  }
  m_nColumnCount = 0;
}

void CPacketMemory::ResetCaches() {
  std::fill(m_anMaxPacketIndex, m_anMaxPacketIndex + kColumns, -1);
  std::fill(m_anMinPacketIndex, m_anMinPacketIndex + kColumns, -1);
  std::fill(m_anMaxPacketIndex2, m_anMaxPacketIndex2 + kColumns, -1);
  std::fill(m_anMinPacketIndex2, m_anMinPacketIndex2 + kColumns, -1);
  std::fill(m_adMaxPacketValue, m_adMaxPacketValue + kColumns, kPacketNoMaxValue);
  std::fill(m_adMinPacketValue, m_adMinPacketValue + kColumns, kEmpty);
  std::fill(m_adMaxPacketValue2, m_adMaxPacketValue2 + kColumns, kPacketNoMaxValue);
  std::fill(m_adMinPacketValue2, m_adMinPacketValue2 + kColumns, kEmpty);
}

void CPacketMemory::CopyFieldsFrom(const CPacketMemory& src) {
  m_nColumnCursor = src.m_nColumnCursor;
  m_nPacketStructType = src.m_nPacketStructType;
  m_nDefaultDataType = src.m_nDefaultDataType;
  m_nShiftXSize = src.m_nShiftXSize;
  m_nValidStartIndex = src.m_nValidStartIndex;
  m_nValidEndIndex = src.m_nValidEndIndex;
  m_nStartIndex = src.m_nStartIndex;
  m_nEndIndex = src.m_nEndIndex;
  m_nBlockCount = src.m_nBlockCount;
  m_nMaxPacketSize = src.m_nMaxPacketSize;
  m_nPacketSize = src.m_nPacketSize;
  m_nRealPacketSize = src.m_nRealPacketSize;
  std::copy(src.m_anMaxPacketIndex, src.m_anMaxPacketIndex + kColumns, m_anMaxPacketIndex);
  std::copy(src.m_anMinPacketIndex, src.m_anMinPacketIndex + kColumns, m_anMinPacketIndex);
  std::copy(src.m_anMaxPacketIndex2, src.m_anMaxPacketIndex2 + kColumns, m_anMaxPacketIndex2);
  std::copy(src.m_anMinPacketIndex2, src.m_anMinPacketIndex2 + kColumns, m_anMinPacketIndex2);
  std::copy(src.m_adMaxPacketValue, src.m_adMaxPacketValue + kColumns, m_adMaxPacketValue);
  std::copy(src.m_adMinPacketValue, src.m_adMinPacketValue + kColumns, m_adMinPacketValue);
  std::copy(src.m_adMaxPacketValue2, src.m_adMaxPacketValue2 + kColumns, m_adMaxPacketValue2);
  std::copy(src.m_adMinPacketValue2, src.m_adMinPacketValue2 + kColumns, m_adMinPacketValue2);
}
