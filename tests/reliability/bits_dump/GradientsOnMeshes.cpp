#include <array>
#include <string>
#include <utility>
#include <vector>

#include "gradient/COperatorGradient.h"
#include "tests/reliability/bits_dump/Bits.h"
#include "tests/reliability/bits_dump/Meshes.h"

namespace bits_dump {
namespace {

using Field = std::vector<double>;
using Fields = std::vector<Field>;  ///< gradient components

enum class Call { OneField, Weighted, ThreeFields };

struct Method {
  char const* name;
  int type;
  int last;  ///< argument of GradMethod
  Call call;
};

constexpr Method kMethods[] = {{"plain", 0, 1, Call::OneField},
                               {"iterated once", 7, 1, Call::OneField},
                               {"iterated 4 times", 0, 4, Call::OneField},
                               {"least squares", 1, 0, Call::OneField},
                               {"weighted", 0, 1, Call::Weighted},
                               {"three components", 0, 1, Call::ThreeFields}};

Fields Gradient(Method const& method, COperatorGradient& op, HostPartition& own) {
  Field phi = SmoothField(own), other = phi, third = phi;
  for (double& value : other) value = 1 + value * value;
  for (double& value : third) value = 1 / (2 + value);
  Fields g(method.call == Call::ThreeFields ? 9 : 3, Field(phi.size(), 0.5));
  switch (method.call) {
    case Call::OneField:
      op.GradMethod(phi.data(), g[0].data(), g[1].data(), g[2].data(), method.last);
      break;
    case Call::Weighted:
      op.GradMethod_Weighted(phi.data(), g[0].data(), g[1].data(), g[2].data(), other.data(), 1);
      break;
    case Call::ThreeFields:
      op.GradMethod_3(phi.data(), other.data(), third.data(), g[0].data(), g[1].data(), g[2].data(),
                      g[3].data(), g[4].data(), g[5].data(), g[6].data(), g[7].data(), g[8].data());
      break;
  }
  return g;
}

/// The gradient in every part.
std::vector<Fields> Gradients(NamedCutMesh& mesh, Method const& method, bool nonBlocking) {
  std::vector<Fields> results(static_cast<std::size_t>(mesh.NParts()));
  mesh.ForEachPart([&](HostPartition& own, CCommunication& exchange, CZYNCom& reduction) {
    own.globals()->UseNonBlockingExch = nonBlocking ? 1 : 0;
    COperatorGradient op;
    op.getZyn3dGV(own.globals(), nullptr, nullptr, own.mesh());
    op.getPartitionFace(own.partitionFaces());
    op.getCommunication(&exchange, &reduction);
    int type = method.type;
    op.getGradType(type);
    op.Initialize();
    results[static_cast<std::size_t>(own.part())] = Gradient(method, op, own);
  });
  return results;
}

}  // namespace

void WriteGradientsOnMeshes(BitsFile& file) {
  constexpr std::array<char const*, 9> kNames = {"gx", "gy", "gz", "g2x", "g2y", "g2z", "g3x", "g3y", "g3z"};
  ForAllMeshes([&file, &kNames](NamedCutMesh& mesh) {
    for (Method const& method : kMethods) {
      for (bool const nonBlocking : {false, true}) {
        std::vector<Fields> const results = Gradients(mesh, method, nonBlocking);
        for (int p = 0; p < mesh.NParts(); ++p) {
          Fields const& g = results[static_cast<std::size_t>(p)];
          file.BeginCase(mesh.Name(p) + ", " + method.name + (nonBlocking ? ", non-blocking" : ", blocking"));
          for (std::size_t k = 0; k < g.size(); ++k)
            file.Write(kNames[k], mesh.Part(p).mesh()->NCell, g[k].data());
        }
      }
    }
  });
}

}  // namespace bits_dump
