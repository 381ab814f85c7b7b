#include "sampling/SamplingMesh.h"

#include <algorithm>
#include <map>
#include <tuple>

#include "cyclicAMIPolyPatch.H"
#include "processorCyclicPolyPatch.H"
#include "processorPolyPatch.H"

namespace Foam {
namespace zyn {
namespace {

constexpr label kNowhere = -1, kEachAlone = -2;

/// The number of a periodic patch, through which a cell stands somewhere else; kNowhere where it stands in its own
/// place; kEachAlone where halo cells are means of several.
label PeriodOf(polyPatch const& patch) {
  if (isA<cyclicAMIPolyPatch>(patch)) return kEachAlone;
  if (isA<processorCyclicPolyPatch>(patch))
    return refCast<processorCyclicPolyPatch const>(patch).referPatchID();
  return isA<processorPolyPatch>(patch) ? kNowhere : patch.index();
}

}  // namespace

SamplingMesh::SamplingMesh(fvMesh const& mesh) : host_(FvMeshHost::Of(mesh)), records_(&host_.Topology()) {
  haloCell_ = NumberHaloCells();
  int const nHaloCells = haloCell_.empty() ? 0 : 1 + *std::max_element(haloCell_.begin(), haloCell_.end());
  reference_host::ArrayMesh const& arrays = host_.arrays().arrays();
  if (nHaloCells == arrays.nHaloCells && arrays.nEmptyFaces == 0) return;
  MakeOwnRecords(nHaloCells);
}

/// By partition face, the halo cell, numbered as they come, from 0.
std::vector<int> SamplingMesh::NumberHaloCells() {
  std::size_t const n = host_.arrays().nAllCells();
  std::vector<double> cell(n), process(n, Pstream::myProcNo());
  for (std::size_t c = 0; c < n; ++c) cell[c] = static_cast<double>(c);
  host_.exchange().DDM_Exch(cell.data() - 1);
  host_.exchange().DDM_Exch(process.data() - 1);

  std::map<std::tuple<label, double, double>, int> known;
  std::vector<int> numbers;
  int next = 0;
  for (FvMeshArrays::PatchPlace const& p : host_.arrays().coupledPatches()) {
    label const period = PeriodOf(mesh().boundaryMesh()[p.patch]);
    for (int c = p.firstCell; c < p.firstCell + p.size; ++c) {
      if (period == kEachAlone) {
        numbers.push_back(next++);
        continue;
      }
      auto const [place, isNew] = known.try_emplace({period, process[c], cell[c]}, next);
      if (isNew) ++next;
      numbers.push_back(place->second);
    }
  }
  return numbers;
}

/// Moves the halo cells of an array together. A number is never greater than that of the face, so that nothing is
/// overwritten before it has moved.
void SamplingMesh::MergeHaloCells(double* cells) const {
  double* const halo = cells + host_.Topology().FirstHalo();
  for (std::size_t f = 0; f < haloCell_.size(); ++f) halo[haloCell_[f]] = halo[f];
}

void SamplingMesh::MakeOwnRecords(int nHaloCells) {
  reference_host::ArrayMesh arrays = host_.arrays().arrays();
  centres_ = StaggeredArrays(3, host_.arrays().nAllCells());
  double const* const places[] = {arrays.centre.x, arrays.centre.y, arrays.centre.z};
  for (int axis = 0; axis < 3; ++axis) {
    std::copy_n(places[axis], host_.arrays().nAllCells(), centres_[axis]);
    MergeHaloCells(centres_[axis]);
  }
  arrays.centre = {centres_[0], centres_[1], centres_[2]};
  arrays.nHaloCells = nHaloCells;
  arrays.haloCell = haloCell_.data();
  // Empty faces and their ghost cells come last, so that the others keep their numbers.
  arrays.wall.count -= arrays.nEmptyFaces;
  arrays.nEmptyFaces = 0;
  own_ = std::make_unique<reference_host::ArrayHost>(arrays, reference_host::ArrayHost::Extent::kTopology);
  records_ = own_.get();
}

point SamplingMesh::InItsPlane(point const& p) const {
  point moved = p;
  for (direction d = 0; d < point::nComponents; ++d)
    if (mesh().geometricD()[d] < 0 && mesh().nCells() > 0) moved[d] = mesh().cellCentres()[0][d];
  return moved;
}

template <class Type>
void SamplingMesh::Fill(GeometricField<Type, fvPatchField, volMesh> const& field) {
  constexpr direction nComponents = pTraits<Type>::nComponents;
  if (values_.count() < nComponents) values_ = StaggeredArrays(nComponents, arrays().nAllCells());
  double* components[nComponents];
  for (direction d = 0; d < nComponents; ++d) components[d] = values_[d];
  arrays().Fill(field, components);
  for (double* const component : components) MergeHaloCells(component);
}

template void SamplingMesh::Fill(volScalarField const&);
template void SamplingMesh::Fill(volVectorField const&);

}  // namespace zyn
}  // namespace Foam
