#include "chartcore/properties/chart_property.h"

#include <memory>
#include <tuple>
#include <utility>

#include <gtest/gtest.h>

TEST(ChartProperty, RecordsCopyDeeplyAndNameThemselves) {
  CProperty_PRICE a;
  a.m_strName = L"\uC0BC\uC131\uC804\uC790";  // 삼성전자
  CProperty_EVENT_ELEMENT ev;
  ev.strMessage = L"hi";
  a.m_arrEvent.Add(ev);
  a.m_arrBinding.Add(CProperty_DATA_Binding());
  CProperty_PRICE b(a);
  b.m_arrBinding[0].strSource = L"changed";
  b.m_arrEvent[0].strMessage = L"other";
  EXPECT_TRUE(a.m_arrBinding[0].strSource.IsEmpty());  // deep: the copy has its own arrays
  EXPECT_EQ(a.m_arrEvent[0].strMessage, L"hi");
  CProperty_PRICE c;
  c = std::move(b);
  EXPECT_EQ(c.m_arrBinding[0].strSource, L"changed");
  EXPECT_EQ(c.GetName(), L"\uC0BC\uC131\uC804\uC790");

  // The volume series names itself in the system's word, whatever its name.
  std::unique_ptr<CProperty_BASE> vol = std::make_unique<CProperty_VOLUME>();
  vol->m_strName = L"Volume";
  EXPECT_EQ(vol->GetName(), L"\uAC70\uB798\uB7C9");
  EXPECT_EQ(vol->GetSaveFlag(), 1);  // new objects are saved
  vol->SetSaveFlag(0);
  EXPECT_EQ(vol->GetSaveFlag(), 0);

  // A drawing's copy carries its notice lines whole, all 16 bits of the pen.
  CProperty_DRAW draw;
  const CProperty_NOTICE_LINE notice{70000.0, 0xFF, 0xFFFF, 3, 1};
  draw.m_arrNoticeLine.Add(notice);
  const auto fields = [](const CProperty_NOTICE_LINE& n) {
    return std::make_tuple(n.dValue, n.clrLine, n.wStyle, n.wWidth, n.nAlarm);
  };
  EXPECT_EQ(fields(CProperty_DRAW(draw).m_arrNoticeLine[0]), fields(notice));
}
