#include "chartcore/foundation/markets.h"

#include <set>
#include <string>

#include <gtest/gtest.h>

namespace {

// Every code from -5 to 1500 and some far ones: each predicate must be true
// exactly on its set, so neighbours of each member are checked too.
template <typename Predicate>
std::set<int> Members(Predicate p) {
  std::set<int> out;
  for (int code = -5; code <= 1500; ++code)
    if (p(code) != 0) out.insert(code);
  for (const int code : {3401, 3402, 3403, 3404, 3405, 403001, 700005, 2147483647, -2147483647 - 1})
    if (p(code) != 0) out.insert(code);
  return out;
}

}  // namespace

TEST(MarketsFamilies, EachSetIsExactlyItsCodes) {
  EXPECT_EQ(Members(IsFutureDomesticMarket), (std::set<int>{14, 15, 16, 44, 124, 1007}));
  EXPECT_EQ(Members(IsOptionDomesticMarket), (std::set<int>{25, 26, 34, 134}));
  EXPECT_EQ(Members(IsGlobalMarket), (std::set<int>{111, 112}));
  EXPECT_EQ(Members(IsUSAMarket), (std::set<int>{1087, 1088, 1089}));
  EXPECT_EQ(Members(IsStockCodeMarket), (std::set<int>{1001, 1002}));
  EXPECT_EQ(Members(IsIndustryMarket), (std::set<int>{1003, 1004}));
  EXPECT_EQ(Members(IsCMEHTSScreen), (std::set<int>{1411, 1412, 1413, 1414}));
  EXPECT_EQ(Members(IsGlobalHTSScreen), (std::set<int>{3401, 3403, 3404, 3405}));  // not 3402
}

TEST(MarketsFamilies, WithFlagsCountOnlyWhenExactlyOne) {
  const std::set<int> base = {14, 34, 44, 124, 134, 1007};
  for (const int off : {0, 2, -1}) {  // 2 and -1 count as "without"
    EXPECT_EQ(Members([off](int m) { return IsF_O_DomesticMarket(m, off, off, off); }), base) << off;
    EXPECT_EQ(Members([off](int m) { return IsHugangtongMarket(m, off); }), (std::set<int>{1070, 1071, 1078}));
    EXPECT_EQ(Members([off](int m) { return IsNightMarket(m, off, off); }),
              (std::set<int>{44, 54, 111, 112, 126, 1025, 1193}));
  }
  EXPECT_EQ(IsF_O_DomesticMarket(15, 0, 0, 0), 0);
  EXPECT_EQ(IsF_O_DomesticMarket(15, 1, 0, 0), 1);
  EXPECT_EQ(IsF_O_DomesticMarket(25, 1, 0, 0), 1);
  EXPECT_EQ(IsF_O_DomesticMarket(16, 1, 0, 0), 0);  // each flag opens only its own pair
  EXPECT_EQ(IsF_O_DomesticMarket(16, 0, 1, 0), 1);
  EXPECT_EQ(IsF_O_DomesticMarket(26, 0, 1, 0), 1);
  EXPECT_EQ(IsF_O_DomesticMarket(111, 0, 1, 0), 0);
  EXPECT_EQ(IsF_O_DomesticMarket(112, 0, 0, 1), 1);
  EXPECT_EQ(Members([](int m) { return IsF_O_DomesticMarket(m, 1, 1, 1); }),
            (std::set<int>{14, 15, 16, 25, 26, 34, 44, 111, 112, 124, 134, 1007}));
  EXPECT_EQ(IsHugangtongMarket(1088, 1), 1);
  EXPECT_EQ(IsHugangtongMarket(1088, 2), 0);
  EXPECT_EQ(IsNightMarket(14, 0, 0), 0);
  EXPECT_EQ(IsNightMarket(14, 1, 0), 1);
  EXPECT_EQ(IsNightMarket(1088, 0, 1), 1);
  EXPECT_EQ(IsNightMarket(1088, 1, 0), 0);
  EXPECT_EQ(IsNightMarket(1087, 0, 1), 1);
}

TEST(MarketsTags, KoreanAndExchangeTagsOnlyForTheirCodes) {
  EXPECT_EQ(GetMarketCateInfo(1001).str(), L"-[거래소]");
  EXPECT_EQ(GetMarketCateInfo(1002).str(), L"-[코스닥]");
  EXPECT_EQ(GetMarketCateInfo(1070).str(), L"-[홍콩]");
  EXPECT_EQ(GetMarketCateInfo(1071).str(), L"-[상해]");
  EXPECT_EQ(GetMarketCateInfo(1078).str(), L"-[심천]");
  EXPECT_EQ(GetMarketCateInfo(1087).str(), L"-[NYSE]");
  EXPECT_EQ(GetMarketCateInfo(1088).str(), L"-[NASDAQ]");
  EXPECT_EQ(GetMarketCateInfo(1089).str(), L"-[AMEX]");
  EXPECT_EQ(Members([](int m) { return GetMarketCateInfo(m).IsEmpty() ? 0 : 1; }),
            (std::set<int>{1001, 1002, 1070, 1071, 1078, 1087, 1088, 1089}));
}

TEST(MarketsPeriods, InvalidPairsGiveTheirMessageAndValidOnesClearIt) {
  CString message(L"left over");
  const auto invalid = [&](int market, int period, int interval, const wchar_t* text) {
    EXPECT_EQ(IsValidMarket_Period(market, period, interval, message), 0) << market << "/" << period;
    EXPECT_EQ(message.str(), text) << market << "/" << period;
  };
  const auto valid = [&](int market, int period, int interval) {
    message = L"left over";
    EXPECT_EQ(IsValidMarket_Period(market, period, interval, message), 1) << market << "/" << period;
    EXPECT_TRUE(message.IsEmpty()) << market << "/" << period;
  };
  for (int period = 0; period <= 9; ++period) {
    invalid(1011, period, 1, L"ECN 시장은 데이터를 제공하지 않습니다");
    invalid(1000, period, 1, L"비상장 주식 시장은 데이터를 제공하지 않습니다");
    invalid(1012, period, 1, L"장외 시장은 데이터를 제공하지 않습니다");
    invalid(1057, period, 1, L"주식선물 스프레드 시장은 데이터를 제공하지 않습니다");
  }
  invalid(15, 8, 1, L"주식 선물 시장은 년 데이터를 제공하지 않습니다");
  valid(15, 7, 1);
  valid(15, 9, 1);
  invalid(1014, 5, 1, L"ELW 시장은 주/월/년 데이터를 제공하지 않습니다");
  invalid(1014, 8, 1, L"ELW 시장은 주/월/년 데이터를 제공하지 않습니다");
  valid(1014, 4, 1);
  invalid(1015, 0, 2, L"채권 시장은 일/1틱 데이터만 제공합니다");
  invalid(1015, 1, 1, L"채권 시장은 일/1틱 데이터만 제공합니다");
  invalid(1015, 5, 1, L"채권 시장은 일/1틱 데이터만 제공합니다");
  valid(1015, 0, 1);
  valid(1015, 4, 7);  // days with any interval
  invalid(1016, 3, 1, L"신주인수권 시장은 년/분/틱/초 데이터를 제공하지 않습니다");
  invalid(1016, 0, 1, L"신주인수권 시장은 년/분/틱/초 데이터를 제공하지 않습니다");
  invalid(1016, 8, 1, L"신주인수권 시장은 년/분/틱/초 데이터를 제공하지 않습니다");
  valid(1016, 4, 1);
  valid(1016, 7, 1);
  for (const int market : {1013, 1010, 1056, 1058, 1001, 14, 16})  // no rule: valid
    for (int period = 0; period <= 8; ++period) valid(market, period, 1);
}

TEST(MarketsPeriods, CompressionTablesOfScreens) {
  for (const int screen : {323007, 367002, 378005, 400006, 400012, 400013, 400014, 400015, 400019, 400024, 400026,
                           401007, 401011, 401022, 700005, 711005}) {
    for (int period = 0; period <= 9; ++period)
      EXPECT_EQ(HasDataForCompression(screen, period), period == 4 ? 1 : 0) << screen << "/" << period;
  }
  for (const int screen : {367023, 367024, 378023, 378024, 402003, 402004}) {
    for (int period = 0; period <= 9; ++period)
      EXPECT_EQ(HasDataForCompression(screen, period), period == 1 || period == 2 ? 1 : 0) << screen;
  }
  for (int screen = 403001; screen <= 403005; ++screen) {
    for (int period = 0; period <= 9; ++period)
      EXPECT_EQ(HasDataForCompression(screen, period), period == 1 || period == 5 || period == 6 ? 0 : 1);
  }
  EXPECT_EQ(HasDataForCompression(403003, 7), 1);
  EXPECT_EQ(HasDataForCompression(403003, 5), 0);
  for (const int screen : {123, 403000, 403006, 400016, 711004, 0, -1}) {  // neighbours: the default
    for (int period = 0; period <= 9; ++period)
      EXPECT_EQ(HasDataForCompression(screen, period), period == 1 || period == 2 || period == 4 ? 1 : 0)
          << screen << "/" << period;
  }
}

TEST(MarketsPeriods, ScreenMarketTable) {
  EXPECT_EQ(HasDataForMarket(700005, 1001, 4, 1), 1);
  EXPECT_EQ(HasDataForMarket(700005, 1002, 4, 1), 1);
  EXPECT_EQ(HasDataForMarket(700005, 1003, 4, 1), 0);  // shares only
  EXPECT_EQ(HasDataForMarket(700005, 14, 4, 1), 0);
  EXPECT_EQ(HasDataForMarket(700005, 1001, 1, 1), 0);  // a daily screen
  EXPECT_EQ(HasDataForMarket(402003, 1003, 1, 1), 0);
  EXPECT_EQ(HasDataForMarket(402004, 1004, 2, 1), 0);
  EXPECT_EQ(HasDataForMarket(402003, 1001, 1, 1), 1);
  EXPECT_EQ(HasDataForMarket(402003, 1005, 2, 1), 1);
  EXPECT_EQ(HasDataForMarket(3401, 111, 4, 1), 1);
  EXPECT_EQ(HasDataForMarket(3402, 1001, 4, 1), 1);  // not a global screen
  EXPECT_EQ(HasDataForMarket(3403, 1001, 4, 1), 0);
  EXPECT_EQ(HasDataForMarket(1411, 14, 1, 1), 1);
  EXPECT_EQ(HasDataForMarket(1411, 1087, 1, 1), 0);
  EXPECT_EQ(HasDataForMarket(1415, 1087, 1, 1), 1);
  EXPECT_EQ(HasDataForMarket(123, 1011, 4, 1), 0);   // the market supplies nothing
  EXPECT_EQ(HasDataForMarket(123, 1015, 1, 1), 0);   // bonds: no minutes
  EXPECT_EQ(HasDataForMarket(123, 1015, 4, 1), 1);
  EXPECT_EQ(HasDataForMarket(123, 1001, 3, 1), 0);   // the screen: no period 3
}
