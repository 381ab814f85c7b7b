#pragma once

#include <cinttypes>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <stdexcept>
#include <string>
#include <utility>

namespace bits_dump {

/// A text file with one number a line, so that the first line in which two files differ names the number: lines
/// `array[element] bits` below a line `case NAME`.
///
/// Any NaN is written as the same one: which operand of a sum lends it its sign and payload is the compiler's choice.
class BitsFile {
 public:
  explicit BitsFile(std::string const& name) : file_(std::fopen(name.c_str(), "w")) {
    if (file_ == nullptr) throw std::runtime_error("cannot write " + name);
  }
  ~BitsFile() {
    if (file_ != nullptr) std::fclose(file_);
  }
  BitsFile(BitsFile const&) = delete;
  BitsFile& operator=(BitsFile const&) = delete;

  /// What the following numbers belong to.
  void BeginCase(std::string const& name) { std::fprintf(file_, "case %s\n", name.c_str()); }

  /// values[1..n]
  void Write(char const* array, int n, double const* values) {
    for (int i = 1; i <= n; ++i) {
      std::fprintf(file_, "%s[%d] ", array, i);
      WriteBits(BitsOf(values[i]));
    }
  }

  /// One line for n numbers, each given by value(1..n): a number made of the bits of all of them in their order.
  template <class Value>
  void WriteTogether(char const* row, int n, Value value) {
    std::uint64_t all = 0xcbf29ce484222325u;  // FNV-1a, 64 bits at a time
    for (int k = 1; k <= n; ++k) all = (all ^ BitsOf(value(k))) * 0x100000001b3u;
    std::fprintf(file_, "%s, %d together: ", row, n);
    WriteBits(all);
  }

  /// Throws unless everything has reached the file.
  void Close() {
    bool const failed = std::ferror(file_) != 0;
    if (std::fclose(std::exchange(file_, nullptr)) != 0 || failed)
      throw std::runtime_error("cannot write all bits");
  }

 private:
  static constexpr std::uint64_t kNaN = 0x7ff8000000000000u;

  static std::uint64_t BitsOf(double value) {
    std::uint64_t bits = kNaN;
    if (!std::isnan(value)) std::memcpy(&bits, &value, sizeof bits);
    return bits;
  }
  void WriteBits(std::uint64_t bits) { std::fprintf(file_, "%016" PRIx64 "\n", bits); }

  std::FILE* file_;
};

}  // namespace bits_dump
