// The editor core under load: formula files of 10,000 to 1,000,000 lines
// (about 60 bytes a line, so 60 MB at the top), against the plain alternative
// in the same run:
//  - loading the file into the text buffer, against reading it into a
//    std::string, decoding and splitting it into std::wstring lines;
//  - colouring every line as the view paints it (cookie chained from the
//    first line), against an iswalnum loop over the same characters;
//  - typing in the middle of the file through the editor (a character and
//    Backspace, Enter and Backspace), each keystroke repainted, against the
//    same edit on a std::vector<std::wstring>;
//  - undoing a session of edits spread over the file, one group at a time;
//  - the whole cycle on the largest file (load, colour every line, type, undo
//    everything), with the process's peak memory.
// The summary gives each ratio, the time per keystroke for every file size
// (it must not grow with the file) and the peak memory against 2 GB.
#include <benchmark/benchmark.h>

#if !defined(_WIN32)
#include <sys/resource.h>
#endif

#include <algorithm>
#include <cstdio>
#include <cwchar>
#include <cwctype>
#include <filesystem>
#include <fstream>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "chartcore/platform/text_codec.h"
#include "chartcore/script_editor/script_edit.h"

namespace {

namespace fs = std::filesystem;

const int kSizes[] = {10000, 30000, 100000, 300000, 1000000};
constexpr int kLargest = 1000000;
constexpr int kSessionEdits = 1000;

// ---------------------------------------------------------------------------
// Formula files
// ---------------------------------------------------------------------------

// One line of a formula file: comments, assignments, calls, conditions,
// Korean words, strings, a block comment over two lines and directives.
std::wstring FormulaLine(int i) {
  static const wchar_t* const kTemplates[] = {
      L"// 이동평균 교차 신호 %d: 단기와 장기 평균의 차이",
      L"Value%d = MA(C, 5) - MA(C, 20) * 1.5 + sum(V, 3) / 2;",
      L"if CrossUp(Value%d, 0) and volume > 1e+5 then",
      L"    Cond%d = 상향돌파(종가, 시가) or RSI(14) > 70;",
      L"/* block comment %d: the signal below is",
      L"   continues here */ x%d = \"text, with (parens)\" + 'c';",
      L"#define LEN%d 20",
      L"Result%d = highest(H, 20) - lowest(L, 20) + 0x1F;",
  };
  wchar_t line[128];
  std::swprintf(line, 128, kTemplates[i % 8], i);
  return line;
}

// The scratch folder and the file of each size (UTF-8 with a mark, CR LF),
// written once per run.
class Files {
 public:
  Files() {
    m_dir = fs::temp_directory_path() / ("chartcore-load-bench-" + std::to_string(static_cast<long long>(
                                                                      fs::file_time_type::clock::now().time_since_epoch().count())));
    fs::create_directories(m_dir);
  }
  ~Files() {
    std::error_code ec;
    fs::remove_all(m_dir, ec);
  }
  const fs::path& Path(int lines) {
    auto found = m_paths.find(lines);
    if (found != m_paths.end()) return found->second;
    const fs::path path = m_dir / ("formula-" + std::to_string(lines) + ".txt");
    std::ofstream out(path, std::ios::binary);
    out << "\xEF\xBB\xBF";
    std::wstring chunk;
    for (int i = 0; i < lines; ++i) {
      chunk += FormulaLine(i);
      chunk += L"\r\n";
      if (chunk.size() > (1u << 20)) {
        out << chartcore::WideToUtf8(chunk);
        chunk.clear();
      }
    }
    out << chartcore::WideToUtf8(chunk);
    return m_paths.emplace(lines, path).first->second;
  }

 private:
  fs::path m_dir;
  std::map<int, fs::path> m_paths;
};

Files& TheFiles() {
  static Files files;
  return files;
}

CString LibraryPath(const fs::path& path) { return CString(chartcore::Utf8ToWide(path.u8string())); }

// ---------------------------------------------------------------------------
// One editor at a time, over the file of the size asked for (the previous
// one is freed first, so the peak memory is that of the largest alone).
// ---------------------------------------------------------------------------

class Session {
 public:
  static CScriptEdit& Editor(int lines) {
    if (s_lines != lines) {
      s_edit.reset();
      s_edit.reset(new CScriptEdit);
      s_edit->InitWindow();
      s_edit->InitBasicFunctionList(L"/nonexistent-workspace", L"", L"", 2);
      s_edit->SetAutoIndent(FALSE);  // Enter then Backspace restores the line exactly
      if (!s_edit->LocateTextBuffer()->LoadFromFile(LibraryPath(TheFiles().Path(lines)))) std::abort();
      s_lines = lines;
    }
    return *s_edit;
  }
  // Starts a fresh history: no undo records, the text counted as saved.
  static void ForgetHistory(CScriptEdit& edit) {
    edit.LocateTextBuffer()->CleanUndoBuffer();
    edit.LocateTextBuffer()->SetModified(FALSE);
  }

 private:
  static std::unique_ptr<CScriptEdit> s_edit;
  static int s_lines;
};
std::unique_ptr<CScriptEdit> Session::s_edit;
int Session::s_lines = -1;

long PeakMemoryMegabytes() {
#if defined(_WIN32)
  return -1;
#else
  struct rusage usage;
  getrusage(RUSAGE_SELF, &usage);
  return usage.ru_maxrss / 1024;  // kilobytes on Linux
#endif
}

// ---------------------------------------------------------------------------
// Loading
// ---------------------------------------------------------------------------

void BM_Load(benchmark::State& state) {
  const int lines = static_cast<int>(state.range(0));
  const CString path = LibraryPath(TheFiles().Path(lines));
  for (auto _ : state) {
    CCrystalTextBuffer buf;
    if (!buf.LoadFromFile(path) || buf.GetLineCount() != lines + 1) state.SkipWithError("load failed");
    benchmark::DoNotOptimize(buf.GetLineCount());
  }
  state.SetItemsProcessed(state.iterations() * lines);
}

void BM_PlainLoad(benchmark::State& state) {
  const int lines = static_cast<int>(state.range(0));
  const fs::path path = TheFiles().Path(lines);
  for (auto _ : state) {
    std::ifstream in(path, std::ios::binary);
    const std::string bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    const std::wstring text = chartcore::Utf8ToWide(bytes.substr(3));
    std::vector<std::wstring> split;
    size_t start = 0;
    for (size_t at; (at = text.find(L'\n', start)) != std::wstring::npos; start = at + 1)
      split.emplace_back(text, start, at - start - (at > start && text[at - 1] == L'\r' ? 1 : 0));
    split.emplace_back(text, start);
    benchmark::DoNotOptimize(split.data());
  }
  state.SetItemsProcessed(state.iterations() * lines);
}

// ---------------------------------------------------------------------------
// Colouring every line
// ---------------------------------------------------------------------------

void BM_ColourAll(benchmark::State& state) {
  const int lines = static_cast<int>(state.range(0));
  CScriptEdit& edit = Session::Editor(lines);
  std::vector<CCrystalTextWnd::TEXTBLOCK> blocks;
  for (auto _ : state) {
    edit.ResetParseCookies();
    long long total = 0;
    for (int i = 0; i < edit.GetLineCount(); ++i) {
      edit.GetLineBlocks(i, blocks);
      total += static_cast<long long>(blocks.size());
    }
    benchmark::DoNotOptimize(total);
  }
  state.SetItemsProcessed(state.iterations() * lines);
}

void BM_PlainColourAll(benchmark::State& state) {
  const int lines = static_cast<int>(state.range(0));
  CCrystalTextBuffer& buf = *Session::Editor(lines).LocateTextBuffer();
  for (auto _ : state) {
    long long words = 0;
    for (int i = 0; i < buf.GetLineCount(); ++i) {
      const wchar_t* chars = buf.GetLineChars(i);
      const int n = buf.GetLineLength(i);
      for (int k = 0; k < n; ++k) words += std::iswalnum(static_cast<wint_t>(chars[k])) != 0;
    }
    benchmark::DoNotOptimize(words);
  }
  state.SetItemsProcessed(state.iterations() * lines);
}

// ---------------------------------------------------------------------------
// Typing in the middle
// ---------------------------------------------------------------------------

// Types `key` at column 4 of the middle line and takes it back with
// Backspace, repainting after each keystroke.
void TypeInMiddle(benchmark::State& state, wchar_t key) {
  const int lines = static_cast<int>(state.range(0));
  CScriptEdit& edit = Session::Editor(lines);
  Session::ForgetHistory(edit);
  const int middle = lines / 2;
  const CPoint at(4, middle);
  edit.SetSelection(at, at);
  edit.SetCursorPos(at);
  edit.EnsureVisible(at);
  edit.GetParseCookie(edit.GetLineCount() - 1);  // every cookie known, as after a full paint
  edit.UpdateWindow();
  const CString original = edit.GetLineText(middle);
  for (auto _ : state) {
    edit.OnChar(key, 1, 0);
    edit.UpdateWindow();
    edit.OnChar(L'\b', 1, 0);
    edit.UpdateWindow();
  }
  state.SetItemsProcessed(state.iterations() * 2);
  if (edit.GetLineText(middle) != original || edit.GetLineCount() != lines + 1)
    state.SkipWithError("the text was not restored");
}

void BM_TypeChar(benchmark::State& state) { TypeInMiddle(state, L'x'); }
void BM_TypeEnter(benchmark::State& state) { TypeInMiddle(state, L'\r'); }

void PlainTypeInMiddle(benchmark::State& state, bool newLine) {
  const int lines = static_cast<int>(state.range(0));
  std::vector<std::wstring> text;
  text.reserve(static_cast<size_t>(lines) + 1);
  for (int i = 0; i < lines; ++i) text.push_back(FormulaLine(i));
  const size_t middle = static_cast<size_t>(lines / 2);
  for (auto _ : state) {
    if (newLine) {
      text.insert(text.begin() + static_cast<std::ptrdiff_t>(middle) + 1, text[middle].substr(4));
      text[middle].erase(4);
      text[middle] += text[middle + 1];
      text.erase(text.begin() + static_cast<std::ptrdiff_t>(middle) + 1);
    } else {
      text[middle].insert(4, 1, L'x');
      text[middle].erase(4, 1);
    }
    benchmark::DoNotOptimize(text[middle].data());
  }
  state.SetItemsProcessed(state.iterations() * 2);
}

void BM_PlainTypeChar(benchmark::State& state) { PlainTypeInMiddle(state, false); }
void BM_PlainTypeEnter(benchmark::State& state) { PlainTypeInMiddle(state, true); }

// ---------------------------------------------------------------------------
// Undoing a session
// ---------------------------------------------------------------------------

// Types kSessionEdits keystrokes spread over the file (every tenth an Enter),
// each at a fresh caret position so each is its own undo group.
void TypeSession(CScriptEdit& edit) {
  const int lines = edit.GetLineCount();
  for (int k = 0; k < kSessionEdits; ++k) {
    const CPoint at(2, static_cast<int>((static_cast<long long>(k) * 7919) % lines));
    edit.SetSelection(at, at);
    edit.SetCursorPos(at);
    edit.OnChar(k % 10 == 9 ? L'\r' : L'a' + k % 26, 1, 0);
  }
}

void BM_UndoSession(benchmark::State& state) {
  const int lines = static_cast<int>(state.range(0));
  CScriptEdit& edit = Session::Editor(lines);
  CCrystalTextBuffer& buf = *edit.LocateTextBuffer();
  Session::ForgetHistory(edit);
  long long undone = 0;
  for (auto _ : state) {
    state.PauseTiming();
    TypeSession(edit);
    state.ResumeTiming();
    while (edit.CanUndo()) {
      edit.Undo();
      ++undone;
    }
  }
  state.SetItemsProcessed(undone);
  state.counters["undos"] = static_cast<double>(undone) / static_cast<double>(state.iterations());
  if (buf.IsModified() || buf.GetLineCount() != lines + 1) state.SkipWithError("undo did not restore the file");
}

// ---------------------------------------------------------------------------
// The whole cycle on the largest file
// ---------------------------------------------------------------------------

void BM_FullCycle(benchmark::State& state) {
  const CString path = LibraryPath(TheFiles().Path(kLargest));
  for (auto _ : state) {
    CScriptEdit edit;
    edit.InitWindow();
    edit.SetAutoIndent(FALSE);
    if (!edit.LocateTextBuffer()->LoadFromFile(path)) state.SkipWithError("load failed");
    std::vector<CCrystalTextWnd::TEXTBLOCK> blocks;
    for (int i = 0; i < edit.GetLineCount(); ++i) edit.GetLineBlocks(i, blocks);
    TypeSession(edit);
    while (edit.CanUndo()) edit.Undo();
    if (edit.LocateTextBuffer()->IsModified()) state.SkipWithError("undo did not restore the file");
  }
  state.counters["peak_rss_mb"] = static_cast<double>(PeakMemoryMegabytes());
}

void Sizes(benchmark::internal::Benchmark* b) {
  for (int n : kSizes) b->Arg(n);
}

// The whole cycle runs first, alone in the process, so the peak memory is its own.
BENCHMARK(BM_FullCycle)->Iterations(1)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Load)->Apply(Sizes)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_PlainLoad)->Apply(Sizes)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_ColourAll)->Apply(Sizes)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_PlainColourAll)->Apply(Sizes)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_TypeChar)->Apply(Sizes)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_TypeEnter)->Apply(Sizes)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_PlainTypeChar)->Apply(Sizes)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_PlainTypeEnter)->Apply(Sizes)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_UndoSession)->Apply(Sizes)->Unit(benchmark::kMillisecond);

// ---------------------------------------------------------------------------
// Summary
// ---------------------------------------------------------------------------

class LoadReporter : public benchmark::ConsoleReporter {
 public:
  void ReportRuns(const std::vector<Run>& runs) override {
    for (const Run& run : runs) {
      if (run.run_type != Run::RT_Iteration || run.error_occurred) continue;
      const std::string name = run.benchmark_name();
      m_cpu[name] = run.GetAdjustedCPUTime();
      const auto peak = run.counters.find("peak_rss_mb");
      if (peak != run.counters.end()) m_peak = peak->second.value;
      // Undo sessions are timed in milliseconds a session.
      const auto undo = run.counters.find("undos");
      if (undo != run.counters.end() && undo->second.value > 0) m_perUndo[name] = m_cpu[name] * 1e3 / undo->second.value;
    }
    ConsoleReporter::ReportRuns(runs);
  }

  void PrintSummary() const {
    std::printf("\n%-10s %10s %10s %12s %12s %12s %12s\n", "lines", "load/plain", "colour/plain", "char us/key",
                "enter us/key", "char/plain", "undo us");
    for (int n : kSizes) {
      const std::string arg = "/" + std::to_string(n);
      const double typeChar = Cpu("BM_TypeChar" + arg) / 2;  // two keystrokes an iteration
      const double typeEnter = Cpu("BM_TypeEnter" + arg) / 2;
      std::printf("%-10d %10.2f %10.2f %12.2f %12.2f %12.1f %12.2f\n", n,
                  Ratio("BM_Load" + arg, "BM_PlainLoad" + arg), Ratio("BM_ColourAll" + arg, "BM_PlainColourAll" + arg),
                  typeChar, typeEnter, Ratio("BM_TypeChar" + arg, "BM_PlainTypeChar" + arg), Undo("BM_UndoSession" + arg));
    }
    const std::string low = "/" + std::to_string(kSizes[0]);
    const std::string high = "/" + std::to_string(kLargest);
    std::printf("time per keystroke, %d lines / %d lines: char %.2fx, enter %.2fx, undo %.2fx (flat: ~1x)\n", kLargest,
                kSizes[0], Ratio("BM_TypeChar" + high, "BM_TypeChar" + low),
                Ratio("BM_TypeEnter" + high, "BM_TypeEnter" + low),
                Undo("BM_UndoSession" + low) > 0 ? Undo("BM_UndoSession" + high) / Undo("BM_UndoSession" + low) : 0.0);
    std::printf("whole cycle on %d lines (load, colour, %d keystrokes, undo all): %.0f ms, peak memory %.0f MB "
                "(limit 2048 MB)\n",
                kLargest, kSessionEdits, Cpu("BM_FullCycle/iterations:1"), m_peak);
  }

 private:
  double Cpu(const std::string& name) const {
    const auto it = m_cpu.find(name);
    return it != m_cpu.end() ? it->second : 0.0;
  }
  double Ratio(const std::string& a, const std::string& b) const { return Cpu(b) > 0 ? Cpu(a) / Cpu(b) : 0.0; }
  double Undo(const std::string& name) const {
    const auto it = m_perUndo.find(name);
    return it != m_perUndo.end() ? it->second : 0.0;
  }

  std::map<std::string, double> m_cpu;
  std::map<std::string, double> m_perUndo;
  double m_peak = 0;
};

}  // namespace

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  LoadReporter reporter;
  benchmark::RunSpecifiedBenchmarks(&reporter);
  reporter.PrintSummary();
  benchmark::Shutdown();
  return 0;
}
