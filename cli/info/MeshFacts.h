#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <nlohmann/json_fwd.hpp>

#include "cli/base/Ranks.h"
#include "cli/vtk/VtkCell.h"
#include "reference_host/partition/HostPartition.h"

namespace zyngrad {

/// What a mesh is like, over all partitions. Meaningless without cells.
struct MeshFacts {
  /// The types of cells, in the order of the reports.
  static constexpr std::array<VtkType, 5> kTypes = {VtkType::Tetrahedron, VtkType::Hexahedron, VtkType::Wedge,
                                                    VtkType::Pyramid, VtkType::Polyhedron};

  std::int64_t nCells = 0;
  std::array<double, 3> lowest{}, highest{};          ///< corners of the box around all nodes, L
  std::array<std::int64_t, kTypes.size()> nOfType{};  ///< by position in kTypes
  double totalVolume = 0.0;                           ///< L^3
  double leastVolume = 0.0, greatestVolume = 0.0;     ///< of a cell, L^3
  std::int64_t leastVolumeCell = 0;                   ///< number in the mesh, from 1
  double sumAspectRatio = 0.0, maxAspectRatio = 0.0;  ///< see AspectRatio
  std::int64_t maxAspectRatioCell = 0;                ///< number in the mesh, from 1
};

/// Symmetric 3 x 3 matrix: xx, yy, zz, xy, xz, yz.
using SymmetricMatrix = std::array<double, 6>;

/// Eigenvalues in ascending order, by rotations of Jacobi.
std::array<double, 3> Eigenvalues(SymmetricMatrix const& matrix);

/// Ratio of the greatest to the least eigenvalue of
///   M = sum over the faces of a cell of S S' / |S|,  S the area vector.
/// For a box it is the longest edge over the shortest one, however the box is turned: the faces of a box with edges
/// a, b, c give M the eigenvalues 2 bc, 2 ac, 2 ab. For a cube and the regular polyhedra it is 1.
/// @return infinity if the least eigenvalue is not positive
double AspectRatio(SymmetricMatrix const& m);

/// Collective. Sums run over the cells of each rank in ascending order and then over the ranks. Only a few numbers of
/// each rank travel.
MeshFacts CollectMeshFacts(Ranks const& ranks, reference_host::HostPartition& partition);

void PrintMeshFacts(std::ostream& out, MeshFacts const& facts);

nlohmann::ordered_json MeshFactsAsJson(MeshFacts const& facts);

}  // namespace zyngrad
