#include "tool.h"

#include <exception>
#include <new>

#include "chartcore/platform/exceptions.h"
#include "chartcore/platform/version.h"
#include "tool_text.h"

namespace chartcore {
namespace tool {
namespace {

// One line of text: an error message never spans lines, and the file names
// and contents it quotes reach the terminal only as printable text.
std::string OneLine(std::string text) {
  for (char& c : text) {
    if (c == '\n' || c == '\r') c = ' ';
  }
  while (!text.empty() && text.back() == ' ') text.pop_back();
  return Printable(text);
}

}  // namespace

const std::vector<ToolCommand>& Commands() {
  static const std::vector<ToolCommand> commands = {
      {"demo", AddDemoCommand},
      {"workspace", AddWorkspaceCommand},
      {"inspect", AddInspectCommand},
      {"pack", AddPackCommand},
      {"highlight", AddHighlightCommand},
      {"format", AddFormatCommand},
      {"table", AddTableCommand},
#if defined(CHARTCORE_TOOL_WITH_QT)
      {"editor", AddEditorCommand},
#endif
  };
  return commands;
}

int RunTool(int argc, const char* const* argv, ToolContext& context) {
  CLI::App app("chartcore: the sample workspace tour, definition files as JSON, formula colouring and value "
               "formatting of the chartcore library.",
               "chartcore");
  // On Windows CLI11 would read "/dir" as an option; paths come that way
  // from Unix-style shells and under Wine.
  app.allow_windows_style_options(false);
  app.set_version_flag("--version", std::string("chartcore ") + chartcore::GetLibraryVersion());
  app.require_subcommand(1);
  for (const ToolCommand& command : Commands()) command.add(app, context);

  if (argc <= 1) {
    context.out << app.help();
    return 0;
  }
  const std::string first = argv[1];
  if (!first.empty() && first[0] != '-') {
    std::string names;
    bool known = false;
    for (const ToolCommand& command : Commands()) {
      known = known || first == command.name;
      names += (names.empty() ? "" : ", ") + std::string(command.name);
    }
    if (!known) {
      context.err << "chartcore: unknown command " << Quoted(first) << " (one of " << names << ")\n";
      return kExitUsage;
    }
  }
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& e) {
    if (e.get_exit_code() == 0) return app.exit(e, context.out, context.err);
    std::string where = "chartcore";
    for (const CLI::App* sub = &app; !sub->get_subcommands().empty();) {
      sub = sub->get_subcommands().front();
      where += " " + sub->get_name();
    }
    context.err << where << ": " << OneLine(e.what()) << " (see " << where << " --help)\n";
    return kExitUsage;
  }

  try {
    if (context.action) context.action();
    return 0;
  } catch (const ToolError& e) {
    context.err << "chartcore " << context.command << ": " << OneLine(e.what()) << "\n";
    return e.exitCode();
  } catch (const std::bad_alloc&) {
    context.err << "chartcore " << context.command << ": out of memory\n";
  } catch (const std::exception& e) {
    context.err << "chartcore " << context.command << ": " << OneLine(e.what()) << "\n";
  }
  return kExitFailed;
}

}  // namespace tool
}  // namespace chartcore
