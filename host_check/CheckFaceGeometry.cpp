#include <algorithm>
#include <cmath>

#include "host_check/FaceOutline.h"
#include "host_check/LocalChecks.h"
#include "host_check/Text.h"

namespace host_check {
namespace {

class FaceGeometryCheck {
 public:
  FaceGeometryCheck(HostView& view, HostCheckOptions const& options, HostCheckReport& report)
      : view_(view), options_(options), report_(report) {}

  void CheckGroup(CheckedFaceGroup& group) {
    for (int f = 1; f <= group.count; ++f) {
      CompareWithNodes(group, f);
      if (!group.PairSound(f) || !group.areaSound[f] || !view_.centreSound[group.cv[f]]) continue;
      if (group.LeadsToInterior()) {
        CheckBetweenCells(group, f);
      } else if (group.centreSound[f]) {
        CheckOutwards(group, f);
        if (!group.turned[f] && !group.centreAway[f]) CheckCellBeyond(group, f);
      }
    }
  }

 private:
  /// Compares area and centre with the nodes, if the nodes lie in the plane of the area vector.
  void CompareWithNodes(CheckedFaceGroup& group, int f) {
    if (!group.nodesSound[f] || !group.areaSound[f]) return;
    int const* row = group.nodes[f];
    if (!outline_.Build(view_, row + 1, row + 1 + row[0], group.area[f])) return;
    CompareArea(group, f);
    if (group.centreSound[f]) CheckFaceCentre(group, f);
  }

  /// The area vector of a closed polygon does not depend on the surface that it bounds: seen along the
  /// vector, the polygon of the nodes has the vector's length as its area, even if the face is warped.
  void CompareArea(CheckedFaceGroup const& group, int f) {
    double const area = Norm(group.area[f]), spanned = outline_.Area();
    double const slack = options_.areaTolerance * std::max(area, spanned);
    // The polygon of a face that crosses itself, as in strongly compressed meshes, spans less than the hull
    // of its corners.
    if (std::abs(area - outline_.AreaInRowOrder()) <= slack) return;
    bool const isTooSmall = outline_.IsWholeFace() && area < spanned - slack;
    if (area <= spanned + slack && !isTooSmall) return;
    report_.Add(HostBreach::AreaDisagrees, f, [&] {
      return Text("the area vector of ", group.Name(f), " has the length ", area, ", but its nodes span ",
                  spanned);
    });
  }

  /// Skips a face that fills little of its outline: if it crosses itself, its centroid may lie anywhere.
  void CheckFaceCentre(CheckedFaceGroup& group, int f) {
    constexpr double kLeastFilled = 0.7;
    if (outline_.AreaInRowOrder() < kLeastFilled * outline_.Area() &&
        Norm(group.area[f]) < kLeastFilled * outline_.Area())
      return;
    Vec3 const centre = group.centre[f];
    double const away = std::max(outline_.Outside(centre), outline_.OffPlane(centre));
    if (away <= options_.centreTolerance) return;
    group.centreAway[f] = 1;
    report_.Add(HostBreach::FaceCentreAway, f, [&] {
      return Text("the centre ", centre, " of ", group.Name(f), " lies away from its nodes: outside by ",
                  away, " of the face's width");
    });
  }

  /// S.(x_other - x_cv) > 0 for an inner face.
  void CheckBetweenCells(CheckedFaceGroup& group, int f) {
    int const cv = group.cv[f], other = group.other[f];
    if (!view_.centreSound[other]) return;
    double const product = Dot(group.area[f], view_.centres[other] - view_.centres[cv]);
    if (product > 0.0) return;
    group.turned[f] = 1;
    report_.Add(HostBreach::AreaWrongWay, f, [&] {
      return Text(group.Name(f), ": its area vector ", group.area[f], " does not point from cell ", cv, " (",
                  group.Names().prefix, "CV) to cell ", other, " (", group.Names().prefix,
                  "): its product with the line of centres is ", product);
    });
  }

  /// S.(x_face - x_cv) > 0 for a face to a ghost or halo cell; the position of that cell does not enter.
  void CheckOutwards(CheckedFaceGroup& group, int f) {
    int const cv = group.cv[f];
    double const product = Dot(group.area[f], group.centre[f] - view_.centres[cv]);
    if (product > 0.0) return;
    group.turned[f] = 1;
    report_.Add(HostBreach::AreaWrongWay, f, [&] {
      return Text(group.Name(f), ": its area vector ", group.area[f], " does not point out of cell ", cv,
                  ": its product with the line from the cell's to the face's centre is ", product);
    });
  }

  /// A ghost cell may lie in the face itself or anywhere beyond the plane of the face.
  void CheckCellBeyond(CheckedFaceGroup const& group, int f) {
    int const cv = group.cv[f], other = group.other[f];
    if (!view_.centreSound[other]) return;
    Vec3 const area = group.area[f];
    Vec3 const toGhost = view_.centres[other] - group.centre[f], toCell = view_.centres[cv] - group.centre[f];
    double const depth = Dot(area, toGhost) / Norm(area);
    if (depth >= -options_.positionTolerance * Norm(toCell)) {
      if (group.LeadsToGhosts()) CheckGhostBeside(group, f, toGhost, toCell);
      return;
    }
    report_.Add(HostBreach::GhostNotBeyondFace, other, [&] {
      return Text("the centre ", view_.centres[other], " of ", view_.CellName(other), " does not lie beyond ",
                  group.Name(f), " but ", -depth, " inside it");
    });
  }

  /// Solvers put a ghost cell at the face centre or at the cell centre, mirrored or not. None of these lies
  /// farther to the side of the face centre than the cell centre does; twice that distance leaves room for
  /// other choices.
  void CheckGhostBeside(CheckedFaceGroup const& group, int f, Vec3 const& toGhost, Vec3 const& toCell) {
    constexpr double kSide = 2.0, kDepth = 0.25;
    Vec3 const normal = (1.0 / Norm(group.area[f])) * group.area[f];
    auto const side = [&](Vec3 const& v) { return Norm(v - Dot(v, normal) * normal); };
    if (!(side(toGhost) > kSide * side(toCell) + kDepth * std::abs(Dot(toCell, normal)))) return;
    int const ghost = group.other[f];
    report_.Add(HostBreach::GhostBesideFace, ghost, [&] {
      return Text("the centre ", view_.centres[ghost], " of ", view_.CellName(ghost), " lies ", side(toGhost),
                  " to the side of the centre of ", group.Name(f));
    });
  }

  HostView& view_;
  HostCheckOptions const& options_;
  HostCheckReport& report_;
  FaceOutline outline_;
};

/// The position of the face between the centres of its cells, 0 at `cv` and 1 at `other`: projected on the
/// area vector, and by the distances to the face centre.
struct GeometricWeight {
  double projected, byDistance;
};

GeometricWeight WeightOf(HostView const& view, CheckedFaceGroup const& group, int f) {
  Vec3 const fromCv = group.centre[f] - view.centres[group.cv[f]];
  Vec3 const toOther = view.centres[group.other[f]] - group.centre[f];
  double const a = Dot(group.area[f], fromCv), b = Dot(group.area[f], toOther);
  return {a / (a + b), Norm(fromCv) / (Norm(fromCv) + Norm(toOther))};
}

/// Whether the weight is that of the other side: 1 - w is one of the geometric weights, and w is far from
/// both. Weights of other definitions pass.
bool IsOfOtherSide(double weight, GeometricWeight const& geometric) {
  constexpr double kClose = 1e-3, kFar = 0.05;
  bool const matches = std::abs(1.0 - weight - geometric.projected) < kClose ||
                       std::abs(1.0 - weight - geometric.byDistance) < kClose;
  return matches && std::abs(weight - geometric.projected) > kFar &&
         std::abs(weight - geometric.byDistance) > kFar;
}

/// Whether the weight is none of the usual ones: not the arithmetic mean, and not near the geometric weights.
bool IsFarFrom(double weight, GeometricWeight const& geometric) {
  constexpr double kFar = 0.3;
  double const low = std::min({geometric.projected, geometric.byDistance, 0.5});
  double const high = std::max({geometric.projected, geometric.byDistance, 0.5});
  return weight < low - kFar || weight > high + kFar;
}

void CheckWeight(HostView const& view, CheckedFaceGroup const& group, int f, HostCheckReport& report) {
  double const weight = group.weight[f];
  if (!(weight >= 0.0 && weight <= 1.0)) {
    report.Add(HostBreach::WeightOutOfRange, f, [&] {
      return Text(group.Name(f), ": ", group.Names().weightName, '[', f, "] = ", weight, " is outside 0..1");
    });
    return;
  }
  if (!group.PairSound(f) || !group.areaSound[f] || !group.centreSound[f]) return;
  if (!view.centreSound[group.cv[f]] || !view.centreSound[group.other[f]]) return;
  if (group.centreAway[f] || group.turned[f]) return;
  GeometricWeight const geometric = WeightOf(view, group, f);
  if (!IsOfOtherSide(weight, geometric)) {
    if (!IsFarFrom(weight, geometric)) return;
    report.Add(HostBreach::WeightAway, f, [&] {
      return Text(group.Name(f), ": ", group.Names().weightName, '[', f, "] = ", weight,
                  " is far from the place of the face between its cells, ", geometric.projected);
    });
    return;
  }
  report.Add(HostBreach::WeightOfOtherSide, f, [&] {
    return Text(group.Name(f), ": ", group.Names().weightName, '[', f, "] = ", weight, " is the weight of ",
                group.Names().prefix, "CV, that of ", group.Names().prefix, " is ", geometric.projected);
  });
}

}  // namespace

void CheckFaceGeometry(HostView& view, HostCheckOptions const& options, HostCheckReport& report) {
  FaceGeometryCheck check(view, options, report);
  for (CheckedFaceGroup& group : view.groups) check.CheckGroup(group);
}

void CheckWeights(HostView const& view, HostCheckReport& report) {
  for (CheckedFaceGroup const& group : view.groups) {
    if (group.weight == nullptr) continue;
    for (int f = 1; f <= group.count; ++f) CheckWeight(view, group, f, report);
  }
}

}  // namespace host_check
