#include "reference_host/parallel/LoadField.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <exception>
#include <filesystem>
#include <functional>
#include <optional>
#include <system_error>
#include <utility>

#include "reference_host/cgns/CgnsField.h"
#include "reference_host/mesh/MeshError.h"
#include "reference_host/openfoam/DecomposedCase.h"
#include "reference_host/openfoam/FoamField.h"
#include "reference_host/openfoam/FoamFieldLookup.h"
#include "reference_host/parallel/MeshSource.h"
#include "reference_host/parallel/MpiAgreement.h"
#include "reference_host/parallel/MpiBytes.h"
#include "reference_host/parallel/MpiCommunicator.h"
#include "reference_host/partition/BoundaryPlaces.h"

namespace reference_host {
namespace {

namespace fs = std::filesystem;

/// The values that a rank asks for: those of cells by their numbers in the mesh file, then those of boundary
/// faces.
struct Questions {
  std::vector<std::int64_t> cell;
  std::vector<BoundaryPlace> face;
};

std::vector<double> Answers(FoamFieldLookup const& lookup, Questions const& questions) {
  std::vector<double> values;
  values.reserve(questions.cell.size() + questions.face.size());
  for (std::int64_t const cell : questions.cell) values.push_back(lookup.AtCell(cell));
  for (BoundaryPlace const& place : questions.face) values.push_back(lookup.At(place));
  return values;
}

template <class T>
std::vector<char> BytesOf(std::vector<T> const& items) {
  std::vector<char> bytes(items.size() * sizeof(T));
  if (!bytes.empty()) std::memcpy(bytes.data(), items.data(), bytes.size());
  return bytes;
}

template <class T>
std::vector<T> ItemsOf(std::vector<char> const& bytes) {
  std::vector<T> items(bytes.size() / sizeof(T));
  if (!bytes.empty()) std::memcpy(items.data(), bytes.data(), bytes.size());
  return items;
}

/// The file and the array in FILE.cgns:ARRAY; empty for anything else.
std::optional<std::pair<std::string, std::string>> CgnsParts(std::string const& fieldSpec) {
  std::string const ending = ".cgns";
  std::size_t const colon = fieldSpec.rfind(ending + ":");
  if (colon != std::string::npos) {
    return std::pair(fieldSpec.substr(0, colon + ending.size()), fieldSpec.substr(colon + ending.size() + 1));
  }
  if (fs::path(fieldSpec).extension() == ending) {
    throw MeshError(fieldSpec + ": name an array of the file, as in " + fieldSpec + ":ARRAY");
  }
  return std::nullopt;
}

/// A path as it is, or else one in the case that the mesh belongs to.
std::string FindFieldFile(std::string const& polyMesh, std::string const& fieldSpec) {
  fs::path folder = fs::path(polyMesh).lexically_normal();
  if (!folder.has_filename()) folder = folder.parent_path();  // polyMesh/
  folder = folder.parent_path();
  if (folder.filename() == "constant") folder = folder.parent_path();
  auto const kindOf = [](fs::path const& path) {
    std::error_code ignored;
    return fs::status(path, ignored).type();
  };
  // A path to something other than a file is taken only if neither is a file: the reader then reports what it
  // is.
  fs::path found;
  for (fs::path const& candidate : {fs::path(fieldSpec), folder / fieldSpec}) {
    if (kindOf(candidate) == fs::file_type::regular ||
        kindOf(candidate.string() + ".gz") == fs::file_type::regular) {
      return candidate.string();
    }
    if (found.empty() && kindOf(candidate) != fs::file_type::not_found) found = candidate;
  }
  if (found.empty()) throw MeshError(fieldSpec + ": no such file, here or in the case");
  return found.string();
}

/// TIME/NAME of a path.
fs::path TimeAndName(std::string const& fieldSpec) {
  fs::path const path = fs::path(fieldSpec).lexically_normal();
  fs::path const time = path.parent_path().filename();
  if (time.empty() || path.filename().empty()) {
    throw MeshError(fieldSpec + ": a decomposed case needs the time and the field, as in 0/T");
  }
  return time / path.filename();
}

FoamField ReadScalarField(std::string const& file, std::int64_t nCells, PolyMeshBoundary const& boundary) {
  FoamField field = ReadFoamField(file, nCells, boundary);
  if (field.nComponents != 1) throw MeshError(file + ": a field of vectors; only scalars can be used here");
  return field;
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
    lacksValues_.assign(partition_.patches().size(), 0);
    RunTogether(communicator_, [&] { cgns_ = CgnsParts(fieldSpec_); });
    if (source_.isDecomposed && !cgns_) {
      ReadOwnFolder();
    } else {
      ReadOnRank0();
    }
    mesh_.exchange->DDM_Exch(result_.value.data());
    NamePatchesWithoutValues();
    return std::move(result_);
  }

 private:
  void OnRank0(std::function<void()> const& work) const {
    RunTogether(communicator_, [&] {
      if (communicator_.rank() == 0) work();
    });
  }

  /// [1..NInnerCells] numbers of the own interior cells in the whole mesh, from 0
  std::vector<std::int64_t> WholeCells() const {
    std::vector<std::int64_t> cells(partition_.globalCell().begin(),
                                    partition_.globalCell().begin() + record_.NInnerCells + 1);
    for (std::int64_t& cell : cells) --cell;
    return cells;
  }

  Questions QuestionsFor(std::vector<std::int64_t> const& fileCell) const {
    return {{fileCell.begin() + 1, fileCell.end()}, GhostPlaces(partition_, fileCell)};
  }

  void TakeAnswers(std::vector<double> const& answers) {
    // Ghost cells follow the interior cells, and halo cells come last.
    result_.value.assign(static_cast<std::size_t>(record_.NCell) + 1, 0.0);
    std::copy(answers.begin(), answers.end(), result_.value.begin() + 1);
  }

  // A decomposed case.

  void ReadOwnFolder() {
    RunTogether(communicator_, [&] {
      fs::path const folder = ProcessorFolder(source_.spec, communicator_.rank());
      FoamField const field =
          ReadScalarField((folder / TimeAndName(fieldSpec_)).string(), record_.NInnerCells, source_.boundary);
      lacksValues_ = field.lacksValues;
      TakeAnswers(Answers(FoamFieldLookup(field, source_.boundary), QuestionsFor(FolderCells())));
    });
  }

  /// [1..NInnerCells] numbers of the own interior cells in their processor folder
  std::vector<std::int64_t> FolderCells() const {
    std::vector<std::pair<std::int64_t, std::int64_t>> folderCell;  // by number in the whole mesh
    for (std::size_t c = 0; c < source_.wholeCell.size(); ++c)
      folderCell.emplace_back(source_.wholeCell[c], static_cast<std::int64_t>(c));
    std::sort(folderCell.begin(), folderCell.end());
    std::vector<std::int64_t> cells = WholeCells();
    for (std::size_t c = 1; c < cells.size(); ++c)
      cells[c] = std::lower_bound(folderCell.begin(), folderCell.end(), std::pair(cells[c], std::int64_t{0}))
                     ->second;
    return cells;
  }

  // A whole mesh.

  void ReadOnRank0() {
    Questions const own = QuestionsFor(WholeCells());
    std::int64_t const nCells = mesh_.summary.nCells;
    FoamField field;
    OnRank0([&] {
      field = cgns_ ? ReadCgnsFile(nCells) : ReadFoamFile(nCells);
      lacksValues_ = field.lacksValues;
    });
    RunTogether(communicator_, [&] {
      if (communicator_.rank() == 0) {
        FoamFieldLookup const lookup(field, source_.boundary);
        AnswerOthers(lookup);
        TakeAnswers(Answers(lookup, own));
      } else {
        SendBytes(communicator_, 0, BytesOf(own.cell));
        SendBytes(communicator_, 0, BytesOf(own.face));
        if (std::optional<std::vector<char>> const bytes = ReceiveBytes(communicator_, 0)) {
          TakeAnswers(ItemsOf<double>(*bytes));
        }
      }
    });
  }

  FoamField ReadCgnsFile(std::int64_t nCells) const {
    FoamField field;
    field.cell = ReadCgnsField(cgns_->first, cgns_->second);
    if (static_cast<std::int64_t>(field.cell.size()) != nCells) {
      throw MeshError(fieldSpec_ + ": " + std::to_string(field.cell.size()) + " values for the " +
                      std::to_string(nCells) + " cells of the mesh");
    }
    for (PatchSummary const& patch : mesh_.summary.patches)
      field.lacksValues.push_back(patch.nFaces > 0 ? 1 : 0);
    return field;
  }

  FoamField ReadFoamFile(std::int64_t nCells) const {
    if (source_.polyMesh.empty()) {
      throw MeshError(fieldSpec_ +
                      ": an OpenFOAM field needs an OpenFOAM mesh (other fields: FILE.cgns:ARRAY)");
    }
    return ReadScalarField(FindFieldFile(source_.polyMesh, fieldSpec_), nCells, source_.boundary);
  }

  /// Answers one rank after another. After a failure, the remaining ranks get nothing.
  void AnswerOthers(FoamFieldLookup const& lookup) const {
    std::exception_ptr failure;
    for (int rank = 1; rank < communicator_.size(); ++rank) {
      std::vector<char> answer;
      try {
        Questions questions;
        if (auto const cells = ReceiveBytes(communicator_, rank))
          questions.cell = ItemsOf<std::int64_t>(*cells);
        if (auto const faces = ReceiveBytes(communicator_, rank))
          questions.face = ItemsOf<BoundaryPlace>(*faces);
        if (!failure) answer = BytesOf(Answers(lookup, questions));
      } catch (...) {
        failure = std::current_exception();
      }
      if (failure) {
        SendNothing(communicator_, rank);
      } else {
        SendBytes(communicator_, rank, answer);
      }
    }
    if (failure) std::rethrow_exception(failure);
  }

  void NamePatchesWithoutValues() {
    lacksValues_.resize(partition_.patches().size(), 0);
    MPI_Allreduce(MPI_IN_PLACE, lacksValues_.data(), static_cast<int>(lacksValues_.size()), MPI_SIGNED_CHAR,
                  MPI_MAX, communicator_.get());
    for (std::size_t p = 0; p < lacksValues_.size(); ++p) {
      if (lacksValues_[p] != 0) result_.patchesWithoutValues.push_back(partition_.patches()[p].name);
    }
  }

  MpiCommunicator communicator_;
  LoadedMesh& mesh_;
  MeshSource const& source_;
  HostPartition& partition_;
  CZYN3DFiniteVolumeMesh const& record_;
  std::string const& fieldSpec_;
  std::optional<std::pair<std::string, std::string>> cgns_;
  std::vector<char> lacksValues_;  // by patch
  LoadedField result_;
};

}  // namespace

LoadedField LoadField(MPI_Comm communicator, LoadedMesh& mesh, std::string const& fieldSpec) {
  return FieldLoader(communicator, mesh, fieldSpec).Load();
}

}  // namespace reference_host
