#include <filesystem>
#include <iostream>
#include <map>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <system_error>
#include <vector>

#include "cli/base/OneLine.h"
#include "cli/base/Progress.h"
#include "cli/base/UsageError.h"
#include "cli/commands/Program.h"
#include "cli/commands/commands.h"
#include "cli/field/Expression.h"
#include "cli/field/TestField.h"
#include "cli/options/InterpolationOptions.h"
#include "cli/options/MeshOptions.h"
#include "cli/options/RadialBasisSettings.h"
#include "cli/output/JsonFile.h"
#include "cli/output/MeshReport.h"
#include "cli/output/MeshScale.h"
#include "cli/output/OutputFolder.h"
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
#include "reference_host/parallel/LoadMesh.h"

namespace zyngrad {
namespace {

using nlohmann::ordered_json;

constexpr int kMethods = 3;
constexpr char const* kCsvName = "points.csv";
constexpr char const* kVtpName = "points.vtp";

char const* const kMethodHelp =
    "\n  1: all usable cells of the first cube that holds enough of them"
    "\n  2: the nearest cells of that cube"
    "\n  3: the nearest one or two cells and all usable cells around their nodes";

char const* const kFooter =
    "EXPR is a formula in x, y, z, as for zyngrad gradient. --body is one that is negative inside a body, as "
    "in\n"
    "\"x^2+y^2+z^2-0.25\": values come from cells with their centre outside it. Without --points the points "
    "are laid\n"
    "on its surface, where it meets the edges of the cells, divided into tetrahedra.\n\n"
    "FILE.csv has a header and a row a point: columns x, y and z, and any others, which are carried "
    "through.\n\n"
    "Exit code 1: some values or gradients are not finite; the last line says how many and why.\n\n"
    "The output folder gets results.json (the numbers of the tables), points.csv and points.vtp with value,\n"
    "gradient, exact value and gradient, and errors at each point, in the points' order, what the operator "
    "prints,\n"
    "in log.rankN.txt, and what it is told, in settings.rankN.rbf.\n\n"
    "Examples:\n"
    "  zyngrad points channel.msh --field \"sin(x)*y + z^2\" --points probes.csv\n"
    "  zyngrad points box:20,20,20:tet --field x --body \"(x-0.5)^2+(y-0.5)^2+(z-0.5)^2-0.1\" --spacing "
    "0.02\n"
    "  mpirun -n 2 zyngrad points channel.msh --field \"x*y\" --points probes.csv --body "
    "\"x^2+y^2+z^2-0.25\"";

class PointsCommand : public Command {
 public:
  CLI::App* AddTo(CLI::App& program) override;
  void Run(Ranks const& ranks) override;
  int ExitCode() const override { return exitCode_; }

 private:
  void ReadOptions();
  PointSet ReadPointFile(Ranks const& ranks) const;
  PointSet MakePoints(Ranks const& ranks, reference_host::HostPartition& partition, PointSet fromFile,
                      double meanDistance) const;
  PointResults Interpolate(Ranks const& ranks, reference_host::LoadedMesh& mesh, OutputFolder& folder,
                           PointSet fromFile, Progress& progress);
  ordered_json Question() const;

  MeshOptions meshOptions_;
  std::string fieldText_, pointsFile_, bodyText_, spacingText_, outputFolder_ = "zyngrad-output/points";
  InterpolationOptions options_ = {"3", "500"};

  std::map<std::string, reference_host::BoundaryGroup> groups_;
  std::optional<Expression> field_, body_;
  double spacing_ = 0.0;
  InterpolationSettings settings_;
  int exitCode_ = kSuccess;
};

CLI::App* PointsCommand::AddTo(CLI::App& program) {
  CLI::App* command = program.add_subcommand(
      "points", "Interpolation of a formula's field and gradient to points, with errors");
  AddMeshOptions(*command, meshOptions_);
  command->add_option("--field", fieldText_, "The field, as a formula")->type_name("EXPR")->required();
  command->add_option("--points", pointsFile_, "The points, in a table with columns x, y and z")
      ->type_name("FILE.csv");
  command->add_option("--body", bodyText_, "A body in the mesh: a formula that is negative inside")
      ->type_name("EXPR");
  command
      ->add_option("--spacing", spacingText_, "Merge points of the body's surface that are nearer than this")
      ->type_name("H");
  AddInterpolationOptions(*command, options_, kMethodHelp);
  command->add_option("-o,--output", outputFolder_, "Folder to write to (default zyngrad-output/points)")
      ->type_name("DIR");
  command->footer(kFooter);
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
  settings_ = ReadInterpolationOptions(options_, kMethods);
  groups_ = GroupsByUser(meshOptions_);
}

/// The points of the file, on the first rank.
PointSet PointsCommand::ReadPointFile(Ranks const& ranks) const {
  PointSet points;
  ranks.Together([&] {
    if (!ranks.IsFirst() || pointsFile_.empty()) return;
    std::error_code ignored;
    if (std::filesystem::equivalent(pointsFile_, std::filesystem::path(outputFolder_) / kCsvName, ignored)) {
      throw UsageError("--points " + Quoted(pointsFile_) +
                       " is a file that this run writes: choose another output folder");
    }
    points = ReadPoints(pointsFile_, PointResultColumns());
  });
  return points;
}

/// The points of the file, or else those of the body's surface; rows on the first rank only.
PointSet PointsCommand::MakePoints(Ranks const& ranks, reference_host::HostPartition& partition,
                                   PointSet fromFile, double meanDistance) const {
  PointSet points = std::move(fromFile);
  if (pointsFile_.empty()) points = PointsOnSurface(ranks, partition, *body_, spacing_, meanDistance);
  for (auto* column : {&points.x, &points.y, &points.z}) ranks.Broadcast(*column);
  return points;
}

PointResults PointsCommand::Interpolate(Ranks const& ranks, reference_host::LoadedMesh& mesh,
                                        OutputFolder& folder, PointSet fromFile, Progress& progress) {
  reference_host::HostPartition& partition = *mesh.partition;
  PointResults results;
  results.settings = settings_;
  results.nCells = mesh.summary.nCells;
  results.meanDistance = MeanCellDistance(ranks, partition);
  results.placeDigits = PlaceDigits(ranks, partition);

  progress.Stage("evaluating the formulas");
  UsableCells usable = FindUsableCells(ranks, partition, body_ ? &*body_ : nullptr);
  results.nUsableCells = usable.nCells;
  std::vector<char> const isUsable = [&] {
    std::vector<char> chosen(usable.mark.size(), 0);
    for (std::size_t c = 1; c < chosen.size(); ++c) chosen[c] = usable.mark[c] < 0.0 ? 1 : 0;
    return chosen;
  }();
  std::vector<double> values = MakeCellValues(ranks, partition, *field_, "the field", &isUsable);

  progress.Stage("finding points");
  results.points = MakePoints(ranks, partition, std::move(fromFile), results.meanDistance);
  ranks.Together([&] {
    if (ranks.IsFirst()) results.exact = ExactValuesAt(results.points, *field_);
  });
  results.owners = FindPointOwners(ranks, partition, usable, results.points);

  if (settings_.method == kMethodByNodes) {
    progress.Done();
    PrintLongRowWarning(ranks, partition, &usable, "--search-method 2");
  }
  progress.Stage("interpolating to points");
  settings_.distance = 2.0 * results.meanDistance;
  StageRunSettings(ranks, partition, folder, PointSettingsText(settings_));
  results.run = RunPoints(ranks, mesh, usable, results.points, results.owners, values, folder.logFile());
  ranks.Together([&] {
    if (!ranks.IsFirst()) return;
    results.errors = ErrorsAt(results.run.values, results.exact);
    results.flags = FlagPoints(results.run.values, results.owners, results.meanDistance);
    if (NotFinitePoints(results) > 0)
      results.whyNotFinite = WhyRadialBasisIsNotFinite(settings_.span, results.meanDistance);
  });
  if (ranks.Max(results.whyNotFinite.empty() ? 0.0 : 1.0) > 0.0) exitCode_ = kFoundFaults;
  return results;
}

ordered_json PointsCommand::Question() const {
  ordered_json json = {{"field", fieldText_}};
  json["points"] = pointsFile_.empty() ? ordered_json(nullptr) : ordered_json(pointsFile_);
  json["body"] = bodyText_.empty() ? ordered_json(nullptr) : ordered_json(bodyText_);
  json["spacing"] = spacing_;
  json.update(InterpolationSettingsAsJson(settings_));
  return json;
}

void PointsCommand::Run(Ranks const& ranks) {
  ReadOptions();
  PointSet fromFile = ReadPointFile(ranks);
  Progress progress(ranks.IsFirst() && Progress::StderrIsTerminal());
  OutputPlan plan = {"points", RunSettingsFiles(ranks)};
  plan.files.insert(plan.files.end(), {kCsvName, kVtpName, "results.json"});
  OutputFolder folder(ranks, outputFolder_, plan);

  reference_host::LoadedMesh mesh =
      reference_host::LoadMesh(ranks.communicator(), meshOptions_.mesh, groups_,
                               [&progress](std::string const& stage) { progress.Stage(stage); });
  progress.Done();
  if (ranks.IsFirst()) PrintMeshReport(std::cout, meshOptions_.mesh, mesh.summary);

  PointResults const results = Interpolate(ranks, mesh, folder, std::move(fromFile), progress);
  progress.Done();
  if (ranks.IsFirst()) PrintPointResults(std::cout, results);

  progress.Stage("writing");
  ranks.Together([&] {
    if (!ranks.IsFirst()) return;
    WritePointCsv(folder.Stage(kCsvName), results);
    WritePointVtp(folder.Stage(kVtpName), results);
    ordered_json json = StartResults("points");
    json["mesh"] = MeshReportAsJson(meshOptions_.mesh, mesh.summary);
    json["question"] = Question();
    json["results"] = PointResultsAsJson(results);
    WriteJson(folder.Stage("results.json"), json);
  });
  progress.Done();
  folder.Commit("\nwritten to " + folder.path() + ": results.json, " + kCsvName + ", " + kVtpName + '\n');
}

}  // namespace

std::unique_ptr<Command> MakePointsCommand() { return std::make_unique<PointsCommand>(); }

}  // namespace zyngrad
