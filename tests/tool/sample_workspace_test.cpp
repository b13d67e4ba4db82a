#include "sample_workspace.h"

#include <gtest/gtest.h>

#include <cstdlib>
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
  TempDir first;
  TempDir second;
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
    if (i > 0) {
      EXPECT_LT(std::string(kSampleFiles[i - 1].path), kSampleFiles[i].path);
    }
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
  long previous = 0;
  while (std::getline(csv, line)) {
    long day;
    long long open, high, low, close, volume;
    ASSERT_EQ(std::sscanf(line.c_str(), "%ld,%lld,%lld,%lld,%lld,%lld", &day, &open, &high, &low, &close, &volume), 6)
        << line;
    EXPECT_GT(day, previous);  // one bar a day, in order
    previous = day;
    days.insert(day);
    const int weekday = GetDayOfWeek(static_cast<double>(day));
    EXPECT_TRUE(weekday >= 2 && weekday <= 6) << day << " is a weekend day";
    EXPECT_LE(low, std::min(open, close)) << line;
    EXPECT_GE(high, std::max(open, close)) << line;
    for (long long price : {open, high, low, close}) {
      const auto tick = static_cast<long long>(GetTickValue(0, static_cast<double>(price)));
      EXPECT_EQ(price % tick, 0) << price << " is off the tick table in " << line;
    }
    EXPECT_EQ(volume % 100, 0);
    EXPECT_GT(volume, 0);
  }
  EXPECT_EQ(*days.begin(), 20230102);        // first Monday of 2023 (the 1st is a Sunday)
  EXPECT_EQ(*days.rbegin(), 20241230);       // the 31st is a holiday
  EXPECT_EQ(days.count(20230123), 0u);       // a listed holiday on a Monday
  EXPECT_EQ(days.count(20240410), 0u);       // a listed holiday on a Wednesday
  EXPECT_EQ(days.size(), 489u);  // 521 weekdays from 2023-01-02 to 2024-12-30 less 32 holidays
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

  // Two or three definitions of every kind.
  std::map<std::string, int> perKind;
  for (const auto& file : chartcore::tool::ListDefinitions(dir.path())) ++perKind[file.kind->name];
  for (const auto& kind : chartcore::tool::AllKinds()) {
    const int count = perKind[kind.name];
    EXPECT_TRUE(kind.kind == chartcore::tool::LogicKind::kFunct ? count == 6 : (count == 2 || count == 3))
        << kind.name << ": " << count;
  }
}

}  // namespace
