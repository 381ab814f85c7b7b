#pragma once

#include <vector>

#include "host/ZYNCom.h"
#include "host/ZYNCommunication.h"
#include "host/Zyn3dGV.h"
#include "host_check/HaloExchange.h"
#include "host_check/HaloSources.h"
#include "host_check/HostCheckOptions.h"
#include "host_check/HostCheckReport.h"
#include "host_check/HostView.h"

/// @file
/// The checks of the communication. All of them are collective except PartitionCellsAreSound. Each makes the same
/// calls on every partition, whatever it finds.

namespace host_check {

/// A number >= 0 that is very likely different on every partition: a hash of its counts and first cell
/// centres.
int PartitionMark(HostView const& view);

/// Checks AllMin with equal and with different values.
/// @return the result of AllMin for the partitions' marks
int CheckReduction(HostView const& view, CZYNCom& reduction, HostCheckReport& report);

/// Checks that UseNonBlockingExch is the same on all partitions. `globals` may be null.
void CheckExchangeChoice(CZYNCom& reduction, CZyn3dGV const* globals, HostCheckReport& report);

/// Checks that at least one partition has interior cells.
/// @return whether one has
bool CheckAnyCells(bool hasCells, CZYNCom& reduction, HostCheckReport& report);

/// Whether all partition faces name cells above the interior ones, so that an exchange writes to halo cells.
bool PartitionCellsAreSound(HostView const& view);

/// Checks what the blocking exchange brings to the halo cells, whose centres must be those of its owners, save for
/// periodic boundaries. Calls AllMin to agree on the number of exchanges.
/// @param sources  of exchange.Halos()
void CheckHaloCells(HostView const& view, HaloExchange& exchange, CZYNCom& reduction,
                    std::vector<HaloSource> const& sources, HostCheckOptions const& options,
                    HostCheckReport& report);

/// Checks the blocking exchange, and the non-blocking one against it; also that `minimum` is the same on the
/// neighbour partitions.
/// @pre PartitionCellsAreSound on all partitions
void CheckExchanges(HostView const& view, CCommunication& communication, CZYNCom& reduction, int minimum,
                    HostCheckOptions const& options, HostCheckReport& report);

}  // namespace host_check
