// A sphere moves through a mesh that stays at rest. In every step, the cells inside the sphere are not usable, and the
// values at points on the sphere are interpolated from the cells outside. Everything is set up again in every step, on
// the same CZynIBRBFInternalObject, which releases what the previous step built.
//
// The stencils are the 40 usable cells nearest to a point (method 2). The default, method 3, goes through the mesh
// nodes around the nearest cells. Beside a body, these nodes have cells on one side only, and the slopes of method 3
// are then useless: the largest errors below become 4e-2 and 1.8.
//
//   moving_body [BOX [STEPS]]          for example: moving_body box:24,24,24 12

#include <sys/resource.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <fstream>
#include <iostream>
#include <memory>
#include <string>
#include <vector>

#include "host/ZYNKNCompParm.h"
#include "rbf_ib/CZynIBRBFInternalObject.h"
#include "reference_host/box/BoxMesh.h"
#include "reference_host/mesh/BoundaryGroups.h"
#include "reference_host/partition/HostPartition.h"
#include "reference_host/partition/InProcessExchange.h"

namespace {

constexpr double kPi = 3.14159265358979323846;
constexpr double kRadius = 0.2;
constexpr double kFrom = 0.35, kTo = 0.65;  // path of the centre along x; y and z stay 0.5
constexpr int kPoints = 400;

// The field phi = sin(2x) y + z^2. It is known everywhere, so the errors at the points can be measured.
double Field(double x, double y, double z) { return std::sin(2.0 * x) * y + z * z; }

// The settings. With them the operator reads no settings file.
class Parameters : public CZYNKNCMPCompParm {
 public:
  Parameters() {
    points_.Span = 50;
    points_.iSearch_method = 2;
    points_.Search_distance = -1.0;  // negative: the default
    points_.Search_number = 40;
  }
  CZYNCMP_FaceRBF_Parm* getFaceRBFParm() override { return &faces_; }
  CZYNCMP_IBRBF_Parm* getIBRBFParm() override { return &points_; }

 private:
  CZYNCMP_FaceRBF_Parm faces_;
  CZYNCMP_IBRBF_Parm points_;
};

// The whole box as one partition.
std::unique_ptr<reference_host::HostPartition> MakePartition(std::string const& box) {
  reference_host::MeshPart part = reference_host::MakeBoxPart(reference_host::ParseBoxSpec(box), 0, 1);
  std::vector<std::int64_t> facesOfPatch(part.patches.size(), 0);
  for (int const patch : part.facePatch) {
    if (patch >= 0) ++facesOfPatch[static_cast<std::size_t>(patch)];
  }
  reference_host::AssignBoundaryGroups(part.patches, facesOfPatch, {});
  auto partition = std::make_unique<reference_host::HostPartition>(part);
  reference_host::InProcessGroup alone(1);
  reference_host::InProcessCommunication exchange(alone, *partition);
  partition->CompleteHalo(exchange);
  return partition;
}

// Points distributed evenly over the sphere, on a spiral from pole to pole. Arrays are [1..kPoints].
struct SpherePoints {
  std::vector<double> x, y, z;

  explicit SpherePoints(double centre) : x(kPoints + 1), y(kPoints + 1), z(kPoints + 1) {
    double const turn = kPi * (3.0 - std::sqrt(5.0));
    for (int i = 1; i <= kPoints; ++i) {
      double const height = 1.0 - (2.0 * i - 1.0) / kPoints;
      double const radius = std::sqrt(1.0 - height * height);
      x[i] = centre + kRadius * radius * std::cos(turn * i);
      y[i] = 0.5 + kRadius * radius * std::sin(turn * i);
      z[i] = 0.5 + kRadius * height;
    }
  }
};

// [1..NCell] negative for usable cells: the interior cells with their centre outside the sphere.
std::vector<double> MarkUsableCells(CZYN3DFiniteVolumeMesh const& mesh, double centre, int& nUsable) {
  std::vector<double> mark(static_cast<std::size_t>(mesh.NCell) + 1, 1.0);
  nUsable = 0;
  for (int c = 1; c <= mesh.NInnerCells; ++c) {
    double const dx = mesh.xc[c] - centre, dy = mesh.yc[c] - 0.5, dz = mesh.zc[c] - 0.5;
    if (dx * dx + dy * dy + dz * dz < kRadius * kRadius) continue;
    mark[c] = -1.0;
    ++nUsable;
  }
  return mark;
}

struct Errors {
  double value = 0.0, slope = 0.0;  // largest ones
};

Errors Judge(SpherePoints const& points, std::vector<double> const& value, std::vector<double> const& gx,
             std::vector<double> const& gy, std::vector<double> const& gz) {
  Errors errors;
  for (int i = 1; i <= kPoints; ++i) {
    double const x = points.x[i], y = points.y[i], z = points.z[i];
    errors.value = std::max(errors.value, std::fabs(value[i] - Field(x, y, z)));
    double const ex = gx[i] - 2.0 * std::cos(2.0 * x) * y;
    double const ey = gy[i] - std::sin(2.0 * x);
    double const ez = gz[i] - 2.0 * z;
    errors.slope = std::max(errors.slope, std::sqrt(ey * ey + ex * ex + ez * ez));
  }
  return errors;
}

// Largest memory of this process so far, MB. It stays constant if every step releases what the previous one took.
double PeakMemory() {
  rusage usage = {};
  getrusage(RUSAGE_SELF, &usage);
  return static_cast<double>(usage.ru_maxrss) / 1024.0;
}

// Redirects the output of the operator, which reports each set-up, to a file.
class LogOfTheOperator {
 public:
  explicit LogOfTheOperator(char const* file) : log_(file), screen_(std::cout.rdbuf(log_.rdbuf())) {}
  ~LogOfTheOperator() { std::cout.rdbuf(screen_); }
  LogOfTheOperator(LogOfTheOperator const&) = delete;
  LogOfTheOperator& operator=(LogOfTheOperator const&) = delete;

 private:
  std::ofstream log_;
  std::streambuf* screen_;
};

int Run(std::string const& box, int nSteps) {
  auto const partition = MakePartition(box);
  CZYN3DFiniteVolumeMesh& mesh = *partition->mesh();
  partition->SetBaseFileName("moving_body.run");

  std::vector<double> phi(static_cast<std::size_t>(mesh.NCell) + 1, 0.0);
  for (int c = 1; c <= mesh.NCell; ++c) phi[c] = Field(mesh.xc[c], mesh.yc[c], mesh.zc[c]);
  std::vector<double> value(kPoints + 1), gx(kPoints + 1), gy(kPoints + 1), gz(kPoints + 1);

  Parameters parameters;
  CZynIBRBFInternalObject points;
  points.getZyn3dGV(partition->globals(), nullptr, nullptr, &mesh);
  points.getPartitionFace(partition->partitionFaces());
  points.SetZYNKNCMP(&parameters);

  LogOfTheOperator const log("moving_body.log");
  std::printf("%s, %d points on a sphere of radius %g\n\n", box.c_str(), kPoints, kRadius);
  std::printf("  step  centre  usable cells  members  value error  slope error  peak MB\n");
  double peakOfTwo = 0.0;
  Errors worst;
  for (int step = 1; step <= nSteps; ++step) {
    double const centre = kFrom + (kTo - kFrom) * (step - 1) / std::max(1, nSteps - 1);
    SpherePoints where(centre);
    int nUsable = 0;
    std::vector<double> mark = MarkUsableCells(mesh, centre, nUsable);

    points.Initialize_IBInterpolateData(mark.data(), kPoints, where.x.data(), where.y.data(), where.z.data());
    points.Multiply_IBRBFCoefficent(phi.data(), value.data(), gx.data(), gy.data(), gz.data());

    double members = 0.0;
    for (int i = 1; i <= kPoints; ++i) members += points.m_ppIBConn[i][0];
    Errors const errors = Judge(where, value, gx, gy, gz);
    std::printf("%6d  %6.3f  %12d  %7.1f  %11.2e  %11.2e  %7.1f\n", step, centre, nUsable, members / kPoints,
                errors.value, errors.slope, PeakMemory());
    worst = {std::max(worst.value, errors.value), std::max(worst.slope, errors.slope)};
    if (step == 2) peakOfTwo = PeakMemory();
  }
  bool const isAccurate = worst.value < 1e-3 && worst.slope < 0.05;  // of a field up to 2 and slopes up to 3
  bool const isConstant = nSteps < 3 || PeakMemory() < 1.05 * peakOfTwo;
  if (!isConstant) std::printf("the memory has grown\n");
  return isAccurate && isConstant ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv) {
  try {
    return Run(argc > 1 ? argv[1] : "box:24,24,24", argc > 2 ? std::atoi(argv[2]) : 12);
  } catch (std::exception const& error) {
    std::fprintf(stderr, "moving_body: %s\n", error.what());
    return 2;
  }
}
