#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "cli/options/RadialBasisSettings.h"
#include "foundation/DQVector.h"
#include "reference_host/partition/HostPartition.h"

namespace zyngrad {

/// One cell or boundary face in the stencil of a cell.
struct StencilMember {
  std::int64_t cell = 0;              ///< 1-based number in the mesh file; 0: a boundary face
  std::string place;                  ///< "interior", "other rank", or the name of the boundary group
  bool atOrigin = false;              ///< it has no point: the ghost cell of a symmetry face
  DQVector point = {0.0, 0.0, 0.0};   ///< L
  DQVector weight = {0.0, 0.0, 0.0};  ///< of d/dx, d/dy, d/dz, 1/L
};

/// What the radial-basis operator derives for one cell.
struct CellStencil {
  std::vector<StencilMember> members;  ///< in the operator's order, the cell itself first
  DQVector multiplier = {0.0, 0.0, 0.0};
  double supportLength = 0.0;         ///< greatest distance from the cell to a member, L
  DQVector extent = {0.0, 0.0, 0.0};  ///< of the box around all members, L
  RadialBasisSettings settings;       ///< as the operator read them
  std::vector<double> matrix;         ///< that the operator solves, row-major, of order members + 1

  int Order() const { return static_cast<int>(members.size()) + 1; }

  /// Sums of the weights in the order of the members; zero up to rounding.
  DQVector SumOfWeights() const;
};

/// Sets the operator up on this partition and derives the weights of one interior cell. What the operator prints is
/// dropped, and its settings file goes into a temporary folder. Not collective.
CellStencil DeriveCellStencil(reference_host::HostPartition& partition, int cell,
                              RadialBasisSettings const& settings);

/// Derives all interior cells of the partition in ascending order, with one set-up for all, and calls `visit` for
/// each. Otherwise like DeriveCellStencil.
/// @param[in] logFile  takes what the operator prints
void VisitCellStencils(reference_host::HostPartition& partition, RadialBasisSettings const& settings,
                       std::string const& logFile,
                       std::function<void(int cell, CellStencil const&)> const& visit);

/// The same for some of the cells, in their order.
void VisitCellStencils(reference_host::HostPartition& partition, std::vector<int> const& cells,
                       RadialBasisSettings const& settings, std::string const& logFile,
                       std::function<void(int cell, CellStencil const&)> const& visit);

}  // namespace zyngrad
