#include "reference_host/FieldReader.h"

#include <cstddef>
#include <filesystem>
#include <optional>
#include <system_error>
#include <utility>

#include "reference_host/cgns/CgnsField.h"
#include "reference_host/mesh/BoundaryGroups.h"
#include "reference_host/mesh/MeshError.h"
#include "reference_host/mesh/MessageText.h"
#include "reference_host/openfoam/CaseTimes.h"

namespace reference_host {
namespace {

namespace fs = std::filesystem;

bool BeginsWithSymmetry(std::string const& type) {
  std::string const word = "symmetry";  // also of symmetryPlane
  return type.compare(0, word.size(), word) == 0;
}

/// Of a patch whose type in the field file is `type`, or unknown.
FaceValues RuleForVectors(std::string const& type, Patch const& patch) {
  if (type == "wedge" || (type.empty() && patch.type == "wedge")) return FaceValues::Turned;
  if (BeginsWithSymmetry(type) || type == "slip") return FaceValues::Tangential;
  if (!type.empty() || patch.type == "empty") return FaceValues::Cell;
  bool const isPlane = BeginsWithSymmetry(patch.type) || patch.group == BoundaryGroup::Symmetry;
  return isPlane ? FaceValues::Tangential : FaceValues::Cell;
}

}  // namespace

std::optional<std::pair<std::string, std::string>> CgnsFieldParts(std::string const& fieldSpec) {
  std::string const ending = ".cgns";
  std::size_t const colon = fieldSpec.rfind(ending + ":");
  if (colon != std::string::npos) {
    return std::pair(fieldSpec.substr(0, colon + ending.size()), fieldSpec.substr(colon + ending.size() + 1));
  }
  if (fs::path(fieldSpec).extension() == ending) {
    throw MeshError(fieldSpec + ": name an array of the file, as in " + fieldSpec + ":ARRAY");
  }
  return std::nullopt;
}

bool IsCgnsField(std::string const& fieldSpec) { return CgnsFieldParts(fieldSpec).has_value(); }

FoamField CgnsFieldWithoutCells(int nComponents, std::vector<std::int64_t> const& nFaces) {
  FoamField field;
  field.nComponents = nComponents;
  field.patch.resize(nFaces.size());
  field.patchType.resize(nFaces.size());
  for (std::int64_t const n : nFaces) field.lacksValues.push_back(n > 0 ? 1 : 0);
  return field;
}

void CheckCgnsValueCount(std::string const& fieldSpec, std::int64_t nValues, std::int64_t nCells) {
  if (nValues == nCells) return;
  throw MeshError(fieldSpec + ": " + std::to_string(nValues) + " values for the " + std::to_string(nCells) +
                  " cells of the mesh");
}

std::string FindFoamField(std::string const& polyMesh, std::string const& fieldSpec) {
  if (polyMesh.empty()) {
    throw MeshError(fieldSpec + ": an OpenFOAM field needs an OpenFOAM mesh (other fields: FILE.cgns:ARRAY)");
  }
  fs::path const folder = CaseOfPolyMesh(polyMesh);
  auto const kindOf = [](fs::path const& path) {
    std::error_code ignored;
    return fs::status(path, ignored).type();
  };
  // A path to something other than a file is taken only if neither is a file: the reader then reports what it
  // is.
  fs::path found;
  for (fs::path const& candidate : {fs::path(fieldSpec), folder / fieldSpec}) {
    if (kindOf(candidate) == fs::file_type::regular ||
        kindOf(candidate.string() + ".gz") == fs::file_type::regular) {
      return candidate.string();
    }
    if (found.empty() && kindOf(candidate) != fs::file_type::not_found) found = candidate;
  }
  if (found.empty())
    throw MeshError(fieldSpec + ": no such file, here or in the case" +
                    WhatIsThereInstead(folder.string(), fieldSpec));
  return found.string();
}

FoamField ReadField(std::string const& fieldSpec, std::string const& polyMesh, std::int64_t nCells,
                    PolyMeshBoundary const& boundary, std::vector<std::int64_t> const& nFaces) {
  auto const parts = CgnsFieldParts(fieldSpec);
  if (!parts) return ReadFoamField(FindFoamField(polyMesh, fieldSpec), nCells, boundary);
  CgnsField cgns = ReadCgnsField(parts->first, parts->second);
  CheckCgnsValueCount(fieldSpec, static_cast<std::int64_t>(cgns.cell.size()) / cgns.nComponents, nCells);
  FoamField field = CgnsFieldWithoutCells(cgns.nComponents, nFaces);
  field.cell = std::move(cgns.cell);
  return field;
}

std::vector<FaceValues> FaceValuesOf(FoamField const& field, std::vector<Patch> const& patches) {
  std::vector<FaceValues> values(patches.size(), FaceValues::Cell);
  for (std::size_t p = 0; p < patches.size() && p < field.patch.size(); ++p) {
    if (field.patch[p])
      values[p] = FaceValues::File;
    else if (field.nComponents == 3)
      values[p] = RuleForVectors(field.patchType[p], patches[p]);
  }
  return values;
}

std::string FieldName(std::string const& fieldSpec) {
  std::size_t const array = fieldSpec.find_last_of(":/");
  std::string name = array == std::string::npos ? fieldSpec : fieldSpec.substr(array + 1);
  std::string const ending = ".gz";
  bool const isCompressed =
      name.size() > ending.size() && name.compare(name.size() - ending.size(), ending.size(), ending) == 0;
  return isCompressed ? name.substr(0, name.size() - ending.size()) : name;
}

}  // namespace reference_host
