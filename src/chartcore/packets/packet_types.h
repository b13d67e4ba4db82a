// The shared vocabulary of chart data packets.
//
// Every chart series is a bar-indexed run of doubles in which a slot without
// data holds the empty value (the largest finite double), never NaN. This
// header names that value, the no-maximum value that running maxima start at,
// the columns of a bar record (ENPacketDataType), the record layouts of a
// structured packet (ENPacketStructType), the operator codes of the packet
// arithmetic and the two bar records read and written by CPacketMemory.
//
//   tagPacketCoreData bar;               // date..volume empty, ratio 1.0
//   bar.m_dClose = 101.5;
//   if (chartcore::IsEmptyValue(bar.m_dOpen)) { /* no open price yet */ }
#ifndef CHARTCORE_PACKETS_PACKET_TYPES_H_
#define CHARTCORE_PACKETS_PACKET_TYPES_H_

#include "chartcore/platform/export.h"

namespace chartcore {

// ---------------------------------------------------------------------------
// Marker values
// ---------------------------------------------------------------------------

// The empty value: 1.7976931348623157e308 (bits 0x7FEFFFFFFFFFFFFF). Marks a
// slot without data; every out-of-range read yields it. Compared by exact
// equality only: NaN is an available value, not an empty one.
constexpr double kPacketEmptyValue = 1.7976931348623157e308;

// The no-maximum value: the single-precision -1e30 widened to double, that is
// -1.0000000150474662e30 (bits 0xC6293E5940000000). Running maxima start at
// it. Written through float on purpose so the bit pattern is the stored one.
constexpr double kPacketNoMaxValue = static_cast<double>(-1e30f);

// Storage grows in blocks of this many elements.
constexpr int kPacketBlockSize = 1024;

// True when v is exactly the empty value (NaN is not empty).
constexpr bool IsEmptyValue(double v) { return v == kPacketEmptyValue; }

}  // namespace chartcore

// ---------------------------------------------------------------------------
// Columns and layouts
// ---------------------------------------------------------------------------

// The nine columns of a bar record; also the index of CPacketMemory's column
// table. Close is the default value column of a one-column packet.
enum ENPacketDataType : int {
  PDT_DATE = 0,    // packed date/time of the bar; never ratio-shifted
  PDT_OPEN = 1,    // ratio-shifted with the prices
  PDT_HIGH = 2,    // ratio-shifted
  PDT_LOW = 3,     // ratio-shifted
  PDT_CLOSE = 4,   // the default column
  PDT_VOLUME = 5,  // not ratio-shifted
  PDT_RATIO = 6,   // adjustment ratio, 1.0 in a default basic record
  PDT_EXTRA1 = 7,  // only in the widest layout
  PDT_EXTRA2 = 8   // only in the widest layout
};

// The same nine column slots as named by industry-index packets. Accessors
// taking this type behave as the ENPacketDataType ones of equal value.
enum ENPacketIndustryType : int {
  PIT_DATE = 0,
  PIT_OPEN = 1,
  PIT_HIGH = 2,
  PIT_LOW = 3,
  PIT_CLOSE = 4,
  PIT_VOLUME = 5,
  PIT_RATIO = 6,
  PIT_EXTRA1 = 7,
  PIT_EXTRA2 = 8
};

// The same nine column slots as named by option packets.
enum ENPacketOptionType : int {
  POT_DATE = 0,
  POT_OPEN = 1,
  POT_HIGH = 2,
  POT_LOW = 3,
  POT_CLOSE = 4,
  POT_VOLUME = 5,
  POT_RATIO = 6,
  POT_EXTRA1 = 7,
  POT_EXTRA2 = 8
};

// Record layout of a CPacketMemory: which columns are allocated. Any other
// value allocates no column, and operations then find no storage. (The enums
// are int-based so that such foreign values are representable.)
enum ENPacketStructType : int {
  PST_VALUE = 0,              // close
  PST_DATE_VALUE = 1,         // date, close
  PST_DATE_VALUE_VOLUME = 2,  // date, close, volume
  PST_OHLC = 3,               // date, open, high, low, close
  PST_OHLCV = 4,              // date .. volume
  PST_OHLCV_RATIO = 5,        // date .. ratio
  PST_FULL = 6                // all nine columns
};

// Number of columns of the widest bar record.
constexpr int PACKET_DATA_TYPE_COUNT = 9;

// Operator codes of the packet arithmetic, shared by CPacket
// (CPacket::ENOperatorCalcType) and CPacketMemory (ENOperatorType).
enum ENOperatorCalcType : int {
  OCT_PLUS = 0,      // +, +=
  OCT_MINUS = 1,     // -, -=
  OCT_MULTIPLY = 2,  // *, *=
  OCT_DIVIDE = 3,    // /, /=  (a zero divisor carries the previous result)
  OCT_MODULO = 4     // %, %=
};

// ---------------------------------------------------------------------------
// Bar records
// ---------------------------------------------------------------------------

// One bar's columns 0 to 6 in column order. A default record holds the empty
// value in date..volume and 1.0 in the ratio, so an unadjusted bar needs no
// ratio. Aggregate: `tagPacketCoreData r{date, o, h, l, c, vol, 1.0};`.
struct tagPacketCoreData {
  double m_dDate = chartcore::kPacketEmptyValue;
  double m_dOpen = chartcore::kPacketEmptyValue;
  double m_dHigh = chartcore::kPacketEmptyValue;
  double m_dLow = chartcore::kPacketEmptyValue;
  double m_dClose = chartcore::kPacketEmptyValue;
  double m_dVolume = chartcore::kPacketEmptyValue;
  double m_dRatio = 1.0;
};

// One bar's columns 0 to 8 in column order; every column empty by default.
struct tagPacketCoreDataExtra {
  double m_dDate = chartcore::kPacketEmptyValue;
  double m_dOpen = chartcore::kPacketEmptyValue;
  double m_dHigh = chartcore::kPacketEmptyValue;
  double m_dLow = chartcore::kPacketEmptyValue;
  double m_dClose = chartcore::kPacketEmptyValue;
  double m_dVolume = chartcore::kPacketEmptyValue;
  double m_dRatio = chartcore::kPacketEmptyValue;
  double m_dExtra1 = chartcore::kPacketEmptyValue;
  double m_dExtra2 = chartcore::kPacketEmptyValue;
};

#endif  // CHARTCORE_PACKETS_PACKET_TYPES_H_
