#include "chartcore/script_editor/script_words.h"

#include <cstring>

#include "chartcore/platform/chartype.h"

namespace chartcore {
namespace internal {

// ---------------------------------------------------------------------------
// The tables, exactly as the language defines them
// ---------------------------------------------------------------------------

const wchar_t* const kConstantWords[] = {
    L"false", L"true", L"if", L"만일", L"and", L"or", L"xor", L"not", L"equal", L"day", L"year",
    L"month", L"hour", L"null", nullptr,
};

const wchar_t* const kBuiltinFunctionWords[] = {
    L"accum", L"sum", L"합계", L"turnup", L"상승전환", L"turndn", L"turndown", L"하락전환", L"crossup",
    L"상향돌파", L"crossdn", L"crossdown", L"하향돌파", L"grow", L"shrink", L"highest", L"최고값", L"lowest",
    L"최저값", L"highestperiod", L"기간최고값", L"lowestperiod", L"기간최저값", L"shift", L"좌우이동", L"vshift",
    L"상하이동", L"CountSince", L"DayIndex", L"HighestSince", L"LowestSince", L"Ref", L"SwingHigh",
    L"SwingLow", L"ValueWhen", L"ValuePos", L"BarsSince", L"DayOpen", L"DayHigh", L"DayLow",
    L"DayClose", L"DayHighest", L"DayLowest", L"PreDayHighest", L"PreDayLowest", L"NPreDayHighest",
    L"NPreDayLowest", L"PreDayDate", L"PreDayOpen", L"PreDayHigh", L"PreDayLow", L"PreDayClose",
    L"NPreDayDate", L"NPreDayOpen", L"NPreDayHigh", L"NPreDayLow", L"NPreDayClose", L"Correlation",
    L"UpLimitCandle", L"상한가", L"DnLimitCandle", L"하한가", L"CompressC", L"종가압축", L"CompressH",
    L"고가압축", L"CompressL", L"저가압축", L"CompressO", L"시가압축", L"CompressV", L"거래량압축", L"CompressD",
    L"일시압축", L"DeCompress", L"분해", L"REC", L"esum", L"DaySum", L"BarPos", L"BarRegion",
    L"BarIndex", L"Percentile", L"HourOfDay", L"DayOfWeek", L"DayOfYear", L"WeekOfMonth",
    L"WeekOfYear", nullptr,
};

const wchar_t* const kMathFunctionWords[] = {
    L"abs", L"mod", L"max", L"최대값", L"min", L"최소값", L"sin", L"cos", L"tan", L"ceil", L"floor",
    L"round", L"roundUp", L"roundDown", L"log", L"log10", L"pow", L"square", L"sqrt", nullptr,
};

const wchar_t* const kPriceWords[] = {
    L"o", L"open", L"시가", L"h", L"high", L"고가", L"l", L"low", L"저가", L"c", L"close", L"종가", L"v",
    L"volume", L"거래량", L"oi", L"openinterest", L"미결제약정", L"d", L"date", L"날짜", L"t", L"time",
    L"시간", L"dt", L"datetime", L"날짜시간", L"지수이평", L"최소자승", L"단순이평", L"가중이평", L"WELLES이평", L"삼각이평",
    L"변동이평", L"지체지수이평", L"기하이평", L"조화이평", L"적합이평", nullptr,
};

const wchar_t* const kIndicatorWords[] = {
    L"ABI", L"AccumDist", L"Accumulate", L"AccumSwingIndex", L"AdaptMA", L"ADIssues", L"ADLine",
    L"ADLineBreadth", L"ADRatio", L"ADX", L"ADXR", L"AR", L"ARMSIndex", L"ArmsEMV", L"Aroon",
    L"Aroon_Up", L"Aroon_Dn", L"AroonOscillator", L"ATR", L"Avg", L"BetaCoefMv", L"BinaryWave",
    L"Bollinger_Up", L"Bollinger_Mid", L"Bollinger_Dn", L"BollingerWidth", L"BoltonTremblay",
    L"BOP", L"BR", L"BreadthThrust", L"BretzTRIN5", L"BSI", L"BWI", L"CBO_Hi", L"CBO_Mid",
    L"CBO_Lo", L"CCI", L"CFTPP", L"CFTPP_Res1", L"CFTPP_Res2", L"CFTPP_Sup1", L"CFTPP_Sup2",
    L"ChaikinMoneyFlow", L"ChaikinOscillator", L"ChaikinVolatility", L"CMO", L"Compress",
    L"CorCoefMv", L"CovarianceMv", L"CSIndex", L"CVI", L"DEMA", L"DemandIdx", L"Demark",
    L"Demark_Res", L"Demark_Mid", L"Demark_Sup", L"DeTrend", L"DMI", L"DIPlus", L"DIMinus",
    L"PlusDI", L"MinusDI", L"DiffRatio", L"DiffValue", L"Disparity", L"DispersionMv", L"DynamicMI",
    L"DownAverage", L"DPO", L"DX", L"EMV", L"EnergyIndex", L"EnergyIndex_Buy", L"EnergyIndex_Sell",
    L"Envelope", L"Envelope_Hi", L"Envelope_Mid", L"Envelope_Lo", L"EnvelopePct",
    L"EnvelopePct_Hi", L"EnvelopePct_Mid", L"EnvelopePct_Lo", L"ERAYBear", L"ERAYBull", L"EAvg",
    L"EMA", L"ExpMA", L"FillInterval", L"ForceIndex", L"ForecastOscillator", L"GAvg",
    L"HeometricMA", L"HAvg", L"HarmonicMA", L"HerrickPayoffIndex", L"Ichimoku", L"IchimokuTenkan",
    L"IchimokuKijun", L"IchimokuSenkouSpan1", L"IchimokuSenkouSpan2", L"IchimokuChikou", L"IMI",
    L"Inertia", L"KO", L"KlingerOscillator", L"LineOscillator", L"LstSqrMA", L"MA", L"MACD",
    L"MACDOscillator", L"MAEnvelope_Hi", L"MAEnvelope_Lo", L"MAHighLow_Hi", L"MAHighLow_Lo",
    L"MassIndex", L"McClellanOscillator", L"McClellanSummation", L"MedianPrices", L"MESAsinewave",
    L"MESAsinewaveLead", L"MarketFacilitation", L"MOBV", L"Momentum", L"MoneyFlowIndex",
    L"MovingAverage", L"MovingAverageList", L"MovingSum", L"NCO", L"NeoPsychology",
    L"NewPsychology", L"NMO", L"NVI", L"OBOiMv", L"OBV", L"OBVolMv", L"OmegaIndex", L"Open10TRIN",
    L"OverBoughtSold", L"PerformancePct", L"PFE", L"Pivot", L"Pivot_Res2", L"Pivot_Res1",
    L"Pivot_Mid", L"Pivot_Sup1", L"Pivot_Sup2", L"PriceChannel_Hi", L"PriceChannel_Mid",
    L"PriceChannel_Lo", L"PriceOscillator", L"PriceOscillatorPct", L"ProjectionBands",
    L"ProjectionBand_Hi", L"ProjectionBand_Lo", L"ProjectionBandwidth", L"ProjectionOscillator",
    L"PsychologyLine", L"PSAR", L"PSARSign", L"PVI", L"PVO", L"PVrank", L"PVT", L"QMAO",
    L"QMAO_UP", L"QMAO_DN", L"Qstick", L"RankCorrelation", L"RangeIndicator", L"RateOfChange",
    L"ROC", L"RegressionSlopeMv", L"RegressionConstMv", L"RegressionLineMv", L"RMI", L"RSI",
    L"RSquared", L"RSquaredCoefMv", L"RVI", L"RVIoriginal", L"RelativeVigorIndex", L"RWI_Hi",
    L"RWI_Lo", L"SMA", L"SimpleMA", L"SMI", L"SONAR", L"StdDevMv", L"StdDev", L"StdErrBand_Hi",
    L"StdErrBand_Mid", L"StdErrBand_Lo", L"StdErrMv", L"STIX", L"Stochastic", L"StochasticFast",
    L"StochasticSlow", L"StochasticOscillator", L"StochRSI", L"SwingIndex", L"T3", L"TAvg",
    L"TEMA", L"TrueRange", L"TR", L"TrendScore", L"TMA", L"TriangularMA", L"TRIN", L"TRIX", L"TSI",
    L"TypicalPrices", L"UltimateOscillator", L"UpAverage", L"UpDownRatio", L"UpDownVolume", L"VAO",
    L"VMA", L"VariableMA", L"VHF", L"VIDYA", L"VolAdjustedMA", L"VR", L"VROC", L"WAvg",
    L"WeightedCloses", L"WMA", L"WeightedMA", L"WellesMA", L"WellesSum", L"WellesVolatility_ARC",
    L"WellesVolatility_SIC", L"WellesVolatility_SAR", L"WellesVolatility_POS", L"WilliamsAD",
    L"WilliamsR", L"ZeroLagExpMA", L"ZigZag", nullptr,
};

const wchar_t* const kPriceWordsSkippedInModes01[] = {
    L"v", L"volume", L"거래량", L"oi", L"openinterest", L"미결제약정", nullptr,
};

const wchar_t* const kIndicatorsSkippedInModes01[] = {
    L"ABI", L"ADIssues", L"ADLine", L"ADLineBreadth", L"ADRatio", L"ARMSIndex", L"BoltonTremblay",
    L"BreadthThrust", L"CVI", L"McClellanOscillator", L"McClellanSummation", L"MOBV",
    L"Open10TRIN", L"OverBoughtSold", L"STIX", L"TRIN", L"UpDownRatio", L"UpDownVolume",
    L"AccumDist", L"ArmsEMV", L"ChaikinMoneyFlow", L"ChaikinOscillator", L"DemandIdx", L"EMV",
    L"ForceIndex", L"HerrickPayoffIndex", L"KO", L"MFI", L"MoneyFlowIndex", L"NVI", L"PVI", L"OBV",
    L"PVO", L"PVRank", L"VolAdjustedMA", L"VR", L"VAO", nullptr,
};

// ---------------------------------------------------------------------------
// Helpers over the tables
// ---------------------------------------------------------------------------

int CountWords(const wchar_t* const* table) {
  int n = 0;
  while (table && table[n]) ++n;
  return n;
}

bool IsExactTableWord(const wchar_t* const* table, const wchar_t* word) {
  if (!table || !word) return false;
  for (; *table; ++table) {
    if (std::wcscmp(*table, word) == 0) return true;
  }
  return false;
}

wchar_t FoldWordChar(wchar_t ch) {
  if (ch < 0x80) return (ch >= L'A' && ch <= L'Z') ? static_cast<wchar_t>(ch + (L'a' - L'A')) : ch;
  // Hangul syllables, the bulk of non-ASCII script text, have no case.
  if (ch >= 0xAC00 && ch <= 0xD7A3) return ch;
  return ToLowerW(ch);
}

// ---------------------------------------------------------------------------
// NoCaseWordIndex
// ---------------------------------------------------------------------------

namespace {

// FNV-1a over the folded characters.
unsigned HashFolded(const wchar_t* word, int length) {
  unsigned h = 2166136261u;
  for (int i = 0; i < length; ++i) {
    h ^= static_cast<unsigned>(FoldWordChar(word[i]));
    h *= 16777619u;
  }
  return h;
}

}  // namespace

void NoCaseWordIndex::Clear() {
  m_text.clear();
  m_slots.clear();
  m_count = 0;
  m_maxLength = 0;
}

int NoCaseWordIndex::Locate(const wchar_t* word, int length, unsigned hash) const {
  const size_t mask = m_slots.size() - 1;
  for (size_t i = hash & mask;; i = (i + 1) & mask) {
    const Slot& s = m_slots[i];
    if (s.offset < 0) return static_cast<int>(i);
    if (s.hash == hash && s.length == length) {
      const wchar_t* stored = m_text.data() + s.offset;
      int k = 0;
      while (k < length && stored[k] == FoldWordChar(word[k])) ++k;
      if (k == length) return static_cast<int>(i);
    }
  }
}

void NoCaseWordIndex::Grow() {
  std::vector<Slot> old;
  old.swap(m_slots);
  m_slots.assign(old.empty() ? 64 : old.size() * 2, Slot());
  const size_t mask = m_slots.size() - 1;
  for (const Slot& s : old) {
    if (s.offset < 0) continue;
    size_t i = s.hash & mask;
    while (m_slots[i].offset >= 0) i = (i + 1) & mask;
    m_slots[i] = s;
  }
}

void NoCaseWordIndex::Add(const wchar_t* word, int length, unsigned flags) {
  if (!word || length < 1) return;
  // Keep the table at most half full so probes stay short.
  if (static_cast<size_t>(m_count + 1) * 2 > m_slots.size()) Grow();
  const unsigned hash = HashFolded(word, length);
  Slot& slot = m_slots[static_cast<size_t>(Locate(word, length, hash))];
  if (slot.offset >= 0) {
    slot.flags |= flags;
    return;
  }
  slot.offset = static_cast<int>(m_text.size());
  slot.length = length;
  slot.hash = hash;
  slot.flags = flags;
  for (int i = 0; i < length; ++i) m_text.push_back(FoldWordChar(word[i]));
  ++m_count;
  if (length > m_maxLength) m_maxLength = length;
}

unsigned NoCaseWordIndex::Find(const wchar_t* word, int length) const {
  if (!word || length < 1 || length > m_maxLength) return 0;
  const Slot& slot = m_slots[static_cast<size_t>(Locate(word, length, HashFolded(word, length)))];
  return slot.offset >= 0 ? slot.flags : 0;
}

// ---------------------------------------------------------------------------
// Classification
// ---------------------------------------------------------------------------

namespace {

enum TableFlag : unsigned {
  kInConstants = 1,
  kInBuiltins = 2,
  kInMath = 4,
  kInPrices = 8,
  kInIndicators = 16,
  kPriceSkipped01 = 32,
  kIndicatorSkipped01 = 64,
};

void AddTable(NoCaseWordIndex& index, const wchar_t* const* table, unsigned flag) {
  for (; *table; ++table) index.Add(*table, static_cast<int>(std::wcslen(*table)), flag);
}

// One index over all fixed tables, built on first use and never changed.
const NoCaseWordIndex& FixedWords() {
  static const NoCaseWordIndex index = [] {
    NoCaseWordIndex ix;
    AddTable(ix, kConstantWords, kInConstants);
    AddTable(ix, kBuiltinFunctionWords, kInBuiltins);
    AddTable(ix, kMathFunctionWords, kInMath);
    AddTable(ix, kPriceWords, kInPrices);
    AddTable(ix, kIndicatorWords, kInIndicators);
    AddTable(ix, kPriceWordsSkippedInModes01, kPriceSkipped01);
    AddTable(ix, kIndicatorsSkippedInModes01, kIndicatorSkipped01);
    return ix;
  }();
  return index;
}

bool IsHexDigit(wchar_t ch) {
  return (ch >= L'0' && ch <= L'9') || (ch >= L'a' && ch <= L'f') || (ch >= L'A' && ch <= L'F');
}

}  // namespace

bool IsScriptNumber(const wchar_t* word, int length) {
  if (!word || length < 1) return false;
  if (length >= 3 && word[0] == L'0' && (word[1] == L'x' || word[1] == L'X')) {
    for (int i = 2; i < length; ++i) {
      if (!IsHexDigit(word[i])) return false;
    }
    return true;
  }
  if (!IsDigitW(word[0])) return false;
  for (int i = 1; i < length; ++i) {
    const wchar_t ch = word[i];
    if (!IsDigitW(ch) && ch != L'+' && ch != L'-' && ch != L'.' && ch != L'e' && ch != L'E') return false;
  }
  return true;
}

bool IsScriptWordCharWide(wchar_t ch) {
  // The low byte is what a double-byte code page would see first.
  return IsDBCSLeadByte(static_cast<BYTE>(ch & 0xFF)) || IsAlnumW(ch);
}

bool IsScriptBlankWide(wchar_t ch) { return IsSpaceW(ch); }

int ClassifyScriptWord(const wchar_t* word, int length, int scriptMode,
                       const NoCaseWordIndex* basicFunctions) {
  if (!word || length < 1) return 0;
  const unsigned in = FixedWords().Find(word, length);
  if (in & kInConstants) return kScriptConstant;
  if (IsScriptNumber(word, length)) return kScriptNumber;
  if (in & kInBuiltins) return kScriptBuiltin;
  if (in & kInMath) return kScriptMath;
  const bool shrink = scriptMode == 0 || scriptMode == 1;
  if ((in & kInPrices) && !(shrink && (in & kPriceSkipped01))) return kScriptPrice;
  if ((in & kInIndicators) && !(shrink && (in & kIndicatorSkipped01))) return kScriptIndicator;
  if (basicFunctions && basicFunctions->Find(word, length)) return kScriptUserFunction;
  return 0;
}

}  // namespace internal
}  // namespace chartcore
