#include "cli/OutputFolder.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>
#include <string>

#include "cli/UsageError.h"
#include "tests/unit/cli/TestRanks.h"

namespace zyngrad {
namespace {

namespace fs = std::filesystem;

/// An empty folder for one test.
class OutputFolderTest : public testing::Test {
 protected:
  OutputFolderTest()
      : base_(
            fs::path(testing::TempDir()) /
            (std::string("OutputFolder_") + testing::UnitTest::GetInstance()->current_test_info()->name())) {
    fs::remove_all(base_);
    fs::create_directory(base_);
  }
  ~OutputFolderTest() override { fs::remove_all(base_); }

  static void Write(const fs::path& file, const std::string& text) { std::ofstream(file) << text; }

  static std::string Read(const fs::path& file) {
    std::ostringstream text;
    text << std::ifstream(file).rdbuf();
    return text.str();
  }

  /// Everything below the folder, as relative paths.
  std::set<std::string> Content() const {
    std::set<std::string> names;
    for (const auto& entry : fs::recursive_directory_iterator(base_)) {
      names.insert(fs::relative(entry.path(), base_).string());
    }
    return names;
  }

  fs::path base_;
};

TEST_F(OutputFolderTest, MovesFilesToTheirPlacesAtCommit) {
  OutputFolder folder(TestRanks(), (base_ / "a" / "b").string());
  folder.MakeSubfolder("pieces");
  Write(folder.Stage("results.json"), "numbers");
  Write(folder.Stage("pieces/0.vtu"), "grid");
  EXPECT_FALSE(fs::exists(base_ / "a/b/results.json"));
  folder.Commit();
  EXPECT_EQ(Content(), (std::set<std::string>{"a", "a/b", "a/b/log.rank0.txt", "a/b/pieces",
                                              "a/b/pieces/0.vtu", "a/b/results.json"}));
  EXPECT_EQ(Read(base_ / "a/b/results.json"), "numbers");
}

TEST_F(OutputFolderTest, LeavesNothingWithoutCommit) {
  {
    OutputFolder folder(TestRanks(), (base_ / "a" / "b").string());
    folder.MakeSubfolder("pieces");
    Write(folder.Stage("pieces/0.vtu"), "half");
  }
  EXPECT_TRUE(Content().empty());
}

TEST_F(OutputFolderTest, KeepsAnEarlierRunsFilesWithoutCommit) {
  fs::create_directory(base_ / "a");
  Write(base_ / "a/results.json", "old");
  {
    OutputFolder folder(TestRanks(), (base_ / "a").string());
    Write(folder.Stage("results.json"), "new");
    folder.Discard("results.json");
  }
  EXPECT_EQ(Content(), (std::set<std::string>{"a", "a/results.json"}));
  EXPECT_EQ(Read(base_ / "a/results.json"), "old");
}

TEST_F(OutputFolderTest, DropsFilesAndLogsOfALargerRunAtCommit) {
  fs::create_directory(base_ / "a");
  Write(base_ / "a/gradient.pvtu", "old");
  Write(base_ / "a/log.rank1.txt", "old");
  OutputFolder folder(TestRanks(), (base_ / "a").string());
  EXPECT_TRUE(folder.Has("gradient.pvtu"));
  folder.Discard("gradient.pvtu");
  folder.Commit();
  EXPECT_EQ(Content(), (std::set<std::string>{"a", "a/log.rank0.txt"}));
}

TEST_F(OutputFolderTest, RefusesAFileAsFolder) {
  Write(base_ / "file", "mine");
  EXPECT_THROW(OutputFolder(TestRanks(), (base_ / "file").string()), UsageError);
  EXPECT_THROW(OutputFolder(TestRanks(), (base_ / "file" / "below").string()), UsageError);
  EXPECT_THROW(OutputFolder(TestRanks(), ""), UsageError);
  EXPECT_EQ(Content(), (std::set<std::string>{"file"}));
}

}  // namespace
}  // namespace zyngrad
