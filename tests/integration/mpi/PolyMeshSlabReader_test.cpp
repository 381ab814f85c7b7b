// Each rank's share of a polyMesh together is what one process reads, and damaged files give the same message.

#include "reference_host/slabs/PolyMeshSlabReader.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <random>
#include <string>
#include <vector>

#include "MpiTestSupport.h"
#include "PeakBytes.h"
#include "SlabSupport.h"
#include "reference_host/box/BoxMesh.h"
#include "reference_host/mesh/MeshError.h"
#include "reference_host/mesh/MeshNames.h"
#include "reference_host/openfoam/GzipFile.h"
#include "reference_host/openfoam/GzipText.h"
#include "tests/unit/reference_host/openfoam/BinaryFoamFiles.h"
#include "tests/unit/reference_host/openfoam/FoamTestCase.h"

namespace reference_host::test {
namespace {

constexpr char const* kFiles[] = {"points", "faces", "owner", "neighbour", "boundary"};

std::string PolyMeshOf(std::string const& caseName) {
  return std::string(ZYN_TEST_DATA) + "/openfoam_cases/" + caseName + "/constant/polyMesh";
}

std::string ContentOf(std::string const& file) {
  std::ifstream stream(file, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), {}};
}

void WriteBytes(std::string const& file, std::string const& bytes) {
  std::ofstream(file, std::ios::binary) << bytes;
}

/// The lists of a mesh in all the forms that they may have: text with lengths and without, faces row by row and compact,
/// binary numbers of any size, compressed.
struct Form {
  std::string name;
  bool isBinary = false;
  foam_test::Sizes sizes = {};
  bool isCompact = false, isCompressed = false, isCounted = true;
};

std::vector<Form> Forms() {
  return {{"text"},
          {"text without lengths", false, {}, false, false, false},
          {"compact text", false, {}, true},
          {"compact text without lengths", false, {}, true, false, false},
          {"compressed text", false, {}, true, true},
          {"binary", true, {4, 8}, true},
          {"long binary", true, {8, 8}, true},
          {"short binary", true, {4, 4}, true},
          {"binary rows", true, {4, 8}, false},
          {"compressed binary", true, {8, 4}, true, true}};
}

/// A list without its length.
std::string Uncounted(std::string const& list) { return list.substr(list.find('(')); }

std::string TextPoints(FaceMesh const& mesh) {
  std::vector<std::string> points;
  for (Point const& p : mesh.points) {
    std::ostringstream text;
    text << std::setprecision(17) << '(' << p[0] << ' ' << p[1] << ' ' << p[2] << ')';
    points.push_back(text.str());
  }
  return foam_test::ListText(points);
}

std::string BinaryRows(FaceMesh const& mesh, foam_test::Sizes const& sizes) {
  std::string rows = std::to_string(mesh.nFaces()) + "\n(\n";
  for (std::size_t f = 0; f < mesh.owner.size(); ++f) {
    std::vector<int> const nodes(mesh.faceNode.begin() + static_cast<std::ptrdiff_t>(mesh.faceStart[f]),
                                 mesh.faceNode.begin() + static_cast<std::ptrdiff_t>(mesh.faceStart[f + 1]));
    rows += foam_test::BinaryLabels(nodes, sizes) + "\n";
  }
  return rows + ")\n";
}

/// Rewrites points and faces, and for binary forms owner and neighbour, of a polyMesh that WriteMesh has written.
void Rewrite(std::string const& folder, FaceMesh const& mesh, Form const& form) {
  auto const write = [&](std::string const& name, std::string const& content) {
    std::filesystem::remove(folder + "/" + name);
    WriteBytes(folder + "/" + name + (form.isCompressed ? ".gz" : ""),
               form.isCompressed ? Gzipped(content) : content);
  };
  auto const list = [&](std::string const& text) { return form.isCounted ? text : Uncounted(text); };
  if (form.isBinary) {
    std::string const labels = foam_test::BinaryHeader("labelList", form.sizes);
    std::vector<int> neighbour;
    for (int const cell : mesh.neighbour)
      if (cell >= 0) neighbour.push_back(cell);
    write("points", foam_test::BinaryPoints(mesh, form.sizes));
    write("owner", labels + foam_test::BinaryLabels(mesh.owner, form.sizes) + "\n");
    write("neighbour", labels + foam_test::BinaryLabels(neighbour, form.sizes) + "\n");
    write("faces", form.isCompact
                       ? foam_test::BinaryFaces(mesh, form.sizes)
                       : foam_test::BinaryHeader("faceList", form.sizes) + BinaryRows(mesh, form.sizes));
    return;
  }
  write("points", foam_test::Header("vectorField") + list(TextPoints(mesh)));
  if (form.isCompact) {
    write("faces", foam_test::Header("faceCompactList") + list(foam_test::ListText(mesh.faceStart)) +
                       list(foam_test::ListText(mesh.faceNode)));
  } else if (!form.isCounted) {
    std::string const faces = ContentOf(folder + "/faces");
    write("faces", foam_test::Header("faceList") + Uncounted(faces.substr(faces.find("}") + 1)));
  }
}

/// A box with its faces in the order of OpenFOAM.
FaceMesh FoamBox(std::string const& spec) { return foam_test::InFoamOrder(MakeBox(ParseBoxSpec(spec))); }

void ExpectSameAsWhole(std::string const& folder) {
  MpiCommunicator const communicator(MPI_COMM_WORLD);
  MeshSlab const slab = ReadPolyMeshSlab(communicator, folder);
  FaceMesh const expected = ReadPolyMesh(folder);
  ExpectEqual(Gather(slab, communicator), expected);
  EXPECT_EQ(BlockRanges::Even(expected.nFaces(), communicator.size()).Size(Rank()),
            static_cast<std::int64_t>(slab.nOwnFaces()));
  EXPECT_EQ(slab.names.nodeWord, expected.names->nodeWord);
  EXPECT_EQ(slab.names.nodeNumber(3), expected.names->nodeNumber(3));
  EXPECT_EQ(slab.names.cell(3), expected.names->cell(3));
  EXPECT_EQ(slab.names.face(3), expected.names->face(3));

  PolyMeshBoundary const boundary = GatherBoundary(communicator, slab);
  if (Rank() != 0) return;
  PolyMeshBoundary const all = BoundaryOf(expected);
  EXPECT_EQ(boundary.owner, all.owner);
  ASSERT_EQ(boundary.facesOfPatch.size(), all.facesOfPatch.size());
  for (std::size_t p = 0; p < all.facesOfPatch.size(); ++p) {
    EXPECT_EQ(boundary.patches[p].name, all.patches[p].name);
    EXPECT_EQ(boundary.facesOfPatch[p].first, all.facesOfPatch[p].first);
    EXPECT_EQ(boundary.facesOfPatch[p].count, all.facesOfPatch[p].count);
  }
}

}  // namespace

TEST(PolyMeshSlabReader, ReadsWhatOpenFoamWrote) {
  for (std::string const name : {"cavity", "cavity_binary", "cavity_binary_gz", "cavity_gz", "channel",
                                 "sector", "symmetry", "wedge"}) {
    SCOPED_TRACE(name);
    ExpectSameAsWhole(PolyMeshOf(name));
  }
  // Pieces of collated files, too.
  ExpectSameAsWhole(std::string(ZYN_TEST_DATA) +
                    "/openfoam_cases/cavity_collated/processor1/constant/polyMesh");
}

TEST(PolyMeshSlabReader, ReadsEveryForm) {
  for (std::string const spec : {"box:4,3,2:dual", "box:3,2,2:tet", "box:1,1,1"}) {
    FaceMesh const mesh = FoamBox(spec);
    for (Form const& form : Forms()) {
      SCOPED_TRACE(spec + " " + form.name);
      SharedFolder const folder;
      if (Rank() == 0) {
        foam_test::WriteMesh(folder.File("polyMesh"), mesh);
        Rewrite(folder.File("polyMesh"), mesh, form);
      }
      MPI_Barrier(MPI_COMM_WORLD);
      ExpectSameAsWhole(folder.File("polyMesh"));
    }
  }
}

TEST(PolyMeshSlabReader, ReadsPiecesOfTextAcrossManyMessages) {
  FaceMesh const mesh = FoamBox("box:30,30,25");
  for (std::size_t const form : {0, 5, 9}) {
    SharedFolder const folder;
    if (Rank() == 0) {
      foam_test::WriteMesh(folder.File("polyMesh"), mesh);
      Rewrite(folder.File("polyMesh"), mesh, Forms()[form]);
    }
    MPI_Barrier(MPI_COMM_WORLD);
    ExpectSameAsWhole(folder.File("polyMesh"));
  }
}

// Megabytes for pieces of the file and messages; beyond that, what the share takes.
TEST(PolyMeshSlabReader, NeedsMemoryForItsShareOnly) {
  FaceMesh const mesh = FoamBox("box:45,45,45");
  MpiCommunicator const communicator(MPI_COMM_WORLD);
  for (std::size_t const form : {0, 5}) {
    SharedFolder const folder;
    if (Rank() == 0) {
      foam_test::WriteMesh(folder.File("polyMesh"), mesh);
      Rewrite(folder.File("polyMesh"), mesh, Forms()[form]);
    }
    MPI_Barrier(MPI_COMM_WORLD);
    ForgetPeak();
    std::size_t const before = LiveBytes();
    MeshSlab const slab = ReadPolyMeshSlab(communicator, folder.File("polyMesh"));
    std::size_t const share = 24 * slab.points.size() + 8 * slab.faceNode.size() + 28 * slab.nOwnFaces();
    EXPECT_GE(PeakBytes() - before, share) << "bytes are not counted";
    EXPECT_LE(PeakBytes() - before, share + share / 10 + (std::size_t{4} << 20)) << Forms()[form].name;
  }
}

namespace {

/// The message of a reader; empty: it reads the mesh.
template <class Read>
std::string MessageOf(Read const& read) {
  try {
    read();
    return {};
  } catch (MeshError const& error) {
    return error.what();
  }
}

/// Cuts, doubles or overwrites something.
std::string Damaged(std::string content, std::mt19937& random) {
  std::size_t const at = random() % content.size();
  switch (random() % 6) {
    case 0:
      return content.substr(0, at);
    case 1:
      return content.insert(at, content.substr(at, random() % 30));
    case 2:
      return content.erase(at, 1 + random() % 5);
    case 3:
      content[at] = static_cast<char>(random());
      return content;
    default:
      break;
  }
  // A digit or a bracket, if there is one: it is then a file of another meaning.
  std::size_t const next = content.find_first_of("0123456789()", at);
  if (next != std::string::npos) content[next] = "0123456789(){}-"[random() % 15];
  return content;
}

}  // namespace

TEST(PolyMeshSlabReader, GivesTheMessagesOfTheWholeReader) {
  std::mt19937 random(11);
  FaceMesh const mesh = FoamBox("box:3,3,2");
  MpiCommunicator const communicator(MPI_COMM_WORLD);
  int nFailures = 0, nRead = 0;
  for (Form const& form : Forms()) {
    SharedFolder const folder;
    std::string const polyMesh = folder.File("polyMesh");
    if (Rank() == 0) {
      foam_test::WriteMesh(polyMesh, mesh);
      Rewrite(polyMesh, mesh, form);
    }
    MPI_Barrier(MPI_COMM_WORLD);
    for (int round = 0; round < 60; ++round) {
      std::string file = polyMesh + "/" + kFiles[random() % 5];
      if (!std::filesystem::exists(file)) file += ".gz";
      std::string const sound = ContentOf(file);
      bool const isPacked = file.size() > 3 && file.substr(file.size() - 3) == ".gz";
      bool const isUnpacked = isPacked && random() % 2 == 0;  // damaged before gzip packs it
      std::string const content = isUnpacked ? std::string(GzipFile(file).ReadRest().View()) : sound;
      std::string const damaged = Damaged(content, random);
      MPI_Barrier(MPI_COMM_WORLD);
      if (Rank() == 0) WriteBytes(file, isUnpacked ? Gzipped(damaged) : damaged);
      MPI_Barrier(MPI_COMM_WORLD);
      FaceMesh whole;
      std::string const expected = MessageOf([&] { whole = ReadPolyMesh(polyMesh); });
      std::optional<MeshSlab> slab;
      std::string const message = MessageOf([&] { slab = ReadPolyMeshSlab(communicator, polyMesh); });
      // The limits of an int are those of the whole mesh only there.
      if (expected.find("2147483647") == std::string::npos) {
        EXPECT_EQ(message, expected) << form.name;
      }
      if (expected.empty() && slab) ExpectEqual(Gather(*slab, communicator), whole);
      ++(expected.empty() ? nRead : nFailures);
      MPI_Barrier(MPI_COMM_WORLD);
      if (Rank() == 0) WriteBytes(file, sound);
      MPI_Barrier(MPI_COMM_WORLD);
    }
  }
  EXPECT_GT(nFailures, 200);
  EXPECT_GT(nRead, 30);
}

}  // namespace reference_host::test
