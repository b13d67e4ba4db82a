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
  // Each flag opens only its own pair.
  const auto plus = [&base](std::set<int> more) {
    more.insert(base.begin(), base.end());
    return more;
  };
  EXPECT_EQ(Members([](int m) { return IsF_O_DomesticMarket(m, 1, 0, 0); }), plus({15, 25}));
  EXPECT_EQ(Members([](int m) { return IsF_O_DomesticMarket(m, 0, 1, 0); }), plus({16, 26}));
  EXPECT_EQ(Members([](int m) { return IsF_O_DomesticMarket(m, 0, 0, 1); }), plus({111, 112}));
  EXPECT_EQ(Members([](int m) { return IsF_O_DomesticMarket(m, 1, 1, 1); }),
            (std::set<int>{14, 15, 16, 25, 26, 34, 44, 111, 112, 124, 134, 1007}));
  EXPECT_EQ(IsHugangtongMarket(1088, 1) * 10 + IsHugangtongMarket(1088, 2), 10);
  EXPECT_EQ(IsNightMarket(14, 0, 0) * 10 + IsNightMarket(14, 1, 0), 1);
  EXPECT_EQ(IsNightMarket(1088, 0, 1) * 100 + IsNightMarket(1088, 1, 0) * 10 + IsNightMarket(1087, 0, 1), 101);
}

TEST(MarketsTags, KoreanAndExchangeTagsOnlyForTheirCodes) {
  std::wstring tags;
  for (const int m : {1001, 1002, 1070, 1071, 1078, 1087, 1088, 1089}) tags += GetMarketCateInfo(m).str();
  EXPECT_EQ(tags, L"-[거래소]-[코스닥]-[홍콩]-[상해]-[심천]-[NYSE]-[NASDAQ]-[AMEX]");
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
  const wchar_t* const elw = L"ELW 시장은 주/월/년 데이터를 제공하지 않습니다";
  const wchar_t* const bond = L"채권 시장은 일/1틱 데이터만 제공합니다";
  const wchar_t* const warrant = L"신주인수권 시장은 년/분/틱/초 데이터를 제공하지 않습니다";
  invalid(15, 8, 1, L"주식 선물 시장은 년 데이터를 제공하지 않습니다");
  const struct { int market, period, interval; const wchar_t* text; } rules[] = {
      {1014, 5, 1, elw}, {1014, 8, 1, elw}, {1015, 0, 2, bond}, {1015, 1, 1, bond}, {1015, 5, 1, bond},
      {1016, 3, 1, warrant}, {1016, 0, 1, warrant}, {1016, 8, 1, warrant},
      {15, 7, 1, nullptr}, {15, 9, 1, nullptr}, {1014, 4, 1, nullptr}, {1015, 0, 1, nullptr},
      {1015, 4, 7, nullptr}, {1016, 4, 1, nullptr}, {1016, 7, 1, nullptr}};  // bonds: days with any interval
  for (const auto& r : rules) {
    if (r.text != nullptr) {
      invalid(r.market, r.period, r.interval, r.text);
    } else {
      valid(r.market, r.period, r.interval);
    }
  }
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
  for (const int screen : {123, 403000, 403006, 400016, 711004, 0, -1}) {  // neighbours: the default
    for (int period = 0; period <= 9; ++period)
      EXPECT_EQ(HasDataForCompression(screen, period), period == 1 || period == 2 || period == 4 ? 1 : 0)
          << screen << "/" << period;
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
