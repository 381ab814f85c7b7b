#include <algorithm>
#include <iostream>
#include <map>
#include <nlohmann/json.hpp>
#include <string>
#include <utility>
#include <vector>

#include "cli/base/OneLine.h"
#include "cli/base/Progress.h"
#include "cli/base/UsageError.h"
#include "cli/commands/Program.h"
#include "cli/commands/commands.h"
#include "cli/field/Expression.h"
#include "cli/gradient/GradientFiles.h"
#include "cli/gradient/GradientMethods.h"
#include "cli/gradient/GradientReport.h"
#include "cli/gradient/GradientRun.h"
#include "cli/gradient/MethodOption.h"
#include "cli/options/MeshOptions.h"
#include "cli/options/RadialBasisSettings.h"
#include "cli/output/JsonFile.h"
#include "cli/output/MeshReport.h"
#include "cli/output/MeshScale.h"
#include "cli/output/OutputFolder.h"
#include "cli/output/RunSettings.h"
#include "reference_host/parallel/LoadMesh.h"

namespace zyngrad {
namespace {

using nlohmann::ordered_json;

std::string MethodHelp() {
  std::string text = "Methods between commas (default all):";
  for (GradientMethod const& method : GradientMethods()) {
    text += std::string("\n  ") + method.name + ": " + method.description;
  }
  return text + "\n  all: each of them";
}

std::string Footer() {
  return "EXPR is a formula in x, y, z, for instance \"sin(x)*y + z^2\", with + - * / ^, brackets, pi, e "
         "and\n  " +
         FunctionNames() +
         "\n\n"
         "vector takes three --field, the other methods one. Together they take one, which vector then uses "
         "three\n"
         "times, or three, of which the other methods use the first. The field holds the formula's values at "
         "cell\n"
         "centres and, at the boundary, at face centres. Errors are measured against the formula's own "
         "gradient.\n\n"
         "--field-file stands in for --field: FILE is a volScalarField of OpenFOAM, such as 0/T in the case "
         "(a\n"
         "decomposed case has it in its processor folders), or FILE.cgns:ARRAY for a cell-centred array. "
         "Such "
         "a field\n"
         "has no exact gradient: norms and ranges of the gradients take the place of errors.\n\n"
         "The output folder gets results.json (the numbers of the tables), gradient.vtu, or gradient.pvtu "
         "and its\n"
         "pieces, what the operators print, in log.rankN.txt, and what rbf is told, in "
         "settings.rankN.rbf.\n\n"
         "Exit code 1: a method could not be run on this mesh, or its gradient is not finite in some cells; "
         "the last\n"
         "lines say which and why. The other methods' results hold.\n\n"
         "Examples:\n"
         "  zyngrad gradient channel.msh --field \"sin(x)*y + z^2\"\n"
         "  zyngrad gradient box:20,20,20:tet --field \"x^2\" --method plain,iterated --sweeps 5 -o tet20\n"
         "  mpirun -n 2 zyngrad gradient case/constant/polyMesh --field x --group frontAndBack=wall\n"
         "  mpirun -n 4 zyngrad gradient case --field-file 0.5/T\n"
         "  zyngrad gradient wing.cgns --field-file wing.cgns:Pressure --method lsq\n"
         "  zyngrad gradient box:9,9,9 --method vector --field \"x*y\" --field \"y*z\" --field \"z*x\"";
}

void PrintWarnings(std::ostream& out, std::vector<std::string> const& warnings) {
  for (std::string const& warning : warnings) out << "  warning: " << warning << '\n';
  if (!warnings.empty()) out << '\n';
}

class GradientCommand : public Command {
 public:
  CLI::App* AddTo(CLI::App& program) override;
  void Run(Ranks const& ranks) override;
  int ExitCode() const override { return exitCode_; }

 private:
  void ReadOptions();
  void ChooseMethods();
  GradientCase MakeCase(Ranks const& ranks, reference_host::LoadedMesh& mesh, std::string const& logFile);
  bool NeedsSettings() const;
  OutputPlan PlanOutput(Ranks const& ranks) const;
  ordered_json Question() const;

  MeshOptions meshOptions_;
  std::vector<std::string> fieldTexts_, fieldFiles_;  ///< one of them is empty
  std::vector<std::string> methodLists_;
  std::string sweepsText_ = "3", weightText_ = "1", repeatText_ = "3", spanText_ = "500";
  std::string outputFolder_ = "zyngrad-output/gradient";
  bool nonBlocking_ = false, shapeNormalize_ = false;

  std::map<std::string, reference_host::BoundaryGroup> groups_;
  std::vector<Expression> fields_;
  std::vector<Expression> weight_;  ///< one
  std::vector<GradientMethod const*> methods_;
  int nSweeps_ = 0, nRepeat_ = 0;
  RadialBasisSettings radialBasis_;
  std::vector<std::string> warnings_;
  int exitCode_ = kSuccess;
};

CLI::App* GradientCommand::AddTo(CLI::App& program) {
  CLI::App* command = program.add_subcommand(
      "gradient", "Gradient of a field, by each method; of a formula's field with errors");
  AddMeshOptions(*command, meshOptions_);
  AddRepeatableOption(*command, "--field", fieldTexts_, "The field, as a formula; one or three")
      ->type_name("EXPR");
  AddRepeatableOption(*command, "--field-file", fieldFiles_, "The field, from a file; one or three")
      ->type_name("FILE");
  AddMethodOption(*command, methodLists_, MethodHelp());
  command->add_option("--sweeps", sweepsText_, "Sweeps of the iterated method (default 3)")->type_name("N");
  command->add_option("--weight", weightText_, "Coefficient of the weighted method, as a formula (default 1)")
      ->type_name("EXPR");
  command->add_option("--span", spanText_, "Support radius of rbf over the stencil's length (default 500)")
      ->type_name("S");
  command->add_flag("--shape-normalize", shapeNormalize_,
                    "rbf scales each axis by the stencil's extent (and its result with it)");
  command->add_option("-o,--output", outputFolder_, "Folder to write to (default zyngrad-output/gradient)")
      ->type_name("DIR");
  command->add_flag("--non-blocking", nonBlocking_, "Exchange between ranks by non-blocking calls");
  command->add_option("--repeat", repeatText_, "Timed calls after the first (default 3)")->type_name("N");
  command->footer(Footer());
  return command;
}

void GradientCommand::ChooseMethods() {
  std::string const names = methodLists_.empty() ? "all" : JoinedLists(methodLists_);
  methods_ = ChooseGradientMethods(names);
  std::string const option = fieldFiles_.empty() ? " --field" : " --field-file";
  std::size_t const nGiven = std::max(fields_.size(), fieldFiles_.size());
  auto const takes = [this](int n) {
    return std::any_of(methods_.begin(), methods_.end(),
                       [n](GradientMethod const* m) { return m->nFields == n; });
  };
  bool const takesOne = takes(1), takesThree = takes(3);
  // A mixture takes either.
  if ((takesOne && nGiven == 1) || (takesThree && nGiven == 3)) return;
  char const* const wanted = takesOne && takesThree ? "one or three" : takesOne ? "one" : "three";
  throw UsageError("method " + OneLine(names) + " takes " + wanted + option + ", got " +
                   std::to_string(nGiven));
}

void GradientCommand::ReadOptions() {
  if (fieldTexts_.empty() && fieldFiles_.empty()) throw UsageError("--field or --field-file is required");
  if (!fieldTexts_.empty() && !fieldFiles_.empty()) {
    throw UsageError("--field and --field-file exclude each other");
  }
  for (std::string const& text : fieldTexts_) fields_.emplace_back(text);
  weight_.emplace_back(weightText_);
  ChooseMethods();
  nSweeps_ = WholeNumber("--sweeps", sweepsText_, 0);
  nRepeat_ = WholeNumber("--repeat", repeatText_, 1);
  radialBasis_ = {PositiveNumber("--span", spanText_), shapeNormalize_};
  groups_ = GroupsByUser(meshOptions_);
}

bool GradientCommand::NeedsSettings() const {
  return std::any_of(methods_.begin(), methods_.end(),
                     [](GradientMethod const* method) { return method->gradientType == kRadialBasisType; });
}

OutputPlan GradientCommand::PlanOutput(Ranks const& ranks) const {
  OutputPlan plan = {"gradient", GradientGridFiles(ranks)};
  if (NeedsSettings())
    for (std::string const& file : RunSettingsFiles(ranks)) plan.files.push_back(file);
  plan.files.emplace_back("results.json");
  return plan;
}

GradientCase GradientCommand::MakeCase(Ranks const& ranks, reference_host::LoadedMesh& mesh,
                                       std::string const& logFile) {
  reference_host::HostPartition& partition = *mesh.partition;
  GradientCase theCase;
  for (std::string const& file : fieldFiles_) {
    theCase.fields.push_back(ReadTestField(ranks, mesh, file, warnings_));
  }
  for (Expression const& field : fields_) {
    theCase.fields.push_back(MakeTestField(ranks, partition, field));
    theCase.exactL2.push_back(ExactGradientL2(ranks, *partition.mesh(), theCase.fields.back()));
  }
  theCase.isBoundaryCell = BoundaryCells(*partition.mesh());
  theCase.weight = MakeCellValues(ranks, partition, weight_.front(), "the weight");
  theCase.nSweeps = nSweeps_;
  theCase.nRepeat = nRepeat_;
  theCase.radialBasis = radialBasis_;
  theCase.logFile = logFile;
  return theCase;
}

ordered_json GradientCommand::Question() const {
  ordered_json json;
  if (fieldFiles_.empty()) {
    json["fields"] = fieldTexts_;
  } else {
    json["fieldFiles"] = fieldFiles_;
  }
  json["weight"] = weightText_;
  json["sweeps"] = nSweeps_;
  json["span"] = radialBasis_.span;
  json["shapeNormalize"] = radialBasis_.shapeNormalize;
  json["repeat"] = nRepeat_;
  json["nonBlocking"] = nonBlocking_;
  return json;
}

void GradientCommand::Run(Ranks const& ranks) {
  ReadOptions();
  Progress progress(ranks.IsFirst() && Progress::StderrIsTerminal());
  OutputFolder folder(ranks, outputFolder_, PlanOutput(ranks));

  reference_host::LoadedMesh mesh =
      reference_host::LoadMesh(ranks.communicator(), meshOptions_.mesh, groups_,
                               [&progress](std::string const& stage) { progress.Stage(stage); });
  mesh.partition->globals()->UseNonBlockingExch = nonBlocking_ ? 1 : 0;
  progress.Done();
  if (ranks.IsFirst()) PrintMeshReport(std::cout, meshOptions_.mesh, mesh.summary);

  progress.Stage(fieldFiles_.empty() ? "evaluating the formulas" : "reading the field");
  GradientCase theCase = MakeCase(ranks, mesh, folder.logFile());
  if (NeedsSettings()) StageRunSettings(ranks, *mesh.partition, folder, SettingsFileText(radialBasis_));
  std::vector<MethodResult> results;
  for (GradientMethod const* method : methods_) {
    progress.Stage(std::string("computing gradients: ") + method->name);
    results.push_back(RunMethod(ranks, mesh, *method, theCase));
    MethodResult const& result = results.back();
    if (!result.notRun.empty() || !result.whyNotFinite.empty()) exitCode_ = kFoundFaults;
  }
  progress.Done();
  if (ranks.IsFirst()) PrintWarnings(std::cout, warnings_);
  int const placeDigits = PlaceDigits(ranks, *mesh.partition);
  if (ranks.IsFirst()) PrintGradientResults(std::cout, results, theCase.exactL2, placeDigits);

  progress.Stage("writing");
  std::string const grid = StageGradientGrid(ranks, *mesh.partition, theCase, results, folder);
  ranks.Together([&] {
    if (!ranks.IsFirst()) return;
    ordered_json json = StartResults("gradient");
    json["mesh"] = MeshReportAsJson(meshOptions_.mesh, mesh.summary);
    json["question"] = Question();
    if (!warnings_.empty()) json["warnings"] = warnings_;
    if (!theCase.exactL2.empty()) json["exactGradientL2"] = theCase.exactL2;
    json["methods"] = GradientResultsAsJson(results);
    WriteJson(folder.Stage("results.json"), json);
  });
  progress.Done();
  folder.Commit("\nwritten to " + folder.path() + ": results.json, " + grid + '\n');
}

}  // namespace

std::unique_ptr<Command> MakeGradientCommand() { return std::make_unique<GradientCommand>(); }

}  // namespace zyngrad
