#include "cli/vtk/PartitionGrid.h"

#include <cstddef>

#include "cli/vtk/UsedNodes.h"

namespace zyngrad {
namespace {

/// Group codes of CellFaceType.
enum FaceCode { kInner = 0, kWall = 1, kInlet = 2, kOutlet = 3, kSymmetry = 5, kPartition = 101 };

/// Row of nodes of a face; it turns around the area vector, which points out of the CV cell.
int const* NodeRow(CZYN3DFiniteVolumeMesh const& mesh, int code, int face) {
  switch (code) {
    case kWall:
      return mesh.ijWallLnods[face];
    case kInlet:
      return mesh.ijInletLnods[face];
    case kOutlet:
      return mesh.ijOutletLnods[face];
    case kSymmetry:
      return mesh.ijSymmetryLnods[face];
    case kPartition:
      return mesh.ijParLnods[face];
    default:
      return mesh.ijLnods[face];
  }
}

void AddFaceStream(CellFaces const& faces, UsedNodes& nodes, std::vector<std::int64_t>& stream) {
  stream.push_back(faces.nFaces());
  for (int f = 0; f < faces.nFaces(); ++f) {
    stream.push_back(faces.FaceSize(f));
    for (int k = 0; k < faces.FaceSize(f); ++k) stream.push_back(nodes.Number(faces.Face(f)[k]));
  }
}

}  // namespace

void FacesOfCell(CZYN3DFiniteVolumeMesh const& mesh, int cell, CellFaces& faces) {
  faces.Clear();
  for (int k = 1; k <= mesh.CellFace[cell][0]; ++k) {
    int const face = mesh.CellFace[cell][k];
    int const code = mesh.CellFaceType[cell][k];
    int const* row = NodeRow(mesh, code, face);
    // Of all groups only an inner face may have this cell on its other side.
    faces.Add(row + 1, row[0], code == kInner && mesh.ij[face] == cell);
  }
}

VtuGrid GridOfInteriorCells(CZYN3DFiniteVolumeMesh const& mesh) {
  VtuGrid grid;
  UsedNodes nodes(mesh, grid.points);
  CellFaces faces;
  VtkCell vtkCell;
  for (int cell = 1; cell <= mesh.NInnerCells; ++cell) {
    FacesOfCell(mesh, cell, faces);
    MakeVtkCell(faces, vtkCell);
    for (int const node : vtkCell.nodes) grid.connectivity.push_back(nodes.Number(node));
    grid.offsets.push_back(static_cast<std::int64_t>(grid.connectivity.size()));
    grid.types.push_back(static_cast<std::uint8_t>(vtkCell.type));
    bool const isPolyhedron = vtkCell.type == VtkType::Polyhedron;
    if (isPolyhedron) AddFaceStream(faces, nodes, grid.faces);
    grid.faceOffsets.push_back(isPolyhedron ? static_cast<std::int64_t>(grid.faces.size()) : -1);
  }
  return grid;
}

}  // namespace zyngrad
