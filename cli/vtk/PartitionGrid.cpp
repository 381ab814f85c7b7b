#include "cli/vtk/PartitionGrid.h"

#include <cstddef>

#include "cli/vtk/UsedNodes.h"
#include "foundation/FaceGroups.h"

namespace zyngrad {
namespace {

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
    FaceGroupMembers const& group = *GroupWithCode(mesh.CellFaceType[cell][k]);
    int const* row =
        (mesh.*group.nodes)[face];  // turns around the area vector, which points out of the CV cell
    // Of all groups only an inner face may have this cell on its other side.
    faces.Add(row + 1, row[0], group.kind == FaceKind::Inner && mesh.ij[face] == cell);
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
