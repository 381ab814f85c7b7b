#pragma once

#include "host/ZYNCom.h"
#include "host/ZYNCommunication.h"
#include "host/Zyn3dGV.h"
#include "host_check/HostCheckOptions.h"
#include "host_check/HostCheckReport.h"

namespace host_check {

/// Looks for breaches of the host contract in the data of one partition and in the communication of all.
///
/// Collective: all partitions call it, with the same switches in the options, while no exchange is under way.
/// It calls AllMin and, if the tables of every partition are sound enough, the exchanges, with fields of its
/// own. A breach in the data of one partition does not keep any partition from taking part. Faults of the
/// communication itself may still leave partitions waiting: a CZYNCom that is null on one partition alone, an
/// AllMin with different results where the partitions have to agree, an exchange that waits for a message
/// that is never sent.
///
/// It changes nothing of the solver's: the exchanged fields are its own. Counts come first: if they
/// contradict each other, no array is read, and a note says so. No index is used before it has been compared
/// with its bounds, and no row is read that claims more entries than the face tables allow. It cannot see an
/// array that is shorter than its count if that count agrees with the others, nor a row that is shorter than
/// its length if that length is plausible.
///
/// Time and memory grow in proportion to the mesh. Use it in debug runs, after all tables are filled and the
/// halo centres are exchanged. It throws nothing itself; exceptions of the host's operations pass through.
///
/// @param mesh,partitionFaces,communication,reduction,globals  borrowed; null is a breach, not an error
/// @param[out] report  the findings in this partition; earlier content is dropped
/// @return number of breaches found in this partition
int CheckHostData(CZYN3DFiniteVolumeMesh* mesh, CPartitionFace_DLL* partitionFaces,
                  CCommunication* communication, CZYNCom* reduction, CZyn3dGV* globals,
                  HostCheckReport& report, HostCheckOptions const& options = {});

}  // namespace host_check
