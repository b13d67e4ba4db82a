#include "chartcore/platform/profile.h"

#if !defined(_WIN32)

#include <fcntl.h>
#include <sys/stat.h>

#include <string>

#include <gtest/gtest.h>

#include "chartcore/platform/text_codec.h"
#include "platform/temp_folder.h"

namespace {


std::wstring Get(const wchar_t* app, const wchar_t* key, const CString& file, const wchar_t* def = L"<def>",
                 DWORD size = 100) {
  wchar_t buf[100];
  return std::wstring(buf, GetPrivateProfileStringW(app, key, def, buf, size, file));
}

std::string Utf16File(const std::wstring& text) {
  return "\xFF\xFE" + chartcore::WideToUtf16LE(text.data(), text.size());
}

// One file exercising every reading rule.
const char kRules[] =
    "Global=top\r\n"
    "[ System ]\r\n"
    "Count = 3\r\n"
    "Name0=\"Quoted\"\r\n"
    "Name1='single'\r\n"
    "Name2=\"a\"b\"\r\n"
    "Name3=\"unbalanced\r\n"
    ";Count=9\r\n"
    "v;x=semi;colon\r\n"
    "no equals line\r\n"
    "\r\n"
    "EMPTY=\r\n"
    "name0=later duplicate\r\n"
    "[system]\r\n"
    "Other=1\r\n"
    "[User]\n"
    "Count=0x10\n"
    "\tSpaces =   padded value   \n"
    "I1=  12abc\n"
    "I2=+5\n"
    "I3=abc\n"
    "I4=4294967298\n"
    "I5=-1\n"
    "I6=010\n"
    "I7=\"0x1F\"\n"
    "I8=0x\n";

}  // namespace

TEST(ProfileFiles, ReadsWithTheWindowsRules) {
  chartcore_test::TempFolder dir;
  dir.MakeFile("rules.ini", kRules);
  const CString f = dir.Path(L"rules.ini");
  EXPECT_EQ(Get(L"System", L"Count", f), L"3");
  EXPECT_EQ(Get(L"  system\t", L" COUNT ", f), L"3");  // case and blanks ignored
  EXPECT_EQ(Get(L"System", L"Name0", f), L"Quoted");    // first of duplicate keys wins
  EXPECT_EQ(Get(L"System", L"Name1", f), L"single");
  EXPECT_EQ(Get(L"System", L"Name2", f), L"a\"b");
  EXPECT_EQ(Get(L"System", L"Name3", f), L"\"unbalanced");
  EXPECT_EQ(Get(L"System", L";Count", f), L"9");  // no comments
  EXPECT_EQ(Get(L"System", L"v;x", f), L"semi;colon");
  EXPECT_EQ(Get(L"System", L"no equals line", f), L"<def>");
  EXPECT_EQ(Get(L"System", L"EMPTY", f), L"");  // present but empty is not missing
  EXPECT_EQ(Get(L"System", L"Other", f), L"<def>");  // the duplicate section is not searched
  EXPECT_EQ(Get(L"", L"Global", f), L"top");  // keys before the first header
  EXPECT_EQ(Get(L"User", L"Spaces", f), L"padded value");
  EXPECT_EQ(Get(L"Nope", L"Count", f), L"<def>");
  EXPECT_EQ(Get(L"System", L"Count", dir.Path(L"missing.ini"), nullptr), L"");
  // Truncation: size-1 characters; the default is cut, then loses trailing blanks.
  EXPECT_EQ(Get(L"System", L"Name0", f, L"", 4), L"Quo");
  EXPECT_EQ(Get(L"System", L"zz", f, L"abc   ", 10), L"abc");
  EXPECT_EQ(Get(L"System", L"zz", f, L"ab  cd", 4), L"ab");
  EXPECT_EQ(Get(L"System", L"zz", f, L"ab\t ", 10), L"ab\t");  // blanks go, tabs stay
  // A quoted value cut with its closing quote: 'single' in 7 keeps "singl".
  EXPECT_EQ(Get(L"System", L"Name1", f, L"", 7), L"singl");
  EXPECT_EQ(Get(L"System", L"Name1", f, L"", 8), L"single");
  EXPECT_EQ(Get(L"System", L"Name1", f, L"", 6), L"singl");
  wchar_t one[1] = {L'x'};
  EXPECT_EQ(GetPrivateProfileStringW(L"System", L"Count", L"", one, 1, f), 0u);
  EXPECT_EQ(one[0], L'\0');
  EXPECT_EQ(GetPrivateProfileStringW(L"System", L"Count", L"", nullptr, 10, f), 0u);

  // Integers as C reads them, after the quotes go.
  struct Int { const wchar_t* app; const wchar_t* key; UINT value; };
  const Int ints[] = {
      {L"System", L"Count", 3}, {L"User", L"Count", 16}, {L"User", L"I1", 12}, {L"User", L"I2", 5},
      {L"User", L"I3", 0},           // present, no digits: 0
      {L"User", L"I4", 2},           // 2^32 + 2 wraps to 2
      {L"User", L"I5", 0xFFFFFFFFu}, {L"User", L"I6", 10},  // a leading zero is no octal
      {L"User", L"I7", 31},          // quotes go first
      {L"User", L"I8", 0},           // "0x" alone reads the 0
      {L"System", L"EMPTY", 7},      // empty: the default
      {L"System", L"Missing", 7},
  };
  for (const Int& c : ints) EXPECT_EQ(GetPrivateProfileIntW(c.app, c.key, 7, f), c.value) << c.key;
  EXPECT_EQ(GetPrivateProfileIntW(L"System", L"Missing", -2, f), static_cast<UINT>(-2));
  EXPECT_EQ(GetPrivateProfileIntW(L"System", L"Count", 4, dir.Path(L"missing.ini")), 4u);

  // Name lists: every section in file order, the duplicate [system] too,
  // double-terminated.
  wchar_t buf[64];
  EXPECT_EQ(GetPrivateProfileStringW(nullptr, nullptr, L"", buf, 64, f), 19u);
  EXPECT_EQ(std::wstring(buf, 20), std::wstring(L"System\0system\0User\0", 19) + L'\0');
  // Keys in file order, duplicates too, but ";Count" is no listed name.
  EXPECT_EQ(GetPrivateProfileStringW(L"System", nullptr, L"", buf, 64, f), 46u);
  EXPECT_EQ(std::wstring(buf, 47), std::wstring(L"Count\0Name0\0Name1\0Name2\0Name3\0v;x\0EMPTY\0name0\0", 46) + L'\0');
  // The keys of a missing section: the default, as for a missing key.
  EXPECT_EQ(GetPrivateProfileStringW(L"Nope", nullptr, L"dflt", buf, 64, f), 4u);
  EXPECT_EQ(std::wstring(buf), L"dflt");
  // Cut lists end with two terminators and return size-2.
  EXPECT_EQ(GetPrivateProfileStringW(nullptr, nullptr, L"", buf, 8, f), 6u);
  EXPECT_EQ(std::wstring(buf, 8), std::wstring(L"System\0\0", 8));
  // Keys of the first "User" section in order.
  EXPECT_EQ(GetPrivateProfileStringW(L"user", nullptr, L"", buf, 64, f), 37u);
  EXPECT_EQ(std::wstring(buf, 6), std::wstring(L"Count\0", 6));
  // A missing file gives an empty list.
  buf[0] = buf[1] = L'x';
  EXPECT_EQ(GetPrivateProfileStringW(nullptr, nullptr, L"", buf, 64, dir.Path(L"none.ini")), 0u);
  EXPECT_EQ(std::wstring(buf, 2), std::wstring(2, L'\0'));
}

TEST(ProfileFiles, ReadsTheThreeEncodings) {
  chartcore_test::TempFolder dir;
  // [함수] 이름="한글", in UTF-16LE with mark, UTF-8 with mark, UTF-8 without,
  // and code page 949 without.
  const std::wstring text = L"[\xD568\xC218]\r\n\xC774\xB984=\"\xD55C\xAE00\"\r\nCount=2\r\n";
  const std::string utf8 = chartcore::WideToUtf8(text);
  const std::string cp949 = chartcore::WideToCp949(text.data(), text.size());
  ASSERT_NE(cp949, utf8);
  int n = 0;
  for (const std::string& bytes : {Utf16File(text), "\xEF\xBB\xBF" + utf8, utf8, cp949}) {
    const std::string name = std::to_string(++n) + ".ini";
    SCOPED_TRACE(name);
    dir.MakeFile(name, bytes);
    const CString f = dir.lib(name);
    EXPECT_EQ(Get(L"\xD568\xC218", L"\xC774\xB984", f), L"\xD55C\xAE00");
    EXPECT_EQ(GetPrivateProfileIntW(L"\xD568\xC218", L"count", 0, f), 2u);
  }
}

TEST(ProfileFiles, WritesEditsAndDeletes) {
  chartcore_test::TempFolder dir;
  const CString f = dir.Path(L"New_Function.dat");
  // A new file: UTF-8, \r\n.
  EXPECT_TRUE(WritePrivateProfileStringW(L"System", L"Count", L"1", f));
  EXPECT_EQ(dir.Read("New_Function.dat"), "[System]\r\nCount=1\r\n");
  EXPECT_TRUE(WritePrivateProfileStringW(L"User", L"Count", L"0", f));
  EXPECT_TRUE(WritePrivateProfileStringW(L"system", L"Name0", L"\xD55C", f));  // joins the section
  EXPECT_TRUE(WritePrivateProfileStringW(L"System", L"count", L"2", f));        // replaces the line
  EXPECT_EQ(dir.Read("New_Function.dat"), "[System]\r\ncount=2\r\nName0=\xED\x95\x9C\r\n[User]\r\nCount=0\r\n");
  EXPECT_EQ(Get(L"System", L"Name0", f), L"\xD55C");
  // Deleting a key, a missing key, a section.
  EXPECT_TRUE(WritePrivateProfileStringW(L"System", L"Name0", nullptr, f));
  EXPECT_TRUE(WritePrivateProfileStringW(L"System", L"Nothing", nullptr, f));
  EXPECT_TRUE(WritePrivateProfileStringW(L"System", nullptr, nullptr, f));
  EXPECT_EQ(dir.Read("New_Function.dat"), "[User]\r\nCount=0\r\n");
  // Bad arguments and unwritable places.
  EXPECT_FALSE(WritePrivateProfileStringW(nullptr, L"k", L"v", f));
  EXPECT_FALSE(WritePrivateProfileStringW(L"A", L"k", L"v", nullptr));
  EXPECT_TRUE(WritePrivateProfileStringW(nullptr, nullptr, nullptr, nullptr));
  EXPECT_FALSE(WritePrivateProfileStringW(L"A", L"k", L"v", dir.Path(L"no_dir\\x.ini")));
  // Nothing but the file is left in the folder (the temporary was renamed).
  EXPECT_EQ(dir.Tree(""), std::vector<std::string>{"New_Function.dat"});
}

TEST(ProfileFiles, WritingKeepsEncodingLineEndsAndOtherLines) {
  chartcore_test::TempFolder dir;
  // Each file: its bytes, the key written, and the bytes after.
  struct Case {
    const char* what;
    std::string before;
    const wchar_t* app;
    const wchar_t* key;
    const wchar_t* value;
    std::string after;
  };
  const Case cases[] = {
      {"UTF-16LE stays UTF-16LE with its mark", Utf16File(L"[S]\r\nA=1\r\n"), L"S", L"B", L"\xD55C",
       Utf16File(L"[S]\r\nA=1\r\nB=\xD55C\r\n")},
      // Odd lines keep their bytes; the new key goes after the section's
      // last line, before the blank line.
      {"code page 949 and \\n stay", "[S]\n  A = \xC7\xD1  \n\n[T]\nX=1", L"S", L"B", L"\xAE00",
       "[S]\n  A = \xC7\xD1  \nB=\xB1\xDB\n\n[T]\nX=1"},
      {"a line after an unterminated last line", "[T]\nX=1", L"T", L"Y", L"2", "[T]\nX=1\nY=2\n"},
      {"an unterminated last line replaced", "[S]\r\nA=1", L"S", L"A", L"22", "[S]\r\nA=22"},
      {"section \"\" before the first header", "[S]\r\nA=22", L"", L"Top", L"1", "Top=1\r\n[S]\r\nA=22"},
      // An unterminated last line ending in a bare \r keeps it in its value:
      // the line gets \r\n even in a \n file, so the \r is not read as a line end.
      {"a bare \\r at the end", "[S]\nA=v\r", L"S", L"B", L"2", "[S]\nA=v\r\r\nB=2\n"},
  };
  int n = 0;
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    const std::string name = std::to_string(++n) + ".ini";
    dir.MakeFile(name, c.before);
    EXPECT_TRUE(WritePrivateProfileStringW(c.app, c.key, c.value, dir.lib(name)));
    EXPECT_EQ(dir.Read(name), c.after);
    EXPECT_EQ(Get(c.app, c.key, dir.lib(name)), c.value);
  }
  EXPECT_EQ(Get(L"S", L"A", dir.lib(std::to_string(n) + ".ini")), L"v\r");  // the bare \r case
  // A UTF-16 file cut at an odd byte: the lines added after it start on a
  // code unit, so they read back.
  dir.MakeFile("odd.ini", Utf16File(L"[S]\r\nA=1") + "x");
  EXPECT_TRUE(WritePrivateProfileStringW(L"S", L"B", L"2", dir.Path(L"odd.ini")));
  EXPECT_EQ(Get(L"S", L"B", dir.Path(L"odd.ini")), L"2");
  EXPECT_EQ(Get(L"S", L"A", dir.Path(L"odd.ini")), L"1\xFFFD");
  // A read-only file is not replaced (by its permission bits, even for root).
  dir.MakeFile("ro.ini", "[S]\nA=1\n");
  ASSERT_EQ(::chmod(dir.Native("ro.ini").c_str(), 0444), 0);
  EXPECT_FALSE(WritePrivateProfileStringW(L"S", L"A", L"2", dir.Path(L"ro.ini")));
  EXPECT_EQ(dir.Read("ro.ini"), "[S]\nA=1\n");
}

TEST(ProfileFiles, SeesChangesMadeBehindItsBack) {
  chartcore_test::TempFolder dir;
  const std::string native = dir.Native("c.ini");
  const CString f = dir.Path(L"c.ini");
  // A same-size rewrite right after a read must not be served from memory.
  dir.MakeFile("c.ini", "[S]\nA=1\n");
  EXPECT_EQ(GetPrivateProfileIntW(L"S", L"A", 0, f), 1u);
  dir.MakeFile("c.ini", "[S]\nA=2\n");
  EXPECT_EQ(GetPrivateProfileIntW(L"S", L"A", 0, f), 2u);
  EXPECT_EQ(GetPrivateProfileIntW(L"S", L"A", 0, f), 2u);  // unchanged bytes: the parse is reused
  dir.MakeFile("c.ini", "[S]\nA=1\n");  // back to bytes read before
  EXPECT_EQ(GetPrivateProfileIntW(L"S", L"A", 0, f), 1u);
  // A list written and read back at once, key by key.
  for (int i = 0; i < 5; ++i) {
    const CString key = CString(L"K") + static_cast<wchar_t>(L'0' + i);
    ASSERT_TRUE(WritePrivateProfileStringW(L"L", key, key + L"v", f));
    for (int j = 0; j <= i; ++j) {
      const CString earlier = CString(L"K") + static_cast<wchar_t>(L'0' + j);
      EXPECT_EQ(Get(L"L", earlier, f), std::wstring(earlier + L"v"));
    }
  }
  dir.MakeFile("c.ini", "[S]\nA=2\n");
  EXPECT_EQ(GetPrivateProfileIntW(L"S", L"A", 0, f), 2u);
  // An old file is remembered, and a change of its time is noticed.
  struct timespec times[2] = {{1000000000, 0}, {1000000000, 0}};
  ASSERT_EQ(::utimensat(AT_FDCWD, native.c_str(), times, 0), 0);
  EXPECT_EQ(GetPrivateProfileIntW(L"S", L"A", 0, f), 2u);
  dir.MakeFile("c.ini", "[S]\nA=3\n");
  times[0].tv_sec = times[1].tv_sec = 1000000001;
  ASSERT_EQ(::utimensat(AT_FDCWD, native.c_str(), times, 0), 0);
  EXPECT_EQ(GetPrivateProfileIntW(L"S", L"A", 0, f), 3u);
}

#endif  // !_WIN32
