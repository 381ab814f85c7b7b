#pragma once

/// A ragged table of integers, used singly and in arrays.
///
/// Call SetRowNumber once and CreateRow once for each row; then read and write elements. A row keeps its length and
/// is never replaced. The object owns its rows until Release or destruction, except for those that it borrows.
///
/// Copying copies pointers: only one of two objects that share rows may be destroyed.
class Cpp_DataStructure {
 public:
  Cpp_DataStructure() = default;
  Cpp_DataStructure(Cpp_DataStructure const&) = default;
  Cpp_DataStructure& operator=(Cpp_DataStructure const&) = default;
  virtual ~Cpp_DataStructure();

  /// Makes rows 0..n, each null. A second call changes the number alone and keeps the pointers, so n must not be
  /// larger then.
  /// @return 0; -1 for a negative n
  int SetRowNumber(int n);

  /// Creates a row of `length` zeros behind its length.
  /// @return 0; -1 if the row exists or is not one of 0..m_iNRow; -2 if there is no row beyond row 0, or no table
  int CreateRow(int row, int length);

  /// Uses rows that belong to someone else, until Release or destruction, and those it made itself are gone. They are
  /// as the others: [0..n], each with its length in element 0.
  void Borrow(int n, int** rows);

  /// Frees all rows and the table; m_iNRow keeps its value. Borrowed ones stay with their owner. @return 0
  int Release();

  int GetValue(int row, int column);             ///< unchecked; column 0 is the row's length
  int SetValue(int row, int column, int value);  ///< unchecked; @return 0

  int m_iNRow = 0;  ///< number of rows; callers use 1..m_iNRow, and row 0 exists

 private:
  bool isBorrowed_ = false;  // here, it makes no table larger

 public:
  int** m_ppRow = nullptr;  ///< [0..m_iNRow]; null until created, with the row's length in element 0
};
