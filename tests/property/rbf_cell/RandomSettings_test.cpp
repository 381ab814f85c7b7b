#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <string>

#include "tests/support/mesh/SmallMeshes.h"
#include "tests/support/rbf_cell/CellBed.h"

// Settings files of random content: what is read, printed and left in the file equals a reading in plain steps.

namespace zyn_test {
namespace {

/// What a reading leaves behind.
struct Outcome {
  double span = 123.5;
  int shapeNormalize = 7;
  bool fitsAnInt = true;  ///< a number beyond an int has no defined value
  std::string printed;
  std::string file;
};

/// Lines of a text in pieces of at most `most` characters, as C input gives them: the newline belongs to its
/// line, and a NUL hides the rest of the piece it stands in.
class Lines {
 public:
  explicit Lines(std::string const& text) : text_(text) {}

  /// @return false, with `line` as it was, at the end
  bool Next(std::size_t most, std::string& line) {
    if (position_ == text_.size()) return false;
    std::size_t const newline = text_.find('\n', position_);
    std::size_t const end =
        std::min({newline == std::string::npos ? text_.size() : newline + 1, position_ + most});
    line = text_.substr(position_, end - position_).c_str();
    position_ = end;
    return true;
  }

 private:
  std::string text_;
  std::size_t position_ = 0;
};

/// What stands behind the first "=" of a line; a line without one counts as its last character.
std::string ValueOf(std::string const& line) {
  if (line.empty()) return "";
  std::size_t equals = line.find('=');
  std::string const before = line.substr(0, equals);
  if (before.find_first_not_of(" \n") == std::string::npos) return "";
  std::size_t begin = line.size() - 1;
  if (equals != std::string::npos) {
    begin = line.find_first_not_of(' ', equals + 1);
    if (begin == std::string::npos) begin = equals;
  }
  return line.substr(begin, line.find('\n', begin) - begin);
}

Outcome PlainReading(std::string const& file) {
  Outcome outcome;
  outcome.file = file;
  std::string line;
  int format = 0;
  Lines(file).Next(254, line);
  if (std::sscanf(line.c_str(), "%d", &format) != 1 || format != 1001) {
    outcome.file = DefaultSettings();
    outcome.printed = "Default DQ parameter is adopted.\n";
  }
  Lines lines(outcome.file);
  line.clear();
  lines.Next(511, line);
  lines.Next(511, line);
  outcome.span = std::atof(ValueOf(line).c_str());
  lines.Next(511, line);
  long const shape = std::strtol(ValueOf(line).c_str(), nullptr, 10);
  outcome.fitsAnInt = shape >= INT_MIN && shape <= INT_MAX;
  outcome.shapeNormalize = static_cast<int>(shape);
  if (outcome.shapeNormalize == 1) outcome.printed += "iShape_Normalize = On\n";
  return outcome;
}

using Random = std::mt19937_64;

/// Pieces that settings are made of, and others.
std::string RandomPiece(Random& random) {
  std::string const pieces[] = {
      "1001",    "1002", "=", " = ", "\n",   "\n",  "\r\n", "Span", "Shape Normalize   ",
      "500",     "1",    "0", "-2",  "3.75", "1e2", " ",    "\t",   std::string(1, '\0'),
      "\xff\xfe"};
  constexpr std::size_t kPieces = sizeof pieces / sizeof pieces[0];
  std::size_t const choice = random() % (kPieces + 2);
  if (choice < kPieces) return pieces[choice];
  if (choice == kPieces) return std::string(random() % 700, static_cast<char>("x =-\t"[random() % 5]));
  std::string bytes;
  for (std::size_t i = random() % 20; i > 0; --i) bytes += static_cast<char>(random() % 256);
  return bytes;
}

std::string RandomFile(Random& random) {
  std::string file;
  if (random() % 4 != 0) file = "1001";
  if (random() % 3 != 0) file += "\n";
  for (std::size_t i = random() % 24; i > 0; --i) file += RandomPiece(random);
  return file;
}

TEST(RandomSettings, AreReadPrintedAndLeftAsByPlainSteps) {
  Random random(17);
  CellBed bed(SevenPoints());
  int ownFiles = 0;
  for (int i = 0; i < 2000; ++i) {
    std::string const file = RandomFile(random);
    Outcome const expected = PlainReading(file);
    bed.folder.Write(file);
    bed.object->Span = 123.5;
    bed.object->iShape_Normalize = 7;
    EXPECT_EQ(expected.printed, bed.ReadSettings());
    EXPECT_EQ(expected.file, bed.folder.Read());
    bool const sameSpan = expected.span == bed.object->Span ||
                          (expected.span != expected.span && bed.object->Span != bed.object->Span);
    EXPECT_TRUE(sameSpan) << expected.span << " " << bed.object->Span;
    if (expected.fitsAnInt) {
      EXPECT_EQ(expected.shapeNormalize, bed.object->iShape_Normalize);
    }
    if (expected.file == file) ++ownFiles;
    ASSERT_FALSE(HasFailure()) << "file " << i << ": " << ::testing::PrintToString(file);
  }
  EXPECT_GT(ownFiles, 400);
  EXPECT_LT(ownFiles, 1800);
}

}  // namespace
}  // namespace zyn_test
