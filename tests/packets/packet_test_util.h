// Helpers for the packet tests: build a packet bar by bar and read it back.
#ifndef CHARTCORE_TESTS_PACKETS_PACKET_TEST_UTIL_H_
#define CHARTCORE_TESTS_PACKETS_PACKET_TEST_UTIL_H_

#include <cstdint>
#include <cstring>
#include <initializer_list>
#include <vector>

#include "chartcore/packets/packet.h"
#include "chartcore/packets/packet_types.h"

namespace packets_test {

constexpr double E = chartcore::kPacketEmptyValue;
constexpr double kNoMax = chartcore::kPacketNoMaxValue;

// A packet built by Add, so its fields are those of a live series.
inline CPacket Make(std::initializer_list<double> values) {
  CPacket p;
  for (double v : values) p.Add(v);
  return p;
}

// Elements 0..size-1 as GetValue reads them.
inline std::vector<double> Values(const CPacket& p) {
  std::vector<double> out;
  for (int i = 0; i < p.GetPacketSize(); ++i) out.push_back(p.GetValue(i));
  return out;
}

inline std::uint64_t Bits(double v) {
  std::uint64_t b;
  std::memcpy(&b, &v, sizeof b);
  return b;
}

}  // namespace packets_test

#endif  // CHARTCORE_TESTS_PACKETS_PACKET_TEST_UTIL_H_
