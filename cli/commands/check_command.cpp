#include <algorithm>
#include <iostream>
#include <map>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "cli/base/OneLine.h"
#include "cli/base/Progress.h"
#include "cli/base/UsageError.h"
#include "cli/check/CheckCells.h"
#include "cli/check/CheckFiles.h"
#include "cli/check/CheckFindings.h"
#include "cli/check/CheckInterpolation.h"
#include "cli/check/CheckReport.h"
#include "cli/check/CheckSummary.h"
#include "cli/commands/Program.h"
#include "cli/commands/commands.h"
#include "cli/faces/TargetedFaces.h"
#include "cli/field/Expression.h"
#include "cli/gradient/MethodOption.h"
#include "cli/options/InterpolationOptions.h"
#include "cli/options/MeshOptions.h"
#include "cli/output/JsonFile.h"
#include "cli/output/MeshReport.h"
#include "cli/output/MeshScale.h"
#include "cli/output/OutputFolder.h"
#include "cli/points/BodySurface.h"
#include "cli/points/LongRows.h"
#include "cli/points/PointSet.h"
#include "cli/points/UsableCells.h"
#include "reference_host/parallel/LoadMesh.h"

namespace zyngrad {
namespace {

using nlohmann::ordered_json;
using reference_host::LoadedMesh;

constexpr char const* kFooter =
    "Every cell is looked at before anyone trusts a run: its shape, the system that the radial-basis "
    "gradient "
    "solves\n"
    "for it, the pivots of least squares, and whether the other gradients are finite; with --group-faces, "
    "--points or\n"
    "--body also the systems of faces and points. docs/use/check.md tells what each line means and what to do "
    "about it.\n\n"
    "The exit code is 0 if all results would be finite and none is marked wrong, 1 if not, with the counts "
    "in "
    "the\n"
    "last lines, 2 for wrong input.\n\n"
    "The output folder gets check.json (the numbers of the tables), check.vtu, or check.pvtu and its pieces, "
    "with the\n"
    "measures of each cell, and what the operators print, in log.rankN.txt.\n\n"
    "Examples:\n"
    "  zyngrad check channel.msh\n"
    "  zyngrad check box:20,20,20:tet:perturb=0.2 --method lsq,rbf --span 50 -o before\n"
    "  mpirun -n 2 zyngrad check case/constant/polyMesh --group-faces inner --points probes.csv";

/// An interpolation's settings from options that carry other names here.
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
  CLI::App* AddTo(CLI::App& program) override;
  void Run(Ranks const& ranks) override;
  int ExitCode() const override { return exitCode_; }

 private:
  void AddMethodOptions(CLI::App& command);
  void ReadOptions();
  void ChooseMethods();
  void ChooseFaces();
  bool ChecksPoints() const { return !pointsFile_.empty() || !bodyText_.empty(); }
  double SpanOr(double standard) const;

  CheckResult CheckAllCells(Ranks const& ranks, LoadedMesh& mesh, OutputFolder& folder);
  CheckResult CheckFaceGroup(Ranks const& ranks, LoadedMesh& mesh, FaceKind group,
                             OutputFolder& folder) const;
  CheckResult CheckPointSet(Ranks const& ranks, LoadedMesh& mesh, PointSet points, OutputFolder& folder);
  ordered_json Question() const;

  MeshOptions meshOptions_;
  std::vector<std::string> methodLists_, hiddenMethodLists_, faceGroupNames_;
  std::string spanText_, pointsFile_, bodyText_, outputFolder_ = "zyngrad-output/check";
  std::string faceMethodText_ = "4", pointMethodText_ = "3", numberText_ = "20";
  bool shapeNormalize_ = false;

  std::map<std::string, reference_host::BoundaryGroup> groups_;
  CellCheckCase cellCase_;
  std::vector<FaceKind> faceGroups_;
  std::optional<Expression> body_;
  InterpolationSettings faceSettings_, pointSettings_;
  std::string grid_;
  int exitCode_ = kSuccess;
};

CLI::App* CheckCommand::AddTo(CLI::App& program) {
  CLI::App* command = program.add_subcommand(
      "check", "What a mesh would do to each method: conditions, faults, worst places");
  AddMeshOptions(*command, meshOptions_);
  AddMethodOptions(*command);
  AddRepeatableOption(*command, "--group-faces", faceGroupNames_,
                      "Check interpolation to these faces, too: " + FaceKindNames() + "; repeat as needed")
      ->type_name("GROUP");
  command->add_option("--points", pointsFile_, "Check interpolation to these points, too")
      ->type_name("FILE.csv");
  command
      ->add_option("--body", bodyText_,
                   "A body in the mesh, negative inside; without --points, points on its surface")
      ->type_name("EXPR");
  command->add_option("-o,--output", outputFolder_, "Folder to write to (default zyngrad-output/check)")
      ->type_name("DIR");
  command->footer(kFooter);
  return command;
}

void CheckCommand::AddMethodOptions(CLI::App& command) {
  AddMethodOption(command, methodLists_,
                  "Gradient methods between commas (default all): " + GradientMethodNames());
  AddRepeatableOption(command, "--methods", hiddenMethodLists_, "An earlier spelling of --method")
      ->group("");  // hidden
  command
      .add_option("--span", spanText_,
                  "Support radius over the stencil's length (default 500, of faces 1000)")
      ->type_name("S");
  command.add_flag("--shape-normalize", shapeNormalize_, "rbf scales each axis by the stencil's extent");
  command.add_option("--face-method", faceMethodText_, "Search method of faces, 1 to 4 (default 4)")
      ->type_name("N");
  command.add_option("--point-method", pointMethodText_, "Search method of points, 1 to 3 (default 3)")
      ->type_name("N");
  command
      .add_option("--search-number", numberText_, "Cells wanted in a stencil, methods 1 and 2 (default 20)")
      ->type_name("N");
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
}

CheckResult CheckCommand::CheckAllCells(Ranks const& ranks, LoadedMesh& mesh, OutputFolder& folder) {
  cellCase_.logFile = folder.logFile();
  std::vector<CheckedSystem> const cells = CheckCells(ranks, mesh, cellCase_);
  grid_ = StageCheckGrid(ranks, *mesh.partition, cells, folder);
  return {"cells", "cells", CellFindings(cellCase_.methods), SummariseCheck(ranks, cells)};
}

CheckResult CheckCommand::CheckFaceGroup(Ranks const& ranks, LoadedMesh& mesh, FaceKind group,
                                         OutputFolder& folder) const {
  if (faceSettings_.method == kMethodByNodes)
    PrintLongRowWarning(ranks, *mesh.partition, nullptr, "--face-method 2");
  std::vector<CheckedSystem> faces;
  ranks.Together([&] { faces = CheckFaces(*mesh.partition, group, faceSettings_, folder.logFile()); });
  return {NameOf(group) + " faces", "faces", InterpolationFindings(), SummariseCheck(ranks, faces)};
}

CheckResult CheckCommand::CheckPointSet(Ranks const& ranks, LoadedMesh& mesh, PointSet points,
                                        OutputFolder& folder) {
  double const meanDistance = MeanCellDistance(ranks, *mesh.partition);
  UsableCells usable = FindUsableCells(ranks, *mesh.partition, body_ ? &*body_ : nullptr);
  if (pointsFile_.empty()) points = PointsOnSurface(ranks, *mesh.partition, *body_, 0.0, meanDistance);
  for (auto* column : {&points.x, &points.y, &points.z}) ranks.Broadcast(*column);
  std::vector<PointOwner> const owners = FindPointOwners(ranks, *mesh.partition, usable, points);
  pointSettings_.distance = 2.0 * meanDistance;
  if (pointSettings_.method == kMethodByNodes)
    PrintLongRowWarning(ranks, *mesh.partition, &usable, "--point-method 2");
  std::vector<CheckedSystem> systems;
  ranks.Together([&] {
    systems =
        CheckPoints(*mesh.partition, usable, points, owners, ranks.rank(), pointSettings_, folder.logFile());
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

void CheckCommand::Run(Ranks const& ranks) {
  ReadOptions();
  PointSet points;
  ranks.Together([&] {
    if (ranks.IsFirst() && !pointsFile_.empty()) points = ReadPoints(pointsFile_, {});
  });
  Progress progress(ranks.IsFirst() && Progress::StderrIsTerminal());
  OutputPlan plan = {"check", CheckGridFiles(ranks)};
  plan.files.emplace_back("check.json");
  OutputFolder folder(ranks, outputFolder_, plan);

  LoadedMesh mesh =
      reference_host::LoadMesh(ranks.communicator(), meshOptions_.mesh, groups_,
                               [&progress](std::string const& stage) { progress.Stage(stage); });
  progress.Done();
  if (ranks.IsFirst()) PrintMeshReport(std::cout, meshOptions_.mesh, mesh.summary);

  progress.Stage("checking cells");
  std::vector<CheckResult> results = {CheckAllCells(ranks, mesh, folder)};
  for (FaceKind const group : faceGroups_) {
    progress.Stage("checking " + NameOf(group) + " faces");
    results.push_back(CheckFaceGroup(ranks, mesh, group, folder));
  }
  if (ChecksPoints()) {
    progress.Stage("checking points");
    results.push_back(CheckPointSet(ranks, mesh, std::move(points), folder));
  }
  progress.Done();
  int const placeDigits = PlaceDigits(ranks, *mesh.partition);
  for (CheckResult& result : results) result.placeDigits = placeDigits;
  if (ranks.IsFirst()) {
    for (CheckResult const& result : results) PrintCheckResult(std::cout, result);
    PrintVerdict(std::cout, results);
  }

  progress.Stage("writing");
  std::vector<std::string> const notFinite = FoundInWords(results, Severity::NotFinite);
  ranks.Together([&] {
    if (!ranks.IsFirst()) return;
    ordered_json json = StartResults("check");
    json["mesh"] = MeshReportAsJson(meshOptions_.mesh, mesh.summary);
    json["question"] = Question();
    json["finite"] = notFinite.empty();
    json["notFinite"] = notFinite;
    json["sound"] = AreSound(results);
    json["wrong"] = FoundInWords(results, Severity::Wrong);
    json["checked"] = ordered_json::array();
    for (CheckResult const& result : results) json["checked"].push_back(CheckResultAsJson(result));
    WriteJson(folder.Stage("check.json"), json);
  });
  progress.Done();
  exitCode_ = AreSound(results) ? kSuccess : kFoundFaults;
  folder.Commit("\nwritten to " + folder.path() + ": check.json, " + grid_ + '\n');
}

}  // namespace

std::unique_ptr<Command> MakeCheckCommand() { return std::make_unique<CheckCommand>(); }

}  // namespace zyngrad
