#pragma once

#include <string>

#include "tests/support/host/Host.h"
#include "tests/support/host/Parameters.h"

/// @file
/// The hosts of the four operators: each lends what its operator reads.

namespace zyn_test {

struct GradientHost : Host {
  explicit GradientHost(TestMesh const& description, Exchange const& exchange = NoExchange(),
                        bool lendEmptyArrays = false)
      : Host(description, ReadByGreenGaussAndLeastSquares(), "", exchange, lendEmptyArrays) {}
};

struct CellHost : Host {
  CellHost(TestMesh const& description, std::string const& baseFileName)
      : Host(description, ReadByTheCellOperator(), baseFileName) {}
};

/// The face operator asks the partition faces for nothing but what it reads.
struct FaceHost : Host {
  FaceHost(TestMesh const& description, std::string const& baseFileName)
      : Host(description, ReadByTheFaceOperator(), baseFileName) {
    partition.failOnOtherCalls = true;
  }

  FaceParameters parameters;
};

struct PointHost : Host {
  PointHost(TestMesh const& description, std::string const& baseFileName)
      : Host(description, ReadByThePointOperator(), baseFileName) {}
};

}  // namespace zyn_test
