#pragma once

#include <stdexcept>

namespace reference_host {

/// An error in the input, described in one line that names the file, line, number or value. Only the
/// reference host throws it; in parallel, every rank throws it with the same text.
class MeshError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

}  // namespace reference_host
