#pragma once

#include <algorithm>
#include <array>
#include <condition_variable>
#include <mutex>
#include <vector>

#include "Slab.h"
#include "host/ZYNCom.h"
#include "host/ZYNCommunication.h"
#include "host/ZYNKNCompParm.h"

/// The meeting point of the threads of this program, each of which is one partition.
class Team {
 public:
  explicit Team(int nParts)
      : field(5, std::vector<double*>(static_cast<std::size_t>(nParts))), value(nParts) {}

  /// Returns when all partitions have called it. Afterwards, everyone sees what any of them wrote before.
  void Meet() {
    std::unique_lock<std::mutex> lock(mutex_);
    long const round = round_;
    if (++nHere_ == static_cast<int>(value.size())) {
      nHere_ = 0;
      ++round_;
      everyoneIsHere_.notify_all();
    } else {
      everyoneIsHere_.wait(lock, [this, round] { return round_ != round; });
    }
  }

  std::vector<std::vector<double*>> field;  ///< [buffer][part] what is being exchanged
  std::vector<int> value;                   ///< [part] what is being compared

 private:
  std::mutex mutex_;
  std::condition_variable everyoneIsHere_;
  int nHere_ = 0;
  long round_ = 0;
};

/// The halo exchange: each partition reads what it needs from its neighbours' arrays.
class Exchange : public CCommunication {
 public:
  Exchange(Team& team, Slab const& slab) : team_(team), slab_(slab) {}

  void DDM_Exch(double* field) override {
    Offer(field, kBlocking);
    Take(field, kBlocking);
  }
  void DDM_IExch_Start(double* field, ZYNNonBlockingBufferId id) override { Offer(field, id); }
  void DDM_IExch_Wait(double* field, ZYNNonBlockingBufferId id) override { Take(field, id); }

 private:
  static constexpr std::size_t kBlocking = 4;  // after the four buffers

  // Returns at once, as the start of an exchange must.
  void Offer(double* field, std::size_t buffer) {
    team_.field[buffer][static_cast<std::size_t>(slab_.part)] = field;
  }

  // Every partition makes the same calls in the same order, so all have offered their fields before they meet. The
  // second meeting prevents the neighbours from changing their fields while these are being read.
  void Take(double* field, std::size_t buffer) {
    team_.Meet();
    for (HaloSource const& from : slab_.halo)
      field[from.haloCell] = team_.field[buffer][static_cast<std::size_t>(from.part)][from.cell];
    team_.Meet();
  }

  Team& team_;
  Slab const& slab_;
};

/// The reduction.
class Reduction : public CZYNCom {
 public:
  Reduction(Team& team, int part) : team_(team), part_(part) {}

  int AllMin(int& value) override {
    team_.value[static_cast<std::size_t>(part_)] = value;
    team_.Meet();
    value = *std::min_element(team_.value.begin(), team_.value.end());
    team_.Meet();
    return 0;
  }

 private:
  Team& team_;
  int part_;
};

/// The faces between this slab and its neighbours.
class PartitionFaces : public CPartitionFace_DLL {
 public:
  explicit PartitionFaces(FaceTable& faces) : faces_(faces) {}

  int NParInterFace() override { return faces_.count(); }
  int* ijParCV() override { return faces_.cell.data(); }
  int* ijPar() override { return faces_.other.data(); }
  double* ijParSx() override { return faces_.sx.data(); }
  double* ijParSy() override { return faces_.sy.data(); }
  double* ijParSz() override { return faces_.sz.data(); }
  double* ijParxc() override { return faces_.x.data(); }
  double* ijParyc() override { return faces_.y.data(); }
  double* ijParzc() override { return faces_.z.data(); }
  double* ParInterFace_Lamda() override { return faces_.weight.data(); }
  int* FaceType_Partition() override { return faces_.type.data(); }

 private:
  FaceTable& faces_;
};

/// The solver's parameters. An operator that has them reads and writes no settings file.
class Parameters : public CZYNKNCMPCompParm {
 public:
  CZYNCMP_FaceRBF_Parm* getFaceRBFParm() override { return &faces; }
  CZYNCMP_IBRBF_Parm* getIBRBFParm() override { return &points; }

  CZYNCMP_FaceRBF_Parm faces;
  CZYNCMP_IBRBF_Parm points;
};
