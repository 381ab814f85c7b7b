#include "cli/vtk/VtuFile.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "cli/base/UsageError.h"
#include "tests/unit/cli/vtk/VtkFileContent.h"

namespace zyngrad {
namespace {

VtuGrid OneTetrahedron() {
  VtuGrid grid;
  grid.points = {0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0, 1};
  grid.connectivity = {0, 1, 2, 3};
  grid.offsets = {4};
  grid.types = {10};
  grid.faceOffsets = {-1};
  return grid;
}

std::vector<VtkArray> const kData = {{"field", 1, std::vector<double>{0.1}},
                                     {"gradient", 3, std::vector<double>{1.0, 2.0, 3.0}},
                                     {"rank", 1, std::vector<std::int32_t>{7}},
                                     {"cell", 1, std::vector<std::int64_t>{1LL << 40}}};

TEST(VtuFile, KeepsEveryBitOfEveryArray) {
  std::string const file = TestFile("VtuFile_bits.vtu");
  VtuGrid const grid = OneTetrahedron();
  WriteVtu(file, grid, kData);
  std::string const content = ReadAll(file);
  EXPECT_NE(content.find("NumberOfPoints=\"4\" NumberOfCells=\"1\""), std::string::npos);
  EXPECT_EQ(ArrayOf<double>(content, "Points"), grid.points);
  EXPECT_EQ(ArrayOf<std::int64_t>(content, "connectivity"), grid.connectivity);
  EXPECT_EQ(ArrayOf<std::int64_t>(content, "offsets"), grid.offsets);
  EXPECT_EQ(ArrayOf<std::uint8_t>(content, "types"), grid.types);
  EXPECT_EQ((std::vector<double>{0.1}), ArrayOf<double>(content, "field"));
  EXPECT_EQ((std::vector<double>{1.0, 2.0, 3.0}), ArrayOf<double>(content, "gradient"));
  EXPECT_EQ((std::vector<std::int32_t>{7}), ArrayOf<std::int32_t>(content, "rank"));
  EXPECT_EQ((std::vector<std::int64_t>{1LL << 40}), ArrayOf<std::int64_t>(content, "cell"));
  std::filesystem::remove(file);
}

TEST(VtuFile, NamesComponentsForViewers) {
  std::string const file = TestFile("VtuFile_components.vtu");
  VtkArray array = {"vorticity", 3, std::vector<double>{1.0, 2.0, 3.0}};
  array.componentNames = {"x", "y", "z"};
  std::string const names = R"( ComponentName0="x" ComponentName1="y" ComponentName2="z"/>)";
  WriteVtu(file, OneTetrahedron(), {array});
  std::string const content = ReadAll(file);
  EXPECT_NE(content.find(names), std::string::npos);
  EXPECT_EQ((std::vector<double>{1.0, 2.0, 3.0}), ArrayOf<double>(content, "vorticity"));
  WritePvtu(file, {array}, {"piece.vtu"});
  EXPECT_NE(ReadAll(file).find(names), std::string::npos);
  std::filesystem::remove(file);
}

TEST(VtuFile, NamesFaceArraysOnlyForPolyhedra) {
  std::string const file = TestFile("VtuFile_faces.vtu");
  VtuGrid grid = OneTetrahedron();
  WriteVtu(file, grid, {});
  EXPECT_EQ(ReadAll(file).find("faceoffsets"), std::string::npos);
  grid.types = {42};
  grid.faces = {4, 3, 0, 2, 1, 3, 0, 1, 3, 3, 1, 2, 3, 3, 0, 3, 2};
  grid.faceOffsets = {17};
  WriteVtu(file, grid, {});
  EXPECT_EQ(ArrayOf<std::int64_t>(ReadAll(file), "faces"), grid.faces);
  EXPECT_EQ(ArrayOf<std::int64_t>(ReadAll(file), "faceoffsets"), grid.faceOffsets);
  std::filesystem::remove(file);
}

TEST(VtuFile, ListsArraysAndPiecesInTheIndex) {
  std::string const file = TestFile("VtuFile_index.pvtu");
  WritePvtu(file, kData, {"sub/a.vtu", "sub/b.vtu"});
  std::string const content = ReadAll(file);
  EXPECT_NE(content.find("<PDataArray type=\"Float64\" Name=\"gradient\" NumberOfComponents=\"3\"/>"),
            std::string::npos);
  EXPECT_NE(content.find("<PDataArray type=\"Int64\" Name=\"cell\""), std::string::npos);
  EXPECT_LT(content.find("<Piece Source=\"sub/a.vtu\"/>"), content.find("<Piece Source=\"sub/b.vtu\"/>"));
  std::filesystem::remove(file);
}

TEST(VtuFile, ReportsAFileThatCannotBeWritten) {
  std::string const file = TestFile("no_such_folder/a.vtu");
  EXPECT_THROW(WriteVtu(file, OneTetrahedron(), {}), UsageError);
  EXPECT_THROW(WritePvtu(file, {}, {}), UsageError);
  if (std::filesystem::exists("/dev/full")) {
    EXPECT_THROW(WriteVtu("/dev/full", OneTetrahedron(), {}), UsageError);
  }
}

}  // namespace
}  // namespace zyngrad
