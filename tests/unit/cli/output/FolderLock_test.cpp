#include "cli/output/FolderLock.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "cli/base/TemporaryFolder.h"
#include "cli/base/UsageError.h"

namespace zyngrad {
namespace {

namespace fs = std::filesystem;
using Outcome = FolderLock::Outcome;

/// Locks belong to open files, so two objects of one process are like two processes.
class FolderLockTest : public testing::Test {
 protected:
  TemporaryFolder folder_;
  std::string place_ = folder_.path() + "/place";
};

TEST_F(FolderLockTest, RefusesAnotherRunAndShowsItWhatTheFirstHasWritten) {
  FolderLock first, second;
  ASSERT_EQ(Outcome::Taken, first.Take(place_, "text"));
  EXPECT_EQ(Outcome::InUse, second.Take(place_, "text"));
  first.Share("a longer text");
  first.Share("a text");
  EXPECT_EQ(Outcome::InUse, second.Take(place_, "text"));
  EXPECT_EQ("a text", FolderLock::ContentIn(place_));
  EXPECT_FALSE(second.Release());
}

TEST_F(FolderLockTest, HoldsUntilTheLastRankHasLeft) {
  FolderLock first, second, third, other;
  ASSERT_EQ(Outcome::Taken, first.Take(place_, "text"));
  first.Share("text");
  second.Join(place_);
  third.Join(place_);
  EXPECT_FALSE(first.Release());
  EXPECT_EQ(Outcome::InUse, other.Take(place_, "text"));
  EXPECT_FALSE(third.Release());
  EXPECT_EQ(Outcome::InUse, other.Take(place_, "text"));
  EXPECT_TRUE(second.Release());
  EXPECT_EQ(Outcome::InUse, other.Take(place_, "text"));  // the last one is still clearing up
  second.Remove();
  EXPECT_TRUE(fs::is_empty(place_));
  EXPECT_EQ(Outcome::Taken, other.Take(place_, "text"));
}

TEST_F(FolderLockTest, KeepsOthersFromJoiningBeforeItIsShared) {
  FolderLock first, second;
  ASSERT_EQ(Outcome::Taken, first.Take(place_, "text"));
  EXPECT_THROW(second.Join(place_), UsageError);
  EXPECT_THROW(FolderLock().Join(folder_.path()), UsageError);  // nobody has taken that one
}

TEST_F(FolderLockTest, EndsWithAProcessThatIsKilled) {
  int ready[2];
  ASSERT_EQ(0, pipe(ready));
  pid_t const child = fork();
  if (child == 0) {
    FolderLock lock;
    char const answer = lock.Take(place_, "text") == Outcome::Taken ? 'y' : 'n';
    if (write(ready[1], &answer, 1) != 1) _exit(1);
    for (;;) pause();
  }
  char answer = 0;
  ASSERT_EQ(1, read(ready[0], &answer, 1));
  EXPECT_EQ(answer, 'y');
  FolderLock lock;
  EXPECT_EQ(Outcome::InUse, lock.Take(place_, "text"));
  kill(child, SIGKILL);
  waitpid(child, nullptr, 0);
  EXPECT_TRUE(fs::exists(fs::path(place_) / kLockFile));
  EXPECT_EQ(Outcome::Taken, lock.Take(place_, "text"));
}

TEST_F(FolderLockTest, RefusesALinkToAFolderOfSomebodyElse) {
  fs::create_directory(folder_.path() + "/elsewhere");
  fs::create_symlink("elsewhere", place_);
  EXPECT_THROW(FolderLock().Take(place_, "text"), UsageError);
  EXPECT_TRUE(fs::is_empty(folder_.path() + "/elsewhere"));
}

TEST_F(FolderLockTest, PutsNothingIntoAFolderThatHoldsOtherThings) {
  fs::create_directory(place_);
  std::ofstream(place_ + "/chapter.tex") << "mine";
  EXPECT_THROW(FolderLock().Take(place_, "text"), UsageError);
  EXPECT_EQ(1, std::distance(fs::directory_iterator(place_), fs::directory_iterator()));
}

TEST_F(FolderLockTest, RefusesALockThatIsNoFile) {
  fs::create_directory(place_);
  ASSERT_EQ(0, mkfifo((place_ + "/lock").c_str(), 0600));
  EXPECT_THROW(FolderLock().Take(place_, "text"), UsageError);
}

TEST_F(FolderLockTest, RefusesAFileInItsPlace) {
  std::ofstream(place_) << "mine";
  EXPECT_THROW(FolderLock().Take(place_, "text"), UsageError);
}

TEST_F(FolderLockTest, LeavesNothingWhenItsFileCannotBeWritten) {
  rlimit before = {};
  ASSERT_EQ(0, getrlimit(RLIMIT_FSIZE, &before));
  auto const handler = std::signal(SIGXFSZ, SIG_IGN);
  rlimit none = before;
  none.rlim_cur = 0;
  ASSERT_EQ(0, setrlimit(RLIMIT_FSIZE, &none));
  EXPECT_THROW(FolderLock().Take(place_, "text"), UsageError);
  setrlimit(RLIMIT_FSIZE, &before);
  std::signal(SIGXFSZ, handler);
  EXPECT_FALSE(fs::exists(place_));
}

TEST_F(FolderLockTest, TellsThatThereIsNoPlaceForIt) {
  EXPECT_EQ(Outcome::NoPlace, FolderLock().Take(folder_.path() + "/gone/place", "text"));
}

}  // namespace
}  // namespace zyngrad
