#include "cli/VtuFile.h"

#include <cerrno>
#include <cstring>
#include <fstream>

#include "cli/OneLine.h"
#include "cli/UsageError.h"

namespace zyngrad {
namespace {

/// An array in the appended section: a 64-bit byte count, then the bytes.
struct Block {
  const void* data;
  std::uint64_t nBytes;
};

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

std::string Header(const char* gridType) {
  return std::string("<?xml version=\"1.0\"?>\n<VTKFile type=\"") + gridType +
         "\" version=\"1.0\" byte_order=\"" + ByteOrder() + "\" header_type=\"UInt64\">\n";
}

/// Collects the XML text and the arrays that it points to.
class VtuText {
 public:
  void Line(const std::string& text) { text_ += text + '\n'; }

  template <class T>
  void Array(const std::string& name, int nComponents, const std::vector<T>& values) {
    Line(std::string("<DataArray type=\"") + TypeName(T{}) + "\" Name=\"" + name +
         "\" NumberOfComponents=\"" + std::to_string(nComponents) + "\" format=\"appended\" offset=\"" +
         std::to_string(offset_) + "\"/>");
    blocks_.push_back({values.data(), values.size() * sizeof(T)});
    offset_ += sizeof(std::uint64_t) + blocks_.back().nBytes;
  }

  const std::string& text() const { return text_; }
  const std::vector<Block>& blocks() const { return blocks_; }

 private:
  std::string text_;
  std::vector<Block> blocks_;
  std::uint64_t offset_ = 0;
};

VtuText Describe(const VtuGrid& grid, const std::vector<VtuArray>& cellData) {
  VtuText xml;
  xml.Line("<UnstructuredGrid>");
  xml.Line("<Piece NumberOfPoints=\"" + std::to_string(grid.points.size() / 3) + "\" NumberOfCells=\"" +
           std::to_string(grid.types.size()) + "\">");
  xml.Line("<Points>");
  xml.Array("Points", 3, grid.points);
  xml.Line("</Points>\n<Cells>");
  xml.Array("connectivity", 1, grid.connectivity);
  xml.Array("offsets", 1, grid.offsets);
  xml.Array("types", 1, grid.types);
  if (!grid.faces.empty()) {
    xml.Array("faces", 1, grid.faces);
    xml.Array("faceoffsets", 1, grid.faceOffsets);
  }
  xml.Line("</Cells>\n<CellData>");
  for (const VtuArray& array : cellData) {
    std::visit([&](const auto& values) { xml.Array(array.name, array.nComponents, values); }, array.values);
  }
  xml.Line("</CellData>\n</Piece>\n</UnstructuredGrid>");
  return xml;
}

void CheckWritten(std::ofstream& out, const std::string& file) {
  out.close();
  if (!out) throw UsageError("cannot write " + Quoted(file) + ": " + std::strerror(errno));
}

}  // namespace

void WriteVtu(const std::string& file, const VtuGrid& grid, const std::vector<VtuArray>& cellData) {
  const VtuText xml = Describe(grid, cellData);
  std::ofstream out(file, std::ios::binary);
  out << Header("UnstructuredGrid") << xml.text() << "<AppendedData encoding=\"raw\">\n_";
  for (const Block& block : xml.blocks()) {
    out.write(reinterpret_cast<const char*>(&block.nBytes), sizeof block.nBytes);
    out.write(static_cast<const char*>(block.data), static_cast<std::streamsize>(block.nBytes));
  }
  out << "\n</AppendedData>\n</VTKFile>\n";
  CheckWritten(out, file);
}

void WritePvtu(const std::string& file, const std::vector<VtuArray>& cellData,
               const std::vector<std::string>& pieces) {
  std::ofstream out(file, std::ios::binary);
  out << Header("PUnstructuredGrid") << "<PUnstructuredGrid GhostLevel=\"0\">\n<PPoints>\n"
      << "<PDataArray type=\"Float64\" Name=\"Points\" NumberOfComponents=\"3\"/>\n</PPoints>\n<PCellData>\n";
  for (const VtuArray& array : cellData) {
    const char* type = std::visit(
        [](const auto& values) { return TypeName(typename std::decay_t<decltype(values)>::value_type{}); },
        array.values);
    out << "<PDataArray type=\"" << type << "\" Name=\"" << array.name << "\" NumberOfComponents=\""
        << array.nComponents << "\"/>\n";
  }
  out << "</PCellData>\n";
  for (const std::string& piece : pieces) out << "<Piece Source=\"" << piece << "\"/>\n";
  out << "</PUnstructuredGrid>\n</VTKFile>\n";
  CheckWritten(out, file);
}

}  // namespace zyngrad
