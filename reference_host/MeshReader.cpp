#include "reference_host/MeshReader.h"

#include <filesystem>
#include <system_error>

#include "reference_host/cgns/CgnsReader.h"
#include "reference_host/gmsh/GmshReader.h"
#include "reference_host/mesh/MeshError.h"
#include "reference_host/openfoam/PolyMeshReader.h"

namespace reference_host {
namespace fs = std::filesystem;

MeshFormat FormatOf(std::string const& path) {
  std::error_code ignored;
  if (!fs::exists(path, ignored)) throw MeshError(path + ": no such file or folder");
  if (fs::is_directory(path, ignored)) {
    if (!FindPolyMesh(path).empty()) return MeshFormat::PolyMesh;
    throw MeshError(
        path + ": unknown format, no polyMesh (points, faces, owner, neighbour, boundary) in this folder");
  }
  if (fs::path(path).extension() == ".msh") return MeshFormat::Gmsh;
  if (fs::path(path).extension() == ".cgns") return MeshFormat::Cgns;
  throw MeshError(path +
                  ": unknown format, neither a Gmsh file *.msh nor a CGNS file *.cgns nor a folder with an "
                  "OpenFOAM polyMesh");
}

FaceMesh ReadMesh(std::string const& path) {
  switch (FormatOf(path)) {
    case MeshFormat::Gmsh:
      return ReadGmsh(path);
    case MeshFormat::Cgns:
      return ReadCgns(path);
    case MeshFormat::PolyMesh:
      break;
  }
  return ReadPolyMesh(FindPolyMesh(path));
}

}  // namespace reference_host
