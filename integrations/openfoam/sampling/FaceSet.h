#pragma once

#include <memory>

#include "faceList.H"
#include "sampling/FaceSampler.h"
#include "surfaceWriter.H"

namespace Foam {
namespace zyn {

/// A named set of faces of a mesh: of patches, of face zones, or all between cells.
class FaceSet {
 public:
  /// Reads one of
  ///   patches (name "name.*" ...);
  ///   faceZones (name "name.*" ...);
  ///   internal yes;
  /// Ends the program with a message if that is wrong.
  FaceSet(word const& name, dictionary const& dict, autoPtr<surfaceWriter> writer);

  word const& name() const { return name_; }
  surfaceWriter& writer() { return *writer_; }
  /// Number of faces of all processes.
  label size() const { return size_; }

  /// Collective. Selects the faces and sets up the operators. Of a face between two processes, one takes care. Ends the
  /// program with a message if a name is not there, or for faces that the method has no values at.
  /// @param mesh  borrowed; must outlive the next call of SetUp and of Sample
  void SetUp(SamplingMesh& mesh, RadialBasisSettings const& settings);

  /// Values at the faces of this process, of the field that the mesh was filled with.
  template <class Type>
  Field<Type> Sample();

 private:
  labelList Select(polyMesh const& mesh) const;
  void CheckMethod(polyMesh const& mesh, labelList const& faces, RadialBasisSettings const& settings) const;

  word const name_;
  dictionary const dict_;
  autoPtr<surfaceWriter> writer_;
  // The writer borrows points and faces.
  pointField points_;
  faceList faces_;
  label size_ = 0;
  std::unique_ptr<FaceSampler> sampler_;
};

}  // namespace zyn
}  // namespace Foam
