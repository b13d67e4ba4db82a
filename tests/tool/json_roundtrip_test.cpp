// Definition files as JSON: inspect's exact output, pack's round trips to
// the byte, the double and colour forms, kind detection, refusal of bad
// input; the progress bar and the formula colouring the commands use.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <sstream>

#include "chartcore/logic/indica.h"
#include "chartcore/logic/optimize.h"
#include "chartcore/logic/pattern.h"
#include "chartcore/logic/record_file.h"
#include "chartcore/logic/signal_region_fill.h"
#include "highlight.h"
#include "kinds.h"
#include "record_json.h"
#include "terminal.h"
#include "tool_test_util.h"
#include "tool_text.h"
#include "workspace.h"

namespace {

using chartcore::tool::DecodeDouble;
using chartcore::tool::EncodeDouble;
using chartcore::tool::Framing;
using chartcore::tool::Json;
using chartcore::tool::KindOf;
using chartcore::tool::LogicKind;
using tooltest::Cli;
using tooltest::Has;
using tooltest::ReadBytes;
using tooltest::Refused;
using tooltest::SampleDir;
using tooltest::TempDir;
using tooltest::WriteBytes;

std::uint64_t Bits(double value) {
  std::uint64_t bits;
  std::memcpy(&bits, &value, sizeof bits);
  return bits;
}

double FromBits(std::uint64_t bits) {
  double value;
  std::memcpy(&value, &bits, sizeof value);
  return value;
}

template <class RECORD>
std::string Stored(RECORD& record, Framing framing = Framing::kPlain) {
  const std::vector<BYTE> bytes = chartcore::tool::StoreDefinition(record, framing);
  return std::string(bytes.begin(), bytes.end());
}

// What pack writes for a document (kept in dir as doc.json and packed).
std::string Packed(const std::string& document, const TempDir& dir) {
  WriteBytes(dir / "doc.json", document);
  const auto run = Cli({"pack", dir / "doc.json", "-o", dir / "packed"});
  EXPECT_TRUE(run.code == 0 && run.out.empty()) << run.err;
  return ReadBytes(dir / "packed");
}

// The document pack reads for one record, as inspect prints it, and the
// bytes pack makes of a document.
Json Document(LogicKind kind, CDBSubBase& record) {
  Json doc = Json::object();
  doc["kind"] = KindOf(kind).name;
  doc["record"] = chartcore::tool::RecordToJson(KindOf(kind), record);
  return doc;
}

std::vector<BYTE> FromJson(const Json& doc) {
  Framing framing = Framing::kPlain;
  auto record = chartcore::tool::DefinitionFromJson(doc, nullptr, framing, "doc.json");
  return chartcore::tool::StoreDefinition(*record, framing);
}

TEST(ToolInspect, PrintsEveryFieldOfASignalAsExactJson) {
  SampleDir ws;
  const std::string file = ws / "Logic/Signal/GoldenCross.sig";
  const auto run = Cli({"inspect", file});
  ASSERT_EQ(run.code, 0) << run.err;
  EXPECT_EQ(run.err, "");
  // Archive order; the colour as 0x00BBGGRR text; the no-value mark as the
  // largest double; Korean text as UTF-8.
  // (The file name as a JSON string: Windows paths have escaped backslashes.)
  const std::string expected = R"json({
  "file": )json" + Json(file).dump() + R"json(,
  "kind": "SIGNAL",
  "class": "CDBSubSIGNAL",
  "framing": "plain",
  "fileVersion": 0,
  "currentForm": true,
  "record": {
    "m_nVersion": 0,
    "m_strText1": "GoldenCross",
    "m_nFlag": 1,
    "m_dValue": 1.7976931348623157e+308,
    "m_strText2": "The short moving average crosses above the long one",
    "nS01": 1,
    "nS02": 1,
    "nS03": 0,
    "clrS04": "0x000000FF",
    "nS05": -1,
    "nS06": -1,
    "m_strText3": "crossup(MA(C, Short), MA(C, Long))",
    "m_strText4": "골든크로스",
    "m_arrVariable": [
      {
        "strText": "Short",
        "nValue": 0,
        "dValue": 5.0
      },
      {
        "strText": "Long",
        "nValue": 0,
        "dValue": 20.0
      }
    ],
    "nTail": -1
  }
}
)json";
  EXPECT_EQ(run.out, expected);
}

TEST(ToolPack, EverySampleDefinitionRoundTripsToTheByte) {
  SampleDir ws;
  TempDir scratch;
  const auto files = chartcore::tool::ListDefinitions(ws.path());
  ASSERT_EQ(files.size(), 20u);
  for (const auto& file : files) {
    SCOPED_TRACE(file.relative);
    const auto inspected = Cli({"inspect", file.path});
    ASSERT_EQ(inspected.code, 0) << inspected.err;
    EXPECT_TRUE(Has(inspected.out, "\"currentForm\": true"));
    EXPECT_TRUE(Packed(inspected.out, scratch) == ReadBytes(file.path)) << "changed through JSON";
  }
}

TEST(ToolPack, OlderVersionPacksAsTheCurrentOneAndObjectFramingIsKept) {
  TempDir dir;
  // A fill written in format 0: version 0 and no nF02, which sits after the
  // 24-byte header (version, empty text, flag, double, empty text) and nF01.
  CDBSubFILL fill;
  fill.nF01 = 7;
  fill.nF05 = 9;
  const std::string current = Stored(fill);
  std::string old = current;
  old.replace(0, 4, std::string(4, '\0'));
  old.erase(28, 4);
  WriteBytes(dir / "old.fil", old);
  const auto inspected = Cli({"inspect", dir / "old.fil"});
  ASSERT_EQ(inspected.code, 0) << inspected.err;
  const Json doc = Json::parse(inspected.out);
  EXPECT_EQ(doc["fileVersion"], 0);
  EXPECT_EQ(doc["currentForm"], false);
  EXPECT_EQ(doc["record"]["m_nVersion"], 1);  // upgraded on load
  EXPECT_EQ(doc["record"]["nF02"], -1);       // what format 0 files mean
  EXPECT_TRUE(Packed(inspected.out, dir) == current);

  // An object-framed file names its own class wherever it lies, and packs
  // back with its framing.
  CDBSubPATTERN pattern;
  pattern.m_strText1 = L"Doji";
  const std::string framed = Stored(pattern, Framing::kObject);
  EXPECT_EQ(framed.substr(0, 6), std::string("\xFF\xFF\x00\x00\x0D\x00", 6));  // tag, schema 0, 13 letters
  WriteBytes(dir / "doji.bin", framed);
  const auto run = Cli({"inspect", dir / "doji.bin"});
  ASSERT_EQ(run.code, 0) << run.err;
  EXPECT_EQ(Json::parse(run.out)["framing"], "object");
  EXPECT_EQ(Json::parse(run.out)["kind"], "PATTERN");
  EXPECT_TRUE(Packed(run.out, dir) == framed);
  EXPECT_TRUE(Refused(Cli({"inspect", "--kind", "signal", dir / "doji.bin"}), 1,
                      "chartcore inspect: " + (dir / "doji.bin") + ": holds a PATTERN definition, not SIGNAL\n"));
}

TEST(ToolPack, DoublesAndTextsJsonCannotHoldSurviveTheRoundTrip) {
  TempDir dir;
  WriteBytes(dir / "a.ind", Packed(R"({"kind": "INDICA", "record": {
      "m_dValue": "NaN",
      "m_strText1": {"utf16": [55296, 65]},
      "m_arrVariable": [
        {"strText": "a", "dValue": "-Infinity"},
        {"strText": "b", "dValue": "0x7FF0000000000001"},
        {"strText": "c", "dValue": -0.0},
        {"strText": "d", "dValue": 5e-324},
        {"strText": "e", "dValue": 0.1}]}})", dir));
  const auto inspected = Cli({"inspect", dir / "a.ind"});
  ASSERT_EQ(inspected.code, 0) << inspected.err;
  const Json record = Json::parse(inspected.out)["record"];
  EXPECT_EQ(record["m_dValue"], "NaN");
  EXPECT_EQ(record["m_strText1"]["utf16"], Json::parse("[55296, 65]"));  // a lone surrogate stays a code unit
  EXPECT_EQ(record["m_arrVariable"][0]["dValue"], "-Infinity");
  EXPECT_EQ(record["m_arrVariable"][1]["dValue"], "0x7FF0000000000001");  // a signalling NaN keeps its bits
  EXPECT_EQ(record["nA04"], 4);                                          // left out: the default
  // The file holds exactly those bits.
  CDBSubINDICA loaded;
  ASSERT_TRUE(chartcore::LoadRecordFile(chartcore::tool::Wide(dir / "a.ind"), loaded));
  EXPECT_EQ(Bits(loaded.m_arrVariable[2].dValue), 0x8000000000000000ull);
  EXPECT_EQ(loaded.m_arrVariable[3].dValue, 5e-324);
  EXPECT_EQ(loaded.m_arrVariable[4].dValue, 0.1);
  EXPECT_TRUE(Packed(inspected.out, dir) == ReadBytes(dir / "a.ind"));

  // Past U+10FFFF (only a 32-bit wchar_t holds it): U+FFFD, as the archive
  // writes it, so the JSON packs to the same bytes.
  if (sizeof(wchar_t) == 4) {
    CDBSubINDICA beyond;
    beyond.m_strText1 = L"a";
    beyond.m_strText1 += static_cast<wchar_t>(0x110000);
    const Json doc = Document(LogicKind::kIndica, beyond);
    EXPECT_EQ(doc["record"]["m_strText1"], "a\xEF\xBF\xBD");
    EXPECT_EQ(FromJson(doc), chartcore::tool::StoreDefinition(beyond, Framing::kPlain));
  }
}

TEST(ToolInspect, KindComesFromOptionFramingFolderOrExtension) {
  SampleDir ws;
  // A signal saved under another name in the signal folder.
  const std::string signal = ws / "Logic/Signal/Copy.dat";
  WriteBytes(signal, ReadBytes(ws / "Logic/Signal/GoldenCross.sig"));
  EXPECT_EQ(Json::parse(Cli({"inspect", signal}).out)["kind"], "SIGNAL");
  // Outside the folders and without a known extension only --kind helps.
  TempDir dir;
  WriteBytes(dir / "copy.dat", ReadBytes(signal));
  EXPECT_TRUE(Refused(Cli({"inspect", dir / "copy.dat"}), 1,
                      "chartcore inspect: " + (dir / "copy.dat") +
                          ": unknown kind (not in a logic folder, no known extension, no class tag; give --kind "
                          "FUNCT, INDICA, SIGNAL, REGION, FILL, PATTERN, OPTIMIZE)\n"));
  EXPECT_EQ(Cli({"inspect", "--kind", "CDBSubSIGNAL", dir / "copy.dat"}).code, 0);
  // The extension decides outside a workspace.
  WriteBytes(dir / "x.sig", ReadBytes(signal));
  EXPECT_EQ(Json::parse(Cli({"inspect", dir / "x.sig"}).out)["kind"], "SIGNAL");
  // A folder stands for its definition files, printed as an array.
  const auto folder = Cli({"inspect", ws / "Logic/Region"});
  ASSERT_EQ(folder.code, 0) << folder.err;
  EXPECT_EQ(Json::parse(folder.out).size(), 2u);
}

TEST(ToolErrors, MissingCorruptAndUnknownGiveOneLineAndWriteNothing) {
  SampleDir ws;
  TempDir dir;
  EXPECT_TRUE(Refused(Cli({"inspect", dir / "none.ind"}), 1,
                      "chartcore inspect: " + (dir / "none.ind") + ": cannot open (file not found)\n"));

  // A record cut short: the archive cause and the file are named. When one
  // of several files fails, nothing at all is printed.
  const std::string cut = dir / "cut.ind";
  WriteBytes(cut, ReadBytes(ws / "Logic/Indica/PriceMomentum.ind").substr(0, 40));
  EXPECT_TRUE(Refused(Cli({"inspect", ws / "Logic/Indica/VolumeTrend.ind", cut}), 1,
                      "chartcore inspect: " + cut +
                          ": corrupt INDICA definition (archive cause endOfFile: the data ends inside the record)\n"));
  // A count of 2^31-1 elements ends at the end of the data, not in an allocation.
  CDBSubSIGNAL signal;
  std::string huge = Stored(signal);
  huge.replace(huge.size() - 8, 4, std::string("\xFF\xFF\xFF\x7F", 4));
  WriteBytes(dir / "huge.sig", huge);
  EXPECT_EQ(Cli({"inspect", dir / "huge.sig"}).code, 1);

  EXPECT_TRUE(Refused(Cli({"inspect", "--kind", "MACD", cut}), 2,
                      "chartcore inspect: unknown kind \"MACD\" (one of FUNCT, INDICA, SIGNAL, REGION, FILL, PATTERN, "
                      "OPTIMIZE)\n"));

  // pack: a bad document leaves the target as it was, or absent.
  const std::string target = dir / "target.sig";
  WriteBytes(target, "old bytes");
  const std::vector<std::string> badDocuments = {
      R"({"kind": "SIGNAL", "record": {"nS01": 1.5}})",        // not an integer
      R"({"kind": "SIGNAL", "record": {"nS1": 1}})",           // no such field
      R"({"kind": "SIGNAL", "record": {"m_nVersion": 1}})",    // not the version signals write
      R"({"kind": "MACD", "record": {}})",                     // no such kind
      R"({"kind": "SIGNAL", "record": {"clrS04": "red"}})",    // not a colour
      R"([{"kind": "SIGNAL"}])",                               // not one definition
      R"({"kind": "SIGNAL", "record": {"m_arrVariable": {}}})",  // not an array
      "{\"kind\": \"SIG",                                      // not JSON
  };
  for (const std::string& doc : badDocuments) {
    WriteBytes(dir / "bad.json", doc);
    const auto run = Cli({"pack", dir / "bad.json", "-o", target});
    EXPECT_EQ(run.code, 1) << doc;
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(std::count(run.err.begin(), run.err.end(), '\n'), 1) << run.err;
    EXPECT_EQ(ReadBytes(target), "old bytes") << doc;
    EXPECT_EQ(Cli({"pack", dir / "bad.json", "-o", dir / "new.sig"}).code, 1);
    EXPECT_FALSE(tooltest::fs::exists(dir / "new.sig")) << doc;
  }
  EXPECT_EQ(Cli({"pack", dir / "bad.json", "-o", target}).err.rfind("chartcore pack: " + (dir / "bad.json") +
                                                                        ": not valid JSON (parse error at line 1",
                                                                    0),
            0u);
  WriteBytes(dir / "good.json", R"({"kind": "SIGNAL", "record": {}})");
  EXPECT_TRUE(Refused(Cli({"pack", dir / "good.json", "-o", dir / "no/such.sig"}), 1,
                      "chartcore pack: " + (dir / "no/such.sig") + ": cannot write (no folder " + (dir / "no") +
                          ")\n"));
  WriteBytes(dir / "bad.json", R"({"kind": "SIGNAL", "record": {"m_arrVariable": [{"nValue": "x"}]}})");
  EXPECT_TRUE(Refused(Cli({"pack", dir / "bad.json", "-o", target}), 1,
                      "chartcore pack: " + (dir / "bad.json") +
                          ": record.m_arrVariable[0].nValue: expected an integer from -2147483648 to 2147483647, "
                          "found \"x\"\n"));
}

TEST(ToolInspect, ProgressBarOnlyOnATerminalAndOnlyForSeveralFiles) {
  SampleDir ws;
  const std::vector<std::string> files = {"inspect", ws / "Logic/Fill/BollingerFill.fil",
                                          ws / "Logic/Fill/CloudFill.fil"};
  const auto quiet = Cli(files, false, false);
  EXPECT_EQ(quiet.err, "");
  const auto shown = Cli(files, false, true);
  ASSERT_EQ(shown.code, 0);
  EXPECT_TRUE(Has(shown.err, "inspect [############            ] 1/2"));
  EXPECT_TRUE(Has(shown.err, "] 2/2"));
  EXPECT_EQ(shown.out, quiet.out);    // the JSON is the same either way
  EXPECT_EQ(Cli({"inspect", ws / "Logic/Fill/CloudFill.fil"}, false, true).err, "");  // one file: no bar
}

TEST(RecordJson, EachFieldTravelsUnderItsOwnName) {
  // Every field of an indicator gets its own value, so a field read into the
  // wrong member (the element's nE10 and strE11, the record's nB13, which the
  // archive keeps out of declaration order) changes the bytes.
  CDBSubINDICA indicator;
  int next = 100;
  for (int* field : {&indicator.nA01, &indicator.nA02, &indicator.nA03, &indicator.nA04, &indicator.nA05,
                     &indicator.nA06, &indicator.nA07, &indicator.nA10, &indicator.nA11, &indicator.nA12,
                     &indicator.nB01, &indicator.nB02, &indicator.nB03, &indicator.nB04, &indicator.nB05,
                     &indicator.nB06, &indicator.nB07, &indicator.nB10, &indicator.nB13, &indicator.nB14,
                     &indicator.nB15, &indicator.nTail, &indicator.m_nFlag}) {
    *field = next++;
  }
  indicator.clrB11 = 0x00010203;
  indicator.clrB12 = 0x00040506;
  CDBSubINDICA_ELM element;
  for (int* field : {&element.nE01, &element.nE02, &element.nE03, &element.nE04, &element.nE05, &element.nE06,
                     &element.nE07, &element.nE10, &element.nE12, &element.nE13}) {
    *field = next++;
  }
  element.strE00 = L"first";
  element.strE11 = L"eleventh";
  indicator.m_arrElement.Add(element);
  CDBSubINDICA_BASE base;
  base.nBase0 = 7;
  base.dBase1 = -2.5;
  base.nBase5 = 9;
  indicator.m_arrBase.Add(base);
  const Json doc = Document(LogicKind::kIndica, indicator);
  EXPECT_EQ(doc["record"]["nB13"], indicator.nB13);
  EXPECT_EQ(doc["record"]["m_arrElement"][0]["nE10"], element.nE10);
  EXPECT_EQ(doc["record"]["m_arrElement"][0]["strE11"], "eleventh");
  EXPECT_EQ(doc["record"]["clrB12"], "0x00040506");
  EXPECT_EQ(doc["record"]["m_arrBase"][0]["dBase1"], -2.5);
  EXPECT_EQ(FromJson(doc), chartcore::tool::StoreDefinition(indicator, Framing::kPlain));

  // The optimisation's four values (the sample's patterns and optimisations
  // round-trip through inspect and pack already).
  CDBSubOPTIMIZE optimisation;
  CDBSubOPTIMIZE_VAR range;
  range.strText = L"Short";
  range.dValue1 = 3;
  range.dValue4 = 5;
  optimisation.m_arrVariable.Add(range);
  CDBSubOPTIMIZE_ELM target;
  target.nE04 = 4;
  target.strE05 = L"GoldenCross";
  optimisation.m_arrElement.Add(target);
  const Json optimised = Document(LogicKind::kOptimize, optimisation);
  EXPECT_EQ(optimised["record"]["m_arrVariable"][0]["dValue4"], 5.0);
  EXPECT_EQ(FromJson(optimised), chartcore::tool::StoreDefinition(optimisation, Framing::kPlain));
}

TEST(RecordJson, DoublesAndColoursInTheirTextForms) {
  // A number reads back to the same bits (the empty value included); what a
  // JSON number cannot hold is a name, or another NaN's bits in hex.
  const std::pair<std::uint64_t, const char*> encoded[] = {
      {Bits(1.7976931348623157e308), "1.7976931348623157e+308"}, {Bits(0.1), "0.1"},
      {0x7FF8000000000000ull, "\"NaN\""}, {0x7FF4000000000000ull, "\"0x7FF4000000000000\""},
      {0x7FF0000000000000ull, "\"Infinity\""}, {0xFFF0000000000000ull, "\"-Infinity\""},
  };
  double out = 0;
  for (const auto& c : encoded) {
    EXPECT_EQ(EncodeDouble(FromBits(c.first)).dump(), c.second);
    EXPECT_TRUE(DecodeDouble(Json::parse(c.second), out) && Bits(out) == c.first) << c.second;
  }
  // An integer is a number too; hex with fewer digits gives the low bits.
  EXPECT_TRUE(DecodeDouble(Json(5), out) && out == 5.0);
  EXPECT_TRUE(DecodeDouble(Json("0x8000000000000000"), out) && Bits(out) == 0x8000000000000000ull);
  EXPECT_TRUE(DecodeDouble(Json("0x1"), out) && Bits(out) == 1u);
  for (const Json& bad : {Json("nan"), Json("NAN"), Json("inf"), Json("0x"), Json("0x10000000000000000"), Json("0xG"),
                          Json("1.5"), Json(""), Json(nullptr), Json::array()}) {
    EXPECT_FALSE(DecodeDouble(bad, out)) << bad.dump();
  }

  // Colours: the text form, or an integer of 32 bits; ints stay in 32 bits.
  CDBSubSIGNAL signal;
  Json doc = Document(LogicKind::kSignal, signal);
  signal.clrS04 = 0x0000FF00;
  for (const auto& accepted : {Json("0x00FF00"), Json(65280), Json("0X0000ff00")}) {
    doc["record"]["clrS04"] = accepted;
    EXPECT_EQ(FromJson(doc), chartcore::tool::StoreDefinition(signal, Framing::kPlain)) << accepted.dump();
  }
  for (const auto& refused : {Json(-1), Json(4294967296LL), Json("0x100000000"), Json("#00FF00"), Json(1.5)}) {
    doc["record"]["clrS04"] = refused;
    EXPECT_THROW(FromJson(doc), chartcore::tool::ToolError) << refused.dump();
  }
  doc["record"]["clrS04"] = Json(4294967295LL);  // the largest colour value
  EXPECT_NO_THROW(FromJson(doc));
  doc["record"]["nS01"] = Json(2147483648LL);  // one past the largest int
  EXPECT_THROW(FromJson(doc), chartcore::tool::ToolError);
  doc["record"]["nS01"] = Json(-2147483648LL);
  EXPECT_NO_THROW(FromJson(doc));
}

TEST(ToolKinds, NamesFoldersExtensionsAndFraming) {
  using chartcore::tool::FindKind;
  EXPECT_EQ(FindKind("optimize"), &KindOf(LogicKind::kOptimize));
  EXPECT_EQ(FindKind("cdbsubfunct"), &KindOf(LogicKind::kFunct));
  EXPECT_EQ(FindKind("Function"), nullptr);  // a folder name, not a kind
  EXPECT_EQ(chartcore::tool::FolderName(KindOf(LogicKind::kFunct)), "Function");
  EXPECT_EQ(chartcore::tool::KindFromFolder("/ws/logic/SIGNAL/x"), &KindOf(LogicKind::kSignal));
  EXPECT_EQ(chartcore::tool::KindFromFolder("/ws/Other/Signal/x"), nullptr);  // not below Logic
  EXPECT_EQ(chartcore::tool::KindFromExtension("a/b.BIC"), &KindOf(LogicKind::kFunct));
  EXPECT_EQ(chartcore::tool::KindFromExtension("a.sig/b"), nullptr);  // the dot is in a folder name

  // The framing names a record class exactly; anything else is no framing.
  std::vector<BYTE> bytes = {0xFF, 0xFF, 0x00, 0x00, 0x0B, 0x00};
  for (char c : std::string("CDBSubFUNCT")) bytes.push_back(static_cast<BYTE>(c));
  EXPECT_EQ(chartcore::tool::KindFromFraming(bytes), &KindOf(LogicKind::kFunct));
  bytes[6] = 'X';
  EXPECT_EQ(chartcore::tool::KindFromFraming(bytes), nullptr);
  bytes[4] = 0xFF;  // a name longer than the file
  EXPECT_EQ(chartcore::tool::KindFromFraming(bytes), nullptr);
  EXPECT_EQ(chartcore::tool::KindFromFraming({0xFF}), nullptr);
}

TEST(ToolProgress, DrawsInPlaceAndCutsLongNamesOnWholeCharacters) {
  std::ostringstream out;
  {
    chartcore::tool::ProgressBar bar(out, true, 4, "inspect");
    bar.Step("a.ind");
    EXPECT_EQ(out.str(), "\rinspect [######                  ] 1/4 a.ind");
    out.str("");
    bar.Step(std::string(40, 'x') + "가");  // 43 bytes: cut to "..." and the last 37
    const std::string shown = out.str();
    EXPECT_TRUE(Has(shown, "] 2/4 ...xxxx"));
    EXPECT_TRUE(Has(shown, "가"));  // the Korean letter stays whole
  }
  EXPECT_EQ(out.str().back(), '\r');  // the destructor blanks the line
  // Stepped past its total, the bar stays full instead of overrunning.
  std::ostringstream over;
  chartcore::tool::ProgressBar counted(over, true, 2, "x");
  for (int i = 0; i < 3; ++i) counted.Step("f");
  EXPECT_EQ(over.str().substr(over.str().rfind('\r')), "\rx [########################] 2/2 f");
  std::ostringstream none;
  chartcore::tool::ProgressBar off(none, false, 4, "inspect");
  off.Step("a");
  EXPECT_EQ(none.str(), "");
}

TEST(ToolHighlight, CommentAndStringStateCarriesAcrossLines) {
  const std::string out = chartcore::tool::HighlightScript(L"a /* open\r\nstill */ 종가\r\n\"text", "/nonexistent", 2,
                                                           chartcore::tool::ColourStyle::kAnsi, "> ");
  // Line 2 starts inside the comment; 종가 (close) is a price word; a string
  // runs to the end of its line.
  EXPECT_EQ(out,
            "> a \x1b[38;2;0;128;0m/* open\x1b[0m\n"
            "> \x1b[38;2;0;128;0mstill */\x1b[0m \x1b[38;2;162;40;202m종가\x1b[0m\n"
            "> \x1b[38;2;128;0;0m\"text\x1b[0m\n");
  EXPECT_EQ(chartcore::tool::HighlightScript(L"x", "/nonexistent", 2, chartcore::tool::ColourStyle::kPlain, ""),
            "x\n");
}

}  // namespace
