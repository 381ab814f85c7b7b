#pragma once

#include <algorithm>
#include <cstddef>
#include <memory>
#include <new>
#include <type_traits>
#include <utility>
#include <vector>

#include "foundation/ZeroedBlock.h"

/// Memory for many small pieces that are freed together.
class PieceStore {
 public:
  /// @return nByte bytes of any content, aligned for anything
  void* Take(std::size_t nByte) {
    std::size_t const nRounded = (nByte + kAlignment - 1) / kAlignment * kAlignment;
    if (nRounded > left_) Refill(nRounded);
    void* const piece = next_;
    next_ += nRounded;
    left_ -= nRounded;
    return piece;
  }

  /// Takes all pieces back, to be given away again.
  void TakeBack() {
    if (blocks_.empty()) return;
    blocks_.erase(blocks_.begin(), blocks_.end() - 1);
    next_ = blocks_.back().get();
    left_ = lastSize_;
  }

 private:
  struct Free {
    void operator()(char* block) const { FreeZeroedBlock(block); }
  };
  using Block = std::unique_ptr<char, Free>;

  // Block sizes double: small tables stay small, and large ones consist of few blocks with large pages.
  void Refill(std::size_t nByte) {
    std::size_t const size = std::max(nByte, nextSize_);
    Block block(static_cast<char*>(NewRawBlock(size)));  // owned before the list has to grow
    blocks_.push_back(std::move(block));
    lastSize_ = size;
    nextSize_ = std::min(2 * nextSize_, kLargestBlock);
    next_ = blocks_.back().get();
    left_ = size;
  }

  static constexpr std::size_t kAlignment = 8;
  static constexpr std::size_t kLargestBlock = std::size_t{1} << 26;

  std::vector<Block> blocks_;
  std::size_t nextSize_ = std::size_t{1} << 14;
  std::size_t lastSize_ = 0;
  std::size_t left_ = 0;
  char* next_ = nullptr;
};

/// Ragged tables [0..nRow] behind members of the type T**. Their rows are made one by one, when their lengths become
/// known, and follow each other in memory in that order.
///
/// What a table needs besides its row pointers lies in front of them, so an owner keeps the pointer to the table and
/// nothing else.
template <typename T>
class GrowingRowTable {
 public:
  /// All rows are null.
  static T** Create(int nRow) {
    std::size_t const nPointer = static_cast<std::size_t>(nRow) + 1;
    void* const block = NewZeroedBlock(sizeof(Head) + nPointer * sizeof(T*));
    new (block) Head;
    return static_cast<T**>(static_cast<void*>(static_cast<char*>(block) + sizeof(Head)));
  }

  /// Makes row i, elements 0..length, each T(). An earlier row i stays in memory until Destroy.
  static T* MakeRow(T** table, int i, int length) {
    std::size_t const nElement = static_cast<std::size_t>(length) + 1;
    T* const row = NewRow(table, i, nElement);
    std::uninitialized_value_construct_n(row, nElement);
    return row;
  }

  /// Makes row i of zeros that other rows may share, for a row to which nobody writes. It is at least as long.
  static T* ShareZeros(T** table, int i, int length) {
    Head& head = *HeadOf(table);
    std::size_t const nElement = static_cast<std::size_t>(length) + 1;
    if (nElement > head.nZero) {
      head.nZero = 2 * nElement;
      head.zeros = MakeRow(table, i, static_cast<int>(head.nZero) - 1);
    }
    return table[i] = head.zeros;
  }

  /// Makes row i of elements that MakeRow would have made and that the caller constructs instead.
  static T* MakeRawRow(T** table, int i, int length) {
    return NewRow(table, i, static_cast<std::size_t>(length) + 1);
  }

  /// Frees table and rows and sets the pointer to null; null is fine.
  static void Destroy(T**& table) {
    if (table == nullptr) return;
    Head* const head = HeadOf(table);
    head->~Head();
    FreeZeroedBlock(head);
    table = nullptr;
  }

 private:
  struct alignas(16) Head {
    PieceStore rows;
    T* zeros = nullptr;  // the longest shared row
    std::size_t nZero = 0;
  };

  static T* NewRow(T** table, int i, std::size_t nElement) {
    T* const row = static_cast<T*>(HeadOf(table)->rows.Take(nElement * sizeof(T)));
    table[i] = row;
    return row;
  }

  static Head* HeadOf(T** table) {
    return static_cast<Head*>(
        static_cast<void*>(static_cast<char*>(static_cast<void*>(table)) - sizeof(Head)));
  }

  static_assert(alignof(T) <= 8, "as the pieces are aligned");
};
