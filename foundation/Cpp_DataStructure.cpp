#include "foundation/Cpp_DataStructure.h"

#include <algorithm>
#include <cstddef>

namespace {

constexpr int kSuccess = 0;
constexpr int kBadRow = -1;
constexpr int kNoRows = -2;

}  // namespace

Cpp_DataStructure::~Cpp_DataStructure() { Release(); }

int Cpp_DataStructure::SetRowNumber(int n) {
  if (n < 0) return kBadRow;
  m_iNRow = n;
  if (m_ppRow == nullptr) m_ppRow = new int*[static_cast<std::size_t>(n) + 1]();
  return kSuccess;
}

int Cpp_DataStructure::CreateRow(int row, int length) {
  if (row < 0 || row > m_iNRow) return kBadRow;
  if (m_ppRow != nullptr && m_ppRow[row] != nullptr) return kBadRow;
  if (m_iNRow == 0 || m_ppRow == nullptr) return kNoRows;
  // There is room for the length in any case, whatever it is.
  m_ppRow[row] = new int[static_cast<std::size_t>(std::max(length, 0)) + 1]();
  m_ppRow[row][0] = length;
  return kSuccess;
}

int Cpp_DataStructure::Release() {
  if (m_ppRow == nullptr) return kSuccess;
  for (int row = 0; row <= m_iNRow; ++row) delete[] m_ppRow[row];
  delete[] m_ppRow;
  m_ppRow = nullptr;
  return kSuccess;
}

int Cpp_DataStructure::GetValue(int row, int column) { return m_ppRow[row][column]; }

int Cpp_DataStructure::SetValue(int row, int column, int value) {
  m_ppRow[row][column] = value;
  return kSuccess;
}
