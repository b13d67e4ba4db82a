// chartcore: the command-line tool of the chartcore library.
#include <cstdio>
#include <iostream>

#include "terminal.h"
#include "tool.h"

int main(int argc, char** argv) {
  chartcore::tool::UseUtf8Console();
  chartcore::tool::ToolContext context(std::cout, std::cerr, chartcore::tool::IsTerminal(stdout),
                                       chartcore::tool::IsTerminal(stderr));
  const int code = chartcore::tool::RunTool(argc, argv, context);
  std::cout.flush();
  return code;
}
