#include "cli/case_files/CaseMark.h"

#include <cstddef>
#include <cstdio>
#include <exception>
#include <utility>

#include "cli/base/Version.h"
#include "reference_host/openfoam/GzipFile.h"

namespace zyngrad {
namespace {

constexpr char const* kMark = "written by zyngrad ";
constexpr char const* kChecksum = ", crc64 ";
constexpr std::size_t kDigits = 16;
constexpr std::size_t kLongestHeader = 2000;

/// Where the digits of the checksum begin; npos if there is no note.
std::size_t PlaceOfChecksum(std::string const& text) {
  std::size_t const mark = text.find(kMark);
  if (mark > kLongestHeader) return std::string::npos;  // npos is the largest number
  std::size_t const name = text.find(kChecksum, mark);
  std::size_t const end = text.find('"', mark);
  if (name == std::string::npos) return name;
  std::size_t const digits = name + std::string(kChecksum).size();
  return digits + kDigits == end ? digits : std::string::npos;
}

/// Of a text whose digits are zero.
std::string DigitsOf(Fingerprint const& fingerprint) {
  char digits[kDigits + 1];
  std::snprintf(digits, sizeof digits, "%016llx", static_cast<unsigned long long>(fingerprint.crc));
  return digits;
}

/// Whether a text in pieces has a note with the checksum that it should have.
/// @param[in] next  next() returns the next piece, empty at the end; the first one has the whole header
template <class Next>
bool IsSealedInPieces(Next const& next) {
  std::string piece = next();
  std::size_t const place = PlaceOfChecksum(piece);
  if (place == std::string::npos) return false;
  std::string const told = piece.substr(place, kDigits);
  piece.replace(place, kDigits, kDigits, '0');
  GrowingFingerprint found;
  for (; !piece.empty(); piece = next()) found.Add(piece);
  return told == DigitsOf(found.Now());
}

}  // namespace

std::string CaseNote() {
  return kMark + std::string(ZYNGRAD_VERSION) + kChecksum + std::string(kDigits, '0');
}

void CaseSeal::PutInto(std::string& beginning) const {
  beginning.replace(PlaceOfChecksum(beginning), kDigits, DigitsOf(fingerprint_.Now()));
}

void Seal(std::string& text) {
  CaseSeal seal;
  seal.Add(text);
  seal.PutInto(text);
}

bool IsSealed(std::string text) {
  return IsSealedInPieces([&text] { return std::exchange(text, {}); });
}

bool IsOurCaseFile(std::string const& file) {
  constexpr std::size_t kPiece = std::size_t{1} << 20;
  try {
    reference_host::GzipFile content(file);
    return IsSealedInPieces([&content] { return std::string(content.Read(kPiece).View()); });
  } catch (std::exception const&) {
    return false;
  }
}

}  // namespace zyngrad
