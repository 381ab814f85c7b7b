#pragma once

#include <functional>
#include <string>
#include <vector>

#include "host/ZYNCommunication.h"
#include "host/Zyn3dGV.h"
#include "tests/support/host/GuardedArray.h"

namespace rbf_cell_test {

/// Host objects that write down their destruction, in order, in a list that outlives them.
using Destroyed = std::vector<std::string>;

class WatchedGlobals : public CZyn3dGV {
 public:
  explicit WatchedGlobals(Destroyed& destroyed) : destroyed_(destroyed) {}
  ~WatchedGlobals() override { destroyed_.emplace_back("globals"); }

 private:
  Destroyed& destroyed_;
};

class WatchedGPU : public CZYNGVGPU {
 public:
  explicit WatchedGPU(Destroyed& destroyed) : destroyed_(destroyed) {}
  ~WatchedGPU() override { destroyed_.emplace_back("gpu"); }

 private:
  Destroyed& destroyed_;
};

class WatchedOpenMP : public CZYNGVOpenMP {
 public:
  explicit WatchedOpenMP(Destroyed& destroyed) : destroyed_(destroyed) {}
  ~WatchedOpenMP() override { destroyed_.emplace_back("openmp"); }

 private:
  Destroyed& destroyed_;
};

/// A halo exchange that the cell operator keeps, destroys and never calls.
class WatchedCommunication : public CCommunication {
 public:
  WatchedCommunication(Destroyed& destroyed, int& calls) : destroyed_(destroyed), calls_(calls) {}
  ~WatchedCommunication() override { destroyed_.emplace_back("communication"); }

  void DDM_Exch(double*) override { ++calls_; }
  void DDM_IExch_Start(double*, ZYNNonBlockingBufferId) override { ++calls_; }
  void DDM_IExch_Wait(double*, ZYNNonBlockingBufferId) override { ++calls_; }

 private:
  Destroyed& destroyed_;
  int& calls_;
};

/// The arrays of the partition faces, which outlive the object that lends them.
struct PartitionArrays {
  int count = 0;
  gradient_test::GuardedArray<int> cv, other;
  gradient_test::GuardedArray<double> xc, yc, zc;
  std::function<void()> onCount;  ///< called at each NParInterFace(), may be empty
};

/// Partition faces lent from PartitionArrays; null for a count of 0. What the cell operator does not need is
/// null too.
class WatchedPartitionFaces : public CPartitionFace_DLL {
 public:
  WatchedPartitionFaces(Destroyed& destroyed, PartitionArrays& arrays)
      : destroyed_(destroyed), arrays_(arrays) {}
  ~WatchedPartitionFaces() override { destroyed_.emplace_back("partition faces"); }

  int NParInterFace() override {
    if (arrays_.onCount) arrays_.onCount();
    return arrays_.count;
  }
  int* ijParCV() override { return Lend(arrays_.cv); }
  int* ijPar() override { return Lend(arrays_.other); }
  double* ijParSx() override { return nullptr; }
  double* ijParSy() override { return nullptr; }
  double* ijParSz() override { return nullptr; }
  double* ijParxc() override { return Lend(arrays_.xc); }
  double* ijParyc() override { return Lend(arrays_.yc); }
  double* ijParzc() override { return Lend(arrays_.zc); }
  double* ParInterFace_Lamda() override { return nullptr; }
  int* FaceType_Partition() override { return nullptr; }

 private:
  template <typename T>
  T* Lend(gradient_test::GuardedArray<T>& array) {
    return arrays_.count == 0 ? nullptr : array.Data();
  }

  Destroyed& destroyed_;
  PartitionArrays& arrays_;
};

}  // namespace rbf_cell_test
