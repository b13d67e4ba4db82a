#include "bars.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstdlib>

#include "chartcore/foundation/datetime.h"
#include "chartcore/foundation/formatting.h"
#include "chartcore/packets/packet_types.h"
#include "tool_text.h"

namespace chartcore {
namespace tool {
namespace {

constexpr double kEmpty = chartcore::kPacketEmptyValue;

std::string Trim(const std::string& text) {
  const size_t first = text.find_first_not_of(" \t\r");
  if (first == std::string::npos) return std::string();
  const size_t last = text.find_last_not_of(" \t\r");
  return text.substr(first, last - first + 1);
}

std::vector<std::string> SplitFields(const std::string& line) {
  std::vector<std::string> fields;
  size_t start = 0;
  for (;;) {
    const size_t comma = line.find(',', start);
    fields.push_back(Trim(line.substr(start, comma == std::string::npos ? std::string::npos : comma - start)));
    if (comma == std::string::npos) return fields;
    start = comma + 1;
  }
}

// The digits of a date field without its separators; empty when anything
// else is in it.
std::string DateDigits(const std::string& field) {
  std::string digits;
  for (char c : field) {
    if (c >= '0' && c <= '9') {
      digits += c;
    } else if (c != '-' && c != '/' && c != ':' && c != ' ' && c != 'T') {
      return std::string();
    }
  }
  return digits;
}

std::string Text(const CString& text) { return Utf8(text); }

std::string DateText(double value) {
  if (value == kEmpty) return "N/A";
  return Text(GetXPacketDateString(value >= 1e8 ? GetYearMonthDay(value) : value, 0));
}

}  // namespace

bool ParseValue(const std::string& text, double& out) {
  if (text == "N/A") {
    out = kEmpty;
    return true;
  }
  errno = 0;
  char* end = nullptr;
  out = std::strtod(text.c_str(), &end);
  return !text.empty() && end == text.c_str() + text.size() && errno != ERANGE && std::isfinite(out);
}

CPacketMemory ParseBars(const std::string& text, const std::string& source, int closeTime) {
  CPacketMemory bars;
  bars.SetPacketStructType(PST_OHLCV);
  size_t start = 0;
  int lineNumber = 0;
  bool first = true;
  while (start < text.size()) {
    size_t end = text.find('\n', start);
    if (end == std::string::npos) end = text.size();
    const std::string line = Trim(text.substr(start, end - start));
    start = end + 1;
    ++lineNumber;
    if (line.empty()) continue;
    const std::vector<std::string> fields = SplitFields(line);
    const std::string digits = DateDigits(fields[0]);
    if (first && digits.empty()) {  // a line of column names
      first = false;
      continue;
    }
    first = false;
    const std::string where = source + ":" + std::to_string(lineNumber) + ": ";
    if (fields.size() != 6) {
      throw ToolError(where + "expected 6 fields (date, open, high, low, close, volume), found " +
                      std::to_string(fields.size()));
    }
    if (digits.size() != 8 && digits.size() != 14) {
      throw ToolError(where + "the date " + Quoted(fields[0]) + " is not YYYYMMDD or YYYYMMDDhhmmss");
    }
    tagPacketCoreData bar;
    bar.m_dDate = std::strtod(digits.c_str(), nullptr);
    if (closeTime != 0 && digits.size() == 8) bar.m_dDate = bar.m_dDate * 1e6 + closeTime;
    double* const columns[] = {&bar.m_dOpen, &bar.m_dHigh, &bar.m_dLow, &bar.m_dClose, &bar.m_dVolume};
    static const char* const kNames[] = {"open", "high", "low", "close", "volume"};
    for (int c = 0; c < 5; ++c) {
      const std::string& field = fields[static_cast<size_t>(c) + 1];
      if (field.empty()) {
        *columns[c] = kEmpty;  // an empty field is a bar without that value
      } else if (!ParseValue(field, *columns[c])) {
        throw ToolError(where + "the " + kNames[c] + " " + Quoted(fields[static_cast<size_t>(c) + 1]) +
                        " is not a number");
      }
    }
    bars.AddBasic(bar);
  }
  return bars;
}

CPacketMemory LoadBarFile(const std::string& path, int closeTime) {
  const std::vector<BYTE> bytes = ReadFileBytes(path, kMaxBarFileBytes);
  return ParseBars(std::string(bytes.begin(), bytes.end()), path, closeTime);
}

CPacket ColumnPacket(const CPacketMemory& bars, ENPacketDataType column) {
  CPacket series;
  for (int i = 0; i < bars.GetPacketSize(); ++i) series.Add(bars.GetValue(i, column));
  return series;
}

CPacket MovingAverage(const CPacket& series, int period) {
  CPacket sums;
  CPacket window;
  double running = 0.0;
  int emptyInWindow = 0;
  for (int i = 0; i < series.GetPacketSize(); ++i) {
    const double value = series.GetValue(i);
    if (period < 1) {
      sums.Add(kEmpty);
      continue;
    }
    if (window.GetPacketSize() < period) {
      window.Add(value);
    } else {
      const double leaving = window.GetFirstValue();
      if (leaving == kEmpty) {
        --emptyInWindow;
      } else {
        running -= leaving;
      }
      window.AddShift(value, 1);  // drops the oldest bar, puts this one last
    }
    if (value == kEmpty) {
      ++emptyInWindow;
    } else {
      running += value;
    }
    sums.Add(window.GetPacketSize() == period && emptyInWindow == 0 ? running : kEmpty);
  }
  if (period < 1 || sums.GetPacketSize() == 0) return sums;
  return sums / static_cast<double>(period);
}

std::string RenderBarTable(const CPacketMemory& bars, int first, int last, int code,
                           const std::vector<ExtraColumn>& extras, const std::string& indent) {
  if (first < 0) first = 0;
  if (last > bars.GetPacketSize()) last = bars.GetPacketSize();
  bool withTime = false;
  for (int i = first; i < last; ++i) {
    const double date = bars.GetValue(i, PDT_DATE);
    if (date != kEmpty && date >= 1e8) withTime = true;
  }
  std::vector<std::vector<std::string>> rows;
  std::vector<std::string> titles = {"Date"};
  if (withTime) titles.push_back("Time");
  for (const char* title : {"Open", "High", "Low", "Close", "Volume"}) titles.push_back(title);
  for (const ExtraColumn& extra : extras) titles.push_back(extra.title);
  rows.push_back(titles);
  for (int i = first; i < last; ++i) {
    const double date = bars.GetValue(i, PDT_DATE);
    std::vector<std::string> row = {DateText(date)};
    if (withTime) row.push_back(date != kEmpty && date >= 1e8 ? Text(GetXPacketTimeString(date, 0)) : "");
    for (ENPacketDataType column : {PDT_OPEN, PDT_HIGH, PDT_LOW, PDT_CLOSE}) {
      row.push_back(Text(GetYPacketStringOfFormat(bars.GetValue(i, column), code, 1)));
    }
    row.push_back(Text(GetYPacketStringOfFormat(bars.GetValue(i, PDT_VOLUME), 0, 1)));
    for (const ExtraColumn& extra : extras) {
      row.push_back(Text(GetYPacketStringOfFormat(extra.values->GetValue(i), code, 1)));
    }
    rows.push_back(row);
  }
  std::vector<size_t> widths(titles.size(), 0);
  for (const auto& row : rows) {
    for (size_t c = 0; c < row.size(); ++c) widths[c] = std::max(widths[c], row[c].size());
  }
  std::string out;
  for (const auto& row : rows) {
    std::string line = indent;
    for (size_t c = 0; c < row.size(); ++c) {
      if (c > 0) line += "  ";
      // Date and time read left to right; numbers line up on the right.
      const std::string pad(widths[c] - row[c].size(), ' ');
      line += c < (withTime ? 2u : 1u) ? row[c] + pad : pad + row[c];
    }
    while (!line.empty() && line.back() == ' ') line.pop_back();
    out += line + "\n";
  }
  return out;
}

}  // namespace tool
}  // namespace chartcore
