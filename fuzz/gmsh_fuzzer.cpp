// Gmsh files, text and binary: a mesh that the check takes or refuses, or one line that says what is wrong.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "fuzz/FuzzFolder.h"
#include "reference_host/gmsh/GmshReader.h"
#include "reference_host/mesh/MeshCheck.h"
#include "reference_host/mesh/MeshError.h"
#include "reference_host/mesh/MeshPart.h"
#include "reference_host/mesh/Periods.h"

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
  static fuzz::FuzzFolder const folder;
  auto const file = folder.Write("mesh.msh", reinterpret_cast<char const*>(data), size);
  try {
    reference_host::FaceMesh mesh = reference_host::ReadGmsh(file);
    reference_host::CheckMesh(mesh);
    reference_host::JoinPeriods(mesh);
    reference_host::ExtractPart(mesh, std::vector<int>(static_cast<std::size_t>(mesh.nCells), 0), 0, 1);
  } catch (reference_host::MeshError const& error) {
    if (std::strchr(error.what(), '\n') != nullptr) std::abort();
  }
  return 0;
}
