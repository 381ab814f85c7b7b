#pragma once

#include <optional>
#include <string>
#include <vector>

#include "cli/base/Ranks.h"
#include "cli/bodies/TriangleSurface.h"
#include "cli/bodies/WindingNumber.h"
#include "cli/points/PointSet.h"

namespace zyngrad {

/// A body whose surface is read from an STL file.
class BodyFile {
 public:
  /// Collective. The first rank reads the file. Throws MeshError that names file and place, or UsageError if no
  /// triangle is left.
  BodyFile(Ranks const& ranks, std::string name);

  std::string const& name() const { return name_; }
  WindingNumber const& winding() const { return *winding_; }
  TriangleSurface const& surface() const { return surface_; }

  /// Its corners as points, and its triangles, on the first rank; see SurfaceAsPoints.
  PointSet Points(Ranks const& ranks, double spacing) const;

 private:
  std::string name_;
  TriangleSurface surface_;  ///< the faults on the first rank only
  std::optional<WindingNumber> winding_;
};

}  // namespace zyngrad
