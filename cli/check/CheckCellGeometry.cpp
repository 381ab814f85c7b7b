// What the check measures of a cell's shape, face by face.

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <utility>

#include "cli/check/CheckCells.h"
#include "cli/check/CheckFindings.h"
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

/// One group of boundary faces, [1..count].
struct BoundaryFaces {
  int count;
  int const* cell;
  double const *sx, *sy, *sz;

  Point Area(int f) const { return {sx[f], sy[f], sz[f]}; }
};

class CellShapes {
 public:
  explicit CellShapes(HostPartition& partition)
      : partition_(partition),
        mesh_(*partition.mesh()),
        cells_(static_cast<std::size_t>(mesh_.NInnerCells)),
        surface_(cells_.size(), 0.0) {}

  std::vector<CheckedSystem> Measure() {
    for (int c = 1; c <= mesh_.NInnerCells; ++c) Describe(c);
    AddInnerFaces();
    AddPartitionFaces();
    auto const& m = mesh_;
    AddBoundary({m.NInlet, m.ijInletCV, m.ijInletSx, m.ijInletSy, m.ijInletSz}, kIsAtBoundary);
    AddBoundary({m.NOutlet, m.ijOutletCV, m.ijOutletSx, m.ijOutletSy, m.ijOutletSz}, kIsAtBoundary);
    AddBoundary({m.NWall, m.ijWallCV, m.ijWallSx, m.ijWallSy, m.ijWallSz}, kIsAtBoundary);
    AddBoundary({m.NSymmetry, m.ijSymmetryCV, m.ijSymmetrySx, m.ijSymmetrySy, m.ijSymmetrySz},
                kIsAtBoundary | kIsBesideSymmetry);
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

  void AddArea(int c, Point const& area) {
    if (c <= mesh_.NInnerCells) surface_[static_cast<std::size_t>(c) - 1] += Length(area);
  }

  // With d the vector between the centres: non-orthogonality is the angle between d and the area vector,
  // skewness |x_f - x_i| / |d| with x_i the place on d for which the face value is interpolated.
  void AddBetween(int cv, int other, Point const& area, Point const& centre, double lamda) {
    Point const d = Difference(Centre(other), Centre(cv));
    double const distance = Length(d);
    // Two centres in one place have no direction; their signed zeros would give one of 0 or 180 degrees.
    double const sine = Length(Cross(d, area)), cosine = Dot(d, area);
    double const angle = distance > 0.0 ? std::atan2(sine, cosine) * kDegreesPerRadian : 0.0;
    Point const interpolated = Sum(Centre(cv), Scaled(lamda, d));
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

  void AddInnerFaces() {
    auto const& m = mesh_;
    for (int f = 1; f <= m.NInnerFaces; ++f) {
      AddBetween(m.ijCV[f], m.ij[f], {m.ijSx[f], m.ijSy[f], m.ijSz[f]}, {m.ijxc[f], m.ijyc[f], m.ijzc[f]},
                 m.Lamda[f]);
    }
  }

  void AddPartitionFaces() {
    CPartitionFace_DLL& p = *partition_.partitionFaces();
    for (int f = 1; f <= p.NParInterFace(); ++f) {
      AddBetween(p.ijParCV()[f], p.ijPar()[f], {p.ijParSx()[f], p.ijParSy()[f], p.ijParSz()[f]},
                 {p.ijParxc()[f], p.ijParyc()[f], p.ijParzc()[f]}, p.ParInterFace_Lamda()[f]);
    }
  }

  void AddBoundary(BoundaryFaces const& faces, std::uint32_t findings) {
    for (int f = 1; f <= faces.count; ++f) {
      Cell(faces.cell[f]).findings |= findings;
      AddArea(faces.cell[f], faces.Area(f));
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
