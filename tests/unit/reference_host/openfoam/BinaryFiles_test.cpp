#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <vector>

#include "reference_host/openfoam/DecomposedCase.h"
#include "reference_host/openfoam/FoamField.h"
#include "reference_host/openfoam/PolyMeshReader.h"
#include "tests/unit/reference_host/MeshTestSupport.h"
#include "tests/unit/reference_host/openfoam/BinaryFoamFiles.h"

namespace binary_files {
namespace {

using foam_test::BinaryFaces;
using foam_test::BinaryHeader;
using foam_test::BinaryLabels;
using foam_test::BinaryList;
using foam_test::BinaryPoints;
using foam_test::BinaryReals;
using foam_test::Sizes;
using reference_host::FaceMesh;
using reference_host::FoamField;
using reference_host::PatchFaces;
using reference_host::PolyMeshBoundary;
using reference_host::ReadFoamField;
using reference_host::ReadPolyMesh;

using Numbers = std::vector<double>;

std::vector<Sizes> AllSizes() { return {{4, 8}, {8, 8}, {4, 4}, {8, 4}}; }

// Meshes: the cavity of OpenFOAM, written again with numbers of every size.

FaceMesh const& Cavity() {
  static FaceMesh const mesh =
      ReadPolyMesh(std::string(ZYN_TEST_DATA) + "/openfoam_cases/cavity/constant/polyMesh");
  return mesh;
}

std::vector<int> InnerNeighbours() {
  std::vector<int> neighbours;
  for (int const cell : Cavity().neighbour)
    if (cell >= 0) neighbours.push_back(cell);
  return neighbours;
}

std::string const kBoundary = "1\n(\n  all { type wall; nFaces 160; startFace 112; inGroups 1(wall); }\n)\n";

/// The folder with the cavity in binary form.
class BinaryCavity {
 public:
  explicit BinaryCavity(Sizes const& sizes = {}) {
    Write("points", BinaryPoints(Cavity(), sizes));
    Write("faces", BinaryFaces(Cavity(), sizes));
    Write("owner", BinaryHeader("labelList", sizes) + BinaryLabels(Cavity().owner, sizes));
    Write("neighbour", BinaryHeader("labelList", sizes) + BinaryLabels(InnerNeighbours(), sizes));
    Write("boundary", BinaryHeader("polyBoundaryMesh", sizes) + kBoundary);
  }

  void Write(std::string const& name, std::string const& content) { folder_.Write(name, content); }
  std::string path() const { return folder_.Path(); }

  FaceMesh Read() const { return ReadPolyMesh(path()); }

  /// The message without the folder.
  std::string Refusal() const {
    std::string const what = MeshErrorOf([this] { Read(); });
    EXPECT_EQ(0U, what.rfind(path() + "/", 0)) << what;
    return what.substr(std::min(what.size(), path().size() + 1));
  }

 private:
  TemporaryFolder folder_;
};

TEST(BinaryPolyMesh, HasTheSameNumbersWhateverTheirSizes) {
  for (Sizes const& sizes : AllSizes()) {
    SCOPED_TRACE(std::to_string(sizes.labelBytes) + " " + std::to_string(sizes.scalarBytes));
    FaceMesh const mesh = BinaryCavity(sizes).Read();
    EXPECT_EQ(Cavity().nCells, mesh.nCells);
    EXPECT_EQ(Cavity().faceNode, mesh.faceNode);
    EXPECT_EQ(Cavity().faceStart, mesh.faceStart);
    EXPECT_EQ(Cavity().owner, mesh.owner);
    EXPECT_EQ(Cavity().neighbour, mesh.neighbour);
    ASSERT_EQ(Cavity().points.size(), mesh.points.size());
    for (std::size_t n = 0; n < mesh.points.size(); ++n) {
      for (std::size_t x = 0; x < 3; ++x) {
        double const exact = Cavity().points[n][x];
        EXPECT_EQ(sizes.scalarBytes == 8 ? exact : static_cast<float>(exact), mesh.points[n][x]);
      }
    }
  }
}

TEST(BinaryPolyMesh, MayHaveFacesOneByOne) {
  BinaryCavity cavity;
  std::string faces = BinaryHeader("faceList") + std::to_string(Cavity().nFaces()) + "\n(\n";
  for (int f = 0; f < Cavity().nFaces(); ++f) {
    std::vector<int> const nodes(
        Cavity().faceNode.begin() + static_cast<std::ptrdiff_t>(Cavity().faceStart[f]),
        Cavity().faceNode.begin() + static_cast<std::ptrdiff_t>(Cavity().faceStart[f + 1]));
    faces += BinaryLabels(nodes) + "\n";
  }
  cavity.Write("faces", faces + ")\n");
  EXPECT_EQ(Cavity().faceNode, cavity.Read().faceNode);
}

/// "NAME: offset N: ", N bytes after the header of a class.
std::string Place(std::string const& name, std::string const& className, std::size_t after,
                  Sizes const& sizes = {}) {
  return name + ": offset " + std::to_string(BinaryHeader(className, sizes).size() + after) + ": ";
}

TEST(BinaryPolyMesh, RefusesCountsThatTheFileCannotHold) {
  BinaryCavity cavity;
  auto const refusal = [&](std::string const& name, std::string const& className, std::string const& list) {
    cavity.Write(name, BinaryHeader(className) + list);
    return cavity.Refusal();
  };
  EXPECT_EQ(
      Place("points", "vectorField", 11) + "a binary list has 48000000000 bytes, but the file ends after 9",
      refusal("points", "vectorField", "2000000000\n(12345678)"));
  EXPECT_EQ(Place("points", "vectorField", 0) +
                "the length of a list of points, 9000000000, is not in 0 to 2147483647",
            refusal("points", "vectorField", "9000000000\n(12345678)"));
  EXPECT_EQ(
      Place("points", "vectorField", 0) + "the length of a list of points, -1, is not in 0 to 2147483647",
      refusal("points", "vectorField", "-1\n(12345678)"));
  cavity.Write("points", BinaryPoints(Cavity()));
  EXPECT_EQ(Place("faces", "faceCompactList", 0) +
                "the number of face starts is 1000000, more than the rest of the file can hold",
            refusal("faces", "faceCompactList", "1000000\n(12345678)"));
  cavity.Write("faces", BinaryFaces(Cavity()));
  EXPECT_EQ(Place("owner", "labelList", 0) + "the length of a list of cell numbers, 273, is not in 0 to 272",
            refusal("owner", "labelList", "273\n(12345678)"));
  EXPECT_EQ(Place("owner", "labelList", 4) + "a binary list has 1088 bytes, but the file ends after 9",
            refusal("owner", "labelList", "272\n(12345678)"));
}

TEST(BinaryPolyMesh, RefusesNumbersOutOfRangeWithTheirPlace) {
  BinaryCavity cavity;
  std::vector<int> nodes = Cavity().faceNode;
  nodes[5] = 162;
  std::string const starts = BinaryHeader("faceCompactList") + BinaryLabels(Cavity().faceStart) + "\n";
  cavity.Write("faces", starts + BinaryLabels(nodes));
  std::size_t const first = starts.size() + 5 + 1;  // behind "1024\n" and the bracket
  EXPECT_EQ("faces: offset " + std::to_string(first + 5 * 4) + ": point 162 is not in 0 to 161",
            cavity.Refusal());
  cavity.Write("faces", BinaryFaces(Cavity()));
  std::vector<std::int64_t> owner(Cavity().owner.begin(), Cavity().owner.end());
  owner[3] = std::int64_t{1} << 40;
  cavity.Write("owner", BinaryHeader("labelList", {8, 8}) + BinaryLabels(owner, {8, 8}));
  EXPECT_EQ(Place("owner", "labelList", 5 + 3 * 8, {8, 8}) + "cell 1099511627776 is not in 0 to 2147483646",
            cavity.Refusal());
}

TEST(BinaryPolyMesh, RefusesStartsOfFacesThatDoNotAscend) {
  BinaryCavity cavity;
  std::vector<std::size_t> starts = Cavity().faceStart;
  starts[7] = 3;
  cavity.Write("faces",
               BinaryHeader("faceCompactList") + BinaryLabels(starts) + BinaryLabels(Cavity().faceNode));
  EXPECT_NE(std::string::npos, cavity.Refusal().find("the starts of the faces must begin with 0 and ascend"));
}

TEST(BinaryPolyMesh, RefusesListsWithoutTheirBrackets) {
  BinaryCavity cavity;
  cavity.Write("points", BinaryHeader("vectorField") + "1 [123456789012345678901234]");
  EXPECT_EQ(Place("points", "vectorField", 2) + "'(' expected instead of '[123456789012345678901234]'",
            cavity.Refusal());
  cavity.Write("points", BinaryHeader("vectorField") + "1 (1234567890123456789012345)");
  EXPECT_EQ(Place("points", "vectorField", 27) + "')' expected instead of '5)'", cavity.Refusal());
}

TEST(BinaryPolyMesh, RefusesEveryTruncatedFile) {
  for (auto const& [name, content] : std::vector<std::pair<std::string, std::string>>{
           {"points", BinaryPoints(Cavity())}, {"faces", BinaryFaces(Cavity())}}) {
    BinaryCavity cavity;
    std::size_t const end = content.rfind(')');
    for (std::size_t length = 0; length < end; length += 61) {
      cavity.Write(name, content.substr(0, length));
      EXPECT_EQ(0U, cavity.Refusal().rfind(name, 0));
    }
  }
}

TEST(AddressingFile, MayBeBinary) {
  TemporaryFolder const folder;
  std::vector<std::int64_t> const numbers = {3, -7, 2147483647, -2147483647};
  for (int const labelBytes : {4, 8}) {
    Sizes const sizes = {labelBytes, 8};
    folder.Write("faceProcAddressing", BinaryHeader("labelList", sizes) + BinaryLabels(numbers, sizes));
    EXPECT_EQ(numbers, reference_host::ReadAddressing(folder.Path(), "faceProcAddressing", 4));
  }
}

// Fields of three cells, with three faces in the patch inlet, two in wall and none in none.

PolyMeshBoundary ThreeCells() {
  PolyMeshBoundary boundary;
  boundary.owner = {0, 2, 0, 1, 2};
  boundary.patches = {{"inlet", "patch", {}}, {"wall", "wall", {}}, {"none", "patch", {}}};
  boundary.facesOfPatch = {PatchFaces{0, 3}, PatchFaces{3, 2}, PatchFaces{5, 0}};
  return boundary;
}

std::string FieldText(std::string const& className, std::string const& internal, std::string const& patches,
                      Sizes const& sizes = {}) {
  return BinaryHeader(className, sizes) + "dimensions [0 1 -1 0 0 0 0];\ninternalField " + internal +
         ";\nboundaryField\n{\n" + patches + "}\n";
}

FoamField Read(std::string const& text) {
  TemporaryFolder const folder;
  return ReadFoamField(folder.Write("U", text), 3, ThreeCells());
}

std::string Refusal(std::string const& text) {
  TemporaryFolder const folder;
  std::string const file = folder.Write("U", text);
  return MeshErrorOf([&] { ReadFoamField(file, 3, ThreeCells()); }).substr(file.size());
}

TEST(BinaryField, HasTheSameNumbersWhateverTheirSizes) {
  Numbers const vectors = {1, 2, 3, 4, 5, 6, 7, 8, -0.5};
  for (Sizes const& sizes : AllSizes()) {
    std::string const list = "nonuniform List<vector> \n" + BinaryReals(vectors, 3, sizes);
    FoamField const field = Read(FieldText("volVectorField", list,
                                           "inlet { type fixedValue; value " + list +
                                               ";\n }\nwall { type calculated; value uniform (3 2 1); }\n"
                                               "none { type calculated; value nonuniform 0; }\n",
                                           sizes));
    EXPECT_EQ(vectors, field.cell);
    EXPECT_EQ(vectors, field.patch[0]);
    EXPECT_EQ((Numbers{3, 2, 1, 3, 2, 1}), field.patch[1]);
    EXPECT_EQ(sizes.labelBytes, field.format.labelBytes);
    EXPECT_EQ(sizes.scalarBytes, field.format.scalarBytes);
  }
  EXPECT_EQ(
      (Numbers{1, 2, 3}),
      Read(FieldText("volScalarField", "nonuniform List<scalar> " + BinaryReals({1, 2, 3}, 1), "")).cell);
  EXPECT_EQ((Numbers{7, 7, 7}), Read(FieldText("volScalarField", "nonuniform List<scalar> 3{7}", "")).cell);
}

TEST(BinaryField, PassesOverListsThatItDoesNotNeed) {
  // Bytes that look like the ends of lists, entries and files.
  std::string const bytes = ");}\n}(;/*\"$#{//0";  // two scalars
  ASSERT_EQ(16U, bytes.size());
  std::string const list = " nonuniform List<scalar> " + BinaryList(2, bytes) + ";\n";
  FoamField const field =
      Read(FieldText("volScalarField", "uniform 1",
                     "inlet { type codedMixed; gradient" + list + "refValue" + list + "labels List<label> " +
                         BinaryLabels(std::vector<int>{41, 59, 125}) +
                         "; tensors List<tensor> 0; words List<word> 2(a b); " +
                         "empties nonuniform List<vector> 0(); value uniform 5; }\n"));
  EXPECT_EQ((Numbers{5, 5, 5}), field.patch[0]);
}

TEST(BinaryField, RefusesCountsThatTheFileCannotHold) {
  std::string const entries = "dimensions [0 1 -1 0 0 0 0];\ninternalField nonuniform 3";
  EXPECT_EQ(
      Place("", "volScalarField", entries.size()) + "a binary list has 24 bytes, but the file ends after 14",
      Refusal(BinaryHeader("volScalarField") + entries + "(12345678901234"));
  std::string const patches =
      "inlet { type calculated; gradient nonuniform List<tensor> 1000000(1234567890); }\n";
  std::string const text = FieldText("volScalarField", "uniform 1", patches);
  EXPECT_EQ(": offset " + std::to_string(text.find("1000000")) +
                ": the length of a list is 1000000, more than the rest of the file can hold",
            Refusal(text));
}

// Whichever byte changes, the field is either read or rejected in one line.
TEST(BinaryField, SurvivesDamagedBytes) {
  std::string const whole = FieldText(
      "volScalarField", "nonuniform List<scalar> " + BinaryReals({1, 2, 3}, 1),
      "inlet { type fixedValue; value nonuniform List<scalar> " + BinaryReals({4, 5, 6}, 1) + "; }\n");
  TemporaryFolder const folder;
  for (std::size_t at = 0; at < whole.size(); ++at) {
    std::string text = whole;
    text[at] = "(};9\0\xff"[at % 6];
    std::string const file = folder.Write("p", text);
    try {
      EXPECT_EQ(3U, ReadFoamField(file, 3, ThreeCells()).cell.size());
    } catch (reference_host::MeshError const& error) {
      EXPECT_EQ(std::string(error.what()).find('\n'), std::string::npos);
    }
  }
}

}  // namespace
}  // namespace binary_files
