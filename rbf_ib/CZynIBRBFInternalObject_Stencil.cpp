// The stencils of the points.

#include <algorithm>
#include <cstddef>
#include <vector>

#include "foundation/BoundingBox.h"
#include "foundation/DQVector.h"
#include "foundation/GrowingBoxSearch.h"
#include "foundation/GrowingRowTable.h"
#include "foundation/ListedDistances.h"
#include "foundation/RowTable.h"
#include "foundation/Status.h"
#include "host/Zyn3dGV.h"
#include "rbf_ib/CZynIBRBFInternalObject.h"
#include "rbf_ib/SearchMethod.h"
#include "rbf_ib/ShortenedSort.h"

namespace {

constexpr int kMaxSeeds = 2;
constexpr double kSeedTolerance = 1e-6;  // L

}  // namespace

/// What a search found around a point. The arrays grow to the fullest cube and are used again.
struct CZynIBRBFInternalObject::Candidates {
  std::vector<DQVector> positions;  // by identity
  BoundingBox bounds;               // of the positions; a cube that covers them holds all cells
  std::vector<int> ids;             // of the cells in the last cube
  std::vector<double> distances;    // from the point to their positions, L
  ShortenedSort sort;

  explicit Candidates(CZynIBRBFInternalObject const& object) {
    int const nCell = object.m_pMesh->NCell;
    positions.push_back({0.0, 0.0, 0.0});
    for (int c = 1; c <= nCell; ++c) {
      std::size_t const id = static_cast<std::size_t>(object.m_piCellToBlock[c]);
      if (id == 0) continue;
      if (positions.size() <= id) positions.resize(id + 1);
      IBCnode const& p = object.m_pIBCnode[c];
      positions[id] = {p.x, p.y, p.z};
      bounds.Widen(p.x, p.y, p.z);
    }
  }

  int Count() const { return static_cast<int>(ids.size()); }

  /// Entries of the tree.
  int NEntry() const { return static_cast<int>(positions.size()) - 1; }

  /// Copies an answer, since its array belongs to the tree and changes with the next search.
  void Take(GrowingBoxSearch::Answer const& found, DQVector const& p) {
    std::size_t const n = static_cast<std::size_t>(found.count);
    ids.assign(found.ids, found.ids + n);
    distances.resize(n);
    MeasureListed(positions.data(), found.ids, found.count, p, distances.data());
  }

  void Sort(int nWanted) { sort.Sort(ids.data(), distances.data(), Count(), nWanted); }
};

/// The cells and nodes of a stencil in the order in which they are met. The arrays are used again.
struct CZynIBRBFInternalObject::StencilWork {
  std::vector<int> cells, nodes;
};

int CZynIBRBFInternalObject::SearchIBADTress(double* x, double* y, double* z, int iMethod,
                                             double /*dDistance*/, int iNumber) {
  FindStencils(x, y, z, iMethod, iNumber, true);
  return Status::kDone;
}

void CZynIBRBFInternalObject::Search_by_Node_control(double* x, double* y, double* z, int iMethod,
                                                     int iNumber) {
  FindByNode(x, y, z, iMethod, iNumber, true);
}

void CZynIBRBFInternalObject::Search_by_Topology_control(double* x, double* y, double* z) {
  FindByTopology(x, y, z, true);
}

void CZynIBRBFInternalObject::FindStencils(double const* x, double const* y, double const* z, int iMethod,
                                           int iNumber, bool withCoefficients) {
  if (iMethod == kWholeCube || iMethod == kNearest) FindByNode(x, y, z, iMethod, iNumber, withCoefficients);
  if (iMethod == kByTopology) FindByTopology(x, y, z, withCoefficients);
}

void CZynIBRBFInternalObject::FindByNode(double const* x, double const* y, double const* z, int iMethod,
                                         int iNumber, bool withCoefficients) {
  Candidates candidates(*this);
  GrowingBoxSearch const search(*m_pADTree, candidates.bounds, candidates.NEntry(), MeanDistance);
  for (int i = 1; i <= m_iNIBNode; ++i) {
    DQVector const p = {x[i], y[i], z[i]};
    GrowingBoxSearch::Answer const found = search.AtLeast(iNumber, p.x, p.y, p.z);
    candidates.Take(found, p);
    int n = candidates.Count();
    double support = found.halfWidth;
    if (iMethod == kNearest) {
      n = std::clamp(iNumber, 0, n);
      candidates.Sort(n);
      support = n > 0 ? candidates.distances[static_cast<std::size_t>(n) - 1] : 0.0;
    }
    int* const row = CreateStencilRow(i, n);
    if (withCoefficients) CreateCoefficientRows(i, n);
    m_pIBSupportLength[i] = support;
    int const* const ids = candidates.ids.data();
    for (int j = 0; j < n; ++j) row[j + 1] = m_piBlockToCell[ids[j]];
  }
}

void CZynIBRBFInternalObject::FindByTopology(double const* x, double const* y, double const* z,
                                             bool withCoefficients) {
  Candidates candidates(*this);
  GrowingBoxSearch const search(*m_pADTree, candidates.bounds, candidates.NEntry(), MeanDistance);
  StencilWork work;
  ClearLocalNumbers();
  for (int i = 1; i <= m_iNIBNode; ++i) {
    DQVector const p = {x[i], y[i], z[i]};
    candidates.Take(search.AtLeast(kMaxSeeds, p.x, p.y, p.z), p);
    candidates.Sort(kMaxSeeds);
    int const nSeed = ChooseSeeds(i, candidates);
    int seeds[kMaxSeeds];
    for (int s = 0; s < nSeed; ++s) seeds[s] = m_piBlockToCell[candidates.ids[static_cast<std::size_t>(s)]];
    if (i > 1) ClearLocalNumbersOf(i - 1);
    int const n = CollectStencil(i, nSeed, seeds, work);
    if (withCoefficients) CreateCoefficientRows(i, n);
  }
}

// The difference has its sign, and the first of the two may be the farther one (see Dis_Sorting): if several
// candidates leave a single seed, it is the farther one. The stencils of method 3 are defined so.
int CZynIBRBFInternalObject::ChooseSeeds(int i, Candidates const& candidates) {
  std::vector<double> const& distances = candidates.distances;
  int const n = candidates.Count();
  if (n < kMaxSeeds) {
    m_pIBTwoSeeds[i] = 0;
    m_pIBSupportLength[i] = n == 1 ? distances[0] : 0.0;
    return n;
  }
  bool const two = kSeedTolerance > distances[0] - distances[1];
  m_pIBTwoSeeds[i] = two ? 1 : 0;
  m_pIBSupportLength[i] = distances[0] > distances[1] ? distances[0] : distances[1];
  return two ? 2 : 1;
}

int* CZynIBRBFInternalObject::CreateStencilRow(int i, int n) {
  int* const row = GrowingRowTable<int>::MakeRow(m_ppIBConn, i, n);
  row[0] = n;
  return row;
}

void CZynIBRBFInternalObject::CreateCoefficientRows(int i, int n) {
  GrowingRowTable<IBCnode>::MakeRow(m_ppIBCoef, i, n);
  GrowingRowTable<double>::MakeRow(m_ppIBValueCoef, i, n);
}

int CZynIBRBFInternalObject::CountingNodeToCellconnectionNumber(int i, int nSeed, int* pSeed) {
  StencilWork work;
  ClearLocalNumbers();
  int const n = CollectStencil(i, nSeed, pSeed, work);
  CreateCoefficientRows(i, n);
  return n;
}

void CZynIBRBFInternalObject::ClearLocalNumbers() {
  m_CellLocalID.Assign(0);
  m_NodeLocalID.Assign(0);
}

// Everything that CollectStencil numbered for point i; all other numbers are zero.
void CZynIBRBFInternalObject::ClearLocalNumbersOf(int i) {
  int const *const cells = m_ppIBConn[i], *const nodes = m_ppIBNodeConn[i];
  int *const numberOfCell = m_CellLocalID.m_pData, *const numberOfNode = m_NodeLocalID.m_pData;
  for (int k = 1; k <= cells[0]; ++k) numberOfCell[cells[k]] = 0;
  for (int k = 1; k <= nodes[0]; ++k) numberOfNode[nodes[k]] = 0;
}

// One ring of cells around the seeds: the seeds, then the usable cells around each of their nodes, in the order in
// which they are met.
int CZynIBRBFInternalObject::CollectStencil(int i, int nSeed, int const* seeds, StencilWork& work) {
  std::vector<int>& cells = work.cells;
  std::vector<int>& nodes = work.nodes;
  cells.clear();
  nodes.clear();
  int *const numberOfCell = m_CellLocalID.m_pData, *const numberOfNode = m_NodeLocalID.m_pData;
  auto const number = [](int* numbers, std::vector<int>& met, int entity) {
    met.push_back(entity);
    return numbers[entity] = static_cast<int>(met.size());
  };
  for (int s = 0; s < nSeed; ++s) number(numberOfCell, cells, seeds[s]);
  for (int s = 0; s < nSeed; ++s) {
    int const* const seedNodes = m_pMesh->CellLnods[seeds[s]];
    // A mesh need not have rows of nodes for ghost and halo cells.
    int const nNode = seedNodes == nullptr ? 0 : m_pMesh->CellLnodsNumber[seeds[s]];
    for (int k = 1; k <= nNode; ++k)
      if (numberOfNode[seedNodes[k]] == 0) number(numberOfNode, nodes, seedNodes[k]);
  }
  int const nNode = static_cast<int>(nodes.size());
  int* const nodeRow = GrowingRowTable<int>::MakeRow(m_ppIBNodeConn, i, nNode);
  nodeRow[0] = nNode;
  std::copy(nodes.begin(), nodes.end(), nodeRow + 1);

  int* const* const positionRows = MakePositionRows(i, nodeRow);
  for (int j = 1; j <= nNode; ++j) {
    int const* const around = ppRBFiNodeConn[nodeRow[j]];
    int* const positions = positionRows[j];
    for (int k = 1; k <= around[0]; ++k) {
      int const c = around[k];
      int const known = numberOfCell[c];
      positions[k] = known != 0 ? known : number(numberOfCell, cells, c);
    }
  }
  int const n = static_cast<int>(cells.size());
  std::copy(cells.begin(), cells.end(), CreateStencilRow(i, n) + 1);
  return n;
}

// Rows of positions for the nodes of point i, each as long as the node's row of cells and with that length in element 0.
int** CZynIBRBFInternalObject::MakePositionRows(int i, int const* nodes) {
  int const nNode = nodes[0];
  auto const lengthOf = [this, nodes](int j) { return ppRBFiNodeConn[nodes[j]][0] + 1; };
  std::size_t nElement = 0;
  for (int j = 1; j <= nNode; ++j) nElement += static_cast<std::size_t>(lengthOf(j));
  void* const memory = positionStore_->Take(RowTable<int>::Bytes(nNode, nElement));
  int** const rows = RowTable<int>::LayOut(memory, nNode, nNode, lengthOf);
  rows[0] = nullptr;
  for (int j = 1; j <= nNode; ++j) rows[j][0] = lengthOf(j) - 1;
  m_pIBNodeCellTable[i].Borrow(nNode, rows);
  return rows;
}

void CZynIBRBFInternalObject::Dis_Sorting(int* pID, double* pDistance, int n) {
  ShortenedSort().Sort(pID, pDistance, n, n);
}
