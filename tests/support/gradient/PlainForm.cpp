#include "tests/support/gradient/PlainForm.h"

#include <cstddef>

namespace zyn_test {
namespace {

std::size_t Index(int cell) { return static_cast<std::size_t>(cell); }

/// The median of a, v and b, in strict comparisons that also settle ties and NaN.
double Limited(double a, double v, double b) {
  double lo, hi, hi2;
  if (a > v) {
    lo = v;
    hi = a;
  } else {
    lo = a;
    hi = v;
  }
  if (hi > b)
    hi2 = b;
  else
    hi2 = hi;
  if (lo > hi2) return lo;
  return hi2;
}

double Linear(Face const& face, Field const& phi) {
  double const w = face.weight;
  return (1 - w) * phi[Index(face.cv)] + w * phi[Index(face.other)];
}

double Corrected(TestMesh const& mesh, Face const& face, Field const& phi, Gradient const& previous) {
  std::size_t const a = Index(face.other), b = Index(face.cv);
  double const w = face.weight;
  double const xi = w * mesh.centres[a].x + (1 - w) * mesh.centres[b].x;
  double const yi = w * mesh.centres[a].y + (1 - w) * mesh.centres[b].y;
  double const zi = w * mesh.centres[a].z + (1 - w) * mesh.centres[b].z;
  double const Gx = w * previous.x[a] + (1 - w) * previous.x[b];
  double const Gy = w * previous.y[a] + (1 - w) * previous.y[b];
  double const Gz = w * previous.z[a] + (1 - w) * previous.z[b];
  double const L = Linear(face, phi);
  double v = (face.centre.x - xi) * Gx + L;
  v = v + (face.centre.y - yi) * Gy;
  v = v + (face.centre.z - zi) * Gz;
  return v;
}

double Weighted(Face const& face, Field const& phi, Field const& k) {
  std::size_t const a = Index(face.other), b = Index(face.cv);
  double const w = face.weight;
  double const t = (1 - w) / (k[a] + 1e-30);
  double v = (phi[b] - phi[a]) * t;
  v = v / (w / (k[b] + 1e-30) + t);
  return v + phi[a];
}

void AddFlux(Face const& face, double value, Gradient& g) {
  std::size_t const a = Index(face.other), b = Index(face.cv);
  g.x[b] += value * face.area.x;
  g.y[b] += value * face.area.y;
  g.z[b] += value * face.area.z;
  if (face.type == 1) return;
  g.x[a] -= value * face.area.x;
  g.y[a] -= value * face.area.y;
  g.z[a] -= value * face.area.z;
}

/// Inner faces, then partition faces, with the limited value of `unlimited(face)`.
template <typename Value>
void AddFaces(TestMesh const& mesh, Field const& phi, Value unlimited, Gradient& g) {
  for (std::vector<Face> const* faces : {&mesh.inner, &mesh.partition})
    for (Face const& face : *faces)
      AddFlux(face, Limited(phi[Index(face.other)], unlimited(face), phi[Index(face.cv)]), g);
}

/// Inlet, outlet, symmetry, wall: the ghost cell's value is the face's value.
void AddBoundaries(TestMesh const& mesh, Field const& phi, Gradient& g) {
  for (std::vector<Face> const* faces : {&mesh.inlet, &mesh.outlet, &mesh.symmetry, &mesh.wall}) {
    for (Face const& face : *faces) {
      std::size_t const c = Index(face.cv), ghost = Index(face.other);
      g.x[c] += face.area.x * phi[ghost];
      g.y[c] += face.area.y * phi[ghost];
      g.z[c] += face.area.z * phi[ghost];
    }
  }
}

void Scale(TestMesh const& mesh, double guard, Gradient& g) {
  for (std::size_t i = 1; i <= Index(mesh.nInnerCells); ++i) {
    double const r = guard == 0.0 ? 1.0 / mesh.volumes[i] : 1.0 / (mesh.volumes[i] + guard);
    g.x[i] *= r;
    g.y[i] *= r;
    g.z[i] *= r;
  }
}

void ExchangeAll(Exchange const& exchange, Gradient& g) {
  exchange(g.x.data());
  exchange(g.y.data());
  exchange(g.z.data());
}

}  // namespace

Gradient IteratedGreenGauss(TestMesh const& mesh, Field const& phi, int nSweep, Exchange const& exchange,
                            Gradient& g) {
  Gradient previous(mesh);
  for (int s = 1; s <= nSweep; ++s) {
    g = Gradient(mesh);
    AddFaces(
        mesh, phi, [&](Face const& face) { return Corrected(mesh, face, phi, previous); }, g);
    AddBoundaries(mesh, phi, g);
    Scale(mesh, 1e-30, g);
    if (s == nSweep) break;
    previous = g;
    ExchangeAll(exchange, previous);
  }
  ExchangeAll(exchange, g);
  return previous;
}

Gradient PlainGreenGauss(TestMesh const& mesh, Field const& phi, Exchange const& exchange) {
  Gradient g(mesh);
  AddFaces(
      mesh, phi, [&](Face const& face) { return Linear(face, phi); }, g);
  AddBoundaries(mesh, phi, g);
  Scale(mesh, 1e-30, g);
  ExchangeAll(exchange, g);
  return g;
}

Gradient WeightedGreenGauss(TestMesh const& mesh, Field const& phi, Field const& k,
                            Exchange const& exchange) {
  Gradient g(mesh);
  AddFaces(
      mesh, phi, [&](Face const& face) { return Weighted(face, phi, k); }, g);
  AddBoundaries(mesh, phi, g);
  Scale(mesh, 0.0, g);
  ExchangeAll(exchange, g);
  return g;
}

std::array<Gradient, 3> ThreeComponentGreenGauss(TestMesh const& mesh, std::array<Field, 3> const& phi,
                                                 Exchange const& exchange) {
  std::array<Gradient, 3> g = {Gradient(mesh), Gradient(mesh), Gradient(mesh)};
  for (std::size_t n = 0; n < 3; ++n) {
    AddFaces(
        mesh, phi[n], [&](Face const& face) { return Linear(face, phi[n]); }, g[n]);
    AddBoundaries(mesh, phi[n], g[n]);
    Scale(mesh, 1e-30, g[n]);
    ExchangeAll(exchange, g[n]);
  }
  return g;
}

namespace {

/// Offset of the cells of a face, from its CV cell to the other.
Vector3 Offset(TestMesh const& mesh, Face const& face) {
  Vector3 const& p = mesh.centres[Index(face.cv)];
  Vector3 const& q = mesh.centres[Index(face.other)];
  return {q.x - p.x, q.y - p.y, q.z - p.z};
}

void AddMoments(Vector3 const& d, int cell, Moments& m) {
  std::size_t const i = Index(cell);
  m.xx[i] += d.x * d.x;
  m.yy[i] += d.y * d.y;
  m.zz[i] += d.z * d.z;
  m.xy[i] += d.y * d.x;
  m.xz[i] += d.z * d.x;
  m.yz[i] += d.z * d.y;
}

void AddRightHandSide(Vector3 const& d, double dphi, int cell, Gradient& b) {
  std::size_t const i = Index(cell);
  b.x[i] += dphi * d.x;
  b.y[i] += dphi * d.y;
  b.z[i] += dphi * d.z;
}

Gradient RightHandSide(TestMesh const& mesh, Field const& phi) {
  Gradient b(mesh);
  auto const difference = [&](Face const& face) { return phi[Index(face.other)] - phi[Index(face.cv)]; };
  for (Face const& face : mesh.inner) {
    AddRightHandSide(Offset(mesh, face), difference(face), face.cv, b);
    AddRightHandSide(Offset(mesh, face), difference(face), face.other, b);
  }
  for (std::vector<Face> const* faces : {&mesh.partition, &mesh.inlet, &mesh.outlet, &mesh.wall})
    for (Face const& face : *faces) AddRightHandSide(Offset(mesh, face), difference(face), face.cv, b);
  return b;
}

/// Solves the 3 by 3 system of one cell by elimination without pivoting. @return false on a zero pivot
bool SolveCell(Moments const& m, Gradient const& b, std::size_t i, Gradient& g) {
  double aa[4][5] = {};
  aa[1][1] = m.xx[i], aa[1][2] = m.xy[i], aa[1][3] = m.xz[i], aa[1][4] = b.x[i];
  aa[2][1] = m.xy[i], aa[2][2] = m.yy[i], aa[2][3] = m.yz[i], aa[2][4] = b.y[i];
  aa[3][1] = m.xz[i], aa[3][2] = m.yz[i], aa[3][3] = m.zz[i], aa[3][4] = b.z[i];
  for (int ii = 2; ii <= 3; ++ii) {
    for (int j = ii; j <= 3; ++j) {
      for (int k = ii; k <= 4; ++k) {
        if (aa[ii - 1][ii - 1] == 0.0) return false;
        aa[j][k] -= (aa[j][ii - 1] / aa[ii - 1][ii - 1]) * aa[ii - 1][k];
      }
    }
  }
  g.z[i] = aa[3][4] / aa[3][3];
  g.y[i] = (aa[2][4] - g.z[i] * aa[2][3]) / aa[2][2];
  g.x[i] = (aa[1][4] - g.y[i] * aa[1][2] - aa[1][3] * g.z[i]) / aa[1][1];
  return true;
}

}  // namespace

Moments LeastSquaresMoments(TestMesh const& mesh) {
  Moments m(mesh);
  for (std::vector<Face> const* faces : {&mesh.inner, &mesh.partition}) {
    for (Face const& face : *faces) {
      AddMoments(Offset(mesh, face), face.cv, m);
      AddMoments(Offset(mesh, face), face.other, m);
    }
  }
  for (std::vector<Face> const* faces : {&mesh.inlet, &mesh.outlet, &mesh.wall, &mesh.symmetry})
    for (Face const& face : *faces) AddMoments(Offset(mesh, face), face.cv, m);
  return m;
}

LeastSquaresResult LeastSquares(TestMesh const& mesh, Moments const& moments, Field const& phi,
                                Exchange const& exchange) {
  LeastSquaresResult result{Gradient(mesh), RightHandSide(mesh, phi), false};
  for (std::size_t i = 1; i <= Index(mesh.nInnerCells); ++i) {
    if (SolveCell(moments, result.rightHandSide, i, result.g)) continue;
    result.zeroPivot = true;
    return result;
  }
  ExchangeAll(exchange, result.g);
  return result;
}

}  // namespace zyn_test
