#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>
#include <ostream>
#include <string>

#include "cli/commands/commands.h"
#include "cli/commands/info_help.h"
#include "cli/info/MeshFacts.h"
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
    AddJsonOption(*command);
    command->footer(info_help::kFooter);
    return command;
  }

 private:
  void ReadOptions() override { groups_ = GroupsByUser(options_); }

  void Compute(CommandRun& run) override {
    run.LoadMesh(options_.mesh, groups_);
    summary_ = run.mesh().summary;
    run.progress().Stage("looking at all cells");
    facts_ = CollectMeshFacts(run.ranks(), run.partition());
  }

  void Print(std::ostream& out) const override {
    PrintMeshReport(out, options_.mesh, summary_);
    PrintMeshFacts(out, facts_);
    PrintMeshDetails(out, summary_);
  }

  void FillJson(nlohmann::ordered_json& json) const override { json.update(MeshFactsAsJson(facts_)); }

  MeshOptions options_;
  UserGroups groups_;
  reference_host::MeshSummary summary_;
  MeshFacts facts_;
};

}  // namespace

std::unique_ptr<Command> MakeInfoCommand() { return std::make_unique<InfoCommand>(); }

}  // namespace zyngrad
