#include "reference_host/parallel/MpiExchange.h"

#include <cstddef>
#include <stdexcept>
#include <string>

namespace reference_host {
namespace {

constexpr int kBlocking = 4;  // channel after the four buffers 0..3

[[noreturn]] void Fail(std::string const& what, int number) {
  std::string const name = number == kBlocking ? "the blocking exchange" : "buffer " + std::to_string(number);
  throw std::logic_error("halo exchange: " + what + " " + name);
}

void WaitAll(std::vector<MPI_Request>& requests) {
  MPI_Waitall(static_cast<int>(requests.size()), requests.data(), MPI_STATUSES_IGNORE);
}

}  // namespace

MpiExchange::MpiExchange(MPI_Comm communicator, HostPartition const& partition)
    : communicator_(communicator) {
  std::vector<ExchangeList> const& lists = partition.exchangeLists();
  for (ExchangeList const& list : lists) {
    sendCell_.insert(sendCell_.end(), list.send.begin(), list.send.end());
    receiveCell_.insert(receiveCell_.end(), list.receive.begin(), list.receive.end());
  }
  int tag = 0;
  for (Channel& channel : channels_) MakeRequests(channel, tag++, lists);
}

void MpiExchange::MakeRequests(Channel& channel, int tag, std::vector<ExchangeList> const& lists) {
  channel.send.assign(sendCell_.size(), 0.0);
  channel.receive.assign(receiveCell_.size(), 0.0);
  channel.requests.reserve(2 * lists.size());
  double* send = channel.send.data();
  double* receive = channel.receive.data();
  for (ExchangeList const& list : lists) {
    int const nSend = static_cast<int>(list.send.size());
    int const nReceive = static_cast<int>(list.receive.size());
    MPI_Request request;
    MPI_Recv_init(receive, nReceive, MPI_DOUBLE, list.part, tag, communicator_.get(), &request);
    channel.requests.push_back(request);
    MPI_Send_init(send, nSend, MPI_DOUBLE, list.part, tag, communicator_.get(), &request);
    channel.requests.push_back(request);
    send += nSend;
    receive += nReceive;
  }
}

MpiExchange::~MpiExchange() {
  if (MpiHasEnded()) return;
  for (Channel& channel : channels_) {
    // Messages under way use the channel's values, which are about to be freed.
    if (channel.field != nullptr) WaitAll(channel.requests);
    for (MPI_Request& request : channel.requests) MPI_Request_free(&request);
  }
}

void MpiExchange::DDM_Exch(double* field) {
  Start(field, kBlocking);
  Finish(field, kBlocking);
}

void MpiExchange::DDM_IExch_Start(double* field, ZYNNonBlockingBufferId id) { Start(field, id); }

void MpiExchange::DDM_IExch_Wait(double* field, ZYNNonBlockingBufferId id) { Finish(field, id); }

void MpiExchange::Start(double const* field, int number) {
  Channel& channel = channels_[static_cast<std::size_t>(number)];
  if (field == nullptr) Fail("start without a field in", number);
  if (channel.field != nullptr) Fail("start before the wait in", number);
  channel.field = field;
  for (std::size_t i = 0; i < sendCell_.size(); ++i) channel.send[i] = field[sendCell_[i]];
  if (!channel.requests.empty()) {
    MPI_Startall(static_cast<int>(channel.requests.size()), channel.requests.data());
  }
}

void MpiExchange::Finish(double* field, int number) {
  Channel& channel = channels_[static_cast<std::size_t>(number)];
  if (channel.field == nullptr) Fail("wait without a start in", number);
  if (channel.field != field) Fail("wait with another field than the start in", number);
  WaitAll(channel.requests);
  for (std::size_t i = 0; i < receiveCell_.size(); ++i) field[receiveCell_[i]] = channel.receive[i];
  channel.field = nullptr;
}

}  // namespace reference_host
