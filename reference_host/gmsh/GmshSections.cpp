#include "reference_host/gmsh/GmshSections.h"

#include <array>

#include "reference_host/gmsh/GmshChecks.h"

namespace reference_host {

void GmshSections::AddNode(std::int64_t tag, Point const& point) {
  if (tag < 1) cursor_.Fail(GmshNodeNotPositive(tag));
  if (blocks_ != nullptr) return;
  content_.nodeTag.push_back(tag);
  content_.point.push_back(point);
}

GmshElementType const& GmshSections::TypeOf(int number, std::int64_t element) const {
  GmshElementType const* const type = FindGmshElementType(number);
  if (type == nullptr) {
    cursor_.Fail("element " + std::to_string(element) + " is " + DescribeGmshElementType(number) +
                 "; only first-order elements can be read (tetrahedra, hexahedra, prisms, pyramids)");
  }
  return *type;
}

void GmshSections::AddElement(GmshElementType const& type, std::int64_t element, std::int64_t physical,
                              bool wideTags) {
  std::array<std::int64_t, 8> nodeTag{};
  for (int i = 0; i < type.nNodes; ++i) {
    nodeTag[i] = wideTags ? cursor_.Size("a node number") : cursor_.Int("a node number");
  }
  if (type.dimension < 2 || blocks_ != nullptr) return;
  GmshElements& elements = type.dimension == 3 ? content_.volumes : content_.surfaces;
  elements.type.push_back(type.number);
  elements.tag.push_back(element);
  elements.nodeTag.insert(elements.nodeTag.end(), nodeTag.begin(), nodeTag.begin() + type.nNodes);
  if (type.dimension == 2) content_.physicalOfSurface.push_back(physical);
}

}  // namespace reference_host
