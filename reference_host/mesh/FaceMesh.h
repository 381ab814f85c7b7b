#pragma once

#include <array>
#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace reference_host {

using Point = std::array<double, 3>;

/// Boundary groups of the operators, in the order in which the reference host numbers their ghost cells.
enum class BoundaryGroup { Inlet, Outlet, Symmetry, Wall };

/// A named part of the boundary in the mesh file.
struct Patch {
  std::string name;
  /// patch type of a polyMesh ("wall", "symmetryPlane", ...), BCType_t of a CGNS condition, else empty
  std::string type;
  std::optional<BoundaryGroup> group;  ///< empty until AssignBoundaryGroups has found one
  std::string reason = {};             ///< why it has that group: "type empty", "name", "--default-group"

  /// The patches that all faces of this one lie on after a period of the domain, ascending; it may be among
  /// them. Empty: the mesh file does not pair all of its faces.
  std::vector<int> partners = {};
};

/// Boundary faces that lie on others of the mesh, moved by one vector: the mesh continues there. What the mesh
/// file says; JoinPeriods makes use of it.
struct Period {
  int patch = -1;    ///< of the first side
  int partner = -1;  ///< of the second side, perhaps the same
  /// What messages call it: "cyclic patch 'left'", "surface 3".
  std::string name;
  /// Why it is no translation, such as "is rotational"; empty: it may be one.
  std::string refusal;
  double tolerance = 1e-4;  ///< distance of matching nodes, as a fraction of the size of their face
  std::optional<Point>
      vector;  ///< from the first side to the second as the file gives it, in either direction

  /// Faces of the two sides that belong together; each face is in one pair of one period.
  std::vector<std::pair<int, int>> faces;

  // The following are set by JoinPeriods.
  Point shift = {0.0, 0.0, 0.0};  ///< from the first side to the second
  /// [pair] node i of the first face lies on node (turn - i) mod n of the second, moved back
  std::vector<int> turn;
};

struct MeshNames;

/// A whole mesh addressed by faces: cells of any shape, all numbers 0-based. Every reader and generator makes
/// one.
struct FaceMesh {
  std::vector<Point> points;

  /// Nodes of face f are faceNode[faceStart[f] .. faceStart[f+1]-1]. By the right-hand rule, they go around a
  /// normal that points out of owner[f].
  std::vector<std::size_t> faceStart = {0};
  std::vector<int> faceNode;

  std::vector<int> owner;      ///< cell that the normal points out of
  std::vector<int> neighbour;  ///< cell on the other side; -1: boundary face
  std::vector<int> facePatch;  ///< index into patches; -1: not at the boundary
  std::vector<Patch> patches;
  int nCells = 0;

  /// From the mesh file; after JoinPeriods those across which the mesh continues. Their faces stay boundary
  /// faces of the FaceMesh; a MeshPart has halo cells beyond them.
  std::vector<Period> periods;

  /// The names of nodes, faces and cells in messages (MeshNames.h); null: their numbers counted from 1.
  std::shared_ptr<const MeshNames> names;

  int nFaces() const { return static_cast<int>(owner.size()); }
};

}  // namespace reference_host
