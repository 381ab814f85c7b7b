#include "foundation/CZYNVector.h"

#include <algorithm>
#include <cstddef>
#include <limits>
#include <type_traits>

#include "foundation/Progress.h"

namespace {

// The second number is one past the end, as it stands in the vector.
void ReportOutOfRange(int lower, int upper, int i) {
  PrintFlushed("\n");
  PrintFormatted(">>>  Error in manipulating this array. Length = %d~%d, Out_Of_Range(%d)\n\n", lower, upper,
                 i);
}

// The element that a reference into an empty vector refers to. It stands outside the class because a static of an exported
// template would be a unique symbol, which keeps the library from being unloaded.
template <typename T>
T const& Nothing() {
  static constexpr T kNothing{};
  return kNothing;
}

}  // namespace

template <typename T, int Base>
CZYNVector<T, Base>::CZYNVector(int n) {
  Create(n);
}

template <typename T, int Base>
CZYNVector<T, Base>::CZYNVector(int n, T value) {
  Create(n, value);
}

template <typename T, int Base>
CZYNVector<T, Base>::CZYNVector(int n, T const* const src) {
  Create(n, src);
}

template <typename T, int Base>
CZYNVector<T, Base>::CZYNVector(CZYNVector const& other) {
  *this = other;
}

template <typename T, int Base>
CZYNVector<T, Base>::~CZYNVector() {
  Destroy();
}

template <typename T, int Base>
CZYNVector<T, Base>& CZYNVector<T, Base>::operator=(CZYNVector const& other) {
  if (this == &other) return *this;
  Destroy();
  if (!other.Empty()) Create(other.m_iSize, other.m_pData);
  return *this;
}

// The largest base-1 vector is one short of the largest int, so that the index past its end is an int.
template <typename T, int Base>
bool CZYNVector<T, Base>::Create(int n) {
  if (n < 1 || n > std::numeric_limits<int>::max() - Base || !Empty()) return false;
  m_pData = new T[static_cast<std::size_t>(n + Base)]();
  m_iSize = n;
  m_iLower = Base;
  m_iUpper = n + Base;
  return true;
}

template <typename T, int Base>
bool CZYNVector<T, Base>::Create(int n, T value) {
  return Create(n) && Assign(value);
}

template <typename T, int Base>
bool CZYNVector<T, Base>::Create(int n, T const* const src) {
  return Create(n) && Assign(src);
}

template <typename T, int Base>
bool CZYNVector<T, Base>::Destroy() {
  delete[] m_pData;
  m_pData = nullptr;
  m_iSize = m_iLower = m_iUpper = 0;
  return true;
}

template <typename T, int Base>
bool CZYNVector<T, Base>::Empty() const {
  return m_pData == nullptr;
}

template <typename T, int Base>
int CZYNVector<T, Base>::GetSize() const {
  return m_iSize;
}

template <typename T, int Base>
T* CZYNVector<T, Base>::Get_Ptr() const {
  return m_pData;
}

template <typename T, int Base>
bool CZYNVector<T, Base>::Out_Of_Range(int i) const {
  return i < m_iLower || i >= m_iUpper;
}

template <typename T, int Base>
bool CZYNVector<T, Base>::Assign(T value) {
  if (Empty()) return false;
  std::fill_n(m_pData, m_iUpper, value);
  return true;
}

template <typename T, int Base>
bool CZYNVector<T, Base>::Assign(T const* const src) {
  if (Empty()) return false;
  std::copy_n(src, m_iUpper, m_pData);
  return true;
}

template <typename T, int Base>
bool CZYNVector<T, Base>::GetValue(int i, T& out) const {
  if (Out_Of_Range(i)) return false;
  out = m_pData[i];
  return true;
}

template <typename T, int Base>
bool CZYNVector<T, Base>::SetValue(int i, T value) {
  if (Out_Of_Range(i)) return false;
  m_pData[i] = value;
  return true;
}

template <typename T, int Base>
bool CZYNVector<T, Base>::AddValue(int i, T value) {
  if (Out_Of_Range(i)) return false;
  if constexpr (std::is_same_v<T, bool>) {
    m_pData[i] = m_pData[i] || value;
  } else {
    m_pData[i] += value;
  }
  return true;
}

template <typename T, int Base>
T& CZYNVector<T, Base>::operator[](int i) {
  return m_pData[i];
}

template <typename T, int Base>
T const& CZYNVector<T, Base>::operator[](int i) const {
  if (!Out_Of_Range(i)) return m_pData[i];
  ReportOutOfRange(m_iLower, m_iUpper, i);
  return Empty() ? Nothing<T>() : m_pData[m_iLower];
}

template class CZYNVector<int, 0>;
template class CZYNVector<int, 1>;
template class CZYNVector<float, 0>;
template class CZYNVector<float, 1>;
template class CZYNVector<double, 0>;
template class CZYNVector<double, 1>;
template class CZYNVector<bool, 1>;
