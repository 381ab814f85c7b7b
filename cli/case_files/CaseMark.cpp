#include "cli/case_files/CaseMark.h"

#include <cstddef>
#include <cstdio>
#include <exception>

#include "cli/base/Version.h"
#include "cli/output/Fingerprint.h"
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
std::string ChecksumOf(std::string const& text) {
  char digits[kDigits + 1];
  std::snprintf(digits, sizeof digits, "%016llx",
                static_cast<unsigned long long>(FingerprintOfText(text).crc));
  return digits;
}

}  // namespace

std::string CaseNote() {
  return kMark + std::string(ZYNGRAD_VERSION) + kChecksum + std::string(kDigits, '0');
}

void Seal(std::string& text) {
  std::size_t const place = PlaceOfChecksum(text);
  text.replace(place, kDigits, ChecksumOf(text));
}

bool IsSealed(std::string text) {
  std::size_t const place = PlaceOfChecksum(text);
  if (place == std::string::npos) return false;
  std::string const told = text.substr(place, kDigits);
  text.replace(place, kDigits, kDigits, '0');
  return told == ChecksumOf(text);
}

bool IsOurCaseFile(std::string const& file) {
  try {
    return IsSealed(std::string(reference_host::GzipFile(file).ReadRest().View()));
  } catch (std::exception const&) {
    return false;
  }
}

}  // namespace zyngrad
