#include "host_check/LocalChecks.h"
#include "host_check/Text.h"

namespace host_check {
namespace {

void TellNotFinite(HostCheckReport& report, int entity, std::string const& what, Vec3 const& value) {
  report.Add(HostBreach::NotFinite, entity, [&] { return Text(what, " is ", value); });
}

void CheckCellCentres(HostView& view, HostCheckReport& report) {
  if (!view.centres.AreThere()) return;
  for (int c = 1; c <= view.nCell; ++c) {
    // Nothing reads the centre of a cell that no face leads to.
    if (!view.IsInterior(c) && view.namer[c].group < 0) continue;
    view.centreSound[c] = IsFinite(view.centres[c]) ? 1 : 0;
    if (!view.centreSound[c]) {
      TellNotFinite(report, c, "the centre of " + view.CellName(c), view.centres[c]);
    }
  }
}

void CheckFaceCentres(CheckedFaceGroup& group, HostCheckReport& report) {
  if (!group.centre.AreThere()) return;
  for (int f = 1; f <= group.count; ++f) {
    group.centreSound[f] = IsFinite(group.centre[f]) ? 1 : 0;
    if (!group.centreSound[f]) {
      TellNotFinite(report, f, "the centre of " + group.Name(f), group.centre[f]);
    }
  }
}

void CheckNodes(HostView& view, HostCheckReport& report) {
  if (!view.nodes.AreThere()) return;
  for (int n = 1; n <= view.nNodeUsed; ++n) {
    view.nodeSound[n] = IsFinite(view.nodes[n]) ? 1 : 0;
    if (!view.nodeSound[n]) TellNotFinite(report, n, Text("the position of node ", n), view.nodes[n]);
  }
}

}  // namespace

void CheckPositions(HostView& view, HostCheckOptions const& options, HostCheckReport& report) {
  CheckCellCentres(view, report);
  for (CheckedFaceGroup& group : view.groups) CheckFaceCentres(group, report);
  if (options.nodeTables) CheckNodes(view, report);
}

void CheckAreas(HostView& view, HostCheckReport& report) {
  for (CheckedFaceGroup& group : view.groups) {
    if (!group.area.AreThere()) continue;
    for (int f = 1; f <= group.count; ++f) {
      Vec3 const area = group.area[f];
      if (!IsFinite(area)) {
        TellNotFinite(report, f, "the area vector of " + group.Name(f), area);
      } else if (Norm(area) > 0.0) {
        group.areaSound[f] = 1;
      } else {
        report.Add(HostBreach::ZeroArea, f, [&] { return group.Name(f) + " has a zero area vector"; });
      }
    }
  }
}

}  // namespace host_check
