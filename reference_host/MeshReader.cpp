#include "reference_host/MeshReader.h"

#include <filesystem>
#include <system_error>

#include "reference_host/cgns/CgnsReader.h"
#include "reference_host/gmsh/GmshReader.h"
#include "reference_host/mesh/MeshError.h"
#include "reference_host/openfoam/PolyMeshReader.h"

namespace reference_host {
namespace {

namespace fs = std::filesystem;

FaceMesh ReadFolder(std::string const& folder) {
  std::string const polyMesh = FindPolyMesh(folder);
  if (!polyMesh.empty()) return ReadPolyMesh(polyMesh);
  throw MeshError(folder +
                  ": unknown format, no polyMesh (points, faces, owner, neighbour, boundary) in this folder");
}

}  // namespace

FaceMesh ReadMesh(std::string const& path) {
  std::error_code ignored;
  if (!fs::exists(path, ignored)) throw MeshError(path + ": no such file or folder");
  if (fs::is_directory(path, ignored)) return ReadFolder(path);
  if (fs::path(path).extension() == ".msh") return ReadGmsh(path);
  if (fs::path(path).extension() == ".cgns") return ReadCgns(path);
  throw MeshError(path +
                  ": unknown format, neither a Gmsh file *.msh nor a CGNS file *.cgns nor a folder with an "
                  "OpenFOAM polyMesh");
}

}  // namespace reference_host
