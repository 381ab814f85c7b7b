#pragma once

#include <mpi.h>

#include <cstddef>
#include <exception>
#include <functional>
#include <string_view>
#include <type_traits>
#include <vector>

#include "reference_host/parallel/MpiAgreement.h"
#include "reference_host/parallel/MpiCommunicator.h"

namespace reference_host {

/// Sends items from rank 0 to one rank after another, in messages of bounded size.
template <class Item>
class RankSender {
  static_assert(std::is_trivially_copyable_v<Item>);

 public:
  /// @param[in] take  take(item) gets those of rank 0 itself
  template <class Take>
  RankSender(MpiCommunicator const& communicator, Take const& take)
      : communicator_(communicator), take_(take) {
    items_.reserve(kItems);
  }

  /// @param[in] rank  at least that of the item before
  void Send(int rank, Item const& item) {
    if (rank == 0) {
      take_(item);
      return;
    }
    if (rank != rank_ || items_.size() == kItems) Flush();
    rank_ = rank;
    items_.push_back(item);
  }

  /// Tells all other ranks that nothing more follows.
  void Finish() {
    Flush();
    for (int rank = 1; rank < communicator_.size(); ++rank)
      MPI_Send(nullptr, 0, MPI_BYTE, rank, kTag, communicator_.get());
  }

  static constexpr int kTag = 1;
  static constexpr std::size_t kItems = (std::size_t{1} << 18) / sizeof(Item);

 private:
  void Flush() {
    if (items_.empty()) return;
    MPI_Send(items_.data(), static_cast<int>(items_.size() * sizeof(Item)), MPI_BYTE, rank_, kTag,
             communicator_.get());
    items_.clear();
  }

  MpiCommunicator const& communicator_;
  std::function<void(Item const&)> take_;
  std::vector<Item> items_;
  int rank_ = 0;
};

/// Calls take(item) for all items that a RankSender of rank 0 sends here. Receives them even after take has failed.
template <class Item, class Take>
void ReceiveFromRank0(MpiCommunicator const& communicator, Take const& take) {
  std::vector<Item> items(RankSender<Item>::kItems);
  std::exception_ptr failure;
  while (true) {
    MPI_Status status;
    int nBytes = 0;
    MPI_Recv(items.data(), static_cast<int>(items.size() * sizeof(Item)), MPI_BYTE, 0, RankSender<Item>::kTag,
             communicator.get(), &status);
    MPI_Get_count(&status, MPI_BYTE, &nBytes);
    if (nBytes == 0) break;
    try {
      auto const n = static_cast<std::size_t>(nBytes) / sizeof(Item);
      for (std::size_t i = 0; i < n && !failure; ++i) take(items[i]);
    } catch (...) {
      failure = std::current_exception();
    }
  }
  if (failure) std::rethrow_exception(failure);
}

/// Collective. Rank 0 makes items and sends each to its rank, which takes it.
/// @param[in] make  called on rank 0: make(send), which calls send(rank, item), ranks ascending
/// @param[in] take  take(item), in the order in which they were made
/// @throws MeshError  with the same text on every rank, if either fails
template <class Item, class Make, class Take>
void StreamFromRank0(MpiCommunicator const& communicator, Make const& make, Take const& take) {
  RunTogether(communicator, [&] {
    if (communicator.rank() != 0) {
      ReceiveFromRank0<Item>(communicator, take);
      return;
    }
    RankSender<Item> sender(communicator, take);
    try {
      make([&sender](int rank, Item const& item) { sender.Send(rank, item); });
    } catch (...) {
      sender.Finish();
      throw;
    }
    sender.Finish();
  });
}

/// Collective. The ranks make pieces of text, one rank after another, which rank 0 takes in this order.
/// @param[in] make  called on every rank: make(send), which calls send(text) any number of times; not collective
/// @param[in] take  take(text) on rank 0
/// @throws MeshError  with the same text on every rank, if either fails
void StreamTextToRank0(MpiCommunicator const& communicator,
                       std::function<void(std::function<void(std::string_view)> const&)> const& make,
                       std::function<void(std::string_view)> const& take);

/// Collective. Gives all ranks the value of rank 0.
template <class T>
void BroadcastFrom0(MpiCommunicator const& communicator, T& value) {
  static_assert(std::is_trivially_copyable_v<T>);
  MPI_Bcast(&value, sizeof(T), MPI_BYTE, 0, communicator.get());
}

}  // namespace reference_host
