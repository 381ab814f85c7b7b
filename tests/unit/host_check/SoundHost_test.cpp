#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <string>
#include <vector>

#include "foundation/FaceGroups.h"
#include "reference_host/MeshReader.h"
#include "reference_host/box/BoxMesh.h"
#include "reference_host/mesh/BoundaryGroups.h"
#include "reference_host/mesh/Vector3.h"
#include "tests/unit/host_check/CheckedRun.h"
#include "tests/unit/reference_host/TestMeshes.h"
#include "tests/unit/reference_host/partition/GroupsOfPartition.h"

namespace {

using namespace test_meshes;
using host_check::HostCheckReport;
using reference_host::BoxSpec;

void ExpectNoBreach(CheckedRun& run, std::string const& what) {
  for (HostCheckReport const& report : run.Check()) {
    EXPECT_EQ(0, report.Count()) << what << '\n' << TextOf(report);
    EXPECT_TRUE(report.Notes().empty()) << what << '\n' << TextOf(report);
  }
}

TEST(SoundHost, BoxesOfAllShapesHaveNoBreachOnOneAndOnThreePartitions) {
  for (auto const shape : {BoxSpec::Shape::Hex, BoxSpec::Shape::Tet, BoxSpec::Shape::Prism}) {
    for (double const perturb : {0.0, 0.3}) {
      BoxSpec box;
      box.nx = 5;
      box.ny = 4;
      box.nz = 3;
      box.shape = shape;
      box.perturb = perturb;
      box.seed = 3;
      for (int const nParts : {1, 3}) {
        std::vector<reference_host::MeshPart> parts;
        for (int p = 0; p < nParts; ++p) {
          parts.push_back(MakeBoxPart(box, p, nParts));
          for (auto& patch : parts.back().patches) {
            patch.group = reference_host::GroupByName(patch.name, patch.type);
          }
        }
        CheckedRun run(parts);
        ExpectNoBreach(run, "shape " + std::to_string(static_cast<int>(shape)) + ", parts " +
                                std::to_string(nParts) + ", perturb " + std::to_string(perturb));
      }
    }
  }
}

/// The groups of a host of one partition, which has no partition faces.
std::vector<FaceGroup> GroupsOf(CZYN3DFiniteVolumeMesh const& m) {
  std::vector<FaceGroup> groups;
  for (FaceGroupMembers const& members : face_groups::kTable) {
    if (members.kind != FaceKind::Partition) groups.push_back(FacesOf(members.kind, m));
  }
  return groups;
}

using reference_host::AreaOf;
using reference_host::CentreOf;
using reference_host::Cross;
using reference_host::Difference;
using reference_host::Dot;
using reference_host::Scaled;
using reference_host::Sum;

Point MeanOfNodes(CZYN3DFiniteVolumeMesh const& m, int const* nodes, int n) {
  Point sum = {0, 0, 0};
  for (int k = 0; k < n; ++k) sum = Sum(sum, {m.xn[nodes[k]], m.yn[nodes[k]], m.zn[nodes[k]]});
  return Scaled(1.0 / n, sum);
}

/// Triangles around the mean of the nodes, their centroids weighted by their areas, as in OpenFOAM.
Point MeanOfTriangles(CZYN3DFiniteVolumeMesh const& m, int const* nodes, int n) {
  auto const node = [&](int k) { return Point{m.xn[nodes[k % n]], m.yn[nodes[k % n]], m.zn[nodes[k % n]]}; };
  Point const middle = MeanOfNodes(m, nodes, n);
  if (n == 3) return middle;
  Point sum = {0, 0, 0};
  double area = 0;
  for (int k = 0; k < n; ++k) {
    Point const normal = Cross(Difference(node(k), middle), Difference(node(k + 1), middle));
    double const weight = std::sqrt(Dot(normal, normal));
    sum = Sum(sum, Scaled(weight / 3, Sum(Sum(node(k), node(k + 1)), middle)));
    area += weight;
  }
  return Scaled(1 / area, sum);
}

/// Changes the centres of faces and ghost cells.
template <class CentreOf>
void DefineFaceCentres(CZYN3DFiniteVolumeMesh& m, CentreOf const& centreOf) {
  for (FaceGroup const& faces : GroupsOf(m)) {
    FaceGroupMembers const& members = MembersOf(faces.kind);
    for (int f = 1; f <= faces.count; ++f) {
      Point const centre = centreOf(m, faces.nodes[f] + 1, faces.nodes[f][0]);
      (m.*members.xc)[f] = centre[0];
      (m.*members.yc)[f] = centre[1];
      (m.*members.zc)[f] = centre[2];
      if (faces.other[f] <= m.NInnerCells) continue;
      m.xc[faces.other[f]] = centre[0];
      m.yc[faces.other[f]] = centre[1];
      m.zc[faces.other[f]] = centre[2];
    }
  }
}

/// Calls visit(cell, sign, faces, f) for each face and each of its cells.
template <class Visit>
void ForEachSide(CZYN3DFiniteVolumeMesh const& m, Visit const& visit) {
  for (FaceGroup const& faces : GroupsOf(m)) {
    for (int f = 1; f <= faces.count; ++f) {
      visit(faces.cv[f], 1.0, faces, f);
      if (faces.other[f] <= m.NInnerCells) visit(faces.other[f], -1.0, faces, f);
    }
  }
}

/// Cells as pyramids over whole faces, with the mean of the face centres as the top, as in OpenFOAM.
void DefineCellsByPyramids(CZYN3DFiniteVolumeMesh& m) {
  auto const n = static_cast<std::size_t>(m.NInnerCells) + 1;
  std::vector<Point> top(n, Point{0, 0, 0}), moment(n, Point{0, 0, 0});
  std::vector<double> nFaces(n, 0), volume3(n, 0);
  ForEachSide(m, [&](int c, double, FaceGroup const& faces, int f) {
    top[c] = Sum(top[c], CentreOf(faces, f));
    ++nFaces[c];
  });
  for (int c = 1; c <= m.NInnerCells; ++c) top[c] = Scaled(1 / nFaces[c], top[c]);
  ForEachSide(m, [&](int c, double sign, FaceGroup const& faces, int f) {
    double const pyramid = sign * Dot(AreaOf(faces, f), Difference(CentreOf(faces, f), top[c]));
    moment[c] = Sum(moment[c], Scaled(pyramid, Sum(Scaled(0.75, CentreOf(faces, f)), Scaled(0.25, top[c]))));
    volume3[c] += pyramid;
  });
  for (int c = 1; c <= m.NInnerCells; ++c) {
    Point const centre = Scaled(1 / volume3[c], moment[c]);
    m.xc[c] = centre[0];
    m.yc[c] = centre[1];
    m.zc[c] = centre[2];
    m.Volume[c] = volume3[c] / 3;
  }
}

void DefineCellCentresByNodes(CZYN3DFiniteVolumeMesh& m) {
  for (int c = 1; c <= m.NInnerCells; ++c) {
    Point const centre = MeanOfNodes(m, m.CellLnods[c] + 1, m.CellLnodsNumber[c]);
    m.xc[c] = centre[0];
    m.yc[c] = centre[1];
    m.zc[c] = centre[2];
  }
}

/// Weights by the distances along the area vector, as in most solvers.
void DefineWeights(CZYN3DFiniteVolumeMesh& m) {
  FaceGroup const inner = FacesOf(FaceKind::Inner, m);
  for (int f = 1; f <= inner.count; ++f) {
    auto const depth = [&](int c) {
      return std::abs(Dot(AreaOf(inner, f), Difference(CentreOf(inner, f), {m.xc[c], m.yc[c], m.zc[c]})));
    };
    m.Lamda[f] = depth(inner.cv[f]) / (depth(inner.cv[f]) + depth(inner.other[f]));
  }
}

FaceMesh OpenFoamMesh(std::string const& name) {
  FaceMesh mesh = reference_host::ReadMesh(std::string(ZYN_TEST_DATA) + "/" + name);
  std::vector<std::int64_t> facesOfPatch(mesh.patches.size(), 0);
  for (int const patch : mesh.facePatch)
    if (patch >= 0) ++facesOfPatch[patch];
  reference_host::AssignBoundaryGroups(mesh.patches, facesOfPatch, {});
  return mesh;
}

std::vector<NamedMesh> MeshesOfManyShapes() {
  std::vector<NamedMesh> meshes = AllMeshes();
  meshes.push_back({"OpenFOAM, plane faces", OpenFoamMesh("openfoam_planar")});
  meshes.push_back({"OpenFOAM, warped faces", OpenFoamMesh("openfoam_warped")});
  FaceMesh layers = Perturbed(HexBox(4, 4, 4), 0.03);
  for (auto& point : layers.points) point[2] *= 0.01 * (1 + 3 * point[2]);
  meshes.push_back({"thin layers", layers});
  return meshes;
}

// Definitions of centres and volumes differ for warped faces. All of these are common.
TEST(SoundHost, CentresAndVolumesMayBeDefinedInOtherWays) {
  for (NamedMesh const& named : MeshesOfManyShapes()) {
    CheckedRun run(named.mesh);
    std::string const name = named.name;
    ExpectNoBreach(run, name + ": triangles weighted by the face's vector");
    CZYN3DFiniteVolumeMesh& m = *run.lent[0].mesh;
    DefineFaceCentres(m, MeanOfTriangles);
    DefineWeights(m);
    ExpectNoBreach(run, name + ": triangles weighted by area, volumes of the corners");
    DefineCellsByPyramids(m);
    DefineWeights(m);
    ExpectNoBreach(run, name + ": triangles weighted by area, cells of pyramids");
    DefineCellCentresByNodes(m);
    DefineWeights(m);
    ExpectNoBreach(run, name + ": cell centres from nodes");
    DefineFaceCentres(m, MeanOfNodes);
    DefineWeights(m);
    ExpectNoBreach(run, name + ": all centres from nodes");
  }
}

// The rows of nodes need not go around their faces.
TEST(SoundHost, NodesOfAFaceMayStandInAnyOrder) {
  for (NamedMesh const& named : AllMeshes()) {
    CheckedRun run(named.mesh);
    int nSwapped = 0;
    for (FaceGroup const& faces : GroupsOf(*run.lent[0].mesh)) {
      for (int f = 1; f <= faces.count; ++f) {
        int* const row = faces.nodes[f];
        if (row[0] > 4) continue;  // with nodes on edges, any three may be collinear
        std::swap(row[2], row[3]);
        ++nSwapped;
      }
    }
    EXPECT_GT(nSwapped, 0);
    ExpectNoBreach(run, named.name);
  }
}

TEST(SoundHost, EveryKindOfCellHasNoBreachInRaggedPartitions) {
  for (NamedMesh const& named : AllMeshes()) {
    for (int const nParts : {1, 3}) {
      CheckedRun run(named.mesh, RandomParts(named.mesh.nCells, nParts), nParts);
      ExpectNoBreach(run, named.name);
    }
  }
}

TEST(SoundHost, PartitionWithoutCellsHasNoBreach) {
  CheckedRun run(HexBox(2, 2, 1), {0, 0, 2, 2}, 3);
  ExpectNoBreach(run, "part 1 is empty");
}

TEST(SoundHost, MeshFarFromTheOriginHasNoBreach) {
  CheckedRun run(Shifted(Perturbed(HexBox(3, 3, 3), 0.05), 1000.0));
  ExpectNoBreach(run, "shifted by 1000");
}

TEST(SoundHost, StretchedMeshHasNoBreach) {
  FaceMesh mesh = Perturbed(PrismBox(3), 0.04);
  for (auto& point : mesh.points) point[2] *= 1e-3;
  CheckedRun run(mesh, RandomParts(mesh.nCells, 3), 3);
  ExpectNoBreach(run, "aspect 1000");
}

TEST(SoundHost, SecondCheckFindsNothingNew) {
  CheckedRun run(TetBox(2), RandomParts(48, 3), 3);
  ExpectNoBreach(run, "first");
  ExpectNoBreach(run, "second");
}

TEST(SoundHost, MirroredGhostCentresAreAllowed) {
  CheckedRun run(Perturbed(HexBox(3, 3, 3), 0.05));
  CZYN3DFiniteVolumeMesh& m = *run.lent[0].mesh;
  FaceGroup const walls = FacesOf(FaceKind::Wall, m);
  for (int f = 1; f <= walls.count; ++f) {
    int const ghost = walls.other[f], cell = walls.cv[f];
    m.xc[ghost] = 2 * walls.xc[f] - m.xc[cell];
    m.yc[ghost] = 2 * walls.yc[f] - m.yc[cell];
    m.zc[ghost] = 2 * walls.zc[f] - m.zc[cell];
  }
  ExpectNoBreach(run, "mirrored");
}

TEST(SoundHost, NodesOfBoundariesNeedNotNameInteriorCells) {
  CheckedRun run(HexBox(3, 3, 3), RandomParts(27, 3), 3);
  for (LentHost const& host : run.lent) {
    CZYN3DFiniteVolumeMesh const& m = *host.mesh;
    for (int n = 1; n <= m.NNode; ++n) {
      int* row = m.NodeCell[n];
      bool isInner = true;
      for (int k = 1; k <= row[0]; ++k) isInner = isInner && row[k] <= m.NInnerCells;
      if (isInner) continue;
      int length = 0;
      for (int k = 1; k <= row[0]; ++k)
        if (row[k] > m.NInnerCells) row[++length] = row[k];
      row[0] = length;
    }
  }
  ExpectNoBreach(run, "ghost cells alone");
}

// Two cells may share several faces; CellCell then names the neighbour once, or once per face.
TEST(SoundHost, NeighbourOverTwoFacesMayBeNamedOnce) {
  // A cube in two halves whose common face is cut in two along a diagonal.
  Builder builder;
  Grid const grid(builder, 2, 1, 1);
  std::vector<int> const v = grid.Corners(0, 0, 0), w = grid.Corners(1, 0, 0);
  Cell left = Hex(v), right = Hex(w);
  left[1] = {v[1], v[3], v[7]};
  left.push_back({v[1], v[7], v[5]});
  right[0] = {w[0], w[2], w[6]};
  right.push_back({w[0], w[6], w[4]});
  builder.AddCell(left);
  builder.AddCell(right);
  CheckedRun run(builder.Finish());
  CZYN3DFiniteVolumeMesh& m = *run.lent[0].mesh;
  ASSERT_EQ(2, m.NInnerFaces);
  ExpectNoBreach(run, "named twice");
  int* row = m.CellCell[1];
  int length = 0;
  bool isNamed = false;
  for (int k = 1; k <= row[0]; ++k) {
    if (row[k] == 2 && isNamed) continue;
    isNamed = isNamed || row[k] == 2;
    row[++length] = row[k];
  }
  EXPECT_EQ(length, row[0] - 1);
  row[0] = length;
  ExpectNoBreach(run, "named once");
}

// If only the ijCV side takes the flux of a face, the other cell closes without the face, and its rows may
// omit it.
TEST(SoundHost, OneSidedFaceBelongsToItsOwnCellOnly) {
  CheckedRun run(HexBox(2, 1, 1));
  CZYN3DFiniteVolumeMesh& m = *run.lent[0].mesh;
  ASSERT_EQ(1, m.NInnerFaces);
  ASSERT_EQ(2, m.ij[1]);
  // Cell 2 gets a wall in place of the shared face: one more ghost cell and wall face.
  std::vector<std::vector<double>> reals;
  std::vector<std::vector<int>> integers;
  reals.reserve(16);
  integers.reserve(16);
  auto const grow = [&reals](double*& array, int n, double value) {
    reals.emplace_back(array, array + n + 1);
    reals.back().push_back(value);
    array = reals.back().data();
  };
  auto const growInt = [&integers](int*& array, int n, int value) {
    integers.emplace_back(array, array + n + 1);
    integers.back().push_back(value);
    array = integers.back().data();
  };
  int const ghost = m.NCell + 1;
  grow(m.xc, m.NCell, m.ijxc[1]);
  grow(m.yc, m.NCell, m.ijyc[1]);
  grow(m.zc, m.NCell, m.ijzc[1]);
  grow(m.ijWallSx, m.NWall, -m.ijSx[1]);
  grow(m.ijWallSy, m.NWall, -m.ijSy[1]);
  grow(m.ijWallSz, m.NWall, -m.ijSz[1]);
  grow(m.ijWallxc, m.NWall, m.ijxc[1]);
  grow(m.ijWallyc, m.NWall, m.ijyc[1]);
  grow(m.ijWallzc, m.NWall, m.ijzc[1]);
  growInt(m.ijWall, m.NWall, ghost);
  growInt(m.ijWallCV, m.NWall, 2);
  m.NCell = ghost;
  ++m.NWall;
  m.FaceType[1] = 1;
  for (int k = 1; k <= m.CellFace[2][0]; ++k) {
    if (m.CellFaceType[2][k] != 0) continue;
    m.CellFaceType[2][k] = 1;
    m.CellFace[2][k] = m.NWall;
    m.CellCell[2][k] = ghost;
  }
  host_check::HostCheckOptions options;
  options.nodeTables = false;  // they would have to grow too
  HostCheckReport const report = run.Check(options)[0];
  // The work arrays of the reference host are now one cell too short, which the checker cannot see.
  EXPECT_EQ(0, report.Count()) << TextOf(report);
}

}  // namespace
