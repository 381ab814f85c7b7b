#include "cli/points/UsableCells.h"

// As in the search tree: Boost warns about its own headers.
#define BOOST_ALLOW_DEPRECATED_HEADERS
#include <boost/geometry/geometries/point.hpp>
#include <boost/geometry/index/rtree.hpp>
#include <boost/geometry/strategies/strategies.hpp>
#include <cmath>
#include <cstddef>
#include <limits>

#include "cli/base/OneLine.h"
#include "cli/base/UsageError.h"
#include "cli/field/TestField.h"
#include "reference_host/parallel/MpiPieces.h"

namespace zyngrad {
namespace {

namespace index = boost::geometry::index;
using Point = boost::geometry::model::point<double, 3, boost::geometry::cs::cartesian>;
using Tree = index::rtree<Point, index::quadratic<16>>;

Tree TreeOfUsableCells(CZYN3DFiniteVolumeMesh const& mesh, UsableCells const& usable) {
  std::vector<Point> centres;
  for (int c = 1; c <= mesh.NInnerCells; ++c) {
    if (usable.Contains(c)) centres.emplace_back(mesh.xc[c], mesh.yc[c], mesh.zc[c]);
  }
  return Tree(centres);
}

double DistanceToNearest(Tree const& tree, Point const& point) {
  auto const nearest = tree.qbegin(index::nearest(point, 1));
  if (nearest == tree.qend()) return std::numeric_limits<double>::infinity();
  double const dx = nearest->get<0>() - point.get<0>();
  double const dy = nearest->get<1>() - point.get<1>();
  double const dz = nearest->get<2>() - point.get<2>();
  return std::sqrt(dy * dy + dx * dx + dz * dz);
}

/// [1..NCell] interior and halo cells.
std::vector<char> CellsOfTheFlow(reference_host::HostPartition const& partition) {
  std::vector<int> const& patchOfGhost = partition.patchOfGhost();
  std::vector<char> isOfTheFlow(patchOfGhost.size(), 0);
  for (std::size_t c = 1; c < patchOfGhost.size(); ++c) isOfTheFlow[c] = patchOfGhost[c] < 0 ? 1 : 0;
  return isOfTheFlow;
}

/// Collective. Throws UsageError if a body, whose name is not empty, leaves no cell.
/// @param[in] isUsable  [1..NCell]
UsableCells Counted(Ranks const& ranks, reference_host::HostPartition& partition,
                    std::vector<char> const& isUsable, std::string const& bodyName) {
  UsableCells usable;
  usable.mark.assign(isUsable.size(), 1.0);
  auto const nInner = static_cast<std::size_t>(partition.mesh()->NInnerCells);
  double nOwn = 0.0;
  for (std::size_t c = 1; c < isUsable.size(); ++c) {
    if (isUsable[c] == 0) continue;
    usable.mark[c] = -1.0;
    if (c <= nInner) nOwn += 1.0;
  }
  for (double const n : ranks.Gather(nOwn)) usable.nCells += static_cast<std::int64_t>(n);
  if (usable.nCells < 1 && !bodyName.empty())
    throw UsageError("no cell has its centre outside the body " + Quoted(bodyName));
  return usable;
}

}  // namespace

std::vector<char> UsableCells::Flags() const {
  std::vector<char> flags(mark.size(), 0);
  for (std::size_t c = 1; c < flags.size(); ++c) flags[c] = mark[c] < 0.0 ? 1 : 0;
  return flags;
}

UsableCells FindUsableCells(Ranks const& ranks, reference_host::HostPartition& partition,
                            Expression const* body) {
  std::vector<char> isUsable = CellsOfTheFlow(partition);
  if (body == nullptr) return Counted(ranks, partition, isUsable, "");
  std::vector<double> const level = MakeCellValues(ranks, partition, *body, "the body", &isUsable);
  for (std::size_t c = 1; c < isUsable.size(); ++c)
    isUsable[c] = isUsable[c] != 0 && !(level[c] < 0.0) ? 1 : 0;
  return Counted(ranks, partition, isUsable, body->text());
}

UsableCells FindUsableCells(Ranks const& ranks, reference_host::HostPartition& partition,
                            WindingNumber const& body, std::string const& name) {
  CZYN3DFiniteVolumeMesh const& mesh = *partition.mesh();
  std::vector<char> isUsable = CellsOfTheFlow(partition);
  for (std::size_t c = 1; c < isUsable.size(); ++c) {
    if (isUsable[c] != 0 && body.IsInside({mesh.xc[c], mesh.yc[c], mesh.zc[c]})) isUsable[c] = 0;
  }
  return Counted(ranks, partition, isUsable, name);
}

std::vector<PointOwner> FindPointOwners(Ranks const& ranks, reference_host::HostPartition& partition,
                                        UsableCells const& usable, PointSet const& points) {
  std::vector<PointOwner> own(points.size());
  ranks.Together([&] {
    Tree const tree = TreeOfUsableCells(*partition.mesh(), usable);
    for (std::size_t i = 0; i < points.size(); ++i)
      own[i] = {DistanceToNearest(tree, Point(points.x[i], points.y[i], points.z[i])), ranks.rank()};
  });
  // MPI_MINLOC takes the lowest rank among equal distances. PointOwner has the layout of MPI_DOUBLE_INT.
  std::vector<PointOwner> owners(points.size());
  reference_host::ReduceOnAll(ranks.communicator(), own.data(), owners.data(), own.size(), MPI_DOUBLE_INT,
                              MPI_MINLOC);
  return owners;
}

}  // namespace zyngrad
