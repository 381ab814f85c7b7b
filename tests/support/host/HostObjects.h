#pragma once

#include <string>
#include <utility>
#include <vector>

#include "host/Zyn3dGV.h"
#include "tests/support/host/PartitionFaces.h"
#include "tests/support/host/RecordingCom.h"
#include "tests/support/host/RecordingCommunication.h"

namespace zyn_test {

/// Names of destroyed host objects, in the order of their destruction.
using Destroyed = std::vector<std::string>;

/// A host object that writes down its destruction in a list that outlives it.
template <typename Base>
class Watched : public Base {
 public:
  template <typename... Arguments>
  Watched(Destroyed& destroyed, char const* name, Arguments&&... arguments)
      : Base(std::forward<Arguments>(arguments)...), destroyed_(destroyed), name_(name) {}
  ~Watched() override { destroyed_.emplace_back(name_); }

 private:
  Destroyed& destroyed_;
  char const* name_;
};

/// The host objects besides the mesh. Most operators borrow them; the cell operator destroys those that it was given,
/// so that it gets new ones, which share what they lend and write down.
struct HostObjects {
  HostObjects() = default;
  HostObjects(LentPartition lentPartition, int nCell, Exchange const& exchange)
      : partition(std::move(lentPartition)), nCells(nCell), rule(exchange) {}
  HostObjects(HostObjects const&) = delete;
  HostObjects& operator=(HostObjects const&) = delete;

  CZyn3dGV* NewGlobals() {
    auto* const copy = new Watched<CZyn3dGV>(destroyed, "globals");
    copy->BaseFileName = globals.BaseFileName;
    return copy;
  }
  CZYNGVGPU* NewGPU() { return new Watched<CZYNGVGPU>(destroyed, "gpu"); }
  CZYNGVOpenMP* NewOpenMP() { return new Watched<CZYNGVOpenMP>(destroyed, "openmp"); }
  CPartitionFace_DLL* NewPartitionFaces() {
    return new Watched<PartitionFaces>(destroyed, "partition faces", partition);
  }
  CCommunication* NewCommunication() {
    return new Watched<RecordingCommunication>(destroyed, "communication", nCells, rule, exchanges);
  }

  Destroyed destroyed;
  LentPartition partition;
  int nCells = 0;
  Exchange rule = NoExchange();
  std::vector<ExchangeCall> exchanges;  ///< calls of `communication` and of all new ones

  Watched<CZyn3dGV> globals{destroyed, "globals"};
  Watched<CZYNGVGPU> gpu{destroyed, "gpu"};
  Watched<CZYNGVOpenMP> openMP{destroyed, "openmp"};
  Watched<PartitionFaces> partitionFaces{destroyed, "partition faces", partition};
  Watched<RecordingCommunication> communication{destroyed, "communication", nCells, rule, exchanges};
  Watched<RecordingCom> com{destroyed, "com"};
};

}  // namespace zyn_test
