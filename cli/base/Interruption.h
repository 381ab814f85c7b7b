#pragma once

#include <functional>
#include <list>
#include <mutex>
#include <thread>
#include <vector>

namespace zyngrad {

/// What has to be undone when a signal ends the program, while the object lives. The work runs on a thread of
/// its own beside the rest of the program, which may be anywhere: it must not touch anything collective, and
/// what it reads may change only under NoInterruption.
class Cleanup {
 public:
  explicit Cleanup(std::function<void()> work);
  ~Cleanup();
  Cleanup(Cleanup const&) = delete;
  Cleanup& operator=(Cleanup const&) = delete;

 private:
  std::list<std::function<void()>>::iterator place_;
};

/// While it lives, a signal waits, though not for longer than a few seconds: another rank may be gone for
/// good. Then the signal ends the program without any cleanup. Where a signal has come first, the constructor
/// never returns. A thread may have several.
class NoInterruption {
 public:
  NoInterruption();

 private:
  std::lock_guard<std::recursive_timed_mutex> lock_;
};

/// Makes SIGINT, SIGTERM and SIGHUP end the program in order: all cleanups, the latest first, then the end by
/// that very signal, so that the caller sees which it was. A signal that the caller ignores, as nohup does,
/// stays ignored. One object in a program, before anything else.
class InterruptionWatcher {
 public:
  InterruptionWatcher();
  ~InterruptionWatcher();
  InterruptionWatcher(InterruptionWatcher const&) = delete;
  InterruptionWatcher& operator=(InterruptionWatcher const&) = delete;

 private:
  static void Watch(int pipe);

  int readEnd_ = -1;
  std::vector<int> signals_;
  std::thread thread_;
};

}  // namespace zyngrad
