#include "sampling/PointSet.h"

#include <algorithm>

#include "OSspecific.H"
#include "PstreamReduceOps.H"
#include "sampling/WeightSums.h"
#include "triSurface.H"

namespace Foam {
namespace zyn {
namespace {

constexpr int kNodesAround = 3;  // method

constexpr label kNone = labelMax;  // greater than any number of a process

pointField Line(dictionary const& dict) {
  point const start = dict.get<point>("start"), end = dict.get<point>("end");
  label const n = dict.get<label>("nPoints");
  if (n < 2) FatalIOErrorInFunction(dict) << "nPoints " << n << " is less than 2" << exit(FatalIOError);
  pointField points(n);
  for (label i = 0; i < n; ++i) points[i] = start + (end - start) * (scalar(i) / (n - 1));
  return points;
}

/// Collective: the first process reads the file for all.
pointField VerticesOf(dictionary const& dict, Time const& time) {
  fileName const file = time.globalPath() / time.constant() / "triSurface" / dict.get<fileName>("surface");
  bool isThere = Pstream::master() && isFile(file);
  Pstream::scatter(isThere);
  if (!isThere) FatalIOErrorInFunction(dict) << "There is no surface " << file << exit(FatalIOError);
  pointField points;
  if (Pstream::master()) points = triSurface(file).points();
  Pstream::scatter(points);
  return points;
}

}  // namespace

PointSet::PointSet(word const& name, dictionary const& dict, Time const& time)
    : name_(name), axis_(dict.lookupOrDefault<word>("axis", "xyz")), points_(Read(dict, time)) {
  if (!coordSet::coordFormatNames.found(axis_)) {
    FatalIOErrorInFunction(dict) << "Unknown axis " << axis_ << "; possible are "
                                 << flatOutput(coordSet::coordFormatNames.sortedToc()) << exit(FatalIOError);
  }
}

pointField PointSet::Read(dictionary const& dict, Time const& time) {
  if (dict.found("points")) {
    CheckKeywords(dict, {"points", "axis"});
    return dict.get<pointField>("points");
  }
  if (dict.found("surface")) {
    CheckKeywords(dict, {"surface", "axis"});
    return VerticesOf(dict, time);
  }
  CheckKeywords(dict, {"points", "surface", "start", "end", "nPoints", "axis"});
  return Line(dict);
}

void PointSet::SetUp(SamplingMesh& mesh, RadialBasisSettings const& settings,
                     PointSampler::Boundary boundary) {
  if (mesh.IsFlat() && settings.method == kNodesAround) {
    WarningInFunction
        << "Method 3 is poor on a mesh of one layer of cells, whose nodes lie outside the plane of the "
           "cell centres: take method 1 or 2 for the points of "
        << name_ << endl;
  }
  FindProcesses(mesh.mesh());
  DynamicList<point> own;
  forAll(points_, i) {
    if (process_[i] == Pstream::myProcNo()) own.append(mesh.InItsPlane(points_[i]));
  }
  sampler_ = std::make_unique<PointSampler>(mesh, own, settings, boundary);
  double error = 0.0;
  forAll(own, i) error = max(error, sampler_->ErrorOfOne(i));
  WarnOfWeights(name_, error);
}

void PointSet::FindProcesses(fvMesh const& mesh) {
  process_.setSize(points_.size());
  forAll(points_, i) process_[i] = mesh.findCell(points_[i]) < 0 ? kNone : Pstream::myProcNo();
  Pstream::listCombineGather(process_, minEqOp<label>());
  Pstream::listCombineScatter(process_);

  label nOutside = 0, first = 0;
  forAllReverse(process_, i) {
    if (process_[i] != kNone) continue;
    process_[i] = -1;
    first = i;
    ++nOutside;
  }
  if (nOutside == 0) return;
  WarningInFunction << nOutside << " of the " << points_.size() << " points of " << name_
                    << " are outside the mesh and left out; the first one is " << points_[first] << endl;
}

template <class Type>
Field<Type> PointSet::Sample(Field<typename outerProduct<vector, Type>::type>* gradients) {
  using Gradient = typename outerProduct<vector, Type>::type;
  constexpr direction nComponents = pTraits<Type>::nComponents;
  auto const nOwn = static_cast<label>(std::count(process_.begin(), process_.end(), Pstream::myProcNo()));
  Field<Type> values(nOwn);
  Field<Gradient> slopes(gradients == nullptr ? 0 : nOwn);
  for (direction d = 0; d < nComponents; ++d) {
    sampler_->Sample(d);
    forAll(values, i) setComponent(values[i], d) = sampler_->values()[i];
    forAll(slopes, i) {
      for (direction axis = 0; axis < 3; ++axis)
        setComponent(slopes[i], axis * nComponents + d) = sampler_->slopes(axis)[i];
    }
  }
  if (gradients != nullptr) *gradients = InOrder(slopes);
  return InOrder(values);
}

template <class T>
Field<T> PointSet::InOrder(Field<T> const& own) const {
  List<Field<T>> ofProcess(Pstream::nProcs());
  ofProcess[Pstream::myProcNo()] = own;
  Pstream::gatherList(ofProcess);
  if (!Pstream::master()) return Field<T>();
  DynamicList<T> all(process_.size());
  labelList next(Pstream::nProcs(), 0);
  for (label const process : process_)
    if (process >= 0) all.append(ofProcess[process][next[process]++]);
  return Field<T>(std::move(all));
}

coordSet PointSet::Coordinates() const {
  DynamicList<point> inside(points_.size());
  DynamicList<scalar> distances(points_.size());
  scalar distance = 0.0;
  forAll(points_, i) {
    if (i > 0) distance += mag(points_[i] - points_[i - 1]);
    if (process_[i] < 0) continue;
    inside.append(points_[i]);
    distances.append(distance);
  }
  return coordSet(name_, axis_, inside, distances);
}

template Field<scalar> PointSet::Sample(Field<vector>*);
template Field<vector> PointSet::Sample(Field<tensor>*);

}  // namespace zyn
}  // namespace Foam
