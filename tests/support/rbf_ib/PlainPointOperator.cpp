#include "tests/support/rbf_ib/PlainPointOperator.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <stdexcept>
#include <utility>

#include "foundation/CDenseSolver.h"
#include "tests/support/exact/ExactPower.h"

namespace zyn_test {
namespace {

constexpr std::size_t At(int i) { return static_cast<std::size_t>(i); }

Point Difference(Point a, Point b) { return {a.x - b.x, a.y - b.y, a.z - b.z}; }

// Summed in the order y, x, z.
double SquaredNorm(Point d) { return d.y * d.y + d.x * d.x + d.z * d.z; }
double Norm(Point d) { return std::sqrt(SquaredNorm(d)); }

/// The kernel of a support length R: the value at a distance, and the slopes at an offset.
struct Kernel {
  double c, c2, c8;

  Kernel(double span, double support)
      : c(span * support), c2(c * span * support), c8(QuicklyExactPower(c, 8)) {}

  double Value(double r) const {
    return QuicklyExactPower(1.0 - r / c, 6) * (r * 35.0 * r / c2 + r * 18.0 / c + 3.0);
  }
  double Slope(double d, double r) const {
    return -(d * 56.0 * (r * 5.0 + c) * QuicklyExactPower(c - r, 5) / c8);
  }
};

}  // namespace

void Solve(System& system) {
  CDenseSolver solver;
  double* const b = system.rightHandSides.data();
  if (system.order > 0) solver.Solve(system.order, system.matrix.data(), b, b, system.columns);
}

double BackwardError(System const& system, int column, std::vector<double> const& w) {
  double residual = 0.0, normA = 0.0, normW = 0.0, normB = 0.0;
  for (int i = 0; i < system.order; ++i) {
    double const b = system.Solution(i, column);
    long double sum = -static_cast<long double>(b);
    double row = 0.0;
    for (int j = 0; j < system.order; ++j) {
      double const a = system.matrix[At(system.order * i + j)];
      sum += static_cast<long double>(a) * static_cast<long double>(w[At(j)]);
      row += std::fabs(a);
    }
    residual = std::fmax(residual, static_cast<double>(std::fabs(sum)));
    normA = std::fmax(normA, row);
    normW = std::fmax(normW, std::fabs(w[At(i)]));
    normB = std::fmax(normB, std::fabs(b));
  }
  return residual / (normA * normW + normB);
}

double WorstBackwardError(System const& system) {
  System solved = system;
  Solve(solved);
  double worst = 0.0;
  for (int column = 0; column < system.columns; ++column) {
    std::vector<double> w;
    for (int row = 0; row < system.order; ++row) w.push_back(solved.Solution(row, column));
    worst = std::fmax(worst, BackwardError(system, column, w));
  }
  return worst;
}

void Statistics::Take(int i, double computed, double exact) {
  double const error = std::fabs(exact - computed);
  sumOfSquares += error * error;
  if (error > largest) {
    largest = error;
    point = i;
    there = computed;
  }
}

PlainPointOperator::PlainPointOperator(CZYN3DFiniteVolumeMesh const& m, CPartitionFace_DLL& faces,
                                       PointSettings s)
    : mesh(m), partitionFaces(faces), settings(s) {}

void PlainPointOperator::SetUp(double const* mark, std::vector<Point> const& points) {
  Collate();
  CollectNodeCells(mark);
  EnterCells(mark);
  SearchAll(points);
  DeriveAll(points);
}

// ------------------------------------------------------------------------------------------------ positions

void PlainPointOperator::MeasureBounds() {
  auto const widen = [this](double x, double y, double z) {
    if (x > boundMax.x) boundMax.x = x;
    if (y > boundMax.y) boundMax.y = y;
    if (z > boundMax.z) boundMax.z = z;
    if (x < boundMin.x) boundMin.x = x;
    if (y < boundMin.y) boundMin.y = y;
    if (z < boundMin.z) boundMin.z = z;
  };
  double sum = 0.0;
  for (int f = 1; f <= mesh.NInnerFaces; ++f) {
    int const a = mesh.ijCV[f], b = mesh.ij[f];
    widen(mesh.xc[a], mesh.yc[a], mesh.zc[a]);
    widen(mesh.xc[b], mesh.yc[b], mesh.zc[b]);
    sum += Norm({mesh.xc[a] - mesh.xc[b], mesh.yc[a] - mesh.yc[b], mesh.zc[a] - mesh.zc[b]});
  }
  meanDistance = sum / mesh.NInnerFaces;
  for (int f = 1; f <= mesh.NWall; ++f) widen(mesh.ijWallxc[f], mesh.ijWallyc[f], mesh.ijWallzc[f]);
  for (int f = 1; f <= mesh.NInlet; ++f) widen(mesh.ijInletxc[f], mesh.ijInletyc[f], mesh.ijInletzc[f]);
}

void PlainPointOperator::Place(int c, Point p, int kind) {
  positions[At(c)] = p;
  tags[At(c)] = c;
  kinds[At(c)] = kind;
}

void PlainPointOperator::MarkNodes(int count, int* const* faceNodes) {
  for (int f = 1; f <= count; ++f)
    for (int k = 1; k <= faceNodes[f][0]; ++k) boundaryNode[At(faceNodes[f][k])] = true;
}

void PlainPointOperator::Collate() {
  MeasureBounds();
  positions.assign(At(mesh.NCell + 1), Point());
  tags.assign(At(mesh.NCell + 1), 0);
  kinds.assign(At(mesh.NCell + 1), 0);
  boundaryNode.assign(At(mesh.NNode + 1), false);
  for (int c = 1; c <= mesh.NInnerCells; ++c) Place(c, {mesh.xc[c], mesh.yc[c], mesh.zc[c]}, 1);
  for (int f = 1; f <= mesh.NWall; ++f)
    Place(mesh.ijWall[f], {mesh.ijWallxc[f], mesh.ijWallyc[f], mesh.ijWallzc[f]}, 2);
  for (int f = 1; f <= mesh.NInlet; ++f)
    Place(mesh.ijInlet[f], {mesh.ijInletxc[f], mesh.ijInletyc[f], mesh.ijInletzc[f]}, 3);
  for (int f = 1; f <= mesh.NOutlet; ++f)
    Place(mesh.ijOutlet[f], {mesh.ijOutletxc[f], mesh.ijOutletyc[f], mesh.ijOutletzc[f]}, 4);
  for (int f = 1; f <= partitionFaces.NParInterFace(); ++f) {
    int const c = partitionFaces.ijPar()[f];
    Place(c, {mesh.xc[c], mesh.yc[c], mesh.zc[c]}, 5);
  }
  MarkNodes(mesh.NWall, mesh.ijWallLnods);
  MarkNodes(mesh.NInlet, mesh.ijInletLnods);
  MarkNodes(mesh.NOutlet, mesh.ijOutletLnods);
}

void PlainPointOperator::CollectNodeCells(double const* mark) {
  nodeCells.assign(At(mesh.NNode + 1), {});
  auto const add = [&](int node, int c) {
    std::vector<int>& row = nodeCells[At(node)];
    if (mark[c] < 0.0 && std::find(row.begin(), row.end(), c) == row.end()) row.push_back(c);
  };
  for (int n = 1; n <= mesh.NNode; ++n)
    for (int k = 1; k <= mesh.NodeCell[n][0]; ++k) add(n, mesh.NodeCell[n][k]);
  for (int c = 1; c <= mesh.NInnerCells; ++c)
    for (int k = 1; k <= mesh.CellLnodsNumber[c]; ++k)
      if (boundaryNode[At(mesh.CellLnods[c][k])]) add(mesh.CellLnods[c][k], c);
}

// --------------------------------------------------------------------------------------------------- search

void PlainPointOperator::EnterCells(double const* mark) {
  cellToBlock.assign(At(mesh.NCell + 1), 0);
  blockToCell.assign(1, 0);
  for (int c = 1; c <= mesh.NCell; ++c) {
    if (!(mark[c] < 0.0)) continue;
    blockToCell.push_back(c);
    int const b = static_cast<int>(blockToCell.size()) - 1;
    cellToBlock[At(c)] = b;
    Point const& p = positions[At(c)];
    tree_.AddSurfaceToADTree(b, p.x + 1e-6, p.y + 1e-6, p.z + 1e-6, p.x - 1e-6, p.y - 1e-6, p.z - 1e-6);
  }
}

Point const& PlainPointOperator::PositionOfBlock(int b) const { return positions[At(blockToCell[At(b)])]; }

// All usable cells whose small boxes meet the cube, by comparison with each.
std::vector<int> PlainPointOperator::Meeting(Point p, double d) const {
  auto const overlap = [d](double centre, double x) {
    return x + 1e-6 >= centre - d && x - 1e-6 <= centre + d;
  };
  std::vector<int> ids;
  for (int b = 1; b < static_cast<int>(blockToCell.size()); ++b) {
    Point const& q = PositionOfBlock(b);
    if (overlap(p.x, q.x) && overlap(p.y, q.y) && overlap(p.z, q.z)) ids.push_back(b);
  }
  return ids;
}

bool PlainPointOperator::CoversAll(Point p, double d) const {
  for (std::size_t b = 1; b < blockToCell.size(); ++b) {
    Point const& q = positions[At(blockToCell[b])];
    bool const inside = p.x - d <= q.x && q.x <= p.x + d && p.y - d <= q.y && q.y <= p.y + d &&
                        p.z - d <= q.z && q.z <= p.z + d;
    if (!inside) return false;
  }
  return true;
}

double PlainPointOperator::FarthestBound(Point p) const {
  double farthest = 0.0;
  for (std::size_t b = 1; b < blockToCell.size(); ++b) {
    Point const d = Difference(p, positions[At(blockToCell[b])]);
    farthest = std::max({farthest, std::fabs(d.x), std::fabs(d.y), std::fabs(d.z)});
  }
  return farthest;
}

PlainPointOperator::Found PlainPointOperator::Search(Point p, int wanted) {
  Found found;
  std::vector<int> expected;
  double cube = std::numeric_limits<double>::max();
  if (meanDistance > 0.0) {
    for (int k = 1;; ++k) {
      cube = found.halfWidth = k * meanDistance;
      expected = Meeting(p, cube);
      if (static_cast<int>(expected.size()) >= wanted || CoversAll(p, cube)) break;
    }
  } else {
    found.halfWidth = FarthestBound(p);
    expected = Meeting(p, cube);
  }
  int count = 0;
  int const* const ids = tree_.SearchNearBlockID(p.x - cube, p.y - cube, p.z - cube, p.x + cube, p.y + cube,
                                                 p.z + cube, count, 0);
  found.ids.assign(ids, ids + count);
  for (int const id : found.ids) found.distances.push_back(Norm(Difference(p, PositionOfBlock(id))));
  std::vector<int> ascending = found.ids;
  std::sort(ascending.begin(), ascending.end());
  if (ascending != expected) throw std::logic_error("the tree did not find what lies in the cube");
  return found;
}

void PlainPointOperator::SortAllButTheFirstTwo(std::vector<int>& ids, std::vector<double>& distances) {
  int const n = static_cast<int>(ids.size());
  for (int pass = 1; pass <= n - 2; ++pass) {
    for (int j = 0; j < n - pass; ++j) {
      if (distances[At(j)] > distances[At(j + 1)]) {
        std::swap(distances[At(j)], distances[At(j + 1)]);
        std::swap(ids[At(j)], ids[At(j + 1)]);
      }
    }
  }
}

void PlainPointOperator::SearchAll(std::vector<Point> const& points) {
  std::size_t const n = points.size() + 1;
  stencils.assign(n, {});
  supports.assign(n, 0.0);
  twoSeeds.assign(n, false);
  pointNodes.assign(n, {});
  nodeTable.assign(n, {});
  for (int i = 1; i < static_cast<int>(n); ++i) {
    if (settings.method == 1 || settings.method == 2) SearchByNumber(i, points[At(i - 1)]);
    if (settings.method == 3) SearchByTopology(i, points[At(i - 1)]);
  }
}

void PlainPointOperator::SearchByNumber(int i, Point p) {
  Found found = Search(p, settings.number);
  int n = static_cast<int>(found.ids.size());
  supports[At(i)] = found.halfWidth;
  if (settings.method == 2) {
    SortAllButTheFirstTwo(found.ids, found.distances);
    n = std::min(n, settings.number);
    supports[At(i)] = n > 0 ? found.distances[At(n - 1)] : 0.0;
  }
  for (int j = 0; j < n; ++j) stencils[At(i)].push_back(blockToCell[At(found.ids[At(j)])]);
}

void PlainPointOperator::SearchByTopology(int i, Point p) {
  Found found = Search(p, 2);
  SortAllButTheFirstTwo(found.ids, found.distances);
  std::vector<int> seeds;
  if (found.ids.empty()) return;
  seeds.push_back(blockToCell[At(found.ids[0])]);
  supports[At(i)] = found.distances[0];
  if (found.ids.size() > 1) {
    twoSeeds[At(i)] = 1e-6 > found.distances[0] - found.distances[1];
    if (twoSeeds[At(i)]) seeds.push_back(blockToCell[At(found.ids[1])]);
    supports[At(i)] = std::max(found.distances[0], found.distances[1]);
  }
  CollectRing(i, seeds);
}

// The seeds, and around them every usable cell that has a mesh node in common with one.
void PlainPointOperator::CollectRing(int i, std::vector<int> const& seeds) {
  std::vector<int>& cells = stencils[At(i)];
  std::vector<int>& nodes = pointNodes[At(i)];
  auto const appendOnce = [](std::vector<int>& list, int entry) {
    if (std::find(list.begin(), list.end(), entry) == list.end()) list.push_back(entry);
  };
  cells = seeds;
  for (int const seed : seeds)
    for (int k = 1; k <= mesh.CellLnodsNumber[seed]; ++k) appendOnce(nodes, mesh.CellLnods[seed][k]);
  for (int const node : nodes)
    for (int const c : nodeCells[At(node)]) appendOnce(cells, c);
  for (int const node : nodes) {
    nodeTable[At(i)].emplace_back();
    for (int const c : nodeCells[At(node)]) {
      auto const place = std::find(cells.begin(), cells.end(), c) - cells.begin();
      nodeTable[At(i)].back().push_back(static_cast<int>(place) + 1);
    }
  }
}

// -------------------------------------------------------------------------------------------------- weights

// sum_l kernel(|X_k - X_l|) w_l = (d/dx, d/dy, d/dz, value) of kernel(|p - X_k|), for every k; a single column is
// that of the value.
System PlainPointOperator::Assemble(std::vector<Point> const& nodes, Point p, double support,
                                    int columns) const {
  Kernel const kernel(settings.span, support);
  System system;
  system.order = static_cast<int>(nodes.size());
  system.columns = columns;
  for (Point const& xk : nodes) {
    Point const d = Difference(p, xk);
    double const r = Norm(d);
    if (columns == 4)
      for (double const component : {d.x, d.y, d.z})
        system.rightHandSides.push_back(kernel.Slope(component, r));
    system.rightHandSides.push_back(kernel.Value(r));
    for (Point const& xl : nodes) system.matrix.push_back(kernel.Value(Norm(Difference(xk, xl))));
  }
  return system;
}

Point PlainPointOperator::NodePoint(int node) const { return {mesh.xn[node], mesh.yn[node], mesh.zn[node]}; }

System PlainPointOperator::CellSystem(int i, Point p) const {
  std::vector<Point> nodes;
  for (int const c : stencils[At(i)]) nodes.push_back(positions[At(c)]);
  return Assemble(nodes, p, supports[At(i)], 4);
}

System PlainPointOperator::NodeAndSeedSystem(int i, Point p) const {
  std::vector<Point> nodes;
  if (!stencils[At(i)].empty()) nodes.push_back(positions[At(stencils[At(i)][0])]);
  if (twoSeeds[At(i)]) nodes.push_back(positions[At(stencils[At(i)][1])]);
  for (int const node : pointNodes[At(i)]) nodes.push_back(NodePoint(node));
  return Assemble(nodes, p, supports[At(i)], 4);
}

System PlainPointOperator::NodeSystem(int node) const {
  std::vector<Point> cells;
  double farthest = 0.0;
  for (int const c : nodeCells[At(node)]) {
    cells.push_back(positions[At(c)]);
    farthest = std::max(farthest, SquaredNorm(Difference(NodePoint(node), positions[At(c)])));
  }
  return Assemble(cells, NodePoint(node), std::sqrt(farthest), 1);
}

void PlainPointOperator::DeriveAll(std::vector<Point> const& points) {
  weights.assign(points.size() + 1, {});
  for (int i = 1; i <= static_cast<int>(points.size()); ++i) {
    if (settings.method == 1 || settings.method == 2) DeriveOnCells(i, points[At(i - 1)]);
    if (settings.method == 3) DeriveOnNodes(i, points[At(i - 1)]);
  }
}

void PlainPointOperator::DeriveOnCells(int i, Point p) {
  System s = CellSystem(i, p);
  Solve(s);
  for (int k = 0; k < s.order; ++k)
    weights[At(i)].push_back({s.Solution(k, 0), s.Solution(k, 1), s.Solution(k, 2), s.Solution(k, 3)});
  TakeStatistics(i);
}

void PlainPointOperator::DeriveOnNodes(int i, Point p) {
  System s = NodeAndSeedSystem(i, p);
  Solve(s);
  std::vector<Weights>& sums = weights[At(i)];
  sums.resize(stencils[At(i)].size());
  auto const add = [&](int member, double share, int row) {
    Weights& w = sums[At(member - 1)];
    w.x += share * s.Solution(row, 0);
    w.y += share * s.Solution(row, 1);
    w.z += share * s.Solution(row, 2);
    w.value += share * s.Solution(row, 3);
  };
  int const m = static_cast<int>(pointNodes[At(i)].size());
  int const nSeed = s.order - m;
  for (int j = 0; j < m; ++j) {
    System node = NodeSystem(pointNodes[At(i)][At(j)]);
    Solve(node);
    for (int k = 0; k < node.order; ++k) add(nodeTable[At(i)][At(j)][At(k)], node.Solution(k, 0), nSeed + j);
  }
  for (int seed = 1; seed <= nSeed; ++seed) add(seed, 1.0, seed - 1);
  TakeStatistics(i);
}

void PlainPointOperator::TakeStatistics(int i) {
  Weights sum;
  for (Weights const& w : weights[At(i)]) {
    sum.x += w.x;
    sum.y += w.y;
    sum.z += w.z;
    sum.value += w.value;
  }
  ++nDerived;
  value.Take(i, sum.value, 1.0);
  dx.Take(i, sum.x, 0.0);
  dy.Take(i, sum.y, 0.0);
  dz.Take(i, sum.z, 0.0);
}

Weights PlainPointOperator::Apply(int i, double const* field) const {
  Weights sum;
  for (std::size_t k = 0; k < stencils[At(i)].size(); ++k) {
    Weights const& w = weights[At(i)][k];
    double const f = field[stencils[At(i)][k]];
    sum.x += f * w.x;
    sum.y += f * w.y;
    sum.z += f * w.z;
    sum.value += f * w.value;
  }
  return sum;
}

}  // namespace zyn_test
