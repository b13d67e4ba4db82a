#include "chartcore/foundation/markets.h"

#include <initializer_list>

namespace {

bool IsOneOf(int code, std::initializer_list<int> set) {
  for (const int c : set)
    if (c == code) return true;
  return false;
}

// The period codes of the selector.
constexpr int kPeriodTick = 0;
constexpr int kPeriodDay = 4;
constexpr int kPeriodWeekAndAbove = 5;
constexpr int kPeriodYear = 8;

}  // namespace

// ---------------------------------------------------------------------------
// Market families
// ---------------------------------------------------------------------------

int IsFutureDomesticMarket(int market) { return IsOneOf(market, {14, 44, 124, 1007, 15, 16}) ? 1 : 0; }

int IsOptionDomesticMarket(int market) { return IsOneOf(market, {34, 134, 25, 26}) ? 1 : 0; }

int IsF_O_DomesticMarket(int market, int withStock, int with16And26, int withGlobal) {
  if (IsOneOf(market, {14, 44, 34, 124, 134, 1007})) return 1;
  if (withStock == 1 && IsOneOf(market, {15, 25})) return 1;
  if (with16And26 == 1 && IsOneOf(market, {16, 26})) return 1;
  if (withGlobal == 1 && IsGlobalMarket(market)) return 1;
  return 0;
}

int IsGlobalMarket(int market) { return IsOneOf(market, {111, 112}) ? 1 : 0; }

int IsHugangtongMarket(int market, int withUSA) {
  if (IsOneOf(market, {1070, 1071, 1078})) return 1;
  return withUSA == 1 ? IsUSAMarket(market) : 0;
}

int IsUSAMarket(int market) { return IsOneOf(market, {1087, 1088, 1089}) ? 1 : 0; }

int IsStockCodeMarket(int market) { return IsOneOf(market, {1001, 1002}) ? 1 : 0; }

int IsIndustryMarket(int market) { return IsOneOf(market, {1003, 1004}) ? 1 : 0; }

int IsNightMarket(int market, int with14, int withUSA) {
  if (IsOneOf(market, {44, 126, 111, 112, 54, 1025, 1193})) return 1;
  if (with14 == 1 && market == 14) return 1;
  return withUSA == 1 ? IsUSAMarket(market) : 0;
}

// ---------------------------------------------------------------------------
// Screens
// ---------------------------------------------------------------------------

int IsCMEHTSScreen(int screen) { return screen >= 1411 && screen <= 1414 ? 1 : 0; }

int IsGlobalHTSScreen(int screen) { return IsOneOf(screen, {3401, 3403, 3404, 3405}) ? 1 : 0; }

// ---------------------------------------------------------------------------
// Tags and periods
// ---------------------------------------------------------------------------

CString GetMarketCateInfo(int market) {
  switch (market) {
    case 1001: return CString(L"-[거래소]");
    case 1002: return CString(L"-[코스닥]");
    case 1070: return CString(L"-[홍콩]");
    case 1071: return CString(L"-[상해]");
    case 1078: return CString(L"-[심천]");
    case 1087: return CString(L"-[NYSE]");
    case 1088: return CString(L"-[NASDAQ]");
    case 1089: return CString(L"-[AMEX]");
    default: return CString();
  }
}

int IsValidMarket_Period(int market, int period, int interval, CString& message) {
  message.Empty();
  const wchar_t* reason = nullptr;
  switch (market) {
    case 1011:
      reason = L"ECN 시장은 데이터를 제공하지 않습니다";
      break;
    case 15:
      if (period == kPeriodYear) reason = L"주식 선물 시장은 년 데이터를 제공하지 않습니다";
      break;
    case 1000:
      reason = L"비상장 주식 시장은 데이터를 제공하지 않습니다";
      break;
    case 1012:
      reason = L"장외 시장은 데이터를 제공하지 않습니다";
      break;
    case 1014:
      if (period >= kPeriodWeekAndAbove) reason = L"ELW 시장은 주/월/년 데이터를 제공하지 않습니다";
      break;
    case 1015:
      if (!(period == kPeriodDay || (period == kPeriodTick && interval == 1))) {
        reason = L"채권 시장은 일/1틱 데이터만 제공합니다";
      }
      break;
    case 1016:
      if (period < kPeriodDay || period == kPeriodYear) {
        reason = L"신주인수권 시장은 년/분/틱/초 데이터를 제공하지 않습니다";
      }
      break;
    case 1057:
      reason = L"주식선물 스프레드 시장은 데이터를 제공하지 않습니다";
      break;
    default:
      break;
  }
  if (!reason) return 1;
  message = reason;
  return 0;
}

int HasDataForCompression(int screen, int period) {
  if (IsOneOf(screen, {323007, 367002, 378005, 400006, 400012, 400013, 400014, 400015, 400019, 400024, 400026,
                       401007, 401011, 401022, 700005, 711005})) {
    return period == 4 ? 1 : 0;
  }
  if (IsOneOf(screen, {367023, 367024, 378023, 378024, 402003, 402004})) return period == 1 || period == 2 ? 1 : 0;
  if (screen >= 403001 && screen <= 403005) return period == 1 || period == 5 || period == 6 ? 0 : 1;
  return period == 1 || period == 2 || period == 4 ? 1 : 0;
}

int HasDataForMarket(int screen, int market, int period, int interval) {
  CString reason;
  if (!IsValidMarket_Period(market, period, interval, reason)) return 0;
  if (!HasDataForCompression(screen, period)) return 0;
  if (screen == 700005) return IsStockCodeMarket(market);
  if (screen == 402003 || screen == 402004) return IsIndustryMarket(market) ? 0 : 1;
  if (IsGlobalHTSScreen(screen)) return IsGlobalMarket(market);
  if (IsCMEHTSScreen(screen)) return IsNightMarket(market, 1, 0);
  return 1;
}
