// Archive throughput against the plain alternatives, in one run:
//  - one million doubles written and read back through a CArchive on a
//    CMemFile, against memcpy-ing them one by one into and out of a
//    std::vector<unsigned char> (and against two bulk memcpy calls);
//  - 100,000 short CStrings read from an archive, against decoding the same
//    UTF-16 bytes into std::wstring by hand, with heap allocations counted.
// The summary lines at the end print the ratios.
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

#define CHARTCORE_BENCH_COUNT_ALLOCATIONS
#include "bench_util.h"

#include "chartcore/platform/archive.h"
#include "chartcore/platform/file.h"

namespace {

constexpr int kDoubles = 1000000;
constexpr int kStrings = 100000;

std::vector<double> MakeValues() {
  std::vector<double> v(kDoubles);
  for (int i = 0; i < kDoubles; ++i) v[static_cast<size_t>(i)] = i * 0.25 + 1000.0;
  return v;
}

void BM_ArchiveDoubles(benchmark::State& state) {
  const std::vector<double> values = MakeValues();
  for (auto _ : state) {
    CMemFile file;
    {
      CArchive ar(&file, CArchive::store);
      for (double d : values) ar << d;
      ar.Close();
    }
    file.SeekToBegin();
    double sum = 0;
    {
      CArchive ar(&file, CArchive::load);
      double d = 0;
      for (int i = 0; i < kDoubles; ++i) {
        ar >> d;
        sum += d;
      }
    }
    benchmark::DoNotOptimize(sum);
  }
}
BENCHMARK(BM_ArchiveDoubles)->Unit(benchmark::kMillisecond);

void BM_MemcpyDoublesEach(benchmark::State& state) {
  const std::vector<double> values = MakeValues();
  for (auto _ : state) {
    std::vector<unsigned char> bytes(values.size() * sizeof(double));
    unsigned char* out = bytes.data();
    for (double d : values) {
      std::memcpy(out, &d, sizeof d);
      out += sizeof d;
    }
    benchmark::ClobberMemory();
    double sum = 0;
    const unsigned char* in = bytes.data();
    for (int i = 0; i < kDoubles; ++i) {
      double d;
      std::memcpy(&d, in, sizeof d);
      in += sizeof d;
      sum += d;
    }
    benchmark::DoNotOptimize(sum);
  }
}
BENCHMARK(BM_MemcpyDoublesEach)->Unit(benchmark::kMillisecond);

void BM_MemcpyDoublesBulk(benchmark::State& state) {
  const std::vector<double> values = MakeValues();
  std::vector<double> back(values.size());
  for (auto _ : state) {
    std::vector<unsigned char> bytes(values.size() * sizeof(double));
    std::memcpy(bytes.data(), values.data(), bytes.size());
    benchmark::ClobberMemory();
    std::memcpy(back.data(), bytes.data(), bytes.size());
    double sum = 0;
    for (double d : back) sum += d;
    benchmark::DoNotOptimize(sum);
  }
}
BENCHMARK(BM_MemcpyDoublesBulk)->Unit(benchmark::kMillisecond);

// The strings as an archive stores them: "Var_00042"-like names of 9 units.
std::vector<BYTE> StoredStrings() {
  CMemFile file;
  {
    CArchive ar(&file, CArchive::store);
    wchar_t name[16];
    for (int i = 0; i < kStrings; ++i) {
      std::swprintf(name, 16, L"Var_%05d", i);
      ar << CString(name);
    }
    ar.Close();
  }
  return std::vector<BYTE>(file.GetData(), file.GetData() + file.GetLength());
}

void BM_ArchiveReadShortStrings(benchmark::State& state) {
  const std::vector<BYTE> bytes = StoredStrings();
  std::vector<CString> out(kStrings);
  size_t allocations = 0;
  for (auto _ : state) {
    CMemFile file(const_cast<BYTE*>(bytes.data()), static_cast<UINT>(bytes.size()));
    CArchive ar(&file, CArchive::load);
    const size_t before = chartcore_bench::Allocations();
    for (CString& s : out) ar >> s;
    allocations = chartcore_bench::Allocations() - before;
    benchmark::DoNotOptimize(out.data());
  }
  state.counters["allocs_per_string"] = static_cast<double>(allocations) / kStrings;
}
BENCHMARK(BM_ArchiveReadShortStrings)->Unit(benchmark::kMillisecond);

void BM_PlainDecodeShortStrings(benchmark::State& state) {
  const std::vector<BYTE> bytes = StoredStrings();
  std::vector<std::wstring> out(kStrings);
  for (auto _ : state) {
    const BYTE* p = bytes.data();
    for (std::wstring& s : out) {
      const size_t n = p[3];  // FF FE FF len: every name here is short
      p += 4;
      std::wstring text;
      text.reserve(n);
      for (size_t k = 0; k < n; ++k, p += 2) text.push_back(static_cast<wchar_t>(p[0] | (p[1] << 8)));
      s = std::move(text);
    }
    benchmark::DoNotOptimize(out.data());
  }
}
BENCHMARK(BM_PlainDecodeShortStrings)->Unit(benchmark::kMillisecond);

}  // namespace

int main(int argc, char** argv) {
  return chartcore_bench::RunWithRatios(argc, argv, [](const chartcore_bench::RatioReporter& r) {
    r.PrintRatio("archive / per-value memcpy (target <= 4)", "BM_ArchiveDoubles", "BM_MemcpyDoublesEach");
    r.PrintRatio("archive / bulk memcpy", "BM_ArchiveDoubles", "BM_MemcpyDoublesBulk");
    r.PrintRatio("archive strings / plain decode", "BM_ArchiveReadShortStrings", "BM_PlainDecodeShortStrings");
  });
}
