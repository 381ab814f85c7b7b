#pragma once

#include <stdexcept>

namespace reference_host {

/// What is wrong with an input, in one line that names the file, line, number or value. Thrown by the reference host
/// only; in parallel every rank throws it with the same text.
class MeshError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

}  // namespace reference_host
