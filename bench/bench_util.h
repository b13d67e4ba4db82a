// What every benchmark program of the library shares: a console reporter
// that keeps each benchmark's time and counters so the program can print
// library / plain ratios after the run, process CPU time for hand-timed
// sections, resident-memory readings for peak-memory cases, and (opt-in)
// a count of heap allocations.
//
//   chartcore_bench::RatioReporter reporter;
//   benchmark::RunSpecifiedBenchmarks(&reporter);
//   reporter.PrintRatio("archive / memcpy (target <= 4)", "BM_Archive", "BM_Memcpy");
//
// A program that counts allocations defines CHARTCORE_BENCH_COUNT_ALLOCATIONS
// before including this header (once per program: it replaces the global
// operator new and delete) and reads chartcore_bench::Allocations().
#ifndef CHARTCORE_BENCH_BENCH_UTIL_H_
#define CHARTCORE_BENCH_BENCH_UTIL_H_

#include <atomic>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <fstream>
#include <map>
#include <new>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

namespace chartcore_bench {

// ---------------------------------------------------------------------------
// Ratios
// ---------------------------------------------------------------------------

// RatioReporter: prints to the console as usual and keeps, per benchmark
// name, the wall and CPU time of one iteration and the run's counters.
// Wall time comes first in the printed ratios; the CPU-time ratio beside it
// is the steadier one on a machine shared with other work.
class RatioReporter : public benchmark::ConsoleReporter {
 public:
  void ReportRuns(const std::vector<Run>& runs) override {
    for (const Run& run : runs) {
      if (run.run_type != Run::RT_Iteration || run.iterations <= 0 || run.error_occurred) continue;
      const std::string name = run.benchmark_name();
      m_wall[name] = run.GetAdjustedRealTime();
      m_cpu[name] = run.GetAdjustedCPUTime();
      for (const auto& counter : run.counters) m_counters[name][counter.first] = counter.second.value;
    }
    ConsoleReporter::ReportRuns(runs);
  }

  // Wall / Cpu: the time of one iteration in the benchmark's unit; 0 when
  // that benchmark did not run (filtered out).
  double Wall(const std::string& name) const { return Find(m_wall, name); }
  double Cpu(const std::string& name) const { return Find(m_cpu, name); }
  // Counter: a counter the benchmark set, 0 when it set none of that name.
  double Counter(const std::string& name, const std::string& counter) const {
    const auto it = m_counters.find(name);
    return it == m_counters.end() ? 0.0 : Find(it->second, counter);
  }

  // PrintRatio: "label: 1.23x wall, 1.10x cpu" for library / plain; prints
  // nothing when either benchmark did not run.
  void PrintRatio(const std::string& label, const std::string& library, const std::string& plain) const {
    if (Wall(library) <= 0 || Wall(plain) <= 0 || Cpu(plain) <= 0) return;
    std::printf("%s: %.2fx wall, %.2fx cpu\n", label.c_str(), Wall(library) / Wall(plain), Cpu(library) / Cpu(plain));
  }

 private:
  static double Find(const std::map<std::string, double>& values, const std::string& key) {
    const auto it = values.find(key);
    return it == values.end() ? 0.0 : it->second;
  }

  std::map<std::string, double> m_wall;
  std::map<std::string, double> m_cpu;
  std::map<std::string, std::map<std::string, double>> m_counters;
};

// RunWithRatios: the usual main of a benchmark program; printRatios runs
// after every benchmark has reported. Returns main's exit code.
template <class PrintRatios>
int RunWithRatios(int argc, char** argv, PrintRatios printRatios) {
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  RatioReporter reporter;
  benchmark::RunSpecifiedBenchmarks(&reporter);
  printRatios(reporter);
  benchmark::Shutdown();
  return 0;
}

// ---------------------------------------------------------------------------
// Time and memory of the process
// ---------------------------------------------------------------------------

// CpuSeconds: process CPU seconds, for sections a benchmark times by hand
// (steadier than wall time under load).
inline double CpuSeconds() { return static_cast<double>(std::clock()) / CLOCKS_PER_SEC; }

// StatusKb: a kilobyte figure from /proc/self/status ("VmHWM", "VmRSS");
// 0 where that file does not exist.
inline long StatusKb(const char* key) {
  std::ifstream status("/proc/self/status");
  std::string line;
  const std::string prefix = std::string(key) + ":";
  while (std::getline(status, line)) {
    if (line.compare(0, prefix.size(), prefix) == 0) return std::stol(line.substr(prefix.size()));
  }
  return 0;
}

// ResetPeak: sets the resident high-water mark (VmHWM) back to the current
// size, so a following StatusKb("VmHWM") sees one case's peak only.
inline void ResetPeak() {
  std::ofstream clear("/proc/self/clear_refs");
  clear << "5";
}

// ---------------------------------------------------------------------------
// Allocation counting (opt-in)
// ---------------------------------------------------------------------------

// AllocationCounter: the count the replaced operator new adds to.
inline std::atomic<std::size_t>& AllocationCounter() {
  static std::atomic<std::size_t> count{0};
  return count;
}
// Allocations: how many times the global operator new ran so far (0 in a
// program that did not opt in).
inline std::size_t Allocations() { return AllocationCounter().load(std::memory_order_relaxed); }

}  // namespace chartcore_bench

#if defined(CHARTCORE_BENCH_COUNT_ALLOCATIONS)
void* operator new(std::size_t n) {
  chartcore_bench::AllocationCounter().fetch_add(1, std::memory_order_relaxed);
  void* p = std::malloc(n != 0 ? n : 1);
  if (p == nullptr) throw std::bad_alloc();
  return p;
}
// Freed through a volatile pointer: the compiler cannot pair this free with
// the malloc above across the replaced operators and warn about a mismatch.
static void (*volatile g_chartcoreBenchRelease)(void*) = std::free;
void operator delete(void* p) noexcept { g_chartcoreBenchRelease(p); }
void operator delete(void* p, std::size_t) noexcept { g_chartcoreBenchRelease(p); }
#endif

#endif  // CHARTCORE_BENCH_BENCH_UTIL_H_
