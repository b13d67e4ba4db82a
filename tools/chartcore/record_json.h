// Definition records as JSON, both ways: what `chartcore inspect` prints and
// what `chartcore pack` reads back.
//
// Every field of a record appears under its member name, in archive order,
// element arrays as JSON arrays of objects. Integers are JSON integers,
// colours (COLORREF, 0x00BBGGRR) the text "0x00BBGGRR", texts UTF-8 strings.
// Doubles are JSON numbers, printed so that they read back to the same bits
// (the empty value 1.7976931348623157e+308 included); what a JSON number
// cannot hold is written as a string: "NaN" (the quiet NaN
// 0x7FF8000000000000), "Infinity", "-Infinity", or for any other NaN its bit
// pattern as "0x" and 16 hex digits. A text that is not valid Unicode (a lone
// surrogate code unit) is written as {"utf16": [code units...]}. So a record
// goes through JSON and back unchanged.
//
//   Json doc = DefinitionToJson("x.ind", loaded);      // file, kind, ..., record
//   std::unique_ptr<CDBSubBase> back = DefinitionFromJson(doc, nullptr, framing, "x.json");
#ifndef CHARTCORE_TOOLS_CHARTCORE_RECORD_JSON_H_
#define CHARTCORE_TOOLS_CHARTCORE_RECORD_JSON_H_

#include <memory>
#include <string>

#include <nlohmann/json.hpp>

#include "kinds.h"

namespace chartcore {
namespace tool {

using Json = nlohmann::ordered_json;

// RecordToJson: the fields of record (of the given kind) as a JSON object.
Json RecordToJson(const KindInfo& kind, CDBSubBase& record);

// DefinitionToJson: the document inspect prints for a loaded file: "file",
// "kind", "class", "framing" ("plain" or "object"), "fileVersion",
// "currentForm" and "record".
Json DefinitionToJson(const std::string& path, const LoadedRecord& loaded);

// DefinitionFromJson: the record a document describes. The kind is forced
// (when given; it must then agree with the document's "kind" and "class"),
// else read from "kind" or "class". Fields left out keep the record's
// defaults; m_nVersion, when given, must be the class's current version. The
// framing ("plain" when absent) is returned in framing. Throws ToolError
// "<source>: <where>: <what is wrong>" for anything it cannot take: unknown
// keys, wrong types, integers outside 32 bits, an unknown kind.
std::unique_ptr<CDBSubBase> DefinitionFromJson(const Json& doc, const KindInfo* forced, Framing& framing,
                                               const std::string& source);

// JsonText: the document as inspect prints it (indented by 2), with DEL and
// the C1 controls (U+0080 to U+009F) written as "\u007f" ... "\u009f": the
// JSON library writes them raw, and a terminal would act on them. The text
// reads back to the same characters.
std::string JsonText(const Json& doc);

// EncodeDouble / DecodeDouble: the double rule above. DecodeDouble returns
// false for anything that is neither a number nor one of the strings.
Json EncodeDouble(double value);
bool DecodeDouble(const Json& value, double& out);

}  // namespace tool
}  // namespace chartcore

#endif  // CHARTCORE_TOOLS_CHARTCORE_RECORD_JSON_H_
