#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "tests/support/mesh/BoxMesh.h"
#include "tests/support/rbf_face/FaceBed.h"

// Tables of a mesh with entries that name nothing, and objects that take over the tables of others.

namespace zyn_test::odd_tables_test {
namespace {

using Row = std::vector<int>;

// A vertex of its own for every face that is not inner: only this face can mark it.
TEST(BoundaryVertices, AreMarkedWhereverTheyStandInTheirFace) {
  for (std::size_t const place : {0U, 2U, 4U}) {
    TestMesh plan = TwoCubes();
    std::vector<int> own;
    for (Group const group : {kWall, kInlet, kOutlet, kPartition, kSymmetry}) {
      own.push_back(plan.AddNode({0.0, 0.0, 0.0}));
      Row& nodes = plan.Of(group)[0].nodes;
      nodes.insert(nodes.begin() + static_cast<std::ptrdiff_t>(place), own.back());
    }
    plan.nodeCells.resize(plan.nodes.size());
    plan.ListCellsAroundNodes();
    FaceBed bed(plan);
    Stages stages(bed.object, kInner, {});
    stages.Collate();
    for (int const v : own) EXPECT_TRUE(bed.object.m_BoundaryNode[v]) << v << " at place " << place;
  }
}

// Cell 1 of the two cubes lists its faces in the order of its neighbours 3, 2, 5, 6, 9, 10. A face of the inlet
// beyond its number, on either side, leaves no neighbour.
TEST(NeighboursOfCells, LeaveOutFacesThatAGroupDoesNotHave) {
  for (int const number : {0, -1, 2}) {
    TestMesh plan = TwoCubes();
    auto const isInlet = [](FaceOfCell const& face) { return face.group == kInlet; };
    std::find_if(plan.cellFaces[1].begin(), plan.cellFaces[1].end(), isInlet)->number = number;
    FaceBed bed(plan);
    Stages stages(bed.object, kInner, {});
    stages.Collate();
    EXPECT_EQ((Row{2, 5, 6, 9, 10, 0}), RowOf(bed.object.m_ppRBFCell33Conn[1])) << number;
  }
}

// What a search found nothing for is tied to no cell: it adds itself, 0, and no neighbours.
TEST(VirtualPointStencil, HasNoNeighboursOfNoCell) {
  FaceBed bed(TwoCubes());
  Stages stages(bed.object, kInner, {});
  stages.FillTree();
  bed.object.m_ppVirtualNode[1][1].SetData(-0.5, 0.0, 0.0, 1);
  bed.object.m_ppVirtualNode[1][2].SetData(0.5, 0.0, 0.0, 0);
  int pair[] = {1, 2};
  bed.object.CountingVirtualNodeToCellconnectionNumber_By33(1, pair);
  Row const cells = RowOf(bed.object.m_ppFaceCellConn[1]);
  EXPECT_EQ((Row{1, 2, 3, 5, 6, 9, 10}), Row(cells.begin(), cells.begin() + 7));
  EXPECT_LE(cells.size(), 8U);
}

// Element 0 of a row is a length, not a face: here it is 6, the type in front of the types is that of inner
// faces, and the plane of inner face 6 would be the nearest one ahead in cell 14.
TEST(VirtualPointsInCells, TakeNoLengthForAFace) {
  TestMesh plan = CubesOfAllGroups();
  Row nodes;
  for (Point const& p : {Point{1.125, 0, 0}, Point{1.125, 1, 0}, Point{1.125, 0, 1}})
    nodes.push_back(plan.AddNode(p));
  plan.Of(kInner)[5].nodes = nodes;
  plan.nodeCells.resize(plan.nodes.size());
  plan.ListCellsAroundNodes();
  std::vector<Face> const& inner = plan.Of(kInner);
  auto const isLeftOf14 = [](Face const& face) { return face.cv == 13 && face.other == 14; };
  auto const face = std::find_if(inner.begin(), inner.end(), isLeftOf14);
  ASSERT_NE(inner.end(), face);
  int const i = static_cast<int>(face - inner.begin()) + 1;

  FaceBed bed(plan);
  Stages stages(bed.object, kInner, {});
  stages.FillTree();
  ASSERT_EQ(6, bed.host.mesh.CellFace[14][0]);
  bed.host.mesh.CellFaceType[14][0] = 0;
  int pair[] = {13, 14};
  bed.object.Set_VirtualNode_Coord_InCellPE(kInner, i, pair, 1.0, 0.0, 0.0);
  EXPECT_EQ(1.5, bed.object.m_ppVirtualNode[i][2].x);  // half-way from 1 to 2
}

// The growth of a search ends at the bounds of all cells, which an object remembers; with the tables of another
// it has those of the other.
TEST(FaceOperatorAssignment, ForgetsTheBoundsOfTheCellsItHad) {
  FaceBed here(TwoCubes());
  FaceBed there(TwoCubes().Mapped([](Point p) { return Point{p.x + 50.0, p.y, p.z}; }));
  Stages hereStages(here.object, kInner, {}), thereStages(there.object, kInner, {});
  hereStages.FillTree();
  thereStages.FillTree();
  ASSERT_EQ(1, here.object.Search_ClosestCellID_byNode(-0.5, 0.0, 0.0));

  auto* const former = new CZynFaceRBFInternalObject(here.object);
  here.object = there.object;
  EXPECT_EQ(3, here.object.Search_ClosestCellID_byNode(0.0, 0.0, 0.0));  // of the inlet at x = 49
  here.object = *former;
  former->m_BoundaryNode.Destroy();
  former->m_FaceX.Destroy();
  former->m_FaceY.Destroy();
  former->m_FaceZ.Destroy();
  ::operator delete(former);  // without its destructor: the tables are those of `here`
}

}  // namespace
}  // namespace zyn_test::odd_tables_test
