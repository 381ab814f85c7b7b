#include "reference_host/openfoam/PolyMeshReader.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <limits>
#include <system_error>
#include <utility>

#include "reference_host/mesh/MeshError.h"
#include "reference_host/mesh/MeshNames.h"
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

void ReadBoundary(std::string const& folder, PolyMesh& polyMesh) {
  FaceMesh& mesh = polyMesh.mesh;
  auto const nInner = static_cast<std::int64_t>(mesh.neighbour.size());
  PolyMeshPatches read = ReadPolyMeshPatches(folder, nInner, mesh.nFaces());
  mesh.neighbour.resize(mesh.owner.size(), -1);
  mesh.facePatch.assign(mesh.owner.size(), -1);
  for (std::size_t p = 0; p < read.patches.size(); ++p) {
    PatchFaces const& faces = read.facesOfPatch[p];
    for (std::int64_t f = faces.first; f < faces.first + faces.count; ++f)
      mesh.facePatch[f] = static_cast<int>(p);
  }
  for (CyclicFaces const& cyclic : read.periods) {
    Period& period = mesh.periods.emplace_back(cyclic.period);
    for (std::int64_t k = 0; k < cyclic.count; ++k) {
      period.faces.emplace_back(static_cast<int>(cyclic.firstFace + k),
                                static_cast<int>(cyclic.firstPartner + k));
    }
  }
  mesh.patches = std::move(read.patches);
  polyMesh.facesOfPatch = std::move(read.facesOfPatch);
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
