#include "host_check/CheckHostData.h"

#include "host_check/CellFaces.h"
#include "host_check/CellNodes.h"
#include "host_check/CollectiveChecks.h"
#include "host_check/HostView.h"
#include "host_check/LocalChecks.h"
#include "host_check/Text.h"

namespace host_check {
namespace {

void CheckObject(const void* object, const char* name, HostCheckReport& report) {
  if (object != nullptr) return;
  report.Add(HostBreach::MissingObject, 0, [&] { return Text("the ", name, " object is null"); });
}

/// Each check relies on the marks that the ones before have left in the view.
void CheckLocalData(HostView& view, const HostCheckOptions& options, HostCheckReport& report) {
  CheckArrays(view, options, report);
  CheckFaceCells(view, report);
  const CellFaces cellFaces(view);

  CheckPositions(view, options, report);
  CheckAreas(view, report);
  if (options.nodeTables) CheckFaceNodes(view, report);
  CheckFaceGeometry(view, options, report);
  CheckWeights(view, report);
  const CellNodes cellNodes(view, cellFaces);
  CheckCellGeometry(view, cellFaces, cellNodes, options, report);

  if (options.cellRows) CheckCellRows(view, cellFaces, report);
  if (!options.nodeTables) return;
  CheckCellNodes(view, cellNodes, report);
  CheckNodeCells(view, cellNodes, report);
}

void CheckCommunication(const HostView& view, bool countsAreSound, CCommunication* communication,
                        CZYNCom* reduction, const CZyn3dGV* globals, const HostCheckOptions& options,
                        HostCheckReport& report) {
  if (reduction == nullptr) {
    report.AddNote("AllMin and the exchanges were not tried: there is no CZYNCom object");
    return;
  }
  const int minimum = CheckReduction(view, *reduction, report);
  CheckExchangeChoice(*reduction, globals, report);

  // All partitions or none exchange. Only what an exchange would stumble over counts: other breaches do not
  // hinder it.
  const bool canExchange = communication != nullptr && countsAreSound && PartitionCellsAreSound(view);
  int allCan = canExchange ? 1 : 0;
  reduction->AllMin(allCan);
  if (!canExchange || allCan < 1) {
    report.AddNote("the exchanges were not tried: " + std::string(canExchange ? "another" : "this") +
                   " partition's counts, partition faces or communication object do not permit it");
    return;
  }
  CheckExchanges(view, *communication, minimum, options, report);
}

}  // namespace

int CheckHostData(CZYN3DFiniteVolumeMesh* mesh, CPartitionFace_DLL* partitionFaces,
                  CCommunication* communication, CZYNCom* reduction, CZyn3dGV* globals,
                  HostCheckReport& report, const HostCheckOptions& options) {
  report.Begin(options);
  CheckObject(mesh, "CZYN3DFiniteVolumeMesh", report);
  CheckObject(partitionFaces, "CPartitionFace_DLL", report);
  CheckObject(communication, "CCommunication", report);
  CheckObject(reduction, "CZYNCom", report);
  CheckObject(globals, "CZyn3dGV", report);

  const bool countsAreSound = CheckCounts(mesh, partitionFaces, report);
  HostView view(mesh, partitionFaces);
  CheckLocalData(view, options, report);
  if (globals != nullptr) CheckGlobals(view, *globals, report);
  if (options.communication) {
    CheckCommunication(view, countsAreSound, communication, reduction, globals, options, report);
  }
  return report.Count();
}

}  // namespace host_check
