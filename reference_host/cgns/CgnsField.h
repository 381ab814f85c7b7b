#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "reference_host/cgns/CgnsFile.h"

namespace reference_host {

/// A cell-centred field of a CGNS file, in the cell order of ReadCgns.
struct CgnsField {
  int nComponents = 1;
  std::vector<double> cell;  ///< [nComponents * cell + component]
};

/// A cell-centred array of a FlowSolution_t, or a vector of three of them, in an open file: any range of its cells can
/// be read without the others.
class CgnsFieldFile {
 public:
  /// @param[in] file   CGNS file with one unstructured zone
  /// @param[in] field  the array, such as "Pressure"; or "Velocity" for the arrays VelocityX, VelocityY, VelocityZ of
  ///                   one solution, if no array has the name itself. "SOLUTION/..." if several solutions have it
  /// @throws MeshError  no such array, several, or not at the cell centres
  CgnsFieldFile(std::string const& file, std::string const& field);

  int nComponents() const { return static_cast<int>(arrays_.size()); }
  std::int64_t nCells() const { return file_.nCells(); }

  /// The values of cells first .. first + n - 1, counted from 0 in the order of ReadCgns.
  /// @pre 0 <= first, first + n <= nCells()
  /// @return [nComponents * (cell - first) + component]
  /// @throws MeshError
  std::vector<double> Read(std::int64_t first, std::int64_t n) const;

 private:
  /// An array of a solution.
  struct Array {
    int solution = 0;
    std::string name;
    std::string fullName;  ///< "SOLUTION/ARRAY"
  };

  CgnsFile file_;
  std::vector<Array> arrays_;
};

/// All values of such a field. Parameters and failures as for CgnsFieldFile.
CgnsField ReadCgnsField(std::string const& file, std::string const& field);

}  // namespace reference_host
