#include "cli/VtuFile.h"

namespace zyngrad {

void WriteVtu(const std::string& file, const VtuGrid& grid, const std::vector<VtkArray>& cellData) {
  VtkXml xml;
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
  for (const VtkArray& array : cellData) xml.Array(array);
  xml.Line("</CellData>\n</Piece>\n</UnstructuredGrid>");
  xml.Write(file, "UnstructuredGrid");
}

void WritePvtu(const std::string& file, const std::vector<VtkArray>& cellData,
               const std::vector<std::string>& pieces) {
  WritePieceIndex(file, "UnstructuredGrid", {}, cellData, pieces);
}

}  // namespace zyngrad
