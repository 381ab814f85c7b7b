#include "cli/vtk/VtuFile.h"

namespace zyngrad {

void WriteVtu(std::string const& file, VtuGrid const& grid, std::vector<VtkArray> const& cellData) {
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
  for (VtkArray const& array : cellData) xml.Array(array);
  xml.Line("</CellData>\n</Piece>\n</UnstructuredGrid>");
  xml.Write(file, "UnstructuredGrid");
}

void WritePvtu(std::string const& file, std::vector<VtkArray> const& cellData,
               std::vector<std::string> const& pieces) {
  WritePieceIndex(file, "UnstructuredGrid", {}, cellData, pieces);
}

}  // namespace zyngrad
