#include "sampling/FaceSet.h"

#include <vector>

#include "PstreamReduceOps.H"
#include "emptyPolyPatch.H"
#include "indirectPrimitivePatch.H"
#include "processorCyclicPolyPatch.H"
#include "processorPolyPatch.H"
#include "sampling/WeightSums.h"
#include "wordRes.H"

namespace Foam {
namespace zyn {
namespace {

constexpr int kPointsOnTheNormal = 4;  // method

bool IsBetweenProcesses(polyPatch const& patch) {
  return isA<processorPolyPatch>(patch) && !isA<processorCyclicPolyPatch>(patch);
}

/// Whether the face lies between cells of two processes, and the other one takes care of it.
bool IsOfOtherProcess(polyMesh const& mesh, label face) {
  if (mesh.isInternalFace(face)) return false;
  polyPatch const& patch = mesh.boundaryMesh()[mesh.boundaryMesh().whichPatch(face)];
  return IsBetweenProcesses(patch) && !refCast<processorPolyPatch const>(patch).owner();
}

void AppendFaces(polyPatch const& patch, DynamicList<label>& faces) {
  forAll(patch, i) faces.append(patch.start() + i);
}

/// The numbers of the entries whose names match any expression.
template <class Entries>
labelList Matching(Entries const& entries, wordRes const& expressions) {
  DynamicList<label> found;
  forAll(entries, i) if (expressions.match(entries[i].name())) found.append(i);
  return found;
}

}  // namespace

FaceSet::FaceSet(word const& name, dictionary const& dict, autoPtr<surfaceWriter> writer)
    : name_(name), dict_(dict), writer_(std::move(writer)) {
  CheckKeywords(dict, {"patches", "faceZones", "internal"});
  if (dict.size() != 1) {
    FatalIOErrorInFunction(dict) << "Either patches, faceZones or internal has to be given"
                                 << exit(FatalIOError);
  }
  writer_->useTimeDir() = true;
}

labelList FaceSet::Select(polyMesh const& mesh) const {
  DynamicList<label> faces;
  bool isFound = false;
  if (dict_.found("patches")) {
    labelList const patches = Matching(mesh.boundaryMesh(), dict_.get<wordRes>("patches"));
    for (label const p : patches) AppendFaces(mesh.boundaryMesh()[p], faces);
    isFound = !patches.empty();
  } else if (dict_.found("faceZones")) {
    labelList const zones = Matching(mesh.faceZones(), dict_.get<wordRes>("faceZones"));
    for (label const z : zones) faces.append(mesh.faceZones()[z]);
    isFound = !zones.empty();
  } else if (dict_.get<Switch>("internal")) {
    for (label f = 0; f < mesh.nInternalFaces(); ++f) faces.append(f);
    for (polyPatch const& patch : mesh.boundaryMesh())
      if (IsBetweenProcesses(patch)) AppendFaces(patch, faces);
    isFound = true;
  }
  if (!returnReduce(isFound, orOp<bool>())) {
    FatalIOErrorInFunction(dict_) << "There are no such faces; patches are "
                                  << flatOutput(mesh.boundaryMesh().names()) << ", face zones "
                                  << flatOutput(mesh.faceZones().names()) << exit(FatalIOError);
  }
  DynamicList<label> own;
  for (label const face : faces)
    if (!IsOfOtherProcess(mesh, face)) own.append(face);
  return own;
}

// Every process ends, or none: patches that are not coupled have the same number everywhere.
void FaceSet::CheckMethod(polyMesh const& mesh, labelList const& faces,
                          RadialBasisSettings const& settings) const {
  label empty = -1, boundary = -1;
  for (label const face : faces) {
    if (mesh.isInternalFace(face)) continue;
    label const p = mesh.boundaryMesh().whichPatch(face);
    if (isA<emptyPolyPatch>(mesh.boundaryMesh()[p])) empty = p;
    if (!mesh.boundaryMesh()[p].coupled()) boundary = p;
  }
  reduce(empty, maxOp<label>());
  reduce(boundary, maxOp<label>());
  if (empty >= 0) {
    FatalIOErrorInFunction(dict_) << "Patch " << mesh.boundaryMesh()[empty].name()
                                  << " is empty: no field has values there" << exit(FatalIOError);
  }
  if (boundary >= 0 && settings.method == kPointsOnTheNormal) {
    FatalIOErrorInFunction(dict_)
        << "Method 4 has no values at faces of the boundary, such as those of patch "
        << mesh.boundaryMesh()[boundary].name() << ": take 1, 2 or 3" << exit(FatalIOError);
  }
}

void FaceSet::SetUp(SamplingMesh& mesh, RadialBasisSettings const& settings) {
  labelList const faces = Select(mesh.mesh());
  CheckMethod(mesh.mesh(), faces, settings);
  size_ = returnReduce(faces.size(), sumOp<label>());
  indirectPrimitivePatch const surface(IndirectList<face>(mesh.mesh().faces(), faces), mesh.mesh().points());
  points_ = surface.localPoints();
  faces_ = surface.localFaces();
  writer_->setSurface(points_, faces_);
  sampler_ = std::make_unique<FaceSampler>(mesh, faces, settings);

  WarnOfWeights(name_, sampler_->LargestErrorOfOne());
}

template <class Type>
Field<Type> FaceSet::Sample() {
  Field<Type> values(faces_.size());
  std::vector<double> component;
  for (direction d = 0; d < pTraits<Type>::nComponents; ++d) {
    sampler_->Sample(d, component);
    forAll(values, i) setComponent(values[i], d) = component[i];
  }
  return values;
}

template Field<scalar> FaceSet::Sample();
template Field<vector> FaceSet::Sample();

}  // namespace zyn
}  // namespace Foam
