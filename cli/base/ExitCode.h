#pragma once

namespace zyngrad {

/// Exit codes of the program.
enum ExitCode {
  kExitSuccess = 0,
  kExitFaults = 1,        ///< the command ran, and what it was asked about has faults
  kExitWrongInput = 2,    ///< the command could not run; one line on standard error says why
  kExitClosedPipe = 141,  ///< what a shell reports for a program that SIGPIPE ended
};

}  // namespace zyngrad
