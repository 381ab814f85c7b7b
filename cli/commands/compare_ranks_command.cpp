#include <algorithm>
#include <iostream>
#include <sstream>
#include <string>
#include <vector>

#include "cli/base/OneLine.h"
#include "cli/base/Progress.h"
#include "cli/base/UsageError.h"
#include "cli/commands/commands.h"
#include "cli/compare_ranks/CompareRanks.h"
#include "cli/gradient/MethodOption.h"
#include "cli/options/MeshOptions.h"
#include "cli/options/RadialBasisSettings.h"
#include "cli/output/MeshScale.h"
#include "cli/points/LongRows.h"
#include "cli/study/StudyRun.h"
#include "reference_host/mesh/MeshPart.h"
#include "reference_host/partition/HostPartition.h"

namespace zyngrad {
namespace {

char const* const kFooter =
    "Every number of ranks is made of as many threads with a partition each, divided as under mpirun, so "
    "the\n"
    "command is started alone; under mpirun the first rank does everything. Each is run twice, the second "
    "time\n"
    "with non-blocking exchange, and has to give the same bits. Between numbers of ranks a method may "
    "differ:\n"
    "  Green-Gauss and least squares by round-off, since the faces are added up in another order: 1e-12 of "
    "the\n"
    "  largest gradient, or more on flat cells, as far as their round-off grows with the area over the "
    "volume\n"
    "  and the condition number of the cell's moments;\n"
    "  radial basis by round-off times the condition number of the cell's system;\n"
    "  values at inner faces and at points by about their error (ten times the largest one), since stencils\n"
    "  beside a cut lack the cells that only touch it with a node, and by round-off times the condition "
    "number.\n"
    "Exit code 1 if a method does not keep this promise, could not be run or gave what is not finite.\n\n"
    "Examples:\n"
    "  zyngrad compare-ranks box:12,12,12:tet --ranks 1,2,4\n"
    "  zyngrad compare-ranks channel.msh --ranks 1,3 --method gradients --field \"sin(x)*y\" --span 50";

std::vector<int> ReadCounts(std::string const& text) {
  std::vector<int> counts;
  std::istringstream in(text + ',');
  for (std::string word; std::getline(in, word, ',');) {
    constexpr int kMost = 64;  // threads, each with its partition
    counts.push_back(WholeNumber("--ranks", word, 1));
    if (counts.back() > kMost) throw UsageError("--ranks " + Quoted(word) + ": expected 64 or less");
  }
  return counts;
}

/// Before the work: nodes that faces3 and points3 mind, of the mesh as one partition.
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
  CLI::App* AddTo(CLI::App& program) override;
  void Run(Ranks const& ranks) override;
  int ExitCode() const override { return isBroken_ ? 1 : 0; }

 private:
  MeshOptions meshOptions_;
  std::string ranksText_ = "1,2,4", fieldText_ = "trigonometric", sweepsText_ = "3", spanText_;
  std::vector<std::string> methodLists_;
  bool isBroken_ = false;
};

CLI::App* CompareRanksCommand::AddTo(CLI::App& program) {
  CLI::App* command =
      program.add_subcommand("compare-ranks", "Differences of every method between numbers of ranks");
  AddMeshOptions(*command, meshOptions_);
  command
      ->add_option("--ranks", ranksText_,
                   "Numbers of ranks; the first is what others are compared with (default 1,2,4)")
      ->type_name("A,B,C");
  command
      ->add_option("--field", fieldText_,
                   "The field: linear, quadratic, trigonometric (default), as in zyngrad study, or a formula")
      ->type_name("NAME|EXPR");
  AddMethodOption(
      *command, methodLists_,
      "Methods between commas, named as in zyngrad study; gradients, faces, points: all of a kind "
      "(default all)");
  command->add_option("--sweeps", sweepsText_, "Sweeps of the iterated method (default 3)")->type_name("N");
  command
      ->add_option("--span", spanText_,
                   "Support radius over the stencil's length (default 500, for faces 1000)")
      ->type_name("S");
  command->footer(kFooter);
  return command;
}

void CompareRanksCommand::Run(Ranks const& ranks) {
  std::vector<int> const counts = ReadCounts(ranksText_);
  std::vector<double> spans;
  if (!spanText_.empty()) spans.push_back(PositiveNumber("--span", spanText_));
  int const nSweeps = WholeNumber("--sweeps", sweepsText_, 0);
  RankQuestion const question = {
      StudyCases(ChooseStudyMethods(methodLists_.empty() ? "all" : JoinedLists(methodLists_)), spans,
                 {nSweeps}),
      MakeStudyField(fieldText_, 1).formula, 20};
  auto const groups = GroupsByUser(meshOptions_);

  Progress progress(ranks.IsFirst() && Progress::StderrIsTerminal());
  std::vector<RankComparison> comparisons;
  ranks.Together([&] {
    if (!ranks.IsFirst()) return;
    progress.Stage("reading");
    WholeMesh const mesh = ReadWholeMesh(meshOptions_.mesh, groups);
    for (int const count : counts) mesh.PartOfCell(count);  // too many are told before any work
    progress.Done();
    WarnOfLongRows(mesh, question.cases);
    progress.Stage("computing on all numbers of ranks");
    comparisons = CompareRankCounts(mesh, counts, question);
  });
  progress.Done();
  double nBroken = 0.0;
  for (RankComparison const& comparison : comparisons) {
    nBroken += static_cast<double>(
        std::count_if(comparison.differences.begin(), comparison.differences.end(),
                      [](RankDifference const& d) { return !d.KeepsItsPromise() || d.IsVoid(); }));
  }
  if (ranks.IsFirst()) PrintComparisons(std::cout, comparisons);
  isBroken_ = ranks.Max(nBroken) > 0.0;
}

}  // namespace

std::unique_ptr<Command> MakeCompareRanksCommand() { return std::make_unique<CompareRanksCommand>(); }

}  // namespace zyngrad
