// A host's first use of chartcore, through the installed headers and
// library: a close series with a moving average, prices formatted for the
// screen, and an indicator definition written to memory and read back.
// Prints what it computed and exits 0 only when every value is as expected.
#include <cstdio>
#include <string>

#include "chartcore/chartcore.h"

namespace {

int failures = 0;

void Check(bool ok, const char* what) {
  std::printf("%s %s\n", ok ? "ok  " : "FAIL", what);
  if (!ok) ++failures;
}

std::string Narrow(const CString& text) { return chartcore::WideToUtf8(text.GetString(), text.GetLength()); }

}  // namespace

int main() {
  // A close series, a 3-bar sum by rolling appends, the average by division.
  CPacket close;
  CPacket window;
  CPacket sums;
  for (double price : {101.0, 102.0, 106.0, 104.0}) {
    close.Add(price);
    if (window.GetPacketSize() < 3) {
      window.Add(price);
    } else {
      window.AddShift(price, 1);
    }
    sums.Add(window.GetPacketSize() == 3 ? window.GetValue(0) + window.GetValue(1) + window.GetValue(2)
                                         : chartcore::kPacketEmptyValue);
  }
  CPacket average = sums / 3.0;
  Check(average.GetValue(1) == chartcore::kPacketEmptyValue, "no average before three bars");
  Check(average.GetValue(3) == 104.0, "average of 102, 106 and 104 is 104");

  // Values as the chart prints them.
  Check(Narrow(GetYPacketStringOfFormat(1234.5, 1, 1)) == "1,234.5", "1234.5 under code 1, grouped");
  Check(Narrow(GetYPacketStringOfFormat(101.15625, 75, 0)) == "101`05", "101.15625 in 32nds");
  Check(Narrow(GetXPacketDateString(20240115, 0)) == "2024/01/15", "packed date as text");

  // An indicator definition through the archive and back.
  CDBSubINDICA indicator;
  indicator.m_strText1 = L"PriceMomentum";
  CDBSubINDICA_VAR period;
  period.strText = L"Period";
  period.dValue = 10;
  indicator.m_arrVariable.Add(period);
  CMemFile memory;
  {
    CArchive ar(&memory, CArchive::store);
    indicator.Serialize(ar);
    ar.Close();
  }
  memory.SeekToBegin();
  CDBSubINDICA back;
  {
    CArchive ar(&memory, CArchive::load);
    back.Serialize(ar);
    ar.Close();
  }
  Check(back.m_strText1 == L"PriceMomentum" && back.m_arrVariable.GetSize() == 1 &&
            back.m_arrVariable[0].dValue == 10.0,
        "indicator definition round trip");
  Check(back.m_nVersion == 7, "written in the current format version");

  std::printf("chartcore %s: %s\n", chartcore::GetLibraryVersion(), failures == 0 ? "consumer ok" : "consumer FAILED");
  return failures == 0 ? 0 : 1;
}
