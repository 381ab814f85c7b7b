#pragma once

#include <exception>

#include "cli/base/Ranks.h"

namespace zyngrad {

/// The reader of standard output has gone, as `head` does once it has its lines. This is not reported to the user.
class ClosedPipe : public std::exception {
 public:
  char const* what() const noexcept override { return "standard output is a closed pipe"; }
};

/// Must be called before anything opens a file. If the caller closed a standard stream, the next file to be
/// opened would get its descriptor, and printed text would end up in that file. Afterwards, writing to a closed
/// standard output fails. Writing to a pipe that nobody reads also fails, instead of ending the program at
/// once.
void SecureStandardStreams();

/// Collective. Throws on every rank if something that a rank has printed did not arrive: ClosedPipe if the reader
/// has gone, otherwise UsageError.
void FlushStandardOutput(Ranks const& ranks);

/// Ends the process by SIGPIPE. Returns if the caller of the program ignores that signal.
void EndByClosedPipe();

}  // namespace zyngrad
