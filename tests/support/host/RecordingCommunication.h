#pragma once

#include <cstddef>
#include <cstring>
#include <functional>
#include <ostream>
#include <utility>
#include <vector>

#include "host/ZYNCommunication.h"
#include "tests/support/mesh/TestMesh.h"

namespace zyn_test {

/// What an exchange does to one cell array, given by its element 0.
using Exchange = std::function<void(double*)>;

/// An exchange that leaves the array alone, so that a test sees what the halo cells held before.
Exchange NoExchange();

/// An exchange with this partition as its own neighbour: each halo cell takes the value of a fixed interior
/// cell.
Exchange ExchangeWithItself(TestMesh const& mesh);

enum class ExchangeOperation { Blocking, Start, Wait };

/// One call of a halo exchange. `buffer` is -1 for the blocking form.
struct ExchangeCall {
  ExchangeOperation operation;
  double const* field;
  int buffer;
};

inline bool operator==(ExchangeCall const& a, ExchangeCall const& b) {
  return a.operation == b.operation && a.field == b.field && a.buffer == b.buffer;
}

inline std::ostream& operator<<(std::ostream& out, ExchangeCall const& call) {
  char const* const names[] = {"DDM_Exch", "DDM_IExch_Start", "DDM_IExch_Wait"};
  out << names[static_cast<int>(call.operation)] << "(" << static_cast<void const*>(call.field);
  if (call.buffer >= 0) out << ", " << call.buffer;
  return out << ")";
}

/// A halo exchange that writes down every call, fills the halo cells by a given rule (at the wait, for the
/// non-blocking form) and watches the rules of the non-blocking form. Nothing is allocated during a call.
class RecordingCommunication : public CCommunication {
 public:
  /// @param[out] calls  every call is added; must outlive this
  RecordingCommunication(int nCell, Exchange exchange, std::vector<ExchangeCall>& calls)
      : nCell_(nCell), exchange_(std::move(exchange)), calls_(calls) {
    calls_.reserve(1000);
    for (Buffer& buffer : buffers_) buffer.atStart.resize(Elements());
  }

  void DDM_Exch(double* field) override {
    calls_.push_back({ExchangeOperation::Blocking, field, -1});
    exchange_(field);
  }

  void DDM_IExch_Start(double* field, ZYNNonBlockingBufferId id) override {
    calls_.push_back({ExchangeOperation::Start, field, id});
    Buffer& buffer = buffers_[id];
    if (buffer.field != nullptr) rulesKept_ = false;  // started again before its wait
    buffer.field = field;
    std::memcpy(buffer.atStart.data(), field, Elements() * sizeof(double));
  }

  void DDM_IExch_Wait(double* field, ZYNNonBlockingBufferId id) override {
    calls_.push_back({ExchangeOperation::Wait, field, id});
    Buffer& buffer = buffers_[id];
    if (buffer.field != field) {
      rulesKept_ = false;  // not started, or with another array
    } else if (std::memcmp(buffer.atStart.data(), field, Elements() * sizeof(double)) != 0) {
      rulesKept_ = false;  // touched between start and wait
    }
    buffer.field = nullptr;
    exchange_(field);
  }

  std::vector<ExchangeCall> const& Calls() const { return calls_; }
  void ForgetCalls() { calls_.clear(); }

  /// Replaces the rule for the halo cells.
  void SetExchange(Exchange exchange) { exchange_ = std::move(exchange); }

  /// Whether every start had its wait with the same array, untouched in between, and no buffer was used twice
  /// at once.
  bool RulesKept() const {
    bool allWaited = true;
    for (Buffer const& buffer : buffers_) allWaited = allWaited && buffer.field == nullptr;
    return rulesKept_ && allWaited;
  }

 private:
  struct Buffer {
    double const* field = nullptr;  ///< array under way, null when free
    std::vector<double> atStart;    ///< its elements 0..nCell when the exchange was started
  };

  std::size_t Elements() const { return static_cast<std::size_t>(nCell_) + 1; }

  int nCell_;
  Exchange exchange_;
  std::vector<ExchangeCall>& calls_;
  Buffer buffers_[4];
  bool rulesKept_ = true;
};

/// The calls that exchange three arrays: each in turn, or started with the buffers 0, 1, 2 and waited for in
/// that order.
std::vector<ExchangeCall> ThreeArrayExchange(bool nonBlocking, double const* x, double const* y,
                                             double const* z);

}  // namespace zyn_test
