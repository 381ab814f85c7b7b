#include <iostream>
#include <map>
#include <string>

#include "cli/base/Progress.h"
#include "cli/commands/commands.h"
#include "cli/options/MeshOptions.h"
#include "cli/output/MeshReport.h"
#include "reference_host/parallel/LoadMesh.h"

namespace zyngrad {
namespace {

class InfoCommand : public Command {
 public:
  CLI::App* AddTo(CLI::App& program) override {
    CLI::App* command = program.add_subcommand("info", "Sizes, boundaries, quality and partition of a mesh");
    AddMeshOptions(*command, options_);
    command->footer(
        "Examples:\n"
        "  zyngrad info channel.msh\n"
        "  mpirun -n 4 zyngrad info box:40,40,40:tet:perturb=0.2,seed=1\n"
        "  zyngrad info case/constant/polyMesh --group frontAndBack=wall");
    return command;
  }

  void Run(Ranks const& ranks) override {
    std::map<std::string, reference_host::BoundaryGroup> const groups = GroupsByUser(options_);
    Progress progress(ranks.IsFirst() && Progress::StderrIsTerminal());
    reference_host::LoadedMesh const mesh =
        reference_host::LoadMesh(ranks.communicator(), options_.mesh, groups,
                                 [&progress](std::string const& stage) { progress.Stage(stage); });
    progress.Done();
    if (!ranks.IsFirst()) return;
    PrintMeshReport(std::cout, options_.mesh, mesh.summary);
    PrintMeshDetails(std::cout, mesh.summary);
  }

 private:
  MeshOptions options_;
};

}  // namespace

std::unique_ptr<Command> MakeInfoCommand() { return std::make_unique<InfoCommand>(); }

}  // namespace zyngrad
