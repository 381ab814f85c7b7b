#pragma once

#include "host/Zyn3dGV.h"
#include "reference_host/partition/HostTables.h"

namespace reference_host {

/// Lends the arrays of the partition faces.
class LentPartitionFaces : public CPartitionFace_DLL {
 public:
  explicit LentPartitionFaces(OwnedFaceGroup& group) : group_(group) {}

  int NParInterFace() override { return group_.size(); }
  int* ijParCV() override { return group_.cv.data(); }
  int* ijPar() override { return group_.other.data(); }
  double* ijParSx() override { return group_.sx.data(); }
  double* ijParSy() override { return group_.sy.data(); }
  double* ijParSz() override { return group_.sz.data(); }
  double* ijParxc() override { return group_.xc.data(); }
  double* ijParyc() override { return group_.yc.data(); }
  double* ijParzc() override { return group_.zc.data(); }
  double* ParInterFace_Lamda() override { return group_.weight.data(); }
  int* FaceType_Partition() override { return group_.type.data(); }

 private:
  OwnedFaceGroup& group_;
};

}  // namespace reference_host
