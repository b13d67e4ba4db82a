// Workspaces as the tool handles them: creating the directory layout,
// writing the built-in sample into it, and finding what a workspace holds
// (definitions by kind, daily-bar files).
//
// The layout is the one the library's GetPath_... functions describe: the
// logic folders below "Logic", "Save", "Templ" and "Event", and the user's
// own branch (GetPath_Local_...) with "Data", "Image", "Result", "Save" and
// "Templ".
//
//   std::vector<std::string> made = CreateLayout("/home/u/ws", "_u01");
//   InstallSample("/home/u/ws", false);                 // the sample's files
//   for (const DefinitionFile& f : ListDefinitions("/home/u/ws")) ...
#ifndef CHARTCORE_TOOLS_CHARTCORE_WORKSPACE_H_
#define CHARTCORE_TOOLS_CHARTCORE_WORKSPACE_H_

#include <cstddef>
#include <string>
#include <vector>

#include "kinds.h"

namespace chartcore {
namespace tool {

// ---------------------------------------------------------------------------
// Layout
// ---------------------------------------------------------------------------

// LayoutFolders: the folders of a workspace below root, parents before
// children, each as the library builds it (ending in "\"). user is the
// per-user piece of the Local branch ("" puts that branch in root).
std::vector<CString> LayoutFolders(const CString& root, const CString& user);

// CreateLayout: creates root (with missing parents) and every layout folder.
// Returns the folders it created (not those that existed), in creation
// order, so a caller can take them away again. Throws ToolError naming the
// folder that cannot be made; what it made before is then removed.
std::vector<std::string> CreateLayout(const std::string& root, const std::string& user);

// RemoveCreated: removes the files and then the folders (deepest first)
// that an unfinished command created; errors are ignored.
void RemoveCreated(const std::vector<std::string>& files, const std::vector<std::string>& folders);

// ---------------------------------------------------------------------------
// The built-in sample
// ---------------------------------------------------------------------------

// EmbeddedFile: one file of the sample workspace compiled into the tool;
// path is relative to the workspace root, with "/" separators.
struct EmbeddedFile {
  const char* path;
  const unsigned char* data;
  std::size_t size;
};

// The sample's files, sorted by path (generated at build time from the
// output of the workspace generator).
extern const EmbeddedFile kSampleFiles[];
extern const std::size_t kSampleFileCount;

// The user piece of the sample's Local branch ("_demo": "Local_demo").
extern const char kSampleUser[];

// InstallSample: writes the sample's files below root (which must exist).
// Unless replace is set, a file already present is an error reported before
// anything is written. Each file is replaced atomically; on a failure the
// files and folders written so far are removed again. Returns the number of
// files written.
std::size_t InstallSample(const std::string& root, bool replace);

// ---------------------------------------------------------------------------
// Contents
// ---------------------------------------------------------------------------

// DefinitionFile: a definition file found in a workspace.
struct DefinitionFile {
  const KindInfo* kind;
  std::string path;      // full path
  std::string relative;  // below the root, "/" separated
  std::string title;     // file name without extension
};

// ListDefinitions: the definition files of each kind's folder (files with
// the kind's extensions), kinds in table order, names sorted.
std::vector<DefinitionFile> ListDefinitions(const std::string& root);

// FindBarFiles: the ".csv" files in the Data folders of the workspace's
// Local branches ("Data" directly below root, and "Local*/Data"), sorted.
std::vector<std::string> FindBarFiles(const std::string& root);

// RelativePath: path below root with "/" separators (path itself, with "/"
// separators, when it is not below root).
std::string RelativePath(const std::string& root, const std::string& path);

// WorkspaceRootOf: the workspace a file lies in when it is in one of the
// logic folders ("<root>/Logic/<folder>/<file>"), else "".
std::string WorkspaceRootOf(const std::string& path);

// NativeText: a library path ("\" separators) as the system writes it, in
// UTF-8, without a trailing separator (a root "/" stays).
std::string NativeText(const CString& path);

// JoinPath: root + "/" + relative (relative uses "/").
std::string JoinPath(const std::string& root, const std::string& relative);

}  // namespace tool
}  // namespace chartcore

#endif  // CHARTCORE_TOOLS_CHARTCORE_WORKSPACE_H_
