#include <cstddef>
#include <cstdlib>
#include <utility>

#include "reference_host/gmsh/GmshSections.h"

namespace reference_host {

bool GmshSections2::Read(std::string_view section) {
  if (section == "Nodes") {
    ReadNodes();
  } else if (section == "Elements") {
    ReadElements();
  } else if (section == "Periodic") {
    ReadPeriodic();
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
  if (blocks_ != nullptr) {
    blocks_->AddNodes(nNodes, 0, cursor_.Text().Position());
    cursor_.Skip(static_cast<std::size_t>(nNodes) * GmshBlocks::kNodeBytes2, sizeof(double));
    return;
  }
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
  std::int64_t const physical = ReadElementTags(nTags, type);
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
  GmshElementType const* const known = FindGmshElementType(typeNumber);
  if (blocks_ != nullptr && known != nullptr) {
    std::size_t const bytes = GmshBlocks::ElementBytes2(*known, nTags);
    if (cursor_.HasRoom(nFollowing, bytes)) {
      blocks_->AddElements2(*known, nFollowing, nTags, cursor_.Text().Position());
      cursor_.Skip(static_cast<std::size_t>(nFollowing) * bytes, sizeof(std::int32_t));
      return nFollowing;
    }
  }
  for (std::int64_t i = 0; i < nFollowing; ++i) {
    int const element = cursor_.Int("an element number");
    GmshElementType const& type = TypeOf(typeNumber, element);
    std::int64_t const physical = ReadElementTags(nTags, type);
    AddElement(type, element, physical, false);
  }
  return nFollowing;
}

/// The tags are the physical one, whose sign is only an orientation, the geometric entity, and in a partitioned
/// mesh the number of partitions and the partitions, of which the first has the element.
std::int64_t GmshSections2::ReadElementTags(int nTags, GmshElementType const& type) {
  std::int64_t physical = 0;
  for (int i = 0; i < nTags; ++i) {
    std::int64_t const tag = cursor_.Int("a tag");
    if (i == 0) physical = std::abs(tag);
    if (i == 3 && type.dimension == 3) content_.partitionsWithVolumes.insert(tag);
  }
  return physical;
}

// $Periodic, text even in a binary file
// number of links
// dimension entity master
// Affine, 16 numbers (this line may be missing)
// number of nodes
// node node-of-the-master
void GmshSections2::ReadPeriodic() {
  TextCursor& text = cursor_.Text();
  std::size_t const nLinks = text.Count("the number of periodic entities", 8);
  for (std::size_t link = 0; link < nLinks; ++link) {
    std::int64_t const dimension = text.Integer("the dimension of a periodic entity");
    GmshPeriodicSurface surface;
    surface.surface = text.Integer("the number of a periodic entity");
    surface.master = text.Integer("the number of its master");
    if (text.Peek() == 'A') {
      if (text.Word("'Affine'") != "Affine") text.Fail("'Affine' or a number of nodes expected");
      for (int i = 0; i < 16; ++i) surface.transformation.push_back(text.Real("a transformation"));
    }
    std::size_t const nNodes = text.Count("the number of periodic nodes", 4);
    for (std::size_t i = 0; i < nNodes; ++i) {
      std::int64_t const node = text.Integer("a node number");
      surface.nodeTags.emplace_back(node, text.Integer("a node number"));
    }
    if (dimension == 2) content_.periodicSurfaces.push_back(std::move(surface));
  }
}

}  // namespace reference_host
