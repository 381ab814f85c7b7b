#include "cli/vtk/VtpFile.h"

#include <cstddef>
#include <numeric>

namespace zyngrad {
namespace {

void AddPiece(VtkXml& xml, std::vector<double> const& points, std::size_t nVertices, std::size_t nPolygons) {
  xml.Line("<PolyData>");
  xml.Line("<Piece NumberOfPoints=\"" + std::to_string(points.size() / 3) + "\" NumberOfVerts=\"" +
           std::to_string(nVertices) + "\" NumberOfLines=\"0\" NumberOfStrips=\"0\" NumberOfPolys=\"" +
           std::to_string(nPolygons) + "\">");
  xml.Line("<Points>");
  xml.Array("Points", 3, points);
  xml.Line("</Points>");
}

void AddData(VtkXml& xml, std::string const& section, std::vector<VtkArray> const& arrays) {
  xml.Line('<' + section + '>');
  for (VtkArray const& array : arrays) xml.Array(array);
  xml.Line("</" + section + '>');
}

}  // namespace

void WritePolygons(std::string const& file, VtpSurface const& surface,
                   std::vector<VtkArray> const& polygonData, std::vector<VtkArray> const& pointData) {
  VtkXml xml;
  AddPiece(xml, surface.points, 0, surface.offsets.size());
  if (!pointData.empty()) AddData(xml, "PointData", pointData);
  xml.Line("<Polys>");
  xml.Array("connectivity", 1, surface.connectivity);
  xml.Array("offsets", 1, surface.offsets);
  xml.Line("</Polys>");
  AddData(xml, "CellData", polygonData);
  xml.Line("</Piece>\n</PolyData>");
  xml.Write(file, "PolyData");
}

void WriteVertices(std::string const& file, std::vector<double> const& points,
                   std::vector<VtkArray> const& pointData) {
  std::size_t const nPoints = points.size() / 3;
  std::vector<std::int64_t> connectivity(nPoints), offsets(nPoints);
  std::iota(connectivity.begin(), connectivity.end(), 0);
  std::iota(offsets.begin(), offsets.end(), 1);

  VtkXml xml;
  AddPiece(xml, points, nPoints, 0);
  AddData(xml, "PointData", pointData);
  xml.Line("<Verts>");
  xml.Array("connectivity", 1, connectivity);
  xml.Array("offsets", 1, offsets);
  xml.Line("</Verts>");
  xml.Line("</Piece>\n</PolyData>");
  xml.Write(file, "PolyData");
}

void WritePvtp(std::string const& file, std::vector<VtkArray> const& polygonData,
               std::vector<std::string> const& pieces) {
  WritePieceIndex(file, "PolyData", {}, polygonData, pieces);
}

}  // namespace zyngrad
