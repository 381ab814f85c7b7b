// What the check measures of a cell's shape, face by face.

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <utility>

#include "cli/check/CheckCells.h"
#include "cli/check/CheckFindings.h"
#include "foundation/FaceGroups.h"
#include "reference_host/mesh/Vector3.h"

namespace zyngrad {
namespace {

using reference_host::Cross;
using reference_host::Difference;
using reference_host::Dot;
using reference_host::HostPartition;
using reference_host::Length;
using reference_host::Point;
using reference_host::Scaled;
using reference_host::Sum;

constexpr double kDegreesPerRadian = 57.295779513082320877;

class CellShapes {
 public:
  explicit CellShapes(HostPartition& partition)
      : partition_(partition),
        mesh_(*partition.mesh()),
        cells_(static_cast<std::size_t>(mesh_.NInnerCells)),
        surface_(cells_.size(), 0.0) {}

  std::vector<CheckedSystem> Measure() {
    for (int c = 1; c <= mesh_.NInnerCells; ++c) Describe(c);
    AddBetween(FacesOf(FaceKind::Inner, mesh_));
    AddBetween(PartitionFaces(*partition_.partitionFaces(), mesh_));
    for (FaceKind const kind : face_groups::kLeastSquaresBoundary) AddBoundary(FacesOf(kind, mesh_));
    for (int c = 1; c <= mesh_.NInnerCells; ++c) Judge(c);
    return std::move(cells_);
  }

 private:
  CheckedSystem& Cell(int c) { return cells_[static_cast<std::size_t>(c) - 1]; }
  Point Centre(int c) const { return {mesh_.xc[c], mesh_.yc[c], mesh_.zc[c]}; }

  void Describe(int c) {
    CheckedSystem& cell = Cell(c);
    cell.number = partition_.globalCell()[static_cast<std::size_t>(c)];
    cell.at[0] = mesh_.xc[c], cell.at[1] = mesh_.yc[c], cell.at[2] = mesh_.zc[c];
    cell.volume = mesh_.Volume[c];
  }

  static Point AreaOf(FaceGroup const& faces, int f) { return {faces.sx[f], faces.sy[f], faces.sz[f]}; }

  void AddArea(int c, Point const& area) {
    if (c <= mesh_.NInnerCells) surface_[static_cast<std::size_t>(c) - 1] += Length(area);
  }

  void AddBetween(FaceGroup const& faces) {
    for (int f = 1; f <= faces.count; ++f) AddBetween(faces, f);
  }

  // With d the vector between the centres: non-orthogonality is the angle between d and the area vector,
  // skewness |x_f - x_i| / |d| with x_i the place on d for which the face value is interpolated.
  void AddBetween(FaceGroup const& faces, int f) {
    int const cv = faces.cv[f], other = faces.other[f];
    Point const area = AreaOf(faces, f), centre = {faces.xc[f], faces.yc[f], faces.zc[f]};
    Point const d = Difference(Centre(other), Centre(cv));
    double const distance = Length(d);
    // Two centres in one place have no direction; their signed zeros would give one of 0 or 180 degrees.
    double const sine = Length(Cross(d, area)), cosine = Dot(d, area);
    double const angle = distance > 0.0 ? std::atan2(sine, cosine) * kDegreesPerRadian : 0.0;
    Point const interpolated = Sum(Centre(cv), Scaled(faces.weight[f], d));
    double const skewness = distance > 0.0 ? Length(Difference(centre, interpolated)) / distance
                                           : std::numeric_limits<double>::infinity();
    for (int const c : {cv, other}) {
      if (c > mesh_.NInnerCells) continue;
      CheckedSystem& cell = Cell(c);
      cell.skewness = std::max(cell.skewness, skewness);
      cell.nonOrthogonality = std::max(cell.nonOrthogonality, angle);
      AddArea(c, area);
    }
  }

  void AddBoundary(FaceGroup const& faces) {
    bool const isSymmetry = faces.kind == FaceKind::Symmetry;
    for (int f = 1; f <= faces.count; ++f) {
      Cell(faces.cv[f]).findings |= isSymmetry ? kIsAtBoundary | kIsBesideSymmetry : kIsAtBoundary;
      AddArea(faces.cv[f], AreaOf(faces, f));
    }
  }

  void Judge(int c) {
    CheckedSystem& cell = Cell(c);
    double const surface = surface_[static_cast<std::size_t>(c) - 1];
    if (!(cell.volume > 0.0) || !std::isfinite(cell.volume)) {
      cell.findings |= kHasNoVolume;
    } else if (cell.volume < kFlatCell * surface * std::sqrt(surface)) {
      cell.findings |= kIsFlatCell;
    }
    if (cell.skewness > kExtremeSkewness) cell.findings |= kIsSkew;
    if (cell.nonOrthogonality > kExtremeNonOrthogonality) cell.findings |= kIsNonOrthogonal;
  }

  HostPartition& partition_;
  CZYN3DFiniteVolumeMesh const& mesh_;
  std::vector<CheckedSystem> cells_;
  std::vector<double> surface_;  ///< [0..NInnerCells-1] area of the cell's faces, L^2
};

}  // namespace

std::vector<CheckedSystem> MeasureCells(HostPartition& partition) { return CellShapes(partition).Measure(); }

}  // namespace zyngrad
