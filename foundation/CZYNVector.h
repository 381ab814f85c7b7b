#pragma once

#include "foundation/Export.h"

/// A checked array that knows its index base: valid indices are 0..n-1 for base 0 and 1..n for base 1.
///
/// Owns its block. A base-1 vector of size n has n+1 elements: element 0 exists, is zero after Create and is
/// outside the valid range. Copying is deep, which sets this class apart from everything else in the library.
///
/// Exists for <int,0>, <int,1>, <float,0>, <float,1>, <double,0>, <double,1> and <bool,1>; the definitions
/// stand in the source file, so there are no others.
template <typename T, int Base>
class ZYN_EXPORT CZYNVector {
  static_assert(Base == 0 || Base == 1, "an index base is 0 or 1");

 public:
  CZYNVector() = default;
  CZYNVector(int n);  ///< Create(n); stays empty, without a word, when that fails
  CZYNVector(int n, T value);
  CZYNVector(int n, T const* src);
  CZYNVector(CZYNVector const& other);
  ~CZYNVector();
  CZYNVector& operator=(CZYNVector const& other);

  /// Allocates n elements of zero.
  /// @return false, with nothing changed, when n is below 1 or the vector is not empty
  bool Create(int n);
  bool Create(int n, T value);       ///< Create(n), then Assign(value)
  bool Create(int n, T const* src);  ///< Create(n), then Assign(src)

  /// Frees the block; the vector is empty and can be created anew. @return true
  bool Destroy();

  bool Empty() const;
  int GetSize() const;                 ///< n, for either base
  T* Get_Ptr() const;                  ///< element 0 of the block, for base 1 too; null when empty
  bool Out_Of_Range(int i) const;      ///< whether i is not a valid index
  bool Assign(T value);                ///< all elements, element 0 of a base-1 vector too; false when empty
  bool Assign(T const* src);           ///< from src[0] on, so base 1 takes n+1 elements; false when empty
  bool GetValue(int i, T& out) const;  ///< false, and `out` as it was, when i is out of range
  bool SetValue(int i, T value);       ///< false when i is out of range
  bool AddValue(int i, T value);       ///< false when i is out of range; for bool, adding is "or"

  /// Element i of the block, unchecked.
  T& operator[](int i);

  /// Element i. Out of range it prints a line on standard output and gives the element with the lowest index
  /// (a zero when the vector is empty).
  T const& operator[](int i) const;

  T* m_pData = nullptr;  ///< the block, owned; null when empty
  int m_iSize = 0;       ///< n
  int m_iLower = 0;      ///< lowest valid index
  int m_iUpper = 0;      ///< one past the highest valid index; also the number of elements in the block
};

extern template class CZYNVector<int, 0>;
extern template class CZYNVector<int, 1>;
extern template class CZYNVector<float, 0>;
extern template class CZYNVector<float, 1>;
extern template class CZYNVector<double, 0>;
extern template class CZYNVector<double, 1>;
extern template class CZYNVector<bool, 1>;
