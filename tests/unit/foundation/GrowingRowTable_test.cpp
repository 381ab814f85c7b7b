#include "foundation/GrowingRowTable.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
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

TEST(GrowingRowTable, SharedZerosAreLongEnoughForEveryRow) {
  double** table = GrowingRowTable<double>::Create(40);
  int const lengths[] = {3, 2, 5, 30, 1, 4, 29, 61, 60, 500, 7};
  int i = 0;
  for (int const length : lengths) GrowingRowTable<double>::ShareZeros(table, ++i, length);
  double const* const other = GrowingRowTable<double>::MakeRow(table, 40, 9);
  i = 0;
  for (int const length : lengths) {
    double const* const row = table[++i];
    ASSERT_NE(nullptr, row);
    for (int k = 0; k <= length; ++k) EXPECT_EQ(0.0, row[k]);
    EXPECT_TRUE(row + length < other || row > other + 9);
  }
  EXPECT_EQ(table[1], table[2]) << "shared";
  GrowingRowTable<double>::Destroy(table);
}

TEST(GrowingRowTable, RawRowsHaveRoomOfTheirOwn) {
  int** table = GrowingRowTable<int>::Create(3);
  for (int i = 1; i <= 3; ++i) {
    int* const row = GrowingRowTable<int>::MakeRawRow(table, i, i);
    EXPECT_EQ(row, table[i]);
    for (int k = 0; k <= i; ++k) row[k] = 10 * i + k;
  }
  for (int i = 1; i <= 3; ++i)
    for (int k = 0; k <= i; ++k) EXPECT_EQ(10 * i + k, table[i][k]);
  GrowingRowTable<int>::Destroy(table);
}

TEST(PieceStore, GivesTheSameMemoryAgainAfterItTookAllBack) {
  PieceStore store;
  store.TakeBack();  // nothing to take
  void* const first = store.Take(100);
  EXPECT_NE(first, store.Take(100));
  store.TakeBack();
  EXPECT_EQ(first, store.Take(100));
  std::memset(store.Take(1 << 20), 1, 1 << 20);  // a block of its own
  store.TakeBack();
  void* const inLargest = store.Take(1 << 19);
  std::memset(inLargest, 2, 1 << 19);
  store.TakeBack();
  EXPECT_EQ(inLargest, store.Take(8));
}

}  // namespace
}  // namespace zyn_test::growing_row_table_test
