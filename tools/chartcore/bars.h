// Daily bars for the tool: reading a bar file into a structured packet,
// a moving average by rolling appends, and the bar table as text.
//
// A bar file is CSV with the fields date, open, high, low, close and volume,
// one bar a line; an optional first line of column names is skipped. Dates
// are YYYYMMDD or YYYYMMDDhhmmss (separators "-", "/", ":", " " and "T" are
// ignored); a price or volume field that is empty or "N/A" is the empty
// value. Lines may end in "\r\n".
//
//   CPacketMemory bars = LoadBarFile("Local_demo/Data/900010_day.csv", 153000);
//   CPacket close = ColumnPacket(bars, PDT_CLOSE);
//   CPacket ma = MovingAverage(close, 5);          // empty for the first 4 bars
//   std::string text = RenderBarTable(bars, 0, bars.GetPacketSize(), 0, {{"MA(5)", &ma}});
#ifndef CHARTCORE_TOOLS_CHARTCORE_BARS_H_
#define CHARTCORE_TOOLS_CHARTCORE_BARS_H_

#include <string>
#include <vector>

#include "chartcore/packets/packet.h"
#include "chartcore/packets/packet_memory.h"

namespace chartcore {
namespace tool {

// The largest bar file the tool reads (some 10 million bars).
constexpr unsigned long long kMaxBarFileBytes = 512ull << 20;

// ParseValue: a value as typed on the command line or stored in a bar file:
// a decimal or exponent number, or "N/A" for the empty value. False for
// anything else, an empty text and numbers past the double range included.
bool ParseValue(const std::string& text, double& out);

// LoadBarFile: the bars of a CSV file as a PST_OHLCV packet. When closeTime
// (hhmmss) is not 0, each date-only value is stamped with that time of day
// (YYYYMMDDhhmmss), as a chart stamps a daily bar with its session's close.
// Throws ToolError "<path>:<line>: <what is wrong>" for a malformed line.
CPacketMemory LoadBarFile(const std::string& path, int closeTime);

// ParseBars: as LoadBarFile for text already read; source names it in errors.
CPacketMemory ParseBars(const std::string& text, const std::string& source, int closeTime);

// ColumnPacket: one column of the bars as a single-series packet.
CPacket ColumnPacket(const CPacketMemory& bars, ENPacketDataType column);

// MovingAverage: the simple moving average of a series over period bars,
// one value per bar, the empty value until period bars are in. A window
// packet rolls along the series (appends until full, then AddShift), its
// running sum goes into a packet bar by bar, and the average is that packet
// divided by period, so empty values propagate through the division. A bar
// whose window holds an empty value averages to empty. period < 1 gives a
// series of empty values.
CPacket MovingAverage(const CPacket& series, int period);

// ExtraColumn: a series printed beside the bars, formatted like the prices.
struct ExtraColumn {
  std::string title;
  const CPacket* values;
};

// RenderBarTable: bars [first, last) as a text table: Date ("YYYY/MM/DD"),
// Time ("hh:mm:ss", only when a bar carries a time of day), the four prices
// under format code `code` grouped by thousands, Volume as a whole number
// grouped by thousands, then the extra columns. Columns are right-aligned
// under their titles; each line starts with indent.
std::string RenderBarTable(const CPacketMemory& bars, int first, int last, int code,
                           const std::vector<ExtraColumn>& extras, const std::string& indent);

}  // namespace tool
}  // namespace chartcore

#endif  // CHARTCORE_TOOLS_CHARTCORE_BARS_H_
