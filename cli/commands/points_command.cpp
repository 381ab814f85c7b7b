#include <CLI/CLI.hpp>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <optional>
#include <ostream>
#include <string>
#include <system_error>
#include <vector>

#include "cli/base/OneLine.h"
#include "cli/base/UsageError.h"
#include "cli/commands/commands.h"
#include "cli/commands/points_help.h"
#include "cli/field/Expression.h"
#include "cli/field/TestField.h"
#include "cli/options/InterpolationOptions.h"
#include "cli/options/MeshOptions.h"
#include "cli/options/OptionValue.h"
#include "cli/options/RadialBasisSettings.h"
#include "cli/output/MeshScale.h"
#include "cli/output/RunSettings.h"
#include "cli/points/BodySurface.h"
#include "cli/points/LongRows.h"
#include "cli/points/PointErrors.h"
#include "cli/points/PointFiles.h"
#include "cli/points/PointReport.h"
#include "cli/points/PointRun.h"
#include "cli/points/PointSet.h"
#include "cli/points/UsableCells.h"
#include "cli/systems/SpanRange.h"

namespace zyngrad {
namespace {

using nlohmann::ordered_json;

constexpr int kPointMethods = 3;
constexpr char const* kCsvName = "points.csv";
constexpr char const* kVtpName = "points.vtp";

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
  void Interpolate(CommandRun& run, UsableCells& usable, std::vector<double>& values);
  void Summarise(Ranks const& ranks);
  ordered_json Question() const;

  MeshOptions meshOptions_;
  std::string fieldText_, pointsFile_, bodyText_, spacingText_;
  InterpolationOptions options_ = {"3", "500"};

  UserGroups groups_;
  std::optional<Expression> field_, body_;
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
  command->add_option("--field", fieldText_, help::kField)->type_name("EXPR")->required();
  command->add_option("--points", pointsFile_, help::kPoints)->type_name("FILE.csv");
  command->add_option("--body", bodyText_, help::kBody)->type_name("EXPR");
  command->add_option("--spacing", spacingText_, help::kSpacing)->type_name("H");
  AddInterpolationOptions(*command, options_, help::kSearchMethods);
  AddOutputOption(*command);
  command->footer(help::kFooter);
  return command;
}

void PointsCommand::ReadOptions() {
  if (pointsFile_.empty() && bodyText_.empty())
    throw UsageError("--points FILE.csv or --body EXPR has to say where the points are");
  if (!spacingText_.empty() && !pointsFile_.empty())
    throw UsageError("--spacing is for points on the surface of a body, not for those of --points");
  field_.emplace(fieldText_);
  if (!bodyText_.empty()) body_.emplace(bodyText_);
  if (!spacingText_.empty()) spacing_ = PositiveNumber("--spacing", spacingText_);
  settings_ = ReadInterpolationOptions(options_, kPointMethods);
  groups_ = GroupsByUser(meshOptions_);
}

void PointsCommand::ReadInput(Ranks const& ranks) {
  ranks.Together([&] {
    if (!ranks.IsFirst() || pointsFile_.empty()) return;
    std::error_code ignored;
    if (std::filesystem::equivalent(pointsFile_, std::filesystem::path(outputFolder()) / kCsvName, ignored)) {
      throw UsageError("--points " + Quoted(pointsFile_) +
                       " is a file that this run writes: choose another output folder");
    }
    fromFile_ = ReadPoints(pointsFile_, PointResultColumns());
  });
}

std::vector<std::string> PointsCommand::OutputFiles(Ranks const& ranks) const {
  std::vector<std::string> files = RunSettingsFiles(ranks);
  files.insert(files.end(), {kCsvName, kVtpName});
  return files;
}

/// The points of the file, or else those of the body's surface; rows on the first rank only.
PointSet PointsCommand::MakePoints(CommandRun& run) {
  PointSet points = std::move(fromFile_);
  if (pointsFile_.empty())
    points = PointsOnSurface(run.ranks(), run.partition(), *body_, spacing_, results_.meanDistance);
  for (auto* column : {&points.x, &points.y, &points.z}) run.ranks().Broadcast(*column);
  return points;
}

void PointsCommand::Compute(CommandRun& run) {
  run.LoadMesh(meshOptions_.mesh, groups_);
  run.PrintMesh();
  Ranks const& ranks = run.ranks();
  reference_host::HostPartition& partition = run.partition();
  results_.settings = settings_;
  results_.nCells = run.mesh().summary.nCells;
  results_.meanDistance = MeanCellDistance(ranks, partition);
  results_.placeDigits = PlaceDigits(ranks, partition);

  run.progress().Stage("evaluating the formulas");
  UsableCells usable = FindUsableCells(ranks, partition, body_ ? &*body_ : nullptr);
  results_.nUsableCells = usable.nCells;
  std::vector<char> const isUsable = usable.Flags();
  std::vector<double> values = MakeCellValues(ranks, partition, *field_, "the field", &isUsable);

  run.progress().Stage("finding points");
  results_.points = MakePoints(run);
  ranks.Together([&] {
    if (ranks.IsFirst()) results_.exact = ExactValuesAt(results_.points, *field_);
  });
  results_.owners = FindPointOwners(ranks, partition, usable, results_.points);
  Interpolate(run, usable, values);
}

void PointsCommand::Interpolate(CommandRun& run, UsableCells& usable, std::vector<double>& values) {
  if (settings_.method == kMethodByNodes) {
    run.progress().Done();
    PrintLongRowWarning(run.ranks(), run.partition(), &usable, "--search-method 2");
  }
  run.progress().Stage("interpolating to points");
  settings_.distance = 2.0 * results_.meanDistance;
  StageRunSettings(run.ranks(), run.partition(), run.folder(), PointSettingsText(settings_));
  results_.run = RunPoints(run.ranks(), run.mesh(), usable, results_.points, results_.owners, values,
                           run.folder().logFile());
  Summarise(run.ranks());
}

void PointsCommand::Summarise(Ranks const& ranks) {
  ranks.Together([&] {
    if (!ranks.IsFirst()) return;
    results_.errors = ErrorsAt(results_.run.values, results_.exact);
    results_.flags = FlagPoints(results_.run.values, results_.owners, results_.meanDistance);
    if (NotFinitePoints(results_) > 0)
      results_.whyNotFinite = WhyRadialBasisIsNotFinite(settings_.span, results_.meanDistance);
  });
  isSomeNotFinite_ = ranks.Max(results_.whyNotFinite.empty() ? 0.0 : 1.0) > 0.0;
}

ordered_json PointsCommand::Question() const {
  ordered_json json = {{"field", fieldText_}};
  json["points"] = pointsFile_.empty() ? ordered_json(nullptr) : ordered_json(pointsFile_);
  json["body"] = bodyText_.empty() ? ordered_json(nullptr) : ordered_json(bodyText_);
  json["spacing"] = spacing_;
  json.update(InterpolationSettingsAsJson(settings_));
  return json;
}

std::string PointsCommand::StageFiles(CommandRun& run) {
  run.ranks().Together([&] {
    if (!run.ranks().IsFirst()) return;
    WritePointCsv(run.folder().Stage(kCsvName), results_);
    WritePointVtp(run.folder().Stage(kVtpName), results_);
  });
  return std::string(kCsvName) + ", " + kVtpName;
}

void PointsCommand::FillJson(ordered_json& json) const {
  json["question"] = Question();
  json["results"] = PointResultsAsJson(results_);
}

}  // namespace

std::unique_ptr<Command> MakePointsCommand() { return std::make_unique<PointsCommand>(); }

}  // namespace zyngrad
