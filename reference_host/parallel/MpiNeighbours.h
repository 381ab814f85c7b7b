#pragma once

#include <mpi.h>

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

#include "reference_host/parallel/MpiBytes.h"
#include "reference_host/parallel/MpiCommunicator.h"

namespace reference_host {

/// Swaps lists between a rank and its neighbours, each of which names this rank in turn. A rank may be its own
/// neighbour, and two ranks may have several links.
class MpiNeighbours {
 public:
  /// One way of two-way communication. What one side sends, the other receives under the same tag; the tags of
  /// the links to one rank differ.
  struct Link {
    int rank;
    int sendTag, receiveTag;
  };

  /// @param[in] communicator  borrowed
  MpiNeighbours(MpiCommunicator const& communicator, std::vector<Link> links)
      : communicator_(communicator), links_(std::move(links)) {}

  /// Collective among neighbours. Sends lists[i] along link i.
  /// @return by i, what has come along that link
  template <class T>
  std::vector<std::vector<T>> Swap(std::vector<std::vector<T>> const& lists) const {
    std::vector<std::int64_t> lengths, sent;
    for (std::vector<T> const& list : lists) lengths.push_back(static_cast<std::int64_t>(list.size()));
    sent.resize(lengths.size());
    std::vector<std::vector<T>> received(lists.size());
    Exchange([&](std::size_t i) {
      return Piece{&lengths[i], &sent[i], sizeof(std::int64_t), sizeof(std::int64_t)};
    });
    for (std::size_t i = 0; i < lists.size(); ++i) received[i].resize(static_cast<std::size_t>(sent[i]));
    Exchange([&](std::size_t i) {
      return Piece{lists[i].data(), received[i].data(), lists[i].size() * sizeof(T),
                   received[i].size() * sizeof(T)};
    });
    return received;
  }

 private:
  struct Piece {
    void const* send;
    void* receive;
    std::size_t nSend;  ///< bytes
    std::size_t nReceive;
  };

  template <class GetPiece>
  void Exchange(GetPiece const& getPiece) const {
    std::vector<MPI_Request> requests;
    for (std::size_t i = 0; i < links_.size(); ++i) {
      Link const& link = links_[i];
      Piece const piece = getPiece(i);
      for (std::size_t at = 0; at < piece.nReceive; at += kLargestMessage) {
        MPI_Irecv(static_cast<char*>(piece.receive) + at, Length(piece.nReceive - at), MPI_BYTE, link.rank,
                  link.receiveTag, communicator_.get(), &requests.emplace_back());
      }
      for (std::size_t at = 0; at < piece.nSend; at += kLargestMessage) {
        MPI_Isend(static_cast<char const*>(piece.send) + at, Length(piece.nSend - at), MPI_BYTE, link.rank,
                  link.sendTag, communicator_.get(), &requests.emplace_back());
      }
    }
    MPI_Waitall(static_cast<int>(requests.size()), requests.data(), MPI_STATUSES_IGNORE);
  }

  static int Length(std::size_t rest) {
    return static_cast<int>(rest < kLargestMessage ? rest : kLargestMessage);
  }

  MpiCommunicator const& communicator_;
  std::vector<Link> links_;
};

}  // namespace reference_host
