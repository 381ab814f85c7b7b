#include "cli/output/Manifest.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "cli/base/OutputNames.h"
#include "cli/base/TemporaryFolder.h"
#include "cli/base/UsageError.h"
#include "cli/output/OutputFile.h"

namespace zyngrad {
namespace {

namespace fs = std::filesystem;

class ManifestTest : public testing::Test {
 protected:
  std::string file() const { return folder_.path() + '/' + kManifestName; }

  /// Whether a manifest of that text is refused, in a line that names it.
  bool IsRefused(std::string const& text) const {
    WriteText(file(), text);
    try {
      Manifest::Read(folder_.path());
    } catch (UsageError const& error) {
      return std::string(error.what()).rfind('"' + file() + '"', 0) == 0;
    }
    return false;
  }

  static std::string Replaced(std::string text, std::string const& from, std::string const& to) {
    return text.replace(text.find(from), from.size(), to);
  }

  Manifest const manifest_ = {"gradient",
                              {{"gradient.vtu", {12, 0xfedcba9876543210}},
                               {"gradient.vtu", {13, 7}},
                               {"gradient/gradient.0001.vtu", {0, 0}}},
                              {"gradient"}};
  TemporaryFolder folder_;
};

TEST_F(ManifestTest, ReadsWhatItHasWritten) {
  WriteText(file(), manifest_.Text());
  std::optional<Manifest> const read = Manifest::Read(folder_.path());
  ASSERT_TRUE(read);
  EXPECT_EQ("gradient", read->command);
  EXPECT_EQ(read->folders, manifest_.folders);
  ASSERT_EQ(3u, read->files.size());
  for (std::size_t i = 0; i < 3; ++i) {
    EXPECT_EQ(read->files[i].name, manifest_.files[i].name);
    EXPECT_TRUE(read->files[i].fingerprint == manifest_.files[i].fingerprint);
  }
}

TEST_F(ManifestTest, IsNoneInAFolderWithoutOne) { EXPECT_FALSE(Manifest::Read(folder_.path())); }

TEST_F(ManifestTest, RefusesNamesThatLeadElsewhere) {
  for (char const* const name : {"../thesis.tex", "/etc/passwd", "a/../../thesis.tex", "", ".", "a//b", "a/",
                                 "./a", "a\\nb", "a\\u0000b", "zyngrad-manifest.json"}) {
    EXPECT_TRUE(IsRefused(Replaced(manifest_.Text(), "gradient.vtu", name))) << name;
    EXPECT_TRUE(
        IsRefused(Replaced(manifest_.Text(), "[\n    \"gradient\"", std::string("[\n    \"") + name + '"')))
        << name;
  }
}

TEST_F(ManifestTest, RefusesWhatHasAnotherForm) {
  std::string const good = manifest_.Text();
  EXPECT_FALSE(IsRefused(good));
  for (std::string const& text :
       {std::string(), std::string("mine"), std::string("{}"), std::string("[]"),
        good.substr(0, good.size() / 2), Replaced(good, "\"format\": 1", "\"format\": 2"),
        Replaced(good, "\"format\": 1", "\"format\": \"1\""), Replaced(good, "\"zyngrad\"", "\"another\""),
        Replaced(good, "\"size\": 12", "\"size\": -12"), Replaced(good, "\"size\": 12", "\"size\": 1e300"),
        Replaced(good, "fedcba9876543210", "fedcba987654321"),
        Replaced(good, "fedcba9876543210", "0xfedcba98765432"),
        Replaced(good, "\"size\": 12", "\"more\": 12"), std::string(100000, '['),
        std::string("{\"writtenBy\":") + std::string(100000, '[')}) {
    EXPECT_TRUE(IsRefused(text)) << text.substr(0, 200);
  }
}

TEST_F(ManifestTest, RefusesOneThatIsTooLargeWithoutReadingIt) {
  WriteText(file(), manifest_.Text());
  fs::resize_file(file(), std::uintmax_t{1} << 40);  // takes no room
  EXPECT_THROW(Manifest::Read(folder_.path()), UsageError);
}

TEST_F(ManifestTest, RefusesALinkAndAFolderInItsPlace) {
  WriteText(folder_.path() + "/elsewhere", manifest_.Text());
  fs::create_symlink("elsewhere", file());
  EXPECT_THROW(Manifest::Read(folder_.path()), UsageError);
  fs::remove(file());
  fs::create_directory(file());
  EXPECT_THROW(Manifest::Read(folder_.path()), UsageError);
}

TEST(OutputNames, LookAtFollowsNoLinks) {
  using Kind = PlaceInFolder::Kind;
  TemporaryFolder const folder;
  fs::create_directories(folder.path() + "/a/b");
  WriteText(folder.path() + "/a/file", "");
  fs::create_directory_symlink("a", folder.path() + "/link");
  EXPECT_EQ(Kind::Folder, LookAt(folder.path(), "a/b").kind);
  EXPECT_EQ(Kind::File, LookAt(folder.path(), "a/file").kind);
  EXPECT_EQ(Kind::Free, LookAt(folder.path(), "a/none/c").kind);
  EXPECT_EQ(Kind::Other, LookAt(folder.path(), "link").kind);
  EXPECT_EQ(Kind::Other, LookAt(folder.path(), "link/file").kind);
  EXPECT_EQ(Kind::Other, LookAt(folder.path(), "a/file/c").kind);
  EXPECT_EQ(LookAt(folder.path(), "link/file").path, folder.path() + "/link");
}

TEST(Fingerprint, IsThatOfTheContentAlone) {
  TemporaryFolder const folder;
  std::string const digits = "123456789";
  WriteText(folder.path() + "/digits", digits);
  EXPECT_EQ(0x995dc9bbdf1939fau, FingerprintOfText(digits).crc);  // the check value of CRC-64/XZ
  EXPECT_TRUE(FingerprintOf(folder.path() + "/digits") == FingerprintOfText(digits));
  EXPECT_TRUE(Settle(folder.path() + "/digits") == FingerprintOfText(digits));
  EXPECT_FALSE(FingerprintOfText("123456798") == FingerprintOfText(digits));
  EXPECT_THROW(FingerprintOf(folder.path() + "/none"), UsageError);
}

}  // namespace
}  // namespace zyngrad
