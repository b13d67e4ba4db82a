// Helpers for the packet tests: build a packet bar by bar and read it back.
#ifndef CHARTCORE_TESTS_PACKETS_PACKET_TEST_UTIL_H_
#define CHARTCORE_TESTS_PACKETS_PACKET_TEST_UTIL_H_

#include <cstdint>
#include <cstring>
#include <vector>

#include <gtest/gtest.h>

#include "chartcore/packets/packet.h"

namespace packets_test {

using V = std::vector<double>;
using Ints = std::vector<int>;
using Pk = CPacket;
constexpr double E = chartcore::kPacketEmptyValue;
constexpr double kNoMax = chartcore::kPacketNoMaxValue;

// A packet built by Add, so its fields are those of a live series.
template <class P = CPacket>
P Make(const V& values) {
  P p;
  for (double v : values) p.Add(v);
  return p;
}

// Elements 0..size-1 as GetValue reads them.
template <class P>
V Values(const P& p) {
  V out;
  for (int i = 0; i < p.GetPacketSize(); ++i) out.push_back(p.GetValue(i));
  return out;
}

// Shared index fields: size, capacity, start, end, valid start/end, shift-x, real size.
template <class P>
Ints Fields(const P& p) {
  return {p.GetPacketSize(),       p.GetMaxPacketSize(),    p.GetStartIndex(),   p.GetEndIndex(),
          p.GetValidStartIndex(), p.GetValidEndIndex(), p.GetShiftXSize(), p.GetRealPacketSize()};
}

inline std::uint64_t Bits(double v) {
  std::uint64_t b;
  std::memcpy(&b, &v, sizeof b);
  return b;
}

// Compares element bit patterns, so NaN, -0.0 and the empty value count.
inline ::testing::AssertionResult SameBits(const V& a, const V& b) {
  bool same = a.size() == b.size();
  for (std::size_t i = 0; same && i < a.size(); ++i) same = Bits(a[i]) == Bits(b[i]);
  if (same) return ::testing::AssertionSuccess();
  return ::testing::AssertionFailure() << ::testing::PrintToString(a) << " vs " << ::testing::PrintToString(b);
}

// One mutation of a packet built by Make: its result, then the elements and end left.
struct Mutation {
  const char* what;
  V before;
  int (*op)(Pk&);
  int result;
  V after;
  int end;
};

inline void ExpectMutations(const std::vector<Mutation>& cases) {
  for (const Mutation& c : cases) {
    SCOPED_TRACE(c.what);
    CPacket p = Make(c.before);
    EXPECT_EQ(c.op(p), c.result);
    EXPECT_TRUE(SameBits(Values(p), c.after));
    EXPECT_EQ(p.GetEndIndex(), c.end);
  }
}

}  // namespace packets_test

#endif  // CHARTCORE_TESTS_PACKETS_PACKET_TEST_UTIL_H_
