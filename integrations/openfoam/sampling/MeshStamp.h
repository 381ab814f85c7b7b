#pragma once

#include <memory>

#include "MeshObject.H"
#include "fvMesh.H"

namespace Foam {
namespace zyn {

/// Tells whether a mesh is still what it was: whether neither its points nor its topology have changed.
///
///   MeshStamp::Stamp stamp = MeshStamp::Of(mesh);
///   ...
///   if (stamp.expired()) ...
class MeshStamp : public MeshObject<fvMesh, MoveableMeshObject, MeshStamp> {
 public:
  TypeName("zynMeshStamp");

  using Stamp = std::weak_ptr<int const>;

  static Stamp Of(fvMesh const& mesh) { return New(mesh).current_; }

  explicit MeshStamp(fvMesh const& mesh) : MeshObject<fvMesh, MoveableMeshObject, MeshStamp>(mesh) {}

  bool movePoints() override {
    current_ = std::make_shared<int const>(0);
    return true;
  }

 private:
  std::shared_ptr<int const> current_ = std::make_shared<int const>(0);
};

}  // namespace zyn
}  // namespace Foam
