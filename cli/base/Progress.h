#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <optional>
#include <string>
#include <thread>

#include "cli/base/Interruption.h"

namespace zyngrad {

/// Shows on stderr what the program is doing, for stages that take more than a second: one line, renewed every
/// second and erased when the stage ends. Silent unless enabled (first rank, stderr is a terminal).
class Progress {
 public:
  explicit Progress(bool enabled);
  ~Progress();
  Progress(Progress const&) = delete;
  Progress& operator=(Progress const&) = delete;

  /// Ends the running stage and begins the next one.
  void Stage(std::string const& what);

  /// Ends the running stage; call it before writing to the terminal.
  void Done();

  /// Whether stderr is a terminal.
  static bool StderrIsTerminal();

 private:
  void Watch();
  void Wipe();

  bool const enabled_;
  std::mutex mutex_;
  std::condition_variable changed_;
  std::string what_;  ///< empty: no stage is running
  std::chrono::steady_clock::time_point begin_;
  bool shown_ = false;
  bool ending_ = false;
  std::thread watcher_;
  std::optional<Cleanup> cleanup_;  ///< erases the line when a signal ends the program
};

}  // namespace zyngrad
