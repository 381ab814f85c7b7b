#pragma once

#include <array>
#include <vector>

#include "host/ZYNCommunication.h"
#include "reference_host/parallel/MpiCommunicator.h"
#include "reference_host/partition/HostPartition.h"

namespace reference_host {

/// The halo exchange between partitions that are the ranks of a communicator.
///
/// Each of the four buffers, and the blocking exchange, has its own packed values, message tag and persistent
/// point-to-point requests, made once. So an exchange allocates nothing, the buffers are independent, and
/// they may be waited for in any order. Starting in a busy buffer and waiting for what was not started, or
/// with another field, break the rules of the interface and throw std::logic_error. A failure inside MPI ends
/// the run.
class MpiExchange : public CCommunication {
 public:
  /// Collective. Copies what it needs of the partition, whose part number is its rank.
  MpiExchange(MPI_Comm communicator, HostPartition const& partition);

  /// Collective if an exchange is under way, which is then completed first.
  ~MpiExchange() override;
  MpiExchange(MpiExchange const&) = delete;
  MpiExchange& operator=(MpiExchange const&) = delete;

  void DDM_Exch(double* field) override;
  void DDM_IExch_Start(double* field, ZYNNonBlockingBufferId id) override;
  void DDM_IExch_Wait(double* field, ZYNNonBlockingBufferId id) override;

 private:
  struct Channel {
    std::vector<double> send, receive;  // values for and from all neighbours, in the order of the cells below
    std::vector<MPI_Request> requests;
    double const* field = nullptr;  // of the exchange that is under way, null if none is
  };

  void MakeRequests(Channel& channel, int tag, std::vector<ExchangeList> const& lists);
  void Start(double const* field, int number);
  void Finish(double* field, int number);

  MpiCommunicator communicator_;
  std::vector<int> sendCell_;     // interior cells, neighbour after neighbour
  std::vector<int> receiveCell_;  // halo cells, neighbour after neighbour
  std::array<Channel, 5> channels_;
};

}  // namespace reference_host
