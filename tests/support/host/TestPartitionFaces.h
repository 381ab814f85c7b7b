#pragma once

#include <vector>

#include "host/Zyn3dGV.h"
#include "tests/support/host/GuardedFaces.h"

namespace gradient_test {

/// Partition faces lent from guarded arrays; the accessors count their calls.
class TestPartitionFaces : public CPartitionFace_DLL {
 public:
  explicit TestPartitionFaces(std::vector<Face> const& faces) : faces_(faces) {}

  int NParInterFace() override { return ++calls_, faces_.count; }
  int* ijParCV() override { return Lend(faces_.cv); }
  int* ijPar() override { return Lend(faces_.other); }
  double* ijParSx() override { return Lend(faces_.sx); }
  double* ijParSy() override { return Lend(faces_.sy); }
  double* ijParSz() override { return Lend(faces_.sz); }
  double* ijParxc() override { return Lend(faces_.xc); }
  double* ijParyc() override { return Lend(faces_.yc); }
  double* ijParzc() override { return Lend(faces_.zc); }
  double* ParInterFace_Lamda() override { return Lend(faces_.weight); }
  int* FaceType_Partition() override { return Lend(faces_.type); }

  GuardedFaces& Faces() { return faces_; }
  GuardedFaces const& Faces() const { return faces_; }

  /// Accessor calls so far.
  int Calls() const { return calls_; }

 private:
  template <typename T>
  T* Lend(GuardedArray<T>& array) {
    ++calls_;
    return faces_.Lend(array);
  }

  GuardedFaces faces_;
  int calls_ = 0;
};

}  // namespace gradient_test
