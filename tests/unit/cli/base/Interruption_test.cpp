#include "cli/base/Interruption.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <functional>
#include <string>
#include <system_error>
#include <thread>

#include "cli/base/TemporaryFolder.h"

namespace zyngrad {
namespace {

namespace fs = std::filesystem;

/// For one test. Not a TemporaryFolder: a process that is forked here would take it along when it is
/// interrupted.
class PlainFolder {
 public:
  PlainFolder()
      : path_(testing::TempDir() + "Interruption_" +
              testing::UnitTest::GetInstance()->current_test_info()->name()) {
    fs::remove_all(path_);
    fs::create_directory(path_);
  }
  ~PlainFolder() {
    std::error_code ignored;
    fs::remove_all(path_, ignored);
  }
  PlainFolder(PlainFolder const&) = delete;
  PlainFolder& operator=(PlainFolder const&) = delete;

  std::string const& path() const { return path_; }

 private:
  std::string path_;
};

/// How a process ends that does `work`: the signal, or minus the exit code.
int EndAfter(std::function<void()> const& work) {
  pid_t const child = fork();
  if (child == 0) {
    work();
    _exit(0);
  }
  int status = 0;
  waitpid(child, &status, 0);
  return WIFSIGNALED(status) ? WTERMSIG(status) : -WEXITSTATUS(status);
}

[[noreturn]] void SignalAndWait(int signal) {
  kill(getpid(), signal);
  for (;;) pause();
}

TEST(Interruption, RunsCleanupsLatestFirstAndEndsByTheSignal) {
  PlainFolder const folder;
  for (int const signal : {SIGINT, SIGTERM, SIGHUP}) {
    std::string const file = folder.path() + '/' + std::to_string(signal);
    auto const append = [&file](char const* text) { std::ofstream(file, std::ios::app) << text; };
    EXPECT_EQ(EndAfter([&] {
                InterruptionWatcher const watcher;
                Cleanup const first([&] { append("first "); });
                {
                  Cleanup const gone([&] { append("gone "); });
                }
                Cleanup const second([&] { append("second "); });
                SignalAndWait(signal);
              }),
              signal);
    std::string text;
    std::getline(std::ifstream(file), text);
    EXPECT_EQ("second first ", text);
  }
}

TEST(Interruption, WaitsWhileItMust) {
  PlainFolder const folder;
  std::string const file = folder.path() + "/file";
  EXPECT_EQ(EndAfter([&] {
              InterruptionWatcher const watcher;
              Cleanup const remove([&] { fs::rename(file, file + " was whole"); });
              {
                NoInterruption const wait;
                kill(getpid(), SIGTERM);
                std::this_thread::sleep_for(std::chrono::milliseconds(50));
                std::ofstream(file) << "whole";
              }
              for (;;) pause();
            }),
            SIGTERM);
  EXPECT_TRUE(fs::exists(file + " was whole"));
}

TEST(Interruption, LetsNobodyTouchFilesOnceItHasBegun) {
  PlainFolder const folder;
  EXPECT_EQ(EndAfter([&] {
              InterruptionWatcher const watcher;
              std::atomic<bool> hasBegun{false};
              Cleanup const slow([&] {
                hasBegun = true;
                std::this_thread::sleep_for(std::chrono::milliseconds(50));
              });
              kill(getpid(), SIGTERM);
              while (!hasBegun) std::this_thread::yield();
              NoInterruption const wait;
              fs::create_directory(folder.path() + "/made");
            }),
            SIGTERM);
  EXPECT_FALSE(fs::exists(folder.path() + "/made"));
}

TEST(Interruption, LeavesASignalIgnoredThatTheCallerIgnores) {
  EXPECT_EQ(0, EndAfter([] {
              std::signal(SIGHUP, SIG_IGN);
              InterruptionWatcher const watcher;
              kill(getpid(), SIGHUP);
              std::this_thread::sleep_for(std::chrono::milliseconds(50));
            }));
}

TEST(Interruption, TakesTemporaryFoldersAlong) {
  PlainFolder const folder;
  std::string const name = folder.path() + "/name";
  EXPECT_EQ(EndAfter([&] {
              InterruptionWatcher const watcher;
              TemporaryFolder const temporary;
              std::ofstream(temporary.path() + "/settings.rbf") << "text";
              std::ofstream(name) << temporary.path();
              SignalAndWait(SIGINT);
            }),
            SIGINT);
  std::string path;
  std::getline(std::ifstream(name), path);
  EXPECT_NE("", path);
  EXPECT_FALSE(fs::exists(path));
}

}  // namespace
}  // namespace zyngrad
