#include "reference_host/openfoam/PolyMeshReader.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <iomanip>
#include <map>
#include <random>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "reference_host/mesh/CellGeometry.h"
#include "reference_host/mesh/MeshCheck.h"
#include "reference_host/mesh/Periods.h"
#include "tests/unit/reference_host/MeshTestSupport.h"

namespace {

using reference_host::CheckMesh;
using reference_host::FaceMesh;
using reference_host::JoinPeriods;
using reference_host::ReadPolyMesh;

using Files = std::map<std::string, std::string>;  // content by name

std::string Header(std::string const& className) {
  return "/*---- a banner { with ( brackets; ----*\\\n| =====   |\n\\*----*/\nFoamFile\n{\n    version     "
         "2.0;\n"
         "    format      ascii; // text\n    arch        \"LSB;label=32;scalar=64\";\n    class       " +
         className + ";\n    location    \"constant/polyMesh\";\n}\n// * * * //\n\n";
}

// Two hexagonal prisms of height 1, one on top of the other. Nodes 0..5, 6..11, 12..17 from below,
// counter-clockwise seen from above, each hexagon on the unit circle. Face 0 lies between the cells.
Files HexagonColumn() {
  Files files;
  std::ostringstream points;
  points << std::setprecision(17) << Header("vectorField") << "18\n(\n";
  for (int n = 0; n < 18; ++n) {
    double const angle = n % 6 * std::acos(-1.0) / 3;
    points << '(' << std::cos(angle) << ' ' << std::sin(angle) << ' ' << n / 6 << ")\n";
  }
  points << ")\n\n// the end\n";
  files["points"] = points.str();

  std::ostringstream faces;
  faces << Header("faceList") << "15\n(\n6(6 7 8 9 10 11)\n6(12 13 14 15 16 17)\n6(0 5 4 3 2 1)\n";
  for (int side = 0; side < 12; ++side) {
    int const low = side / 6 * 6;
    int const a = low + side % 6;
    int const b = low + (side + 1) % 6;
    faces << "4(" << a << ' ' << b << ' ' << b + 6 << ' ' << a + 6 << ")\n";
  }
  faces << ")\n";
  files["faces"] = faces.str();

  files["owner"] = Header("labelList") + "15\n(\n0 1 0\n0 0 0 0 0 0\n1 1 1 1 1 1\n)\n";
  files["neighbour"] = Header("labelList") + "1(1)\n";
  files["boundary"] =
      Header("polyBoundaryMesh") +
      "3\n(\n    outlet\n    {\n        type patch;\n        nFaces 1;\n        startFace 1;\n    }\n"
      "    bottom(1)\n    {\n        type wall;\n        inGroups List<word> 1(wall);\n"
      "        nFaces 1;\n        startFace 2;\n    }\n"
      "    sides { type symmetryPlane; transform { a (0 1); } nFaces 12; startFace 3; }\n)\n";
  return files;
}

FaceMesh Read(Files const& files) {
  TemporaryFolder const folder;
  for (auto const& [name, content] : files) folder.Write(name, content);
  return ReadPolyMesh(folder.Path());
}

/// The reader's message, without the name of the temporary folder.
std::string Refusal(Files const& files) {
  TemporaryFolder const folder;
  for (auto const& [name, content] : files) folder.Write(name, content);
  std::string what = MeshErrorOf([&] { ReadPolyMesh(folder.Path()); });
  EXPECT_EQ(0U, what.rfind(folder.Path(), 0)) << what;
  return what.erase(0, std::min(what.size(), folder.Path().size() + 1));
}

/// The hexagon column with one piece of one file replaced.
Files With(std::string const& file, std::string const& from, std::string const& to) {
  Files files = HexagonColumn();
  std::size_t const at = files[file].find(from);
  EXPECT_NE(at, std::string::npos) << from;
  files[file].replace(at, from.size(), to);
  return files;
}

TEST(PolyMeshReader, ReadsPolyhedra) {
  FaceMesh const mesh = Read(HexagonColumn());
  CheckMesh(mesh);
  EXPECT_EQ(2, mesh.nCells);
  EXPECT_EQ(15, mesh.nFaces());
  EXPECT_EQ(18U, mesh.points.size());
  EXPECT_EQ((std::vector<int>{0, 1, 0, 0, 0, 0, 0, 0, 0, 1, 1, 1, 1, 1, 1}), mesh.owner);
  EXPECT_EQ(1, mesh.neighbour[0]);
  for (int f = 1; f < 15; ++f) EXPECT_EQ(-1, mesh.neighbour[f]);
  std::vector<double> const volume = reference_host::ComputeCellGeometry(mesh, 2).volume;
  double const hexagon = 1.5 * std::sqrt(3.0);
  EXPECT_NEAR(volume[0], hexagon, 1e-14);
  EXPECT_NEAR(volume[1], hexagon, 1e-14);
}

TEST(PolyMeshReader, KeepsPatchesWithTheirTypes) {
  FaceMesh const mesh = Read(HexagonColumn());
  ASSERT_EQ(3U, mesh.patches.size());
  EXPECT_EQ("outlet", mesh.patches[0].name);
  EXPECT_EQ("patch", mesh.patches[0].type);
  EXPECT_EQ("bottom(1)", mesh.patches[1].name);
  EXPECT_EQ("wall", mesh.patches[1].type);
  EXPECT_EQ("sides", mesh.patches[2].name);
  EXPECT_EQ("symmetryPlane", mesh.patches[2].type);
  EXPECT_EQ(1, FacesInPatch(mesh, "outlet"));
  EXPECT_EQ(1, FacesInPatch(mesh, "bottom(1)"));
  EXPECT_EQ(12, FacesInPatch(mesh, "sides"));
}

TEST(PolyMeshReader, ReadsCompactFaces) {
  Files files = HexagonColumn();
  std::ostringstream starts;
  std::ostringstream nodes;
  FaceMesh const expected = Read(files);
  for (std::size_t const start : expected.faceStart) starts << start << '\n';
  for (int const node : expected.faceNode) nodes << node << '\n';
  files["faces"] =
      Header("faceCompactList") + "16\n(\n" + starts.str() + ")\n\n66\n(\n" + nodes.str() + ")\n";
  ExpectSameMesh(Read(files), expected);

  files["faces"] = Header("faceCompactList") + "16\n(\n" + starts.str() + ")\n\n65\n(\n" +
                   nodes.str().substr(0, nodes.str().rfind('\n', nodes.str().size() - 2)) + ")\n";
  ExpectContains(Refusal(files), "the last face ends at 66 of 65 nodes");
  files["faces"] = Header("faceCompactList") + "3\n(0 4 2)\n2(0 1)\n";
  ExpectContains(Refusal(files), "must begin with 0 and ascend");
}

TEST(PolyMeshReader, ReadsListsOfOneRepeatedNumber) {
  ExpectSameMesh(Read(With("neighbour", "1(1)", "1{1}")), Read(HexagonColumn()));
  ExpectContains(Refusal(With("owner", "15\n(", "2000000000{1}\n(")),
                 "owner:14: the length of a list of cell numbers, 2000");
}

TEST(PolyMeshReader, TakesTheNumberOfCellsFromOwnerAndNeighbour) {
  // Cell 2 owns no face.
  Files files = HexagonColumn();
  files["neighbour"] = Header("labelList") + "1(2)\n";
  EXPECT_EQ(3, Read(files).nCells);
}

TEST(PolyMeshReader, TakesLinesThatEndTheWindowsWay) {
  Files files = HexagonColumn();
  for (auto& [name, content] : files) {
    std::string text;
    for (char const c : content) text += c == '\n' ? "\r\n" : std::string(1, c);
    content = text;
  }
  ExpectSameMesh(Read(files), Read(HexagonColumn()));
}

TEST(PolyMeshReader, RefusesOtherFormats) {
  EXPECT_EQ("points:7: format 'ebcdic' cannot be read; it has to be ascii or binary",
            Refusal(With("points", "ascii", "ebcdic")));
  EXPECT_EQ(
      "points:8: arch 'MSB;label=32;scalar=64' cannot be read; only LSB, the byte order of most processors, "
      "can",
      Refusal(With("points", "LSB", "MSB")));
  EXPECT_EQ("points:8: arch 'LSB;label=16;scalar=64' cannot be read; it has to have label=32 or label=64",
            Refusal(With("points", "label=32", "label=16")));
  EXPECT_EQ("points:8: arch 'LSB;label=32' cannot be read; it has to have scalar=32 or scalar=64",
            Refusal(With("points", ";scalar=64", "")));
}

TEST(PolyMeshReader, RefusesMissingFiles) {
  for (auto const& [name, content] : HexagonColumn()) {
    Files files = HexagonColumn();
    files.erase(name);
    EXPECT_EQ(Refusal(files), name + ": no such file");
  }
}

TEST(PolyMeshReader, RefusesFilesWithoutHeader) {
  Files files = HexagonColumn();
  files["faces"] = "0\n()\n";
  EXPECT_EQ("faces:1: not an OpenFOAM file: it does not begin with FoamFile", Refusal(files));
}

TEST(PolyMeshReader, RefusesNumbersOutOfRange) {
  EXPECT_EQ("faces:16: point 18 is not in 0 to 17", Refusal(With("faces", "6(6 7", "6(6 18")));
  EXPECT_EQ("faces:16: point -1 is not in 0 to 17", Refusal(With("faces", "6(6 7", "6(6 -1")));
  EXPECT_EQ("owner:16: cell -1 is not in 0 to 2147483646", Refusal(With("owner", "0 1 0", "0 -1 0")));
  ExpectContains(Refusal(With("owner", "0 1 0", "0 99999999999999999999 0")),
                 "owner:16: cell expected instead of");
}

TEST(PolyMeshReader, RefusesCellNumbersThatTheFacesCannotClose) {
  ExpectContains(Refusal(With("owner", "0 1 0", "0 2000000000 0")),
                 "owner and neighbour name cell 2000000000, but 15 faces cannot close that many cells");
}

TEST(PolyMeshReader, RefusesListsWhoseLengthIsWrong) {
  ExpectContains(Refusal(With("points", "18\n(", "19\n(")), "the number of points is 19, but 18 follow");
  ExpectContains(Refusal(With("points", "18\n(", "1000000000\n(")),
                 "more than the rest of the file can hold");
  ExpectContains(Refusal(With("points", "18\n(", "-1\n(")), "the number of points expected instead of '-1'");
  ExpectContains(Refusal(With("faces", "6(6 7", "5(6 7")),
                 "the number of nodes of a face is 5, but 6 follow");
  ExpectContains(Refusal(With("owner", "15\n(", "14\n(")), "14 cell numbers announced, 15 found");
  ExpectContains(Refusal(With("owner", "15\n(\n0 ", "14\n(\n")), "14 owners of 15 faces");
  ExpectContains(Refusal(With("neighbour", "1(1)", "16(1)")),
                 "neighbour:14: the length of a list of cell numbers, 16");
}

TEST(PolyMeshReader, RefusesPatchesThatDoNotCoverTheBoundaryOnce) {
  ExpectContains(Refusal(With("boundary", "nFaces 12;", "nFaces 11;")), "boundary: face 14 is in no patch");
  ExpectContains(Refusal(With("boundary", "nFaces 12;", "nFaces 13;")),
                 "boundary: patch 'sides' has 13 faces from 3 on, but boundary faces are 1 to 14");
  ExpectContains(Refusal(With("boundary", "startFace 1;", "startFace 0;")),
                 "patch 'outlet' has 1 faces from 0 on");
  ExpectContains(Refusal(With("boundary", "startFace 1;", "startFace 2;")),
                 "patch 'bottom(1)' and patch 'outlet' both have face 2");
  ExpectContains(Refusal(With("boundary", "sides {", "outlet {")), "a second patch 'outlet'");
}

TEST(PolyMeshReader, RefusesPatchesThatAreNotComplete) {
  ExpectContains(Refusal(With("boundary", "nFaces 12;", "")),
                 "patch 'sides' needs a name, a type, nFaces and startFace");
  ExpectContains(Refusal(With("boundary", "nFaces 12;", "nFaces twelve;")), "instead of 'twelve;'");
  ExpectContains(Refusal(With("boundary", "nFaces 12;", "#include \"more\"\n")), "directives and macros");
  ExpectContains(Refusal(With("boundary", "nFaces 12;", "nFaces 12)")), "an entry is not closed by ';'");
}

TEST(PolyMeshReader, TakesEmptyPatchesAnywhere) {
  Files files = With("boundary", "3\n(", "4\n(\n nothing { type wall; nFaces 0; startFace 999; }");
  EXPECT_EQ(0, FacesInPatch(Read(files), "nothing"));
}

TEST(PolyMeshReader, RefusesEveryTruncatedFile) {
  Files const whole = HexagonColumn();
  for (auto const& [name, content] : whole) {
    std::size_t const end = content.rfind(')');
    for (std::size_t length = 0; length < end; ++length) {
      Files files = whole;
      files[name].resize(length);
      Refusal(files);
    }
  }
}

// Damage must at most lead to a MeshError: whatever is still read must be a mesh that the check can handle.
TEST(PolyMeshReader, SurvivesDamagedBytes) {
  std::mt19937 random(21);
  int nRefused = 0;
  for (auto const& [name, content] : HexagonColumn()) {
    TemporaryFolder const folder;
    for (auto const& [other, text] : HexagonColumn()) folder.Write(other, text);
    for (int round = 0; round < 1000; ++round) {
      std::string damaged = content;
      for (int i = 0; i < 3; ++i)
        damaged[random() % damaged.size()] = "0123456789-. \n(){};\"/*#"[random() % 24];
      folder.Write(name, damaged);
      try {
        CheckMesh(ReadPolyMesh(folder.Path()));
      } catch (reference_host::MeshError const&) {
        ++nRefused;
      }
    }
  }
  EXPECT_GT(nRefused, 1000);
}

TEST(PolyMeshReader, GivesTheCheckTheNumbersOfTheFile) {
  auto const refusal = [](Files const& files) {
    FaceMesh const mesh = Read(files);
    return MeshErrorOf([&] { CheckMesh(mesh); });
  };
  EXPECT_EQ("point 0 has a coordinate that is not finite", refusal(With("points", "(1 0 0)", "(1 0 nan)")));
  EXPECT_EQ("face 0 has point 7 twice", refusal(With("faces", "6(6 7 8", "6(6 7 7")));
  EXPECT_EQ("cell 1 is not closed (the area vectors of its faces do not add up to zero)",
            refusal(With("faces", "6(12 13 14 15 16 17)", "6(17 16 15 14 13 12)")));
}

TEST(PolyMeshReader, RefusesTwoSigns) {
  for (char const* const number : {"+-1", "++1", "-+1", "--1", "+", "-"}) {
    EXPECT_EQ(Refusal(With("points", "(1 0 0)", std::string("(1 ") + number + " 0)")),
              std::string("points:16: a coordinate expected instead of '") + number + "'");
  }
}

// The cells of the boundary faces, patch by patch. The faces of a cut, which have no patch, come last.
TEST(PolyMeshReader, ListsTheCellsOfTheBoundaryByPatch) {
  FaceMesh mesh;
  mesh.patches = {{"inlet", "patch", {}}, {"none", "patch", {}}, {"wall", "wall", {}}};
  mesh.owner = {0, 1, 0, 2, 0, 1, 2};
  mesh.neighbour = {1, 2, -1, -1, -1, -1, -1};
  mesh.facePatch = {-1, -1, 2, 0, 0, -1, 2};
  reference_host::PolyMeshBoundary const boundary = reference_host::BoundaryOf(mesh);
  EXPECT_EQ((std::vector<std::int64_t>{2, 0, 0, 2, 1}), boundary.owner);
  ASSERT_EQ(3u, boundary.facesOfPatch.size());
  EXPECT_EQ(0, boundary.facesOfPatch[0].first);
  EXPECT_EQ(2, boundary.facesOfPatch[0].count);
  EXPECT_EQ(0, boundary.facesOfPatch[1].count);
  EXPECT_EQ(2, boundary.facesOfPatch[2].first);
  EXPECT_EQ(2, boundary.facesOfPatch[2].count);
  EXPECT_EQ("wall", boundary.patches[2].name);
}

/// The hexagon column with these entries of the boundary's first two patches, outlet and bottom(1).
Files WithCyclic(std::string const& ofOutlet, std::string const& ofBottom) {
  Files files = With("boundary", "type patch;", "type cyclic; " + ofOutlet);
  std::string& boundary = files["boundary"];
  boundary.replace(boundary.find("type wall;"), 10, "type cyclic; " + ofBottom);
  return files;
}

TEST(PolyMeshReader, PairsCyclicPatches) {
  for (auto const& [ofOutlet, ofBottom] : {std::pair("neighbourPatch bottom(1);", "neighbourPatch outlet;"),
                                           std::pair("neighbourPatch \"bottom(1)\"; transform translational; "
                                                     "separationVector (0 0 -2); matchTolerance 0.01;",
                                                     "neighbourPatch outlet; transform noOrdering;"),
                                           std::pair("coupleGroup ends;", "coupleGroup ends;")}) {
    SCOPED_TRACE(ofOutlet);
    FaceMesh mesh = Read(WithCyclic(ofOutlet, ofBottom));
    EXPECT_EQ(mesh.patches[0].partners, std::vector<int>{1});
    EXPECT_EQ(mesh.patches[1].partners, std::vector<int>{0});
    EXPECT_TRUE(mesh.patches[2].partners.empty());
    JoinPeriods(mesh);
    ASSERT_EQ(mesh.periods.size(), 1U);
    EXPECT_EQ(mesh.periods[0].shift, (reference_host::Point{0.0, 0.0, -2.0}));
    EXPECT_EQ(mesh.periods[0].faces, (std::vector<std::pair<int, int>>{{1, 2}}));
  }
}

TEST(PolyMeshReader, LeavesCyclicPatchesWithoutAPartnerAlone) {
  FaceMesh const mesh = Read(With("boundary", "type patch;", "type cyclicAMI; neighbourPatch bottom(1);"));
  EXPECT_TRUE(mesh.patches[0].partners.empty());
  EXPECT_TRUE(mesh.periods.empty());
}

TEST(PolyMeshReader, RefusesCyclicPatchesThatDoNotNameEachOther) {
  ExpectContains(
      Refusal(WithCyclic("neighbourPatch inlet;", "neighbourPatch outlet;")),
      "boundary: patch 'outlet' of type cyclic needs another cyclic patch 'inlet' that names it in turn");
  ExpectContains(Refusal(WithCyclic("neighbourPatch sides;", "neighbourPatch outlet;")),
                 "needs another cyclic patch 'sides' that names it in turn");
  ExpectContains(
      Refusal(WithCyclic("neighbourPatch bottom(1);", "neighbourPatch bottom(1);")),
      "patch 'outlet' of type cyclic needs another cyclic patch 'bottom(1)' that names it in turn");
  ExpectContains(Refusal(WithCyclic("coupleGroup a;", "coupleGroup b;")),
                 "patch 'outlet' of type cyclic needs another cyclic patch of the coupleGroup 'a'");
  ExpectContains(
      Refusal(WithCyclic("neighbourPatch bottom(1); separationVector (0 0);", "neighbourPatch outlet;")),
      "a component of separationVector expected instead of ");
}

TEST(PolyMeshReader, RotationalPatchesAreRefusedWhenTheyAreJoined) {
  FaceMesh mesh =
      Read(WithCyclic("neighbourPatch bottom(1); transform rotational;", "neighbourPatch outlet;"));
  EXPECT_EQ(MeshErrorOf([&mesh] { JoinPeriods(mesh); }),
            "cyclic patch 'outlet' is rotational; only translations can be joined, --group 'outlet=wall' "
            "makes walls of "
            "both sides");
}

}  // namespace
