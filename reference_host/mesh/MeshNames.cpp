#include "reference_host/mesh/MeshNames.h"

#include <cstddef>
#include <memory>

namespace reference_host {
namespace {

std::int64_t NumberOfNode(FaceMesh const& mesh, int node) {
  return mesh.names ? mesh.names->nodeNumber(node) : node + std::int64_t{1};
}

std::string CountedFrom1(char const* word, int number) {
  return std::string(word) + " " + std::to_string(number + std::int64_t{1});
}

/// "3, 5 and 9"; only the beginning of a long list.
std::string NodesOfFace(FaceMesh const& mesh, int face) {
  constexpr std::size_t kMost = 8;
  std::size_t const begin = mesh.faceStart[face], end = mesh.faceStart[face + 1];
  std::string list;
  for (std::size_t i = begin; i < end; ++i) {
    if (i - begin == kMost) return list + ", ...";
    if (i > begin) list += i + 1 < end ? ", " : " and ";
    list += std::to_string(NumberOfNode(mesh, mesh.faceNode[i]));
  }
  return list;
}

}  // namespace

std::string NameOfNode(FaceMesh const& mesh, int node) {
  return (mesh.names ? mesh.names->nodeWord : "node") + " " + std::to_string(NumberOfNode(mesh, node));
}

std::string NameOfCell(FaceMesh const& mesh, int cell) {
  return mesh.names ? mesh.names->cell(cell) : CountedFrom1("cell", cell);
}

std::string NameOfFace(FaceMesh const& mesh, int face) {
  if (!mesh.names) return CountedFrom1("face", face);
  if (mesh.names->face) return mesh.names->face(face);
  return "the face of nodes " + NodesOfFace(mesh, face) + " of " + NameOfCell(mesh, mesh.owner[face]);
}

std::shared_ptr<const MeshNames> PolyMeshNames() {
  auto const counted = [](char const* word) {
    return [word](int number) { return std::string(word) + " " + std::to_string(number); };
  };
  return std::make_shared<const MeshNames>(
      MeshNames{"point", [](int point) { return std::int64_t{point}; }, counted("cell"), counted("face")});
}

}  // namespace reference_host
