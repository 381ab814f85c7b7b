#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "cli/base/Ranks.h"
#include "cli/gradient/GradientRun.h"
#include "cli/output/OutputFolder.h"
#include "cli/vtk/SeriesFiles.h"
#include "cli/vtk/VtuFile.h"
#include "reference_host/partition/HostPartition.h"

namespace zyngrad {

/// The names of all files that a GradientGrid stages on all ranks.
/// @param[in] times  a single one may be empty
std::vector<std::string> GradientGridFiles(Ranks const& ranks, std::vector<std::string> const& times);

/// The grid with the fields and the gradient of each method, and if known, exact gradients and errors: gradient.vtu on
/// one rank; gradient.pvtu and one piece per rank in gradient/ on several ranks. For several times, gradient_TIME.vtu
/// for each and gradient.pvd.
class GradientGrid {
 public:
  /// Borrows everything. The grid is built once, for all times.
  GradientGrid(Ranks const& ranks, reference_host::HostPartition& partition, OutputFolder& folder,
               std::vector<std::string> const& times);

  /// Collective. Stages the files of one time.
  /// @param[in] more  further arrays of the interior cells of this rank
  void Stage(std::size_t time, GradientCase const& theCase, std::vector<MethodResult> const& results,
             std::vector<VtkArray> more = {});

  /// Collective, after all times. @return the name of the file to open
  std::string StageIndex();

 private:
  Ranks const& ranks_;
  reference_host::HostPartition& partition_;
  OutputFolder& folder_;
  SeriesFiles files_;
  std::optional<VtuGrid> grid_;  ///< once Stage has built it
};

}  // namespace zyngrad
