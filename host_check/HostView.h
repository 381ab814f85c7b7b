#pragma once

#include <array>
#include <string>
#include <vector>

#include "foundation/FaceGroups.h"
#include "host/Zyn3dGV.h"
#include "host_check/Vec3.h"

namespace host_check {

/// One group of faces as the host lends it, with what the checks have found out about each face. A mark [f] is
/// false until a check sets it, so a face counts as sound only after a check has looked at it.
struct CheckedFaceGroup {
  explicit CheckedFaceGroup(FaceGroup const& lent = {});

  FaceKind kind;
  int count;  ///< never below 0

  int const *cv, *other;  ///< [1..count], like all that follow
  Vec3Arrays area, centre;
  double const* weight;
  int const* type;
  int* const* nodes;

  std::vector<char> cvSound;      ///< cv[f] is an interior cell
  std::vector<char> otherSound;   ///< other[f] is a cell of the right kind
  std::vector<char> areaSound;    ///< finite and not zero
  std::vector<char> turned;       ///< the area vector points the wrong way
  std::vector<char> centreSound;  ///< finite
  std::vector<char> centreAway;   ///< finite, but not where the face is
  std::vector<char> nodesSound;   ///< the row is readable and all its nodes are in range

  bool PairSound(int f) const { return cvSound[f] && otherSound[f]; }
  bool LeadsToInterior() const { return kind == FaceKind::Inner; }
  bool LeadsToGhosts() const { return IsBoundary(kind); }
  bool LeadsToHalo() const { return kind == FaceKind::Partition; }
  /// Only the `cv` side takes the face's flux.
  bool IsOneSided(int f) const { return LeadsToInterior() && type != nullptr && type[f] == 1; }

  FaceGroupMembers const& Names() const { return MembersOf(kind); }
  std::string Name(int f) const { return Names().name + (" face " + std::to_string(f)); }  ///< "wall face 12"
  std::string ArrayName(char const* ending) const {
    return Names().prefix + std::string(ending);
  }  ///< "ijWallCV"
};

/// The host's data of one partition, with counts that loops can rely on: negative counts become 0, and there are
/// never more interior cells than cells. Borrows all arrays.
class HostView {
 public:
  static constexpr int kGroups = static_cast<int>(kFaceKinds);

  /// Copies counts and pointers. Reads no array and allocates nothing that grows with a count. Either argument may
  /// be null; what it would lend is then empty.
  HostView(CZYN3DFiniteVolumeMesh const* meshOrNull, CPartitionFace_DLL* partitionFaces);

  /// Allocates the marks. Call it before any check that sets or reads one.
  /// @pre the counts are plausible
  void AddMarks();

  bool IsInterior(int c) const { return c >= 1 && c <= nInner; }
  bool IsBeyond(int c) const { return c > nInner && c <= nCell; }  ///< a ghost or halo cell
  bool IsNode(int n) const { return n >= 1 && n <= nNode; }
  int GroupOfCode(int code) const;  ///< index into groups; -1: no group has the code
  CheckedFaceGroup& PartitionGroup() { return groups[kGroups - 1]; }
  CheckedFaceGroup const& PartitionGroup() const { return groups[kGroups - 1]; }
  std::string CellName(int c) const;  ///< "ghost cell 70"

  CZYN3DFiniteVolumeMesh const mesh;  ///< a copy of the record; its arrays are the host's
  int const nCell, nInner, nNode;
  Vec3Arrays const nodes, centres;
  /// inner, wall, inlet, outlet, symmetry, partition: the order of the report
  std::array<CheckedFaceGroup, kGroups> groups;

  /// The highest node that a face names. The checks read no node above it, since the arrays may be shorter
  /// than NNode says.
  int nNodeUsed = 0;

  /// The first face that names a ghost or halo cell; group -1: no face does.
  struct Namer {
    int group = -1, face = 0;
  };
  std::vector<Namer> namer;       ///< [1..nCell]
  std::vector<char> centreSound;  ///< [1..nCell] finite
  std::vector<char> nodeSound;    ///< [1..nNodeUsed] finite
};

}  // namespace host_check
