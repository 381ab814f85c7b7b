// Files that OpenFOAM's own programs wrote: text, binary, compressed, collated. Whatever the form, the numbers are the
// same.

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "reference_host/mesh/FaceMesh.h"
#include "reference_host/mesh/MeshCheck.h"
#include "reference_host/openfoam/DecomposedCase.h"
#include "reference_host/openfoam/FoamField.h"
#include "reference_host/openfoam/PolyMeshReader.h"

namespace {

using reference_host::BoundaryOf;
using reference_host::FaceMesh;
using reference_host::FoamField;
using reference_host::ProcessorFolder;
using reference_host::ProcessorMesh;
using reference_host::ReadFoamField;
using reference_host::ReadPolyMesh;
using reference_host::ReadProcessorMesh;

std::string Case(std::string const& name) { return std::string(ZYN_TEST_DATA) + "/openfoam_cases/" + name; }

std::vector<std::string> Names(FaceMesh const& mesh) {
  std::vector<std::string> names;
  for (auto const& patch : mesh.patches) names.push_back(patch.name + " " + patch.type);
  return names;
}

void ExpectSameMesh(FaceMesh const& expected, FaceMesh const& mesh) {
  EXPECT_EQ(expected.nCells, mesh.nCells);
  EXPECT_EQ(expected.points, mesh.points);
  EXPECT_EQ(expected.faceStart, mesh.faceStart);
  EXPECT_EQ(expected.faceNode, mesh.faceNode);
  EXPECT_EQ(expected.owner, mesh.owner);
  EXPECT_EQ(expected.neighbour, mesh.neighbour);
  EXPECT_EQ(expected.facePatch, mesh.facePatch);
  EXPECT_EQ(Names(expected), Names(mesh));
}

void ExpectSameField(FoamField const& expected, FoamField const& field) {
  EXPECT_EQ(expected.nComponents, field.nComponents);
  EXPECT_EQ(expected.cell, field.cell);
  EXPECT_EQ(expected.patch, field.patch);
  EXPECT_EQ(expected.patchType, field.patchType);
  EXPECT_EQ(expected.lacksValues, field.lacksValues);
  EXPECT_EQ(expected.dimensions, field.dimensions);
}

FoamField Field(std::string const& folder, std::string const& name, FaceMesh const& mesh) {
  return ReadFoamField(folder + "/" + name, mesh.nCells, BoundaryOf(mesh));
}

void ExpectSameCase(std::string const& name) {
  SCOPED_TRACE(name);
  FaceMesh const expected = ReadPolyMesh(Case("cavity/constant/polyMesh"));
  FaceMesh const mesh = ReadPolyMesh(Case(name + "/constant/polyMesh"));
  ExpectSameMesh(expected, mesh);
  for (char const* const field : {"0/p", "0/U", "0.2/p", "0.2/U", "0.4/p", "0.4/U"}) {
    SCOPED_TRACE(field);
    ExpectSameField(Field(Case("cavity"), field, expected), Field(Case(name), field, mesh));
  }
}

TEST(OpenFoamCases, CavityOfTextIsWhatItsWriterMeant) {
  FaceMesh const mesh = ReadPolyMesh(Case("cavity/constant/polyMesh"));
  reference_host::CheckMesh(mesh, "cavity");
  EXPECT_EQ(64, mesh.nCells);
  EXPECT_EQ((std::vector<std::string>{"lid wall", "sides wall", "frontAndBack empty"}), Names(mesh));
  FoamField const u = Field(Case("cavity"), "0.4/U", mesh);
  ASSERT_EQ(3, u.nComponents);
  ASSERT_EQ(3U * 64, u.cell.size());
  std::vector<double> lid;
  for (int f = 0; f < 8; ++f) lid.insert(lid.end(), {1, 0, 0});
  EXPECT_EQ(lid, u.patch[0]);                               // fixedValue, uniform (1 0 0)
  EXPECT_EQ(std::vector<double>(3 * 24, 0.0), u.patch[1]);  // noSlip
  EXPECT_EQ(std::nullopt, u.patch[2]);                      // empty
  EXPECT_EQ((std::vector<std::string>{"fixedValue", "noSlip", "empty"}), u.patchType);
  EXPECT_EQ((std::array<double, 7>{0, 1, -1, 0, 0, 0, 0}), u.dimensions);
  // The fluid follows the lid, and the flow is plane.
  double most = 0.0;
  for (std::size_t c = 0; c < 64; ++c) {
    most = std::max(most, u.cell[3 * c]);
    EXPECT_EQ(0.0, u.cell[3 * c + 2]);
  }
  EXPECT_GT(most, 0.2);
  EXPECT_LT(most, 1.0);
}

TEST(OpenFoamCases, BinaryFilesHaveTheNumbersOfTheText) { ExpectSameCase("cavity_binary"); }

TEST(OpenFoamCases, CompressedFilesHaveTheNumbersOfTheText) { ExpectSameCase("cavity_gz"); }

TEST(OpenFoamCases, CompressedBinaryFilesHaveTheNumbersOfTheText) { ExpectSameCase("cavity_binary_gz"); }

TEST(OpenFoamCases, TheFieldSaysHowItsFileWasWritten) {
  FaceMesh const mesh = ReadPolyMesh(Case("cavity/constant/polyMesh"));
  FoamField const text = Field(Case("cavity"), "0.4/U", mesh);
  EXPECT_FALSE(text.format.isBinary);
  EXPECT_FALSE(text.format.isCompressed);
  EXPECT_EQ(Case("cavity/0.4/U"), text.file);
  FoamField const binary = Field(Case("cavity_binary_gz"), "0.4/U", mesh);
  EXPECT_TRUE(binary.format.isBinary);
  EXPECT_TRUE(binary.format.isCompressed);
  EXPECT_EQ(4, binary.format.labelBytes);
  EXPECT_EQ(8, binary.format.scalarBytes);
  EXPECT_EQ(Case("cavity_binary_gz/0.4/U.gz"), binary.file);
}

void ExpectSameProcessors(std::string const& one, std::string const& other, std::string const& time,
                          int nProcessors) {
  EXPECT_TRUE(reference_host::IsDecomposedCase(Case(other)));
  EXPECT_EQ(nProcessors, reference_host::CountProcessorFolders(Case(other)));
  for (int r = 0; r < nProcessors; ++r) {
    SCOPED_TRACE(r);
    ProcessorMesh const expected = ReadProcessorMesh(Case(one), r, nProcessors);
    ProcessorMesh const processor = ReadProcessorMesh(Case(other), r, nProcessors);
    ExpectSameMesh(expected.mesh, processor.mesh);
    EXPECT_EQ(expected.globalCell, processor.globalCell);
    EXPECT_EQ(expected.globalPoint, processor.globalPoint);
    EXPECT_EQ(expected.faceAddress, processor.faceAddress);
    EXPECT_FALSE(processor.globalCell.empty());
    ASSERT_EQ(expected.cuts.size(), processor.cuts.size());
    for (std::size_t i = 0; i < expected.cuts.size(); ++i) {
      EXPECT_EQ(expected.cuts[i].neighbour, processor.cuts[i].neighbour);
      EXPECT_EQ(expected.cuts[i].nFaces, processor.cuts[i].nFaces);
    }
    for (char const* const name : {"/p", "/U"}) {
      SCOPED_TRACE(name);
      ExpectSameField(Field(ProcessorFolder(Case(one), r), time + name, expected.mesh),
                      Field(ProcessorFolder(Case(other), r), time + name, processor.mesh));
    }
  }
}

TEST(OpenFoamCases, CollatedFilesOfTextHaveTheNumbersOfSeparateFiles) {
  ExpectSameProcessors("cavity_parts", "cavity_collated_text", "0.4", 2);
}

TEST(OpenFoamCases, CollatedBinaryFilesHaveTheNumbersOfSeparateFiles) {
  ExpectSameProcessors("cavity_parts_binary_gz", "cavity_collated", "0.4", 3);
}

TEST(OpenFoamCases, ThePartsHaveTheValuesOfTheWhole) {
  FaceMesh const whole = ReadPolyMesh(Case("cavity/constant/polyMesh"));
  FoamField const expected = Field(Case("cavity"), "0.4/U", whole);
  std::vector<double> cell(expected.cell.size(), -1.0);
  for (int r = 0; r < 3; ++r) {
    ProcessorMesh const processor = ReadProcessorMesh(Case("cavity_collated"), r, 3);
    FoamField const part = Field(ProcessorFolder(Case("cavity_collated"), r), "0.4/U", processor.mesh);
    for (std::size_t c = 0; c < processor.globalCell.size(); ++c) {
      for (std::size_t x = 0; x < 3; ++x)
        cell[3 * static_cast<std::size_t>(processor.globalCell[c]) + x] = part.cell[3 * c + x];
    }
  }
  EXPECT_EQ(expected.cell, cell);
}

TEST(OpenFoamCases, MacrosOfTheUserAreWhatTheSolverTookThemFor) {
  FaceMesh const mesh = ReadPolyMesh(Case("wedge/constant/polyMesh"));
  for (char const* const name : {"/U", "/p"}) {
    SCOPED_TRACE(name);
    FoamField const before = Field(Case("wedge"), std::string("0") + name, mesh);
    FoamField const after = Field(Case("wedge"), std::string("0.02") + name, mesh);
    EXPECT_EQ(before.patchType, after.patchType);
    EXPECT_EQ(before.patch, after.patch);  // the values at the patches stay what they were
    EXPECT_EQ(before.lacksValues, after.lacksValues);
  }
}

}  // namespace
