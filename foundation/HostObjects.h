#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "foundation/ErrorText.h"
#include "foundation/Status.h"

class CZYN3DFiniteVolumeMesh;
class CZYNGVGPU;
class CZYNGVOpenMP;
class CZyn3dGV;

/// @file
/// What the setters of all operators do with the host objects that a solver hands over.

constexpr char kNoGlobals[] = "Can not get the object of Global Variables\n";
constexpr char kNoPartitionFaces[] = "Can not get the object of Part Faces\n";
constexpr char kNoCommunication[] = "Can not get the object of Communication\n";

/// Stores `given`. A null is a failure: the earlier object is kept.
/// @return 1; -1 for null, with the line `failure` appended to `errorText`
template <typename T, std::size_t N>
int Receive(T* given, T*& kept, char (&errorText)[N], char const* failure) {
  if (given == nullptr) {
    AppendErrorText(errorText, failure);
    return Status::kFailure;
  }
  kept = given;
  return Status::kSuccess;
}

/// Stores `given` unless it is null. @return whether it did
template <typename T>
bool ReceiveIfGiven(T* given, T*& kept) {
  if (given == nullptr) return false;
  kept = given;
  return true;
}

/// Stores the accelerator object and its first word, unless it is null.
template <typename T>
void ReceiveAccelerator(T* given, T*& kept, std::uint64_t& firstWord) {
  if (ReceiveIfGiven(given, kept))
    std::memcpy(&firstWord, static_cast<void const*>(given), sizeof(firstWord));
}

/// The members of an operator that getZyn3dGV fills.
struct KeptObjects {
  CZyn3dGV*& globals;
  CZYNGVGPU*& accelerator;
  std::uint64_t& acceleratorHead;
  CZYNGVOpenMP*& threading;
  CZYN3DFiniteVolumeMesh*& mesh;
};

/// getZyn3dGV of the radial-basis operators: stores the global variables, and each of the others unless it is null.
/// @return 1; -1 for null global variables, with a line of failure text and nothing stored
template <std::size_t N>
int ReceiveMesh(CZyn3dGV* globals, CZYNGVGPU* accelerator, CZYNGVOpenMP* threading,
                CZYN3DFiniteVolumeMesh* mesh, KeptObjects const& kept, char (&errorText)[N]) {
  int const status = Receive(globals, kept.globals, errorText, kNoGlobals);
  if (status != Status::kSuccess) return status;
  ReceiveAccelerator(accelerator, kept.accelerator, kept.acceleratorHead);
  ReceiveIfGiven(threading, kept.threading);
  ReceiveIfGiven(mesh, kept.mesh);
  return status;
}
