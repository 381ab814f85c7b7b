#include <CLI/CLI.hpp>
#include <algorithm>
#include <iostream>
#include <nlohmann/json.hpp>
#include <optional>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include "cli/base/OneLine.h"
#include "cli/base/UsageError.h"
#include "cli/check/CheckCells.h"
#include "cli/check/CheckFaces.h"
#include "cli/check/CheckFiles.h"
#include "cli/check/CheckFindings.h"
#include "cli/check/CheckPoints.h"
#include "cli/check/CheckReport.h"
#include "cli/check/CheckSummary.h"
#include "cli/commands/check_help.h"
#include "cli/commands/commands.h"
#include "cli/faces/TargetedFaces.h"
#include "cli/field/Expression.h"
#include "cli/gradient/MethodOption.h"
#include "cli/options/InterpolationOptions.h"
#include "cli/options/MeshOptions.h"
#include "cli/options/OptionValue.h"
#include "cli/output/MeshScale.h"
#include "cli/points/BodySurface.h"
#include "cli/points/LongRows.h"
#include "cli/points/PointSet.h"
#include "cli/points/UsableCells.h"

namespace zyngrad {
namespace {

using nlohmann::ordered_json;

/// The settings of an interpolation, from options that have other names in this command.
InterpolationSettings ReadInterpolation(std::string const& methodOption, std::string const& method,
                                        int nMethods, double span, std::string const& number) {
  InterpolationSettings settings;
  settings.method = WholeNumber(methodOption, method, 1);
  if (settings.method > nMethods)
    throw UsageError(methodOption + ' ' + Quoted(method) + ": expected 1 to " + std::to_string(nMethods));
  settings.span = span;
  settings.number = WholeNumber("--search-number", number, 1);
  return settings;
}

class CheckCommand : public Command {
 public:
  CheckCommand() : Command("check", "check.json") {}
  CLI::App* AddTo(CLI::App& program) override;

 private:
  void ReadOptions() override;
  void ReadInput(Ranks const& ranks) override;
  std::vector<std::string> OutputFiles(Ranks const& ranks) const override { return CheckGridFiles(ranks); }
  void Compute(CommandRun& run) override;
  void Print(std::ostream& out) const override;
  std::string StageFiles(CommandRun& run) override;
  void FillJson(ordered_json& json) const override;
  bool HasFaults() const override { return !AreSound(results_); }

  void AddMethodOptions(CLI::App& command);
  void ChooseMethods();
  void ChooseFaces();
  bool ChecksPoints() const { return !pointsFile_.empty() || !bodyText_.empty(); }
  double SpanOr(double standard) const;

  CheckResult CheckAllCells(CommandRun& run);
  CheckResult CheckFaceGroup(CommandRun& run, FaceKind group);
  void WarnOfLongRows(CommandRun& run, UsableCells const* usable, std::string const& option);
  CheckResult CheckPointSet(CommandRun& run);
  ordered_json Question() const;

  MeshOptions meshOptions_;
  std::vector<std::string> methodLists_, hiddenMethodLists_, faceGroupNames_;
  std::string spanText_, pointsFile_, bodyText_;
  std::string faceMethodText_ = "4", pointMethodText_ = "3", numberText_ = "20";
  bool shapeNormalize_ = false;

  UserGroups groups_;
  reference_host::MeshLoading loading_;
  CellCheckCase cellCase_;
  std::vector<FaceKind> faceGroups_;
  std::optional<Expression> body_;
  InterpolationSettings faceSettings_, pointSettings_;

  PointSet fromFile_;  ///< on the first rank
  std::vector<CheckedSystem> cells_;
  std::vector<CheckResult> results_;
  std::vector<std::string> warnings_;
};

CLI::App* CheckCommand::AddTo(CLI::App& program) {
  namespace help = check_help;
  CLI::App* command = program.add_subcommand(name(), help::kSummary);
  AddMeshOptions(*command, meshOptions_);
  AddLoadingOptions(*command, meshOptions_);
  AddMethodOptions(*command);
  AddRepeatableOption(*command, "--group-faces", faceGroupNames_,
                      help::kGroupFaces + FaceKindNames() + "; may be repeated")
      ->type_name("GROUP");
  command->add_option("--points", pointsFile_, help::kPoints)->type_name("FILE.csv");
  command->add_option("--body", bodyText_, help::kBody)->type_name("EXPR");
  AddOutputOption(*command);
  AddJsonOption(*command);
  command->footer(help::kFooter);
  return command;
}

void CheckCommand::AddMethodOptions(CLI::App& command) {
  namespace help = check_help;
  AddMethodOption(command, methodLists_, help::kMethods + GradientMethodNames());
  AddRepeatableOption(command, "--methods", hiddenMethodLists_, "An earlier spelling of --method")
      ->group("");  // hidden
  command.add_option("--span", spanText_, help::kSpan)->type_name("S");
  command.add_flag("--shape-normalize", shapeNormalize_, help::kShapeNormalize);
  command.add_option("--face-method", faceMethodText_, help::kFaceMethod)->type_name("N");
  command.add_option("--point-method", pointMethodText_, help::kPointMethod)->type_name("N");
  command.add_option("--search-number", numberText_, help::kSearchNumber)->type_name("N");
}

void CheckCommand::ChooseMethods() {
  std::vector<std::string> lists = methodLists_;
  lists.insert(lists.end(), hiddenMethodLists_.begin(), hiddenMethodLists_.end());
  cellCase_.methods = ChooseGradientMethods(lists.empty() ? "all" : JoinedLists(lists));
}

void CheckCommand::ChooseFaces() {
  for (std::string const& name : faceGroupNames_) {
    std::optional<FaceKind> const group = FaceKindFromName(name);
    if (!group) throw UsageError("--group-faces " + Quoted(name) + ": expected " + FaceKindNames());
    if (std::find(faceGroups_.begin(), faceGroups_.end(), *group) == faceGroups_.end())
      faceGroups_.push_back(*group);
  }
}

double CheckCommand::SpanOr(double standard) const {
  return spanText_.empty() ? standard : PositiveNumber("--span", spanText_);
}

void CheckCommand::ReadOptions() {
  ChooseMethods();
  ChooseFaces();
  cellCase_.radialBasis = {SpanOr(500.0), shapeNormalize_};
  faceSettings_ = ReadInterpolation("--face-method", faceMethodText_, 4, SpanOr(1000.0), numberText_);
  pointSettings_ = ReadInterpolation("--point-method", pointMethodText_, 3, SpanOr(500.0), numberText_);
  if (!bodyText_.empty()) body_.emplace(bodyText_);
  groups_ = GroupsByUser(meshOptions_);
  loading_ = LoadingByUser(meshOptions_);
}

void CheckCommand::ReadInput(Ranks const& ranks) {
  ranks.Together([&] {
    if (ranks.IsFirst() && !pointsFile_.empty()) fromFile_ = ReadPoints(pointsFile_, {});
  });
}

CheckResult CheckCommand::CheckAllCells(CommandRun& run) {
  cellCase_.logFile = run.folder().logFile();
  cells_ = CheckCells(run.ranks(), run.mesh(), cellCase_);
  return {"cells", "cells", CellFindings(cellCase_.methods), SummariseCheck(run.ranks(), cells_)};
}

void CheckCommand::WarnOfLongRows(CommandRun& run, UsableCells const* usable, std::string const& option) {
  std::string const warning = LongRowWarning(run.ranks(), run.partition(), usable, option);
  if (warning.empty()) return;
  warnings_.push_back(warning);
  if (run.ranks().IsFirst() && !PrintsJson()) std::cout << "  warning: " << warning << "\n\n" << std::flush;
}

CheckResult CheckCommand::CheckFaceGroup(CommandRun& run, FaceKind group) {
  if (faceSettings_.method == kMethodByNodes) WarnOfLongRows(run, nullptr, "--face-method 2");
  std::vector<CheckedSystem> faces;
  run.ranks().Together(
      [&] { faces = CheckFaces(run.partition(), group, faceSettings_, run.folder().logFile()); });
  return {NameOf(group) + " faces", "faces", InterpolationFindings(), SummariseCheck(run.ranks(), faces)};
}

CheckResult CheckCommand::CheckPointSet(CommandRun& run) {
  Ranks const& ranks = run.ranks();
  reference_host::HostPartition& partition = run.partition();
  double const meanDistance = MeanCellDistance(ranks, partition);
  UsableCells usable = FindUsableCells(ranks, partition, body_ ? &*body_ : nullptr);
  PointSet points = std::move(fromFile_);
  if (pointsFile_.empty()) points = PointsOnSurface(ranks, partition, *body_, 0.0, meanDistance);
  for (auto* column : {&points.x, &points.y, &points.z}) ranks.Broadcast(*column);
  std::vector<PointOwner> const owners = FindPointOwners(ranks, partition, usable, points);
  pointSettings_.distance = 2.0 * meanDistance;
  if (pointSettings_.method == kMethodByNodes) WarnOfLongRows(run, &usable, "--point-method 2");
  std::vector<CheckedSystem> systems;
  ranks.Together([&] {
    systems =
        CheckPoints(partition, usable, points, owners, ranks.rank(), pointSettings_, run.folder().logFile());
  });
  return {"points", "points", InterpolationFindings(), SummariseCheck(ranks, systems)};
}

ordered_json CheckCommand::Question() const {
  ordered_json json;
  for (GradientMethod const* method : cellCase_.methods) json["methods"].push_back(method->name);
  json["span"] = cellCase_.radialBasis.span;
  json["shapeNormalize"] = shapeNormalize_;
  json["faceGroups"] = ordered_json::array();
  for (FaceKind const group : faceGroups_) json["faceGroups"].push_back(NameOf(group));
  if (!faceGroups_.empty()) json["faces"] = InterpolationSettingsAsJson(faceSettings_);
  json["points"] = pointsFile_.empty() ? ordered_json(nullptr) : ordered_json(pointsFile_);
  json["body"] = bodyText_.empty() ? ordered_json(nullptr) : ordered_json(bodyText_);
  if (ChecksPoints()) json["pointSettings"] = InterpolationSettingsAsJson(pointSettings_);
  return json;
}

void CheckCommand::Compute(CommandRun& run) {
  run.LoadMesh(meshOptions_.mesh, groups_, loading_);
  run.PrintMesh();

  run.progress().Stage("checking cells");
  results_.push_back(CheckAllCells(run));
  for (FaceKind const group : faceGroups_) {
    run.progress().Stage("checking " + NameOf(group) + " faces");
    results_.push_back(CheckFaceGroup(run, group));
  }
  if (ChecksPoints()) {
    run.progress().Stage("checking points");
    results_.push_back(CheckPointSet(run));
  }
  int const placeDigits = PlaceDigits(run.ranks(), run.partition());
  for (CheckResult& result : results_) result.placeDigits = placeDigits;
}

void CheckCommand::Print(std::ostream& out) const {
  for (CheckResult const& result : results_) PrintCheckResult(out, result);
  PrintVerdict(out, results_);
}

std::string CheckCommand::StageFiles(CommandRun& run) {
  return StageCheckGrid(run.ranks(), run.partition(), cells_, run.folder());
}

void CheckCommand::FillJson(ordered_json& json) const {
  std::vector<std::string> const notFinite = FoundInWords(results_, Severity::NotFinite);
  json["question"] = Question();
  if (!warnings_.empty()) json["warnings"] = warnings_;
  json["finite"] = notFinite.empty();
  json["notFinite"] = notFinite;
  json["sound"] = AreSound(results_);
  json["wrong"] = FoundInWords(results_, Severity::Wrong);
  json["checked"] = ordered_json::array();
  for (CheckResult const& result : results_) json["checked"].push_back(CheckResultAsJson(result));
}

}  // namespace

std::unique_ptr<Command> MakeCheckCommand() { return std::make_unique<CheckCommand>(); }

}  // namespace zyngrad
