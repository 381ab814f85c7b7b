#include "foundation/SettingsFile.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <limits>
#include <system_error>

#include "foundation/CNumbers.h"
#include "foundation/Progress.h"
#include "foundation/SettingsText.h"
#include "foundation/WithoutTraps.h"

namespace {

namespace fs = std::filesystem;

constexpr int kFirstLineSize = 256;  // with the terminator

bool Exists(char const* path) {
  std::error_code ignored;
  return fs::exists(path, ignored);
}

// A folder is not a settings file and stays, even if it is empty.
void DeleteFile(char const* path) {
  std::error_code ignored;
  if (!fs::is_directory(path, ignored)) fs::remove(path, ignored);
}

// The number at the beginning of a text; 0 without one. It is wider than int, so that no number beyond int's range is
// taken for a format number.
long LeadingInteger(char const* text) { return std::strtol(text, nullptr, 10); }

}  // namespace

SettingsFile::Stream SettingsFile::OpenForReading(char const* path) {
  std::error_code ignored;
  return Stream(fs::is_regular_file(path, ignored) ? std::fopen(path, "r") : nullptr);
}

SettingsFile::Stream SettingsFile::OpenInFormat(char const* path, Format const& format) {
  if (Exists(path)) DeleteOtherFormat(path, format);
  if (!Exists(path)) {
    PrintFlushed("Default DQ parameter is adopted.\n");
    WriteDefaults(path, format);
  }
  return OpenForReading(path);
}

void SettingsFile::DeleteOtherFormat(char const* path, Format const& format) {
  long found = 0;
  if (Stream const file = OpenForReading(path)) {
    char line[kFirstLineSize] = "";
    int const size = std::min(format.firstLineLimit + 1, kFirstLineSize);
    if (std::fgets(line, size, file.get()) != nullptr) found = LeadingInteger(line);
  } else {
    PrintFlushed("Default DQ parameter is adopted.\n");
    PrintFlushed("\n");
  }
  if (found != format.number) DeleteFile(path);
}

void SettingsFile::WriteDefaults(char const* path, Format const& format) {
  Stream const file(std::fopen(path, "w"));
  if (file == nullptr) return;  // the run goes on with the defaults that the object has
  for (char const* line : format.defaults) {
    std::fputs(line, file.get());
    std::fflush(file.get());
  }
}

SettingsFile::SettingsFile(char const* path) : file_(OpenForReading(path)) {}

SettingsFile::SettingsFile(char const* path, Format const& format) : file_(OpenInFormat(path, format)) {
  if (IsOpen()) ReadLine();  // the format number
}

// Into a second buffer: a read that fails may leave anything in its buffer.
void SettingsFile::ReadLine() {
  char next[kLineSize] = "";
  if (std::fgets(next, kLineSize, file_.get()) != nullptr) std::memcpy(line_, next, sizeof(line_));
}

char const* SettingsFile::Value() {
  char key[kLineSize];
  SplitSettingsLine(line_, key, value_);
  return value_;
}

double SettingsFile::Real() {
  CNumbers const withPoint;
  WithoutTraps const ofOverflow;
  return std::strtod(Value(), nullptr);
}

int SettingsFile::Integer() {
  constexpr long kLowest = std::numeric_limits<int>::min();
  constexpr long kHighest = std::numeric_limits<int>::max();
  return static_cast<int>(std::clamp(LeadingInteger(Value()), kLowest, kHighest));
}

double SettingsFile::NextReal() {
  ReadLine();
  return Real();
}

int SettingsFile::NextInteger() {
  ReadLine();
  return Integer();
}
