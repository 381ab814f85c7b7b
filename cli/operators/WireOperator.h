#pragma once

#include "reference_host/partition/HostPartition.h"

namespace zyngrad {

/// Hands an operator everything that it borrows from its host: the mesh record, the global variables, the faces
/// between partitions and, if the operator communicates, the means to do so. Every operator of the program is wired
/// here and nowhere else. The partition and the links must outlive the operator's use of them.
/// @param[in] links  what the operator's getCommunication takes: the exchange, and for gradients the reduction too;
///                   none for work that stays within the partition
template <class Operator, class... Links>
void WireOperator(Operator& op, reference_host::HostPartition& partition, Links*... links) {
  op.getZyn3dGV(partition.globals(), nullptr, nullptr, partition.mesh());
  op.getPartitionFace(partition.partitionFaces());
  if constexpr (sizeof...(links) > 0) op.getCommunication(links...);
}

}  // namespace zyngrad
