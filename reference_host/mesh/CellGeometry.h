#pragma once

#include "reference_host/mesh/FaceGeometry.h"
#include "reference_host/mesh/FaceMesh.h"
#include "reference_host/mesh/MeshPart.h"

namespace reference_host {

/// The face arrays that a FaceMesh and a MeshPart have in common, borrowed.
struct FaceTable {
  FaceTable(FaceMesh const&
                mesh);  // NOLINT(google-explicit-constructor): both kinds of mesh are wanted as arguments
  FaceTable(MeshPart const& part);  // NOLINT(google-explicit-constructor)

  int nFaces() const { return static_cast<int>(owner.size()); }
  int NodeCount(int f) const { return static_cast<int>(faceStart[f + 1] - faceStart[f]); }
  int const* Nodes(int f) const { return faceNode.data() + faceStart[f]; }
  int Owner(int f) const { return owner[f]; }
  int Neighbour(int f) const { return neighbour[f]; }

  std::vector<Point> const& points;
  std::vector<std::size_t> const& faceStart;
  std::vector<int> const& faceNode;
  std::vector<int> const& owner;
  std::vector<int> const& neighbour;
};

/// Centre and volume of the cells 0..nCells-1.
struct CellGeometry {
  std::vector<Point> centre;   ///< L
  std::vector<double> volume;  ///< L^3; not positive for a cell that is inside out
};

/// Computes cell centres and volumes in two sweeps over the faces, without storing anything per face.
///
/// A cell is cut into one pyramid per face triangle, with the average of the face centres as the common top.
/// Neighbours share the triangles of their face, so the volumes add up to the volume of the mesh even if
/// faces are warped. Each cell depends on its own faces alone: with the faces in the same order, any
/// partition computes the same bits.
///
/// Sides of a face that are not cells 0..nCells-1 (boundary, halo cells) are ignored.
class CellGeometryBuilder {
 public:
  explicit CellGeometryBuilder(int nCells);

  /// First sweep: call it once for every face.
  void AddFaceCentre(int owner, int neighbour, Point const& centre);

  /// Call it between the sweeps.
  void FinishTops();

  /// Second sweep: call it once for every face, in the same order.
  void AddPyramids(int owner, int neighbour, FaceFan const& fan);

  /// Returns the result and leaves the builder empty. The centre of a cell without positive volume is the top
  /// of its pyramids.
  CellGeometry Finish();

 private:
  bool IsCell(int cell) const { return cell >= 0 && cell < nCells_; }
  void AddPyramidsOfSide(int cell, double sign, FaceFan const& fan);

  /// All sums of a cell side by side, because the faces of mesh files often jump from cell to cell.
  struct Sums {
    Point top = {0.0, 0.0, 0.0};     // sum, then average of the face centres
    Point moment = {0.0, 0.0, 0.0};  // over the pyramids: 3 volume (base centroid - top)
    double volume3 = 0.0;            // over the pyramids: 3 volume
    int nFaces = 0;
  };

  int nCells_;
  std::vector<Sums> sums_;
};

/// Centres and volumes of the cells 0..nCells-1 of a mesh. Pass MeshPart::nOwned for the owned cells of a
/// part.
CellGeometry ComputeCellGeometry(FaceTable const& faces, int nCells);

}  // namespace reference_host
