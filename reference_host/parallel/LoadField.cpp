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
#include "reference_host/parallel/MpiAgreement.h"
#include "reference_host/parallel/MpiBytes.h"
#include "reference_host/parallel/MpiCommunicator.h"
#include "reference_host/partition/BoundaryPlaces.h"

namespace reference_host {
namespace {

namespace fs = std::filesystem;

/// What a rank wants to know: values of cells by their number in the mesh file, then of boundary faces.
struct Questions {
  std::vector<std::int64_t> cell;
  std::vector<BoundaryPlace> face;
};

/// A field and the mesh that it belongs to, in the numbers of their files.
struct FileField {
  FoamField field;
  PolyMeshBoundary boundary;  ///< empty if the field has no boundary values
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
    throw MeshError(fieldSpec + ": name the array of the file as " + fieldSpec + ":ARRAY");
  }
  return std::nullopt;
}

/// A path as it is, or else in the case that the mesh belongs to.
std::string FindFieldFile(std::string const& polyMesh, std::string const& fieldSpec) {
  fs::path folder = fs::path(polyMesh).lexically_normal();
  if (!folder.has_filename()) folder = folder.parent_path();  // polyMesh/
  folder = folder.parent_path();
  if (folder.filename() == "constant") folder = folder.parent_path();
  auto const kindOf = [](fs::path const& path) {
    std::error_code ignored;
    return fs::status(path, ignored).type();
  };
  // What is there but is no file is only taken where there is no file: reading it then says what it is.
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

class FieldLoader {
 public:
  FieldLoader(MPI_Comm communicator, std::string const& meshSpec, LoadedMesh& mesh,
              std::string const& fieldSpec)
      : communicator_(communicator),
        meshSpec_(meshSpec),
        mesh_(mesh),
        partition_(*mesh.partition),
        record_(*partition_.mesh()),
        fieldSpec_(fieldSpec) {}

  LoadedField Load() {
    lacksValues_.assign(partition_.patches().size(), 0);
    if (IsOwnFolderRead()) {
      ReadOwnFolder();
    } else {
      ReadOnRank0();
    }
    mesh_.exchange->DDM_Exch(result_.value.data());
    NamePatchesWithoutValues();
    return std::move(result_);
  }

 private:
  /// Rank 0 decides, and refuses a field that does not go with the mesh.
  bool IsOwnFolderRead() {
    int is = 0;
    OnRank0([&] {
      cgns_ = CgnsParts(fieldSpec_);
      if (cgns_) return;
      std::error_code ignored;
      is = IsDecomposedCase(meshSpec_) ? 1 : 0;
      if (is != 0) return;
      polyMesh_ = fs::is_directory(meshSpec_, ignored) ? FindPolyMesh(meshSpec_) : "";
      if (polyMesh_.empty()) {
        throw MeshError(fieldSpec_ +
                        ": a field of OpenFOAM needs a mesh of OpenFOAM (other fields: FILE.cgns:ARRAY)");
      }
    });
    MPI_Bcast(&is, 1, MPI_INT, 0, communicator_.get());
    return is != 0;
  }

  void OnRank0(std::function<void()> const& work) const {
    RunTogether(communicator_, [&] {
      if (communicator_.rank() == 0) work();
    });
  }

  /// Numbers of the own interior cells in the whole mesh, from 0. [1..NInnerCells]
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
    // Interior cells are followed by ghost cells, and those by halo cells.
    result_.value.assign(static_cast<std::size_t>(record_.NCell) + 1, 0.0);
    std::copy(answers.begin(), answers.end(), result_.value.begin() + 1);
  }

  // A decomposed case.

  void ReadOwnFolder() {
    std::vector<std::int64_t> const wholeCell = WholeCells();
    std::int64_t firstCell = 0;  // of this rank where cells are numbered rank by rank
    std::int64_t const nOwn = record_.NInnerCells;
    MPI_Exscan(&nOwn, &firstCell, 1, MPI_INT64_T, MPI_SUM, communicator_.get());
    if (communicator_.rank() == 0) firstCell = 0;
    RunTogether(communicator_, [&] {
      fs::path const folder = ProcessorFolder(meshSpec_, communicator_.rank());
      std::string const polyMesh = (folder / "constant" / "polyMesh").string();
      FileField file;
      file.boundary = ReadPolyMeshBoundary(polyMesh);
      LeaveOutCuts(file.boundary);
      CheckPatches(polyMesh, file.boundary);
      file.field = ReadFoamField((folder / TimeAndName(fieldSpec_)).string(), nOwn, file.boundary);
      lacksValues_ = file.field.lacksValues;
      FoamFieldLookup const lookup(file.field, file.boundary);
      TakeAnswers(Answers(lookup, QuestionsFor(FolderCells(polyMesh, wholeCell, firstCell))));
    });
  }

  static void LeaveOutCuts(PolyMeshBoundary& boundary) {
    std::size_t nKept = 0;
    for (std::size_t p = 0; p < boundary.patches.size(); ++p) {
      if (boundary.patches[p].type.rfind("processor", 0) == 0) continue;
      if (nKept < p) {
        boundary.patches[nKept] = std::move(boundary.patches[p]);
        boundary.facesOfPatch[nKept] = boundary.facesOfPatch[p];
      }
      ++nKept;
    }
    boundary.patches.resize(nKept);
    boundary.facesOfPatch.resize(nKept);
  }

  /// Numbers of the own interior cells in their processor folder. [1..NInnerCells]
  static std::vector<std::int64_t> FolderCells(std::string const& polyMesh,
                                               std::vector<std::int64_t> wholeCell, std::int64_t firstCell) {
    auto const n = static_cast<std::int64_t>(wholeCell.size()) - 1;
    std::vector<std::int64_t> const addressing = ReadAddressing(polyMesh, "cellProcAddressing", n);
    std::vector<std::pair<std::int64_t, std::int64_t>> folderCell;  // by number in the whole mesh
    for (std::int64_t c = 0; c < n; ++c) {
      folderCell.emplace_back(addressing.empty() ? firstCell + c : addressing[static_cast<std::size_t>(c)],
                              c);
    }
    std::sort(folderCell.begin(), folderCell.end());
    for (std::size_t c = 1; c < wholeCell.size(); ++c) {
      auto const found =
          std::lower_bound(folderCell.begin(), folderCell.end(), std::pair(wholeCell[c], std::int64_t{0}));
      if (found == folderCell.end() || found->first != wholeCell[c]) {
        throw MeshError(polyMesh + ": changed while it was read");
      }
      wholeCell[c] = found->second;
    }
    return wholeCell;
  }

  // A whole mesh.

  void ReadOnRank0() {
    Questions const own = QuestionsFor(WholeCells());
    std::int64_t const nCells = mesh_.summary.nCells;
    FileField file;
    OnRank0([&] {
      file = cgns_ ? ReadCgnsFile(nCells) : ReadFoamFile(nCells);
      lacksValues_ = file.field.lacksValues;
    });
    RunTogether(communicator_, [&] {
      if (communicator_.rank() == 0) {
        FoamFieldLookup const lookup(file.field, file.boundary);
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

  FileField ReadCgnsFile(std::int64_t nCells) const {
    FileField file;
    file.field.cell = ReadCgnsField(cgns_->first, cgns_->second);
    if (static_cast<std::int64_t>(file.field.cell.size()) != nCells) {
      throw MeshError(fieldSpec_ + ": " + std::to_string(file.field.cell.size()) + " values for the " +
                      std::to_string(nCells) + " cells of the mesh");
    }
    for (PatchSummary const& patch : mesh_.summary.patches)
      file.field.lacksValues.push_back(patch.nFaces > 0 ? 1 : 0);
    return file;
  }

  FileField ReadFoamFile(std::int64_t nCells) const {
    FileField file;
    file.boundary = ReadPolyMeshBoundary(polyMesh_);
    CheckPatches(polyMesh_, file.boundary);
    file.field = ReadFoamField(FindFieldFile(polyMesh_, fieldSpec_), nCells, file.boundary);
    return file;
  }

  /// The boundary is read a second time for the field.
  void CheckPatches(std::string const& polyMesh, PolyMeshBoundary const& boundary) const {
    std::vector<Patch> const& patches = partition_.patches();
    bool const isSame =
        std::equal(patches.begin(), patches.end(), boundary.patches.begin(), boundary.patches.end(),
                   [](Patch const& a, Patch const& b) { return a.name == b.name; });
    if (!isSame) throw MeshError(polyMesh + ": changed while it was read");
  }

  /// One rank after another. After a failure the ranks that are still waiting get nothing.
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
  std::string const& meshSpec_;
  LoadedMesh& mesh_;
  HostPartition& partition_;
  CZYN3DFiniteVolumeMesh const& record_;
  std::string const& fieldSpec_;
  std::optional<std::pair<std::string, std::string>> cgns_;  // of rank 0 alone
  std::string polyMesh_;                                     // of rank 0 alone
  std::vector<char> lacksValues_;                            // by patch
  LoadedField result_;
};

}  // namespace

LoadedField LoadField(MPI_Comm communicator, std::string const& meshSpec, LoadedMesh& mesh,
                      std::string const& fieldSpec) {
  return FieldLoader(communicator, meshSpec, mesh, fieldSpec).Load();
}

}  // namespace reference_host
