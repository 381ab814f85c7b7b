#include <iostream>
#include <map>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

#include "cli/base/OneLine.h"
#include "cli/base/Progress.h"
#include "cli/base/UsageError.h"
#include "cli/commands/Program.h"
#include "cli/commands/commands.h"
#include "cli/faces/FaceErrors.h"
#include "cli/faces/FaceFiles.h"
#include "cli/faces/FaceReport.h"
#include "cli/faces/FaceRun.h"
#include "cli/faces/TargetedFaces.h"
#include "cli/field/Expression.h"
#include "cli/field/TestField.h"
#include "cli/options/InterpolationOptions.h"
#include "cli/options/MeshOptions.h"
#include "cli/output/JsonFile.h"
#include "cli/output/MeshReport.h"
#include "cli/output/MeshScale.h"
#include "cli/output/OutputFolder.h"
#include "cli/output/RunSettings.h"
#include "cli/points/LongRows.h"
#include "cli/systems/SpanRange.h"
#include "reference_host/parallel/LoadMesh.h"

namespace zyngrad {
namespace {

using nlohmann::ordered_json;

constexpr int kMethods = 4;

char const* const kMethodHelp =
    "\n  1: all cells of the first box that holds enough of them"
    "\n  2: the nearest cells of that box"
    "\n  3: the face's two cells and all cells around its nodes"
    "\n  4: cells around two points on the face's normal; no values on boundary faces";

char const* const kFooter =
    "EXPR is a formula in x, y, z, as for zyngrad gradient. The field holds its values at cell centres and, "
    "at the\n"
    "boundary, at face centres; the faces' values are compared with the formula at face centres. A partition "
    "face\n"
    "gets its value at the centre of the cell beyond it, so there it is compared with the formula at that "
    "place.\n\n"
    "--group is given once without \"=\", which chooses the faces, and as often as needed as NAME=KIND, "
    "which gives a\n"
    "boundary its kind.\n\n"
    "Exit code 1: some values are not finite; the last line says how many and why.\n\n"
    "The output folder gets results.json (the numbers of the tables), faces.vtp, or faces.pvtp and its "
    "pieces, what\n"
    "the operator prints, in log.rankN.txt, and what it is told, in settings.rankN.rbf.\n\n"
    "Examples:\n"
    "  zyngrad faces channel.msh --field \"sin(x)*y + z^2\" --group inner\n"
    "  zyngrad faces box:20,20,20:tet --field \"x^2\" --group wall --search-method 3 -o walls\n"
    "  mpirun -n 2 zyngrad faces case/constant/polyMesh --field x --group inner --group "
    "frontAndBack=wall";

class FacesCommand : public Command {
 public:
  CLI::App* AddTo(CLI::App& program) override;
  void Run(Ranks const& ranks) override;
  int ExitCode() const override { return exitCode_; }

 private:
  void ReadOptions();
  void ChooseFaces(std::string const& name);
  void CheckThatThereAreFaces(Ranks const& ranks, TargetedFaces const& faces) const;
  ordered_json Question() const;
  static OutputPlan PlanOutput(Ranks const& ranks);

  MeshOptions meshOptions_;
  std::string fieldText_, outputFolder_ = "zyngrad-output/faces";
  InterpolationOptions options_ = {"4", "1000"};
  bool debugReport_ = false;

  std::map<std::string, reference_host::BoundaryGroup> groups_;
  std::optional<FaceKind> group_;
  InterpolationSettings settings_;
  int exitCode_ = kSuccess;
};

CLI::App* FacesCommand::AddTo(CLI::App& program) {
  CLI::App* command =
      program.add_subcommand("faces", "Interpolation of a formula's field to faces, with errors");
  AddMeshOptions(*command, meshOptions_);
  command->get_option("--group")
      ->description("The faces: " + FaceKindNames() +
                    ".\nWith \"=\": kind of a boundary whose name does not tell it")
      ->type_name("GROUP or NAME=inlet|outlet|wall|symmetry")
      ->required();
  command->add_option("--field", fieldText_, "The field, as a formula")->type_name("EXPR")->required();
  AddInterpolationOptions(*command, options_, kMethodHelp);
  command->add_flag("--debug-report", debugReport_, "The operator prints its accuracy report into the log");
  command->add_option("-o,--output", outputFolder_, "Folder to write to (default zyngrad-output/faces)")
      ->type_name("DIR");
  command->footer(kFooter);
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
  if (!group_) throw UsageError("--group has to choose the faces: " + FaceKindNames());
  groups_ = GroupsByUser(kinds);
  settings_ = ReadInterpolationOptions(options_, kMethods);
  settings_.printsReport = debugReport_;
}

void FacesCommand::CheckThatThereAreFaces(Ranks const& ranks, TargetedFaces const& faces) const {
  if (ranks.Max(faces.count) > 0.0) return;
  if (group_ == FaceKind::Partition)
    throw UsageError("there are no partition faces on one rank: mpirun -n 2 zyngrad faces ... has some");
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

OutputPlan FacesCommand::PlanOutput(Ranks const& ranks) {
  OutputPlan plan = {"faces", FacesFiles(ranks)};
  for (std::string const& file : RunSettingsFiles(ranks)) plan.files.push_back(file);
  plan.files.emplace_back("results.json");
  return plan;
}

void FacesCommand::Run(Ranks const& ranks) {
  ReadOptions();
  Expression const field(fieldText_);
  Progress progress(ranks.IsFirst() && Progress::StderrIsTerminal());
  OutputFolder folder(ranks, outputFolder_, PlanOutput(ranks));

  reference_host::LoadedMesh mesh =
      reference_host::LoadMesh(ranks.communicator(), meshOptions_.mesh, groups_,
                               [&progress](std::string const& stage) { progress.Stage(stage); });
  reference_host::HostPartition& partition = *mesh.partition;
  TargetedFaces const faces = TargetedFacesOf(partition, *group_);
  CheckThatThereAreFaces(ranks, faces);
  progress.Done();
  if (ranks.IsFirst()) PrintMeshReport(std::cout, meshOptions_.mesh, mesh.summary);

  progress.Stage("evaluating the formula");
  int const placeDigits = PlaceDigits(ranks, partition);
  std::vector<double> values = MakeCellValues(ranks, partition, field, "the field");
  std::vector<double> const exact = ExactFaceValues(ranks, faces, *group_, field, placeDigits);
  double const meanDistance = MeanCellDistance(ranks, partition);
  settings_.distance = 2.0 * meanDistance;
  StageRunSettings(ranks, partition, folder, FaceSettingsText(settings_));

  progress.Done();
  if (settings_.method == kMethodByNodes) PrintLongRowWarning(ranks, partition, nullptr, "--search-method 2");
  progress.Stage("interpolating to faces");
  FaceRun const run = RunFaces(ranks, mesh, *group_, values, folder.logFile());
  FaceResults results;
  results.group = *group_;
  results.settings = settings_;
  results.times = run.times;
  results.stencils = SummariseStencils(ranks, {run.rows.members.begin() + 1, run.rows.members.end()});
  results.errors = SummariseFaceErrors(ranks, partition, faces, run.rows.value, exact);
  results.rows = CheckFaceRows(ranks, partition, faces, run.rows.rowSum);
  results.placeDigits = placeDigits;
  if (results.NotFiniteFaces() > 0)
    results.whyNotFinite = WhyRadialBasisIsNotFinite(settings_.span, meanDistance);
  else if (results.rows.nOff > 0 && !results.GivesNoValues())
    results.whyNotFinite = SpanOutOfRange(settings_.span, meanDistance);
  if (!results.whyNotFinite.empty()) exitCode_ = kFoundFaults;
  progress.Done();
  if (ranks.IsFirst()) PrintFaceResults(std::cout, results);

  progress.Stage("writing");
  std::string const surface = StageFaces(ranks, partition, faces, run.rows, exact, folder);
  ranks.Together([&] {
    if (!ranks.IsFirst()) return;
    ordered_json json = StartResults("faces");
    json["mesh"] = MeshReportAsJson(meshOptions_.mesh, mesh.summary);
    json["question"] = Question();
    json["results"] = FaceResultsAsJson(results);
    WriteJson(folder.Stage("results.json"), json);
  });
  progress.Done();
  std::string closing = "\nwritten to " + folder.path() + ": results.json, " + surface + '\n';
  if (debugReport_) closing += "the operator's accuracy report is in log.rankN.txt there\n";
  folder.Commit(closing);
}

}  // namespace

std::unique_ptr<Command> MakeFacesCommand() { return std::make_unique<FacesCommand>(); }

}  // namespace zyngrad
