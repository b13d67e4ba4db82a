// Market classification by market code.
//
// Every chart request names its market by an int code (1001 exchange-listed
// shares, 14 index futures, 111 overseas futures, 1087 NYSE, ...). Screens, the
// period selector and the price formatter ask these predicates which family a
// code belongs to, which periods a market and a screen supply, and which short
// tag to show after an item name. Predicates return 1 (true) or 0 (false);
// "with" flags widen a set only when they are exactly 1 (a flag of 2 counts as
// 0). An unknown code is simply outside every set.
//
//   IsF_O_DomesticMarket(15, 1, 0, 0);          // 1: stock futures included
//   GetMarketCateInfo(1002);                     // "-[코스닥]"
//   CString why;
//   if (!IsValidMarket_Period(1015, 0, 2, why)) { /* why: bonds give 1-tick only */ }
#ifndef CHARTCORE_FOUNDATION_MARKETS_H_
#define CHARTCORE_FOUNDATION_MARKETS_H_

#include "chartcore/platform/cstring.h"
#include "chartcore/platform/export.h"

// Period codes as the period selector passes them: 0 tick (interval 1 is
// 1-tick), 1-3 the intraday minute and second periods, 4 day, 5 and above
// the week/month/year group, 8 year.

// ---------------------------------------------------------------------------
// Market families
// ---------------------------------------------------------------------------

// IsFutureDomesticMarket: domestic futures 14, 15 (stock futures), 16, 44,
// 124 and 1007.
CHARTCORE_API int IsFutureDomesticMarket(int market);

// IsOptionDomesticMarket: domestic options 25, 26, 34 and 134.
CHARTCORE_API int IsOptionDomesticMarket(int market);

// IsF_O_DomesticMarket: domestic futures and options 14, 34, 44, 124, 134 and
// 1007; plus 15 and 25 (stock futures and options) when withStock is 1, 16 and
// 26 when with16And26 is 1, and the overseas 111 and 112 when withGlobal is 1.
CHARTCORE_API int IsF_O_DomesticMarket(int market, int withStock, int with16And26, int withGlobal);

// IsGlobalMarket: the overseas futures markets 111 and 112.
CHARTCORE_API int IsGlobalMarket(int market);

// IsHugangtongMarket: Hong Kong 1070, Shanghai 1071 and Shenzhen 1078; plus
// the U.S. exchanges 1087-1089 when withUSA is 1.
CHARTCORE_API int IsHugangtongMarket(int market, int withUSA);

// IsUSAMarket: NYSE 1087, NASDAQ 1088 and AMEX 1089.
CHARTCORE_API int IsUSAMarket(int market);

// IsStockCodeMarket: exchange-listed 1001 and KOSDAQ 1002 shares.
CHARTCORE_API int IsStockCodeMarket(int market);

// IsIndustryMarket: the industry (sector index) markets 1003 and 1004.
CHARTCORE_API int IsIndustryMarket(int market);

// IsNightMarket: markets with night trading 44, 54, 111, 112, 126, 1025 and
// 1193; plus 14 when with14 is 1 and 1087-1089 when withUSA is 1.
CHARTCORE_API int IsNightMarket(int market, int with14, int withUSA);

// ---------------------------------------------------------------------------
// Screens
// ---------------------------------------------------------------------------

// IsCMEHTSScreen: the CME screens 1411-1414.
CHARTCORE_API int IsCMEHTSScreen(int screen);

// IsGlobalHTSScreen: the global screens 3401, 3403, 3404 and 3405; 3402 is
// not one of them.
CHARTCORE_API int IsGlobalHTSScreen(int screen);

// ---------------------------------------------------------------------------
// Tags and periods
// ---------------------------------------------------------------------------

// GetMarketCateInfo: the tag shown after an item name: "-[거래소]" (1001),
// "-[코스닥]" (1002), "-[홍콩]" (1070), "-[상해]" (1071), "-[심천]" (1078),
// "-[NYSE]", "-[NASDAQ]", "-[AMEX]" (1087-1089); empty for any other code.
CHARTCORE_API CString GetMarketCateInfo(int market);

// IsValidMarket_Period: 1 when the market supplies data of the period (and
// tick interval); else 0 with the reason, in the user's words, in message
// (emptied first). ECN 1011, unlisted shares 1000, the OTC market 1012 and
// stock-futures spreads 1057 supply nothing; stock futures 15 no years; ELW
// 1014 no weeks, months or years; bonds 1015 only days and 1-tick; warrants
// 1016 no years and nothing below a day. Every other market is valid.
CHARTCORE_API int IsValidMarket_Period(int market, int period, int interval, CString& message);

// HasDataForCompression: 1 when the screen offers bars of the period. The
// daily screens (323007, 367002, 378005, 400006, 400012-400015, 400019,
// 400024, 400026, 401007, 401011, 401022, 700005, 711005) offer days only;
// 367023, 367024, 378023, 378024, 402003 and 402004 periods 1 and 2 only;
// 403001-403005 every period but 1, 5 and 6; every other screen 1, 2 and 4.
CHARTCORE_API int HasDataForCompression(int screen, int period);

// HasDataForMarket: 1 when the screen shows data of the market at the period
// and tick interval. A market must pass IsValidMarket_Period and the screen
// must offer the period (HasDataForCompression); beyond that, screens limited
// to some markets are:
//
//   screen                     shows
//   700005                     only 1001 and 1002 (shares)
//   402003, 402004             never 1003 and 1004 (industry indices)
//   3401, 3403, 3404, 3405     only 111 and 112 (overseas futures)
//   1411 - 1414                only the night markets and 14 (IsNightMarket
//                              with 14, without the U.S. exchanges)
//
// Every other screen shows every market.
CHARTCORE_API int HasDataForMarket(int screen, int market, int period, int interval);

#endif  // CHARTCORE_FOUNDATION_MARKETS_H_
