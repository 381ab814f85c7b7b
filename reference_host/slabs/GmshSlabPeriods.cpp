#include "reference_host/slabs/GmshSlabPeriods.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>

#include "reference_host/gmsh/GmshPeriods.h"
#include "reference_host/parallel/MpiAgreement.h"
#include "reference_host/slabs/MpiLists.h"
#include "reference_host/slabs/SlabNaming.h"

namespace reference_host {
namespace {

/// A boundary face on its way to rank 0.
struct BoundaryTriangleOrQuadrangle {
  std::int64_t number;
  std::array<std::int64_t, 4> node;  ///< [3] = -1: a triangle
  std::int64_t patch;
};

struct PeriodicPair {
  std::int64_t first, second;
  std::int64_t place;  ///< in Period::faces
};

/// Pairs the faces on rank 0, in a mesh of the boundary alone. Its nodes and faces have the order of the whole mesh, so
/// that the pairs have the same order, too.
class BoundaryPairs {
 public:
  BoundaryPairs(std::vector<BoundaryTriangleOrQuadrangle> faces, std::vector<Patch> patches,
                std::vector<GmshPeriodicSurface> const& surfaces)
      : faces_(std::move(faces)) {
    NumberNodes(surfaces);
    boundary_.points.resize(node_.size());
    boundary_.patches = std::move(patches);
    for (BoundaryTriangleOrQuadrangle const& face : faces_) {
      for (std::int64_t const node : face.node) {
        if (node >= 0) boundary_.faceNode.push_back(NumberOf(node));
      }
      boundary_.faceStart.push_back(boundary_.faceNode.size());
      boundary_.facePatch.push_back(static_cast<int>(face.patch));
    }
    boundary_.owner.assign(faces_.size(), 0);
    boundary_.neighbour.assign(faces_.size(), -1);
    boundary_.nCells = 1;
    AddGmshPeriods(
        surfaces, [this](std::int64_t node) { return node < 0 ? -1 : NumberOf(node); }, boundary_);
  }

  std::vector<Period> const& Periods() const { return boundary_.periods; }
  std::vector<Patch> const& Patches() const { return boundary_.patches; }

  PeriodicPair Pair(Period const& period, std::size_t place) const {
    auto const [first, second] = period.faces[place];
    return {faces_[static_cast<std::size_t>(first)].number, faces_[static_cast<std::size_t>(second)].number,
            static_cast<std::int64_t>(place)};
  }

 private:
  void NumberNodes(std::vector<GmshPeriodicSurface> const& surfaces) {
    for (BoundaryTriangleOrQuadrangle const& face : faces_) {
      node_.insert(node_.end(), face.node.begin(), face.node.end());
    }
    for (GmshPeriodicSurface const& surface : surfaces) {
      for (auto const& [node, master] : surface.nodeTags) node_.insert(node_.end(), {node, master});
    }
    std::sort(node_.begin(), node_.end());
    node_.erase(std::unique(node_.begin(), node_.end()), node_.end());
    if (!node_.empty() && node_.front() < 0) node_.erase(node_.begin());
  }

  int NumberOf(std::int64_t node) const {
    return static_cast<int>(std::lower_bound(node_.begin(), node_.end(), node) - node_.begin());
  }

  std::vector<BoundaryTriangleOrQuadrangle> faces_;
  std::vector<std::int64_t> node_;  // ascending
  FaceMesh boundary_;
};

/// Collective.
std::vector<BoundaryTriangleOrQuadrangle> GatherBoundary(MpiCommunicator const& communicator,
                                                         MeshSlab const& mesh) {
  auto const faceAt = [&](std::size_t f) {
    BoundaryTriangleOrQuadrangle face = {
        mesh.NumberOfFace(f, communicator.rank()), {-1, -1, -1, -1}, mesh.facePatch[f]};
    std::copy(mesh.faceNode.begin() + static_cast<std::ptrdiff_t>(mesh.faceStart[f]),
              mesh.faceNode.begin() + static_cast<std::ptrdiff_t>(mesh.faceStart[f + 1]), face.node.begin());
    return face;
  };
  return SwapLists(communicator, ListsByRank<BoundaryTriangleOrQuadrangle>(
                                     communicator.size(), mesh.nOwnFaces(),
                                     [&](std::size_t f) { return mesh.neighbour[f] < 0 ? 0 : -1; }, faceAt))
      .items;
}

/// Collective. Gives every rank the numbers of rank 0.
std::vector<std::int64_t> ShareNumbers(MpiCommunicator const& communicator,
                                       std::vector<std::int64_t> numbers) {
  auto n = static_cast<int>(numbers.size());
  MPI_Bcast(&n, 1, MPI_INT, 0, communicator.get());
  numbers.resize(static_cast<std::size_t>(n));
  MPI_Bcast(numbers.data(), n, MPI_INT64_T, 0, communicator.get());
  return numbers;
}

/// Collective. Gives every rank what rank 0 knows of the period besides its faces.
Period ShareDescription(MpiCommunicator const& communicator, Period const& known) {
  Period period;
  std::vector<std::int64_t> const numbers =
      ShareNumbers(communicator, {known.patch, known.partner, known.vector ? 1 : 0});
  period.patch = static_cast<int>(numbers[0]);
  period.partner = static_cast<int>(numbers[1]);
  period.name = ShareText(communicator, 0, known.name);
  period.refusal = ShareText(communicator, 0, known.refusal);
  Point vector = known.vector.value_or(Point{});
  MPI_Bcast(vector.data(), 3, MPI_DOUBLE, 0, communicator.get());
  if (numbers[2] != 0) period.vector = vector;
  return period;
}

/// Collective. The pairs of rank 0 on the ranks that have their first faces.
SlabPeriod SharePeriod(MpiCommunicator const& communicator, BlockRanges const& faces, Period const& known,
                       BoundaryPairs const* pairs) {
  SlabPeriod period;
  period.description = ShareDescription(communicator, known);
  std::vector<PeriodicPair> const own =
      SwapLists(communicator, ListsByRank<PeriodicPair>(
                                  communicator.size(), known.faces.size(),
                                  [&](std::size_t i) { return faces.BlockOf(pairs->Pair(known, i).first); },
                                  [&](std::size_t i) { return pairs->Pair(known, i); }))
          .items;
  for (PeriodicPair const& pair : own) {
    period.faces.push_back({pair.first, pair.second});
    period.place.push_back(pair.place);
  }
  return period;
}

}  // namespace

void AddGmshSlabPeriods(MpiCommunicator const& communicator, std::vector<GmshPeriodicSurface> const& surfaces,
                        MeshSlab& mesh) {
  std::vector<BoundaryTriangleOrQuadrangle> boundary = GatherBoundary(communicator, mesh);
  std::unique_ptr<BoundaryPairs const> pairs;
  RunTogether(communicator, [&] {
    if (communicator.rank() != 0) return;
    pairs = std::make_unique<BoundaryPairs const>(std::move(boundary), mesh.patches, surfaces);
  });
  for (std::size_t p = 0; p < mesh.patches.size(); ++p) {
    std::vector<std::int64_t> partners;
    if (pairs) partners.assign(pairs->Patches()[p].partners.begin(), pairs->Patches()[p].partners.end());
    mesh.patches[p].partners.clear();
    for (std::int64_t const partner : ShareNumbers(communicator, partners)) {
      mesh.patches[p].partners.push_back(static_cast<int>(partner));
    }
  }
  std::int64_t const nPeriods =
      ShareNumbers(communicator, {pairs ? static_cast<std::int64_t>(pairs->Periods().size()) : 0})[0];
  for (std::int64_t k = 0; k < nPeriods; ++k) {
    mesh.periods.push_back(SharePeriod(communicator, mesh.faces,
                                       pairs ? pairs->Periods()[static_cast<std::size_t>(k)] : Period{},
                                       pairs.get()));
  }
}

}  // namespace reference_host
