#include <cstdlib>

#include "reference_host/gmsh/GmshSections.h"

namespace reference_host {

bool GmshSections2::Read(std::string_view section) {
  if (section == "Nodes") {
    ReadNodes();
  } else if (section == "Elements") {
    ReadElements();
  } else {
    return false;
  }
  return true;
}

// $Nodes
// number of nodes
// tag x y z
void GmshSections2::ReadNodes() {
  std::int64_t const nNodes = cursor_.Text().Integer("the number of nodes");
  cursor_.CheckRoom(nNodes, 4, 28, "nodes");
  if (cursor_.IsBinary()) cursor_.SkipLineBreak();
  for (std::int64_t i = 0; i < nNodes; ++i) {
    int const tag = cursor_.Int("a node number");
    Point point{};
    for (double& x : point) x = cursor_.Real("a coordinate");
    AddNode(tag, point);
  }
}

// $Elements
// number of elements
// text:    tag type nTags tag.. node..
// binary:  type nFollowing nTags, then for each of those that follow: tag tag.. node..
void GmshSections2::ReadElements() {
  std::int64_t const nElements = cursor_.Text().Integer("the number of elements");
  cursor_.CheckRoom(nElements, 4, 8, "elements");
  if (cursor_.IsBinary()) cursor_.SkipLineBreak();
  for (std::int64_t nLeft = nElements; nLeft > 0;) {
    if (cursor_.IsBinary()) {
      nLeft -= ReadBinaryElements(nLeft);
    } else {
      ReadTextElement();
      --nLeft;
    }
  }
}

void GmshSections2::ReadTextElement() {
  int const element = cursor_.Int("an element number");
  GmshElementType const& type = TypeOf(cursor_.Int("an element type"), element);
  int const nTags = cursor_.Int("a number of tags");
  cursor_.CheckRoom(nTags, 1, 4, "tags of an element");
  std::int64_t const physical = ReadElementTags(nTags);
  AddElement(type, element, physical, false);
}

std::int64_t GmshSections2::ReadBinaryElements(std::int64_t nLeft) {
  int const typeNumber = cursor_.Int("an element type");
  std::int64_t const nFollowing = cursor_.Int("a number of elements");
  if (nFollowing < 1 || nFollowing > nLeft) {
    cursor_.Fail(std::to_string(nFollowing) + " elements announced where " + std::to_string(nLeft) +
                 " are left");
  }
  int const nTags = cursor_.Int("a number of tags");
  cursor_.CheckRoom(nTags, 1, 4, "tags of an element");
  for (std::int64_t i = 0; i < nFollowing; ++i) {
    int const element = cursor_.Int("an element number");
    GmshElementType const& type = TypeOf(typeNumber, element);
    std::int64_t const physical = ReadElementTags(nTags);
    AddElement(type, element, physical, false);
  }
  return nFollowing;
}

/// The first tag is the physical one; its sign is only an orientation. The others (geometric entity,
/// partitions) are not needed.
std::int64_t GmshSections2::ReadElementTags(int nTags) {
  std::int64_t physical = 0;
  for (int i = 0; i < nTags; ++i) {
    std::int64_t const tag = cursor_.Int("a tag");
    if (i == 0) physical = std::abs(tag);
  }
  return physical;
}

}  // namespace reference_host
