#include <mpi.h>

#include <algorithm>
#include <cstddef>
#include <map>
#include <memory>
#include <string>
#include <utility>

#include "reference_host/cgns/CgnsConditions.h"
#include "reference_host/cgns/CgnsElement.h"
#include "reference_host/mesh/MessageText.h"
#include "reference_host/parallel/MpiAgreement.h"
#include "reference_host/slabs/MpiLists.h"
#include "reference_host/slabs/MpiRounds.h"
#include "reference_host/slabs/SlabNaming.h"
#include "reference_host/slabs/cgns/CgnsSlabTopology.h"

namespace reference_host {
namespace {

/// Collective. Calls take(place, member) on every rank for the members of a list, which rank 0 reads and sends to the
/// others in pieces; after each piece, calls finish().
template <class Take, class Finish>
void ForEachMember(MpiCommunicator const& communicator, CgnsFile const& file, CgnsCondition const& condition,
                   Take const& take, Finish const& finish) {
  std::vector<std::int64_t> list, piece;
  RunTogether(communicator, [&] {
    if (communicator.rank() == 0) list = ReadCgnsMembers(file, condition);
  });
  constexpr auto kPiece = static_cast<std::int64_t>(kItemsOfRound);
  for (std::int64_t begin = 0; begin < condition.listSize; begin += kPiece) {
    std::int64_t const n = std::min(kPiece, condition.listSize - begin);
    piece.assign(static_cast<std::size_t>(n), 0);
    if (communicator.rank() == 0) std::copy_n(list.begin() + begin, n, piece.begin());
    MPI_Bcast(piece.data(), static_cast<int>(n), MPI_INT64_T, 0, communicator.get());
    for (std::int64_t i = 0; i < n; ++i) take(begin + i, piece[static_cast<std::size_t>(i)]);
    finish();
  }
}

/// The boundary faces of this rank by their nodes, for conditions that are sets of nodes.
class BoundaryNodes {
 public:
  /// Collective.
  BoundaryNodes(MpiCommunicator const& communicator, MeshSlab const& mesh,
                std::vector<std::size_t> const& boundaryFaces)
      : mesh_(mesh) {
    for (std::size_t const f : boundaryFaces)
      ForEachNode(f, [this](std::int64_t node) { node_.push_back(node); });
    std::sort(node_.begin(), node_.end());
    node_.erase(std::unique(node_.begin(), node_.end()), node_.end());
    CountFaces(communicator, boundaryFaces);
    PlaceFaces(boundaryFaces);
    positionOfNode_.assign(node_.size(), 0);
    memberSince_.assign(node_.size(), 0);
  }

  void BeginSet() {
    newMembers_.clear();
    ++round_;
  }

  /// Adds nodes first .. last of the file, counted from 1.
  /// @param[in] position  of the first among the members
  void Add(std::int64_t first, std::int64_t last, std::int64_t position) {
    auto const begin = std::lower_bound(nodeInFile_.begin(), nodeInFile_.end(), first);
    for (auto at = begin; at != nodeInFile_.end() && *at <= last; ++at) {
      auto const n = static_cast<std::size_t>(at - nodeInFile_.begin());
      if (memberSince_[n] == round_) continue;
      memberSince_[n] = round_;
      positionOfNode_[n] = position + (*at - first);
      newMembers_.push_back(n);
    }
  }

  /// Calls visit(face, position) for the faces all of whose nodes are in the set, ordered by `position`, that of the
  /// node that they are listed under.
  template <class Visit>
  void ForEachFaceOfSet(Visit const& visit) const {
    for (std::size_t const n : newMembers_) {
      for (std::size_t i = faceStart_[n]; i < faceStart_[n + 1]; ++i) {
        if (HasAllMembers(face_[i])) visit(face_[i], positionOfNode_[n]);
      }
    }
  }

 private:
  template <class Visit>
  void ForEachNode(std::size_t f, Visit const& visit) const {
    for (std::size_t i = mesh_.faceStart[f]; i < mesh_.faceStart[f + 1]; ++i) visit(mesh_.faceNode[i]);
  }

  std::size_t PlaceOf(std::int64_t node) const {
    return static_cast<std::size_t>(std::lower_bound(node_.begin(), node_.end(), node) - node_.begin());
  }

  /// Counts the boundary faces of all ranks at the own boundary nodes, and gets the numbers of these in the file.
  void CountFaces(MpiCommunicator const& communicator, std::vector<std::size_t> const& boundaryFaces) {
    nFacesOfNode_.assign(node_.size(), 0);
    for (std::size_t const f : boundaryFaces) {
      ForEachNode(f, [this](std::int64_t node) { ++nFacesOfNode_[PlaceOf(node)]; });
    }
    struct Count {
      std::int64_t node, nFaces;
    };
    std::int64_t const first = mesh_.nodes.First(communicator.rank());
    std::vector<std::int64_t> nFaces(mesh_.points.size(), 0);
    InRounds(communicator, node_.size(), [&](std::size_t begin, std::size_t end) {
      RankLists<Count> const counts =
          SwapLists(communicator, ListsByRank<Count>(
                                      communicator.size(), end - begin,
                                      [&](std::size_t i) { return mesh_.nodes.BlockOf(node_[begin + i]); },
                                      [&](std::size_t i) {
                                        return Count{node_[begin + i], nFacesOfNode_[begin + i]};
                                      }));
      for (Count const& count : counts.items)
        nFaces[static_cast<std::size_t>(count.node - first)] += count.nFaces;
    });
    nodeInFile_.resize(node_.size());
    FetchInRounds<Count>(
        communicator, mesh_.nodes, node_,
        [&](std::int64_t own) {
          return Count{mesh_.names.nodeNumber(first + own), nFaces[static_cast<std::size_t>(own)]};
        },
        [this](std::size_t i, Count const& count) {
          nodeInFile_[i] = count.node;
          nFacesOfNode_[i] = count.nFaces;
        });
  }

  /// Lists every face under the one of its nodes that has the fewest boundary faces. A set of nodes then visits few
  /// faces besides its own, even if many meet in one node.
  void PlaceFaces(std::vector<std::size_t> const& boundaryFaces) {
    auto const forEachPlace = [&](auto const& visit) {
      for (std::size_t const f : boundaryFaces) {
        if (mesh_.faceStart[f + 1] == mesh_.faceStart[f]) continue;
        std::size_t best = PlaceOf(mesh_.faceNode[mesh_.faceStart[f]]);
        ForEachNode(f, [&](std::int64_t node) {
          std::size_t const n = PlaceOf(node);
          if (nFacesOfNode_[n] < nFacesOfNode_[best]) best = n;
        });
        visit(f, best);
      }
    };
    faceStart_.assign(node_.size() + 1, 0);
    forEachPlace([this](std::size_t, std::size_t n) { ++faceStart_[n + 1]; });
    for (std::size_t n = 0; n < node_.size(); ++n) faceStart_[n + 1] += faceStart_[n];
    face_.resize(faceStart_.back());
    std::vector<std::size_t> next(faceStart_.begin(), faceStart_.end() - 1);
    forEachPlace([&](std::size_t f, std::size_t n) { face_[next[n]++] = f; });
  }

  bool HasAllMembers(std::size_t f) const {
    bool all = true;
    ForEachNode(f, [&](std::int64_t node) { all = all && memberSince_[PlaceOf(node)] == round_; });
    return all;
  }

  MeshSlab const& mesh_;
  std::vector<std::int64_t> node_;          // of the mesh, ascending; the rest of the lists is by place here
  std::vector<std::int64_t> nodeInFile_;    // ascending, too
  std::vector<std::int64_t> nFacesOfNode_;  // boundary faces of all ranks
  std::vector<std::size_t> faceStart_;      // into face_
  std::vector<std::size_t> face_;
  std::vector<int> memberSince_;  // the round of the last set that has the node
  std::vector<std::int64_t> positionOfNode_;
  std::vector<std::size_t> newMembers_;
  int round_ = 0;
};

/// Assigns every boundary face to a patch: by a condition, by the section of its surface element, or "unnamed". All
/// ranks go through the same conditions and make the same patches; each has its own faces.
class SlabPatchAssigner {
 public:
  SlabPatchAssigner(MpiCommunicator const& communicator, CgnsFile const& file,
                    std::vector<CgnsSection> const& sections, CgnsSlabTopology& topology)
      : communicator_(communicator),
        file_(file),
        sections_(sections),
        topology_(topology),
        mesh_(topology.mesh) {
    for (std::size_t f = 0; f < mesh_.nOwnFaces(); ++f) {
      if (mesh_.neighbour[f] >= 0) continue;
      boundaryFaces_.push_back(f);
      if (topology_.elementOfFace[f] >= 0) faceOfElement_.emplace_back(topology_.elementOfFace[f], f);
    }
    std::sort(faceOfElement_.begin(), faceOfElement_.end());
  }

  /// Collective.
  void Assign() {
    CountSurfaces();
    std::vector<CgnsCondition> conditions;
    RunTogether(communicator_, [&] { conditions = ReadCgnsConditions(file_, sections_.back().last); });
    std::vector<int> patchOfCondition;
    patchOfCondition.reserve(conditions.size());
    for (CgnsCondition const& condition : conditions) patchOfCondition.push_back(PatchOf(condition));
    for (std::size_t c = 0; c < conditions.size(); ++c) {
      if (conditions[c].byNodes) {
        AssignByNodes(conditions[c], patchOfCondition[c]);
      } else {
        AssignByElements(conditions[c], patchOfCondition[c]);
      }
    }
    AssignBySection();
    AssignUnnamed();
  }

 private:
  int PatchCalled(std::string const& name) {
    auto const [known, isNew] = patchOfName_.emplace(name, static_cast<int>(mesh_.patches.size()));
    if (isNew) mesh_.patches.push_back({name, "", {}});
    return known->second;
  }

  int PatchOf(CgnsCondition const& condition) {
    std::size_t const nBefore = mesh_.patches.size();
    int const p = PatchCalled(condition.patchName);
    Patch& patch = mesh_.patches[static_cast<std::size_t>(p)];
    if (mesh_.patches.size() > nBefore) patch.type = condition.patchType;
    if (patch.type != condition.patchType) {
      file_.Fail("boundary condition " + Quoted(condition.name) + " of type " + condition.patchType +
                 " belongs to " + Quoted(patch.name) + ", and so does one of type " + patch.type);
    }
    return p;
  }

  // What is wrong with a condition is noted with the position of the member that shows it. The first position of all
  // ranks is reported.

  enum class Fault : int { NoSurface, SecondPatch, TooManyMembers };
  struct FaultAtMember {
    std::int64_t position = kNoNumber;
    Fault kind = Fault::NoSurface;
    std::int64_t element = 0;  ///< that is no surface
    std::size_t face = 0;      ///< that has a patch already
    int patch = 0;             ///< which it should get
  };

  void Note(FaultAtMember const& fault) {
    if (fault.position < fault_.position) fault_ = fault;
  }

  void Give(std::size_t face, int patch, std::int64_t position) {
    int& held = mesh_.facePatch[face];
    if (held >= 0 && held != patch) {
      Note({position, Fault::SecondPatch, 0, face, patch});
    } else {
      held = patch;
    }
  }

  /// Collective. Throws if any rank has noted a fault.
  void ReportFault(CgnsCondition const& condition) {
    FirstOfAll const first = FindFirst(communicator_, fault_.position);
    if (first.number == kNoNumber) return;
    bool const isHere = communicator_.rank() == first.rank;
    auto kind = static_cast<int>(fault_.kind);
    MPI_Bcast(&kind, 1, MPI_INT, first.rank, communicator_.get());
    std::string const subject = "boundary condition " + Quoted(condition.name);
    switch (static_cast<Fault>(kind)) {
      case Fault::TooManyMembers:
        file_.Fail(subject + " and those before it have ranges that overlap too often");
      case Fault::NoSurface:
        MPI_Bcast(&fault_.element, 1, MPI_INT64_T, first.rank, communicator_.get());
        file_.Fail(subject + " has element " + std::to_string(fault_.element) +
                   ", which is not a surface element");
      case Fault::SecondPatch:
        break;
    }
    FaceInQuestion face;
    std::string patches;
    if (isHere) {
      auto const begin = mesh_.faceNode.begin();
      face = {mesh_.NumberOfFace(fault_.face, communicator_.rank()),
              {begin + static_cast<std::ptrdiff_t>(mesh_.faceStart[fault_.face]),
               begin + static_cast<std::ptrdiff_t>(mesh_.faceStart[fault_.face + 1])},
              mesh_.owner[fault_.face]};
      auto const nameOf = [this](int p) { return Quoted(mesh_.patches[static_cast<std::size_t>(p)].name); };
      patches = nameOf(mesh_.facePatch[fault_.face]) + " and of " + nameOf(fault_.patch);
    }
    std::string const name =
        SlabNaming(communicator_, mesh_).Face(BroadcastFace(communicator_, first.rank, face));
    file_.Fail(name + " belongs to boundary conditions of " + ShareText(communicator_, first.rank, patches));
  }

  void AssignByElements(CgnsCondition const& condition, int patch) {
    if (condition.isRange) {
      CountMembers(condition);
      NoteFirstWithoutSurface(condition.first, condition.last, condition.first);
      auto at = FirstFaceFrom(condition.first);
      for (; at != faceOfElement_.end() && at->first <= condition.last; ++at) {
        Give(at->second, patch, 2 * (at->first - condition.first));
      }
      ReportFault(condition);
      return;
    }
    ForEachMember(
        communicator_, file_, condition,
        [&](std::int64_t place, std::int64_t element) {
          NoteFirstWithoutSurface(element, element, element - place);
          auto const at = FirstFaceFrom(element);
          if (at != faceOfElement_.end() && at->first == element) Give(at->second, patch, 2 * place);
        },
        [&] { ReportFault(condition); });
  }

  using FaceIterator = std::vector<std::pair<std::int64_t, std::size_t>>::const_iterator;

  FaceIterator FirstFaceFrom(std::int64_t element) const {
    return std::lower_bound(faceOfElement_.begin(), faceOfElement_.end(), std::pair(element, std::size_t{0}));
  }

  /// Notes the first of the elements that is no surface element, or not one of those that this rank has read.
  /// @param[in] origin  the element whose position is 0
  void NoteFirstWithoutSurface(std::int64_t first, std::int64_t last, std::int64_t origin) {
    auto const note = [&](std::int64_t element) {
      Note({2 * (element - origin), Fault::NoSurface, element, 0, 0});
    };
    auto section =
        std::lower_bound(sections_.begin(), sections_.end(), first,
                         [](CgnsSection const& one, std::int64_t wanted) { return one.last < wanted; });
    std::int64_t next = first;
    for (; next <= last; next = section->last + 1, ++section) {
      if (section == sections_.end() || section->first > next) return note(next);
      CgnsRole const role = RoleOfCgnsType(section->type);
      if (role == CgnsRole::Mixed) {
        auto const s = static_cast<std::size_t>(section - sections_.begin());
        auto const [ownBegin, ownEnd] = topology_.ownElements[s];
        std::int64_t const missing =
            FirstNotInMixed(std::max(next, ownBegin), std::min({last + 1, section->last + 1, ownEnd}));
        if (missing >= 0) return note(missing);
      } else if (role != CgnsRole::Surface && !IsCgnsPolygons(*section)) {
        return note(next);
      }
    }
  }

  /// The first of begin .. end - 1 that is no surface element; -1: none.
  std::int64_t FirstNotInMixed(std::int64_t begin, std::int64_t end) const {
    std::vector<std::int64_t> const& surfaces = topology_.surfacesOfMixed;
    auto at = std::lower_bound(surfaces.begin(), surfaces.end(), begin);
    for (std::int64_t element = begin; element < end; ++element, ++at) {
      if (at == surfaces.end() || *at != element) return element;
    }
    return -1;
  }

  /// Collective. The surface elements of all ranks.
  void CountSurfaces() {
    nItems_ = SumOverRanks(communicator_, static_cast<std::int64_t>(topology_.surfacesOfMixed.size())) +
              file_.nNodes();
    for (CgnsSection const& section : sections_) {
      bool const isSurface = RoleOfCgnsType(section.type) == CgnsRole::Surface || IsCgnsPolygons(section);
      if (isSurface) nItems_ += section.size();
    }
  }

  /// A range takes only a few bytes, so a file could have many that all span the whole mesh.
  void CountMembers(CgnsCondition const& condition) {
    std::int64_t const n = condition.last - condition.first + 1, most = 16 * nItems_ - nMembersOfRanges_;
    // Behind what else may be wrong with the same member.
    if (n > most) Note({2 * most + 1, Fault::TooManyMembers, 0, 0, 0});
    nMembersOfRanges_ += n;
  }

  void AssignByNodes(CgnsCondition const& condition, int patch) {
    if (!nodes_) nodes_ = std::make_unique<BoundaryNodes>(communicator_, mesh_, boundaryFaces_);
    nodes_->BeginSet();
    if (condition.isRange) {
      CountMembers(condition);
      ReportFault(condition);
      nodes_->Add(condition.first, condition.last, 0);
    } else {
      ForEachMember(
          communicator_, file_, condition,
          [&](std::int64_t place, std::int64_t node) {
            CheckNode(condition, node);
            nodes_->Add(node, node, place);
          },
          [] {});
    }
    nodes_->ForEachFaceOfSet(
        [&](std::size_t face, std::int64_t position) { Give(face, patch, 2 * position); });
    ReportFault(condition);
  }

  void CheckNode(CgnsCondition const& condition, std::int64_t node) const {
    if (node >= 1 && node <= file_.nNodes()) return;
    file_.Fail("boundary condition " + Quoted(condition.name) + " has node " + std::to_string(node) +
               ", but there are " + std::to_string(file_.nNodes()));
  }

  void AssignBySection() {
    std::vector<char> needsPatch(sections_.size(), 0);
    auto const forEachFace = [this](auto const& visit) {
      for (auto const& [element, face] : faceOfElement_) {
        if (mesh_.facePatch[face] < 0) visit(face, SectionOf(element));
      }
    };
    forEachFace([&](std::size_t, std::size_t s) { needsPatch[s] = 1; });
    MPI_Allreduce(MPI_IN_PLACE, needsPatch.data(), static_cast<int>(needsPatch.size()), MPI_CHAR, MPI_MAX,
                  communicator_.get());
    std::vector<int> patchOfSection(sections_.size(), -1);
    for (std::size_t s = 0; s < sections_.size(); ++s) {
      if (needsPatch[s] != 0) patchOfSection[s] = PatchCalled(sections_[s].name);
    }
    forEachFace([&](std::size_t face, std::size_t s) { mesh_.facePatch[face] = patchOfSection[s]; });
  }

  /// @pre the element is in a section
  std::size_t SectionOf(std::int64_t element) const {
    auto const section =
        std::lower_bound(sections_.begin(), sections_.end(), element,
                         [](CgnsSection const& one, std::int64_t wanted) { return one.last < wanted; });
    return static_cast<std::size_t>(section - sections_.begin());
  }

  void AssignUnnamed() {
    std::int64_t nUnnamed = 0;
    for (std::size_t const f : boundaryFaces_) nUnnamed += mesh_.facePatch[f] < 0 ? 1 : 0;
    if (SumOverRanks(communicator_, nUnnamed) == 0) return;
    int const unnamed = PatchCalled("unnamed");
    for (std::size_t const f : boundaryFaces_) {
      if (mesh_.facePatch[f] < 0) mesh_.facePatch[f] = unnamed;
    }
  }

  MpiCommunicator const& communicator_;
  CgnsFile const& file_;
  std::vector<CgnsSection> const& sections_;
  CgnsSlabTopology& topology_;
  MeshSlab& mesh_;
  std::vector<std::size_t> boundaryFaces_;                           // own
  std::vector<std::pair<std::int64_t, std::size_t>> faceOfElement_;  // own, by ascending element
  std::map<std::string, int> patchOfName_;
  std::int64_t nItems_ = 0;  // surface elements and nodes of the whole mesh
  std::int64_t nMembersOfRanges_ = 0;
  FaultAtMember fault_;
  std::unique_ptr<BoundaryNodes> nodes_;
};

}  // namespace

void AssignCgnsSlabPatches(MpiCommunicator const& communicator, CgnsFile const& file,
                           std::vector<CgnsSection> const& sections, CgnsSlabTopology& topology) {
  SlabPatchAssigner(communicator, file, sections, topology).Assign();
}

}  // namespace reference_host
