// polyMesh folders: the input holds the five files one after the other, with a NUL between them.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "fuzz/FuzzFolder.h"
#include "reference_host/mesh/MeshCheck.h"
#include "reference_host/mesh/MeshError.h"
#include "reference_host/mesh/MeshPart.h"
#include "reference_host/mesh/Periods.h"
#include "reference_host/openfoam/PolyMeshReader.h"

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
  static fuzz::FuzzFolder const folder;
  char const* at = reinterpret_cast<char const*>(data);
  char const* const end = at + size;
  for (char const* const name : {"points", "faces", "owner", "neighbour", "boundary"}) {
    char const* const stop = std::find(at, end, '\0');
    folder.Write(name, at, static_cast<std::size_t>(stop - at));
    at = stop == end ? end : stop + 1;
  }
  try {
    reference_host::FaceMesh mesh = reference_host::ReadPolyMesh(folder.Path(""));
    reference_host::CheckMesh(mesh);
    reference_host::JoinPeriods(mesh);
    reference_host::ExtractPart(mesh, std::vector<int>(static_cast<std::size_t>(mesh.nCells), 0), 0, 1);
  } catch (reference_host::MeshError const& error) {
    if (std::strchr(error.what(), '\n') != nullptr) std::abort();
  }
  return 0;
}
