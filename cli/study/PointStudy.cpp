#include <algorithm>
#include <cmath>
#include <cstddef>
#include <numeric>
#include <utility>

#include "cli/field/TestField.h"
#include "cli/points/LongRows.h"
#include "cli/points/PointErrors.h"
#include "cli/points/PointRun.h"
#include "cli/study/KindStudy.h"
#include "cli/study/StudyPoints.h"

namespace zyngrad {
namespace {

class PointStudy : public KindStudy {
 public:
  explicit PointStudy(StudyMesh& mesh) : mesh_(mesh) {
    MakePoints();
    usable_ = FindUsableCells(mesh.ranks(), mesh.partition(), nullptr);
    owners_ = FindPointOwners(mesh.ranks(), mesh.partition(), usable_, points_);
  }

  std::vector<double> Conditions(StudyCase const& theCase) override {
    return PointConditions(mesh_.partition(), usable_, OwnPoints(), mesh_.SettingsOf(theCase));
  }

  std::vector<StudyResult> Run(StudyCase const& theCase, Expression const& formula) override {
    Ranks const& ranks = mesh_.ranks();
    std::vector<char> const isUsable = usable_.Flags();
    std::vector<double> values = MakeCellValues(ranks, mesh_.partition(), formula, "the field", &isUsable);
    mesh_.WriteSettings(PointSettingsText(mesh_.SettingsOf(theCase)));
    PointRun const run = RunPoints(ranks, mesh_.loaded(), usable_, points_, owners_, values, mesh_.logFile());

    std::vector<StudyError> ofValues, ofGradients;  // on the first rank, which has all of them
    ranks.Together([&] {
      if (!ranks.IsFirst()) return;
      ErrorsAtPoints const errors = ErrorsAt(run.values, ExactValuesAt(points_, formula));
      for (std::size_t i = 0; i < errors.value.size(); ++i) {
        ofValues.push_back({std::fabs(errors.value[i]), 1.0, isAtBoundary_[i] != 0});
        ofGradients.push_back({errors.gradient[i], 1.0, isAtBoundary_[i] != 0});
      }
    });
    return {MakeResult(kPointValue, ofValues, run.times), MakeResult(kPointGradient, ofGradients, run.times)};
  }

  void WarnOfLongRows() override {
    PrintLongRowWarning(mesh_.ranks(), mesh_.partition(), &usable_, "A study without points3");
  }

 private:
  /// Rows of number, x, y, z and boundary of this rank's points.
  std::vector<double> OwnPointRows() {
    reference_host::HostPartition& partition = mesh_.partition();
    std::vector<double> rows;
    for (int const c : CellsWithPoints(partition, mesh_.nCells())) {
      reference_host::Point const point = PointInCell(partition, c);
      auto const number = static_cast<double>(partition.globalCell()[static_cast<std::size_t>(c)]);
      rows.insert(rows.end(), {number, point[0], point[1], point[2], mesh_.IsAtBoundary(c) ? 1.0 : 0.0});
    }
    return rows;
  }

  /// Collective. Gathers the points of all ranks in the order of their cells' numbers.
  void MakePoints() {
    constexpr std::size_t kColumns = 5;
    std::vector<double> rows = mesh_.ranks().GatherOnFirst(OwnPointRows());
    mesh_.ranks().Broadcast(rows);
    std::vector<std::size_t> order(rows.size() / kColumns);
    std::iota(order.begin(), order.end(), 0);
    std::sort(order.begin(), order.end(),
              [&](std::size_t a, std::size_t b) { return rows[a * kColumns] < rows[b * kColumns]; });
    for (std::size_t const i : order) {
      double const* const row = rows.data() + i * kColumns;
      points_.x.push_back(row[1]);
      points_.y.push_back(row[2]);
      points_.z.push_back(row[3]);
      isAtBoundary_.push_back(row[4] != 0.0 ? 1 : 0);
    }
  }

  PointSet OwnPoints() const {
    PointSet own;
    for (std::size_t i = 0; i < points_.size(); ++i) {
      if (owners_[i].rank != mesh_.ranks().rank()) continue;
      own.x.push_back(points_.x[i]);
      own.y.push_back(points_.y[i]);
      own.z.push_back(points_.z[i]);
    }
    return own;
  }

  StudyResult MakeResult(char const* quantity, std::vector<StudyError> const& own, PointTimes const& times) {
    StudyResult result;
    result.quantity = quantity;
    result.errors = SummariseStudyErrors(mesh_.ranks(), own);
    result.usSetUp = AboveTheNoise(times.setUp, times.usPerPoint);
    result.nsApply = AboveTheNoise(times.later, times.nsPerPoint);
    return result;
  }

  StudyMesh& mesh_;
  PointSet points_;                 ///< of all ranks, the same on every rank
  std::vector<char> isAtBoundary_;  ///< [point] whether its cell has a boundary face
  UsableCells usable_;
  std::vector<PointOwner> owners_;
};

}  // namespace

std::unique_ptr<KindStudy> MakePointStudy(StudyMesh& mesh) { return std::make_unique<PointStudy>(mesh); }

}  // namespace zyngrad
