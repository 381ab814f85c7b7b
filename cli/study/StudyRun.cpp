#include "cli/study/StudyRun.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <numeric>

#include "cli/base/TemporaryFolder.h"
#include "cli/base/UsageError.h"
#include "cli/faces/FaceRun.h"
#include "cli/gradient/GradientRun.h"
#include "cli/options/InterpolationOptions.h"
#include "cli/output/MeshScale.h"
#include "cli/output/RunSettings.h"
#include "cli/points/LongRows.h"
#include "cli/points/PointErrors.h"
#include "cli/points/PointRun.h"
#include "cli/study/StudyPoints.h"
#include "cli/systems/SpanRange.h"
#include "reference_host/parallel/LoadMesh.h"

namespace zyngrad {
namespace {

using Kind = StudyMethod::Kind;
using reference_host::HostPartition;

constexpr double kMicro = 1e6;

/// The points of a study.
struct StudyPoints {
  PointSet points;             ///< of all ranks, the same on every rank, by the number of their cells
  std::vector<char> boundary;  ///< whether the cell has a boundary face
};

/// One mesh with what all cases need of it.
class LevelRun {
 public:
  LevelRun(Ranks const& ranks, StudyQuestion const& question, std::string const& mesh,
           std::string const& logFile, std::function<void(std::string const&)> const& progress)
      : ranks_(ranks),
        question_(question),
        progress_(progress),
        folder_(ranks),
        mesh_(reference_host::LoadMesh(ranks.communicator(), mesh, question.groups, progress)),
        partition_(*mesh_.partition) {
    level_.mesh = mesh;
    level_.nCells = mesh_.summary.nCells;
    level_.spacing = Spacing();
    gradient_.isBoundaryCell = BoundaryCells(*partition_.mesh());
    gradient_.weight.assign(static_cast<std::size_t>(partition_.mesh()->NCell) + 1, 1.0);
    if (question.weight) gradient_.weight = MakeCellValues(ranks, partition_, *question.weight, "the weight");
    gradient_.nRepeat = question.nRepeat;
    gradient_.logFile = logFile;
    interpolation_.number = question.searchNumber;
    interpolation_.distance = 2.0 * MeanCellDistance(ranks, partition_);
  }

  StudyLevel Run() {
    if (Has(Kind::Points)) MakePoints();
    WarnOfLongRows();
    for (std::size_t k = 0; k < question_.cases.size(); ++k) RunCase(k);
    return std::move(level_);
  }

 private:
  bool Has(Kind kind) const {
    return std::any_of(question_.cases.begin(), question_.cases.end(),
                       [kind](StudyCase const& c) { return c.method->kind == kind; });
  }

  void WarnOfLongRows() const {
    auto const goesByNodes = [this](Kind kind) {
      return std::any_of(question_.cases.begin(), question_.cases.end(), [kind](StudyCase const& c) {
        return c.method->kind == kind && c.method->searchMethod == kMethodByNodes;
      });
    };
    if (goesByNodes(Kind::Faces))
      PrintLongRowWarning(ranks_, partition_, nullptr, "A study without faces3");
    else if (goesByNodes(Kind::Points))
      PrintLongRowWarning(ranks_, partition_, &usable_, "A study without points3");
  }

  double Spacing() const {
    CZYN3DFiniteVolumeMesh const& mesh = *partition_.mesh();
    double volume = 0.0;
    for (int c = 1; c <= mesh.NInnerCells; ++c) volume += mesh.Volume[c];
    std::vector<double> const all = ranks_.Gather(volume);
    return std::cbrt(std::accumulate(all.begin(), all.end(), 0.0) /
                     static_cast<double>(mesh_.summary.nCells));
  }

  /// Rows of number, x, y, z and boundary of this rank's points.
  std::vector<double> OwnPointRows() const {
    std::vector<double> rows;
    for (int const c : CellsWithPoints(partition_, level_.nCells)) {
      auto const i = static_cast<std::size_t>(c);
      reference_host::Point const point = PointInCell(partition_, c);
      rows.insert(rows.end(), {static_cast<double>(partition_.globalCell()[i]), point[0], point[1], point[2],
                               static_cast<double>(gradient_.isBoundaryCell[i])});
    }
    return rows;
  }

  void MakePoints() {
    constexpr std::size_t kColumns = 5;
    std::vector<double> rows = ranks_.GatherOnFirst(OwnPointRows());
    ranks_.Broadcast(rows);
    std::vector<std::size_t> order(rows.size() / kColumns);
    std::iota(order.begin(), order.end(), 0);
    std::sort(order.begin(), order.end(),
              [&](std::size_t a, std::size_t b) { return rows[a * kColumns] < rows[b * kColumns]; });
    for (std::size_t const i : order) {
      double const* const row = rows.data() + i * kColumns;
      points_.points.x.push_back(row[1]);
      points_.points.y.push_back(row[2]);
      points_.points.z.push_back(row[3]);
      points_.boundary.push_back(row[4] != 0.0 ? 1 : 0);
    }
    usable_ = FindUsableCells(ranks_, partition_, nullptr);
    owners_ = FindPointOwners(ranks_, partition_, usable_, points_.points);
  }

  void RunCase(std::size_t iCase) {
    StudyCase const& theCase = question_.cases[iCase];
    StudyCondition const condition = ConditionOf(theCase);
    for (std::size_t iField = 0; iField < question_.fields.size(); ++iField) {
      progress_(Label(theCase) + " on " + level_.mesh);
      std::size_t const first = level_.results.size();
      switch (theCase.method->kind) {
        case Kind::Gradient:
          RunGradient(theCase, question_.fields[iField].formula);
          break;
        case Kind::Faces:
          RunInnerFaces(theCase, question_.fields[iField].formula);
          break;
        case Kind::Points:
          RunAtPoints(theCase, question_.fields[iField].formula);
          break;
      }
      for (std::size_t i = first; i < level_.results.size(); ++i) {
        level_.results[i].iCase = iCase;
        level_.results[i].iField = iField;
        level_.results[i].condition = condition;
        if (level_.results[i].whyNotFinite.empty() && level_.results[i].NotFinite() > 0)
          level_.results[i].whyNotFinite = WhyRadialBasisIsNotFinite(theCase.span, level_.spacing);
      }
    }
  }

  InterpolationSettings SettingsOf(StudyCase const& theCase) const {
    InterpolationSettings settings = interpolation_;
    settings.method = theCase.method->searchMethod;
    settings.span = theCase.span;
    return settings;
  }

  StudyCondition ConditionOf(StudyCase const& theCase) {
    if (!theCase.method->TakesSpan()) return {};
    progress_("condition numbers of " + Label(theCase) + " on " + level_.mesh);
    std::vector<double> own;
    ranks_.Together([&] {
      switch (theCase.method->kind) {
        case Kind::Gradient:
          own = GradientConditions(partition_, {theCase.span, false});
          break;
        case Kind::Faces:
          own = FaceConditions(partition_, SettingsOf(theCase));
          break;
        case Kind::Points:
          own = PointConditions(partition_, usable_, OwnPoints(), SettingsOf(theCase));
          break;
      }
    });
    return SummariseConditions(ranks_, own);
  }

  PointSet OwnPoints() const {
    PointSet own;
    for (std::size_t i = 0; i < points_.points.size(); ++i) {
      if (owners_[i].rank != ranks_.rank()) continue;
      own.x.push_back(points_.points.x[i]);
      own.y.push_back(points_.points.y[i]);
      own.z.push_back(points_.points.z[i]);
    }
    return own;
  }

  /// The file that an operator reads next.
  void TellSettings(std::string const& text) {
    ranks_.Together(
        [&] { partition_.SetBaseFileName(WriteSettingsText(folder_.path() + "/settings.rbf", text)); });
  }

  void RunGradient(StudyCase const& theCase, Expression const& formula) {
    gradient_.nSweeps = theCase.nSweeps;
    gradient_.radialBasis = {theCase.span, false};
    gradient_.fields.clear();
    gradient_.fields.push_back(MakeTestField(ranks_, partition_, formula));
    gradient_.exactL2 = {1.0};  // errors are wanted as they are
    if (theCase.method->TakesSpan()) TellSettings(SettingsFileText(gradient_.radialBasis));
    MethodResult const run = RunMethod(ranks_, mesh_, *theCase.method->gradient, gradient_);

    StudyResult result;
    result.quantity = kGradient;
    result.notRun = run.notRun;
    result.remarks = run.remarks;
    result.whyNotFinite = run.whyNotFinite;
    if (run.notRun.empty()) {
      CZYN3DFiniteVolumeMesh const& mesh = *partition_.mesh();
      std::vector<double> const& error = run.gradients.front().cellError;
      std::vector<StudyError> own;
      for (int c = 1; c <= mesh.NInnerCells; ++c) {
        auto const i = static_cast<std::size_t>(c);
        own.push_back({error[i], mesh.Volume[c], gradient_.isBoundaryCell[i] != 0});
      }
      result.errors = SummariseStudyErrors(ranks_, own);
      result.usSetUp = run.times.setUp * kMicro / mesh_.summary.maxCells;
      result.nsApply = run.times.nsPerCell;
    }
    level_.results.push_back(std::move(result));
  }

  void RunInnerFaces(StudyCase const& theCase, Expression const& formula) {
    std::vector<double> values = MakeCellValues(ranks_, partition_, formula, "the field");
    TargetedFaces const faces = TargetedFacesOf(partition_, FaceKind::Inner);
    std::vector<double> const exact =
        ExactFaceValues(ranks_, faces, FaceKind::Inner, formula, PlaceDigits(ranks_, partition_));
    TellSettings(FaceSettingsText(SettingsOf(theCase)));
    FaceRun const run = RunFaces(ranks_, mesh_, FaceKind::Inner, values, gradient_.logFile);

    std::vector<StudyError> own;
    auto const isBoundary = [this](int c) {
      return gradient_.isBoundaryCell[static_cast<std::size_t>(c)] != 0;
    };
    for (int f = 1; f <= faces.count; ++f) {
      auto const i = static_cast<std::size_t>(f);
      own.push_back({std::fabs(run.rows.value[i] - exact[i]), faces.Area(f),
                     isBoundary(faces.cv[f]) || isBoundary(faces.other[f])});
    }
    StudyResult result;
    result.quantity = kFaceValue;
    result.errors = SummariseStudyErrors(ranks_, own);
    result.usSetUp = run.times.usPerFace;
    result.nsApply = run.times.nsPerFace;
    level_.results.push_back(std::move(result));
  }

  void RunAtPoints(StudyCase const& theCase, Expression const& formula) {
    std::vector<char> isUsable(usable_.mark.size(), 0);
    for (std::size_t c = 1; c < isUsable.size(); ++c) isUsable[c] = usable_.mark[c] < 0.0 ? 1 : 0;
    std::vector<double> values = MakeCellValues(ranks_, partition_, formula, "the field", &isUsable);
    TellSettings(PointSettingsText(SettingsOf(theCase)));
    PointRun const run =
        RunPoints(ranks_, mesh_, usable_, points_.points, owners_, values, gradient_.logFile);

    std::vector<StudyError> ofValues, ofGradients;  // on the first rank, which has all of them
    ranks_.Together([&] {
      if (!ranks_.IsFirst()) return;
      ErrorsAtPoints const errors = ErrorsAt(run.values, ExactValuesAt(points_.points, formula));
      for (std::size_t i = 0; i < errors.value.size(); ++i) {
        ofValues.push_back({std::fabs(errors.value[i]), 1.0, points_.boundary[i] != 0});
        ofGradients.push_back({errors.gradient[i], 1.0, points_.boundary[i] != 0});
      }
    });
    for (auto const& [quantity, own] :
         {std::pair(kPointValue, &ofValues), std::pair(kPointGradient, &ofGradients)}) {
      StudyResult result;
      result.quantity = quantity;
      result.errors = SummariseStudyErrors(ranks_, *own);
      result.usSetUp = run.times.usPerPoint;
      result.nsApply = run.times.nsPerPoint;
      level_.results.push_back(std::move(result));
    }
  }

  Ranks const& ranks_;
  StudyQuestion const& question_;
  std::function<void(std::string const&)> const& progress_;
  TemporaryFolder const folder_;  // settings of this rank
  reference_host::LoadedMesh mesh_;
  HostPartition& partition_;
  GradientCase gradient_;
  InterpolationSettings interpolation_;
  StudyPoints points_;
  UsableCells usable_;
  std::vector<PointOwner> owners_;
  StudyLevel level_;
};

}  // namespace

bool SortCoarseToFine(std::vector<StudyLevel>& levels) {
  auto const isCoarser = [](StudyLevel const& a, StudyLevel const& b) { return a.spacing > b.spacing; };
  if (std::is_sorted(levels.begin(), levels.end(), isCoarser)) return false;
  std::stable_sort(levels.begin(), levels.end(), isCoarser);
  return true;
}

bool HasFaults(std::vector<StudyLevel> const& levels) {
  return std::any_of(levels.begin(), levels.end(), [](StudyLevel const& level) {
    return std::any_of(level.results.begin(), level.results.end(),
                       [](StudyResult const& r) { return !r.notRun.empty() || r.NotFinite() > 0; });
  });
}

std::vector<std::pair<std::string, std::string>> NamedStudyFields() {
  return {{"linear", "2*x + 3*y - z + 1"},
          {"quadratic", "x^2 + 2*y^2 - z^2 + x*y - y*z"},
          {"trigonometric", "sin(2*x)*cos(3*y) + sin(x+2*z)"}};
}

StudyField MakeStudyField(std::string const& text, int number) {
  for (auto const& [name, formula] : NamedStudyFields()) {
    if (text == name) return {name, Expression(formula)};
  }
  return {"formula " + std::to_string(number), Expression(text)};
}

StudyLevel RunStudyLevel(Ranks const& ranks, StudyQuestion const& question, std::string const& mesh,
                         std::string const& logFile,
                         std::function<void(std::string const&)> const& progress) {
  return LevelRun(ranks, question, mesh, logFile, progress).Run();
}

}  // namespace zyngrad
