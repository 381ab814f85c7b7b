#include "foundation/GrowingRowTable.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

// Rows that are made one by one: zeroed, apart from each other, aligned, alive until the table goes.

namespace zyn_test::growing_row_table_test {
namespace {

std::uintptr_t AddressOf(void const* p) { return reinterpret_cast<std::uintptr_t>(p); }

TEST(GrowingRowTable, BeginsWithoutRows) {
  int** table = GrowingRowTable<int>::Create(3);
  for (int i = 0; i <= 3; ++i) EXPECT_EQ(nullptr, table[i]) << i;
  GrowingRowTable<int>::Destroy(table);
  EXPECT_EQ(nullptr, table);
  GrowingRowTable<int>::Destroy(table);
}

// Lengths around what a piece is rounded to, and one that no block of the usual size holds.
TEST(GrowingRowTable, RowsAreZeroedApartAndAligned) {
  std::vector<int> const lengths = {0, 1, 2, 3, 4, 5, 6, 7, 100, 0, 5000, 3, 70000, 1};
  int const nRow = static_cast<int>(lengths.size()) - 1;
  int** table = GrowingRowTable<int>::Create(nRow);
  for (int i = 0; i <= nRow; ++i) {
    int* const row = GrowingRowTable<int>::MakeRow(table, i, lengths[i]);
    ASSERT_EQ(row, table[i]);
    EXPECT_EQ(0U, AddressOf(row) % 8) << "row " << i;
    for (int k = 0; k <= lengths[i]; ++k) {
      ASSERT_EQ(0, row[k]) << "row " << i << ", element " << k;
      row[k] = i + 1;
    }
  }
  for (int i = 0; i <= nRow; ++i)
    for (int k = 0; k <= lengths[i]; ++k) ASSERT_EQ(table[i][k], i + 1) << "row " << i << ", element " << k;
  GrowingRowTable<int>::Destroy(table);
}

TEST(GrowingRowTable, RowsFollowEachOtherInMemory) {
  double** table = GrowingRowTable<double>::Create(2);
  for (int i = 0; i <= 2; ++i) GrowingRowTable<double>::MakeRow(table, i, 3);
  EXPECT_EQ(4, table[1] - table[0]);
  EXPECT_EQ(4, table[2] - table[1]);
  GrowingRowTable<double>::Destroy(table);
}

TEST(GrowingRowTable, AFormerRowStaysInMemory) {
  int** table = GrowingRowTable<int>::Create(1);
  int* const former = GrowingRowTable<int>::MakeRow(table, 1, 2);
  former[2] = 7;
  GrowingRowTable<int>::MakeRow(table, 1, 4);
  EXPECT_NE(table[1], former);
  EXPECT_EQ(7, former[2]);
  EXPECT_EQ(0, table[1][2]);
  GrowingRowTable<int>::Destroy(table);
}

struct Seven {
  Seven() = default;
  Seven(Seven const& other) : value(other.value) {}
  int value = 7;
};

TEST(GrowingRowTable, ElementsAreConstructed) {
  Seven** table = GrowingRowTable<Seven>::Create(1);
  Seven const* const row = GrowingRowTable<Seven>::MakeRow(table, 1, 2);
  for (int k = 0; k <= 2; ++k) EXPECT_EQ(7, row[k].value) << k;
  GrowingRowTable<Seven>::Destroy(table);
}

}  // namespace
}  // namespace zyn_test::growing_row_table_test
