#include "cli/commands/CommandRun.h"

#include <iostream>
#include <nlohmann/json.hpp>
#include <utility>

#include "cli/output/MeshReport.h"

namespace zyngrad {

CommandRun::CommandRun(Ranks const& ranks, std::vector<std::string> arguments, bool printsText)
    : ranks_(ranks),
      arguments_(std::move(arguments)),
      printsText_(printsText),
      progress_(ranks.IsFirst() && Progress::StderrIsTerminal()) {}

std::function<void(std::string const&)> CommandRun::Stages() {
  return [this](std::string const& stage) { progress_.Stage(stage); };
}

void CommandRun::LoadMesh(std::string const& name, UserGroups const& groups,
                          reference_host::MeshLoading const& loading) {
  meshName_ = name;
  mesh_.emplace(reference_host::LoadMesh(ranks_.communicator(), name, ReadGroupRules(ranks_, groups),
                                         Stages(), loading));
}

void CommandRun::PrintMesh() {
  progress_.Done();
  if (ranks_.IsFirst() && printsText_) PrintMeshReport(std::cout, meshName_, mesh_->summary);
}

void CommandRun::FillJson(nlohmann::ordered_json& json) const {
  if (mesh_) json["mesh"] = MeshReportAsJson(meshName_, mesh_->summary);
}

void CommandRun::OpenFolder(std::string const& path, OutputPlan plan) {
  folder_.emplace(ranks_, path, std::move(plan));
}

}  // namespace zyngrad
