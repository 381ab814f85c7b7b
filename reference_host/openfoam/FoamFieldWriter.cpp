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

void AppendBytes(double const* values, std::size_t n, int scalarBytes, std::string& text) {
  if (scalarBytes == 8) {
    text.append(reinterpret_cast<char const*>(values), n * sizeof(double));
    return;
  }
  for (std::size_t i = 0; i < n; ++i) {
    auto const rounded = static_cast<float>(values[i]);
    text.append(reinterpret_cast<char const*>(&rounded), sizeof rounded);
  }
}

/// "uniform 0" for no values at all, which is the same in both formats; else "nonuniform List<scalar> N (".
void BeginValues(std::int64_t nItems, int nComponents, FoamFormat const& format, std::string& text) {
  std::vector<double> const zero(static_cast<std::size_t>(nComponents), 0.0);
  if (nItems == 0) {
    text += "uniform ";
    AppendItem(zero.data(), nComponents, text);
    return;
  }
  text += std::string("nonuniform ") + TypeOf(nComponents).listType + '\n' + std::to_string(nItems) + '\n';
  text += format.isBinary ? "(" : "(\n";
}

void AppendItems(double const* values, std::size_t n, int nComponents, FoamFormat const& format,
                 std::string& text) {
  if (format.isBinary) {
    AppendBytes(values, n, format.scalarBytes, text);
    return;
  }
  for (std::size_t i = 0; i < n; i += static_cast<std::size_t>(nComponents)) {
    AppendItem(values + i, nComponents, text);
    text += '\n';
  }
}

void EndValues(std::int64_t nItems, FoamFormat const& format, std::string& text) {
  if (nItems > 0) text += format.isBinary ? ")" : ")\n";
}

void AppendValues(std::vector<double> const& values, int nComponents, FoamFormat const& format,
                  std::string& text) {
  auto const nItems = static_cast<std::int64_t>(values.size()) / nComponents;
  BeginValues(nItems, nComponents, format, text);
  AppendItems(values.data(), values.size(), nComponents, format, text);
  EndValues(nItems, format, text);
}

std::string Header(std::string const& fileClass, std::string const& location, std::string const& name,
                   std::string const& formatLines, std::string const& note) {
  std::string text =
      "FoamFile\n{\n    version     2.0;\n" + formatLines + "    class       " + fileClass + ";\n";
  if (!note.empty()) text += "    note        \"" + note + "\";\n";
  return text + "    location    \"" + location + "\";\n    object      " + name + ";\n}\n\n";
}

}  // namespace

namespace {

std::string BodyHead(FoamOutput const& field, std::int64_t nCells, FoamFormat const& format) {
  std::string text = "dimensions      [";
  for (std::size_t k = 0; k < field.dimensions.size(); ++k) {
    if (k > 0) text += ' ';
    AppendNumber(field.dimensions[k], text);
  }
  text += "];\n\ninternalField   ";
  BeginValues(nCells, field.nComponents, format, text);
  return text;
}

std::string FieldHeader(FoamOutput const& field, FoamFormat const& format, std::string const& note) {
  std::string const formatLines = format.isBinary
                                      ? std::string("    format      binary;\n    arch        \"") +
                                            ByteOrder() + ";label=" + std::to_string(8 * format.labelBytes) +
                                            ";scalar=" + std::to_string(8 * format.scalarBytes) + "\";\n"
                                      : "    format      ascii;\n";
  return Header(TypeOf(field.nComponents).fieldClass, field.location, field.name, formatLines, note);
}

}  // namespace

std::string FoamFieldHead(FoamOutput const& field, std::int64_t nCells, FoamFormat const& format,
                          std::string const& note) {
  return FieldHeader(field, format, note) + BodyHead(field, nCells, format);
}

std::string FoamFieldItems(double const* values, std::size_t n, int nComponents, FoamFormat const& format) {
  std::string text;
  AppendItems(values, n, nComponents, format, text);
  return text;
}

std::string FoamFieldTail(FoamOutput const& field, std::int64_t nCells, FoamFormat const& format) {
  std::string text;
  EndValues(nCells, format, text);
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

std::string FoamFieldBody(FoamOutput const& field, FoamFormat const& format) {
  auto const nCells = static_cast<std::int64_t>(field.cell.size()) / field.nComponents;
  std::string text = BodyHead(field, nCells, format);
  AppendItems(field.cell.data(), field.cell.size(), field.nComponents, format, text);
  return text + FoamFieldTail(field, nCells, format);
}

std::string FoamFieldText(FoamOutput const& field, FoamFormat const& format, std::string const& note) {
  return FieldHeader(field, format, note) + FoamFieldBody(field, format);
}

std::string FoamCollatedHead(std::string const& location, std::string const& name, std::string const& note) {
  return Header("decomposedBlockData", location, name, "    format      binary;\n", note);
}

std::string FoamCollatedBlockHead(int processor, std::size_t size) {
  return "// Processor" + std::to_string(processor) + "\n\n" + std::to_string(size) + "\n(";
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
