// format and table: values and bar files as the chart prints them.
#include "bars.h"
#include "chartcore/foundation/formatting.h"
#include "chartcore/packets/packet_types.h"
#include "tool.h"
#include "tool_text.h"

namespace chartcore {
namespace tool {
namespace {

struct FormatOptions {
  std::vector<std::string> values;
  int code = 0;
  bool group = false;
};

struct TableOptions {
  std::string file;
  int code = 0;
  int last = 0;
};

// A value as typed ("N/A", the empty value, formats as "N/A").
double ValueArgument(const std::string& text) {
  double value = 0;
  if (!ParseValue(text, value)) throw ToolError(Quoted(text) + " is not a number", kExitUsage);
  return value;
}

void RunFormat(const FormatOptions& options, ToolContext& context) {
  std::string out;
  for (const std::string& text : options.values) {
    out += Utf8(GetYPacketStringOfFormat(ValueArgument(text), options.code, options.group ? 1 : 0)) + "\n";
  }
  context.out << out;
}

void RunTable(const TableOptions& options, ToolContext& context) {
  const CPacketMemory bars = LoadBarFile(options.file, 0);
  const int size = bars.GetPacketSize();
  const int first = options.last > 0 && options.last < size ? size - options.last : 0;
  context.out << RenderBarTable(bars, first, size, options.code, {}, "");
}

}  // namespace

void AddFormatCommand(CLI::App& app, ToolContext& context) {
  auto options = std::make_shared<FormatOptions>();
  CLI::App* command = AddCommand(app, context, "format", "Print values under a format code", options, RunFormat);
  command->add_option("VALUE", options->values, "Values to print (\"N/A\" for the empty value)")->required();
  command->add_option("--code", options->code,
                      "Format code: 0 whole numbers, 1-7 decimals, 65-68 halves to sixteenths, 75 32nds, "
                      "76 64ths, 77 128ths")
      ->required();
  command->add_flag("--group", options->group, "Group the thousands");
}

void AddTableCommand(CLI::App& app, ToolContext& context) {
  auto options = std::make_shared<TableOptions>();
  CLI::App* command = AddCommand(app, context, "table",
                                 "Print a daily-bar file (date, open, high, low, close, volume) as the chart's "
                                 "data table",
                                 options, RunTable);
  command->add_option("CSV", options->file, "The bar file")->required();
  command->add_option("--code", options->code, "Format code of the prices (default 0)");
  command->add_option("--last", options->last, "Only the last N bars")->check(CLI::NonNegativeNumber);
}

}  // namespace tool
}  // namespace chartcore
