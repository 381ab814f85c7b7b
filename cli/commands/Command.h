#pragma once

#include <iosfwd>
#include <nlohmann/json_fwd.hpp>
#include <string>
#include <vector>

#include "cli/base/Ranks.h"
#include "cli/commands/CommandRun.h"

namespace CLI {
class App;
}

namespace zyngrad {

/// One command of the program. Run is the frame that all commands share; a command fills in the steps. Every rank makes
/// and runs the command with the same options.
///
/// To write a new command, "foo":
/// 1. foo_help.h holds the texts of `zyngrad foo --help`.
/// 2. foo_command.cpp holds a class derived from Command:
///    - AddTo adds the subcommand and binds its options to members;
///    - ReadOptions turns their texts into values and refuses wrong ones;
///    - Compute loads the mesh (run.LoadMesh), does the work and keeps the results in members;
///    - Print writes the results to the terminal.
///    If the command writes files, it passes the name of its results file to the constructor, calls AddOutputOption,
///    and fills in OutputFiles, StageFiles and FillJson as well.
/// 3. commands.h declares MakeFooCommand, and the list in Program.cpp gets it.
/// 4. tests/integration/cli runs the command on one and on several ranks.
class Command {
 public:
  virtual ~Command() = default;
  Command(Command const&) = delete;
  Command& operator=(Command const&) = delete;

  /// Adds the subcommand with its options and returns it. The object must outlive the parse.
  virtual CLI::App* AddTo(CLI::App& program) = 0;

  /// Collective. Reads the options, computes, prints and writes.
  /// @param[in] arguments  the command line without the program, for reports
  /// @return the exit code of the program, the same on every rank
  /// @throws UsageError or MeshError, the same on every rank
  int Run(Ranks const& ranks, std::vector<std::string> const& arguments);

 protected:
  /// @param[in] name         on the command line and in results files
  /// @param[in] resultsFile  name of the JSON file with the results; empty if the command writes no files
  explicit Command(std::string name, std::string resultsFile = {});

  std::string const& name() const { return name_; }

  /// Adds -o, with zyngrad-output/NAME as the default.
  void AddOutputOption(CLI::App& command);
  std::string const& outputFolder() const { return outputFolder_; }

  /// Adds --json, with which standard output gets the results file instead of text.
  void AddJsonOption(CLI::App& command);
  bool PrintsJson() const { return printsJson_; }

  // The steps, in the order in which Run takes them.

  /// Checks everything that can be checked without reading a file. @throws UsageError
  virtual void ReadOptions() = 0;

  /// Collective. Reads small input files before the output folder is made, so that a wrong one leaves no folder behind.
  virtual void ReadInput(Ranks const& /*ranks*/) {}

  /// The files of all ranks besides the results file, relative to the output folder; the same on every rank.
  virtual std::vector<std::string> OutputFiles(Ranks const& /*ranks*/) const { return {}; }

  /// Collective. The work itself.
  virtual void Compute(CommandRun& run) = 0;

  /// The results, on the first rank only.
  virtual void Print(std::ostream& out) const = 0;

  /// Collective. Stages the files of OutputFiles that Compute has not staged.
  /// @return the files to open, as the last line of output lists them
  virtual std::string StageFiles(CommandRun& /*run*/) { return {}; }

  /// Once the files of the output folder are in their places.
  virtual void AfterCommit() {}

  /// Adds the question and the results to the results file or to the output of --json, on the first rank only.
  virtual void FillJson(nlohmann::ordered_json& /*json*/) const {}

  /// After Compute: whether the exit code reports faults. The same on every rank.
  virtual bool HasFaults() const { return false; }

 private:
  bool WritesFiles() const { return !resultsFile_.empty(); }
  OutputPlan PlanOutput(Ranks const& ranks) const;
  void Write(CommandRun& run);
  nlohmann::ordered_json Json(CommandRun const& run) const;

  std::string const name_, resultsFile_;
  std::string outputFolder_;
  bool printsJson_ = false;
};

}  // namespace zyngrad
