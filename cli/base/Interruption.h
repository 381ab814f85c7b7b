#pragma once

#include <functional>
#include <list>
#include <mutex>
#include <thread>
#include <vector>

namespace zyngrad {

/// While the object lives, its work is done before a signal ends the program. The work runs on a thread of its
/// own while the rest of the program may be anywhere, so it must not call anything collective, and the data that
/// it reads may change only under NoInterruption.
class Cleanup {
 public:
  explicit Cleanup(std::function<void()> work);
  ~Cleanup();
  Cleanup(Cleanup const&) = delete;
  Cleanup& operator=(Cleanup const&) = delete;

 private:
  std::list<std::function<void()>>::iterator place_;
};

/// While it lives, a signal waits, but only for a few seconds, because another rank may have died. After that,
/// the signal ends the program without any cleanup. If a signal came first, the constructor never returns. A
/// thread may hold several.
class NoInterruption {
 public:
  NoInterruption();

 private:
  std::lock_guard<std::recursive_timed_mutex> lock_;
};

/// Makes SIGINT, SIGTERM and SIGHUP end the program in order: all cleanups run, the latest first, and then the
/// program ends by the same signal, so that the caller sees which one it was. A signal that the caller ignores,
/// as nohup does, stays ignored. A program makes one object, before anything else.
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
