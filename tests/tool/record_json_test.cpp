#include "record_json.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <sstream>

#include "chartcore/logic/indica.h"
#include "chartcore/logic/optimize.h"
#include "chartcore/logic/pattern.h"
#include "chartcore/logic/signal_region_fill.h"
#include "highlight.h"
#include "kinds.h"
#include "terminal.h"
#include "tool_text.h"

namespace {

using chartcore::tool::DecodeDouble;
using chartcore::tool::EncodeDouble;
using chartcore::tool::Framing;
using chartcore::tool::Json;
using chartcore::tool::KindOf;
using chartcore::tool::LogicKind;

std::uint64_t Bits(double value) {
  std::uint64_t bits;
  std::memcpy(&bits, &value, sizeof bits);
  return bits;
}

// The document pack reads for one record, as inspect prints it.
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

  // The pattern's candles and lines and the optimisation's four values.
  CDBSubPATTERN pattern;
  CDBSubPATTERN_BONG candle;
  candle.nBong1 = 1;
  candle.nBong4 = 4;
  pattern.m_arrBong.Add(candle);
  CDBSubPATTERN_LINE line;
  line.nLine = 3;
  pattern.m_arrLine.Add(line);
  pattern.nP08 = 8;
  EXPECT_EQ(FromJson(Document(LogicKind::kPattern, pattern)),
            chartcore::tool::StoreDefinition(pattern, Framing::kPlain));
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
  EXPECT_EQ(EncodeDouble(1.7976931348623157e308).dump(), "1.7976931348623157e+308");  // the empty value
  EXPECT_EQ(EncodeDouble(0.1).dump(), "0.1");                                          // shortest that reads back
  EXPECT_EQ(EncodeDouble(std::nan("")), "NaN");
  double signalling;
  const std::uint64_t signallingBits = 0x7FF4000000000000ull;
  std::memcpy(&signalling, &signallingBits, sizeof signalling);
  EXPECT_EQ(EncodeDouble(signalling), "0x7FF4000000000000");
  EXPECT_EQ(EncodeDouble(-HUGE_VAL), "-Infinity");

  double out = 0;
  EXPECT_TRUE(DecodeDouble(Json(5), out));  // an integer is a number too
  EXPECT_EQ(out, 5.0);
  EXPECT_TRUE(DecodeDouble(Json("0x8000000000000000"), out));
  EXPECT_EQ(Bits(out), 0x8000000000000000ull);  // negative zero by its bits
  EXPECT_TRUE(DecodeDouble(Json("0x1"), out));  // fewer digits: the low bits
  EXPECT_EQ(Bits(out), 1u);
  for (const Json& bad : {Json("nan"), Json("NAN"), Json("inf"), Json("0x"), Json("0x10000000000000000"), Json("0xG"),
                          Json("1.5"), Json(""), Json(nullptr), Json::array()}) {
    EXPECT_FALSE(DecodeDouble(bad, out)) << bad.dump();
  }

  // Colours: the text form, or an integer of 32 bits.
  CDBSubSIGNAL signal;
  Json doc = Document(LogicKind::kSignal, signal);
  for (const auto& accepted : {Json("0x00FF00"), Json(65280), Json("0X0000ff00")}) {
    doc["record"]["clrS04"] = accepted;
    signal.clrS04 = 0x0000FF00;
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
    EXPECT_NE(shown.find("] 2/4 ...xxxx"), std::string::npos) << shown;
    EXPECT_NE(shown.find("가"), std::string::npos);  // the Korean letter stays whole
  }
  EXPECT_EQ(out.str().back(), '\r');  // the destructor blanks the line
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
