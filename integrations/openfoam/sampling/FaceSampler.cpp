#include "sampling/FaceSampler.h"

#include <algorithm>

#include "foundation/FaceGroups.h"
#include "sampling/SilentOutput.h"
#include "sampling/WeightSums.h"

namespace Foam {
namespace zyn {
namespace {

constexpr int kNearestCells = 2;

RadialBasisSettings AsPoints(RadialBasisSettings settings) {
  settings.method = std::min(settings.method, kNearestCells);
  return settings;
}

}  // namespace

FaceSampler::FaceSampler(SamplingMesh& mesh, UList<label> const& faces, RadialBasisSettings const& settings)
    : mesh_(mesh), settings_(settings) {
  std::vector<point> coupledCentres;
  bool isAsked[kOperators] = {};
  for (label const face : faces) {
    places_.push_back(PlaceOf(face));
    Place& place = places_.back();
    if (place.group == kCoupled) {
      coupledCentres.push_back(mesh_.mesh().faceCentres()[face]);
      place.number = static_cast<int>(coupledCentres.size());
    } else {
      isAsked[place.group] = true;
    }
  }
  reference_host::ArrayMesh const& arrays = mesh_.arrays().arrays();
  if (isAsked[kInner]) SetUp(kInner, arrays.inner.count);
  if (isAsked[kWall]) SetUp(kWall, arrays.wall.count - arrays.nEmptyFaces);
  UList<point> const centres(coupledCentres.data(), static_cast<label>(coupledCentres.size()));
  coupled_ =
      std::make_unique<PointSampler>(mesh_, centres, AsPoints(settings), PointSampler::Boundary::kUsed);
}

FaceSampler::Place FaceSampler::PlaceOf(label face) const {
  fvMesh const& mesh = mesh_.mesh();
  if (mesh.isInternalFace(face)) return {kInner, static_cast<int>(face) + 1};
  label const patch = mesh.boundaryMesh().whichPatch(face);
  auto const& patches = mesh_.arrays().uncoupledPatches();
  auto const found = std::find_if(patches.begin(), patches.end(),
                                  [patch](FvMeshArrays::PatchPlace const& p) { return p.patch == patch; });
  if (found == patches.end()) return {kCoupled, 0};
  label const inPatch = face - mesh.boundaryMesh()[patch].start();
  return {kWall, found->firstFace + static_cast<int>(inPatch) + 1};
}

void FaceSampler::SetUp(Group group, int nFaces) {
  CZynFaceRBFInternalObject& op = operators_[group];
  op.SetZYNKNCMP(&settings_);
  mesh_.Wire(op);
  values_[group].assign(static_cast<std::size_t>(nFaces) + 1, 0.0);
  cleared_.resize(std::max(cleared_.size(), values_[group].size()));
  SilentOutput const duringSetUp;
  op.Initialize_FaceInterpolateData(static_cast<int>(group == kInner ? FaceKind::Inner : FaceKind::Wall));
}

void FaceSampler::Sample(direction component, std::vector<double>& values) {
  for (int group = 0; group < kOperators; ++group) {
    if (values_[group].empty()) continue;
    operators_[group].Multiply_FaceRBFCoefficent(mesh_.Component(component), values_[group].data(),
                                                 cleared_.data(), cleared_.data(), cleared_.data());
  }
  coupled_->Sample(component);
  values.clear();
  for (Place const& place : places_) {
    values.push_back(place.group == kCoupled ? coupled_->values()[place.number - 1]
                                             : values_[place.group][static_cast<std::size_t>(place.number)]);
  }
}

double FaceSampler::LargestErrorOfOne() const {
  double largest = 0.0;
  for (Place const& place : places_) {
    if (place.group == kCoupled) {
      largest = std::max(largest, coupled_->ErrorOfOne(place.number - 1));
    } else {
      CZynFaceRBFInternalObject const& op = operators_[place.group];
      largest =
          std::max(largest, ErrorOfOne(op.m_ppFaceCellConn[place.number], op.m_ppFaceFiCoef[place.number]));
    }
  }
  return largest;
}

}  // namespace zyn
}  // namespace Foam
