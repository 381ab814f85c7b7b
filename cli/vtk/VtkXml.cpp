#include "cli/vtk/VtkXml.h"

#include <cstring>
#include <type_traits>

#include "cli/output/OutputFile.h"

namespace zyngrad {
namespace {

char const* TypeName(double) { return "Float64"; }
char const* TypeName(std::int32_t) { return "Int32"; }
char const* TypeName(std::int64_t) { return "Int64"; }
char const* TypeName(std::uint8_t) { return "UInt8"; }

char const* ByteOrder() {
  std::uint16_t const probe = 1;
  unsigned char first = 0;
  std::memcpy(&first, &probe, 1);
  return first == 1 ? "LittleEndian" : "BigEndian";
}

std::string Header(std::string const& gridType) {
  return "<?xml version=\"1.0\"?>\n<VTKFile type=\"" + gridType + "\" version=\"1.0\" byte_order=\"" +
         ByteOrder() + "\" header_type=\"UInt64\">\n";
}

/// A name as the value of an attribute. Names of fields come from files.
std::string Escaped(std::string const& name) {
  std::string text;
  for (char const c : name) {
    if (c == '&')
      text += "&amp;";
    else if (c == '<')
      text += "&lt;";
    else if (c == '>')
      text += "&gt;";
    else if (c == '"')
      text += "&quot;";
    else
      text += static_cast<unsigned char>(c) < 0x20 ? '_' : c;
  }
  return text;
}

std::string Attributes(char const* type, std::string const& name, int nComponents) {
  return std::string(" type=\"") + type + "\" Name=\"" + Escaped(name) + "\" NumberOfComponents=\"" +
         std::to_string(nComponents) + '"';
}

std::string ComponentNames(std::vector<std::string> const& names) {
  std::string text;
  for (std::size_t k = 0; k < names.size(); ++k)
    text += " ComponentName" + std::to_string(k) + "=\"" + names[k] + '"';
  return text;
}

void WriteArrayNames(std::ostream& out, char const* section, std::vector<VtkArray> const& arrays) {
  if (arrays.empty()) return;
  out << '<' << section << ">\n";
  for (VtkArray const& array : arrays) {
    char const* type = std::visit(
        [](auto const& values) { return TypeName(typename std::decay_t<decltype(values)>::value_type{}); },
        array.values);
    out << "<PDataArray" << Attributes(type, array.name, array.nComponents)
        << ComponentNames(array.componentNames) << "/>\n";
  }
  out << "</" << section << ">\n";
}

}  // namespace

template <class T>
void VtkXml::Array(std::string const& name, int nComponents, std::vector<T> const& values,
                   std::vector<std::string> const& componentNames) {
  Line("<DataArray" + Attributes(TypeName(T{}), name, nComponents) + " format=\"appended\" offset=\"" +
       std::to_string(offset_) + '"' + ComponentNames(componentNames) + "/>");
  blocks_.push_back({values.data(), values.size() * sizeof(T)});
  offset_ += sizeof(std::uint64_t) + blocks_.back().nBytes;
}

template void VtkXml::Array(std::string const&, int, std::vector<double> const&,
                            std::vector<std::string> const&);
template void VtkXml::Array(std::string const&, int, std::vector<std::int32_t> const&,
                            std::vector<std::string> const&);
template void VtkXml::Array(std::string const&, int, std::vector<std::int64_t> const&,
                            std::vector<std::string> const&);
template void VtkXml::Array(std::string const&, int, std::vector<std::uint8_t> const&,
                            std::vector<std::string> const&);

void VtkXml::Array(VtkArray const& array) {
  std::visit([&](auto const& values) { Array(array.name, array.nComponents, values, array.componentNames); },
             array.values);
}

void VtkXml::Write(std::string const& file, char const* gridType) const {
  OutputFile output(file);
  std::ostream& out = output.stream();
  out << Header(gridType) << text_ << "<AppendedData encoding=\"raw\">\n_";
  for (Block const& block : blocks_) {
    out.write(reinterpret_cast<char const*>(&block.nBytes), sizeof block.nBytes);
    out.write(static_cast<char const*>(block.data), static_cast<std::streamsize>(block.nBytes));
  }
  out << "\n</AppendedData>\n</VTKFile>\n";
  output.Close();
}

void WritePieceIndex(std::string const& file, std::string const& gridType,
                     std::vector<VtkArray> const& pointData, std::vector<VtkArray> const& cellData,
                     std::vector<std::string> const& pieces) {
  OutputFile output(file);
  std::ostream& out = output.stream();
  std::string const element = 'P' + gridType;
  out << Header(element) << '<' << element << " GhostLevel=\"0\">\n<PPoints>\n"
      << "<PDataArray" << Attributes("Float64", "Points", 3) << "/>\n</PPoints>\n";
  WriteArrayNames(out, "PPointData", pointData);
  WriteArrayNames(out, "PCellData", cellData);
  for (std::string const& piece : pieces) out << "<Piece Source=\"" << piece << "\"/>\n";
  out << "</" << element << ">\n</VTKFile>\n";
  output.Close();
}

}  // namespace zyngrad
