#pragma once

#include <functional>

#include "reference_host/parallel/MpiCommunicator.h"

namespace reference_host {

/// Collective. Runs `work` on every rank. If it throws on some rank, every rank throws MeshError with the
/// text of the lowest such rank, so that no rank waits for one that has failed. The communication inside
/// `work` must complete on the other ranks even if `work` fails on one.
void RunTogether(MpiCommunicator const& communicator, std::function<void()> const& work);

}  // namespace reference_host
