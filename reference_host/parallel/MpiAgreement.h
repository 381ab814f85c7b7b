#pragma once

#include <functional>

#include "reference_host/parallel/MpiCommunicator.h"

namespace reference_host {

/// Collective. Runs `work` on every rank. If it throws on some rank, every rank throws MeshError with the
/// text of the lowest such rank, so that no rank waits for one that has given up. Whatever `work` sends and
/// receives must come to its end on the other ranks even if it fails on one.
void RunTogether(MpiCommunicator const& communicator, std::function<void()> const& work);

}  // namespace reference_host
