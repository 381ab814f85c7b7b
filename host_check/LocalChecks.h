#pragma once

#include "host/Zyn3dGV.h"
#include "host_check/CellFaces.h"
#include "host_check/CellNodes.h"
#include "host_check/HostCheckOptions.h"
#include "host_check/HostCheckReport.h"
#include "host_check/HostView.h"

/// @file
/// The checks of one partition's data, in the order in which they are called. None is collective.

namespace host_check {

/// Reports counts that are negative, contradict each other or are larger than those of any mesh. Reads no
/// array. Both objects may be null.
/// @return whether the counts are sound, so that arrays may be read up to them
bool CheckCounts(CZYN3DFiniteVolumeMesh const* mesh, CPartitionFace_DLL* partitionFaces,
                 HostCheckOptions const& options, HostCheckReport& report);

/// Checks that the halo cells that ijPar names and the ghost cells are together no more than NCell -
/// NInnerCells.
/// @return whether that holds, so that the other arrays may be read up to their counts
bool CheckHaloCount(HostView const& view, HostCheckReport& report);

/// Reports arrays that are null although their count is not 0.
void CheckArrays(HostView const& view, HostCheckOptions const& options, HostCheckReport& report);

/// Checks the two cells of every face. Sets cvSound, otherSound and the namers of ghost and halo cells.
void CheckFaceCells(HostView& view, HostCheckReport& report);

/// Checks each face's row of nodes by itself, and the highest node that a row names. Sets nodesSound and
/// nNodeUsed, and allocates nodeSound.
void CheckFaceRows(HostView& view, HostCheckReport& report);

/// Reports nodes, cell centres and face centres that are not finite. Sets centreSound and nodeSound.
void CheckPositions(HostView& view, HostCheckOptions const& options, HostCheckReport& report);

/// Reports area vectors that are zero or not finite. Sets areaSound.
void CheckAreas(HostView& view, HostCheckReport& report);

/// Checks the plane of every face's first three nodes.
void CheckFaceNodes(HostView const& view, HostCheckReport& report);

/// Checks direction and length of the area vectors, and the positions of ghost cells and face centres. Sets
/// turned and centreAway.
void CheckFaceGeometry(HostView& view, HostCheckOptions const& options, HostCheckReport& report);

/// Checks the weights of inner and partition faces.
void CheckWeights(HostView const& view, HostCheckReport& report);

/// Checks volumes, closure and cell centres.
void CheckCellGeometry(HostView const& view, CellFaces const& cellFaces, CellNodes const& cellNodes,
                       HostCheckOptions const& options, HostCheckReport& report);

/// Checks CellFace, CellFaceType and CellCell against the face tables.
void CheckCellRows(HostView const& view, CellFaces const& cellFaces, HostCheckReport& report);

/// Checks CellLnods and CellLnodsNumber against the faces' nodes.
void CheckCellNodes(HostView const& view, CellNodes const& cellNodes, HostCheckReport& report);

/// Checks NodeCell against the faces' nodes.
void CheckNodeCells(HostView const& view, CellNodes const& cellNodes, HostCheckReport& report);

/// Checks the work arrays and the file name of the global variables.
/// @param countsAreSound  false: the arrays are only compared with null
void CheckGlobals(HostView const& view, CZyn3dGV const& globals, bool countsAreSound,
                  HostCheckOptions const& options, HostCheckReport& report);

}  // namespace host_check
