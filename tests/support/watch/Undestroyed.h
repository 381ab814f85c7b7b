#pragma once

#include <new>
#include <utility>

namespace zyn_test {

/// An operator that is never destroyed: one that shares its tables and host objects with another, or whose
/// members a test has overwritten.
template <typename Object>
class Undestroyed {
 public:
  template <typename... Arguments>
  explicit Undestroyed(Arguments&&... arguments)
      : object_(new (memory_) Object(std::forward<Arguments>(arguments)...)) {}
  Undestroyed(Undestroyed const&) = delete;
  Undestroyed& operator=(Undestroyed const&) = delete;

  Object& operator*() { return *object_; }
  Object* operator->() { return object_; }

 private:
  alignas(Object) unsigned char memory_[sizeof(Object)];
  Object* object_;
};

}  // namespace zyn_test
