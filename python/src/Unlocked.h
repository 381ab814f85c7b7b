#pragma once

#include <pybind11/pybind11.h>

#include <mutex>

#include "python/src/CallLock.h"

namespace zyn_python {

/// Runs the work while other threads of Python go on, but no other thread runs what `lock` guards.
/// @pre the caller holds the interpreter's lock
template <class Work>
void RunUnlocked(CallLock& lock, Work const& work) {
  lock.RefuseNested();
  // In this order: a thread that waited for the object with the interpreter's lock would stop an exchange in Python.
  pybind11::gil_scoped_release const interpreter;
  std::lock_guard<CallLock> const one(lock);
  work();
}

}  // namespace zyn_python
