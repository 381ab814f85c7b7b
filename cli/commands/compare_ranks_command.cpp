#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstddef>
#include <iostream>
#include <memory>
#include <optional>
#include <ostream>
#include <sstream>
#include <string>
#include <vector>

#include "cli/base/OneLine.h"
#include "cli/base/UsageError.h"
#include "cli/commands/commands.h"
#include "cli/commands/compare_ranks_help.h"
#include "cli/compare_ranks/RankComparison.h"
#include "cli/compare_ranks/RankField.h"
#include "cli/field/FieldFiles.h"
#include "cli/field/field_file_help.h"
#include "cli/gradient/MethodOption.h"
#include "cli/options/MeshOptions.h"
#include "cli/options/OptionValue.h"
#include "cli/options/RadialBasisSettings.h"
#include "cli/output/MeshScale.h"
#include "cli/points/LongRows.h"
#include "cli/study/StudyRun.h"
#include "reference_host/mesh/MeshPart.h"
#include "reference_host/partition/HostPartition.h"

namespace zyngrad {
namespace {

constexpr int kSearchNumber = 20;  // of faces and points that search for cells

std::vector<int> ReadCounts(std::string const& text) {
  std::vector<int> counts;
  std::istringstream in(text + ',');
  for (std::string word; std::getline(in, word, ',');) {
    constexpr int kMost = 64;  // threads, each with its partition
    counts.push_back(WholeNumber("--ranks", word, 1));
    if (counts.back() > kMost) throw UsageError("--ranks " + Quoted(word) + ": expected 64 or fewer");
  }
  return counts;
}

/// Whether a method broke its promise, could not be run or gave results that are not finite.
bool AnyBrokenPromise(std::vector<RankComparison> const& comparisons) {
  return std::any_of(comparisons.begin(), comparisons.end(), [](RankComparison const& comparison) {
    return std::any_of(comparison.differences.begin(), comparison.differences.end(),
                       [](RankDifference const& d) { return !d.KeepsItsPromise() || d.IsVoid(); });
  });
}

/// Warns before the work of nodes with long rows, which slow faces3 and points3 down, in the mesh as one partition.
void WarnOfLongRows(WholeMesh const& mesh, std::vector<StudyCase> const& cases) {
  if (std::none_of(cases.begin(), cases.end(),
                   [](StudyCase const& c) { return c.method->searchMethod == kMethodByNodes; }))
    return;
  std::vector<int> const onePart(static_cast<std::size_t>(mesh.nCells()), 0);
  reference_host::HostPartition whole(SplitMesh(mesh.faces, onePart, 1).front());
  std::string const warning =
      InWords(OwnLongRows(whole, nullptr), PlaceDigits(whole), "A comparison without faces3 and points3");
  if (!warning.empty()) std::cout << "  warning: " << warning << "\n\n" << std::flush;
}

class CompareRanksCommand : public Command {
 public:
  CompareRanksCommand() : Command("compare-ranks") {}
  CLI::App* AddTo(CLI::App& program) override;

 private:
  void ReadOptions() override;
  void ReadInput(Ranks const& ranks) override { fieldFiles_.FindTimes(ranks, meshOptions_.mesh); }
  void Compute(CommandRun& run) override;
  void Print(std::ostream& out) const override;
  bool HasFaults() const override { return isBroken_; }
  std::vector<RankComparison> Compare(CommandRun& run, WholeMesh const& mesh, RankField const& field,
                                      std::string const& title) const;
  void CompareFiles(CommandRun& run, WholeMesh const& mesh);

  MeshOptions meshOptions_;
  std::string ranksText_ = "1,2,4", fieldText_, sweepsText_ = "3", spanText_;
  std::vector<std::string> methodLists_;
  FieldFileOptions fieldFileOptions_;

  FieldFiles fieldFiles_;
  UserGroups groups_;
  std::vector<int> counts_;
  std::vector<StudyCase> cases_;
  std::optional<Expression> formula_;  ///< empty with fields from files

  /// The comparisons of one field.
  struct OfField {
    std::string title;  ///< empty for a formula
    std::vector<RankComparison> comparisons;
  };
  std::vector<OfField> results_;  ///< on the first rank
  bool isBroken_ = false;
};

CLI::App* CompareRanksCommand::AddTo(CLI::App& program) {
  namespace help = compare_ranks_help;
  CLI::App* command = program.add_subcommand(name(), help::kSummary);
  AddMeshOptions(*command, meshOptions_);
  command->add_option("--ranks", ranksText_, help::kRanks)->type_name("A,B,C");
  command->add_option("--field", fieldText_, help::kField)->type_name("NAME|EXPR");
  AddFieldFileOptions(*command, fieldFileOptions_);
  AddMethodOption(*command, methodLists_, help::kMethods);
  command->add_option("--sweeps", sweepsText_, help::kSweeps)->type_name("N");
  command->add_option("--span", spanText_, help::kSpan)->type_name("S");
  command->footer(std::string(help::kPromises) + field_file_help::kFieldFiles + help::kExamples);
  return command;
}

void CompareRanksCommand::ReadOptions() {
  counts_ = ReadCounts(ranksText_);
  std::vector<double> spans;
  if (!spanText_.empty()) spans.push_back(PositiveNumber("--span", spanText_));
  int const nSweeps = WholeNumber("--sweeps", sweepsText_, 0);
  std::string const methods = methodLists_.empty() ? "all" : JoinedLists(methodLists_);
  cases_ = StudyCases(ChooseStudyMethods(methods), spans, {nSweeps});
  fieldFiles_ = FieldFiles(fieldFileOptions_);
  if (!fieldText_.empty() && !fieldFiles_.IsEmpty())
    throw UsageError("--field and --field-file exclude each other");
  if (fieldFiles_.IsEmpty())
    formula_ = MakeStudyField(fieldText_.empty() ? "trigonometric" : fieldText_, 1).formula;
  groups_ = GroupsByUser(meshOptions_);
}

void CompareRanksCommand::Compute(CommandRun& run) {
  Ranks const& ranks = run.ranks();
  Progress& progress = run.progress();
  reference_host::GroupRules const groups = ReadGroupRules(ranks, groups_);
  ranks.Together([&] {
    if (!ranks.IsFirst()) return;
    progress.Stage("reading");
    WholeMesh const mesh = ReadWholeMesh(meshOptions_.mesh, groups);
    for (int const count : counts_) mesh.PartOfCell(count);  // refuses too many parts before any work
    progress.Done();
    WarnOfLongRows(mesh, cases_);
    if (formula_)
      results_.push_back({"", Compare(run, mesh, RankField(*formula_), "")});
    else
      CompareFiles(run, mesh);
  });
  bool const isBroken = std::any_of(results_.begin(), results_.end(),
                                    [](OfField const& one) { return AnyBrokenPromise(one.comparisons); });
  isBroken_ = ranks.Max(isBroken ? 1.0 : 0.0) > 0.0;
}

/// On the first rank.
std::vector<RankComparison> CompareRanksCommand::Compare(CommandRun& run, WholeMesh const& mesh,
                                                         RankField const& field,
                                                         std::string const& title) const {
  run.progress().Stage("computing on all numbers of ranks" + (title.empty() ? "" : ": " + title));
  return CompareRankCounts(mesh, counts_, {cases_, field, kSearchNumber});
}

/// On the first rank. All components of all fields at all times.
void CompareRanksCommand::CompareFiles(CommandRun& run, WholeMesh const& mesh) {
  for (std::size_t t = 0; t < fieldFiles_.times().size(); ++t) {
    std::string const time = fieldFiles_.HasTimes() ? "time " + fieldFiles_.times()[t] + ", " : "";
    for (std::size_t k = 0; k < fieldFiles_.count(); ++k) {
      auto const field = std::make_shared<WholeField const>(mesh, fieldFiles_.PathAt(t, k));
      for (int d = 0; d < field->nComponents(); ++d) {
        std::string title = time + "field " + OneLine(fieldFiles_.names()[k]);
        if (field->nComponents() > 1) title += std::string(".") + "xyz"[d];
        results_.push_back({title, Compare(run, mesh, RankField(field, d), title)});
      }
    }
  }
}

void CompareRanksCommand::Print(std::ostream& out) const {
  for (OfField const& one : results_) {
    if (&one != &results_.front()) out << '\n';
    if (!one.title.empty()) out << one.title << "\n\n";
    PrintComparisons(out, one.comparisons);
  }
}

}  // namespace

std::unique_ptr<Command> MakeCompareRanksCommand() { return std::make_unique<CompareRanksCommand>(); }

}  // namespace zyngrad
