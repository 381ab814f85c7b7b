#include "reference_host/partition/HostTables.h"

#include "reference_host/mesh/CellGeometry.h"
#include "reference_host/mesh/FaceGeometry.h"

namespace reference_host {
namespace {

/// Allocates the vectors of every group; element 0 of each is zero.
void AllocateFaceVectors(HostTables& tables) {
  for (OwnedFaceGroup& group : tables.groups) {
    for (auto* values : {&group.sx, &group.sy, &group.sz, &group.xc, &group.yc, &group.zc}) {
      values->assign(group.cv.size(), 0.0);
    }
  }
}

/// Areas and centres of one group. The area vector in the mesh points out of the face's owner; it is negated,
/// which is exact, if the group's CV cell is the other one.
void ComputeGroup(FaceTable const& faces, std::vector<int> const& partFaces, std::vector<int> const& hostCell,
                  OwnedFaceGroup& group) {
  for (int f = 1; f <= group.size(); ++f) {
    int const partFace = partFaces[f];
    FaceGeometry const face =
        ComputeFaceGeometry(faces.points, faces.Nodes(partFace), faces.NodeCount(partFace));
    bool const isTurned = group.cv[f] != hostCell[faces.Owner(partFace)];
    group.sx[f] = isTurned ? -face.area[0] : face.area[0];
    group.sy[f] = isTurned ? -face.area[1] : face.area[1];
    group.sz[f] = isTurned ? -face.area[2] : face.area[2];
    group.xc[f] = face.centre[0];
    group.yc[f] = face.centre[1];
    group.zc[f] = face.centre[2];
  }
}

/// Puts ghost cells at the face centres, so that a field there is the boundary value.
void PlaceGhostCentres(HostNumbering const& numbering, HostTables& tables) {
  for (FaceKind const kind : kGhostOrder) {
    OwnedFaceGroup const& group = tables.Group(kind);
    for (int f = 1; f <= group.size(); ++f) {
      int const ghost = numbering.GhostCell(kind, f);
      tables.xc[ghost] = group.xc[f];
      tables.yc[ghost] = group.yc[f];
      tables.zc[ghost] = group.zc[f];
    }
  }
}

void StoreCells(CellGeometry const& cells, HostNumbering const& numbering, HostTables& tables) {
  tables.volume.assign(numbering.nInterior + 1, 0.0);
  for (int c = 1; c <= numbering.nInterior; ++c) {
    int const partCell = numbering.partCell[c];
    tables.volume[c] = cells.volume[partCell];
    tables.xc[c] = cells.centre[partCell][0];
    tables.yc[c] = cells.centre[partCell][1];
    tables.zc[c] = cells.centre[partCell][2];
  }
}

}  // namespace

void FillGeometry(MeshPart const& part, HostNumbering const& numbering, HostTables& tables) {
  AllocateFaceVectors(tables);
  for (auto* values : {&tables.xc, &tables.yc, &tables.zc}) values->assign(numbering.nCells() + 1, 0.0);

  FaceTable const faces(part);
  for (std::size_t k = 0; k < kFaceKinds; ++k) {
    ComputeGroup(faces, numbering.partFace[k], numbering.cell, tables.groups[k]);
  }

  // Both sweeps follow the order of the part, which is that of the whole mesh, so that a cell's sums have the
  // same bits in any partition.
  CellGeometryBuilder builder(part.nOwned);
  for (int f = 0; f < faces.nFaces(); ++f) {
    OwnedFaceGroup const& group = tables.Group(numbering.kind[f]);
    int const hostFace = numbering.face[f];
    builder.AddFaceCentre(faces.Owner(f), faces.Neighbour(f),
                          {group.xc[hostFace], group.yc[hostFace], group.zc[hostFace]});
  }
  builder.FinishTops();
  for (int f = 0; f < faces.nFaces(); ++f) {
    builder.AddPyramids(faces.Owner(f), faces.Neighbour(f),
                        ComputeFaceFan(faces.points, faces.Nodes(f), faces.NodeCount(f)));
  }
  StoreCells(builder.Finish(), numbering, tables);
  PlaceGhostCentres(numbering, tables);
  FillWeights(tables, tables.Group(FaceKind::Inner));
}

void FillWeights(HostTables const& tables, OwnedFaceGroup& group) {
  group.weight.assign(group.cv.size(), 0.0);
  for (int f = 1; f <= group.size(); ++f) {
    int const cv = group.cv[f], other = group.other[f];
    double const sx = group.sx[f], sy = group.sy[f], sz = group.sz[f];
    double const fromCV = sx * (group.xc[f] - tables.xc[cv]) + sy * (group.yc[f] - tables.yc[cv]) +
                          sz * (group.zc[f] - tables.zc[cv]);
    double const toOther = sx * (tables.xc[other] - group.xc[f]) + sy * (tables.yc[other] - group.yc[f]) +
                           sz * (tables.zc[other] - group.zc[f]);
    double const sum = fromCV + toOther;
    group.weight[f] = sum != 0.0 ? fromCV / sum : 0.5;
  }
}

}  // namespace reference_host
