#pragma once

#include <cstdint>
#include <cstring>
#include <vector>

namespace zyn_test {

/// The value of an element that nobody may read or write: for doubles a NaN with a payload of its own, so
/// that a sum that touched it is a NaN; for ints a number far beyond every index.
template <typename T>
T GuardValue();

template <>
inline double GuardValue<double>() {
  std::uint64_t const bits = 0x7ff8dead0000beefULL;
  double value = 0.0;
  std::memcpy(&value, &bits, sizeof value);
  return value;
}

template <>
inline int GuardValue<int>() {
  return 0x6badbeef;
}

/// An array [1..n] as a host lends it, with guard values in element 0 and in three elements beyond the end. Under
/// AddressSanitizer nothing is beyond the end: it sees reads there as well, which a guard value may let pass.
template <typename T>
class GuardedArray {
 public:
  explicit GuardedArray(int n = 0, T value = T()) : n_(n), elements_(Length(n), GuardValue<T>()) {
    for (int i = 1; i <= n; ++i) (*this)[i] = value;
  }

  int Size() const { return n_; }

  /// Address of element 0, which is what a host lends.
  T* Data() { return elements_.data(); }
  T const* Data() const { return elements_.data(); }

  T& operator[](int i) { return elements_[static_cast<std::size_t>(i)]; }
  T const& operator[](int i) const { return elements_[static_cast<std::size_t>(i)]; }

  /// Whether element 0 and the elements beyond the end still hold the guard value, bit for bit.
  bool GuardsIntact() const {
    T const guard = GuardValue<T>();
    for (int const i : GuardIndices())
      if (std::memcmp(&(*this)[i], &guard, sizeof guard) != 0) return false;
    return true;
  }

  /// Element 0 and the elements beyond the end.
  std::vector<int> GuardIndices() const {
    std::vector<int> indices{0};
    for (int i = n_ + 1; i < static_cast<int>(elements_.size()); ++i) indices.push_back(i);
    return indices;
  }

  /// Whether all elements, guards included, have the same bits.
  bool IdenticalTo(GuardedArray const& other) const {
    return n_ == other.n_ && std::memcmp(Data(), other.Data(), sizeof(T) * elements_.size()) == 0;
  }

 private:
#if defined(ZYN_ADDRESS_SANITIZER)
  static constexpr int kGuardsBeyondTheEnd = 0;
#else
  static constexpr int kGuardsBeyondTheEnd = 3;
#endif

  static std::size_t Length(int n) { return static_cast<std::size_t>(n + 1 + kGuardsBeyondTheEnd); }

  int n_;
  std::vector<T> elements_;
};

/// A guarded copy of values [1..n].
inline GuardedArray<double> Guarded(std::vector<double> const& values) {
  int const n = static_cast<int>(values.size()) - 1;
  GuardedArray<double> array(n);
  for (int i = 1; i <= n; ++i) array[i] = values[static_cast<std::size_t>(i)];
  return array;
}

/// Three guarded arrays [1..n]: the components of positions or of a gradient.
struct GuardedGradient {
  explicit GuardedGradient(int n, double value = -7.5) : x(n, value), y(n, value), z(n, value) {}

  bool GuardsIntact() const { return x.GuardsIntact() && y.GuardsIntact() && z.GuardsIntact(); }
  bool IdenticalTo(GuardedGradient const& other) const {
    return x.IdenticalTo(other.x) && y.IdenticalTo(other.y) && z.IdenticalTo(other.z);
  }

  GuardedArray<double> x, y, z;
};

}  // namespace zyn_test
