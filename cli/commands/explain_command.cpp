#include <CLI/CLI.hpp>
#include <cstdint>
#include <nlohmann/json.hpp>
#include <ostream>
#include <sstream>
#include <string>
#include <utility>

#include "cli/base/OneLine.h"
#include "cli/base/UsageError.h"
#include "cli/commands/commands.h"
#include "cli/commands/explain_help.h"
#include "cli/options/MeshOptions.h"
#include "cli/options/OptionValue.h"
#include "cli/options/RadialBasisSettings.h"
#include "cli/output/JsonFile.h"
#include "cli/systems/CellStencil.h"
#include "cli/systems/CellStencilReport.h"

namespace zyngrad {
namespace {

using reference_host::HostPartition;

/// The number that a cell of the mesh file has in this partition; 0 if it is interior to another partition.
int LocalNumber(HostPartition& partition, std::int64_t globalNumber) {
  for (int c = 1; c <= partition.mesh()->NInnerCells; ++c) {
    if (partition.globalCell()[static_cast<std::size_t>(c)] == globalNumber) return c;
  }
  return 0;
}

/// Collective. The text of the rank `owner`, on every rank.
std::string FromOwner(Ranks const& ranks, int owner, std::string text) {
  int length = static_cast<int>(text.size());
  MPI_Bcast(&length, 1, MPI_INT, owner, ranks.communicator());
  text.resize(static_cast<std::size_t>(length));
  MPI_Bcast(text.data(), length, MPI_CHAR, owner, ranks.communicator());
  return text;
}

class ExplainCommand : public Command {
 public:
  ExplainCommand() : Command("explain") {}
  CLI::App* AddTo(CLI::App& program) override;

 private:
  void ReadOptions() override;
  void Compute(CommandRun& run) override;
  void Print(std::ostream& out) const override;
  void FillJson(nlohmann::ordered_json& json) const override;

  MeshOptions meshOptions_;
  std::string cellText_, spanText_ = "500";
  bool shapeNormalize_ = false;

  UserGroups groups_;
  reference_host::MeshLoading loading_;
  RadialBasisSettings settings_;
  std::int64_t cell_ = 0;  ///< number in the mesh
  int owner_ = 0;          ///< its rank
  std::string text_;       ///< with --json, JSON
};

CLI::App* ExplainCommand::AddTo(CLI::App& program) {
  CLI::App* command = program.add_subcommand(name(), explain_help::kSummary);
  AddMeshOptions(*command, meshOptions_);
  AddLoadingOptions(*command, meshOptions_);
  command->add_option("--cell", cellText_, explain_help::kCell)->type_name("N")->required();
  command->add_option("--span", spanText_, explain_help::kSpan)->type_name("S");
  command->add_flag("--shape-normalize", shapeNormalize_, explain_help::kShapeNormalize);
  AddJsonOption(*command);
  command->footer(explain_help::kFooter);
  return command;
}

void ExplainCommand::ReadOptions() {
  cell_ = CellNumber("--cell", cellText_);
  settings_ = {PositiveNumber("--span", spanText_), shapeNormalize_};
  groups_ = GroupsByUser(meshOptions_);
  loading_ = LoadingByUser(meshOptions_);
}

void ExplainCommand::Compute(CommandRun& run) {
  Ranks const& ranks = run.ranks();
  run.LoadMesh(meshOptions_.mesh, groups_, loading_);
  std::int64_t const nCells = run.mesh().summary.nCells;
  if (cell_ > nCells) {
    throw UsageError("--cell " + Quoted(cellText_) + ": the mesh has cells 1 to " + std::to_string(nCells));
  }
  int const cell = LocalNumber(run.partition(), cell_);
  owner_ = static_cast<int>(ranks.Max(cell > 0 ? ranks.rank() : -1));
  std::string text;
  ranks.Together([&] {
    if (cell == 0) return;
    CellStencil const stencil = DeriveCellStencil(run.partition(), cell, settings_);
    std::ostringstream out;
    if (PrintsJson())
      out << JsonText(CellStencilAsJson(stencil));
    else
      PrintCellStencil(out, stencil);
    text = out.str();
  });
  text_ = FromOwner(ranks, owner_, std::move(text));
}

void ExplainCommand::Print(std::ostream& out) const {
  out << "cell " << cell_ << " of " << OneLine(meshOptions_.mesh) << ", on rank " << owner_ << "\n\n"
      << text_;
}

void ExplainCommand::FillJson(nlohmann::ordered_json& json) const {
  json["cell"] = cell_;
  json["rank"] = owner_;
  json.update(nlohmann::ordered_json::parse(text_));
}

}  // namespace

std::unique_ptr<Command> MakeExplainCommand() { return std::make_unique<ExplainCommand>(); }

}  // namespace zyngrad
