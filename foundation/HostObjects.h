#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "foundation/ErrorText.h"
#include "foundation/Status.h"

/// @file
/// How the operators store the host objects that a solver hands to their setters.

constexpr char kNoGlobals[] = "Can not get the object of Global Variables\n";
constexpr char kNoPartitionFaces[] = "Can not get the object of Part Faces\n";
constexpr char kNoCommunication[] = "Can not get the object of Communication\n";

/// Stores `given`. A null is a failure: the earlier value is kept and the line `failure` is appended to `errorText`.
/// @return 1; -1 for null
template <typename T, std::size_t N>
int Receive(T* given, T*& kept, char (&errorText)[N], char const* failure) {
  if (given == nullptr) {
    AppendErrorText(errorText, failure);
    return Status::kFailure;
  }
  kept = given;
  return Status::kSuccess;
}

/// Stores `given` if it is not null. @return whether it did
template <typename T>
bool ReceiveIfGiven(T* given, T*& kept) {
  if (given == nullptr) return false;
  kept = given;
  return true;
}

/// Stores the accelerator object and its first word if it is not null.
template <typename T>
void ReceiveAccelerator(T* given, T*& kept, std::uint64_t& firstWord) {
  if (ReceiveIfGiven(given, kept))
    std::memcpy(&firstWord, static_cast<void const*>(given), sizeof(firstWord));
}
