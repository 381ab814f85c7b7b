#pragma once

#include <cstdint>
#include <functional>
#include <vector>

#include "reference_host/mesh/FaceMesh.h"
#include "reference_host/parallel/MpiCommunicator.h"
#include "reference_host/slabs/BlockRanges.h"

namespace reference_host {

/// Collective. By own node of a file: how many ranks use it; 2 stands for more, too.
/// @param[in] fileNodes  blocks of the file's nodes
/// @param[in] used       the nodes that this rank uses, ascending
std::vector<std::uint8_t> CountUsers(MpiCommunicator const& communicator, BlockRanges const& fileNodes,
                                     std::vector<std::int64_t> const& used);

/// The nodes of a file that become nodes of a mesh.
struct NumberedNodes {
  BlockRanges nodes;                       ///< of the mesh
  std::vector<std::int64_t> numberOfNode;  ///< by own node of the file; -1: not in the mesh
};

/// Collective. Numbers the nodes that any rank uses in the order of the file.
/// @param[in] nUsers      what CountUsers gives
/// @param[in,out] points  of the own nodes of the file; those that are not used are removed
/// @param[in,out] used    nodes of the file, ascending; replaced by their numbers in the mesh
NumberedNodes NumberUsedNodes(MpiCommunicator const& communicator, BlockRanges const& fileNodes,
                              std::vector<std::uint8_t> const& nUsers, std::vector<Point>& points,
                              std::vector<std::int64_t>& used);

/// SlabNames::nodeNumber of such a mesh.
/// @param[in] numberInFile  for own nodes of the file, counted from 0; empty: that plus 1
std::function<std::int64_t(std::int64_t)> NamesOfUsedNodes(
    NumberedNodes const& numbered, BlockRanges const& fileNodes, int rank,
    std::function<std::int64_t(std::int64_t)> numberInFile = {});

}  // namespace reference_host
