#pragma once

#include <memory>

#include "MeshObject.H"
#include "polyMesh.H"

namespace Foam {
namespace zyn {

/// Tells whether a mesh is still what it was: whether neither its points nor its topology have changed.
///
///   MeshStamp::Stamp stamp = MeshStamp::Of(mesh);
///   ...
///   if (stamp.expired()) ...
///
/// An object of the polyMesh and not of the fvMesh, which hears nothing of points that are read from a time folder.
class MeshStamp : public MeshObject<polyMesh, MoveableMeshObject, MeshStamp> {
 public:
  TypeName("zynMeshStamp");

  using Stamp = std::weak_ptr<int const>;

  static Stamp Of(polyMesh const& mesh) { return New(mesh).current_; }

  explicit MeshStamp(polyMesh const& mesh) : MeshObject<polyMesh, MoveableMeshObject, MeshStamp>(mesh) {}

  bool movePoints() override {
    current_ = std::make_shared<int const>(0);
    return true;
  }

 private:
  std::shared_ptr<int const> current_ = std::make_shared<int const>(0);
};

}  // namespace zyn
}  // namespace Foam
