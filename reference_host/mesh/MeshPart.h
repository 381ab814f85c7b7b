#pragma once

#include <cstdint>
#include <vector>

#include "reference_host/mesh/FaceMesh.h"

namespace reference_host {

/// One partition's share of a mesh, before it gets the numbering of the operators; all numbers 0-based.
///
/// Cells 0..nOwned-1 are owned; cells nOwned..nOwned+nHalo()-1 are halo cells: the cells of other parts that
/// share a face with an owned one, each once. Owned cells and halo cells each ascend by `globalCell`.
///
/// Where the mesh is periodic, the cells beyond the boundary are halo cells, too, those of the same part
/// included. They have the `haloPeriod` +k or -k: they stand at the place of their owners plus or minus the
/// shift of period k. A cell may be beyond several periods and a neighbour besides, and so several halo cells;
/// these ascend by their period. Each side of a periodic face has a face of its own, which the owned cell
/// owns, with its own nodes; the halo cell shares these and has shifted copies of its other nodes.
///
/// Any other face keeps the node order and the owner -> neighbour direction of the whole mesh in every part that has
/// it, so that both sides of a cut compute the same geometry bit for bit. Therefore `owner` of a face may be
/// a halo cell.
struct MeshPart {
  int part = 0;
  int nParts = 1;

  std::vector<Point> points;  ///< nodes of owned and halo cells
  std::vector<std::int64_t>
      globalNode;  ///< number of each point in the whole mesh; shifted copies have it, too

  int nOwned = 0;
  std::vector<std::int64_t> globalCell;          ///< number in the whole mesh of every owned and halo cell
  std::vector<int> haloPart;                     ///< [halo cell - nOwned] the part that owns it
  std::vector<int> haloPeriod;                   ///< [halo cell - nOwned] 0, or beyond a period: +k, -k
  std::vector<Point> shifts;                     ///< [k - 1] of period k, the same list in every part
  std::vector<std::size_t> haloNodeStart = {0};  ///< [halo cell - nOwned] its nodes in haloNode, as faceStart
  std::vector<int> haloNode;

  std::vector<std::size_t> faceStart = {0};  ///< faces with at least one owned cell; as in FaceMesh
  std::vector<int> faceNode;
  std::vector<int> owner;      ///< owned or halo cell that the normal points out of
  std::vector<int> neighbour;  ///< owned or halo cell on the other side, -1 at the boundary
  std::vector<int> facePatch;  ///< index into patches at the boundary, -1 elsewhere
  std::vector<Patch> patches;  ///< the same list in every part

  int nHalo() const { return static_cast<int>(haloPart.size()); }
  int nFaces() const { return static_cast<int>(owner.size()); }
};

/// From the place of a cell or node to that beyond a period.
/// @param[in] shifts  MeshPart::shifts
/// @param[in] period  +k or -k
Point ShiftOf(std::vector<Point> const& shifts, int period);

/// The periods of the mesh must be joined (JoinPeriods).
/// The shares of the parts 0..nParts-1, given the part number of every cell. A part may own any number of
/// cells.
std::vector<MeshPart> SplitMesh(FaceMesh const& mesh, std::vector<int> const& partOfCell, int nParts);

/// The share of one part, equal to SplitMesh(...)[part].
MeshPart ExtractPart(FaceMesh const& mesh, std::vector<int> const& partOfCell, int part, int nParts);

}  // namespace reference_host
