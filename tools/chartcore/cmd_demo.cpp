// demo: a tour of a workspace (by default a fresh copy of the built-in
// sample) through the library: definitions, the function list, a bar table
// with a moving average, and a coloured formula.
#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <map>
#include <random>
#include <system_error>

#include "bars.h"
#include "chartcore/foundation/datetime.h"
#include "chartcore/foundation/formatting.h"
#include "chartcore/packets/packet_types.h"
#include "chartcore/platform/version.h"
#include "chartcore/script_editor/script_edit.h"
#include "highlight.h"
#include "kinds.h"
#include "tool.h"
#include "tool_text.h"
#include "workspace.h"

namespace chartcore {
namespace tool {
namespace {

constexpr int kSessionClose = 153000;  // a daily bar is stamped with its session's close
constexpr int kAveragePeriod = 5;
constexpr int kTableBars = 10;

struct DemoOptions {
  std::string workspace;
  int code = 0;
  std::string colour = "auto";
  bool keep = false;
};

// A folder of its own below the system's temporary folder, removed with
// everything in it unless kept.
class TempFolder {
 public:
  TempFolder() {
    std::random_device random;
    const std::filesystem::path base = std::filesystem::temp_directory_path();
    for (int attempt = 0; attempt < 100 && path_.empty(); ++attempt) {
      char name[32];
      std::snprintf(name, sizeof name, "chartcore-demo-%08x", static_cast<unsigned>(random()));
      std::error_code ec;
      if (std::filesystem::create_directory(base / name, ec)) path_ = (base / name).u8string();
    }
    if (path_.empty()) throw ToolError(base.u8string() + ": cannot create a temporary folder");
  }
  ~TempFolder() {
    if (keep_) return;
    std::error_code ec;
    std::filesystem::remove_all(std::filesystem::u8path(path_), ec);
  }
  TempFolder(const TempFolder&) = delete;
  TempFolder& operator=(const TempFolder&) = delete;

  const std::string& path() const { return path_; }
  void Keep() { keep_ = true; }

 private:
  std::string path_;
  bool keep_ = false;
};

std::string Pad(const std::string& text, size_t width) {
  // Korean and other wide characters are counted as their UTF-8 lead bytes.
  size_t shown = 0;
  for (unsigned char c : text) shown += (c & 0xC0) != 0x80 ? 1 : 0;
  return shown >= width ? text : text + std::string(width - shown, ' ');
}

std::string Definitions(const std::string& root, std::vector<DefinitionFile>& files,
                        std::vector<std::string>& problems) {
  files = ListDefinitions(root);
  std::map<const KindInfo*, std::vector<std::string>> names;
  for (const DefinitionFile& file : files) {
    std::string name = Printable(file.title);
    try {
      LoadedRecord loaded = LoadDefinition(file.path, file.kind);
      if (!loaded.record->m_strText1.IsEmpty()) name = Printable(loaded.record->m_strText1);
    } catch (const ToolError& e) {
      name += " (unreadable)";
      problems.push_back(Printable(std::string(e.what())));
    }
    names[file.kind].push_back(name);
  }
  std::string out = "Definitions by kind (one record a file in the logic folders)\n";
  for (const KindInfo& kind : AllKinds()) {
    std::vector<std::string>& list = names[&kind];
    std::sort(list.begin(), list.end());
    std::string line = "  " + Pad(kind.name, 9) + Pad(std::to_string(list.size()), 3);
    for (size_t i = 0; i < list.size(); ++i) line += (i > 0 ? ", " : "") + list[i];
    out += line + "\n";
  }
  for (const std::string& problem : problems) out += "  ! " + problem + "\n";
  return out;
}

std::string FunctionList(const std::string& root) {
  CScriptEdit edit;
  edit.InitWindow();
  edit.InitBasicFunctionList(Wide(root), CString(), CString(), 2);
  const CStringArray& list = edit.GetBasicFunctionList();
  const std::string listFile = "Logic/" + FolderName(KindOf(LogicKind::kFunct)) + "/New_Function.dat";
  if (list.GetSize() == 0) return "Function list: " + listFile + " is missing or empty\n";
  std::vector<std::pair<std::string, std::string>> rows;
  size_t width = 0;
  for (INT_PTR i = 0; i < list.GetSize(); ++i) {
    const CString name = list.GetAt(i);
    CString call = edit.GetCoreFormular(name);
    CString comment = edit.GetCoreComment(name);
    if (call.IsEmpty()) call = edit.GetBasicFormular(name);
    if (comment.IsEmpty()) comment = edit.GetBasicComment(name);
    if (call.IsEmpty()) call = name;
    rows.emplace_back(Printable(call), Printable(comment));
    width = std::max(width, rows.back().first.size());
  }
  std::string out = "Function list (" + listFile + "), each with its call form and comment\n";
  for (const auto& row : rows) out += "  " + Pad(row.first, width + 2) + row.second + "\n";
  return out;
}

std::string Bars(const std::string& root, int code) {
  const std::vector<std::string> files = FindBarFiles(root);
  if (files.empty()) return "Daily bars: no .csv file in the Data folders of the Local branches\n";
  const std::string& path = files.front();
  CPacketMemory bars;
  try {
    bars = LoadBarFile(path, kSessionClose);
  } catch (const ToolError& e) {
    return "Daily bars: " + Printable(std::string(e.what())) + "\n";  // the rest of the tour still runs
  }
  const int size = bars.GetPacketSize();
  const std::string relative = Printable(RelativePath(root, path));
  if (size == 0) return "Daily bars: " + relative + " holds no bars\n";

  CPacket close = ColumnPacket(bars, PDT_CLOSE);
  const CPacket average = MovingAverage(close, kAveragePeriod);
  const CPacket gap = close - average;
  const std::string span = Utf8(GetXPacketDateString(GetYearMonthDay(bars.GetValue(0, PDT_DATE)), 0)) + " to " +
                           Utf8(GetXPacketDateString(GetYearMonthDay(bars.GetValue(size - 1, PDT_DATE)), 0));
  const std::string ma = "MA(" + std::to_string(kAveragePeriod) + ")";
  std::string out = "Daily bars: " + relative + ", " + std::to_string(size) + " bars from " + span + "\n";
  out += "Last " + std::to_string(std::min(size, kTableBars)) + " bars with prices under format code " +
         std::to_string(code) + "; " + ma + " from a rolling window packet, Close-MA by packet arithmetic\n";
  out += RenderBarTable(bars, std::max(0, size - kTableBars), size, code, {{ma, &average}, {"Close-MA", &gap}},
                        "  ");
  return out;
}

std::string Formula(const std::string& root, const std::vector<DefinitionFile>& files, ColourStyle style) {
  // The longest formula shows the most colours; indicators come first.
  std::string best;
  size_t bestLength = 0;
  for (int pass = 0; pass < 2 && best.empty(); ++pass) {
    for (const DefinitionFile& file : files) {
      if ((file.kind->kind == LogicKind::kIndica) != (pass == 0)) continue;
      try {
        LoadedRecord loaded = LoadDefinition(file.path, file.kind);
        const CString formula = FormulaText(*loaded.record);
        CString blank = formula;
        if (blank.Trim().IsEmpty() || static_cast<size_t>(formula.GetLength()) <= bestLength) continue;
        bestLength = static_cast<size_t>(formula.GetLength());
        const std::string name = Printable(loaded.record->m_strText1.IsEmpty() ? Wide(file.title)
                                                                                : loaded.record->m_strText1);
        best = "Formula of " + name + " (" + Printable(file.relative) + "), coloured by the script editor\n" +
               HighlightScript(formula, root, 2, style, "    ");
      } catch (const ToolError&) {
        continue;  // already listed as unreadable
      }
    }
  }
  return best.empty() ? "Formula: no definition in the workspace holds one\n" : best;
}

void RunDemo(const DemoOptions& options, ToolContext& context) {
  std::unique_ptr<TempFolder> temp;
  std::string root = options.workspace;
  std::string where;
  if (root.empty()) {
    temp = std::make_unique<TempFolder>();
    root = temp->path();
    CreateLayout(root, kSampleUser);
    InstallSample(root, false);
    where = "a fresh copy of the built-in sample in " + root +
            (options.keep ? " (kept)" : " (removed afterwards)");
    if (options.keep) temp->Keep();
  } else {
    std::error_code ec;
    if (!std::filesystem::is_directory(std::filesystem::u8path(root), ec)) {
      throw ToolError(root + ": not a folder");
    }
    where = root;
  }
  const bool colour = options.colour == "always" || (options.colour == "auto" && context.outIsTerminal);

  std::vector<DefinitionFile> files;
  std::vector<std::string> problems;
  std::string out = std::string("chartcore ") + chartcore::GetLibraryVersion() + ": a tour of a workspace\n";
  out += "Workspace: " + where + "\n\n";
  out += Definitions(root, files, problems) + "\n";
  out += FunctionList(root) + "\n";
  out += Bars(root, options.code) + "\n";
  out += Formula(root, files, colour ? ColourStyle::kAnsi : ColourStyle::kPlain) + "\n";
  out += "Next: chartcore inspect FILE, chartcore highlight FILE --html, chartcore table CSV --last 20,\n"
         "      chartcore workspace init DIR --samples (chartcore --help lists every command)\n";
  context.out << out;
}

}  // namespace

void AddDemoCommand(CLI::App& app, ToolContext& context) {
  auto options = std::make_shared<DemoOptions>();
  CLI::App* command = AddCommand(app, context, "demo",
                                 "A tour of the sample workspace: definitions, function list, bar table with a "
                                 "moving average, a coloured formula",
                                 options, RunDemo);
  command->add_option("--workspace", options->workspace,
                      "Tour this workspace instead of a temporary copy of the sample (read only)");
  command->add_option("--code", options->code, "Format code of the prices (default 0: whole numbers)");
  command->add_option("--color", options->colour, "Colour the formula: auto (on a terminal), always or never")
      ->check(CLI::IsMember({"auto", "always", "never"}));
  command->add_flag("--keep", options->keep, "Keep the temporary copy of the sample");
}

}  // namespace tool
}  // namespace chartcore
