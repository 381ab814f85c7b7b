#include "reference_host/PolyMeshReader.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <set>
#include <vector>

#include "reference_host/FoamFile.h"
#include "reference_host/MeshError.h"

namespace reference_host {
namespace {

constexpr std::int64_t kIntEnd = std::numeric_limits<int>::max();

/// "N (item item ...)" or "(item item ...)"; readItem takes one item.
template <class ReadItem>
void ReadList(TextCursor& text, const char* what, const ReadItem& readItem) {
  const bool counted = text.Peek() != '(';
  const std::size_t announced = counted ? text.Count(what, 1) : 0;
  text.Expect('(');
  std::size_t n = 0;
  for (; !text.Accept(')'); ++n) readItem();
  if (counted && n != announced) {
    text.Fail(std::string(what) + " is " + std::to_string(announced) + ", but " + std::to_string(n) +
              " follow");
  }
}

int ReadNumber(TextCursor& text, const char* what, std::int64_t end) {
  const std::int64_t number = text.Integer(what);
  if (number < 0 || number >= end) {
    text.Fail(std::string(what) + " " + std::to_string(number) + " is not in 0 to " +
              std::to_string(end - 1));
  }
  return static_cast<int>(number);
}

/// A list of cell numbers, at most one for each of nFaces faces. A mesh of very few cells may have it as
/// "N{n}", N times the same number.
std::vector<int> ReadCellNumbers(FoamFile& file, int nFaces) {
  TextCursor& text = file.Text();
  std::vector<int> cells;
  if (text.Peek() == '(') text.Fail("a list of cell numbers without its length");
  const int n = ReadNumber(text, "the length of a list of cells", std::int64_t{nFaces} + 1);
  if (text.Accept('{')) {
    cells.assign(n, ReadNumber(text, "cell", kIntEnd));
    text.Expect('}');
    return cells;
  }
  text.Expect('(');
  while (!text.Accept(')')) cells.push_back(ReadNumber(text, "cell", kIntEnd));
  if (cells.size() != static_cast<std::size_t>(n)) {
    text.Fail(std::to_string(n) + " cell numbers announced, " + std::to_string(cells.size()) + " found");
  }
  return cells;
}

// N ((x y z) (x y z) ...)
void ReadPoints(const std::string& folder, FaceMesh& mesh) {
  FoamFile file(folder, "points");
  TextCursor& text = file.Text();
  ReadList(text, "the number of points", [&] {
    Point point{};
    text.Expect('(');
    for (double& x : point) x = text.Real("a coordinate");
    text.Expect(')');
    mesh.points.push_back(point);
  });
  if (mesh.points.size() > static_cast<std::size_t>(kIntEnd)) text.Fail("more points than an int can count");
}

// N (n(node node ...) n(node node ...) ...)
void ReadFaceRows(TextCursor& text, FaceMesh& mesh) {
  const auto nPoints = static_cast<std::int64_t>(mesh.points.size());
  ReadList(text, "the number of faces", [&] {
    ReadList(text, "the number of nodes of a face",
             [&] { mesh.faceNode.push_back(ReadNumber(text, "point", nPoints)); });
    mesh.faceStart.push_back(mesh.faceNode.size());
  });
}

// N+1 (start of each face in the second list, and its length)   M (node node ...)
void ReadCompactFaces(TextCursor& text, FaceMesh& mesh) {
  const auto nPoints = static_cast<std::int64_t>(mesh.points.size());
  mesh.faceStart.clear();
  ReadList(text, "the number of face starts", [&] {
    const std::int64_t start = text.Integer("the start of a face");
    const bool rises =
        mesh.faceStart.empty() ? start == 0 : start >= static_cast<std::int64_t>(mesh.faceStart.back());
    if (!rises) text.Fail("the starts of the faces must begin with 0 and rise");
    mesh.faceStart.push_back(static_cast<std::size_t>(start));
  });
  if (mesh.faceStart.empty()) text.Fail("the starts of the faces must begin with 0 and rise");
  ReadList(text, "the number of nodes of all faces",
           [&] { mesh.faceNode.push_back(ReadNumber(text, "point", nPoints)); });
  if (mesh.faceStart.back() != mesh.faceNode.size()) {
    text.Fail("the last face ends at " + std::to_string(mesh.faceStart.back()) + " of " +
              std::to_string(mesh.faceNode.size()) + " nodes");
  }
}

void ReadFaces(const std::string& folder, FaceMesh& mesh) {
  FoamFile file(folder, "faces");
  if (file.ClassName() == "faceCompactList") {
    ReadCompactFaces(file.Text(), mesh);
  } else {
    ReadFaceRows(file.Text(), mesh);
  }
  if (mesh.faceStart.size() > static_cast<std::size_t>(kIntEnd)) {
    file.Text().Fail("more faces than an int can count");
  }
}

/// The number of cells is told by no file (but in a note); it follows from the highest number in owner or
/// neighbour.
void CountCells(const std::string& folder, FaceMesh& mesh) {
  std::int64_t nCells = 0;
  for (const std::vector<int>* cells : {&mesh.owner, &mesh.neighbour}) {
    for (const int cell : *cells) nCells = std::max(nCells, std::int64_t{cell} + 1);
  }
  // A cell has at least four faces. Tables as long as a nonsensical number must not be asked for.
  const std::size_t nSides = mesh.owner.size() + mesh.neighbour.size();
  if (4 * static_cast<std::size_t>(nCells) > nSides) {
    throw MeshError(folder + ": owner and neighbour name cell " + std::to_string(nCells - 1) + ", but " +
                    std::to_string(mesh.owner.size()) + " faces cannot close so many cells");
  }
  mesh.nCells = static_cast<int>(nCells);
}

void ReadCells(const std::string& folder, FaceMesh& mesh) {
  const int nFaces = static_cast<int>(mesh.faceStart.size()) - 1;
  FoamFile owner(folder, "owner");
  mesh.owner = ReadCellNumbers(owner, nFaces);
  if (mesh.nFaces() != nFaces) {
    owner.Text().Fail(std::to_string(mesh.nFaces()) + " owners of " + std::to_string(nFaces) + " faces");
  }
  FoamFile neighbour(folder, "neighbour");
  mesh.neighbour = ReadCellNumbers(neighbour, nFaces);
  CountCells(folder, mesh);
}

/// What the file boundary tells about one patch.
struct PatchEntry {
  Patch patch;
  std::int64_t nFaces = -1;
  std::int64_t startFace = -1;
};

// name { type wall; nFaces 10; startFace 20; ... }
PatchEntry ReadPatch(FoamFile& file) {
  TextCursor& text = file.Text();
  PatchEntry entry;
  entry.patch.name = text.Peek() == '"' ? text.QuotedString("a patch name") : text.Name("a patch name");
  const std::string& name = entry.patch.name;
  text.Expect('{');
  for (std::string key = file.Keyword(); !key.empty(); key = file.Keyword()) {
    if (key == "nFaces") entry.nFaces = text.Integer("the number of faces of a patch");
    if (key == "startFace") entry.startFace = text.Integer("the first face of a patch");
    const std::string value = file.Value();
    if (key == "type") entry.patch.type = value;
  }
  if (name.empty() || entry.patch.type.empty() || entry.nFaces < 0 || entry.startFace < 0) {
    text.Fail("patch " + Quoted(name) + " needs a name, a type, nFaces and startFace");
  }
  return entry;
}

/// Gives the faces of a patch to it.
void ClaimFaces(const FoamFile& file, const PatchEntry& entry, FaceMesh& mesh, int nInner) {
  const std::int64_t nFaces = mesh.nFaces();
  const int patch = static_cast<int>(mesh.patches.size()) - 1;
  const std::string prefix = file.Name() + ": patch " + Quoted(entry.patch.name);
  if (entry.nFaces == 0) return;
  if (entry.startFace < nInner || entry.startFace >= nFaces || entry.nFaces > nFaces - entry.startFace) {
    throw MeshError(prefix + " has " + std::to_string(entry.nFaces) + " faces from " +
                    std::to_string(entry.startFace) + " on, but boundary faces are " +
                    std::to_string(nInner) + " to " + std::to_string(nFaces - 1));
  }
  for (std::int64_t f = entry.startFace; f < entry.startFace + entry.nFaces; ++f) {
    if (mesh.facePatch[f] >= 0) {
      throw MeshError(prefix + " and patch " + Quoted(mesh.patches[mesh.facePatch[f]].name) +
                      " both have face " + std::to_string(f));
    }
    mesh.facePatch[f] = patch;
  }
}

// N (patch patch ...)
void ReadBoundary(const std::string& folder, FaceMesh& mesh) {
  FoamFile file(folder, "boundary");
  TextCursor& text = file.Text();
  const int nInner = static_cast<int>(mesh.neighbour.size());
  mesh.neighbour.resize(mesh.owner.size(), -1);
  mesh.facePatch.assign(mesh.owner.size(), -1);
  std::set<std::string> names;
  ReadList(text, "the number of patches", [&] {
    const PatchEntry entry = ReadPatch(file);
    if (!names.insert(entry.patch.name).second) text.Fail("a second patch " + Quoted(entry.patch.name));
    mesh.patches.push_back(entry.patch);
    ClaimFaces(file, entry, mesh, nInner);
  });
  for (int f = nInner; f < mesh.nFaces(); ++f) {
    if (mesh.facePatch[f] < 0)
      throw MeshError(file.Name() + ": face " + std::to_string(f) + " is in no patch");
  }
}

}  // namespace

FaceMesh ReadPolyMesh(const std::string& folder) {
  FaceMesh mesh;
  ReadPoints(folder, mesh);
  ReadFaces(folder, mesh);
  ReadCells(folder, mesh);
  ReadBoundary(folder, mesh);
  return mesh;
}

}  // namespace reference_host
