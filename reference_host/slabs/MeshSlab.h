#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "reference_host/mesh/FaceMesh.h"
#include "reference_host/slabs/BlockRanges.h"

namespace reference_host {

/// The names in the mesh file of what a MeshSlab numbers; as MeshNames, by numbers in the whole mesh from 0. They may
/// be asked for the nodes, cells and faces of the own blocks only.
struct SlabNames {
  std::string nodeWord = "node";
  std::function<std::int64_t(std::int64_t)> nodeNumber;  ///< empty: number + 1
  std::function<std::string(std::int64_t)> cell;         ///< "element 12"; empty: "cell 12", number + 1
  std::function<std::string(std::int64_t)> face;         ///< "face 7"; empty: the file does not number faces
};

/// A Period of a mesh in slabs.
struct SlabPeriod {
  Period description;  ///< the same on every rank; without faces

  /// Pairs of faces by number in the whole mesh. A pair is on the rank that has the first of the two.
  std::vector<std::array<std::int64_t, 2>> faces;

  std::vector<int> turn;  ///< by own pair; as Period::turn, set by JoinSlabPeriods

  /// By own pair: its place in Period::faces, ascending; empty: the lists of the ranks one after the other have that
  /// order. It decides which pair gives the shift.
  std::vector<std::int64_t> place;
};

/// One rank's share of a whole mesh addressed by faces (FaceMesh), before it is cut into parts. Each rank has one block
/// of the nodes, one of the cells and one of the faces, so that no rank holds the whole. All numbers are those of the
/// whole mesh, counted from 0, and the slabs of all ranks together say what its FaceMesh does.
///
/// The block of cells has no content of its own: it says which rank keeps the facts about a cell, such as its part.
struct MeshSlab {
  BlockRanges nodes, cells, faces;

  std::vector<Point> points;  ///< of the own block of nodes

  /// Own faces, ascending by number. faceNode, owner and neighbour as in FaceMesh.
  std::vector<std::size_t> faceStart = {0};
  std::vector<std::int64_t> faceNode;
  std::vector<std::int64_t> owner;
  std::vector<std::int64_t> neighbour;  ///< -1: boundary face
  std::vector<int> facePatch;
  std::vector<Patch> patches;  ///< the same on every rank

  std::vector<SlabPeriod> periods;

  SlabNames names;

  std::size_t nOwnFaces() const { return owner.size(); }
  std::int64_t NumberOfFace(std::size_t f, int rank) const {
    return faces.First(rank) + static_cast<std::int64_t>(f);
  }
};

}  // namespace reference_host
