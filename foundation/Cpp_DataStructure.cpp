#include "foundation/Cpp_DataStructure.h"

#include <algorithm>
#include <cstddef>

#include "foundation/Status.h"

Cpp_DataStructure::~Cpp_DataStructure() { Release(); }

int Cpp_DataStructure::SetRowNumber(int n) {
  if (n < 0) return Status::kFailure;
  m_iNRow = n;
  if (m_ppRow == nullptr) m_ppRow = new int*[static_cast<std::size_t>(n) + 1]();
  return Status::kDone;
}

int Cpp_DataStructure::CreateRow(int row, int length) {
  if (row < 0 || row > m_iNRow) return Status::kFailure;
  if (m_ppRow != nullptr && m_ppRow[row] != nullptr) return Status::kFailure;
  if (m_iNRow == 0 || m_ppRow == nullptr) return Status::kNoRows;
  // Even a negative length has an element to stand in.
  m_ppRow[row] = new int[static_cast<std::size_t>(std::max(length, 0)) + 1]();
  m_ppRow[row][0] = length;
  return Status::kDone;
}

void Cpp_DataStructure::Borrow(int n, int** rows) {
  Release();
  m_iNRow = n;
  m_ppRow = rows;
  isBorrowed_ = true;
}

int Cpp_DataStructure::Release() {
  if (m_ppRow != nullptr && !isBorrowed_) {
    for (int row = 0; row <= m_iNRow; ++row) delete[] m_ppRow[row];
    delete[] m_ppRow;
  }
  m_ppRow = nullptr;
  isBorrowed_ = false;
  return Status::kDone;
}

int Cpp_DataStructure::GetValue(int row, int column) { return m_ppRow[row][column]; }

int Cpp_DataStructure::SetValue(int row, int column, int value) {
  m_ppRow[row][column] = value;
  return Status::kDone;
}
