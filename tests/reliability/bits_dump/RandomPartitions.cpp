#include <cstdint>
#include <string>
#include <vector>

#include "tests/reliability/bits_dump/Bits.h"
#include "tests/support/gradient/ConnectedOperator.h"
#include "tests/support/mesh/RandomMesh.h"

namespace bits_dump {
namespace {

using namespace zyn_test;

constexpr std::uint64_t kPartitions = 60;

/// One random partition with an operator, and the file that takes its results.
class PartitionRun {
 public:
  PartitionRun(BitsFile& file, std::uint64_t seed)
      : file_(file), seed_(seed), random_(seed), mesh_(RandomMesh(random_)) {}

  void Run() {
    std::vector<double> const phi = RandomField(random_, mesh_);
    Gradient("plain", 0, phi, 1);
    for (int const nSweep : {0, 1, 3}) Gradient("iterated " + std::to_string(nSweep), 7, phi, nSweep);
    Gradient("least squares", 1, phi, 1);
    Weighted(phi, TameField(random_, mesh_), "weighted");
    Weighted(phi, RandomField(random_, mesh_), "weighted by any field");
    ThreeComponents();
  }

 private:
  /// call(operator, x, y, z) with everything new, and what it leaves in the gradient and in the previous iterate.
  template <class Call>
  void Write(std::string const& method, int type, Call call) {
    GradientHost host(mesh_, mesh_.nInnerCells > 0 ? ExchangeWithItself(mesh_) : NoExchange());
    host.UseNonBlockingExchange(seed_ % 2 == 0);
    ConnectedOperator op(host, type);
    GuardedGradient g(mesh_.NCell(), 0.75);
    file_.BeginCase("random partition " + std::to_string(seed_) + ", " + method);
    op.gradient.Initialize();
    call(op.gradient, g.x.Data(), g.y.Data(), g.z.Data());
    for (GuardedGradient const* gradient : {&g, &host.previous}) {
      bool const isResult = gradient == &g;
      file_.Write(isResult ? "gx" : "previous gx", mesh_.NCell(), gradient->x.Data());
      file_.Write(isResult ? "gy" : "previous gy", mesh_.NCell(), gradient->y.Data());
      file_.Write(isResult ? "gz" : "previous gz", mesh_.NCell(), gradient->z.Data());
    }
  }

  void Gradient(std::string const& method, int type, std::vector<double> const& phi, int n) {
    Write(method, type, [&](COperatorGradient& op, double* x, double* y, double* z) {
      op.GradMethod(Guarded(phi).Data(), x, y, z, n);
    });
  }

  void Weighted(std::vector<double> const& phi, std::vector<double> const& weight, char const* method) {
    Write(method, 0, [&](COperatorGradient& op, double* x, double* y, double* z) {
      op.GradMethod_Weighted(Guarded(phi).Data(), x, y, z, Guarded(weight).Data(), 1);
    });
  }

  void ThreeComponents() {
    GuardedArray<double> phi[3];
    for (GuardedArray<double>& component : phi) component = Guarded(RandomField(random_, mesh_));
    GuardedGradient second(mesh_.NCell()), third(mesh_.NCell());
    Write("three components", 0, [&](COperatorGradient& op, double* x, double* y, double* z) {
      op.GradMethod_3(phi[0].Data(), phi[1].Data(), phi[2].Data(), x, y, z, second.x.Data(), second.y.Data(),
                      second.z.Data(), third.x.Data(), third.y.Data(), third.z.Data());
    });
    auto const writeOthers = [&] {
      for (GuardedArray<double> const* component :
           {&second.x, &second.y, &second.z, &third.x, &third.y, &third.z})
        file_.Write("of the second and third", mesh_.NCell(), component->Data());
    };
    writeOthers();
    Write("three fields by least squares", 1, [&](COperatorGradient& op, double* x, double* y, double* z) {
      op.GradMethod_LeastSquares_3(phi[0].Data(), phi[1].Data(), phi[2].Data(), x, y, z, second.x.Data(),
                                   second.y.Data(), second.z.Data(), third.x.Data(), third.y.Data(),
                                   third.z.Data());
    });
    writeOthers();
  }

  BitsFile& file_;
  std::uint64_t seed_;
  Random random_;
  TestMesh mesh_;
};

}  // namespace

void WriteGradientsOfRandomPartitions(BitsFile& file) {
  for (std::uint64_t seed = 1; seed <= kPartitions; ++seed) PartitionRun(file, seed).Run();
}

}  // namespace bits_dump
