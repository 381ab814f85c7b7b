#include "reference_host/openfoam/FoamFieldLookup.h"

#include <algorithm>

namespace reference_host {

FoamFieldLookup::FoamFieldLookup(FoamField const& field, PolyMeshBoundary const& boundary) : field_(field) {
  for (std::size_t p = 0; p < field.patch.size(); ++p) {
    if (!field.patch[p]) continue;
    PatchFaces const& faces = boundary.facesOfPatch[p];
    for (std::int64_t f = 0; f < faces.count; ++f) {
      entries_.push_back(
          {boundary.owner[static_cast<std::size_t>(faces.first + f)], static_cast<std::int64_t>(p), f});
    }
  }
  std::sort(entries_.begin(), entries_.end());
}

double const* FoamFieldLookup::OfFace(BoundaryPlace const& place) const {
  auto entry = std::lower_bound(entries_.begin(), entries_.end(), Entry{place.cell, place.patch, 0});
  if (entries_.end() - entry <= place.ordinal) return nullptr;
  entry += place.ordinal;
  if (entry->cell != place.cell || entry->patch != place.patch) return nullptr;
  return field_.patch[static_cast<std::size_t>(place.patch)]->data() + Position(entry->face, 0);
}

double FoamFieldLookup::At(BoundaryPlace const& place, int component) const {
  double const* const value = OfFace(place);
  return value != nullptr ? value[component] : AtCell(place.cell, component);
}

}  // namespace reference_host
