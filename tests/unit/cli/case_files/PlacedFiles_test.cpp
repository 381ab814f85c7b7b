#include "cli/case_files/PlacedFiles.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include "cli/base/UsageError.h"
#include "cli/output/OutputFile.h"
#include "tests/unit/cli/TextOfFile.h"

namespace zyngrad {
namespace {

namespace fs = std::filesystem;

bool BeginsWithOurs(std::string const& path) { return TextOfFile(path).substr(0, 4) == "ours"; }

/// A folder with a file of ours, one of somebody else, and a folder.
class PlacedFilesInAFolder : public testing::Test {
 protected:
  PlacedFilesInAFolder() {
    std::string name = (fs::temp_directory_path() / "placed_files_XXXXXX").string();
    folder_ = mkdtemp(name.data());
    WriteText(Path("ours"), "ours: old");
    WriteText(Path("theirs"), "theirs");
    fs::create_directory(folder_ / "sub");
  }
  ~PlacedFilesInAFolder() override { fs::remove_all(folder_); }

  std::string Path(std::string const& name) const { return (folder_ / name).string(); }
  std::string Text(std::string const& name) const { return TextOfFile(Path(name)); }
  std::vector<std::string> Names() const {
    std::vector<std::string> names;
    for (auto const& entry : fs::directory_iterator(folder_))
      names.push_back(entry.path().filename().string());
    std::sort(names.begin(), names.end());
    return names;
  }

  void Write(PlacedFiles& files, std::string const& name) const {
    files.Write(Path(name), Path(name + ".gz"), "ours: new");
  }
  std::string ErrorOf(PlacedFiles& files, std::string const& name) const {
    try {
      Write(files, name);
    } catch (UsageError const& error) {
      return error.what();
    }
    return "no error";
  }

  fs::path folder_;
  std::vector<std::string> const before_ = {"ours", "sub", "theirs"};
};

TEST_F(PlacedFilesInAFolder, AppearTogetherAndStay) {
  {
    PlacedFiles files(BeginsWithOurs, false);
    Write(files, "Q");
    Write(files, "ours");
    EXPECT_EQ("ours: old", Text("ours"));
    EXPECT_FALSE(fs::exists(Path("Q")));
    files.Place();
    EXPECT_EQ("ours: new", Text("ours"));
    EXPECT_EQ("ours: new", Text("Q"));
    files.Keep();
  }
  EXPECT_EQ((std::vector<std::string>{"Q", "ours", "sub", "theirs"}), Names());
  EXPECT_EQ("ours: new", Text("ours"));
}

TEST_F(PlacedFilesInAFolder, LeaveEverythingAsItWasUnlessTheyAreKept) {
  for (bool const place : {false, true}) {
    {
      PlacedFiles files(BeginsWithOurs, false);
      Write(files, "Q");
      Write(files, "ours");
      if (place) files.Place();
    }
    EXPECT_EQ(before_, Names());
    EXPECT_EQ("ours: old", Text("ours"));
  }
}

TEST_F(PlacedFilesInAFolder, RefuseFilesOfOthers) {
  PlacedFiles files(BeginsWithOurs, false);
  EXPECT_EQ("cannot write \"" + Path("theirs") +
                "\": zyngrad did not write it, or it has changed since; --overwrite replaces it",
            ErrorOf(files, "theirs"));
  EXPECT_EQ("cannot write \"" + Path("sub") + "\": it is a folder", ErrorOf(files, "sub"));
  EXPECT_EQ("cannot write \"" + Path("none/Q") + "\": No such file or directory", ErrorOf(files, "none/Q"));
  fs::create_symlink("ours", Path("link"));
  EXPECT_NE("no error", ErrorOf(files, "link"));
}

TEST_F(PlacedFilesInAFolder, ReplaceFilesOfOthersWhereTheUserSaysSo) {
  PlacedFiles files(BeginsWithOurs, true);
  Write(files, "theirs");
  EXPECT_EQ("cannot write \"" + Path("sub") + "\": it is a folder", ErrorOf(files, "sub"));
  files.Place();
  EXPECT_EQ("ours: new", Text("theirs"));
  files.Keep();
}

// OpenFOAM reads NAME or NAME.gz: an old one of the other kind must not stay beside the new one.
TEST_F(PlacedFilesInAFolder, RemoveTheCompressedTwin) {
  WriteText(Path("Q.gz"), "ours: twin");
  {
    PlacedFiles files(BeginsWithOurs, false);
    Write(files, "Q");
    files.Place();
    EXPECT_FALSE(fs::exists(Path("Q.gz")));
  }
  EXPECT_EQ("ours: twin", Text("Q.gz"));
  EXPECT_FALSE(fs::exists(Path("Q")));
  WriteText(Path("theirs.gz"), "theirs");
  fs::remove(Path("theirs"));
  PlacedFiles files(BeginsWithOurs, false);
  EXPECT_NE("no error", ErrorOf(files, "theirs"));
}

TEST_F(PlacedFilesInAFolder, PutEverythingBackWhenOneCannotBePlaced) {
  {
    PlacedFiles files(BeginsWithOurs, false);
    Write(files, "ours");
    Write(files, "Q");
    WriteText(Path("Q"), "appeared meanwhile");
    EXPECT_THROW(files.Place(), UsageError);
    EXPECT_EQ("ours: new", Text("ours"));
  }
  EXPECT_EQ("ours: old", Text("ours"));
  EXPECT_EQ("appeared meanwhile", Text("Q"));
  EXPECT_EQ((std::vector<std::string>{"Q", "ours", "sub", "theirs"}), Names());
}

TEST_F(PlacedFilesInAFolder, LeaveWhatSomebodyHasPutInTheirPlace) {
  {
    PlacedFiles files(BeginsWithOurs, false);
    Write(files, "Q");
    files.Place();
    WriteText(Path("Q"), "edited by the user at once");
  }
  EXPECT_EQ("edited by the user at once", Text("Q"));
}

TEST_F(PlacedFilesInAFolder, HaveThePermissionsOfNewFiles) {
  PlacedFiles files(BeginsWithOurs, false);
  Write(files, "Q");
  files.Place();
  files.Keep();
  struct stat made = {}, other = {};
  ASSERT_EQ(0, stat(Path("Q").c_str(), &made));
  ASSERT_EQ(0, stat(Path("theirs").c_str(), &other));
  EXPECT_EQ(other.st_mode, made.st_mode);
}

}  // namespace
}  // namespace zyngrad
