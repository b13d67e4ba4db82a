// Scratch files for the fuzz targets whose code under test reads a path.
//
// Each process gets its own names under the system's temporary folder (the
// process id keeps parallel fuzzing jobs apart); the files are rewritten on
// every input and removed when the process ends normally.
//
//   static const fuzzfiles::ScratchFile input("profile.ini");
//   input.Write(data, size);
//   GetPrivateProfileIntW(L"System", L"Count", 0, input.Path());
#ifndef CHARTCORE_FUZZ_FUZZ_FILES_H_
#define CHARTCORE_FUZZ_FUZZ_FILES_H_

#include <unistd.h>

#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <string>

namespace fuzzfiles {

// ScratchFile: one file name of this process; Write replaces its contents.
class ScratchFile {
 public:
  explicit ScratchFile(const char* name) {
    const char* dir = std::getenv("TMPDIR");
    m_narrow = std::string(dir != nullptr && *dir != '\0' ? dir : "/tmp") + "/chartcore-fuzz-" +
               std::to_string(static_cast<long>(::getpid())) + "-" + name;
    m_wide.assign(m_narrow.begin(), m_narrow.end());
  }
  ~ScratchFile() { std::remove(m_narrow.c_str()); }
  ScratchFile(const ScratchFile&) = delete;
  ScratchFile& operator=(const ScratchFile&) = delete;

  // The path in the library's wide form.
  const wchar_t* Path() const { return m_wide.c_str(); }

  // Write: the file holds exactly these bytes afterwards; aborts when the
  // scratch folder cannot be written (the run would test nothing).
  void Write(const void* data, std::size_t size) const {
    std::FILE* f = std::fopen(m_narrow.c_str(), "wb");
    if (f == nullptr) std::abort();
    if (size != 0 && std::fwrite(data, 1, size, f) != size) std::abort();
    if (std::fclose(f) != 0) std::abort();
  }

  // Read: the file's bytes ("" when it is missing).
  std::string Read() const {
    std::string bytes;
    std::FILE* f = std::fopen(m_narrow.c_str(), "rb");
    if (f == nullptr) return bytes;
    char chunk[65536];
    std::size_t n;
    while ((n = std::fread(chunk, 1, sizeof chunk, f)) > 0) bytes.append(chunk, n);
    std::fclose(f);
    return bytes;
  }


 private:
  std::string m_narrow;
  std::wstring m_wide;
};

}  // namespace fuzzfiles

#endif  // CHARTCORE_FUZZ_FUZZ_FILES_H_
