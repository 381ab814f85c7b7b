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
  ASSERT_EQ(first.Take(place_, "text"), Outcome::Taken);
  EXPECT_EQ(second.Take(place_, "text"), Outcome::InUse);
  first.Share("a longer text");
  first.Share("a text");
  EXPECT_EQ(second.Take(place_, "text"), Outcome::InUse);
  EXPECT_EQ(FolderLock::ContentIn(place_), "a text");
  EXPECT_FALSE(second.Release());
}

TEST_F(FolderLockTest, HoldsUntilTheLastRankHasLeft) {
  FolderLock first, second, third, other;
  ASSERT_EQ(first.Take(place_, "text"), Outcome::Taken);
  first.Share("text");
  second.Join(place_);
  third.Join(place_);
  EXPECT_FALSE(first.Release());
  EXPECT_EQ(other.Take(place_, "text"), Outcome::InUse);
  EXPECT_FALSE(third.Release());
  EXPECT_EQ(other.Take(place_, "text"), Outcome::InUse);
  EXPECT_TRUE(second.Release());
  EXPECT_EQ(other.Take(place_, "text"), Outcome::InUse);  // the last one is still clearing up
  second.Remove();
  EXPECT_TRUE(fs::is_empty(place_));
  EXPECT_EQ(other.Take(place_, "text"), Outcome::Taken);
}

TEST_F(FolderLockTest, KeepsOthersFromJoiningBeforeItIsShared) {
  FolderLock first, second;
  ASSERT_EQ(first.Take(place_, "text"), Outcome::Taken);
  EXPECT_THROW(second.Join(place_), UsageError);
  EXPECT_THROW(FolderLock().Join(folder_.path()), UsageError);  // nobody has taken that one
}

TEST_F(FolderLockTest, EndsWithAProcessThatIsKilled) {
  int ready[2];
  ASSERT_EQ(pipe(ready), 0);
  pid_t const child = fork();
  if (child == 0) {
    FolderLock lock;
    char const answer = lock.Take(place_, "text") == Outcome::Taken ? 'y' : 'n';
    if (write(ready[1], &answer, 1) != 1) _exit(1);
    for (;;) pause();
  }
  char answer = 0;
  ASSERT_EQ(read(ready[0], &answer, 1), 1);
  EXPECT_EQ(answer, 'y');
  FolderLock lock;
  EXPECT_EQ(lock.Take(place_, "text"), Outcome::InUse);
  kill(child, SIGKILL);
  waitpid(child, nullptr, 0);
  EXPECT_TRUE(fs::exists(fs::path(place_) / kLockFile));
  EXPECT_EQ(lock.Take(place_, "text"), Outcome::Taken);
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
  EXPECT_EQ(std::distance(fs::directory_iterator(place_), fs::directory_iterator()), 1);
}

TEST_F(FolderLockTest, RefusesALockThatIsNoFile) {
  fs::create_directory(place_);
  ASSERT_EQ(mkfifo((place_ + "/lock").c_str(), 0600), 0);
  EXPECT_THROW(FolderLock().Take(place_, "text"), UsageError);
}

TEST_F(FolderLockTest, RefusesAFileInItsPlace) {
  std::ofstream(place_) << "mine";
  EXPECT_THROW(FolderLock().Take(place_, "text"), UsageError);
}

TEST_F(FolderLockTest, LeavesNothingWhenItsFileCannotBeWritten) {
  rlimit before = {};
  ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &before), 0);
  auto const handler = std::signal(SIGXFSZ, SIG_IGN);
  rlimit none = before;
  none.rlim_cur = 0;
  ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &none), 0);
  EXPECT_THROW(FolderLock().Take(place_, "text"), UsageError);
  setrlimit(RLIMIT_FSIZE, &before);
  std::signal(SIGXFSZ, handler);
  EXPECT_FALSE(fs::exists(place_));
}

TEST_F(FolderLockTest, TellsThatThereIsNoPlaceForIt) {
  EXPECT_EQ(FolderLock().Take(folder_.path() + "/gone/place", "text"), Outcome::NoPlace);
}

}  // namespace
}  // namespace zyngrad
