// Integer conversions with the results the original 32-bit x86 code gave,
// written without undefined behaviour.
#ifndef CHARTCORE_PLATFORM_INT_CONVERSION_INTERNAL_H_
#define CHARTCORE_PLATFORM_INT_CONVERSION_INTERNAL_H_

#include <climits>
#include <cstdint>

namespace chartcore {
namespace internal {

// A double truncated toward zero to int; NaN and values outside the int range
// give INT_MIN, the conversion's "integer indefinite".
inline int TruncateToInt(double v) {
  if (!(v >= -2147483648.0 && v < 2147483648.0)) return INT_MIN;
  return static_cast<int>(v);
}

// A 64-bit intermediate wrapped to 32 bits as int arithmetic wrapped.
inline std::int32_t WrapToInt32(std::int64_t v) {
  return static_cast<std::int32_t>(static_cast<std::uint32_t>(static_cast<std::uint64_t>(v)));
}

}  // namespace internal
}  // namespace chartcore

#endif  // CHARTCORE_PLATFORM_INT_CONVERSION_INTERNAL_H_
