#include "cli/study/StudyRun.h"

#include <algorithm>
#include <map>
#include <memory>
#include <utility>

#include "cli/points/LongRows.h"
#include "cli/study/KindStudy.h"
#include "cli/study/StudyMesh.h"
#include "cli/systems/SpanRange.h"

namespace zyngrad {
namespace {

using Kind = StudyMethod::Kind;

/// The kinds of method that a study can measure. A new kind is one more row.
struct KindMaker {
  Kind kind;
  std::unique_ptr<KindStudy> (*make)(StudyMesh& mesh);
};
constexpr KindMaker kKinds[] = {
    {Kind::Gradient, MakeGradientStudy}, {Kind::Faces, MakeFaceStudy}, {Kind::Points, MakePointStudy}};

bool AnyCase(StudyQuestion const& question, std::function<bool(StudyMethod const&)> const& is) {
  return std::any_of(question.cases.begin(), question.cases.end(),
                     [&is](StudyCase const& c) { return is(*c.method); });
}

/// All cases on one mesh.
class LevelRun {
 public:
  LevelRun(StudyMesh& mesh, std::string const& name, std::function<void(std::string const&)> const& progress)
      : mesh_(mesh), question_(mesh.question()), progress_(progress) {
    level_.mesh = name;
    level_.nCells = mesh.nCells();
    level_.spacing = mesh.Spacing();
    for (KindMaker const& row : kKinds) {
      if (AnyCase(question_, [&row](StudyMethod const& m) { return m.kind == row.kind; }))
        kinds_[row.kind] = row.make(mesh);
    }
  }

  StudyLevel Run() {
    WarnOfLongRows();
    for (std::size_t k = 0; k < question_.cases.size(); ++k) RunCase(k);
    return std::move(level_);
  }

 private:
  /// Both kinds would warn of the same nodes, so that one warning is enough.
  void WarnOfLongRows() {
    for (Kind const kind : {Kind::Faces, Kind::Points}) {
      bool const goesByNodes = AnyCase(question_, [kind](StudyMethod const& m) {
        return m.kind == kind && m.searchMethod == kMethodByNodes;
      });
      if (!goesByNodes) continue;
      kinds_.at(kind)->WarnOfLongRows();
      return;
    }
  }

  void RunCase(std::size_t iCase) {
    StudyCase const& theCase = question_.cases[iCase];
    KindStudy& kind = *kinds_.at(theCase.method->kind);
    StudyCondition const condition = ConditionOf(theCase, kind);
    for (std::size_t iField = 0; iField < question_.fields.size(); ++iField) {
      progress_(Label(theCase) + " on " + level_.mesh);
      for (StudyResult& result : kind.Run(theCase, question_.fields[iField].formula)) {
        result.iCase = iCase;
        result.iField = iField;
        result.condition = condition;
        if (result.whyNotFinite.empty() && result.NotFinite() > 0)
          result.whyNotFinite = WhyRadialBasisIsNotFinite(theCase.span, level_.spacing);
        level_.results.push_back(std::move(result));
      }
    }
  }

  StudyCondition ConditionOf(StudyCase const& theCase, KindStudy& kind) {
    if (!theCase.method->TakesSpan()) return {};
    progress_("condition numbers of " + Label(theCase) + " on " + level_.mesh);
    std::vector<double> own;
    mesh_.ranks().Together([&] { own = kind.Conditions(theCase); });
    return SummariseConditions(mesh_.ranks(), own);
  }

  StudyMesh& mesh_;
  StudyQuestion const& question_;
  std::function<void(std::string const&)> const& progress_;
  std::map<Kind, std::unique_ptr<KindStudy>> kinds_;  ///< those that the question has cases of
  StudyLevel level_;
};

}  // namespace

StudyLevel RunStudyLevel(Ranks const& ranks, StudyQuestion const& question, std::string const& mesh,
                         std::string const& logFile,
                         std::function<void(std::string const&)> const& progress) {
  StudyMesh studyMesh(ranks, question, mesh, logFile, progress);
  return LevelRun(studyMesh, mesh, progress).Run();
}

}  // namespace zyngrad
