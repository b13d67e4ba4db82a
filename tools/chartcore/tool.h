// The chartcore command-line tool: its command table and entry point.
//
// Each command is one function that adds a CLI11 subcommand (its options and
// what it does) to the application; the table in tool.cpp lists them, so a
// new command is one such function and one line in the table. A command does
// its work after the whole command line has been parsed, writes its output
// only when it has succeeded, and reports failure by throwing ToolError,
// which RunTool prints as one line on standard error
// ("chartcore inspect: x.ind: cannot open (file not found)").
//
//   ToolContext context(std::cout, std::cerr, true, true);
//   int code = RunTool(argc, argv, context);          // 0, 1 (failed) or 2 (usage)
#ifndef CHARTCORE_TOOLS_CHARTCORE_TOOL_H_
#define CHARTCORE_TOOLS_CHARTCORE_TOOL_H_

#include <functional>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>

namespace chartcore {
namespace tool {

// Exit codes.
constexpr int kExitFailed = 1;  // the command could not do its work
constexpr int kExitUsage = 2;   // the command line itself is wrong

// ToolContext: where a command writes and what it knows of its terminal.
struct ToolContext {
  ToolContext(std::ostream& output, std::ostream& errors, bool outputIsTerminal, bool errorsIsTerminal)
      : out(output), err(errors), outIsTerminal(outputIsTerminal), errIsTerminal(errorsIsTerminal) {}

  std::ostream& out;
  std::ostream& err;
  bool outIsTerminal;
  bool errIsTerminal;
  // Set while parsing: the command line's command ("workspace init") and
  // the work it asked for.
  std::string command;
  std::function<void()> action;
};

// ToolCommand: one entry of the command table.
struct ToolCommand {
  const char* name;
  void (*add)(CLI::App& app, ToolContext& context);
};

// The command table, in the order --help lists the commands.
const std::vector<ToolCommand>& Commands();

// RunTool: parses the command line (argv[0] is the program; every argument
// UTF-8, as chartcore::GetUtf8Arguments gives them on every system), runs the
// command and returns the exit code: 0 on success (also for --help and
// --version), kExitFailed when the command failed, kExitUsage for a wrong
// command line. No arguments at all print the help.
int RunTool(int argc, const char* const* argv, ToolContext& context);

// AddCommand: adds a subcommand named name whose work is run(options): the
// options object is shared by the option bindings and the work.
template <class OPTIONS>
CLI::App* AddCommand(CLI::App& parent, ToolContext& context, const std::string& name, const std::string& help,
                     const std::shared_ptr<OPTIONS>& options, void (*run)(const OPTIONS&, ToolContext&)) {
  CLI::App* command = parent.add_subcommand(name, help);
  const std::string fullName = parent.get_parent() != nullptr ? parent.get_name() + " " + name : name;
  command->callback([&context, options, run, fullName] {
    context.command = fullName;
    context.action = [&context, options, run] { run(*options, context); };
  });
  return command;
}

// The commands (one file each).
void AddDemoCommand(CLI::App& app, ToolContext& context);
void AddWorkspaceCommand(CLI::App& app, ToolContext& context);
void AddInspectCommand(CLI::App& app, ToolContext& context);
void AddPackCommand(CLI::App& app, ToolContext& context);
void AddHighlightCommand(CLI::App& app, ToolContext& context);
void AddFormatCommand(CLI::App& app, ToolContext& context);
void AddTableCommand(CLI::App& app, ToolContext& context);
#if defined(CHARTCORE_TOOL_WITH_QT)
// The script editor in a window (built with the Qt window backend).
void AddEditorCommand(CLI::App& app, ToolContext& context);
#endif

}  // namespace tool
}  // namespace chartcore

#endif  // CHARTCORE_TOOLS_CHARTCORE_TOOL_H_
