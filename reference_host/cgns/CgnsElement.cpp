#include "reference_host/cgns/CgnsElement.h"

#include <cgnslib.h>

#include <cstddef>
#include <optional>

#include "reference_host/mesh/MessageText.h"

namespace reference_host {
namespace {

/// The nodes of linear CGNS elements have the order that FaceMeshBuilder expects.
std::optional<CellShape> ShapeOf(int type) {
  switch (type) {
    case CGNS_ENUMV(TETRA_4):
      return CellShape::Tetrahedron;
    case CGNS_ENUMV(PYRA_5):
      return CellShape::Pyramid;
    case CGNS_ENUMV(PENTA_6):
      return CellShape::Prism;
    case CGNS_ENUMV(HEXA_8):
      return CellShape::Hexahedron;
    default:
      return std::nullopt;
  }
}

[[noreturn]] void FailElement(CgnsFile const& file, CgnsSection const& section, std::int64_t element,
                              std::string const& what) {
  file.Fail("element " + std::to_string(element) + " of section " + Quoted(section.name) + " " + what);
}

[[noreturn]] void FailType(CgnsFile const& file, CgnsSection const& section, int type) {
  bool const isKnown = type >= 0 && type < NofValidElementTypes;
  file.Fail("section " + Quoted(section.name) + ": elements of type " +
            (isKnown ? std::string(ElementTypeName[type]) : std::to_string(type)) +
            " cannot be read; write the mesh with linear elements");
}

void TakeNodes(CgnsFile const& file, CgnsSection const& section, std::int64_t const* given, int nGiven,
               CgnsStandardElement& element) {
  element.nNodes = nGiven;
  for (int i = 0; i < nGiven; ++i) {
    if (given[i] < 1 || given[i] > file.nNodes()) {
      FailElement(
          file, section, element.element,
          "has node " + std::to_string(given[i]) + ", but there are " + std::to_string(file.nNodes()));
    }
    element.nodes[static_cast<std::size_t>(i)] = given[i] - 1;
  }
}

}  // namespace

CgnsRole RoleOfCgnsType(int type) {
  if (ShapeOf(type)) return CgnsRole::Cell;
  switch (type) {
    case CGNS_ENUMV(TRI_3):
    case CGNS_ENUMV(QUAD_4):
      return CgnsRole::Surface;
    case CGNS_ENUMV(NODE):
    case CGNS_ENUMV(BAR_2):
    case CGNS_ENUMV(BAR_3):
      return CgnsRole::PassedOver;
    case CGNS_ENUMV(MIXED):
      return CgnsRole::Mixed;
    default:
      return CgnsRole::Other;
  }
}

bool IsCgnsPolygons(CgnsSection const& section) { return section.type == CGNS_ENUMV(NGON_n); }

bool IsCgnsPolyhedra(CgnsSection const& section) { return section.type == CGNS_ENUMV(NFACE_n); }

bool IsCgnsEdge(CgnsSection const& section) {
  return section.type == CGNS_ENUMV(BAR_2) || section.type == CGNS_ENUMV(NODE);
}

int NodeCountOfCgnsType(int type) {
  int n = 0;
  return cg_npe(static_cast<CGNS_ENUMT(ElementType_t)>(type), &n) == CG_OK ? n : 0;
}

void ForEachStandardElement(CgnsFile const& file, CgnsSection const& section, CgnsElements const& elements,
                            std::int64_t first,
                            std::function<void(CgnsStandardElement const&)> const& visit) {
  bool const isMixed = RoleOfCgnsType(section.type) == CgnsRole::Mixed;
  CgnsStandardElement element;
  element.element = first;
  for (std::size_t i = 0; i + 1 < elements.start.size(); ++i, ++element.element) {
    std::size_t begin = elements.start[i];
    std::size_t const end = elements.start[i + 1];
    if (isMixed && begin == end) FailElement(file, section, element.element, "has no type");
    int const type = isMixed ? static_cast<int>(elements.entry[begin++]) : section.type;
    CgnsRole const role = RoleOfCgnsType(type);
    if (role == CgnsRole::PassedOver) continue;
    if (role != CgnsRole::Cell && role != CgnsRole::Surface) FailType(file, section, type);
    int const nNodes = NodeCountOfCgnsType(type);
    if (end - begin != static_cast<std::size_t>(nNodes)) {
      FailElement(file, section, element.element, "has the wrong number of nodes");
    }
    element.isCell = role == CgnsRole::Cell;
    element.shape = ShapeOf(type).value_or(CellShape::Tetrahedron);
    TakeNodes(file, section, elements.entry.data() + begin, nNodes, element);
    visit(element);
  }
}

}  // namespace reference_host
