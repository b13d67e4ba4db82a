// Conversions between wide text and the byte encodings the library meets:
// UTF-8 (Linux text files, the log), UTF-16LE (archives, Windows profile
// files) and code page 949 (Korean; files from non-Unicode hosts).
//
// Nothing here depends on the process locale. On Linux the conversions use
// the C library's iconv; on Windows the system's code-page functions.
// Invalid input never throws: undecodable bytes become U+FFFD, characters a
// code page cannot hold become '?'.
//
//   std::string bytes = chartcore::WideToUtf8(L"한국어");   // 9 bytes
//   std::wstring text = chartcore::Cp949ToWide(bytes949);
#ifndef CHARTCORE_PLATFORM_TEXT_CODEC_H_
#define CHARTCORE_PLATFORM_TEXT_CODEC_H_

#include <cstddef>
#include <string>

#include "chartcore/platform/types.h"

namespace chartcore {

// Code page numbers as Windows names them.
enum : UINT { kCodePageCp949 = 949, kCodePageUtf8 = 65001, kCodePageUtf16LE = 1200 };

CHARTCORE_API std::string WideToUtf8(const wchar_t* text, size_t length);
CHARTCORE_API std::string WideToUtf8(const std::wstring& text);
CHARTCORE_API std::wstring Utf8ToWide(const char* bytes, size_t length);
CHARTCORE_API std::wstring Utf8ToWide(const std::string& bytes);

CHARTCORE_API std::string WideToCp949(const wchar_t* text, size_t length);
CHARTCORE_API std::wstring Cp949ToWide(const char* bytes, size_t length);

// UTF-16LE as bytes (2 per code unit; characters above U+FFFF as surrogate
// pairs on Linux, kept as they are on Windows). A trailing odd byte is dropped
// as U+FFFD.
CHARTCORE_API std::string WideToUtf16LE(const wchar_t* text, size_t length);
CHARTCORE_API std::wstring Utf16LEToWide(const void* bytes, size_t byteCount);
// Number of UTF-16 code units the text takes (what archives count).
CHARTCORE_API size_t Utf16Length(const wchar_t* text, size_t length);

// Converts by code page number (949, 65001, 1200); any other number is
// treated as 949, the system code page of the original hosts.
CHARTCORE_API std::wstring BytesToWide(const char* bytes, size_t length, UINT codePage);
CHARTCORE_API std::string WideToBytes(const wchar_t* text, size_t length, UINT codePage);

// True when the bytes are well-formed UTF-8 (no overlongs, no surrogates).
CHARTCORE_API bool IsValidUtf8(const char* bytes, size_t length);

// Detects a text file's encoding by its byte-order mark: returns the code page
// and sets bomLength (3 for UTF-8, 2 for UTF-16LE, 0 for none). Without a mark
// it returns 65001 when the bytes are valid UTF-8 and 949 otherwise (on
// Windows: 949, the system code page, unless preferUtf8WithoutBom is set).
CHARTCORE_API UINT DetectTextEncoding(const char* bytes, size_t length, size_t& bomLength,
                                      bool preferUtf8WithoutBom = true);

}  // namespace chartcore

#endif  // CHARTCORE_PLATFORM_TEXT_CODEC_H_
