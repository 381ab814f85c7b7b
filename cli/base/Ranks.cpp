#include "cli/base/Ranks.h"

#include <exception>
#include <new>
#include <optional>

#include "cli/base/AgreedError.h"

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
std::vector<T> GatherRows(std::vector<T> const& own, MPI_Datatype type, Ranks const& ranks) {
  int const nOwn = static_cast<int>(own.size());
  std::vector<int> counts(ranks.IsFirst() ? static_cast<std::size_t>(ranks.count()) : 0), starts(counts);
  MPI_Gather(&nOwn, 1, MPI_INT, counts.data(), 1, MPI_INT, 0, ranks.communicator());
  int length = 0;
  for (std::size_t r = 0; r < counts.size(); ++r) {
    starts[r] = length;
    length += counts[r];
  }
  std::vector<T> all(static_cast<std::size_t>(length));
  MPI_Gatherv(own.data(), nOwn, type, all.data(), counts.data(), starts.data(), type, 0,
              ranks.communicator());
  return all;
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
  return GatherRows(own, MPI_DOUBLE, *this);
}

std::vector<std::int64_t> Ranks::GatherOnFirst(std::vector<std::int64_t> const& own) const {
  return GatherRows(own, MPI_INT64_T, *this);
}

std::string Ranks::GatherOnFirst(std::string const& own) const {
  std::vector<char> const all = GatherRows(std::vector<char>(own.begin(), own.end()), MPI_CHAR, *this);
  return {all.begin(), all.end()};
}

void Ranks::Broadcast(std::vector<double>& values) const {
  int length = static_cast<int>(values.size());
  MPI_Bcast(&length, 1, MPI_INT, 0, communicator_);
  values.resize(static_cast<std::size_t>(length));
  MPI_Bcast(values.data(), length, MPI_DOUBLE, 0, communicator_);
}

void Ranks::Broadcast(std::string& text) const {
  int length = static_cast<int>(text.size());
  MPI_Bcast(&length, 1, MPI_INT, 0, communicator_);
  text.resize(static_cast<std::size_t>(length));
  MPI_Bcast(text.data(), length, MPI_CHAR, 0, communicator_);
}

}  // namespace zyngrad
