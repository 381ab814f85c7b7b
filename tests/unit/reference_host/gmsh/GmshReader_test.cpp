#include "reference_host/gmsh/GmshReader.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "reference_host/mesh/BoundaryGroups.h"
#include "reference_host/mesh/CellGeometry.h"
#include "reference_host/mesh/MeshCheck.h"
#include "reference_host/mesh/Periods.h"
#include "tests/unit/reference_host/MeshTestSupport.h"
#include "tests/unit/reference_host/gmsh/GmshTestFile.h"

namespace {

using reference_host::CheckMesh;
using reference_host::FaceMesh;
using reference_host::JoinPeriods;
using reference_host::ReadGmsh;

std::vector<std::pair<std::string, bool>> const kVariants = {
    {"2.2", false}, {"2.2", true}, {"4.1", false}, {"4.1", true}};

FaceMesh ReadText(std::string const& content) {
  TemporaryFolder const folder;
  return ReadGmsh(folder.Write("a.msh", content));
}

FaceMesh Read(GmshTestMesh const& mesh, std::string const& version = "2.2", bool binary = false) {
  return ReadText(WriteGmsh(mesh, version, binary));
}

/// The reader's message about a file called a.msh, without the name of the temporary folder.
std::string Refusal(std::string const& content) {
  TemporaryFolder const folder;
  std::string const file = folder.Write("a.msh", content);
  std::string const what = MeshErrorOf([&] { ReadGmsh(file); });
  EXPECT_EQ(0U, what.rfind(folder.Path() + "/a.msh:", 0)) << what;
  return what.substr(std::min(what.size(), folder.Path().size() + 1));
}

std::string Replaced(std::string text, std::string const& from, std::string const& to) {
  std::size_t const at = text.find(from);
  EXPECT_NE(at, std::string::npos) << from;
  return text.replace(at, from.size(), to);
}

TEST(GmshReader, ReadsHexahedronPrismPyramidAndTetrahedronInOneMesh) {
  FaceMesh const mesh = Read(MixedMesh());

  EXPECT_EQ(4, mesh.nCells);
  EXPECT_EQ(mesh.nFaces(), 6 + 5 + 5 + 4 - 3);
  EXPECT_EQ(14, std::count(mesh.neighbour.begin(), mesh.neighbour.end(), -1));
  CheckMesh(mesh);
  std::vector<double> const volume = reference_host::ComputeCellGeometry(mesh, mesh.nCells).volume;
  EXPECT_NEAR(1.0, volume[0], 1e-15);
  EXPECT_NEAR(0.5, volume[1], 1e-15);
  EXPECT_NEAR(volume[2], 1.0 / 3, 1e-15);
  EXPECT_NEAR(0.25, volume[3], 1e-15);
}

TEST(GmshReader, BothVersionsInTextAndBinaryGiveTheSameMesh) {
  FaceMesh const expected = Read(MixedMesh());
  for (auto const& [version, binary] : kVariants) {
    SCOPED_TRACE(version + (binary ? " binary" : " text"));
    ExpectSameMesh(Read(MixedMesh(), version, binary), expected);
  }
}

TEST(GmshReader, MakesPatchesOfPhysicalSurfaces) {
  for (auto const& [version, binary] : kVariants) {
    SCOPED_TRACE(version + (binary ? " binary" : " text"));
    FaceMesh const mesh = Read(MixedMesh(), version, binary);
    ASSERT_EQ(5U, mesh.patches.size());
    EXPECT_EQ("inlet", mesh.patches[0].name);
    EXPECT_EQ("outlet (right)", mesh.patches[1].name);
    EXPECT_EQ("surface_7", mesh.patches[2].name);
    EXPECT_EQ("inside", mesh.patches[3].name);
    EXPECT_EQ("unnamed", mesh.patches[4].name);
    EXPECT_EQ(1, FacesInPatch(mesh, "inlet"));
    EXPECT_EQ(1, FacesInPatch(mesh, "outlet (right)"));
    EXPECT_EQ(1, FacesInPatch(mesh, "surface_7"));
    EXPECT_EQ(0, FacesInPatch(mesh, "inside"));
    EXPECT_EQ(11, FacesInPatch(mesh, "unnamed"));
  }
}

TEST(GmshReader, LeavesOutNodesOfNoCell) {
  FaceMesh const mesh = Read(MixedMesh());
  EXPECT_EQ(12U, mesh.points.size());
  for (auto const& point : mesh.points) EXPECT_LT(point[0], 9);
}

TEST(GmshReader, TakesLinesThatEndTheWindowsWay) {
  for (char const* const version : {"2.2", "4.1"}) {
    std::string const unixText = WriteGmsh(MixedMesh(), version, false);
    std::string text;
    for (char const c : unixText) text += c == '\n' ? "\r\n" : std::string(1, c);
    ExpectSameMesh(ReadText(text), Read(MixedMesh()));
  }
}

TEST(GmshReader, FindsNodesWithHugeGapsBetweenTheirTags) {
  // Tag 123 becomes 2000000003: no table by tag could be made for it.
  std::string const text = WriteGmsh(MixedMesh(), "2.2", false);
  std::string sparse;
  for (std::size_t i = 0; i < text.size(); ++i) {
    bool const isTag =
        text.compare(i, 4, "113 ") == 0 && (i == 0 || text[i - 1] == ' ' || text[i - 1] == '\n');
    if (!isTag) sparse += text[i];
    if (isTag) sparse += "2000000003", i += 2;
  }
  EXPECT_NE(sparse, text);
  ExpectSameMesh(ReadText(sparse), Read(MixedMesh()));
}

TEST(GmshReader, PassesOverSectionsOfNoInterest) {
  std::string const text =
      WriteGmsh(MixedMesh(), "4.1", false) +
      "$Parametrizations\n1\n2 1 2\n$EndParametrizations\n$NodeData\n1\n\"$Nodes\"\n$EndNodeData\n";
  ExpectSameMesh(ReadText(text), Read(MixedMesh()));
}

TEST(GmshReader, ReadsPrismsOnTetrahedra) {
  // A prism on the triangle 0 1 2 and a tetrahedron below it.
  GmshTestMesh mesh;
  mesh.points = {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {0, 0, 1}, {1, 0, 1}, {0, 1, 1}, {0, 0, -1}};
  mesh.elements = {{6, 1, 0, Tags({0, 1, 2, 3, 4, 5})}, {4, 2, 0, Tags({0, 1, 2, 6})}};
  for (auto const& [version, binary] : kVariants) {
    FaceMesh const faces = Read(mesh, version, binary);
    CheckMesh(faces);
    EXPECT_EQ(faces.nFaces(), 5 + 4 - 1);
    std::vector<double> const volume = reference_host::ComputeCellGeometry(faces, 2).volume;
    EXPECT_NEAR(0.5, volume[0], 1e-15);
    EXPECT_NEAR(volume[1], 1.0 / 6, 1e-15);
  }
}

TEST(GmshReader, MergesPhysicalSurfacesOfOneName) {
  GmshTestMesh mesh = MixedMesh();
  mesh.physicalNames = "$PhysicalNames\n2\n2 1 \"wall\"\n2 7 \"wall\"\n$EndPhysicalNames\n";
  EXPECT_EQ(2, FacesInPatch(Read(mesh), "wall"));
}

TEST(GmshReader, RefusesSecondOrderElementsByNumberAndType) {
  GmshTestMesh mesh = MixedMesh();
  mesh.elements.push_back({11, 31, 1, Tags({0, 1, 2, 4, 5, 6, 7, 8, 9, 10})});
  for (auto const& [version, binary] : kVariants) {
    std::string const what = Refusal(WriteGmsh(mesh, version, binary));
    ExpectContains(what, "element 31 is a second-order tetrahedron with 10 nodes");
    ExpectContains(what, "first-order");
    ExpectContains(what, binary ? "a.msh: offset " : (version == "2.2" ? "a.msh:39: " : "a.msh:79: "));
  }
}

TEST(GmshReader, RefusesOtherElementTypesByNumber) {
  GmshTestMesh mesh = MixedMesh();
  mesh.elements[0].type = 36;
  ExpectContains(Refusal(WriteGmsh(mesh, "2.2", false)), "element 1 is of type 36");
  mesh.elements[0].type = -1;
  ExpectContains(Refusal(WriteGmsh(mesh, "2.2", true)), "element 1 is of type -1");
}

/// The meshes that Gmsh wrote, see the folder's README.md.
FaceMesh ReadData(std::string const& name) {
  FaceMesh const mesh = ReadGmsh(ZYN_TEST_DATA "/gmsh/" + name);
  CheckMesh(mesh);
  return mesh;
}

/// The centres of the cells in ascending order, without their last digits, which depend on the order of the faces.
std::vector<reference_host::Point> Centres(FaceMesh const& mesh) {
  std::vector<reference_host::Point> centres = reference_host::ComputeCellGeometry(mesh, mesh.nCells).centre;
  for (reference_host::Point& centre : centres) {
    for (double& x : centre) x = std::round(1e9 * x);
  }
  std::sort(centres.begin(), centres.end());
  return centres;
}

TEST(GmshReader, ReadsPartitionedFilesAsAWhole) {
  FaceMesh const whole = ReadData("box_41.msh");
  for (char const* const name :
       {"box_parts_41.msh", "box_parts_41_binary.msh", "box_ghosts_41.msh", "box_parts_22.msh"}) {
    SCOPED_TRACE(name);
    FaceMesh const parts = ReadData(name);
    EXPECT_EQ(parts.nCells, whole.nCells);
    EXPECT_EQ(parts.points.size(), whole.points.size());
    for (char const* const patch : {"left", "right", "sides", "walls"}) {
      EXPECT_EQ(FacesInPatch(parts, patch), FacesInPatch(whole, patch)) << patch;
    }
    EXPECT_EQ(FacesInPatch(parts, "unnamed"), -1);
    EXPECT_EQ(Centres(parts), Centres(whole));
  }
}

TEST(GmshReader, RefusesSingleFilesOfAMeshInSeveral) {
  ExpectContains(MeshErrorOf([] { ReadData("box_split_41_1.msh"); }),
                 "box_split_41_1.msh: only partition 1 of 2 is in this file; save the mesh in one file");
  ExpectContains(MeshErrorOf([] { ReadData("box_split_22_2.msh"); }),
                 "box_split_22_2.msh: only partition 2 is in this file; save the mesh in one file");
}

TEST(GmshReader, RefusesDamagedPartitionedEntities) {
  auto const refusal = [](std::string const& section) {
    return Refusal(Replaced(WriteGmsh(MixedMesh(), "4.1", false), "$Nodes\n",
                            "$PartitionedEntities\n" + section + "$EndPartitionedEntities\n$Nodes\n"));
  };
  ExpectContains(refusal("3\n0\n"), "a number of entities expected instead of '$EndPartitionedEntities'");
  ExpectContains(refusal("3\n99999999999\n"), "ghost entities, more than the rest of it can hold");
  ExpectContains(refusal("3\n0\n0 0 99999999 0\n"),
                 "geometric entities of partitions, more than the rest of it can hold");
  ExpectContains(refusal("3\n0\n0 0 1 0\n5 2 1 99999999\n"), "partitions of an entity, more than");
}

TEST(GmshReader, PairsTheFacesOfPeriodicSurfaces) {
  for (char const* const name : {"box_41.msh", "box_22.msh", "box_41_binary.msh", "box_22_binary.msh",
                                 "box_parts_41.msh", "box_parts_41_binary.msh", "box_parts_22.msh"}) {
    SCOPED_TRACE(name);
    FaceMesh mesh = ReadData(name);
    ASSERT_EQ(mesh.patches.size(), 4u);  // left, right, sides, walls
    EXPECT_EQ(mesh.patches[0].partners, std::vector<int>{1});
    EXPECT_EQ(mesh.patches[1].partners, std::vector<int>{0});
    EXPECT_EQ(mesh.patches[2].partners, std::vector<int>{2});  // both sides of one physical surface
    EXPECT_EQ(mesh.patches[3].partners, std::vector<int>{});
    JoinPeriods(mesh);
    ASSERT_EQ(mesh.periods.size(), 2u);
    EXPECT_EQ(mesh.periods[0].shift, (reference_host::Point{2.0, 0.0, 0.0}));
    EXPECT_EQ(mesh.periods[1].shift, (reference_host::Point{0.0, 1.0, 0.0}));
    EXPECT_EQ(static_cast<int>(mesh.periods[0].faces.size()), FacesInPatch(mesh, "left"));
    EXPECT_EQ(2 * static_cast<int>(mesh.periods[1].faces.size()), FacesInPatch(mesh, "sides"));
  }
}

TEST(GmshReader, LeavesPeriodicSurfacesWithAGroupAsBoundaries) {
  FaceMesh mesh = ReadData("named_41.msh");
  EXPECT_EQ(mesh.patches[0].partners, std::vector<int>{1});
  for (reference_host::Patch& patch : mesh.patches) {
    patch.group = reference_host::GroupByName(patch.name, patch.type);
  }
  JoinPeriods(mesh);
  EXPECT_TRUE(mesh.periods.empty());
}

TEST(GmshReader, PeriodsByARotationAreRefused) {
  ExpectContains(
      MeshErrorOf([] {
        FaceMesh mesh = ReadData("sector_41.msh");
        JoinPeriods(mesh, "sector");
      }),
      "in 'second' is rotational; only translations can be joined, --group 'first=wall' makes walls");
}

TEST(GmshReader, RefusesDamagedPeriodicSections) {
  std::string const text = WriteGmsh(MixedMesh(), "4.1", false);
  auto const refusal4 = [&](std::string const& section) {
    return Refusal(text + "$Periodic\n" + section + "$EndPeriodic\n");
  };
  ExpectContains(refusal4("1\n2 1 2\n"), "the size of a transformation expected");
  ExpectContains(refusal4("99999\n"), "periodic entities, more than the rest of it can hold");
  ExpectContains(refusal4("1\n2 1 2\n999\n"), "numbers of a transformation, more than");
  ExpectContains(refusal4("1\n2 1 2\n0\n999\n"), "periodic nodes, more than");
  auto const refusal2 = [](std::string const& section) {
    return Refusal(WriteGmsh(MixedMesh(), "2.2", false) + "$Periodic\n" + section + "$EndPeriodic\n");
  };
  ExpectContains(refusal2("1\n2 1 2\nAffine 1 0\n"), "a transformation expected instead of '$EndPeriodic'");
  ExpectContains(refusal2("1\n2 1 2\n999\n"), "the number of periodic nodes is 999, more than");
  // Nodes that the mesh does not have, and a surface that is its own master.
  FaceMesh const mesh = ReadText(text + "$Periodic\n1\n2 1 1\n0\n2\n998 999\n1 1\n$EndPeriodic\n");
  EXPECT_TRUE(mesh.periods.empty());
}

TEST(GmshReader, RefusesTheByteOrderOfOtherMachines) {
  for (char const* const version : {"2.2", "4.1"}) {
    std::string content = WriteGmsh(MixedMesh(), version, true);
    std::size_t const one = content.find("1 8\n") + 4;
    std::reverse(content.begin() + static_cast<long>(one), content.begin() + static_cast<long>(one) + 4);
    EXPECT_EQ("a.msh: offset 20: the file has the byte order of another machine", Refusal(content));
  }
}

TEST(GmshReader, RefusesOtherVersionsAndFormats) {
  std::string const text = WriteGmsh(MixedMesh(), "2.2", false);
  EXPECT_EQ("a.msh:2: Gmsh format '4.0' cannot be read; save the mesh as version 4.1 or 2.2",
            Refusal(Replaced(text, "2.2 0 8", "4.0 0 8")));
  ExpectContains(Refusal(Replaced(text, "2.2 0 8", "2.2 2 8")), "a.msh:2: 0 (text) or 1 (binary) expected");
  ExpectContains(Refusal(Replaced(text, "2.2 0 8", "2.2 0 4")), "a.msh:2: only real numbers of 8 bytes");
  ExpectContains(Refusal("(0 \"mesh of another program\")\n"), "a.msh:1: not a Gmsh mesh");
  ExpectContains(Refusal(""), "a.msh:1: the file ends where $MeshFormat is expected");
}

TEST(GmshReader, RefusesFilesWithoutVolumeElements) {
  GmshTestMesh mesh = MixedMesh();
  mesh.elements.resize(5);
  ExpectContains(Refusal(WriteGmsh(mesh, "4.1", true)), "no volume elements");
}

TEST(GmshReader, RefusesFilesWithoutNodesOrElements) {
  std::string const format = "$MeshFormat\n2.2 0 8\n$EndMeshFormat\n";
  ExpectContains(Refusal(format), "the file ends without a section $Nodes");
  ExpectContains(Refusal(format + "$Nodes\n0\n$EndNodes\n"), "the file ends without a section $Elements");
}

TEST(GmshReader, RefusesElementsOfNodesThatAreNotThere) {
  GmshTestMesh mesh = MixedMesh();
  mesh.elements[8].nodes[2] = 5;
  ExpectContains(Refusal(WriteGmsh(mesh, "2.2", false)),
                 "element 29 has node 5, which the file does not have");
  mesh.elements[8].nodes[2] = -7;
  ExpectContains(Refusal(WriteGmsh(mesh, "2.2", true)), "element 29 has node -7");
  mesh.elements[8].nodes[2] = 2000000000;
  ExpectContains(Refusal(WriteGmsh(mesh, "4.1", true)), "element 29 has node 2000000000");
}

TEST(GmshReader, RefusesNodesThatAreThereTwice) {
  std::string const text = WriteGmsh(MixedMesh(), "2.2", false);
  ExpectContains(Refusal(Replaced(text, "\n13 1 0 0", "\n3 1 0 0")), "node 3 occurs twice");
}

TEST(GmshReader, RefusesDuplicatedElements) {
  GmshTestMesh mesh = MixedMesh();
  mesh.elements.push_back(mesh.elements[8]);
  mesh.elements.back().tag = 40;
  ExpectContains(Refusal(WriteGmsh(mesh, "2.2", false)), "element 40 ");
}

TEST(GmshReader, RefusesFacesOfThreeCells) {
  GmshTestMesh mesh = MixedMesh();
  mesh.elements.push_back({4, 41, 0, Tags({5, 8, 6, 12})});  // on the side between pyramid and tetrahedron
  ExpectContains(Refusal(WriteGmsh(mesh, "2.2", false)),
                 "element 41 shares a face with element 18 and element 29: a face has two sides");
}

TEST(GmshReader, RefusesCellsThatHaveANodeTwice) {
  GmshTestMesh mesh = MixedMesh();
  mesh.elements[5].nodes[7] = mesh.elements[5].nodes[4];
  ExpectContains(Refusal(WriteGmsh(mesh, "2.2", false)), "element 16 has a node twice");
}

TEST(GmshReader, RefusesCountsThatTheFileCannotHold) {
  std::string const text22 = WriteGmsh(MixedMesh(), "2.2", false);
  EXPECT_EQ("a.msh:13: the file says 9000000000000000000 nodes, more than the rest of it can hold",
            Refusal(Replaced(text22, "$Nodes\n13\n", "$Nodes\n9000000000000000000\n")));
  ExpectContains(Refusal(Replaced(text22, "$Nodes\n13\n", "$Nodes\n-1\n")),
                 "a.msh:13: the file says -1 nodes");
  ExpectContains(Refusal(Replaced(text22, "$Elements\n9\n", "$Elements\n9000000000\n")),
                 "more than the rest");
  ExpectContains(Refusal(Replaced(text22, "$PhysicalNames\n5\n", "$PhysicalNames\n9000000000\n")),
                 "more than the rest");

  // In a 4.1 file the first numbers of a section are 8 bytes each.
  std::string const binary = WriteGmsh(MixedMesh(), "4.1", true);
  for (char const* const section : {"$Entities\n", "$Nodes\n", "$Elements\n"}) {
    for (std::size_t const number : {0, 1}) {
      std::string damaged = binary;
      std::size_t const at = damaged.find(section) + std::string(section).size() + 8 * number;
      damaged[at + 5] = 1;  // adds 2^40
      ExpectContains(Refusal(damaged), "more than the rest of it can hold");
    }
  }
}

TEST(GmshReader, RefusesNumbersThatAreNone) {
  std::string const text = WriteGmsh(MixedMesh(), "2.2", false);
  EXPECT_EQ("a.msh:15: a coordinate expected instead of '0x'",
            Refusal(Replaced(text, "\n13 1 0 0", "\n13 1 0x 0")));
  EXPECT_EQ("a.msh:15: a coordinate expected instead of '1e999'",
            Refusal(Replaced(text, "\n13 1 0 0", "\n13 1 1e999 0")));
  EXPECT_EQ("a.msh:15: a node number expected instead of '1.5'",
            Refusal(Replaced(text, "\n13 1 0 0", "\n1.5 1 0 0")));
  EXPECT_EQ("a.msh:15: node number -13 is not positive",
            Refusal(Replaced(text, "\n13 1 0 0", "\n-13 1 0 0")));
}

TEST(GmshReader, TakesPlusSignsAndTheSmallestNumbers) {
  std::string const text = WriteGmsh(MixedMesh(), "2.2", false);
  ExpectSameMesh(ReadText(Replaced(text, "\n13 1 0 0", "\n13 +1 1e-999 0")), Read(MixedMesh()));
}

TEST(GmshReader, RefusesEveryTruncatedFile) {
  for (auto const& [version, binary] : kVariants) {
    SCOPED_TRACE(version + (binary ? " binary" : " text"));
    std::string const content = WriteGmsh(MixedMesh(), version, binary);
    for (std::size_t length = 0; length + 1 < content.size(); ++length) Refusal(content.substr(0, length));
  }
}

// Damage must at most lead to a MeshError: whatever is still read must be a mesh that the check can handle.
TEST(GmshReader, SurvivesDamagedBytes) {
  std::mt19937 random(20);
  int nRefused = 0;
  for (auto const& [version, binary] : kVariants) {
    std::string const content = WriteGmsh(MixedMesh(), version, binary);
    TemporaryFolder const folder;
    for (int round = 0; round < 1000; ++round) {
      std::string damaged = content;
      for (int i = 0; i < 3; ++i) {
        damaged[random() % damaged.size()] =
            static_cast<char>(binary ? random() : "0123456789-. \n$"[random() % 15]);
      }
      std::string const file = folder.Write("a.msh", damaged);
      try {
        CheckMesh(ReadGmsh(file));
      } catch (reference_host::MeshError const&) {
        ++nRefused;
      }
    }
  }
  EXPECT_GT(nRefused, 1000);
}

TEST(GmshReader, RefusesMissingFilesAndFolders) {
  TemporaryFolder const folder;
  EXPECT_EQ(MeshErrorOf([&] { ReadGmsh(folder.Path() + "/none.msh"); }),
            folder.Path() + "/none.msh: no such file");
  ExpectContains(MeshErrorOf([&] { ReadGmsh(folder.Path()); }), ": a folder, not a regular file");
}

TEST(GmshReader, GivesTheCheckTheNumbersOfTheFile) {
  TemporaryFolder const folder;
  auto const refusal = [&](GmshTestMesh const& mesh, std::string const& version) {
    FaceMesh const read = ReadGmsh(folder.Write("a.msh", WriteGmsh(mesh, version, true)));
    return MeshErrorOf([&] { CheckMesh(read, "a.msh"); });
  };
  for (char const* const version : {"2.2", "4.1"}) {
    GmshTestMesh mesh;
    // The node with the tag 3 belongs to nothing; those of the tetrahedron are 13, 23, 33 and 43.
    mesh.points = {{9, 9, 9}, {0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {0, 0, 1}};
    mesh.elements = {{4, 77, 0, Tags({1, 2, 3, 4})}};
    mesh.points[4][1] = std::nan("");
    EXPECT_EQ("a.msh: node 43 has a coordinate that is not finite", refusal(mesh, version));
    mesh.points[4] = {0.3, 0.3, 0};
    EXPECT_EQ("a.msh: element 77 has no volume", refusal(mesh, version));
    mesh.points[4] = {2, 0, 0};
    EXPECT_EQ("a.msh: the face of nodes 13, 23 and 43 of element 77 has no area", refusal(mesh, version));
  }
}

}  // namespace
