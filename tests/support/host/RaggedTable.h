#pragma once

#include <vector>

namespace zyn_test {

/// A ragged table as a host lends it: each row is an allocation of exactly its size, so that a sanitizer sees
/// a step beyond it, and there is no row 0.
class RaggedTable {
 public:
  RaggedTable() = default;
  RaggedTable(RaggedTable&&) = default;  // the rows keep their places, which `pointers_` names
  RaggedTable& operator=(RaggedTable&&) = default;

  /// @param[in] rows  [1..n] entries of each row, element 0 unused
  explicit RaggedTable(std::vector<std::vector<int>> const& rows)
      : rows_(rows.size()), pointers_(rows.size()) {
    for (std::size_t i = 1; i < rows.size(); ++i) {
      std::vector<int> row(1, static_cast<int>(rows[i].size()));
      row.insert(row.end(), rows[i].begin(), rows[i].end());
      rows_[i] = std::vector<int>(row.begin(), row.end());
      pointers_[i] = rows_[i].data();
    }
  }

  /// Null for a table without rows, as a host may lend it.
  int** Data() { return pointers_.size() <= 1 ? nullptr : pointers_.data(); }
  std::vector<std::vector<int>> const& Rows() const { return rows_; }

  /// Overwrites the lengths, for the tables whose rows do not begin with them.
  void SetLengths(int value) {
    for (std::size_t i = 1; i < rows_.size(); ++i) rows_[i][0] = value;
  }

 private:
  std::vector<std::vector<int>> rows_;
  std::vector<int*> pointers_;
};

}  // namespace zyn_test
