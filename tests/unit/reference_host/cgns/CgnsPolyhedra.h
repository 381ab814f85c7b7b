#pragma once

#include <cgnslib.h>

#include <cstddef>
#include <vector>

#include "reference_host/mesh/FaceMesh.h"
#include "tests/unit/reference_host/cgns/CgnsTestFile.h"

/// Faces of a mesh as one section of polygons, then the cells by their faces.
struct Polyhedra {
  std::vector<cgsize_t> nodes, nodeOffsets = {0}, parents, faces, faceOffsets = {0};

  explicit Polyhedra(reference_host::FaceMesh const& mesh, int outward = 1) {
    int const nFaces = mesh.nFaces();
    std::vector<std::vector<cgsize_t>> facesOfCell(static_cast<std::size_t>(mesh.nCells));
    for (int f = 0; f < nFaces; ++f) {
      for (std::size_t i = mesh.faceStart[f]; i < mesh.faceStart[f + 1]; ++i)
        nodes.push_back(mesh.faceNode[i] + 1);
      nodeOffsets.push_back(static_cast<cgsize_t>(nodes.size()));
      parents.push_back(nFaces + 1 + mesh.owner[f]);
      facesOfCell[mesh.owner[f]].push_back(outward * (f + 1));
      if (mesh.neighbour[f] >= 0) facesOfCell[mesh.neighbour[f]].push_back(-outward * (f + 1));
    }
    for (int const cell : mesh.neighbour) parents.push_back(cell < 0 ? 0 : nFaces + 1 + cell);
    for (std::vector<cgsize_t> const& ofCell : facesOfCell) {
      faces.insert(faces.end(), ofCell.begin(), ofCell.end());
      faceOffsets.push_back(static_cast<cgsize_t>(faces.size()));
    }
  }
};

inline void WritePolyhedra(CgnsTestFile& file, reference_host::FaceMesh const& mesh,
                           Polyhedra const& polyhedra, bool withCells) {
  file.Base();
  file.Zone(mesh.points, mesh.nCells);
  int const nFaces = mesh.nFaces();
  file.Section("Faces", CGNS_ENUMV(NGON_n), 1, nFaces, polyhedra.nodes, polyhedra.nodeOffsets,
               withCells ? std::vector<cgsize_t>() : polyhedra.parents);
  if (!withCells) return;
  file.Section("Cells", CGNS_ENUMV(NFACE_n), nFaces + 1, nFaces + mesh.nCells, polyhedra.faces,
               polyhedra.faceOffsets);
}
