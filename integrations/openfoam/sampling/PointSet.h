#pragma once

#include <memory>

#include "coordSet.H"
#include "sampling/PointSampler.h"

namespace Foam {
namespace zyn {

/// A named set of points of a case, whichever process they lie in.
class PointSet {
 public:
  /// Reads one of
  ///   points ((x y z) ...);
  ///   start (x y z); end (x y z); nPoints n;
  ///   surface "file";                            the vertices, of a file in constant/triSurface
  /// and `axis` (xyz, x, y, z, distance; default xyz). Ends the program with a message if that is wrong.
  PointSet(word const& name, dictionary const& dict, Time const& time);

  word const& name() const { return name_; }

  /// Collective. Finds the points' cells and sets up the operator. A point outside the mesh is left out, and a warning
  /// says so; of a point in cells of several processes, the first one takes care.
  /// @param mesh  borrowed; must outlive the next call of SetUp and of the other operations
  void SetUp(SamplingMesh& mesh, RadialBasisSettings const& settings, PointSampler::Boundary boundary);

  /// Collective. Values at the points inside the mesh, in their order, of the field that the mesh was filled with; on
  /// the first process, nothing elsewhere.
  /// @param[out] gradients  likewise; T_ij = d/dx_i of component j for a vector. Null: not wanted
  template <class Type>
  Field<Type> Sample(Field<typename outerProduct<vector, Type>::type>* gradients);

  /// The points inside the mesh, with what is written beside their values.
  coordSet Coordinates() const;

 private:
  static pointField Read(dictionary const& dict, Time const& time);
  void FindProcesses(fvMesh const& mesh);
  template <class T>
  Field<T> InOrder(Field<T> const& own) const;

  word const name_;
  word const axis_;
  pointField const points_;
  labelList process_;  ///< that samples a point; -1: outside the mesh
  std::unique_ptr<PointSampler> sampler_;
};

}  // namespace zyn
}  // namespace Foam
