// CArray and its named instances: the framework's growable arrays.
//
// A CArray owns its elements by value and indexes them from 0. Indexed access
// is checked: an index outside 0..GetSize()-1 throws CInvalidArgException
// instead of touching memory. Elements that SetSize or SetAtGrow add are
// value-initialised (numbers are zero, CStrings empty). Add grows the storage
// geometrically; SetSize allocates exactly what it is asked for.
//
//   CArray<double> closes;
//   closes.Add(101.5);                 // returns 0
//   closes.SetAtGrow(3, 99.0);         // size 4: 101.5, 0, 0, 99
//   CStringArray names;
//   names.Add(L"INDICA");
#ifndef CHARTCORE_PLATFORM_ARRAYS_H_
#define CHARTCORE_PLATFORM_ARRAYS_H_

#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>
#include <new>
#include <type_traits>
#include <utility>

#include "chartcore/platform/cstring.h"
#include "chartcore/platform/exceptions.h"
#include "chartcore/platform/types.h"

// CArray<TYPE, ARG_TYPE>: a growable array of TYPE values. ARG_TYPE is how
// elements are passed in (const TYPE& by default, TYPE for small numbers).
// Copies are deep; a moved-from array is empty.
template <class TYPE, class ARG_TYPE = const TYPE&>
class CArray {
 public:
  typedef TYPE* iterator;
  typedef const TYPE* const_iterator;

  // -------------------------------------------------------------------------
  // Construction
  // -------------------------------------------------------------------------
  CArray() = default;
  CArray(const CArray& other) { AppendRange(other.m_pData, other.m_nSize); }
  CArray(CArray&& other) noexcept
      : m_pData(other.m_pData), m_nSize(other.m_nSize), m_nMaxSize(other.m_nMaxSize), m_nGrowBy(other.m_nGrowBy) {
    other.m_pData = nullptr;
    other.m_nSize = other.m_nMaxSize = 0;
  }
  CArray& operator=(const CArray& other) {
    if (this != &other) Copy(other);
    return *this;
  }
  CArray& operator=(CArray&& other) noexcept {
    if (this != &other) {
      Release();
      m_pData = other.m_pData;
      m_nSize = other.m_nSize;
      m_nMaxSize = other.m_nMaxSize;
      m_nGrowBy = other.m_nGrowBy;
      other.m_pData = nullptr;
      other.m_nSize = other.m_nMaxSize = 0;
    }
    return *this;
  }
  ~CArray() { Release(); }

  // -------------------------------------------------------------------------
  // Size
  // -------------------------------------------------------------------------
  INT_PTR GetSize() const { return m_nSize; }
  INT_PTR GetCount() const { return m_nSize; }
  // GetUpperBound: the last valid index, -1 for an empty array.
  INT_PTR GetUpperBound() const { return m_nSize - 1; }
  BOOL IsEmpty() const { return m_nSize == 0; }

  // SetSize: makes the array hold exactly nNewSize elements. New elements are
  // value-initialised; elements past the new size are destroyed. Storage is
  // allocated for exactly nNewSize when it must grow; a size of 0 frees it.
  // nGrowBy >= 0 sets the minimum number of slots later growth adds (the
  // array still grows geometrically past that). A negative size throws
  // CInvalidArgException.
  void SetSize(INT_PTR nNewSize, INT_PTR nGrowBy = -1) {
    if (nNewSize < 0) AfxThrowInvalidArgException();
    if (nGrowBy >= 0) m_nGrowBy = nGrowBy;
    if (nNewSize == 0) {
      Release();
      return;
    }
    if (nNewSize > m_nMaxSize) Reallocate(nNewSize);
    Resize(nNewSize);
  }

  // RemoveAll: destroys every element and frees the storage.
  void RemoveAll() { Release(); }

  // FreeExtra: gives back the storage beyond the current size.
  void FreeExtra() {
    if (m_nSize == 0) {
      Release();
    } else if (m_nMaxSize > m_nSize) {
      Reallocate(m_nSize);
    }
  }

  // -------------------------------------------------------------------------
  // Element access (an index outside 0..GetSize()-1 throws CInvalidArgException)
  // -------------------------------------------------------------------------
  const TYPE& GetAt(INT_PTR nIndex) const { return m_pData[Checked(nIndex)]; }
  TYPE& GetAt(INT_PTR nIndex) { return m_pData[Checked(nIndex)]; }
  void SetAt(INT_PTR nIndex, ARG_TYPE newElement) { m_pData[Checked(nIndex)] = newElement; }
  TYPE& ElementAt(INT_PTR nIndex) { return m_pData[Checked(nIndex)]; }
  const TYPE& ElementAt(INT_PTR nIndex) const { return m_pData[Checked(nIndex)]; }
  TYPE& operator[](INT_PTR nIndex) { return m_pData[Checked(nIndex)]; }
  const TYPE& operator[](INT_PTR nIndex) const { return m_pData[Checked(nIndex)]; }

  // GetData: the elements as a contiguous block (nullptr when nothing was
  // ever allocated). Valid until the array next changes size.
  TYPE* GetData() { return m_pData; }
  const TYPE* GetData() const { return m_pData; }

  iterator begin() { return m_pData; }
  iterator end() { return m_pData + m_nSize; }
  const_iterator begin() const { return m_pData; }
  const_iterator end() const { return m_pData + m_nSize; }

  // -------------------------------------------------------------------------
  // Growing
  // -------------------------------------------------------------------------
  // SetAtGrow: stores newElement at nIndex, first growing the array to
  // nIndex + 1 elements if needed (the gap is value-initialised). A negative
  // index throws CInvalidArgException. newElement may refer into this array.
  void SetAtGrow(INT_PTR nIndex, ARG_TYPE newElement) {
    if (nIndex < 0) AfxThrowInvalidArgException();
    if (nIndex < m_nSize) {
      m_pData[nIndex] = newElement;
      return;
    }
    if (nIndex >= m_nMaxSize) {
      GrowAndConstructAt(nIndex, newElement);
    } else {
      Resize(nIndex);
      ::new (static_cast<void*>(m_pData + nIndex)) TYPE(newElement);
      m_nSize = nIndex + 1;
    }
  }

  // Add: appends newElement and returns its index.
  INT_PTR Add(ARG_TYPE newElement) {
    const INT_PTR index = m_nSize;
    SetAtGrow(index, newElement);
    return index;
  }

  // Append: appends copies of every element of src (src may be this array)
  // and returns the index where the appended part starts.
  INT_PTR Append(const CArray& src) {
    const INT_PTR start = m_nSize;
    if (&src == this) {
      const CArray copy(src);
      AppendRange(copy.m_pData, copy.m_nSize);
    } else {
      AppendRange(src.m_pData, src.m_nSize);
    }
    return start;
  }

  // Copy: makes this array an element-by-element copy of src.
  void Copy(const CArray& src) {
    if (&src == this) return;
    if (src.m_nSize == 0) {
      RemoveAll();
      return;
    }
    const INT_PTR common = src.m_nSize < m_nSize ? src.m_nSize : m_nSize;
    for (INT_PTR i = 0; i < common; ++i) m_pData[i] = src.m_pData[i];
    if (src.m_nSize < m_nSize) {
      DestroyTail(src.m_nSize);
    } else {
      AppendRange(src.m_pData + common, src.m_nSize - common);
    }
  }

  // InsertAt: inserts nCount copies of newElement before nIndex. An index at
  // or past the end grows the array so the new elements start at nIndex (a
  // gap is value-initialised). A negative index or a count below 1 throws
  // CInvalidArgException.
  void InsertAt(INT_PTR nIndex, ARG_TYPE newElement, INT_PTR nCount = 1) {
    if (nIndex < 0 || nCount < 1) AfxThrowInvalidArgException();
    const TYPE value(newElement);  // newElement may live in this array
    if (nIndex >= m_nSize) {
      EnsureCapacity(nIndex + nCount);
      Resize(nIndex);
      for (INT_PTR i = 0; i < nCount; ++i) {
        ::new (static_cast<void*>(m_pData + m_nSize)) TYPE(value);
        ++m_nSize;
      }
      return;
    }
    OpenGap(nIndex, nCount);
    for (INT_PTR i = 0; i < nCount; ++i) m_pData[nIndex + i] = value;
  }

  // InsertAt: inserts copies of every element of pNewArray before
  // nStartIndex (growing as above). A null array or a negative index throws
  // CInvalidArgException; an empty array inserts nothing.
  void InsertAt(INT_PTR nStartIndex, const CArray* pNewArray) {
    if (pNewArray == nullptr || nStartIndex < 0) AfxThrowInvalidArgException();
    if (pNewArray->m_nSize == 0) return;
    if (pNewArray == this) {
      const CArray copy(*this);
      InsertAt(nStartIndex, &copy);
      return;
    }
    InsertAt(nStartIndex, pNewArray->m_pData[0], pNewArray->m_nSize);
    for (INT_PTR i = 1; i < pNewArray->m_nSize; ++i) m_pData[nStartIndex + i] = pNewArray->m_pData[i];
  }

  // RemoveAt: removes nCount elements starting at nIndex. An index outside
  // 0..GetSize()-1, a negative count, or a range running past the end throws
  // CInvalidArgException; a count of 0 removes nothing.
  void RemoveAt(INT_PTR nIndex, INT_PTR nCount = 1) {
    if (nIndex < 0 || nIndex >= m_nSize || nCount < 0 || nCount > m_nSize - nIndex) AfxThrowInvalidArgException();
    if (nCount == 0) return;
    for (INT_PTR i = nIndex; i + nCount < m_nSize; ++i) m_pData[i] = std::move(m_pData[i + nCount]);
    DestroyTail(m_nSize - nCount);
  }

 private:
  static constexpr INT_PTR kMaxElements =
      static_cast<INT_PTR>(std::numeric_limits<INT_PTR>::max() / static_cast<INT_PTR>(sizeof(TYPE)));

  size_t Checked(INT_PTR nIndex) const {
    if (nIndex < 0 || nIndex >= m_nSize) AfxThrowInvalidArgException();
    return static_cast<size_t>(nIndex);
  }

  static TYPE* Allocate(INT_PTR count) {
    if (count > kMaxElements) AfxThrowMemoryException();
    return static_cast<TYPE*>(::operator new(static_cast<size_t>(count) * sizeof(TYPE)));
  }

  // Capacity for at least `needed` elements when growing one step at a time:
  // half again the current storage (at least m_nGrowBy, at least 4), so a run
  // of Adds costs amortised constant time.
  INT_PTR GrownCapacity(INT_PTR needed) const {
    INT_PTR step = m_nMaxSize / 2;
    if (step < m_nGrowBy) step = m_nGrowBy;
    if (step < 4) step = 4;
    INT_PTR grown = m_nMaxSize > kMaxElements - step ? kMaxElements : m_nMaxSize + step;
    return grown < needed ? needed : grown;
  }

  void EnsureCapacity(INT_PTR needed) {
    if (needed > m_nMaxSize) Reallocate(GrownCapacity(needed));
  }

  // Moves the elements into new storage of exactly `capacity` slots.
  void Reallocate(INT_PTR capacity) {
    TYPE* fresh = Allocate(capacity);
    try {
      RelocateInto(fresh);
    } catch (...) {
      ::operator delete(fresh);
      throw;
    }
    ::operator delete(m_pData);
    m_pData = fresh;
    m_nMaxSize = capacity;
  }

  // Moves (or, when moving could throw, copies) the elements into `fresh`.
  // If a copy throws, what was built in `fresh` is destroyed and this array
  // is unchanged; the caller frees `fresh`.
  void RelocateInto(TYPE* fresh) {
    if constexpr (std::is_nothrow_move_constructible<TYPE>::value || !std::is_copy_constructible<TYPE>::value) {
      std::uninitialized_move(m_pData, m_pData + m_nSize, fresh);
    } else {
      std::uninitialized_copy(m_pData, m_pData + m_nSize, fresh);
    }
    std::destroy(m_pData, m_pData + m_nSize);
  }

  // Grows to hold index `nIndex`, constructing `value` there before the old
  // storage is released (value may refer into it). The gap between the old
  // size and nIndex is value-initialised.
  void GrowAndConstructAt(INT_PTR nIndex, ARG_TYPE value) {
    const INT_PTR capacity = GrownCapacity(nIndex + 1);
    TYPE* fresh = Allocate(capacity);
    INT_PTR gapEnd = m_nSize;
    bool valueBuilt = false;
    try {
      ::new (static_cast<void*>(fresh + nIndex)) TYPE(value);
      valueBuilt = true;
      for (; gapEnd < nIndex; ++gapEnd) ::new (static_cast<void*>(fresh + gapEnd)) TYPE();
      RelocateInto(fresh);
    } catch (...) {
      for (INT_PTR i = m_nSize; i < gapEnd; ++i) fresh[i].~TYPE();
      if (valueBuilt) fresh[nIndex].~TYPE();
      ::operator delete(fresh);
      throw;
    }
    ::operator delete(m_pData);
    m_pData = fresh;
    m_nMaxSize = capacity;
    m_nSize = nIndex + 1;
  }

  // Grows or shrinks the element count within the current capacity.
  void Resize(INT_PTR nNewSize) {
    if (nNewSize < m_nSize) {
      DestroyTail(nNewSize);
      return;
    }
    for (; m_nSize < nNewSize; ++m_nSize) ::new (static_cast<void*>(m_pData + m_nSize)) TYPE();
  }

  void DestroyTail(INT_PTR nNewSize) {
    while (m_nSize > nNewSize) m_pData[--m_nSize].~TYPE();
  }

  void AppendRange(const TYPE* src, INT_PTR count) {
    if (count <= 0) return;
    if (m_nSize + count > m_nMaxSize) {
      // An exact request (a copy) gets exactly its size; growth gets slack.
      Reallocate(m_nSize == 0 ? count : GrownCapacity(m_nSize + count));
    }
    for (INT_PTR i = 0; i < count; ++i) {
      ::new (static_cast<void*>(m_pData + m_nSize)) TYPE(src[i]);
      ++m_nSize;
    }
  }

  // Shifts the elements from nIndex up by nCount; the opened slots hold
  // valid (moved-from or value-initialised) elements.
  void OpenGap(INT_PTR nIndex, INT_PTR nCount) {
    const INT_PTR oldSize = m_nSize;
    EnsureCapacity(oldSize + nCount);
    Resize(oldSize + nCount);
    for (INT_PTR i = oldSize - 1; i >= nIndex; --i) m_pData[i + nCount] = std::move(m_pData[i]);
  }

  void Release() {
    DestroyTail(0);
    ::operator delete(m_pData);
    m_pData = nullptr;
    m_nMaxSize = 0;
  }

  TYPE* m_pData = nullptr;
  INT_PTR m_nSize = 0;
  INT_PTR m_nMaxSize = 0;
  INT_PTR m_nGrowBy = 0;
};

// ---------------------------------------------------------------------------
// Named arrays of the framework
// ---------------------------------------------------------------------------

// CStringArray: an array of CString (Add and SetAt also take LPCTSTR).
class CStringArray : public CArray<CString, const CString&> {
 public:
  using CArray<CString, const CString&>::CArray;
};

// CByteArray, CWordArray, CDWordArray, CUIntArray: arrays of numbers passed
// by value.
class CByteArray : public CArray<BYTE, BYTE> {
 public:
  using CArray<BYTE, BYTE>::CArray;
};
class CWordArray : public CArray<WORD, WORD> {
 public:
  using CArray<WORD, WORD>::CArray;
};
class CDWordArray : public CArray<DWORD, DWORD> {
 public:
  using CArray<DWORD, DWORD>::CArray;
};
class CUIntArray : public CArray<UINT, UINT> {
 public:
  using CArray<UINT, UINT>::CArray;
};

#endif  // CHARTCORE_PLATFORM_ARRAYS_H_
