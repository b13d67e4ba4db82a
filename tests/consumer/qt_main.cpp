// The window backend links through the installed package: text crosses
// between the library's CString and Qt's QString both ways.
#include <cstdio>

#include "chartcore/chartcore.h"
#include "chartcore_qt/chartcore_qt.h"

int main() {
  const CString text(L"거래량 volume");
  const bool ok = chartcore::qt::ToCString(chartcore::qt::ToQString(text)) == text;
  std::printf("%s chartcore::qt text round trip\n", ok ? "ok  " : "FAIL");
  return ok ? 0 : 1;
}
