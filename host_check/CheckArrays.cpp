#include "host_check/LocalChecks.h"
#include "host_check/Text.h"

namespace host_check {
namespace {

/// Reports arrays that are null although they have elements.
class ArrayCheck {
 public:
  explicit ArrayCheck(HostCheckReport& report) : report_(report) {}

  void Require(void const* array, std::string const& name, std::string const& countName, int count) const {
    if (count <= 0 || array != nullptr) return;
    report_.Add(HostBreach::MissingArray, 0,
                [&] { return Text(name, " is null, but ", countName, " = ", count); });
  }

  void Require(Vec3Arrays const& arrays, std::string const& prefix, std::string const& ending,
               std::string const& countName, int count) const {
    Require(arrays.x, prefix + "x" + ending, countName, count);
    Require(arrays.y, prefix + "y" + ending, countName, count);
    Require(arrays.z, prefix + "z" + ending, countName, count);
  }

 private:
  HostCheckReport& report_;
};

void CheckGroup(CheckedFaceGroup const& group, HostCheckOptions const& options, ArrayCheck const& check) {
  char const* const n = group.Names().countName;
  check.Require(group.cv, group.ArrayName("CV"), n, group.count);
  check.Require(group.other, group.Names().prefix, n, group.count);
  check.Require(group.area, group.ArrayName("S"), "", n, group.count);
  check.Require(group.centre, group.Names().prefix, "c", n, group.count);
  if (group.Names().weightName != nullptr) {
    check.Require(group.weight, group.Names().weightName, n, group.count);
    check.Require(group.type, group.Names().typeName, n, group.count);
  }
  if (options.nodeTables) check.Require(group.nodes, group.ArrayName("Lnods"), n, group.count);
}

}  // namespace

void CheckArrays(HostView const& view, HostCheckOptions const& options, HostCheckReport& report) {
  ArrayCheck const check(report);
  check.Require(view.centres, "", "c", "NCell", view.nCell);
  check.Require(view.mesh.Volume, "Volume", "NInnerCells", view.nInner);
  for (CheckedFaceGroup const& group : view.groups) CheckGroup(group, options, check);
  if (options.cellRows) {
    check.Require(view.mesh.CellCell, "CellCell", "NInnerCells", view.nInner);
    check.Require(view.mesh.CellFace, "CellFace", "NInnerCells", view.nInner);
    check.Require(view.mesh.CellFaceType, "CellFaceType", "NInnerCells", view.nInner);
  }
  if (options.nodeTables) {
    check.Require(view.nodes, "", "n", "NNode", view.nNode);
    check.Require(view.mesh.NodeCell, "NodeCell", "NNode", view.nNode);
    check.Require(view.mesh.CellLnods, "CellLnods", "NInnerCells", view.nInner);
    check.Require(view.mesh.CellLnodsNumber, "CellLnodsNumber", "NInnerCells", view.nInner);
  }
}

}  // namespace host_check
