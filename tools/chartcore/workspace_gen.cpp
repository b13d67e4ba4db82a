// chartcore_workspace_gen: writes the sample workspace into a folder. The
// build runs it to produce the sample the tool carries; run it with
// --replace on examples/workspace to refresh the repository's copy.
#include <filesystem>
#include <iostream>
#include <system_error>

#include <CLI/CLI.hpp>

#include "sample_workspace.h"
#include "tool_text.h"

int main(int argc, char** argv) {
  CLI::App app("Writes the chartcore sample workspace into DIR", "chartcore_workspace_gen");
  // On Windows CLI11 would read "/dir" as an option; paths come that way
  // from the build (under Wine) and from Unix-style shells.
  app.allow_windows_style_options(false);
  std::string root;
  bool replace = false;
  app.add_option("DIR", root, "The folder to write (created when missing)")->required();
  app.add_flag("--replace", replace, "Empty DIR first when it already holds a workspace");
  CLI11_PARSE(app, argc, argv);

  namespace fs = std::filesystem;
  const fs::path dir = fs::u8path(root);
  std::error_code ec;
  if (fs::exists(dir, ec) && !fs::is_empty(dir, ec)) {
    // Only a workspace is emptied, so a mistyped folder is never wiped.
    if (!replace || !fs::is_directory(dir / "Logic", ec)) {
      std::cerr << "chartcore_workspace_gen: " << root
                << ": not empty (--replace empties a folder that holds a workspace)\n";
      return 1;
    }
    for (const fs::directory_entry& entry : fs::directory_iterator(dir, ec)) fs::remove_all(entry.path(), ec);
  }
  fs::create_directories(dir, ec);
  try {
    const std::vector<std::string> written = chartcore::tool::WriteSampleWorkspace(root);
    std::cout << root << ": " << written.size() << " files\n";
  } catch (const chartcore::tool::ToolError& e) {
    std::cerr << "chartcore_workspace_gen: " << e.what() << "\n";
    return 1;
  }
  return 0;
}
