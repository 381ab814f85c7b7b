// Stencils of methods 1 to 3: the cells found around the target point, or the cells around the face's vertices.

#include <algorithm>
#include <cstddef>
#include <limits>

#include "foundation/Progress.h"
#include "host/Zyn3dGV.h"
#include "rbf_face/CZynFaceRBFInternalObjectImpl.h"

namespace {

// The digits of a number that is not negative. std::to_chars would bring in a unique symbol, and a library with
// unique symbols cannot be unloaded.
char* CopyDigits(int number, char* to) {
  char reversed[std::numeric_limits<int>::digits10 + 1];
  int n = 0;
  do {
    reversed[n++] = static_cast<char>('0' + number % 10);
    number /= 10;
  } while (number > 0);
  while (n > 0) *to++ = reversed[--n];
  return to;
}

// One line per face, formatted by hand: printf would take as long as collecting the stencil.
void PrintTopologyProgress(int face, int nFace) {
  constexpr char kBegin[] = "Search topology relationship on (", kMiddle[] = " face/",
                 kEnd[] = " Total face)\r";
  constexpr int kDigits = std::numeric_limits<int>::digits10 + 1;
  char line[sizeof(kBegin) + sizeof(kMiddle) + sizeof(kEnd) + 2 * kDigits];
  char* at = std::copy_n(kBegin, sizeof(kBegin) - 1, line);
  at = CopyDigits(face, at);
  at = std::copy_n(kMiddle, sizeof(kMiddle) - 1, at);
  at = CopyDigits(nFace, at);
  std::copy_n(kEnd, sizeof(kEnd), at);
  PrintFlushed(line);
}

bool SamePoint(IBCnode const& a, IBCnode const& b) { return a.x == b.x && a.y == b.y && a.z == b.z; }

}  // namespace

int CZynFaceRBFInternalObject::Delete_Duplicate_Coordinate(int n, std::vector<int>& list, int* marks) {
  int* const cells = list.data();
  for (int j = 1; j <= n; ++j) marks[cells[j]] = 0;
  // Twins are cells whose three coordinates are equal, without a tolerance. The first of them stays.
  for (int j = 1; j <= n; ++j) {
    if (cells[j] == 0) continue;
    IBCnode const& point = m_pNodeTable[cells[j]];
    for (int m = j + 1; m <= n; ++m)
      if (cells[m] != 0 && SamePoint(point, m_pNodeTable[cells[m]])) cells[m] = 0;
  }
  int nKept = 0;
  for (int j = 1; j <= n; ++j) {
    if (cells[j] == 0) continue;
    cells[++nKept] = cells[j];
    marks[cells[nKept]] = nKept;
  }
  return nKept;
}

void CZynFaceRBFInternalObject::Search_by_Node_control() {
  MakeMissingTables();
  Work& work = work_.Get();
  GrowingBoxSearch const search = CellSearch();
  for (int i = 1; i <= NFace; ++i) {
    DQVector const at = Target(i);
    GrowingBoxSearch::Answer const found = search.AtLeast(Search_number, at.x, at.y, at.z);
    MeasureFound(found.ids, found.count, at);
    if (iSearch_method == 2) {
      int const n = std::clamp(Search_number, 0, found.count);
      work.distanceSort.SortNearest(work.ids.data(), work.distances.data(), found.count, n);
      StoreFoundStencil(i, n, n == 0 ? 0.0 : work.distances[static_cast<std::size_t>(n) - 1]);
    } else {
      StoreFoundStencil(i, found.count, found.halfWidth);
    }
  }
}

// The first n of the entries found. Twins stay, and the face's own cells are members only if the search found them.
void CZynFaceRBFInternalObject::StoreFoundStencil(int i, int n, double support) {
  int* const row = GrowingRowTable<int>::MakeRow(m_ppFaceCellConn, i, n);
  GrowingRowTable<IBCnode>::MakeRow(m_ppFaceGradCoef, i, n);
  GrowingRowTable<double>::MakeRow(m_ppFaceFiCoef, i, n);
  row[0] = n;
  m_pFaceSupport[i] = support;
  int const* const ids = work_.Get().ids.data();
  for (int k = 1; k <= n; ++k) row[k] = m_pTreeCell[ids[k - 1]];
}

void CZynFaceRBFInternalObject::Search_by_Topology_control() {
  MakeMissingTables();
  FaceGroup const faces = OwnFaces();
  std::vector<int>& vertices = work_.Get().vertices;
  int const nFace = std::min(NFace, faces.count);
  for (int i = 1; i <= nFace; ++i) {
    PrintTopologyProgress(i, NFace);
    int const* const row = faces.nodes[i];
    vertices.assign(row, row + row[0] + 1);
    int pair[2] = {faces.cv[i], faces.other[i]};
    m_pFaceSupport[i] = FaceLength(i, pair, vertices.data());
    CountingNodeToCellconnectionNumber(i, pair, vertices.data());
  }
}

// The greatest distance from the target point to one of the face's cells or vertices.
double CZynFaceRBFInternalObject::FaceLength(int i, int const* pair, int const* vertices) {
  DQVector const at = Target(i);
  double length = 0.0;
  auto const raise = [&length](double distance) {
    if (distance > length) length = distance;
  };
  for (int k = 0; k < 2; ++k) raise(Length(OffsetBetween(at, m_pNodeTable[pair[k]])));
  for (int k = 1; k <= vertices[0]; ++k) raise(Length(OffsetBetween(at, VertexPoint(vertices[k]))));
  return length;
}

int CZynFaceRBFInternalObject::CountingNodeToCellconnectionNumber(int i, int* pair, int* vertices) {
  MakeMissingTables();
  std::vector<int>& merged = work_.Get().merged;
  StartMerged(pair);
  int const nVertex = vertices[0];
  for (int j = 1; j <= nVertex; ++j) {
    int const* const around = ppRBFiNodeConn[vertices[j]];
    for (int m = 1; m <= around[0]; ++m) AppendOnce(around[m], merged, m_pMarkAll);
  }

  int* const ownVertices = GrowingRowTable<int>::MakeRow(m_ppFaceLnods, i, nVertex);
  std::copy_n(vertices, nVertex + 1, ownVertices);
  Cpp_DataStructure& rows = m_pFaceRows[i];
  rows.Release();
  rows.SetRowNumber(nVertex);
  for (int j = 1; j <= nVertex; ++j) {
    int const* const around = ppRBFiNodeConn[vertices[j]];
    rows.CreateRow(j, around[0]);
    int* const positions = rows.m_ppRow[j];
    for (int m = 1; m <= around[0]; ++m) positions[m] = m_pMarkAll[around[m]];
  }

  int const n = StoreStencil(i);
  MakeGradientRow(i, n);
  ClearMarks(merged, m_pMarkAll);
  return n;
}

// Begins the merged list with the face's two cells, at positions 1 and 2 whether or not they are the same.
void CZynFaceRBFInternalObject::StartMerged(int const* pair) {
  std::vector<int>& merged = work_.Get().merged;
  merged = {0, pair[0], pair[1]};
  m_pMarkAll[pair[0]] = 1;
  m_pMarkAll[pair[1]] = 2;
}

// Adds a cell to a list unless it is there, and marks it with its position.
void CZynFaceRBFInternalObject::AppendOnce(int c, std::vector<int>& list, int* marks) {
  if (marks[c] != 0) return;
  marks[c] = static_cast<int>(list.size());
  list.push_back(c);
}

// The merged list as the stencil of face i, with rows of value and normal derivative. @return its size
int CZynFaceRBFInternalObject::StoreStencil(int i) {
  std::vector<int> const& merged = work_.Get().merged;
  int const n = static_cast<int>(merged.size()) - 1;
  int* const row = GrowingRowTable<int>::MakeRow(m_ppFaceCellConn, i, n);
  row[0] = n;
  std::copy_n(merged.data() + 1, n, row + 1);
  GrowingRowTable<double>::MakeRow(m_ppFaceFiCoef, i, n);
  GrowingRowTable<double>::MakeRow(m_ppFaceDnCoef, i, n);
  return n;
}

void CZynFaceRBFInternalObject::MakeGradientRow(int i, int n) {
  if (iSearch_method != 4) GrowingRowTable<IBCnode>::MakeRow(m_ppFaceGradCoef, i, n);
}

void CZynFaceRBFInternalObject::ClearMarks(std::vector<int> const& list, int* marks) {
  for (std::size_t k = 1; k < list.size(); ++k) marks[list[k]] = 0;
}
