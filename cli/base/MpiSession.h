#pragma once

namespace zyngrad {

/// Initialises MPI on construction and finalises it on destruction; one object in a program.
class MpiSession {
 public:
  MpiSession(int* argc, char*** argv);  ///< both may be null
  ~MpiSession();
  MpiSession(MpiSession const&) = delete;
  MpiSession& operator=(MpiSession const&) = delete;
};

}  // namespace zyngrad
