#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "cli/vtk/VtkXml.h"

namespace zyngrad {

/// Points with polygons, or only points, in the arrays of a .vtp file; all numbers are 0-based.
struct VtpSurface {
  std::vector<double> points;              ///< x, y, z of each point in turn
  std::vector<std::int64_t> connectivity;  ///< the points of each polygon
  std::vector<std::int64_t> offsets;       ///< [polygon] end of its points in `connectivity`
};

/// Writes polygons with their values, and those of their points. Throws UsageError if the file cannot be written
/// completely.
void WritePolygons(std::string const& file, VtpSurface const& surface,
                   std::vector<VtkArray> const& polygonData, std::vector<VtkArray> const& pointData = {});

/// Writes points (x, y, z of each in turn) as vertices, with their values. Throws like WritePolygons.
void WriteVertices(std::string const& file, std::vector<double> const& points,
                   std::vector<VtkArray> const& pointData);

/// Writes the index of pieces of polygons with the same arrays; `pieces` are relative to the folder of the index
/// file.
void WritePvtp(std::string const& file, std::vector<VtkArray> const& polygonData,
               std::vector<std::string> const& pieces);

}  // namespace zyngrad
