#pragma once

#include <new>
#include <utility>

#include "rbf_cell/CZynRBFInternalObject.h"

namespace zyn_test {

/// An operator that is never destroyed: one that shares its tables and host objects with another, or whose
/// members a test has overwritten.
class Undestroyed {
 public:
  template <typename... Arguments>
  explicit Undestroyed(Arguments&&... arguments)
      : object_(new (memory_) CZynRBFInternalObject(std::forward<Arguments>(arguments)...)) {}
  Undestroyed(Undestroyed const&) = delete;
  Undestroyed& operator=(Undestroyed const&) = delete;

  CZynRBFInternalObject& operator*() { return *object_; }
  CZynRBFInternalObject* operator->() { return object_; }

 private:
  alignas(CZynRBFInternalObject) unsigned char memory_[sizeof(CZynRBFInternalObject)];
  CZynRBFInternalObject* object_;
};

}  // namespace zyn_test
