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
    AddLoadingOptions(*command, options_);
    command
        ->add_option("--save-partition", partitionFile_,
                     "Write the rank of each cell to this new file, for --partition")
        ->type_name("FILE");
    AddJsonOption(*command);
    command->footer(info_help::kFooter);
    return command;
  }

 private:
  void ReadOptions() override {
    groups_ = GroupsByUser(options_);
    loading_ = LoadingByUser(options_);
  }

  void Compute(CommandRun& run) override {
    run.LoadMesh(options_.mesh, groups_, loading_);
    summary_ = run.mesh().summary;
    run.progress().Stage("looking at all cells");
    facts_ = CollectMeshFacts(run.ranks(), run.partition());
    if (!partitionFile_.empty()) {
      run.progress().Stage("writing");
      reference_host::SavePartition(run.ranks().communicator(), run.mesh(), partitionFile_);
    }
  }

  void Print(std::ostream& out) const override {
    PrintMeshReport(out, options_.mesh, summary_);
    PrintMeshFacts(out, facts_);
    PrintMeshDetails(out, summary_);
  }

  void FillJson(nlohmann::ordered_json& json) const override { json.update(MeshFactsAsJson(facts_)); }

  MeshOptions options_;
  UserGroups groups_;
  reference_host::MeshLoading loading_;
  std::string partitionFile_;
  reference_host::MeshSummary summary_;
  MeshFacts facts_;
};

}  // namespace

std::unique_ptr<Command> MakeInfoCommand() { return std::make_unique<InfoCommand>(); }

}  // namespace zyngrad
