#include "cli/bodies/StlReader.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>
#include <system_error>

#include "cli/base/OneLine.h"
#include "reference_host/mesh/MeshFile.h"

namespace zyngrad {
namespace {

using reference_host::MeshFile;

// A binary file: 80 bytes of any text, a count, and for each triangle the normal, three corners (each three single
// numbers) and two bytes without a meaning. Numbers begin with their lowest byte.
constexpr std::size_t kHeader = 80, kCount = 4, kNormal = 12, kNumber = 4, kTriangle = 50;
constexpr char const* kAxes = "xyz";

std::uint32_t NumberAt(std::string_view content, std::size_t at) {
  std::uint32_t number = 0;
  for (std::size_t k = 0; k < kNumber; ++k)
    number |= static_cast<std::uint32_t>(static_cast<unsigned char>(content[at + k])) << (8 * k);
  return number;
}

double SingleAt(std::string_view content, std::size_t at) {
  std::uint32_t const bits = NumberAt(content, at);
  float value = 0.0F;
  static_assert(sizeof value == sizeof bits);
  std::memcpy(&value, &bits, sizeof value);
  return static_cast<double>(value);
}

/// The size of a binary file with the count that stands in it; 0 if there is no room for a count.
std::uint64_t SizeByCount(std::string_view content) {
  if (content.size() < kHeader + kCount) return 0;
  return kHeader + kCount + std::uint64_t{kTriangle} * NumberAt(content, kHeader);
}

constexpr std::string_view kBlanks = " \t\r\n\v\f";

bool IsWord(std::string_view text, std::string_view lower) {
  return text.size() == lower.size() &&
         std::equal(text.begin(), text.end(), lower.begin(), [](char a, char b) {
           return (a >= 'A' && a <= 'Z' ? static_cast<char>(a - 'A' + 'a') : a) == b;
         });
}

/// Whether the file may be text: its first word is "solid", and no zero byte follows in the first triangles.
bool LooksLikeText(std::string_view content) {
  constexpr std::size_t kProbed = 1024;
  std::size_t const begin = content.find_first_not_of(kBlanks);
  if (begin == std::string_view::npos) return false;
  std::string_view const word = content.substr(begin, content.find_first_of(kBlanks, begin) - begin);
  return IsWord(word, "solid") && content.substr(0, kProbed).find('\0') == std::string_view::npos;
}

std::vector<double> ReadBinary(MeshFile& file) {
  std::string_view const content = file.Content();
  file.NamePlacesByOffset();
  if (content.size() < kHeader + kCount) {
    file.Fail(content.size(),
              "neither a text that begins with \"solid\" nor a binary STL file, which has at least " +
                  std::to_string(kHeader + kCount) + " bytes");
  }
  std::uint32_t const count = NumberAt(content, kHeader);
  if (SizeByCount(content) != content.size()) {
    file.Fail(kHeader, "not a binary STL file, or cut off: " + std::to_string(count) + " triangles take " +
                           std::to_string(SizeByCount(content)) + " bytes, and the file has " +
                           std::to_string(content.size()));
  }
  std::vector<double> corners;
  corners.reserve(std::size_t{9} * count);
  for (std::size_t t = 0; t < count; ++t) {
    std::size_t const begin = kHeader + kCount + kTriangle * t + kNormal;
    for (std::size_t k = 0; k < 9; ++k) {
      double const value = SingleAt(content, begin + kNumber * k);
      if (!std::isfinite(value)) {
        file.Fail(begin + kNumber * k, "triangle " + std::to_string(t + 1) + ", corner " +
                                           std::to_string(k / 3 + 1) + ": " +
                                           (std::isnan(value) ? "NaN" : "infinity") +
                                           " is not a finite number (" + kAxes[k % 3] + ')');
      }
      corners.push_back(value);
    }
  }
  return corners;
}

/// The words of a text file.
class StlText {
 public:
  explicit StlText(MeshFile const& file) : file_(file), content_(file.Content()) {}

  std::vector<double> Read() {
    do {
      Expect("solid");
      SkipLine();  // its name
      while (NextIs("facet")) ReadTriangle();
      Expect("endsolid");
      SkipLine();
    } while (!AtEnd());
    return std::move(corners_);
  }

 private:
  void ReadTriangle() {
    ++triangle_;
    Expect("facet");
    Expect("normal");
    for (int k = 0; k < 3; ++k) Next();  // not used, and not a number in some files
    Expect("outer");
    Expect("loop");
    for (int corner = 0; corner < 3; ++corner) {
      Expect("vertex");
      for (int axis = 0; axis < 3; ++axis) corners_.push_back(ReadNumber(axis));
    }
    Expect("endloop");
    Expect("endfacet");
  }

  double ReadNumber(int axis) {
    std::string_view const word = Next();
    bool const hasPlus = word.size() > 1 && word[0] == '+' && word[1] != '-';
    double value = 0.0;
    auto const result = std::from_chars(word.data() + (hasPlus ? 1 : 0), word.data() + word.size(), value);
    if (result.ec != std::errc() || result.ptr != word.data() + word.size() || !std::isfinite(value))
      Fail(Found(word) + " is not a finite number (" + kAxes[axis] + ')');
    return value;
  }

  bool AtEnd() { return content_.find_first_not_of(kBlanks, at_) == std::string_view::npos; }

  /// The next word, empty at the end of the file.
  std::string_view Next() {
    begin_ = std::min(content_.find_first_not_of(kBlanks, at_), content_.size());
    at_ = std::min(content_.find_first_of(kBlanks, begin_), content_.size());
    return content_.substr(begin_, at_ - begin_);
  }

  bool NextIs(char const* expected) {
    std::size_t const before = at_;
    bool const isIt = IsWord(Next(), expected);
    at_ = before;
    return isIt;
  }

  void Expect(char const* expected) {
    std::string_view const word = Next();
    if (!IsWord(word, expected)) Fail(std::string("expected \"") + expected + "\", found " + Found(word));
  }

  void SkipLine() { at_ = std::min(content_.find('\n', at_), content_.size()); }

  static std::string Found(std::string_view word) {
    return word.empty() ? "the end of the file" : Quoted(std::string(word.substr(0, 100)));
  }

  [[noreturn]] void Fail(std::string const& what) const {
    file_.Fail(begin_, what + (triangle_ == 0 ? "" : " (triangle " + std::to_string(triangle_) + ')'));
  }

  MeshFile const& file_;
  std::string_view content_;
  std::size_t begin_ = 0, at_ = 0;  ///< of the last word
  std::size_t triangle_ = 0;
  std::vector<double> corners_;
};

}  // namespace

std::vector<double> ReadStl(std::string const& name) {
  MeshFile file(name);
  bool const isText = SizeByCount(file.Content()) != file.Content().size() && LooksLikeText(file.Content());
  std::vector<double> corners = isText ? StlText(file).Read() : ReadBinary(file);
  if (corners.empty()) file.Fail(0, "no triangles");
  return corners;
}

}  // namespace zyngrad
