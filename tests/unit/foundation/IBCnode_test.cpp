#include "foundation/IBCnode.h"

#include <gtest/gtest.h>

#include <type_traits>

// A point with a tag. Its arithmetic works in place and leaves the tag alone.

namespace zyn_test::ib_cnode_test {
namespace {

IBCnode Node(double x, double y, double z, int tag) {
  IBCnode node;
  node.SetData(x, y, z, tag);
  return node;
}

void ExpectNode(IBCnode const& node, double x, double y, double z, int tag) {
  EXPECT_EQ(x, node.x);
  EXPECT_EQ(y, node.y);
  EXPECT_EQ(z, node.z);
  EXPECT_EQ(tag, node.tag);
}

TEST(IBCnode, DefaultConstructionIsAllZero) { ExpectNode(IBCnode(), 0.0, 0.0, 0.0, 0); }

TEST(IBCnode, ConstructionIgnoresTheTag) {
  IBCnode const a(1, 2, 3, 9);
  ExpectNode(a, 1.0, 2.0, 3.0, 0);
}

TEST(IBCnode, HasAVirtualDestructor) { EXPECT_TRUE(std::has_virtual_destructor<IBCnode>::value); }

TEST(IBCnode, CopyConstructionTakesTheTagAlong) {
  IBCnode const b = Node(1.5, -2.5, 3.5, 9);
  IBCnode const a(b);
  ExpectNode(a, 1.5, -2.5, 3.5, 9);
}

TEST(IBCnode, AssignmentKeepsTheTagOfTheLeftSide) {
  IBCnode const b = Node(1.5, -2.5, 3.5, 9);
  IBCnode a = Node(7.0, 7.0, 7.0, 4);
  EXPECT_EQ(&a, &(a = b));
  ExpectNode(a, 1.5, -2.5, 3.5, 4);
}

TEST(IBCnode, CopyTakesTheTagAlong) {
  IBCnode b = Node(1.5, -2.5, 3.5, 9);
  IBCnode a = Node(7.0, 7.0, 7.0, 4);
  a.copy(b);
  ExpectNode(a, 1.5, -2.5, 3.5, 9);
  ExpectNode(b, 1.5, -2.5, 3.5, 9);
}

TEST(IBCnode, PlusAddsInPlaceAndReturnsTheLeftSide) {
  IBCnode const b = Node(1.0, 2.0, 4.0, 9);
  IBCnode a = Node(10.0, 20.0, 40.0, 4);
  EXPECT_EQ(&a, &(a + b));
  ExpectNode(a, 11.0, 22.0, 44.0, 4);
  ExpectNode(b, 1.0, 2.0, 4.0, 9);
}

TEST(IBCnode, PlusEqualsIsTheSameAsPlus) {
  IBCnode const b = Node(1.0, 2.0, 4.0, 9);
  IBCnode a = Node(10.0, 20.0, 40.0, 4);
  EXPECT_EQ(&a, &(a += b));
  ExpectNode(a, 11.0, 22.0, 44.0, 4);
}

TEST(IBCnode, MinusSubtractsInPlaceAndReturnsTheLeftSide) {
  IBCnode const b = Node(1.0, 2.0, 4.0, 9);
  IBCnode a = Node(10.0, 20.0, 40.0, 4);
  EXPECT_EQ(&a, &(a - b));
  ExpectNode(a, 9.0, 18.0, 36.0, 4);
  ExpectNode(b, 1.0, 2.0, 4.0, 9);
}

TEST(IBCnode, ArithmeticChainsOnTheLeftSide) {
  IBCnode const b = Node(1.0, 2.0, 4.0, 9);
  IBCnode a = Node(10.0, 20.0, 40.0, 4);
  a + b + b - b;
  ExpectNode(a, 11.0, 22.0, 44.0, 4);
}

TEST(IBCnode, SetDataStoresAllFour) {
  IBCnode a = Node(10.0, 20.0, 40.0, 4);
  a.SetData(-1.0, -2.0, -3.0, 5);
  ExpectNode(a, -1.0, -2.0, -3.0, 5);
}

TEST(IBCnode, SetDataVectorAddsInSpiteOfItsName) {
  IBCnode a = Node(10.0, 20.0, 40.0, 4);
  a.SetDataVector(1.0, 2.0, 3.0);
  ExpectNode(a, 11.0, 22.0, 43.0, 4);
}

TEST(IBCnode, SetOneCoordinateLeavesTheOthers) {
  IBCnode a = Node(10.0, 20.0, 40.0, 4);
  a.Set_X(1.0);
  ExpectNode(a, 1.0, 20.0, 40.0, 4);
  a.Set_Y(2.0);
  ExpectNode(a, 1.0, 2.0, 40.0, 4);
  a.Set_Z(3.0);
  ExpectNode(a, 1.0, 2.0, 3.0, 4);
}

}  // namespace
}  // namespace zyn_test::ib_cnode_test
