#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "cli/VtkXml.h"

namespace zyngrad {

/// Points with polygons on them, or points alone, in the arrays of a .vtp file; all numbers 0-based.
struct VtpSurface {
  std::vector<double> points;              ///< x, y, z of each point in turn
  std::vector<std::int64_t> connectivity;  ///< the points of each polygon
  std::vector<std::int64_t> offsets;       ///< [polygon] end of its points in connectivity
};

/// Writes polygons with their values. Throws UsageError when the file cannot be written whole.
void WritePolygons(const std::string& file, const VtpSurface& surface,
                   const std::vector<VtkArray>& polygonData);

/// Writes points alone (x, y, z of each in turn), a vertex each, with their values. Throws as WritePolygons.
void WriteVertices(const std::string& file, const std::vector<double>& points,
                   const std::vector<VtkArray>& pointData);

/// Writes the index of pieces of polygons that have the same arrays; `pieces` are relative to the index
/// file's folder.
void WritePvtp(const std::string& file, const std::vector<VtkArray>& polygonData,
               const std::vector<std::string>& pieces);

}  // namespace zyngrad
