#include "foundation/Cpp_DataStructure.h"

#include <gtest/gtest.h>

#include <type_traits>

// The ragged table of integers: rows 0 to m_iNRow, each with its length in column 0.

namespace zyn_test::cpp_data_structure_test {
namespace {

/// A table with rows 0 to n, none of which exists yet.
struct Table : Cpp_DataStructure {
  explicit Table(int n) { SetRowNumber(n); }
};

TEST(RaggedTable, IsEmptyAfterConstruction) {
  Cpp_DataStructure const table;
  EXPECT_EQ(0, table.m_iNRow);
  EXPECT_EQ(nullptr, table.m_ppRow);
}

TEST(RaggedTable, HasAVirtualDestructor) {
  EXPECT_TRUE(std::has_virtual_destructor<Cpp_DataStructure>::value);
}

TEST(RaggedTable, ServesInArrays) {
  Cpp_DataStructure* const tables = new Cpp_DataStructure[3];
  for (int t = 0; t < 3; ++t) {
    EXPECT_EQ(0, tables[t].SetRowNumber(2));
    EXPECT_EQ(0, tables[t].CreateRow(2, t));
  }
  for (int t = 0; t < 3; ++t) EXPECT_EQ(t, tables[t].GetValue(2, 0));
  delete[] tables;
}

TEST(RaggedTable, SetRowNumberMakesNullRows) {
  Cpp_DataStructure table;
  EXPECT_EQ(0, table.SetRowNumber(3));
  EXPECT_EQ(3, table.m_iNRow);
  for (int row = 0; row <= 3; ++row) EXPECT_EQ(nullptr, table.m_ppRow[row]);
}

TEST(RaggedTable, SetRowNumberRefusesANegativeNumber) {
  Table table(3);
  int** const rows = table.m_ppRow;
  EXPECT_EQ(-1, table.SetRowNumber(-1));
  EXPECT_EQ(3, table.m_iNRow);
  EXPECT_EQ(rows, table.m_ppRow);
}

TEST(RaggedTable, SecondSetRowNumberRaisesTheCountWithoutGrowingTheTable) {
  Table table(2);
  table.CreateRow(2, 1);
  int** const rows = table.m_ppRow;
  EXPECT_EQ(0, table.SetRowNumber(5));
  EXPECT_EQ(5, table.m_iNRow);
  EXPECT_EQ(rows, table.m_ppRow);
  EXPECT_EQ(1, table.GetValue(2, 0));
  table.m_iNRow = 2;  // the table still ends at row 2, and the destructor walks to the count
}

TEST(RaggedTable, CreateRowZeroFillsAndStoresTheLength) {
  Table table(2);
  EXPECT_EQ(0, table.CreateRow(1, 4));
  EXPECT_EQ(4, table.GetValue(1, 0));
  for (int column = 1; column <= 4; ++column) EXPECT_EQ(0, table.GetValue(1, column));
  EXPECT_EQ(nullptr, table.m_ppRow[0]);
  EXPECT_EQ(nullptr, table.m_ppRow[2]);
}

TEST(RaggedTable, CreateRowAcceptsRow0AndTheLastRowAndLength0) {
  Table table(2);
  EXPECT_EQ(0, table.CreateRow(0, 3));
  EXPECT_EQ(0, table.CreateRow(2, 0));
  EXPECT_EQ(3, table.GetValue(0, 0));
  EXPECT_EQ(0, table.GetValue(2, 0));
}

TEST(RaggedTable, CreateRowTwiceFailsAndLeavesTheRow) {
  Table table(2);
  table.CreateRow(1, 2);
  table.SetValue(1, 2, 77);
  int* const row = table.m_ppRow[1];
  EXPECT_EQ(-1, table.CreateRow(1, 5));
  EXPECT_EQ(row, table.m_ppRow[1]);
  EXPECT_EQ(2, table.GetValue(1, 0));
  EXPECT_EQ(77, table.GetValue(1, 2));
}

TEST(RaggedTable, CreateRowRefusesARowAboveTheCount) {
  Table table(3);
  table.SetRowNumber(2);  // row 3 exists in the pointer array, so that only the count refuses it
  EXPECT_EQ(-1, table.CreateRow(3, 1));
  EXPECT_EQ(nullptr, table.m_ppRow[3]);
}

TEST(RaggedTable, CreateRowRefusesANegativeRow) {
  Table table(2);
  EXPECT_EQ(-1, table.CreateRow(-1, 1));
  for (int row = 0; row <= 2; ++row) EXPECT_EQ(nullptr, table.m_ppRow[row]);
}

TEST(RaggedTable, CreateRowOnATableOfNoRowsFailsWithItsOwnStatus) {
  Table table(0);
  EXPECT_EQ(-2, table.CreateRow(0, 4));
  EXPECT_EQ(nullptr, table.m_ppRow[0]);
}

TEST(RaggedTable, SetValueStoresOneEntryAndReturnsZero) {
  Table table(1);
  table.CreateRow(1, 3);
  EXPECT_EQ(0, table.SetValue(1, 2, -5));
  EXPECT_EQ(0, table.GetValue(1, 1));
  EXPECT_EQ(-5, table.GetValue(1, 2));
  EXPECT_EQ(0, table.GetValue(1, 3));
  EXPECT_EQ(3, table.GetValue(1, 0));
}

TEST(RaggedTable, ReleaseFreesTheRowsAndKeepsTheCount) {
  Table table(2);
  table.CreateRow(0, 1);
  table.CreateRow(2, 1);
  EXPECT_EQ(0, table.Release());
  EXPECT_EQ(nullptr, table.m_ppRow);
  EXPECT_EQ(2, table.m_iNRow);
}

TEST(RaggedTable, CreateRowAfterReleaseFailsForWantOfATable) {
  Table table(2);
  table.Release();
  EXPECT_EQ(-2, table.CreateRow(1, 4));
  EXPECT_EQ(nullptr, table.m_ppRow);
}

TEST(RaggedTable, ReleaseOfAnEmptyTableDoesNothing) {
  Cpp_DataStructure table;
  EXPECT_EQ(0, table.Release());
  EXPECT_EQ(nullptr, table.m_ppRow);
}

TEST(RaggedTable, CanBeFilledAnewAfterRelease) {
  Table table(2);
  table.CreateRow(1, 1);
  table.Release();
  EXPECT_EQ(0, table.Release());
  EXPECT_EQ(0, table.SetRowNumber(4));
  EXPECT_EQ(0, table.CreateRow(4, 6));
  EXPECT_EQ(6, table.GetValue(4, 0));
}

TEST(RaggedTable, BorrowedRowsStayWithTheirOwner) {
  int first[] = {2, 8, 9}, second[] = {0};
  int* rows[] = {nullptr, first, second};
  {
    Table table(4);
    table.CreateRow(3, 1);
    table.Borrow(2, rows);
    EXPECT_EQ(2, table.m_iNRow);
    EXPECT_EQ(9, table.GetValue(1, 2));
    EXPECT_EQ(0, table.GetValue(2, 0));
    EXPECT_EQ(-1, table.CreateRow(1, 4)) << "it exists";
    EXPECT_EQ(0, table.Release());
    EXPECT_EQ(nullptr, table.m_ppRow);
    table.SetRowNumber(1);
    EXPECT_EQ(0, table.CreateRow(1, 4)) << "a row of its own again";
    table.Borrow(2, rows);
  }
  EXPECT_EQ(8, first[1]);
}

}  // namespace
}  // namespace zyn_test::cpp_data_structure_test
