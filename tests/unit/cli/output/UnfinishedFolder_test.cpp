#include "cli/output/UnfinishedFolder.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <set>
#include <string>

#include "cli/base/TemporaryFolder.h"
#include "cli/base/UsageError.h"

namespace zyngrad {
namespace {

namespace fs = std::filesystem;
using Outcome = FolderLock::Outcome;

int NoLocks(int, struct flock&) {
  errno = EOPNOTSUPP;
  return -1;
}

class UnfinishedFolderTest : public testing::Test {
 protected:
  /// As a run leaves it that is killed: with the lock's file, but without the lock.
  void LeaveBehind(std::string const& listing) {
    fs::create_directory(place_);
    Write("lock", listing);
  }

  void Write(std::string const& name, std::string const& text) const {
    fs::create_directories(fs::path(place_ + '/' + name).parent_path());
    std::ofstream(place_ + '/' + name) << text;
  }

  std::set<std::string> Content() const {
    std::set<std::string> names;
    for (auto const& entry : fs::recursive_directory_iterator(place_))
      names.insert(entry.path().lexically_relative(place_).string());
    return names;
  }

  std::string Refusal() const {
    UnfinishedFolder folder(place_, {"a.vtu"});
    try {
      folder.Take();
    } catch (UsageError const& error) {
      folder.Leave();
      return error.what();
    }
    return "";
  }

  std::string const listing_ =
      "zyngrad unfinished files, format 1\nprocess 1 on a machine\nfolder b\nfile a.vtu\nfile b/c.vtu\n";
  TemporaryFolder base_;
  std::string place_ = base_.path() + "/unfinished.part";
};

TEST_F(UnfinishedFolderTest, HasItsFoldersAndNamesItsHolderAndGoesWithItsFiles) {
  UnfinishedFolder folder(place_, {"a.vtu", "b/c.vtu"});
  ASSERT_EQ(Outcome::Taken, folder.Take());
  EXPECT_EQ((std::set<std::string>{"lock", "b"}), Content());
  EXPECT_EQ(0u, folder.Holder().rfind("process " + std::to_string(getpid()) + " on ", 0));
  EXPECT_EQ(UnfinishedFolder(place_, {}).PresentHolder(), folder.Holder());
  Write("b/c.vtu", "half");
  folder.Leave();
  EXPECT_FALSE(fs::exists(place_));
}

TEST_F(UnfinishedFolderTest, IsClearedByTheRankThatLeavesLast) {
  UnfinishedFolder first(place_, {"a.vtu"}), second(place_, {"a.vtu"}), other(place_, {});
  ASSERT_EQ(Outcome::Taken, first.Take());
  second.Join(first.Holder());
  EXPECT_EQ(Outcome::InUse, other.Take());
  Write("a.vtu", "half");
  first.Leave();
  EXPECT_TRUE(fs::exists(place_ + "/a.vtu"));
  second.Leave();
  EXPECT_FALSE(fs::exists(place_));
}

TEST_F(UnfinishedFolderTest, IsNotJoinedWhenItIsOfAnotherRun) {
  UnfinishedFolder first(place_, {}), second(place_, {});
  ASSERT_EQ(Outcome::Taken, first.Take());
  EXPECT_THROW(second.Join("process 1 on another machine"), UsageError);
  second.Leave();
  EXPECT_TRUE(fs::exists(place_ + "/lock"));
}

TEST_F(UnfinishedFolderTest, IsClearedOfWhatAKilledRunHasListed) {
  LeaveBehind(listing_);
  Write("a.vtu", "half");
  Write("b/c.vtu", "half");
  UnfinishedFolder folder(place_, {"d.vtu"});
  ASSERT_EQ(Outcome::Taken, folder.Take());
  EXPECT_EQ((std::set<std::string>{"lock"}), Content());
}

TEST_F(UnfinishedFolderTest, IsTakenOverFromARunThatWasKilledInItsFirstSteps) {
  for (std::string const& torn : {listing_.substr(0, 35), listing_.substr(0, 60)}) {
    LeaveBehind(torn);
    UnfinishedFolder folder(place_, {});
    EXPECT_EQ(Outcome::Taken, folder.Take()) << torn;
    folder.Leave();
  }
  fs::create_directory(place_);
  EXPECT_EQ(Outcome::Taken, UnfinishedFolder(place_, {}).Take());
}

TEST_F(UnfinishedFolderTest, RefusesWhatIsInNoListAndTouchesNothing) {
  LeaveBehind(listing_);
  Write("a.vtu", "half");
  Write("b/thesis.tex", "mine");
  EXPECT_EQ(Refusal(), '"' + place_ +
                           "/b/thesis.tex\" is not from a run of zyngrad: move it away, or choose another "
                           "output folder with -o");
  EXPECT_EQ((std::set<std::string>{"lock", "a.vtu", "b", "b/thesis.tex"}), Content());
}

TEST_F(UnfinishedFolderTest, RefusesAFolderWhoseLockIsOfSomebodyElse) {
  for (char const* const text : {"", "zyngrad unfin", "mine", "process 1 on a machine\nfile a.vtu\n",
                                 "zyngrad unfinished files, format 2\n"}) {
    LeaveBehind(text);
    Write("a.vtu", "mine");
    EXPECT_NE("", Refusal()) << text;
    EXPECT_EQ((std::set<std::string>{"lock", "a.vtu"}), Content()) << text;
  }
}

TEST_F(UnfinishedFolderTest, RefusesLinksUnderListedNames) {
  LeaveBehind(listing_);
  fs::create_directory(base_.path() + "/elsewhere");
  std::ofstream(base_.path() + "/elsewhere/c.vtu") << "mine";
  fs::create_directory_symlink(base_.path() + "/elsewhere", place_ + "/b");
  EXPECT_NE("", Refusal());
  EXPECT_TRUE(fs::exists(base_.path() + "/elsewhere/c.vtu"));
}

TEST_F(UnfinishedFolderTest, FollowsNoListedNameOutOfTheFolder) {
  std::ofstream(base_.path() + "/thesis.tex") << "mine";
  LeaveBehind("zyngrad unfinished files, format 1\nprocess 1 on a machine\nfile ../thesis.tex\nfile " +
              base_.path() + "/thesis.tex\nfolder ..\n");
  UnfinishedFolder folder(place_, {});
  EXPECT_EQ(Outcome::Taken, folder.Take());
  folder.Leave();
  EXPECT_TRUE(fs::exists(base_.path() + "/thesis.tex"));
}

TEST_F(UnfinishedFolderTest, StaysWithItsFirstProcessOnAFileSystemWithoutLocks) {
  UnfinishedFolder first(place_, {"a.vtu"}, NoLocks), second(place_, {"a.vtu"}, NoLocks),
      other(place_, {"a.vtu"}, NoLocks);
  ASSERT_EQ(Outcome::Taken, first.Take());
  second.Join(first.Holder());
  Write("a.vtu", "half");
  try {
    other.Take();
    FAIL() << "two runs would write into the same folder";
  } catch (UsageError const& error) {
    EXPECT_EQ(error.what(), '"' + place_ + "\" is in use or was left by a run that was killed (" +
                                first.Holder() +
                                "); this file system has no locks: remove the folder if that run is gone");
  }
  other.Leave();
  second.Leave();
  EXPECT_TRUE(fs::exists(place_ + "/a.vtu"));
  first.Leave();
  EXPECT_FALSE(fs::exists(place_));
}

TEST_F(UnfinishedFolderTest, KeepsItsListWhileSomethingInItCannotBeRemoved) {
  fs::permissions(base_.path(), fs::perms::all);
  LeaveBehind(listing_);
  Write("b/c.vtu", "half");
  fs::permissions(place_, fs::perms::all);
  fs::permissions(place_ + "/lock", fs::perms(0666));
  fs::permissions(place_ + "/b", fs::perms(0555));
  uid_t const before = geteuid();
  ASSERT_EQ(0, before == 0 ? seteuid(65534) : 0);  // permissions do not stop root
  std::string const refusal = Refusal();
  ASSERT_EQ(0, before == 0 ? seteuid(before) : 0);
  fs::permissions(place_ + "/b", fs::perms::owner_all);
  EXPECT_EQ(refusal, "cannot remove \"" + place_ + "/b\", which an earlier run left: Permission denied");
  EXPECT_EQ((std::set<std::string>{"lock", "b", "b/c.vtu"}), Content());
  EXPECT_EQ(Outcome::Taken, UnfinishedFolder(place_, {}).Take());
  EXPECT_EQ((std::set<std::string>{"lock"}), Content());
}

TEST_F(UnfinishedFolderTest, NoticesThatItWasRemovedOrReplaced) {
  UnfinishedFolder first(place_, {}), second(place_, {});
  ASSERT_EQ(Outcome::Taken, first.Take());
  EXPECT_NO_THROW(first.Check());
  fs::remove_all(place_);
  EXPECT_THROW(first.Check(), UsageError);
  ASSERT_EQ(Outcome::Taken, second.Take());
  EXPECT_THROW(first.Check(), UsageError);
  first.Leave();
  EXPECT_NO_THROW(second.Check());
}

}  // namespace
}  // namespace zyngrad
