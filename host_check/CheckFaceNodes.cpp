#include <algorithm>
#include <vector>

#include "host_check/LocalChecks.h"
#include "host_check/Text.h"

namespace host_check {
namespace {

// Far below any angle of a usable face and far above round-off.
constexpr double kLeastSine = 1e-10;
// A warped face's corner may lean away from its area vector, but not by more than 60 degrees.
constexpr double kLeastCosine = 0.5;

class FaceNodeCheck {
 public:
  FaceNodeCheck(HostView& view, HostCheckReport& report) : view_(view), report_(report) {}

  void CheckGroup(FaceGroupView& group) {
    if (group.nodes == nullptr) return;
    for (int f = 1; f <= group.count; ++f) {
      if (!LengthIsSound(group, f) || !EntriesAreSound(group, f)) continue;
      group.nodesSound[f] = 1;
      CheckPlane(group, f);
    }
  }

 private:
  /// A row that claims more nodes than its cell has is not read any further: its length is no length.
  int LongestRow(const FaceGroupView& group, int f) const {
    const int* number = view_.mesh.CellLnodsNumber;
    if (number == nullptr || !group.cvSound[f] || number[group.cv[f]] < 0) return view_.nNode;
    return std::min(view_.nNode, number[group.cv[f]]);
  }

  bool LengthIsSound(const FaceGroupView& group, int f) {
    const int* row = group.nodes[f];
    if (row == nullptr) {
      report_.Add(HostBreach::MissingRow, f,
                  [&] { return Text(group.Name(f), ": row ", f, " of ", group.prefix, "Lnods is null"); });
      return false;
    }
    if (row[0] < 3) {
      report_.Add(HostBreach::FewFaceNodes, f, [&] {
        return Text(group.Name(f), " has ", row[0], " nodes in ", group.prefix, "Lnods, fewer than 3");
      });
      return false;
    }
    const int longest = LongestRow(group, f);
    if (row[0] <= longest) return true;
    report_.Add(HostBreach::RowLength, f, [&] {
      return Text(group.Name(f), " has ", row[0], " nodes in ", group.prefix, "Lnods, more than the ",
                  longest, " of its cell (CellLnodsNumber) or of the mesh (NNode)");
    });
    return false;
  }

  bool EntriesAreSound(const FaceGroupView& group, int f) {
    const int* row = group.nodes[f];
    bool areInRange = true;
    for (int k = 1; k <= row[0]; ++k) {
      if (view_.IsNode(row[k])) continue;
      areInRange = false;
      report_.Add(HostBreach::IndexOutOfRange, f, [&] {
        return Text(group.Name(f), ": node ", k, " of its row of ", group.prefix, "Lnods is ", row[k],
                    ", outside 1..", view_.nNode);
      });
    }
    if (areInRange) CheckRepeats(group, f);
    return areInRange;
  }

  void CheckRepeats(const FaceGroupView& group, int f) {
    const int* row = group.nodes[f];
    sorted_.assign(row + 1, row + 1 + row[0]);
    std::sort(sorted_.begin(), sorted_.end());
    const auto twice = std::adjacent_find(sorted_.begin(), sorted_.end());
    if (twice == sorted_.end()) return;
    report_.Add(HostBreach::RowEntryTwice, f, [&] {
      return Text(group.Name(f), " has node ", *twice, " twice in its row of ", group.prefix, "Lnods");
    });
  }

  /// Interpolation to faces takes the first three nodes for the face's plane.
  void CheckPlane(const FaceGroupView& group, int f) {
    const int* row = group.nodes[f];
    if (!view_.nodeSound[row[1]] || !view_.nodeSound[row[2]] || !view_.nodeSound[row[3]]) return;
    const Vec3 a = view_.nodes[row[2]] - view_.nodes[row[1]], b = view_.nodes[row[3]] - view_.nodes[row[1]];
    const Vec3 normal = Cross(a, b);
    if (!(Norm(normal) > kLeastSine * Norm(a) * Norm(b))) {
      report_.Add(HostBreach::NodesSpanNoPlane, f, [&] {
        return Text(group.Name(f), ": its first three nodes ", row[1], ", ", row[2], ", ", row[3],
                    " lie in a line");
      });
      return;
    }
    if (!group.areaSound[f]) return;
    const Vec3 area = group.area[f];
    const double cosine = std::abs(Dot(normal, area)) / (Norm(normal) * Norm(area));
    if (cosine >= kLeastCosine) return;
    report_.Add(HostBreach::NodesOffPlane, f, [&] {
      return Text(group.Name(f), ": the plane of its first three nodes ", row[1], ", ", row[2], ", ", row[3],
                  " is not that of its area vector ", area, " (cosine ", cosine, ")");
    });
  }

  HostView& view_;
  HostCheckReport& report_;
  std::vector<int> sorted_;
};

}  // namespace

void CheckFaceNodes(HostView& view, HostCheckReport& report) {
  FaceNodeCheck check(view, report);
  for (FaceGroupView& group : view.groups) check.CheckGroup(group);
}

}  // namespace host_check
