#include <algorithm>
#include <cmath>
#include <vector>

#include "host_check/Bounds.h"
#include "host_check/LocalChecks.h"
#include "host_check/Text.h"

namespace host_check {
namespace {

class CellGeometryCheck {
 public:
  CellGeometryCheck(HostView const& view, CellFaces const& cellFaces, CellNodes const& cellNodes,
                    HostCheckOptions const& options, HostCheckReport& report)
      : view_(view), cellFaces_(cellFaces), cellNodes_(cellNodes), options_(options), report_(report) {}

  void CheckCell(int c) {
    bool const closes = CheckClosure(c);
    if (view_.mesh.Volume != nullptr && CheckVolume(c) && closes) AddEnclosed(c);
    CheckCentre(c);
  }

  /// Call it after all cells. A factor common to most cells is reported once; each cell is then compared
  /// apart from it.
  void CompareVolumes() {
    double const factor = CommonFactor();
    if (factor != 1.0) {
      report_.Add(HostBreach::VolumeDisagrees, 0, [&] {
        return Text("the volumes are ", factor, " times what the faces enclose (median of ", enclosed_.size(),
                    " cells)");
      });
    }
    for (Enclosed const& cell : enclosed_) CompareVolume(cell.cell, cell.volume, factor);
  }

 private:
  /// Whether |sum of S| is small compared with sum of |S|. A cell is skipped if the area vector of one of its
  /// faces has already been reported: it cannot close.
  bool CheckClosure(int c) {
    Vec3 sum;
    double surface = 0.0;
    for (auto const* entry = cellFaces_.begin(c); entry != cellFaces_.end(c); ++entry) {
      CheckedFaceGroup const& group = view_.groups[entry->group];
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
    double const volume = view_.mesh.Volume[c];
    if (std::isfinite(volume) && volume > 0.0) return true;
    report_.Add(HostBreach::BadVolume, c,
                [&] { return Text("interior cell ", c, " has the volume ", volume); });
    return false;
  }

  struct Enclosed {
    int cell;
    double volume;
  };

  /// V = 1/3 sum of S.(x_face - x_cell), exact for plane faces.
  void AddEnclosed(int c) {
    if (!view_.centreSound[c]) return;
    double sum = 0.0;
    for (auto const* entry = cellFaces_.begin(c); entry != cellFaces_.end(c); ++entry) {
      CheckedFaceGroup const& group = view_.groups[entry->group];
      if (!group.centreSound[entry->face] || group.centreAway[entry->face]) return;
      if (!entry->isRequired) continue;
      sum += entry->sign * Dot(group.area[entry->face], group.centre[entry->face] - view_.centres[c]);
    }
    enclosed_.push_back({c, sum / 3.0});
  }

  /// The median of volume over enclosed volume; 1 if it is near 1 or if there are too few cells for a median
  /// to mean anything.
  double CommonFactor() const {
    constexpr std::size_t kFewest = 8;
    if (enclosed_.size() < kFewest) return 1.0;
    std::vector<double> ratios;
    ratios.reserve(enclosed_.size());
    for (Enclosed const& cell : enclosed_) {
      double const ratio = view_.mesh.Volume[cell.cell] / cell.volume;
      if (std::isfinite(ratio)) ratios.push_back(ratio);
    }
    if (ratios.size() < kFewest) return 1.0;
    auto const middle = ratios.begin() + static_cast<std::ptrdiff_t>(ratios.size() / 2);
    std::nth_element(ratios.begin(), middle, ratios.end());
    bool const isFactor = *middle > 0.0 && std::abs(*middle - 1.0) > options_.commonVolumeTolerance;
    return isFactor ? *middle : 1.0;
  }

  void CompareVolume(int c, double enclosed, double factor) {
    double const volume = view_.mesh.Volume[c], expected = factor * enclosed;
    if (std::abs(volume - expected) <= options_.volumeTolerance * std::max(volume, std::abs(expected)))
      return;
    report_.Add(HostBreach::VolumeDisagrees, c, [&] {
      return Text("interior cell ", c, " has the volume ", volume, ", but its faces enclose ", enclosed);
    });
  }

  void CheckCentre(int c) {
    if (!view_.centreSound[c]) return;
    if (!LiesInBoxOfNodes(c)) {
      report_.Add(HostBreach::CellCentreAway, c, [&] {
        return Text("the centre ", view_.centres[c], " of interior cell ", c, " lies away from its nodes");
      });
    } else if (CellFaces::Entry const* face = FaceThatExcludesCentre(c); face != nullptr) {
      report_.Add(HostBreach::CellCentreAway, c, [&] {
        return Text("the centre ", view_.centres[c], " of interior cell ", c,
                    " lies outside the cell, beyond ", view_.groups[face->group].Name(face->face));
      });
    }
  }

  bool LiesInBoxOfNodes(int c) const {
    Bounds bounds;
    return !cellNodes_.AreKnown(c) || !bounds.AddNodes(view_, cellNodes_.begin(c), cellNodes_.end(c)) ||
           bounds.Has(view_.centres[c], options_.centreTolerance);
  }

  /// A face that has the cell's centre on its far side although all other face centres lie on the near side:
  /// at such a face the cell is convex, so its centre must lie on the near side, too. Null: there is none, or
  /// too much of the cell is unsound.
  CellFaces::Entry const* FaceThatExcludesCentre(int c) const {
    constexpr int kMostFaces = 64;  // the work grows with the square
    if (cellFaces_.Count(c) > kMostFaces) return nullptr;
    for (auto const* entry = cellFaces_.begin(c); entry != cellFaces_.end(c); ++entry) {
      CheckedFaceGroup const& group = view_.groups[entry->group];
      int const f = entry->face;
      if (!group.areaSound[f] || group.turned[f] || !group.centreSound[f] || group.centreAway[f])
        return nullptr;
    }
    for (auto const* entry = cellFaces_.begin(c); entry != cellFaces_.end(c); ++entry) {
      if (entry->isRequired && ExcludesCentre(c, *entry)) return entry;
    }
    return nullptr;
  }

  bool ExcludesCentre(int c, CellFaces::Entry const& face) const {
    CheckedFaceGroup const& group = view_.groups[face.group];
    auto const depth = [&](Vec3 const& p) {
      return face.sign * Dot(group.area[face.face], group.centre[face.face] - p);
    };
    double least = 0.0, greatest = 0.0;
    for (auto const* entry = cellFaces_.begin(c); entry != cellFaces_.end(c); ++entry) {
      double const ofFace = depth(view_.groups[entry->group].centre[entry->face]);
      least = std::min(least, ofFace);
      greatest = std::max(greatest, ofFace);
    }
    double const slack = options_.centreTolerance * greatest;
    return least >= -slack && depth(view_.centres[c]) < -slack;
  }

  HostView const& view_;
  CellFaces const& cellFaces_;
  CellNodes const& cellNodes_;
  HostCheckOptions const& options_;
  HostCheckReport& report_;
  std::vector<Enclosed> enclosed_;
};

}  // namespace

void CheckCellGeometry(HostView const& view, CellFaces const& cellFaces, CellNodes const& cellNodes,
                       HostCheckOptions const& options, HostCheckReport& report) {
  CellGeometryCheck check(view, cellFaces, cellNodes, options, report);
  for (int c = 1; c <= view.nInner; ++c) check.CheckCell(c);
  check.CompareVolumes();
}

}  // namespace host_check
