#pragma once

#include <string>

namespace reference_host {

/// How the ranks get their parts of a mesh file.
enum class MeshReading {
  Automatic,  ///< in slabs on several ranks if the file is large and can be read so; otherwise whole
  Whole,      ///< rank 0 reads all of it and METIS divides it
  Slabs       ///< each rank reads a share and PT-Scotch divides the mesh; no rank ever holds the whole
};

/// What a user may say about it. The parts, and with them all results of several ranks, depend on it; the mesh does not.
struct MeshLoading {
  MeshReading reading = MeshReading::Automatic;

  /// File with the part of each cell (PartitionFile.h), which neither METIS nor PT-Scotch then chooses; empty: none.
  std::string partitionFile;
};

}  // namespace reference_host
