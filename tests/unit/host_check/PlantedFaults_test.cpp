#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cmath>
#include <functional>
#include <limits>
#include <string>
#include <utility>
#include <vector>

#include "foundation/FaceGroups.h"
#include "tests/unit/host_check/CheckedRun.h"
#include "tests/unit/reference_host/TestMeshes.h"

namespace {

using namespace test_meshes;
using host_check::HostBreach;
using host_check::HostCheckReport;

using Mesh = CZYN3DFiniteVolumeMesh;

double const kNan = std::numeric_limits<double>::quiet_NaN();
double const kInfinity = std::numeric_limits<double>::infinity();

/// A fault to plant in a mesh of 3 x 3 x 3 perturbed hexahedra on one partition.
struct Fault {
  char const* name;
  HostBreach kind;
  char const* words;                    ///< part of the expected message
  std::function<int(LentHost&)> plant;  ///< breaks the host; returns the entity that must be reported
};

/// A fault of the mesh record at an entity with a fixed number.
Fault InMesh(char const* name, HostBreach kind, int entity, char const* words,
             std::function<void(Mesh&)> const& plant) {
  return {name, kind, words, [=](LentHost& host) {
            plant(*host.mesh);
            return entity;
          }};
}

/// A fault of the global variables.
Fault InGlobals(char const* name, HostBreach kind, char const* words,
                std::function<void(CZyn3dGV&)> const& plant) {
  return {name, kind, words, [=](LentHost& host) {
            plant(*host.globals);
            return 0;
          }};
}

/// The number of a node in no boundary face.
int InnerNode(Mesh const& m) {
  for (int n = 1; n <= m.NNode; ++n) {
    bool isInner = true;
    for (int k = 1; k <= m.NodeCell[n][0]; ++k) isInner = isInner && m.NodeCell[n][k] <= m.NInnerCells;
    if (isInner) return n;
  }
  return 0;
}

/// A node that the cell does not have.
int ForeignNode(Mesh const& m, int c) {
  for (int n = 1;; ++n) {
    int const* row = m.CellLnods[c];
    if (std::find(row + 1, row + 1 + m.CellLnodsNumber[c], n) == row + 1 + m.CellLnodsNumber[c]) return n;
  }
}

/// The position in the cell's rows of an inner face, or of one that is not.
int EntryOf(Mesh const& m, int c, bool isInner) {
  for (int k = 1;; ++k)
    if ((m.CellFaceType[c][k] == 0) == isInner) return k;
}

void Flip(double* x, double* y, double* z, int f) {
  x[f] = -x[f];
  y[f] = -y[f];
  z[f] = -z[f];
}

/// Moves the centre of an inner face by fractions of a cell (of 1/3), along its area vector and perpendicular
/// to it.
void MoveCentre(Mesh& m, int f, double forwards, double sideways) {
  double const area = std::hypot(m.ijSx[f], m.ijSy[f], m.ijSz[f]);
  double const n[] = {m.ijSx[f] / area, m.ijSy[f] / area, m.ijSz[f] / area};
  int across = 0;  // the axis most nearly parallel to the face, made perpendicular to the area vector
  for (int i = 1; i < 3; ++i)
    if (std::abs(n[i]) < std::abs(n[across])) across = i;
  double* const centre[] = {m.ijxc, m.ijyc, m.ijzc};
  double const length = std::sqrt(1 - n[across] * n[across]);
  for (int i = 0; i < 3; ++i) {
    double const side = ((i == across ? 1.0 : 0.0) - n[across] * n[i]) / length;
    centre[i][f] += (forwards * n[i] + sideways * side) / 3;
  }
}

void ScaleAreas(Mesh& m, double factor) {
  for (FaceGroupMembers const& members : face_groups::kTable) {
    if (members.kind == FaceKind::Partition) continue;
    for (double* const component : {m.*members.sx, m.*members.sy, m.*members.sz}) {
      for (int f = 1; f <= m.*members.count; ++f) component[f] *= factor;
    }
  }
}

/// All arrays that the record of a host without partition faces lends, by name.
std::vector<std::pair<std::string, void*>> AllArrays(Mesh const& m) {
  std::vector<std::pair<std::string, void*>> arrays = {{"xn", m.xn},
                                                       {"yn", m.yn},
                                                       {"zn", m.zn},
                                                       {"xc", m.xc},
                                                       {"yc", m.yc},
                                                       {"zc", m.zc},
                                                       {"Volume", m.Volume},
                                                       {"CellCell", m.CellCell},
                                                       {"CellLnods", m.CellLnods},
                                                       {"CellLnodsNumber", m.CellLnodsNumber},
                                                       {"CellFace", m.CellFace},
                                                       {"CellFaceType", m.CellFaceType},
                                                       {"NodeCell", m.NodeCell},
                                                       {"Lamda", m.Lamda},
                                                       {"FaceType", m.FaceType}};
  for (FaceGroupMembers const& members : face_groups::kTable) {
    if (members.kind == FaceKind::Partition) continue;
    auto const add = [&](char const* ending, void* array) {
      arrays.emplace_back(std::string(members.prefix) + ending, array);
    };
    add("CV", m.*members.cv);
    add("", m.*members.other);
    add("Sx", m.*members.sx);
    add("Sy", m.*members.sy);
    add("Sz", m.*members.sz);
    add("xc", m.*members.xc);
    add("yc", m.*members.yc);
    add("zc", m.*members.zc);
    add("Lnods", m.*members.nodes);
  }
  return arrays;
}

std::vector<Fault> CountFaults() {
  return {
      InMesh("NegativeWallCount", HostBreach::BadCount, 0, "NWall = -3 is negative",
             [](Mesh& m) { m.NWall = -3; }),
      InMesh("NegativeCellCount", HostBreach::BadCount, 0, "NCell = -1 is negative",
             [](Mesh& m) { m.NCell = -1; }),
      InMesh("NegativeNodeCount", HostBreach::BadCount, 0, "NNode = -64 is negative",
             [](Mesh& m) { m.NNode = -64; }),
      InMesh("MoreInteriorCellsThanCells", HostBreach::BadCount, 0,
             "NInnerCells = 28 is more than NCell = 27",
             [](Mesh& m) {
               m.NCell = 27;
               m.NInnerCells = 28;
             }),
      InMesh("WallCountOneTooLarge", HostBreach::BadCount, 0,
             "NWall + NInlet + NOutlet + NSymmetry = 55 is more than NCell - NInnerCells = 54",
             [](Mesh& m) { ++m.NWall; }),
      InMesh("InletCountOneTooLarge", HostBreach::BadCount, 0, "= 55 is more than NCell - NInnerCells = 54",
             [](Mesh& m) { ++m.NInlet; }),
      InMesh("OutletCountOneTooLarge", HostBreach::BadCount, 0, "= 55 is more than NCell - NInnerCells = 54",
             [](Mesh& m) { ++m.NOutlet; }),
      InMesh("SymmetryCountOneTooLarge", HostBreach::BadCount, 0,
             "= 55 is more than NCell - NInnerCells = 54", [](Mesh& m) { ++m.NSymmetry; }),
      InMesh("CellCountOneTooSmall", HostBreach::BadCount, 0, "= 54 is more than NCell - NInnerCells = 53",
             [](Mesh& m) { --m.NCell; }),
      InMesh("InteriorCountOneTooLarge", HostBreach::BadCount, 0,
             "= 54 is more than NCell - NInnerCells = 53", [](Mesh& m) { ++m.NInnerCells; }),
      InMesh("HugeWallCounts", HostBreach::BadCount, 0, "= 6442450950 is more than NCell",
             [](Mesh& m) { m.NWall = m.NInlet = m.NOutlet = INT_MAX; }),
      InMesh("HugeCellCount", HostBreach::BadCount, 0,
             "NCell = 2147483647 has 2147483620 cells beyond the 27 interior ones, but only 54 boundary",
             [](Mesh& m) { m.NCell = INT_MAX; }),
      InMesh("HugeInteriorCount", HostBreach::BadCount, 0, "are fewer than 4 for each cell",
             [](Mesh& m) {
               m.NCell = INT_MAX;
               m.NInnerCells = INT_MAX - 54;
             }),
      InMesh("HugeInnerFaceCount", HostBreach::BadCount, 0, "are more than 1000 for each cell",
             [](Mesh& m) { m.NInnerFaces = INT_MAX; }),
      InMesh("HugeNodeCount", HostBreach::BadCount, 0, "NNode = 2147483647 is more than 1000 for each of the",
             [](Mesh& m) { m.NNode = INT_MAX; }),
      InMesh("NodeCountFiveTooLarge", HostBreach::BadCount, 0,
             "NNode = 69, but no face names a node above 64", [](Mesh& m) { m.NNode += 5; }),
      InMesh("NodeCountOfNoCell", HostBreach::BadCount, 0, "NNode = 3, but NInnerCells = 27",
             [](Mesh& m) { m.NNode = 3; }),
      InMesh("CellsWithoutFaces", HostBreach::BadCount, 0,
             "NInnerCells = 27, but 0 inner, 0 boundary and 0 partition faces are fewer than 4",
             [](Mesh& m) { m.NInnerFaces = m.NWall = m.NInlet = m.NOutlet = m.NSymmetry = 0; }),
      InMesh("FacesWithoutCells", HostBreach::BadCount, 0,
             "NInnerCells = 0, but there are 54 inner, 54 boundary", [](Mesh& m) { m.NInnerCells = 0; }),
      InMesh("InnerFacesOfOneCell", HostBreach::BadCount, 0, "an inner face joins two interior cells",
             [](Mesh& m) { m.NInnerCells = 1; }),
      InMesh("EmptyRecord", HostBreach::BadCount, 0, "NInnerCells = 0 on every partition: the mesh is empty",
             [](Mesh& m) { m = Mesh(); }),
      {"PartitionFacesWithoutHaloCells", HostBreach::BadCount, "NParInterFace() = 3, but the 54 ghost cells",
       [](LentHost& host) {
         static_cast<LentFaces*>(host.partitionFaces)->count = 3;
         return 0;
       }},
      {"HugePartitionFaceCount", HostBreach::BadCount, "are more than 1000 for each cell",
       [](LentHost& host) {
         static_cast<LentFaces*>(host.partitionFaces)->count = INT_MAX;
         host.mesh->NCell += 9;
         return 0;
       }},
      {"NegativePartitionFaceCount", HostBreach::BadCount, "NParInterFace() = -2 is negative",
       [](LentHost& host) {
         static_cast<LentFaces*>(host.partitionFaces)->count = -2;
         return 0;
       }},
  };
}

std::vector<Fault> ArrayFaults() {
  return {
      InMesh("NoCellCentres", HostBreach::MissingArray, 0, "yc is null, but NCell = 81",
             [](Mesh& m) { m.yc = nullptr; }),
      InMesh("NoVolumes", HostBreach::MissingArray, 0, "Volume is null, but NInnerCells = 27",
             [](Mesh& m) { m.Volume = nullptr; }),
      InMesh("NoNodes", HostBreach::MissingArray, 0, "zn is null", [](Mesh& m) { m.zn = nullptr; }),
      InMesh("NoWeights", HostBreach::MissingArray, 0, "Lamda is null, but NInnerFaces = 54",
             [](Mesh& m) { m.Lamda = nullptr; }),
      InMesh("NoFaceTypes", HostBreach::MissingArray, 0, "FaceType is null",
             [](Mesh& m) { m.FaceType = nullptr; }),
      InMesh("NoInnerCells", HostBreach::MissingArray, 0, "ijCV is null", [](Mesh& m) { m.ijCV = nullptr; }),
      InMesh("NoWallCells", HostBreach::MissingArray, 0, "ijWallCV is null, but NWall = 27",
             [](Mesh& m) { m.ijWallCV = nullptr; }),
      InMesh("NoWallAreas", HostBreach::MissingArray, 0, "ijWallSx is null",
             [](Mesh& m) { m.ijWallSx = nullptr; }),
      InMesh("NoInletCentres", HostBreach::MissingArray, 0, "ijInletzc is null",
             [](Mesh& m) { m.ijInletzc = nullptr; }),
      InMesh("NoInnerFaceNodes", HostBreach::MissingArray, 0, "ijLnods is null",
             [](Mesh& m) { m.ijLnods = nullptr; }),
      InMesh("NoSymmetryFaceNodes", HostBreach::MissingArray, 0, "ijSymmetryLnods is null",
             [](Mesh& m) { m.ijSymmetryLnods = nullptr; }),
      InMesh("NoCellCell", HostBreach::MissingArray, 0, "CellCell is null",
             [](Mesh& m) { m.CellCell = nullptr; }),
      InMesh("NoCellFace", HostBreach::MissingArray, 0, "CellFace is null",
             [](Mesh& m) { m.CellFace = nullptr; }),
      InMesh("NoCellLnodsNumber", HostBreach::MissingArray, 0, "CellLnodsNumber is null",
             [](Mesh& m) { m.CellLnodsNumber = nullptr; }),
      InMesh("NoNodeCell", HostBreach::MissingArray, 0, "NodeCell is null",
             [](Mesh& m) { m.NodeCell = nullptr; }),
      InMesh("NoCellCellRow", HostBreach::MissingRow, 5, "row 5 of CellCell is null",
             [](Mesh& m) { m.CellCell[5] = nullptr; }),
      InMesh("NoCellFaceRow", HostBreach::MissingRow, 6, "row 6 of CellFace is null",
             [](Mesh& m) { m.CellFace[6] = nullptr; }),
      InMesh("NoCellFaceTypeRow", HostBreach::MissingRow, 7, "row 7 of CellFaceType is null",
             [](Mesh& m) { m.CellFaceType[7] = nullptr; }),
      InMesh("NoCellLnodsRow", HostBreach::MissingRow, 8, "row 8 of CellLnods is null",
             [](Mesh& m) { m.CellLnods[8] = nullptr; }),
      InMesh("NoNodeCellRow", HostBreach::MissingRow, 9, "row 9 of NodeCell is null",
             [](Mesh& m) { m.NodeCell[9] = nullptr; }),
      InMesh("NoWallFaceNodeRow", HostBreach::MissingRow, 10, "row 10 of ijWallLnods is null",
             [](Mesh& m) { m.ijWallLnods[10] = nullptr; }),
  };
}

std::vector<Fault> FaceCellFaults() {
  return {
      InMesh("InnerFaceFromCellZero", HostBreach::IndexOutOfRange, 4,
             "inner face 4: ijCV[4] = 0 is outside 1..27", [](Mesh& m) { m.ijCV[4] = 0; }),
      InMesh("InnerFaceToGhostCell", HostBreach::IndexOutOfRange, 5, "ij[5] = 28 is outside 1..27",
             [](Mesh& m) { m.ij[5] = 28; }),
      InMesh("WallFaceOfGhostCell", HostBreach::IndexOutOfRange, 2, "ijWallCV[2] = 40 is outside 1..27",
             [](Mesh& m) { m.ijWallCV[2] = 40; }),
      InMesh("WallFaceToInteriorCell", HostBreach::IndexOutOfRange, 3, "ijWall[3] = 27 is outside 28..81",
             [](Mesh& m) { m.ijWall[3] = 27; }),
      InMesh("InletFaceBeyondTheCells", HostBreach::IndexOutOfRange, 1, "ijInlet[1] = 82 is outside 28..81",
             [](Mesh& m) { m.ijInlet[1] = 82; }),
      InMesh("OutletFaceFarOutside", HostBreach::IndexOutOfRange, 9, "ijOutletCV[9] = -2147483648",
             [](Mesh& m) { m.ijOutletCV[9] = INT_MIN; }),
      InMesh("FaceOnOneCell", HostBreach::FaceOnOneCell, 7, "inner face 7 joins cell",
             [](Mesh& m) { m.ij[7] = m.ijCV[7]; }),
      {"GhostOfTwoFacesOfAGroup", HostBreach::GhostNamedTwice, "beyond wall face 1 and beyond wall face 2",
       [](LentHost& host) { return host.mesh->ijWall[2] = host.mesh->ijWall[1]; }},
      {"GhostOfTwoGroups", HostBreach::GhostNamedTwice, "beyond inlet face 3 and beyond outlet face 4",
       [](LentHost& host) { return host.mesh->ijOutlet[4] = host.mesh->ijInlet[3]; }},
  };
}

std::vector<Fault> GeometryFaults() {
  return {
      InMesh("AreaNotFinite", HostBreach::NotFinite, 3, "the area vector of inner face 3 is",
             [](Mesh& m) { m.ijSy[3] = kNan; }),
      InMesh("FaceCentreNotFinite", HostBreach::NotFinite, 2, "the centre of inlet face 2 is",
             [](Mesh& m) { m.ijInletxc[2] = kInfinity; }),
      InMesh("CellCentreNotFinite", HostBreach::NotFinite, 14, "the centre of interior cell 14 is",
             [](Mesh& m) { m.zc[14] = kNan; }),
      InMesh("GhostCentreNotFinite", HostBreach::NotFinite, 30, "the centre of ghost cell 30 is",
             [](Mesh& m) { m.xc[30] = kNan; }),
      InMesh("NodeNotFinite", HostBreach::NotFinite, 17, "the position of node 17 is",
             [](Mesh& m) { m.xn[17] = -kInfinity; }),
      InMesh("ZeroArea", HostBreach::ZeroArea, 6, "wall face 6 has a zero area vector",
             [](Mesh& m) { m.ijWallSx[6] = m.ijWallSy[6] = m.ijWallSz[6] = 0; }),
      InMesh("InnerAreaTheWrongWay", HostBreach::AreaWrongWay, 11, "inner face 11: its area vector",
             [](Mesh& m) { Flip(m.ijSx, m.ijSy, m.ijSz, 11); }),
      InMesh("WallAreaTheWrongWay", HostBreach::AreaWrongWay, 12, "wall face 12: its area vector",
             [](Mesh& m) { Flip(m.ijWallSx, m.ijWallSy, m.ijWallSz, 12); }),
      InMesh("SymmetryAreaTheWrongWay", HostBreach::AreaWrongWay, 1, "does not point out of cell",
             [](Mesh& m) { Flip(m.ijSymmetrySx, m.ijSymmetrySy, m.ijSymmetrySz, 1); }),
      InMesh("CellsOfAFaceExchanged", HostBreach::AreaWrongWay, 20, "inner face 20",
             [](Mesh& m) { std::swap(m.ij[20], m.ijCV[20]); }),
      {"CellNotClosed", HostBreach::CellNotClosed, "does not close",
       [](LentHost& host) {
         host.mesh->ijWallSz[5] *= 1.001;
         host.mesh->ijWallSy[5] *= 1.001;
         return host.mesh->ijWallCV[5];
       }},
      {"GhostCentreInsideTheCell", HostBreach::GhostNotBeyondFace, "does not lie beyond outlet face 3",
       [](LentHost& host) {
         Mesh& m = *host.mesh;
         m.xc[m.ijOutlet[3]] = m.xc[m.ijOutletCV[3]];
         return m.ijOutlet[3];
       }},
      {"GhostCentreAtTheOrigin", HostBreach::GhostNotBeyondFace, "the centre (0, 0, 0) of ghost cell",
       [](LentHost& host) {
         Mesh& m = *host.mesh;
         int const ghost = m.ijOutlet[8];
         m.xc[ghost] = m.yc[ghost] = m.zc[ghost] = 0;
         return ghost;
       }},
      {"GhostsOfTwoFacesExchanged", HostBreach::GhostBesideFace, "to the side of the centre of inlet face 1",
       [](LentHost& host) {
         Mesh& m = *host.mesh;
         std::swap(m.ijInlet[1], m.ijInlet[2]);
         return m.ijInlet[1];
       }},
      InMesh("InnerFaceCentreMovedSideways", HostBreach::FaceCentreAway, 9, "of inner face 9 lies away",
             [](Mesh& m) { MoveCentre(m, 9, 0.0, 0.6); }),
      InMesh("InnerFaceCentreMovedForwards", HostBreach::FaceCentreAway, 9, "of inner face 9 lies away",
             [](Mesh& m) { MoveCentre(m, 9, 0.6, 0.0); }),
      InMesh("WallFaceCentreMoved", HostBreach::FaceCentreAway, 4, "of wall face 4 lies away",
             [](Mesh& m) { m.ijWallxc[4] += 0.6 / 3; }),
      InMesh("RowsOfNodesOfTwoFacesExchanged", HostBreach::FaceCentreAway, 1, "of inlet face 1 lies away",
             [](Mesh& m) { std::swap(m.ijInletLnods[1], m.ijInletLnods[2]); }),
      InMesh("AreasOfAnotherUnit", HostBreach::AreaDisagrees, 20, "but its nodes span",
             [](Mesh& m) { ScaleAreas(m, 1.3); }),
      InMesh("AreasOfHalfTheLength", HostBreach::AreaDisagrees, 20, "but its nodes span",
             [](Mesh& m) { ScaleAreas(m, 0.5); }),
      InMesh("CellCentreMoved", HostBreach::CellCentreAway, 14, "lies outside the cell, beyond",
             [](Mesh& m) { m.xc[14] += 0.6 / 3; }),
      InMesh("VolumesTooLargeInCommon", HostBreach::VolumeDisagrees, 0, "the volumes are 1.",
             [](Mesh& m) {
               for (int c = 1; c <= m.NInnerCells; ++c) m.Volume[c] *= 1.3;
             }),
      InMesh("VolumesTooSmallInCommon", HostBreach::VolumeDisagrees, 0, "the volumes are 0.",
             [](Mesh& m) {
               for (int c = 1; c <= m.NInnerCells; ++c) m.Volume[c] *= 0.9;
             }),
      InMesh("OneVolumeTooLarge", HostBreach::VolumeDisagrees, 16, "but its faces enclose",
             [](Mesh& m) { m.Volume[16] *= 1.3; }),
      InMesh("WeightNeverSet", HostBreach::WeightAway, 11, "Lamda[11] = 0 is far from",
             [](Mesh& m) { std::fill_n(m.Lamda + 1, m.NInnerFaces, 0.0); }),
      InMesh("FaceCentreAway", HostBreach::FaceCentreAway, 9, "of inner face 9 lies away from its nodes",
             [](Mesh& m) { m.ijzc[9] += 1.5; }),
      InMesh("CellCentreAway", HostBreach::CellCentreAway, 27, "of interior cell 27 lies away from its nodes",
             [](Mesh& m) { m.yc[27] += 2.0; }),
      InMesh("ZeroVolume", HostBreach::BadVolume, 13, "interior cell 13 has the volume 0",
             [](Mesh& m) { m.Volume[13] = 0; }),
      InMesh("NegativeVolume", HostBreach::BadVolume, 14, "interior cell 14 has the volume -1",
             [](Mesh& m) { m.Volume[14] = -1; }),
      InMesh("VolumeNotFinite", HostBreach::BadVolume, 15, "interior cell 15 has the volume",
             [](Mesh& m) { m.Volume[15] = kNan; }),
      InMesh("VolumeOfAnotherUnit", HostBreach::VolumeDisagrees, 16, "but its faces enclose",
             [](Mesh& m) { m.Volume[16] *= 1000; }),
      InMesh("WeightAboveOne", HostBreach::WeightOutOfRange, 8, "Lamda[8] = 1.25 is outside 0..1",
             [](Mesh& m) { m.Lamda[8] = 1.25; }),
      InMesh("WeightBelowZero", HostBreach::WeightOutOfRange, 9, "Lamda[9] = -0.5 is outside 0..1",
             [](Mesh& m) { m.Lamda[9] = -0.5; }),
      InMesh("WeightNotFinite", HostBreach::WeightOutOfRange, 10, "Lamda[10]",
             [](Mesh& m) { m.Lamda[10] = kNan; }),
      {"WeightOfTheOtherSide", HostBreach::WeightOfOtherSide, "is the weight of ijCV",
       [](LentHost& host) {
         Mesh& m = *host.mesh;
         int f = 1;
         while (std::abs(m.Lamda[f] - 0.5) < 0.04) ++f;
         m.Lamda[f] = 1 - m.Lamda[f];
         return f;
       }},
  };
}

std::vector<Fault> CellRowFaults() {
  return {
      InMesh("CellFaceRowTooLong", HostBreach::RowLength, 3, "the CellFace row of cell 3 has the length 7",
             [](Mesh& m) { m.CellFace[3][0] = 7; }),
      InMesh("CellFaceRowNotCounted", HostBreach::RowLength, 4, "the length 2147483647",
             [](Mesh& m) { m.CellFace[4][0] = INT_MAX; }),
      InMesh("CellFaceRowNegative", HostBreach::RowLength, 5, "the length -6",
             [](Mesh& m) { m.CellFace[5][0] = -6; }),
      InMesh("FaceMissingInRow", HostBreach::RowEntryMissing, 6, "the CellFace row of cell 6 lacks its",
             [](Mesh& m) { m.CellFace[6][0] = 5; }),
      InMesh("FaceOfAnotherCellInRow", HostBreach::RowEntryExtra, 1, "which does not belong to the cell",
             [](Mesh& m) {
               int const k = EntryOf(m, 1, true);
               m.CellFace[1][k] = m.NInnerFaces;
             }),
      InMesh("FaceTwiceInRow", HostBreach::RowEntryTwice, 7, "the CellFace row of cell 7 names",
             [](Mesh& m) {
               m.CellFace[7][2] = m.CellFace[7][1];
               m.CellFaceType[7][2] = m.CellFaceType[7][1];
             }),
      InMesh("FaceNumberOutOfRange", HostBreach::IndexOutOfRange, 8, "inner face 55, outside 1..54",
             [](Mesh& m) { m.CellFace[8][EntryOf(m, 8, true)] = 55; }),
      InMesh("FaceNumberZero", HostBreach::IndexOutOfRange, 9, "face 0, outside 1..",
             [](Mesh& m) { m.CellFace[9][1] = 0; }),
      InMesh("UnknownCode", HostBreach::UnknownFaceCode, 10, "is 4, not 0, 1, 2, 3, 5 or 101",
             [](Mesh& m) { m.CellFaceType[10][1] = 4; }),
      InMesh("NegativeCode", HostBreach::UnknownFaceCode, 11, "is -1, not",
             [](Mesh& m) { m.CellFaceType[11][2] = -1; }),
      InMesh("CodeOfAnotherGroup", HostBreach::RowEntryExtra, 1, "is outlet face",
             [](Mesh& m) { m.CellFaceType[1][EntryOf(m, 1, true)] = 3; }),
      InMesh("GroupInNoRow", HostBreach::GroupInNoRow, 0,
             "no CellFace row names a symmetry face (code 5), but NSymmetry = 9",
             [](Mesh& m) {
               for (int c = 1; c <= m.NInnerCells; ++c) {
                 for (int k = 1; k <= m.CellFace[c][0]; ++k)
                   if (m.CellFaceType[c][k] == 5) m.CellFaceType[c][k] = 4;
               }
             }),
      InMesh("CellCellRowTooLong", HostBreach::RowLength, 12, "the CellCell row of cell 12 has the length 8",
             [](Mesh& m) { m.CellCell[12][0] = 8; }),
      InMesh("CellCellRowFromZero", HostBreach::RowLength, 27, "the CellCell row of cell 27 has the length",
             [](Mesh& m) {
               // Like a table of 0-based rows: the first neighbour in place of the length.
               for (int k = 0; k < 6; ++k) m.CellCell[27][k] = m.CellCell[27][k + 1];
             }),
      InMesh("NeighbourMissing", HostBreach::RowEntryMissing, 13, "the CellCell row of cell 13 lacks",
             [](Mesh& m) { m.CellCell[13][0] = 5; }),
      InMesh("StrangerAmongNeighbours", HostBreach::RowEntryExtra, 1,
             "is interior cell 27, which no face joins", [](Mesh& m) { m.CellCell[1][1] = 27; }),
      InMesh("CellItsOwnNeighbour", HostBreach::RowEntryExtra, 14, "is interior cell 14, which no face joins",
             [](Mesh& m) { m.CellCell[14][3] = 14; }),
      InMesh("NeighbourTwice", HostBreach::RowEntryTwice, 15, "the CellCell row of cell 15 names",
             [](Mesh& m) { m.CellCell[15][4] = m.CellCell[15][5]; }),
      InMesh("NeighbourOutOfRange", HostBreach::IndexOutOfRange, 16, "is 82, outside 1..81",
             [](Mesh& m) { m.CellCell[16][6] = 82; }),
      {"GhostMissingAmongNeighbours", HostBreach::RowEntryMissing, "lacks its neighbour, ghost cell",
       [](LentHost& host) {
         Mesh& m = *host.mesh;
         int const c = m.ijWallCV[1];
         int* row = m.CellCell[c];
         row[0] = static_cast<int>(std::remove(row + 1, row + 1 + row[0], m.ijWall[1]) - (row + 1));
         return c;
       }},
  };
}

std::vector<Fault> NodeFaults() {
  return {
      InMesh("FaceOfTwoNodes", HostBreach::FewFaceNodes, 5, "wall face 5 has 2 nodes",
             [](Mesh& m) { m.ijWallLnods[5][0] = 2; }),
      InMesh("FaceOfNoNodes", HostBreach::FewFaceNodes, 6, "inner face 6 has 0 nodes",
             [](Mesh& m) { m.ijLnods[6][0] = 0; }),
      InMesh("FaceRowNotCounted", HostBreach::RowLength, 7, "inner face 7 has 1000000 nodes",
             [](Mesh& m) { m.ijLnods[7][0] = 1000000; }),
      InMesh("FaceRowLongerThanItsCell", HostBreach::RowLength, 8,
             "inner face 8 has 9 nodes in ijLnods, more", [](Mesh& m) { m.ijLnods[8][0] = 9; }),
      InMesh("FaceNodeOutOfRange", HostBreach::IndexOutOfRange, 3,
             "inlet face 3: node 4 of its row of ijInletLnods is 65, outside 1..64",
             [](Mesh& m) { m.ijInletLnods[3][4] = 65; }),
      InMesh("FaceNodeZero", HostBreach::IndexOutOfRange, 4, "is 0, outside 1..64",
             [](Mesh& m) { m.ijOutletLnods[4][1] = 0; }),
      InMesh("FaceNodeTwice", HostBreach::RowEntryTwice, 9, "inner face 9 has node",
             [](Mesh& m) { m.ijLnods[9][4] = m.ijLnods[9][1]; }),
      InMesh("NodesInALine", HostBreach::NodesSpanNoPlane, 10,
             "lie in a line. Only Set_VirtualNode_Coord_InCellPE would need their plane; gradients and "
             "interpolation do not",
             [](Mesh& m) { m.ijLnods[10][3] = m.ijLnods[10][2]; }),
      InMesh("NodesAtOnePoint", HostBreach::NodesSpanNoPlane, 2, "wall face 2: its first three nodes",
             [](Mesh& m) {
               int const* row = m.ijWallLnods[2];
               for (double* x : {m.xn, m.yn, m.zn}) x[row[2]] = x[row[3]] = x[row[1]];
             }),
      {"RowOfAnotherFace", HostBreach::NodesOffPlane, "is not that of its area vector",
       [](LentHost& host) {
         Mesh& m = *host.mesh;
         m.ijInletLnods[1] = m.ijWallLnods[1];  // x against y or z
         return 1;
       }},
      InMesh("CellLnodsTooMany", HostBreach::RowLength, 5,
             "CellLnodsNumber[5] = 9, but the faces of the cell", [](Mesh& m) { m.CellLnodsNumber[5] = 9; }),
      InMesh("CellLnodsNegative", HostBreach::RowLength, 6, "CellLnodsNumber[6] = -8",
             [](Mesh& m) { m.CellLnodsNumber[6] = -8; }),
      InMesh("CellLnodsTooFew", HostBreach::FaceNodeNotInCell, 7, "of the faces of cell 7 is not in",
             [](Mesh& m) { m.CellLnodsNumber[7] = 7; }),
      InMesh("CellNodeOutOfRange", HostBreach::IndexOutOfRange, 8,
             "the CellLnods row of cell 8 names node 65, outside 1..64",
             [](Mesh& m) { m.CellLnods[8][8] = 65; }),
      InMesh("CellNodeTwice", HostBreach::RowEntryTwice, 9, "the CellLnods row of cell 9 names node",
             [](Mesh& m) { m.CellLnods[9][1] = m.CellLnods[9][2]; }),
      InMesh("CellNodeOfNoFace", HostBreach::RowEntryExtra, 10, "which no face of the cell has",
             [](Mesh& m) { m.CellLnods[10][4] = ForeignNode(m, 10); }),
      InMesh("NodeCellRowTooLong", HostBreach::RowLength, 11,
             "the NodeCell row of node 11 has the length 500", [](Mesh& m) { m.NodeCell[11][0] = 500; }),
      InMesh("NodeCellRowNegative", HostBreach::RowLength, 12, "the length -1",
             [](Mesh& m) { m.NodeCell[12][0] = -1; }),
      InMesh("NodeCellOutOfRange", HostBreach::IndexOutOfRange, 13,
             "the NodeCell row of node 13 names cell 0, outside 1..81",
             [](Mesh& m) { m.NodeCell[13][1] = 0; }),
      InMesh("NodeCellTwice", HostBreach::RowEntryTwice, 14, "the NodeCell row of node 14 names",
             [](Mesh& m) { m.NodeCell[14][2] = m.NodeCell[14][1]; }),
      {"NodeCellWithoutInteriorCell", HostBreach::RowEntryMissing, "lacks interior cell",
       [](LentHost& host) {
         int const n = InnerNode(*host.mesh);
         --host.mesh->NodeCell[n][0];
         return n;
       }},
      {"NodeCellWithoutGhostCell", HostBreach::RowEntryMissing, "lacks ghost cell",
       [](LentHost& host) {
         Mesh& m = *host.mesh;
         int const n = m.ijSymmetryLnods[1][1];
         --m.NodeCell[n][0];  // ghost cells come after the interior ones
         return n;
       }},
      {"NodeCellWithSomeInteriorCells", HostBreach::RowEntryMissing, "lacks interior cell",
       [](LentHost& host) {
         Mesh& m = *host.mesh;
         int const n = m.ijLnods[1][1];
         int* row = m.NodeCell[n];
         std::copy(row + 2, row + 1 + row[0], row + 1);
         --row[0];
         return n;
       }},
      {"NodeCellWithAStranger", HostBreach::RowEntryExtra, "no face of which touches the node",
       [](LentHost& host) {
         Mesh& m = *host.mesh;
         int const n = InnerNode(m);
         m.NodeCell[n][3] = m.ijWall[1];
         return n;
       }},
  };
}

std::vector<Fault> GlobalFaults() {
  static double shared[200];
  static std::string name;
  auto const named = [](std::string const& text) {
    return [text](CZyn3dGV& g) {
      name = text;
      g.BaseFileName = name.data();
    };
  };
  return {
      InGlobals("NoPreviousGradient", HostBreach::MissingArray, "PrevGradY, an array [1..NCell], is null",
                [](CZyn3dGV& g) { g.PrevGradY = nullptr; }),
      InGlobals("PreviousGradientInOneArray", HostBreach::ArraysOverlap,
                "PrevGradX, which is overwritten, and PrevGradZ share memory",
                [](CZyn3dGV& g) { g.PrevGradZ = g.PrevGradX; }),
      InGlobals("PreviousGradientsOneShort", HostBreach::ArraysOverlap,
                "PrevGradX, which is overwritten, and PrevGradY share memory",
                [](CZyn3dGV& g) {
                  g.PrevGradX = shared;
                  g.PrevGradY = shared + 80;  // NCell is 81
                }),
      {"PreviousGradientInTheCentres", HostBreach::ArraysOverlap,
       "PrevGradY, which is overwritten, and zc share memory",
       [](LentHost& host) {
         host.globals->PrevGradY = host.mesh->zc;
         return 0;
       }},
      {"PreviousGradientBehindTheVolumes", HostBreach::ArraysOverlap,
       "PrevGradZ, which is overwritten, and Volume share memory",
       [](LentHost& host) {
         host.globals->PrevGradZ = host.mesh->Volume + 26;  // one element of 27 in common
         return 0;
       }},
      {"RowInThePreviousGradient", HostBreach::ArraysOverlap,
       "PrevGradX, which is overwritten, and row 5 of CellFace share memory",
       [](LentHost& host) {
         int*& row = host.mesh->CellFace[5];
         int* const inside = reinterpret_cast<int*>(host.globals->PrevGradX + 7);
         std::copy(row, row + 7, inside);
         row = inside;
         return 0;
       }},
      {"ResetBlockInTheNodeCounts", HostBreach::ArraysOverlap,
       "ResetIntBlock, which is overwritten, and CellLnodsNumber share memory",
       [](LentHost& host) {
         host.globals->ResetIntBlock = host.mesh->CellLnodsNumber;
         return 0;
       }},
      {"ResetBlockInThePreviousGradient", HostBreach::ArraysOverlap,
       "PrevGradY, which is overwritten, and ResetRealBlock share memory",
       [](LentHost& host) {
         host.globals->ResetRealBlock = host.globals->PrevGradY + 10;
         return 0;
       }},
      InGlobals("NoResetRealBlock", HostBreach::MissingArray, "ResetRealBlock, an array [1..4], is null",
                [](CZyn3dGV& g) { g.ResetRealBlock = nullptr; }),
      InGlobals("NoResetIntBlock", HostBreach::MissingArray, "ResetIntBlock, an array [1..4], is null",
                [](CZyn3dGV& g) { g.ResetIntBlock = nullptr; }),
      InGlobals("NoFileName", HostBreach::BadFileName, "BaseFileName is null",
                [](CZyn3dGV& g) { g.BaseFileName = nullptr; }),
      InGlobals("EmptyFileName", HostBreach::BadFileName, "BaseFileName \"\" is empty", named("")),
      InGlobals("FileNameWithoutExtension", HostBreach::BadFileName, "\"case\" does not end in a dot",
                named("case")),
      InGlobals("FileNameWithFourLetters", HostBreach::BadFileName, "\"case.cgns\" does not end",
                named("case.cgns")),
      InGlobals("FileNameOfAnExtension", HostBreach::BadFileName, "\"runs/.cas\" does not end",
                named("runs/.cas")),
      InGlobals("FileNameTooLong", HostBreach::BadFileName, "has no end within 1023 characters",
                named(std::string(1020, 'x') + ".cas")),
  };
}

std::vector<Fault> ObjectFaults() {
  return {
      {"NoMesh", HostBreach::MissingObject, "the CZYN3DFiniteVolumeMesh object is null",
       [](LentHost& host) {
         host.mesh = nullptr;
         return 0;
       }},
      {"NoPartitionFaces", HostBreach::MissingObject, "the CPartitionFace_DLL object is null",
       [](LentHost& host) {
         host.partitionFaces = nullptr;
         return 0;
       }},
      {"NoCommunication", HostBreach::MissingObject, "the CCommunication object is null",
       [](LentHost& host) {
         host.communication = nullptr;
         return 0;
       }},
      {"NoReduction", HostBreach::MissingObject, "the CZYNCom object is null",
       [](LentHost& host) {
         host.reduction = nullptr;
         return 0;
       }},
      {"NoGlobals", HostBreach::MissingObject, "the CZyn3dGV object is null",
       [](LentHost& host) {
         host.globals = nullptr;
         return 0;
       }},
  };
}

std::vector<Fault> AllFaults() {
  std::vector<Fault> all;
  for (auto const& some : {ObjectFaults(), CountFaults(), ArrayFaults(), FaceCellFaults(), GeometryFaults(),
                           CellRowFaults(), NodeFaults(), GlobalFaults()}) {
    all.insert(all.end(), some.begin(), some.end());
  }
  return all;
}

class PlantedFaults : public testing::TestWithParam<Fault> {};

TEST_P(PlantedFaults, AreToldWithTheirEntity) {
  Fault const& fault = GetParam();
  CheckedRun run(Perturbed(HexBox(3, 3, 3), 0.07));
  ASSERT_EQ(0, run.Check()[0].Count());
  int const entity = fault.plant(run.lent[0]);
  host_check::HostCheckOptions options;
  options.maxPerKind = 100;
  HostCheckReport const report = run.Check(options)[0];
  EXPECT_TRUE(Tells(report, fault.kind, entity, fault.words))
      << "not told of entity " << entity << ": " << fault.words << '\n'
      << TextOf(report);
}

INSTANTIATE_TEST_SUITE_P(OnOnePartition, PlantedFaults, testing::ValuesIn(AllFaults()),
                         [](auto const& test) { return std::string(test.param.name); });

// A work array may overlap any array of the record.
TEST(PlantedFault, WorkArrayInAnyArrayOfTheRecordIsTold) {
  CheckedRun run(Perturbed(HexBox(3, 3, 3), 0.07));
  CZyn3dGV& g = *run.lent[0].globals;
  Mesh const& m = *run.lent[0].mesh;
  double* const own = g.PrevGradX;
  for (auto const& [name, array] : AllArrays(m)) {
    // Offset by one element, because a simpler comparison would find equal pointers.
    g.PrevGradX = static_cast<double*>(array) + 1;
    HostCheckReport const report = run.Check()[0];
    std::string const words = "PrevGradX, which is overwritten, and " + name + " share memory";
    EXPECT_TRUE(Tells(report, HostBreach::ArraysOverlap, 0, words)) << name << '\n' << TextOf(report);
  }
  g.PrevGradX = own;
  EXPECT_EQ(0, run.Check()[0].Count());
}

// If the counts contradict each other, no array is read; here the arrays do not even exist.
TEST(PlantedFault, ContradictionOfCountsKeepsArraysFromBeingRead) {
  CheckedRun run(HexBox(3, 3, 3));
  Mesh& m = *run.lent[0].mesh;
  ++m.NWall;
  auto* const nowhere = reinterpret_cast<double*>(alignof(double));
  auto* const noCells = reinterpret_cast<int*>(alignof(int));
  m.xc = m.Volume = m.ijWallSx = m.xn = m.Lamda = nowhere;
  m.ijWall = m.ijWallCV = m.ij = m.CellLnodsNumber = noCells;
  HostCheckReport const report = run.Check()[0];
  EXPECT_EQ(1, report.Count()) << TextOf(report);
  ASSERT_EQ(2u, report.Notes().size());
  EXPECT_EQ("no array was read: the counts do not tell how long they are", report.Notes()[0]);
}

// A factor common to all volumes is one breach; a cell with another deviation is reported with its number.
TEST(PlantedFault, CommonFactorOfVolumesIsToldOnce) {
  CheckedRun run(Perturbed(HexBox(3, 3, 3), 0.07));
  Mesh& m = *run.lent[0].mesh;
  for (int c = 1; c <= m.NInnerCells; ++c) m.Volume[c] *= 1.3;
  EXPECT_EQ(1, run.Check()[0].Count()) << TextOf(run.Check()[0]);
  m.Volume[5] *= 2;
  HostCheckReport const report = run.Check()[0];
  EXPECT_EQ(2, report.Count()) << TextOf(report);
  EXPECT_TRUE(Tells(report, HostBreach::VolumeDisagrees, 5, "interior cell 5 has the volume"));
}

// The consequences of a fault must not be reported, too.
TEST(PlantedFault, IsToldAlone) {
  CheckedRun run(Perturbed(HexBox(3, 3, 3), 0.07));
  Mesh& m = *run.lent[0].mesh;
  Flip(m.ijSx, m.ijSy, m.ijSz, 11);
  EXPECT_EQ(1, run.Check()[0].Count()) << TextOf(run.Check()[0]);
  Flip(m.ijSx, m.ijSy, m.ijSz, 11);
  m.CellCell[5][0] = 99;
  EXPECT_EQ(1, run.Check()[0].Count()) << TextOf(run.Check()[0]);
}

// Many faults at once: nothing may be read outside an array, which the sanitizers would report.
TEST(PlantedFault, HundredsAtOnceAreSurvived) {
  for (unsigned seed = 1; seed <= 60; ++seed) {
    CheckedRun run(Perturbed(HexBox(3, 3, 3), 0.07, false, seed));
    Mesh& m = *run.lent[0].mesh;
    std::mt19937 random(seed);
    auto const below = [&random](int n) { return static_cast<int>(random() % static_cast<unsigned>(n)); };
    auto const anyNumber = [&] {
      int const choices[] = {0, -1, INT_MAX, INT_MIN, below(100), 28, 82, 65};
      return choices[below(8)];
    };
    auto const spoil = [&](int* array, int n) {
      for (int i = 0; i < 3; ++i) array[1 + below(n)] = anyNumber();
    };
    spoil(m.ijCV, m.NInnerFaces);
    spoil(m.ij, m.NInnerFaces);
    spoil(m.ijWall, m.NWall);
    spoil(m.ijInletCV, m.NInlet);
    spoil(m.CellLnodsNumber, m.NInnerCells);
    for (int i = 0; i < 10; ++i) {
      int const c = 1 + below(m.NInnerCells), n = 1 + below(m.NNode), f = 1 + below(m.NInnerFaces);
      m.CellCell[c][below(7)] = anyNumber();
      m.CellFace[c][below(7)] = anyNumber();
      m.CellFaceType[c][1 + below(6)] = anyNumber();
      m.CellLnods[c][below(9)] = anyNumber();
      m.NodeCell[n][1] = anyNumber();
      m.ijLnods[f][1 + below(4)] = anyNumber();
      m.ijSx[f] = i % 2 == 0 ? kNan : 0.0;
      m.xc[c] = kInfinity;
    }
    EXPECT_GT(run.Check()[0].Count(), 10);
  }
}

TEST(PlantedFault, OfATableThatIsNotAskedForIsNotTold) {
  CheckedRun run(HexBox(2, 2, 2));
  Mesh& m = *run.lent[0].mesh;
  m.CellCell = m.CellFace = m.CellFaceType = nullptr;
  host_check::HostCheckOptions options;
  options.cellRows = false;
  EXPECT_EQ(0, run.Check(options)[0].Count()) << TextOf(run.Check(options)[0]);
  m.NodeCell = m.CellLnods = m.ijLnods = m.ijWallLnods = nullptr;
  m.xn = nullptr;
  options.nodeTables = false;
  EXPECT_EQ(0, run.Check(options)[0].Count()) << TextOf(run.Check(options)[0]);
}

TEST(PlantedFault, GroupWithoutFacesMayLeaveItsArraysNull) {
  CheckedRun run(HexBox(2, 2, 2));
  Mesh& m = *run.lent[0].mesh;
  m.NInlet = 0;
  m.ijInlet = m.ijInletCV = nullptr;
  m.ijInletSx = m.ijInletxc = nullptr;
  HostCheckReport const report = run.Check()[0];
  EXPECT_EQ(0, report.Count(HostBreach::MissingArray)) << TextOf(report);
  EXPECT_GT(report.Count(HostBreach::CellNotClosed), 0) << "the inlet's cells lack a face";
}

}  // namespace
