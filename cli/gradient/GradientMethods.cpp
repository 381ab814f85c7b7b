#include "cli/gradient/GradientMethods.h"

#include "cli/gradient/LeastSquaresCheck.h"
#include "cli/systems/RadialBasisRemarks.h"

namespace zyngrad {
namespace {

void RunGradMethod(COperatorGradient& op, MethodData& data, int n) {
  GradientArrays& g = data.gradient[0];
  op.GradMethod(data.field[0]->data(), g.x.data(), g.y.data(), g.z.data(), n);
}

// With one sweep GradMethod is the plain method: the first sweep has no gradient to correct with.
void RunPlain(COperatorGradient& op, MethodData& data) { RunGradMethod(op, data, 1); }

// Methods that a gradient type selects ignore the last argument.
void RunByGradientType(COperatorGradient& op, MethodData& data) { RunGradMethod(op, data, 1); }

void RunIterated(COperatorGradient& op, MethodData& data) { RunGradMethod(op, data, data.nSweeps); }

void RunWeighted(COperatorGradient& op, MethodData& data) {
  GradientArrays& g = data.gradient[0];
  op.GradMethod_Weighted(data.field[0]->data(), g.x.data(), g.y.data(), g.z.data(), data.weight.data(), 1);
}

void RunThreeComponents(COperatorGradient& op, MethodData& data) {
  auto& [g1, g2, g3] = data.gradient;
  op.GradMethod_3(data.field[0]->data(), data.field[1]->data(), data.field[2]->data(), g1.x.data(),
                  g1.y.data(), g1.z.data(), g2.x.data(), g2.y.data(), g2.z.data(), g3.x.data(), g3.y.data(),
                  g3.z.data());
}

// The operator does not exchange the result of this method and leaves the halo cells zero.
void RunRadialBasis(COperatorGradient& op, MethodData& data) {
  RunGradMethod(op, data, 1);
  GradientArrays& g = data.gradient[0];
  for (auto* component : {&g.x, &g.y, &g.z}) data.exchange->DDM_Exch(component->data());
}

}  // namespace

std::vector<GradientMethod> const& GradientMethods() {
  static std::vector<GradientMethod> const methods = {
      {"plain", "Green-Gauss, face values by linear interpolation", kGreenGaussType, 1, RunPlain, nullptr},
      {"iterated", "Green-Gauss, face values corrected for skewness in --sweeps sweeps", kGreenGaussType, 1,
       RunIterated, nullptr},
      {"weighted", "Green-Gauss, face values weighted harmonically by --weight", kGreenGaussType, 1,
       RunWeighted, nullptr},
      {"lsq", "least squares over the face neighbours, unweighted", kLeastSquaresType, 1, RunByGradientType,
       LeastSquaresObstacle},
      {"vector", "plain Green-Gauss of three fields in one pass over the faces", kGreenGaussType, 3,
       RunThreeComponents, nullptr},
      {"rbf", "radial basis functions over the face neighbours, as wide as --span says", kRadialBasisType, 1,
       RunRadialBasis, nullptr, RadialBasisRemarks},
  };
  return methods;
}

std::string GradientMethodNames() {
  std::string names;
  for (GradientMethod const& method : GradientMethods())
    names += (names.empty() ? "" : ", ") + std::string(method.name);
  return names;
}

}  // namespace zyngrad
