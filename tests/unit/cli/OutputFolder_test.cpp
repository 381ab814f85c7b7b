#include "cli/OutputFolder.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iostream>
#include <set>
#include <sstream>
#include <string>

#include "cli/StdoutToFile.h"
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
  {
    OutputFolder folder(TestRanks(), (base_ / "a" / "b").string());
    folder.MakeSubfolder("pieces");
    Write(folder.Stage("results.json"), "numbers");
    Write(folder.Stage("pieces/0.vtu"), "grid");
    EXPECT_FALSE(fs::exists(base_ / "a/b/results.json"));
    folder.Commit();
    EXPECT_TRUE(fs::exists(base_ / "a/b/results.json"));
  }
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
  {
    OutputFolder folder(TestRanks(), (base_ / "a").string());
    EXPECT_TRUE(folder.Has("gradient.pvtu"));
    folder.Discard("gradient.pvtu");
    folder.Commit();
  }
  EXPECT_EQ(Content(), (std::set<std::string>{"a", "a/log.rank0.txt"}));
}

TEST_F(OutputFolderTest, RemovesWhatAKilledRunLeft) {
  fs::create_directories(base_ / "a/unfinished.part/gradient");
  Write(base_ / "a/unfinished.part/lock", "process 1 on a machine");
  Write(base_ / "a/unfinished.part/results.json", "half");
  Write(base_ / "a/unfinished.part/gradient/gradient.0001.vtu", "half");
  Write(base_ / "a/mine.part", "the user's");
  OutputFolder folder(TestRanks(), (base_ / "a").string());
  EXPECT_FALSE(fs::exists(base_ / "a/unfinished.part/gradient"));
  Write(folder.Stage("results.json"), "numbers");
  folder.Commit();
  EXPECT_EQ(Read(base_ / "a/results.json"), "numbers");
  EXPECT_TRUE(fs::exists(base_ / "a/mine.part"));
}

TEST_F(OutputFolderTest, LeavesNoUnfinishedFolder) {
  {
    OutputFolder folder(TestRanks(), (base_ / "a").string());
    folder.MakeSubfolder("pieces");
    Write(folder.Stage("pieces/0.vtu"), "grid");
    folder.Commit();
  }
  EXPECT_EQ(Content(), (std::set<std::string>{"a", "a/log.rank0.txt", "a/pieces", "a/pieces/0.vtu"}));
}

TEST_F(OutputFolderTest, RefusesASecondRunAndIsFreeAfterTheFirst) {
  const std::string name = (base_ / "a").string();
  {
    OutputFolder folder(TestRanks(), name);
    try {
      OutputFolder(TestRanks(), name);
      FAIL() << "the second run was let in";
    } catch (const UsageError& error) {
      EXPECT_EQ(std::string(error.what())
                    .rfind("the output folder \"" + name + "\" is in use by another run (process ", 0),
                0u);
    }
    Write(folder.Stage("results.json"), "numbers");
    folder.Commit();
  }
  EXPECT_NO_THROW(OutputFolder(TestRanks(), name));
  EXPECT_EQ(Read(base_ / "a/results.json"), "numbers");
}

TEST_F(OutputFolderTest, MovesNothingWhenAFolderIsInThePlaceOfAFile) {
  fs::create_directories(base_ / "a/results.json");
  Write(base_ / "a/gradient.vtu", "old");
  {
    OutputFolder folder(TestRanks(), (base_ / "a").string());
    Write(folder.Stage("gradient.vtu"), "new");
    Write(folder.Stage("results.json"), "new");
    EXPECT_THROW(folder.Commit(), UsageError);
  }
  EXPECT_EQ(Content(), (std::set<std::string>{"a", "a/gradient.vtu", "a/results.json"}));
  EXPECT_EQ(Read(base_ / "a/gradient.vtu"), "old");
}

TEST_F(OutputFolderTest, MovesNothingWhenALogIsNotWhole) {
  {
    OutputFolder folder(TestRanks(), (base_ / "a").string());
    Write(folder.Stage("results.json"), "new");
    {
      const StdoutToFile log("/dev/full");
      std::cout << "a line of an operator" << std::endl;
    }
    EXPECT_THROW(folder.Commit(), UsageError);
  }
  EXPECT_TRUE(Content().empty());
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
