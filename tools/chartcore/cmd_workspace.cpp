// workspace init: a new workspace, with or without the sample.
#include <filesystem>
#include <system_error>

#include "tool.h"
#include "tool_text.h"
#include "workspace.h"

namespace chartcore {
namespace tool {
namespace {

struct InitOptions {
  std::string root;
  std::string user;
  bool samples = false;
  bool force = false;
};

void RunInit(const InitOptions& options, ToolContext& context) {
  const std::vector<std::string> made = CreateLayout(options.root, options.user);
  size_t files = 0;
  if (options.samples) {
    try {
      files = InstallSample(options.root, options.force);
    } catch (...) {
      RemoveCreated({}, made);
      throw;
    }
  }
  std::string out = options.root + ": workspace ready (" + std::to_string(made.size()) + " folders created";
  if (options.samples) out += ", " + std::to_string(files) + " sample files written";
  context.out << out << ")\n";
}

}  // namespace

void AddWorkspaceCommand(CLI::App& app, ToolContext& context) {
  CLI::App* workspace = app.add_subcommand("workspace", "Work with workspaces");
  workspace->require_subcommand(1);
  auto options = std::make_shared<InitOptions>();
  CLI::App* init = AddCommand(*workspace, context, "init",
                              "Create a workspace: the logic folders, Save, Templ, Event and the user's Local "
                              "branch",
                              options, RunInit);
  init->add_option("DIR", options->root, "The workspace root (created with its parents when missing)")->required();
  init->add_option("--user", options->user,
                   "User piece of the Local branch (\"_u01\" gives Local_u01; default: the branch is the root)");
  init->add_flag("--samples", options->samples, "Also write the sample workspace's definitions and bars");
  init->add_flag("--force", options->force, "Replace sample files that are already there");
}

}  // namespace tool
}  // namespace chartcore
