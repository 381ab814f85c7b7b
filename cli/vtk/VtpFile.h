#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "cli/vtk/VtkXml.h"

namespace zyngrad {

/// Points with polygons on them, or points alone, in the arrays of a .vtp file; all numbers 0-based.
struct VtpSurface {
  std::vector<double> points;              ///< x, y, z of each point in turn
  std::vector<std::int64_t> connectivity;  ///< the points of each polygon
  std::vector<std::int64_t> offsets;       ///< [polygon] end of its points in connectivity
};

/// Writes polygons with their values. Throws UsageError when the file cannot be written whole.
void WritePolygons(std::string const& file, VtpSurface const& surface,
                   std::vector<VtkArray> const& polygonData);

/// Writes points alone (x, y, z of each in turn), a vertex each, with their values. Throws as WritePolygons.
void WriteVertices(std::string const& file, std::vector<double> const& points,
                   std::vector<VtkArray> const& pointData);

/// Writes the index of pieces of polygons that have the same arrays; `pieces` are relative to the index
/// file's folder.
void WritePvtp(std::string const& file, std::vector<VtkArray> const& polygonData,
               std::vector<std::string> const& pieces);

}  // namespace zyngrad
