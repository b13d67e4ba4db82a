#include "chartcore/packets/packet_internal.h"

#include <algorithm>
#include <climits>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <new>
#include <vector>

#include "chartcore/platform/int_conversion_internal.h"

namespace chartcore {
namespace internal {

namespace {

constexpr double kEmpty = kPacketEmptyValue;

inline int ClampLow(int from) { return from < 0 ? 0 : from; }

// Last usable index of a range end, given the stored element count.
inline int ClampHigh(int to, int stored) { return to < stored - 1 ? to : stored - 1; }

}  // namespace

// ---------------------------------------------------------------------------
// Physical storage
// ---------------------------------------------------------------------------

double* AllocValues(int n) {
  if (n > kMaxPacketElements) throw std::bad_alloc();
  const std::size_t count = n < 1 ? 1 : static_cast<std::size_t>(n);
  void* p = std::calloc(count, sizeof(double));
  if (p == nullptr) throw std::bad_alloc();
  return static_cast<double*>(p);
}

double* ResizeValues(double* p, int old_alloc, int n, int fill_empty_to) {
  if (n > kMaxPacketElements) throw std::bad_alloc();
  if (p == nullptr) old_alloc = 0;
  const std::size_t count = n < 1 ? 1 : static_cast<std::size_t>(n);
  void* q = std::realloc(p, count * sizeof(double));
  if (q == nullptr) throw std::bad_alloc();
  double* values = static_cast<double*>(q);
  int i = old_alloc < 0 ? 0 : old_alloc;
  const int empty_end = std::min(fill_empty_to, n);
  for (; i < empty_end; ++i) values[i] = kEmpty;
  if (i < n) std::memset(values + i, 0, static_cast<std::size_t>(n - i) * sizeof(double));
  return values;
}

void FreeValues(double* p) { std::free(p); }

int GrowthTarget(int alloc, int need) {
  const std::int64_t grown = static_cast<std::int64_t>(alloc) + alloc / 2;
  std::int64_t target = grown > need ? grown : need;
  if (target > kMaxPacketElements) target = need > kMaxPacketElements ? need : kMaxPacketElements;
  return static_cast<int>(target);
}

bool ResizeKeeping(double*& data, int& alloc, int n, int size) {
  if (n < size) {
    data = ResizeValues(data, alloc, n, n);
    alloc = n;
    return false;
  }
  if (data != nullptr && n <= alloc) return false;
  const bool fresh = data == nullptr;
  const int target = GrowthTarget(alloc, n);
  data = ResizeValues(data, alloc, target, size);
  alloc = target;
  return fresh;
}

int BlockCountFor(int count) {
  return count / kPacketBlockSize + (count % kPacketBlockSize != 0 ? 1 : 0);
}

int CapacityOfBlocks(int blocks) {
  const std::int64_t cap = static_cast<std::int64_t>(blocks) * kPacketBlockSize;
  if (cap > INT_MAX) return INT_MAX;
  if (cap < INT_MIN) return INT_MIN;
  return static_cast<int>(cap);
}

int CheckBoundary(int i, int size, int& block_count, int& capacity) {
  if (i < capacity && size > 0) return 1;
  const int blocks = BlockCountFor(i);
  if (blocks == block_count) return 1;
  block_count = blocks;
  capacity = CapacityOfBlocks(blocks);
  return 0;
}

// ---------------------------------------------------------------------------
// Available values and searches
// ---------------------------------------------------------------------------

int FirstAvailIndex(const SeriesRef& s, int from, int to) {
  const int hi = ClampHigh(to, Stored(s));
  for (int i = ClampLow(from); i <= hi; ++i) {
    if (s.data[i] != kEmpty) return i;
  }
  return -1;
}

int LastAvailIndex(const SeriesRef& s, int from, int to) {
  const int lo = ClampLow(from);
  for (int i = ClampHigh(to, Stored(s)); i >= lo; --i) {
    if (s.data[i] != kEmpty) return i;
  }
  return -1;
}

int FindOver(const SeriesRef& s, double v) {
  if (v == kEmpty) return -1;
  const int n = Stored(s);
  for (int i = ClampLow(s.start); i < n; ++i) {
    if (s.data[i] >= v) return i;
  }
  return -1;
}

int FindBetween(const SeriesRef& s, double a, double b) {
  if (a == kEmpty || b == kEmpty) return -1;
  const int n = Stored(s);
  for (int i = ClampLow(s.start); i < n; ++i) {
    if (a <= s.data[i] && s.data[i] <= b) return i;
  }
  return -1;
}

int FindClosest(const SeriesRef& s, double v) {
  if (v == kEmpty) return -1;
  const int n = Stored(s);
  for (int i = ClampLow(s.start); i < n; ++i) {
    // The slot after the last element reads as empty, which is >= any v.
    const double next = i + 1 < n ? s.data[i + 1] : kEmpty;
    if (s.data[i] <= v && (next >= v || i == n - 2)) return i;
  }
  return -1;
}

int FindPair(const SeriesRef& s, double a, double b, int& first, int& second) {
  first = -1;
  second = -1;
  const int n = Stored(s);
  if (n < 1) return 0;
  for (int i = ClampLow(s.start); i < n; ++i) {
    if (s.data[i] == a) {
      first = i;
      break;
    }
  }
  if (first < 0) return 0;
  for (int i = first + 1; i < n; ++i) {
    if (s.data[i] == b) {
      second = i;
      return 1;
    }
  }
  return 0;
}

int FindPos(const SeriesRef& s, double v, int dir) {
  const int n = Stored(s);
  if (dir == 1) {
    for (int i = 0; i < n; ++i) {
      if (s.data[i] == v) return i;
    }
  } else {
    for (int i = n - 1; i >= 0; --i) {
      if (s.data[i] == v) return i;
    }
  }
  return -1;
}

int FindPacketIndex(const SeriesRef& s, double v, int dir) {
  const int n = Stored(s);
  const double* d = s.data;
  if (dir == 1) {
    for (int i = 0; i < n; ++i) {
      if (d[i] == v) return i;
      if (i == 0) {
        if (d[0] > v) return 0;
      } else if (d[i] > v && v > d[i - 1]) {
        return i;
      }
    }
    return -1;
  }
  double later = kEmpty;
  for (int i = n - 1; i >= 0; --i) {
    if (d[i] == v) return i;
    if (i == 0 || d[i] > v) {
      if (i > 0 ? v > later : d[0] > v) return i;
    }
    later = d[i];
  }
  return -1;
}

// ---------------------------------------------------------------------------
// Extremes
// ---------------------------------------------------------------------------

bool ValidRange(const SeriesRef& s, int from, int to) {
  return s.data != nullptr && s.size >= 1 && from >= 0 && to < s.size;
}

int ScanMaxIndex(const SeriesRef& s, int from, int to) {
  int index = -1;
  double best = kPacketNoMaxValue;
  const int hi = ClampHigh(to, Stored(s));
  for (int i = ClampLow(from); i <= hi; ++i) {
    const double v = s.data[i];
    if (v == kEmpty) continue;
    if (index < 0 || v > best) {
      best = v;
      index = i;
    }
  }
  return index;
}

int ScanMinIndex(const SeriesRef& s, int from, int to) {
  int index = -1;
  double best = kEmpty;
  const int hi = ClampHigh(to, Stored(s));
  for (int i = ClampLow(from); i <= hi; ++i) {
    const double v = s.data[i];
    if (v == kEmpty) continue;
    if (index < 0 || v < best) {
      best = v;
      index = i;
    }
  }
  return index;
}

double ScanMaxValue(const SeriesRef& s, int from, int to) {
  double best = kPacketNoMaxValue;
  const int hi = ClampHigh(to, Stored(s));
  for (int i = ClampLow(from); i <= hi; ++i) {
    const double v = s.data[i];
    if (v != kEmpty && v >= best) best = v;
  }
  return best;
}

double ScanMinValue(const SeriesRef& s, int from, int to) {
  double best = kEmpty;
  const int hi = ClampHigh(to, Stored(s));
  for (int i = ClampLow(from); i <= hi; ++i) {
    const double v = s.data[i];
    if (v != kEmpty && v <= best) best = v;
  }
  return best;
}

void ScanMaxMin(const SeriesRef& s, int from, int to, double& max_value, double& min_value,
                int* max_index, int* min_index) {
  double mx = kPacketNoMaxValue;
  double mn = kEmpty;
  const int lo = ClampLow(from);
  const int hi = ClampHigh(to, Stored(s));
  const double* d = s.data;
  if (max_index == nullptr && min_index == nullptr) {
    // Select form without index bookkeeping: the compiler can keep it in
    // vector registers, which matters for y-axis scans over whole series.
    for (int i = lo; i <= hi; ++i) {
      const double v = d[i];
      const bool avail = v != kEmpty;
      mx = (avail && v > mx) ? v : mx;
      mn = (avail && v < mn) ? v : mn;
    }
  } else {
    int mxi = -1;
    int mni = -1;
    for (int i = lo; i <= hi; ++i) {
      const double v = d[i];
      if (v == kEmpty) continue;
      if (v > mx) {
        mx = v;
        mxi = i;
      }
      if (v < mn) {
        mn = v;
        mni = i;
      }
    }
    if (max_index != nullptr) *max_index = mxi;
    if (min_index != nullptr) *min_index = mni;
  }
  max_value = mx;
  min_value = mn;
}

int QueryMaxIndex(const SeriesRef& s, int from, int to, const ExtremeSlots& c) {
  const int idx = ValidRange(s, from, to) ? ScanMaxIndex(s, from, to) : -1;
  c.max_index = idx;
  c.max_value = idx >= 0 ? s.data[idx] : kPacketNoMaxValue;
  return idx;
}

int QueryMinIndex(const SeriesRef& s, int from, int to, const ExtremeSlots& c) {
  const int idx = ValidRange(s, from, to) ? ScanMinIndex(s, from, to) : -1;
  c.min_index = idx;
  c.min_value = idx >= 0 ? s.data[idx] : kEmpty;
  return idx;
}

double QueryMaxValue(const SeriesRef& s, int from, int to, int cache, const ExtremeSlots& c) {
  const double v = ValidRange(s, from, to) ? ScanMaxValue(s, from, to) : kPacketNoMaxValue;
  if (cache == 1) c.max_value = v;
  return v;
}

double QueryMinValue(const SeriesRef& s, int from, int to, int cache, const ExtremeSlots& c) {
  const double v = ValidRange(s, from, to) ? ScanMinValue(s, from, to) : kEmpty;
  if (cache == 1) c.min_value = v;
  return v;
}

double QueryMaxValueIndex(const SeriesRef& s, int from, int to, int& idx, int cache, const ExtremeSlots& c) {
  idx = ValidRange(s, from, to) ? ScanMaxIndex(s, from, to) : -1;
  const double v = idx >= 0 ? s.data[idx] : kPacketNoMaxValue;
  if (cache == 1) {
    c.max_index = idx;
    c.max_value = v;
  }
  return v;
}

double QueryMinValueIndex(const SeriesRef& s, int from, int to, int& idx, int cache, const ExtremeSlots& c) {
  idx = ValidRange(s, from, to) ? ScanMinIndex(s, from, to) : -1;
  const double v = idx >= 0 ? s.data[idx] : kEmpty;
  if (cache == 1) {
    c.min_index = idx;
    c.min_value = v;
  }
  return v;
}

double QueryMaxMin(const SeriesRef& s, int from, int to, double& max, double& min, int* max_index,
                   int* min_index, int cache, const ExtremeSlots& c) {
  max = kPacketNoMaxValue;
  min = kEmpty;
  if (max_index != nullptr) *max_index = -1;
  if (min_index != nullptr) *min_index = -1;
  const bool valid = ValidRange(s, from, to);
  if (valid) ScanMaxMin(s, from, to, max, min, max_index, min_index);
  if (cache == 1) {
    c.max_value = max;
    c.min_value = min;
  }
  return valid ? max - min : kEmpty;
}

double FirstAvailValue(const SeriesRef& s, int from, int to, int& idx) {
  idx = FirstAvailIndex(s, from, to);
  return idx >= 0 ? s.data[idx] : kEmpty;
}

double LastAvailValue(const SeriesRef& s, int from, int to, int& idx) {
  idx = LastAvailIndex(s, from, to);
  return idx >= 0 ? s.data[idx] : kEmpty;
}

// ---------------------------------------------------------------------------
// Column mutations
// ---------------------------------------------------------------------------

void RollColumn(const SeriesRef& s, double v, int mode) {
  const int n = Stored(s);
  if (n < 1) return;
  double* d = s.data;
  if (mode == 1) {
    std::memmove(d, d + 1, static_cast<std::size_t>(n - 1) * sizeof(double));
  } else if (mode == 0 && n >= 3) {
    std::memmove(d + 1, d, static_cast<std::size_t>(n - 2) * sizeof(double));
  }
  d[n - 1] = v;
}

void InsertColumn(const SeriesRef& s, int i, double v) {
  const int n = s.size;
  if (s.data == nullptr || i < 0 || i > n || i >= s.alloc) return;
  const int moved = std::min(n - 1 - i, s.alloc - 1 - i);
  if (moved > 0) std::memmove(s.data + i + 1, s.data + i, static_cast<std::size_t>(moved) * sizeof(double));
  s.data[i] = v;
}

bool RemoveOneColumn(const SeriesRef& s, int i) {
  const int n = Stored(s);
  if (i < 0 || i >= n) return false;
  if (i < n - 1) {
    std::memmove(s.data + i, s.data + i + 1, static_cast<std::size_t>(n - 1 - i) * sizeof(double));
    return true;
  }
  s.data[i] = kEmpty;
  return false;
}

bool RemoveRangeColumn(const SeriesRef& s, int i, int n) {
  const std::int64_t k = RemoveRangeMoves(Stored(s), i, n);
  if (k < 1) return false;
  std::memmove(s.data + i, s.data + i + n, static_cast<std::size_t>(k) * sizeof(double));
  return true;
}

void ReverseColumn(const SeriesRef& s) {
  const int n = Stored(s);
  if (n < 1) return;
  const int lo = ClampLow(s.start);
  const int hi = ClampHigh(s.end, n);
  if (lo > hi) return;
  if (lo == 0 && hi == n - 1) {
    std::reverse(s.data, s.data + n);
    return;
  }
  const std::vector<double> old(s.data, s.data + n);
  for (int i = lo; i <= hi; ++i) s.data[i] = old[static_cast<std::size_t>(n - 1 - i)];
}

void ShiftLeftColumn(const SeriesRef& s, int n) {
  const int stored = Stored(s);
  if (stored < 1 || n < 1) return;
  if (n < stored) {
    std::memmove(s.data, s.data + n, static_cast<std::size_t>(stored - n) * sizeof(double));
  }
  FillColumn(s.data, s.alloc, std::max(stored - n, 0), stored, kEmpty);
}

void PlaceShiftedRight(double* data, int alloc, const double* old, int old_count, int first, int new_size,
                       int n) {
  if (data == nullptr) return;
  FillColumn(data, alloc, 0, first, kEmpty);
  const int hi = std::min(new_size, alloc);
  for (int i = ClampLow(first); i < hi; ++i) {
    const std::int64_t from = static_cast<std::int64_t>(i) - n;
    data[i] = (from >= 0 && from < old_count) ? old[from] : kEmpty;
  }
}

void AddToColumn(const SeriesRef& s, double d) {
  const int n = Stored(s);
  for (int i = 0; i < n; ++i) s.data[i] += d;
}

void ReplaceInColumn(const SeriesRef& s, double a, double b) {
  const int n = Stored(s);
  for (int i = 0; i < n; ++i) {
    if (s.data[i] == a) s.data[i] = b;
  }
}

void AccumulateColumn(const SeriesRef& dst, const SeriesRef& src, int from) {
  if (dst.data == nullptr) return;
  const int hi = std::min(src.end, dst.alloc - 1);
  double running = 0.0;
  for (int i = ClampLow(from); i <= hi; ++i) {
    dst.data[i] = running;
    running += ReadAt(src, i);
  }
}

void CopyColumn(double* dst, int dst_alloc, const double* src, int src_alloc, int n) {
  const int m = std::min(n, std::min(dst_alloc, src_alloc));
  if (dst == nullptr || src == nullptr || m < 1 || dst == src) return;
  std::memmove(dst, src, static_cast<std::size_t>(m) * sizeof(double));
}

void FillColumn(double* data, int alloc, int from, int to, double v) {
  if (data == nullptr) return;
  const int lo = ClampLow(from);
  const int hi = std::min(to, alloc);
  for (int i = lo; i < hi; ++i) data[i] = v;
}

// ---------------------------------------------------------------------------
// Arithmetic
// ---------------------------------------------------------------------------

double TruncatedModulo(double a, double b) {
  const int ia = TruncateToInt(a);
  const int ib = TruncateToInt(b);
  if (ib == 0) return kEmpty;
  if (ib == -1) return 0.0;
  return static_cast<double>(ia % ib);
}

namespace {

// The element-wise loop of the plain codes over a range where both operands
// are in bounds; L_SCALAR / R_SCALAR broadcast element 0.
template <bool L_SCALAR, bool R_SCALAR, typename Op>
void PlainLoop(const double* l, const double* r, double* out, int from, int to, Op op) {
  const double l0 = l[0];
  const double r0 = r[0];
  for (int i = from; i < to; ++i) {
    const double x = L_SCALAR ? l0 : l[i];
    const double y = R_SCALAR ? r0 : r[i];
    out[i] = (x == kEmpty || y == kEmpty) ? kEmpty : op(x, y);
  }
}

template <typename Op>
void DispatchPlain(bool l_scalar, bool r_scalar, const double* l, const double* r, double* out, int from,
                   int to, Op op) {
  if (l_scalar && r_scalar) {
    PlainLoop<true, true>(l, r, out, from, to, op);
  } else if (l_scalar) {
    PlainLoop<true, false>(l, r, out, from, to, op);
  } else if (r_scalar) {
    PlainLoop<false, true>(l, r, out, from, to, op);
  } else {
    PlainLoop<false, false>(l, r, out, from, to, op);
  }
}

}  // namespace

void CalcColumn1(int code, const SeriesRef& left, const SeriesRef& right, double* out, int s_index,
                 int n) {
  const int ln = left.size;
  const int rn = right.size;
  int i = ClampLow(s_index);

  // Fast part: both operands fully stored and in bounds, plain codes.
  const bool l_scalar = ln == 1;
  const bool r_scalar = rn == 1;
  if (code >= OCT_PLUS && code <= OCT_MULTIPLY && Stored(left) == ln && Stored(right) == rn && ln > 0 &&
      rn > 0) {
    const int hi = std::min(l_scalar ? n : ln, r_scalar ? n : rn);
    if (i < hi) {
      switch (code) {
        case OCT_PLUS:
          DispatchPlain(l_scalar, r_scalar, left.data, right.data, out, i, hi,
                        [](double x, double y) { return x + y; });
          break;
        case OCT_MINUS:
          DispatchPlain(l_scalar, r_scalar, left.data, right.data, out, i, hi,
                        [](double x, double y) { return x - y; });
          break;
        default:
          DispatchPlain(l_scalar, r_scalar, left.data, right.data, out, i, hi,
                        [](double x, double y) { return x * y; });
          break;
      }
      i = hi;
    }
  }

  for (; i < n; ++i) {
    if ((i >= ln && ln != 1) || (i >= rn && rn != 1)) {
      // The short operand ends here: the left operand's own element is marked
      // empty (when it has one) and the result slot stays empty.
      WriteAt(left, i, kEmpty);
      out[i] = kEmpty;
      continue;
    }
    const double x = l_scalar ? ReadAt(left, 0) : ReadAt(left, i);
    double y;
    if (r_scalar) {
      y = ReadAt(right, 0);
    } else {
      const double* ry = RefAt(right, i);
      y = ry != nullptr ? *ry : kEmpty;
    }
    if (x == kEmpty || y == kEmpty) {
      out[i] = kEmpty;
      continue;
    }
    switch (code) {
      case OCT_PLUS:
        out[i] = x + y;
        break;
      case OCT_MINUS:
        out[i] = x - y;
        break;
      case OCT_MULTIPLY:
        out[i] = x * y;
        break;
      case OCT_DIVIDE:
        // A zero divisor carries the previous result (before index 0: empty).
        out[i] = y == 0.0 ? (i > 0 ? out[i - 1] : kEmpty) : x / y;
        break;
      default:
        // The modulo code computes nothing here; the slot stays empty.
        out[i] = kEmpty;
        break;
    }
  }
}

void CalcColumn2(int code, const SeriesRef& left, const SeriesRef& right) {
  const int ln = left.size;
  if (ln < 1 || Stored(left) < 1) return;
  // R[0] through the reference rule; read at each use, since the right
  // operand may be this very packet, whose element 0 collects the results.
  const auto r0 = [&right]() {
    const double* p = RefAt(right, 0);
    return p != nullptr ? *p : kEmpty;
  };
  double& l0 = left.data[0];

  if (ln == 1) {
    const double y = (right.start == 0 && Stored(right) >= 1) ? right.data[0] : kEmpty;
    switch (code) {
      case OCT_PLUS:
        l0 += y;
        break;
      case OCT_MINUS:
        l0 -= y;
        break;
      case OCT_MULTIPLY:
        l0 *= y;
        break;
      case OCT_DIVIDE: {
        const double d = r0();
        l0 = d != 0.0 ? l0 / d : kEmpty;
        break;
      }
      case OCT_MODULO: {
        const double d = r0();
        l0 = d != 0.0 ? TruncatedModulo(l0, d) : kEmpty;
        break;
      }
      default:
        break;
    }
    return;
  }

  const int rn = right.size;
  const int n = Stored(left);
  for (int i = 0; i < n; ++i) {
    if (i >= rn) {
      left.data[i] = kEmpty;
      continue;
    }
    const double x = left.data[i];
    double y;
    if (rn == 1) {
      y = ReadAt(right, 0);
    } else {
      const double* ry = RefAt(right, i);
      y = ry != nullptr ? *ry : kEmpty;
    }
    if (x == kEmpty || y == kEmpty) {
      left.data[i] = kEmpty;
      continue;
    }
    // Every result lands in element 0: after the loop it holds the last one.
    switch (code) {
      case OCT_PLUS:
        l0 = x + y;
        break;
      case OCT_MINUS:
        l0 = x - y;
        break;
      case OCT_MULTIPLY:
        l0 = x * y;
        break;
      case OCT_DIVIDE:
        l0 = r0() == 0.0 ? kEmpty : x / y;
        break;
      case OCT_MODULO:
        l0 = r0() == 0.0 ? kEmpty : TruncatedModulo(x, y);
        break;
      default:
        break;
    }
  }
}

}  // namespace internal
}  // namespace chartcore
