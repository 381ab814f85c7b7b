#include "reference_host/gmsh/GmshElementType.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <string_view>
#include <utility>

namespace reference_host {
namespace {

constexpr std::array<GmshElementType, 7> kFirstOrder = {{
    {1, 1, 2},  // line
    {2, 2, 3},  // triangle
    {3, 2, 4},  // quadrangle
    {4, 3, 4},  // tetrahedron
    {5, 3, 8},  // hexahedron
    {6, 3, 6},  // prism
    {7, 3, 5},  // pyramid
}};
constexpr GmshElementType kPoint = {15, 0, 1};

constexpr std::array<std::pair<int, std::string_view>, 11> kSecondOrder = {{
    {8, "line with 3 nodes"},
    {9, "triangle with 6 nodes"},
    {10, "quadrangle with 9 nodes"},
    {11, "tetrahedron with 10 nodes"},
    {12, "hexahedron with 27 nodes"},
    {13, "prism with 18 nodes"},
    {14, "pyramid with 14 nodes"},
    {16, "quadrangle with 8 nodes"},
    {17, "hexahedron with 20 nodes"},
    {18, "prism with 15 nodes"},
    {19, "pyramid with 13 nodes"},
}};

}  // namespace

GmshElementType const* FindGmshElementType(int number) {
  if (number == kPoint.number) return &kPoint;
  if (number < 1 || number > static_cast<int>(kFirstOrder.size())) return nullptr;
  return &kFirstOrder[number - 1];
}

CellShape ShapeOf(GmshElementType const& type) {
  constexpr std::array<CellShape, 4> kByType = {CellShape::Tetrahedron, CellShape::Hexahedron,
                                                CellShape::Prism, CellShape::Pyramid};
  return kByType[static_cast<std::size_t>(type.number - 4)];
}

std::string DescribeGmshElementType(int number) {
  auto const* const found = std::find_if(kSecondOrder.begin(), kSecondOrder.end(),
                                         [number](auto const& entry) { return entry.first == number; });
  if (found == kSecondOrder.end()) return "of type " + std::to_string(number);
  return "a second-order " + std::string(found->second);
}

}  // namespace reference_host
