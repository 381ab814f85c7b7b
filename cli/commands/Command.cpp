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

void Command::AddJsonOption(CLI::App& command) {
  command.add_flag("--json", printsJson_, "Print the results as JSON, and no text");
}

int Command::Run(Ranks const& ranks, std::vector<std::string> const& arguments) {
  ReadOptions();
  ReadInput(ranks);
  CommandRun run(ranks, arguments, !printsJson_);
  if (WritesFiles()) run.OpenFolder(outputFolder_, PlanOutput(ranks));
  Compute(run);
  run.progress().Done();
  if (ranks.IsFirst() && !printsJson_) Print(std::cout);
  if (ranks.IsFirst() && printsJson_ && !WritesFiles()) std::cout << JsonText(Json(run));
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
  std::string closingText = "\nwritten to " + folder.path() + ": " + resultsFile_ + ", " + others + '\n';
  run.ranks().Together([&] {
    if (!run.ranks().IsFirst()) return;
    nlohmann::ordered_json const json = Json(run);
    WriteJson(folder.Stage(resultsFile_), json);
    if (printsJson_) closingText = JsonText(json);
  });
  run.progress().Done();
  folder.Commit(closingText);
  AfterCommit();
}

nlohmann::ordered_json Command::Json(CommandRun const& run) const {
  nlohmann::ordered_json json = StartResults(name_);
  run.FillJson(json);
  FillJson(json);
  return json;
}

}  // namespace zyngrad
