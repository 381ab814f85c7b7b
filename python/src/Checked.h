#pragma once

#include <utility>

namespace zyn_python {

// An operation of a class as a function that takes the object by reference: then pybind11 throws a TypeError for an
// object whose constructor has not run, instead of passing null.

template <class Class, class Result, class... Arguments>
auto Checked(Result (Class::*operation)(Arguments...)) {
  return [operation](Class& self, Arguments... arguments) -> Result {
    return (self.*operation)(std::forward<Arguments>(arguments)...);
  };
}

template <class Class, class Result, class... Arguments>
auto Checked(Result (Class::*operation)(Arguments...) const) {
  return [operation](Class const& self, Arguments... arguments) -> Result {
    return (self.*operation)(std::forward<Arguments>(arguments)...);
  };
}

}  // namespace zyn_python
