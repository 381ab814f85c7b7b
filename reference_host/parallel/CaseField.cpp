#include "reference_host/parallel/CaseField.h"

#include <algorithm>
#include <cstddef>
#include <map>
#include <utility>

#include "reference_host/mesh/MeshError.h"
#include "reference_host/mesh/MessageText.h"
#include "reference_host/openfoam/CaseTimes.h"
#include "reference_host/openfoam/DecomposedCase.h"
#include "reference_host/openfoam/FoamStorage.h"
#include "reference_host/parallel/FileCells.h"
#include "reference_host/parallel/MeshSource.h"
#include "reference_host/parallel/MpiAgreement.h"
#include "reference_host/slabs/MpiLists.h"

namespace reference_host {
namespace {

/// The values at the faces of a patch: those of their cells.
std::vector<double> AtOwners(std::vector<double> const& cellValues, std::vector<std::int64_t> const& owner,
                             int nComponents) {
  std::vector<double> values;
  values.reserve(owner.size() * static_cast<std::size_t>(nComponents));
  for (std::int64_t const cell : owner) {
    auto const first = cellValues.begin() + static_cast<std::ptrdiff_t>(nComponents * cell);
    values.insert(values.end(), first, first + nComponents);
  }
  return values;
}

/// Puts the values of some cells where the file has them.
void Scatter(std::vector<std::int64_t> const& cells, std::vector<double> const& values, int nComponents,
             std::vector<double>& inFile) {
  auto const n = static_cast<std::size_t>(nComponents);
  for (std::size_t c = 0; c < cells.size(); ++c) {
    auto const from = values.begin() + static_cast<std::ptrdiff_t>(n * c);
    std::copy(from, from + nComponents,
              inFile.begin() + static_cast<std::ptrdiff_t>(n * static_cast<std::size_t>(cells[c])));
  }
}

}  // namespace

CaseFieldMaker::CaseFieldMaker(MPI_Comm communicator, LoadedMesh& mesh)
    : communicator_(communicator), mesh_(mesh), isDecomposed_(mesh.source->isDecomposed) {
  RunTogether(communicator_, [this] {
    cellInFile_ = CellsInFile(mesh_);
    cells_ = BlockRanges::Even(mesh_.summary.nCells, communicator_.size());
    if (!Writes()) return;
    if (isDecomposed_) {
      FindProcessorFolder();
    } else {
      polyMesh_ = mesh_.source->polyMesh;
      if (polyMesh_.empty())
        throw MeshError(mesh_.source->spec + ": fields can be written only into an OpenFOAM case");
      folder_ = CaseOfPolyMesh(polyMesh_);
    }
    ReadPatches();
  });
}

void CaseFieldMaker::FindProcessorFolder() {
  std::string const& folder = mesh_.source->spec;
  std::string const own = ProcessorFolder(folder, communicator_.rank());
  polyMesh_ = own + "/constant/polyMesh";
  folder_ = StoredProcessorFolder(folder, communicator_.rank());
  isCollated_ = folder_ != own;
  if (!isCollated_) return;
  for (CollatedFolder const& collated : CollatedFolders(folder)) {
    if (collated.path != folder_ || collated.last - collated.first + 1 == communicator_.size()) continue;
    throw MeshError(
        folder_ + ": fields cannot be written into a case whose processors are collated in several folders");
  }
}

void CaseFieldMaker::ReadPatches() {
  std::vector<BoundaryFilePatch> const entries = ReadBoundaryFile(polyMesh_);
  for (BoundaryFilePatch const& entry : entries) patches_.push_back({entry, {}});
  TakeOwners(entries);
}

/// The faces of the patches follow each other in MeshSource::boundary, and those of cuts come last, in the order of the
/// mesh.
void CaseFieldMaker::TakeOwners(std::vector<BoundaryFilePatch> const& entries) {
  PolyMeshBoundary const& boundary = mesh_.source->boundary;
  std::map<std::string, PatchFaces> facesOf;
  std::int64_t nextCutFace = 0;
  for (std::size_t p = 0; p < boundary.patches.size(); ++p) {
    PatchFaces const& faces = boundary.facesOfPatch[p];
    facesOf[boundary.patches[p].name] = faces;
    nextCutFace = std::max(nextCutFace, faces.first + faces.count);
  }
  auto const take = [&](CasePatch& patch, std::int64_t first, std::int64_t count) {
    if (count != patch.entry.nFaces || first + count > static_cast<std::int64_t>(boundary.owner.size())) {
      throw MeshError(polyMesh_ + "/boundary: patch " + Quoted(patch.entry.name) +
                      " has changed since the mesh was read");
    }
    auto const begin = boundary.owner.begin() + static_cast<std::ptrdiff_t>(first);
    patch.owner.assign(begin, begin + static_cast<std::ptrdiff_t>(count));
  };
  std::vector<std::size_t> cuts;
  for (std::size_t p = 0; p < entries.size(); ++p) {
    if (entries[p].IsProcessor()) {
      cuts.push_back(p);
    } else if (HasFoamPatchValues(FoamPatchTypeFor(entries[p].type))) {
      PatchFaces const& faces = facesOf[entries[p].name];
      take(patches_[p], faces.first, faces.count);
    }
  }
  std::sort(cuts.begin(), cuts.end(),
            [&entries](std::size_t a, std::size_t b) { return entries[a].startFace < entries[b].startFace; });
  for (std::size_t const p : cuts) {
    take(patches_[p], nextCutFace, entries[p].nFaces);
    nextCutFace += entries[p].nFaces;
  }
}

/// The values of the cells that are this rank's share of the file.
std::vector<double> CaseFieldMaker::InFileOrder(std::vector<double> const& values, int nComponents) const {
  std::vector<double> inFile;
  std::vector<std::int64_t> own;
  RunTogether(communicator_, [&] {
    own.assign(cellInFile_.begin() + 1, cellInFile_.end());
    std::size_t const nCells =
        isDecomposed_ ? own.size() : static_cast<std::size_t>(cells_.Size(communicator_.rank()));
    inFile.assign(nCells * static_cast<std::size_t>(nComponents), 0.0);
    if (isDecomposed_) Scatter(own, values, nComponents, inFile);
  });
  if (!isDecomposed_) ScatterOverRanks(own, values, nComponents, inFile);
  return inFile;
}

/// In rounds, so that the memory for messages is bounded.
void CaseFieldMaker::ScatterOverRanks(std::vector<std::int64_t> const& cells,
                                      std::vector<double> const& values, int nComponents,
                                      std::vector<double>& inFile) const {
  constexpr std::size_t kRound = std::size_t{1} << 18;
  auto const nRounds = (cells.size() + kRound - 1) / kRound;
  auto most = static_cast<std::int64_t>(nRounds);
  MPI_Allreduce(MPI_IN_PLACE, &most, 1, MPI_INT64_T, MPI_MAX, communicator_.get());
  auto const n = static_cast<std::size_t>(nComponents);
  std::int64_t const first = cells_.First(communicator_.rank());
  for (std::size_t round = 0; round < static_cast<std::size_t>(most); ++round) {
    std::size_t const begin = std::min(round * kRound, cells.size());
    std::size_t const size = std::min(kRound, cells.size() - begin);
    auto const rankOf = [&](std::size_t i) { return cells_.BlockOf(cells[begin + i]); };
    auto const send = [&](auto const& itemOf) {
      using Item = decltype(itemOf(std::size_t{0}));
      return SwapLists(communicator_, ListsByRank<Item>(communicator_.size(), size, rankOf, itemOf));
    };
    RankLists<std::int64_t> const numbers = send([&](std::size_t i) { return cells[begin + i]; });
    for (std::size_t k = 0; k < n; ++k) {
      RankLists<double> const received = send([&](std::size_t i) { return values[n * (begin + i) + k]; });
      for (std::size_t i = 0; i < numbers.items.size(); ++i)
        inFile[n * static_cast<std::size_t>(numbers.items[i] - first) + k] = received.items[i];
    }
  }
}

/// Collective. The values at the faces of all patches on rank 0, patch by patch: those of their cells, from the ranks that
/// have them. @param[in] inFile  from InFileOrder
std::vector<double> CaseFieldMaker::FetchAtOwners(std::vector<double> const& inFile, int nComponents) const {
  std::vector<std::int64_t> owner;
  for (CasePatch const& patch : patches_) owner.insert(owner.end(), patch.owner.begin(), patch.owner.end());
  auto const n = static_cast<std::size_t>(nComponents);
  std::vector<double> values(n * owner.size());
  for (std::size_t k = 0; k < n; ++k) {
    std::vector<double> const one = FetchItems<double>(communicator_, cells_, owner, [&](std::int64_t cell) {
      return inFile[n * static_cast<std::size_t>(cell) + k];
    });
    for (std::size_t i = 0; i < one.size(); ++i) values[n * i + k] = one[i];
  }
  return values;
}

/// The name that the patch beyond a cut has on the other processor, as the decomposition chooses it.
std::string CaseFieldMaker::NameBeyond(BoundaryFilePatch const& patch) const {
  std::string name =
      "procBoundary" + std::to_string(patch.neighbour) + "to" + std::to_string(communicator_.rank());
  if (patch.referPatch.empty()) return name;
  for (CasePatch const& other : patches_)
    if (other.entry.name == patch.referPatch) return name + "through" + other.entry.partner;
  return name;
}

/// Both sides of a cut have its faces in the same order. Each rank sends the values of its cells at the cuts, for each
/// other rank patch by patch, ascending by the names that the patches have there.
void CaseFieldMaker::ExchangeCuts(FoamOutput& field) const {
  auto const nRanks = static_cast<std::size_t>(communicator_.size());
  std::vector<double> sent, received;
  std::vector<int> nSent(nRanks, 0), nReceived(nRanks, 0), sendStart(nRanks, 0), receiveStart(nRanks, 0);
  std::map<std::pair<int, std::string>, std::size_t> byNameHere, byNameThere;
  RunTogether(communicator_, [&] {
    for (std::size_t p = 0; p < patches_.size(); ++p) {
      BoundaryFilePatch const& entry = patches_[p].entry;
      if (!entry.IsProcessor()) continue;
      if (entry.neighbour >= communicator_.size()) {
        throw MeshError(polyMesh_ + "/boundary: patch " + Quoted(entry.name) + " leads to processor " +
                        std::to_string(entry.neighbour) + " of " + std::to_string(communicator_.size()) +
                        ", counted from 0");
      }
      byNameHere[{entry.neighbour, entry.name}] = p;
      byNameThere[{entry.neighbour, NameBeyond(entry)}] = p;
    }
    for (auto const& [place, p] : byNameThere) {
      std::vector<double> const values = AtOwners(field.cell, patches_[p].owner, field.nComponents);
      sent.insert(sent.end(), values.begin(), values.end());
      nSent[static_cast<std::size_t>(place.first)] += static_cast<int>(values.size());
      nReceived[static_cast<std::size_t>(place.first)] += static_cast<int>(values.size());
    }
    for (std::size_t rank = 1; rank < nRanks; ++rank)
      receiveStart[rank] = sendStart[rank] = sendStart[rank - 1] + nSent[rank - 1];
    received.resize(sent.size());
  });
  std::vector<int> told(nRanks, 0);
  MPI_Alltoall(nSent.data(), 1, MPI_INT, told.data(), 1, MPI_INT, communicator_.get());
  RunTogether(communicator_, [&] {
    if (told != nReceived) throw MeshError(folder_ + ": the patches on both sides of a cut differ in size");
  });
  MPI_Alltoallv(sent.data(), nSent.data(), sendStart.data(), MPI_DOUBLE, received.data(), nReceived.data(),
                receiveStart.data(), MPI_DOUBLE, communicator_.get());
  auto next = received.begin();
  for (auto const& [place, p] : byNameHere) {
    auto const end =
        next + static_cast<std::ptrdiff_t>(patches_[p].owner.size()) * std::ptrdiff_t{field.nComponents};
    field.patches[p].value.emplace(next, end);
    next = end;
  }
}

void CaseFieldMaker::Make(std::vector<double> const& values, FoamOutput& field) const {
  field.cell = InFileOrder(values, field.nComponents);
  std::vector<double> atOwners;
  if (!isDecomposed_) atOwners = FetchAtOwners(field.cell, field.nComponents);
  RunTogether(communicator_, [&] {
    auto next = atOwners.begin();
    for (CasePatch const& patch : patches_) {
      FoamPatchEntry entry = {patch.entry.name, FoamPatchTypeFor(patch.entry.type), std::nullopt};
      auto const end = isDecomposed_ ? next
                                     : next + static_cast<std::ptrdiff_t>(patch.owner.size()) *
                                                  std::ptrdiff_t{field.nComponents};
      if (HasFoamPatchValues(entry.type)) {
        if (isDecomposed_)
          entry.value = AtOwners(field.cell, patch.owner, field.nComponents);
        else
          entry.value.emplace(next, end);
      }
      next = end;
      field.patches.push_back(std::move(entry));
    }
  });
  if (isDecomposed_) ExchangeCuts(field);
}

}  // namespace reference_host
