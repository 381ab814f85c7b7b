#include "cli/base/Progress.h"

#include <unistd.h>

#include <cstdio>

namespace zyngrad {

Progress::Progress(bool enabled) : enabled_(enabled), begin_(std::chrono::steady_clock::now()) {
  if (!enabled_) return;
  cleanup_.emplace([this] { Done(); });
  watcher_ = std::thread([this] { Watch(); });
}

Progress::~Progress() {
  if (!enabled_) return;
  Done();
  {
    std::lock_guard<std::mutex> const lock(mutex_);
    ending_ = true;
  }
  changed_.notify_one();
  watcher_.join();
}

void Progress::Stage(std::string const& what) {
  if (!enabled_) return;
  std::lock_guard<std::mutex> const lock(mutex_);
  Wipe();
  what_ = what;
  begin_ = std::chrono::steady_clock::now();
}

void Progress::Done() { Stage(""); }

bool Progress::StderrIsTerminal() { return isatty(STDERR_FILENO) == 1; }

void Progress::Watch() {
  std::unique_lock<std::mutex> lock(mutex_);
  while (!ending_) {
    changed_.wait_for(lock, std::chrono::milliseconds(250));
    auto const seconds =
        std::chrono::duration_cast<std::chrono::seconds>(std::chrono::steady_clock::now() - begin_).count();
    if (ending_ || what_.empty() || seconds < 1) continue;
    std::fprintf(stderr, "\r\033[K%s ... %lld s", what_.c_str(), static_cast<long long>(seconds));
    std::fflush(stderr);
    shown_ = true;
  }
}

void Progress::Wipe() {
  if (!shown_) return;
  std::fprintf(stderr, "\r\033[K");
  std::fflush(stderr);
  shown_ = false;
}

}  // namespace zyngrad
