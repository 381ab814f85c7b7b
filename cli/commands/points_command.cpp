#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstddef>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <optional>
#include <ostream>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

#include "cli/base/OneLine.h"
#include "cli/base/UsageError.h"
#include "cli/commands/commands.h"
#include "cli/commands/points_help.h"
#include "cli/field/Expression.h"
#include "cli/field/FieldFiles.h"
#include "cli/field/TestField.h"
#include "cli/options/InterpolationOptions.h"
#include "cli/options/MeshOptions.h"
#include "cli/options/OptionValue.h"
#include "cli/options/RadialBasisSettings.h"
#include "cli/output/MeshScale.h"
#include "cli/output/RunSettings.h"
#include "cli/points/BodyFile.h"
#include "cli/points/BodySurface.h"
#include "cli/points/CellsOfPoints.h"
#include "cli/points/LongRows.h"
#include "cli/points/PointErrors.h"
#include "cli/points/PointFiles.h"
#include "cli/points/PointReport.h"
#include "cli/points/PointRun.h"
#include "cli/points/PointSet.h"
#include "cli/points/UsableCells.h"
#include "cli/systems/SpanRange.h"
#include "cli/vtk/PvdFile.h"

namespace zyngrad {
namespace {

using nlohmann::ordered_json;

constexpr int kPointMethods = 3;
constexpr char const* kCsvName = "points.csv";
constexpr char const* kPvdName = "points.pvd";

class PointsCommand : public Command {
 public:
  PointsCommand() : Command("points", "points.json") {}
  CLI::App* AddTo(CLI::App& program) override;

 private:
  void ReadOptions() override;
  void ReadInput(Ranks const& ranks) override;
  std::vector<std::string> OutputFiles(Ranks const& ranks) const override;
  void Compute(CommandRun& run) override;
  void Print(std::ostream& out) const override { PrintPointResults(out, results_); }
  std::string StageFiles(CommandRun& run) override;
  void FillJson(ordered_json& json) const override;
  bool HasFaults() const override { return isSomeNotFinite_; }

  PointSet MakePoints(CommandRun& run);
  UsableCells FindCells(Ranks const& ranks, reference_host::HostPartition& partition);
  void Interpolate(CommandRun& run, UsableCells& usable);
  void InterpolateFormula(CommandRun& run, PointOperator& op, std::vector<char> const& isUsable);
  void InterpolateFiles(CommandRun& run, PointOperator& op);
  bool IsSeries() const { return fieldFiles_.times().size() > 1; }
  std::string VtpName(std::size_t time) const;
  void CheckPlaces() const;
  void Summarise(Ranks const& ranks);
  ordered_json Question() const;

  MeshOptions meshOptions_;
  std::string fieldText_, pointsFile_, bodyText_, bodyFileName_, spacingText_;
  FieldFileOptions fieldFileOptions_;
  InterpolationOptions options_ = {"2", "500"};
  CLI::Option const* methodOption_ = nullptr;

  UserGroups groups_;
  reference_host::MeshLoading loading_;
  std::optional<Expression> field_, body_;
  FieldFiles fieldFiles_;
  std::optional<BodyFile> bodyFile_;
  double spacing_ = 0.0;
  InterpolationSettings settings_;

  PointSet fromFile_;  ///< on the first rank
  PointResults results_;
  bool isSomeNotFinite_ = false;
};

CLI::App* PointsCommand::AddTo(CLI::App& program) {
  namespace help = points_help;
  CLI::App* command = program.add_subcommand(name(), help::kSummary);
  AddMeshOptions(*command, meshOptions_);
  AddLoadingOptions(*command, meshOptions_);
  command->add_option("--field", fieldText_, help::kField)->type_name("EXPR");
  AddFieldFileOptions(*command, fieldFileOptions_);
  command->add_option("--points", pointsFile_, help::kPoints)->type_name("FILE.csv");
  command->add_option("--body", bodyText_, help::kBody)->type_name("EXPR");
  command->add_option("--body-file", bodyFileName_, help::kBodyFile)->type_name("FILE.stl");
  command->add_option("--spacing", spacingText_, help::kSpacing)->type_name("H");
  AddInterpolationOptions(*command, options_, help::kSearchMethods);
  methodOption_ = command->get_option("--search-method");
  AddOutputOption(*command);
  command->footer(help::kFooter);
  return command;
}

void PointsCommand::ReadOptions() {
  fieldFiles_ = FieldFiles(fieldFileOptions_);
  if (fieldText_.empty() && fieldFiles_.IsEmpty())
    throw UsageError("--field EXPR or --field-file FILE has to say what is interpolated");
  if (!fieldText_.empty() && !fieldFiles_.IsEmpty())
    throw UsageError("--field and --field-file exclude each other");
  if (!bodyText_.empty() && !bodyFileName_.empty())
    throw UsageError("--body and --body-file exclude each other");
  bool const hasBody = !bodyText_.empty() || !bodyFileName_.empty();
  if (pointsFile_.empty() && !hasBody)
    throw UsageError(
        "--points FILE.csv, --body EXPR or --body-file FILE.stl has to say where the points are");
  if (!spacingText_.empty() && !pointsFile_.empty())
    throw UsageError("--spacing is for points on the surface of a body, not for those of --points");
  if (!fieldText_.empty()) field_.emplace(fieldText_);
  if (!bodyText_.empty()) body_.emplace(bodyText_);
  if (!spacingText_.empty()) spacing_ = PositiveNumber("--spacing", spacingText_);
  settings_ = ReadInterpolationOptions(options_, kPointMethods);
  results_.isMethodChosen = methodOption_->count() > 0;
  groups_ = GroupsByUser(meshOptions_);
  loading_ = LoadingByUser(meshOptions_);
}

void PointsCommand::ReadInput(Ranks const& ranks) {
  ranks.Together([&] {
    if (!ranks.IsFirst() || pointsFile_.empty()) return;
    std::error_code ignored;
    if (std::filesystem::equivalent(pointsFile_, std::filesystem::path(outputFolder()) / kCsvName, ignored)) {
      throw UsageError("--points " + Quoted(pointsFile_) +
                       " is a file that this run writes: choose another output folder");
    }
    fromFile_ = ReadPoints(pointsFile_, PointResultColumns(fieldFiles_.names(), fieldFiles_.HasTimes()));
  });
  fieldFiles_.FindTimes(ranks, meshOptions_.mesh);
  if (bodyFileName_.empty()) return;
  bodyFile_.emplace(ranks, bodyFileName_);
  for (std::string const& fault : InWords(bodyFile_->surface().faults))
    results_.remarks.push_back(OneLine(bodyFileName_) + ": " + fault);
}

std::vector<std::string> PointsCommand::OutputFiles(Ranks const& ranks) const {
  std::vector<std::string> files = RunSettingsFiles(ranks);
  files.emplace_back(kCsvName);
  for (std::size_t t = 0; t < fieldFiles_.times().size(); ++t) files.push_back(VtpName(t));
  if (IsSeries()) files.emplace_back(kPvdName);
  return files;
}

/// Of one of several times, its own file.
std::string PointsCommand::VtpName(std::size_t time) const {
  return IsSeries() ? "points_" + fieldFiles_.times()[time] + ".vtp" : "points.vtp";
}

/// The points of the file, or else those of the body's surface; rows and triangles on the first rank only.
PointSet PointsCommand::MakePoints(CommandRun& run) {
  PointSet points = std::move(fromFile_);
  if (pointsFile_.empty()) {
    points = bodyFile_
                 ? bodyFile_->Points(run.ranks(), spacing_)
                 : PointsOnSurface(run.ranks(), run.partition(), *body_, spacing_, results_.meanDistance);
  }
  for (auto* column : {&points.x, &points.y, &points.z}) run.ranks().Broadcast(*column);
  return points;
}

UsableCells PointsCommand::FindCells(Ranks const& ranks, reference_host::HostPartition& partition) {
  if (bodyFile_) return FindUsableCells(ranks, partition, bodyFile_->winding(), bodyFileName_);
  return FindUsableCells(ranks, partition, body_ ? &*body_ : nullptr);
}

void PointsCommand::Compute(CommandRun& run) {
  run.LoadMesh(meshOptions_.mesh, groups_, loading_);
  run.PrintMesh();
  Ranks const& ranks = run.ranks();
  reference_host::HostPartition& partition = run.partition();
  results_.settings = settings_;
  results_.nCells = run.mesh().summary.nCells;
  results_.meanDistance = MeanCellDistance(ranks, partition);
  results_.placeDigits = PlaceDigits(ranks, partition);

  run.progress().Stage("finding cells outside the body");
  UsableCells usable = FindCells(ranks, partition);
  results_.nUsableCells = usable.nCells;

  run.progress().Stage("finding points");
  results_.points = MakePoints(run);
  results_.owners = FindPointOwners(ranks, partition, usable, results_.points);
  results_.aspectRatios = AspectRatiosAt(ranks, partition, results_.points);
  CheckPlaces();
  if (settings_.method == kMethodByNodes) {
    run.progress().Done();
    PrintLongRowWarning(ranks, partition, &usable, "--search-method 2");
  }
  Interpolate(run, usable);
  Summarise(ranks);
}

/// A body beside the mesh is a mistake, most often of the unit.
void PointsCommand::CheckPlaces() const {
  if (!bodyFile_ || !pointsFile_.empty()) return;
  if (*std::max_element(results_.aspectRatios.begin(), results_.aspectRatios.end()) > 0.0) return;
  throw UsageError("no corner of " + Quoted(bodyFileName_) +
                   " lies in the mesh: are both in the same unit of length?");
}

void PointsCommand::Interpolate(CommandRun& run, UsableCells& usable) {
  Ranks const& ranks = run.ranks();
  run.progress().Stage("interpolating to points");
  settings_.distance = 2.0 * results_.meanDistance;
  StageRunSettings(ranks, run.partition(), run.folder(), PointSettingsText(settings_));
  PointOperator op(ranks, run.mesh(), usable, results_.points, results_.owners, run.folder().logFile());
  if (field_) {
    InterpolateFormula(run, op, usable.Flags());
  } else {
    InterpolateFiles(run, op);
  }
  PointValues stencils = op.Stencils();
  results_.run.values.members = std::move(stencils.members);
  results_.run.values.isRowFinite = std::move(stencils.isRowFinite);
}

void PointsCommand::InterpolateFormula(CommandRun& run, PointOperator& op,
                                       std::vector<char> const& isUsable) {
  Ranks const& ranks = run.ranks();
  std::vector<double> values = MakeCellValues(ranks, run.partition(), *field_, "the field", &isUsable);
  ranks.Together([&] {
    if (ranks.IsFirst()) results_.exact = ExactValuesAt(results_.points, *field_);
  });
  results_.run.times = op.TimeCalls(values);
  results_.run.values = op.Apply(values);
}

void PointsCommand::InterpolateFiles(CommandRun& run, PointOperator& op) {
  results_.times = fieldFiles_.times();
  for (std::size_t t = 0; t < results_.times.size(); ++t) {
    if (IsSeries()) run.progress().Stage("time " + results_.times[t]);
    std::vector<std::string> boundary;  // points take values of cells alone
    std::vector<FileField> fields = fieldFiles_.Read(run.ranks(), run.mesh(), t, boundary);
    results_.fields.resize(fields.size());
    for (std::size_t f = 0; f < fields.size(); ++f) {
      results_.fields[f].name = fields[f].name;
      results_.fields[f].at.emplace_back();
      for (TestField& component : fields[f].component)
        results_.fields[f].at.back().push_back(op.Apply(component.value));
    }
    if (t == 0) results_.run.times = op.TimeCalls(fields.front().component.front().value);
  }
}

void PointsCommand::Summarise(Ranks const& ranks) {
  ranks.Together([&] {
    if (!ranks.IsFirst()) return;
    if (field_) results_.errors = ErrorsAt(results_.run.values, results_.exact);
    results_.normals = NormalsOf(results_.points);
    results_.flags =
        FlagPoints(results_.run.values, results_.owners, results_.meanDistance, results_.aspectRatios);
    if (NotFinitePoints(results_) > 0)
      results_.whyNotFinite = WhyRadialBasisIsNotFinite(settings_.span, results_.meanDistance);
  });
  isSomeNotFinite_ = ranks.Max(results_.whyNotFinite.empty() ? 0.0 : 1.0) > 0.0;
}

ordered_json PointsCommand::Question() const {
  ordered_json json = ordered_json::object();
  if (field_) {
    json["field"] = fieldText_;
  } else {
    fieldFiles_.AddToQuestion(json);
  }
  json["points"] = pointsFile_.empty() ? ordered_json(nullptr) : ordered_json(pointsFile_);
  json["body"] = bodyText_.empty() ? ordered_json(nullptr) : ordered_json(bodyText_);
  json["bodyFile"] = bodyFileName_.empty() ? ordered_json(nullptr) : ordered_json(bodyFileName_);
  json["spacing"] = spacing_;
  json.update(InterpolationSettingsAsJson(settings_));
  return json;
}

std::string PointsCommand::StageFiles(CommandRun& run) {
  run.ranks().Together([&] {
    if (!run.ranks().IsFirst()) return;
    WritePointCsv(run.folder().Stage(kCsvName), results_);
    std::vector<std::string> grids;
    for (std::size_t t = 0; t < fieldFiles_.times().size(); ++t) {
      grids.push_back(VtpName(t));
      WritePointVtp(run.folder().Stage(VtpName(t)), results_, t);
    }
    if (IsSeries()) WritePvd(run.folder().Stage(kPvdName), fieldFiles_.times(), grids);
  });
  return std::string(kCsvName) + ", " + (IsSeries() ? kPvdName : VtpName(0));
}

void PointsCommand::FillJson(ordered_json& json) const {
  json["question"] = Question();
  json["results"] = PointResultsAsJson(results_);
}

}  // namespace

std::unique_ptr<Command> MakePointsCommand() { return std::make_unique<PointsCommand>(); }

}  // namespace zyngrad
