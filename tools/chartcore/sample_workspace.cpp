#include "sample_workspace.h"

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <initializer_list>
#include <system_error>

#include "chartcore/foundation/datetime.h"
#include "chartcore/foundation/formatting.h"
#include "chartcore/foundation/paths.h"
#include "chartcore/logic/funct.h"
#include "chartcore/logic/indica.h"
#include "chartcore/logic/optimize.h"
#include "chartcore/logic/pattern.h"
#include "chartcore/logic/record_file.h"
#include "chartcore/logic/signal_region_fill.h"
#include "chartcore/platform/file.h"
#include "kinds.h"
#include "tool_text.h"
#include "workspace.h"

namespace chartcore {
namespace tool {

const char kSampleBarsFile[] = "Local_demo/Data/900010_day.csv";

namespace {

// ---------------------------------------------------------------------------
// Daily bars
// ---------------------------------------------------------------------------

constexpr int kFirstDay = 20230102;
constexpr int kLastDay = 20241230;
constexpr std::int64_t kFirstClose = 52000;

// Days the sample market is closed besides weekends (YYYYMMDD).
constexpr int kHolidays[] = {
    20230123, 20230124, 20230301, 20230501, 20230505, 20230529, 20230606, 20230815, 20230928, 20230929, 20231002,
    20231003, 20231009, 20231225, 20231229, 20240101, 20240209, 20240212, 20240301, 20240410, 20240501, 20240506,
    20240515, 20240606, 20240815, 20240916, 20240917, 20240918, 20241001, 20241003, 20241009, 20241225, 20241231,
};

// splitmix64: a small generator whose sequence is fixed by its seed on
// every platform, so the bars never change between builds.
class SeededRandom {
 public:
  explicit SeededRandom(std::uint64_t seed) : state_(seed) {}
  std::uint64_t Next() {
    std::uint64_t z = (state_ += 0x9E3779B97F4A7C15ull);
    z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ull;
    z = (z ^ (z >> 27)) * 0x94D049BB133111EBull;
    return z ^ (z >> 31);
  }
  // A whole number from lo to hi.
  std::int64_t Between(std::int64_t lo, std::int64_t hi) {
    return lo + static_cast<std::int64_t>(Next() % static_cast<std::uint64_t>(hi - lo + 1));
  }

 private:
  std::uint64_t state_;
};

bool IsTradingDay(int day) {
  const int weekday = GetDayOfWeek(day);  // 1 Sunday .. 7 Saturday
  if (weekday == 1 || weekday == 7) return false;
  return std::find(std::begin(kHolidays), std::end(kHolidays), day) == std::end(kHolidays);
}

std::int64_t Tick(std::int64_t price) { return static_cast<std::int64_t>(GetTickValue(0, static_cast<double>(price))); }

// price scaled by (10000 + basisPoints) / 10000, then moved to a tick of the
// share tick table: down, up or to the nearest.
enum class Round { kDown, kUp, kNearest };
std::int64_t Move(std::int64_t price, std::int64_t basisPoints, Round round) {
  const std::int64_t raw = price * (10000 + basisPoints) / 10000;
  const std::int64_t tick = std::max<std::int64_t>(1, Tick(raw));
  std::int64_t down = raw / tick * tick;
  if (round == Round::kDown || raw == down) return down;
  if (round == Round::kUp || (raw - down) * 2 >= tick) return down + tick;
  return down;
}

// ---------------------------------------------------------------------------
// Definitions
// ---------------------------------------------------------------------------

struct VariableInit {
  const wchar_t* text;
  int decimals;  // the sample's convention for a variable's integer
  double value;
};

template <class VAR, class ARG>
void SetVariables(CArray<VAR, ARG>& array, std::initializer_list<VariableInit> inits) {
  for (const VariableInit& init : inits) {
    VAR variable;
    variable.strText = init.text;
    variable.nValue = init.decimals;
    variable.dValue = init.value;
    array.Add(variable);
  }
}

// A record of the sample: its name, description and formula, every other
// field at its default until the caller sets it.
template <class RECORD>
RECORD Named(const wchar_t* name, const wchar_t* description, const wchar_t* formula) {
  RECORD record;
  record.m_strText1 = name;
  record.m_strText2 = description;
  record.m_strText3 = formula;
  return record;
}

CDBSubINDICA_ELM Element(const wchar_t* title, const wchar_t* series, COLORREF up, COLORREF down, int thickness) {
  CDBSubINDICA_ELM element;
  element.strE00 = title;
  element.nE01 = 0;  // solid line
  element.nE02 = thickness;
  element.nE04 = 1;
  element.strE11 = series;
  element.clrE08 = up;
  element.clrE09 = down;
  element.nE12 = 1;
  return element;
}

CDBSubINDICA_BASE BaseLine(double level) {
  CDBSubINDICA_BASE base;
  base.nBase0 = 1;  // shown
  base.dBase1 = level;
  base.nBase3 = 1;
  return base;
}

CDBSubOPTIMIZE_VAR Range(const wchar_t* text, double from, double to, double step, double current) {
  CDBSubOPTIMIZE_VAR variable;
  variable.strText = text;
  variable.dValue1 = from;
  variable.dValue2 = to;
  variable.dValue3 = step;
  variable.dValue4 = current;
  return variable;
}

// A file the sample holds, with what README.md says of it.
struct Entry {
  const KindInfo* kind;
  std::string file;
  std::string description;
  std::string formula;
};

class SampleWriter {
 public:
  explicit SampleWriter(std::string root) : root_(std::move(root)) {}

  // Saves record as "<its name><extension>" in its kind's folder.
  void Definition(LogicKind kind, CDBSubBase& record, const std::string& extension = "") {
    const KindInfo& info = KindOf(kind);
    const std::string file = Utf8(record.m_strText1) + (extension.empty() ? info.extensions.front() : extension);
    const std::string relative = "Logic/" + FolderName(info) + "/" + file;
    CFileException error;
    if (!SaveRecordFile(Wide(JoinPath(root_, relative)), record, &error)) {
      throw ToolError(JoinPath(root_, relative) + ": cannot write (" + FileErrorText(error.m_cause) + ")");
    }
    written_.push_back(relative);
    if (auto* function = dynamic_cast<CDBSubFUNCT*>(&record)) {
      // A function is listed by its call form and comment, with its script.
      entries_.push_back({&info, file, "`" + Utf8(function->m_strText3) + "`, " + Utf8(function->m_strText4),
                          Utf8(function->m_strText2)});
    } else {
      entries_.push_back({&info, file, Utf8(record.m_strText2), Utf8(FormulaText(record))});
    }
  }

  void Text(const std::string& relative, const std::string& text) {
    WriteFileBytes(JoinPath(root_, relative), text.data(), text.size());
    written_.push_back(relative);
  }

  const std::vector<Entry>& entries() const { return entries_; }
  std::vector<std::string>& written() { return written_; }

 private:
  std::string root_;
  std::vector<std::string> written_;
  std::vector<Entry> entries_;
};

// A user function: .fct files carry the call form as the formula, .bic files
// are called by name. The second text holds the function's script.
void Function(SampleWriter& out, const wchar_t* name, const wchar_t* script, const wchar_t* callForm, int parameters,
              const wchar_t* comment, const char* extension) {
  CDBSubFUNCT record;
  record.m_strText1 = name;
  record.m_strText2 = script;
  record.nU01 = parameters;
  record.m_strText3 = callForm;
  record.m_strText4 = comment;
  out.Definition(LogicKind::kFunct, record, extension);
}

void WriteFunctions(SampleWriter& out) {
  Function(out, L"TrueHigh", L"TrueHigh = max(High, Ref(Close, 1));", L"TrueHigh()", 0,
           L"The higher of the bar's high and the previous close", ".bic");
  Function(out, L"TrueLow", L"TrueLow = min(Low, Ref(Close, 1));", L"TrueLow()", 0,
           L"The lower of the bar's low and the previous close", ".bic");
  Function(out, L"MidPrice", L"MidPrice = (High + Low) / 2;", L"MidPrice()", 0, L"The middle of the bar's range",
           ".bic");
  Function(out, L"BandPosition",
           L"// Where Price stands in the band: 0 at Lower, 100 at Upper\r\n"
           L"BandPosition = (Price - Lower) / max(Upper - Lower, 0.0001) * 100;",
           L"BandPosition(Price, Upper, Lower)", 3, L"Position of a price inside a band, in percent", ".fct");
  Function(out, L"GapRatio", L"GapRatio = (Close - MA(Close, Period)) / MA(Close, Period) * 100;", L"GapRatio(Period)",
           1, L"Distance of the close from its moving average, in percent", ".fct");
  Function(out, L"VolumeSpike", L"VolumeSpike = Volume > Avg(Volume, Period) * Ratio;", L"VolumeSpike(Period, Ratio)",
           2, L"True on a bar whose volume exceeds Ratio times its average", ".fct");
  out.Text("Logic/" + FolderName(KindOf(LogicKind::kFunct)) + "/New_Function.dat",
           "[System]\r\nCount=3\r\nName0=TrueHigh\r\nName1=TrueLow\r\nName2=MidPrice\r\n\r\n"
           "[User]\r\nCount=3\r\nName0=BandPosition\r\nName1=GapRatio\r\nName2=VolumeSpike\r\n");
}

void WriteIndicators(SampleWriter& out) {
  auto momentum =
      Named<CDBSubINDICA>(L"PriceMomentum", L"Momentum of the close in percent, with a smoothed signal line",
                          L"// Momentum of the close against Period bars ago, in percent\r\n"
                          L"Value = (C - Ref(C, Period)) / Ref(C, Period) * 100;\r\n"
                          L"Signal = EAvg(Value, SignalPeriod);   /* smoothed */\r\n"
                          L"if crossup(Value, Signal) and volume > Avg(volume, 20) then \"buy\";\r\n"
                          L"만일 Value < -5 and GapRatio(20) < 0 then \"매도 주의\";");
  momentum.nA01 = 1;
  momentum.nA03 = 2;
  momentum.clrA08 = RGB(220, 50, 47);
  momentum.clrA09 = RGB(38, 139, 210);
  momentum.nA12 = 1;
  momentum.m_arrElement.Add(Element(L"Momentum", L"Value", RGB(220, 50, 47), RGB(38, 139, 210), 2));
  momentum.m_arrElement.Add(Element(L"Signal", L"Signal", RGB(133, 153, 0), RGB(133, 153, 0), 1));
  SetVariables(momentum.m_arrVariable, {{L"Period", 0, 10}, {L"SignalPeriod", 0, 9}});
  momentum.m_arrBase.Add(BaseLine(0.0));
  out.Definition(LogicKind::kIndica, momentum);

  auto width =
      Named<CDBSubINDICA>(L"BandWidthPct", L"Width of the standard-deviation band as a percentage of its middle",
                          L"Upper = MA(C, Period) + StdDev(C, Period) * Width;\r\n"
                          L"Lower = MA(C, Period) - StdDev(C, Period) * Width;\r\n"
                          L"Value = (Upper - Lower) / MA(C, Period) * 100;");
  width.m_arrElement.Add(Element(L"BandWidth", L"Value", RGB(108, 113, 196), RGB(108, 113, 196), 1));
  SetVariables(width.m_arrVariable, {{L"Period", 0, 20}, {L"Width", 1, 2.0}});
  width.m_arrBase.Add(BaseLine(10.0));
  out.Definition(LogicKind::kIndica, width);

  auto volume = Named<CDBSubINDICA>(L"VolumeTrend", L"Short volume average against the long one, in percent",
                                    L"Value = Avg(volume, Short) / Avg(volume, Long) * 100;");
  volume.nA01 = 2;
  volume.m_arrElement.Add(Element(L"VolumeRatio", L"Value", RGB(42, 161, 152), RGB(211, 54, 130), 2));
  SetVariables(volume.m_arrVariable, {{L"Short", 0, 5}, {L"Long", 0, 20}});
  volume.m_arrBase.Add(BaseLine(100.0));
  out.Definition(LogicKind::kIndica, volume);
}

void WriteSignals(SampleWriter& out) {
  auto golden = Named<CDBSubSIGNAL>(L"GoldenCross", L"The short moving average crosses above the long one",
                                    L"crossup(MA(C, Short), MA(C, Long))");
  golden.m_strText4 = L"골든크로스";
  golden.nS01 = 1;
  SetVariables(golden.m_arrVariable, {{L"Short", 0, 5}, {L"Long", 0, 20}});
  out.Definition(LogicKind::kSignal, golden);

  auto oversold = Named<CDBSubSIGNAL>(L"RSIOversold", L"RSI climbs back above the oversold level",
                                      L"crossup(RSI(C, Period), Level)");
  oversold.m_strText4 = L"RSI 과매도 탈출";
  oversold.nS01 = 1;
  oversold.clrS04 = RGB(255, 128, 0);
  SetVariables(oversold.m_arrVariable, {{L"Period", 0, 14}, {L"Level", 0, 30}});
  out.Definition(LogicKind::kSignal, oversold);

  auto breakout = Named<CDBSubSIGNAL>(L"VolumeBreakout", L"A new high on heavy volume",
                                      L"C > Ref(highest(H, Period), 1) and VolumeSpike(Period, Ratio)");
  breakout.m_strText4 = L"거래량 동반 돌파";
  breakout.nS01 = 1;
  breakout.nS03 = 2;
  SetVariables(breakout.m_arrVariable, {{L"Period", 0, 20}, {L"Ratio", 1, 2.0}});
  out.Definition(LogicKind::kSignal, breakout);
}

void WriteRegionsAndFills(SampleWriter& out) {
  auto trend =
      Named<CDBSubREGION>(L"StrongTrend", L"Bars where the trend strength is above Level", L"ADX(Period) > Level");
  trend.m_strText4 = L"강한 추세 구간";
  SetVariables(trend.m_arrVariable, {{L"Period", 0, 14}, {L"Level", 0, 25}});
  out.Definition(LogicKind::kRegion, trend);

  auto quiet = Named<CDBSubREGION>(L"LowVolatility", L"Bars where the band is narrower than Level percent",
                                   L"BollingerWidth(Period, 2) < Level");
  quiet.m_strText4 = L"변동성 축소 구간";
  quiet.clrR04 = RGB(255, 236, 179);
  SetVariables(quiet.m_arrVariable, {{L"Period", 0, 20}, {L"Level", 1, 5.0}});
  out.Definition(LogicKind::kRegion, quiet);

  auto bands = Named<CDBSubFILL>(L"BollingerFill", L"Shades the area between the upper and lower band",
                                 L"Bollinger_Up(Period, Width)");
  bands.m_strText4 = L"Bollinger_Dn(Period, Width)";
  bands.m_strText5 = L"볼린저 밴드";
  bands.nF02 = 0;
  SetVariables(bands.m_arrVariable, {{L"Period", 0, 20}, {L"Width", 1, 2.0}});
  out.Definition(LogicKind::kFill, bands);

  auto cloud = Named<CDBSubFILL>(L"CloudFill", L"Shades the cloud between the two leading spans",
                                 L"IchimokuSenkouSpan1(Short, Middle)");
  cloud.m_strText4 = L"IchimokuSenkouSpan2(Middle, Long)";
  cloud.m_strText5 = L"구름대";
  cloud.clrF06 = RGB(200, 200, 255);
  SetVariables(cloud.m_arrVariable, {{L"Short", 0, 9}, {L"Middle", 0, 26}, {L"Long", 0, 52}});
  out.Definition(LogicKind::kFill, cloud);
}

void WritePatternsAndOptimisations(SampleWriter& out) {
  auto hammer = Named<CDBSubPATTERN>(L"Hammer", L"One candle: a small body at the top and a long lower shadow",
                                     L"min(O, C) - L >= (H - L) * ShadowRatio and abs(C - O) <= (H - L) * BodyRatio");
  hammer.m_strText4 = L"망치형";
  CDBSubPATTERN_BONG candle;
  candle.nBong1 = 1;   // rising
  candle.nBong2 = 30;  // body, % of the range
  candle.nBong3 = 60;  // lower shadow
  candle.nBong4 = 10;  // upper shadow
  hammer.m_arrBong.Add(candle);
  SetVariables(hammer.m_arrVariable, {{L"BodyRatio", 1, 0.3}, {L"ShadowRatio", 1, 0.6}});
  out.Definition(LogicKind::kPattern, hammer);

  auto star =
      Named<CDBSubPATTERN>(L"MorningStar", L"Three candles: a long fall, a small star, a long rise",
                           L"Ref(C, 2) < Ref(O, 2) and abs(Ref(C, 1) - Ref(O, 1)) < (Ref(O, 2) - Ref(C, 2)) * Depth "
                           L"and C > (Ref(O, 2) + Ref(C, 2)) / 2");
  star.m_strText4 = L"샛별형";
  star.nP04 = 3;
  const int candles[3][4] = {{-1, 70, 15, 15}, {0, 10, 45, 45}, {1, 70, 15, 15}};
  for (const auto& shape : candles) {
    CDBSubPATTERN_BONG bar;
    bar.nBong1 = shape[0];
    bar.nBong2 = shape[1];
    bar.nBong3 = shape[2];
    bar.nBong4 = shape[3];
    star.m_arrBong.Add(bar);
  }
  for (int line : {0, 2}) {
    CDBSubPATTERN_LINE trend;
    trend.nLine = line;
    star.m_arrLine.Add(trend);
  }
  SetVariables(star.m_arrVariable, {{L"Depth", 1, 0.5}});
  out.Definition(LogicKind::kPattern, star);

  auto periods = Named<CDBSubOPTIMIZE>(
      L"GoldenCrossPeriods", L"Searches the two periods of GoldenCross for the best net profit", L"GoldenCross");
  CDBSubOPTIMIZE_ELM target;
  target.nE01 = 1;  // a signal
  target.strE05 = L"GoldenCross";
  periods.m_arrElement.Add(target);
  periods.m_arrVariable.Add(Range(L"Short", 3, 10, 1, 5));
  periods.m_arrVariable.Add(Range(L"Long", 10, 60, 5, 20));
  out.Definition(LogicKind::kOptimize, periods);

  auto levels =
      Named<CDBSubOPTIMIZE>(L"RSIThresholds", L"Searches the period and level of RSIOversold", L"RSIOversold");
  levels.nO02 = 2;
  CDBSubOPTIMIZE_ELM signal;
  signal.nE01 = 1;
  signal.strE05 = L"RSIOversold";
  levels.m_arrElement.Add(signal);
  levels.m_arrVariable.Add(Range(L"Period", 7, 21, 7, 14));
  levels.m_arrVariable.Add(Range(L"Level", 20, 40, 5, 30));
  out.Definition(LogicKind::kOptimize, levels);
}

// ---------------------------------------------------------------------------
// README.md
// ---------------------------------------------------------------------------

std::string Readme(const SampleWriter& out, int bars) {
  std::string text =
      "# Sample workspace\n\n"
      "Written by the chartcore build (`chartcore_workspace_gen`), from fixed data, so every build writes the\n"
      "same bytes. `chartcore demo` tours a copy of it, `chartcore workspace init DIR --samples` writes it into\n"
      "a new workspace, and `chartcore inspect FILE` prints any of its definition files as JSON.\n\n"
      "Every definition file holds one record (the record's own bytes, read by the kind of its folder). The\n"
      "first text of a record is its name and the second its description, the third its formula; a function\n"
      "keeps its script in the second text, its call form (what the editor inserts) in the third and its\n"
      "comment in the fourth. A variable's integer is the number of decimals the sample shows for it.\n\n"
      "## Definitions\n";
  const KindInfo* kind = nullptr;
  for (const Entry& entry : out.entries()) {
    if (entry.kind != kind) {
      kind = entry.kind;
      text += "\n### " + std::string(kind->name) + " (`Logic/" + FolderName(*kind) + "/`)\n\n";
    }
    text += "- `" + entry.file + "`: " + entry.description + "\n\n  ```\n";
    std::string formula = entry.formula;
    size_t at = 0;
    while ((at = formula.find('\r', at)) != std::string::npos) formula.erase(at, 1);
    text += "  ";
    for (char c : formula) text += c == '\n' ? std::string("\n  ") : std::string(1, c);
    text += "\n  ```\n";
  }
  text += "\n`Logic/" + FolderName(KindOf(LogicKind::kFunct)) +
          "/New_Function.dat` lists the functions for the script editor: the system\n"
          "functions (`.bic`, inserted as their name and \"()\") and the user functions (`.fct`, inserted as\n"
          "their call form).\n\n"
          "## Daily bars\n\n"
          "`" +
          std::string(kSampleBarsFile) + "`: " + std::to_string(bars) +
          " daily bars of the made-up share 900010, every trading day of 2023\n"
          "and 2024 (weekends and the market's holidays left out), as `date,open,high,low,close,volume`. Prices follow a seeded random walk\n"
          "from 52,000 and sit on the share tick table (`GetTickValue`).\n\n"
          "## The other folders\n\n"
          "`Logic/Market`, `Save`, `Templ`, `Event` and the user branch `Local_demo` (`Data`, `Image`, `Result`,\n"
          "`Save`, `Templ`) are the rest of the workspace layout; an empty one holds a `.keep` file.\n";
  return text;
}

}  // namespace

std::string SampleBarsCsv() {
  SeededRandom random(0x0C4A27C02E5EEDull);
  std::string csv = "date,open,high,low,close,volume\n";
  std::int64_t close = kFirstClose;
  for (int day = kFirstDay; day <= kLastDay; day = GetNextYearMonthDay(day)) {
    if (!IsTradingDay(day)) continue;
    // A gentle upward drift with days of -3% to +3%.
    const std::int64_t change = random.Between(-100, 100) + random.Between(-100, 100) + random.Between(-100, 100) + 4;
    const std::int64_t open = Move(close, random.Between(-60, 60), Round::kNearest);
    const std::int64_t next = Move(close, change, Round::kNearest);
    const std::int64_t high = Move(std::max(open, next), random.Between(0, 150), Round::kUp);
    const std::int64_t low = Move(std::min(open, next), -random.Between(0, 150), Round::kDown);
    const std::int64_t size = change < 0 ? -change : change;  // busier on big days
    const std::int64_t volume = (800000 + random.Between(0, 600000) + size * 4000) / 100 * 100;
    csv += std::to_string(day) + "," + std::to_string(open) + "," + std::to_string(high) + "," + std::to_string(low) +
           "," + std::to_string(next) + "," + std::to_string(volume) + "\n";
    close = next;
  }
  return csv;
}

std::vector<std::string> WriteSampleWorkspace(const std::string& root) {
  std::error_code ec;
  if (!std::filesystem::is_directory(std::filesystem::u8path(root), ec)) {
    throw ToolError(root + ": not a folder");
  }
  CreateLayout(root, kSampleUser);
  SampleWriter out(root);
  WriteFunctions(out);
  WriteIndicators(out);
  WriteSignals(out);
  WriteRegionsAndFills(out);
  WritePatternsAndOptimisations(out);
  const std::string bars = SampleBarsCsv();
  out.Text(kSampleBarsFile, bars);
  out.Text("README.md", Readme(out, static_cast<int>(std::count(bars.begin(), bars.end(), '\n')) - 1));

  // Version control keeps no empty folders: mark those of the layout.
  for (const CString& folder : LayoutFolders(Wide(root), Wide(kSampleUser))) {
    const std::string native = NativeText(folder);
    if (std::filesystem::is_empty(std::filesystem::u8path(native), ec) && !ec) {
      out.Text(RelativePath(root, native) + "/.keep", std::string());
    }
  }
  std::vector<std::string> written = out.written();
  std::sort(written.begin(), written.end());
  return written;
}

}  // namespace tool
}  // namespace chartcore
