#include <iostream>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "cli/base/OneLine.h"
#include "cli/base/Progress.h"
#include "cli/base/UsageError.h"
#include "cli/commands/Program.h"
#include "cli/commands/commands.h"
#include "cli/gradient/MethodOption.h"
#include "cli/options/MeshOptions.h"
#include "cli/options/RadialBasisSettings.h"
#include "cli/output/JsonFile.h"
#include "cli/output/OutputFile.h"
#include "cli/output/OutputFolder.h"
#include "cli/study/StudyReport.h"
#include "cli/study/StudyRun.h"
#include "cli/study/StudySeries.h"
#include "cli/study/StudyTables.h"

namespace zyngrad {
namespace {

using nlohmann::ordered_json;

std::string SeriesHelp() {
  std::string text = "Refine a box, or one of these series:";
  for (NamedSeries const& series : NamedStudySeries()) {
    text.append("\n  ").append(series.name).append(": ").append(series.description);
    text.append(", from ").append(series.firstMesh);
  }
  return text;
}

std::string MethodHelp() {
  std::string text = "Methods between commas (default gradients):";
  for (StudyMethod const& method : StudyMethods())
    text.append("\n  ").append(method.name).append(": ").append(method.description);
  return text + "\n  gradients, faces, points, all: all of a kind";
}

std::string FieldHelp() {
  std::string text = "The field, repeat as needed (default trigonometric): a formula or";
  for (auto const& [name, formula] : NamedStudyFields())
    text.append("\n  ").append(name).append(": ").append(formula);
  return text;
}

char const* const kFooter =
    "Either --series, refined by doubling the cells in every direction, or the meshes themselves, which are\n"
    "brought into the order coarse to fine. An order is shown where the spacing, the cube root of the mean\n"
    "cell volume, falls by 1 % or more.\n\n"
    "The errors of gradients are Euclidean lengths, in all cells; those of faces are at inner faces; points\n"
    "lie half-way between centre and a node of up to some 2000 cells, evenly spread. Boundary: cells with a\n"
    "boundary face, faces of such cells, points in them. Condition numbers are estimates for at most 2000\n"
    "systems of a rank.\n\n"
    "Exit code 1: a method could not be run on a mesh, or gave what is not finite; the last lines say which "
    "and "
    "why.\n\n"
    "The output folder gets study.json (all numbers), report.html (tables and plots in one page that needs "
    "no\n"
    "network), each plot as an .svg, the tables in study.md, and what the operators print, in "
    "log.rankN.txt.\n\n"
    "Examples:\n"
    "  zyngrad study --series tet --method plain,iterated,lsq,rbf -o study-tet\n"
    "  zyngrad study --series box:8,8,8:prism --levels 3 --field linear --field \"x^2*y\"\n"
    "  zyngrad study --series hex --levels 2 --method rbf --span 5,20,100,500,2000 --field linear\n"
    "  zyngrad study --series tet --method iterated --sweeps 1,2,3,5,10\n"
    "  zyngrad study coarse.msh middle.msh fine.msh --method all";

class StudyCommand : public Command {
 public:
  CLI::App* AddTo(CLI::App& program) override;
  void Run(Ranks const& ranks) override;
  int ExitCode() const override { return exitCode_; }

 private:
  void ReadOptions();
  void ReadMeshes();
  std::string Title() const;
  void Print(std::vector<StudyLevel> const& levels) const;
  void Write(OutputFolder& folder, std::vector<StudyLevel> const& levels) const;

  std::vector<std::string> meshes_, groupTexts_, fieldTexts_;
  std::vector<std::string> methodLists_;
  std::string series_, levelsText_, spanText_, sweepsText_ = "3", numberText_ = "20", weightText_;
  std::string outputFolder_ = "zyngrad-output/study";

  StudyQuestion question_;
  bool isReordered_ = false;
  int exitCode_ = kSuccess;
};

CLI::App* StudyCommand::AddTo(CLI::App& program) {
  CLI::App* command =
      program.add_subcommand("study", "Errors, orders, times and condition numbers under refinement");
  command->add_option("MESH", meshes_, "Meshes of one domain, as for the other commands");
  command->add_option("--series", series_, SeriesHelp())->type_name("NAME|box:...");
  command->add_option("--levels", levelsText_, "Meshes of the series (default 4)")->type_name("N");
  AddMethodOption(*command, methodLists_, MethodHelp());
  AddRepeatableOption(*command, "--field", fieldTexts_, FieldHelp())->type_name("NAME|EXPR");
  command
      ->add_option("--span", spanText_,
                   "Support radii over the stencil's length, between commas (default 500, for faces 1000)")
      ->type_name("A,B,C");
  command->add_option("--sweeps", sweepsText_, "Sweeps of the iterated method, between commas (default 3)")
      ->type_name("A,B,C");
  command->add_option("--weight", weightText_, "Coefficient of the weighted method, as a formula (default 1)")
      ->type_name("EXPR");
  command
      ->add_option("--search-number", numberText_,
                   "Cells wanted in a stencil by faces1, faces2, points1 and points2 (default 20)")
      ->type_name("N");
  AddRepeatableOption(*command, "--group", groupTexts_, "Kind of a boundary whose name does not tell it")
      ->type_name("NAME=inlet|outlet|wall|symmetry");
  command->add_option("-o,--output", outputFolder_, "Folder to write to (default zyngrad-output/study)")
      ->type_name("DIR");
  command->footer(kFooter);
  return command;
}

void StudyCommand::ReadMeshes() {
  if (series_.empty() == meshes_.empty())
    throw UsageError("the meshes are wanted either by --series or one after the other");
  if (series_.empty() && !levelsText_.empty()) throw UsageError("--levels is for --series");
  int const nLevels = levelsText_.empty() ? 0 : WholeNumber("--levels", levelsText_, 1);
  question_.meshes = series_.empty() ? meshes_ : MeshesOfSeries(series_, nLevels);
}

void StudyCommand::ReadOptions() {
  ReadMeshes();
  if (fieldTexts_.empty()) fieldTexts_ = {"trigonometric"};
  for (std::string const& text : fieldTexts_) {
    StudyField field = MakeStudyField(text, static_cast<int>(question_.fields.size()) + 1);
    for (StudyField const& known : question_.fields)
      if (known.name == field.name) throw UsageError("--field " + Quoted(text) + " is given twice");
    question_.fields.push_back(std::move(field));
  }
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
  question_.groups = GroupsByUser({{}, groupTexts_});
}

std::string StudyCommand::Title() const {
  return series_.empty() ? std::to_string(meshes_.size()) + " meshes" : "series " + series_;
}

void StudyCommand::Print(std::vector<StudyLevel> const& levels) const {
  bool isFirst = true;
  for (StudyTable const& table : StudyTables(question_, levels)) {
    if (!isFirst) std::cout << '\n';
    PrintTable(std::cout, table);
    isFirst = false;
  }
  if (isReordered_) std::cout << "  the meshes stand coarse to fine, not in the order given\n";
  for (std::string const& remark : StudyRemarks(question_, levels)) std::cout << "  " << remark << '\n';
}

void StudyCommand::Write(OutputFolder& folder, std::vector<StudyLevel> const& levels) const {
  ordered_json json = StartResults("study");
  if (!weightText_.empty()) json["weight"] = weightText_;
  json["series"] = series_.empty() ? ordered_json(nullptr) : ordered_json(series_);
  json.update(StudyAsJson(question_, levels));
  WriteJson(folder.Stage("study.json"), json);
  WriteText(folder.Stage("report.html"), StudyPage(Title(), question_, levels));
  WriteText(folder.Stage("study.md"), StudyMarkdown(question_, levels));
  for (StudyPlot const& plot : StudyPlots(question_, levels))
    WriteText(folder.Stage(plot.name + ".svg"), SvgOf(plot));
}

void StudyCommand::Run(Ranks const& ranks) {
  ReadOptions();
  Progress progress(ranks.IsFirst() && Progress::StderrIsTerminal());
  OutputPlan plan = {"study", {"study.json", "report.html", "study.md"}};
  for (std::string const& name : StudyPlotNames(question_)) plan.files.push_back(name + ".svg");
  OutputFolder folder(ranks, outputFolder_, plan);
  std::vector<StudyLevel> levels;
  for (std::string const& mesh : question_.meshes) {
    levels.push_back(RunStudyLevel(ranks, question_, mesh, folder.logFile(),
                                   [&progress](std::string const& stage) { progress.Stage(stage); }));
  }
  progress.Done();
  isReordered_ = SortCoarseToFine(levels);
  if (HasFaults(levels)) exitCode_ = kFoundFaults;
  if (ranks.IsFirst()) Print(levels);
  ranks.Together([&] {
    if (ranks.IsFirst()) Write(folder, levels);
  });
  folder.Commit("\nwritten to " + folder.path() + ": report.html, study.json, study.md, " +
                std::to_string(StudyPlots(question_, levels).size()) + " plots\n");
}

}  // namespace

std::unique_ptr<Command> MakeStudyCommand() { return std::make_unique<StudyCommand>(); }

}  // namespace zyngrad
