#include "reference_host/slabs/SlabReader.h"

#include <cstdint>
#include <filesystem>
#include <system_error>

#include "reference_host/MeshReader.h"
#include "reference_host/openfoam/PolyMeshReader.h"
#include "reference_host/parallel/MpiAgreement.h"
#include "reference_host/slabs/CgnsSlabReader.h"
#include "reference_host/slabs/GmshSlabReader.h"
#include "reference_host/slabs/PolyMeshSlabReader.h"

namespace reference_host {
namespace {

namespace fs = std::filesystem;

/// About a million cells. One rank reads and divides them in seconds and in less than a gigabyte.
constexpr std::uintmax_t kLargeFile = 64 << 20;

std::uintmax_t SizeOf(fs::path const& path) {
  std::error_code ignored;
  if (fs::is_regular_file(path, ignored)) return fs::file_size(path, ignored);
  std::uintmax_t size = 0;
  std::string const polyMesh = FindPolyMesh(path.string());
  if (polyMesh.empty()) return 0;
  for (char const* const file : {"points", "faces", "owner", "neighbour"}) {
    for (char const* const ending : {"", ".gz"}) {
      std::error_code missing;
      std::uintmax_t const ofFile = fs::file_size(fs::path(polyMesh) / (std::string(file) + ending), missing);
      if (!missing) size += ofFile;
    }
  }
  return size;
}

}  // namespace

SlabOffer OfferSlabs(std::string const& path) {
  SlabOffer offer;
  MeshFormat const format = FormatOf(path);
  offer.isLarge = SizeOf(path) >= kLargeFile;
  if (format == MeshFormat::Gmsh && !HasGmshSlabs(path))
    offer.refusal = "of Gmsh files, only binary ones can be read so";
  return offer;
}

MeshSlab ReadMeshSlab(MpiCommunicator const& communicator, std::string const& path) {
  MeshFormat format{};
  std::string polyMesh;
  RunTogether(communicator, [&] {
    format = FormatOf(path);
    if (format == MeshFormat::PolyMesh) polyMesh = FindPolyMesh(path);
  });
  switch (format) {
    case MeshFormat::Gmsh:
      return ReadGmshSlab(communicator, path);
    case MeshFormat::Cgns:
      return ReadCgnsSlab(communicator, path);
    case MeshFormat::PolyMesh:
      break;
  }
  return ReadPolyMeshSlab(communicator, polyMesh);
}

}  // namespace reference_host
