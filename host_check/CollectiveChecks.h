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
int PartitionMark(const HostView& view);

/// AllMin with equal and with different values.
/// @return what AllMin gave here for the partitions' marks
int CheckReduction(const HostView& view, CZYNCom& reduction, HostCheckReport& report);

/// UseNonBlockingExch, which must be the same on all partitions. `globals` may be null.
void CheckExchangeChoice(CZYNCom& reduction, const CZyn3dGV* globals, HostCheckReport& report);

/// Interior cells, which at least one partition must have.
/// @return whether one has
bool CheckAnyCells(bool hasCells, CZYNCom& reduction, HostCheckReport& report);

/// Whether all partition faces name cells beyond the interior ones, so that an exchange has where to write.
bool PartitionCellsAreSound(const HostView& view);

/// The blocking exchange, and the non-blocking one against it. Also whether `minimum` is the same on the
/// partitions around.
/// @pre PartitionCellsAreSound on all partitions
void CheckExchanges(const HostView& view, CCommunication& communication, int minimum,
                    const HostCheckOptions& options, HostCheckReport& report);

}  // namespace host_check
