// Definition record test helpers: the archive format spelled out by hand (so
// expected files never come from the code under test), store and load.
#ifndef CHARTCORE_TESTS_LOGIC_RECORD_BYTES_H_
#define CHARTCORE_TESTS_LOGIC_RECORD_BYTES_H_

#include <cstdint>
#include <cstring>
#include <initializer_list>
#include <string>
#include <vector>

#include "chartcore/platform/archive.h"
#include "chartcore/platform/file.h"
#include "chartcore/platform/object.h"

namespace testing_records {

using Bytes = std::vector<BYTE>;

// Texts of a filled record: a Korean name and variable (BMP only).
inline const wchar_t* const kText1 = L"\uC774\uB3D9\uD3C9\uADE0";  // 이동평균
inline const wchar_t* const kVarText = L"\uAE30\uAC04";            // 기간

// ByteWriter: little-endian scalars and the framework's wide string form.
class ByteWriter {
 public:
  ByteWriter& Byte(unsigned v) {
    bytes.push_back(static_cast<BYTE>(v));
    return *this;
  }
  ByteWriter& Word(unsigned v) { return Byte(v & 0xFF).Byte((v >> 8) & 0xFF); }
  ByteWriter& Dword(std::uint32_t v) { return Word(v & 0xFFFF).Word(v >> 16); }
  ByteWriter& Int(std::int32_t v) { return Dword(static_cast<std::uint32_t>(v)); }
  ByteWriter& Ints(std::initializer_list<std::int32_t> values) {
    for (std::int32_t v : values) Int(v);
    return *this;
  }
  ByteWriter& Double(double v) {
    std::uint64_t bits = 0;
    std::memcpy(&bits, &v, sizeof bits);
    return Dword(static_cast<std::uint32_t>(bits)).Dword(static_cast<std::uint32_t>(bits >> 32));
  }
  // Str: FF, FE FF, a one-byte length (texts here stay below 255 units),
  // then the UTF-16LE code units.
  ByteWriter& Str(const std::wstring& text) {
    Byte(0xFF).Word(0xFFFE).Byte(static_cast<unsigned>(text.size()));
    for (wchar_t c : text) Word(static_cast<unsigned>(c));
    return *this;
  }
  // Header: the five fields every record starts with (defaults: a new record).
  ByteWriter& Header(int version, const std::wstring& text1 = L"", int flag = 1,
                     double value = 1.7976931348623157e308, const std::wstring& text2 = L"") {
    return Int(version).Str(text1).Int(flag).Double(value).Str(text2);
  }
  ByteWriter& FilledHeader(int version) { return Header(version, kText1, 3, 2.5, L"t2"); }
  ByteWriter& Var(const std::wstring& text, int n, double d) { return Str(text).Int(n).Double(d); }
  ByteWriter& OneVar() { return Int(1).Var(kVarText, 2, -2.5); }  // what AddVar adds
  // ClassTag: an object stream's new-class tag, schema 0 and the class name.
  ByteWriter& ClassTag(const std::string& name) {
    Word(0xFFFF).Word(0).Word(static_cast<unsigned>(name.size()));
    for (char c : name) Byte(static_cast<unsigned char>(c));
    return *this;
  }
  ByteWriter& Append(const Bytes& more) {
    bytes.insert(bytes.end(), more.begin(), more.end());
    return *this;
  }

  Bytes bytes;
};

inline Bytes WithVersion(Bytes file, std::int32_t version) {
  std::memcpy(file.data(), ByteWriter().Int(version).bytes.data(), 4);
  return file;
}

inline Bytes Store(CObject& object) {
  CMemFile file;
  CArchive ar(&file, CArchive::store);
  object.Serialize(ar);
  ar.Close();
  return Bytes(file.GetData(), file.GetData() + file.GetLength());
}

// ReadCause: lets read take an archive over bytes; the CArchiveException
// cause it ends with, or -1 when it ends without one.
template <class F>
int ReadCause(const Bytes& bytes, F read) {
  Bytes copy(bytes);
  copy.push_back(0);  // a non-null buffer even for an empty input
  CMemFile file(copy.data(), static_cast<UINT>(bytes.size()));
  CArchive ar(&file, CArchive::load);
  try {
    read(ar);
  } catch (const CArchiveException& e) {
    return e.m_cause;
  }
  return -1;
}

inline int Load(const Bytes& bytes, CObject& object) {
  return ReadCause(bytes, [&object](CArchive& ar) { object.Serialize(ar); });
}

template <class ELM>
void AddVar(CArray<ELM, ELM>& variables) { variables.Add(ELM{{kVarText, 2, -2.5}}); }

}  // namespace testing_records

#endif  // CHARTCORE_TESTS_LOGIC_RECORD_BYTES_H_
