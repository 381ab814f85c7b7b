#include <cstdint>
#include <iostream>
#include <map>
#include <sstream>
#include <string>
#include <utility>

#include "cli/base/OneLine.h"
#include "cli/base/Progress.h"
#include "cli/base/UsageError.h"
#include "cli/commands/commands.h"
#include "cli/options/MeshOptions.h"
#include "cli/options/RadialBasisSettings.h"
#include "cli/systems/CellStencil.h"
#include "cli/systems/CellStencilReport.h"
#include "reference_host/parallel/LoadMesh.h"

namespace zyngrad {
namespace {

using reference_host::HostPartition;

/// This partition's number of a cell of the mesh file; 0: it is interior to another partition.
int LocalNumber(HostPartition& partition, std::int64_t globalNumber) {
  for (int c = 1; c <= partition.mesh()->NInnerCells; ++c) {
    if (partition.globalCell()[static_cast<std::size_t>(c)] == globalNumber) return c;
  }
  return 0;
}

/// Collective. The text of the one rank that has one, on the first rank.
std::string FromOwner(Ranks const& ranks, int owner, std::string text) {
  int length = static_cast<int>(text.size());
  MPI_Bcast(&length, 1, MPI_INT, owner, ranks.communicator());
  text.resize(static_cast<std::size_t>(length));
  MPI_Bcast(text.data(), length, MPI_CHAR, owner, ranks.communicator());
  return text;
}

class ExplainCommand : public Command {
 public:
  CLI::App* AddTo(CLI::App& program) override;
  void Run(Ranks const& ranks) override;

 private:
  MeshOptions meshOptions_;
  std::string cellText_, spanText_ = "500";
  bool shapeNormalize_ = false;
};

CLI::App* ExplainCommand::AddTo(CLI::App& program) {
  CLI::App* command =
      program.add_subcommand("explain", "Radial-basis stencil and weights of one cell, with the condition");
  AddMeshOptions(*command, meshOptions_);
  command->add_option("--cell", cellText_, "Number of the cell in the mesh, from 1")
      ->type_name("N")
      ->required();
  command->add_option("--span", spanText_, "Support radius over the stencil's length (default 500)")
      ->type_name("S");
  command->add_flag("--shape-normalize", shapeNormalize_, "Scale each axis by the stencil's extent");
  command->footer(
      "Points, lengths and weights are those of the method rbf of zyngrad gradient. Each row of weights "
      "sums\n"
      "to zero up to rounding. The condition number is estimated from the factors of the cell's system.\n\n"
      "Examples:\n"
      "  zyngrad explain box:9,9,9 --cell 365\n"
      "  zyngrad explain channel.msh --cell 1 --span 5 --group sides=wall");
  return command;
}

void ExplainCommand::Run(Ranks const& ranks) {
  int const wanted = WholeNumber("--cell", cellText_, 1);
  RadialBasisSettings const settings = {PositiveNumber("--span", spanText_), shapeNormalize_};
  std::map<std::string, reference_host::BoundaryGroup> const groups = GroupsByUser(meshOptions_);

  Progress progress(ranks.IsFirst() && Progress::StderrIsTerminal());
  reference_host::LoadedMesh mesh =
      reference_host::LoadMesh(ranks.communicator(), meshOptions_.mesh, groups,
                               [&progress](std::string const& stage) { progress.Stage(stage); });
  if (wanted > mesh.summary.nCells) {
    throw UsageError("--cell " + Quoted(cellText_) + ": the mesh has cells 1 to " +
                     std::to_string(mesh.summary.nCells));
  }
  int const cell = LocalNumber(*mesh.partition, wanted);
  auto const owner = static_cast<int>(ranks.Max(cell > 0 ? ranks.rank() : -1));
  std::string text;
  ranks.Together([&] {
    if (cell == 0) return;
    std::ostringstream out;
    PrintCellStencil(out, DeriveCellStencil(*mesh.partition, cell, settings));
    text = out.str();
  });
  text = FromOwner(ranks, owner, std::move(text));
  progress.Done();
  if (!ranks.IsFirst()) return;
  std::cout << "cell " << wanted << " of " << OneLine(meshOptions_.mesh) << ", on rank " << owner << "\n\n"
            << text;
}

}  // namespace

std::unique_ptr<Command> MakeExplainCommand() { return std::make_unique<ExplainCommand>(); }

}  // namespace zyngrad
