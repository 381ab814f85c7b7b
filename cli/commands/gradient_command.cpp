#include <CLI/CLI.hpp>
#include <algorithm>
#include <nlohmann/json.hpp>
#include <optional>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include "cli/base/OneLine.h"
#include "cli/base/UsageError.h"
#include "cli/commands/commands.h"
#include "cli/commands/gradient_help.h"
#include "cli/field/Expression.h"
#include "cli/gradient/GradientFiles.h"
#include "cli/gradient/GradientMethods.h"
#include "cli/gradient/GradientReport.h"
#include "cli/gradient/GradientRun.h"
#include "cli/gradient/MethodOption.h"
#include "cli/options/MeshOptions.h"
#include "cli/options/OptionValue.h"
#include "cli/options/RadialBasisSettings.h"
#include "cli/output/MeshScale.h"
#include "cli/output/RunSettings.h"

namespace zyngrad {
namespace {

using nlohmann::ordered_json;

std::string GradientMethodHelp() {
  std::string text = gradient_help::kMethods;
  for (GradientMethod const& method : GradientMethods()) {
    text += std::string("\n  ") + method.name + ": " + method.description;
  }
  return text + "\n  all: all of these methods";
}

void PrintWarnings(std::ostream& out, std::vector<std::string> const& warnings) {
  for (std::string const& warning : warnings) out << "  warning: " << warning << '\n';
  if (!warnings.empty()) out << '\n';
}

class GradientCommand : public Command {
 public:
  GradientCommand() : Command("gradient", "gradient.json") {}
  CLI::App* AddTo(CLI::App& program) override;

 private:
  void ReadOptions() override;
  std::vector<std::string> OutputFiles(Ranks const& ranks) const override;
  void Compute(CommandRun& run) override;
  void Print(std::ostream& out) const override;
  std::string StageFiles(CommandRun& run) override;
  void FillJson(ordered_json& json) const override;
  bool HasFaults() const override;

  void ChooseMethods();
  GradientCase MakeCase(CommandRun& run);
  bool NeedsSettings() const;
  ordered_json Question() const;

  MeshOptions meshOptions_;
  std::vector<std::string> fieldTexts_, fieldFiles_;  ///< one of them is empty
  std::vector<std::string> methodLists_;
  std::string sweepsText_ = "3", weightText_ = "1", repeatText_ = "3", spanText_ = "500";
  bool nonBlocking_ = false, shapeNormalize_ = false;

  UserGroups groups_;
  std::vector<Expression> fields_;
  std::optional<Expression> weight_;
  std::vector<GradientMethod const*> methods_;
  int nSweeps_ = 0, nRepeat_ = 0;
  RadialBasisSettings radialBasis_;

  GradientCase case_;
  std::vector<std::string> warnings_;
  std::vector<MethodResult> results_;
  int placeDigits_ = kPlaceDigits;
};

CLI::App* GradientCommand::AddTo(CLI::App& program) {
  namespace help = gradient_help;
  CLI::App* command = program.add_subcommand(name(), help::kSummary);
  AddMeshOptions(*command, meshOptions_);
  AddRepeatableOption(*command, "--field", fieldTexts_, help::kField)->type_name("EXPR");
  AddRepeatableOption(*command, "--field-file", fieldFiles_, help::kFieldFile)->type_name("FILE");
  AddMethodOption(*command, methodLists_, GradientMethodHelp());
  command->add_option("--sweeps", sweepsText_, help::kSweeps)->type_name("N");
  command->add_option("--weight", weightText_, help::kWeight)->type_name("EXPR");
  command->add_option("--span", spanText_, help::kSpan)->type_name("S");
  command->add_flag("--shape-normalize", shapeNormalize_, help::kShapeNormalize);
  AddOutputOption(*command);
  command->add_flag("--non-blocking", nonBlocking_, help::kNonBlocking);
  command->add_option("--repeat", repeatText_, help::kRepeat)->type_name("N");
  command->footer(help::kFormula + FunctionNames() + help::kFooter);
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
  // Of methods of both kinds, some run with either number.
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
  weight_.emplace(weightText_);
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

std::vector<std::string> GradientCommand::OutputFiles(Ranks const& ranks) const {
  std::vector<std::string> files = GradientGridFiles(ranks);
  if (NeedsSettings())
    for (std::string const& file : RunSettingsFiles(ranks)) files.push_back(file);
  return files;
}

GradientCase GradientCommand::MakeCase(CommandRun& run) {
  Ranks const& ranks = run.ranks();
  reference_host::HostPartition& partition = run.partition();
  GradientCase theCase;
  for (std::string const& file : fieldFiles_) {
    theCase.fields.push_back(ReadTestField(ranks, run.mesh(), file, warnings_));
  }
  for (Expression const& field : fields_) {
    theCase.fields.push_back(MakeTestField(ranks, partition, field));
    theCase.exactL2.push_back(ExactGradientL2(ranks, *partition.mesh(), theCase.fields.back()));
  }
  theCase.isBoundaryCell = BoundaryCells(*partition.mesh());
  theCase.weight = MakeCellValues(ranks, partition, *weight_, "the weight");
  theCase.nSweeps = nSweeps_;
  theCase.nRepeat = nRepeat_;
  theCase.radialBasis = radialBasis_;
  theCase.logFile = run.folder().logFile();
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

void GradientCommand::Compute(CommandRun& run) {
  run.LoadMesh(meshOptions_.mesh, groups_);
  run.partition().globals()->UseNonBlockingExch = nonBlocking_ ? 1 : 0;
  run.PrintMesh();

  run.progress().Stage(fieldFiles_.empty() ? "evaluating the formulas" : "reading the field");
  case_ = MakeCase(run);
  if (NeedsSettings())
    StageRunSettings(run.ranks(), run.partition(), run.folder(), SettingsFileText(radialBasis_));
  for (GradientMethod const* method : methods_) {
    run.progress().Stage(std::string("computing gradients: ") + method->name);
    results_.push_back(RunMethod(run.ranks(), run.mesh(), *method, case_));
  }
  placeDigits_ = PlaceDigits(run.ranks(), run.partition());
}

void GradientCommand::Print(std::ostream& out) const {
  PrintWarnings(out, warnings_);
  PrintGradientResults(out, results_, case_.exactL2, placeDigits_);
}

std::string GradientCommand::StageFiles(CommandRun& run) {
  return StageGradientGrid(run.ranks(), run.partition(), case_, results_, run.folder());
}

void GradientCommand::FillJson(ordered_json& json) const {
  json["question"] = Question();
  if (!warnings_.empty()) json["warnings"] = warnings_;
  if (!case_.exactL2.empty()) json["exactGradientL2"] = case_.exactL2;
  json["methods"] = GradientResultsAsJson(results_);
}

bool GradientCommand::HasFaults() const {
  return std::any_of(results_.begin(), results_.end(), [](MethodResult const& result) {
    return !result.notRun.empty() || !result.whyNotFinite.empty();
  });
}

}  // namespace

std::unique_ptr<Command> MakeGradientCommand() { return std::make_unique<GradientCommand>(); }

}  // namespace zyngrad
