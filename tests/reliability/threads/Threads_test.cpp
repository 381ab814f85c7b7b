// What the library promises about threads: its own in the least-squares loops, and a solver's, one object each or all
// reading one set-up. Equal bits alone would hardly show a race; ThreadSanitizer, which runs these tests too, does.

#include <gtest/gtest.h>
#include <omp.h>

#include <cmath>
#include <memory>
#include <thread>
#include <vector>

#include "gradient/COperatorGradient.h"
#include "host/ZYNKNCompParm.h"
#include "rbf_ib/CZynIBRBFInternalObject.h"
#include "reference_host/partition/HostPartition.h"
#include "reference_host/partition/InProcessExchange.h"
#include "tests/unit/reference_host/TestMeshes.h"

namespace {

using reference_host::HostPartition;
using Field = std::vector<double>;

constexpr int kThreads = 4;
/// Cells along the side of a box whose parts are large enough for a team of threads.
constexpr int kAcrossForTeams = 30;

/// A perturbed box of hexahedra in parts.
class Parts {
 public:
  explicit Parts(int nParts, int across = 10) : group_(nParts) {
    auto const mesh = test_meshes::Perturbed(test_meshes::HexBox(across + 2, across, across - 2), 0.02);
    for (auto const& part :
         reference_host::SplitMesh(mesh, test_meshes::RunParts(mesh.nCells, nParts), nParts))
      parts_.push_back(std::make_unique<HostPartition>(part));
    ForEach([](HostPartition& own, CCommunication& exchange, CZYNCom&) { own.CompleteHalo(exchange); });
  }

  HostPartition& Part(int p) { return *parts_[static_cast<std::size_t>(p)]; }

  /// call(part, exchange, reduction), every part in a thread.
  template <class Call>
  void ForEach(Call call) {
    reference_host::RunInProcess(group_, [&](int p) {
      reference_host::InProcessCommunication exchange(group_, Part(p));
      reference_host::InProcessReduction reduction(group_);
      call(Part(p), exchange, reduction);
    });
  }

 private:
  reference_host::InProcessGroup group_;
  std::vector<std::unique_ptr<HostPartition>> parts_;
};

Field Smooth(HostPartition& own) {
  CZYN3DFiniteVolumeMesh const& mesh = *own.mesh();
  Field phi(static_cast<std::size_t>(mesh.NCell) + 1, 0.0);
  for (int c = 1; c <= mesh.NCell; ++c)
    phi[static_cast<std::size_t>(c)] = std::sin(3 * mesh.xc[c]) + mesh.yc[c] * mesh.zc[c];
  return phi;
}

/// Three gradients in a row of type 0 (n = 1) or 1, the components behind one another.
Field Gradient(HostPartition& own, CCommunication& exchange, CZYNCom& reduction, int type) {
  COperatorGradient op;
  op.getZyn3dGV(own.globals(), nullptr, nullptr, own.mesh());
  op.getPartitionFace(own.partitionFaces());
  op.getCommunication(&exchange, &reduction);
  op.getGradType(type);
  op.Initialize();
  Field phi = Smooth(own), gx = phi, gy = phi, gz = phi;
  for (int repetition = 0; repetition < 3; ++repetition)
    op.GradMethod(phi.data(), gx.data(), gy.data(), gz.data(), 1);
  gx.insert(gx.end(), gy.begin(), gy.end());
  gx.insert(gx.end(), gz.begin(), gz.end());
  return gx;
}

/// The least-squares gradient of all parts, the loops of each on `nThreads` threads.
std::vector<Field> LeastSquares(int nParts, int nThreads) {
  Parts parts(nParts, kAcrossForTeams);
  std::vector<Field> results(static_cast<std::size_t>(nParts));
  std::vector<int> nRunning(static_cast<std::size_t>(nParts), 0);
  parts.ForEach([&](HostPartition& own, CCommunication& exchange, CZYNCom& reduction) {
    std::size_t const p = static_cast<std::size_t>(own.part());
    omp_set_dynamic(0);
    omp_set_num_threads(nThreads);
#pragma omp parallel
    {
#pragma omp single
      nRunning[p] = omp_get_num_threads();
    }
    results[p] = Gradient(own, exchange, reduction, 1);
  });
  EXPECT_EQ(std::vector<int>(nRunning.size(), nThreads), nRunning)
      << "the loops did not run on several threads";
  return results;
}

TEST(Threads, LeastSquaresLoopsOnSeveralThreadsGiveTheBitsOfOne) {
  EXPECT_EQ(LeastSquares(1, 1), LeastSquares(1, kThreads));
}

TEST(Threads, LoopsOfPartsInThreadsRunOnThreadsOfTheirOwn) {
  EXPECT_EQ(LeastSquares(3, 1), LeastSquares(3, kThreads));
}

/// Runs body(0) .. body(kThreads - 1) at the same time.
template <class Body>
void AtTheSameTime(Body body) {
  std::vector<std::thread> threads;
  for (int t = 0; t < kThreads; ++t) threads.emplace_back([&body, t] { body(static_cast<std::size_t>(t)); });
  for (std::thread& thread : threads) thread.join();
}

TEST(Threads, OperatorsOfSeveralThreadsShareAMesh) {
  Parts parts(1);
  std::vector<Field> results(kThreads), alone(2);
  auto const run = [&](std::size_t t) {
    reference_host::InProcessGroup group(1);
    reference_host::InProcessCommunication exchange(group, parts.Part(0));
    reference_host::InProcessReduction reduction(group);
    return Gradient(parts.Part(0), exchange, reduction, static_cast<int>(t % 2));
  };
  for (std::size_t const type : {0u, 1u}) alone[type] = run(type);
  AtTheSameTime([&](std::size_t t) { results[t] = run(t); });
  for (std::size_t t = 0; t < results.size(); ++t) EXPECT_EQ(alone[t % 2], results[t]) << "thread " << t;
}

/// The solver's parameters for the point operator: the 20 nearest cells.
class Parameters : public CZYNKNCMPCompParm {
 public:
  CZYNCMP_FaceRBF_Parm* getFaceRBFParm() override { return nullptr; }
  CZYNCMP_IBRBF_Parm* getIBRBFParm() override { return &block_; }

 private:
  CZYNCMP_IBRBF_Parm block_{0, 500, 2, 0.0, 20};
};

TEST(Threads, PointsSetUpOnceServeSeveralThreads) {
  constexpr int kPoints = 50;
  Parts parts(1);
  HostPartition& own = parts.Part(0);
  Parameters parameters;
  CZynIBRBFInternalObject op;
  op.getZyn3dGV(own.globals(), nullptr, nullptr, own.mesh());
  op.getPartitionFace(own.partitionFaces());
  op.SetZYNKNCMP(&parameters);
  Field usable(static_cast<std::size_t>(own.mesh()->NCell) + 1, -1.0), x(kPoints + 1), y(x), z(x);
  for (std::size_t i = 1; i < x.size(); ++i) {
    x[i] = 0.02 * static_cast<double>(i) - 0.01;
    y[i] = 1.0 - x[i];
    z[i] = x[i] * x[i];
  }
  ::testing::internal::CaptureStdout();
  ASSERT_EQ(0, op.Initialize_IBInterpolateData(usable.data(), kPoints, x.data(), y.data(), z.data()));
  ::testing::internal::GetCapturedStdout();

  Field phi = Smooth(own);
  auto const values = [&] {
    Field value(kPoints + 1), dx(value), dy(value), dz(value);
    for (int repetition = 0; repetition < 20; ++repetition)
      op.Multiply_IBRBFCoefficent(phi.data(), value.data(), dx.data(), dy.data(), dz.data());
    return value;
  };
  Field const alone = values();
  std::vector<Field> results(kThreads);
  AtTheSameTime([&](std::size_t t) { results[t] = values(); });
  for (Field const& result : results) EXPECT_EQ(alone, result);
}

}  // namespace
