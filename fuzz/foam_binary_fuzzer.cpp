// Binary, compressed and collated files of OpenFOAM, for a mesh of one tetrahedron. The first character of the input
// says which file the rest of it is, the second one how it is stored: 'p' plain, 'z' as gzip packs it (by the fuzzer,
// so that its content is reached), 'g' with the bytes of a .gz file, 'c' with those of a collated file.

#include <zlib.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <string>

#include "fuzz/FuzzFolder.h"
#include "reference_host/mesh/MeshCheck.h"
#include "reference_host/mesh/MeshError.h"
#include "reference_host/openfoam/DecomposedCase.h"
#include "reference_host/openfoam/FoamField.h"
#include "reference_host/openfoam/PolyMeshReader.h"

namespace {

std::string Text(std::string const& className, std::string const& content) {
  return "FoamFile { format ascii; class " + className + "; }\n" + content;
}

/// The files of the tetrahedron in text form.
void WriteWholeMesh(fuzz::FuzzFolder const& folder) {
  auto const write = [&folder](char const* name, std::string const& text) {
    folder.Write(name, text.data(), text.size());
  };
  write("points", Text("vectorField", "4((0 0 0) (1 0 0) (0 1 0) (0 0 1))"));
  write("faces", Text("faceList", "4(3(0 2 1) 3(0 1 3) 3(0 3 2) 3(1 2 3))"));
  write("owner", Text("labelList", "4(0 0 0 0)"));
  write("neighbour", Text("labelList", "0()"));
  write("boundary", Text("polyBoundaryMesh", "1(wall { type wall; nFaces 4; startFace 0; })"));
}

std::string Packed(std::string const& content) {
  std::string packed(compressBound(content.size()) + 32, '\0');
  z_stream stream{};
  if (deflateInit2(&stream, Z_BEST_SPEED, Z_DEFLATED, 15 + 16, 8, Z_DEFAULT_STRATEGY) != Z_OK) std::abort();
  stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(content.data()));
  stream.avail_in = static_cast<uInt>(content.size());
  stream.next_out = reinterpret_cast<Bytef*>(packed.data());
  stream.avail_out = static_cast<uInt>(packed.size());
  if (deflate(&stream, Z_FINISH) != Z_STREAM_END) std::abort();
  packed.resize(packed.size() - stream.avail_out);
  deflateEnd(&stream);
  return packed;
}

void ReadField(std::string const& path) {
  reference_host::PolyMeshBoundary boundary;
  boundary.owner = {0, 0, 0, 0};
  boundary.patches = {{"wall", "wall", {}}};
  boundary.facesOfPatch = {{0, 4}};
  auto const field = reference_host::ReadFoamField(path, 1, boundary);
  auto const n = static_cast<std::size_t>(field.nComponents);
  if (field.cell.size() != n || (field.patch[0] && field.patch[0]->size() != 4 * n)) std::abort();
}

/// Reads the file of that letter, wherever it is stored below the folder.
void Read(char which, std::string const& folder) {
  if (which == 'u') {
    ReadField(folder + "/U");
  } else if (which == 'a') {
    reference_host::ReadAddressing(folder, "cellProcAddressing", 4);
  } else {
    reference_host::CheckMesh(reference_host::ReadPolyMesh(folder));
  }
}

char const* NameOf(char which) {
  switch (which) {
    case 'o':
      return "owner";
    case 'n':
      return "neighbour";
    case 'f':
      return "faces";
    case 'b':
      return "boundary";
    case 'u':
      return "U";
    case 'a':
      return "cellProcAddressing";
    default:
      return "points";
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
  static fuzz::FuzzFolder const folder;
  if (size < 2) return 0;
  char const which = static_cast<char>(data[0]), how = static_cast<char>(data[1]);
  std::string content(reinterpret_cast<char const*>(data) + 2, size - 2);
  if (how == 'z') content = Packed(content);
  bool const isCollated = how == 'c';
  std::string const place = isCollated ? "processors3/" : "processor1/";
  std::filesystem::remove_all(folder.Path("processor1"));
  std::filesystem::remove_all(folder.Path("processors3"));
  std::filesystem::create_directories(folder.Path("processor1"));
  std::filesystem::create_directories(folder.Path(place));
  WriteWholeMesh(folder);
  for (char const* const name : {"points", "faces", "owner", "neighbour", "boundary"}) {
    std::filesystem::rename(folder.Path(name), folder.Path(std::string("processor1/") + name));
  }
  std::filesystem::remove(folder.Path(std::string("processor1/") + NameOf(which)));
  folder.Write(place + NameOf(which) + (how == 'z' || how == 'g' ? ".gz" : ""), content.data(),
               content.size());
  try {
    Read(which, folder.Path("processor1"));
  } catch (reference_host::MeshError const& error) {
    if (std::strchr(error.what(), '\n') != nullptr || std::strlen(error.what()) > 1000) std::abort();
  }
  return 0;
}
