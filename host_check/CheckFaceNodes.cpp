#include <algorithm>
#include <vector>

#include "host_check/LocalChecks.h"
#include "host_check/Text.h"

namespace host_check {
namespace {

// Far below the sine of any angle of a usable face, and far above round-off.
constexpr double kLeastSine = 1e-10;
// A corner of a warped face may lean away from the area vector, but not by more than 60 degrees.
constexpr double kLeastCosine = 0.5;

class FaceRowCheck {
 public:
  FaceRowCheck(HostView& view, HostCheckReport& report) : view_(view), report_(report) {}

  void CheckGroup(CheckedFaceGroup& group) {
    if (group.nodes == nullptr) {
      allAreSound_ = allAreSound_ && group.count == 0;
      return;
    }
    for (int f = 1; f <= group.count; ++f) {
      group.nodesSound[f] = LengthIsSound(group, f) && EntriesAreSound(group, f) ? 1 : 0;
      allAreSound_ = allAreSound_ && group.nodesSound[f];
      if (!group.nodesSound[f]) continue;
      int const* row = group.nodes[f];
      view_.nNodeUsed = std::max(view_.nNodeUsed, *std::max_element(row + 1, row + 1 + row[0]));
    }
  }

  /// Operators read the positions of all nodes 1..NNode, so a count above the last node in use is suspicious.
  /// A partition with neighbours may have more nodes: the other nodes of its halo cells.
  void CheckHighest() {
    if (!allAreSound_ || view_.PartitionGroup().count > 0 || view_.nNodeUsed == 0 ||
        view_.nNodeUsed == view_.nNode)
      return;
    report_.Add(HostBreach::BadCount, 0, [&] {
      return Text("NNode = ", view_.nNode, ", but no face names a node above ", view_.nNodeUsed);
    });
  }

 private:
  /// A row that claims more nodes than its cell has is not read: its first element cannot be a length.
  int LongestRow(CheckedFaceGroup const& group, int f) const {
    int const* number = view_.mesh.CellLnodsNumber;
    if (number == nullptr || !group.cvSound[f] || number[group.cv[f]] < 0) return view_.nNode;
    return std::min(view_.nNode, number[group.cv[f]]);
  }

  bool LengthIsSound(CheckedFaceGroup const& group, int f) {
    int const* row = group.nodes[f];
    if (row == nullptr) {
      report_.Add(HostBreach::MissingRow, f, [&] {
        return Text(group.Name(f), ": row ", f, " of ", group.Names().prefix, "Lnods is null");
      });
      return false;
    }
    if (row[0] < 3) {
      report_.Add(HostBreach::FewFaceNodes, f, [&] {
        return Text(group.Name(f), " has ", row[0], " nodes in ", group.Names().prefix,
                    "Lnods, fewer than 3");
      });
      return false;
    }
    int const longest = LongestRow(group, f);
    if (row[0] <= longest) return true;
    report_.Add(HostBreach::RowLength, f, [&] {
      return Text(group.Name(f), " has ", row[0], " nodes in ", group.Names().prefix, "Lnods, more than the ",
                  longest, " of its cell (CellLnodsNumber) or of the mesh (NNode)");
    });
    return false;
  }

  bool EntriesAreSound(CheckedFaceGroup const& group, int f) {
    int const* row = group.nodes[f];
    bool areInRange = true;
    for (int k = 1; k <= row[0]; ++k) {
      if (view_.IsNode(row[k])) continue;
      areInRange = false;
      report_.Add(HostBreach::IndexOutOfRange, f, [&] {
        return Text(group.Name(f), ": node ", k, " of its row of ", group.Names().prefix, "Lnods is ", row[k],
                    ", outside 1..", view_.nNode);
      });
    }
    if (areInRange) CheckRepeats(group, f);
    return areInRange;
  }

  void CheckRepeats(CheckedFaceGroup const& group, int f) {
    int const* row = group.nodes[f];
    sorted_.assign(row + 1, row + 1 + row[0]);
    std::sort(sorted_.begin(), sorted_.end());
    auto const twice = std::adjacent_find(sorted_.begin(), sorted_.end());
    if (twice == sorted_.end()) return;
    report_.Add(HostBreach::RowEntryTwice, f, [&] {
      return Text(group.Name(f), " has node ", *twice, " twice in its row of ", group.Names().prefix,
                  "Lnods");
    });
  }

  HostView& view_;
  HostCheckReport& report_;
  bool allAreSound_ = true;
  std::vector<int> sorted_;
};

/// The contract lets operators take the plane of the first three nodes as the face's plane. One single step of the
/// operator of faces does; no set-up calls it.
void CheckPlane(HostView const& view, CheckedFaceGroup const& group, int f, HostCheckReport& report) {
  int const* row = group.nodes[f];
  if (!view.nodeSound[row[1]] || !view.nodeSound[row[2]] || !view.nodeSound[row[3]]) return;
  Vec3 const a = view.nodes[row[2]] - view.nodes[row[1]], b = view.nodes[row[3]] - view.nodes[row[1]];
  Vec3 const normal = Cross(a, b);
  if (!(Norm(normal) > kLeastSine * Norm(a) * Norm(b))) {
    report.Add(HostBreach::NodesSpanNoPlane, f, [&] {
      return Text(group.Name(f), ": its first three nodes ", row[1], ", ", row[2], ", ", row[3],
                  " lie in a line. Only Set_VirtualNode_Coord_InCellPE would need their plane; gradients and "
                  "interpolation do not");
    });
    return;
  }
  if (!group.areaSound[f]) return;
  Vec3 const area = group.area[f];
  double const cosine = std::abs(Dot(normal, area)) / (Norm(normal) * Norm(area));
  if (cosine >= kLeastCosine) return;
  report.Add(HostBreach::NodesOffPlane, f, [&] {
    return Text(group.Name(f), ": the plane of its first three nodes ", row[1], ", ", row[2], ", ", row[3],
                " is not that of its area vector ", area, " (cosine ", cosine, ")");
  });
}

}  // namespace

void CheckFaceRows(HostView& view, HostCheckReport& report) {
  FaceRowCheck check(view, report);
  for (CheckedFaceGroup& group : view.groups) check.CheckGroup(group);
  check.CheckHighest();
  view.nodeSound.assign(static_cast<std::size_t>(view.nNodeUsed) + 1, 0);
}

void CheckFaceNodes(HostView const& view, HostCheckReport& report) {
  for (CheckedFaceGroup const& group : view.groups) {
    for (int f = 1; f <= group.count; ++f) {
      if (group.nodesSound[f]) CheckPlane(view, group, f, report);
    }
  }
}

}  // namespace host_check
