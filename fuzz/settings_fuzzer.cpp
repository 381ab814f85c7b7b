// The settings files of the three radial-basis objects: whatever a file holds, each object reads it without a
// step beyond a buffer, and what it does not take for its own it replaces.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <string>

#include "fuzz/FuzzFolder.h"
#include "rbf_cell/CZynRBFInternalObject.h"
#include "rbf_face/CZynFaceRBFInternalObject.h"
#include "rbf_ib/CZynIBRBFInternalObject.h"

namespace {

template <std::size_t N>
void Name(char (&buffer)[N], std::string const& path) {
  if (path.size() >= N) std::abort();
  std::memcpy(buffer, path.c_str(), path.size() + 1);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
  static fuzz::FuzzFolder const folder;
  static bool const quiet = (fuzz::DropStandardOutput(), true);
  static_cast<void>(quiet);
  char const* const bytes = reinterpret_cast<char const*>(data);

  std::string const path = folder.Write("run.rbf", bytes, size);
  CZynRBFInternalObject cell;
  Name(cell.m_szRBFFileName, path);
  cell.ReadRBFbackdoorfile();

  folder.Write("run.rbf", bytes, size);
  CZynFaceRBFInternalObject face;
  Name(face.RBFFileName, path);
  face.ReadRBFbackdoorfile();

  folder.Write("run.rbf", bytes, size);
  CZynIBRBFInternalObject points;
  Name(points.RBFFileName, path);
  points.ReadRBFbackdoorfile();

  if (!std::filesystem::exists(path)) std::abort();  // each leaves a file of its own
  return 0;
}
