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

  /// @param[in] component  0 to nComponents-1 of the field
  double AtCell(std::int64_t cell, int component = 0) const { return field_.cell[Position(cell, component)]; }

  /// The components of the value that the field has for the face; null: none, the face takes that of its cell.
  double const* OfFace(BoundaryPlace const& place) const;

  /// The value of the face, or of its cell if the field has no value for the face.
  double At(BoundaryPlace const& place, int component = 0) const;

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

  std::size_t Position(std::int64_t item, int component) const {
    return static_cast<std::size_t>(field_.nComponents * item + component);
  }

  FoamField const& field_;
  std::vector<Entry> entries_;  ///< ascending
};

}  // namespace reference_host
