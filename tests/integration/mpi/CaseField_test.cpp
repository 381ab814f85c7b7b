// The cells of a whole case are divided over the ranks in the order of its files, and the text that they make in turn is
// that of the whole field.

#include "reference_host/parallel/CaseField.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "MpiTestSupport.h"
#include "reference_host/mesh/MeshError.h"
#include "reference_host/openfoam/FoamFieldWriter.h"
#include "reference_host/openfoam/PolyMeshReader.h"
#include "reference_host/parallel/MpiCommunicator.h"
#include "reference_host/slabs/RankStream.h"

namespace reference_host::test {
namespace {

std::string CaseOf(std::string const& name) { return std::string(ZYN_TEST_DATA) + "/openfoam_cases/" + name; }

/// Any number that tells cells and components apart.
double ValueOf(std::int64_t cell, int component) {
  return 0.5 + 10.0 * static_cast<double>(cell) + component;
}

/// The field as one process would make it.
FoamOutput WholeField(std::string const& polyMesh, int nComponents) {
  PolyMesh const mesh = ReadPolyMeshWithPatches(polyMesh);
  FoamOutput field;
  field.name = "Q";
  field.nComponents = nComponents;
  auto const add = [&](std::vector<double>& values, std::int64_t cell) {
    for (int k = 0; k < nComponents; ++k) values.push_back(ValueOf(cell, k));
  };
  for (int c = 0; c < mesh.mesh.nCells; ++c) add(field.cell, c);
  for (std::size_t p = 0; p < mesh.mesh.patches.size(); ++p) {
    Patch const& patch = mesh.mesh.patches[p];
    FoamPatchEntry& entry =
        field.patches.emplace_back(FoamPatchEntry{patch.name, FoamPatchTypeFor(patch.type), {}});
    if (!HasFoamPatchValues(entry.type)) continue;
    PatchFaces const& faces = mesh.facesOfPatch[p];
    entry.value.emplace();
    for (std::int64_t f = faces.first; f < faces.first + faces.count; ++f)
      add(*entry.value, mesh.mesh.owner[static_cast<std::size_t>(f)]);
  }
  return field;
}

/// The values of the own cells, in the order of this rank.
std::vector<double> OwnValues(LoadedMesh& mesh, int nComponents) {
  std::vector<double> values;
  for (int c = 1; c <= mesh.partition->mesh()->NInnerCells; ++c) {
    std::int64_t const cell = mesh.partition->globalCell()[static_cast<std::size_t>(c)] - 1;
    for (int k = 0; k < nComponents; ++k) values.push_back(ValueOf(cell, k));
  }
  return values;
}

}  // namespace

TEST(CaseField, MakesTheTextOfAWholeFieldInPieces) {
  MpiCommunicator const communicator(MPI_COMM_WORLD);
  GroupRules rules;
  rules.fallback = BoundaryGroup::Wall;
  for (std::string const name : {"cavity", "cavity_binary_gz", "channel"}) {
    LoadedMesh mesh = LoadMesh(MPI_COMM_WORLD, CaseOf(name), rules, {});
    CaseFieldMaker const maker(MPI_COMM_WORLD, mesh);
    EXPECT_EQ(Rank() == 0, maker.Writes());
    for (int const nComponents : {1, 3, 9}) {
      SCOPED_TRACE(name + " " + std::to_string(nComponents));
      FoamOutput field;
      field.name = "Q";
      field.nComponents = nComponents;
      maker.Make(OwnValues(mesh, nComponents), field);
      ASSERT_EQ(field.cell.size(), static_cast<std::size_t>(nComponents * maker.cells().Size(Rank())));
      for (bool const isBinary : {false, true}) {
        FoamFormat format;
        format.isBinary = isBinary;
        std::int64_t const nCells = maker.cells().nItems();
        std::string text = FoamFieldHead(field, nCells, format, "a note");
        StreamTextToRank0(
            communicator,
            [&](auto const& send) {
              send(FoamFieldItems(field.cell.data(), field.cell.size(), nComponents, format));
            },
            [&](std::string_view piece) { text += piece; });
        if (Rank() != 0) continue;
        text += FoamFieldTail(field, nCells, format);
        EXPECT_EQ(text, FoamFieldText(WholeField(CaseOf(name) + "/constant/polyMesh", nComponents), format,
                                      "a note"));
      }
    }
  }
}

TEST(CaseField, TellsEveryRankOfAFailureInTheMiddleOfAText) {
  MpiCommunicator const communicator(MPI_COMM_WORLD);
  auto const nothing = [](std::string_view) {};
  std::string const text(3 << 20, 'x');  // several messages
  auto const sendText = [&](auto const& send) { send(text); };
  EXPECT_EQ("the disk is full", ErrorOnEveryRank([&] {
              StreamTextToRank0(communicator, sendText,
                                [](std::string_view) { throw MeshError("the disk is full"); });
            }));
  int const last = RankCount() - 1;
  EXPECT_EQ("no text", ErrorOnEveryRank([&] {
              StreamTextToRank0(
                  communicator,
                  [&](auto const& send) {
                    send(text);
                    if (Rank() == last) throw MeshError("no text");
                  },
                  nothing);
            }));
  std::size_t size = 0;
  StreamTextToRank0(communicator, sendText, [&](std::string_view piece) { size += piece.size(); });
  if (Rank() == 0) {
    EXPECT_EQ(size, text.size() * static_cast<std::size_t>(RankCount()));
  }
}

}  // namespace reference_host::test
