#include "cli/commands/Program.h"

#include <mpi.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <chrono>
#include <cstdint>
#include <exception>
#include <iostream>
#include <memory>
#include <new>
#include <thread>
#include <utility>

#include "cli/base/AgreedError.h"
#include "cli/base/ExitCode.h"
#include "cli/base/OneLine.h"
#include "cli/base/StandardStreams.h"
#include "cli/base/ThreadBound.h"
#include "cli/base/UsageError.h"
#include "cli/base/Version.h"
#include "cli/commands/commands.h"
#include "cli/output/Fingerprint.h"
#include "reference_host/mesh/MeshError.h"

namespace zyngrad {
namespace {

using Commands = std::vector<std::pair<CLI::App*, std::unique_ptr<Command>>>;

void PrintError(std::string const& what) { std::cerr << "zyngrad: " + OneLine(what) + '\n' << std::flush; }

/// Tells whether every rank reaches the same point within a few seconds. It uses a communicator of its own, because a
/// rank that does not come may be in a collective operation on the other one.
class MeetingPoint {
 public:
  explicit MeetingPoint(Ranks const& ranks) { MPI_Comm_dup(ranks.communicator(), &communicator_); }
  ~MeetingPoint() { MPI_Comm_free(&communicator_); }
  MeetingPoint(MeetingPoint const&) = delete;
  MeetingPoint& operator=(MeetingPoint const&) = delete;

  bool HaveAllCome() const {
    MPI_Request request = MPI_REQUEST_NULL;
    MPI_Ibarrier(communicator_, &request);
    auto const begin = std::chrono::steady_clock::now();
    for (;;) {
      int isDone = 0;
      MPI_Test(&request, &isDone, MPI_STATUS_IGNORE);
      if (isDone != 0) return true;
      if (std::chrono::steady_clock::now() - begin > std::chrono::seconds(5)) return false;
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
  }

 private:
  MPI_Comm communicator_ = MPI_COMM_NULL;
};

int FailAlone(Ranks const& ranks, std::string const& what) {
  // If several ranks fail in the same way, the lowest one ends the others before they repeat its message.
  constexpr std::chrono::milliseconds kStep(20);
  std::this_thread::sleep_for(std::min(ranks.rank(), 50) * kStep);
  PrintError(what);
  if (ranks.count() > 1) MPI_Abort(ranks.communicator(), kExitWrongInput);
  return kExitWrongInput;
}

/// Reports an error that every rank should have met, because all ranks run the same command.
int FailTogether(Ranks const& ranks, MeetingPoint const& meeting, std::string const& what) {
  if (!meeting.HaveAllCome()) return FailAlone(ranks, "rank " + std::to_string(ranks.rank()) + ": " + what);
  if (ranks.IsFirst()) PrintError(what);
  return kExitWrongInput;
}

/// mpirun can start each rank with arguments of its own. Ranks that run different commands would wait for each other
/// for ever.
void CheckArgumentsOfAll(std::vector<std::string> const& arguments, Ranks const& ranks) {
  std::string text;
  for (std::string const& argument : arguments) (text += argument) += '\0';
  Fingerprint const own = FingerprintOfText(text);
  std::uint64_t first[] = {own.size, own.crc};
  MPI_Bcast(first, 2, MPI_UINT64_T, 0, ranks.communicator());
  ranks.Together([&] {
    if (own == Fingerprint{first[0], first[1]}) return;
    throw UsageError("rank " + std::to_string(ranks.rank()) +
                     " was started with arguments that differ from those of rank 0");
  });
}

/// Reports a mistyped command as such; CLI11 would report an unexpected argument.
void CheckCommandName(Commands const& commands, std::vector<std::string> const& arguments) {
  if (arguments.empty() || arguments.front().rfind('-', 0) == 0) return;
  for (auto const& [subcommand, command] : commands) {
    if (subcommand->get_name() == arguments.front()) return;
  }
  throw UsageError("unknown command " + Quoted(arguments.front()) + " (see zyngrad --help)");
}

/// The command on the command line; null after --help and --version, whose text is then printed. Throws UsageError.
Command* Parse(CLI::App& program, Commands const& commands, std::vector<std::string> arguments,
               Ranks const& ranks) {
  try {
    program.parse(
        std::vector<std::string>(arguments.rbegin(), arguments.rend()));  // CLI11 takes them from the back
  } catch (CLI::Success const& asked) {
    // exit() prints the help of the innermost command on the command line.
    if (ranks.IsFirst()) program.exit(asked, std::cout, std::cerr);
    return nullptr;
  } catch (CLI::ParseError const& error) {
    throw UsageError(std::string(error.what()) + " (see zyngrad --help)");
  }
  for (auto const& [subcommand, command] : commands) {
    if (subcommand->parsed()) return command.get();
  }
  throw UsageError("a command is required (see zyngrad --help)");
}

int ParseAndRun(std::vector<std::string> const& arguments, Ranks const& ranks) {
  CLI::App program("Compute gradients of fields on finite-volume meshes and measure their errors.",
                   "zyngrad");
  program.set_version_flag("--version", "zyngrad " ZYNGRAD_VERSION, "Print the version and exit");
  program.set_help_flag("-h,--help", "Print this help and exit");
  program.require_subcommand(0, 1);
  program.footer(
      "`zyngrad COMMAND --help` lists the options of a command and shows examples.\n"
      "Every command runs alone or under mpirun: mpirun -n 2 zyngrad COMMAND ...");

  Commands commands;
  for (auto make : {MakeGradientCommand, MakeFacesCommand, MakePointsCommand, MakeStudyCommand,
                    MakeCheckCommand, MakeCompareRanksCommand, MakeInfoCommand, MakeExplainCommand}) {
    std::unique_ptr<Command> command = make();
    CLI::App* subcommand = command->AddTo(program);
    commands.emplace_back(subcommand, std::move(command));
  }
  Command* command = nullptr;
  ranks.Together([&] {
    CheckCommandName(commands, arguments);
    command = Parse(program, commands, arguments, ranks);
  });
  int code = kExitSuccess;
  if (command != nullptr) {
    BoundThreads(ranks);
    code = command->Run(ranks, arguments);
  }
  FlushStandardOutput(ranks);
  return code;
}

}  // namespace

int RunProgram(std::vector<std::string> const& arguments, Ranks const& ranks) {
  MeetingPoint const meeting(ranks);
  try {
    CheckArgumentsOfAll(arguments, ranks);
    return ParseAndRun(arguments, ranks);
  } catch (ClosedPipe const&) {
    return kExitClosedPipe;
  } catch (AgreedError const& error) {
    if (error.rankCount() != ranks.count()) return FailTogether(ranks, meeting, error.what());
    // No meeting: the other ranks may need some time to remove the files that they have written.
    if (ranks.IsFirst()) PrintError(error.what());
    return kExitWrongInput;
  } catch (UsageError const& error) {
    return FailTogether(ranks, meeting, error.what());
  } catch (reference_host::MeshError const& error) {
    return FailTogether(ranks, meeting, error.what());
  } catch (std::bad_alloc const&) {
    return FailAlone(ranks, "not enough memory on rank " + std::to_string(ranks.rank()));
  } catch (std::exception const& error) {
    return FailAlone(ranks, error.what());
  }
}

}  // namespace zyngrad
