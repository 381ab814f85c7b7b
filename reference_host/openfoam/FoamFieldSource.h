#pragma once

#include <array>
#include <string>

#include "reference_host/openfoam/FoamFieldWriter.h"

namespace reference_host {

/// What the beginning of a field file says, so that another field can be written in the same way.
struct FoamFieldSource {
  FoamFormat format;
  std::array<double, 7> dimensions = {};  ///< exponents of kg, m, s, K, mol, A, cd
};

/// Reads the header and the dimensions, of a collated file those of its first piece. Without the file NAME, NAME.gz is
/// read.
/// @throws MeshError  if the file cannot be read or its beginning has no dimensions in brackets, five or seven numbers
FoamFieldSource DescribeFoamField(std::string const& file);

}  // namespace reference_host
