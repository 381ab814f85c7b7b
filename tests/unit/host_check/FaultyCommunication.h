#pragma once

#include <functional>
#include <utility>

#include "host/ZYNCom.h"
#include "host/ZYNCommunication.h"

/// An exchange that works like the real one until a test replaces an operation.
class FaultyCommunication : public CCommunication {
 public:
  explicit FaultyCommunication(CCommunication& real)
      : exchange([&real](double* field) { real.DDM_Exch(field); }),
        start([&real](double* field, ZYNNonBlockingBufferId id) { real.DDM_IExch_Start(field, id); }),
        wait([&real](double* field, ZYNNonBlockingBufferId id) { real.DDM_IExch_Wait(field, id); }) {}

  void DDM_Exch(double* field) override { exchange(field); }
  void DDM_IExch_Start(double* field, ZYNNonBlockingBufferId id) override { start(field, id); }
  void DDM_IExch_Wait(double* field, ZYNNonBlockingBufferId id) override { wait(field, id); }

  std::function<void(double*)> exchange;
  std::function<void(double*, ZYNNonBlockingBufferId)> start, wait;
};

/// A reduction that a test replaces.
class FaultyReduction : public CZYNCom {
 public:
  explicit FaultyReduction(std::function<void(int&)> allMin) : allMin_(std::move(allMin)) {}

  int AllMin(int& value) override {
    allMin_(value);
    return 0;
  }

 private:
  std::function<void(int&)> allMin_;
};
