// Writes the bits of what the library computes on fixed meshes, for comparing two builds of it. The program itself stays
// the same: the loader is told which library to take.
//   bits_dump FILE

#include <dlfcn.h>

#include <cstdio>
#include <exception>

#include "tests/reliability/bits_dump/Bits.h"

namespace {

/// The file that the loader took the library from.
char const* LibraryInUse() {
  void const* const initialize = dlsym(RTLD_DEFAULT, "_ZN17COperatorGradient10InitializeEv");
  Dl_info info;
  return initialize != nullptr && dladdr(initialize, &info) != 0 ? info.dli_fname : "unknown";
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fputs("usage: bits_dump FILE\n", stderr);
    return 2;
  }
  try {
    std::fprintf(stderr, "%s\n", LibraryInUse());
    bits_dump::BitsFile file(argv[1]);
    bits_dump::WriteGradientsOfRandomPartitions(file);
    bits_dump::WriteGradientsOnMeshes(file);
    bits_dump::WriteCellOperator(file);
    bits_dump::WriteFaceOperator(file);
    bits_dump::WritePointOperator(file);
    bits_dump::SolveSingularCellsWithTrapsArmed();
    file.Close();
  } catch (std::exception const& error) {
    std::fprintf(stderr, "bits_dump: %s\n", error.what());
    return 1;
  }
  return 0;
}
