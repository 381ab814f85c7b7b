#include "reference_host/openfoam/PolyMeshPatches.h"

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <map>
#include <optional>
#include <set>
#include <utility>

#include "reference_host/mesh/MeshError.h"
#include "reference_host/mesh/MessageText.h"
#include "reference_host/openfoam/FoamFile.h"
#include "reference_host/openfoam/FoamList.h"

namespace reference_host {
namespace {

/// What the entry of a patch of type cyclic says of the patch beyond the period.
struct CyclicEntry {
  std::string neighbourPatch;
  std::string coupleGroup;  ///< a name that two patches have, instead of neighbourPatch
  std::string transform;
  std::optional<Point> separation;
  double tolerance = 1e-4;  ///< OpenFOAM's own default
};

/// The entry of one patch in the file boundary.
struct BoundaryEntry {
  Patch patch;
  PatchFaces faces = {-1, -1};
  CyclicEntry cyclic;
};

std::string ReadPatchName(TextCursor& text, char const* what) {
  return std::string(text.Peek() == '"' ? text.QuotedString(what) : text.Name(what));
}

Point ReadVector(TextCursor& text, char const* what) {
  Point vector{};
  text.Expect('(');
  for (double& x : vector) x = text.Real(what);
  text.Expect(')');
  return vector;
}

void ReadCyclicEntry(TextCursor& text, std::string const& key, CyclicEntry& cyclic) {
  constexpr double kLargestTolerance = 0.1;  // of a face: beyond it, other faces would match, too
  if (text.Peek() == '{') return;            // a dictionary of something else
  if (key == "neighbourPatch") cyclic.neighbourPatch = ReadPatchName(text, "the name of a patch");
  if (key == "coupleGroup") cyclic.coupleGroup = ReadPatchName(text, "the name of a group");
  if (key == "transform") cyclic.transform = std::string(text.Word("a kind of transform"));
  if (key == "separationVector") cyclic.separation = ReadVector(text, "a component of separationVector");
  if (key == "matchTolerance") {
    double const tolerance = text.Real("matchTolerance");
    if (tolerance > 0.0) cyclic.tolerance = std::min(tolerance, kLargestTolerance);
  }
}

// name { type wall; nFaces 10; startFace 20; ... }
BoundaryEntry ReadPatch(FoamFile& file) {
  TextCursor& text = file.Text();
  BoundaryEntry entry;
  entry.patch.name = ReadPatchName(text, "a patch name");
  std::string const& name = entry.patch.name;
  text.Expect('{');
  for (std::string key = file.Keyword(); !key.empty(); key = file.Keyword()) {
    if (key == "nFaces") entry.faces.count = text.Integer("the number of faces of a patch");
    if (key == "startFace") entry.faces.first = text.Integer("the first face of a patch");
    if (key == "myProcNo") entry.faces.processor = text.Integer("the number of a processor");
    if (key == "neighbProcNo") entry.faces.neighbour = text.Integer("the number of a processor");
    if (key == "referPatch") entry.faces.referPatch = ReadPatchName(text, "the name of a patch");
    ReadCyclicEntry(text, key, entry.cyclic);
    std::string const value = file.Value();
    if (key == "type") entry.patch.type = value;
  }
  if (name.empty() || entry.patch.type.empty() || entry.faces.count < 0 || entry.faces.first < 0) {
    text.Fail("patch " + Quoted(name) + " needs a name, a type, nFaces and startFace");
  }
  return entry;
}

/// The patches that have claimed boundary faces so far.
class ClaimedFaces {
 public:
  /// @param[in] firstFace,endFace  the boundary faces are firstFace .. endFace-1
  ClaimedFaces(FoamFile const& file, std::int64_t firstFace, std::int64_t endFace)
      : file_(file), firstFace_(firstFace), endFace_(endFace) {}

  /// Rejects a patch whose faces are not at the boundary, or belong to another patch.
  void Add(BoundaryEntry const& entry) {
    PatchFaces const& faces = entry.faces;
    if (faces.count == 0) return;
    if (faces.first < firstFace_ || faces.first >= endFace_ || faces.count > endFace_ - faces.first) {
      throw MeshError(file_.Name() + ": patch " + Quoted(entry.patch.name) + " has " +
                      std::to_string(faces.count) + " faces from " + std::to_string(faces.first) +
                      " on, but boundary faces are " + std::to_string(firstFace_) + " to " +
                      std::to_string(endFace_ - 1));
    }
    auto other = byFirst_.upper_bound(faces.first);
    if (other != byFirst_.begin() && std::prev(other)->second.end > faces.first) --other;
    if (other != byFirst_.end() && other->first < faces.first + faces.count) {
      throw MeshError(file_.Name() + ": patch " + Quoted(entry.patch.name) + " and patch " +
                      Quoted(other->second.patch) + " both have face " +
                      std::to_string(std::max(faces.first, other->first)));
    }
    byFirst_[faces.first] = {faces.first + faces.count, entry.patch.name};
  }

  /// Rejects boundary faces without a patch.
  void CheckThatAll() const {
    std::int64_t next = firstFace_;
    for (auto const& [first, claim] : byFirst_) {
      if (first > next) break;
      next = claim.end;
    }
    if (next < endFace_) throw MeshError(file_.Name() + ": face " + std::to_string(next) + " is in no patch");
  }

 private:
  struct Claim {
    std::int64_t end;
    std::string patch;
  };

  FoamFile const& file_;
  std::int64_t firstFace_, endFace_;
  std::map<std::int64_t, Claim> byFirst_;  ///< by first face; no two overlap
};

// N (patch patch ...)
template <class TakePatch>
void ReadPatches(FoamFile& file, TakePatch const& takePatch) {
  TextCursor& text = file.Text();
  std::set<std::string> names;
  ReadFoamList(text, "the number of patches", [&] {
    BoundaryEntry const entry = ReadPatch(file);
    if (!names.insert(entry.patch.name).second) text.Fail("a second patch " + Quoted(entry.patch.name));
    takePatch(entry);
  });
}

/// Pairs the patches of type cyclic: each names the other, or both name the same group.
class CyclicPairs {
 public:
  CyclicPairs(FoamFile const& file, PolyMeshPatches& patches, std::vector<BoundaryEntry> const& entries)
      : file_(file), patches_(patches), entries_(entries) {
    for (std::size_t p = 0; p < entries.size(); ++p) {
      if (!IsCyclic(p)) continue;
      byName_[entries[p].patch.name] = static_cast<int>(p);
      byGroup_[entries[p].cyclic.coupleGroup].push_back(static_cast<int>(p));
    }
  }

  void Find() {
    for (std::size_t p = 0; p < entries_.size(); ++p) {
      int const partner = PartnerOf(static_cast<int>(p));
      if (partner < 0) continue;
      patches_.patches[p].partners = {partner};
      if (static_cast<int>(p) < partner) AddPeriod(static_cast<int>(p), partner);
    }
  }

 private:
  [[noreturn]] void Fail(int patch, std::string const& what) const {
    throw MeshError(file_.Name() + ": patch " + Quoted(patches_.patches[patch].name) + " " + what);
  }

  bool IsCyclic(std::size_t p) const { return entries_[p].patch.type == "cyclic"; }

  /// -1 for a patch that is not cyclic, or that names no partner.
  int PartnerOf(int p) const {
    CyclicEntry const& cyclic = entries_[p].cyclic;
    if (!IsCyclic(p) || (cyclic.neighbourPatch.empty() && cyclic.coupleGroup.empty())) return -1;
    int const partner = NamedBy(p);
    if (partner < 0 || partner == p || NamedBy(partner) != p) {
      bool const isByName = !cyclic.neighbourPatch.empty();
      Fail(p, "of type cyclic needs another cyclic patch " +
                  (isByName ? Quoted(cyclic.neighbourPatch) + " that names it in turn"
                            : "of the coupleGroup " + Quoted(cyclic.coupleGroup)));
    }
    return partner;
  }

  int NamedBy(int p) const {
    CyclicEntry const& cyclic = entries_[p].cyclic;
    if (!cyclic.neighbourPatch.empty()) {
      auto const found = byName_.find(cyclic.neighbourPatch);
      return found != byName_.end() ? found->second : -1;
    }
    std::vector<int> const& group = byGroup_.at(cyclic.coupleGroup);
    if (group.size() != 2) return -1;
    return group[0] == p ? group[1] : group[0];
  }

  void AddPeriod(int first, int second) {
    BoundaryEntry const& a = entries_[first];
    BoundaryEntry const& b = entries_[second];
    if (a.faces.count != b.faces.count) {
      Fail(first, "has " + std::to_string(a.faces.count) + " faces, its neighbourPatch " +
                      Quoted(b.patch.name) + " has " + std::to_string(b.faces.count));
    }
    CyclicFaces& cyclic = patches_.periods.emplace_back();
    cyclic.firstFace = a.faces.first;
    cyclic.firstPartner = b.faces.first;
    cyclic.count = a.faces.count;
    Period& period = cyclic.period;
    period.patch = first;
    period.partner = second;
    period.name = "cyclic patch " + Quoted(a.patch.name);
    if (a.cyclic.transform == "rotational" || b.cyclic.transform == "rotational")
      period.refusal = "is rotational";
    period.tolerance = a.cyclic.tolerance;
    period.vector = a.cyclic.separation;
  }

  FoamFile const& file_;
  PolyMeshPatches& patches_;
  std::vector<BoundaryEntry> const& entries_;
  std::map<std::string, int> byName_;                // of the cyclic patches
  std::map<std::string, std::vector<int>> byGroup_;  // of the cyclic patches
};

}  // namespace

PolyMeshPatches ReadPolyMeshPatches(std::string const& folder, std::int64_t firstFace, std::int64_t endFace) {
  FoamFile file(folder, "boundary");
  PolyMeshPatches patches;
  std::vector<BoundaryEntry> entries;
  ClaimedFaces claimed(file, firstFace, endFace);
  ReadPatches(file, [&](BoundaryEntry const& entry) {
    entries.push_back(entry);
    patches.patches.push_back(entry.patch);
    patches.facesOfPatch.push_back(entry.faces);
    claimed.Add(entry);
  });
  claimed.CheckThatAll();
  CyclicPairs(file, patches, entries).Find();
  return patches;
}

}  // namespace reference_host
