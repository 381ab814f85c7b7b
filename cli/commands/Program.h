#pragma once

#include <string>
#include <vector>

#include "cli/base/Ranks.h"

namespace zyngrad {

/// Collective. Reads the arguments (without the program's name), runs the command and reports an error as one line on
/// standard error, printed by the first rank, that begins with "zyngrad: ". An error that only one rank has met aborts
/// all ranks, because the others would wait for that rank for ever. If the reader of standard output has gone, nothing
/// is reported.
/// @return an ExitCode, the same on every rank
int RunProgram(std::vector<std::string> const& arguments, Ranks const& ranks);

}  // namespace zyngrad
