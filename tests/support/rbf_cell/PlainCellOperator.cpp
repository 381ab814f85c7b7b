#include "tests/support/rbf_cell/PlainCellOperator.h"

#include <lapacke.h>

#include <cmath>

#include "tests/support/exact/ExactPower.h"

namespace zyn_test {
namespace {

constexpr std::size_t At(int i) { return static_cast<std::size_t>(i); }

// Summed in the order y, x, z.
double SquaredNorm(Point d) { return d.y * d.y + d.x * d.x + d.z * d.z; }
double Norm(Point d) { return std::sqrt(SquaredNorm(d)); }
Point Difference(Point a, Point b) { return {a.x - b.x, a.y - b.y, a.z - b.z}; }

void Widen(Point p, Point& high, Point& low) {
  if (p.x > high.x) high.x = p.x;
  if (p.y > high.y) high.y = p.y;
  if (p.z > high.z) high.z = p.z;
  if (p.x < low.x) low.x = p.x;
  if (p.y < low.y) low.y = p.y;
  if (p.z < low.z) low.z = p.z;
}

double Larger(double a, double b) { return b > a ? b : a; }

}  // namespace

void SolveInPlace(DenseSystem& system) {
  lapack_int const n = system.order;
  lapack_int const nrhs = static_cast<lapack_int>(system.rightHandSides.size()) / n;
  std::vector<lapack_int> pivots(At(n));
  LAPACKE_dgesv(LAPACK_ROW_MAJOR, n, nrhs, system.matrix.data(), n, pivots.data(),
                system.rightHandSides.data(), nrhs);
}

PlainCellOperator::PlainCellOperator(TestMesh const& m, double spanValue, int shape)
    : mesh(m), span(spanValue), shapeNormalize(shape == 1) {}

void PlainCellOperator::Collate() {
  points.assign(At(mesh.NCell() + 1), CollatedPoint());
  double sum = 0.0;
  for (Face const& face : mesh.inner) {
    Widen(mesh.Centre(face.cv), boundMax, boundMin);
    Widen(mesh.Centre(face.other), boundMax, boundMin);
    sum += Norm(Difference(mesh.Centre(face.cv), mesh.Centre(face.other)));
  }
  meanDistance = sum / static_cast<double>(mesh.inner.size());
  for (Face const& face : mesh.wall) Widen(face.centre, boundMax, boundMin);
  for (Face const& face : mesh.inlet) Widen(face.centre, boundMax, boundMin);

  for (int c = 1; c <= mesh.nInnerCells; ++c) points[At(c)] = {mesh.Centre(c), c, 1, c};
  CollateKind(2, mesh.wall);
  CollateKind(3, mesh.inlet);
  CollateKind(4, mesh.outlet);
  CollateKind(5, mesh.partition);

  stencils.resize(At(mesh.nInnerCells + 1));
  supportLengths.resize(At(mesh.nInnerCells + 1));
  extents.resize(At(mesh.nInnerCells + 1));
  weights.resize(At(mesh.nInnerCells + 1));
  for (int c = 1; c <= mesh.nInnerCells; ++c) SetStencil(c);
}

void PlainCellOperator::CollateKind(int kind, std::vector<Face> const& faces) {
  int number = 0;
  for (Face const& face : faces) {
    Point const point = kind == 5 ? mesh.Centre(face.other) : face.centre;
    points[At(face.other)] = {point, face.other, kind, ++number};
  }
}

void PlainCellOperator::SetStencil(int cell) {
  std::vector<int>& stencil = stencils[At(cell)];
  stencil.assign(1, cell);
  Point high{-1e10, -1e10, -1e10}, low{1e10, 1e10, 1e10};
  Widen(PointOf(cell), high, low);
  double largest = 0.0;
  for (int const member : mesh.Neighbours(cell)) {
    stencil.push_back(member);
    Widen(PointOf(member), high, low);
    double const r2 = SquaredNorm(Difference(PointOf(cell), PointOf(member)));
    if (r2 > largest) largest = r2;
  }
  supportLengths[At(cell)] = std::sqrt(largest);
  extents[At(cell)] = {std::fabs(high.x - low.x), std::fabs(high.y - low.y), std::fabs(high.z - low.z)};
}

Point PlainCellOperator::Offset(Point from, Point to, Scales const& scales) const {
  Point d = Difference(from, to);
  if (shapeNormalize) {
    d.x /= span * scales.extent.x;
    d.y /= span * scales.extent.y;
    d.z /= span * scales.extent.z;
  }
  return d;
}

double PlainCellOperator::Kernel(double r, Scales const& scales) const {
  if (shapeNormalize) return QuicklyExactPower(1.0 - r, 6) * (35.0 * r * r + 18.0 * r + 3.0);
  double const c = span * scales.h;
  return QuicklyExactPower(1.0 - r / c, 6) * (35.0 * r * r / (c * span * scales.h) + 18.0 * r / c + 3.0);
}

// The triple g, whose negative is the slope of the kernel.
Triple PlainCellOperator::KernelSlope(Point d, Scales const& scales) const {
  double const r = Norm(d);
  double const offset[] = {d.x, d.y, d.z};
  double const c = span * scales.h;
  Triple g{};
  for (std::size_t a = 0; a < 3; ++a) {
    if (shapeNormalize)
      g[a] = offset[a] * 56.0 * (5.0 * r + 1.0) * QuicklyExactPower(1.0 - r, 5);
    else
      g[a] = offset[a] * 56.0 * (5.0 * r + c) * QuicklyExactPower(c - r, 5) / QuicklyExactPower(c, 8);
  }
  return g;
}

// [ kernel(|X_k - X_j|)  1 ] [ w  ]   [ -g of point k at the cell's centre, rounded to float ]
// [          1           0 ] [ mu ] = [ 0                                                    ]
// Rows and columns belong to positions; of a cell that stands twice in the stencil, the later position
// counts.
DenseSystem PlainCellOperator::SystemOf(int cell) const {
  std::vector<int> const& stencil = stencils[At(cell)];
  Scales const scales{extents[At(cell)], supportLengths[At(cell)]};
  int const n = static_cast<int>(stencil.size());
  std::vector<int> position(At(mesh.NCell() + 1), 0);
  for (int k = 0; k < n; ++k) position[At(stencil[At(k)])] = k + 1;

  std::vector<std::vector<double>> a(At(n), std::vector<double>(At(n), 0.0));
  std::vector<Triple> rhs(At(n), Triple{});
  for (int const pk : stencil) {
    std::size_t const row = At(position[At(pk)] - 1);
    Triple const g = KernelSlope(Offset(PointOf(cell), PointOf(pk), scales), scales);
    for (std::size_t axis = 0; axis < 3; ++axis) {
      // Volatile, since GCC 12 at -O2 loses such a rounding when it turns the loop into vector operations.
      float const volatile stored = static_cast<float>(-g[axis]);
      rhs[row][axis] = static_cast<double>(stored);
    }
    for (int const pj : stencil) {
      double const rho = Norm(Offset(PointOf(pk), PointOf(pj), scales));
      a[row][At(position[At(pj)] - 1)] = Kernel(rho, scales);
    }
  }

  DenseSystem system;
  system.order = n + 1;
  for (int k = 0; k < n; ++k) {
    for (int j = 0; j < n; ++j) system.matrix.push_back(a[At(k)][At(j)]);
    system.matrix.push_back(1.0);
    for (double const value : rhs[At(k)]) system.rightHandSides.push_back(value);
  }
  for (int j = 0; j < n; ++j) system.matrix.push_back(1.0);
  system.matrix.push_back(0.0);
  system.rightHandSides.insert(system.rightHandSides.end(), 3, 0.0);
  return system;
}

void PlainCellOperator::TakeMaxima(Triple const& sum, int number) {
  if (sum[0] > residuals.x) {
    residuals.x = sum[0];
    residuals.worst = number;
  }
  if (sum[1] > residuals.y) {
    residuals.y = sum[1];
    residuals.worst = number;
  }
  if (sum[2] > residuals.z) {
    residuals.z = sum[2];
    residuals.worst = number;
  }
}

void PlainCellOperator::DeriveCell(int cell) {
  DenseSystem system = SystemOf(cell);
  SolveInPlace(system);
  std::vector<double> const& solution = system.rightHandSides;
  Triple sum{};
  std::vector<Triple>& row = weights[At(cell)];
  row.clear();
  for (int k = 0; k < system.order; ++k) {
    row.push_back({solution[At(3 * k)], solution[At(3 * k + 1)], solution[At(3 * k + 2)]});
    for (std::size_t axis = 0; axis < 3; ++axis) sum[axis] += row.back()[axis];
  }
  TakeMaxima(sum, cell);
}

void PlainCellOperator::DeriveAll() {
  residuals.x = residuals.y = residuals.z = 0.0;
  for (int c = 1; c <= mesh.nInnerCells; ++c) DeriveCell(c);
}

PlainCellOperator::Scales PlainCellOperator::ScalesOfFace(Face const& face) const {
  Point const a = Difference(face.centre, PointOf(face.cv)), b = Difference(face.centre, PointOf(face.other));
  Scales scales;
  scales.extent = {Larger(std::fabs(a.x), std::fabs(b.x)), Larger(std::fabs(a.y), std::fabs(b.y)),
                   Larger(std::fabs(a.z), std::fabs(b.z))};
  scales.h = Larger(Norm(a), Norm(b));
  return scales;
}

DenseSystem PlainCellOperator::FaceSystem(Face const& face, Scales const& scales, Point const* normal) const {
  Point const nodes[] = {PointOf(face.cv), PointOf(face.other)};
  DenseSystem system;
  system.order = 3;
  for (Point const& nodeK : nodes) {
    Triple const g = KernelSlope(Offset(face.centre, nodeK, scales), scales);
    if (normal != nullptr)
      system.rightHandSides.push_back((-g[1] * normal->y) + (-g[0] * normal->x) + (-g[2] * normal->z));
    else
      system.rightHandSides.insert(system.rightHandSides.end(), {-g[0], -g[1], -g[2]});
    for (Point const& nodeJ : nodes)
      system.matrix.push_back(Kernel(Norm(Offset(nodeK, nodeJ, scales)), scales));
    system.matrix.push_back(1.0);
  }
  system.matrix.insert(system.matrix.end(), {1.0, 1.0, 0.0});
  system.rightHandSides.resize(normal != nullptr ? 3 : 9, 0.0);
  return system;
}

std::vector<Triple> PlainCellOperator::DeriveFace(Face const& face, int number) {
  DenseSystem system = FaceSystem(face, ScalesOfFace(face), nullptr);
  SolveInPlace(system);
  std::vector<double> const& s = system.rightHandSides;
  std::vector<Triple> const rows = {{s[0], s[1], s[2]}, {s[3], s[4], s[5]}};
  TakeMaxima({s[0] + s[3], s[1] + s[4], s[2] + s[5]}, number);
  return rows;
}

Triple PlainCellOperator::DeriveInnerFace(int f) {
  Face const& face = mesh.inner[At(f - 1)];
  Point const& area = face.area;
  double const size = Norm(area);
  Point normal;
  if (area.x != 0.0) normal.x = area.x / size;
  if (area.y != 0.0) normal.y = area.y / size;
  if (area.z != 0.0) normal.z = area.z / size;
  Scales scales = ScalesOfFace(face);
  if (scales.extent.x == 0.0) scales.extent.x = 1e-6;
  if (scales.extent.y == 0.0) scales.extent.y = 1e-6;
  if (scales.extent.z == 0.0) scales.extent.z = 1e-6;
  DenseSystem system = FaceSystem(face, scales, &normal);
  SolveInPlace(system);
  std::vector<double> const& s = system.rightHandSides;
  if (s[2] > residuals.normal) {
    residuals.normal = s[2];
    residuals.worst = f;
  }
  return {s[0], s[1], s[2]};
}

bool PlainCellOperator::HasCoincidentPoints(int cell) const {
  std::vector<int> const& stencil = stencils[At(cell)];
  for (std::size_t k = 0; k < stencil.size(); ++k)
    for (std::size_t j = 0; j < k; ++j)
      if (SquaredNorm(Difference(PointOf(stencil[k]), PointOf(stencil[j]))) == 0.0) return true;
  return false;
}

Triple PlainCellOperator::Gradient(int cell, std::vector<double> const& phi) const {
  Triple sum{};
  for (std::size_t k = 0; k < stencils[At(cell)].size(); ++k) {
    double const value = phi[At(stencils[At(cell)][k])];
    for (std::size_t axis = 0; axis < 3; ++axis) sum[axis] += value * weights[At(cell)][k][axis];
  }
  return sum;
}

}  // namespace zyn_test
