#include <cmath>

#include "host_check/Bounds.h"
#include "host_check/LocalChecks.h"
#include "host_check/Text.h"

namespace host_check {
namespace {

class FaceGeometryCheck {
 public:
  FaceGeometryCheck(HostView& view, const HostCheckOptions& options, HostCheckReport& report)
      : view_(view), options_(options), report_(report) {}

  void CheckGroup(FaceGroupView& group) {
    for (int f = 1; f <= group.count; ++f) {
      CheckFaceCentre(group, f);
      if (!group.PairSound(f) || !group.areaSound[f] || !view_.centreSound[group.cv[f]]) continue;
      if (group.farSide == FarSide::Interior) {
        CheckBetweenCells(group, f);
      } else if (group.centreSound[f]) {
        CheckOutwards(group, f);
        if (!group.turned[f]) CheckCellBeyond(group, f);
      }
    }
  }

 private:
  void CheckFaceCentre(const FaceGroupView& group, int f) {
    if (!group.nodesSound[f] || !group.centreSound[f]) return;
    const int* row = group.nodes[f];
    Bounds bounds;
    if (!bounds.AddNodes(view_, row + 1, row + 1 + row[0])) return;
    if (bounds.Has(group.centre[f], options_.centreTolerance)) return;
    report_.Add(HostBreach::FaceCentreAway, f, [&] {
      return Text("the centre ", group.centre[f], " of ", group.Name(f), " lies away from its nodes");
    });
  }

  /// S.(x_other - x_cv) > 0 for an inner face.
  void CheckBetweenCells(FaceGroupView& group, int f) {
    const int cv = group.cv[f], other = group.other[f];
    if (!view_.centreSound[other]) return;
    const double product = Dot(group.area[f], view_.centres[other] - view_.centres[cv]);
    if (product > 0.0) return;
    group.turned[f] = 1;
    report_.Add(HostBreach::AreaWrongWay, f, [&] {
      return Text(group.Name(f), ": its area vector ", group.area[f], " does not point from cell ", cv, " (",
                  group.prefix, "CV) to cell ", other, " (", group.prefix,
                  "): its product with the line of centres is ", product);
    });
  }

  /// S.(x_face - x_cv) > 0 where a ghost or halo cell lies beyond; the place of that cell does not enter.
  void CheckOutwards(FaceGroupView& group, int f) {
    const int cv = group.cv[f];
    const double product = Dot(group.area[f], group.centre[f] - view_.centres[cv]);
    if (product > 0.0) return;
    group.turned[f] = 1;
    report_.Add(HostBreach::AreaWrongWay, f, [&] {
      return Text(group.Name(f), ": its area vector ", group.area[f], " does not point out of cell ", cv,
                  ": its product with the line from the cell's to the face's centre is ", product);
    });
  }

  /// A ghost cell may lie in the face itself or anywhere beyond its plane.
  void CheckCellBeyond(const FaceGroupView& group, int f) {
    const int cv = group.cv[f], other = group.other[f];
    if (!view_.centreSound[other]) return;
    const Vec3 area = group.area[f];
    const double depth = Dot(area, view_.centres[other] - group.centre[f]) / Norm(area);
    if (depth >= -options_.positionTolerance * Norm(group.centre[f] - view_.centres[cv])) return;
    report_.Add(HostBreach::GhostNotBeyondFace, other, [&] {
      return Text("the centre ", view_.centres[other], " of ", view_.CellName(other), " does not lie beyond ",
                  group.Name(f), " but ", -depth, " inside it");
    });
  }

  HostView& view_;
  const HostCheckOptions& options_;
  HostCheckReport& report_;
};

/// Where the face lies between the centres of its cells, 0 at `cv` and 1 at `other`: along the area vector, or
/// by the distances to the face centre.
struct GeometricWeight {
  double projected, byDistance;
};

GeometricWeight WeightOf(const HostView& view, const FaceGroupView& group, int f) {
  const Vec3 fromCv = group.centre[f] - view.centres[group.cv[f]];
  const Vec3 toOther = view.centres[group.other[f]] - group.centre[f];
  const double a = Dot(group.area[f], fromCv), b = Dot(group.area[f], toOther);
  return {a / (a + b), Norm(fromCv) / (Norm(fromCv) + Norm(toOther))};
}

/// Whether the weight is that of the other side: 1 - w is a geometric weight, and w is far from both. Other
/// definitions than these two are let pass.
bool IsOfOtherSide(double weight, const GeometricWeight& geometric) {
  constexpr double kClose = 1e-3, kFar = 0.05;
  const bool matches = std::abs(1.0 - weight - geometric.projected) < kClose ||
                       std::abs(1.0 - weight - geometric.byDistance) < kClose;
  return matches && std::abs(weight - geometric.projected) > kFar &&
         std::abs(weight - geometric.byDistance) > kFar;
}

void CheckWeight(const HostView& view, const FaceGroupView& group, int f, HostCheckReport& report) {
  const double weight = group.weight[f];
  if (!(weight >= 0.0 && weight <= 1.0)) {
    report.Add(HostBreach::WeightOutOfRange, f, [&] {
      return Text(group.Name(f), ": ", group.weightName, '[', f, "] = ", weight, " is outside 0..1");
    });
    return;
  }
  if (!group.PairSound(f) || !group.areaSound[f] || !group.centreSound[f]) return;
  if (!view.centreSound[group.cv[f]] || !view.centreSound[group.other[f]]) return;
  const GeometricWeight geometric = WeightOf(view, group, f);
  if (!IsOfOtherSide(weight, geometric)) return;
  report.Add(HostBreach::WeightOfOtherSide, f, [&] {
    return Text(group.Name(f), ": ", group.weightName, '[', f, "] = ", weight, " is the weight of ",
                group.prefix, "CV, that of ", group.prefix, " is ", geometric.projected);
  });
}

}  // namespace

void CheckFaceGeometry(HostView& view, const HostCheckOptions& options, HostCheckReport& report) {
  FaceGeometryCheck check(view, options, report);
  for (FaceGroupView& group : view.groups) check.CheckGroup(group);
}

void CheckWeights(const HostView& view, HostCheckReport& report) {
  for (const FaceGroupView& group : view.groups) {
    if (group.weight == nullptr) continue;
    for (int f = 1; f <= group.count; ++f) CheckWeight(view, group, f, report);
  }
}

}  // namespace host_check
