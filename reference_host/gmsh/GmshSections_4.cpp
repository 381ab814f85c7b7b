#include <array>
#include <cstdlib>
#include <utility>

#include "reference_host/gmsh/GmshSections.h"

namespace reference_host {

bool GmshSections4::Read(std::string_view section) {
  if (section == "Entities") {
    ReadEntities();
  } else if (section == "PartitionedEntities") {
    ReadPartitionedEntities();
  } else if (section == "Nodes") {
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

// $Entities
// number of points, curves, surfaces, volumes
void GmshSections4::ReadEntities() {
  if (cursor_.IsBinary()) cursor_.SkipLineBreak();
  std::array<std::int64_t, 4> nEntities{};
  for (std::int64_t& n : nEntities) {
    n = cursor_.Size("a number of entities");
    cursor_.CheckRoom(n, 5, 36, "geometric entities");
  }
  for (int dimension = 0; dimension < 4; ++dimension) {
    for (std::int64_t i = 0; i < nEntities[dimension]; ++i) ReadEntity(dimension);
  }
}

// point:    tag x y z nPhysical physical..
// others:   tag lowest and highest x y z nPhysical physical.. nBounding bounding..
void GmshSections4::ReadEntity(int dimension) {
  int const tag = cursor_.Int("the number of an entity");
  std::int64_t const physical = ReadExtentAndPhysical(dimension);
  if (dimension == 2 && physical != 0) physicalOfSurfaceEntity_.emplace(tag, physical);
  SkipBounding(dimension);
}

/// Returns the first of several physical tags, which counts, or 0; its sign is only an orientation.
std::int64_t GmshSections4::ReadExtentAndPhysical(int dimension) {
  int const nExtents = dimension == 0 ? 3 : 6;
  for (int i = 0; i < nExtents; ++i) cursor_.Real("the extent of an entity");
  std::int64_t const nPhysical = cursor_.Size("a number of physical tags");
  cursor_.CheckRoom(nPhysical, 1, 4, "physical tags");
  std::int64_t first = 0;
  for (std::int64_t i = 0; i < nPhysical; ++i) {
    std::int64_t const physical = cursor_.Int("a physical tag");
    if (i == 0) first = std::abs(physical);
  }
  return first;
}

void GmshSections4::SkipBounding(int dimension) {
  if (dimension == 0) return;
  std::int64_t const nBounding = cursor_.Size("a number of bounding entities");
  cursor_.CheckRoom(nBounding, 1, 4, "bounding entities");
  for (std::int64_t i = 0; i < nBounding; ++i) cursor_.Int("the number of a bounding entity");
}

// $PartitionedEntities
// number of partitions
// number of ghost entities, then for each: tag partition
// number of points, curves, surfaces, volumes
void GmshSections4::ReadPartitionedEntities() {
  if (cursor_.IsBinary()) cursor_.SkipLineBreak();
  content_.nPartitions = cursor_.Size("the number of partitions");
  std::int64_t const nGhosts = cursor_.Size("the number of ghost entities");
  cursor_.CheckRoom(nGhosts, 2, 8, "ghost entities");
  for (std::int64_t i = 0; i < 2 * nGhosts; ++i) cursor_.Int("a ghost entity");
  std::array<std::int64_t, 4> nEntities{};
  for (std::int64_t& n : nEntities) {
    n = cursor_.Size("a number of entities");
    cursor_.CheckRoom(n, 8, 52, "geometric entities of partitions");
  }
  for (int dimension = 0; dimension < 4; ++dimension) {
    for (std::int64_t i = 0; i < nEntities[dimension]; ++i) ReadPartitionedEntity(dimension);
  }
}

// tag, dimension and tag of the parent, number of partitions, partitions.., then as in $Entities
//
// Surfaces between the volumes of two partitions have a volume as their parent, and its physical tag.
void GmshSections4::ReadPartitionedEntity(int dimension) {
  int const tag = cursor_.Int("the number of an entity");
  int const parentDimension = cursor_.Int("the dimension of a parent");
  int const parent = cursor_.Int("the number of a parent");
  std::int64_t const nPartitions = cursor_.Size("a number of partitions");
  cursor_.CheckRoom(nPartitions, 1, 4, "partitions of an entity");
  for (std::int64_t i = 0; i < nPartitions; ++i) {
    int const partition = cursor_.Int("a partition");
    if (dimension == 3) content_.partitionsWithVolumes.insert(partition);
  }
  std::int64_t physical = ReadExtentAndPhysical(dimension);
  SkipBounding(dimension);
  if (dimension != 2) return;
  auto const ofParent = physicalOfSurfaceEntity_.find(parent);
  if (parentDimension != 2) {
    physical = 0;
  } else if (physical == 0 && ofParent != physicalOfSurfaceEntity_.end()) {
    physical = ofParent->second;
  }
  physicalOfPartitionedSurface_[tag] = physical;
}

// $Nodes
// number of blocks, number of nodes, lowest and highest tag
void GmshSections4::ReadNodes() {
  if (cursor_.IsBinary()) cursor_.SkipLineBreak();
  std::int64_t const nBlocks = cursor_.Size("the number of node blocks");
  std::int64_t const nNodes = cursor_.Size("the number of nodes");
  cursor_.CheckRoom(nBlocks, 4, 20, "node blocks");
  cursor_.CheckRoom(nNodes, 4, 32, "nodes");
  cursor_.Size("the lowest node number");
  cursor_.Size("the highest node number");
  std::int64_t nRead = 0;
  for (std::int64_t block = 0; block < nBlocks; ++block) nRead += ReadNodeBlock();
  if (nRead != nNodes) {
    cursor_.Fail(std::to_string(nNodes) + " nodes announced, " + std::to_string(nRead) + " found");
  }
}

// dimension and tag of the entity, whether parameters follow the coordinates, number of nodes
// tag..
// x y z parameters..  one parameter for each dimension of the entity
std::int64_t GmshSections4::ReadNodeBlock() {
  int const dimension = cursor_.Int("the dimension of a node block");
  if (dimension < 0 || dimension > 3)
    cursor_.Fail("dimension " + std::to_string(dimension) + " of a node block");
  cursor_.Int("the entity of a node block");
  int const nParameters = cursor_.Int("the parametric flag of a node block") != 0 ? dimension : 0;
  std::int64_t const nNodes = cursor_.Size("the number of nodes in a block");
  cursor_.CheckRoom(nNodes, 4, 32, "nodes in a block");

  std::size_t const bytes = GmshBlocks::NodeBytes4(nParameters);
  if (blocks_ != nullptr && cursor_.HasRoom(nNodes, bytes)) {
    blocks_->AddNodes(nNodes, nParameters, cursor_.Text().Position());
    cursor_.Skip(static_cast<std::size_t>(nNodes) * bytes, sizeof(double));
  } else {
    ReadNodesOfBlock(nNodes, nParameters);
  }
  return nNodes;
}

void GmshSections4::ReadNodesOfBlock(std::int64_t nNodes, int nParameters) {
  std::vector<std::int64_t> tags;
  for (std::int64_t i = 0; i < nNodes; ++i) tags.push_back(cursor_.Size("a node number"));
  for (std::int64_t const tag : tags) {
    Point point{};
    for (double& x : point) x = cursor_.Real("a coordinate");
    for (int i = 0; i < nParameters; ++i) cursor_.Real("a parameter of a node");
    AddNode(tag, point);
  }
}

// $Elements
// number of blocks, number of elements, lowest and highest tag
void GmshSections4::ReadElements() {
  if (cursor_.IsBinary()) cursor_.SkipLineBreak();
  std::int64_t const nBlocks = cursor_.Size("the number of element blocks");
  std::int64_t const nElements = cursor_.Size("the number of elements");
  cursor_.CheckRoom(nBlocks, 4, 20, "element blocks");
  cursor_.CheckRoom(nElements, 2, 16, "elements");
  cursor_.Size("the lowest element number");
  cursor_.Size("the highest element number");
  std::int64_t nRead = 0;
  for (std::int64_t block = 0; block < nBlocks; ++block) nRead += ReadElementBlock();
  if (nRead != nElements) {
    cursor_.Fail(std::to_string(nElements) + " elements announced, " + std::to_string(nRead) + " found");
  }
}

// dimension and tag of the entity, element type, number of elements
// tag node..
std::int64_t GmshSections4::ReadElementBlock() {
  int const dimension = cursor_.Int("the dimension of an element block");
  int const entity = cursor_.Int("the entity of an element block");
  int const typeNumber = cursor_.Int("an element type");
  std::int64_t const nElements = cursor_.Size("the number of elements in a block");
  cursor_.CheckRoom(nElements, 2, 16, "elements in a block");

  std::int64_t const physical = dimension == 2 ? PhysicalOfSurface(entity) : 0;
  GmshElementType const* const type = FindGmshElementType(typeNumber);
  if (blocks_ != nullptr && type != nullptr) {
    std::size_t const bytes = GmshBlocks::ElementBytes4(*type);
    if (cursor_.HasRoom(nElements, bytes)) {
      blocks_->AddElements4(*type, nElements, physical, cursor_.Text().Position());
      cursor_.Skip(static_cast<std::size_t>(nElements) * bytes, sizeof(std::int64_t));
      return nElements;
    }
  }
  for (std::int64_t i = 0; i < nElements; ++i) {
    std::int64_t const element = cursor_.Size("an element number");
    AddElement(TypeOf(typeNumber, element), element, physical, true);
  }
  return nElements;
}

/// The surfaces of a partitioned mesh are those of its partitions; their numbers come first.
std::int64_t GmshSections4::PhysicalOfSurface(int entity) const {
  for (auto const* const physicalOf : {&physicalOfPartitionedSurface_, &physicalOfSurfaceEntity_}) {
    auto const found = physicalOf->find(entity);
    if (found != physicalOf->end()) return found->second;
  }
  return 0;
}

// $Periodic
// number of links
// dimension entity master
// number of numbers of the transformation, numbers..
// number of nodes
// node node-of-the-master
void GmshSections4::ReadPeriodic() {
  if (cursor_.IsBinary()) cursor_.SkipLineBreak();
  std::int64_t const nLinks = cursor_.Size("the number of periodic entities");
  cursor_.CheckRoom(nLinks, 5, 28, "periodic entities");
  for (std::int64_t link = 0; link < nLinks; ++link) {
    int const dimension = cursor_.Int("the dimension of a periodic entity");
    GmshPeriodicSurface surface;
    surface.surface = cursor_.Int("the number of a periodic entity");
    surface.master = cursor_.Int("the number of its master");
    std::int64_t const nNumbers = cursor_.Size("the size of a transformation");
    cursor_.CheckRoom(nNumbers, 1, 8, "numbers of a transformation");
    for (std::int64_t i = 0; i < nNumbers; ++i) {
      surface.transformation.push_back(cursor_.Real("a transformation"));
    }
    std::int64_t const nNodes = cursor_.Size("the number of periodic nodes");
    cursor_.CheckRoom(nNodes, 2, 16, "periodic nodes");
    for (std::int64_t i = 0; i < nNodes; ++i) {
      std::int64_t const node = cursor_.Size("a node number");
      surface.nodeTags.emplace_back(node, cursor_.Size("a node number"));
    }
    if (dimension == 2) content_.periodicSurfaces.push_back(std::move(surface));
  }
}

}  // namespace reference_host
