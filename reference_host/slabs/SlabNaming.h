#pragma once

#include <cstdint>
#include <limits>
#include <string>
#include <vector>

#include "reference_host/parallel/MpiCommunicator.h"
#include "reference_host/slabs/MeshSlab.h"

namespace reference_host {

constexpr std::int64_t kNoNumber = std::numeric_limits<std::int64_t>::max();

/// The lowest number that a rank has in question, and the lowest such rank; kNoNumber: no rank has any.
struct FirstOfAll {
  std::int64_t number = kNoNumber;
  int rank = 0;
};

/// Collective.
/// @param[in] own  the rank's own lowest number; kNoNumber: none
FirstOfAll FindFirst(MpiCommunicator const& communicator, std::int64_t own);

/// A face as messages need it; numbers are those of the whole mesh.
struct FaceInQuestion {
  std::int64_t number = -1;
  std::vector<std::int64_t> node;
  std::int64_t owner = -1;
};

/// The names in messages of the nodes, faces and cells of a mesh in slabs, the same as NameOfNode, NameOfCell and
/// NameOfFace give for the whole. It asks the rank that has the item. All calls are collective, with the same arguments
/// and results on every rank.
class SlabNaming {
 public:
  /// Borrows both. Only the blocks and the names of the slab are used, so that its tables may have been released.
  SlabNaming(MpiCommunicator const& communicator, MeshSlab const& slab)
      : communicator_(communicator), slab_(slab) {}

  std::string Node(std::int64_t node) const;
  std::string Cell(std::int64_t cell) const;
  std::string Face(FaceInQuestion const& face) const;

 private:
  bool HasNames() const;
  std::int64_t NodeNumber(std::int64_t node) const;
  std::string NodesOfFace(FaceInQuestion const& face) const;

  MpiCommunicator const& communicator_;
  MeshSlab const& slab_;
};

/// Collective. Gives every rank the face that rank `from` has in question; ignored on other ranks.
FaceInQuestion BroadcastFace(MpiCommunicator const& communicator, int from, FaceInQuestion const& face);

/// Collective. Gives every rank the text that rank `from` has; ignored on other ranks.
std::string ShareText(MpiCommunicator const& communicator, int from, std::string const& text);

}  // namespace reference_host
