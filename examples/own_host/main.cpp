// Your own host: a solver with a structured mesh of cubes, cut into slabs that are threads of one process, provides
// everything that the library needs. Team.h holds the four abstract classes: partition faces, halo exchange, reduction
// and parameters. Slab.h fills the mesh record.
//
// The program computes a least-squares gradient and interpolates the field to the inner faces by methods 3 and 4. Their
// settings come from the parameters instead of a file.
//
//   own_host [SLABS]

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <string>
#include <thread>
#include <vector>

#include "Slab.h"
#include "Team.h"
#include "gradient/COperatorGradient.h"
#include "rbf_face/CZynFaceRBFInternalObject.h"
#ifdef OWN_HOST_IS_CHECKED
#include "host_check/CheckHostData.h"
#endif

namespace {

constexpr std::array<int, 3> kSize = {8, 16, 16};  // cells of a slab
constexpr double kEdge = 1.0 / 16.0;

// phi = sin(2x) y + z^2
double Field(double x, double y, double z) { return std::sin(2.0 * x) * y + z * z; }

// The largest errors in one partition.
struct Result {
  int nBreaches = 0;                    // of the host contract
  double gradient = 0.0;                // in interior cells
  std::array<double, 2> face = {0, 0};  // at inner faces, methods 3 and 4
};

// A partition with everything that it lends to the operators. The partition must outlive them.
class Partition {
 public:
  Partition(Team& team, int part, int nParts)
      : slab_(part, nParts, kSize, kEdge),
        faces_(slab_.partitionFaces),
        exchange_(team, slab_),
        reduction_(team, part),
        phi_(static_cast<std::size_t>(slab_.mesh.NCell) + 1, 0.0) {
    for (std::vector<double>& previous : previous_) previous.assign(phi_.size(), 0.0);
    globals_.PrevGradX = previous_[0].data();
    globals_.PrevGradY = previous_[1].data();
    globals_.PrevGradZ = previous_[2].data();
    globals_.ResetRealBlock = resetReal_;
    globals_.ResetIntBlock = resetInt_;
    globals_.BaseFileName = baseFileName_;
  }

  Result Work() {
    Result result;
    result.nBreaches = CountBreaches();
    FillField();
    result.gradient = GradientError();
    result.face = {FaceError(3), FaceError(4)};
    return result;
  }

 private:
  // A host should be checked in debug runs: wrong tables give wrong numbers, but rarely a crash.
  int CountBreaches() {
#ifdef OWN_HOST_IS_CHECKED
    host_check::HostCheckReport report;
    host_check::CheckHostData(&slab_.mesh, &faces_, &exchange_, &reduction_, &globals_, report);
    report.Print(std::cerr, "slab " + std::to_string(slab_.part) + ": ");
    return report.Count();
#else
    return 0;
#endif
  }

  // Fills interior and ghost cells; the owners fill halo cells.
  void FillField() {
    CZYN3DFiniteVolumeMesh const& mesh = slab_.mesh;
    for (int c = 1; c <= mesh.NCell; ++c) phi_[c] = Field(mesh.xc[c], mesh.yc[c], mesh.zc[c]);
    for (HaloSource const& from : slab_.halo) phi_[from.haloCell] = 0.0;
    exchange_.DDM_Exch(phi_.data());
  }

  double GradientError() {
    CZYN3DFiniteVolumeMesh& mesh = slab_.mesh;
    COperatorGradient gradient;
    gradient.getZyn3dGV(&globals_, nullptr, nullptr, &mesh);
    gradient.getPartitionFace(&faces_);
    gradient.getCommunication(&exchange_, &reduction_);
    int leastSquares = 1;
    gradient.getGradType(leastSquares);
    gradient.Initialize();
    std::vector<double> gx(phi_.size()), gy(phi_.size()), gz(phi_.size());
    gradient.GradMethod(phi_.data(), gx.data(), gy.data(), gz.data(), 1);

    double largest = 0.0;
    for (int c = 1; c <= mesh.NInnerCells; ++c) {
      double const ex = gx[c] - 2.0 * std::cos(2.0 * mesh.xc[c]) * mesh.yc[c];
      double const ey = gy[c] - std::sin(2.0 * mesh.xc[c]);
      double const ez = gz[c] - 2.0 * mesh.zc[c];
      largest = std::max(largest, std::sqrt(ey * ey + ex * ex + ez * ez));
    }
    return largest;
  }

  double FaceError(int method) {
    CZYN3DFiniteVolumeMesh& mesh = slab_.mesh;
    parameters_.faces.Span = 500;
    parameters_.faces.iSearch_method = method;
    parameters_.faces.Search_distance = -1.0;  // negative: the default
    parameters_.faces.Search_number = 20;
    CZynFaceRBFInternalObject faces;
    faces.getZyn3dGV(&globals_, nullptr, nullptr, &mesh);
    faces.getPartitionFace(&faces_);
    faces.getCommunication(&exchange_);
    faces.SetZYNKNCMP(&parameters_);
    faces.Initialize_FaceInterpolateData(1);  // inner faces
    std::vector<double> value(static_cast<std::size_t>(mesh.NInnerFaces) + 1), zero1(value), zero2(value),
        zero3(value);
    faces.Multiply_FaceRBFCoefficent(phi_.data(), value.data(), zero1.data(), zero2.data(), zero3.data());

    double largest = 0.0;
    for (int f = 1; f <= mesh.NInnerFaces; ++f)
      largest = std::max(largest, std::fabs(value[f] - Field(mesh.ijxc[f], mesh.ijyc[f], mesh.ijzc[f])));
    return largest;
  }

  Slab slab_;
  PartitionFaces faces_;
  Exchange exchange_;
  Reduction reduction_;
  Parameters parameters_;
  CZyn3dGV globals_;
  char baseFileName_[32] = "own_host.run";
  std::vector<double> phi_;  // [1..NCell]
  std::array<std::vector<double>, 3>
      previous_;  // [1..NCell] work arrays of the iterated Green-Gauss gradient
  double resetReal_[5] = {};
  int resetInt_[5] = {};
};

}  // namespace

int main(int argc, char** argv) {
  int const nParts = argc > 1 ? std::atoi(argv[1]) : 2;
  if (nParts < 1) {
    std::fprintf(stderr, "own_host: the number of slabs must be 1 or more\n");
    return 2;
  }
  std::cout.setstate(std::ios_base::failbit);  // otherwise the operators would print a line for every face
  Team team(nParts);
  std::vector<Result> results(static_cast<std::size_t>(nParts));
  std::vector<std::thread> threads;
  for (int part = 0; part < nParts; ++part) {
    threads.emplace_back([&team, &results, part, nParts] {
      results[static_cast<std::size_t>(part)] = Partition(team, part, nParts).Work();
    });
  }
  for (std::thread& thread : threads) thread.join();

  bool isRight = true;
  std::printf("largest errors\n  slab   gradient  faces, method 3  faces, method 4\n");
  for (std::size_t part = 0; part < results.size(); ++part) {
    Result const& result = results[part];
    std::printf("%6zu  %9.2e  %15.2e  %15.2e\n", part, result.gradient, result.face[0], result.face[1]);
    isRight = isRight && result.nBreaches == 0 && result.gradient < 0.2 && result.face[0] < 0.01 &&
              result.face[1] < 0.01;
  }
  return isRight ? 0 : 1;
}
