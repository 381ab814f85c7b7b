#include "reference_host/parallel/MeshPartBytes.h"

#include <gtest/gtest.h>

#include "reference_host/box/BoxMesh.h"

namespace reference_host {

TEST(MeshPartBytes, UnpacksEveryFieldThatWasPacked) {
  MeshPart part = MakeBoxPart(ParseBoxSpec("box:3,4,5:tet:perturb=0.1"), 1, 3);
  part.patches[0].type = "patch";
  part.patches[1].group = BoundaryGroup::Outlet;
  part.patches[2].name = "";
  part.patches[1].partners = {0, 2};
  part.haloPeriod.front() = -1;
  part.shifts = {{1.0, 2.0, 3.0}};
  MeshPart const copy = UnpackMeshPart(PackMeshPart(part));
  EXPECT_EQ(copy.part, part.part);
  EXPECT_EQ(copy.nParts, part.nParts);
  EXPECT_EQ(copy.points, part.points);
  EXPECT_EQ(copy.globalNode, part.globalNode);
  EXPECT_EQ(copy.nOwned, part.nOwned);
  EXPECT_EQ(copy.globalCell, part.globalCell);
  EXPECT_EQ(copy.haloPart, part.haloPart);
  EXPECT_EQ(copy.haloPeriod, part.haloPeriod);
  EXPECT_EQ(copy.shifts, part.shifts);
  EXPECT_EQ(copy.haloNodeStart, part.haloNodeStart);
  EXPECT_EQ(copy.haloNode, part.haloNode);
  EXPECT_EQ(copy.faceStart, part.faceStart);
  EXPECT_EQ(copy.faceNode, part.faceNode);
  EXPECT_EQ(copy.owner, part.owner);
  EXPECT_EQ(copy.neighbour, part.neighbour);
  EXPECT_EQ(copy.facePatch, part.facePatch);
  ASSERT_EQ(copy.patches.size(), part.patches.size());
  for (std::size_t p = 0; p < part.patches.size(); ++p) {
    EXPECT_EQ(copy.patches[p].name, part.patches[p].name);
    EXPECT_EQ(copy.patches[p].type, part.patches[p].type);
    EXPECT_EQ(copy.patches[p].group, part.patches[p].group);
    EXPECT_EQ(copy.patches[p].partners, part.patches[p].partners);
  }
}

TEST(MeshPartBytes, UnpacksAPartWithoutHaloAndPatches) {
  MeshPart const copy = UnpackMeshPart(PackMeshPart(MeshPart{}));
  EXPECT_EQ(0, copy.nOwned);
  EXPECT_EQ(0, copy.nHalo());
  EXPECT_TRUE(copy.patches.empty());
  EXPECT_EQ(copy.faceStart, MeshPart{}.faceStart);
}

}  // namespace reference_host
