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

/// Counts that are negative, contradict each other or are larger than those of any mesh. Reads no array. Both
/// objects may be null.
/// @return whether arrays may be read as far as their counts say
bool CheckCounts(CZYN3DFiniteVolumeMesh const* mesh, CPartitionFace_DLL* partitionFaces,
                 HostCheckOptions const& options, HostCheckReport& report);

/// The halo cells that ijPar names, together with the ghost cells: no more than there are cells beyond the
/// interior ones.
/// @return whether the other arrays may be read as far as their counts say
bool CheckHaloCount(HostView const& view, HostCheckReport& report);

/// Arrays that are null though their count is not 0.
void CheckArrays(HostView const& view, HostCheckOptions const& options, HostCheckReport& report);

/// The two cells of every face. Sets cvSound, otherSound and the namers of ghost and halo cells.
void CheckFaceCells(HostView& view, HostCheckReport& report);

/// The faces' rows of nodes, each by itself, and how far the nodes go that they name. Sets nodesSound and
/// nNodeUsed, and makes room for nodeSound.
void CheckFaceRows(HostView& view, HostCheckReport& report);

/// Nodes, cell centres and face centres that are not finite. Sets centreSound and nodeSound.
void CheckPositions(HostView& view, HostCheckOptions const& options, HostCheckReport& report);

/// Area vectors that are zero or not finite. Sets areaSound.
void CheckAreas(HostView& view, HostCheckReport& report);

/// The plane of every face's first three nodes.
void CheckFaceNodes(HostView const& view, HostCheckReport& report);

/// Direction and length of the area vectors, places of ghost cells and face centres. Sets turned and centreAway.
void CheckFaceGeometry(HostView& view, HostCheckOptions const& options, HostCheckReport& report);

/// Weights of inner and partition faces.
void CheckWeights(HostView const& view, HostCheckReport& report);

/// Volumes, closure, places of the centres.
void CheckCellGeometry(HostView const& view, CellFaces const& cellFaces, CellNodes const& cellNodes,
                       HostCheckOptions const& options, HostCheckReport& report);

/// CellFace, CellFaceType and CellCell against the face tables.
void CheckCellRows(HostView const& view, CellFaces const& cellFaces, HostCheckReport& report);

/// CellLnods and CellLnodsNumber against the faces' nodes.
void CheckCellNodes(HostView const& view, CellNodes const& cellNodes, HostCheckReport& report);

/// NodeCell against the faces' nodes.
void CheckNodeCells(HostView const& view, CellNodes const& cellNodes, HostCheckReport& report);

/// Work arrays and file name of the global variables.
/// @param countsAreSound  false: no more is asked of the arrays than whether they are null
void CheckGlobals(HostView const& view, CZyn3dGV const& globals, bool countsAreSound,
                  HostCheckOptions const& options, HostCheckReport& report);

}  // namespace host_check
