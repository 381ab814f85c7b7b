#include "reference_host/slabs/GmshSlabReader.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "reference_host/gmsh/GmshReader.h"
#include "reference_host/mesh/MeshError.h"
#include "reference_host/mesh/MeshNames.h"
#include "tests/integration/mpi/MpiTestSupport.h"
#include "tests/integration/mpi/SlabSupport.h"
#include "tests/unit/reference_host/gmsh/GmshTestFile.h"

namespace reference_host::test {
namespace {

std::string const kData = std::string(ZYN_TEST_DATA) + "/gmsh/";

std::string MessageOf(std::function<void()> const& work) {
  try {
    work();
  } catch (MeshError const& error) {
    return error.what();
  }
  return "";
}

/// NaN is equal to nothing, not even to itself.
void ReplaceNaN(FaceMesh& mesh) {
  for (Point& point : mesh.points) {
    for (double& x : point) x = std::isnan(x) ? 0.125 : x;
  }
}

/// Collective. Expects that the slabs have the mesh and the names, or the failure, that one process finds in the file.
/// Returns that failure. The file may then be overwritten.
std::string ExpectAsWhole(std::string const& file) {
  MpiCommunicator const communicator(MPI_COMM_WORLD);
  struct Barrier {
    ~Barrier() { MPI_Barrier(MPI_COMM_WORLD); }
  } const allHaveRead;
  FaceMesh whole;
  MeshSlab slab;
  std::string const expected = MessageOf([&] { whole = ReadGmsh(file); });
  std::string const message = MessageOf([&] { slab = ReadGmshSlab(communicator, file); });
  EXPECT_EQ(message, expected);
  if (!expected.empty() || !message.empty()) return expected;

  FaceMesh gathered = Gather(slab, communicator);
  ReplaceNaN(gathered);
  ReplaceNaN(whole);
  ExpectEqual(gathered, whole);
  EXPECT_EQ(slab.names.nodeWord, whole.names->nodeWord);
  EXPECT_FALSE(slab.names.face);
  int const rank = communicator.rank();
  for (std::int64_t node = slab.nodes.First(rank); node < slab.nodes.End(rank); ++node) {
    EXPECT_EQ(slab.names.nodeNumber(node), whole.names->nodeNumber(static_cast<int>(node)));
  }
  for (std::int64_t cell = slab.cells.First(rank); cell < slab.cells.End(rank); ++cell) {
    EXPECT_EQ(slab.names.cell(cell), whole.names->cell(static_cast<int>(cell)));
  }
  return "";
}

std::string Replaced(std::string text, std::string const& from, std::string const& to) {
  std::size_t const at = text.find(from);
  EXPECT_NE(at, std::string::npos) << from;
  return text.replace(at, from.size(), to);
}

/// nx x ny x nz unit cubes with surface elements on all sides. Nodes and cells have a random order in the file.
GmshTestMesh ShuffledCubes(int nx, int ny, int nz, unsigned seed) {
  std::mt19937 random(seed);
  std::vector<int> place(static_cast<std::size_t>((nx + 1) * (ny + 1) * (nz + 1)));
  for (std::size_t i = 0; i < place.size(); ++i) place[i] = static_cast<int>(i);
  std::shuffle(place.begin(), place.end(), random);
  GmshTestMesh mesh;
  mesh.points.resize(place.size());
  auto const node = [&](int i, int j, int k) {
    return place[static_cast<std::size_t>(i + (nx + 1) * (j + (ny + 1) * k))];
  };
  for (int k = 0; k <= nz; ++k) {
    for (int j = 0; j <= ny; ++j) {
      for (int i = 0; i <= nx; ++i)
        mesh.points[static_cast<std::size_t>(node(i, j, k))] = {1.0 * i, 1.0 * j, 1.0 * k};
    }
  }
  for (int k = 0; k < nz; ++k) {
    for (int j = 0; j < ny; ++j) {
      mesh.elements.push_back(
          {3, 0, 4, Tags({node(0, j, k), node(0, j + 1, k), node(0, j + 1, k + 1), node(0, j, k + 1)})});
      for (int i = 0; i < nx; ++i) {
        mesh.elements.push_back({5, 0, 1,
                                 Tags({node(i, j, k), node(i + 1, j, k), node(i + 1, j + 1, k),
                                       node(i, j + 1, k), node(i, j, k + 1), node(i + 1, j, k + 1),
                                       node(i + 1, j + 1, k + 1), node(i, j + 1, k + 1)})});
      }
    }
  }
  std::shuffle(mesh.elements.begin(), mesh.elements.end(), random);
  int tag = 0;
  for (GmshTestElement& element : mesh.elements) element.tag = tag += 3;
  return mesh;
}

TEST(GmshSlabReader, TakesBinaryFilesOfBothVersionsOnly) {
  EXPECT_TRUE(HasGmshSlabs(kData + "box_22_binary.msh"));
  EXPECT_TRUE(HasGmshSlabs(kData + "box_41_binary.msh"));
  EXPECT_FALSE(HasGmshSlabs(kData + "box_22.msh"));
  EXPECT_FALSE(HasGmshSlabs(kData + "box_41.msh"));
  EXPECT_FALSE(HasGmshSlabs(kData));
  EXPECT_FALSE(HasGmshSlabs(kData + "none.msh"));
  EXPECT_FALSE(HasGmshSlabs(kData + "box.geo"));
}

TEST(GmshSlabReader, ReadsWhatGmshWritesWithItsPeriods) {
  for (char const* const name : {"box_22_binary.msh", "box_41_binary.msh", "box_parts_41_binary.msh"}) {
    SCOPED_TRACE(name);
    EXPECT_EQ(ExpectAsWhole(kData + name), "");
  }
}

TEST(GmshSlabReader, ReadsAllShapesWithPatchesAndUnusedNodes) {
  SharedFolder const folder;
  for (char const* const version : {"2.2", "4.1"}) {
    SCOPED_TRACE(version);
    folder.Write("a.msh", WriteGmsh(MixedMesh(), version, true));
    EXPECT_EQ(ExpectAsWhole(folder.File("a.msh")), "");
  }
}

TEST(GmshSlabReader, FindsNodesOfAnyOrder) {
  SharedFolder const folder;
  for (char const* const version : {"2.2", "4.1"}) {
    SCOPED_TRACE(version);
    folder.Write("a.msh", WriteGmsh(ShuffledCubes(4, 3, 5, 7), version, true));
    EXPECT_EQ(ExpectAsWhole(folder.File("a.msh")), "");
  }
}

TEST(GmshSlabReader, TakesFewerCellsThanRanks) {
  SharedFolder const folder;
  folder.Write("a.msh", WriteGmsh(ShuffledCubes(1, 1, 1, 1), "4.1", true));
  EXPECT_EQ(ExpectAsWhole(folder.File("a.msh")), "");
}

TEST(GmshSlabReader, CallsFacesWithoutSurfaceElementUnnamed) {
  SharedFolder const folder;
  GmshTestMesh mesh = MixedMesh();
  mesh.physicalNames = "$PhysicalNames\n2\n2 1 \"unnamed\"\n2 2 \"outlet\"\n$EndPhysicalNames\n";
  folder.Write("a.msh", WriteGmsh(mesh, "4.1", true));
  EXPECT_EQ(ExpectAsWhole(folder.File("a.msh")), "");
}

TEST(GmshSlabReader, SaysWhatIsWrongAsTheWholeReaderDoes) {
  SharedFolder const folder;
  auto const message = [&](GmshTestMesh const& mesh, std::string const& version) {
    folder.Write("a.msh", WriteGmsh(mesh, version, true));
    std::string const text = ExpectAsWhole(folder.File("a.msh"));
    EXPECT_NE(text, "");
    return text;
  };
  auto const expect = [](std::string const& text, std::string const& part) {
    EXPECT_NE(text.find(part), std::string::npos) << text;
  };
  for (char const* const version : {"2.2", "4.1"}) {
    SCOPED_TRACE(version);
    GmshTestMesh unknown = MixedMesh();
    unknown.elements[7].nodes[1] = 4711;
    expect(message(unknown, version), "element 18 has node 4711, which the file does not have");

    GmshTestMesh unknownOfSurface = MixedMesh();
    unknownOfSurface.elements[1].nodes[1] = 4711;
    expect(message(unknownOfSurface, version), "element 2 has node 4711");

    GmshTestMesh repeatedFirst = unknown;
    repeatedFirst.elements[5].nodes[7] = repeatedFirst.elements[5].nodes[4];
    expect(message(repeatedFirst, version), "element 16 has a node twice");

    GmshTestMesh twice = MixedMesh();
    twice.elements.push_back(twice.elements[6]);
    expect(message(twice, version), "element 17 shares a face with element 16 and element 17");

    GmshTestMesh surfaces = MixedMesh();
    surfaces.elements.resize(5);
    expect(message(surfaces, version), "no volume elements");

    GmshTestMesh second = MixedMesh();
    second.elements[6].type = 13;
    expect(message(second, version), "second-order prism with 18 nodes");
  }
  folder.Write("a_1.msh", Replaced(WriteGmsh(MixedMesh(), "2.2", true), "2.2 1 8", "2.2 1 4"));
  expect(ExpectAsWhole(folder.File("a_1.msh")), "real numbers of 8 bytes");
}

TEST(GmshSlabReader, ReportsRepeatedNodesAsTheWholeReaderDoes) {
  SharedFolder const folder;
  for (int const gap : {0, 1000000}) {
    GmshTestFile file(true);
    file.Format("4.1").Text("$Nodes\n").Size(1).Size(6).Size(1).Size(10);
    file.Int(3).Int(1).Int(0).Size(6);
    for (int const tag : {1, 2, 7, 4, 7, 2}) file.Size(tag == 4 ? tag + gap : tag);
    for (int i = 0; i < 18; ++i) file.Real(i);
    file.Text("\n$EndNodes\n$Elements\n").Size(1).Size(1).Size(1).Size(1).Int(3).Int(1).Int(4).Size(1);
    for (int const number : {1, 1, 2, 7, 4}) file.Size(number);
    file.Text("\n$EndElements\n");
    folder.Write("a.msh", file.Content());
    std::string const text = ExpectAsWhole(folder.File("a.msh"));
    EXPECT_NE(text.find(gap == 0 ? "node 7 occurs twice" : "node 2 occurs twice"), std::string::npos) << text;
  }
}

TEST(GmshSlabReader, RefusesTruncatedFilesAsTheWholeReaderDoes) {
  SharedFolder const folder;
  for (char const* const version : {"2.2", "4.1"}) {
    std::string const content = WriteGmsh(MixedMesh(), version, true);
    for (std::size_t length = 40; length + 1 < content.size(); length += 11) {
      SCOPED_TRACE(std::string(version) + ", " + std::to_string(length) + " bytes");
      folder.Write("a.msh", content.substr(0, length));
      EXPECT_NE(ExpectAsWhole(folder.File("a.msh")), "");
    }
  }
}

// Whatever is damaged, the message or the mesh is the same, so the same one of several faults is found first.
TEST(GmshSlabReader, TakesDamagedFilesAsTheWholeReaderDoes) {
  SharedFolder const folder;
  std::mt19937 random(5);
  int nRead = 0, nRefused = 0;
  for (char const* const version : {"2.2", "4.1"}) {
    for (std::string const& content :
         {WriteGmsh(MixedMesh(), version, true), WriteGmsh(ShuffledCubes(2, 2, 2, 3), version, true)}) {
      for (int round = 0; round < 150; ++round) {
        SCOPED_TRACE(std::string(version) + ", round " + std::to_string(round));
        std::string damaged = content;
        for (auto i = random() % 3 + 1; i > 0; --i) {
          damaged[30 + random() % (damaged.size() - 30)] = static_cast<char>(random());
        }
        folder.Write("a.msh", damaged);
        if (ExpectAsWhole(folder.File("a.msh")).empty()) {
          ++nRead;
        } else {
          ++nRefused;
        }
      }
    }
  }
  EXPECT_GT(nRead, 50);
  EXPECT_GT(nRefused, 50);
}

}  // namespace
}  // namespace reference_host::test
