// Gmsh files, text and binary: a mesh that the check takes or refuses, or one line that says what is wrong. What is read
// block by block from a binary file has nothing wrong with it exactly if the whole has not.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "fuzz/FuzzFolder.h"
#include "reference_host/gmsh/GmshBlockReader.h"
#include "reference_host/gmsh/GmshBlocks.h"
#include "reference_host/gmsh/GmshContentReader.h"
#include "reference_host/gmsh/GmshCursor.h"
#include "reference_host/gmsh/GmshReader.h"
#include "reference_host/mesh/MeshCheck.h"
#include "reference_host/mesh/MeshError.h"
#include "reference_host/mesh/MeshFile.h"
#include "reference_host/mesh/MeshPart.h"
#include "reference_host/mesh/Periods.h"

namespace {

using reference_host::GmshBlocks;

void ReadAtOnce(std::string const& name) {
  reference_host::MeshFile file(name);
  reference_host::GmshCursor cursor(file);
  reference_host::GmshContent content;
  ReadGmshContent(cursor, content);
}

void ReadByBlocks(std::string const& name) {
  GmshBlocks blocks;
  IndexGmsh(name, blocks);
  if (!blocks.failure.empty()) throw reference_host::MeshError(blocks.failure);
  reference_host::GmshBlockReader reader(name, blocks);
  std::vector<std::int64_t> tags;
  std::vector<reference_host::Point> points;
  reader.ReadNodes(0, blocks.nNodes(), tags, points);
  for (auto const kind : {GmshBlocks::kVolumes, GmshBlocks::kSurfaces, GmshBlocks::kOthers}) {
    reader.ForEachElement(kind, 0, blocks.nElements(kind), [](reference_host::GmshElement const&) {});
  }
}

bool IsRefused(void (*read)(std::string const&), std::string const& file) {
  try {
    read(file);
  } catch (reference_host::MeshError const&) {
    return true;
  }
  return false;
}

}  // namespace

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
  if (reference_host::IsBinaryGmsh(file) && IsRefused(ReadAtOnce, file) != IsRefused(ReadByBlocks, file))
    std::abort();
  return 0;
}
