#include "tests/unit/gradient/PlainForm.h"

#include <cstddef>

namespace gradient_test {
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

double Linear(const Face& face, const Field& phi) {
  const double w = face.weight;
  return (1 - w) * phi[Index(face.cv)] + w * phi[Index(face.other)];
}

double Corrected(const MeshDescription& mesh, const Face& face, const Field& phi, const Gradient& previous) {
  const std::size_t a = Index(face.other), b = Index(face.cv);
  const double w = face.weight;
  const double xi = w * mesh.centres[a].x + (1 - w) * mesh.centres[b].x;
  const double yi = w * mesh.centres[a].y + (1 - w) * mesh.centres[b].y;
  const double zi = w * mesh.centres[a].z + (1 - w) * mesh.centres[b].z;
  const double Gx = w * previous.x[a] + (1 - w) * previous.x[b];
  const double Gy = w * previous.y[a] + (1 - w) * previous.y[b];
  const double Gz = w * previous.z[a] + (1 - w) * previous.z[b];
  const double L = Linear(face, phi);
  double v = (face.centre.x - xi) * Gx + L;
  v = v + (face.centre.y - yi) * Gy;
  v = v + (face.centre.z - zi) * Gz;
  return v;
}

double Weighted(const Face& face, const Field& phi, const Field& k) {
  const std::size_t a = Index(face.other), b = Index(face.cv);
  const double w = face.weight;
  const double t = (1 - w) / (k[a] + 1e-30);
  double v = (phi[b] - phi[a]) * t;
  v = v / (w / (k[b] + 1e-30) + t);
  return v + phi[a];
}

void AddFlux(const Face& face, double value, Gradient& g) {
  const std::size_t a = Index(face.other), b = Index(face.cv);
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
void AddFaces(const MeshDescription& mesh, const Field& phi, Value unlimited, Gradient& g) {
  for (const std::vector<Face>* faces : {&mesh.inner, &mesh.partition})
    for (const Face& face : *faces)
      AddFlux(face, Limited(phi[Index(face.other)], unlimited(face), phi[Index(face.cv)]), g);
}

/// Inlet, outlet, symmetry, wall: the ghost cell's value is the face's value.
void AddBoundaries(const MeshDescription& mesh, const Field& phi, Gradient& g) {
  for (const std::vector<Face>* faces : {&mesh.inlet, &mesh.outlet, &mesh.symmetry, &mesh.wall}) {
    for (const Face& face : *faces) {
      const std::size_t c = Index(face.cv), ghost = Index(face.other);
      g.x[c] += face.area.x * phi[ghost];
      g.y[c] += face.area.y * phi[ghost];
      g.z[c] += face.area.z * phi[ghost];
    }
  }
}

void Scale(const MeshDescription& mesh, double guard, Gradient& g) {
  for (std::size_t i = 1; i <= Index(mesh.nInnerCells); ++i) {
    const double r = guard == 0.0 ? 1.0 / mesh.volumes[i] : 1.0 / (mesh.volumes[i] + guard);
    g.x[i] *= r;
    g.y[i] *= r;
    g.z[i] *= r;
  }
}

void ExchangeAll(const Exchange& exchange, Gradient& g) {
  exchange(g.x.data());
  exchange(g.y.data());
  exchange(g.z.data());
}

}  // namespace

Gradient IteratedGreenGauss(const MeshDescription& mesh, const Field& phi, int nSweep,
                            const Exchange& exchange, Gradient& g) {
  Gradient previous(mesh);
  for (int s = 1; s <= nSweep; ++s) {
    g = Gradient(mesh);
    AddFaces(
        mesh, phi, [&](const Face& face) { return Corrected(mesh, face, phi, previous); }, g);
    AddBoundaries(mesh, phi, g);
    Scale(mesh, 1e-30, g);
    if (s == nSweep) break;
    previous = g;
    ExchangeAll(exchange, previous);
  }
  ExchangeAll(exchange, g);
  return previous;
}

Gradient PlainGreenGauss(const MeshDescription& mesh, const Field& phi, const Exchange& exchange) {
  Gradient g(mesh);
  AddFaces(
      mesh, phi, [&](const Face& face) { return Linear(face, phi); }, g);
  AddBoundaries(mesh, phi, g);
  Scale(mesh, 1e-30, g);
  ExchangeAll(exchange, g);
  return g;
}

Gradient WeightedGreenGauss(const MeshDescription& mesh, const Field& phi, const Field& k,
                            const Exchange& exchange) {
  Gradient g(mesh);
  AddFaces(
      mesh, phi, [&](const Face& face) { return Weighted(face, phi, k); }, g);
  AddBoundaries(mesh, phi, g);
  Scale(mesh, 0.0, g);
  ExchangeAll(exchange, g);
  return g;
}

std::array<Gradient, 3> ThreeComponentGreenGauss(const MeshDescription& mesh, const std::array<Field, 3>& phi,
                                                 const Exchange& exchange) {
  std::array<Gradient, 3> g = {Gradient(mesh), Gradient(mesh), Gradient(mesh)};
  for (std::size_t n = 0; n < 3; ++n) {
    AddFaces(
        mesh, phi[n], [&](const Face& face) { return Linear(face, phi[n]); }, g[n]);
    AddBoundaries(mesh, phi[n], g[n]);
    Scale(mesh, 1e-30, g[n]);
    ExchangeAll(exchange, g[n]);
  }
  return g;
}

namespace {

/// Offset of the cells of a face, from its CV cell to the other.
Vector3 Offset(const MeshDescription& mesh, const Face& face) {
  const Vector3& p = mesh.centres[Index(face.cv)];
  const Vector3& q = mesh.centres[Index(face.other)];
  return {q.x - p.x, q.y - p.y, q.z - p.z};
}

void AddMoments(const Vector3& d, int cell, Moments& m) {
  const std::size_t i = Index(cell);
  m.xx[i] += d.x * d.x;
  m.yy[i] += d.y * d.y;
  m.zz[i] += d.z * d.z;
  m.xy[i] += d.y * d.x;
  m.xz[i] += d.z * d.x;
  m.yz[i] += d.z * d.y;
}

void AddRightHandSide(const Vector3& d, double dphi, int cell, Gradient& b) {
  const std::size_t i = Index(cell);
  b.x[i] += dphi * d.x;
  b.y[i] += dphi * d.y;
  b.z[i] += dphi * d.z;
}

Gradient RightHandSide(const MeshDescription& mesh, const Field& phi) {
  Gradient b(mesh);
  const auto difference = [&](const Face& face) { return phi[Index(face.other)] - phi[Index(face.cv)]; };
  for (const Face& face : mesh.inner) {
    AddRightHandSide(Offset(mesh, face), difference(face), face.cv, b);
    AddRightHandSide(Offset(mesh, face), difference(face), face.other, b);
  }
  for (const std::vector<Face>* faces : {&mesh.partition, &mesh.inlet, &mesh.outlet, &mesh.wall})
    for (const Face& face : *faces) AddRightHandSide(Offset(mesh, face), difference(face), face.cv, b);
  return b;
}

/// Solves the 3 by 3 system of one cell by elimination without pivoting. @return false on a zero pivot
bool SolveCell(const Moments& m, const Gradient& b, std::size_t i, Gradient& g) {
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

Moments LeastSquaresMoments(const MeshDescription& mesh) {
  Moments m(mesh);
  for (const std::vector<Face>* faces : {&mesh.inner, &mesh.partition}) {
    for (const Face& face : *faces) {
      AddMoments(Offset(mesh, face), face.cv, m);
      AddMoments(Offset(mesh, face), face.other, m);
    }
  }
  for (const std::vector<Face>* faces : {&mesh.inlet, &mesh.outlet, &mesh.wall, &mesh.symmetry})
    for (const Face& face : *faces) AddMoments(Offset(mesh, face), face.cv, m);
  return m;
}

LeastSquaresResult LeastSquares(const MeshDescription& mesh, const Moments& moments, const Field& phi,
                                const Exchange& exchange) {
  LeastSquaresResult result{Gradient(mesh), RightHandSide(mesh, phi), false};
  for (std::size_t i = 1; i <= Index(mesh.nInnerCells); ++i) {
    if (SolveCell(moments, result.rightHandSide, i, result.g)) continue;
    result.zeroPivot = true;
    return result;
  }
  ExchangeAll(exchange, result.g);
  return result;
}

}  // namespace gradient_test
