// Foundation hot paths against their plain alternatives, in the same run:
//  - the packed-date field getters and a comparison key over 10 million bar
//    dates, against a loop doing the same integer arithmetic inline;
//  - GetYPacketStringOfFormat over 1 million prices with codes 0, 2, 65 and
//    75, grouped and not, against the same texts built with the system's
//    swprintf (plus the same thousands grouping).
// The summary lines give library time / plain time for each pair.
#include <benchmark/benchmark.h>

#include <climits>
#include <cmath>
#include <cstdio>
#include <cwchar>
#include <random>
#include <string>
#include <vector>

#include "chartcore/foundation/datetime.h"
#include "chartcore/foundation/formatting.h"
#include "chartcore/packets/packet_types.h"
#include "bench_util.h"

namespace {

constexpr int kDates = 10000000;
constexpr int kPrices = 1000000;

// Minute bars of trading days from 2020 on, as a date column holds them.
const std::vector<double>& Dates() {
  static const std::vector<double> dates = [] {
    std::vector<double> out;
    out.reserve(kDates);
    int day = 0;
    while (static_cast<int>(out.size()) < kDates) {
      const double date = 20200101.0 + (day / 28) % 12 * 100 + (day / 336) * 10000 + day % 28;
      for (int minute = 0; minute < 390 && static_cast<int>(out.size()) < kDates; ++minute) {
        const int hhmm = (9 + minute / 60) * 100 + minute % 60;
        out.push_back(date * 1e6 + hhmm * 100.0);
      }
      ++day;
    }
    return out;
  }();
  return dates;
}

// Prices from 1 to 1,000,000 with cents, half of them negative changes.
const std::vector<double>& Prices() {
  static const std::vector<double> prices = [] {
    std::mt19937_64 rng(42);
    std::uniform_real_distribution<double> exponent(0.0, 6.0);
    std::vector<double> out(kPrices);
    for (double& p : out) {
      p = std::round(std::pow(10.0, exponent(rng)) * 100.0) / 100.0;
      if (rng() & 1) p = -p;
    }
    return out;
  }();
  return prices;
}

// ---------------------------------------------------------------------------
// Field getters
// ---------------------------------------------------------------------------

// The same truncation the getters use (int range, else INT_MIN).
inline int Trunc(double x) { return (x > -2147483649.0 && x < 2147483648.0) ? static_cast<int>(x) : INT_MIN; }
inline double DatePart(double v) { return v > 1e8 ? v / 1e6 : v; }
inline double TimePart(double v) { return v - 1e6 * static_cast<double>(Trunc(v / 1e6)); }

template <typename Getter>
void RunGetter(benchmark::State& state, Getter getter) {
  const std::vector<double>& dates = Dates();
  for (auto _ : state) {
    long long sum = 0;
    for (const double v : dates) sum += getter(v);
    benchmark::DoNotOptimize(sum);
  }
  state.SetItemsProcessed(state.iterations() * kDates);
}

void BM_GetYear(benchmark::State& s) { RunGetter(s, [](double v) { return GetYear(v); }); }
void BM_InlineYear(benchmark::State& s) {
  RunGetter(s, [](double v) { return Trunc(DatePart(v) + 0.0001) / 10000; });
}
void BM_GetMonth(benchmark::State& s) { RunGetter(s, [](double v) { return GetMonth(v); }); }
void BM_InlineMonth(benchmark::State& s) {
  RunGetter(s, [](double v) { return (Trunc(DatePart(v) + 0.0001) % 10000) / 100; });
}
void BM_GetDate(benchmark::State& s) { RunGetter(s, [](double v) { return GetDate(v); }); }
void BM_InlineDate(benchmark::State& s) {
  RunGetter(s, [](double v) { return Trunc(DatePart(v) + 0.5) % 100; });
}
void BM_GetTime(benchmark::State& s) { RunGetter(s, [](double v) { return GetTime(v); }); }
void BM_InlineTime(benchmark::State& s) {
  RunGetter(s, [](double v) { return v > 1e8 ? Trunc(TimePart(v)) : 0; });
}
void BM_GetCompMinute(benchmark::State& s) { RunGetter(s, [](double v) { return GetCompMinute(v); }); }
void BM_InlineCompMinute(benchmark::State& s) {
  RunGetter(s, [](double v) { return v > 1e8 ? Trunc(TimePart(v) + 0.0001) / 100 : 0; });
}

BENCHMARK(BM_GetYear)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_InlineYear)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_GetMonth)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_InlineMonth)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_GetDate)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_InlineDate)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_GetTime)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_InlineTime)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_GetCompMinute)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_InlineCompMinute)->Unit(benchmark::kMillisecond);

// ---------------------------------------------------------------------------
// Value texts
// ---------------------------------------------------------------------------

// The plain way: the system's swprintf for every number, then the grouping.
CString PlainText(double v, int code, int group) {
  if (std::fabs(v) < 1e-8) v = 0;
  if (v == chartcore::kPacketEmptyValue || v == chartcore::kPacketNoMaxValue || !(std::fabs(v) <= 1e18)) {
    return CString(L"N/A");
  }
  const bool grouped = group == 1 && std::fabs(v) >= 1000;
  wchar_t buf[64];
  if (code >= 65) {
    const double whole = std::trunc(v);
    std::swprintf(buf, 64, L"%.0f", whole);
    CString text(buf);
    if (grouped) InsertCommaWithSpace(text, 3);
    const double f = GetDecimalScaleFromFloat(code) * (v - whole);
    std::swprintf(buf, 64, code == 75 && f < 10 ? L"`0%.0f" : L"`%.0f", f);
    text += buf;
    return text;
  }
  std::swprintf(buf, 64, L"%.*f", code >= 1 && code <= 7 ? code : 0, v);
  CString text(buf);
  if (grouped) InsertCommaWithSpace(text, 3);
  return text;
}

template <typename Formatter>
void RunTexts(benchmark::State& state, Formatter format) {
  const std::vector<double>& prices = Prices();
  const int code = static_cast<int>(state.range(0));
  const int group = static_cast<int>(state.range(1));
  for (auto _ : state) {
    size_t length = 0;
    for (const double v : prices) length += static_cast<size_t>(format(v, code, group).GetLength());
    benchmark::DoNotOptimize(length);
  }
  state.SetItemsProcessed(state.iterations() * kPrices);
}

void BM_FormatText(benchmark::State& s) {
  RunTexts(s, [](double v, int code, int group) { return GetYPacketStringOfFormat(v, code, group); });
}
void BM_SwprintfText(benchmark::State& s) { RunTexts(s, PlainText); }

void TextArgs(benchmark::internal::Benchmark* b) {
  for (const int code : {0, 2, 65, 75})
    for (const int group : {0, 1}) b->Args({code, group});
  b->Unit(benchmark::kMillisecond);
}
BENCHMARK(BM_FormatText)->Apply(TextArgs);
BENCHMARK(BM_SwprintfText)->Apply(TextArgs);

// ---------------------------------------------------------------------------
// Ratios
// ---------------------------------------------------------------------------

// CPU time: the machine is shared, so wall time carries other loads.
void PrintRatios(const chartcore_bench::RatioReporter& r) {
  std::printf("\nlibrary CPU time / plain CPU time (getters: at most 1.5; texts: at most 0.33)\n");
  const auto print = [&r](const std::string& library, const std::string& plain) {
    if (r.Cpu(library) <= 0 || r.Cpu(plain) <= 0) return;
    std::printf("  %-28s / %-28s = %.2f\n", library.c_str(), plain.c_str(), r.Cpu(library) / r.Cpu(plain));
  };
  const char* getters[][2] = {{"BM_GetYear", "BM_InlineYear"},
                              {"BM_GetMonth", "BM_InlineMonth"},
                              {"BM_GetDate", "BM_InlineDate"},
                              {"BM_GetTime", "BM_InlineTime"},
                              {"BM_GetCompMinute", "BM_InlineCompMinute"}};
  for (const auto& pair : getters) print(pair[0], pair[1]);
  for (const int code : {0, 2, 65, 75}) {
    for (const int group : {0, 1}) {
      const std::string args = "/" + std::to_string(code) + "/" + std::to_string(group);
      print("BM_FormatText" + args, "BM_SwprintfText" + args);
    }
  }
}

}  // namespace

int main(int argc, char** argv) { return chartcore_bench::RunWithRatios(argc, argv, PrintRatios); }
