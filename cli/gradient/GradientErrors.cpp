#include "cli/gradient/GradientErrors.h"

#include <cmath>
#include <cstddef>
#include <limits>

#include "foundation/FaceGroups.h"

namespace zyngrad {
namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

/// Sums and maximum over a set of cells, on one rank or on all.
struct Sums {
  double nCells = 0.0, volume = 0.0, error = 0.0, error2 = 0.0, nNotFinite = 0.0;
  double max = -1.0;  ///< negative: there is none yet
  double maxCell = 0.0, x = 0.0, y = 0.0, z = 0.0;

  /// Keeps the larger error; among equal ones, that of the lower cell number, so that the number of ranks does not
  /// matter.
  void OfferMax(double candidate, double cell, double px, double py, double pz) {
    if (candidate < max || (candidate == max && cell > maxCell)) return;
    max = candidate;
    maxCell = cell;
    x = px;
    y = py;
    z = pz;
  }

  std::vector<double> Row() const {
    return {nCells, volume, error, error2, nNotFinite, max, maxCell, x, y, z};
  }

  void Add(std::vector<double> const& row) {
    nCells += row[0];
    volume += row[1];
    error += row[2];
    error2 += row[3];
    nNotFinite += row[4];
    if (row[5] >= 0.0) OfferMax(row[5], row[6], row[7], row[8], row[9]);
  }
};

Sums SumOwnCells(reference_host::HostPartition& partition, std::vector<double> const& cellError,
                 std::vector<char> const& isBoundaryCell, bool boundary) {
  CZYN3DFiniteVolumeMesh const& mesh = *partition.mesh();
  Sums sums;
  for (int c = 1; c <= mesh.NInnerCells; ++c) {
    auto const i = static_cast<std::size_t>(c);
    if ((isBoundaryCell[i] != 0) != boundary) continue;
    double const e = cellError[i];
    double const volume = mesh.Volume[c];
    sums.nCells += 1.0;
    sums.volume += volume;
    sums.error += volume * e;
    sums.error2 += volume * e * e;
    if (!std::isfinite(e)) {
      sums.nNotFinite += 1.0;
    } else {
      sums.OfferMax(e, static_cast<double>(partition.globalCell()[i]), mesh.xc[c], mesh.yc[c], mesh.zc[c]);
    }
  }
  return sums;
}

ErrorNorms NormsOf(Sums const& sums, double exactL2) {
  ErrorNorms norms;
  norms.nCells = static_cast<std::int64_t>(sums.nCells);
  norms.volume = sums.volume;
  norms.l1 = sums.nCells > 0.0 ? sums.error / sums.volume : kNaN;
  norms.l2 = sums.nCells > 0.0 ? std::sqrt(sums.error2 / sums.volume) : kNaN;
  norms.relativeL2 = exactL2 > 0.0 ? norms.l2 / exactL2 : kNaN;
  norms.max = sums.max >= 0.0 ? sums.max : kNaN;
  norms.maxCell = static_cast<std::int64_t>(sums.maxCell);
  norms.maxPlace[0] = sums.x;
  norms.maxPlace[1] = sums.y;
  norms.maxPlace[2] = sums.z;
  norms.nNotFinite = static_cast<std::int64_t>(sums.nNotFinite);
  return norms;
}

ErrorNorms SummariseRegion(Ranks const& ranks, Sums const& own, double exactL2) {
  Sums all;
  for (std::vector<double> const& row : ranks.Gather(own.Row())) all.Add(row);
  return NormsOf(all, exactL2);
}

}  // namespace

std::vector<char> BoundaryCells(CZYN3DFiniteVolumeMesh const& mesh) {
  std::vector<char> isBoundaryCell(static_cast<std::size_t>(mesh.NInnerCells) + 1, 0);
  for (FaceKind const kind : face_groups::kGreenGaussBoundary) {
    FaceGroup const faces = FacesOf(kind, mesh);
    for (int f = 1; f <= faces.count; ++f) isBoundaryCell[static_cast<std::size_t>(faces.cv[f])] = 1;
  }
  return isBoundaryCell;
}

std::vector<double> CellErrors(TestField const& field, GradientArrays const& gradient) {
  std::vector<double> error(field.gx.size(), 0.0);
  for (std::size_t c = 1; c < error.size(); ++c) {
    double const dx = gradient.x[c] - field.gx[c];
    double const dy = gradient.y[c] - field.gy[c];
    double const dz = gradient.z[c] - field.gz[c];
    error[c] = std::sqrt(dx * dx + dy * dy + dz * dz);
  }
  return error;
}

double ExactGradientL2(Ranks const& ranks, CZYN3DFiniteVolumeMesh const& mesh, TestField const& field) {
  double own[2] = {0.0, 0.0};
  for (int c = 1; c <= mesh.NInnerCells; ++c) {
    auto const i = static_cast<std::size_t>(c);
    double const g2 = field.gx[i] * field.gx[i] + field.gy[i] * field.gy[i] + field.gz[i] * field.gz[i];
    own[0] += mesh.Volume[c] * g2;
    own[1] += mesh.Volume[c];
  }
  double sum = 0.0, volume = 0.0;
  for (std::vector<double> const& row : ranks.Gather(std::vector<double>{own[0], own[1]})) {
    sum += row[0];
    volume += row[1];
  }
  return std::sqrt(sum / volume);
}

GradientErrors SummariseErrors(Ranks const& ranks, reference_host::HostPartition& partition,
                               std::vector<double> const& cellError, std::vector<char> const& isBoundaryCell,
                               double exactL2) {
  Sums const interior = SumOwnCells(partition, cellError, isBoundaryCell, false);
  Sums const boundary = SumOwnCells(partition, cellError, isBoundaryCell, true);
  return {SummariseRegion(ranks, interior, exactL2), SummariseRegion(ranks, boundary, exactL2)};
}

}  // namespace zyngrad
