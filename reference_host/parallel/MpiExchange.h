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
/// point-to-point requests, created once. So an exchange allocates nothing, the buffers are independent, and
/// they may be waited for in any order. It is an error, std::logic_error, to start in a busy buffer or to
/// wait for an exchange that was not started or was started with another field. A failure inside MPI ends the
/// run.
class MpiExchange : public CCommunication {
 public:
  /// Collective. Copies what it needs of the partition, whose part number must be the rank.
  MpiExchange(MPI_Comm communicator, HostPartition const& partition);

  /// Completes an exchange that is under way, which is collective.
  ~MpiExchange() override;
  MpiExchange(MpiExchange const&) = delete;
  MpiExchange& operator=(MpiExchange const&) = delete;

  void DDM_Exch(double* field) override;
  void DDM_IExch_Start(double* field, ZYNNonBlockingBufferId id) override;
  void DDM_IExch_Wait(double* field, ZYNNonBlockingBufferId id) override;

 private:
  struct Channel {
    std::vector<double> send, receive;  // values to and from all neighbours, in the order of the cells below
    std::vector<MPI_Request> requests;
    double const* field = nullptr;  // of the exchange under way; null: none
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
