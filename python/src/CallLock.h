#pragma once

#include <atomic>
#include <mutex>
#include <stdexcept>
#include <thread>

namespace zyn_python {

/// Lets one thread at a time run an object. Others wait, without the interpreter's lock.
class CallLock {
 public:
  /// Throws if this thread runs the object already, as an exchange does that calls it: it would wait for ever.
  void RefuseNested() const {
    if (runningThread_.load() == std::this_thread::get_id())
      throw std::runtime_error("an exchange must not call the object that called it");
  }

  void lock() {
    mutex_.lock();
    runningThread_ = std::this_thread::get_id();
  }

  void unlock() {
    runningThread_ = std::thread::id();
    mutex_.unlock();
  }

 private:
  std::mutex mutex_;
  std::atomic<std::thread::id> runningThread_{std::thread::id()};
};

}  // namespace zyn_python
