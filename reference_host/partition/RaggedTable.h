#pragma once

#include <cstddef>
#include <memory>
#include <vector>

namespace reference_host {

/// Rows of integers in the form that the operators read, all in one block: `row[0]` is the length, and the
/// entries are `row[1..row[0]]`. Rows are numbered from 1.
class RaggedTable {
 public:
  RaggedTable() = default;

  /// Makes the rows and writes their lengths. The caller fills the entries.
  /// @param[in] length  [1..n] number of entries of each row
  explicit RaggedTable(std::vector<int> const& length) : rows_(length.size(), nullptr) {
    std::size_t size = 0;
    for (std::size_t i = 1; i < length.size(); ++i) size += static_cast<std::size_t>(length[i]) + 1;
    block_.reset(new int[size]);  // not make_unique, which would clear it first
    int* row = block_.get();
    for (std::size_t i = 1; i < length.size(); ++i) {
      rows_[i] = row;
      row[0] = length[i];
      row += length[i] + 1;
    }
  }

  int** rows() { return rows_.data(); }
  int* operator[](int i) { return rows_[i]; }
  int const* operator[](int i) const { return rows_[i]; }
  int size() const { return rows_.empty() ? 0 : static_cast<int>(rows_.size()) - 1; }

 private:
  std::unique_ptr<int[]> block_;
  std::vector<int*> rows_;  // [1..n] into block_
};

}  // namespace reference_host
