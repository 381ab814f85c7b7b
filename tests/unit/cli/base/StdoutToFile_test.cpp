#include "cli/base/StdoutToFile.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <sstream>

#include "cli/base/UsageError.h"

namespace zyngrad {
namespace {

TEST(StdoutToFile, CatchesStreamsStdioAndTheDescriptorAndLetsGoAfterwards) {
  std::string const file = (std::filesystem::path(testing::TempDir()) / "StdoutToFile.txt").string();
  std::filesystem::remove(file);
  testing::internal::CaptureStdout();
  std::cout << "before ";
  for (int round = 0; round < 2; ++round) {
    StdoutToFile const redirect(file);
    std::cout << "stream ";
    std::printf("stdio ");
    std::fflush(stdout);
    EXPECT_EQ(4, write(STDOUT_FILENO, "raw ", 4));
  }
  std::cout << "after";
  EXPECT_EQ("before after", testing::internal::GetCapturedStdout());
  std::ostringstream text;
  text << std::ifstream(file).rdbuf();
  EXPECT_EQ("stream stdio raw stream stdio raw ", text.str());
  std::filesystem::remove(file);
}

TEST(StdoutToFile, LeavesOutputWhereItWasAndSaysSoWhenTheFileCannotBeOpened) {
  testing::internal::CaptureStdout();
  {
    StdoutToFile const redirect("no_such_folder/file.txt");
    std::cout << "still here";
  }
  EXPECT_EQ("still here", testing::internal::GetCapturedStdout());
  EXPECT_THROW(StdoutToFile::CheckAll(), UsageError);
}

TEST(StdoutToFile, SaysThatAFileHasLostSomethingAndSparesStandardOutput) {
  testing::internal::CaptureStdout();
  {
    StdoutToFile const redirect("/dev/full");
    std::cout << "lost" << std::endl;
    std::printf("lost as well");
  }
  std::cout << "still here" << std::flush;
  EXPECT_TRUE(std::cout.good());
  EXPECT_EQ("still here", testing::internal::GetCapturedStdout());
  try {
    StdoutToFile::CheckAll();
    FAIL() << "the loss was not noticed";
  } catch (UsageError const& error) {
    EXPECT_STREQ("cannot write \"/dev/full\": No space left on device", error.what());
  }
  EXPECT_NO_THROW(StdoutToFile::CheckAll());
}

TEST(StdoutToFile, LeavesTheErrorsOfStandardOutputToItsOwnEnd) {
  std::cout.setstate(std::ios::badbit);
  { StdoutToFile const redirect("/dev/full"); }
  EXPECT_TRUE(std::cout.bad());
  std::cout.clear();
  EXPECT_NO_THROW(StdoutToFile::CheckAll());
}

}  // namespace
}  // namespace zyngrad
