#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "cli/vtk/VtkXml.h"

namespace zyngrad {

/// An unstructured grid in the arrays of a .vtu file; all numbers 0-based.
struct VtuGrid {
  std::vector<double> points;              ///< x, y, z of each point in turn
  std::vector<std::int64_t> connectivity;  ///< the points of each cell
  std::vector<std::int64_t> offsets;       ///< [cell] end of the cell's points in connectivity
  std::vector<std::uint8_t> types;         ///< [cell] see VtkType
  /// For polyhedra: number of faces, then for each face its number of points and its points. Empty without
  /// polyhedra.
  std::vector<std::int64_t> faces;
  std::vector<std::int64_t> faceOffsets;  ///< [cell] end of the cell's part of `faces`, -1: not a polyhedron
};

/// Writes one piece: XML with all arrays as raw bytes behind it, in the machine's byte order.
/// Throws UsageError when the file cannot be written whole.
void WriteVtu(std::string const& file, VtuGrid const& grid, std::vector<VtkArray> const& cellData);

/// Writes the index of pieces that have the same arrays; `pieces` are relative to the index file's folder.
void WritePvtu(std::string const& file, std::vector<VtkArray> const& cellData,
               std::vector<std::string> const& pieces);

}  // namespace zyngrad
