#include "cli/commands/Command.h"

#include <CLI/CLI.hpp>
#include <iostream>
#include <nlohmann/json.hpp>
#include <utility>

#include "cli/base/ExitCode.h"
#include "cli/output/JsonFile.h"

namespace zyngrad {

Command::Command(std::string name, std::string resultsFile)
    : name_(std::move(name)),
      resultsFile_(std::move(resultsFile)),
      outputFolder_("zyngrad-output/" + name_) {}

void Command::AddOutputOption(CLI::App& command) {
  command.add_option("-o,--output", outputFolder_, "Output folder (default " + outputFolder_ + ")")
      ->type_name("DIR");
}

int Command::Run(Ranks const& ranks) {
  ReadOptions();
  ReadInput(ranks);
  CommandRun run(ranks);
  if (WritesFiles()) run.OpenFolder(outputFolder_, PlanOutput(ranks));
  Compute(run);
  run.progress().Done();
  if (ranks.IsFirst()) Print(std::cout);
  if (WritesFiles()) Write(run);
  return HasFaults() ? kExitFaults : kExitSuccess;
}

OutputPlan Command::PlanOutput(Ranks const& ranks) const {
  OutputPlan plan = {name_, OutputFiles(ranks)};
  plan.files.push_back(resultsFile_);
  return plan;
}

void Command::Write(CommandRun& run) {
  OutputFolder& folder = run.folder();
  run.progress().Stage("writing");
  std::string const others = StageFiles(run);
  run.ranks().Together([&] {
    if (!run.ranks().IsFirst()) return;
    nlohmann::ordered_json json = StartResults(name_);
    run.FillJson(json);
    FillJson(json);
    WriteJson(folder.Stage(resultsFile_), json);
  });
  run.progress().Done();
  folder.Commit("\nwritten to " + folder.path() + ": " + resultsFile_ + ", " + others + '\n');
  AfterCommit();
}

}  // namespace zyngrad
