#pragma once

#include <mpi.h>

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "reference_host/parallel/LoadMesh.h"

namespace reference_host::test {

int Rank();
int RankCount();

/// Loads a mesh without groups of the user and without progress.
LoadedMesh Load(std::string const& meshSpec);

/// Collective. The texts of all ranks, in their order, on every rank.
std::vector<std::string> GatherTexts(std::string const& text);

/// Collective. The numbers of all ranks, rank after rank, on every rank.
std::vector<std::int64_t> GatherNumbers(std::vector<std::int64_t> const& numbers);

/// Collective. Expects that `work` throws MeshError with the same one-line text on every rank, and returns
/// the text.
std::string ErrorOnEveryRank(std::function<void()> const& work);

/// A folder of this run, which rank 0 creates and removes. Collective.
class SharedFolder {
 public:
  SharedFolder();
  ~SharedFolder();
  SharedFolder(SharedFolder const&) = delete;
  SharedFolder& operator=(SharedFolder const&) = delete;

  std::string File(std::string const& name) const { return path_ + "/" + name; }

  /// Collective. Rank 0 writes the text; all return after it has been written.
  void Write(std::string const& name, std::string const& text) const;

 private:
  std::string path_;
};

/// nx * ny * nz unit cubes as a Gmsh 2.2 file. The surface x = 0 is called `lowName`, x = nx "outlet", the
/// rest "walls".
std::string GmshTextOfCubes(int nx, int ny, int nz, std::string const& lowName);

}  // namespace reference_host::test
