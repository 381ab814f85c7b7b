#pragma once

/// A ragged table of integers.
///
/// Call SetRowNumber once, then CreateRow once per row, then read and write. A row keeps its length and is never
/// replaced. The table owns its rows until Release or destruction.
///
/// Copying copies pointers: of two objects that share rows, only one may be destroyed.
class Cpp_DataStructure {
 public:
  Cpp_DataStructure() = default;
  Cpp_DataStructure(Cpp_DataStructure const&) = default;
  Cpp_DataStructure& operator=(Cpp_DataStructure const&) = default;
  virtual ~Cpp_DataStructure();

  /// Makes rows 0..n without content. A second call changes the count and keeps the table of rows, so its n must not be
  /// larger.
  /// @return 0; -1 for a negative n
  int SetRowNumber(int n);

  /// Creates a row of `length` zeros behind its length.
  /// @return 0; -1 if the row exists already or is not one of 0..m_iNRow; -2 if there are no rows beyond row 0 or there
  ///         is no table
  int CreateRow(int row, int length);

  /// Frees all rows and the table; m_iNRow stays. @return 0
  int Release();

  int GetValue(int row, int column);             ///< unchecked; column 0 is the row's length
  int SetValue(int row, int column, int value);  ///< unchecked; @return 0

  int m_iNRow = 0;          ///< number of rows; callers use 1..m_iNRow, row 0 exists
  int** m_ppRow = nullptr;  ///< [0..m_iNRow]; a row is null until created and has its length in element 0
};
