#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>

#include "chartcore/logic/indica.h"
#include "chartcore/logic/pattern.h"
#include "chartcore/logic/record_file.h"
#include "chartcore/logic/signal_region_fill.h"
#include "kinds.h"
#include "record_json.h"
#include "tool_test_util.h"
#include "tool_text.h"
#include "workspace.h"

namespace {

using chartcore::tool::Json;
using tooltest::ReadBytes;
using tooltest::Cli;
using tooltest::TempDir;
using tooltest::WriteBytes;

// A workspace holding the tool's own copy of the sample.
class SampleDir : public TempDir {
 public:
  SampleDir() { EXPECT_EQ(Cli({"workspace", "init", path(), "--samples"}).code, 0); }
};

std::string Bytes(const std::vector<BYTE>& bytes) { return std::string(bytes.begin(), bytes.end()); }

template <class RECORD>
std::string Stored(RECORD& record, chartcore::tool::Framing framing = chartcore::tool::Framing::kPlain) {
  return Bytes(chartcore::tool::StoreDefinition(record, framing));
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
    const auto inspected = Cli({"inspect", file.path});
    ASSERT_EQ(inspected.code, 0) << inspected.err;
    EXPECT_NE(inspected.out.find("\"currentForm\": true"), std::string::npos) << file.relative;
    WriteBytes(scratch / "doc.json", inspected.out);
    const std::string packed = scratch / ("packed" + file.kind->extensions.front());
    const auto run = Cli({"pack", scratch / "doc.json", "-o", packed});
    ASSERT_EQ(run.code, 0) << run.err;
    EXPECT_EQ(run.out, "");
    EXPECT_TRUE(ReadBytes(packed) == ReadBytes(file.path)) << file.relative << " changed through JSON";
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
  WriteBytes(dir / "doc.json", inspected.out);
  ASSERT_EQ(Cli({"pack", dir / "doc.json", "-o", dir / "new.fil"}).code, 0);
  EXPECT_TRUE(ReadBytes(dir / "new.fil") == current);

  // An object-framed file names its own class wherever it lies, and packs
  // back with its framing.
  CDBSubPATTERN pattern;
  pattern.m_strText1 = L"Doji";
  const std::string framed = Stored(pattern, chartcore::tool::Framing::kObject);
  EXPECT_EQ(framed.substr(0, 6), std::string("\xFF\xFF\x00\x00\x0D\x00", 6));  // tag, schema 0, 13 letters
  WriteBytes(dir / "doji.bin", framed);
  const auto run = Cli({"inspect", dir / "doji.bin"});
  ASSERT_EQ(run.code, 0) << run.err;
  EXPECT_EQ(Json::parse(run.out)["framing"], "object");
  EXPECT_EQ(Json::parse(run.out)["kind"], "PATTERN");
  WriteBytes(dir / "doji.json", run.out);
  ASSERT_EQ(Cli({"pack", dir / "doji.json", "-o", dir / "doji2.bin"}).code, 0);
  EXPECT_TRUE(ReadBytes(dir / "doji2.bin") == framed);
  const auto wrong = Cli({"inspect", "--kind", "signal", dir / "doji.bin"});
  EXPECT_EQ(wrong.code, 1);
  EXPECT_EQ(wrong.err, "chartcore inspect: " + (dir / "doji.bin") + ": holds a PATTERN definition, not SIGNAL\n");
}

TEST(ToolPack, DoublesAndTextsJsonCannotHoldSurviveTheRoundTrip) {
  TempDir dir;
  WriteBytes(dir / "in.json", R"({"kind": "INDICA", "record": {
      "m_dValue": "NaN",
      "m_strText1": {"utf16": [55296, 65]},
      "m_arrVariable": [
        {"strText": "a", "dValue": "-Infinity"},
        {"strText": "b", "dValue": "0x7FF0000000000001"},
        {"strText": "c", "dValue": -0.0},
        {"strText": "d", "dValue": 5e-324},
        {"strText": "e", "dValue": 0.1}]}})");
  ASSERT_EQ(Cli({"pack", dir / "in.json", "-o", dir / "a.ind"}).code, 0);
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
  std::uint64_t bits;
  const double negativeZero = loaded.m_arrVariable[2].dValue;
  std::memcpy(&bits, &negativeZero, sizeof bits);
  EXPECT_EQ(bits, 0x8000000000000000ull);
  EXPECT_EQ(loaded.m_arrVariable[3].dValue, 5e-324);
  EXPECT_EQ(loaded.m_arrVariable[4].dValue, 0.1);
  WriteBytes(dir / "again.json", inspected.out);
  ASSERT_EQ(Cli({"pack", dir / "again.json", "-o", dir / "b.ind"}).code, 0);
  EXPECT_TRUE(ReadBytes(dir / "b.ind") == ReadBytes(dir / "a.ind"));
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
  const auto unknown = Cli({"inspect", dir / "copy.dat"});
  EXPECT_EQ(unknown.code, 1);
  EXPECT_EQ(unknown.err, "chartcore inspect: " + (dir / "copy.dat") +
                             ": unknown kind (not in a logic folder, no known extension, no class tag; give --kind "
                             "FUNCT, INDICA, SIGNAL, REGION, FILL, PATTERN, OPTIMIZE)\n");
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
  const std::string missing = dir / "none.ind";
  auto run = Cli({"inspect", missing});
  EXPECT_EQ(run.code, 1);
  EXPECT_EQ(run.out, "");
  EXPECT_EQ(run.err, "chartcore inspect: " + missing + ": cannot open (file not found)\n");

  // A record cut short: the archive cause and the file are named. When one
  // of several files fails, nothing at all is printed.
  const std::string cut = dir / "cut.ind";
  WriteBytes(cut, ReadBytes(ws / "Logic/Indica/PriceMomentum.ind").substr(0, 40));
  run = Cli({"inspect", ws / "Logic/Indica/VolumeTrend.ind", cut});
  EXPECT_EQ(run.code, 1);
  EXPECT_EQ(run.out, "");
  EXPECT_EQ(run.err, "chartcore inspect: " + cut +
                         ": corrupt INDICA definition (archive cause endOfFile: the data ends inside the record)\n");
  // A count of 2^31-1 elements ends at the end of the data, not in an allocation.
  CDBSubSIGNAL signal;
  std::string huge = Stored(signal);
  huge.replace(huge.size() - 8, 4, std::string("\xFF\xFF\xFF\x7F", 4));
  WriteBytes(dir / "huge.sig", huge);
  EXPECT_EQ(Cli({"inspect", dir / "huge.sig"}).code, 1);

  EXPECT_EQ(Cli({"inspect", "--kind", "MACD", cut}).err,
            "chartcore inspect: unknown kind \"MACD\" (one of FUNCT, INDICA, SIGNAL, REGION, FILL, PATTERN, "
            "OPTIMIZE)\n");
  EXPECT_EQ(Cli({"inspect", "--kind", "MACD", cut}).code, 2);

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
    run = Cli({"pack", dir / "bad.json", "-o", target});
    EXPECT_EQ(run.code, 1) << doc;
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
  EXPECT_EQ(Cli({"pack", dir / "good.json", "-o", dir / "no/such.sig"}).err,
            "chartcore pack: " + (dir / "no/such.sig") + ": cannot write (no folder " + (dir / "no") + ")\n");
  WriteBytes(dir / "bad.json", R"({"kind": "SIGNAL", "record": {"m_arrVariable": [{"nValue": "x"}]}})");
  EXPECT_EQ(Cli({"pack", dir / "bad.json", "-o", target}).err,
            "chartcore pack: " + (dir / "bad.json") +
                ": record.m_arrVariable[0].nValue: expected an integer from -2147483648 to 2147483647, found \"x\"\n");
}

TEST(ToolInspect, ProgressBarOnlyOnATerminalAndOnlyForSeveralFiles) {
  SampleDir ws;
  const std::vector<std::string> files = {"inspect", ws / "Logic/Fill/BollingerFill.fil",
                                          ws / "Logic/Fill/CloudFill.fil"};
  const auto quiet = Cli(files, false, false);
  EXPECT_EQ(quiet.err, "");
  const auto shown = Cli(files, false, true);
  ASSERT_EQ(shown.code, 0);
  EXPECT_NE(shown.err.find("inspect [############            ] 1/2"), std::string::npos) << shown.err;
  EXPECT_NE(shown.err.find("] 2/2"), std::string::npos);
  EXPECT_EQ(shown.err.back(), '\r');  // the bar's line is blanked at the end
  EXPECT_EQ(shown.out, quiet.out);    // the JSON is the same either way
  EXPECT_EQ(Cli({"inspect", ws / "Logic/Fill/CloudFill.fil"}, false, true).err, "");  // one file: no bar
}

}  // namespace
