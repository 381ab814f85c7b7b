#include "reference_host/parallel/LoadField.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>
#include <utility>

#include "reference_host/FieldReader.h"
#include "reference_host/mesh/MeshError.h"
#include "reference_host/openfoam/CaseTimes.h"
#include "reference_host/openfoam/DecomposedCase.h"
#include "reference_host/openfoam/FoamField.h"
#include "reference_host/openfoam/FoamFieldLookup.h"
#include "reference_host/openfoam/FoamStorage.h"
#include "reference_host/parallel/FileCells.h"
#include "reference_host/parallel/MeshSource.h"
#include "reference_host/parallel/MpiAgreement.h"
#include "reference_host/parallel/MpiCommunicator.h"
#include "reference_host/partition/BoundaryPlaces.h"
#include "reference_host/slabs/FieldSlab.h"
#include "reference_host/slabs/MpiLists.h"

namespace reference_host {
namespace {

namespace fs = std::filesystem;

/// The values that a rank asks for: those of cells by their numbers in the mesh file, then those of boundary
/// faces.
struct Questions {
  std::vector<std::int64_t> cell;
  std::vector<BoundaryPlace> face;
};

/// One component after the other: the values of all cells, then those of all faces.
std::vector<double> Answers(FoamFieldLookup const& lookup, int nComponents, Questions const& questions) {
  std::vector<double> values;
  values.reserve(static_cast<std::size_t>(nComponents) * (questions.cell.size() + questions.face.size()));
  for (int k = 0; k < nComponents; ++k) {
    for (std::int64_t const cell : questions.cell) values.push_back(lookup.AtCell(cell, k));
    for (BoundaryPlace const& place : questions.face) values.push_back(lookup.At(place, k));
  }
  return values;
}

/// A value of a boundary face from the file.
struct FaceAnswer {
  std::array<double, 3> value{};
  bool isThere = false;  ///< otherwise the face has the value of its cell
};

/// TIME/NAME of a path.
fs::path TimeAndName(std::string const& fieldSpec) {
  fs::path const path = fs::path(fieldSpec).lexically_normal();
  fs::path const time = path.parent_path().filename();
  if (time.empty() || path.filename().empty()) {
    throw MeshError(fieldSpec + ": a decomposed case needs the time and the field, as in 0/T");
  }
  return time / path.filename();
}

class FieldLoader {
 public:
  FieldLoader(MPI_Comm communicator, LoadedMesh& mesh, std::string const& fieldSpec)
      : communicator_(communicator),
        mesh_(mesh),
        source_(*mesh.source),
        partition_(*mesh.partition),
        record_(*partition_.mesh()),
        fieldSpec_(fieldSpec) {}

  LoadedField Load() {
    rule_.assign(partition_.patches().size(), 0);
    lacksValues_.assign(partition_.patches().size(), 0);
    bool isCgns = false;
    RunTogether(communicator_, [&] { isCgns = IsCgnsField(fieldSpec_); });
    if (source_.isDecomposed && !isCgns) {
      ReadOwnFolder();
    } else {
      ReadWholeMesh();
    }
    DescribePatches();
    for (std::size_t k = 0; k < static_cast<std::size_t>(result_.nComponents); ++k)
      mesh_.exchange->DDM_Exch(result_.value[k].data());
    return std::move(result_);
  }

 private:
  Questions OwnQuestions() const {
    std::vector<std::int64_t> const fileCell = CellsInFile(mesh_);
    return {{fileCell.begin() + 1, fileCell.end()}, GhostPlaces(partition_, fileCell)};
  }

  /// Ghost cells follow the interior cells, and halo cells come last.
  void TakeAnswers(std::vector<double> const& answers, int nComponents) {
    result_.nComponents = nComponents;
    auto const n = static_cast<std::ptrdiff_t>(answers.size()) / nComponents;
    for (int k = 0; k < nComponents; ++k) {
      std::vector<double>& value = result_.value[static_cast<std::size_t>(k)];
      value.assign(static_cast<std::size_t>(record_.NCell) + 1, 0.0);
      std::copy(answers.begin() + k * n, answers.begin() + (k + 1) * n, value.begin() + 1);
    }
  }

  void RememberPatches(FoamField const& field) {
    std::vector<FaceValues> const values = FaceValuesOf(field, partition_.patches());
    for (std::size_t p = 0; p < rule_.size(); ++p) {
      rule_[p] = static_cast<signed char>(values[p]);
      lacksValues_[p] = field.lacksValues[p];
    }
  }

  // A decomposed case.

  void ReadOwnFolder() {
    RunTogether(communicator_, [&] {
      fs::path const folder = ProcessorFolder(source_.spec, communicator_.rank());
      std::string const file = (folder / TimeAndName(fieldSpec_)).string();
      if (!FoamFileExists(file)) {
        std::string const stored = StoredProcessorFolder(source_.spec, communicator_.rank());
        throw MeshError(file + ": no such file" +
                        WhatIsThereInstead(stored, TimeAndName(fieldSpec_).string()));
      }
      FoamField const field = ReadFoamField(file, record_.NInnerCells, source_.boundary);
      RememberPatches(field);
      // Folders that have faces of a patch know which values these take.
      for (std::size_t p = 0; p < rule_.size(); ++p)
        if (source_.boundary.facesOfPatch[p].count == 0) rule_[p] = 0;
      TakeAnswers(Answers(FoamFieldLookup(field, source_.boundary), field.nComponents, OwnQuestions()),
                  field.nComponents);
    });
    int most[2] = {result_.nComponents, -result_.nComponents};
    MPI_Allreduce(MPI_IN_PLACE, most, 2, MPI_INT, MPI_MAX, communicator_.get());
    if (most[0] != -most[1])
      throw MeshError(fieldSpec_ + ": scalars in some processor folders, vectors in others");
  }

  // A whole mesh.

  void ReadWholeMesh() {
    Questions const own = OwnQuestions();
    std::vector<std::int64_t> nFaces;
    for (PatchSummary const& patch : mesh_.summary.patches) nFaces.push_back(patch.nFaces);
    FieldSlab slab = ReadFieldSlab(communicator_, fieldSpec_, source_.polyMesh, mesh_.summary.nCells,
                                   source_.boundary, nFaces);
    result_.nComponents = slab.nComponents;
    RunTogether(communicator_, [&] {
      if (communicator_.rank() == 0) RememberPatches(slab.boundary);
      for (int k = 0; k < slab.nComponents; ++k)
        result_.value[static_cast<std::size_t>(k)].assign(static_cast<std::size_t>(record_.NCell) + 1, 0.0);
    });
    FetchCells(slab, own.cell);
    slab.value = {};
    FetchFaces(slab, own);
  }

  /// In rounds, so that the memory for messages is bounded.
  void FetchCells(FieldSlab const& slab, std::vector<std::int64_t> const& cells) {
    constexpr std::size_t kRound = std::size_t{1} << 18;
    std::int64_t nRounds = static_cast<std::int64_t>((cells.size() + kRound - 1) / kRound);
    MPI_Allreduce(MPI_IN_PLACE, &nRounds, 1, MPI_INT64_T, MPI_MAX, communicator_.get());
    std::vector<std::int64_t> asked;
    for (std::size_t round = 0; round < static_cast<std::size_t>(nRounds); ++round) {
      std::size_t const begin = std::min(round * kRound, cells.size());
      std::size_t const end = std::min(begin + kRound, cells.size());
      asked.assign(cells.begin() + static_cast<std::ptrdiff_t>(begin),
                   cells.begin() + static_cast<std::ptrdiff_t>(end));
      for (int k = 0; k < slab.nComponents; ++k) {
        std::vector<double> const values =
            FetchItems<double>(communicator_, slab.cells, asked, [&](std::int64_t cell) {
              return slab.value[static_cast<std::size_t>(slab.nComponents * cell + k)];
            });
        std::copy(
            values.begin(), values.end(),
            result_.value[static_cast<std::size_t>(k)].begin() + 1 + static_cast<std::ptrdiff_t>(begin));
      }
    }
  }

  /// Rank 0 knows what the file says of the boundary faces. Ghost cells follow the interior cells.
  void FetchFaces(FieldSlab const& slab, Questions const& own) {
    std::vector<FaceAnswer> answers;
    {
      FoamFieldLookup const lookup(slab.boundary, source_.boundary);
      RankLists<BoundaryPlace> const asked =
          SwapLists(communicator_, ListsByRank<BoundaryPlace>(
                                       communicator_.size(), own.face.size(), [](std::size_t) { return 0; },
                                       [&](std::size_t i) { return own.face[i]; }));
      RankLists<FaceAnswer> found;
      found.start = asked.start;
      for (BoundaryPlace const& place : asked.items) {
        FaceAnswer& answer = found.items.emplace_back();
        double const* const value = lookup.OfFace(place);
        answer.isThere = value != nullptr;
        if (answer.isThere) std::copy(value, value + slab.nComponents, answer.value.begin());
      }
      answers = SwapLists(communicator_, found).items;
    }
    std::vector<int> const cellAt = CellsAtGhosts(partition_);
    for (std::size_t k = 0; k < static_cast<std::size_t>(slab.nComponents); ++k) {
      std::vector<double>& value = result_.value[k];
      for (std::size_t g = 0; g < answers.size(); ++g) {
        value[own.cell.size() + 1 + g] =
            answers[g].isThere ? answers[g].value[k] : value[static_cast<std::size_t>(cellAt[g])];
      }
    }
  }

  /// Ranks that have read nothing about a patch learn it from the others.
  void DescribePatches() {
    for (auto* marks : {&rule_, &lacksValues_}) {
      MPI_Allreduce(MPI_IN_PLACE, marks->data(), static_cast<int>(marks->size()), MPI_SIGNED_CHAR, MPI_MAX,
                    communicator_.get());
    }
    std::vector<FaceValues> values;
    for (std::size_t p = 0; p < rule_.size(); ++p) {
      values.push_back(static_cast<FaceValues>(rule_[p]));
      if (mesh_.summary.patches[p].nFaces > 0)
        result_.patches.push_back({partition_.patches()[p].name, values[p], lacksValues_[p] != 0});
    }
    if (result_.nComponents == 3) CompleteBoundaryVectors(partition_, values, result_.value);
  }

  MpiCommunicator communicator_;
  LoadedMesh& mesh_;
  MeshSource const& source_;
  HostPartition& partition_;
  CZYN3DFiniteVolumeMesh const& record_;
  std::string const& fieldSpec_;
  std::vector<signed char> rule_, lacksValues_;  // by patch
  LoadedField result_;
};

}  // namespace

LoadedField LoadField(MPI_Comm communicator, LoadedMesh& mesh, std::string const& fieldSpec) {
  return FieldLoader(communicator, mesh, fieldSpec).Load();
}

}  // namespace reference_host
