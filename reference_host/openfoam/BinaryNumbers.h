#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

#include "reference_host/mesh/TextCursor.h"
#include "reference_host/openfoam/FoamSyntax.h"

namespace reference_host {

/// The number at a place in a binary list of OpenFOAM.
template <class Number>
Number BinaryNumberAt(char const* bytes) {
  Number number{};
  std::memcpy(&number, bytes, sizeof(Number));
  return number;
}

/// @param[in] size  of the number in the file, 4 or 8 bytes
inline void GetBinaryNumber(char const* bytes, std::size_t size, double& number) {
  number = size == sizeof(double) ? BinaryNumberAt<double>(bytes)
                                  : static_cast<double>(BinaryNumberAt<float>(bytes));
}
inline void GetBinaryNumber(char const* bytes, std::size_t size, std::int64_t& number) {
  number = size == sizeof(std::int64_t) ? BinaryNumberAt<std::int64_t>(bytes)
                                        : BinaryNumberAt<std::int32_t>(bytes);
}

/// The bytes of a binary list of OpenFOAM, as numbers of their size in the file.
class BinaryNumbers {
 public:
  /// Reads the bytes of n numbers, "(bytes)"; if n is 0, the brackets may be absent. Throws MeshError if the file ends
  /// before.
  BinaryNumbers(TextCursor& text, std::size_t n, int bytesOfNumber)
      : n_(n), bytesOfNumber_(static_cast<std::size_t>(bytesOfNumber)) {
    if (n == 0 && text.Peek() != '(') return;
    bytes_ = text.Bytes("a binary list", n * bytesOfNumber_);
    end_ = text.Position();
  }

  std::size_t size() const { return n_; }

  double Real(std::size_t i) const { return At<double>(i); }
  std::int64_t Integer(std::size_t i) const { return At<std::int64_t>(i); }

  /// Position of a number in the file.
  std::size_t Position(std::size_t i) const { return end_ - 1 - (n_ - i) * bytesOfNumber_; }

 private:
  template <class Number>
  Number At(std::size_t i) const {
    Number number{};
    GetBinaryNumber(bytes_.data() + i * bytesOfNumber_, bytesOfNumber_, number);
    return number;
  }

  std::size_t n_;
  std::size_t bytesOfNumber_;
  std::string_view bytes_;
  std::size_t end_ = 0;  ///< behind the closing bracket
};

}  // namespace reference_host
