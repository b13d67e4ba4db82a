// The sample workspace: a small, complete workspace written by the library
// itself, which the build generates, the repository keeps under
// examples/workspace and the tool carries for `chartcore demo` and
// `chartcore workspace init --samples`.
//
// It holds the full layout (an empty folder keeps a ".keep" file so the tree
// survives in version control), a function list "New_Function.dat" with
// three system and three user functions and their ".bic"/".fct" definitions,
// two or three definitions of every other logic kind, two years of daily
// bars of a made-up item in Local_demo/Data, and a README.md describing it
// all. Everything is derived from fixed data and a seeded generator, so two
// runs write identical bytes.
//
//   std::vector<std::string> written = WriteSampleWorkspace("/tmp/ws");
#ifndef CHARTCORE_TOOLS_CHARTCORE_SAMPLE_WORKSPACE_H_
#define CHARTCORE_TOOLS_CHARTCORE_SAMPLE_WORKSPACE_H_

#include <string>
#include <vector>

namespace chartcore {
namespace tool {

// WriteSampleWorkspace: writes the sample below root, which must exist and
// hold nothing of a workspace yet. Returns the files written, relative to
// root with "/" separators, sorted. Throws ToolError when a folder or file
// cannot be written.
std::vector<std::string> WriteSampleWorkspace(const std::string& root);

// SampleBarsCsv: the daily bars as CSV text (header line, then one bar per
// trading day of 2023 and 2024).
std::string SampleBarsCsv();

// The sample's bar file, relative to the workspace root.
extern const char kSampleBarsFile[];

}  // namespace tool
}  // namespace chartcore

#endif  // CHARTCORE_TOOLS_CHARTCORE_SAMPLE_WORKSPACE_H_
