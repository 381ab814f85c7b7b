#pragma once

#include <mpi.h>

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "reference_host/LoadMesh.h"

namespace reference_host::test {

int Rank();
int RankCount();

/// The whole load with neither user groups nor progress.
LoadedMesh Load(const std::string& meshSpec);

/// Collective. The texts of all ranks, in their order, on every rank.
std::vector<std::string> GatherTexts(const std::string& text);

/// Collective. The numbers of all ranks, rank after rank, on every rank.
std::vector<std::int64_t> GatherNumbers(const std::vector<std::int64_t>& numbers);

/// Collective. Expects that `work` throws MeshError with the same one-line text on every rank, and returns
/// the text.
std::string ErrorOnEveryRank(const std::function<void()>& work);

/// A folder of this run that rank 0 makes and removes again. Collective.
class SharedFolder {
 public:
  SharedFolder();
  ~SharedFolder();
  SharedFolder(const SharedFolder&) = delete;
  SharedFolder& operator=(const SharedFolder&) = delete;

  std::string File(const std::string& name) const { return path_ + "/" + name; }

  /// Collective. Rank 0 writes the text; all return when it is there.
  void Write(const std::string& name, const std::string& text) const;

 private:
  std::string path_;
};

/// nx * ny * nz unit cubes as a Gmsh 2.2 file. The surface x = 0 is called `lowName`, x = nx "outlet", the
/// rest "walls".
std::string GmshTextOfCubes(int nx, int ny, int nz, const std::string& lowName);

}  // namespace reference_host::test
