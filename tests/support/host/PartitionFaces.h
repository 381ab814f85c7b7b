#pragma once

#include <functional>
#include <vector>

#include "host/Zyn3dGV.h"
#include "tests/support/host/LentFaces.h"
#include "tests/support/host/Reads.h"

namespace zyn_test {

/// What partition faces are lent from. It outlives the object that lends them.
struct LentPartition {
  explicit LentPartition(std::vector<Face> const& list = {}, GroupReads const& groupReads = kAllOfAGroup)
      : faces(list), reads(groupReads) {}

  LentFaces faces;
  GroupReads reads;
  bool failOnOtherCalls = false;  ///< asking for what `reads` leaves out fails the test; otherwise it is null
  int calls = 0;                  ///< of any accessor
  std::function<void()> onCount;  ///< called at each NParInterFace(), may be empty
};

/// Partition faces lent from a LentPartition.
class PartitionFaces : public CPartitionFace_DLL {
 public:
  explicit PartitionFaces(LentPartition& lent) : lent_(lent), faces_(lent.faces) {}

  int NParInterFace() override;
  int* ijParCV() override { return Lend(true, faces_.cv); }
  int* ijPar() override { return Lend(true, faces_.other); }
  double* ijParSx() override { return Lend(lent_.reads.areas, faces_.sx); }
  double* ijParSy() override { return Lend(lent_.reads.areas, faces_.sy); }
  double* ijParSz() override { return Lend(lent_.reads.areas, faces_.sz); }
  double* ijParxc() override { return Lend(lent_.reads.centres, faces_.xc); }
  double* ijParyc() override { return Lend(lent_.reads.centres, faces_.yc); }
  double* ijParzc() override { return Lend(lent_.reads.centres, faces_.zc); }
  double* ParInterFace_Lamda() override { return Lend(lent_.reads.weights, faces_.weight); }
  int* FaceType_Partition() override { return Lend(lent_.reads.weights, faces_.type); }

  /// Accessor calls so far.
  int Calls() const { return lent_.calls; }

 private:
  template <typename T>
  T* Lend(bool isRead, GuardedArray<T>& array) {
    ++lent_.calls;
    if (isRead) return faces_.Lend(array);
    NotRead();
    return nullptr;
  }
  void NotRead() const;

  LentPartition& lent_;
  LentFaces& faces_;
};

}  // namespace zyn_test
