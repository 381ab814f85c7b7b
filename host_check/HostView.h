#pragma once

#include <array>
#include <string>
#include <vector>

#include "host/Zyn3dGV.h"
#include "host_check/Vec3.h"

namespace host_check {

/// What lies on the far side of a group's faces.
enum class FarSide { Interior, Ghost, Halo };

/// One group of faces as the host lends it, and what the checks have found out about each face. A mark [f] is
/// false until a check has set it, so nothing is taken for sound that was not looked at.
struct FaceGroupView {
  std::string word;        ///< "wall", as in "wall face 12"
  std::string prefix;      ///< "ijWall", with which the names of the arrays begin
  std::string countName;   ///< "NWall"
  std::string weightName;  ///< "Lamda"; empty: the group has no weights and no types
  std::string typeName;
  int code;  ///< in CellFaceType
  FarSide farSide;
  int count;  ///< never below 0

  int const *cv, *other;  ///< [1..count], like all that follow
  Vec3Arrays area, centre;
  double const* weight;
  int const* type;
  int* const* nodes;

  std::vector<char> cvSound = {};      ///< cv[f] is an interior cell
  std::vector<char> otherSound = {};   ///< other[f] is a cell of the right kind
  std::vector<char> areaSound = {};    ///< finite and not zero
  std::vector<char> turned = {};       ///< the area vector points the wrong way
  std::vector<char> centreSound = {};  ///< finite
  std::vector<char> centreAway = {};   ///< finite, but not where the face is
  std::vector<char> nodesSound = {};   ///< the row can be read and all its nodes are in range

  bool PairSound(int f) const { return cvSound[f] && otherSound[f]; }
  /// Only the `cv` side takes what goes through the face.
  bool IsOneSided(int f) const { return farSide == FarSide::Interior && type != nullptr && type[f] == 1; }
  std::string Name(int f) const { return word + " face " + std::to_string(f); }
};

/// The host's data of one partition with counts that can be relied on: negative ones are taken for 0, and there
/// are no more interior cells than cells. Borrows all arrays.
class HostView {
 public:
  static constexpr int kGroups = 6;

  /// Copies counts and pointers. Reads no array and allocates nothing that grows with a count. Both may be
  /// null: everything is then empty.
  HostView(CZYN3DFiniteVolumeMesh const* meshOrNull, CPartitionFace_DLL* partitionFaces);

  /// Makes room for the marks. Comes before any check that sets or reads one.
  /// @pre the counts are plausible
  void AddMarks();

  bool IsInterior(int c) const { return c >= 1 && c <= nInner; }
  bool IsBeyond(int c) const { return c > nInner && c <= nCell; }  ///< a ghost or halo cell
  bool IsNode(int n) const { return n >= 1 && n <= nNode; }
  int GroupOfCode(int code) const;  ///< index into groups, -1: none has the code
  FaceGroupView& PartitionGroup() { return groups[kGroups - 1]; }
  FaceGroupView const& PartitionGroup() const { return groups[kGroups - 1]; }
  std::string CellName(int c) const;  ///< "ghost cell 70"

  CZYN3DFiniteVolumeMesh const mesh;  ///< a copy of the record; its arrays are the host's
  int const nCell, nInner, nNode;
  Vec3Arrays const nodes, centres;
  std::array<FaceGroupView, kGroups> groups;  ///< inner, wall, inlet, outlet, symmetry, partition

  /// The highest node that a face names. Nothing is read of nodes behind it: there may be fewer
  /// than the count says.
  int nNodeUsed = 0;

  /// The face that named a ghost or halo cell first; group -1: no face names it.
  struct Namer {
    int group = -1, face = 0;
  };
  std::vector<Namer> namer;       ///< [1..nCell]
  std::vector<char> centreSound;  ///< [1..nCell] finite
  std::vector<char> nodeSound;    ///< [1..nNodeUsed] finite
};

}  // namespace host_check
