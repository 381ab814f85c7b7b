#pragma once

#include <mpi.h>

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace zyngrad {

/// The ranks of the run and the few collective operations that the commands need.
///
/// UsageError and MeshError end a run in order only if every rank throws them. An error that a single rank may
/// find therefore belongs inside Together.
class Ranks {
 public:
  explicit Ranks(MPI_Comm communicator);  ///< borrows the communicator

  MPI_Comm communicator() const { return communicator_; }
  int rank() const { return rank_; }
  int count() const { return count_; }
  bool IsFirst() const { return rank_ == 0; }

  /// Collective. Runs `work`, which must not call anything collective, on every rank. If it throws on some rank,
  /// every rank throws AgreedError with the text of the lowest such rank, so that no rank is left waiting.
  void Together(std::function<void()> const& work) const;

  void Barrier() const;
  double Max(double value) const;  ///< collective

  /// Collective. The values of all ranks in rank order, on every rank. Adding them in that order gives the same
  /// bits in every run on the same number of ranks.
  std::vector<double> Gather(double value) const;

  /// Collective. The values of all ranks one after the other, in rank order, on the first rank; empty on the
  /// others.
  std::vector<double> GatherOnFirst(std::vector<double> const& own) const;
  std::vector<std::int64_t> GatherOnFirst(std::vector<std::int64_t> const& own) const;

  /// Collective. The same for texts.
  std::string GatherOnFirst(std::string const& own) const;

  /// Collective. The first rank's values, on every rank.
  void Broadcast(std::vector<double>& values) const;
  void Broadcast(std::string& text) const;

  /// Collective. Rows of equal length, one per rank, in rank order, on every rank.
  std::vector<std::vector<double>> Gather(std::vector<double> const& row) const;

 private:
  MPI_Comm communicator_;
  int rank_ = 0;
  int count_ = 1;
};

}  // namespace zyngrad
