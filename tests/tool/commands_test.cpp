// The tool's commands run in-process (format, table, highlight, workspace,
// demo, usage errors), the sample workspace they tour, and the built
// program's exit codes.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <set>

#include "bars.h"
#include "chartcore/foundation/datetime.h"
#include "chartcore/foundation/formatting.h"
#include "chartcore/packets/packet_types.h"
#include "chartcore/platform/version.h"
#include "chartcore/script_editor/script_edit.h"
#include "sample_workspace.h"
#include "terminal.h"
#include "tool_test_util.h"
#include "tool_text.h"
#include "workspace.h"

#include "chartcore/platform/command_line.h"
#include "chartcore/platform/text_codec.h"

#if defined(_WIN32)
#include <windows.h>
#else
#include <sys/wait.h>
#endif

namespace {

using chartcore::tool::kSampleFileCount;
using chartcore::tool::kSampleFiles;
using tooltest::Cli;
using tooltest::Has;
using tooltest::ReadBytes;
using tooltest::Refused;
using tooltest::SampleDir;
using tooltest::TempDir;
using tooltest::TreeBytes;
using tooltest::WriteBytes;

constexpr double kEmpty = chartcore::kPacketEmptyValue;

TEST(ToolFormat, PrintsValuesUnderAFormatCode) {
  auto run = Cli({"format", "--code", "1", "--group", "1234.5", "-1234.5", "999.9", "N/A", "0.000000001"});
  EXPECT_EQ(run.code, 0) << run.err;
  // Grouping only from 1000 on; the empty value prints "N/A"; tiny values 0.
  EXPECT_EQ(run.out, "1,234.5\n-1,234.5\n999.9\nN/A\n0.0\n");
  EXPECT_EQ(Cli({"format", "--code", "1", "1234.5"}).out, "1234.5\n");
  EXPECT_EQ(Cli({"format", "--code", "75", "101.15625", "101.5"}).out, "101`05\n101`16\n");  // 32nds, two digits
  EXPECT_EQ(Cli({"format", "--code", "65", "101.5"}).out, "101`1\n");                         // halves
  EXPECT_TRUE(Refused(Cli({"format", "--code", "2", "12abc"}), 2, "chartcore format: \"12abc\" is not a number\n"));
  EXPECT_TRUE(Refused(Cli({"format", "1"}), 2, "chartcore format: --code is required (see chartcore format --help)\n"));
  EXPECT_TRUE(Refused(Cli({"format", "--code", "0", ""}), 2, "chartcore format: \"\" is not a number\n"));

  // The one parser of format's values and the bar files' fields.
  double value = 0;
  const std::pair<const char*, double> taken[] = {{"N/A", kEmpty}, {"-1.5e3", -1500}, {"0x10", 16}, {"7", 7}};
  for (const auto& c : taken) EXPECT_TRUE(chartcore::tool::ParseValue(c.first, value) && value == c.second) << c.first;
  for (const char* refused : {"", "n/a", "1e999", "-1e999", "inf", "nan", "1,5", "12 "}) {
    EXPECT_FALSE(chartcore::tool::ParseValue(refused, value)) << refused;
  }
}

TEST(ToolTable, BarFileAsTheChartTable) {
  TempDir dir;
  const std::string csv = dir / "bars.csv";
  WriteBytes(csv,
             "date,open,high,low,close,volume\r\n"
             "20240102,1000.5,1010,990,1005.25,1234567\r\n"
             "2024-01-03,1005,1020,1000,N/A,0\n"
             "\n"
             "20240104093000,1010,1015,1005,1012,2000\n");
  auto run = Cli({"table", csv, "--code", "2"});
  ASSERT_EQ(run.code, 0) << run.err;
  // A time column appears because one bar carries a time of day.
  EXPECT_EQ(run.out,
            "Date        Time          Open      High       Low     Close     Volume\n"
            "2024/01/02            1,000.50  1,010.00    990.00  1,005.25  1,234,567\n"
            "2024/01/03            1,005.00  1,020.00  1,000.00       N/A          0\n"
            "2024/01/04  09:30:00  1,010.00  1,015.00  1,005.00  1,012.00      2,000\n");
  run = Cli({"table", csv, "--last", "1"});
  EXPECT_EQ(run.out,
            "Date        Time       Open   High    Low  Close  Volume\n"
            "2024/01/04  09:30:00  1,010  1,015  1,005  1,012   2,000\n");

  const std::pair<std::string, std::string> bad[] = {
      {"20240105,1,2,3\n", "expected 6 fields (date, open, high, low, close, volume), found 4"},
      {"2024013,1,2,3,4,5\n", "the date \"2024013\" is not YYYYMMDD or YYYYMMDDhhmmss"},
      {"20240105,1O5,2,3,4,5\n", "the open \"1O5\" is not a number"},
      {"20240105,1,2,3,4,1e999\n", "the volume \"1e999\" is not a number"},
  };
  for (const auto& line : bad) {
    WriteBytes(dir / "bad.csv", "date,open,high,low,close,volume\n20240102,1,2,3,4,5\n" + line.first);
    EXPECT_TRUE(Refused(Cli({"table", dir / "bad.csv"}), 1,
                        "chartcore table: " + (dir / "bad.csv") + ":3: " + line.second + "\n"));
  }
}

TEST(ToolBars, MovingAverageRollsAWindowAndPropagatesEmptyValues) {
  // Empty until the window is full; a bar without data spoils every window
  // that holds it; a period below 1 or past the series gives no values.
  const std::vector<double> ramp = {1, 2, 3, 4, 5, 6, 7};
  const std::vector<double> none(7, kEmpty);
  struct Case { std::vector<double> series; int period; std::vector<double> expected; };
  const Case cases[] = {
      {ramp, 3, {kEmpty, kEmpty, 2, 3, 4, 5, 6}},
      {{1, 2, 3, kEmpty, 5, 6, 7, 8}, 2, {kEmpty, 1.5, 2.5, kEmpty, kEmpty, 5.5, 6.5, 7.5}},
      {ramp, 0, none}, {ramp, 8, none}, {{}, 5, {}},
  };
  for (const Case& c : cases) {
    CPacket series;
    for (double v : c.series) series.Add(v);
    const CPacket average = chartcore::tool::MovingAverage(series, c.period);
    std::vector<double> values;
    for (int i = 0; i < average.GetPacketSize(); ++i) values.push_back(average.GetValue(i));
    EXPECT_EQ(values, c.expected) << "period " << c.period;
  }
}

TEST(ToolHighlight, ColoursFromTheEditorInAnsiAndHtml) {
  TempDir dir;
  WriteBytes(dir / "a.txt", "if x // c\n");
  auto run = Cli({"highlight", dir / "a.txt", "--ansi", "--workspace", dir.path()});
  ASSERT_EQ(run.code, 0) << run.err;
  // "if" a constant word (blue), " x " normal text, the comment green.
  EXPECT_EQ(run.out, "\x1b[38;2;0;0;255mif\x1b[0m x \x1b[38;2;0;128;0m// c\x1b[0m\n");
  run = Cli({"highlight", dir / "a.txt", "--html", "--workspace", dir.path()});
  EXPECT_TRUE(Has(run.out, "<pre style=\"background:#FFFFFF;color:#000000;font-family:monospace\">"
                           "<span style=\"color:#0000FF\">if</span> x <span style=\"color:#008000\">// c</span>\n"
                           "</pre>"));
  EXPECT_EQ(Cli({"highlight", dir / "a.txt", "--html", "--ansi"}).code, 2);

  // User functions come from the workspace's list; the mode hides volume.
  SampleDir ws;
  WriteBytes(dir / "b.txt", "GapRatio(20) volume");
  const std::string userFunction = "\x1b[38;2;165;42;42mGapRatio";
  EXPECT_TRUE(Has(Cli({"highlight", dir / "b.txt", "--ansi", "--workspace", ws.path()}).out, userFunction));
  run = Cli({"highlight", dir / "b.txt", "--ansi", "--workspace", dir.path()});
  EXPECT_FALSE(Has(run.out, userFunction));
  EXPECT_TRUE(Has(run.out, "\x1b[38;2;162;40;202mvolume"));  // mode 2: a price word
  run = Cli({"highlight", dir / "b.txt", "--ansi", "--workspace", dir.path(), "--mode", "0"});
  EXPECT_FALSE(Has(run.out, "162;40;202"));

  // A definition file gives its formula; its workspace gives the functions.
  run = Cli({"highlight", ws / "Logic/Signal/GoldenCross.sig"});
  EXPECT_EQ(run.out, "crossup(MA(C, Short), MA(C, Long))\n");  // not a terminal: plain text
  run = Cli({"highlight", ws / "Logic/Signal/VolumeBreakout.sig", "--ansi"});
  EXPECT_TRUE(Has(run.out, "\x1b[38;2;165;42;42mVolumeSpike"));
  EXPECT_TRUE(Refused(Cli({"highlight", dir / "none.txt"}), 1,
                      "chartcore highlight: " + (dir / "none.txt") + ": cannot open (file not found)\n"));
}

TEST(ToolWorkspace, InitMakesTheLayoutAndNeverOverwritesSilently) {
  TempDir dir;
  const std::string root = dir / "deep/ws";
  auto run = Cli({"workspace", "init", root, "--user", "_u01"});
  ASSERT_EQ(run.code, 0) << run.err;
  // deep, ws, Logic and its 8 folders, Save, Templ, Event, Local_u01 and its 5.
  EXPECT_EQ(run.out, root + ": workspace ready (20 folders created)\n");
  for (const char* folder : {"Logic/Indica", "Logic/Market", "Event", "Local_u01/Data", "Local_u01/Templ"}) {
    EXPECT_TRUE(tooltest::fs::is_directory(root + "/" + folder)) << folder;
  }
  run = Cli({"workspace", "init", root, "--samples"});
  ASSERT_EQ(run.code, 0) << run.err;
  // Data, Image and Result of the root's own branch are new.
  EXPECT_EQ(run.out, root + ": workspace ready (3 folders created, " +
                         std::to_string(chartcore::tool::kSampleFileCount) + " sample files written)\n");
  EXPECT_EQ(ReadBytes(root + "/" + chartcore::tool::kSampleBarsFile), chartcore::tool::SampleBarsCsv());

  // Again: refused before anything is touched, unless forced.
  WriteBytes(root + "/Logic/Signal/GoldenCross.sig", "mine");
  EXPECT_TRUE(Refused(Cli({"workspace", "init", root, "--samples"}), 1,
                      "chartcore workspace init: " + root +
                          "/Event/.keep: already exists; nothing was written (--force replaces the sample's files)\n"));
  EXPECT_EQ(ReadBytes(root + "/Logic/Signal/GoldenCross.sig"), "mine");
  EXPECT_EQ(Cli({"workspace", "init", root, "--samples", "--force"}).code, 0);
  EXPECT_NE(ReadBytes(root + "/Logic/Signal/GoldenCross.sig"), "mine");

  WriteBytes(dir / "file", "x");
  EXPECT_TRUE(Refused(Cli({"workspace", "init", dir / "file"}), 1,
                      "chartcore workspace init: " + (dir / "file") + ": exists and is not a folder\n"));
  EXPECT_EQ(Cli({"workspace"}).code, 2);
}

TEST(ToolWorkspace, BarFilesAndRelativePathsKeepToTheirFolders) {
  // A branch named just "Local" has its own Data folder; the root's Data is
  // listed once.
  TempDir dir;
  const std::string root = dir / "ws";
  for (const char* file : {"Data/a.csv", "Local/Data/b.csv", "Local_u/Data/c.CSV", "Local_u/Data/d.txt"}) {
    WriteBytes(root + "/" + file, "");
  }
  std::vector<std::string> found;
  for (const std::string& file : chartcore::tool::FindBarFiles(root)) {
    found.push_back(chartcore::tool::RelativePath(root, file));
  }
  EXPECT_EQ(found, (std::vector<std::string>{"Data/a.csv", "Local/Data/b.csv", "Local_u/Data/c.CSV"}));

  // Below the root only at a separator.
  using chartcore::tool::RelativePath;
  EXPECT_EQ(RelativePath("ws", "ws2/x"), "ws2/x");
  EXPECT_EQ(RelativePath("ws", "ws/x"), "x");
  EXPECT_EQ(RelativePath("ws/", "ws\\x\\y"), "x/y");
  EXPECT_EQ(RelativePath("ws", "ws"), "ws");
}

TEST(ToolDemo, ToursAWorkspaceWithItsDefinitionsBarsAndFormula) {
  SampleDir ws;
  auto run = Cli({"demo", "--workspace", ws.path(), "--color", "never"});
  ASSERT_EQ(run.code, 0) << run.err;
  const std::string& out = run.out;
  EXPECT_EQ(out.rfind(std::string("chartcore ") + chartcore::GetLibraryVersion() + ": a tour of a workspace\n", 0),
            0u);
  EXPECT_TRUE(Has(out, "\n  FUNCT    6  BandPosition, GapRatio, MidPrice, TrueHigh, TrueLow, VolumeSpike\n"));
  EXPECT_TRUE(Has(out, "\n  BandPosition(Price, Upper, Lower)  Position of a price inside a band, in percent\n"));
  EXPECT_TRUE(Has(out, "Local_demo/Data/900010_day.csv, 489 bars from 2023/01/02 to 2024/12/30\n"));
  EXPECT_TRUE(Has(out, "Formula of PriceMomentum (Logic/Indica/PriceMomentum.ind)"));
  EXPECT_FALSE(Has(out, "\x1b"));  // --color never

  // The last row: stamped with the session close, MA(5) of the last five
  // closes as read from the file itself, and the close minus it.
  std::istringstream csv(chartcore::tool::SampleBarsCsv());
  std::string line;
  std::vector<double> closes;
  while (std::getline(csv, line)) {
    if (line[0] != 'd') closes.push_back(std::stod(line.substr(line.find_last_of(',', line.rfind(',') - 1) + 1)));
  }
  double sum = 0;
  for (size_t i = closes.size() - 5; i < closes.size(); ++i) sum += closes[i];
  const std::string average = chartcore::tool::Utf8(GetYPacketStringOfFormat(sum / 5, 0, 1));
  const std::string gap = chartcore::tool::Utf8(GetYPacketStringOfFormat(closes.back() - sum / 5, 0, 1));
  const size_t lastRow = out.find("  2024/12/30  15:30:00");
  ASSERT_NE(lastRow, std::string::npos);
  const std::string row = out.substr(lastRow, out.find('\n', lastRow) - lastRow);
  EXPECT_TRUE(Has(row, "  " + average + "  "));
  EXPECT_EQ(row.substr(row.size() - gap.size()), gap) << row;

  // Without --workspace: a temporary copy of the built-in sample, removed.
  run = Cli({"demo", "--code", "2"});
  ASSERT_EQ(run.code, 0) << run.err;
  const std::string marker = "built-in sample in ";
  const size_t at = run.out.find(marker);
  ASSERT_NE(at, std::string::npos);
  const std::string temp = run.out.substr(at + marker.size(), run.out.find(" (removed", at) - at - marker.size());
  EXPECT_FALSE(tooltest::fs::exists(temp)) << temp;
  EXPECT_TRUE(Has(run.out, "prices under format code 2"));
  EXPECT_TRUE(Has(run.out, ".00  "));  // two decimals
  EXPECT_TRUE(
      Refused(Cli({"demo", "--workspace", ws / "none"}), 1, "chartcore demo: " + (ws / "none") + ": not a folder\n"));

  // A damaged workspace is still toured: the damage is named in place.
  WriteBytes(ws / "Logic/Region/StrongTrend.reg", "\x01");
  WriteBytes(ws / chartcore::tool::kSampleBarsFile, "date,open,high,low,close,volume\n20240102,1,2\n");
  run = Cli({"demo", "--workspace", ws.path(), "--color", "never"});
  EXPECT_EQ(run.code, 0) << run.err;
  EXPECT_TRUE(Has(run.out, "  REGION   2  LowVolatility, StrongTrend (unreadable)\n"));
  EXPECT_TRUE(Has(run.out, "StrongTrend.reg: corrupt REGION definition (archive cause endOfFile"));
  EXPECT_TRUE(Has(run.out, ":2: expected 6 fields (date, open, high, low, close, volume), found 3\n"));
  EXPECT_TRUE(Has(run.out, "Formula of PriceMomentum"));
}

TEST(ToolOutput, ControlCharactersFromFilesNeverReachTheTerminal) {
  // C0 controls (tab aside), DEL and C1 controls show as U+FFFD wherever
  // text from a file is printed; JSON escapes them and still reads back.
  const std::string bad = "\xEF\xBF\xBD";
  TempDir dir;
  WriteBytes(dir / "f.txt", "a\x1b[31mb\x07\tc\xC2\x9B\x7F\n");
  auto run = Cli({"highlight", dir / "f.txt", "--workspace", dir.path()});
  EXPECT_EQ(run.out, "a" + bad + "[31mb" + bad + "\tc" + bad + bad + "\n");
  run = Cli({"highlight", dir / "f.txt", "--ansi", "--workspace", dir.path()});
  EXPECT_FALSE(Has(run.out, "\x1b[31m")) << run.out;

  SampleDir ws;
  WriteBytes(dir / "evil.json", R"({"kind": "INDICA", "record": {"m_strText1": "Evil\u001b]0;x\u0007\u009b2J\u007f"}})");
  ASSERT_EQ(Cli({"pack", dir / "evil.json", "-o", ws / "Logic/Indica/Evil.ind"}).code, 0);
  run = Cli({"demo", "--workspace", ws.path(), "--color", "never"});
  EXPECT_TRUE(Has(run.out, "Evil" + bad + "]0;x" + bad + bad + "2J" + bad + ", "));
  EXPECT_FALSE(Has(run.out, "\x1b") || Has(run.out, "\xC2\x9B") || Has(run.out, "\x07"));
  run = Cli({"inspect", ws / "Logic/Indica/Evil.ind"});
  EXPECT_TRUE(Has(run.out, R"("m_strText1": "Evil\u001b]0;x\u0007\u009b2J\u007f")"));
  WriteBytes(dir / "back.json", run.out);
  ASSERT_EQ(Cli({"pack", dir / "back.json", "-o", dir / "back.ind"}).code, 0);
  EXPECT_TRUE(ReadBytes(dir / "back.ind") == ReadBytes(ws / "Logic/Indica/Evil.ind"));

  // Error lines and the progress bar quote file names the same way.
  // Windows refuses such a name itself; elsewhere it is just not there.
#if defined(_WIN32)
  const std::string reason = "bad path";
#else
  const std::string reason = "file not found";
#endif
  EXPECT_TRUE(Refused(Cli({"table", dir / "x\x1b.csv"}), 1,
                      "chartcore table: " + (dir / "x") + bad + ".csv: cannot open (" + reason + ")\n"));
  std::ostringstream progress;
  chartcore::tool::ProgressBar bar(progress, true, 2, "inspect");
  bar.Step("a\x1b\x9B.ind");
  EXPECT_TRUE(Has(progress.str(), "] 1/2 a" + bad + bad + ".ind"));
}

TEST(ToolCli, VersionHelpAndUsageErrors) {
  auto run = Cli({"--version"});
  EXPECT_EQ(run.code, 0);
  EXPECT_EQ(run.out, std::string("chartcore ") + chartcore::GetLibraryVersion() + "\n");
  run = Cli({});
  EXPECT_EQ(run.code, 0);
  EXPECT_TRUE(Has(run.out, "demo"));
  std::string names;
  for (const auto& c : chartcore::tool::Commands()) names += std::string(names.empty() ? "" : ", ") + c.name;
  EXPECT_EQ(names.rfind("demo, workspace, inspect, pack, highlight, format, table", 0), 0u);
  EXPECT_TRUE(Refused(Cli({"frobnicate"}), 2, "chartcore: unknown command \"frobnicate\" (one of " + names + ")\n"));
  EXPECT_TRUE(Refused(Cli({"inspect"}), 2, "chartcore inspect: FILE is required (see chartcore inspect --help)\n"));
  EXPECT_EQ(Cli({"inspect", "--help"}).code, 0);
}

TEST(SampleWorkspace, GeneratorIsDeterministicAndMatchesTheCheckedInAndEmbeddedCopies) {
  TempDir first, second;
  const std::vector<std::string> written = chartcore::tool::WriteSampleWorkspace(first.path());
  chartcore::tool::WriteSampleWorkspace(second.path());
  const auto generated = TreeBytes(first.path());
  EXPECT_EQ(generated, TreeBytes(second.path()));  // two runs, the same bytes
  EXPECT_EQ(written.size(), generated.size());     // it reports every file it wrote
  // The repository's copy is the generator's output (refresh it with the
  // chartcore_sample_update target after changing the sample).
  const auto checkedIn = TreeBytes(std::string(CHARTCORE_SOURCE_DIR) + "/examples/workspace");
  EXPECT_EQ(generated.size(), checkedIn.size());
  for (const auto& file : generated) {
    auto it = checkedIn.find(file.first);
    ASSERT_NE(it, checkedIn.end()) << file.first << " is missing from examples/workspace";
    EXPECT_TRUE(it->second == file.second) << file.first << " differs from examples/workspace";
  }
  // The tool carries the same files, sorted by path.
  ASSERT_EQ(kSampleFileCount, generated.size());
  for (std::size_t i = 0; i < kSampleFileCount; ++i) {
    const auto it = generated.find(kSampleFiles[i].path);
    ASSERT_NE(it, generated.end()) << kSampleFiles[i].path;
    EXPECT_EQ(std::string(reinterpret_cast<const char*>(kSampleFiles[i].data), kSampleFiles[i].size), it->second);
    EXPECT_TRUE(i == 0 || std::string(kSampleFiles[i - 1].path) < kSampleFiles[i].path) << kSampleFiles[i].path;
  }
  // Empty layout folders keep a marker so the tree survives version control.
  EXPECT_EQ(generated.count("Logic/Market/.keep"), 1u);
  EXPECT_EQ(generated.count("Local_demo/Result/.keep"), 1u);
  EXPECT_EQ(generated.count("Logic/Indica/.keep"), 0u);  // holds definitions
}

TEST(SampleWorkspace, BarsAreTwoYearsOfTradingDaysOnTheTickTable) {
  std::istringstream csv(chartcore::tool::SampleBarsCsv());
  std::string line;
  std::getline(csv, line);
  EXPECT_EQ(line, "date,open,high,low,close,volume");
  std::set<long> days;
  while (std::getline(csv, line)) {
    long day;
    long long open, high, low, close, volume;
    ASSERT_EQ(std::sscanf(line.c_str(), "%ld,%lld,%lld,%lld,%lld,%lld", &day, &open, &high, &low, &close, &volume), 6)
        << line;
    EXPECT_TRUE(days.empty() || day > *days.rbegin()) << line;  // one bar a day, in order
    days.insert(day);
    const int weekday = GetDayOfWeek(static_cast<double>(day));
    EXPECT_TRUE(weekday >= 2 && weekday <= 6) << day << " is a weekend day";
    EXPECT_LE(low, std::min(open, close)) << line;
    EXPECT_GE(high, std::max(open, close)) << line;
    for (long long price : {open, high, low, close}) {
      EXPECT_EQ(price % static_cast<long long>(GetTickValue(0, static_cast<double>(price))), 0) << "off: " << line;
    }
    EXPECT_TRUE(volume > 0 && volume % 100 == 0) << line;
  }
  EXPECT_EQ(*days.begin(), 20230102);   // first Monday of 2023 (the 1st is a Sunday)
  EXPECT_EQ(*days.rbegin(), 20241230);  // the 31st is a holiday
  EXPECT_EQ(days.count(20230123), 0u);  // a listed holiday on a Monday
  EXPECT_EQ(days.count(20240410), 0u);  // a listed holiday on a Wednesday
  EXPECT_EQ(days.size(), 489u);         // 521 weekdays from 2023-01-02 to 2024-12-30 less 32 holidays
}

TEST(SampleWorkspace, EditorLoadsItsFunctionListAndDefinitions) {
  SampleDir dir;
  CScriptEdit edit;
  edit.InitWindow();
  edit.InitBasicFunctionList(chartcore::tool::Wide(dir.path()), L"", L"", 2);
  const CStringArray& names = edit.GetBasicFunctionList();
  ASSERT_EQ(names.GetSize(), 6);  // "System" before "User"
  EXPECT_TRUE(names.GetAt(0) == L"TrueHigh");
  EXPECT_TRUE(names.GetAt(3) == L"BandPosition");
  // A core function inserts its formula, a basic one its name and "()".
  EXPECT_TRUE(edit.GetCoreFormular(L"BandPosition") == L"BandPosition(Price, Upper, Lower)");
  EXPECT_TRUE(edit.GetBasicFormular(L"TrueHigh") == L"TrueHigh()");
  EXPECT_TRUE(edit.GetCoreFormular(L"TrueHigh").IsEmpty());  // a .bic has no .fct
  EXPECT_FALSE(edit.GetBasicComment(L"MidPrice").IsEmpty());
  // Six functions, two or three definitions of every other kind.
  std::map<std::string, int> perKind;
  for (const auto& file : chartcore::tool::ListDefinitions(dir.path())) ++perKind[file.kind->name];
  for (const auto& kind : chartcore::tool::AllKinds()) {
    const int count = perKind[kind.name];
    EXPECT_TRUE(kind.kind == chartcore::tool::LogicKind::kFunct ? count == 6 : (count == 2 || count == 3))
        << kind.name << ": " << count;
  }
}

#if !defined(_WIN32)
TEST(ToolBinary, ExitCodesReachTheShell) {
  const std::string tool = CHARTCORE_TOOL_PATH;
  int status = std::system(("'" + tool + "' --version >/dev/null").c_str());
  EXPECT_EQ(WEXITSTATUS(status), 0);
  status = std::system(("'" + tool + "' inspect /nonexistent/x.ind 2>/dev/null").c_str());
  EXPECT_EQ(WEXITSTATUS(status), 1);
  status = std::system(("'" + tool + "' inspect --kind nope x 2>/dev/null").c_str());
  EXPECT_EQ(WEXITSTATUS(status), 2);
}
#endif

// Runs the built tool with UTF-8 arguments the way the system passes them
// (on Windows a wide command line) and returns its exit code.
int RunBuiltTool(const std::vector<std::string>& args) {
#if defined(_WIN32)
  // The tool lies beside the test program.
  std::wstring program(MAX_PATH, L'\0');
  program.resize(GetModuleFileNameW(nullptr, &program[0], MAX_PATH));
  program = program.substr(0, program.find_last_of(L"\\/") + 1) + L"chartcore.exe";
  std::wstring line = L"\"" + program + L"\"";
  for (const std::string& arg : args) line += L" \"" + chartcore::Utf8ToWide(arg) + L"\"";
  STARTUPINFOW startup{};
  startup.cb = sizeof startup;
  PROCESS_INFORMATION process{};
  if (!CreateProcessW(nullptr, &line[0], nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup, &process)) return -1;
  WaitForSingleObject(process.hProcess, INFINITE);
  DWORD code = 0;
  GetExitCodeProcess(process.hProcess, &code);
  CloseHandle(process.hThread);
  CloseHandle(process.hProcess);
  return static_cast<int>(code);
#else
  std::string line = "'" + std::string(CHARTCORE_TOOL_PATH) + "'";
  for (const std::string& arg : args) line += " '" + arg + "'";
  const int status = std::system((line + " >/dev/null 2>&1").c_str());
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
#endif
}

TEST(ToolBinary, KoreanPathsReachTheCommands) {
  // Windows hands a program its argv in the system code page; the tool must
  // still open a Korean path and write to one.
  TempDir dir;
  const std::string folder = dir.root().u8string() + "/한글 폴더";
  tooltest::fs::create_directories(tooltest::fs::u8path(folder));
  WriteBytes(dir / "doc.json", R"({"kind": "INDICA", "record": {"m_strText1": "종가"}})");
  const std::string json = folder + "/지표.json";
  tooltest::fs::copy_file(dir / "doc.json", tooltest::fs::u8path(json));
  // In process (arguments already UTF-8) and through the system.
  auto run = Cli({"pack", json, "-o", folder + "/a.ind"});
  ASSERT_EQ(run.code, 0) << run.err;
  EXPECT_EQ(RunBuiltTool({"pack", json, "-o", folder + "/b.ind"}), 0);
  std::error_code ec;
  EXPECT_EQ(tooltest::fs::file_size(tooltest::fs::u8path(folder + "/b.ind"), ec),
            tooltest::fs::file_size(tooltest::fs::u8path(folder + "/a.ind"), ec));
  EXPECT_FALSE(ec) << ec.message();

  const char* const argv[] = {"chartcore", "한글.ind", nullptr};
  const std::vector<std::string> args = chartcore::GetUtf8Arguments(2, argv);
#if defined(_WIN32)
  // This program's own command line, not the argv handed in.
  ASSERT_FALSE(args.empty());
  EXPECT_NE(args[0].find("chartcore_tool_tests"), std::string::npos) << args[0];
#else
  EXPECT_EQ(args, (std::vector<std::string>{"chartcore", "한글.ind"}));
#endif
}

}  // namespace
