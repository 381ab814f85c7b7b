#include "cli/output/OutputFolder.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iostream>
#include <memory>
#include <set>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "cli/base/StdoutToFile.h"
#include "cli/base/UsageError.h"
#include "cli/output/Manifest.h"
#include "tests/unit/cli/TestRanks.h"

namespace zyngrad {
namespace {

namespace fs = std::filesystem;

/// What the process has asked the system for, in order: "sync NAME" and "move NAME", for names below the
/// test's folder.
std::vector<std::string> requests;
std::string watched;
std::function<void(std::string const&)> beforeRequest;  ///< is told of each of them

void Record(std::string const& what, std::string const& path) {
  if (watched.empty() || path.rfind(watched, 0) != 0) return;
  requests.push_back(what + path.substr(watched.size()));
  if (beforeRequest) beforeRequest(requests.back());
}

/// Does something at the moment at which a run asks the system for something, the first time or a later one.
class AtRequest {
 public:
  AtRequest(fs::path const& folder, std::string const& request, std::function<void()> const& work,
            int before = 0) {
    watched = folder.string();
    beforeRequest = [request, work, left = before](std::string const& now) mutable {
      if (now == request && left-- == 0) work();
    };
  }
  ~AtRequest() {
    watched.clear();
    beforeRequest = nullptr;
  }
  AtRequest(AtRequest const&) = delete;
  AtRequest& operator=(AtRequest const&) = delete;
};

/// As a user who is not the system's own, whom permissions do not stop.
class Unprivileged {
 public:
  Unprivileged() : before_(geteuid()) {
    if (before_ == 0 && seteuid(65534) != 0) ADD_FAILURE() << "cannot become another user";
  }
  ~Unprivileged() {
    if (before_ == 0 && seteuid(before_) != 0) ADD_FAILURE() << "cannot become root again";
  }
  Unprivileged(Unprivileged const&) = delete;
  Unprivileged& operator=(Unprivileged const&) = delete;

 private:
  uid_t before_;
};

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

  static void Write(fs::path const& file, std::string const& text) { std::ofstream(file) << text; }

  static std::string Read(fs::path const& file) {
    std::ostringstream text;
    text << std::ifstream(file).rdbuf();
    return text.str();
  }

  /// Everything below the folder, as relative paths.
  std::set<std::string> Content() const {
    std::set<std::string> names;
    for (auto const& entry : fs::recursive_directory_iterator(base_)) {
      names.insert(fs::relative(entry.path(), base_).string());
    }
    return names;
  }

  /// A run into the folder a that writes the text into each of the files.
  void Run(std::vector<std::string> const& files, std::string const& text) {
    OutputFolder folder(TestRanks(), (base_ / "a").string(), {"gradient", files});
    for (std::string const& file : files) Write(folder.Stage(file), text);
    folder.Commit("");
  }

  /// A run that ends with an error when it commits.
  /// @return the error
  std::string Failure(std::vector<std::string> const& files) {
    try {
      Run(files, "new");
    } catch (UsageError const& error) {
      return error.what();
    }
    return "";
  }

  /// What a run into the folder a is told that would write these files.
  std::string Refusal(std::vector<std::string> const& files) {
    try {
      OutputFolder(TestRanks(), (base_ / "a").string(), {"gradient", files});
    } catch (UsageError const& error) {
      return error.what();
    }
    return "";
  }

  fs::path base_;
};

TEST_F(OutputFolderTest, MovesFilesToTheirPlacesAtCommit) {
  {
    OutputFolder folder(TestRanks(), (base_ / "a" / "b").string(),
                        {"gradient", {"pieces/0.vtu", "results.json"}});
    Write(folder.Stage("results.json"), "numbers");
    Write(folder.Stage("pieces/0.vtu"), "grid");
    EXPECT_FALSE(fs::exists(base_ / "a/b/results.json"));
    EXPECT_FALSE(fs::exists(base_ / "a/b/pieces"));
    folder.Commit("");
    EXPECT_TRUE(fs::exists(base_ / "a/b/results.json"));
  }
  EXPECT_EQ((std::set<std::string>{"a", "a/b", "a/b/log.rank0.txt", "a/b/pieces", "a/b/pieces/0.vtu",
                                   "a/b/results.json", "a/b/zyngrad-manifest.json"}),
            Content());
  EXPECT_EQ("numbers", Read(base_ / "a/b/results.json"));
}

TEST_F(OutputFolderTest, LeavesNothingWithoutCommit) {
  {
    OutputFolder folder(TestRanks(), (base_ / "a" / "b").string(), {"gradient", {"pieces/0.vtu"}});
    Write(folder.Stage("pieces/0.vtu"), "half");
  }
  EXPECT_TRUE(Content().empty());
}

TEST_F(OutputFolderTest, TakesOnlyFilesThatAreInItsPlan) {
  OutputFolder folder(TestRanks(), (base_ / "a").string(), {"gradient", {"results.json"}});
  EXPECT_THROW(folder.Stage("gradient.vtu"), std::logic_error);
}

TEST_F(OutputFolderTest, ReplacesAndRemovesFilesOfAnEarlierRun) {
  Run({"pieces/0.vtu", "pieces/1.vtu", "results.json"}, "old");
  Write(base_ / "a/notes.txt", "mine");
  Run({"results.json", "whole.vtu"}, "new");
  EXPECT_EQ((std::set<std::string>{"a", "a/log.rank0.txt", "a/notes.txt", "a/results.json", "a/whole.vtu",
                                   "a/zyngrad-manifest.json"}),
            Content());
  EXPECT_EQ("new", Read(base_ / "a/results.json"));
  Run({"pieces/0.vtu"}, "newer");
  EXPECT_EQ((std::set<std::string>{"a", "a/log.rank0.txt", "a/notes.txt", "a/pieces", "a/pieces/0.vtu",
                                   "a/zyngrad-manifest.json"}),
            Content());
}

TEST_F(OutputFolderTest, RemovesNoFolderThatHasOrHadFilesOfSomebodyElse) {
  fs::create_directories(base_ / "a/pieces");
  Run({"pieces/0.vtu", "more/0.vtu"}, "old");
  Write(base_ / "a/more/notes.txt", "mine");
  Run({"results.json"}, "new");
  EXPECT_TRUE(fs::is_empty(base_ / "a/pieces"));  // this run did not make it
  EXPECT_EQ("mine", Read(base_ / "a/more/notes.txt"));
}

TEST_F(OutputFolderTest, LeavesLogsAndOtherFilesThatNoRunHasWritten) {
  fs::create_directories(base_ / "a/gradient");
  for (char const* const name :
       {"log.rank1.txt", "settings.rank1.rbf", "gradient.pvtu", "gradient/gradient.0000.vtu"})
    Write(base_ / "a" / name, "mine");
  Run({"gradient.vtu"}, "new");
  for (char const* const name :
       {"log.rank1.txt", "settings.rank1.rbf", "gradient.pvtu", "gradient/gradient.0000.vtu"})
    EXPECT_EQ("mine", Read(base_ / "a" / name)) << name;
}

TEST_F(OutputFolderTest, RefusesAFileThatNoRunHasWritten) {
  fs::create_directory(base_ / "a");
  Write(base_ / "a/results.json", "mine");
  EXPECT_EQ(Refusal({"results.json"}),
            "cannot write \"" + (base_ / "a/results.json").string() +
                "\": no manifest lists it as written by zyngrad: move it away, or choose another output "
                "folder with -o");
  EXPECT_EQ((std::set<std::string>{"a", "a/results.json"}), Content());
  EXPECT_EQ("mine", Read(base_ / "a/results.json"));
}

TEST_F(OutputFolderTest, RefusesALogThatNoRunHasWritten) {
  fs::create_directory(base_ / "a");
  Write(base_ / "a/log.rank0.txt", "mine");
  EXPECT_NE("", Refusal({}));
  EXPECT_EQ("mine", Read(base_ / "a/log.rank0.txt"));
}

TEST_F(OutputFolderTest, RefusesAResultThatTheUserHasEditedWhetherItWouldBeReplacedOrRemoved) {
  Run({"results.json"}, "old");
  Write(base_ / "a/results.json", "odd");  // of the same size
  std::string const text =
      '"' + (base_ / "a/results.json").string() +
      "\" has changed since an earlier run of zyngrad wrote it: move it away, or choose another "
      "output folder with -o";
  EXPECT_EQ(Refusal({"results.json"}), text);
  EXPECT_EQ(Refusal({"other.json"}), text);
  EXPECT_EQ("odd", Read(base_ / "a/results.json"));
}

TEST_F(OutputFolderTest, RefusesLinksAndFoldersInThePlaceOfResults) {
  Run({"results.json", "pieces/0.vtu"}, "old");
  Write(base_ / "thesis.tex", "old");
  fs::remove(base_ / "a/results.json");
  fs::create_symlink(base_ / "thesis.tex", base_ / "a/results.json");
  EXPECT_NE("", Refusal({"results.json"}));
  EXPECT_EQ("old", Read(base_ / "thesis.tex"));
  fs::remove(base_ / "a/results.json");
  fs::create_directory(base_ / "a/results.json");
  EXPECT_NE("", Refusal({"results.json"}));
  fs::remove(base_ / "a/results.json");
  fs::rename(base_ / "a/pieces", base_ / "elsewhere");
  fs::create_directory_symlink(base_ / "elsewhere", base_ / "a/pieces");
  EXPECT_NE("", Refusal({"pieces/0.vtu"}));
  EXPECT_NE("", Refusal({"results.json"}));
  EXPECT_EQ("old", Read(base_ / "elsewhere/0.vtu"));
}

TEST_F(OutputFolderTest, RefusesResultsOfAnotherCommand) {
  Run({"results.json"}, "old");
  try {
    OutputFolder(TestRanks(), (base_ / "a").string(), {"faces", {"results.json"}});
    FAIL() << "results of another command would be lost";
  } catch (UsageError const& error) {
    EXPECT_EQ(std::string(error.what()),
              "the output folder \"" + (base_ / "a").string() +
                  "\" contains results of zyngrad \"gradient\": choose another one with -o");
  }
  EXPECT_EQ("old", Read(base_ / "a/results.json"));
}

TEST_F(OutputFolderTest, MovesNothingWhenAFileHasComeOrChangedMeanwhile) {
  Run({"results.json"}, "old");
  auto const commit = [this](fs::path const& touched) {
    OutputFolder folder(TestRanks(), (base_ / "a").string(), {"gradient", {"results.json", "gradient.vtu"}});
    Write(folder.Stage("results.json"), "new");
    Write(folder.Stage("gradient.vtu"), "new");
    Write(touched, "mine");
    EXPECT_THROW(folder.Commit(""), UsageError);
  };
  commit(base_ / "a/gradient.vtu");
  EXPECT_EQ("mine", Read(base_ / "a/gradient.vtu"));
  EXPECT_EQ("old", Read(base_ / "a/results.json"));
  fs::remove(base_ / "a/gradient.vtu");
  commit(base_ / "a/results.json");
  EXPECT_EQ("mine", Read(base_ / "a/results.json"));
  EXPECT_FALSE(fs::exists(base_ / "a/gradient.vtu"));
}

TEST_F(OutputFolderTest, GoesOnWhereARunWasKilledWhileItMovedItsFiles) {
  Run({"gradient.vtu", "results.json"}, "old");
  Manifest both = *Manifest::Read((base_ / "a").string());
  both.files.push_back({"results.json", FingerprintOfText("new")});
  both.files.push_back({"more.vtu", FingerprintOfText("new")});
  Write(base_ / "a/zyngrad-manifest.json", both.Text());
  Write(base_ / "a/results.json", "new");
  Run({"results.json", "gradient.vtu"}, "newer");
  EXPECT_EQ("newer", Read(base_ / "a/results.json"));
  EXPECT_EQ("newer", Read(base_ / "a/gradient.vtu"));
  EXPECT_EQ(3u, Manifest::Read((base_ / "a").string())->files.size());
}

TEST_F(OutputFolderTest, RefusesAFolderOfUnfinishedFilesThatIsNotOurs) {
  fs::create_directories(base_ / "a/unfinished.part/thesis");
  Write(base_ / "a/unfinished.part/thesis/ch1.tex", "mine");
  EXPECT_NE("", Refusal({"results.json"}));
  EXPECT_EQ((std::set<std::string>{"a", "a/unfinished.part", "a/unfinished.part/thesis",
                                   "a/unfinished.part/thesis/ch1.tex"}),
            Content());
}

TEST_F(OutputFolderTest, RefusesASecondRunAndIsFreeAfterTheFirst) {
  std::string const name = (base_ / "a").string();
  {
    OutputFolder folder(TestRanks(), name, {"gradient", {"results.json"}});
    std::string const refusal = Refusal({});
    EXPECT_NE(refusal.find("is in use by another run (process "), std::string::npos) << refusal;
    Write(folder.Stage("results.json"), "numbers");
    folder.Commit("");
  }
  EXPECT_EQ("", Refusal({}));
  EXPECT_EQ("numbers", Read(base_ / "a/results.json"));
}

TEST_F(OutputFolderTest, MovesNothingWhenALogIsNotWhole) {
  {
    OutputFolder folder(TestRanks(), (base_ / "a").string(), {"gradient", {"results.json"}});
    Write(folder.Stage("results.json"), "new");
    {
      StdoutToFile const log("/dev/full");
      std::cout << "a line of an operator" << std::endl;
    }
    EXPECT_THROW(folder.Commit(""), UsageError);
  }
  EXPECT_TRUE(Content().empty());
}

TEST_F(OutputFolderTest, MovesNothingWhenItsLastLinesDoNotArrive) {
  Run({"results.json"}, "old");
  {
    OutputFolder folder(TestRanks(), (base_ / "a").string(), {"gradient", {"results.json"}});
    Write(folder.Stage("results.json"), "new");
    int const before = dup(STDOUT_FILENO);
    int const full = open("/dev/full", O_WRONLY);
    dup2(full, STDOUT_FILENO);
    EXPECT_THROW(folder.Commit("written\n"), UsageError);
    std::cout.clear();
    std::clearerr(stdout);
    dup2(before, STDOUT_FILENO);
    close(full);
    close(before);
  }
  EXPECT_EQ("old", Read(base_ / "a/results.json"));
}

TEST_F(OutputFolderTest, RefusesAFileAsFolder) {
  Write(base_ / "file", "mine");
  EXPECT_THROW(OutputFolder(TestRanks(), (base_ / "file").string(), {}), UsageError);
  EXPECT_THROW(OutputFolder(TestRanks(), (base_ / "file" / "below").string(), {}), UsageError);
  EXPECT_THROW(OutputFolder(TestRanks(), "", {}), UsageError);
  EXPECT_EQ((std::set<std::string>{"file"}), Content());
}

TEST_F(OutputFolderTest, HasFilesOnTheDiskBeforeTheyReplaceOthersAndTheirNamesAfterwards) {
  Run({"results.json", "b/0.vtu"}, "old");
  requests.clear();
  watched = (base_ / "a").string();
  Run({"results.json", "b/0.vtu"}, "new");
  watched.clear();
  auto const place = [](std::string const& what) {
    auto const found = std::find(requests.begin(), requests.end(), what);
    EXPECT_NE(found, requests.end()) << what;
    return found - requests.begin();
  };
  std::string const manifest = "/zyngrad-manifest.json";
  for (std::string const& name :
       {std::string("/results.json"), std::string("/b/0.vtu"), std::string("/log.rank0.txt")}) {
    EXPECT_LT(place("sync /unfinished.part" + name), place("move " + manifest));
    EXPECT_LT(place("move " + manifest), place("move " + name));
  }
  EXPECT_LT(place("sync /unfinished.part" + manifest), place("move " + manifest));
  EXPECT_LT(place("move /b/0.vtu"), place("sync /b"));
  // The names are on the disk before the manifest forgets the earlier files.
  ASSERT_GE(requests.size(), 2u);
  EXPECT_EQ(requests[requests.size() - 2], "move " + manifest);
  EXPECT_EQ("sync ", requests.back());
  EXPECT_EQ(2, std::count(requests.begin(), requests.end(), "move " + manifest));
}

TEST_F(OutputFolderTest, LeavesAFileThatStandsWhereItHasMadeItsFolder) {
  {
    OutputFolder const folder(TestRanks(), (base_ / "a/b").string(), {"gradient", {}});
    fs::remove_all(base_ / "a/b");
    Write(base_ / "a/b", "mine");
  }
  EXPECT_EQ("mine", Read(base_ / "a/b"));
}

TEST_F(OutputFolderTest, ReplacesNoManifestThatHasComeOrChangedMeanwhile) {
  for (bool const hasEarlierRun : {false, true}) {
    if (hasEarlierRun) Run({}, "old");
    OutputFolder folder(TestRanks(), (base_ / "a").string(), {"gradient", {}});
    Write(base_ / "a/zyngrad-manifest.json", "mine");
    EXPECT_THROW(folder.Commit(""), UsageError);
    EXPECT_EQ("mine", Read(base_ / "a/zyngrad-manifest.json"));
    fs::remove(base_ / "a/zyngrad-manifest.json");
  }
}

TEST_F(OutputFolderTest, ReplacesNothingThatComesOrChangesAtTheLastMoment) {
  {
    AtRequest const hook(base_ / "a", "move /results.json",
                         [this] { Write(base_ / "a/results.json", "mine"); });
    std::string const failure = Failure({"results.json"});
    EXPECT_NE(failure.find("results.json\": File exists"), std::string::npos) << failure;
    EXPECT_NE(failure.find("some results in"), std::string::npos) << failure;
  }
  EXPECT_EQ("mine", Read(base_ / "a/results.json"));
  fs::remove(base_ / "a/results.json");
  Run({"results.json"}, "old");
  {
    AtRequest const hook(base_ / "a", "move /log.rank0.txt",
                         [this] { Write(base_ / "a/results.json", "mine"); });
    EXPECT_NE("", Failure({"results.json"}));
  }
  EXPECT_EQ("mine", Read(base_ / "a/results.json"));
  fs::remove(base_ / "a/results.json");
  Run({"results.json"}, "newer");
  EXPECT_EQ("newer", Read(base_ / "a/results.json"));
}

TEST_F(OutputFolderTest, RemovesNoEarlierFileThatChangesAtTheLastMoment) {
  Run({"gradient.vtu", "results.json"}, "old");
  {
    AtRequest const hook(base_ / "a", "move /results.json",
                         [this] { Write(base_ / "a/gradient.vtu", "mine"); });
    Run({"results.json"}, "new");
  }
  EXPECT_EQ("mine", Read(base_ / "a/gradient.vtu"));
  EXPECT_EQ(2u, Manifest::Read((base_ / "a").string())->files.size());
}

TEST_F(OutputFolderTest, MovesNothingWhenAnotherRunHasItsFolder) {
  OutputPlan plan = {"gradient", {"results.json"}};
  auto first = std::make_unique<OutputFolder>(TestRanks(), (base_ / "a").string(), plan);
  Write(first->Stage("results.json"), "first");
  fs::remove_all(base_ / "a/unfinished.part");
  OutputFolder second(TestRanks(), (base_ / "a").string(), plan);
  Write(second.Stage("results.json"), "second");
  EXPECT_THROW(first->Commit(""), UsageError);
  first.reset();
  second.Commit("");
  EXPECT_EQ("second", Read(base_ / "a/results.json"));
}

TEST_F(OutputFolderTest, RefusesAFolderThatItMayNotWriteInto) {
  Run({"pieces/0.vtu"}, "old");
  fs::permissions(base_ / "a", fs::perms::all);
  fs::permissions(base_ / "a/pieces", fs::perms(0555));
  {
    Unprivileged const user;
    EXPECT_EQ(Refusal({"pieces/0.vtu"}),
              "cannot write into \"" + (base_ / "a/pieces").string() + "\": Permission denied");
  }
  fs::permissions(base_ / "a/pieces", fs::perms::owner_all);
  EXPECT_EQ("old", Read(base_ / "a/pieces/0.vtu"));
}

TEST_F(OutputFolderTest, SucceedsWithoutItsLastManifest) {
  Run({"gradient.vtu", "results.json"}, "old");
  {
    AtRequest const hook(
        base_ / "a", "move /zyngrad-manifest.json",
        [this] { fs::remove(base_ / "a/unfinished.part/zyngrad-manifest.json"); }, 1);
    EXPECT_EQ("", Failure({"results.json"}));
  }
  EXPECT_EQ("new", Read(base_ / "a/results.json"));
  Run({"gradient.vtu"}, "newer");
  EXPECT_EQ((std::set<std::string>{"a", "a/gradient.vtu", "a/log.rank0.txt", "a/zyngrad-manifest.json"}),
            Content());
}

TEST_F(OutputFolderTest, ReplacesResultsOfWhichOnlyPermissionsOrLinksChangedMeanwhile) {
  Run({"gradient.vtu", "results.json"}, "old");
  OutputFolder folder(TestRanks(), (base_ / "a").string(), {"gradient", {"gradient.vtu"}});
  Write(folder.Stage("gradient.vtu"), "new");
  fs::create_hard_link(base_ / "a/gradient.vtu", base_ / "backup");
  fs::permissions(base_ / "a/results.json", fs::perms(0600));
  folder.Commit("");
  EXPECT_EQ("new", Read(base_ / "a/gradient.vtu"));
  EXPECT_EQ("old", Read(base_ / "backup"));
  EXPECT_FALSE(fs::exists(base_ / "a/results.json"));
}

TEST_F(OutputFolderTest, MakesNoFolderThatItsNameOnlyPasses) {
  {
    OutputFolder folder(TestRanks(), (base_ / "x1/../a/x2/../b").string(), {"gradient", {}});
    folder.Commit("");
  }
  EXPECT_EQ((std::set<std::string>{"a", "a/b", "a/b/log.rank0.txt", "a/b/zyngrad-manifest.json"}), Content());
}

TEST_F(OutputFolderTest, SaysWhyAPlaceCannotBeLookedAt) {
  std::string const refusal = Refusal({std::string(300, 'x')});
  EXPECT_NE(refusal.find("x\": File name too long"), std::string::npos) << refusal;
}

TEST_F(OutputFolderTest, RefusesALinkToNowhereAsFolder) {
  fs::create_symlink("nowhere", base_ / "a");
  EXPECT_EQ(Refusal({}), "the output folder \"" + (base_ / "a").string() + "\" is not a folder");
  EXPECT_TRUE(fs::is_symlink(base_ / "a"));
}

}  // namespace

void RecordSync(int descriptor) {
  char path[4096];
  ssize_t const length = readlink(("/proc/self/fd/" + std::to_string(descriptor)).c_str(), path, sizeof path);
  if (length > 0) Record("sync ", std::string(path, static_cast<std::size_t>(length)));
}

void RecordMove(char const* to) { Record("move ", to); }

}  // namespace zyngrad

// The executable's functions come before those of the C library, which they hand everything on to.

extern "C" int fsync(int descriptor) {
  zyngrad::RecordSync(descriptor);
  return static_cast<int>(syscall(SYS_fsync, descriptor));
}

extern "C" int rename(char const* from, char const* to) noexcept {
  zyngrad::RecordMove(to);
  return static_cast<int>(syscall(SYS_renameat2, AT_FDCWD, from, AT_FDCWD, to, 0));
}

extern "C" int renameat2(int fromFolder, char const* from, int toFolder, char const* to,
                         unsigned int flags) noexcept {
  zyngrad::RecordMove(to);
  return static_cast<int>(syscall(SYS_renameat2, fromFolder, from, toFolder, to, flags));
}
