#pragma once

#include <cstdio>
#include <initializer_list>
#include <memory>

/// What the settings files of the radial-basis objects have in common: a format number in the first line,
/// then lines "key = value" that count by their place alone; keys are never compared.
///
/// Only regular files are opened, links to them included: a folder of that name, or a pipe, on which reading
/// would wait for ever, counts as a file that cannot be opened.
class SettingsFile {
 public:
  /// Sees to it that a file of the right format stands at `path`, if that can be done.
  ///
  /// A file whose first line does not begin with `formatNumber` is deleted, whatever else it holds. If there
  /// is no file then, `defaults` are written, each flushed. Says so on standard output, with a further empty
  /// line when there was a file that could not be opened.
  /// @param firstLineLimit  so many characters of the first line are looked at, at most 255
  static void Prepare(char const* path, int formatNumber, int firstLineLimit,
                      std::initializer_list<char const*> defaults);

  /// Opens for reading; see IsOpen().
  explicit SettingsFile(char const* path);

  bool IsOpen() const { return file_ != nullptr; }

  /// Reads the next line, at most 511 characters of it: the rest of a longer one counts as the next. At the
  /// end of the file the former line stays and counts once more.
  void ReadLine();

  /// The value of the line that was read last as a number, as much of it as is one; 0 when nothing is. Decimals
  /// stand behind a point, whatever the program's locale.
  double Real();
  int Integer();  ///< a value out of the range of int gives the nearest int

 private:
  struct Close {
    void operator()(std::FILE* file) const { std::fclose(file); }
  };
  using Stream = std::unique_ptr<std::FILE, Close>;

  static constexpr int kLineSize = 512;  // with the terminator

  static Stream OpenForReading(char const* path);
  static void WriteDefaults(char const* path, std::initializer_list<char const*> defaults);
  char const* Value();

  Stream file_;
  char line_[kLineSize] = "";
  char value_[kLineSize] = "";
};
