// Stencils of methods 1 to 3: the cells found around the target point, or the cells around the face's vertices.

#include <algorithm>
#include <cmath>
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

// A number that equal points have in common, and other points most likely not.
double KeyOf(IBCnode const& point) { return point.x + 0.7320508 * point.y + 0.2360680 * point.z; }

// Whether any two of n keys are equal or one is not finite, in which case it says nothing about equal points.
bool AnyEqual(double const* keys, int n) {
  bool any = false;
  for (int j = 0; j < n; ++j) {
    any |= !std::isfinite(keys[j]);
    for (int m = j + 1; m < n; ++m) any |= keys[j] == keys[m];
  }
  return any;
}

}  // namespace

// Hardly any list has twins, which the keys tell without a branch for each pair.
bool CZynFaceRBFInternalObject::MayHaveTwins(int n, int const* cells) {
  std::vector<double>& keys = work_.Get().keys;
  keys.clear();
  for (int j = 1; j <= n; ++j) {
    if (cells[j] == 0) return true;  // it is no cell and has to go
    keys.push_back(KeyOf(m_pNodeTable[cells[j]]));
  }
  return AnyEqual(keys.data(), n);
}

int CZynFaceRBFInternalObject::Delete_Duplicate_Coordinate(int n, std::vector<int>& list, int* marks) {
  int* const cells = list.data();
  if (!MayHaveTwins(n, cells)) {
    for (int j = 1; j <= n; ++j) marks[cells[j]] = j;
    return n;
  }
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

void CZynFaceRBFInternalObject::Search_by_Node_control() { ForEachFaceByNode(nullptr); }

void CZynFaceRBFInternalObject::ForEachFaceByNode(DeriveFace derive) {
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
    if (derive != nullptr) (this->*derive)(i);
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

void CZynFaceRBFInternalObject::Search_by_Topology_control() { ForEachFaceByTopology(false); }

void CZynFaceRBFInternalObject::ForEachFaceByTopology(bool alsoDerives) {
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
    if (alsoDerives) {
      CollectAroundFace(i, pair, vertices.data());
      DeriveNewFaceByVertices(i);
      ForgetPositionRows(i);
    } else {
      CountingNodeToCellconnectionNumber(i, pair, vertices.data());
    }
  }
}

// The greatest distance from the target point to one of the face's cells or vertices.
double CZynFaceRBFInternalObject::FaceLength(int i, int const* pair, int const* vertices) {
  DQVector const at = Target(i);
  double largest2 = 0.0;  // the root of the largest square is the largest of the roots, to the bit
  auto const raise = [&largest2, &at](DQVector const& point) {
    double const r2 = SquaredLength(OffsetBetween(at, point));
    if (r2 > largest2) largest2 = r2;
  };
  for (int k = 0; k < 2; ++k) raise(PointOf(pair[k]));
  for (int k = 1; k <= vertices[0]; ++k) raise(VertexPoint(vertices[k]));
  return std::sqrt(largest2);
}

int CZynFaceRBFInternalObject::CountingNodeToCellconnectionNumber(int i, int* pair, int* vertices) {
  MakeMissingTables();
  int const n = CollectAroundFace(i, pair, vertices);
  MakeValueRows(i, n);
  MakeGradientRow(i, n);
  return n;
}

// Everything about the stencil but the rows of weights.
int CZynFaceRBFInternalObject::CollectAroundFace(int i, int const* pair, int const* vertices) {
  int const nVertex = vertices[0];
  int* const ownVertices = GrowingRowTable<int>::MakeRow(m_ppFaceLnods, i, nVertex);
  std::copy_n(vertices, nVertex + 1, ownVertices);

  auto const cellsAround = [this, ownVertices](int j) { return ppRBFiNodeConn[ownVertices[j]]; };
  int* const* const rows = MakePositionRows(i, nVertex, [&](int j) { return cellsAround(j)[0]; });
  StartMerged(pair);
  std::vector<int>& merged = work_.Get().merged;
  std::size_t size = merged.size();
  for (int j = 1; j <= nVertex; ++j) {
    int const* const around = cellsAround(j);
    int const nCell = around[0];
    merged.resize(size + static_cast<std::size_t>(nCell));
    size = NumberCells(around, merged.data(), static_cast<int>(size), rows[j]);
  }
  merged.resize(size);
  int const n = StoreStencil(i);
  ClearMarks(merged, m_pMarkAll);
  return n;
}

// Writes the positions of the cells of a row, and adds those that have none yet to a list of `size` elements with room for
// all. @return its new size
std::size_t CZynFaceRBFInternalObject::NumberCells(int const* row, int* list, int size, int* positions) {
  int* const marks = m_pMarkAll;
  int const nCell = row[0];
  for (int m = 1; m <= nCell; ++m) {
    int const c = row[m];
    int position = marks[c];
    if (position == 0) {
      position = size++;
      marks[c] = position;
      list[position] = c;
    }
    positions[m] = position;
  }
  return static_cast<std::size_t>(size);
}

// Begins the merged list with the face's two cells, at positions 1 and 2 whether or not they are the same.
void CZynFaceRBFInternalObject::StartMerged(int const* pair) {
  std::vector<int>& merged = work_.Get().merged;
  merged.resize(3);
  merged[0] = 0;
  merged[1] = pair[0];
  merged[2] = pair[1];
  m_pMarkAll[pair[0]] = 1;
  m_pMarkAll[pair[1]] = 2;
}

// The face needs its rows of positions no longer, and neither does any face before it.
void CZynFaceRBFInternalObject::ForgetPositionRows(int i) {
  m_pFaceRows[i].Release();
  work_.Get().positions.TakeBack();
}

// The merged list as the stencil of face i. @return its size
int CZynFaceRBFInternalObject::StoreStencil(int i) {
  std::vector<int> const& merged = work_.Get().merged;
  int const n = static_cast<int>(merged.size()) - 1;
  int* const row = GrowingRowTable<int>::MakeRow(m_ppFaceCellConn, i, n);
  row[0] = n;
  std::copy_n(merged.data() + 1, n, row + 1);
  return n;
}

// Rows of value and normal derivative.
void CZynFaceRBFInternalObject::MakeValueRows(int i, int n) {
  GrowingRowTable<double>::MakeRow(m_ppFaceFiCoef, i, n);
  GrowingRowTable<double>::MakeRow(m_ppFaceDnCoef, i, n);
}

void CZynFaceRBFInternalObject::MakeGradientRow(int i, int n) {
  if (iSearch_method != 4) GrowingRowTable<IBCnode>::MakeRow(m_ppFaceGradCoef, i, n);
}

void CZynFaceRBFInternalObject::ClearMarks(std::vector<int> const& list, int* marks) {
  for (std::size_t k = 1; k < list.size(); ++k) marks[list[k]] = 0;
}
