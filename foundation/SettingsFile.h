#pragma once

#include <cstdio>
#include <initializer_list>
#include <memory>

/// The settings file of a radial-basis operator: a format number in the first line, then lines "key = value". A line
/// counts by its place alone; nothing compares the key.
///
/// Only regular files and links to them are opened. A folder of that name, or a pipe, on which a read would wait for
/// ever, counts as a file that cannot be opened.
class SettingsFile {
 public:
  /// What an operator expects of its file.
  struct Format {
    int number;          ///< in the first line
    int firstLineLimit;  ///< number of characters of the first line that are looked at, at most 255
    std::initializer_list<char const*> defaults;  ///< all lines of a new file
  };

  /// Makes sure, as far as possible, that a file of the right format stands at `path`, opens it and skips the format
  /// number. See IsOpen().
  ///
  /// A file whose first line does not begin with the format number is deleted, whatever else it holds. If there is no
  /// file then, the defaults are written, each line flushed, and standard output says so. A file that existed and
  /// could not be opened is announced too, by the same line and an empty one.
  SettingsFile(char const* path, Format const& format);

  /// Opens a file as it is, before its first line.
  explicit SettingsFile(char const* path);

  bool IsOpen() const { return file_ != nullptr; }

  /// Reads the next line, at most 511 characters of it; the rest of a longer line counts as the next. At the end of
  /// the file the last line stays and counts once more.
  void ReadLine();

  /// The value of the line that was read last, as far as its beginning is a number; 0 otherwise. Decimals stand
  /// behind a point, whatever the program's locale.
  double Real();
  int Integer();  ///< a value outside the range of int gives the nearest int

  double NextReal();  ///< reads a line and gives its value
  int NextInteger();

 private:
  struct Close {
    void operator()(std::FILE* file) const { std::fclose(file); }
  };
  using Stream = std::unique_ptr<std::FILE, Close>;

  static constexpr int kLineSize = 512;  // with the terminator

  static Stream OpenForReading(char const* path);
  static Stream OpenInFormat(char const* path, Format const& format);
  static void DeleteOtherFormat(char const* path, Format const& format);
  static void WriteDefaults(char const* path, Format const& format);
  char const* Value();

  Stream file_;
  char line_[kLineSize] = "";
  char value_[kLineSize] = "";
};
