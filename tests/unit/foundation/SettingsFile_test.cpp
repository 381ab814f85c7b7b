#include "foundation/SettingsFile.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "tests/unit/foundation/CommaLocale.h"

// Settings files are the same in every locale of the program.

namespace foundation_test {
namespace {

TEST(SettingsFileLocale, DecimalsStandBehindAPoint) {
  CommaLocale const locale;
  if (!locale.IsSet()) GTEST_SKIP() << "localedef is not there";
  ASSERT_EQ("0,5", locale.Half());
  std::filesystem::path const path = locale.Folder() / "run.rbf";
  std::ofstream(path) << "1001\nSpan              = 12.5\nShape Normalize   = 0,75\n";
  SettingsFile file(path.c_str());
  ASSERT_TRUE(file.IsOpen());
  file.ReadLine();
  file.ReadLine();
  EXPECT_EQ(12.5, file.Real());
  file.ReadLine();
  EXPECT_EQ(0.0, file.Real()) << "a comma ends a number, as it does in C";
  EXPECT_EQ("0,5", locale.Half()) << "the program's locale is as it was";
}

}  // namespace
}  // namespace foundation_test
