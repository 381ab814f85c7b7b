#include "cli/vtk/VtpFile.h"

#include <gtest/gtest.h>

#include "cli/base/UsageError.h"
#include "tests/unit/cli/vtk/VtkFileContent.h"

namespace zyngrad {
namespace {

std::vector<double> const kCorners = {0, 0, 0, 1, 0, 0, 1, 1, 0, 0, 1, 0, 0.5, 2, 0};

/// A square and a triangle on its upper side.
VtpSurface const kHouse = {kCorners, {0, 1, 2, 3, 3, 2, 4}, {4, 7}};

TEST(VtpFile, HoldsPolygonsWithTheirValues) {
  std::string const file = TestFile("VtpFile_polygons.vtp");
  WritePolygons(file, kHouse,
                {{"value", 1, std::vector<double>{0.1, 0.2}}, {"rank", 1, std::vector<std::int32_t>{3, 4}}});
  std::string const content = ReadAll(file);
  EXPECT_NE(content.find("<VTKFile type=\"PolyData\""), std::string::npos);
  EXPECT_NE(content.find("NumberOfPoints=\"5\" NumberOfVerts=\"0\""), std::string::npos);
  EXPECT_NE(content.find("NumberOfPolys=\"2\""), std::string::npos);
  EXPECT_LT(content.find("<Polys>"), content.find("<CellData>"));
  EXPECT_EQ(ArrayOf<double>(content, "Points"), kHouse.points);
  EXPECT_EQ(ArrayOf<std::int64_t>(content, "connectivity"), kHouse.connectivity);
  EXPECT_EQ(ArrayOf<std::int64_t>(content, "offsets"), kHouse.offsets);
  EXPECT_EQ((std::vector<double>{0.1, 0.2}), ArrayOf<double>(content, "value"));
  EXPECT_EQ((std::vector<std::int32_t>{3, 4}), ArrayOf<std::int32_t>(content, "rank"));
  std::filesystem::remove(file);
}

TEST(VtpFile, HoldsAVertexForEachPoint) {
  std::string const file = TestFile("VtpFile_vertices.vtp");
  std::vector<double> const values = {1, 2, 3, 4, 5};
  WriteVertices(file, kCorners, {{"value", 1, values}});
  std::string const content = ReadAll(file);
  EXPECT_NE(content.find("NumberOfPoints=\"5\" NumberOfVerts=\"5\""), std::string::npos);
  EXPECT_NE(content.find("<PointData>"), std::string::npos);
  EXPECT_EQ((std::vector<std::int64_t>{0, 1, 2, 3, 4}), ArrayOf<std::int64_t>(content, "connectivity"));
  EXPECT_EQ((std::vector<std::int64_t>{1, 2, 3, 4, 5}), ArrayOf<std::int64_t>(content, "offsets"));
  EXPECT_EQ(ArrayOf<double>(content, "value"), values);
  WriteVertices(file, {}, {{"value", 1, std::vector<double>()}});
  EXPECT_NE(ReadAll(file).find("NumberOfPoints=\"0\" NumberOfVerts=\"0\""), std::string::npos);
  std::filesystem::remove(file);
}

TEST(VtpFile, ListsArraysAndPiecesInTheIndex) {
  std::string const file = TestFile("VtpFile_index.pvtp");
  WritePvtp(file, {{"value", 1, std::vector<double>()}}, {"faces/a.vtp", "faces/b.vtp"});
  std::string const content = ReadAll(file);
  EXPECT_NE(content.find("<PPolyData GhostLevel=\"0\">"), std::string::npos);
  EXPECT_NE(
      content.find("<PCellData>\n<PDataArray type=\"Float64\" Name=\"value\" NumberOfComponents=\"1\"/>"),
      std::string::npos);
  EXPECT_NE(content.find("<Piece Source=\"faces/a.vtp\"/>\n<Piece Source=\"faces/b.vtp\"/>"),
            std::string::npos);
  std::filesystem::remove(file);
}

TEST(VtpFile, ReportsAFileThatCannotBeWritten) {
  std::string const file = TestFile("no_such_folder/a.vtp");
  EXPECT_THROW(WritePolygons(file, kHouse, {}), UsageError);
  EXPECT_THROW(WriteVertices(file, kCorners, {}), UsageError);
  EXPECT_THROW(WritePvtp(file, {}, {}), UsageError);
}

}  // namespace
}  // namespace zyngrad
