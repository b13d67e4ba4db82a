// chartcore: the command-line tool of the chartcore library.
#include <cstdio>
#include <iostream>
#include <string>
#include <vector>

#include "chartcore/platform/command_line.h"
#include "terminal.h"
#include "tool.h"

int main(int argc, char** argv) {
  chartcore::tool::UseUtf8Console();
  // The commands read their arguments as UTF-8, which a Windows argv is not.
  const std::vector<std::string> arguments = chartcore::GetUtf8Arguments(argc, argv);
  std::vector<const char*> pointers;
  for (const std::string& argument : arguments) pointers.push_back(argument.c_str());
  if (pointers.empty()) pointers.push_back("chartcore");
  chartcore::tool::ToolContext context(std::cout, std::cerr, chartcore::tool::IsTerminal(stdout),
                                       chartcore::tool::IsTerminal(stderr));
  const int code = chartcore::tool::RunTool(static_cast<int>(pointers.size()), pointers.data(), context);
  std::cout.flush();
  return code;
}
