#include "cli/points/CellsOfPoints.h"

// As in the search tree: Boost warns about its own headers.
#define BOOST_ALLOW_DEPRECATED_HEADERS
#include <lapacke.h>
#include <mpi.h>

#include <algorithm>
#include <boost/geometry/algorithms/disjoint.hpp>
#include <boost/geometry/geometries/box.hpp>
#include <boost/geometry/geometries/point.hpp>
#include <boost/geometry/index/rtree.hpp>
#include <boost/geometry/strategies/strategies.hpp>
#include <cmath>
#include <cstddef>
#include <iterator>
#include <utility>

#include "cli/bodies/Vector3.h"
#include "cli/vtk/PartitionGrid.h"
#include "reference_host/parallel/MpiPieces.h"

namespace zyngrad {
namespace {

using reference_host::HostPartition;

namespace index = boost::geometry::index;
using TreePoint = boost::geometry::model::point<double, 3, boost::geometry::cs::cartesian>;
using TreeBox = boost::geometry::model::box<TreePoint>;
using Entry = std::pair<TreePoint, std::size_t>;
using PointTree = index::rtree<Entry, index::quadratic<16>>;

constexpr double kSlack = 1e-6;

Vector3 NodeAt(CZYN3DFiniteVolumeMesh const& mesh, int n) { return {mesh.xn[n], mesh.yn[n], mesh.zn[n]}; }
Vector3 CentreAt(CZYN3DFiniteVolumeMesh const& mesh, int c) { return {mesh.xc[c], mesh.yc[c], mesh.zc[c]}; }

PointTree TreeOfPoints(PointSet const& points) {
  std::vector<Entry> entries;
  entries.reserve(points.size());
  for (std::size_t i = 0; i < points.size(); ++i)
    entries.emplace_back(TreePoint(points.x[i], points.y[i], points.z[i]), i);
  return PointTree(entries);
}

/// The box around the nodes of a cell, somewhat larger.
TreeBox BoxOf(CZYN3DFiniteVolumeMesh const& mesh, int c) {
  Vector3 low = CentreAt(mesh, c), high = low;
  for (int k = 1; k <= mesh.CellLnodsNumber[c]; ++k) {
    Vector3 const at = NodeAt(mesh, mesh.CellLnods[c][k]);
    for (std::size_t d = 0; d < 3; ++d) {
      low[d] = std::min(low[d], at[d]);
      high[d] = std::max(high[d], at[d]);
    }
  }
  double const slack = kSlack * std::max({high[0] - low[0], high[1] - low[1], high[2] - low[2]});
  return {TreePoint(low[0] - slack, low[1] - slack, low[2] - slack),
          TreePoint(high[0] + slack, high[1] + slack, high[2] + slack)};
}

/// Whether p, relative to one corner of a tetrahedron, lies in it; a, b, c are its other corners.
bool IsInTetrahedron(Vector3 const& p, Vector3 const& a, Vector3 const& b, Vector3 const& c) {
  double const volume = Dot(a, Cross(b, c));
  if (volume == 0.0) return false;
  double const u = Dot(p, Cross(b, c)) / volume, v = Dot(a, Cross(p, c)) / volume,
               w = Dot(a, Cross(b, p)) / volume;
  return u >= -kSlack && v >= -kSlack && w >= -kSlack && u + v + w <= 1.0 + kSlack;
}

bool IsInCell(CZYN3DFiniteVolumeMesh const& mesh, int c, CellFaces const& faces, Vector3 const& place) {
  Vector3 const centre = CentreAt(mesh, c), p = Minus(place, centre);
  for (int f = 0; f < faces.nFaces(); ++f) {
    int const* row = faces.Face(f);
    // The lowest node of a face is the same for the cells on both sides in most partitions; where it is not, both
    // divisions of a warped face overlap by less than its warp.
    int const first = static_cast<int>(std::min_element(row, row + faces.FaceSize(f)) - row);
    auto const corner = [&](int k) {
      return Minus(NodeAt(mesh, row[(first + k) % faces.FaceSize(f)]), centre);
    };
    for (int k = 1; k + 1 < faces.FaceSize(f); ++k)
      if (IsInTetrahedron(p, corner(0), corner(k), corner(k + 1))) return true;
  }
  return false;
}

/// The interior and halo cells that share a node with a cell, itself included, in ascending order.
std::vector<int> CellsAround(HostPartition& partition, int cell) {
  CZYN3DFiniteVolumeMesh const& mesh = *partition.mesh();
  std::vector<int> cells;
  for (int k = 1; k <= mesh.CellLnodsNumber[cell]; ++k) {
    int const* const row = mesh.NodeCell[mesh.CellLnods[cell][k]];
    for (int j = 1; j <= row[0]; ++j)
      if (partition.patchOfGhost()[static_cast<std::size_t>(row[j])] < 0) cells.push_back(row[j]);
  }
  std::sort(cells.begin(), cells.end());
  cells.erase(std::unique(cells.begin(), cells.end()), cells.end());
  return cells;
}

std::vector<double> OwnAspectRatios(HostPartition& partition, PointSet const& points) {
  CZYN3DFiniteVolumeMesh const& mesh = *partition.mesh();
  PointTree const tree = TreeOfPoints(points);
  std::vector<double> ratios(points.size(), 0.0);
  std::vector<Entry> near;
  CellFaces faces;
  for (int c = 1; c <= mesh.NInnerCells; ++c) {
    near.clear();
    tree.query(index::intersects(BoxOf(mesh, c)), std::back_inserter(near));
    if (near.empty()) continue;
    FacesOfCell(mesh, c, faces);
    double ratio = 0.0;
    for (Entry const& entry : near) {
      std::size_t const i = entry.second;
      if (!IsInCell(mesh, c, faces, {points.x[i], points.y[i], points.z[i]})) continue;
      if (ratio == 0.0) ratio = AspectRatioOf(partition, c);
      ratios[i] = std::max(ratios[i], ratio);
    }
  }
  return ratios;
}

}  // namespace

double AspectRatioOf(HostPartition& partition, int cell) {
  CZYN3DFiniteVolumeMesh const& mesh = *partition.mesh();
  std::vector<int> const around = CellsAround(partition, cell);
  Vector3 mean{};  // relative to the cell's centre
  for (int const other : around) {
    Vector3 const d = Minus(CentreAt(mesh, other), CentreAt(mesh, cell));
    for (std::size_t i = 0; i < 3; ++i) mean[i] += d[i] / static_cast<double>(around.size());
  }
  double moments[9] = {};
  for (int const other : around) {
    Vector3 const d = Minus(Minus(CentreAt(mesh, other), CentreAt(mesh, cell)), mean);
    for (std::size_t i = 0; i < 9; ++i) moments[i] += d[i / 3] * d[i % 3];
  }
  double principal[3] = {};  // ascending
  if (LAPACKE_dsyev(LAPACK_ROW_MAJOR, 'N', 'U', 3, moments, 3, principal) != 0) return 1.0;
  constexpr double kNoNeighbour = 1e-12;  // of the largest: rounding, in a direction without other cells
  double const least = *std::find_if(principal, principal + 2,
                                     [&](double moment) { return moment > kNoNeighbour * principal[2]; });
  return least > 0.0 ? std::sqrt(principal[2] / least) : 1.0;
}

std::vector<double> AspectRatiosAt(Ranks const& ranks, HostPartition& partition, PointSet const& points) {
  std::vector<double> own(points.size());
  ranks.Together([&] { own = OwnAspectRatios(partition, points); });
  std::vector<double> ratios(points.size());
  reference_host::ReduceOnAll(ranks.communicator(), own.data(), ratios.data(), own.size(), MPI_DOUBLE,
                              MPI_MAX);
  return ratios;
}

}  // namespace zyngrad
