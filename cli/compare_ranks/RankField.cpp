#include "cli/compare_ranks/RankField.h"

#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>

#include "cli/base/OneLine.h"
#include "cli/base/TextTable.h"
#include "cli/base/UsageError.h"
#include "cli/output/MeshScale.h"
#include "reference_host/FieldReader.h"
#include "reference_host/openfoam/FoamFieldLookup.h"
#include "reference_host/openfoam/PolyMeshReader.h"
#include "reference_host/partition/BoundaryPlaces.h"

namespace zyngrad {

using reference_host::FoamField;
using reference_host::FoamFieldLookup;
using reference_host::HostPartition;
using reference_host::PolyMeshBoundary;

struct WholeField::Data {
  Data(WholeMesh const& mesh, std::string const& file)
      : boundary(reference_host::BoundaryOf(mesh.faces)),
        field(reference_host::ReadField(file, reference_host::FindPolyMesh(mesh.spec), mesh.nCells(),
                                        boundary, FacesOfPatches())),
        lookup(field, boundary),
        faceValues(reference_host::FaceValuesOf(field, mesh.faces.patches)) {}

  std::vector<std::int64_t> FacesOfPatches() const {
    std::vector<std::int64_t> counts;
    for (reference_host::PatchFaces const& faces : boundary.facesOfPatch) counts.push_back(faces.count);
    return counts;
  }

  /// The components of all cells that a partition has.
  std::array<std::vector<double>, 3> ValuesOn(HostPartition& partition) const {
    CZYN3DFiniteVolumeMesh const& mesh = *partition.mesh();
    std::vector<std::int64_t> fileCell = partition.globalCell();
    for (std::int64_t& cell : fileCell) --cell;
    std::vector<reference_host::BoundaryPlace> const places = GhostPlaces(partition, fileCell);
    std::array<std::vector<double>, 3> values;
    for (int k = 0; k < field.nComponents; ++k) {
      std::vector<double>& value = values[static_cast<std::size_t>(k)];
      value.assign(static_cast<std::size_t>(mesh.NCell) + 1, 0.0);
      std::size_t ghost = 0;
      for (std::size_t c = 1; c < value.size(); ++c)
        value[c] = fileCell[c] >= 0 ? lookup.AtCell(fileCell[c], k) : lookup.At(places[ghost++], k);
    }
    if (field.nComponents == 3) CompleteBoundaryVectors(partition, faceValues, values);
    return values;
  }

  PolyMeshBoundary boundary;
  FoamField field;
  FoamFieldLookup lookup;
  std::vector<reference_host::FaceValues> faceValues;
};

WholeField::WholeField(WholeMesh const& mesh, std::string const& file)
    : data_(std::make_unique<Data>(mesh, file)) {
  for (std::size_t i = 0; i < data_->field.cell.size(); ++i) {
    if (std::isfinite(data_->field.cell[i])) continue;
    throw UsageError("the field " + Quoted(file) + " is not finite at cell " +
                     std::to_string(i / static_cast<std::size_t>(nComponents()) + 1));
  }
}

WholeField::~WholeField() = default;

int WholeField::nComponents() const { return data_->field.nComponents; }

std::vector<double> WholeField::ValuesOn(HostPartition& partition, int component) const {
  return std::move(data_->ValuesOn(partition)[static_cast<std::size_t>(component)]);
}

double WholeField::AtCell(int cell, int component) const { return data_->lookup.AtCell(cell, component); }

std::vector<double> RankField::ValuesOn(HostPartition& partition) const {
  if (!formula_) return file_->ValuesOn(partition, component_);
  CZYN3DFiniteVolumeMesh const& mesh = *partition.mesh();
  std::vector<double> values(static_cast<std::size_t>(mesh.NCell) + 1, 0.0);
  for (int c = 1; c <= mesh.NCell; ++c) {
    double& value = values[static_cast<std::size_t>(c)];
    auto const [x, y, z] = partition.OwnerCentre(c);
    value = formula_->Value(x, y, z);
    if (std::isfinite(value)) continue;
    throw UsageError("the field " + Quoted(formula_->text()) + " is not finite at " +
                     Place(x, y, z, PlaceDigits(partition)));
  }
  return values;
}

}  // namespace zyngrad
