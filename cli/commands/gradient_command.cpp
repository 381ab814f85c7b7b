#include <CLI/CLI.hpp>
#include <algorithm>
#include <iostream>
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include "cli/base/OneLine.h"
#include "cli/base/TextTable.h"
#include "cli/base/Timing.h"
#include "cli/base/UsageError.h"
#include "cli/case_files/GradientsInCase.h"
#include "cli/commands/commands.h"
#include "cli/commands/gradient_help.h"
#include "cli/derive/DerivedRun.h"
#include "cli/field/Expression.h"
#include "cli/field/FieldFiles.h"
#include "cli/field/field_file_help.h"
#include "cli/gradient/GradientFiles.h"
#include "cli/gradient/GradientMethods.h"
#include "cli/gradient/GradientReport.h"
#include "cli/gradient/GradientRun.h"
#include "cli/gradient/GradientTime.h"
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

std::string DeriveHelp() {
  std::string text = gradient_help::kDerive;
  for (Quantity const& quantity : Quantities())
    text += std::string("\n  ") + quantity.name + ": " + quantity.description;
  return text;
}

/// How long a time took, as soon as it is done: a run of many times shows where it is.
void PrintTimeLine(GradientTime const& time) {
  std::cout << "time " << time.name << ": read in " << Fixed(time.readSeconds, 2) << " s, computed in "
            << Fixed(time.computeSeconds, 2) << " s, written in " << Fixed(time.writeSeconds, 2) << " s"
            << std::endl;
}

class GradientCommand : public Command {
 public:
  GradientCommand() : Command("gradient", "gradient.json") {}
  CLI::App* AddTo(CLI::App& program) override;

 private:
  void ReadOptions() override;
  void ReadInput(Ranks const& ranks) override { fieldFiles_.FindTimes(ranks, meshOptions_.mesh); }
  std::vector<std::string> OutputFiles(Ranks const& ranks) const override;
  void Compute(CommandRun& run) override;
  void Print(std::ostream& out) const override;
  void PrintDerived(std::ostream& out) const;
  std::string StageFiles(CommandRun& run) override;
  void AfterCommit() override;
  void FillJson(ordered_json& json) const override;
  bool HasFaults() const override;

  void ChooseMethods();
  void CheckDeriving() const;
  GradientCase MakeCase(CommandRun& run);
  void AddFormulas(CommandRun& run, GradientCase& theCase) const;
  void ReadFields(CommandRun& run, GradientTime& time);
  void ApplyMethods(CommandRun& run, GradientTime& time);
  void ComputeTime(CommandRun& run, GradientGrid& grid);
  std::string StageOf(std::string const& work) const;
  void OpenCase(CommandRun& run);
  void CheckForVector() const;
  std::vector<DerivedOfField> DeriveFrom(CommandRun& run, GradientTime const& time) const;
  bool NeedsSettings() const;
  ordered_json Question() const;

  MeshOptions meshOptions_;
  std::vector<std::string> fieldTexts_;  ///< empty with fields from files
  FieldFileOptions fieldFileOptions_;
  std::vector<std::string> methodLists_;
  std::string sweepsText_ = "3", weightText_ = "1", repeatText_ = "3", spanText_ = "500";
  bool nonBlocking_ = false, shapeNormalize_ = false;
  std::vector<std::string> deriveLists_;
  bool writeCase_ = false, overwrite_ = false;

  UserGroups groups_;
  reference_host::MeshLoading loading_;
  FieldFiles fieldFiles_;
  std::vector<Expression> fields_;
  std::optional<Expression> weight_;
  std::vector<GradientMethod const*> methods_;
  std::vector<Quantity const*> quantities_;
  int nSweeps_ = 0, nRepeat_ = 0;
  RadialBasisSettings radialBasis_;

  GradientCase case_;
  std::vector<std::unique_ptr<MethodRun>> runs_;  ///< by method; null before its set-up and once it is done
  std::vector<std::string> warnings_;
  std::vector<GradientTime> times_;                   ///< one for a run without times
  std::vector<std::vector<DerivedOfField>> derived_;  ///< by time
  std::optional<GradientsInCase> caseResults_;        ///< with --write-case
  std::string gridToOpen_;
  int placeDigits_ = kPlaceDigits;
};

CLI::App* GradientCommand::AddTo(CLI::App& program) {
  namespace help = gradient_help;
  CLI::App* command = program.add_subcommand(name(), help::kSummary);
  AddMeshOptions(*command, meshOptions_);
  AddLoadingOptions(*command, meshOptions_);
  AddRepeatableOption(*command, "--field", fieldTexts_, help::kField)->type_name("EXPR");
  AddFieldFileOptions(*command, fieldFileOptions_);
  AddMethodOption(*command, methodLists_, GradientMethodHelp());
  command->add_option("--sweeps", sweepsText_, help::kSweeps)->type_name("N");
  command->add_option("--weight", weightText_, help::kWeight)->type_name("EXPR");
  command->add_option("--span", spanText_, help::kSpan)->type_name("S");
  command->add_flag("--shape-normalize", shapeNormalize_, help::kShapeNormalize);
  AddRepeatableOption(*command, "--derive", deriveLists_, DeriveHelp())->type_name("NAMES");
  command->add_flag("--write-case", writeCase_, help::kWriteCase);
  command->add_flag("--overwrite", overwrite_, help::kOverwrite);
  AddOutputOption(*command);
  command->add_flag("--non-blocking", nonBlocking_, help::kNonBlocking);
  command->add_option("--repeat", repeatText_, help::kRepeat)->type_name("N");
  command->footer(help::kFormula + FunctionNames() + help::kFields + field_file_help::kFieldFiles +
                  help::kOutput);
  return command;
}

void GradientCommand::ChooseMethods() {
  std::string const names = methodLists_.empty() ? "all" : JoinedLists(methodLists_);
  methods_ = ChooseGradientMethods(names);
  if (!fieldFiles_.IsEmpty() || !quantities_.empty()) return;
  std::size_t const nGiven = fields_.size();
  auto const takes = [this](int n) {
    return std::any_of(methods_.begin(), methods_.end(),
                       [n](GradientMethod const* m) { return m->nFields == n; });
  };
  bool const takesOne = takes(1), takesThree = takes(3);
  // Of methods of both kinds, some run with either number.
  if ((takesOne && nGiven == 1) || (takesThree && nGiven == 3)) return;
  char const* const wanted = takesOne && takesThree ? "one or three" : takesOne ? "one" : "three";
  throw UsageError("method " + OneLine(names) + " takes " + wanted + " --field, got " +
                   std::to_string(nGiven));
}

void GradientCommand::CheckDeriving() const {
  if (!quantities_.empty() && fieldFiles_.IsEmpty() && fields_.size() != 3) {
    throw UsageError("--derive needs a vector: three --field, its components, or --field-file; got " +
                     std::to_string(fields_.size()) + " --field");
  }
  if (overwrite_ && !writeCase_) throw UsageError("--overwrite belongs to --write-case, which is not given");
  if (!writeCase_) return;
  if (fieldFiles_.IsEmpty())
    throw UsageError("--write-case writes results of --field-file into its case; a formula has none");
  if (methods_.size() != 1) {
    throw UsageError("--write-case writes the results of one method: choose it, for example with --method " +
                     std::string(methods_.front()->name));
  }
}

void GradientCommand::ReadOptions() {
  fieldFiles_ = FieldFiles(fieldFileOptions_);
  if (fieldTexts_.empty() && fieldFiles_.IsEmpty()) throw UsageError("--field or --field-file is required");
  if (!fieldTexts_.empty() && !fieldFiles_.IsEmpty()) {
    throw UsageError("--field and --field-file exclude each other");
  }
  for (std::string const& text : fieldTexts_) fields_.emplace_back(text);
  weight_.emplace(weightText_);
  quantities_ = ChooseQuantities(deriveLists_);
  ChooseMethods();
  CheckDeriving();
  nSweeps_ = WholeNumber("--sweeps", sweepsText_, 0);
  nRepeat_ = WholeNumber("--repeat", repeatText_, 1);
  radialBasis_ = {PositiveNumber("--span", spanText_), shapeNormalize_};
  groups_ = GroupsByUser(meshOptions_);
  loading_ = LoadingByUser(meshOptions_);
}

bool GradientCommand::NeedsSettings() const {
  return std::any_of(methods_.begin(), methods_.end(),
                     [](GradientMethod const* method) { return method->gradientType == kRadialBasisType; });
}

std::vector<std::string> GradientCommand::OutputFiles(Ranks const& ranks) const {
  std::vector<std::string> files = GradientGridFiles(ranks, fieldFiles_.times());
  if (NeedsSettings())
    for (std::string const& file : RunSettingsFiles(ranks)) files.push_back(file);
  return files;
}

/// Three formulas of which something is derived are the components of one vector, u.
void GradientCommand::AddFormulas(CommandRun& run, GradientCase& theCase) const {
  bool const isVector = !quantities_.empty() && !fields_.empty();
  if (isVector) theCase.fields.push_back({"u", {}});
  for (Expression const& formula : fields_) {
    TestField field = MakeTestField(run.ranks(), run.partition(), formula);
    theCase.exactL2.push_back(ExactGradientL2(run.ranks(), *run.partition().mesh(), field));
    if (!isVector) theCase.fields.push_back({"", {}});
    theCase.fields.back().component.push_back(std::move(field));
  }
  theCase.onlyFirst = !fields_.empty() && !isVector;
}

GradientCase GradientCommand::MakeCase(CommandRun& run) {
  Ranks const& ranks = run.ranks();
  reference_host::HostPartition& partition = run.partition();
  GradientCase theCase;
  AddFormulas(run, theCase);
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
  if (fieldFiles_.IsEmpty()) {
    json["fields"] = fieldTexts_;
  } else {
    fieldFiles_.AddToQuestion(json);
  }
  json["weight"] = weightText_;
  json["sweeps"] = nSweeps_;
  json["span"] = radialBasis_.span;
  json["shapeNormalize"] = radialBasis_.shapeNormalize;
  json["repeat"] = nRepeat_;
  json["nonBlocking"] = nonBlocking_;
  if (!quantities_.empty()) {
    json["derive"] = ordered_json::array();
    for (Quantity const* quantity : quantities_) json["derive"].push_back(quantity->name);
  }
  if (writeCase_) {
    json["writeCase"] = true;
    json["overwrite"] = overwrite_;
  }
  return json;
}

/// A stage of the progress line, with the time that it belongs to.
std::string GradientCommand::StageOf(std::string const& work) const {
  if (!fieldFiles_.HasTimes()) return work;
  return "time " + fieldFiles_.times()[times_.size()] + " (" + std::to_string(times_.size() + 1) + " of " +
         std::to_string(fieldFiles_.times().size()) + "): " + work;
}

void GradientCommand::ReadFields(CommandRun& run, GradientTime& time) {
  if (fieldFiles_.IsEmpty()) return;
  run.progress().Stage(StageOf("reading the fields"));
  case_.fields.clear();  // frees those of the time before
  for (FileField& field : fieldFiles_.Read(run.ranks(), run.mesh(), times_.size(), warnings_)) {
    case_.fields.push_back({field.name, std::move(field.component)});
    time.fields.push_back({field.name, {}, std::move(field.patches)});
  }
}

void GradientCommand::ApplyMethods(CommandRun& run, GradientTime& time) {
  bool const isLast = times_.size() + 1 == fieldFiles_.times().size();
  for (std::size_t m = 0; m < methods_.size(); ++m) {
    GradientMethod const& method = *methods_[m];
    run.progress().Stage(StageOf(std::string("computing gradients: ") + method.name));
    if (!runs_[m]) runs_[m] = std::make_unique<MethodRun>(run.ranks(), run.mesh(), method, case_);
    time.results.push_back(runs_[m]->Apply(case_));
    if (isLast) runs_[m].reset();
  }
}

void GradientCommand::CheckForVector() const {
  bool const hasVector = std::any_of(case_.fields.begin(), case_.fields.end(),
                                     [](GradientField const& field) { return field.IsVector(); });
  if (!quantities_.empty() && !hasVector)
    throw UsageError("--derive needs a vector, but " + OneLine(case_.fields.front().name) + " is a scalar");
}

/// Collective. Opens the case, once it is known which of the fields are vectors.
void GradientCommand::OpenCase(CommandRun& run) {
  if (!writeCase_ || caseResults_) return;
  caseResults_.emplace(run.ranks(), run.mesh(), fieldFiles_, quantities_, overwrite_);
  caseResults_->Check(case_.fields);
}

/// Collective. Without --derive, the gradient of a vector is derived only for the case.
std::vector<DerivedOfField> GradientCommand::DeriveFrom(CommandRun& run, GradientTime const& time) const {
  std::vector<Quantity const*> quantities = quantities_;
  if (quantities.empty() && writeCase_) quantities = ChooseQuantities({"grad"});
  if (quantities.empty()) return {};
  return DeriveFromGradients(run.ranks(), run.partition(), quantities, case_, time.results);
}

/// Collective. Reads the fields of the next time, applies the methods and stages the grid.
void GradientCommand::ComputeTime(CommandRun& run, GradientGrid& grid) {
  Ranks const& ranks = run.ranks();
  GradientTime time;
  time.name = fieldFiles_.times()[times_.size()];
  Stopwatch const reading;
  ReadFields(run, time);
  CheckForVector();
  OpenCase(run);
  time.readSeconds = ranks.Max(reading.Seconds());
  Stopwatch const computing;
  ApplyMethods(run, time);
  std::vector<DerivedOfField> derived = DeriveFrom(run, time);
  time.computeSeconds = ranks.Max(computing.Seconds());
  run.progress().Stage(StageOf("writing"));
  Stopwatch const writing;
  grid.Stage(times_.size(), case_, time.results, DerivedArrays(derived));
  if (caseResults_) caseResults_->Write(times_.size(), case_, time.results.front(), derived);
  time.writeSeconds = ranks.Max(writing.Seconds());
  time.DropArrays();
  for (DerivedOfField& one : derived) one.DropArrays();
  derived_.push_back(std::move(derived));
  times_.push_back(std::move(time));
}

void GradientCommand::Compute(CommandRun& run) {
  run.LoadMesh(meshOptions_.mesh, groups_, loading_);
  run.partition().globals()->UseNonBlockingExch = nonBlocking_ ? 1 : 0;
  run.PrintMesh();

  run.progress().Stage("evaluating the formulas");
  case_ = MakeCase(run);
  if (NeedsSettings())
    StageRunSettings(run.ranks(), run.partition(), run.folder(), SettingsFileText(radialBasis_));
  runs_.resize(methods_.size());
  GradientGrid grid(run.ranks(), run.partition(), run.folder(), fieldFiles_.times());
  while (times_.size() < fieldFiles_.times().size()) {
    ComputeTime(run, grid);
    run.progress().Done();
    if (run.ranks().IsFirst() && fieldFiles_.HasTimes()) PrintTimeLine(times_.back());
  }
  gridToOpen_ = grid.StageIndex();
  placeDigits_ = PlaceDigits(run.ranks(), run.partition());
}

void GradientCommand::Print(std::ostream& out) const {
  PrintWarnings(out, warnings_);
  std::vector<FieldsAtTime> fields;
  for (GradientTime const& time : times_) fields.push_back({time.name, time.fields});
  PrintBoundaryValues(out, fields);
  if (fieldFiles_.HasTimes())
    PrintGradientResults(out, times_, placeDigits_);
  else
    PrintGradientResults(out, times_.front().results, case_.exactL2, placeDigits_);
  PrintDerived(out);
  if (writeCase_ && HasFaults()) out << "\nnothing is written into the case, because of these faults\n";
}

void GradientCommand::PrintDerived(std::ostream& out) const {
  if (quantities_.empty()) return;
  for (std::size_t t = 0; t < times_.size(); ++t) {
    if (fieldFiles_.HasTimes()) out << "\ntime " << times_[t].name << '\n';
    for (DerivedOfField const& one : derived_[t]) PrintDerivedFields(out, one, placeDigits_);
  }
}

/// The files of the case go to their places before those of the output folder, because they can be put back.
std::string GradientCommand::StageFiles(CommandRun& /*run*/) {
  if (!caseResults_) return gridToOpen_;
  if (HasFaults()) {
    caseResults_.reset();
    return gridToOpen_;
  }
  caseResults_->Place();
  std::string text = gridToOpen_ + "\nwritten into the case: ";
  for (std::string const& name : caseResults_->names())
    text += (name == caseResults_->names().front() ? "" : ", ") + name;
  return text;
}

void GradientCommand::AfterCommit() {
  if (caseResults_) caseResults_->Keep();
}

void GradientCommand::FillJson(ordered_json& json) const {
  json["question"] = Question();
  if (!warnings_.empty()) json["warnings"] = warnings_;
  if (!case_.exactL2.empty()) json["exactGradientL2"] = case_.exactL2;
  AddGradientResults(json, times_);
  if (!quantities_.empty()) {
    for (std::size_t t = 0; t < times_.size(); ++t) {
      ordered_json& to = times_.front().name.empty() ? json : json["times"][t];
      to["derived"] = ordered_json::array();
      for (DerivedOfField const& one : derived_[t])
        for (ordered_json& entry : DerivedFieldsAsJson(one)) to["derived"].push_back(std::move(entry));
    }
  }
  if (caseResults_) json["writtenIntoCase"] = caseResults_->names();
}

bool GradientCommand::HasFaults() const {
  for (GradientTime const& time : times_)
    for (MethodResult const& result : time.results)
      if (!result.notRun.empty() || !result.whyNotFinite.empty()) return true;
  for (std::vector<DerivedOfField> const& time : derived_)
    for (DerivedOfField const& one : time)
      if (one.NotFiniteCells() > 0) return true;
  return false;
}

}  // namespace

std::unique_ptr<Command> MakeGradientCommand() { return std::make_unique<GradientCommand>(); }

}  // namespace zyngrad
