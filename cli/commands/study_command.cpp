#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>
#include <ostream>
#include <string>
#include <vector>

#include "cli/base/OneLine.h"
#include "cli/base/UsageError.h"
#include "cli/commands/commands.h"
#include "cli/commands/study_help.h"
#include "cli/gradient/MethodOption.h"
#include "cli/options/MeshOptions.h"
#include "cli/options/OptionValue.h"
#include "cli/options/RadialBasisSettings.h"
#include "cli/output/OutputFile.h"
#include "cli/study/StudyReport.h"
#include "cli/study/StudyRun.h"
#include "cli/study/StudySeries.h"
#include "cli/study/StudyTables.h"
#include "reference_host/box/BoxMesh.h"

namespace zyngrad {
namespace {

using nlohmann::ordered_json;

std::string SeriesHelp() {
  std::string text = study_help::kSeries;
  for (NamedSeries const& series : NamedStudySeries()) {
    text.append("\n  ").append(series.name).append(": ").append(series.description);
    text.append(", starting with ").append(series.firstMesh);
  }
  return text;
}

std::string StudyMethodHelp() {
  std::string text = study_help::kMethods;
  for (StudyMethod const& method : StudyMethods())
    text.append("\n  ").append(method.name).append(": ").append(method.description);
  return text + study_help::kAllOfAKind;
}

std::string FieldHelp() {
  std::string text = study_help::kField;
  for (auto const& [name, formula] : NamedStudyFields())
    text.append("\n  ").append(name).append(": ").append(formula);
  return text;
}

class StudyCommand : public Command {
 public:
  StudyCommand() : Command("study", "study.json") {}
  CLI::App* AddTo(CLI::App& program) override;

 private:
  void ReadOptions() override;
  std::vector<std::string> OutputFiles(Ranks const& ranks) const override;
  void Compute(CommandRun& run) override;
  void Print(std::ostream& out) const override;
  std::string StageFiles(CommandRun& run) override;
  void FillJson(ordered_json& json) const override;
  bool HasFaults() const override { return AnyFaults(levels_); }

  void ReadMeshes();
  void ReadFields();
  std::string Title() const;

  std::vector<std::string> meshes_, fieldTexts_;
  GroupOptions groupOptions_;
  std::vector<std::string> methodLists_;
  std::string series_, levelsText_, spanText_, sweepsText_ = "3", numberText_ = "20", weightText_;

  UserGroups groups_;
  StudyOrigin origin_;  ///< on the first rank
  StudyQuestion question_;
  std::vector<StudyLevel> levels_;
  bool isReordered_ = false;
};

CLI::App* StudyCommand::AddTo(CLI::App& program) {
  namespace help = study_help;
  CLI::App* command = program.add_subcommand(name(), help::kSummary);
  command->add_option("MESH", meshes_, help::kMesh);
  command->add_option("--series", series_, SeriesHelp())->type_name("NAME|box:...");
  command->add_option("--levels", levelsText_, help::kLevels)->type_name("N");
  AddMethodOption(*command, methodLists_, StudyMethodHelp());
  AddRepeatableOption(*command, "--field", fieldTexts_, FieldHelp())->type_name("NAME|EXPR");
  command->add_option("--span", spanText_, help::kSpan)->type_name("A,B,C");
  command->add_option("--sweeps", sweepsText_, help::kSweeps)->type_name("A,B,C");
  command->add_option("--weight", weightText_, help::kWeight)->type_name("EXPR");
  command->add_option("--search-number", numberText_, help::kSearchNumber)->type_name("N");
  AddGroupOptions(*command, groupOptions_);
  AddOutputOption(*command);
  command->footer(help::kFooter);
  return command;
}

void StudyCommand::ReadMeshes() {
  if (series_.empty() == meshes_.empty()) throw UsageError("give either --series or the meshes themselves");
  if (series_.empty() && !levelsText_.empty()) throw UsageError("--levels needs --series");
  int const nLevels = levelsText_.empty() ? 0 : WholeNumber("--levels", levelsText_, 1);
  question_.meshes = series_.empty() ? meshes_ : MeshesOfSeries(series_, nLevels);
}

void StudyCommand::ReadFields() {
  if (fieldTexts_.empty()) fieldTexts_ = {"trigonometric"};
  for (std::string const& text : fieldTexts_) {
    StudyField field = MakeStudyField(text, static_cast<int>(question_.fields.size()) + 1);
    for (StudyField const& known : question_.fields)
      if (known.name == field.name) throw UsageError("--field " + Quoted(text) + " is given twice");
    question_.fields.push_back(std::move(field));
  }
}

void StudyCommand::ReadOptions() {
  ReadMeshes();
  ReadFields();
  std::vector<double> spans;
  if (!spanText_.empty())
    for (std::string const& word : WordsBetweenCommas(spanText_))
      spans.push_back(PositiveNumber("--span", word));
  std::vector<int> sweeps;
  for (std::string const& word : WordsBetweenCommas(sweepsText_))
    sweeps.push_back(WholeNumber("--sweeps", word, 0));
  question_.cases = StudyCases(
      ChooseStudyMethods(methodLists_.empty() ? "gradients" : JoinedLists(methodLists_)), spans, sweeps);
  if (!weightText_.empty()) question_.weight.emplace(weightText_);
  question_.searchNumber = WholeNumber("--search-number", numberText_, 1);
  groups_ = GroupsByUser(groupOptions_);
}

std::string StudyCommand::Title() const {
  return series_.empty() ? std::to_string(meshes_.size()) + " meshes" : "series " + series_;
}

std::vector<std::string> StudyCommand::OutputFiles(Ranks const& /*ranks*/) const {
  std::vector<std::string> files = {"report.html", "study.md"};
  for (std::string const& name : StudyPlotNames(question_)) files.push_back(name + ".svg");
  return files;
}

void StudyCommand::Compute(CommandRun& run) {
  run.ranks().Together([&] {
    if (run.ranks().IsFirst()) origin_ = OriginOfStudy(run.arguments(), run.ranks().count());
  });
  for (std::string const& mesh : question_.meshes) {  // before the first takes its time
    if (reference_host::IsBoxSpec(mesh))
      reference_host::CheckBoxPartsFit(reference_host::ParseBoxSpec(mesh), run.ranks().count());
  }
  question_.groups = ReadGroupRules(run.ranks(), groups_);
  for (std::string const& mesh : question_.meshes)
    levels_.push_back(RunStudyLevel(run.ranks(), question_, mesh, run.folder().logFile(), run.Stages()));
  isReordered_ = SortCoarseToFine(levels_);
}

void StudyCommand::Print(std::ostream& out) const {
  bool isFirst = true;
  for (StudyTable const& table : StudyTables(question_, levels_)) {
    if (!isFirst) out << '\n';
    PrintTable(out, table);
    isFirst = false;
  }
  if (isReordered_) out << "  the meshes are listed from coarse to fine, not in the order given\n";
  for (std::string const& remark : StudyRemarks(question_, levels_)) out << "  " << remark << '\n';
}

std::string StudyCommand::StageFiles(CommandRun& run) {
  std::vector<StudyPlot> const plots = StudyPlots(question_, levels_);
  OutputFolder& folder = run.folder();
  run.ranks().Together([&] {
    if (!run.ranks().IsFirst()) return;
    WriteText(folder.Stage("report.html"), StudyPage(Title(), origin_, question_, levels_));
    WriteText(folder.Stage("study.md"), StudyMarkdown(origin_, question_, levels_));
    for (StudyPlot const& plot : plots) WriteText(folder.Stage(plot.name + ".svg"), SvgOf(plot));
  });
  return "report.html, study.md, " + std::to_string(plots.size()) + " plots";
}

void StudyCommand::FillJson(ordered_json& json) const {
  json["commandLine"] = origin_.commandLine;
  json["date"] = origin_.date;
  json["processor"] = origin_.processor;
  if (!weightText_.empty()) json["weight"] = weightText_;
  json["series"] = series_.empty() ? ordered_json(nullptr) : ordered_json(series_);
  json.update(StudyAsJson(question_, levels_));
}

}  // namespace

std::unique_ptr<Command> MakeStudyCommand() { return std::make_unique<StudyCommand>(); }

}  // namespace zyngrad
