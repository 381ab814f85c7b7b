#include "reference_host/openfoam/FoamFieldWriter.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstring>
#include <string>
#include <vector>

#include "reference_host/openfoam/BoundaryFile.h"
#include "reference_host/openfoam/FoamField.h"
#include "reference_host/openfoam/FoamFieldSource.h"
#include "tests/unit/reference_host/MeshTestSupport.h"

namespace reference_host {
namespace {

std::string Cases() { return std::string(ZYN_TEST_DATA) + "/openfoam_cases/"; }

FoamOutput GradientOfPressure() {
  FoamOutput field;
  field.name = "grad(p)";
  field.location = "0.4";
  field.nComponents = 3;
  field.dimensions = {0, 1, -2, 0, 0, 0, 0};
  field.cell = {0.1, 2, -3, 1e-300, 1.0 / 3.0, 6};
  field.patches = {{"lid", "calculated", std::vector<double>{0.1, 2, -3}},
                   {"none", "calculated", std::vector<double>{}},
                   {"frontAndBack", "empty", std::nullopt}};
  return field;
}

TEST(FoamFieldWriter, WritesTextThatKeepsEveryBit) {
  EXPECT_EQ(R"(FoamFile
{
    version     2.0;
    format      ascii;
    class       volVectorField;
    note        "a note";
    location    "0.4";
    object      grad(p);
}

dimensions      [0 1 -2 0 0 0 0];

internalField   nonuniform List<vector>
2
(
(0.1 2 -3)
(1e-300 0.3333333333333333 6)
)
;

boundaryField
{
    lid
    {
        type            calculated;
        value           nonuniform List<vector>
1
(
(0.1 2 -3)
)
;
    }
    none
    {
        type            calculated;
        value           uniform (0 0 0);
    }
    frontAndBack
    {
        type            empty;
    }
}
)",
            FoamFieldText(GradientOfPressure(), {}, "a note"));
}

TEST(FoamFieldWriter, WritesBinaryNumbersOfBothWidths) {
  FoamOutput field;
  field.name = "Q";
  field.cell = {1.5, -2.25};
  FoamFormat format;
  format.isBinary = true;
  std::string text = FoamFieldText(field, format, "");
  EXPECT_NE(std::string::npos,
            text.find("format      binary;\n    arch        \"LSB;label=32;scalar=64\";\n"));
  std::string const begin = "nonuniform List<scalar>\n2\n(";
  std::size_t place = text.find(begin) + begin.size();
  std::vector<double> doubles(2);
  std::memcpy(doubles.data(), text.data() + place, 16);
  EXPECT_EQ(field.cell, doubles);
  EXPECT_EQ(");\n", text.substr(place + 16, 3));

  format.scalarBytes = 4;
  format.labelBytes = 8;
  text = FoamFieldText(field, format, "");
  EXPECT_NE(std::string::npos, text.find("\"LSB;label=64;scalar=32\""));
  place = text.find(begin) + begin.size();
  std::vector<float> floats(2);
  std::memcpy(floats.data(), text.data() + place, 8);
  EXPECT_EQ((std::vector<float>{1.5F, -2.25F}), floats);
  EXPECT_EQ(");\n", text.substr(place + 8, 3));
}

TEST(FoamFieldWriter, NamesTheClassOfEachKindOfTensor) {
  for (auto const& [nComponents, name] :
       {std::pair(1, "volScalarField"), std::pair(3, "volVectorField"), std::pair(6, "volSymmTensorField"),
        std::pair(9, "volTensorField")}) {
    FoamOutput field;
    field.nComponents = nComponents;
    field.cell.assign(static_cast<std::size_t>(nComponents), 1.0);
    EXPECT_NE(std::string::npos, FoamFieldText(field, {}, "").find("class       " + std::string(name) + ";"));
  }
}

TEST(FoamFieldWriter, GivesTheBytesOfEachBlockOfACollatedFile) {
  std::string text = FoamCollatedHead("processors2/0.4", "Q", "");
  for (int processor = 0; processor < 2; ++processor) {
    std::string const block = processor == 0 ? "first" : "second;";
    text += FoamCollatedBlockHead(processor, block.size()) + block + kFoamCollatedBlockEnd;
  }
  EXPECT_NE(std::string::npos, text.find("class       decomposedBlockData;"));
  EXPECT_NE(std::string::npos, text.find("// Processor0\n\n5\n(first)\n\n// Processor1\n\n7\n(second;)\n"));
}

TEST(FoamFieldWriter, WritesInPartsWhatItWritesAtOnce) {
  FoamOutput const field = GradientOfPressure();
  auto const nCells = static_cast<std::int64_t>(field.cell.size()) / field.nComponents;
  for (bool const isBinary : {false, true}) {
    reference_host::FoamFormat format;
    format.isBinary = isBinary;
    std::string text = FoamFieldHead(field, nCells, format, "a note");
    for (std::int64_t c = 0; c < nCells; ++c)
      text += FoamFieldItems(field.cell.data() + c * field.nComponents,
                             static_cast<std::size_t>(field.nComponents), field.nComponents, format);
    EXPECT_EQ(FoamFieldText(field, format, "a note"), text + FoamFieldTail(field, nCells, format));
  }
}

TEST(FoamFieldWriter, KeepsTheTypesThatConstrainAllFields) {
  for (char const* type : {"empty", "wedge", "symmetryPlane", "cyclic", "processor", "processorCyclic"})
    EXPECT_EQ(type, FoamPatchTypeFor(type));
  for (char const* type : {"wall", "patch", "mappedWall"}) EXPECT_EQ("calculated", FoamPatchTypeFor(type));
  EXPECT_TRUE(HasFoamPatchValues("processor"));
  EXPECT_FALSE(HasFoamPatchValues("cyclic"));
}

// The reader of the reference host is one judge; OpenFOAM itself is the other, in integrations/openfoam/tests.
TEST(FoamFieldWriter, WritesWhatTheReaderReads) {
  TemporaryFolder const folder;
  std::string const file = folder.Write("0.4/gradp", FoamFieldText(GradientOfPressure(), {}, "x"));
  PolyMeshBoundary boundary;
  boundary.owner = {0};
  boundary.patches = {{"lid", "wall", std::nullopt}, {"none", "wall", std::nullopt}};
  boundary.facesOfPatch.resize(2);
  boundary.facesOfPatch[0].count = 1;
  FoamField const read = ReadFoamField(file, 2, boundary);
  EXPECT_EQ(GradientOfPressure().cell, read.cell);
  EXPECT_EQ((std::vector<double>{0.1, 2, -3}), *read.patch[0]);
}

TEST(FoamFieldSource, TellsHowAFileIsWritten) {
  FoamFieldSource const text = DescribeFoamField(Cases() + "cavity/0.4/p");
  EXPECT_FALSE(text.format.isBinary || text.format.isCompressed);
  EXPECT_EQ((std::array<double, 7>{0, 2, -2, 0, 0, 0, 0}), text.dimensions);
  FoamFieldSource const binary = DescribeFoamField(Cases() + "cavity_binary/0.4/U");
  EXPECT_TRUE(binary.format.isBinary && !binary.format.isCompressed);
  EXPECT_EQ(4, binary.format.labelBytes);
  EXPECT_EQ(8, binary.format.scalarBytes);
  EXPECT_EQ((std::array<double, 7>{0, 1, -1, 0, 0, 0, 0}), binary.dimensions);
  FoamFieldSource const compressed = DescribeFoamField(Cases() + "cavity_binary_gz/0.4/U");
  EXPECT_TRUE(compressed.format.isBinary && compressed.format.isCompressed);
}

TEST(FoamFieldSource, ReadsTheArchitecture) {
  TemporaryFolder const folder;
  std::string const file =
      folder.Write("U",
                   "/* [9] */ FoamFile { format binary; arch \"LSB;label=64;scalar=32\"; }\n"
                   "// dimensions [1 1];\ndimensions [0 1 -1 0 0]; internalField");
  FoamFieldSource const source = DescribeFoamField(file);
  EXPECT_EQ(8, source.format.labelBytes);
  EXPECT_EQ(4, source.format.scalarBytes);
  EXPECT_EQ((std::array<double, 7>{0, 1, -1, 0, 0, 0, 0}), source.dimensions);
}

TEST(FoamFieldSource, RefusesWhatItCannotUse) {
  TemporaryFolder const folder;
  std::string const header = "FoamFile { format ascii; }\n";
  for (char const* dimensions : {"", "dimensions [m s^-1];", "dimensions [0 1];",
                                 "dimensions [0 1 -1 0 0 0 0 0];", "dimensions [0 1 -1 0 0"}) {
    std::string const file = folder.Write("U", header + dimensions);
    EXPECT_EQ(file + ": no dimensions as in [0 1 -1 0 0 0 0]", MeshErrorOf([&] { DescribeFoamField(file); }));
  }
  std::string const other = folder.Write("x", "hello");
  EXPECT_EQ(other + ": not an OpenFOAM file: it does not begin with FoamFile",
            MeshErrorOf([&] { DescribeFoamField(other); }));
  EXPECT_EQ(folder.Path() + "/none: no such file",
            MeshErrorOf([&] { DescribeFoamField(folder.Path() + "/none"); }));
}

TEST(BoundaryFile, HasAllPatchesOfAProcessor) {
  auto const patches = ReadBoundaryFile(Cases() + "channel_parts/processor0/constant/polyMesh");
  ASSERT_EQ(8u, patches.size());
  EXPECT_EQ("left", patches[0].name);
  EXPECT_EQ("cyclic", patches[0].type);
  EXPECT_EQ("right", patches[0].partner);
  EXPECT_EQ(0, patches[0].nFaces);
  EXPECT_FALSE(patches[4].IsProcessor());
  EXPECT_EQ(20, patches[7].nFaces);
  EXPECT_EQ(207, patches[7].startFace);
  EXPECT_EQ(1, patches[7].neighbour);
  EXPECT_EQ("left", patches[7].referPatch);
}

TEST(BoundaryFile, RefusesAPatchWithoutFaces) {
  TemporaryFolder const folder;
  folder.Write("boundary",
               "FoamFile { format ascii; class polyBoundaryMesh; }\n1 ( lid { type wall; startFace 3; } )");
  EXPECT_NE(std::string::npos, MeshErrorOf([&] {
                                 ReadBoundaryFile(folder.Path());
                               }).find("needs a name, a type, nFaces and startFace"));
}

}  // namespace
}  // namespace reference_host
