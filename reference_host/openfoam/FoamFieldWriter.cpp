#include "reference_host/openfoam/FoamFieldWriter.h"

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <cstring>

namespace reference_host {
namespace {

struct FoamType {
  int nComponents;
  char const* fieldClass;
  char const* listType;
};

FoamType const& TypeOf(int nComponents) {
  static constexpr std::array<FoamType, 4> kTypes = {{{1, "volScalarField", "List<scalar>"},
                                                      {3, "volVectorField", "List<vector>"},
                                                      {6, "volSymmTensorField", "List<symmTensor>"},
                                                      {9, "volTensorField", "List<tensor>"}}};
  return *std::find_if(kTypes.begin(), kTypes.end(),
                       [nComponents](FoamType const& type) { return type.nComponents == nComponents; });
}

char const* ByteOrder() {
  std::uint16_t const probe = 1;
  unsigned char first = 0;
  std::memcpy(&first, &probe, 1);
  return first == 1 ? "LSB" : "MSB";
}

/// The shortest decimal number that is read back as the same double.
void AppendNumber(double value, std::string& text) {
  std::array<char, 32> digits;
  auto const result = std::to_chars(digits.data(), digits.data() + digits.size(), value);
  text.append(digits.data(), result.ptr);
}

/// One item in decimal: "1", or "(1 2 3)".
void AppendItem(double const* item, int nComponents, std::string& text) {
  if (nComponents > 1) text += '(';
  for (int k = 0; k < nComponents; ++k) {
    if (k > 0) text += ' ';
    AppendNumber(item[k], text);
  }
  if (nComponents > 1) text += ')';
}

void AppendBytes(std::vector<double> const& values, int scalarBytes, std::string& text) {
  if (scalarBytes == 8) {
    text.append(reinterpret_cast<char const*>(values.data()), values.size() * sizeof(double));
    return;
  }
  for (double const value : values) {
    auto const rounded = static_cast<float>(value);
    text.append(reinterpret_cast<char const*>(&rounded), sizeof rounded);
  }
}

/// "uniform 0" for no values at all, which is the same in both formats; else "nonuniform List<scalar> N ( ... )".
void AppendValues(std::vector<double> const& values, int nComponents, FoamFormat const& format,
                  std::string& text) {
  std::vector<double> const zero(static_cast<std::size_t>(nComponents), 0.0);
  if (values.empty()) {
    text += "uniform ";
    AppendItem(zero.data(), nComponents, text);
    return;
  }
  std::size_t const nItems = values.size() / static_cast<std::size_t>(nComponents);
  text += std::string("nonuniform ") + TypeOf(nComponents).listType + '\n' + std::to_string(nItems) + '\n';
  if (format.isBinary) {
    text += '(';
    AppendBytes(values, format.scalarBytes, text);
    text += ')';
    return;
  }
  text += "(\n";
  for (std::size_t i = 0; i < values.size(); i += static_cast<std::size_t>(nComponents)) {
    AppendItem(values.data() + i, nComponents, text);
    text += '\n';
  }
  text += ")\n";
}

std::string Header(std::string const& fileClass, std::string const& location, std::string const& name,
                   std::string const& formatLines, std::string const& note) {
  std::string text =
      "FoamFile\n{\n    version     2.0;\n" + formatLines + "    class       " + fileClass + ";\n";
  if (!note.empty()) text += "    note        \"" + note + "\";\n";
  return text + "    location    \"" + location + "\";\n    object      " + name + ";\n}\n\n";
}

}  // namespace

std::string FoamFieldBody(FoamOutput const& field, FoamFormat const& format) {
  std::string text = "dimensions      [";
  for (std::size_t k = 0; k < field.dimensions.size(); ++k) {
    if (k > 0) text += ' ';
    AppendNumber(field.dimensions[k], text);
  }
  text += "];\n\ninternalField   ";
  AppendValues(field.cell, field.nComponents, format, text);
  text += ";\n\nboundaryField\n{\n";
  for (FoamPatchEntry const& patch : field.patches) {
    text += "    " + patch.name + "\n    {\n        type            " + patch.type + ";\n";
    if (patch.value) {
      text += "        value           ";
      AppendValues(*patch.value, field.nComponents, format, text);
      text += ";\n";
    }
    text += "    }\n";
  }
  return text + "}\n";
}

std::string FoamFieldText(FoamOutput const& field, FoamFormat const& format, std::string const& note) {
  std::string const formatLines = format.isBinary
                                      ? std::string("    format      binary;\n    arch        \"") +
                                            ByteOrder() + ";label=" + std::to_string(8 * format.labelBytes) +
                                            ";scalar=" + std::to_string(8 * format.scalarBytes) + "\";\n"
                                      : "    format      ascii;\n";
  return Header(TypeOf(field.nComponents).fieldClass, field.location, field.name, formatLines, note) +
         FoamFieldBody(field, format);
}

std::string FoamCollatedText(std::vector<std::string> const& blocks, std::string const& location,
                             std::string const& name, std::string const& note) {
  std::string text = Header("decomposedBlockData", location, name, "    format      binary;\n", note);
  for (std::size_t processor = 0; processor < blocks.size(); ++processor) {
    text += "// Processor" + std::to_string(processor) + "\n\n" + std::to_string(blocks[processor].size()) +
            "\n(";
    text += blocks[processor];
    text += ")\n\n";
  }
  return text;
}

std::string FoamPatchTypeFor(std::string const& typeInMesh) {
  constexpr std::array<char const*, 12> kConstraints = {
      "empty",     "wedge",          "symmetry",   "symmetryPlane",     "cyclic",
      "cyclicAMI", "cyclicACMI",     "cyclicSlip", "cyclicPeriodicAMI", "nonuniformTransformCyclic",
      "processor", "processorCyclic"};
  return std::find(kConstraints.begin(), kConstraints.end(), typeInMesh) == kConstraints.end() ? "calculated"
                                                                                               : typeInMesh;
}

bool HasFoamPatchValues(std::string const& typeInFile) {
  return typeInFile == "calculated" || typeInFile == "processor" || typeInFile == "processorCyclic";
}

}  // namespace reference_host
