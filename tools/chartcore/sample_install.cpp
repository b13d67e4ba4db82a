#include <filesystem>
#include <system_error>

#include "tool_text.h"
#include "workspace.h"

namespace chartcore {
namespace tool {

std::size_t InstallSample(const std::string& root, bool replace) {
  if (!replace) {
    for (std::size_t i = 0; i < kSampleFileCount; ++i) {
      std::error_code ec;
      const std::string target = JoinPath(root, kSampleFiles[i].path);
      if (std::filesystem::exists(std::filesystem::u8path(target), ec)) {
        throw ToolError(target + ": already exists; nothing was written (--force replaces the sample's files)");
      }
    }
  }
  std::vector<std::string> files;
  std::vector<std::string> folders;
  try {
    for (std::size_t i = 0; i < kSampleFileCount; ++i) {
      const EmbeddedFile& file = kSampleFiles[i];
      const std::string target = JoinPath(root, file.path);
      // Folders outside the layout (none today) are made as the files need them.
      const std::filesystem::path parent = std::filesystem::u8path(target).parent_path();
      std::error_code ec;
      if (!std::filesystem::exists(parent, ec)) {
        std::filesystem::create_directories(parent, ec);
        if (ec) throw ToolError(parent.u8string() + ": cannot create the folder");
        folders.push_back(parent.u8string());
      }
      std::error_code existed;
      const bool isNew = !std::filesystem::exists(std::filesystem::u8path(target), existed);
      WriteFileBytes(target, file.data, file.size);
      if (isNew) files.push_back(target);
    }
  } catch (...) {
    RemoveCreated(files, folders);
    throw;
  }
  return kSampleFileCount;
}

}  // namespace tool
}  // namespace chartcore
