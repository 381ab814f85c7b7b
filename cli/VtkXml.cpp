#include "cli/VtkXml.h"

#include <cstring>
#include <type_traits>

#include "cli/OutputFile.h"

namespace zyngrad {
namespace {

const char* TypeName(double) { return "Float64"; }
const char* TypeName(std::int32_t) { return "Int32"; }
const char* TypeName(std::int64_t) { return "Int64"; }
const char* TypeName(std::uint8_t) { return "UInt8"; }

const char* ByteOrder() {
  const std::uint16_t probe = 1;
  unsigned char first = 0;
  std::memcpy(&first, &probe, 1);
  return first == 1 ? "LittleEndian" : "BigEndian";
}

std::string Header(const std::string& gridType) {
  return "<?xml version=\"1.0\"?>\n<VTKFile type=\"" + gridType + "\" version=\"1.0\" byte_order=\"" +
         ByteOrder() + "\" header_type=\"UInt64\">\n";
}

std::string Attributes(const char* type, const std::string& name, int nComponents) {
  return std::string(" type=\"") + type + "\" Name=\"" + name + "\" NumberOfComponents=\"" +
         std::to_string(nComponents) + '"';
}

void WriteArrayNames(std::ostream& out, const char* section, const std::vector<VtkArray>& arrays) {
  if (arrays.empty()) return;
  out << '<' << section << ">\n";
  for (const VtkArray& array : arrays) {
    const char* type = std::visit(
        [](const auto& values) { return TypeName(typename std::decay_t<decltype(values)>::value_type{}); },
        array.values);
    out << "<PDataArray" << Attributes(type, array.name, array.nComponents) << "/>\n";
  }
  out << "</" << section << ">\n";
}

}  // namespace

template <class T>
void VtkXml::Array(const std::string& name, int nComponents, const std::vector<T>& values) {
  Line("<DataArray" + Attributes(TypeName(T{}), name, nComponents) + " format=\"appended\" offset=\"" +
       std::to_string(offset_) + "\"/>");
  blocks_.push_back({values.data(), values.size() * sizeof(T)});
  offset_ += sizeof(std::uint64_t) + blocks_.back().nBytes;
}

template void VtkXml::Array(const std::string&, int, const std::vector<double>&);
template void VtkXml::Array(const std::string&, int, const std::vector<std::int32_t>&);
template void VtkXml::Array(const std::string&, int, const std::vector<std::int64_t>&);
template void VtkXml::Array(const std::string&, int, const std::vector<std::uint8_t>&);

void VtkXml::Array(const VtkArray& array) {
  std::visit([&](const auto& values) { Array(array.name, array.nComponents, values); }, array.values);
}

void VtkXml::Write(const std::string& file, const char* gridType) const {
  OutputFile output(file);
  std::ostream& out = output.stream();
  out << Header(gridType) << text_ << "<AppendedData encoding=\"raw\">\n_";
  for (const Block& block : blocks_) {
    out.write(reinterpret_cast<const char*>(&block.nBytes), sizeof block.nBytes);
    out.write(static_cast<const char*>(block.data), static_cast<std::streamsize>(block.nBytes));
  }
  out << "\n</AppendedData>\n</VTKFile>\n";
  output.Close();
}

void WritePieceIndex(const std::string& file, const std::string& gridType,
                     const std::vector<VtkArray>& pointData, const std::vector<VtkArray>& cellData,
                     const std::vector<std::string>& pieces) {
  OutputFile output(file);
  std::ostream& out = output.stream();
  const std::string element = 'P' + gridType;
  out << Header(element) << '<' << element << " GhostLevel=\"0\">\n<PPoints>\n"
      << "<PDataArray" << Attributes("Float64", "Points", 3) << "/>\n</PPoints>\n";
  WriteArrayNames(out, "PPointData", pointData);
  WriteArrayNames(out, "PCellData", cellData);
  for (const std::string& piece : pieces) out << "<Piece Source=\"" << piece << "\"/>\n";
  out << "</" << element << ">\n</VTKFile>\n";
  output.Close();
}

}  // namespace zyngrad
