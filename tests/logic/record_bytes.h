// Test helpers for definition records: a byte writer that spells out the
// archive format by hand (so expected files never come from the code under
// test), and store/load round trips through an in-memory file.
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

// ByteWriter: little-endian scalars and the framework's wide string form
// (FF, FE FF, the length with its 0xFF escapes, UTF-16LE code units).
class ByteWriter {
 public:
  ByteWriter& Byte(unsigned v) {
    bytes.push_back(static_cast<BYTE>(v));
    return *this;
  }
  ByteWriter& Word(unsigned v) { return Byte(v & 0xFF).Byte((v >> 8) & 0xFF); }
  ByteWriter& Dword(std::uint32_t v) { return Word(v & 0xFFFF).Word(v >> 16); }
  ByteWriter& Int(std::int32_t v) { return Dword(static_cast<std::uint32_t>(v)); }
  // Ints: several 32-bit integers in a row.
  ByteWriter& Ints(std::initializer_list<std::int32_t> values) {
    for (std::int32_t v : values) Int(v);
    return *this;
  }
  ByteWriter& Double(double v) {
    std::uint64_t bits = 0;
    std::memcpy(&bits, &v, sizeof bits);
    return Dword(static_cast<std::uint32_t>(bits)).Dword(static_cast<std::uint32_t>(bits >> 32));
  }
  // Str: the text must be BMP-only (one UTF-16 unit per wchar_t).
  ByteWriter& Str(const std::wstring& text) {
    Byte(0xFF).Word(0xFFFE);
    const std::size_t n = text.size();
    if (n < 0xFF) {
      Byte(static_cast<unsigned>(n));
    } else if (n < 0xFFFE) {
      Byte(0xFF).Word(static_cast<unsigned>(n));
    } else {
      Byte(0xFF).Word(0xFFFF).Dword(static_cast<std::uint32_t>(n));
    }
    for (wchar_t c : text) Word(static_cast<unsigned>(c));
    return *this;
  }
  // Header: the five fields every record starts with.
  ByteWriter& Header(int version, const std::wstring& text1 = L"", int flag = 1,
                     double value = 1.7976931348623157e308, const std::wstring& text2 = L"") {
    return Int(version).Str(text1).Int(flag).Double(value).Str(text2);
  }
  // Var: one variable of the shared shape (text, integer, double).
  ByteWriter& Var(const std::wstring& text, int n, double d) { return Str(text).Int(n).Double(d); }
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

// WithVersion: the file with its leading version field replaced.
inline Bytes WithVersion(Bytes file, std::int32_t version) {
  const auto v = static_cast<std::uint32_t>(version);
  for (int i = 0; i < 4; ++i) file[static_cast<std::size_t>(i)] = static_cast<BYTE>(v >> (8 * i));
  return file;
}

// Store: what object.Serialize writes.
inline Bytes Store(CObject& object) {
  CMemFile file;
  CArchive ar(&file, CArchive::store);
  object.Serialize(ar);
  ar.Close();
  const BYTE* data = file.GetData();
  return Bytes(data, data + file.GetLength());
}

// Load: lets object read itself from bytes (exceptions pass through).
inline void Load(const Bytes& bytes, CObject& object) {
  Bytes copy(bytes);
  copy.push_back(0);  // a non-null buffer even for an empty input
  CMemFile file(copy.data(), static_cast<UINT>(bytes.size()));
  CArchive ar(&file, CArchive::load);
  object.Serialize(ar);
}

// LoadCause: the CArchiveException cause Load ends with, or -1 if it read
// without an archive exception.
inline int LoadCause(const Bytes& bytes, CObject& object) {
  try {
    Load(bytes, object);
  } catch (const CArchiveException& e) {
    return e.m_cause;
  }
  return -1;
}

// Reloaded: the bytes a fresh record of the kind writes after reading these.
template <class RECORD>
Bytes Reloaded(const Bytes& bytes) {
  RECORD back;
  Load(bytes, back);
  return Store(back);
}

}  // namespace testing_records

#endif  // CHARTCORE_TESTS_LOGIC_RECORD_BYTES_H_
