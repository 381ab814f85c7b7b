// Explicit transport of a scalar on any mesh, over MPI:
//
//   d(phi)/dt + div(u phi) = 0,  u constant,  phi(x, 0) a Gaussian; so phi(x, t) = phi(x - u t, 0).
//
// Finite volumes: V_c dphi_c/dt = - sum over the faces f of c of (u . S_f) phi_f. The value on a face comes from its
// upwind cell c, with the library's least-squares gradient g_c: phi_f = phi_c + g_c . (x_f - x_c). Without the gradient
// (phi_f = phi_c) the scheme is of first order, with it of second order; the program runs both. It integrates in time
// by Heun's method.
//
//   scalar_transport                               a box of 32 x 32 x 32 hexahedra
//   mpirun -n 2 scalar_transport box:24,24,24:tet  or any mesh that the reference host reads

#include <mpi.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <exception>
#include <string>
#include <vector>

#include "gradient/COperatorGradient.h"
#include "reference_host/parallel/LoadMesh.h"

namespace {

constexpr double kVelocity[3] = {1.0, 0.5, 0.25};
constexpr double kStart[3] = {0.35, 0.4, 0.45};  // centre of the Gaussian at time 0, L
constexpr double kWidth = 0.12;                  // its standard deviation, L
constexpr double kEndTime = 0.25;
constexpr double kCourant = 0.4;

double Profile(double x, double y, double z, double time) {
  double const dx = x - kStart[0] - kVelocity[0] * time;
  double const dy = y - kStart[1] - kVelocity[1] * time;
  double const dz = z - kStart[2] - kVelocity[2] * time;
  return std::exp(-(dx * dx + dy * dy + dz * dz) / (2.0 * kWidth * kWidth));
}

double Over(MPI_Op operation, double value) {
  MPI_Allreduce(MPI_IN_PLACE, &value, 1, MPI_DOUBLE, operation, MPI_COMM_WORLD);
  return value;
}

// One group of faces, each array [1..count]. The area vector points out of `cell`; `other` is an interior, halo or
// ghost cell.
struct Faces {
  int count;
  int const *cell, *other;
  double const *sx, *sy, *sz, *x, *y, *z;

  double VolumeFlux(int f) const {
    return kVelocity[0] * sx[f] + kVelocity[1] * sy[f] + kVelocity[2] * sz[f];
  }
};

class Transport {
 public:
  Transport(reference_host::LoadedMesh& loaded, bool usesGradient)
      : mesh_(*loaded.partition->mesh()), exchange_(*loaded.exchange), usesGradient_(usesGradient) {
    CPartitionFace_DLL& cut = *loaded.partition->partitionFaces();
    inner_ = {mesh_.NInnerFaces, mesh_.ijCV, mesh_.ij,   mesh_.ijSx, mesh_.ijSy,
              mesh_.ijSz,        mesh_.ijxc, mesh_.ijyc, mesh_.ijzc};
    cut_ = {cut.NParInterFace(), cut.ijParCV(), cut.ijPar(),   cut.ijParSx(), cut.ijParSy(),
            cut.ijParSz(),       cut.ijParxc(), cut.ijParyc(), cut.ijParzc()};
    boundary_ = {
        {mesh_.NInlet, mesh_.ijInletCV, mesh_.ijInlet, mesh_.ijInletSx, mesh_.ijInletSy, mesh_.ijInletSz,
         mesh_.ijInletxc, mesh_.ijInletyc, mesh_.ijInletzc},
        {mesh_.NOutlet, mesh_.ijOutletCV, mesh_.ijOutlet, mesh_.ijOutletSx, mesh_.ijOutletSy,
         mesh_.ijOutletSz, mesh_.ijOutletxc, mesh_.ijOutletyc, mesh_.ijOutletzc},
        {mesh_.NSymmetry, mesh_.ijSymmetryCV, mesh_.ijSymmetry, mesh_.ijSymmetrySx, mesh_.ijSymmetrySy,
         mesh_.ijSymmetrySz, mesh_.ijSymmetryxc, mesh_.ijSymmetryyc, mesh_.ijSymmetryzc},
        {mesh_.NWall, mesh_.ijWallCV, mesh_.ijWall, mesh_.ijWallSx, mesh_.ijWallSy, mesh_.ijWallSz,
         mesh_.ijWallxc, mesh_.ijWallyc, mesh_.ijWallzc}};

    // The operator is set up once for the mesh. Every rank must call Initialize and every gradient.
    gradient_.getZyn3dGV(loaded.partition->globals(), nullptr, nullptr, &mesh_);
    gradient_.getPartitionFace(&cut);
    gradient_.getCommunication(loaded.exchange.get(), loaded.reduction.get());
    int leastSquares = 1;
    gradient_.getGradType(leastSquares);
    gradient_.Initialize();

    auto const length = static_cast<std::size_t>(mesh_.NCell) + 1;
    for (auto* field : {&phi, &stage_, &rate_, &nextRate_, &gx_, &gy_, &gz_}) field->assign(length, 0.0);
    for (int c = 1; c <= mesh_.NInnerCells; ++c) phi[c] = Profile(mesh_.xc[c], mesh_.yc[c], mesh_.zc[c], 0.0);
  }

  // The longest step in which no cell loses more than the fraction kCourant of its volume.
  double StableStep() {
    std::vector<double> leaving(phi.size(), 0.0);
    auto const add = [&leaving](Faces const& faces) {
      for (int f = 1; f <= faces.count; ++f) {
        double const flux = faces.VolumeFlux(f);
        leaving[flux > 0.0 ? faces.cell[f] : faces.other[f]] += std::fabs(flux);
      }
    };
    add(inner_), add(cut_);
    for (Faces const& faces : boundary_) add(faces);
    double step = kEndTime;
    for (int c = 1; c <= mesh_.NInnerCells; ++c) {
      if (leaving[c] > 0.0) step = std::min(step, kCourant * mesh_.Volume[c] / leaving[c]);
    }
    return Over(MPI_MIN, step);
  }

  // Heun: phi* = phi + dt R(phi), then phi + dt (R(phi) + R(phi*)) / 2.
  void Advance(double time, double dt) {
    double const outflow = Rate(phi, time, rate_);
    for (int c = 1; c <= mesh_.NInnerCells; ++c) stage_[c] = phi[c] + dt * rate_[c];
    double const nextOutflow = Rate(stage_, time + dt, nextRate_);
    for (int c = 1; c <= mesh_.NInnerCells; ++c) phi[c] += 0.5 * dt * (rate_[c] + nextRate_[c]);
    left_ += 0.5 * dt * (outflow + nextOutflow);
  }

  // The content of the mesh plus what has left it. It is constant, because an inner face gives to one cell what it
  // takes from the other, and both sides of a partition face compute the same flux.
  double Content() const {
    double content = left_;
    for (int c = 1; c <= mesh_.NInnerCells; ++c) content += phi[c] * mesh_.Volume[c];
    return Over(MPI_SUM, content);
  }

  struct Errors {
    double l1, l2, largest;
  };

  // Averages over the volume.
  Errors CompareWithExact(double time) const {
    double volume = 0.0, sum = 0.0, squares = 0.0, largest = 0.0;
    for (int c = 1; c <= mesh_.NInnerCells; ++c) {
      double const error = std::fabs(phi[c] - Profile(mesh_.xc[c], mesh_.yc[c], mesh_.zc[c], time));
      volume += mesh_.Volume[c];
      sum += error * mesh_.Volume[c];
      squares += error * error * mesh_.Volume[c];
      largest = std::max(largest, error);
    }
    volume = Over(MPI_SUM, volume);
    return {Over(MPI_SUM, sum) / volume, std::sqrt(Over(MPI_SUM, squares) / volume), Over(MPI_MAX, largest)};
  }

  std::vector<double> phi;  // [1..NCell]

 private:
  // R(phi) in interior cells. Returns the flux that leaves this partition through the boundary of the mesh.
  double Rate(std::vector<double>& field, double time, std::vector<double>& rate) {
    FillGhostsAndHalo(field, time);
    if (usesGradient_) gradient_.GradMethod(field.data(), gx_.data(), gy_.data(), gz_.data(), 1);

    std::fill(rate.begin(), rate.end(), 0.0);
    for (int f = 1; f <= inner_.count; ++f) {
      double const flux = Flux(inner_, f, field);
      rate[inner_.cell[f]] -= flux;
      rate[inner_.other[f]] += flux;
    }
    for (int f = 1; f <= cut_.count; ++f) rate[cut_.cell[f]] -= Flux(cut_, f, field);
    double outflow = 0.0;
    for (Faces const& faces : boundary_) {
      for (int f = 1; f <= faces.count; ++f) {
        double const flux = Flux(faces, f, field);
        rate[faces.cell[f]] -= flux;
        outflow += flux;
      }
    }
    for (int c = 1; c <= mesh_.NInnerCells; ++c) rate[c] /= mesh_.Volume[c];
    return outflow;
  }

  // A gradient needs its field in all cells: the boundary value in ghost cells, which lie at the centres of their
  // faces, and the owner's value in halo cells.
  void FillGhostsAndHalo(std::vector<double>& field, double time) {
    for (Faces const& faces : boundary_) {
      for (int f = 1; f <= faces.count; ++f)
        field[faces.other[f]] = Profile(faces.x[f], faces.y[f], faces.z[f], time);
    }
    exchange_.DDM_Exch(field.data());
  }

  // (u . S) phi_f. The gradient is 0 in ghost cells and the owner's in halo cells, because GradMethod exchanges it.
  double Flux(Faces const& faces, int f, std::vector<double> const& field) const {
    double const flux = faces.VolumeFlux(f);
    int const c = flux > 0.0 ? faces.cell[f] : faces.other[f];
    double const dx = faces.x[f] - mesh_.xc[c], dy = faces.y[f] - mesh_.yc[c], dz = faces.z[f] - mesh_.zc[c];
    return flux * (field[c] + gx_[c] * dx + gy_[c] * dy + gz_[c] * dz);
  }

  CZYN3DFiniteVolumeMesh& mesh_;
  CCommunication& exchange_;
  bool const usesGradient_;
  COperatorGradient gradient_;
  Faces inner_, cut_;
  std::vector<Faces> boundary_;
  double left_ = 0.0;  // what has left this partition through the boundary
  std::vector<double> stage_, rate_, nextRate_, gx_, gy_, gz_;  // [1..NCell]
};

struct Outcome {
  double drift;  // of the conserved quantity, relative
  Transport::Errors errors;
};

Outcome Run(reference_host::LoadedMesh& loaded, bool usesGradient, bool isFirst) {
  Transport transport(loaded, usesGradient);
  int const nSteps = static_cast<int>(std::ceil(kEndTime / transport.StableStep()));
  double const dt = kEndTime / nSteps;
  double const content = transport.Content();
  double drift = 0.0;
  if (isFirst) {
    std::printf("\n%s, %d steps of %.6f\n", usesGradient ? "with gradients" : "without gradients", nSteps,
                dt);
    std::printf("   step      time  content + what left   relative change\n");
  }
  for (int step = 1; step <= nSteps; ++step) {
    transport.Advance((step - 1) * dt, dt);
    double const now = transport.Content();
    drift = std::max(drift, std::fabs(now - content) / content);
    if (isFirst && (step % std::max(1, nSteps / 5) == 0 || step == nSteps))
      std::printf("%7d  %8.5f  %19.15f  %16.1e\n", step, step * dt, now, (now - content) / content);
  }
  Transport::Errors const errors = transport.CompareWithExact(kEndTime);
  if (isFirst) {
    std::printf("error against the exact profile: L1 %.8e  L2 %.8e  maximum %.8e\n", errors.l1, errors.l2,
                errors.largest);
  }
  return {drift, errors};
}

int RunBoth(std::string const& mesh) {
  reference_host::LoadedMesh loaded = reference_host::LoadMesh(MPI_COMM_WORLD, mesh, {}, {});
  int rank = 0;
  MPI_Comm_rank(MPI_COMM_WORLD, &rank);
  if (rank == 0) {
    std::printf("%s: %lld cells on %d ranks\n", mesh.c_str(), static_cast<long long>(loaded.summary.nCells),
                loaded.summary.nParts);
  }
  Outcome const first = Run(loaded, false, rank == 0);
  Outcome const second = Run(loaded, true, rank == 0);
  bool const isConserved = first.drift < 1e-12 && second.drift < 1e-12;
  bool const hasGained = second.errors.l2 < first.errors.l2;
  return isConserved && hasGained ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv) {
  int threadLevel = 0;
  MPI_Init_thread(&argc, &argv, MPI_THREAD_MULTIPLE, &threadLevel);  // PT-Scotch needs it
  int status = 2;
  try {
    status = RunBoth(argc > 1 ? argv[1] : "box:32,32,32");
  } catch (std::exception const& error) {  // every rank throws the same
    std::fprintf(stderr, "scalar_transport: %s\n", error.what());
  }
  MPI_Finalize();
  return status;
}
