#include "chartcore/foundation/markets.h"

#include <functional>
#include <set>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace {

// Every code from -5 to 1500 and some far ones: each predicate must be true
// exactly on its set, so neighbours of each member are checked too.
std::set<int> Members(const std::function<int(int)>& p) {
  std::set<int> out;
  for (int code = -5; code <= 1500; ++code) {
    if (p(code) != 0) out.insert(code);
  }
  for (const int code : {3401, 3402, 3403, 3404, 3405, 403001, 700005, 2147483647, -2147483647 - 1}) {
    if (p(code) != 0) out.insert(code);
  }
  return out;
}

}  // namespace

TEST(MarketsFamilies, EachSetIsExactlyItsCodes) {
  using std::placeholders::_1;
  const std::set<int> domestic = {14, 34, 44, 124, 134, 1007}, night = {44, 54, 111, 112, 126, 1025, 1193};
  const std::set<int> china = {1070, 1071, 1078}, usa = {1087, 1088, 1089};
  const auto with = [](std::set<int> set, std::set<int> more) {
    set.insert(more.begin(), more.end());
    return set;
  };
  const struct { std::function<int(int)> predicate; std::set<int> members; } cases[] = {
      {IsFutureDomesticMarket, {14, 15, 16, 44, 124, 1007}}, {IsOptionDomesticMarket, {25, 26, 34, 134}},
      {IsGlobalMarket, {111, 112}}, {IsUSAMarket, usa}, {IsStockCodeMarket, {1001, 1002}},
      {IsIndustryMarket, {1003, 1004}}, {IsCMEHTSScreen, {1411, 1412, 1413, 1414}},
      {IsGlobalHTSScreen, {3401, 3403, 3404, 3405}},  // not 3402
      // A "with" flag widens a set only when it is exactly 1, each its own codes.
      {std::bind(IsF_O_DomesticMarket, _1, 0, 0, 0), domestic},
      {std::bind(IsF_O_DomesticMarket, _1, 2, -1, 2), domestic},
      {std::bind(IsF_O_DomesticMarket, _1, -1, 2, -1), domestic},
      {std::bind(IsF_O_DomesticMarket, _1, 1, 0, 0), with(domestic, {15, 25})},
      {std::bind(IsF_O_DomesticMarket, _1, 0, 1, 0), with(domestic, {16, 26})},
      {std::bind(IsF_O_DomesticMarket, _1, 0, 0, 1), with(domestic, {111, 112})},
      {std::bind(IsF_O_DomesticMarket, _1, 1, 1, 1), with(domestic, {15, 16, 25, 26, 111, 112})},
      {std::bind(IsHugangtongMarket, _1, 0), china}, {std::bind(IsHugangtongMarket, _1, 2), china},
      {std::bind(IsHugangtongMarket, _1, -1), china}, {std::bind(IsHugangtongMarket, _1, 1), with(china, usa)},
      {std::bind(IsNightMarket, _1, 0, 0), night}, {std::bind(IsNightMarket, _1, 2, -1), night},
      {std::bind(IsNightMarket, _1, -1, 2), night}, {std::bind(IsNightMarket, _1, 1, 0), with(night, {14})},
      {std::bind(IsNightMarket, _1, 0, 1), with(night, usa)},
  };
  int row = 0;
  for (const auto& c : cases) EXPECT_EQ(Members(c.predicate), c.members) << "row " << row++;
}

TEST(MarketsTags, KoreanAndExchangeTagsOnlyForTheirCodes) {
  std::wstring tags;
  for (const int m : {1001, 1002, 1070, 1071, 1078, 1087, 1088, 1089}) tags += GetMarketCateInfo(m).str();
  EXPECT_EQ(tags, L"-[거래소]-[코스닥]-[홍콩]-[상해]-[심천]-[NYSE]-[NASDAQ]-[AMEX]");
  EXPECT_EQ(Members([](int m) { return GetMarketCateInfo(m).IsEmpty() ? 0 : 1; }),
            (std::set<int>{1001, 1002, 1070, 1071, 1078, 1087, 1088, 1089}));
}

TEST(MarketsPeriods, InvalidPairsGiveTheirMessageAndValidOnesClearIt) {
  const wchar_t* const bond = L"채권 시장은 일/1틱 데이터만 제공합니다";
  // refused[p] is '1' when period p is refused with the message.
  const struct { int market, interval; const char* refused; const wchar_t* message; } rules[] = {
      {1011, 1, "1111111111", L"ECN 시장은 데이터를 제공하지 않습니다"},
      {1000, 1, "1111111111", L"비상장 주식 시장은 데이터를 제공하지 않습니다"},
      {1012, 1, "1111111111", L"장외 시장은 데이터를 제공하지 않습니다"},
      {1057, 1, "1111111111", L"주식선물 스프레드 시장은 데이터를 제공하지 않습니다"},
      {15, 1, "0000000010", L"주식 선물 시장은 년 데이터를 제공하지 않습니다"},
      {1014, 1, "0000011111", L"ELW 시장은 주/월/년 데이터를 제공하지 않습니다"},
      {1015, 1, "0111011111", bond}, {1015, 2, "1111011111", bond}, {1015, 7, "1111011111", bond},  // 1-tick only
      {1016, 1, "1111000010", L"신주인수권 시장은 년/분/틱/초 데이터를 제공하지 않습니다"},
      {1010, 1, "0000000000", L""}, {1013, 1, "0000000000", L""}, {1056, 1, "0000000000", L""},  // no rule
      {1058, 1, "0000000000", L""}, {1001, 1, "0000000000", L""}, {14, 1, "0000000000", L""},
      {16, 1, "0000000000", L""}};
  for (const auto& r : rules) {
    for (int period = 0; period <= 9; ++period) {
      CString message = L"left over";
      const bool refused = r.refused[period] == '1';
      SCOPED_TRACE(std::to_string(r.market) + "/" + std::to_string(period));
      EXPECT_EQ(IsValidMarket_Period(r.market, period, r.interval, message), refused ? 0 : 1);
      EXPECT_EQ(message.str(), refused ? r.message : L"");
    }
  }
}

TEST(MarketsPeriods, CompressionTablesOfScreens) {
  // offered[p] is '1' when the screen offers period p.
  const struct { std::vector<int> screens; const char* offered; } tables[] = {
      {{323007, 367002, 378005, 400006, 400012, 400013, 400014, 400015, 400019, 400024, 400026, 401007,
        401011, 401022, 700005, 711005}, "0000100000"},  // daily screens
      {{367023, 367024, 378023, 378024, 402003, 402004}, "0110000000"},
      {{403001, 403002, 403003, 403004, 403005}, "1011100111"},
      {{123, 403000, 403006, 400016, 711004, 0, -1}, "0110100000"}};  // neighbours: the default
  for (const auto& t : tables) {
    for (const int screen : t.screens) {
      for (int period = 0; period <= 9; ++period) {
        EXPECT_EQ(HasDataForCompression(screen, period), t.offered[period] - '0') << screen << "/" << period;
      }
    }
  }
}

TEST(MarketsPeriods, ScreenMarketTable) {
  const struct { int screen, market, period, has; } cases[] = {
      {700005, 1001, 4, 1}, {700005, 1002, 4, 1}, {700005, 1003, 4, 0}, {700005, 14, 4, 0},  // shares only
      {700005, 1001, 1, 0},                                                                  // a daily screen
      {402003, 1003, 1, 0}, {402004, 1004, 2, 0}, {402003, 1001, 1, 1}, {402003, 1005, 2, 1},
      {3401, 111, 4, 1}, {3402, 1001, 4, 1}, {3403, 1001, 4, 0},  // 3402 is not a global screen
      {1411, 14, 1, 1}, {1411, 1087, 1, 0}, {1415, 1087, 1, 1},
      {123, 1011, 4, 0}, {123, 1015, 1, 0}, {123, 1015, 4, 1},   // the market supplies nothing; bonds: no minutes
      {123, 1001, 3, 0}};                                         // the screen: no period 3
  for (const auto& c : cases) {
    EXPECT_EQ(HasDataForMarket(c.screen, c.market, c.period, 1), c.has) << c.screen << "/" << c.market;
  }
}
