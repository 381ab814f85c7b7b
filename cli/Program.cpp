#include "cli/Program.h"

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

#include "cli/AgreedError.h"
#include "cli/Fingerprint.h"
#include "cli/OneLine.h"
#include "cli/StandardStreams.h"
#include "cli/ThreadBound.h"
#include "cli/UsageError.h"
#include "cli/Version.h"
#include "cli/commands.h"
#include "reference_host/MeshError.h"

namespace zyngrad {
namespace {

using Commands = std::vector<std::pair<CLI::App*, std::unique_ptr<Command>>>;

void PrintError(const std::string& what) { std::cerr << "zyngrad: " + OneLine(what) + '\n' << std::flush; }

/// Whether every rank gets to the same point before long. Of its own communicator: the ranks that do not may
/// be in any other collective operation.
class MeetingPoint {
 public:
  explicit MeetingPoint(const Ranks& ranks) { MPI_Comm_dup(ranks.communicator(), &communicator_); }
  ~MeetingPoint() { MPI_Comm_free(&communicator_); }
  MeetingPoint(const MeetingPoint&) = delete;
  MeetingPoint& operator=(const MeetingPoint&) = delete;

  bool HaveAllCome() const {
    MPI_Request request = MPI_REQUEST_NULL;
    MPI_Ibarrier(communicator_, &request);
    const auto begin = std::chrono::steady_clock::now();
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

int FailAlone(const Ranks& ranks, const std::string& what) {
  // Where several ranks fail alike, the first of them has ended the others before they say the same.
  constexpr std::chrono::milliseconds kStep(20);
  std::this_thread::sleep_for(std::min(ranks.rank(), 50) * kStep);
  PrintError(what);
  if (ranks.count() > 1) MPI_Abort(ranks.communicator(), kWrongInput);
  return kWrongInput;
}

/// An error that every rank should have met, since all have been asked the same.
int FailTogether(const Ranks& ranks, const MeetingPoint& meeting, const std::string& what) {
  if (!meeting.HaveAllCome()) return FailAlone(ranks, "rank " + std::to_string(ranks.rank()) + ": " + what);
  if (ranks.IsFirst()) PrintError(what);
  return kWrongInput;
}

/// mpirun starts each rank with arguments of its own if it is told to. Ranks that do different things wait
/// for each other for ever.
void CheckArgumentsOfAll(const std::vector<std::string>& arguments, const Ranks& ranks) {
  std::string text;
  for (const std::string& argument : arguments) (text += argument) += '\0';
  const Fingerprint own = FingerprintOfText(text);
  std::uint64_t first[] = {own.size, own.crc};
  MPI_Bcast(first, 2, MPI_UINT64_T, 0, ranks.communicator());
  ranks.Together([&] {
    if (own == Fingerprint{first[0], first[1]}) return;
    throw UsageError("rank " + std::to_string(ranks.rank()) +
                     " was started with other arguments than rank 0");
  });
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
  Command* command = nullptr;
  ranks.Together([&] {
    CheckCommandName(commands, arguments);
    command = Parse(program, commands, arguments, ranks);
  });
  if (command != nullptr) {
    BoundThreads(ranks);
    command->Run(ranks);
  }
  FlushStandardOutput(ranks);
  return command != nullptr ? command->ExitCode() : kSuccess;
}

}  // namespace

int RunProgram(const std::vector<std::string>& arguments, const Ranks& ranks) {
  const MeetingPoint meeting(ranks);
  try {
    CheckArgumentsOfAll(arguments, ranks);
    return ParseAndRun(arguments, ranks);
  } catch (const ClosedPipe&) {
    return kPipeWasClosed;
  } catch (const AgreedError& error) {
    if (error.rankCount() != ranks.count()) return FailTogether(ranks, meeting, error.what());
    // No meeting: the others may take their time to remove what they have written.
    if (ranks.IsFirst()) PrintError(error.what());
    return kWrongInput;
  } catch (const UsageError& error) {
    return FailTogether(ranks, meeting, error.what());
  } catch (const reference_host::MeshError& error) {
    return FailTogether(ranks, meeting, error.what());
  } catch (const std::bad_alloc&) {
    return FailAlone(ranks, "not enough memory on rank " + std::to_string(ranks.rank()));
  } catch (const std::exception& error) {
    return FailAlone(ranks, error.what());
  }
}

}  // namespace zyngrad
