#pragma once

#include <cstddef>
#include <string>

#include "reference_host/mesh/MeshFile.h"
#include "reference_host/openfoam/GzipFile.h"

namespace reference_host {

/// One processor's piece of a collated file.
struct CollatedPiece {
  FileContent content;
  std::size_t firstByte = 0;  ///< of the content in the file

  /// The beginning of the first piece, which alone has the header that is valid for all.
  FileContent header;
  std::size_t firstByteOfHeader = 0;
};

/// Reads a piece of a collated file of OpenFOAM, a FoamFile header with the class decomposedBlockData and then the
/// pieces as "N (N bytes)". The pieces before it are passed over by their sizes. Throws MeshError.
/// @param[in] piece      from 0
/// @param[in] processor  whose piece it is, for messages
CollatedPiece ReadCollatedPiece(std::string const& name, int piece, int processor);

}  // namespace reference_host
