#include "workspace.h"

#include <algorithm>
#include <filesystem>
#include <system_error>

#include "chartcore/foundation/paths.h"
#include "chartcore/platform/file.h"
#include "tool_text.h"

namespace chartcore {
namespace tool {
namespace {

std::filesystem::path NativePath(const std::string& path) {
  return std::filesystem::u8path(Utf8(chartcore::ToNativePath(Wide(path))));
}

bool Exists(const std::string& path) {
  std::error_code ec;
  return std::filesystem::exists(NativePath(path), ec);
}

// The files (not folders) matching pattern, as (name, native path), sorted.
std::vector<std::pair<std::string, std::string>> FindFiles(const CString& pattern, bool folders) {
  std::vector<std::pair<std::string, std::string>> found;
  CFileFind finder;
  BOOL more = finder.FindFile(pattern);
  while (more) {
    more = finder.FindNextFile();
    if (finder.IsDots() || finder.IsDirectory() != (folders ? TRUE : FALSE)) continue;
    found.emplace_back(Utf8(finder.GetFileName()), NativeText(finder.GetFilePath()));
  }
  finder.Close();
  std::sort(found.begin(), found.end());
  return found;
}

bool EndsWithNoCase(const std::string& text, const std::string& suffix) {
  if (text.size() < suffix.size()) return false;
  for (size_t i = 0; i < suffix.size(); ++i) {
    char a = text[text.size() - suffix.size() + i];
    char b = suffix[i];
    if (a >= 'A' && a <= 'Z') a = static_cast<char>(a - 'A' + 'a');
    if (b >= 'A' && b <= 'Z') b = static_cast<char>(b - 'A' + 'a');
    if (a != b) return false;
  }
  return true;
}

}  // namespace

const char kSampleUser[] = "_demo";

std::string NativeText(const CString& path) {
  std::string text = Utf8(chartcore::ToNativePath(path));
  while (text.size() > 1 && (text.back() == '/' || text.back() == '\\')) text.pop_back();
  return text;
}

std::vector<CString> LayoutFolders(const CString& root, const CString& user) {
  std::vector<CString> folders = {GetPath_Logic(root)};
  for (const KindInfo& kind : AllKinds()) folders.push_back(kind.folder(root));
  folders.push_back(GetPath_Logic_Market(root));
  folders.push_back(GetPath_Save(root));
  folders.push_back(GetPath_Templ(root));
  folders.push_back(GetPath_Event(root));
  folders.push_back(GetPath_Local(root, user));
  folders.push_back(GetPath_Local_Data(root, user));
  folders.push_back(GetPath_Local_Image(root, user));
  folders.push_back(GetPath_Local_Result(root, user));
  folders.push_back(GetPath_Local_Save(root, user));
  folders.push_back(GetPath_Local_Templ(root, user));
  return folders;
}

std::vector<std::string> CreateLayout(const std::string& root, const std::string& user) {
  std::vector<std::string> created;
  // The root may lie several missing folders deep; note each one made.
  std::vector<std::filesystem::path> missing;
  for (std::filesystem::path p = NativePath(root); !p.empty(); p = p.parent_path()) {
    std::error_code ec;
    if (std::filesystem::exists(p, ec)) break;
    missing.push_back(p);
    if (p == p.parent_path()) break;
  }
  for (auto it = missing.rbegin(); it != missing.rend(); ++it) {
    std::error_code ec;
    if (!std::filesystem::create_directory(*it, ec) && !std::filesystem::is_directory(*it, ec)) {
      RemoveCreated({}, created);
      throw ToolError(it->u8string() + ": cannot create the folder");
    }
    created.push_back(it->u8string());
  }
  if (!std::filesystem::is_directory(NativePath(root))) {
    throw ToolError(root + ": exists and is not a folder");
  }
  for (CString folder : LayoutFolders(Wide(root), Wide(user))) {
    const std::string text = NativeText(folder);
    if (Exists(text)) continue;
    if (!MakeDirectory(folder)) {
      RemoveCreated({}, created);
      throw ToolError(text + ": cannot create the folder");
    }
    created.push_back(text);
  }
  return created;
}

void RemoveCreated(const std::vector<std::string>& files, const std::vector<std::string>& folders) {
  for (auto it = files.rbegin(); it != files.rend(); ++it) {
    std::error_code ec;
    std::filesystem::remove(NativePath(*it), ec);
  }
  for (auto it = folders.rbegin(); it != folders.rend(); ++it) {
    std::error_code ec;
    std::filesystem::remove(NativePath(*it), ec);  // only when empty
  }
}

std::vector<DefinitionFile> ListDefinitions(const std::string& root) {
  std::vector<DefinitionFile> list;
  for (const KindInfo& kind : AllKinds()) {
    for (const auto& file : FindFiles(kind.folder(Wide(root)) + L"*.*", false)) {
      for (const std::string& extension : kind.extensions) {
        if (!EndsWithNoCase(file.first, extension)) continue;
        list.push_back({&kind, file.second, RelativePath(root, file.second),
                        file.first.substr(0, file.first.size() - extension.size())});
        break;
      }
    }
  }
  return list;
}

std::vector<std::string> FindBarFiles(const std::string& root) {
  const CString wideRoot = Wide(root);
  std::vector<CString> dataFolders = {GetPath_Local_Data(wideRoot, CString())};
  // Each branch's own folder: one named just "Local" would otherwise make
  // the user piece "" and stand for the root's Data a second time.
  for (const auto& local : FindFiles(GetPath(wideRoot) + L"Local*", true)) {
    dataFolders.push_back(GetPath_Local_Data(Wide(local.second), CString()));
  }
  std::vector<std::string> files;
  for (const CString& folder : dataFolders) {
    for (const auto& file : FindFiles(folder + L"*.*", false)) {
      if (EndsWithNoCase(file.first, ".csv")) files.push_back(file.second);
    }
  }
  std::sort(files.begin(), files.end());
  return files;
}

std::string RelativePath(const std::string& root, const std::string& path) {
  const std::string base = NativeText(Wide(root));
  std::string rest = path;
  // Below root only at a separator: "/a/ws2/x" is not below "/a/ws".
  const auto separator = [](char c) { return c == '/' || c == '\\'; };
  if (path.compare(0, base.size(), base) == 0 && path.size() > base.size() &&
      (separator(base.back()) || separator(path[base.size()]))) {
    rest = path.substr(base.size());
    while (!rest.empty() && (rest.front() == '/' || rest.front() == '\\')) rest.erase(0, 1);
  }
  for (char& c : rest) {
    if (c == '\\') c = '/';
  }
  return rest;
}

std::string WorkspaceRootOf(const std::string& path) {
  std::error_code ec;
  const std::filesystem::path absolute = std::filesystem::absolute(NativePath(path), ec).lexically_normal();
  const std::filesystem::path logic = absolute.parent_path().parent_path();
  CString logicName = GetPath_Logic(CString());  // "\Logic\"
  logicName.Trim(L'\\');
  if (ec || Wide(logic.filename().u8string()).CompareNoCase(logicName) != 0) return std::string();
  return logic.parent_path().u8string();
}

std::string JoinPath(const std::string& root, const std::string& relative) {
  if (root.empty()) return relative;
  const char last = root.back();
  return (last == '/' || last == '\\') ? root + relative : root + "/" + relative;
}

}  // namespace tool
}  // namespace chartcore
