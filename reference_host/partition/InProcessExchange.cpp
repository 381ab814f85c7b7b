#include "reference_host/partition/InProcessExchange.h"

#include <algorithm>
#include <exception>
#include <stdexcept>
#include <thread>
#include <utility>

namespace reference_host {
namespace {

constexpr int kBlockingChannel = InProcessGroup::kChannels - 1;

std::string ChannelName(int channel) {
  return channel == kBlockingChannel ? "the blocking exchange" : "buffer " + std::to_string(channel);
}

[[noreturn]] void FailWith(int part, std::string const& what) {
  throw std::logic_error("halo exchange of partition " + std::to_string(part) + ": " + what);
}

}  // namespace

InProcessGroup::InProcessGroup(int nParts)
    : nParts_(nParts), boxes_(static_cast<std::size_t>(nParts) * nParts * kChannels) {}

void InProcessGroup::Abort() {
  std::lock_guard<std::mutex> const lock(mutex_);
  isAborted_ = true;
  changed_.notify_all();
}

int InProcessGroup::AllMin(int value) {
  std::unique_lock<std::mutex> lock(mutex_);
  minimum_ = nArrived_ == 0 ? value : std::min(minimum_, value);
  if (++nArrived_ == nParts_) {
    result_ = minimum_;
    nArrived_ = 0;
    ++nReductions_;
    changed_.notify_all();
    return result_;
  }
  // The next reduction cannot complete without this partition, so the result stays until it is read.
  std::int64_t const own = nReductions_;
  changed_.wait(lock, [&] { return nReductions_ != own || isAborted_; });
  if (nReductions_ == own) throw std::runtime_error("another partition has failed during a reduction");
  return result_;
}

std::deque<InProcessGroup::Message>& InProcessGroup::Box(int from, int to, int channel) {
  return boxes_[(static_cast<std::size_t>(from) * nParts_ + to) * kChannels + channel];
}

void InProcessGroup::Post(int from, int to, int channel, Message message) {
  std::lock_guard<std::mutex> const lock(mutex_);
  Box(from, to, channel).push_back(std::move(message));
  changed_.notify_all();
}

InProcessGroup::Message InProcessGroup::Take(int from, int to, int channel) {
  std::unique_lock<std::mutex> lock(mutex_);
  std::deque<Message>& box = Box(from, to, channel);
  changed_.wait(lock, [&] { return !box.empty() || isAborted_; });
  if (box.empty()) throw std::runtime_error("another partition has failed during an exchange");
  Message message = std::move(box.front());
  box.pop_front();
  return message;
}

InProcessCommunication::InProcessCommunication(InProcessGroup& group, HostPartition const& partition)
    : group_(group), part_(partition.part()), lists_(partition.exchangeLists()) {
  if (partition.nParts() != group.nParts()) {
    FailWith(part_, "made for " + std::to_string(partition.nParts()) + " partitions, but the group has " +
                        std::to_string(group.nParts()));
  }
}

void InProcessCommunication::DDM_Exch(double* field) {
  Start(field, kBlockingChannel);
  Finish(field, kBlockingChannel);
}

void InProcessCommunication::DDM_IExch_Start(double* field, ZYNNonBlockingBufferId id) { Start(field, id); }

void InProcessCommunication::DDM_IExch_Wait(double* field, ZYNNonBlockingBufferId id) { Finish(field, id); }

void InProcessCommunication::Start(double const* field, int channel) {
  Pending& pending = pending_[channel];
  if (field == nullptr) FailWith(part_, "start of " + ChannelName(channel) + " without a field");
  if (pending.field != nullptr)
    FailWith(part_, "start in " + ChannelName(channel) + ", which is still under way");
  pending = {field, ++nStarted_};
  for (ExchangeList const& list : lists_) {
    InProcessGroup::Message message;
    message.exchange = pending.exchange;
    message.values.reserve(list.send.size());
    for (int const cell : list.send) message.values.push_back(field[cell]);
    group_.Post(part_, list.part, channel, std::move(message));
  }
}

void InProcessCommunication::Finish(double* field, int channel) {
  Pending& pending = pending_[channel];
  if (pending.field == nullptr)
    FailWith(part_, "wait for " + ChannelName(channel) + ", which was not started");
  if (pending.field != field) FailWith(part_, "wait for " + ChannelName(channel) + " with another field");
  for (ExchangeList const& list : lists_) {
    InProcessGroup::Message const message = group_.Take(list.part, part_, channel);
    if (message.exchange != pending.exchange || message.values.size() != list.receive.size()) {
      FailWith(part_, "partition " + std::to_string(list.part) + " started its exchange number " +
                          std::to_string(message.exchange) + " in " + ChannelName(channel) +
                          ", this partition its number " + std::to_string(pending.exchange));
    }
    for (std::size_t i = 0; i < list.receive.size(); ++i) field[list.receive[i]] = message.values[i];
  }
  pending = {};
}

int InProcessReduction::AllMin(int& value) {
  value = group_.AllMin(value);
  return 0;
}

namespace {

void RunThreads(int nParts, std::function<void(int)> const& body, std::function<void()> const& onFailure) {
  std::mutex mutex;
  std::exception_ptr firstFailure;
  std::vector<std::thread> threads;
  threads.reserve(nParts);
  for (int part = 0; part < nParts; ++part) {
    threads.emplace_back([&, part] {
      try {
        body(part);
      } catch (...) {
        {
          std::lock_guard<std::mutex> const lock(mutex);
          if (!firstFailure) firstFailure = std::current_exception();
        }
        onFailure();
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  if (firstFailure) std::rethrow_exception(firstFailure);
}

}  // namespace

void RunInProcess(int nParts, std::function<void(int part)> const& body) {
  RunThreads(nParts, body, [] {});
}

void RunInProcess(InProcessGroup& group, std::function<void(int part)> const& body) {
  RunThreads(group.nParts(), body, [&group] { group.Abort(); });
}

}  // namespace reference_host
