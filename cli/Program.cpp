#include "cli/Program.h"

#include <CLI/CLI.hpp>
#include <exception>
#include <iostream>
#include <memory>
#include <new>
#include <utility>

#include "cli/OneLine.h"
#include "cli/UsageError.h"
#include "cli/Version.h"
#include "cli/commands.h"
#include "reference_host/MeshError.h"

namespace zyngrad {
namespace {

using Commands = std::vector<std::pair<CLI::App*, std::unique_ptr<Command>>>;

void PrintError(const std::string& what) { std::cerr << "zyngrad: " + OneLine(what) + '\n' << std::flush; }

int FailTogether(const Ranks& ranks, const std::string& what) {
  if (ranks.IsFirst()) PrintError(what);
  return kWrongInput;
}

int FailAlone(const Ranks& ranks, const std::string& what) {
  PrintError(what);
  if (ranks.count() > 1) MPI_Abort(ranks.communicator(), kWrongInput);
  return kWrongInput;
}

/// CLI11 would call a mistyped command an unexpected argument.
void CheckCommandName(const Commands& commands, const std::vector<std::string>& arguments) {
  if (arguments.empty() || arguments.front().rfind('-', 0) == 0) return;
  for (const auto& [subcommand, command] : commands) {
    if (subcommand->get_name() == arguments.front()) return;
  }
  throw UsageError("unknown command " + Quoted(arguments.front()) + " (see zyngrad --help)");
}

/// The command that was asked for, null after --help and --version, whose text has then been printed.
/// Throws UsageError.
Command* Parse(CLI::App& program, const Commands& commands, std::vector<std::string> arguments,
               const Ranks& ranks) {
  try {
    program.parse(
        std::vector<std::string>(arguments.rbegin(), arguments.rend()));  // CLI11 takes them from the back
  } catch (const CLI::Success& asked) {
    // Help is asked of the innermost command named; exit() finds it.
    if (ranks.IsFirst()) program.exit(asked, std::cout, std::cerr);
    return nullptr;
  } catch (const CLI::ParseError& error) {
    throw UsageError(std::string(error.what()) + " (see zyngrad --help)");
  }
  for (const auto& [subcommand, command] : commands) {
    if (subcommand->parsed()) return command.get();
  }
  throw UsageError("a command is required (see zyngrad --help)");
}

int ParseAndRun(const std::vector<std::string>& arguments, const Ranks& ranks) {
  CLI::App program("Gradients of fields on finite-volume meshes, with their errors.", "zyngrad");
  program.set_version_flag("--version", "zyngrad " ZYNGRAD_VERSION);
  program.set_help_flag("-h,--help", "Print this help and exit");
  program.require_subcommand(0, 1);
  program.footer(
      "`zyngrad COMMAND --help` tells the options of a command and shows examples.\n"
      "Every command runs alone or under mpirun: mpirun -n 2 zyngrad COMMAND ...");

  Commands commands;
  for (auto make : {MakeGradientCommand, MakeFacesCommand, MakePointsCommand, MakeStudyCommand,
                    MakeCheckCommand, MakeCompareRanksCommand, MakeInfoCommand, MakeExplainCommand}) {
    std::unique_ptr<Command> command = make();
    CLI::App* subcommand = command->AddTo(program);
    commands.emplace_back(subcommand, std::move(command));
  }
  CheckCommandName(commands, arguments);
  Command* command = Parse(program, commands, arguments, ranks);
  if (command != nullptr) command->Run(ranks);
  ranks.Together([] {
    if (!std::cout.flush()) throw UsageError("cannot write to standard output");
  });
  return command != nullptr ? command->ExitCode() : kSuccess;
}

}  // namespace

int RunProgram(const std::vector<std::string>& arguments, const Ranks& ranks) {
  try {
    return ParseAndRun(arguments, ranks);
  } catch (const UsageError& error) {
    return FailTogether(ranks, error.what());
  } catch (const reference_host::MeshError& error) {
    return FailTogether(ranks, error.what());
  } catch (const std::bad_alloc&) {
    return FailAlone(ranks, "out of memory");
  } catch (const std::exception& error) {
    return FailAlone(ranks, error.what());
  }
}

}  // namespace zyngrad
