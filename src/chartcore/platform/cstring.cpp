#include "chartcore/platform/cstring.h"

#include <algorithm>
#include <cwchar>

#include "chartcore/platform/chartype.h"
#include "chartcore/platform/exceptions.h"

namespace {

bool InSet(wchar_t ch, const wchar_t* set) {
  for (; set && *set; ++set)
    if (*set == ch) return true;
  return false;
}

}  // namespace

wchar_t CString::GetAt(int index) const {
  if (index < 0 || index >= GetLength()) AfxThrowInvalidArgException();
  return m_str[static_cast<size_t>(index)];
}

void CString::SetAt(int index, wchar_t ch) {
  if (index < 0 || index >= GetLength()) AfxThrowInvalidArgException();
  m_str[static_cast<size_t>(index)] = ch;
}

wchar_t* CString::GetBuffer(int minLength) {
  if (minLength > GetLength()) m_str.resize(static_cast<size_t>(minLength));
  return &m_str[0];
}

wchar_t* CString::GetBufferSetLength(int length) {
  m_str.resize(static_cast<size_t>(std::max(0, length)));
  return &m_str[0];
}

void CString::ReleaseBuffer(int newLength) {
  if (newLength < 0) {
    newLength = static_cast<int>(std::wcslen(m_str.c_str()));
  }
  if (static_cast<size_t>(newLength) <= m_str.size()) m_str.resize(static_cast<size_t>(newLength));
}

int CString::Compare(const wchar_t* s) const {
  const int r = m_str.compare(s ? s : L"");
  return r < 0 ? -1 : (r > 0 ? 1 : 0);
}

int CString::CompareNoCase(const wchar_t* s) const {
  if (!s) s = L"";
  const wchar_t* a = m_str.c_str();
  for (;; ++a, ++s) {
    const wchar_t ca = chartcore::ToLowerW(*a);
    const wchar_t cb = chartcore::ToLowerW(*s);
    if (ca != cb) return ca < cb ? -1 : 1;
    if (ca == 0) return 0;
  }
}

int CString::Find(const wchar_t* sub, int start) const {
  if (!sub || !*sub || start < 0 || start > GetLength()) return -1;
  const size_t pos = m_str.find(sub, static_cast<size_t>(start));
  return pos == std::wstring::npos ? -1 : static_cast<int>(pos);
}

int CString::Find(wchar_t ch, int start) const {
  if (start < 0 || start >= GetLength()) return -1;
  const size_t pos = m_str.find(ch, static_cast<size_t>(start));
  return pos == std::wstring::npos ? -1 : static_cast<int>(pos);
}

int CString::ReverseFind(wchar_t ch) const {
  const size_t pos = m_str.rfind(ch);
  return pos == std::wstring::npos ? -1 : static_cast<int>(pos);
}

int CString::FindOneOf(const wchar_t* chars) const {
  if (!chars || !*chars) return -1;
  const size_t pos = m_str.find_first_of(chars);
  return pos == std::wstring::npos ? -1 : static_cast<int>(pos);
}

CString CString::Left(int count) const {
  count = std::max(0, std::min(count, GetLength()));
  return CString(m_str.substr(0, static_cast<size_t>(count)));
}

CString CString::Mid(int first) const { return Mid(first, GetLength()); }

CString CString::Mid(int first, int count) const {
  first = std::max(0, first);
  count = std::max(0, count);
  if (first >= GetLength()) return CString();
  count = std::min(count, GetLength() - first);
  return CString(m_str.substr(static_cast<size_t>(first), static_cast<size_t>(count)));
}

CString CString::Right(int count) const {
  count = std::max(0, std::min(count, GetLength()));
  return CString(m_str.substr(m_str.size() - static_cast<size_t>(count)));
}

CString CString::SpanIncluding(const wchar_t* chars) const {
  size_t n = 0;
  while (n < m_str.size() && InSet(m_str[n], chars)) ++n;
  return CString(m_str.substr(0, n));
}

CString CString::SpanExcluding(const wchar_t* chars) const {
  size_t n = 0;
  while (n < m_str.size() && !InSet(m_str[n], chars)) ++n;
  return CString(m_str.substr(0, n));
}

CString CString::Tokenize(const wchar_t* tokens, int& start) const {
  if (start < 0 || start >= GetLength()) {
    start = -1;
    return CString();
  }
  size_t i = static_cast<size_t>(start);
  if (tokens && *tokens) {
    while (i < m_str.size() && InSet(m_str[i], tokens)) ++i;
  }
  if (i >= m_str.size()) {
    start = -1;
    return CString();
  }
  size_t j = i;
  while (j < m_str.size() && !InSet(m_str[j], tokens)) ++j;
  start = static_cast<int>(j < m_str.size() ? j + 1 : j);
  return CString(m_str.substr(i, j - i));
}

int CString::Insert(int index, const wchar_t* text) {
  index = std::max(0, std::min(index, GetLength()));
  if (text) m_str.insert(static_cast<size_t>(index), text);
  return GetLength();
}

int CString::Insert(int index, wchar_t ch) {
  index = std::max(0, std::min(index, GetLength()));
  m_str.insert(static_cast<size_t>(index), 1, ch);
  return GetLength();
}

int CString::Delete(int index, int count) {
  index = std::max(0, index);
  if (count > 0 && index < GetLength()) {
    count = std::min(count, GetLength() - index);
    m_str.erase(static_cast<size_t>(index), static_cast<size_t>(count));
  }
  return GetLength();
}

int CString::Replace(const wchar_t* oldText, const wchar_t* newText) {
  if (!oldText || !*oldText) return 0;
  const std::wstring from(oldText);
  const std::wstring to(newText ? newText : L"");
  int n = 0;
  size_t pos = 0;
  std::wstring out;
  size_t last = 0;
  while ((pos = m_str.find(from, last)) != std::wstring::npos) {
    out.append(m_str, last, pos - last);
    out += to;
    last = pos + from.size();
    ++n;
  }
  if (n) {
    out.append(m_str, last, std::wstring::npos);
    m_str.swap(out);
  }
  return n;
}

int CString::Replace(wchar_t oldCh, wchar_t newCh) {
  int n = 0;
  for (auto& c : m_str) {
    if (c == oldCh) {
      c = newCh;
      ++n;
    }
  }
  return n;
}

int CString::Remove(wchar_t ch) {
  const size_t before = m_str.size();
  m_str.erase(std::remove(m_str.begin(), m_str.end(), ch), m_str.end());
  return static_cast<int>(before - m_str.size());
}

CString& CString::TrimLeft() {
  size_t i = 0;
  while (i < m_str.size() && chartcore::IsSpaceW(m_str[i])) ++i;
  m_str.erase(0, i);
  return *this;
}

CString& CString::TrimLeft(wchar_t ch) {
  size_t i = 0;
  while (i < m_str.size() && m_str[i] == ch) ++i;
  m_str.erase(0, i);
  return *this;
}

CString& CString::TrimLeft(const wchar_t* chars) {
  size_t i = 0;
  while (i < m_str.size() && InSet(m_str[i], chars)) ++i;
  m_str.erase(0, i);
  return *this;
}

CString& CString::TrimRight() {
  size_t n = m_str.size();
  while (n > 0 && chartcore::IsSpaceW(m_str[n - 1])) --n;
  m_str.resize(n);
  return *this;
}

CString& CString::TrimRight(wchar_t ch) {
  size_t n = m_str.size();
  while (n > 0 && m_str[n - 1] == ch) --n;
  m_str.resize(n);
  return *this;
}

CString& CString::TrimRight(const wchar_t* chars) {
  size_t n = m_str.size();
  while (n > 0 && InSet(m_str[n - 1], chars)) --n;
  m_str.resize(n);
  return *this;
}

CString& CString::Trim() { return TrimRight().TrimLeft(); }
CString& CString::Trim(wchar_t ch) { return TrimRight(ch).TrimLeft(ch); }
CString& CString::Trim(const wchar_t* chars) { return TrimRight(chars).TrimLeft(chars); }

CString& CString::MakeUpper() {
  for (auto& c : m_str) c = chartcore::ToUpperW(c);
  return *this;
}

CString& CString::MakeLower() {
  for (auto& c : m_str) c = chartcore::ToLowerW(c);
  return *this;
}

CString& CString::MakeReverse() {
  std::reverse(m_str.begin(), m_str.end());
  return *this;
}

CString operator+(const CString& a, const CString& b) {
  CString r(a);
  r += b;
  return r;
}
CString operator+(const CString& a, const wchar_t* b) {
  CString r(a);
  r += b;
  return r;
}
CString operator+(const wchar_t* a, const CString& b) {
  CString r(a);
  r += b;
  return r;
}
CString operator+(const CString& a, wchar_t b) {
  CString r(a);
  r += b;
  return r;
}
CString operator+(wchar_t a, const CString& b) {
  CString r(a);
  r += b;
  return r;
}
