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

}  // namespace internal
}  // namespace chartcore

#endif  // CHARTCORE_SCRIPT_EDITOR_SCRIPT_WORDS_H_
