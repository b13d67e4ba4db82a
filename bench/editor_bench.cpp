// Script editor speed, against the plain alternative in the same run:
//  - colouring a 100,000-line formula file line by line through
//    CScriptEdit::ParseLine (cookie carried from line to line), against a loop
//    that only classifies every character of the same lines with iswalnum;
//  - typing one character into line 50,000 of that file (and taking it back
//    with Backspace), with the view repainting: how many lines ParseLine sees
//    per keystroke, and the same with a "/*" that turns the rest of the file
//    into a comment.
// The summary gives colouring time / iswalnum time and the lines parsed per
// keystroke.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <cwchar>
#include <cwctype>
#include <string>
#include <vector>

#include "bench_util.h"
#include "chartcore/script_editor/script_edit.h"

namespace {

constexpr int kLines = 100000;
constexpr int kEditLine = 49999;  // the 50,000th line

// A formula file: comments, assignments, calls, conditions, Korean words,
// strings, a block comment over two lines and directives.
const std::wstring& FormulaText() {
  static const std::wstring text = [] {
    const wchar_t* const templates[] = {
        L"// 이동평균 교차 신호 %d",
        L"Value%d = MA(C, 5) - MA(C, 20) * 1.5 + sum(V, 3) / 2;",
        L"if CrossUp(Value%d, 0) and volume > 1e+5 then",
        L"    Cond%d = 상향돌파(종가, 시가) or RSI(14) > 70;",
        L"/* block comment %d",
        L"   continues here */ x%d = \"text, with (parens)\" + 'c';",
        L"#define LEN%d 20",
        L"Result%d = highest(H, 20) - lowest(L, 20) + 0x1F + abs(Diff);",
    };
    std::wstring out;
    wchar_t line[128];
    for (int i = 0; i < kLines; ++i) {
      std::swprintf(line, 128, templates[i % 8], i);
      out += line;
      if (i + 1 < kLines) out += L'\n';
    }
    return out;
  }();
  return text;
}

// An editor that counts the lines it is asked to colour.
class CountingEdit : public CScriptEdit {
 public:
  DWORD ParseLine(DWORD dwCookie, int nLineIndex, TEXTBLOCK* pBuf, int& nActualItems) override {
    ++calls;
    return CScriptEdit::ParseLine(dwCookie, nLineIndex, pBuf, nActualItems);
  }
  long long calls = 0;
};

CountingEdit& Editor() {
  static CountingEdit* edit = [] {
    auto* e = new CountingEdit;
    e->InitWindow();
    e->InitBasicFunctionList(L"/nonexistent-workspace", L"", L"", 2);
    int endLine = 0;
    int endChar = 0;
    e->LocateTextBuffer()->InsertText(nullptr, 0, 0, FormulaText().c_str(), endLine, endChar);
    return e;
  }();
  return *edit;
}

// ---------------------------------------------------------------------------
// Colouring the whole file
// ---------------------------------------------------------------------------

void BM_ColourFile(benchmark::State& state) {
  CountingEdit& edit = Editor();
  std::vector<CCrystalTextWnd::TEXTBLOCK> blocks(3 * 128 + 8);
  for (auto _ : state) {
    DWORD cookie = 0;
    long long total = 0;
    for (int i = 0; i < kLines; ++i) {
      int count = 0;
      cookie = edit.ParseLine(cookie, i, blocks.data(), count);
      total += count;
    }
    benchmark::DoNotOptimize(total);
  }
  state.SetItemsProcessed(state.iterations() * kLines);
}
BENCHMARK(BM_ColourFile)->Unit(benchmark::kMillisecond);

void BM_IswalnumFile(benchmark::State& state) {
  CCrystalTextBuffer& buf = *Editor().LocateTextBuffer();
  for (auto _ : state) {
    long long words = 0;
    for (int i = 0; i < kLines; ++i) {
      const wchar_t* chars = buf.GetLineChars(i);
      const int n = buf.GetLineLength(i);
      for (int k = 0; k < n; ++k) words += std::iswalnum(static_cast<wint_t>(chars[k])) != 0;
    }
    benchmark::DoNotOptimize(words);
  }
  state.SetItemsProcessed(state.iterations() * kLines);
}
BENCHMARK(BM_IswalnumFile)->Unit(benchmark::kMillisecond);

// ---------------------------------------------------------------------------
// Typing into line 50,000
// ---------------------------------------------------------------------------

void TypeAndTakeBack(benchmark::State& state, const wchar_t* typed) {
  CountingEdit& edit = Editor();
  edit.SetCursorPos(CPoint(4, kEditLine));
  edit.SetSelection(CPoint(4, kEditLine), CPoint(4, kEditLine));
  edit.EnsureVisible(CPoint(4, kEditLine));
  edit.GetParseCookie(kLines - 1);  // every cookie known, as after a full paint
  edit.UpdateWindow();
  const CString original = edit.GetLineText(kEditLine);
  edit.calls = 0;
  long long keystrokes = 0;
  for (auto _ : state) {
    for (const wchar_t* p = typed; *p; ++p) {
      edit.OnChar(*p, 1, 0);
      edit.UpdateWindow();
      ++keystrokes;
    }
    for (const wchar_t* p = typed; *p; ++p) {
      edit.OnChar(L'\b', 1, 0);
      edit.UpdateWindow();
      ++keystrokes;
    }
  }
  state.counters["lines_per_key"] = static_cast<double>(edit.calls) / static_cast<double>(keystrokes);
  state.counters["keys_per_iteration"] = 2.0 * static_cast<double>(std::wcslen(typed));
  state.SetItemsProcessed(keystrokes);
  if (edit.GetLineText(kEditLine) != original) state.SkipWithError("the line was not restored");
}

void BM_TypeCharAtLine50000(benchmark::State& state) { TypeAndTakeBack(state, L"x"); }
BENCHMARK(BM_TypeCharAtLine50000)->Unit(benchmark::kMicrosecond);

void BM_TypeCommentOpenAtLine50000(benchmark::State& state) { TypeAndTakeBack(state, L"/*"); }
BENCHMARK(BM_TypeCommentOpenAtLine50000)->Unit(benchmark::kMicrosecond);

// ---------------------------------------------------------------------------
// Summary
// ---------------------------------------------------------------------------

// Colouring in CPU time against the plain loop; per keystroke, the lines
// ParseLine saw and the CPU time of one keystroke.
void PrintRatios(const chartcore_bench::RatioReporter& r) {
  if (r.Cpu("BM_IswalnumFile") > 0 && r.Cpu("BM_ColourFile") > 0) {
    std::printf("colouring 100000 lines / iswalnum loop: %.2fx (target <= 3x)\n",
                r.Cpu("BM_ColourFile") / r.Cpu("BM_IswalnumFile"));
  }
  for (const char* name : {"BM_TypeCharAtLine50000", "BM_TypeCommentOpenAtLine50000"}) {
    const double keys = r.Counter(name, "keys_per_iteration");
    if (keys <= 0) continue;
    std::printf("%s: %.1f lines parsed per keystroke, %.1f us per keystroke\n", name,
                r.Counter(name, "lines_per_key"), r.Cpu(name) / keys);
  }
}

}  // namespace

int main(int argc, char** argv) { return chartcore_bench::RunWithRatios(argc, argv, PrintRatios); }
