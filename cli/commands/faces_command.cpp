#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>
#include <optional>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include "cli/base/OneLine.h"
#include "cli/base/UsageError.h"
#include "cli/commands/commands.h"
#include "cli/commands/faces_help.h"
#include "cli/faces/FaceErrors.h"
#include "cli/faces/FaceFiles.h"
#include "cli/faces/FaceReport.h"
#include "cli/faces/FaceRun.h"
#include "cli/faces/TargetedFaces.h"
#include "cli/field/Expression.h"
#include "cli/field/TestField.h"
#include "cli/options/InterpolationOptions.h"
#include "cli/options/MeshOptions.h"
#include "cli/output/MeshScale.h"
#include "cli/output/RunSettings.h"
#include "cli/points/LongRows.h"
#include "cli/systems/SpanRange.h"

namespace zyngrad {
namespace {

using nlohmann::ordered_json;

constexpr int kFaceMethods = 4;

class FacesCommand : public Command {
 public:
  FacesCommand() : Command("faces", "faces.json") {}
  CLI::App* AddTo(CLI::App& program) override;

 private:
  void ReadOptions() override;
  std::vector<std::string> OutputFiles(Ranks const& ranks) const override;
  void Compute(CommandRun& run) override;
  void Print(std::ostream& out) const override { PrintFaceResults(out, results_); }
  std::string StageFiles(CommandRun& run) override;
  void FillJson(ordered_json& json) const override;
  bool HasFaults() const override { return !results_.whyNotFinite.empty(); }

  void ChooseFaces(std::string const& name);
  void CheckThatThereAreFaces(Ranks const& ranks, TargetedFaces const& faces) const;
  void Interpolate(CommandRun& run, TargetedFaces const& faces);
  void Summarise(CommandRun& run, TargetedFaces const& faces, FaceRun const& faceRun, double meanDistance);
  ordered_json Question() const;

  MeshOptions meshOptions_;
  std::string fieldText_;
  InterpolationOptions options_ = {"4", "1000"};
  bool debugReport_ = false;

  UserGroups groups_;
  std::optional<FaceKind> group_;
  std::optional<Expression> field_;
  InterpolationSettings settings_;

  std::vector<double> exact_;
  FaceRows rows_;
  FaceResults results_;
};

CLI::App* FacesCommand::AddTo(CLI::App& program) {
  namespace help = faces_help;
  CLI::App* command = program.add_subcommand(name(), help::kSummary);
  AddMeshOptions(*command, meshOptions_);
  command->get_option("--group")
      ->description(help::kGroup + FaceKindNames() + help::kGroupOfBoundary)
      ->type_name("GROUP or NAME=inlet|outlet|wall|symmetry")
      ->required();
  command->add_option("--field", fieldText_, help::kField)->type_name("EXPR")->required();
  AddInterpolationOptions(*command, options_, help::kSearchMethods);
  command->add_flag("--debug-report", debugReport_, help::kDebugReport);
  AddOutputOption(*command);
  command->footer(help::kFooter);
  return command;
}

void FacesCommand::ChooseFaces(std::string const& name) {
  std::optional<FaceKind> const group = FaceKindFromName(name);
  if (!group) {
    throw UsageError("--group " + Quoted(name) + ": expected " + FaceKindNames() +
                     ", or NAME=inlet, outlet, wall or symmetry");
  }
  if (group_ && group_ != group)
    throw UsageError("--group chooses both " + NameOf(*group_) + " and " + NameOf(*group) +
                     " faces: choose one");
  group_ = group;
}

void FacesCommand::ReadOptions() {
  MeshOptions kinds = meshOptions_;
  kinds.groups.clear();
  for (std::string const& text : meshOptions_.groups) {
    if (text.find('=') == std::string::npos)
      ChooseFaces(text);
    else
      kinds.groups.push_back(text);
  }
  if (!group_) throw UsageError("--group must choose the faces: " + FaceKindNames());
  groups_ = GroupsByUser(kinds);
  settings_ = ReadInterpolationOptions(options_, kFaceMethods);
  settings_.printsReport = debugReport_;
  field_.emplace(fieldText_);
}

void FacesCommand::CheckThatThereAreFaces(Ranks const& ranks, TargetedFaces const& faces) const {
  if (ranks.Max(faces.count) > 0.0) return;
  if (group_ == FaceKind::Partition)
    throw UsageError("one rank has no partition faces: run mpirun -n 2 zyngrad faces ... instead");
  if (group_ == FaceKind::Inner && ranks.count() > 1)
    throw UsageError("no rank has inner faces: on " + std::to_string(ranks.count()) +
                     " ranks every face between cells is a partition face");
  throw UsageError("the mesh has no " + NameOf(*group_) + " faces");
}

ordered_json FacesCommand::Question() const {
  ordered_json json = {{"field", fieldText_}, {"group", NameOf(*group_)}};
  json.update(InterpolationSettingsAsJson(settings_));
  json["debugReport"] = debugReport_;
  return json;
}

std::vector<std::string> FacesCommand::OutputFiles(Ranks const& ranks) const {
  std::vector<std::string> files = FacesFiles(ranks);
  for (std::string const& file : RunSettingsFiles(ranks)) files.push_back(file);
  return files;
}

void FacesCommand::Compute(CommandRun& run) {
  run.LoadMesh(meshOptions_.mesh, groups_);
  TargetedFaces const faces = TargetedFacesOf(run.partition(), *group_);
  CheckThatThereAreFaces(run.ranks(), faces);
  run.PrintMesh();
  Interpolate(run, faces);
}

void FacesCommand::Interpolate(CommandRun& run, TargetedFaces const& faces) {
  Ranks const& ranks = run.ranks();
  reference_host::HostPartition& partition = run.partition();
  run.progress().Stage("evaluating the formula");
  results_.placeDigits = PlaceDigits(ranks, partition);
  std::vector<double> values = MakeCellValues(ranks, partition, *field_, "the field");
  exact_ = ExactFaceValues(ranks, faces, *group_, *field_, results_.placeDigits);
  double const meanDistance = MeanCellDistance(ranks, partition);
  settings_.distance = 2.0 * meanDistance;
  StageRunSettings(ranks, partition, run.folder(), FaceSettingsText(settings_));

  run.progress().Done();
  if (settings_.method == kMethodByNodes) PrintLongRowWarning(ranks, partition, nullptr, "--search-method 2");
  run.progress().Stage("interpolating to faces");
  FaceRun faceRun = RunFaces(ranks, run.mesh(), *group_, values, run.folder().logFile());
  Summarise(run, faces, faceRun, meanDistance);
  rows_ = std::move(faceRun.rows);
}

void FacesCommand::Summarise(CommandRun& run, TargetedFaces const& faces, FaceRun const& faceRun,
                             double meanDistance) {
  Ranks const& ranks = run.ranks();
  FaceRows const& rows = faceRun.rows;
  results_.group = *group_;
  results_.settings = settings_;
  results_.times = faceRun.times;
  results_.stencils = SummariseStencils(ranks, {rows.members.begin() + 1, rows.members.end()});
  results_.errors = SummariseFaceErrors(ranks, run.partition(), faces, rows.value, exact_);
  results_.rows = CheckFaceRows(ranks, run.partition(), faces, rows.rowSum);
  if (results_.NotFiniteFaces() > 0)
    results_.whyNotFinite = WhyRadialBasisIsNotFinite(settings_.span, meanDistance);
  else if (results_.rows.nOff > 0 && !results_.GivesNoValues())
    results_.whyNotFinite = SpanOutOfRange(settings_.span, meanDistance);
}

std::string FacesCommand::StageFiles(CommandRun& run) {
  TargetedFaces const faces = TargetedFacesOf(run.partition(), *group_);
  std::string const surface = StageFaces(run.ranks(), run.partition(), faces, rows_, exact_, run.folder());
  return debugReport_ ? surface + "\nthe operator's accuracy report is in log.rankN.txt there" : surface;
}

void FacesCommand::FillJson(ordered_json& json) const {
  json["question"] = Question();
  json["results"] = FaceResultsAsJson(results_);
}

}  // namespace

std::unique_ptr<Command> MakeFacesCommand() { return std::make_unique<FacesCommand>(); }

}  // namespace zyngrad
