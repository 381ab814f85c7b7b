#pragma once

#include <array>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "host/ZYNCom.h"
#include "host/ZYNCommunication.h"
#include "reference_host/partition/HostPartition.h"

namespace reference_host {

/// Shared by the partitions of a run in which each partition is a thread of this process: mailboxes for halo
/// values, and the state of reductions. The communication objects borrow it, so it must outlive them.
class InProcessGroup {
 public:
  explicit InProcessGroup(int nParts);

  int nParts() const { return nParts_; }

  /// Makes every partition that waits, now or later, throw instead of waiting forever for one that has
  /// failed.
  void Abort();

  /// Collective: the minimum of `value` over all partitions.
  int AllMin(int value);

  /// The values for one neighbour in one exchange. `exchange` counts the exchanges that the sender has
  /// started.
  struct Message {
    std::int64_t exchange = 0;
    std::vector<double> values;
  };

  /// Puts a message into the mailbox of (from, to, channel). Never waits.
  void Post(int from, int to, int channel, Message message);

  /// Takes the oldest message out of the mailbox. Waits until there is one.
  Message Take(int from, int to, int channel);

  static constexpr int kChannels = 5;  ///< four buffers and the blocking exchange

 private:
  std::deque<Message>& Box(int from, int to, int channel);

  int const nParts_;
  std::mutex mutex_;  // guards all that follows
  std::condition_variable changed_;
  bool isAborted_ = false;
  std::vector<std::deque<Message>> boxes_;

  std::int64_t nReductions_ = 0;  // completed ones
  int nArrived_ = 0;              // partitions in the current one
  int minimum_ = 0;               // of the current one so far
  int result_ = 0;                // of the last completed one
};

/// The halo exchange of one partition with its neighbours in other threads.
///
/// A start copies the values that the neighbours need into messages; a wait takes the messages of the
/// neighbours. The four buffers are independent and may be waited for in any order. It is an error,
/// std::logic_error, to start in a busy buffer, to wait for an exchange that was not started or was started
/// with another field, or to start exchanges in another order than the other partitions.
class InProcessCommunication : public CCommunication {
 public:
  /// Borrows the group; copies what it needs of the partition.
  InProcessCommunication(InProcessGroup& group, HostPartition const& partition);

  void DDM_Exch(double* field) override;
  void DDM_IExch_Start(double* field, ZYNNonBlockingBufferId id) override;
  void DDM_IExch_Wait(double* field, ZYNNonBlockingBufferId id) override;

 private:
  struct Pending {
    double const* field = nullptr;  // null: the buffer is free
    std::int64_t exchange = 0;
  };

  void Start(double const* field, int channel);
  void Finish(double* field, int channel);

  InProcessGroup& group_;
  int part_;
  std::vector<ExchangeList> lists_;
  std::int64_t nStarted_ = 0;
  std::array<Pending, InProcessGroup::kChannels> pending_;
};

/// The reduction over partitions that are threads of this process. Borrows the group.
class InProcessReduction : public CZYNCom {
 public:
  explicit InProcessReduction(InProcessGroup& group) : group_(group) {}

  int AllMin(int& value) override;

 private:
  InProcessGroup& group_;
};

/// Runs body(0) .. body(nParts-1), each in a thread of its own, waits for all, and rethrows the first
/// exception. If the partitions share a group, pass it: otherwise the others may wait forever for one that
/// has failed.
void RunInProcess(int nParts, std::function<void(int part)> const& body);
void RunInProcess(InProcessGroup& group, std::function<void(int part)> const& body);

}  // namespace reference_host
