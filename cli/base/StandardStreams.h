#pragma once

#include <exception>

#include "cli/base/Ranks.h"

namespace zyngrad {

/// The reader of standard output has gone, as `head` does once it has its lines. Nobody wants to hear of it.
class ClosedPipe : public std::exception {
 public:
  char const* what() const noexcept override { return "standard output is a closed pipe"; }
};

/// To be called before anything opens a file. A standard stream that the caller has closed would have its
/// descriptor given to the next file that is opened, and what is printed would land there. Afterwards writing
/// to a closed standard output fails. A write to a pipe that nobody reads fails, too, instead of ending the
/// program on the spot.
void SecureStandardStreams();

/// Collective. Throws, on every rank, when something of what a rank has printed so far did not arrive:
/// ClosedPipe when that is because the reader has gone, else UsageError.
void FlushStandardOutput(Ranks const& ranks);

/// Ends the process as one ends that writes to a closed pipe. Returns where the caller ignores that signal.
void EndByClosedPipe();

}  // namespace zyngrad
