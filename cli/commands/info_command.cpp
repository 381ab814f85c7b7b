#include <CLI/CLI.hpp>
#include <ostream>
#include <string>

#include "cli/commands/commands.h"
#include "cli/commands/info_help.h"
#include "cli/options/MeshOptions.h"
#include "cli/output/MeshReport.h"

namespace zyngrad {
namespace {

class InfoCommand : public Command {
 public:
  InfoCommand() : Command("info") {}

  CLI::App* AddTo(CLI::App& program) override {
    CLI::App* command = program.add_subcommand(name(), info_help::kSummary);
    AddMeshOptions(*command, options_);
    command->footer(info_help::kFooter);
    return command;
  }

 private:
  void ReadOptions() override { groups_ = GroupsByUser(options_); }

  void Compute(CommandRun& run) override {
    run.LoadMesh(options_.mesh, groups_);
    summary_ = run.mesh().summary;
  }

  void Print(std::ostream& out) const override {
    PrintMeshReport(out, options_.mesh, summary_);
    PrintMeshDetails(out, summary_);
  }

  MeshOptions options_;
  UserGroups groups_;
  reference_host::MeshSummary summary_;
};

}  // namespace

std::unique_ptr<Command> MakeInfoCommand() { return std::make_unique<InfoCommand>(); }

}  // namespace zyngrad
