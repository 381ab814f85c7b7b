#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "cli/vtk/VtkXml.h"

namespace zyngrad {

/// An unstructured grid in the arrays of a .vtu file; all numbers are 0-based.
struct VtuGrid {
  std::vector<double> points;              ///< x, y, z of each point in turn
  std::vector<std::int64_t> connectivity;  ///< the points of each cell
  std::vector<std::int64_t> offsets;       ///< [cell] end of the cell's points in `connectivity`
  std::vector<std::uint8_t> types;         ///< [cell] see VtkType
  /// For each polyhedron: the number of faces, then for each face the number of points and the points. Empty if
  /// there are no polyhedra.
  std::vector<std::int64_t> faces;
  std::vector<std::int64_t>
      faceOffsets;  ///< [cell] end of the cell's part of `faces`; -1 if it is no polyhedron
};

/// Writes one piece: XML followed by all arrays as raw bytes in the machine's byte order.
/// Throws UsageError if the file cannot be written completely.
void WriteVtu(std::string const& file, VtuGrid const& grid, std::vector<VtkArray> const& cellData);

/// Writes the index of pieces with the same arrays; `pieces` are relative to the folder of the index file.
void WritePvtu(std::string const& file, std::vector<VtkArray> const& cellData,
               std::vector<std::string> const& pieces);

}  // namespace zyngrad
