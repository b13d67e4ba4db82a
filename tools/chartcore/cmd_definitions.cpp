// inspect and pack: definition files as JSON and back.
#include <algorithm>
#include <filesystem>
#include <system_error>

#include "chartcore/logic/record_file.h"
#include "kinds.h"
#include "record_json.h"
#include "terminal.h"
#include "tool.h"
#include "tool_text.h"

namespace chartcore {
namespace tool {
namespace {

struct InspectOptions {
  std::vector<std::string> files;
  std::string kind;
};

struct PackOptions {
  std::string json;
  std::string kind;
  std::string output;
};

const KindInfo* KindOption(const std::string& text) {
  if (text.empty()) return nullptr;
  const KindInfo* kind = FindKind(text);
  if (kind == nullptr) throw ToolError("unknown kind " + Quoted(text) + " (one of " + KindNameList() + ")", kExitUsage);
  return kind;
}

// The definition files below a folder, at any depth, sorted.
std::vector<std::string> DefinitionFilesIn(const std::string& folder) {
  std::vector<std::string> files;
  std::error_code ec;
  for (auto it = std::filesystem::recursive_directory_iterator(std::filesystem::u8path(folder), ec);
       !ec && it != std::filesystem::recursive_directory_iterator(); it.increment(ec)) {
    if (it->is_regular_file(ec) && IsDefinitionFileName(it->path().filename().u8string())) {
      files.push_back(it->path().u8string());
    }
  }
  if (ec) throw ToolError(folder + ": cannot list the folder (" + ec.message() + ")");
  std::sort(files.begin(), files.end());
  if (files.empty()) throw ToolError(folder + ": holds no definition files");
  return files;
}

void RunInspect(const InspectOptions& options, ToolContext& context) {
  const KindInfo* forced = KindOption(options.kind);
  std::vector<std::string> files;
  bool single = options.files.size() == 1;
  for (const std::string& argument : options.files) {
    std::error_code ec;
    if (std::filesystem::is_directory(std::filesystem::u8path(argument), ec)) {
      const std::vector<std::string> found = DefinitionFilesIn(argument);
      files.insert(files.end(), found.begin(), found.end());
      single = false;
    } else {
      files.push_back(argument);
    }
  }
  ProgressBar bar(context.err, context.errIsTerminal, files.size(), "inspect");
  Json documents = Json::array();
  for (const std::string& file : files) {
    bar.Step(file);
    documents.push_back(DefinitionToJson(file, LoadDefinition(file, forced)));
  }
  bar.Finish();
  context.out << JsonText(single ? documents.front() : documents) << "\n";
}

void RunPack(const PackOptions& options, ToolContext& context) {
  (void)context;
  const KindInfo* forced = KindOption(options.kind);
  const std::vector<BYTE> bytes = ReadFileBytes(options.json, kMaxDefinitionBytes);
  Json doc;
  try {
    doc = Json::parse(bytes.begin(), bytes.end());
  } catch (const Json::parse_error& e) {
    std::string what = e.what();
    const size_t tag = what.find("] ");
    if (what.compare(0, 1, "[") == 0 && tag != std::string::npos) what = what.substr(tag + 2);
    throw ToolError(options.json + ": not valid JSON (" + what + ")");
  }
  Framing framing = Framing::kPlain;
  std::unique_ptr<CDBSubBase> record = DefinitionFromJson(doc, forced, framing, options.json);
  std::error_code ec;
  const std::filesystem::path folder = std::filesystem::u8path(options.output).parent_path();
  if (!folder.empty() && !std::filesystem::is_directory(folder, ec)) {
    throw ToolError(options.output + ": cannot write (no folder " + folder.u8string() + ")");
  }
  CFileException error;
  const CString target = Wide(options.output);
  const BOOL saved = framing == Framing::kObject ? SaveRecordObjectFile(target, *record, &error)
                                                 : SaveRecordFile(target, *record, &error);
  if (!saved) throw ToolError(options.output + ": cannot write (" + FileErrorText(error.m_cause) + ")");
}

}  // namespace

void AddInspectCommand(CLI::App& app, ToolContext& context) {
  auto options = std::make_shared<InspectOptions>();
  CLI::App* command = AddCommand(app, context, "inspect",
                                 "Print definition files as JSON (every field; a folder stands for the definition "
                                 "files in it)",
                                 options, RunInspect);
  command->add_option("FILE", options->files, "Definition files or folders")->required();
  command->add_option("--kind", options->kind,
                      "Read the files as this kind (FUNCT, INDICA, SIGNAL, REGION, FILL, PATTERN, OPTIMIZE); "
                      "otherwise the class tag, the folder or the extension tells");
}

void AddPackCommand(CLI::App& app, ToolContext& context) {
  auto options = std::make_shared<PackOptions>();
  CLI::App* command =
      AddCommand(app, context, "pack", "Write a definition file from JSON as inspect prints it", options, RunPack);
  command->add_option("JSON", options->json, "The JSON document")->required();
  command->add_option("--kind", options->kind, "The kind of the definition (else the document's \"kind\")");
  command->add_option("-o,--output", options->output, "The definition file to write (replaced atomically)")
      ->required();
}

}  // namespace tool
}  // namespace chartcore
