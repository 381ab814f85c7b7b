#include "host_check/CheckHostData.h"

#include "host_check/CellFaces.h"
#include "host_check/CellNodes.h"
#include "host_check/CollectiveChecks.h"
#include "host_check/HostView.h"
#include "host_check/LocalChecks.h"
#include "host_check/Text.h"

namespace host_check {
namespace {

void CheckObject(void const* object, char const* name, HostCheckReport& report) {
  if (object != nullptr) return;
  report.Add(HostBreach::MissingObject, 0, [&] { return Text("the ", name, " object is null"); });
}

/// Each check relies on the marks that earlier checks have left in the view.
void CheckLocalData(HostView& view, HostCheckOptions const& options, HostCheckReport& report) {
  CheckFaceCells(view, report);
  CellFaces const cellFaces(view);

  if (options.nodeTables) CheckFaceRows(view, report);
  CheckPositions(view, options, report);
  CheckAreas(view, report);
  if (options.nodeTables) CheckFaceNodes(view, report);
  CheckFaceGeometry(view, options, report);
  CheckWeights(view, report);
  CellNodes const cellNodes(view, cellFaces);
  CheckCellGeometry(view, cellFaces, cellNodes, options, report);

  if (options.cellRows) CheckCellRows(view, cellFaces, report);
  if (!options.nodeTables) return;
  CheckCellNodes(view, cellNodes, report);
  CheckNodeCells(view, cellNodes, report);
}

/// @param wasRead  the local checks have set the marks of the view; otherwise it is empty
void CheckCommunication(HostView const& view, bool wasRead, bool hasCells, CCommunication* communication,
                        CZYNCom* reduction, CZyn3dGV const* globals, HostCheckOptions const& options,
                        HostCheckReport& report) {
  if (reduction == nullptr) {
    report.AddNote("AllMin and the exchanges were not tried: there is no CZYNCom object");
    return;
  }
  int const minimum = CheckReduction(view, *reduction, report);
  CheckExchangeChoice(*reduction, globals, report);
  // An exchange writes to the cells that it was set up for, which the fields of an empty mesh do not have.
  bool const isMesh = CheckAnyCells(hasCells, *reduction, report);

  // Either all partitions exchange or none. Only breaches that would break an exchange prevent it.
  bool const canExchange = communication != nullptr && wasRead && isMesh && PartitionCellsAreSound(view);
  int allCan = canExchange ? 1 : 0;
  reduction->AllMin(allCan);
  if (!canExchange || allCan < 1) {
    report.AddNote("the exchanges were not tried: " + std::string(canExchange ? "another" : "this") +
                   " partition's counts, partition faces or communication object do not permit it");
    return;
  }
  CheckExchanges(view, *communication, *reduction, minimum, options, report);
}

}  // namespace

int CheckHostData(CZYN3DFiniteVolumeMesh* mesh, CPartitionFace_DLL* partitionFaces,
                  CCommunication* communication, CZYNCom* reduction, CZyn3dGV* globals,
                  HostCheckReport& report, HostCheckOptions const& options) {
  report.Begin(options);
  CheckObject(mesh, "CZYN3DFiniteVolumeMesh", report);
  CheckObject(partitionFaces, "CPartitionFace_DLL", report);
  CheckObject(communication, "CCommunication", report);
  CheckObject(reduction, "CZYNCom", report);
  CheckObject(globals, "CZyn3dGV", report);

  bool const countsAreSound = CheckCounts(mesh, partitionFaces, options, report);
  HostView lent(mesh, partitionFaces), nothing(nullptr, nullptr);
  CheckArrays(lent, options, report);
  bool const canRead = countsAreSound && CheckHaloCount(lent, report);
  if (!canRead) report.AddNote("no array was read: the counts do not tell how long they are");

  HostView& view = canRead ? lent : nothing;
  view.AddMarks();
  CheckLocalData(view, options, report);
  if (globals != nullptr) CheckGlobals(lent, *globals, canRead, options, report);
  bool const hasCells = lent.nInner > 0, hasObjects = mesh != nullptr && partitionFaces != nullptr;
  if (options.communication) {
    // A partition that lends no mesh has reported that already; it leaves the check for an empty mesh to the
    // others.
    CheckCommunication(view, canRead && hasObjects, hasCells || mesh == nullptr, communication, reduction,
                       globals, options, report);
  }
  if (!hasCells && (!options.communication || reduction == nullptr)) {
    report.AddNote("this partition has no interior cells: nothing could be compared");
  }
  return report.Count();
}

}  // namespace host_check
