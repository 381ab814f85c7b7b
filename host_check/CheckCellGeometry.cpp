#include <algorithm>
#include <cmath>

#include "host_check/Bounds.h"
#include "host_check/LocalChecks.h"
#include "host_check/Text.h"

namespace host_check {
namespace {

class CellGeometryCheck {
 public:
  CellGeometryCheck(const HostView& view, const CellFaces& cellFaces, const CellNodes& cellNodes,
                    const HostCheckOptions& options, HostCheckReport& report)
      : view_(view), cellFaces_(cellFaces), cellNodes_(cellNodes), options_(options), report_(report) {}

  void CheckCell(int c) {
    const bool closes = CheckClosure(c);
    if (view_.mesh.Volume != nullptr && CheckVolume(c) && closes) CompareVolume(c);
    CheckCentre(c);
  }

 private:
  /// |sum of S| small beside sum of |S|. A cell with a face that was told for its area vector is left alone:
  /// it cannot close.
  bool CheckClosure(int c) {
    Vec3 sum;
    double surface = 0.0;
    for (const auto* entry = cellFaces_.begin(c); entry != cellFaces_.end(c); ++entry) {
      const FaceGroupView& group = view_.groups[entry->group];
      if (!group.areaSound[entry->face] || group.turned[entry->face]) return false;
      if (!entry->isRequired) continue;
      sum = sum + entry->sign * group.area[entry->face];
      surface += Norm(group.area[entry->face]);
    }
    if (surface == 0.0) {
      report_.Add(HostBreach::CellNotClosed, c,
                  [&] { return Text("interior cell ", c, ": no face of the face tables belongs to it"); });
      return false;
    }
    if (Norm(sum) <= options_.closureTolerance * surface) return true;
    report_.Add(HostBreach::CellNotClosed, c, [&] {
      return Text("interior cell ", c, " does not close: the outward area vectors of its ",
                  cellFaces_.Count(c), " faces sum to ", sum, ", its surface is ", surface);
    });
    return false;
  }

  bool CheckVolume(int c) {
    const double volume = view_.mesh.Volume[c];
    if (std::isfinite(volume) && volume > 0.0) return true;
    report_.Add(HostBreach::BadVolume, c,
                [&] { return Text("interior cell ", c, " has the volume ", volume); });
    return false;
  }

  /// V = 1/3 sum of S.(x_face - x_cell), exact where the faces are plane.
  void CompareVolume(int c) {
    if (!view_.centreSound[c]) return;
    double sum = 0.0;
    for (const auto* entry = cellFaces_.begin(c); entry != cellFaces_.end(c); ++entry) {
      const FaceGroupView& group = view_.groups[entry->group];
      if (!group.centreSound[entry->face]) return;
      if (!entry->isRequired) continue;
      sum += entry->sign * Dot(group.area[entry->face], group.centre[entry->face] - view_.centres[c]);
    }
    const double enclosed = sum / 3.0, volume = view_.mesh.Volume[c];
    if (std::abs(volume - enclosed) <= options_.volumeTolerance * std::max(volume, std::abs(enclosed)))
      return;
    report_.Add(HostBreach::VolumeDisagrees, c, [&] {
      return Text("interior cell ", c, " has the volume ", volume, ", but its faces enclose ", enclosed);
    });
  }

  void CheckCentre(int c) {
    if (!view_.centreSound[c] || !cellNodes_.AreKnown(c)) return;
    Bounds bounds;
    if (!bounds.AddNodes(view_, cellNodes_.begin(c), cellNodes_.end(c))) return;
    if (bounds.Has(view_.centres[c], options_.centreTolerance)) return;
    report_.Add(HostBreach::CellCentreAway, c, [&] {
      return Text("the centre ", view_.centres[c], " of interior cell ", c, " lies away from its nodes");
    });
  }

  const HostView& view_;
  const CellFaces& cellFaces_;
  const CellNodes& cellNodes_;
  const HostCheckOptions& options_;
  HostCheckReport& report_;
};

}  // namespace

void CheckCellGeometry(const HostView& view, const CellFaces& cellFaces, const CellNodes& cellNodes,
                       const HostCheckOptions& options, HostCheckReport& report) {
  CellGeometryCheck check(view, cellFaces, cellNodes, options, report);
  for (int c = 1; c <= view.nInner; ++c) check.CheckCell(c);
}

}  // namespace host_check
