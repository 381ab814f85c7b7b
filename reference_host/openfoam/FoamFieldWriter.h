#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "reference_host/openfoam/FoamSyntax.h"

namespace reference_host {

/// The entry of one patch in a field file.
struct FoamPatchEntry {
  std::string name;
  std::string type;  ///< of the boundary condition: "calculated", "empty", ...
  /// [nComponents * face + component]; empty: the type has no values
  std::optional<std::vector<double>> value;
};

/// A cell-centred field to write.
struct FoamOutput {
  std::string name;      ///< "grad(p)"
  std::string location;  ///< the time: "0.5"
  int nComponents =
      1;  ///< 1: scalar, 3: vector, 6: symmetric tensor (xx xy xz yy yz zz), 9: tensor (xx xy xz yx ...)
  std::array<double, 7> dimensions = {};  ///< exponents of kg, m, s, K, mol, A, cd
  std::vector<double> cell;               ///< [nComponents * cell + component]
  std::vector<FoamPatchEntry> patches;
};

/// The text of the file, without compression: volScalarField, volVectorField, volSymmTensorField or volTensorField.
/// Decimal numbers have as many digits as it takes to get the same number back. Binary ones are in the byte order of the
/// machine.
/// @param[in] note  goes into the entry "note" of the header, if not empty; without quotation marks and backslashes
/// @pre  nComponents is one of the four
std::string FoamFieldText(FoamOutput const& field, FoamFormat const& format, std::string const& note);

/// The same without the header: what a file of class decomposedBlockData has for all processors but the first.
std::string FoamFieldBody(FoamOutput const& field, FoamFormat const& format);

/// FoamFieldText in parts, for fields that no process has whole: the beginning, the values of cells in their order, any
/// number at a time, and the end.
/// @param[in] nCells  of the whole field
std::string FoamFieldHead(FoamOutput const& field, std::int64_t nCells, FoamFormat const& format,
                          std::string const& note);
/// @param[in] values  [0..n-1] component by component
std::string FoamFieldItems(double const* values, std::size_t n, int nComponents, FoamFormat const& format);
std::string FoamFieldTail(FoamOutput const& field, std::int64_t nCells, FoamFormat const& format);

/// The content of a file of class decomposedBlockData, the collated format of decomposed cases: the head, then for each
/// processor the head of its block, the block itself, and kFoamCollatedBlockEnd. The first block is from FoamFieldText,
/// the others from FoamFieldBody.
/// @param[in] location  as in the files beside it: "processors4/0.5"
std::string FoamCollatedHead(std::string const& location, std::string const& name, std::string const& note);
/// @param[in] size  of the block, bytes
std::string FoamCollatedBlockHead(int processor, std::size_t size);
constexpr char const* kFoamCollatedBlockEnd = ")\n\n";

/// The type that the field has on a patch of a mesh: those that constrain all fields ("empty", "wedge", "cyclic",
/// "processor", ...) their own, the others "calculated".
std::string FoamPatchTypeFor(std::string const& typeInMesh);

/// Whether a field file has values on a patch of this type. The others follow from the cells when the file is read.
bool HasFoamPatchValues(std::string const& typeInFile);

}  // namespace reference_host
