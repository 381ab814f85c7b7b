#pragma once

#include <CLI/CLI.hpp>
#include <memory>

#include "cli/base/Ranks.h"

namespace zyngrad {

/// One command of the program. Every rank makes and runs it with the same options; only the first rank
/// prints.
class Command {
 public:
  virtual ~Command() = default;

  /// Adds the subcommand with its options, bound to this object, and returns it. The object outlives
  /// `program`'s parse.
  virtual CLI::App* AddTo(CLI::App& program) = 0;

  /// Collective. Throws UsageError or MeshError, the same on every rank.
  virtual void Run(Ranks const& ranks) = 0;

  /// After Run: of the program, the same on every rank. Other than 0 for a command that found faults in what it
  /// was asked about.
  virtual int ExitCode() const { return 0; }
};

std::unique_ptr<Command> MakeGradientCommand();
std::unique_ptr<Command> MakeInfoCommand();
std::unique_ptr<Command> MakeExplainCommand();
std::unique_ptr<Command> MakeFacesCommand();
std::unique_ptr<Command> MakePointsCommand();
std::unique_ptr<Command> MakeStudyCommand();
std::unique_ptr<Command> MakeCompareRanksCommand();
std::unique_ptr<Command> MakeCheckCommand();

}  // namespace zyngrad
