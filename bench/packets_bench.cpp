// Packet benchmarks, each paired with the plain alternative in the same run.
//
// Pairs are named "<Case>/ours" and "<Case>/plain"; after the run a summary
// prints ours/plain for each pair next to its target. The peak-memory case
// reports the resident high-water mark while a packet grows to 10 million
// elements by Add, against the 80 MB of payload.
//
//   ./build/bench/packets_bench --benchmark_min_time=0.5
#include <benchmark/benchmark.h>

#include <cstdio>
#include <map>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "bench_util.h"
#include "chartcore/packets/packet.h"
#include "chartcore/packets/packet_memory.h"

namespace {

constexpr int kTenMillion = 10000000;
constexpr int kOneMillion = 1000000;
constexpr double kEmpty = chartcore::kPacketEmptyValue;

// 10M values in [-500, 500) with every 100th-ish one empty, fixed seed.
const std::vector<double>& SampleValues(int seed) {
  static std::map<int, std::vector<double>> cache;
  std::vector<double>& v = cache[seed];
  if (v.empty()) {
    std::mt19937 rng(static_cast<unsigned>(seed));
    std::uniform_real_distribution<double> value(-500, 500);
    v.resize(kTenMillion);
    for (double& x : v) x = (rng() % 100 == 0) ? kEmpty : value(rng);
  }
  return v;
}

CPacket SamplePacket(int seed) {
  CPacket p;
  const std::vector<double>& v = SampleValues(seed);
  p.Copy(v.data(), static_cast<int>(v.size()));
  return p;
}

// ---------------------------------------------------------------------------
// Add of 10M values
// ---------------------------------------------------------------------------

void AddOurs(benchmark::State& state) {
  for (auto _ : state) {
    CPacket p;
    for (int i = 0; i < kTenMillion; ++i) p.Add(i);
    benchmark::DoNotOptimize(p.GetPacket());
  }
}
BENCHMARK(AddOurs)->Name("Add10M/ours")->Unit(benchmark::kMillisecond);

void AddPlain(benchmark::State& state) {
  for (auto _ : state) {
    std::vector<double> v;
    for (int i = 0; i < kTenMillion; ++i) v.push_back(i);
    benchmark::DoNotOptimize(v.data());
  }
}
BENCHMARK(AddPlain)->Name("Add10M/plain")->Unit(benchmark::kMillisecond);

// ---------------------------------------------------------------------------
// GetMaxMinValue over 10M values, 1% empty
// ---------------------------------------------------------------------------

void MaxMinOurs(benchmark::State& state) {
  CPacket p = SamplePacket(1);
  double mx = 0, mn = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(p.GetMaxMinValue(0, kTenMillion - 1, mx, mn));
  }
  state.SetBytesProcessed(state.iterations() * kTenMillion * static_cast<int64_t>(sizeof(double)));
}
BENCHMARK(MaxMinOurs)->Name("MaxMin10M/ours")->Unit(benchmark::kMillisecond);

void MaxMinPlain(benchmark::State& state) {
  const std::vector<double>& v = SampleValues(1);
  for (auto _ : state) {
    double mx = chartcore::kPacketNoMaxValue, mn = kEmpty;
    for (double x : v) {
      if (x == kEmpty) continue;
      if (x > mx) mx = x;
      if (x < mn) mn = x;
    }
    benchmark::DoNotOptimize(mx - mn);
  }
  state.SetBytesProcessed(state.iterations() * kTenMillion * static_cast<int64_t>(sizeof(double)));
}
BENCHMARK(MaxMinPlain)->Name("MaxMin10M/plain")->Unit(benchmark::kMillisecond);

// ---------------------------------------------------------------------------
// operator+ and operator* of two 10M packets
// ---------------------------------------------------------------------------

template <int kCode>
void ArithOurs(benchmark::State& state) {
  CPacket a = SamplePacket(2);
  CPacket b = SamplePacket(3);
  for (auto _ : state) {
    CPacket r = kCode == 0 ? a + b : a * b;
    benchmark::DoNotOptimize(r.GetPacket());
  }
}
BENCHMARK_TEMPLATE(ArithOurs, 0)->Name("Plus10M/ours")->Unit(benchmark::kMillisecond);
BENCHMARK_TEMPLATE(ArithOurs, 2)->Name("Multiply10M/ours")->Unit(benchmark::kMillisecond);

template <int kCode>
void ArithPlain(benchmark::State& state) {
  const std::vector<double>& a = SampleValues(2);
  const std::vector<double>& b = SampleValues(3);
  for (auto _ : state) {
    std::unique_ptr<double[]> out(new double[kTenMillion]);
    for (int i = 0; i < kTenMillion; ++i) {
      const double x = a[static_cast<std::size_t>(i)], y = b[static_cast<std::size_t>(i)];
      out[static_cast<std::size_t>(i)] = (x == kEmpty || y == kEmpty) ? kEmpty : (kCode == 0 ? x + y : x * y);
    }
    benchmark::DoNotOptimize(out.get());
  }
}
BENCHMARK_TEMPLATE(ArithPlain, 0)->Name("Plus10M/plain")->Unit(benchmark::kMillisecond);
BENCHMARK_TEMPLATE(ArithPlain, 2)->Name("Multiply10M/plain")->Unit(benchmark::kMillisecond);

// ---------------------------------------------------------------------------
// AddBasic of 1M bars, layout PST_OHLCV_RATIO
// ---------------------------------------------------------------------------

void AddBasicOurs(benchmark::State& state) {
  for (auto _ : state) {
    CPacketMemory m;
    m.SetPacketStructType(PST_OHLCV_RATIO);
    for (int i = 0; i < kOneMillion; ++i) {
      tagPacketCoreData r;
      r.m_dDate = i;
      r.m_dOpen = i + 1;
      r.m_dHigh = i + 2;
      r.m_dLow = i + 3;
      r.m_dClose = i + 4;
      r.m_dVolume = i + 5;
      m.AddBasic(r);
    }
    benchmark::DoNotOptimize(m.GetPacket(PDT_CLOSE));
  }
}
BENCHMARK(AddBasicOurs)->Name("AddBasic1M/ours")->Unit(benchmark::kMillisecond);

void AddBasicPlain(benchmark::State& state) {
  for (auto _ : state) {
    std::vector<double> cols[7];
    for (int i = 0; i < kOneMillion; ++i) {
      cols[0].push_back(i);
      cols[1].push_back(i + 1);
      cols[2].push_back(i + 2);
      cols[3].push_back(i + 3);
      cols[4].push_back(i + 4);
      cols[5].push_back(i + 5);
      cols[6].push_back(1.0);
    }
    benchmark::DoNotOptimize(cols[4].data());
  }
}
BENCHMARK(AddBasicPlain)->Name("AddBasic1M/plain")->Unit(benchmark::kMillisecond);

// ---------------------------------------------------------------------------
// Peak memory growing to 10M elements by Add
// ---------------------------------------------------------------------------

template <bool kOurs>
void PeakMemory(benchmark::State& state) {
  double peak_mb = 0;
  for (auto _ : state) {
    chartcore_bench::ResetPeak();
    const long before = chartcore_bench::StatusKb("VmRSS");
    if (kOurs) {
      CPacket p;
      for (int i = 0; i < kTenMillion; ++i) p.Add(i);
      benchmark::DoNotOptimize(p.GetPacket());
    } else {
      std::vector<double> v;
      for (int i = 0; i < kTenMillion; ++i) v.push_back(i);
      benchmark::DoNotOptimize(v.data());
    }
    peak_mb = static_cast<double>(chartcore_bench::StatusKb("VmHWM") - before) / 1024.0;
  }
  state.counters["peak_MB"] = peak_mb;
  state.counters["peak_per_payload"] = peak_mb * 1024.0 * 1024.0 / (kTenMillion * sizeof(double));
}
BENCHMARK_TEMPLATE(PeakMemory, true)->Name("PeakMemory10M/ours")->Iterations(1)->Unit(benchmark::kMillisecond);
BENCHMARK_TEMPLATE(PeakMemory, false)->Name("PeakMemory10M/plain")->Iterations(1)->Unit(benchmark::kMillisecond);

// ---------------------------------------------------------------------------
// Ratio summary
// ---------------------------------------------------------------------------

// One line per pair: ours / plain in wall and CPU time, and its target.
void PrintRatios(const chartcore_bench::RatioReporter& r) {
  std::printf("\nratios ours / plain (wall, cpu; target):\n");
  const struct {
    const char* name;
    double target;
  } pairs[] = {{"Add10M", 1.5},    {"MaxMin10M", 1.1},  {"Plus10M", 1.5},
               {"Multiply10M", 1.5}, {"AddBasic1M", 2.0}};
  for (const auto& pair : pairs) {
    const std::string ours = std::string(pair.name) + "/ours", plain = std::string(pair.name) + "/plain";
    if (r.Wall(ours) <= 0 || r.Wall(plain) <= 0) continue;
    const double cpuRatio = r.Cpu(plain) > 0 ? r.Cpu(ours) / r.Cpu(plain) : 0.0;
    std::printf("  %-12s %.2f  %.2f  (target <= %.1f)\n", pair.name, r.Wall(ours) / r.Wall(plain), cpuRatio,
                pair.target);
  }
  // Iterations(1) puts its suffix on the name the run reports.
  const double peak = r.Counter("PeakMemory10M/ours/iterations:1", "peak_per_payload");
  if (peak > 0) std::printf("  %-12s %.2f x payload  (target <= 2.0)\n", "PeakMemory", peak);
}

}  // namespace

int main(int argc, char** argv) { return chartcore_bench::RunWithRatios(argc, argv, PrintRatios); }
