#include "cli/base/Ranks.h"

#include <cstddef>
#include <exception>
#include <new>
#include <numeric>
#include <optional>

#include "cli/base/AgreedError.h"
#include "reference_host/parallel/MpiPieces.h"

namespace zyngrad {
namespace {

/// The message of what `work` threw; nothing if it returned.
std::optional<std::string> ErrorOf(std::function<void()> const& work, int rank) {
  try {
    work();
  } catch (std::bad_alloc const&) {
    return "not enough memory on rank " + std::to_string(rank);
  } catch (std::exception const& error) {
    return error.what();
  }
  return std::nullopt;
}

/// The values of all ranks, on the first rank.
template <class T>
std::vector<T> GatherRows(std::vector<T> const& own, Ranks const& ranks) {
  std::size_t const nOwnBytes = own.size() * sizeof(T);
  std::vector<std::size_t> const sizes = reference_host::GatherSizes(ranks.communicator(), nOwnBytes);
  std::vector<T> all;
  ranks.Together(
      [&] { all.resize(std::accumulate(sizes.begin(), sizes.end(), std::size_t{0}) / sizeof(T)); });
  reference_host::GatherBytes(ranks.communicator(), own.data(), nOwnBytes, sizes, all.data());
  return all;
}

/// The first rank's values, on every rank.
template <class Values>
void BroadcastValues(Values& values, Ranks const& ranks) {
  std::uint64_t length = values.size();
  MPI_Bcast(&length, 1, MPI_UINT64_T, 0, ranks.communicator());
  ranks.Together([&] { values.resize(static_cast<std::size_t>(length)); });
  reference_host::BroadcastBytes(ranks.communicator(), values.data(),
                                 values.size() * sizeof(typename Values::value_type));
}

}  // namespace

Ranks::Ranks(MPI_Comm communicator) : communicator_(communicator) {
  MPI_Comm_rank(communicator_, &rank_);
  MPI_Comm_size(communicator_, &count_);
}

void Ranks::Together(std::function<void()> const& work) const {
  std::optional<std::string> const error = ErrorOf(work, rank_);
  int const mine = error ? rank_ : count_;
  int lowest = count_;
  MPI_Allreduce(&mine, &lowest, 1, MPI_INT, MPI_MIN, communicator_);
  if (lowest == count_) return;

  std::string text = error.value_or("");
  int length = static_cast<int>(text.size());
  MPI_Bcast(&length, 1, MPI_INT, lowest, communicator_);
  text.resize(static_cast<std::size_t>(length));
  MPI_Bcast(text.data(), length, MPI_CHAR, lowest, communicator_);
  throw AgreedError(text, count_);
}

void Ranks::Barrier() const { MPI_Barrier(communicator_); }

double Ranks::Max(double value) const {
  double largest = value;
  MPI_Allreduce(&value, &largest, 1, MPI_DOUBLE, MPI_MAX, communicator_);
  return largest;
}

std::vector<double> Ranks::Gather(double value) const {
  std::vector<double> all(static_cast<std::size_t>(count_));
  MPI_Allgather(&value, 1, MPI_DOUBLE, all.data(), 1, MPI_DOUBLE, communicator_);
  return all;
}

std::vector<std::vector<double>> Ranks::Gather(std::vector<double> const& row) const {
  std::size_t const length = row.size();
  std::vector<double> all(length * static_cast<std::size_t>(count_));
  MPI_Allgather(row.data(), static_cast<int>(length), MPI_DOUBLE, all.data(), static_cast<int>(length),
                MPI_DOUBLE, communicator_);
  std::vector<std::vector<double>> rows;
  for (std::size_t start = 0; start < all.size(); start += length) {
    rows.emplace_back(all.begin() + static_cast<std::ptrdiff_t>(start),
                      all.begin() + static_cast<std::ptrdiff_t>(start + length));
  }
  return rows;
}

std::vector<double> Ranks::GatherOnFirst(std::vector<double> const& own) const {
  return GatherRows(own, *this);
}

std::vector<std::int64_t> Ranks::GatherOnFirst(std::vector<std::int64_t> const& own) const {
  return GatherRows(own, *this);
}

std::string Ranks::GatherOnFirst(std::string const& own) const {
  std::vector<char> const all = GatherRows(std::vector<char>(own.begin(), own.end()), *this);
  return {all.begin(), all.end()};
}

void Ranks::Broadcast(std::vector<double>& values) const { BroadcastValues(values, *this); }

void Ranks::Broadcast(std::string& text) const { BroadcastValues(text, *this); }

}  // namespace zyngrad
