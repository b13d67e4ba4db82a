// The word tables of the script language and their case-insensitive index.
//
// The editor colours a formula by looking each word up in five fixed tables
// (constants and operators, built-in functions, math functions, prices and
// fields, indicators) and in the user's function list. The tables are kept
// exactly as the language defines them, Korean synonyms included; the look-up
// hashes the word once, so colouring a long file costs no table scans and no
// heap allocation per word.
//
//   using namespace chartcore::internal;
//   int colour = ClassifyScriptWord(L"CrossUp", 7, 2, nullptr);  // 12
//   DWORD next = ParseScriptLine(0, L"x = 1;", 6, blocks, count, 2, nullptr);
#ifndef CHARTCORE_SCRIPT_EDITOR_SCRIPT_WORDS_H_
#define CHARTCORE_SCRIPT_EDITOR_SCRIPT_WORDS_H_

#include <string>
#include <vector>

#include "chartcore/platform/types.h"

namespace chartcore {
namespace internal {

// ---------------------------------------------------------------------------
// Colour indices of the script language
// ---------------------------------------------------------------------------

// The colour index each lexical class gets; the view turns an index into a
// colour through its GetColor.
enum ScriptColour : int {
  kScriptNormal = 2,
  kScriptConstant = 6,
  kScriptIndicator = 7,
  kScriptUserFunction = 8,
  kScriptComment = 9,
  kScriptNumber = 10,
  kScriptBuiltin = 12,
  kScriptMath = 13,
  kScriptPrice = 14,
  kScriptString = 15,
  kScriptDirective = 16,
};

// Parse-state bits carried from the end of one line to the next.
enum ScriptCookie : DWORD {
  kCookieLineComment = 1,
  kCookieDirective = 2,
  kCookieBlockComment = 4,
  kCookieString = 8,
  kCookieChar = 16,
};

// ---------------------------------------------------------------------------
// The fixed tables (null-terminated, in the language's own order)
// ---------------------------------------------------------------------------

extern const wchar_t* const kConstantWords[];         // 14 entries, colour 6
extern const wchar_t* const kBuiltinFunctionWords[];  // 88 entries, colour 12
extern const wchar_t* const kMathFunctionWords[];     // 19 entries, colour 13
extern const wchar_t* const kPriceWords[];            // 38 entries, colour 14
extern const wchar_t* const kIndicatorWords[];        // 239 entries, colour 7
// Price words that are plain text in script modes 0 and 1 (volume and open
// interest do not exist for the markets those modes serve).
extern const wchar_t* const kPriceWordsSkippedInModes01[];
// Market-breadth and volume-based indicators, plain text in modes 0 and 1.
extern const wchar_t* const kIndicatorsSkippedInModes01[];

// Number of entries of a null-terminated table.
int CountWords(const wchar_t* const* table);

// True when the word equals an entry of the null-terminated table exactly
// (case-sensitively), as a pick from the completion list is checked.
bool IsExactTableWord(const wchar_t* const* table, const wchar_t* word);

// ---------------------------------------------------------------------------
// Case-insensitive word index
// ---------------------------------------------------------------------------

// Folds one character for comparisons without regard to case (ASCII fast
// path; other letters by their Unicode lower case).
wchar_t FoldWordChar(wchar_t ch);

// A set of words, each with a bit set of flags, found by hashing the word
// folded to lower case. Find never allocates; an index is rebuilt only when
// words are added.
class NoCaseWordIndex {
 public:
  NoCaseWordIndex() = default;

  // Removes every word.
  void Clear();
  // Adds a word (ignored when empty) with the given flags; flags of a word
  // already present (ignoring case) are OR-ed into its entry.
  void Add(const wchar_t* word, int length, unsigned flags);
  // The flags of the entry equal to the word ignoring case; 0 when there is
  // none, for a null word or for a length below 1.
  unsigned Find(const wchar_t* word, int length) const;
  // Number of distinct words held.
  int GetCount() const { return m_count; }

 private:
  struct Slot {
    int offset = -1;  // into m_text; -1 marks an empty slot
    int length = 0;
    unsigned hash = 0;
    unsigned flags = 0;
  };
  int Locate(const wchar_t* word, int length, unsigned hash) const;
  void Grow();

  std::wstring m_text;  // folded words back to back
  std::vector<Slot> m_slots;
  int m_count = 0;
  int m_maxLength = 0;
};

// ---------------------------------------------------------------------------
// Word classification
// ---------------------------------------------------------------------------

// True when the word reads as a number of the language: "0x" or "0X" with at
// least one further character, all hex digits; or a decimal digit followed by
// digits, '+', '-', '.', 'e' or 'E'. "0x" alone and "0x1G" are not numbers.
bool IsScriptNumber(const wchar_t* word, int length);

// The colour a word gets: constant, number, built-in, math, price, indicator,
// user function (first match wins), or 0 when the word is in none of them.
// Script modes 0 and 1 leave out the volume price words and the breadth and
// volume indicators. basicFunctions may be null (no user functions).
int ClassifyScriptWord(const wchar_t* word, int length, int scriptMode,
                       const NoCaseWordIndex* basicFunctions);

// ---------------------------------------------------------------------------
// Line parsing
// ---------------------------------------------------------------------------

// True for a character that belongs to a word: a letter or digit by Unicode
// class, '_', '.', or any character whose low byte is a lead byte of the
// system's double-byte code page (so Korean text always forms words).
inline bool IsScriptWordChar(wchar_t ch);

// White space as the first-non-blank test of a directive line sees it.
inline bool IsScriptBlank(wchar_t ch);

// The slow paths of the two tests above, for characters beyond ASCII.
bool IsScriptWordCharWide(wchar_t ch);
bool IsScriptBlankWide(wchar_t ch);

inline bool IsScriptWordChar(wchar_t ch) {
  if (ch >= 0x80) return IsScriptWordCharWide(ch);
  return (ch >= L'0' && ch <= L'9') || (ch >= L'a' && ch <= L'z') || (ch >= L'A' && ch <= L'Z') ||
         ch == L'_' || ch == L'.';
}

inline bool IsScriptBlank(wchar_t ch) {
  if (ch >= 0x80) return IsScriptBlankWide(ch);
  return ch == L' ' || (ch >= L'\t' && ch <= L'\r');
}

// Splits one line of script into colour blocks and returns the cookie for the
// next line. Block is any struct with int m_nCharPos and m_nColorIndex (the
// view's TEXTBLOCK). Blocks are written at blocks[count], count is advanced,
// and a block whose position is below the last one's is dropped, so positions
// never decrease; the caller sizes the buffer (2 * length + 2 blocks suffice).
// With blocks null only the cookie is computed: no words are classified.
// An empty line passes on only the block-comment bit; a line ending in a
// backslash passes on every bit (a string, directive or comment continues).
template <class Block>
DWORD ParseScriptLine(DWORD cookie, const wchar_t* chars, int length, Block* blocks, int& count,
                      int scriptMode, const NoCaseWordIndex* basicFunctions) {
  if (length < 1 || !chars) return cookie & kCookieBlockComment;
  const auto addBlock = [&](int pos, int colour) {
    if (count > 0 && blocks[count - 1].m_nCharPos > pos) return;
    blocks[count].m_nCharPos = pos;
    blocks[count].m_nColorIndex = colour;
    ++count;
  };
  const auto classify = [&](int start, int end) {
    const int colour = ClassifyScriptWord(chars + start, end - start, scriptMode, basicFunctions);
    if (colour != 0) addBlock(start, colour);
  };
  bool newBlock = true;
  bool afterWord = false;
  bool firstNonBlank = (cookie & ~static_cast<DWORD>(kCookieBlockComment)) == 0;
  int wordStart = -1;
  int i = 0;
  for (;; ++i) {
    if (newBlock) {
      if (blocks) {
        int colour = kScriptNormal;
        if (cookie & (kCookieLineComment | kCookieBlockComment)) {
          colour = kScriptComment;
        } else if (cookie & (kCookieString | kCookieChar)) {
          colour = kScriptString;
        } else if (cookie & kCookieDirective) {
          colour = kScriptDirective;
        }
        addBlock(afterWord ? i - 1 : i, colour);
      }
      newBlock = afterWord = false;
    }
    if (i == length) break;
    const wchar_t ch = chars[i];
    const wchar_t prev = i > 0 ? chars[i - 1] : L'\0';
    if (cookie & kCookieLineComment) {
      if (blocks) addBlock(i, kScriptComment);
      break;
    }
    if (cookie & kCookieString) {
      if (ch == L'"' && prev != L'\\') {
        cookie &= ~static_cast<DWORD>(kCookieString);
        newBlock = true;
      }
      continue;
    }
    if (cookie & kCookieChar) {
      if (ch == L'\'' && prev != L'\\') {
        cookie &= ~static_cast<DWORD>(kCookieChar);
        newBlock = true;
      }
      continue;
    }
    if (cookie & kCookieBlockComment) {
      if (prev == L'*' && ch == L'/') {
        cookie &= ~static_cast<DWORD>(kCookieBlockComment);
        newBlock = true;
      }
      continue;
    }
    if (prev == L'/' && ch == L'/') {
      if (blocks) addBlock(i - 1, kScriptComment);
      cookie |= kCookieLineComment;
      break;
    }
    if (prev == L'/' && ch == L'*') {
      if (blocks) addBlock(i - 1, kScriptComment);
      cookie |= kCookieBlockComment;
      newBlock = true;
      continue;
    }
    // A directive runs to the line's end; only a comment interrupts it.
    if (cookie & kCookieDirective) continue;
    if (ch == L'"' || ch == L'\'') {
      if (blocks) addBlock(i, kScriptString);
      cookie |= ch == L'"' ? kCookieString : kCookieChar;
      newBlock = true;
      continue;
    }
    if (firstNonBlank) {
      if (ch == L'#') {
        if (blocks) addBlock(i, kScriptDirective);
        cookie |= kCookieDirective;
      }
      if (!IsScriptBlank(ch)) firstNonBlank = false;
    }
    if (!blocks) continue;
    if (IsScriptWordChar(ch)) {
      if (wordStart < 0) wordStart = i;
    } else if (wordStart >= 0) {
      classify(wordStart, i);
      wordStart = -1;
      newBlock = afterWord = true;
    }
  }
  if (blocks && wordStart >= 0) classify(wordStart, i);
  return chars[length - 1] == L'\\' ? cookie : cookie & kCookieBlockComment;
}

}  // namespace internal
}  // namespace chartcore

#endif  // CHARTCORE_SCRIPT_EDITOR_SCRIPT_WORDS_H_
