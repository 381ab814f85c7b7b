#include "cli/base/Interruption.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <csignal>
#include <system_error>
#include <utility>

namespace zyngrad {
namespace {

constexpr std::chrono::seconds kLongestWait(10);
constexpr unsigned char kEnd = 0;  // sent through the pipe to end the watcher; no signal has this number

/// Held by whoever changes or runs cleanups. Never destroyed: the watcher holds it when it ends the program.
std::recursive_timed_mutex& Turn() {
  static auto& turn = *new std::recursive_timed_mutex;
  return turn;
}

std::list<std::function<void()>>& Cleanups() {
  static auto& cleanups = *new std::list<std::function<void()>>;
  return cleanups;
}

/// A handler may do little more than write into a pipe. Blocking the signal instead would not work: libraries start
/// threads before main, and the signal would be delivered to one of those.
int writeEnd = -1;

extern "C" void TellWatcher(int signal) {
  int const before = errno;
  auto const number = static_cast<unsigned char>(signal);
  [[maybe_unused]] ssize_t const written = write(writeEnd, &number, 1);
  errno = before;
}

bool IsIgnored(int signal) {
  struct sigaction action = {};
  return sigaction(signal, nullptr, &action) == 0 && action.sa_handler == SIG_IGN;
}

void Handle(int signal, void (*handler)(int)) {
  struct sigaction action = {};
  action.sa_handler = handler;
  action.sa_flags = SA_RESTART;
  sigaction(signal, &action, nullptr);
}

[[noreturn]] void EndBy(int signal) {
  Handle(signal, SIG_DFL);
  raise(signal);
  _exit(128 + signal);
}

}  // namespace

Cleanup::Cleanup(std::function<void()> work) {
  NoInterruption const wait;
  place_ = Cleanups().insert(Cleanups().end(), std::move(work));
}

Cleanup::~Cleanup() {
  NoInterruption const wait;
  Cleanups().erase(place_);
}

NoInterruption::NoInterruption() : lock_(Turn()) {}

InterruptionWatcher::InterruptionWatcher() {
  int ends[2];
  if (pipe2(ends, O_CLOEXEC) != 0) return;  // signals then end the program without cleanups
  readEnd_ = ends[0];
  writeEnd = ends[1];
  try {
    thread_ = std::thread(Watch, readEnd_);
  } catch (std::system_error const&) {
    return;
  }
  for (int const signal : {SIGINT, SIGTERM, SIGHUP}) {
    if (IsIgnored(signal)) continue;
    signals_.push_back(signal);
    Handle(signal, TellWatcher);
  }
}

InterruptionWatcher::~InterruptionWatcher() {
  for (int const signal : signals_) Handle(signal, SIG_DFL);
  if (thread_.joinable()) {
    while (write(writeEnd, &kEnd, 1) < 0 && errno == EINTR) continue;
    thread_.join();
  }
  if (readEnd_ < 0) return;
  close(readEnd_);
  close(std::exchange(writeEnd, -1));
}

void InterruptionWatcher::Watch(int pipe) {
  unsigned char signal = kEnd;
  ssize_t size = 0;
  while ((size = read(pipe, &signal, 1)) < 0 && errno == EINTR) continue;
  if (size != 1 || signal == kEnd) return;

  // The lock is never released, so that the program does nothing more with its files. Without the lock, no cleanup
  // runs, because another thread may still be changing what the cleanups read.
  if (!Turn().try_lock_for(kLongestWait)) EndBy(signal);
  for (auto cleanup = Cleanups().rbegin(); cleanup != Cleanups().rend(); ++cleanup) {
    try {
      (*cleanup)();
    } catch (...) {
      continue;  // one failed cleanup must not prevent the others
    }
  }
  EndBy(signal);
}

}  // namespace zyngrad
