#include "chartcore/platform/text_codec.h"

#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

using namespace chartcore;

namespace {

std::string Bytes(std::initializer_list<int> list) {
  std::string s;
  for (int b : list) s += static_cast<char>(b);
  return s;
}

}  // namespace

TEST(TextCodecCp949, KoreanRoundTripsAndBadInput) {
  // "한국어" in code page 949 is C7D1 B1B9 BEEE (checked with iconv).
  const std::wstring korean = L"\xD55C\xAD6D\xC5B4";
  const std::string cp949 = Bytes({0xC7, 0xD1, 0xB1, 0xB9, 0xBE, 0xEE});
  EXPECT_EQ(WideToCp949(korean.data(), korean.size()), cp949);
  EXPECT_EQ(Cp949ToWide(cp949.data(), cp949.size()), korean);
  // An extended-UHC syllable outside KS X 1001 (똠 = 8C63) and mixed ASCII.
  const std::string mixed = Bytes({'A', 0x8C, 0x63, 'z'});
  EXPECT_EQ(Cp949ToWide(mixed.data(), mixed.size()), L"A\xB620z");
  EXPECT_EQ(WideToCp949(L"A\xB620z", 3), mixed);
  // A lead byte without its trail is one U+FFFD and the ASCII byte after it
  // survives; so is a lead byte cut off at the end.
  const std::string bad = Bytes({'a', 0xC7, 'b', 0xC7});
  EXPECT_EQ(Cp949ToWide(bad.data(), bad.size()), L"a\xFFFD" L"b\xFFFD");
#if !defined(_WIN32)
  EXPECT_EQ(Cp949ToWide("\xFF", 1), L"\xFFFD");  // Windows' table maps FF to a private-use character
#endif
  // Characters the code page cannot hold become '?', one per character.
  EXPECT_EQ(WideToCp949(L"a\x0E01\xD55C", 3), Bytes({'a', '?', 0xC7, 0xD1}));
  EXPECT_EQ(WideToCp949(L"\xD800x", 2), "?x");  // a lone surrogate is unmappable
  EXPECT_EQ(WideToCp949(nullptr, 3), "");
  EXPECT_EQ(Cp949ToWide("", 0), L"");
}

TEST(TextCodecUtf8, RoundTripsAndReplacement) {
  const std::wstring text = L"a\x00E9\xD55C\U0001F600";
  const std::string utf8 = Bytes({'a', 0xC3, 0xA9, 0xED, 0x95, 0x9C, 0xF0, 0x9F, 0x98, 0x80});
  EXPECT_EQ(WideToUtf8(text), utf8);
  EXPECT_EQ(Utf8ToWide(utf8), text);
  EXPECT_TRUE(IsValidUtf8(utf8.data(), utf8.size()));
  // Ill-formed input: one U+FFFD per maximal bad stretch, valid text kept.
  const std::string overlong = Bytes({0xC0, 0xAF, 'x'});              // two bad bytes
  const std::string cut = Bytes({0xE2, 0x82, 'y'});                   // truncated 3-byte form
  const std::string surrogate = Bytes({0xED, 0xA0, 0x80});            // encoded U+D800
  EXPECT_EQ(Utf8ToWide(overlong), L"\xFFFD\xFFFDx");
  EXPECT_EQ(Utf8ToWide(cut), L"\xFFFDy");
  EXPECT_EQ(Utf8ToWide(surrogate), L"\xFFFD\xFFFD\xFFFD");
  EXPECT_FALSE(IsValidUtf8(overlong.data(), overlong.size()));
  EXPECT_FALSE(IsValidUtf8(cut.data(), cut.size()));
  EXPECT_FALSE(IsValidUtf8(surrogate.data(), surrogate.size()));
  // A real U+FFFD in the input is valid text.
  const std::string fffd = Bytes({0xEF, 0xBF, 0xBD});
  EXPECT_TRUE(IsValidUtf8(fffd.data(), fffd.size()));
  // A lone surrogate or an out-of-range value in wide text is written as U+FFFD.
  const std::wstring loneSurrogate(1, static_cast<wchar_t>(0xDC00));
  EXPECT_EQ(WideToUtf8(loneSurrogate), fffd);
}

TEST(TextCodecUtf16, SurrogatesOddBytesAndLength) {
  // U+1F600 is D83D DE00 in UTF-16; lone surrogates pass both ways unchanged.
  const std::wstring text = std::wstring(L"A\U0001F600") + static_cast<wchar_t>(0xD800) + L"B";
  const std::string bytes = Bytes({'A', 0, 0x3D, 0xD8, 0x00, 0xDE, 0x00, 0xD8, 'B', 0});
  EXPECT_EQ(WideToUtf16LE(text.data(), text.size()), bytes);
  EXPECT_EQ(Utf16LEToWide(bytes.data(), bytes.size()), text);
  EXPECT_EQ(Utf16Length(text.data(), text.size()), 5u);  // the emoji takes two units
  // A trailing odd byte is one U+FFFD.
  EXPECT_EQ(Utf16LEToWide("a\0b", 3), L"a\xFFFD");
  EXPECT_EQ(Utf16LEToWide(nullptr, 4), L"");
}

TEST(TextCodecDetect, BomsAndFallbacks) {
  size_t bom = 99;
  EXPECT_EQ(DetectTextEncoding("\xEF\xBB\xBFx", 4, bom), static_cast<UINT>(kCodePageUtf8));
  EXPECT_EQ(bom, 3u);
  EXPECT_EQ(DetectTextEncoding("\xFF\xFEx\0", 4, bom), static_cast<UINT>(kCodePageUtf16LE));
  EXPECT_EQ(bom, 2u);
  EXPECT_EQ(DetectTextEncoding("\xED\x95\x9C", 3, bom), static_cast<UINT>(kCodePageUtf8));
  EXPECT_EQ(bom, 0u);
  EXPECT_EQ(DetectTextEncoding("\xC7\xD1", 2, bom), static_cast<UINT>(kCodePageCp949));
  EXPECT_EQ(DetectTextEncoding("", 0, bom), static_cast<UINT>(kCodePageUtf8));
  // By number: 1200 and 65001 are themselves, anything else is 949.
  EXPECT_EQ(BytesToWide("\xC7\xD1", 2, 0), L"\xD55C");
  EXPECT_EQ(WideToBytes(L"\xD55C", 1, kCodePageUtf16LE), Bytes({0x5C, 0xD5}));
}

TEST(TextCodecThreads, ConcurrentConversionsAgree) {
  // Each thread keeps its own converter state; results must not interleave.
  const std::wstring korean = L"\xD55C\xAD6D\xC5B4 text \xAC00\xB098\xB2E4";
  const std::string expected = WideToCp949(korean.data(), korean.size());
  std::vector<std::thread> threads;
  std::vector<int> failures(4, 0);
  for (int t = 0; t < 4; ++t) {
    threads.emplace_back([&, t] {
      for (int i = 0; i < 500; ++i) {
        const std::string b = WideToCp949(korean.data(), korean.size());
        if (b != expected || Cp949ToWide(b.data(), b.size()) != korean) ++failures[static_cast<size_t>(t)];
      }
    });
  }
  for (auto& th : threads) th.join();
  for (int f : failures) EXPECT_EQ(f, 0);
}
