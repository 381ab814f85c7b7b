#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "reference_host/openfoam/FoamField.h"
#include "reference_host/partition/BoundaryPlaces.h"

namespace reference_host {

/// Looks up the values of a field file at cells and boundary faces.
class FoamFieldLookup {
 public:
  /// Borrows both.
  FoamFieldLookup(FoamField const& field, PolyMeshBoundary const& boundary);

  double AtCell(std::int64_t cell) const { return field_.cell[static_cast<std::size_t>(cell)]; }

  /// The value of the face, or of its cell if the field has no value for the face.
  double At(BoundaryPlace const& place) const;

 private:
  struct Entry {
    std::int64_t cell;
    std::int64_t patch;
    std::int64_t face;  ///< position in the patch
    bool operator<(Entry const& other) const {
      if (cell != other.cell) return cell < other.cell;
      if (patch != other.patch) return patch < other.patch;
      return face < other.face;
    }
  };

  FoamField const& field_;
  std::vector<Entry> entries_;  ///< ascending
};

}  // namespace reference_host
