#pragma once

#include <string>
#include <vector>

#include "cli/base/Ranks.h"

namespace zyngrad {

/// Exit codes of the program. The last is what a shell says of a program that SIGPIPE has ended.
enum ExitCode { kSuccess = 0, kFoundFaults = 1, kWrongInput = 2, kPipeWasClosed = 141 };

/// Collective. Reads the arguments (without the program's name), runs the command and reports errors: one
/// line on standard error, from the first rank, that begins with "zyngrad: ". An error that a single rank met
/// outside of any agreement between the ranks aborts all of them, since the others would wait for it. When
/// the reader of standard output has gone, nothing is reported.
/// @return the exit code, the same on every rank
int RunProgram(std::vector<std::string> const& arguments, Ranks const& ranks);

}  // namespace zyngrad
