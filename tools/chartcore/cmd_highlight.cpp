// highlight: a formula coloured as the script editor colours it.
#include "chartcore/platform/text_codec.h"
#include "highlight.h"
#include "kinds.h"
#include "tool.h"
#include "tool_text.h"
#include "workspace.h"

namespace chartcore {
namespace tool {
namespace {

struct HighlightOptions {
  std::string file;
  std::string workspace;
  int mode = 2;
  bool html = false;
  bool ansi = false;
};

// The script of a file: the formula of a definition file, else the file's
// text (UTF-8, UTF-16 with a byte-order mark, or code page 949).
CString ScriptOf(const std::string& path) {
  const std::vector<BYTE> bytes = ReadFileBytes(path, kMaxDefinitionBytes);
  if (KindFromFraming(bytes) != nullptr || IsDefinitionFileName(path)) {
    LoadedRecord loaded = ParseDefinition(path, bytes, nullptr);
    return FormulaText(*loaded.record);
  }
  const char* data = reinterpret_cast<const char*>(bytes.data());
  size_t bom = 0;
  const UINT codePage = chartcore::DetectTextEncoding(data, bytes.size(), bom);
  const std::wstring text = chartcore::BytesToWide(data + bom, bytes.size() - bom, codePage);
  return CString(text.c_str(), static_cast<int>(text.size()));
}

void RunHighlight(const HighlightOptions& options, ToolContext& context) {
  const CString script = ScriptOf(options.file);
  // Without --workspace the file's own workspace, else the current folder,
  // supplies the user function list.
  std::string root = options.workspace;
  if (root.empty()) root = WorkspaceRootOf(options.file);
  if (root.empty()) root = ".";
  ColourStyle style = context.outIsTerminal ? ColourStyle::kAnsi : ColourStyle::kPlain;
  if (options.html) style = ColourStyle::kHtml;
  if (options.ansi) style = ColourStyle::kAnsi;
  context.out << HighlightScript(script, root, options.mode, style, "", options.file);
}

}  // namespace

void AddHighlightCommand(CLI::App& app, ToolContext& context) {
  auto options = std::make_shared<HighlightOptions>();
  CLI::App* command = AddCommand(app, context, "highlight",
                                 "Colour a formula file (or the formula of a definition file) as the script "
                                 "editor does",
                                 options, RunHighlight);
  command->add_option("FILE", options->file, "Formula text file or definition file")->required();
  command->add_option("--mode", options->mode,
                      "Script mode (default 2; 0 and 1 leave volume words and volume indicators plain)");
  command->add_option("--workspace", options->workspace,
                      "Workspace whose user functions are coloured (default: the file's workspace, else the "
                      "current folder)");
  CLI::Option* html = command->add_flag("--html", options->html, "Write an HTML page");
  CLI::Option* ansi = command->add_flag("--ansi", options->ansi,
                                        "Write terminal colours (the default when writing to a terminal)");
  html->excludes(ansi);
}

}  // namespace tool
}  // namespace chartcore
