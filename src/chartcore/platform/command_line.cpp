#include "chartcore/platform/command_line.h"

#if defined(_WIN32)
#include <windows.h>
#include <shellapi.h>
#endif

#include <cwchar>

#include "chartcore/platform/text_codec.h"

namespace chartcore {

std::vector<std::string> GetUtf8Arguments(int argc, const char* const* argv) {
  std::vector<std::string> arguments;
#if defined(_WIN32)
  int count = 0;
  LPWSTR* wide = CommandLineToArgvW(GetCommandLineW(), &count);
  if (wide != nullptr) {
    for (int i = 0; i < count; ++i) arguments.push_back(WideToUtf8(wide[i], std::wcslen(wide[i])));
    LocalFree(wide);
    return arguments;
  }
#endif
  for (int i = 0; i < argc && argv != nullptr && argv[i] != nullptr; ++i) arguments.emplace_back(argv[i]);
  return arguments;
}

}  // namespace chartcore
