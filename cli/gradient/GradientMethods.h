#pragma once

#include <array>
#include <optional>
#include <string>
#include <vector>

#include "cli/base/Ranks.h"
#include "cli/gradient/GradientErrors.h"
#include "cli/options/RadialBasisSettings.h"
#include "gradient/COperatorGradient.h"
#include "gradient/GradientTypes.h"
#include "reference_host/partition/HostPartition.h"

namespace zyngrad {

/// What a method reads and writes on one partition.
struct MethodData {
  std::array<std::vector<double>*, 3> field =
      {};                                  ///< [1..NCell] each, borrowed; methods of one field read the first
  std::array<GradientArrays, 3> gradient;  ///< methods of one field fill the first
  std::vector<double> weight;              ///< [1..NCell] coefficient, for the weighted method
  int nSweeps = 3;                         ///< for the iterated method
  CCommunication* exchange = nullptr;      ///< borrowed; for methods that leave the exchange to the host
};

/// A gradient method as the program offers it. A new method is one more row of GradientMethods().
struct GradientMethod {
  char const* name;         ///< on the command line, in tables and files
  char const* description;  ///< half a line for the help text
  int gradientType;         ///< given to the operator before Initialize
  int nFields;              ///< 1, or 3: takes three fields at once

  void (*run)(COperatorGradient& op, MethodData& data);

  /// Collective, after Initialize: why `run` must not be called on this mesh, the same on every rank. Null if it
  /// may be called on any mesh.
  std::optional<std::string> (*obstacle)(Ranks const& ranks, COperatorGradient& op,
                                         reference_host::HostPartition& partition);

  /// Collective: what a user should know about the result on this mesh, one line each, the same on every rank.
  /// Null if there is nothing to know.
  std::vector<std::string> (*remarks)(Ranks const& ranks, reference_host::HostPartition& partition,
                                      RadialBasisSettings const& settings) = nullptr;
};

/// In the order of tables and files.
std::vector<GradientMethod> const& GradientMethods();

/// "plain, iterated, ..." for messages and help.
std::string GradientMethodNames();

}  // namespace zyngrad
