// The sample workspace: generated the same every time, checked in and
// embedded unchanged, bars on trading days and the tick table, definitions
// the editor loads.
#include "sample_workspace.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <set>

#include "chartcore/foundation/datetime.h"
#include "chartcore/foundation/formatting.h"
#include "chartcore/script_editor/script_edit.h"
#include "tool_test_util.h"
#include "tool_text.h"
#include "workspace.h"

namespace {

using chartcore::tool::kSampleFileCount;
using chartcore::tool::kSampleFiles;
using tooltest::TempDir;
using tooltest::TreeBytes;

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
      EXPECT_EQ(price % static_cast<long long>(GetTickValue(0, static_cast<double>(price))), 0) << "off the ticks: " << line;
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
  TempDir dir;
  chartcore::tool::WriteSampleWorkspace(dir.path());
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

}  // namespace
