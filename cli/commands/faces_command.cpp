#include <CLI/CLI.hpp>
#include <array>
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
#include "cli/field/FieldFiles.h"
#include "cli/field/TestField.h"
#include "cli/field/field_file_help.h"
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
  void ReadInput(Ranks const& ranks) override { fieldFiles_.FindTimes(ranks, meshOptions_.mesh); }
  std::vector<std::string> OutputFiles(Ranks const& ranks) const override;
  void Compute(CommandRun& run) override;
  void Print(std::ostream& out) const override;
  std::string StageFiles(CommandRun& run) override;
  void FillJson(ordered_json& json) const override;
  bool HasFaults() const override { return !results_.whyNotFinite.empty(); }

  void ChooseFaces(std::string const& name);
  void CheckThatThereAreFaces(Ranks const& ranks, TargetedFaces const& faces) const;
  void Interpolate(CommandRun& run, TargetedFaces const& faces);
  void InterpolateFormula(CommandRun& run, TargetedFaces const& faces, FaceOperator& op);
  void InterpolateFiles(CommandRun& run, TargetedFaces const& faces, FaceOperator& op);
  FaceTime InterpolateTime(CommandRun& run, TargetedFaces const& faces, FaceOperator& op,
                           std::vector<VtkArray>& arrays);
  void Summarise(CommandRun& run, TargetedFaces const& faces, FaceOperator const& op, double meanDistance);
  ordered_json Question() const;

  MeshOptions meshOptions_;
  std::string fieldText_;
  FieldFileOptions fieldFileOptions_;
  InterpolationOptions options_ = {"4", "1000"};
  bool debugReport_ = false;

  UserGroups groups_;
  reference_host::MeshLoading loading_;
  std::optional<FaceKind> group_;
  std::optional<Expression> field_;  ///< empty with fields from files
  FieldFiles fieldFiles_;
  InterpolationSettings settings_;

  std::vector<std::string> warnings_;
  FaceResults results_;
};

CLI::App* FacesCommand::AddTo(CLI::App& program) {
  namespace help = faces_help;
  CLI::App* command = program.add_subcommand(name(), help::kSummary);
  AddMeshOptions(*command, meshOptions_);
  AddLoadingOptions(*command, meshOptions_);
  command->get_option("--group")
      ->description(help::kGroup + FaceKindNames() + help::kGroupOfBoundary)
      ->type_name("GROUP or NAME=inlet|outlet|wall|symmetry")
      ->required();
  command->add_option("--field", fieldText_, help::kField)->type_name("EXPR");
  AddFieldFileOptions(*command, fieldFileOptions_);
  AddInterpolationOptions(*command, options_, help::kSearchMethods);
  command->add_flag("--debug-report", debugReport_, help::kDebugReport);
  AddOutputOption(*command);
  command->footer(std::string(help::kFields) + field_file_help::kFieldFiles + help::kOutput);
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
  loading_ = LoadingByUser(meshOptions_);
  settings_ = ReadInterpolationOptions(options_, kFaceMethods);
  settings_.printsReport = debugReport_;
  fieldFiles_ = FieldFiles(fieldFileOptions_);
  if (fieldText_.empty() == fieldFiles_.IsEmpty())
    throw UsageError(fieldText_.empty() ? "--field or --field-file is required"
                                        : "--field and --field-file exclude each other");
  if (fieldFiles_.IsEmpty()) field_.emplace(fieldText_);
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
  ordered_json json;
  if (field_)
    json["field"] = fieldText_;
  else
    fieldFiles_.AddToQuestion(json);
  json["group"] = NameOf(*group_);
  json.update(InterpolationSettingsAsJson(settings_));
  json["debugReport"] = debugReport_;
  return json;
}

std::vector<std::string> FacesCommand::OutputFiles(Ranks const& ranks) const {
  std::vector<std::string> files = FacesFiles(ranks, fieldFiles_.times()).All();
  for (std::string const& file : RunSettingsFiles(ranks)) files.push_back(file);
  return files;
}

void FacesCommand::Compute(CommandRun& run) {
  run.LoadMesh(meshOptions_.mesh, groups_, loading_);
  TargetedFaces const faces = TargetedFacesOf(run.partition(), *group_);
  CheckThatThereAreFaces(run.ranks(), faces);
  run.PrintMesh();
  Interpolate(run, faces);
}

void FacesCommand::Interpolate(CommandRun& run, TargetedFaces const& faces) {
  Ranks const& ranks = run.ranks();
  reference_host::HostPartition& partition = run.partition();
  results_.placeDigits = PlaceDigits(ranks, partition);
  double const meanDistance = MeanCellDistance(ranks, partition);
  settings_.distance = 2.0 * meanDistance;
  StageRunSettings(ranks, partition, run.folder(), FaceSettingsText(settings_));

  run.progress().Done();
  if (settings_.method == kMethodByNodes) PrintLongRowWarning(ranks, partition, nullptr, "--search-method 2");
  run.progress().Stage("setting up the interpolation to faces");
  FaceOperator op(ranks, run.mesh(), *group_, run.folder().logFile());
  if (field_)
    InterpolateFormula(run, faces, op);
  else
    InterpolateFiles(run, faces, op);
  Summarise(run, faces, op, meanDistance);
}

void FacesCommand::InterpolateFormula(CommandRun& run, TargetedFaces const& faces, FaceOperator& op) {
  Ranks const& ranks = run.ranks();
  reference_host::HostPartition& partition = run.partition();
  run.progress().Stage("interpolating to faces");
  std::vector<double> values = MakeCellValues(ranks, partition, *field_, "the field");
  std::vector<double> const exact = ExactFaceValues(ranks, faces, *group_, *field_, results_.placeDigits);
  std::vector<double> const value = op.Apply(values);
  results_.errors = SummariseFaceErrors(ranks, partition, faces, value, exact);
  StageFaces(ranks, partition, faces, op.rows(), FormulaArrays(value, exact),
             FacesFiles(ranks, fieldFiles_.times()).At(0), run.folder());
}

/// Collective. Reads the fields of the next time and interpolates them.
/// @param[out] arrays  receive the values on the faces
FaceTime FacesCommand::InterpolateTime(CommandRun& run, TargetedFaces const& faces, FaceOperator& op,
                                       std::vector<VtkArray>& arrays) {
  Ranks const& ranks = run.ranks();
  std::size_t const t = results_.fromFiles.size();
  FaceTime time;
  time.name = fieldFiles_.times()[t];
  std::vector<double> const zero(static_cast<std::size_t>(faces.count) + 1, 0.0);
  for (FileField& field : fieldFiles_.Read(ranks, run.mesh(), t, warnings_)) {
    std::vector<std::vector<double>> components;
    for (std::size_t k = 0; k < field.component.size(); ++k) {
      components.push_back(op.Apply(field.component[k].value));
      FaceSizes sizes;
      sizes.name = field.IsVector() ? field.name + '.' + "xyz"[k] : field.name;
      sizes.norms = SummariseFaceErrors(ranks, run.partition(), faces, components.back(), zero);
      std::array<double, 2> const range = RangeOfValues(ranks, components.back());
      sizes.lowest = range[0];
      sizes.highest = range[1];
      time.values.push_back(std::move(sizes));
    }
    ranks.Together([&] { arrays.push_back(FieldArray(field.name, components)); });
    time.fields.push_back({field.name, {}, std::move(field.patches)});
  }
  return time;
}

void FacesCommand::InterpolateFiles(CommandRun& run, TargetedFaces const& faces, FaceOperator& op) {
  Ranks const& ranks = run.ranks();
  SeriesFiles const files = FacesFiles(ranks, fieldFiles_.times());
  for (std::size_t t = 0; t < fieldFiles_.times().size(); ++t) {
    run.progress().Stage("interpolating the fields to faces" +
                         (fieldFiles_.HasTimes() ? ", time " + fieldFiles_.times()[t] : std::string()));
    std::vector<VtkArray> arrays;
    results_.fromFiles.push_back(InterpolateTime(run, faces, op, arrays));
    StageFaces(ranks, run.partition(), faces, op.rows(), std::move(arrays), files.At(t), run.folder());
  }
  ranks.Together([&] {
    if (ranks.IsFirst() && files.IsSeries()) files.WriteIndex(run.folder().Stage(files.Index()));
  });
}

void FacesCommand::Summarise(CommandRun& run, TargetedFaces const& faces, FaceOperator const& op,
                             double meanDistance) {
  Ranks const& ranks = run.ranks();
  FaceRows const& rows = op.rows();
  results_.group = *group_;
  results_.settings = settings_;
  results_.times = op.times();
  results_.stencils = SummariseStencils(ranks, {rows.members.begin() + 1, rows.members.end()});
  results_.rows = CheckFaceRows(ranks, run.partition(), faces, rows.rowSum);
  if (results_.NotFiniteFaces() > 0)
    results_.whyNotFinite = WhyRadialBasisIsNotFinite(settings_.span, meanDistance);
  else if (results_.rows.nOff > 0 && !results_.GivesNoValues())
    results_.whyNotFinite = SpanOutOfRange(settings_.span, meanDistance);
}

void FacesCommand::Print(std::ostream& out) const {
  PrintWarnings(out, warnings_);
  std::vector<FieldsAtTime> fields;
  for (FaceTime const& time : results_.fromFiles) fields.push_back({time.name, time.fields});
  if (!fields.empty()) PrintBoundaryValues(out, fields);
  PrintFaceResults(out, results_);
}

std::string FacesCommand::StageFiles(CommandRun& run) {
  std::string const surface = FacesFiles(run.ranks(), fieldFiles_.times()).Index();
  return debugReport_ ? surface + "\nthe operator's accuracy report is in log.rankN.txt there" : surface;
}

void FacesCommand::FillJson(ordered_json& json) const {
  json["question"] = Question();
  if (!warnings_.empty()) json["warnings"] = warnings_;
  json["results"] = FaceResultsAsJson(results_);
}

}  // namespace

std::unique_ptr<Command> MakeFacesCommand() { return std::make_unique<FacesCommand>(); }

}  // namespace zyngrad
