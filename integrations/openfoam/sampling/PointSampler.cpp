#include "sampling/PointSampler.h"

#include <algorithm>

#include "sampling/SilentOutput.h"
#include "sampling/WeightSums.h"
#include "wedgeFvPatch.H"

namespace Foam {
namespace zyn {
namespace {

constexpr double kUsable = -1.0, kNotUsable = 1.0;

/// [1..all cells] what the operator takes for a mark.
std::vector<double> MarksOf(SamplingMesh& mesh, PointSampler::Boundary boundary) {
  FvMeshArrays const& arrays = mesh.arrays();
  std::vector<double> marks(static_cast<std::size_t>(mesh.nCells()) + 1, kUsable);
  for (FvMeshArrays::PatchPlace const& p : arrays.uncoupledPatches()) {
    // The faces of wedges stand beside the layer of cells, not around it.
    bool const isUsed =
        boundary == PointSampler::Boundary::kUsed && !isA<wedgeFvPatch>(mesh.mesh().boundary()[p.patch]);
    if (!isUsed) std::fill_n(marks.begin() + p.firstCell + 1, p.size, kNotUsable);
  }
  return marks;
}

}  // namespace

PointSampler::PointSampler(SamplingMesh& mesh, UList<point> const& points,
                           RadialBasisSettings const& settings, Boundary boundary)
    : mesh_(mesh), settings_(settings), nPoints_(static_cast<int>(points.size())), x_(1), y_(1), z_(1) {
  for (point const& p : points) {
    x_.push_back(p.x());
    y_.push_back(p.y());
    z_.push_back(p.z());
  }
  for (auto& values : values_) values.assign(x_.size(), 0.0);
  if (nPoints_ == 0) return;

  operator_.SetZYNKNCMP(&settings_);
  mesh_.Wire(operator_);
  std::vector<double> marks = MarksOf(mesh_, boundary);
  SilentOutput const duringSetUp;
  operator_.Initialize_IBInterpolateData(marks.data(), nPoints_, x_.data(), y_.data(), z_.data());
}

void PointSampler::Sample(direction component) {
  if (nPoints_ == 0) return;
  operator_.Multiply_IBRBFCoefficent(mesh_.Component(component), values_[0].data(), values_[1].data(),
                                     values_[2].data(), values_[3].data());
}

double PointSampler::ErrorOfOne(int i) const {
  return zyn::ErrorOfOne(operator_.m_ppIBConn[i + 1], operator_.m_ppIBValueCoef[i + 1]);
}

}  // namespace zyn
}  // namespace Foam
