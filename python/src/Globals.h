#pragma once

#include <string>
#include <vector>

#include "host/Zyn3dGV.h"

namespace zyn_python {

/// The global variables of one operator. Each operator has its own, so that threads may run different operators of a
/// mesh: the work arrays and the settings file belong to one operator at a time.
class Globals : public CZyn3dGV {
 public:
  Globals() {
    ResetRealBlock = resetReal_;
    ResetIntBlock = resetInt_;
    SetFileName("");
  }
  Globals(Globals const&) = delete;
  Globals& operator=(Globals const&) = delete;

  /// The work arrays of the iterated gradient.
  void MakeIterationArrays(int nCells) {
    for (auto& values : previous_) values.assign(static_cast<std::size_t>(nCells) + 1, 0.0);
    PrevGradX = previous_[0].data();
    PrevGradY = previous_[1].data();
    PrevGradZ = previous_[2].data();
  }

  void SetFileName(std::string const& name) {
    fileName_ = name;
    BaseFileName = fileName_.data();
  }

 private:
  double resetReal_[5] = {};
  int resetInt_[5] = {};
  std::vector<double> previous_[3];
  std::string fileName_;
};

}  // namespace zyn_python
