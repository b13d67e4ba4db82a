#include <cstdio>
#include <cstring>

#include "chartcore/chartcore.h"

int main(int argc, char** argv) {
  if (argc > 1 && std::strcmp(argv[1], "--version") == 0) {
    std::printf("chartcore %s\n", chartcore::GetLibraryVersion());
    return 0;
  }
  std::printf("chartcore %s\n", chartcore::GetLibraryVersion());
  return 0;
}
