#pragma once

/// A ragged table of integers, used singly and in arrays.
///
/// Used in one way only: SetRowNumber once, CreateRow once per row, then reads and writes. A row neither
/// changes its length nor is replaced. Owns its rows until Release or destruction.
///
/// Copying copies pointers: of two objects that share rows only one may be destroyed.
class Cpp_DataStructure {
 public:
  Cpp_DataStructure() = default;
  Cpp_DataStructure(Cpp_DataStructure const&) = default;
  Cpp_DataStructure& operator=(Cpp_DataStructure const&) = default;
  virtual ~Cpp_DataStructure();

  /// Rows 0..n without content. A second call changes the count alone and keeps the pointers as they are, so
  /// it must not come with a larger n.
  /// @return 0; -1 for a negative n
  int SetRowNumber(int n);

  /// Creates a row of `length` zeros behind its length.
  /// @return 0; -1 when the row exists or is not one of 0..m_iNRow; -2 when there are no rows beyond row 0,
  /// or no table
  int CreateRow(int row, int length);

  /// Frees all rows and the table; m_iNRow stays. @return 0
  int Release();

  int GetValue(int row, int column);             ///< unchecked; column 0 is the row's length
  int SetValue(int row, int column, int value);  ///< unchecked; @return 0

  int m_iNRow = 0;          ///< number of rows; callers use 1..m_iNRow, row 0 exists
  int** m_ppRow = nullptr;  ///< [0..m_iNRow]; a row is null until created and has its length in element 0
};
