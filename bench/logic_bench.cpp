// Definition record throughput: writing and reading 100,000 indicator records
// (5 elements, 3 variables, 2 bases each) through CArchive on a CMemFile,
// against the plain alternative: the same bytes produced and parsed by
// hand-written memcpy code in a preallocated buffer. Each benchmark reports
// MB/s of record bytes written and read; the summary line gives archive CPU
// time / plain CPU time.
#include <benchmark/benchmark.h>

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "bench_util.h"
#include "chartcore/logic/indica.h"
#include "chartcore/platform/file.h"

namespace {

constexpr int kRecords = 100000;

CDBSubINDICA MakeIndicator() {
  CDBSubINDICA r;
  r.m_strText1 = L"MACD";
  r.m_strText2 = L"\uC774\uB3D9\uD3C9\uADE0 \uC218\uB834\uD655\uC0B0";  // 이동평균 수렴확산
  r.m_strText3 = L"MACD = MA(C, Short) - MA(C, Long);";
  for (int i = 0; i < 5; ++i) {
    CDBSubINDICA_ELM e;
    e.strE00 = L"MACD line";
    e.nE01 = i;
    e.strE11 = L"Signal";
    r.m_arrElement.Add(e);
  }
  for (int i = 0; i < 3; ++i) {
    CDBSubINDICA_VAR v;
    v.strText = L"Period";
    v.dValue = 12.0 + i;
    r.m_arrVariable.Add(v);
  }
  for (int i = 0; i < 2; ++i) {
    CDBSubINDICA_BASE b;
    b.dBase1 = 70.0 + i;
    r.m_arrBase.Add(b);
  }
  return r;
}

// ---------------------------------------------------------------------------
// The plain alternative: the same layout by hand
// ---------------------------------------------------------------------------

class PlainWriter {
 public:
  explicit PlainWriter(unsigned char* out) : cur_(out) {}
  template <class T>
  void Put(T v) {
    std::memcpy(cur_, &v, sizeof v);
    cur_ += sizeof v;
  }
  void Str(const CString& s) {  // short strings only (below 0xFF units)
    Put<std::uint8_t>(0xFF);
    Put<std::uint16_t>(0xFFFE);
    Put<std::uint8_t>(static_cast<std::uint8_t>(s.GetLength()));
    for (int i = 0; i < s.GetLength(); ++i) Put<std::uint16_t>(static_cast<std::uint16_t>(s.GetAt(i)));
  }
  unsigned char* Position() const { return cur_; }

 private:
  unsigned char* cur_;
};

class PlainReader {
 public:
  PlainReader(const std::vector<unsigned char>& in, std::size_t& pos) : in_(in), pos_(pos) {}
  template <class T>
  T Get() {
    T v;
    std::memcpy(&v, in_.data() + pos_, sizeof v);
    pos_ += sizeof v;
    return v;
  }
  CString Str() {
    pos_ += 3;
    const int n = Get<std::uint8_t>();
    std::wstring s(static_cast<std::size_t>(n), L'\0');
    for (int i = 0; i < n; ++i) s[static_cast<std::size_t>(i)] = static_cast<wchar_t>(Get<std::uint16_t>());
    return CString(std::move(s));
  }

 private:
  const std::vector<unsigned char>& in_;
  std::size_t& pos_;
};

void PlainWrite(PlainWriter& w, const CDBSubINDICA& r) {
  w.Put(r.m_nVersion); w.Str(r.m_strText1); w.Put(r.m_nFlag); w.Put(r.m_dValue); w.Str(r.m_strText2);
  for (int v : {r.nA01, r.nA02, r.nA03, r.nA04, r.nA05, r.nA06, r.nA07}) w.Put(v);
  w.Put(r.clrA08); w.Put(r.clrA09); w.Put(r.nA10); w.Put(r.nA11); w.Put(r.nA12); w.Str(r.m_strText3);
  w.Put(static_cast<int>(r.m_arrElement.GetSize()));
  for (const CDBSubINDICA_ELM& e : r.m_arrElement) {
    w.Str(e.strE00);
    for (int v : {e.nE01, e.nE02, e.nE03, e.nE04, e.nE05, e.nE06}) w.Put(v);
    w.Str(e.strE11); w.Put(e.nE07); w.Put(e.clrE08); w.Put(e.clrE09); w.Put(e.nE12); w.Put(e.nE13); w.Put(e.nE10);
  }
  for (int v : {r.nB01, r.nB02, r.nB03, r.nB04, r.nB05, r.nB06, r.nB07}) w.Put(v);
  w.Put(r.clrB08); w.Put(r.clrB09); w.Put(r.nB10); w.Put(r.clrB11); w.Put(r.clrB12);
  w.Put(r.nB14); w.Put(r.nB15); w.Put(r.nB13);
  w.Put(static_cast<int>(r.m_arrVariable.GetSize()));
  for (const CDBSubINDICA_VAR& v : r.m_arrVariable) { w.Str(v.strText); w.Put(v.nValue); w.Put(v.dValue); }
  w.Put(static_cast<int>(r.m_arrBase.GetSize()));
  for (const CDBSubINDICA_BASE& b : r.m_arrBase) {
    w.Put(b.nBase0); w.Put(b.dBase1); w.Put(b.nBase2); w.Put(b.nBase3); w.Put(b.nBase4); w.Put(b.nBase5);
  }
  w.Put(r.nTail);
}

void PlainRead(PlainReader& rd, CDBSubINDICA& r) {
  rd.Get<int>(); r.m_strText1 = rd.Str(); r.m_nFlag = rd.Get<int>(); r.m_dValue = rd.Get<double>();
  r.m_strText2 = rd.Str();
  for (int* v : {&r.nA01, &r.nA02, &r.nA03, &r.nA04, &r.nA05, &r.nA06, &r.nA07}) *v = rd.Get<int>();
  r.clrA08 = rd.Get<COLORREF>(); r.clrA09 = rd.Get<COLORREF>();
  r.nA10 = rd.Get<int>(); r.nA11 = rd.Get<int>(); r.nA12 = rd.Get<int>(); r.m_strText3 = rd.Str();
  r.m_arrElement.RemoveAll();
  for (int n = rd.Get<int>(), i = 0; i < n; ++i) {
    CDBSubINDICA_ELM& e = r.m_arrElement.ElementAt(r.m_arrElement.Add(CDBSubINDICA_ELM()));
    e.strE00 = rd.Str();
    for (int* v : {&e.nE01, &e.nE02, &e.nE03, &e.nE04, &e.nE05, &e.nE06}) *v = rd.Get<int>();
    e.strE11 = rd.Str(); e.nE07 = rd.Get<int>(); e.clrE08 = rd.Get<COLORREF>(); e.clrE09 = rd.Get<COLORREF>();
    e.nE12 = rd.Get<int>(); e.nE13 = rd.Get<int>(); e.nE10 = rd.Get<int>();
  }
  for (int* v : {&r.nB01, &r.nB02, &r.nB03, &r.nB04, &r.nB05, &r.nB06, &r.nB07}) *v = rd.Get<int>();
  r.clrB08 = rd.Get<COLORREF>(); r.clrB09 = rd.Get<COLORREF>(); r.nB10 = rd.Get<int>();
  r.clrB11 = rd.Get<COLORREF>(); r.clrB12 = rd.Get<COLORREF>();
  r.nB14 = rd.Get<int>(); r.nB15 = rd.Get<int>(); r.nB13 = rd.Get<int>();
  r.m_arrVariable.RemoveAll();
  for (int n = rd.Get<int>(), i = 0; i < n; ++i) {
    CDBSubINDICA_VAR& v = r.m_arrVariable.ElementAt(r.m_arrVariable.Add(CDBSubINDICA_VAR()));
    v.strText = rd.Str(); v.nValue = rd.Get<int>(); v.dValue = rd.Get<double>();
  }
  r.m_arrBase.RemoveAll();
  for (int n = rd.Get<int>(), i = 0; i < n; ++i) {
    CDBSubINDICA_BASE& b = r.m_arrBase.ElementAt(r.m_arrBase.Add(CDBSubINDICA_BASE()));
    b.nBase0 = rd.Get<int>(); b.dBase1 = rd.Get<double>();
    for (int* v : {&b.nBase2, &b.nBase3, &b.nBase4, &b.nBase5}) *v = rd.Get<int>();
  }
  r.nTail = rd.Get<int>();
}

using chartcore_bench::CpuSeconds;

struct Timing {
  double write = 0;
  double read = 0;
};
Timing g_archive;
Timing g_plain;

// Reports MB/s of record bytes for writing, reading and both together.
void Report(benchmark::State& state, std::size_t bytes, const Timing& t) {
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) * static_cast<std::int64_t>(2 * bytes));
  const double mb = static_cast<double>(bytes) / 1e6;
  state.counters["write_MBps"] = mb / t.write;
  state.counters["read_MBps"] = mb / t.read;
  state.counters["record_bytes"] = static_cast<double>(bytes) / kRecords;
}

// ---------------------------------------------------------------------------
// Benchmarks
// ---------------------------------------------------------------------------

void BM_IndicaArchiveWriteRead(benchmark::State& state) {
  CDBSubINDICA source = MakeIndicator();
  std::size_t bytes = 0;
  for (auto _ : state) {
    CMemFile file(64u << 20);
    double start = CpuSeconds();
    {
      CArchive ar(&file, CArchive::store);
      for (int i = 0; i < kRecords; ++i) source.Serialize(ar);
      ar.Close();
    }
    g_archive.write = CpuSeconds() - start;
    bytes = static_cast<std::size_t>(file.GetLength());
    file.SeekToBegin();
    CDBSubINDICA target;
    start = CpuSeconds();
    {
      CArchive ar(&file, CArchive::load);
      for (int i = 0; i < kRecords; ++i) target.Serialize(ar);
    }
    g_archive.read = CpuSeconds() - start;
    benchmark::DoNotOptimize(target.nTail);
  }
  Report(state, bytes, g_archive);
}
BENCHMARK(BM_IndicaArchiveWriteRead)->Unit(benchmark::kMillisecond);

void BM_IndicaPlainWriteRead(benchmark::State& state) {
  CDBSubINDICA source = MakeIndicator();
  std::vector<unsigned char> buffer(128u << 20);  // above the 82 MB the records take
  std::size_t bytes = 0;
  for (auto _ : state) {
    double start = CpuSeconds();
    PlainWriter w(buffer.data());
    for (int i = 0; i < kRecords; ++i) PlainWrite(w, source);
    g_plain.write = CpuSeconds() - start;
    bytes = static_cast<std::size_t>(w.Position() - buffer.data());
    CDBSubINDICA target;
    std::size_t pos = 0;
    start = CpuSeconds();
    PlainReader rd(buffer, pos);
    for (int i = 0; i < kRecords; ++i) PlainRead(rd, target);
    g_plain.read = CpuSeconds() - start;
    benchmark::DoNotOptimize(target.nTail);
  }
  Report(state, bytes, g_plain);
}
BENCHMARK(BM_IndicaPlainWriteRead)->Unit(benchmark::kMillisecond);

}  // namespace

int main(int argc, char** argv) {
  return chartcore_bench::RunWithRatios(argc, argv, [](const chartcore_bench::RatioReporter&) {
    // The sections are timed by hand in CPU time: archive and plain apart
    // for writing and reading.
    if (g_plain.write <= 0 || g_plain.read <= 0) return;
    std::printf("indicator records: archive / plain CPU time: write %.2f, read %.2f, both %.2f\n",
                g_archive.write / g_plain.write, g_archive.read / g_plain.read,
                (g_archive.write + g_archive.read) / (g_plain.write + g_plain.read));
  });
}
