#include "reference_host/openfoam/PolyMeshReader.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <limits>
#include <map>
#include <optional>
#include <set>
#include <system_error>

#include "reference_host/mesh/MeshError.h"
#include "reference_host/mesh/MeshNames.h"
#include "reference_host/mesh/MessageText.h"
#include "reference_host/openfoam/FoamFile.h"
#include "reference_host/openfoam/FoamList.h"

namespace reference_host {
namespace {

constexpr std::int64_t kIntEnd = std::numeric_limits<int>::max();

/// Cell numbers of at most nFaces faces. A mesh of very few cells may have "N{n}", N equal numbers.
std::vector<int> ReadCellNumbers(FoamFile& file, std::int64_t nFaces) {
  return ReadFoamLabels<int>(file.Text(), file.Format(), "cell number", nFaces, {"cell", 0, kIntEnd})
      .WrittenOut();
}

// N ((x y z) (x y z) ...)
void ReadTextPoints(TextCursor& text, FaceMesh& mesh) {
  ReadFoamList(text, "the number of points", [&] {
    Point point{};
    text.Expect('(');
    for (double& x : point) x = text.Real("a coordinate");
    text.Expect(')');
    mesh.points.push_back(point);
  });
}

void ReadBinaryPoints(FoamFile& file, FaceMesh& mesh) {
  std::int64_t const n = ReadFoamLength(file.Text(), "point", kIntEnd);
  BinaryNumbers const numbers(file.Text(), 3 * static_cast<std::size_t>(n), file.Format().scalarBytes);
  mesh.points.resize(numbers.size() / 3);
  std::size_t i = 0;
  for (Point& point : mesh.points) {
    for (double& x : point) x = numbers.Real(i++);
  }
}

void ReadPoints(std::string const& folder, FaceMesh& mesh) {
  FoamFile file(folder, "points");
  if (file.Format().isBinary) {
    ReadBinaryPoints(file, mesh);
  } else {
    ReadTextPoints(file.Text(), mesh);
  }
  if (mesh.points.size() > static_cast<std::size_t>(kIntEnd))
    file.Text().Fail("more points than an int can count");
}

FoamRange PointsOf(FaceMesh const& mesh) {
  return {"point", 0, static_cast<std::int64_t>(mesh.points.size())};
}

// N (n(node node ...) n(node node ...) ...)
void ReadFaceRows(FoamFile& file, FaceMesh& mesh) {
  TextCursor& text = file.Text();
  FoamRange const points = PointsOf(mesh);
  auto const takeNode = [&mesh](std::int64_t node) { mesh.faceNode.push_back(static_cast<int>(node)); };
  ReadFoamList(text, "the number of faces", [&] {
    if (file.Format().isBinary) {
      ReadBinaryLabels(text, file.Format(), ReadFoamLength(text, "node", kIntEnd), points, takeNode);
    } else {
      ReadFoamList(text, "the number of nodes of a face", [&] { takeNode(points.Read(text)); });
    }
    mesh.faceStart.push_back(mesh.faceNode.size());
  });
}

/// Appends the integers of "N (i i ...)", text or binary, each of which check(integer) has seen before.
/// @param[in] what  the length, for messages
template <class Integer, class Check>
void ReadLabels(FoamFile& file, char const* what, FoamRange const& range, std::vector<Integer>& to,
                Check const& check) {
  TextCursor& text = file.Text();
  auto const take = [&](std::int64_t number) {
    check(number);
    to.push_back(static_cast<Integer>(number));
  };
  if (file.Format().isBinary) {
    std::size_t const n = text.Count(what, static_cast<std::size_t>(file.Format().labelBytes));
    to.reserve(n);
    ReadBinaryLabels(text, file.Format(), static_cast<std::int64_t>(n), range, take);
  } else {
    ReadFoamList(text, what, [&] { take(range.Read(text)); });
  }
}

// N+1 (start of each face in the second list, and its length)   M (node node ...)
void ReadCompactFaces(FoamFile& file, FaceMesh& mesh) {
  TextCursor& text = file.Text();
  constexpr FoamRange kAnyStart = {"the start of a face", std::numeric_limits<std::int64_t>::min(),
                                   std::numeric_limits<std::int64_t>::max()};
  char const* const mustRise = "the starts of the faces must begin with 0 and ascend";
  mesh.faceStart.clear();
  ReadLabels(file, "the number of face starts", kAnyStart, mesh.faceStart, [&](std::int64_t start) {
    bool const rises =
        mesh.faceStart.empty() ? start == 0 : start >= static_cast<std::int64_t>(mesh.faceStart.back());
    if (!rises) text.Fail(mustRise);
  });
  if (mesh.faceStart.empty()) text.Fail(mustRise);
  ReadLabels(file, "the number of nodes of all faces", PointsOf(mesh), mesh.faceNode, [](std::int64_t) {});
  if (mesh.faceStart.back() != mesh.faceNode.size()) {
    text.Fail("the last face ends at " + std::to_string(mesh.faceStart.back()) + " of " +
              std::to_string(mesh.faceNode.size()) + " nodes");
  }
}

void ReadFaces(std::string const& folder, FaceMesh& mesh) {
  FoamFile file(folder, "faces");
  if (file.ClassName() == "faceCompactList") {
    ReadCompactFaces(file, mesh);
  } else {
    ReadFaceRows(file, mesh);
  }
  if (mesh.faceStart.size() > static_cast<std::size_t>(kIntEnd)) {
    file.Text().Fail("more faces than an int can count");
  }
}

/// No file has the number of cells (except in a note); it follows from the highest number in owner or
/// neighbour.
void CountCells(std::string const& folder, FaceMesh& mesh) {
  std::int64_t nCells = 0;
  for (std::vector<int> const* cells : {&mesh.owner, &mesh.neighbour}) {
    for (int const cell : *cells) nCells = std::max(nCells, std::int64_t{cell} + 1);
  }
  // A cell has at least four faces. This check comes before tables are allocated by a number that may be
  // nonsense.
  std::size_t const nSides = mesh.owner.size() + mesh.neighbour.size();
  if (4 * static_cast<std::size_t>(nCells) > nSides) {
    throw MeshError(folder + ": owner and neighbour name cell " + std::to_string(nCells - 1) + ", but " +
                    std::to_string(mesh.owner.size()) + " faces cannot close that many cells");
  }
  mesh.nCells = static_cast<int>(nCells);
}

void ReadCells(std::string const& folder, FaceMesh& mesh) {
  int const nFaces = static_cast<int>(mesh.faceStart.size()) - 1;
  FoamFile owner(folder, "owner");
  mesh.owner = ReadCellNumbers(owner, nFaces);
  if (mesh.nFaces() != nFaces) {
    owner.Text().Fail(std::to_string(mesh.nFaces()) + " owners of " + std::to_string(nFaces) + " faces");
  }
  FoamFile neighbour(folder, "neighbour");
  mesh.neighbour = ReadCellNumbers(neighbour, nFaces);
  CountCells(folder, mesh);
}

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

/// Rejects a patch whose faces are not among the boundary faces firstFace .. endFace-1.
void CheckRange(FoamFile const& file, BoundaryEntry const& entry, std::int64_t firstFace,
                std::int64_t endFace) {
  PatchFaces const& faces = entry.faces;
  if (faces.count == 0) return;
  if (faces.first >= firstFace && faces.first < endFace && faces.count <= endFace - faces.first) return;
  throw MeshError(file.Name() + ": patch " + Quoted(entry.patch.name) + " has " +
                  std::to_string(faces.count) + " faces from " + std::to_string(faces.first) +
                  " on, but boundary faces are " + std::to_string(firstFace) + " to " +
                  std::to_string(endFace - 1));
}

/// Assigns faces to the last patch.
void ClaimFaces(FoamFile const& file, PatchFaces const& faces, FaceMesh& mesh) {
  int const patch = static_cast<int>(mesh.patches.size()) - 1;
  for (std::int64_t f = faces.first; f < faces.first + faces.count; ++f) {
    if (mesh.facePatch[f] >= 0) {
      throw MeshError(file.Name() + ": patch " + Quoted(mesh.patches[patch].name) + " and patch " +
                      Quoted(mesh.patches[mesh.facePatch[f]].name) + " both have face " + std::to_string(f));
    }
    mesh.facePatch[f] = patch;
  }
}

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
  CyclicPairs(FoamFile const& file, FaceMesh& mesh, std::vector<BoundaryEntry> const& entries)
      : file_(file), mesh_(mesh), entries_(entries) {
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
      mesh_.patches[p].partners = {partner};
      if (static_cast<int>(p) < partner) AddPeriod(static_cast<int>(p), partner);
    }
  }

 private:
  [[noreturn]] void Fail(int patch, std::string const& what) const {
    throw MeshError(file_.Name() + ": patch " + Quoted(mesh_.patches[patch].name) + " " + what);
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
    Period& period = mesh_.periods.emplace_back();
    period.patch = first;
    period.partner = second;
    period.name = "cyclic patch " + Quoted(a.patch.name);
    if (a.cyclic.transform == "rotational" || b.cyclic.transform == "rotational")
      period.refusal = "is rotational";
    period.tolerance = a.cyclic.tolerance;
    period.vector = a.cyclic.separation;
    for (std::int64_t k = 0; k < a.faces.count; ++k) {
      period.faces.emplace_back(static_cast<int>(a.faces.first + k), static_cast<int>(b.faces.first + k));
    }
  }

  FoamFile const& file_;
  FaceMesh& mesh_;
  std::vector<BoundaryEntry> const& entries_;
  std::map<std::string, int> byName_;                // of the cyclic patches
  std::map<std::string, std::vector<int>> byGroup_;  // of the cyclic patches
};

void ReadBoundary(std::string const& folder, PolyMesh& polyMesh) {
  FoamFile file(folder, "boundary");
  FaceMesh& mesh = polyMesh.mesh;
  int const nInner = static_cast<int>(mesh.neighbour.size());
  mesh.neighbour.resize(mesh.owner.size(), -1);
  mesh.facePatch.assign(mesh.owner.size(), -1);
  std::vector<BoundaryEntry> entries;
  ReadPatches(file, [&](BoundaryEntry const& entry) {
    entries.push_back(entry);
    mesh.patches.push_back(entry.patch);
    polyMesh.facesOfPatch.push_back(entry.faces);
    CheckRange(file, entry, nInner, mesh.nFaces());
    ClaimFaces(file, entry.faces, mesh);
  });
  for (int f = nInner; f < mesh.nFaces(); ++f) {
    if (mesh.facePatch[f] < 0)
      throw MeshError(file.Name() + ": face " + std::to_string(f) + " is in no patch");
  }
  CyclicPairs(file, mesh, entries).Find();
}

/// One file is enough: the reader then reports which of the others is missing.
bool LooksLikePolyMesh(std::filesystem::path const& folder) {
  std::error_code ignored;
  for (char const* const name : {"points", "points.gz", "faces", "faces.gz", "owner", "owner.gz"}) {
    if (std::filesystem::is_regular_file(folder / name, ignored)) return true;
  }
  return false;
}

}  // namespace

PolyMesh ReadPolyMeshWithPatches(std::string const& folder) {
  PolyMesh polyMesh;
  ReadPoints(folder, polyMesh.mesh);
  ReadFaces(folder, polyMesh.mesh);
  ReadCells(folder, polyMesh.mesh);
  ReadBoundary(folder, polyMesh);
  polyMesh.mesh.names = PolyMeshNames();
  return polyMesh;
}

FaceMesh ReadPolyMesh(std::string const& folder) { return ReadPolyMeshWithPatches(folder).mesh; }

PolyMeshBoundary BoundaryOf(FaceMesh const& mesh) {
  PolyMeshBoundary boundary;
  boundary.patches = mesh.patches;
  boundary.facesOfPatch.resize(mesh.patches.size());
  for (int const patch : mesh.facePatch) {
    if (patch >= 0) ++boundary.facesOfPatch[patch].count;
  }
  std::vector<std::int64_t> next;
  std::int64_t nFaces = 0;
  for (PatchFaces& faces : boundary.facesOfPatch) {
    next.push_back(faces.first = nFaces);
    nFaces += faces.count;
  }
  boundary.owner.resize(static_cast<std::size_t>(nFaces));
  for (int f = 0; f < mesh.nFaces(); ++f) {
    if (mesh.facePatch[f] >= 0) {
      boundary.owner[next[mesh.facePatch[f]]++] = mesh.owner[f];
    } else if (mesh.neighbour[f] < 0) {
      boundary.owner.push_back(mesh.owner[f]);
    }
  }
  return boundary;
}

std::string FindPolyMesh(std::string const& folder) {
  std::filesystem::path const path(folder);
  for (std::filesystem::path const& candidate : {path, path / "constant" / "polyMesh", path / "polyMesh"}) {
    if (LooksLikePolyMesh(candidate)) return candidate.string();
  }
  return {};
}

}  // namespace reference_host
