#pragma once

#include <string>
#include <vector>

namespace reference_host {

/// Where OpenFOAM keeps a file of a case: as it is, compressed, or as one piece of a file that several processors
/// share (the collated format).
struct FoamStorage {
  static constexpr int kWhole = -1;

  std::string file;    ///< on disk, with .gz if it is compressed
  int piece = kWhole;  ///< which of the file's pieces, from 0
  int processor = 0;   ///< whose piece it is

  bool IsCompressed() const;
};

/// Finds PATH, PATH.gz, or, for CASE/processorR/REST, the same REST in a folder CASE/processorsN or
/// CASE/processorsN_A-B with the pieces of processor R. If there is no such file, PATH itself.
FoamStorage FindFoamFile(std::string const& path);

/// Whether FindFoamFile finds a file.
bool FoamFileExists(std::string const& path);

/// A folder with the pieces of several processors: processorsN has all of them, processorsN_A-B those of A to B.
struct CollatedFolder {
  std::string path;
  int nProcessors = 0;
  int first = 0;
  int last = 0;
};

/// Those in a folder, ascending by name.
std::vector<CollatedFolder> CollatedFolders(std::string const& folder);

}  // namespace reference_host
