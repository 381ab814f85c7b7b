#pragma once

#include <algorithm>
#include <cstddef>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iomanip>
#include <map>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "reference_host/mesh/FaceMesh.h"

/// Writes OpenFOAM meshes and fields, whole and decomposed, as OpenFOAM's own tool does.
namespace foam_test {

using reference_host::FaceMesh;
using reference_host::Patch;
using reference_host::Period;
using reference_host::Point;

inline std::string Header(std::string const& className) {
  return "FoamFile\n{\n    version 2.0;\n    format ascii;\n    class " + className + ";\n}\n\n";
}

inline void WriteText(std::string const& file, std::string const& text) {
  std::filesystem::create_directories(std::filesystem::path(file).parent_path());
  std::ofstream(file) << text;
}

/// "N (item item ...)"
template <class Item>
std::string ListText(std::vector<Item> const& items) {
  std::ostringstream text;
  text << std::setprecision(17) << items.size() << "\n(\n";
  for (Item const& item : items) text << item << '\n';
  text << ")\n";
  return text.str();
}

/// The mesh with its faces in the order of OpenFOAM: inner faces first, then those of each patch, and those of a
/// cyclic patch like their partners.
inline FaceMesh InFoamOrder(FaceMesh const& mesh) {
  std::vector<int> order;
  for (int f = 0; f < mesh.nFaces(); ++f) order.push_back(f);
  std::vector<std::size_t> pair(order.size(), 0);
  for (Period const& period : mesh.periods) {
    for (std::size_t i = 0; i < period.faces.size(); ++i) {
      pair[period.faces[i].first] = pair[period.faces[i].second] = i;
    }
  }
  std::stable_sort(order.begin(), order.end(), [&](int a, int b) {
    return std::pair(mesh.facePatch[a], pair[a]) < std::pair(mesh.facePatch[b], pair[b]);
  });
  FaceMesh sorted;
  sorted.points = mesh.points;
  sorted.patches = mesh.patches;
  sorted.nCells = mesh.nCells;
  for (Patch& patch : sorted.patches) {
    if (patch.type.empty())
      patch.type = patch.name == "inlet" || patch.name == "outlet" ? "patch" : patch.name;
  }
  for (int const f : order) {
    sorted.faceNode.insert(sorted.faceNode.end(),
                           mesh.faceNode.begin() + static_cast<std::ptrdiff_t>(mesh.faceStart[f]),
                           mesh.faceNode.begin() + static_cast<std::ptrdiff_t>(mesh.faceStart[f + 1]));
    sorted.faceStart.push_back(sorted.faceNode.size());
    sorted.owner.push_back(mesh.owner[f]);
    sorted.neighbour.push_back(mesh.neighbour[f]);
    sorted.facePatch.push_back(mesh.facePatch[f]);
  }
  std::vector<int> newNumber(order.size());
  for (std::size_t i = 0; i < order.size(); ++i) newNumber[order[i]] = static_cast<int>(i);
  sorted.periods = mesh.periods;
  for (Period& period : sorted.periods) {
    for (auto& [face, partner] : period.faces) face = newNumber[face], partner = newNumber[partner];
  }
  return sorted;
}

/// Further entries of a patch in the file boundary, by its name.
using PatchEntries = std::map<std::string, std::string>;

/// @pre the mesh is in OpenFOAM's order
inline void WriteMesh(std::string const& polyMesh, FaceMesh const& mesh, PatchEntries const& entries = {}) {
  std::vector<std::string> points, faces;
  for (Point const& p : mesh.points) {
    std::ostringstream text;
    text << std::setprecision(17) << '(' << p[0] << ' ' << p[1] << ' ' << p[2] << ')';
    points.push_back(text.str());
  }
  std::vector<int> neighbour;
  for (int f = 0; f < mesh.nFaces(); ++f) {
    std::ostringstream text;
    text << mesh.faceStart[f + 1] - mesh.faceStart[f] << '(';
    for (std::size_t n = mesh.faceStart[f]; n < mesh.faceStart[f + 1]; ++n) text << ' ' << mesh.faceNode[n];
    faces.push_back(text.str() + ")");
    if (mesh.neighbour[f] >= 0) neighbour.push_back(mesh.neighbour[f]);
  }
  std::vector<std::string> patches;
  auto start = static_cast<std::ptrdiff_t>(neighbour.size());
  for (std::size_t p = 0; p < mesh.patches.size(); ++p) {
    auto const n = std::count(mesh.facePatch.begin(), mesh.facePatch.end(), static_cast<int>(p));
    auto const more = entries.find(mesh.patches[p].name);
    std::string const partner =
        mesh.patches[p].partners.empty()
            ? ""
            : "neighbourPatch " + mesh.patches[mesh.patches[p].partners[0]].name + "; ";
    patches.push_back(mesh.patches[p].name + " { type " + mesh.patches[p].type + "; nFaces " +
                      std::to_string(n) + "; startFace " + std::to_string(start) + "; " + partner +
                      (more == entries.end() ? "" : more->second) + "}");
    start += n;
  }
  WriteText(polyMesh + "/points", Header("vectorField") + ListText(points));
  WriteText(polyMesh + "/faces", Header("faceList") + ListText(faces));
  WriteText(polyMesh + "/owner", Header("labelList") + ListText(mesh.owner));
  WriteText(polyMesh + "/neighbour", Header("labelList") + ListText(neighbour));
  WriteText(polyMesh + "/boundary", Header("polyBoundaryMesh") + ListText(patches));
}

/// One processor's share of a whole mesh.
struct Piece {
  FaceMesh mesh;
  PatchEntries entries;
  std::vector<int> cell, point;  ///< numbers in the whole mesh
  std::vector<int> face;         ///< number in the whole mesh + 1; negative: reversed
};

/// By face of the whole mesh: the part beyond the period; -1: there is none.
inline std::vector<int> PartsBeyondPeriods(FaceMesh const& whole, std::vector<int> const& partOfCell) {
  std::vector<int> beyond(whole.owner.size(), -1);
  for (Period const& period : whole.periods) {
    for (auto const& [face, partner] : period.faces) {
      beyond[face] = partOfCell[whole.owner[partner]];
      beyond[partner] = partOfCell[whole.owner[face]];
    }
  }
  return beyond;
}

/// Cuts a piece out. Cells, points, inner faces and faces of patches keep the order of the whole mesh; the
/// faces shared with each other processor follow, pointing outwards, then those shared through cyclic patches.
inline Piece MakePiece(FaceMesh const& whole, std::vector<int> const& partOfCell, int part, int nParts) {
  Piece piece;
  std::vector<int> localCell(static_cast<std::size_t>(whole.nCells), -1);
  for (int c = 0; c < whole.nCells; ++c) {
    if (partOfCell[c] != part) continue;
    localCell[c] = static_cast<int>(piece.cell.size());
    piece.cell.push_back(c);
  }
  FaceMesh& mesh = piece.mesh;
  mesh.nCells = static_cast<int>(piece.cell.size());
  mesh.patches = whole.patches;
  std::vector<int> localPoint(whole.points.size(), -1);
  auto const local = [&localCell](int cell) { return cell < 0 ? -1 : localCell[cell]; };
  auto const add = [&](int f, int owner, int neighbour, int patch, bool isTurned) {
    std::vector<int> nodes(whole.faceNode.begin() + static_cast<std::ptrdiff_t>(whole.faceStart[f]),
                           whole.faceNode.begin() + static_cast<std::ptrdiff_t>(whole.faceStart[f + 1]));
    if (isTurned) std::reverse(nodes.begin() + 1, nodes.end());
    for (int const node : nodes) localPoint[node] = 0;
    mesh.faceNode.insert(mesh.faceNode.end(), nodes.begin(), nodes.end());
    mesh.faceStart.push_back(mesh.faceNode.size());
    mesh.owner.push_back(owner);
    mesh.neighbour.push_back(neighbour);
    mesh.facePatch.push_back(patch);
    piece.face.push_back(isTurned ? -(f + 1) : f + 1);
  };
  for (int f = 0; f < whole.nFaces(); ++f) {
    int const owner = local(whole.owner[f]), neighbour = local(whole.neighbour[f]);
    if (owner >= 0 && neighbour >= 0) add(f, owner, neighbour, -1, false);
  }
  std::vector<int> const beyond = PartsBeyondPeriods(whole, partOfCell);
  for (int f = 0; f < whole.nFaces(); ++f) {
    bool const isCut = beyond[f] >= 0 && beyond[f] != part;
    if (whole.neighbour[f] < 0 && local(whole.owner[f]) >= 0 && !isCut)
      add(f, local(whole.owner[f]), -1, whole.facePatch[f], false);
  }
  for (int other = 0; other < nParts; ++other) {
    std::string const name = "procBoundary" + std::to_string(part) + "to" + std::to_string(other);
    int const patch = static_cast<int>(mesh.patches.size());
    for (int f = 0; f < whole.nFaces(); ++f) {
      if (whole.neighbour[f] < 0 || other == part) continue;
      int const a = partOfCell[whole.owner[f]], b = partOfCell[whole.neighbour[f]];
      if (a == part && b == other) add(f, local(whole.owner[f]), -1, patch, false);
      if (a == other && b == part) add(f, local(whole.neighbour[f]), -1, patch, true);
    }
    if (mesh.facePatch.empty() || mesh.facePatch.back() != patch) continue;  // no such cut
    mesh.patches.push_back({name, "processor", {}});
    piece.entries[name] =
        "myProcNo " + std::to_string(part) + "; neighbProcNo " + std::to_string(other) + "; ";
  }
  for (int other = 0; other < nParts; ++other) {
    for (std::size_t p = 0; p < whole.patches.size(); ++p) {
      int const patch = static_cast<int>(mesh.patches.size());
      for (int f = 0; f < whole.nFaces(); ++f) {
        bool const isThere = other != part && beyond[f] == other && whole.facePatch[f] == static_cast<int>(p);
        if (isThere && local(whole.owner[f]) >= 0) add(f, local(whole.owner[f]), -1, patch, false);
      }
      if (mesh.facePatch.empty() || mesh.facePatch.back() != patch) continue;  // no such cut
      std::string const ranks = std::to_string(part) + "to" + std::to_string(other);
      std::string const name = "procBoundary" + ranks + "through" + whole.patches[p].name;
      mesh.patches.push_back({name, "processorCyclic", {}});
      piece.entries[name] = "myProcNo " + std::to_string(part) + "; neighbProcNo " + std::to_string(other) +
                            "; referPatch " + whole.patches[p].name + "; ";
    }
  }
  for (std::size_t n = 0; n < localPoint.size(); ++n) {
    if (localPoint[n] < 0) continue;
    localPoint[n] = static_cast<int>(piece.point.size());
    piece.point.push_back(static_cast<int>(n));
    mesh.points.push_back(whole.points[n]);
  }
  for (int& node : mesh.faceNode) node = localPoint[node];
  return piece;
}

inline std::string PieceFolder(std::string const& folder, int part) {
  return folder + "/processor" + std::to_string(part) + "/constant/polyMesh";
}

inline void WritePiece(std::string const& polyMesh, Piece const& piece, bool withAddressing) {
  WriteMesh(polyMesh, piece.mesh, piece.entries);
  if (!withAddressing) return;
  WriteText(polyMesh + "/cellProcAddressing", Header("labelList") + ListText(piece.cell));
  WriteText(polyMesh + "/pointProcAddressing", Header("labelList") + ListText(piece.point));
  WriteText(polyMesh + "/faceProcAddressing", Header("labelList") + ListText(piece.face));
}

/// folder/processor0, folder/processor1, ...
/// @param[in] change  called with each piece before it is written; may be empty
inline void WriteDecomposed(std::string const& folder, FaceMesh const& whole,
                            std::vector<int> const& partOfCell, int nParts, bool withAddressing,
                            std::function<void(int, Piece&)> const& change = {}) {
  for (int part = 0; part < nParts; ++part) {
    Piece piece = MakePiece(whole, partOfCell, part, nParts);
    if (change) change(part, piece);
    WritePiece(PieceFolder(folder, part), piece, withAddressing);
  }
}

/// A volScalarField of any mesh, boundary values as `value` of every patch.
/// @param[in] cell  value of each cell
/// @param[in] face  value of each face, those at the boundary are used
inline std::string FieldText(FaceMesh const& mesh, std::vector<double> const& cell,
                             std::vector<double> const& face) {
  std::string text = Header("volScalarField") +
                     "dimensions [0 0 0 1 0 0 0];\n\ninternalField nonuniform List<scalar>\n" +
                     ListText(cell) + ";\n\nboundaryField\n{\n";
  for (std::size_t p = 0; p < mesh.patches.size(); ++p) {
    std::vector<double> values;
    for (int f = 0; f < mesh.nFaces(); ++f) {
      if (mesh.facePatch[f] == static_cast<int>(p)) values.push_back(face[f]);
    }
    bool const isCut = mesh.patches[p].type == "processor";
    text += mesh.patches[p].name + " { type " + (isCut ? "processor" : "fixedValue") +
            "; value nonuniform List<scalar> " + ListText(values) + "; }\n";
  }
  return text + "}\n";
}

}  // namespace foam_test
