#pragma once

namespace zyngrad {

/// MPI from construction to destruction; one object in a program.
class MpiSession {
 public:
  MpiSession(int* argc, char*** argv);  ///< both may be null
  ~MpiSession();
  MpiSession(const MpiSession&) = delete;
  MpiSession& operator=(const MpiSession&) = delete;
};

}  // namespace zyngrad
