#pragma once

#include "host/ZYNCom.h"
#include "host/ZYNCommunication.h"
#include "host/Zyn3dGV.h"
#include "host_check/HostCheckOptions.h"
#include "host_check/HostCheckReport.h"

namespace host_check {

/// Looks for breaches of the host contract in one partition's data and in what the partitions do together.
///
/// Collective: all partitions call it, with the same switches of the options, at a time when no exchange is
/// under way. It calls AllMin, and, when every partition's tables are sound enough for it, the exchanges with
/// fields of its own. A breach in the data of one partition stops none from taking part. What only the
/// communication can get wrong may still leave partitions waiting: an AllMin that is null on one partition
/// alone, an AllMin that answers differently here and there when the partitions have to agree, an exchange
/// that waits for a message that is never sent.
///
/// Nothing of the solver's is changed, the fields that are exchanged are the checker's own. Counts come first:
/// when they contradict each other, no array is read, and a note says so. No index is used before it was
/// compared with its bounds, and no row is read that claims more entries than the face tables allow. Not
/// visible: an array that is shorter than a count that agrees with the others, and a row shorter than a length
/// that could be true.
///
/// Takes time and memory in proportion to the mesh: meant for debug runs, after all tables are filled and the
/// halo centres are exchanged. Throws nothing itself; what a host's operation throws comes through.
///
/// @param mesh,partitionFaces,communication,reduction,globals  borrowed; null is a breach, not an error
/// @param[out] report  what was found in this partition; what it held before is dropped
/// @return number of breaches in this partition, 0: none was seen
int CheckHostData(CZYN3DFiniteVolumeMesh* mesh, CPartitionFace_DLL* partitionFaces,
                  CCommunication* communication, CZYNCom* reduction, CZyn3dGV* globals,
                  HostCheckReport& report, HostCheckOptions const& options = {});

}  // namespace host_check
