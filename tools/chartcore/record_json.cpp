#include "record_json.h"

#include <cinttypes>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <limits>
#include <set>

#include "chartcore/logic/funct.h"
#include "chartcore/logic/indica.h"
#include "chartcore/logic/optimize.h"
#include "chartcore/logic/pattern.h"
#include "chartcore/logic/signal_region_fill.h"
#include "chartcore/platform/text_codec.h"
#include "tool_text.h"

namespace chartcore {
namespace tool {
namespace {

constexpr std::uint64_t kQuietNaNBits = 0x7FF8000000000000ull;

// ---------------------------------------------------------------------------
// Field lists, in archive order. One list per record and element class serves
// both directions: V is the JSON writer or the JSON reader.
// ---------------------------------------------------------------------------

template <class V>
void VisitElement(V& v, chartcore::LogicVariable& e) {
  v("strText", e.strText);
  v("nValue", e.nValue);
  v("dValue", e.dValue);
}

template <class V>
void VisitElement(V& v, chartcore::OptimizeVariable& e) {
  v("strText", e.strText);
  v("nValue", e.nValue);
  v("dValue1", e.dValue1);
  v("dValue2", e.dValue2);
  v("dValue3", e.dValue3);
  v("dValue4", e.dValue4);
}

template <class V>
void VisitElement(V& v, CDBSubINDICA_ELM& e) {
  v("strE00", e.strE00);
  v("nE01", e.nE01);
  v("nE02", e.nE02);
  v("nE03", e.nE03);
  v("nE04", e.nE04);
  v("nE05", e.nE05);
  v("nE06", e.nE06);
  v("strE11", e.strE11);
  v("nE07", e.nE07);
  v("clrE08", e.clrE08);
  v("clrE09", e.clrE09);
  v("nE12", e.nE12);
  v("nE13", e.nE13);
  v("nE10", e.nE10);
}

template <class V>
void VisitElement(V& v, CDBSubINDICA_BASE& e) {
  v("nBase0", e.nBase0);
  v("dBase1", e.dBase1);
  v("nBase2", e.nBase2);
  v("nBase3", e.nBase3);
  v("nBase4", e.nBase4);
  v("nBase5", e.nBase5);
}

template <class V>
void VisitElement(V& v, CDBSubPATTERN_BONG& e) {
  v("nBong1", e.nBong1);
  v("nBong2", e.nBong2);
  v("nBong3", e.nBong3);
  v("nBong4", e.nBong4);
}

template <class V>
void VisitElement(V& v, CDBSubPATTERN_LINE& e) {
  v("nLine", e.nLine);
}

template <class V>
void VisitElement(V& v, CDBSubOPTIMIZE_ELM& e) {
  v("nE01", e.nE01);
  v("nE02", e.nE02);
  v("nE03", e.nE03);
  v("nE04", e.nE04);
  v("strE05", e.strE05);
}

template <class V, class ELM, class ARG>
void VisitArray(V& v, const char* name, CArray<ELM, ARG>& array) {
  v.Array(name, array, [](V& ev, ELM& e) { VisitElement(ev, e); });
}

template <class V>
void VisitHeader(V& v, CDBSubBase& r) {
  v.Version("m_nVersion", r.m_nVersion);
  v("m_strText1", r.m_strText1);
  v("m_nFlag", r.m_nFlag);
  v("m_dValue", r.m_dValue);
  v("m_strText2", r.m_strText2);
}

template <class V>
void VisitRecord(V& v, CDBSubFUNCT& r) {
  VisitHeader(v, r);
  v("nU01", r.nU01);
  v("m_strText3", r.m_strText3);
  v("m_strText4", r.m_strText4);
}

template <class V>
void VisitRecord(V& v, CDBSubINDICA& r) {
  VisitHeader(v, r);
  v("nA01", r.nA01);
  v("nA02", r.nA02);
  v("nA03", r.nA03);
  v("nA04", r.nA04);
  v("nA05", r.nA05);
  v("nA06", r.nA06);
  v("nA07", r.nA07);
  v("clrA08", r.clrA08);
  v("clrA09", r.clrA09);
  v("nA10", r.nA10);
  v("nA11", r.nA11);
  v("nA12", r.nA12);
  v("m_strText3", r.m_strText3);
  VisitArray(v, "m_arrElement", r.m_arrElement);
  v("nB01", r.nB01);
  v("nB02", r.nB02);
  v("nB03", r.nB03);
  v("nB04", r.nB04);
  v("nB05", r.nB05);
  v("nB06", r.nB06);
  v("nB07", r.nB07);
  v("clrB08", r.clrB08);
  v("clrB09", r.clrB09);
  v("nB10", r.nB10);
  v("clrB11", r.clrB11);
  v("clrB12", r.clrB12);
  v("nB14", r.nB14);
  v("nB15", r.nB15);
  v("nB13", r.nB13);
  VisitArray(v, "m_arrVariable", r.m_arrVariable);
  VisitArray(v, "m_arrBase", r.m_arrBase);
  v("nTail", r.nTail);
}

template <class V>
void VisitRecord(V& v, CDBSubSIGNAL& r) {
  VisitHeader(v, r);
  v("nS01", r.nS01);
  v("nS02", r.nS02);
  v("nS03", r.nS03);
  v("clrS04", r.clrS04);
  v("nS05", r.nS05);
  v("nS06", r.nS06);
  v("m_strText3", r.m_strText3);
  v("m_strText4", r.m_strText4);
  VisitArray(v, "m_arrVariable", r.m_arrVariable);
  v("nTail", r.nTail);
}

template <class V>
void VisitRecord(V& v, CDBSubREGION& r) {
  VisitHeader(v, r);
  v("nR01", r.nR01);
  v("nR02", r.nR02);
  v("nR03", r.nR03);
  v("clrR04", r.clrR04);
  v("nR05", r.nR05);
  v("nR06", r.nR06);
  v("nR07", r.nR07);
  v("nR08", r.nR08);
  v("m_strText3", r.m_strText3);
  v("m_strText4", r.m_strText4);
  VisitArray(v, "m_arrVariable", r.m_arrVariable);
  v("nTail", r.nTail);
}

template <class V>
void VisitRecord(V& v, CDBSubFILL& r) {
  VisitHeader(v, r);
  v("nF01", r.nF01);
  v("nF02", r.nF02);
  v("nF03", r.nF03);
  v("nF04", r.nF04);
  v("nF05", r.nF05);
  v("clrF06", r.clrF06);
  v("nF07", r.nF07);
  v("nF08", r.nF08);
  v("nF09", r.nF09);
  v("m_strText3", r.m_strText3);
  v("m_strText4", r.m_strText4);
  v("m_strText5", r.m_strText5);
  VisitArray(v, "m_arrVariable", r.m_arrVariable);
  v("nTail", r.nTail);
}

template <class V>
void VisitRecord(V& v, CDBSubPATTERN& r) {
  VisitHeader(v, r);
  v("nP01", r.nP01);
  v("nP02", r.nP02);
  v("nP03", r.nP03);
  v("nP04", r.nP04);
  v("nP05", r.nP05);
  v("nP06", r.nP06);
  v("nP07", r.nP07);
  v("nP08", r.nP08);
  v("nP09", r.nP09);
  v("nP10", r.nP10);
  v("m_strText3", r.m_strText3);
  v("m_strText4", r.m_strText4);
  VisitArray(v, "m_arrBong", r.m_arrBong);
  VisitArray(v, "m_arrLine", r.m_arrLine);
  VisitArray(v, "m_arrVariable", r.m_arrVariable);
  v("nTail", r.nTail);
}

template <class V>
void VisitRecord(V& v, CDBSubOPTIMIZE& r) {
  VisitHeader(v, r);
  v("nO01", r.nO01);
  v("nO02", r.nO02);
  v("nO03", r.nO03);
  v("nO04", r.nO04);
  v("clrO05", r.clrO05);
  v("clrO06", r.clrO06);
  v("nO07", r.nO07);
  v("nO08", r.nO08);
  v("nO09", r.nO09);
  v("m_strText3", r.m_strText3);
  VisitArray(v, "m_arrElement", r.m_arrElement);
  VisitArray(v, "m_arrVariable", r.m_arrVariable);
  v("nTail", r.nTail);
}

// Calls visit with record as its own class.
template <class F>
void WithRecordClass(LogicKind kind, CDBSubBase& record, F&& visit) {
  switch (kind) {
    case LogicKind::kFunct: visit(dynamic_cast<CDBSubFUNCT&>(record)); return;
    case LogicKind::kIndica: visit(dynamic_cast<CDBSubINDICA&>(record)); return;
    case LogicKind::kSignal: visit(dynamic_cast<CDBSubSIGNAL&>(record)); return;
    case LogicKind::kRegion: visit(dynamic_cast<CDBSubREGION&>(record)); return;
    case LogicKind::kFill: visit(dynamic_cast<CDBSubFILL&>(record)); return;
    case LogicKind::kPattern: visit(dynamic_cast<CDBSubPATTERN&>(record)); return;
    case LogicKind::kOptimize: visit(dynamic_cast<CDBSubOPTIMIZE&>(record)); return;
  }
}

// ---------------------------------------------------------------------------
// Texts and colours
// ---------------------------------------------------------------------------

// The UTF-16 code units of a text as the archive writes them (the archive's
// own conversion, so a character past U+10FFFF is U+FFFD here as there).
std::vector<unsigned> Utf16Units(const CString& text) {
  const std::string bytes = chartcore::WideToUtf16LE(text.GetString(), static_cast<size_t>(text.GetLength()));
  std::vector<unsigned> units;
  units.reserve(bytes.size() / 2);
  for (size_t i = 0; i + 1 < bytes.size(); i += 2) {
    units.push_back(static_cast<unsigned char>(bytes[i]) | (static_cast<unsigned char>(bytes[i + 1]) << 8));
  }
  return units;
}

// Whether the units are well-formed UTF-16 (every surrogate in a pair).
bool IsWellFormed(const std::vector<unsigned>& units) {
  for (size_t i = 0; i < units.size(); ++i) {
    if (units[i] >= 0xDC00 && units[i] <= 0xDFFF) return false;
    if (units[i] >= 0xD800 && units[i] <= 0xDBFF) {
      if (i + 1 >= units.size() || units[i + 1] < 0xDC00 || units[i + 1] > 0xDFFF) return false;
      ++i;
    }
  }
  return true;
}

Json EncodeText(const CString& text) {
  const std::vector<unsigned> units = Utf16Units(text);
  if (IsWellFormed(units)) return Utf8(text);
  Json object = Json::object();
  object["utf16"] = units;
  return object;
}

// The text of UTF-16 code units (each below 0x10000), as the archive reads it.
CString TextFromUnits(const std::vector<unsigned>& units) {
  std::string bytes;
  bytes.reserve(units.size() * 2);
  for (unsigned unit : units) {
    bytes += static_cast<char>(unit & 0xFF);
    bytes += static_cast<char>(unit >> 8);
  }
  const std::wstring text = chartcore::Utf16LEToWide(bytes.data(), bytes.size());
  return CString(text.c_str(), static_cast<int>(text.size()));
}

std::string ColourText(COLORREF colour) {
  char text[16];
  std::snprintf(text, sizeof text, "0x%08X", static_cast<unsigned>(colour));
  return text;
}

bool ParseHex(const std::string& digits, size_t maxDigits, std::uint64_t& out) {
  if (digits.empty() || digits.size() > maxDigits) return false;
  out = 0;
  for (char c : digits) {
    int d;
    if (c >= '0' && c <= '9') {
      d = c - '0';
    } else if (c >= 'a' && c <= 'f') {
      d = c - 'a' + 10;
    } else if (c >= 'A' && c <= 'F') {
      d = c - 'A' + 10;
    } else {
      return false;
    }
    out = (out << 4) | static_cast<std::uint64_t>(d);
  }
  return true;
}

bool HexPrefixed(const std::string& text, size_t maxDigits, std::uint64_t& out) {
  return text.size() > 2 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X') &&
         ParseHex(text.substr(2), maxDigits, out);
}

// ---------------------------------------------------------------------------
// The writer
// ---------------------------------------------------------------------------

class JsonWriter {
 public:
  explicit JsonWriter(Json& object) : object_(object) {}

  void Version(const char* name, int& value) { object_[name] = value; }
  void operator()(const char* name, int& value) { object_[name] = value; }
  void operator()(const char* name, COLORREF& value) { object_[name] = ColourText(value); }
  void operator()(const char* name, double& value) { object_[name] = EncodeDouble(value); }
  void operator()(const char* name, CString& value) { object_[name] = EncodeText(value); }

  template <class ELM, class ARG, class F>
  void Array(const char* name, CArray<ELM, ARG>& array, F visit) {
    Json list = Json::array();
    for (INT_PTR i = 0; i < array.GetSize(); ++i) {
      Json item = Json::object();
      JsonWriter writer(item);
      visit(writer, array.ElementAt(i));
      list.push_back(std::move(item));
    }
    object_[name] = std::move(list);
  }

 private:
  Json& object_;
};

// ---------------------------------------------------------------------------
// The reader
// ---------------------------------------------------------------------------

class JsonReader {
 public:
  JsonReader(const Json& object, std::string path, const std::string& source)
      : object_(object), path_(std::move(path)), source_(source) {}

  void Version(const char* name, int& value) {
    const Json* json = Take(name);
    if (json == nullptr) return;
    if (ReadInt(*json, name) != value) {
      Fail(name, "this class writes format version " + std::to_string(value) + ", not " + json->dump() +
                     " (leave it out or give " + std::to_string(value) + ")");
    }
  }
  void operator()(const char* name, int& value) {
    if (const Json* json = Take(name)) value = ReadInt(*json, name);
  }
  void operator()(const char* name, COLORREF& value) {
    const Json* json = Take(name);
    if (json == nullptr) return;
    std::uint64_t bits = 0;
    if (json->is_string() && HexPrefixed(json->get<std::string>(), 8, bits)) {
      value = static_cast<COLORREF>(bits);
    } else if (json->is_number_integer() && json->get<std::int64_t>() >= 0 &&
               json->get<std::int64_t>() <= 0xFFFFFFFFll) {
      value = static_cast<COLORREF>(json->get<std::int64_t>());
    } else {
      Fail(name, "expected a colour as \"0x00BBGGRR\" or an integer from 0 to 4294967295, found " + json->dump());
    }
  }
  void operator()(const char* name, double& value) {
    const Json* json = Take(name);
    if (json != nullptr && !DecodeDouble(*json, value)) {
      Fail(name, "expected a number, \"NaN\", \"Infinity\", \"-Infinity\" or \"0x\" and 16 hex digits, found " +
                     json->dump());
    }
  }
  void operator()(const char* name, CString& value) {
    const Json* json = Take(name);
    if (json == nullptr) return;
    if (json->is_string()) {
      value = Wide(json->get<std::string>());
      return;
    }
    if (json->is_object() && json->size() == 1 && json->contains("utf16") && json->at("utf16").is_array()) {
      std::vector<unsigned> units;
      for (const Json& unit : json->at("utf16")) {
        if (!unit.is_number_unsigned() || unit.get<std::uint64_t>() > 0xFFFF) {
          Fail(name, "utf16 holds code units from 0 to 65535, found " + unit.dump());
        }
        units.push_back(static_cast<unsigned>(unit.get<std::uint64_t>()));
      }
      value = TextFromUnits(units);
      return;
    }
    Fail(name, "expected a text (a string or {\"utf16\": [code units]}), found " + json->dump());
  }

  template <class ELM, class ARG, class F>
  void Array(const char* name, CArray<ELM, ARG>& array, F visit) {
    const Json* json = Take(name);
    if (json == nullptr) return;
    if (!json->is_array()) Fail(name, "expected an array, found " + json->dump());
    array.RemoveAll();
    for (size_t i = 0; i < json->size(); ++i) {
      const std::string where = Where(name) + "[" + std::to_string(i) + "]";
      const Json& item = (*json)[i];
      if (!item.is_object()) throw ToolError(source_ + ": " + where + ": expected an object, found " + item.dump());
      ELM element;
      JsonReader reader(item, where, source_);
      visit(reader, element);
      reader.Finish();
      array.Add(element);
    }
  }

  // Refuses keys that no field took (a misspelt name would otherwise be
  // silently dropped).
  void Finish() const {
    for (auto it = object_.begin(); it != object_.end(); ++it) {
      if (taken_.count(it.key()) == 0) Fail(it.key(), "no such field in this record");
    }
  }

 private:
  const Json* Take(const char* name) {
    taken_.insert(name);
    auto it = object_.find(name);
    return it == object_.end() ? nullptr : &*it;
  }
  std::string Where(const std::string& name) const { return path_.empty() ? name : path_ + "." + name; }
  [[noreturn]] void Fail(const std::string& name, const std::string& what) const {
    throw ToolError(source_ + ": " + Where(name) + ": " + what);
  }
  int ReadInt(const Json& json, const char* name) const {
    if (json.is_number_integer()) {
      const std::int64_t v = json.is_number_unsigned() && json.get<std::uint64_t>() > 0x7FFFFFFFull
                                 ? std::numeric_limits<std::int64_t>::max()
                                 : json.get<std::int64_t>();
      if (v >= std::numeric_limits<int>::min() && v <= std::numeric_limits<int>::max()) return static_cast<int>(v);
    }
    Fail(name, "expected an integer from -2147483648 to 2147483647, found " + json.dump());
  }

  const Json& object_;
  std::string path_;
  const std::string& source_;
  std::set<std::string> taken_;
};

std::string FramingName(Framing framing) { return framing == Framing::kObject ? "object" : "plain"; }

}  // namespace

std::string JsonText(const Json& doc) {
  const std::string raw = doc.dump(2);
  std::string out;
  out.reserve(raw.size());
  for (size_t i = 0; i < raw.size(); ++i) {
    const unsigned char c = static_cast<unsigned char>(raw[i]);
    const unsigned char next = i + 1 < raw.size() ? static_cast<unsigned char>(raw[i + 1]) : 0;
    unsigned control = 0x100;
    if (c == 0x7F) {
      control = c;
    } else if (c == 0xC2 && next >= 0x80 && next <= 0x9F) {  // U+0080..U+009F in UTF-8
      control = next;
      ++i;
    }
    if (control == 0x100) {
      out += raw[i];
    } else {
      char escape[8];
      std::snprintf(escape, sizeof escape, "\\u%04x", control);
      out += escape;
    }
  }
  return out;
}

Json EncodeDouble(double value) {
  if (std::isfinite(value)) return value;
  if (std::isinf(value)) return value > 0 ? "Infinity" : "-Infinity";
  std::uint64_t bits;
  std::memcpy(&bits, &value, sizeof bits);
  if (bits == kQuietNaNBits) return "NaN";
  char text[24];
  std::snprintf(text, sizeof text, "0x%016" PRIX64, bits);
  return text;
}

bool DecodeDouble(const Json& value, double& out) {
  if (value.is_number()) {
    out = value.get<double>();
    return true;
  }
  if (!value.is_string()) return false;
  const std::string text = value.get<std::string>();
  std::uint64_t bits = 0;
  if (text == "NaN") {
    bits = kQuietNaNBits;
  } else if (text == "Infinity") {
    out = std::numeric_limits<double>::infinity();
    return true;
  } else if (text == "-Infinity") {
    out = -std::numeric_limits<double>::infinity();
    return true;
  } else if (!HexPrefixed(text, 16, bits)) {
    return false;
  }
  std::memcpy(&out, &bits, sizeof out);
  return true;
}

Json RecordToJson(const KindInfo& kind, CDBSubBase& record) {
  Json fields = Json::object();
  JsonWriter writer(fields);
  WithRecordClass(kind.kind, record, [&writer](auto& concrete) { VisitRecord(writer, concrete); });
  return fields;
}

Json DefinitionToJson(const std::string& path, const LoadedRecord& loaded) {
  Json doc = Json::object();
  doc["file"] = path;
  doc["kind"] = loaded.kind->name;
  doc["class"] = loaded.kind->className;
  doc["framing"] = FramingName(loaded.framing);
  doc["fileVersion"] = loaded.fileVersion;
  doc["currentForm"] = loaded.currentForm;
  doc["record"] = RecordToJson(*loaded.kind, *loaded.record);
  return doc;
}

std::unique_ptr<CDBSubBase> DefinitionFromJson(const Json& doc, const KindInfo* forced, Framing& framing,
                                               const std::string& source) {
  if (!doc.is_object()) throw ToolError(source + ": expected one definition (a JSON object), found " +
                                        std::string(doc.type_name()));
  static const std::set<std::string> kKnown = {"file", "kind", "class", "framing", "fileVersion", "currentForm",
                                               "record"};
  for (auto it = doc.begin(); it != doc.end(); ++it) {
    if (kKnown.count(it.key()) == 0) throw ToolError(source + ": " + it.key() + ": no such key in a definition");
  }
  const KindInfo* kind = forced;
  for (const char* key : {"kind", "class"}) {
    if (!doc.contains(key)) continue;
    const Json& named = doc.at(key);
    const KindInfo* found = named.is_string() ? FindKind(named.get<std::string>()) : nullptr;
    if (found == nullptr) {
      throw ToolError(source + ": " + key + ": unknown kind " + named.dump() + " (one of " + KindNameList() + ")");
    }
    if (kind != nullptr && kind != found) {
      throw ToolError(source + ": " + key + ": the document holds a " + found->name + " definition, not " +
                      kind->name);
    }
    kind = found;
  }
  if (kind == nullptr) throw ToolError(source + ": no kind: give --kind or a \"kind\" key (" + KindNameList() + ")");

  framing = Framing::kPlain;
  if (doc.contains("framing")) {
    const Json& named = doc.at("framing");
    if (named == "object") {
      framing = Framing::kObject;
    } else if (named != "plain") {
      throw ToolError(source + ": framing: expected \"plain\" or \"object\", found " + named.dump());
    }
  }
  if (!doc.contains("record") || !doc.at("record").is_object()) {
    throw ToolError(source + ": record: expected the record's fields as an object");
  }
  std::unique_ptr<CDBSubBase> record = kind->create();
  JsonReader reader(doc.at("record"), "record", source);
  WithRecordClass(kind->kind, *record, [&reader](auto& concrete) { VisitRecord(reader, concrete); });
  reader.Finish();
  return record;
}

}  // namespace tool
}  // namespace chartcore
