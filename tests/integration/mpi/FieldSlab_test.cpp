// Each rank's share of a field together is what one process reads, damaged files give the same message, and no rank needs
// memory for the whole field.

#include "reference_host/slabs/FieldSlab.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <fstream>
#include <iomanip>
#include <optional>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "MpiTestSupport.h"
#include "PeakBytes.h"
#include "reference_host/FieldReader.h"
#include "reference_host/mesh/MeshError.h"
#include "reference_host/openfoam/GzipText.h"
#include "tests/unit/reference_host/openfoam/BinaryFoamFiles.h"
#include "tests/unit/reference_host/openfoam/FoamTestCase.h"

namespace reference_host::test {
namespace {

constexpr int kCells = 300;

/// Three patches of 5, 0 and 300 faces.
PolyMeshBoundary Boundary() {
  PolyMeshBoundary boundary;
  for (std::int64_t c = 0; c < 305; ++c) boundary.owner.push_back(c % kCells);
  boundary.patches = {{"inlet", "patch", {}}, {"none", "wall", {}}, {"walls", "wall", {}}};
  boundary.facesOfPatch = {{0, 5}, {5, 0}, {5, 300}};
  return boundary;
}

std::string Numbers(int nComponents, int n, bool isBinary, int scalarBytes) {
  std::vector<double> reals;
  for (int i = 0; i < nComponents * n; ++i) reals.push_back(1.0 / (i + 3));
  if (isBinary) return foam_test::BinaryReals(reals, static_cast<std::size_t>(nComponents), {4, scalarBytes});
  std::ostringstream text;
  text << std::setprecision(17) << n << "\n(\n";
  for (int i = 0; i < n; ++i) {
    if (nComponents == 3) text << '(';
    for (int k = 0; k < nComponents; ++k) text << (k > 0 ? " " : "") << reals[nComponents * i + k];
    text << (nComponents == 3 ? ")\n" : " // a value (of a cell\n");
  }
  return text.str() + ")";
}

/// A field file. @param[in] internal  the value of internalField
std::string FieldFile(int nComponents, std::string const& before, std::string const& internal, bool isBinary,
                      int scalarBytes) {
  std::string const className = nComponents == 1 ? "volScalarField" : "volVectorField";
  std::string const item = nComponents == 1 ? "7" : "(7 8 9)";
  return (isBinary ? foam_test::BinaryHeader(className, {4, scalarBytes}) : foam_test::Header(className)) +
         "dimensions [0 2 -2 0 0 0 0];\n" + before + "internalField " + internal +
         ";\nboundaryField\n{\n  inlet { type fixedValue; value uniform " + item +
         "; }\n  \".*\" { type calculated; value $internalField; }\n}\n";
}

struct Variant {
  std::string name, text;
};

std::vector<Variant> Variants() {
  std::vector<Variant> variants;
  for (int const nComponents : {1, 3}) {
    std::string const type = nComponents == 1 ? "nonuniform List<scalar> " : "nonuniform List<vector> ";
    std::string const item = nComponents == 1 ? "5" : "(5 6 7)";
    for (auto const& format : {std::pair(false, 8), std::pair(true, 8), std::pair(true, 4)}) {
      bool const isBinary = format.first;
      int const scalarBytes = format.second;
      std::string const list = type + Numbers(nComponents, kCells, isBinary, scalarBytes);
      auto const add = [&](std::string const& name, std::string const& before, std::string const& internal) {
        variants.push_back({name + (isBinary ? " binary " : " text ") + std::to_string(scalarBytes) + " " +
                                std::to_string(nComponents),
                            FieldFile(nComponents, before, internal, isBinary, scalarBytes)});
      };
      add("list", "", list);
      add("macro", "cells " + list + ";\n", "$cells");
      add("twice", "internalField " + list + ";\n", list);
      add("uniform", "", "uniform " + item);
      add("equal items", "", type + std::to_string(kCells) + "{" + item + "}");
      add("too few", "", type + Numbers(nComponents, kCells - 1, isBinary, scalarBytes));
      add("too many", "", type + Numbers(nComponents, kCells + 1, isBinary, scalarBytes));
    }
  }
  return variants;
}

template <class Read>
std::string MessageOf(Read const& read) {
  try {
    read();
    return {};
  } catch (MeshError const& error) {
    return error.what();
  }
}

/// Reads both ways and compares. @return the message; empty: the field could be read
std::string ExpectSame(MpiCommunicator const& communicator, std::string const& file) {
  PolyMeshBoundary const boundary = Boundary();
  std::string const polyMesh = "no/constant/polyMesh";
  FoamField whole;
  FieldSlab slab;
  std::string const expected = MessageOf([&] {
    whole = ReadField(file, polyMesh, kCells, boundary, {5, 0, 300});
  });
  std::string const message = MessageOf([&] {
    slab = ReadFieldSlab(communicator, file, polyMesh, kCells, boundary, {5, 0, 300});
  });
  EXPECT_EQ(message, expected);
  if (!message.empty() || !expected.empty()) return expected;
  EXPECT_EQ(slab.nComponents, whole.nComponents);
  auto const n = static_cast<std::ptrdiff_t>(slab.nComponents);
  EXPECT_EQ(slab.value, std::vector<double>(whole.cell.begin() + n * slab.cells.First(Rank()),
                                            whole.cell.begin() + n * slab.cells.End(Rank())));
  if (Rank() != 0) return {};
  EXPECT_EQ(slab.boundary.patch, whole.patch);
  EXPECT_EQ(slab.boundary.patchType, whole.patchType);
  EXPECT_EQ(slab.boundary.lacksValues, whole.lacksValues);
  EXPECT_EQ(slab.boundary.dimensions, whole.dimensions);
  EXPECT_TRUE(slab.boundary.cell.empty());
  return {};
}

void WriteShared(std::string const& file, std::string const& bytes) {
  MPI_Barrier(MPI_COMM_WORLD);
  if (Rank() == 0) std::ofstream(file, std::ios::binary) << bytes;
  MPI_Barrier(MPI_COMM_WORLD);
}

}  // namespace

TEST(FieldSlab, IsTheShareOfTheWholeField) {
  MpiCommunicator const communicator(MPI_COMM_WORLD);
  SharedFolder const folder;
  int nRead = 0;
  for (Variant const& variant : Variants()) {
    SCOPED_TRACE(variant.name);
    WriteShared(folder.File("T"), variant.text);
    nRead += ExpectSame(communicator, folder.File("T")).empty() ? 1 : 0;
    WriteShared(folder.File("packed.gz"), Gzipped(variant.text));
    ExpectSame(communicator, folder.File("packed"));
  }
  EXPECT_GT(nRead, 20);
}

TEST(FieldSlab, GivesTheMessagesOfTheWholeReader) {
  MpiCommunicator const communicator(MPI_COMM_WORLD);
  SharedFolder const folder;
  std::mt19937 random(3);
  int nFailures = 0;
  for (Variant const& variant : Variants()) {
    SCOPED_TRACE(variant.name);
    for (int round = 0; round < 12; ++round) {
      std::string text = variant.text;
      std::size_t const at = random() % text.size();
      switch (random() % 4) {
        case 0:
          text.resize(at);
          break;
        case 1:
          text.erase(at, 1 + random() % 7);
          break;
        case 2:
          text.insert(at, 1, "(){};$/9x"[random() % 9]);
          break;
        default:
          text[at] = "(){};$/9x"[random() % 9];
          break;
      }
      WriteShared(folder.File("T"), text);
      nFailures += ExpectSame(communicator, folder.File("T")).empty() ? 0 : 1;
    }
  }
  EXPECT_GT(nFailures, 100);
}

// Megabytes for pieces of the file and messages; beyond that, what the own cells take.
TEST(FieldSlab, NeedsMemoryForItsOwnCellsOnly) {
  SharedFolder const folder;
  constexpr int kMany = 600000;
  if (Rank() == 0) {
    for (bool const isBinary : {false, true}) {
      std::string const values = "nonuniform List<vector> " + Numbers(3, kMany, isBinary, 8);
      foam_test::WriteText(folder.File(isBinary ? "binary" : "text"), FieldFile(3, "", values, isBinary, 8));
    }
  }
  PolyMeshBoundary const boundary;
  MpiCommunicator const communicator(MPI_COMM_WORLD);
  for (char const* const name : {"text", "binary"}) {
    ForgetPeak();
    std::size_t const before = LiveBytes();
    FieldSlab const slab =
        ReadFieldSlab(communicator, folder.File(name), "no/constant/polyMesh", kMany, boundary, {});
    std::size_t const own = 24 * static_cast<std::size_t>(slab.cells.Size(Rank()));
    EXPECT_GE(PeakBytes() - before, own) << "bytes are not counted";
    EXPECT_LE(PeakBytes() - before, own + (std::size_t{4} << 20)) << name;
  }
}

}  // namespace reference_host::test
