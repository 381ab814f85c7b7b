#include "tests/support/rbf_face/PlainFaceOperator.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "foundation/CDenseSolver.h"
#include "tests/support/exact/ExactPower.h"

namespace zyn_test {
namespace {

constexpr std::size_t At(int i) { return static_cast<std::size_t>(i); }

Point operator-(Point a, Point b) { return {a.x - b.x, a.y - b.y, a.z - b.z}; }

// Sums of components run y, x, z.
double Dot(Point a, Point b) { return a.y * b.y + a.x * b.x + a.z * b.z; }
double Norm(Point d) { return std::sqrt(Dot(d, d)); }
double Distance(Point a, Point b) { return Norm(a - b); }

Point Cross(Point a, Point b) {
  return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}

/// origin + t * direction.
Point Along(Point origin, double t, Point direction) {
  return {origin.x + t * direction.x, origin.y + t * direction.y, origin.z + t * direction.z};
}

Point Unit(Point s) {
  double const length = Norm(s);
  return {s.x / length, s.y / length, s.z / length};
}

void Widen(Point p, Point& high, Point& low) {
  if (p.x > high.x) high.x = p.x;
  if (p.y > high.y) high.y = p.y;
  if (p.z > high.z) high.z = p.z;
  if (p.x < low.x) low.x = p.x;
  if (p.y < low.y) low.y = p.y;
  if (p.z < low.z) low.z = p.z;
}

std::vector<int> RowOf(int const* row) { return std::vector<int>(row + 1, row + 1 + row[0]); }

bool Contains(std::vector<int> const& row, int value) {
  return std::find(row.begin(), row.end(), value) != row.end();
}

void AppendNew(std::vector<int>& row, int value) {
  if (!Contains(row, value)) row.push_back(value);
}

/// Position from 1; 0 for what is not in the row.
int PositionOf(std::vector<int> const& row, int value) {
  auto const found = std::find(row.begin(), row.end(), value);
  return found == row.end() ? 0 : static_cast<int>(found - row.begin()) + 1;
}

// ------------------------------------------------------------------------------------------- the two kernels

double C4(double r, double span, double h) {
  double const c = span * h;
  return QuicklyExactPower(1.0 - r / c, 6) * (35.0 * r * r / (c * span * h) + 18.0 * r / c + 3.0);
}

Point C4Slope(Point d, double span, double h) {
  double const c = span * h, r = Norm(d);
  auto const component = [&](double offset) {
    return -(offset * 56.0 * (5.0 * r + c) * QuicklyExactPower(c - r, 5) / QuicklyExactPower(c, 8));
  };
  return {component(d.x), component(d.y), component(d.z)};
}

double C2(double r, double span, double h) {
  double const s = r / (span * h);
  return QuicklyExactPower(1.0 - s, 4) * (4.0 * s + 1.0);
}

// ---------------------------------------------------------------------------------------------- backward error

void Account(BackwardErrors& errors, std::vector<double> const& a, std::vector<double> const& b,
             std::vector<double> const& w, std::size_t n) {
  std::size_t const columns = b.size() / n;
  for (std::size_t column = 0; column < columns; ++column) {
    double residual = 0.0, normA = 0.0, normW = 0.0, normB = 0.0;
    bool finite = true;
    for (std::size_t k = 0; k < n; ++k) {
      long double sum = -static_cast<long double>(b[k * columns + column]);
      double row = 0.0;
      for (std::size_t l = 0; l < n; ++l) {
        sum += static_cast<long double>(a[k * n + l]) * static_cast<long double>(w[l * columns + column]);
        row += std::fabs(a[k * n + l]);
      }
      finite = finite && std::isfinite(static_cast<double>(sum));
      residual = std::fmax(residual, static_cast<double>(std::fabs(sum)));
      normA = std::fmax(normA, row);
      normW = std::fmax(normW, std::fabs(w[k * columns + column]));
      normB = std::fmax(normB, std::fabs(b[k * columns + column]));
    }
    ++errors.systems;
    if (finite)
      errors.largest = std::fmax(errors.largest, residual / (normA * normW + normB));
    else
      ++errors.notFinite;
  }
}

}  // namespace

PlainFaceOperator::PlainFaceOperator(CZYN3DFiniteVolumeMesh const& m, CPartitionFace_DLL& partitionFaces,
                                     int type, FaceSettings const& s)
    : mesh(m), faceType(type), settings(s), partitionFaces_(partitionFaces) {
  nFace = Of(faceType).count;
}

void PlainFaceOperator::Run() {
  Collate();
  FillTree();
  FindStencils();
  Derive();
}

PlainFaceOperator::GroupArrays PlainFaceOperator::Of(int group) const {
  CZYN3DFiniteVolumeMesh const& m = mesh;
  CPartitionFace_DLL& p = partitionFaces_;
  switch (group) {
    case kInner:
      return {m.NInnerFaces, m.ijCV, m.ij, m.ijLnods, m.ijxc, m.ijyc, m.ijzc, m.ijSx, m.ijSy, m.ijSz};
    case kWall:
      return {m.NWall,    m.ijWallCV, m.ijWall,   m.ijWallLnods, m.ijWallxc,
              m.ijWallyc, m.ijWallzc, m.ijWallSx, m.ijWallSy,    m.ijWallSz};
    case kInlet:
      return {m.NInlet,    m.ijInletCV, m.ijInlet,   m.ijInletLnods, m.ijInletxc,
              m.ijInletyc, m.ijInletzc, m.ijInletSx, m.ijInletSy,    m.ijInletSz};
    case kOutlet:
      return {m.NOutlet,    m.ijOutletCV, m.ijOutlet,   m.ijOutletLnods, m.ijOutletxc,
              m.ijOutletyc, m.ijOutletzc, m.ijOutletSx, m.ijOutletSy,    m.ijOutletSz};
    case kPartition:
      return {p.NParInterFace(), p.ijParCV(), p.ijPar(),   m.ijParLnods, nullptr,
              nullptr,           nullptr,     p.ijParSx(), p.ijParSy(),  p.ijParSz()};
    default:
      return {m.NSymmetry,    m.ijSymmetryCV, m.ijSymmetry,   m.ijSymmetryLnods, m.ijSymmetryxc,
              m.ijSymmetryyc, m.ijSymmetryzc, m.ijSymmetrySx, m.ijSymmetrySy,    m.ijSymmetrySz};
  }
}

Point PlainFaceOperator::NodeAt(int v) const { return {mesh.xn[v], mesh.yn[v], mesh.zn[v]}; }

// --------------------------------------------------------------------------------------------------- collation

void PlainFaceOperator::Collate() {
  auto const centre = [this](int c) { return Point{mesh.xc[c], mesh.yc[c], mesh.zc[c]}; };
  targets.assign(At(nFace + 1), Point{});
  double sum = 0.0;
  for (int i = 1; i <= mesh.NInnerFaces; ++i) {
    Widen(centre(mesh.ijCV[i]), high, low);
    Widen(centre(mesh.ij[i]), high, low);
    sum += Distance(centre(mesh.ijCV[i]), centre(mesh.ij[i]));
    if (faceType == kInner) targets[At(i)] = {mesh.ijxc[i], mesh.ijyc[i], mesh.ijzc[i]};
  }
  meanDistance = sum / mesh.NInnerFaces;
  for (int v = 1; v <= mesh.NNode; ++v) Widen(NodeAt(v), high, low);

  points.assign(At(mesh.NCell + 1), Point{});
  kinds.assign(At(mesh.NCell + 1), 0);
  isBoundaryNode.assign(At(mesh.NNode + 1), false);
  maxNodes = 0;
  for (int c = 1; c <= mesh.NInnerCells; ++c) {
    points[At(c)] = centre(c);
    kinds[At(c)] = 1;
    maxNodes = std::max(maxNodes, mesh.CellLnodsNumber[c]);
  }
  for (int group = kWall; group <= kSymmetry; ++group) {
    GroupArrays const faces = Of(group);
    for (int f = 1; f <= faces.count; ++f) {
      int const c = faces.other[f];
      points[At(c)] = group == kPartition ? centre(c) : Point{faces.x[f], faces.y[f], faces.z[f]};
      kinds[At(c)] = group;
      for (int const v : RowOf(faces.nodes[f])) isBoundaryNode[At(v)] = true;
      if (faceType == group) targets[At(f)] = points[At(c)];
      maxNodes = std::max(maxNodes, faces.nodes[f][0]);
    }
  }
  CreateNodeCells();
  CreateCellNodes();
  CreateNeighbours();

  stencils.assign(At(nFace + 1), {});
  supports.assign(At(nFace + 1), 0.0);
  faceNodes.assign(At(nFace + 1), {});
  rows.assign(At(nFace + 1), {});
  virtualPoints.assign(At(nFace + 1), {});
  fi.assign(At(nFace + 1), {});
  dn.assign(At(nFace + 1), {});
  gradient.assign(At(nFace + 1), {});
}

void PlainFaceOperator::CreateNodeCells() {
  nodeCells.assign(At(mesh.NNode + 1), {});
  for (int v = 1; v <= mesh.NNode; ++v)
    for (int const c : RowOf(mesh.NodeCell[v])) AppendNew(nodeCells[At(v)], c);
  for (int c = 1; c <= mesh.NInnerCells; ++c) {
    for (int k = 1; k <= mesh.CellLnodsNumber[c]; ++k) {
      int const v = mesh.CellLnods[c][k];
      if (isBoundaryNode[At(v)]) AppendNew(nodeCells[At(v)], c);
    }
  }
}

void PlainFaceOperator::CreateCellNodes() {
  cellNodes.assign(At(mesh.NCell + 1), {});
  for (int c = 1; c <= mesh.NInnerCells; ++c)
    cellNodes[At(c)].assign(mesh.CellLnods[c] + 1, mesh.CellLnods[c] + 1 + mesh.CellLnodsNumber[c]);
  for (int group = kWall; group <= kSymmetry; ++group) {
    GroupArrays const faces = Of(group);
    for (int f = 1; f <= faces.count; ++f) cellNodes[At(faces.other[f])] = RowOf(faces.nodes[f]);
  }
}

// Cells beyond the boundary that share exactly two vertices with cell c, in the order in which they are met.
std::vector<int> PlainFaceOperator::SharingTwoVertices(int c) const {
  std::vector<int> met;
  if (kinds[At(c)] == kPartition) return met;
  for (int const v : cellNodes[At(c)])
    for (int const d : nodeCells[At(v)])
      if (d > mesh.NInnerCells && d != c) met.push_back(d);
  std::vector<int> result;
  for (int const d : met)
    if (std::count(met.begin(), met.end(), d) == 2) AppendNew(result, d);
  return result;
}

void PlainFaceOperator::CreateNeighbours() {
  auto const groupOfCode = [](int code) { return code == 101 ? 5 : code == 5 ? 6 : code + 1; };
  neighbours.assign(At(mesh.NCell + 1), {});
  for (int c = 1; c <= mesh.NInnerCells; ++c) {
    for (int k = 1; k <= mesh.CellFace[c][0]; ++k) {
      GroupArrays const faces = Of(groupOfCode(mesh.CellFaceType[c][k]));
      int const f = mesh.CellFace[c][k];
      if (faces.cv[f] != c) neighbours[At(c)].push_back(faces.cv[f]);
      if (faces.other[f] != c) neighbours[At(c)].push_back(faces.other[f]);
    }
  }
  for (int c = mesh.NInnerCells + 1; c <= mesh.NCell; ++c) neighbours[At(c)].assign(1, 0);
  for (int group = kWall; group <= kSymmetry; ++group) {
    GroupArrays const faces = Of(group);
    for (int f = 1; f <= faces.count; ++f) neighbours[At(faces.other[f])][0] = faces.cv[f];
  }
  for (int c = mesh.NInnerCells + 1; c <= mesh.NCell; ++c) {
    std::vector<int> const others = SharingTwoVertices(c);
    neighbours[At(c)].insert(neighbours[At(c)].end(), others.begin(), others.end());
  }
}

void PlainFaceOperator::CreateCellFaces() {
  cellFaces.assign(At(mesh.NCell + 1), {});
  cellFaceTypes.assign(At(mesh.NCell + 1), {});
  for (int c = 1; c <= mesh.NInnerCells; ++c) {
    cellFaces[At(c)] = RowOf(mesh.CellFace[c]);
    for (int k = 1; k <= mesh.CellFace[c][0]; ++k) {
      int const code = mesh.CellFaceType[c][k];
      cellFaceTypes[At(c)].push_back(code == 101 ? 5 : code == 5 ? 6 : code + 1);
    }
  }
  // All faces of an outer cell are counted, but the numbers of wall faces alone are filled in.
  std::vector<int> wallFaces(At(mesh.NCell + 1), 0);
  for (int group = kWall; group <= kSymmetry; ++group) {
    GroupArrays const faces = Of(group);
    for (int f = 1; f <= faces.count; ++f) {
      cellFaces[At(faces.other[f])].push_back(0);
      cellFaceTypes[At(faces.other[f])].push_back(0);
    }
  }
  for (int f = 1; f <= mesh.NWall; ++f) {
    int const c = mesh.ijWall[f];
    cellFaces[At(c)][At(wallFaces[At(c)]++)] = f;
  }
}

// -------------------------------------------------------------------------------------------------- the search

void PlainFaceOperator::FillTree() {
  tree_.SetADTreeRange(high.x, high.y, high.z, low.x, low.y, low.z, 1, 10000, 200000);
  constexpr double kMargin = 1e-6;
  for (int c = 1; c <= mesh.NCell; ++c) {
    Point const p = PointOf(c);
    tree_.AddSurfaceToADTree(c, p.x + kMargin, p.y + kMargin, p.z + kMargin, p.x - kMargin, p.y - kMargin,
                             p.z - kMargin);
  }
}

std::vector<int> PlainFaceOperator::Search(Point p, double d) const {
  int count = 0;
  int const* const ids =
      tree_.SearchNearBlockID(p.x - d, p.y - d, p.z - d, p.x + d, p.y + d, p.z + d, count, 0);
  return std::vector<int>(ids, ids + count);
}

// Grows until enough is found or the cube covers the points of all cells.
std::vector<int> PlainFaceOperator::GrowingSearch(Point p, int wanted, double& d) const {
  Point top{-1e10, -1e10, -1e10}, bottom{1e10, 1e10, 1e10};
  for (int c = 1; c <= mesh.NCell; ++c) Widen(PointOf(c), top, bottom);
  if (!(meanDistance > 0.0)) {
    d = std::max({p.x - bottom.x, p.y - bottom.y, p.z - bottom.z, top.x - p.x, top.y - p.y, top.z - p.z});
    return Search(p, std::numeric_limits<double>::max());
  }
  for (int k = 1;; ++k) {
    d = k * meanDistance;
    std::vector<int> found = Search(p, d);
    bool const coversAll = p.x - d <= bottom.x && p.y - d <= bottom.y && p.z - d <= bottom.z &&
                           p.x + d >= top.x && p.y + d >= top.y && p.z + d >= top.z;
    if (coversAll || static_cast<int>(found.size()) >= wanted) return found;
  }
}

void PlainFaceOperator::SortByDistance(std::vector<int>& ids, std::vector<double>& distances) const {
  int const n = static_cast<int>(ids.size());
  for (int pass = 1; pass <= n - 1; ++pass) {
    for (int j = 0; j < n - pass; ++j) {
      if (!(distances[At(j)] > distances[At(j + 1)])) continue;
      std::swap(distances[At(j)], distances[At(j + 1)]);
      std::swap(ids[At(j)], ids[At(j + 1)]);
    }
  }
}

int PlainFaceOperator::ClosestCell(Point p) const {
  double d = 0.0;
  std::vector<int> ids = GrowingSearch(p, 1, d);
  std::vector<double> distances;
  for (int const id : ids) distances.push_back(Distance(p, PointOf(id)));
  SortByDistance(ids, distances);
  return ids.empty() ? 0 : ids[0];
}

// --------------------------------------------------------------------------------------------------- stencils

void PlainFaceOperator::ResizeRows(int i, std::size_t n) {
  fi[At(i)].assign(n + 1, 0.0);
  dn[At(i)].assign(n + 1, 0.0);
  gradient[At(i)].assign(n + 1, Point{});
}

void PlainFaceOperator::FindStencils() {
  GroupArrays const faces = Of(faceType);
  for (int i = 1; i <= nFace; ++i) {
    int const pair[2] = {faces.cv[i], faces.other[i]};
    if (settings.method == 1 || settings.method == 2) {
      StencilByNode(i);
    } else if (settings.method == 3) {
      Row const vertices = RowOf(faces.nodes[i]);
      double h = 0.0;
      for (int const c : pair) h = std::max(h, Distance(targets[At(i)], PointOf(c)));
      for (int const v : vertices) h = std::max(h, Distance(targets[At(i)], NodeAt(v)));
      supports[At(i)] = h;
      StencilFromVertices(i, pair, vertices);
    } else if (settings.method == 4) {
      PlaceVirtualPoints(i, pair, {faces.sx[i], faces.sy[i], faces.sz[i]});
      StencilFromNeighbours(i, pair);
    }
  }
}

void PlainFaceOperator::StencilByNode(int i) {
  double d = 0.0;
  std::vector<int> ids = GrowingSearch(targets[At(i)], settings.searchNumber, d);
  std::vector<double> distances;
  for (int const id : ids) distances.push_back(Distance(targets[At(i)], PointOf(id)));
  if (settings.method == 2) {
    SortByDistance(ids, distances);
    std::size_t const n = std::min(ids.size(), At(std::max(settings.searchNumber, 0)));
    ids.resize(n);
    d = n == 0 ? 0.0 : distances[n - 1];
  }
  stencils[At(i)] = ids;
  supports[At(i)] = d;
  ResizeRows(i, ids.size());
}

void PlainFaceOperator::StencilFromVertices(int i, int const (&pair)[2], Row const& vertices) {
  Row merged = {pair[0], pair[1]};
  for (int const v : vertices)
    for (int const c : nodeCells[At(v)]) AppendNew(merged, c);
  faceNodes[At(i)] = vertices;
  rows[At(i)].clear();
  for (int const v : vertices) {
    Row positions;
    for (int const c : nodeCells[At(v)]) positions.push_back(PositionOf(merged, c));
    rows[At(i)].push_back(positions);
  }
  stencils[At(i)] = merged;
  ResizeRows(i, merged.size());
}

void PlainFaceOperator::PlaceVirtualPoints(int i, int const (&pair)[2], Point s) {
  Point const f = targets[At(i)];
  PlainVirtualPoint &p = virtualPoints[At(i)][1], &e = virtualPoints[At(i)][2];
  p.point = Along(f, Dot(PointOf(pair[0]) - f, s) / Dot(s, s), s);
  if (faceType == kInner || faceType == kPartition) {
    e.point = Along(f, Dot(PointOf(pair[1]) - f, s) / Dot(s, s), s);
    e.cell = ClosestCell(e.point);
  } else {
    e.point = PointOf(pair[1]);
    e.cell = pair[1];
  }
  p.cell = ClosestCell(p.point);
}

// The least positive distance along a ray to the planes of a cell's faces.
double PlainFaceOperator::PlaneAhead(Point origin, Point direction, int cell, int exceptGroup,
                                     int exceptFace) const {
  double nearest = 99999999.0;
  for (int k = 1; k <= mesh.CellFace[cell][0]; ++k) {
    int const code = mesh.CellFaceType[cell][k], f = mesh.CellFace[cell][k];
    int const group = code == 101 ? 5 : code == 5 ? 6 : code + 1;
    if (group == exceptGroup && f == exceptFace) continue;
    int const* const nodes = Of(group).nodes[f];
    Point const v0 = NodeAt(nodes[1]);
    Point const e1 = NodeAt(nodes[2]) - v0, e2 = NodeAt(nodes[3]) - v0;
    double const q = Dot(e1, Cross(e2, direction));
    if (q >= -1e-6 && q < 1e-6) continue;
    double const t = Dot(e1, Cross(origin - v0, e2)) / q;
    if (t > 0.0 && t < nearest) nearest = t;
  }
  return nearest;
}

void PlainFaceOperator::PlaceVirtualPointsInCells(int i, int const (&pair)[2], Point s) {
  Point const f = targets[At(i)], n = Unit(s);
  PlainVirtualPoint &p = virtualPoints[At(i)][1], &e = virtualPoints[At(i)][2];
  double const toP = PlaneAhead(f, {-n.x, -n.y, -n.z}, pair[0], faceType, i);
  p = {{f.x - 0.5 * toP * n.x, f.y - 0.5 * toP * n.y, f.z - 0.5 * toP * n.z}, pair[0]};
  if (faceType != kInner) {
    e = {PointOf(pair[1]), pair[1]};
  } else {
    double const toE = PlaneAhead(f, n, pair[1], kInner, i);
    e = {{f.x + 0.5 * toE * n.x, f.y + 0.5 * toE * n.y, f.z + 0.5 * toE * n.z}, pair[1]};
  }
}

// Of cells at exactly the same point the first stays.
PlainFaceOperator::Row PlainFaceOperator::DistinctPoints(Row const& list) const {
  Row kept;
  for (int const c : list) {
    Point const p = PointOf(c);
    bool const isTwin = std::any_of(kept.begin(), kept.end(), [&](int k) {
      Point const q = PointOf(k);
      return p.x == q.x && p.y == q.y && p.z == q.z;
    });
    if (!isTwin) kept.push_back(c);
  }
  return kept;
}

void PlainFaceOperator::SetSides(int i, Row const& merged, Row const& listP, Row const& listE) {
  rows[At(i)].clear();
  for (Row const* const side : {&listP, &listE}) {
    Row positions;
    for (int const c : *side) positions.push_back(PositionOf(merged, c));
    rows[At(i)].push_back(positions);
  }
  stencils[At(i)] = merged;
  ResizeRows(i, merged.size());
}

void PlainFaceOperator::StencilFromNeighbours(int i, int const (&pair)[2]) {
  Row merged = {pair[0], pair[1]}, sides[2] = {{pair[0]}, {pair[1]}};
  for (int k = 1; k <= 2; ++k) {
    int const tied = virtualPoints[At(i)][At(k)].cell;
    Row cells = {tied};
    cells.insert(cells.end(), neighbours[At(tied)].begin(), neighbours[At(tied)].end());
    for (int const c : cells) {
      AppendNew(merged, c);
      AppendNew(sides[k - 1], c);
    }
  }
  SetSides(i, DistinctPoints(merged), DistinctPoints(sides[0]), DistinctPoints(sides[1]));
}

void PlainFaceOperator::StencilFromVerticesOfTiedCells(int i, int const (&pair)[2]) {
  Row merged = {pair[0], pair[1]}, sides[2];
  for (int k = 1; k <= 2; ++k) {
    for (int const v : cellNodes[At(virtualPoints[At(i)][At(k)].cell)]) {
      for (int const c : nodeCells[At(v)]) {
        AppendNew(merged, c);
        AppendNew(sides[k - 1], c);
      }
    }
  }
  SetSides(i, merged, sides[0], sides[1]);
}

void PlainFaceOperator::StencilFromCubes(int i, int const (&pair)[2], Point n) {
  Point const f = targets[At(i)], u = Unit(n);
  double const reach = 2.0 * meanDistance;
  Point const a2 = Along(f, reach, u);
  Point const b2 = {f.x - reach * u.x, f.y - reach * u.y, f.z - reach * u.z};
  double const radii[2] = {Distance(PointOf(pair[1]), a2), Distance(PointOf(pair[0]), b2)};
  Row merged = {pair[0], pair[1]}, sides[2];
  for (int k = 1; k <= 2; ++k) {
    for (int const c : Search(virtualPoints[At(i)][At(k)].point, radii[k - 1])) {
      AppendNew(merged, c);
      AppendNew(sides[k - 1], c);
    }
  }
  SetSides(i, merged, sides[0], sides[1]);
}

// ------------------------------------------------------------------------------------------------ coefficients

std::vector<PlainFaceOperator::Values> PlainFaceOperator::Solve(std::vector<Point> const& nodes, Point at,
                                                                double h, Kernel kernel, bool slopes) {
  std::size_t const n = nodes.size(), columns = slopes ? 4 : 1;
  auto const kernelAt = [&](double r) {
    largestArgument = std::max(largestArgument, r / (settings.span * h));
    return kernel == Kernel::C4 ? C4(r, settings.span, h) : C2(r, settings.span, h);
  };
  std::vector<double> a, b;
  for (std::size_t k = 0; k < n; ++k) {
    for (std::size_t l = 0; l < n; ++l) a.push_back(kernelAt(Distance(nodes[k], nodes[l])));
    Point const d = at - nodes[k];
    if (slopes) {
      Point const g = C4Slope(d, settings.span, h);
      b.insert(b.end(), {g.x, g.y, g.z});
    }
    b.push_back(kernelAt(Norm(d)));
  }
  std::vector<double> factors = a, w = b;
  if (n > 0) {
    CDenseSolver().Solve(static_cast<lapack_int>(n), factors.data(), w.data(), w.data(),
                         static_cast<int>(columns));
    Account(backward, a, b, w, n);
  }
  std::vector<Values> result(columns, Values(n));
  for (std::size_t k = 0; k < n; ++k)
    for (std::size_t column = 0; column < columns; ++column) result[column][k] = w[k * columns + column];
  return result;
}

void PlainFaceOperator::Derive() {
  for (int i = 1; i <= nFace; ++i) {
    if (settings.method == 1 || settings.method == 2) DeriveAtTarget(i);
    if (settings.method == 3) DeriveOverVertices(i);
    if (settings.method == 4) DeriveOverVirtualPoints(i);
  }
}

void PlainFaceOperator::DeriveAtTarget(int i) {
  std::vector<Point> nodes;
  for (int const c : stencils[At(i)]) nodes.push_back(PointOf(c));
  std::vector<Values> const w = Solve(nodes, targets[At(i)], supports[At(i)], Kernel::C4, true);
  for (std::size_t k = 0; k < nodes.size(); ++k) {
    gradient[At(i)][k + 1] = {w[0][k], w[1][k], w[2][k]};
    fi[At(i)][k + 1] = w[3][k];
  }
  AccountForSlopes(i);
}

PlainFaceOperator::Values PlainFaceOperator::VertexWeights(int v) {
  Point const at = NodeAt(v);
  std::vector<Point> nodes;
  double largest = 0.0;
  for (int const c : nodeCells[At(v)]) {
    nodes.push_back(PointOf(c));
    double const r2 = Dot(at - PointOf(c), at - PointOf(c));
    if (r2 > largest) largest = r2;
  }
  Values const w = Solve(nodes, at, std::sqrt(largest), Kernel::C4, false)[0];
  double sum = 0.0;
  for (double const weight : w) sum += weight;
  double const error = std::fabs(sum - 1.0);
  if (error > maxVertexError) {
    maxVertexError = error;
    maxVertexErrorNode = v;
  }
  return w;
}

void PlainFaceOperator::DeriveOverVertices(int i) {
  Row const& vertices = faceNodes[At(i)];
  std::vector<Point> nodes = {PointOf(stencils[At(i)][0]), PointOf(stencils[At(i)][1])};
  for (int const v : vertices) nodes.push_back(NodeAt(v));
  std::vector<Values> const s = Solve(nodes, targets[At(i)], supports[At(i)], Kernel::C4, true);
  auto const add = [&](int position, double w, std::size_t node) {
    Point& g = gradient[At(i)][At(position)];
    g.x += w * s[0][node];
    g.y += w * s[1][node];
    g.z += w * s[2][node];
    fi[At(i)][At(position)] += w * s[3][node];
  };
  for (std::size_t j = 0; j < vertices.size(); ++j) {
    Values const w = VertexWeights(vertices[j]);
    for (std::size_t m = 0; m < w.size(); ++m) add(rows[At(i)][j][m], w[m], 2 + j);
  }
  add(1, 1.0, 0);
  add(2, 1.0, 1);
  ++facesDone;
  AccountForSlopes(i);
}

PlainFaceOperator::Values PlainFaceOperator::VirtualPointWeights(bool fromVertices, int i, int k) {
  PlainVirtualPoint const& at = virtualPoints[At(i)][At(k)];
  std::vector<Point> nodes;
  if (fromVertices) {
    for (int const v : cellNodes[At(at.cell)]) nodes.push_back(NodeAt(v));
  } else {
    // Position 0 takes the number of members for a cell.
    for (int const position : rows[At(i)][At(k - 1)]) {
      Row const& stencil = stencils[At(i)];
      nodes.push_back(PointOf(position == 0 ? static_cast<int>(stencil.size()) : stencil[At(position - 1)]));
    }
  }
  double largest = 0.0;
  for (Point const& node : nodes) {
    double const r2 = Dot(at.point - node, at.point - node);
    if (r2 > largest) largest = r2;
  }
  return Solve(nodes, at.point, std::sqrt(largest), Kernel::C2, false)[0];
}

void PlainFaceOperator::DeriveOverVirtualPoints(int i) {
  Point const f = targets[At(i)], p = virtualPoints[At(i)][1].point, e = virtualPoints[At(i)][2].point;
  double const d = Distance(p, e), dFE = Distance(f, e), dFP = Distance(f, p), inverse = 1.0 / d;
  Values const atP = VirtualPointWeights(false, i, 1);
  for (std::size_t j = 0; j < atP.size(); ++j) {
    std::size_t const position = At(rows[At(i)][0][j]);
    dn[At(i)][position] -= atP[j] * inverse;
    fi[At(i)][position] += atP[j] * (dFE / d);
  }
  if (faceType == kInner || faceType == kPartition) {
    Values const atE = VirtualPointWeights(false, i, 2);
    for (std::size_t j = 0; j < atE.size(); ++j) {
      std::size_t const position = At(rows[At(i)][1][j]);
      dn[At(i)][position] += atE[j] * inverse;
      fi[At(i)][position] += atE[j] * (dFP / d);
    }
  } else {
    dn[At(i)][2] += inverse;
  }
  ++facesDone;
  AccountForNormal(i);
}

void PlainFaceOperator::DeriveOverVerticesOfTiedCells(int i) {
  Point const f = targets[At(i)], p = virtualPoints[At(i)][1].point, e = virtualPoints[At(i)][2].point;
  double const d = Distance(p, e), inverse = 1.0 / d, ratio = Distance(f, p) / d;
  std::size_t row = 0;
  auto const add = [&](int k, double sign) {
    Values const w = VirtualPointWeights(true, i, k);
    Row const& vertices = cellNodes[At(virtualPoints[At(i)][At(k)].cell)];
    for (std::size_t j = 0; j < w.size(); ++j, ++row) {
      Values const u = VertexWeights(vertices[j]);
      for (std::size_t m = 0; m < u.size(); ++m) {
        std::size_t const position = At(rows[At(i)][row][m]);
        dn[At(i)][position] += sign * (w[j] * inverse * u[m]);
        fi[At(i)][position] += w[j] * ratio;
      }
    }
  };
  add(1, 1.0);
  if (faceType == kInner)
    add(2, -1.0);
  else
    dn[At(i)][2] -= inverse;
  ++facesDone;
  AccountForNormal(i);
}

// ------------------------------------------------------------------------------------------------------ report

namespace {

void Raise(PlainErrors& errors, double error, double sum, int face) {
  errors.squares += error * error;
  if (error > errors.largest) {
    errors.largest = error;
    errors.face = face;
    errors.sum = sum;
  }
}

}  // namespace

void PlainFaceOperator::AccountForSlopes(int i) {
  double s = 0.0, gx = 0.0, gy = 0.0, gz = 0.0;
  for (std::size_t k = 1; k <= stencils[At(i)].size(); ++k) {
    s += fi[At(i)][k];
    gx += gradient[At(i)][k].x;
    gy += gradient[At(i)][k].y;
    gz += gradient[At(i)][k].z;
  }
  Raise(value, std::fabs(1.0 - s), s, i);
  Raise(ddx, std::fabs(gx), gx, i);
  Raise(ddy, std::fabs(gy), gy, i);
  Raise(ddz, std::fabs(gz), gz, i);
}

void PlainFaceOperator::AccountForNormal(int i) {
  double s = 0.0, g = 0.0;
  for (std::size_t k = 1; k <= stencils[At(i)].size(); ++k) {
    s += fi[At(i)][k];
    g += dn[At(i)][k];
  }
  Raise(value, std::fabs(1.0 - s), s, i);
  Raise(ddn, std::fabs(g), g, i);
}

PlainFaceOperator::Values PlainFaceOperator::Apply(Values const& phi) const {
  Values result(At(nFace + 1), 0.0);
  for (int i = 1; i <= nFace; ++i) {
    double v = 0.0;
    for (std::size_t j = 0; j < stencils[At(i)].size(); ++j)
      v += phi[At(stencils[At(i)][j])] * fi[At(i)][j + 1];
    result[At(i)] = v;
  }
  return result;
}

}  // namespace zyn_test
