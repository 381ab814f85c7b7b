#pragma once

#include "host/ZYNCom.h"
#include "host/ZYNCommunication.h"
#include "host/Zyn3dGV.h"
#include "host_check/HostCheckOptions.h"
#include "host_check/HostCheckReport.h"
#include "host_check/HostView.h"

/// @file
/// The checks of what the partitions do together. All are collective but PartitionCellsAreSound; each makes
/// the same calls on every partition, whatever it finds.

namespace host_check {

/// A number, 0 or above, that is very likely another one on every partition: made of its counts and first
/// cell centres.
int PartitionMark(HostView const& view);

/// AllMin with equal and with different values.
/// @return what AllMin gave here for the partitions' marks
int CheckReduction(HostView const& view, CZYNCom& reduction, HostCheckReport& report);

/// UseNonBlockingExch, which must be the same on all partitions. `globals` may be null.
void CheckExchangeChoice(CZYNCom& reduction, CZyn3dGV const* globals, HostCheckReport& report);

/// Interior cells, which at least one partition must have.
/// @return whether one has
bool CheckAnyCells(bool hasCells, CZYNCom& reduction, HostCheckReport& report);

/// Whether all partition faces name cells beyond the interior ones, so that an exchange has where to write.
bool PartitionCellsAreSound(HostView const& view);

/// The blocking exchange, and the non-blocking one against it. Also whether `minimum` is the same on the
/// partitions around.
/// @pre PartitionCellsAreSound on all partitions
void CheckExchanges(HostView const& view, CCommunication& communication, int minimum,
                    HostCheckOptions const& options, HostCheckReport& report);

}  // namespace host_check
