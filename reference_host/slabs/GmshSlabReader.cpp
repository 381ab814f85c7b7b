#include "reference_host/slabs/GmshSlabReader.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <set>
#include <type_traits>
#include <utility>
#include <vector>

#include "reference_host/gmsh/GmshBlockReader.h"
#include "reference_host/gmsh/GmshBlocks.h"
#include "reference_host/gmsh/GmshChecks.h"
#include "reference_host/gmsh/GmshPatches.h"
#include "reference_host/mesh/MeshError.h"
#include "reference_host/parallel/MpiAgreement.h"
#include "reference_host/parallel/MpiBytes.h"
#include "reference_host/slabs/CellSlab.h"
#include "reference_host/slabs/FirstFailure.h"
#include "reference_host/slabs/GmshNodeIndex.h"
#include "reference_host/slabs/GmshSlabPeriods.h"
#include "reference_host/slabs/MpiLists.h"
#include "reference_host/slabs/SlabNaming.h"

namespace reference_host {
namespace {

/// Collective. Gives every rank the items of rank 0.
template <class T>
void ShareItems(MpiCommunicator const& communicator, std::vector<T>& items) {
  static_assert(std::is_trivially_copyable_v<T>);
  auto n = static_cast<std::uint64_t>(items.size());
  MPI_Bcast(&n, 1, MPI_UINT64_T, 0, communicator.get());
  RunTogether(communicator, [&] { items.resize(static_cast<std::size_t>(n)); });
  char* const bytes = reinterpret_cast<char*>(items.data());
  std::size_t const nBytes = items.size() * sizeof(T);
  for (std::size_t at = 0; at < nBytes; at += kLargestMessage) {
    MPI_Bcast(bytes + at, static_cast<int>(std::min(kLargestMessage, nBytes - at)), MPI_BYTE, 0,
              communicator.get());
  }
}

/// Collective. The numbers that any rank has.
std::set<std::int64_t> Union(MpiCommunicator const& communicator, std::set<std::int64_t> const& numbers) {
  std::vector<std::int64_t> const own(numbers.begin(), numbers.end());
  RankLists<std::int64_t> copies;
  for (int rank = 0; rank < communicator.size(); ++rank) {
    copies.start.push_back(copies.items.size());
    copies.items.insert(copies.items.end(), own.begin(), own.end());
  }
  copies.start.push_back(copies.items.size());
  std::vector<std::int64_t> const all = SwapLists(communicator, copies).items;
  return {all.begin(), all.end()};
}

/// Collective. What rank 0 finds in the file: the blocks and the content without periodic surfaces are for all ranks.
GmshContent ShareIndex(MpiCommunicator const& communicator, std::string const& file, GmshBlocks& blocks) {
  GmshContent content;
  RunTogether(communicator, [&] {
    if (communicator.rank() == 0) content = IndexGmsh(file, blocks);
  });
  ShareItems(communicator, blocks.nodes);
  for (std::vector<GmshElementBlock>& elements : blocks.elements) ShareItems(communicator, elements);
  blocks.failure = ShareText(communicator, 0, blocks.failure);

  std::vector<std::int64_t> numbers = {blocks.is2 ? 1 : 0, content.nPartitions};
  std::vector<std::string> names;
  for (auto const& [tag, name] : content.surfaceName) {
    numbers.push_back(tag);
    names.push_back(name);
  }
  ShareItems(communicator, numbers);
  blocks.is2 = numbers[0] != 0;
  content.nPartitions = numbers[1];
  names.resize(numbers.size() - 2);
  for (std::size_t i = 0; i < names.size(); ++i) {
    content.surfaceName[numbers[i + 2]] = ShareText(communicator, 0, names[i]);
  }
  return content;
}

/// One rank's share of the file, and what becomes of it.
class SlabReader {
 public:
  SlabReader(MpiCommunicator const& communicator, std::string const& file)
      : communicator_(communicator), file_(file) {}

  MeshSlab Read() {
    GmshBlocks blocks;
    content_ = ShareIndex(communicator_, file_, blocks);
    std::string const failure = blocks.failure;
    RunTogether(communicator_,
                [&] { reader_ = std::make_shared<GmshBlockReader>(file_, std::move(blocks)); });
    ReadShare();
    if (!failure.empty()) throw MeshError(failure);
    CheckGmshIsWhole(file_, content_.nPartitions, Union(communicator_, content_.partitionsWithVolumes));
    if (slab_.cells.nItems() == 0) throw MeshError(GmshWithoutVolumes(file_));
    NumberNodes();
    GmshPatches const patches(content_.surfaceName, Union(communicator_, physicals_));
    LabelSurfaces(patches);
    return MakeMesh(patches);
  }

 private:
  std::int64_t FirstCell() const { return slab_.cells.First(communicator_.rank()); }

  void ReadShare() {
    GmshBlocks const& blocks = reader_->Blocks();
    auto const even = [this](std::int64_t n) { return BlockRanges::Even(n, communicator_.size()); };
    slab_.nodes = even(blocks.nNodes());
    slab_.cells = even(blocks.nElements(GmshBlocks::kVolumes));
    surfaces_ = even(blocks.nElements(GmshBlocks::kSurfaces));
    FirstFailure wrong;
    RunTogether(communicator_, [&] {
      ReadPart(wrong, [this] { ReadNodes(); });
      ReadPart(wrong, [this] { ReadCells(); });
      ReadPart(wrong, [this] { ReadSurfaces(); });
      ReadPart(wrong, [&] { CheckOthers(even(blocks.nElements(GmshBlocks::kOthers))); });
    });
    wrong.ThrowIfAny(communicator_);
  }

  /// Nodes, cells and surfaces may have any order in the file, so all are read even if some are wrong.
  template <class Work>
  static void ReadPart(FirstFailure& wrong, Work const& work) {
    try {
      work();
    } catch (GmshNumberError const& error) {
      wrong.Note(error.byte(), error.what());
    }
  }

  void ReadNodes() {
    int const rank = communicator_.rank();
    auto const n = static_cast<std::size_t>(slab_.nodes.Size(rank));
    nodeTag_.reserve(n);
    slab_.points.reserve(n);
    reader_->ReadNodes(slab_.nodes.First(rank), slab_.nodes.End(rank), nodeTag_, slab_.points);
  }

  void ReadCells() {
    int const rank = communicator_.rank();
    std::int64_t const first = slab_.cells.First(rank), end = slab_.cells.End(rank);
    slab_.shape.reserve(static_cast<std::size_t>(end - first));
    slab_.node.reserve(reader_->CountNodeTags(GmshBlocks::kVolumes, first, end));
    reader_->ForEachElement(GmshBlocks::kVolumes, first, end, [this](GmshElement const& element) {
      slab_.shape.push_back(ShapeOf(*element.type));
      slab_.node.insert(slab_.node.end(), element.nodeTag.begin(),
                        element.nodeTag.begin() + element.type->nNodes);
      if (element.hasPartition) content_.partitionsWithVolumes.insert(element.partition);
    });
  }

  void ReadSurfaces() {
    int const rank = communicator_.rank();
    std::int64_t const first = surfaces_.First(rank), end = surfaces_.End(rank);
    physical_.reserve(static_cast<std::size_t>(end - first));
    surfaceStart_.reserve(physical_.capacity() + 1);
    surfaceNode_.reserve(reader_->CountNodeTags(GmshBlocks::kSurfaces, first, end));
    reader_->ForEachElement(GmshBlocks::kSurfaces, first, end, [this](GmshElement const& element) {
      physical_.push_back(element.physical);
      physicals_.insert(element.physical);
      surfaceNode_.insert(surfaceNode_.end(), element.nodeTag.begin(),
                          element.nodeTag.begin() + element.type->nNodes);
      surfaceStart_.push_back(surfaceNode_.size());
    });
  }

  /// The mesh does without lines and points, but not without their being right.
  void CheckOthers(BlockRanges const& others) {
    int const rank = communicator_.rank();
    reader_->ForEachElement(GmshBlocks::kOthers, others.First(rank), others.End(rank),
                            [](GmshElement const&) {});
  }

  /// Replaces tags of nodes by their numbers, which count from 0 in the order of the file.
  void NumberNodes() {
    GmshNodeIndex const index(communicator_, file_, slab_.nodes, nodeTag_);
    nodeTag_ = {};
    index.Replace(slab_.node);
    index.Replace(surfaceNode_);
    CheckElements();

    auto nPeriodic = static_cast<std::int64_t>(content_.periodicSurfaces.size());
    MPI_Bcast(&nPeriodic, 1, MPI_INT64_T, 0, communicator_.get());
    isPeriodic_ = nPeriodic > 0;
    if (!isPeriodic_) return;
    for (GmshPeriodicSurface const& surface : content_.periodicSurfaces) {
      for (auto const& [node, master] : surface.nodeTags) {
        periodicNode_.insert(periodicNode_.end(), {node, master});
      }
    }
    index.Replace(periodicNode_);
  }

  /// Fails for elements of nodes that the file does not have. One process looks at the cells one after the other, so a
  /// cell before that with a node twice is reported first.
  void CheckElements() {
    auto const isUnknown = [](std::int64_t node) { return node < 0; };
    auto const nUnknown = std::count_if(slab_.node.begin(), slab_.node.end(), isUnknown) +
                          std::count_if(surfaceNode_.begin(), surfaceNode_.end(), isUnknown);
    if (SumOverRanks(communicator_, nUnknown) == 0) return;

    FirstFailure wrong;
    RunTogether(communicator_, [&] {
      std::size_t start = 0;
      for (std::size_t c = 0; c < slab_.shape.size(); ++c) {
        std::size_t const end = start + static_cast<std::size_t>(NodeCount(slab_.shape[c]));
        NoteElement(wrong, GmshBlocks::kVolumes, FirstCell() + static_cast<std::int64_t>(c),
                    slab_.node.data() + start, end - start);
        start = end;
      }
      for (std::size_t s = 0; s < physical_.size(); ++s) {
        NoteElement(wrong, GmshBlocks::kSurfaces,
                    surfaces_.First(communicator_.rank()) + static_cast<std::int64_t>(s),
                    surfaceNode_.data() + surfaceStart_[s], surfaceStart_[s + 1] - surfaceStart_[s]);
      }
    });
    wrong.ThrowIfAny(communicator_);
  }

  void NoteElement(FirstFailure& wrong, GmshBlocks::Kind kind, std::int64_t number, std::int64_t const* nodes,
                   std::size_t n) const {
    std::int64_t const place = kind == GmshBlocks::kVolumes ? number : slab_.cells.nItems() + number;
    std::int64_t const* const unknown = std::find(nodes, nodes + n, -1);
    if (unknown != nodes + n) {
      GmshElement const element = reader_->ElementAt(kind, number);
      wrong.Note(place, GmshNodeUnknown(file_, element.tag,
                                        element.nodeTag[static_cast<std::size_t>(unknown - nodes)]));
    } else if (kind == GmshBlocks::kVolumes &&
               FirstRepeated(nodes, static_cast<int>(n)) < static_cast<int>(n)) {
      wrong.Note(place, file_ + ": " + NameOfElement(*reader_, number) + " has a node twice");
    }
  }

  static std::string NameOfElement(GmshBlockReader& reader, std::int64_t cell) {
    return "element " + std::to_string(reader.ElementAt(GmshBlocks::kVolumes, cell).tag);
  }

  /// The label of a surface element is its patch; those of no physical surface are left out.
  void LabelSurfaces(GmshPatches const& patches) {
    RunTogether(communicator_, [&] {
      for (std::size_t s = 0; s < physical_.size(); ++s) {
        if (physical_[s] == 0) continue;
        std::array<std::int64_t, 4> nodes = {-1, -1, -1, -1};
        std::copy(surfaceNode_.begin() + static_cast<std::ptrdiff_t>(surfaceStart_[s]),
                  surfaceNode_.begin() + static_cast<std::ptrdiff_t>(surfaceStart_[s + 1]), nodes.begin());
        slab_.surface.push_back(nodes);
        slab_.label.push_back(patches.Find(physical_[s]));
      }
    });
    physical_ = {};
    surfaceNode_ = {};
    surfaceStart_ = {};
  }

  /// Names come from the file, so that they take no memory.
  MeshSlab MakeMesh(GmshPatches const& patches) {
    slab_.nodeNumber = [reader = reader_](std::int64_t node) { return reader->TagOfNode(node); };
    slab_.nameOfCell = [reader = reader_](std::int64_t cell) { return NameOfElement(*reader, cell); };
    BlockRanges const nodes = slab_.nodes;
    JoinedSlab joined = JoinCells(communicator_, file_, std::move(slab_));
    MeshSlab& mesh = joined.mesh;
    mesh.patches = patches.Patches();
    SetPatches(joined.labelOfFace, mesh);
    joined.labelOfFace = {};
    if (isPeriodic_) {
      PutNodesOfMesh(nodes, joined.numberOfNode);
      AddGmshSlabPeriods(communicator_, content_.periodicSurfaces, mesh);
    }
    return std::move(mesh);
  }

  /// As FaceMeshBuilder does: the patch "unnamed" has the boundary faces of no surface element.
  void SetPatches(std::vector<std::int64_t> const& labelOfFace, MeshSlab& mesh) const {
    std::int64_t nUncovered = 0;
    for (std::size_t f = 0; f < mesh.nOwnFaces(); ++f) {
      if (mesh.neighbour[f] < 0 && labelOfFace[f] < 0) ++nUncovered;
    }
    int unnamed = -1;
    if (SumOverRanks(communicator_, nUncovered) > 0) {
      auto const found = std::find_if(mesh.patches.begin(), mesh.patches.end(),
                                      [](Patch const& patch) { return patch.name == "unnamed"; });
      unnamed = static_cast<int>(found - mesh.patches.begin());
      if (found == mesh.patches.end()) mesh.patches.push_back({"unnamed", "", {}});
    }
    for (std::size_t f = 0; f < mesh.nOwnFaces(); ++f) {
      if (mesh.neighbour[f] < 0)
        mesh.facePatch[f] = labelOfFace[f] < 0 ? unnamed : static_cast<int>(labelOfFace[f]);
    }
  }

  /// Collective. Puts the numbers in the mesh in place of the node tags of periodic surfaces.
  void PutNodesOfMesh(BlockRanges const& nodes, std::vector<std::int64_t> const& numberOfNode) {
    std::vector<std::int64_t> known = periodicNode_;
    known.erase(std::remove(known.begin(), known.end(), -1), known.end());
    known = FetchItems<std::int64_t>(communicator_, nodes, known, [&](std::int64_t own) {
      return numberOfNode[static_cast<std::size_t>(own)];
    });
    std::size_t next = 0, nextKnown = 0;
    auto const number = [&] { return periodicNode_[next++] < 0 ? -1 : known[nextKnown++]; };
    for (GmshPeriodicSurface& surface : content_.periodicSurfaces) {
      for (auto& [node, master] : surface.nodeTags) {
        node = number();
        master = number();
      }
    }
    periodicNode_ = {};
  }

  MpiCommunicator const& communicator_;
  std::string const& file_;
  std::shared_ptr<GmshBlockReader> reader_;
  GmshContent content_;

  CellSlab slab_;                      // with node tags until NumberNodes
  std::vector<std::int64_t> nodeTag_;  // of the own block of nodes

  BlockRanges surfaces_;
  std::vector<std::int64_t> physical_;  // of own surface elements
  std::set<std::int64_t> physicals_;
  std::vector<std::size_t> surfaceStart_ = {0};  // as faceStart
  std::vector<std::int64_t> surfaceNode_;

  bool isPeriodic_ = false;
  std::vector<std::int64_t> periodicNode_;  // on rank 0: pair after pair of the periodic surfaces
};

}  // namespace

bool HasGmshSlabs(std::string const& file) { return IsBinaryGmsh(file); }

MeshSlab ReadGmshSlab(MpiCommunicator const& communicator, std::string const& file) {
  return SlabReader(communicator, file).Read();
}

}  // namespace reference_host
