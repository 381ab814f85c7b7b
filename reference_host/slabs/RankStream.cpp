#include "reference_host/slabs/RankStream.h"

#include <algorithm>

namespace reference_host {
namespace {

constexpr int kTextTag = 2;
constexpr std::size_t kLongestText = std::size_t{1} << 20;

/// In messages of bounded size; an empty one is the end.
void SendTexts(MpiCommunicator const& communicator,
               std::function<void(std::function<void(std::string_view)> const&)> const& make) {
  auto const send = [&](std::string_view text) {
    for (std::size_t at = 0; at < text.size(); at += kLongestText) {
      std::string_view const piece = text.substr(at, kLongestText);
      MPI_Send(piece.data(), static_cast<int>(piece.size()), MPI_CHAR, 0, kTextTag, communicator.get());
    }
  };
  std::exception_ptr failure;
  try {
    make(send);
  } catch (...) {
    failure = std::current_exception();
  }
  MPI_Send(nullptr, 0, MPI_CHAR, 0, kTextTag, communicator.get());
  if (failure) std::rethrow_exception(failure);
}

/// Receives all of them even after take has failed, since the other ranks wait to send.
void TakeTexts(MpiCommunicator const& communicator,
               std::function<void(std::function<void(std::string_view)> const&)> const& make,
               std::function<void(std::string_view)> const& take) {
  std::vector<char> piece(kLongestText);
  std::exception_ptr failure;
  auto const attempt = [&failure](auto const& work) {
    try {
      if (!failure) work();
    } catch (...) {
      failure = std::current_exception();
    }
  };
  attempt([&] { make(take); });
  for (int rank = 1; rank < communicator.size(); ++rank) {
    while (true) {
      MPI_Status status;
      int size = 0;
      MPI_Recv(piece.data(), static_cast<int>(piece.size()), MPI_CHAR, rank, kTextTag, communicator.get(),
               &status);
      MPI_Get_count(&status, MPI_CHAR, &size);
      if (size == 0) break;
      attempt([&] { take({piece.data(), static_cast<std::size_t>(size)}); });
    }
  }
  if (failure) std::rethrow_exception(failure);
}

}  // namespace

void StreamTextToRank0(MpiCommunicator const& communicator,
                       std::function<void(std::function<void(std::string_view)> const&)> const& make,
                       std::function<void(std::string_view)> const& take) {
  RunTogether(communicator, [&] {
    if (communicator.rank() == 0) {
      TakeTexts(communicator, make, take);
    } else {
      SendTexts(communicator, make);
    }
  });
}

}  // namespace reference_host
