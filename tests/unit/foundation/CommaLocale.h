#pragma once

#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

namespace foundation_test {

/// For its lifetime, the program's locale has a comma where C has the decimal point. The locale is made for the
/// purpose, as systems need not have one.
class CommaLocale {
 public:
  CommaLocale() {
    char path[] = "/tmp/comma_locale_XXXXXX";
    if (mkdtemp(path) == nullptr) return;
    folder_ = path;
    std::ofstream(folder_ / "source")
        << "LC_NUMERIC\ndecimal_point \",\"\nthousands_sep \".\"\ngrouping 3;3\n"
           "END LC_NUMERIC\n";
    // It warns of all that the source leaves out, and makes the locale all the same.
    std::string const make = "localedef --no-archive -c -i " + (folder_ / "source").string() +
                             " -f ANSI_X3.4-1968 " + (folder_ / "xx_YY").string() + " >/dev/null 2>&1";
    static_cast<void>(std::system(make.c_str()));  // NOLINT(cert-env33-c): a fixed command
    setenv("LOCPATH", folder_.c_str(), 1);
    isSet_ = std::setlocale(LC_NUMERIC, "xx_YY") != nullptr;
  }
  ~CommaLocale() {
    std::setlocale(LC_NUMERIC, "C");
    unsetenv("LOCPATH");
    std::error_code ignored;
    if (!folder_.empty()) std::filesystem::remove_all(folder_, ignored);
  }
  CommaLocale(CommaLocale const&) = delete;
  CommaLocale& operator=(CommaLocale const&) = delete;

  bool IsSet() const { return isSet_; }

  /// A folder of this test.
  std::filesystem::path const& Folder() const { return folder_; }

  /// 0.5 as the program writes it.
  std::string Half() const {
    char text[8];
    std::snprintf(text, sizeof(text), "%.1f", 0.5);
    return text;
  }

 private:
  std::filesystem::path folder_;
  bool isSet_ = false;
};

}  // namespace foundation_test
