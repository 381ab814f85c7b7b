#pragma once

#include <cstdint>
#include <map>
#include <string_view>

#include "reference_host/gmsh/GmshBlocks.h"
#include "reference_host/gmsh/GmshContent.h"
#include "reference_host/gmsh/GmshCursor.h"
#include "reference_host/gmsh/GmshElementType.h"

namespace reference_host {

/// Reads the sections that differ between the versions of the format; one derived class for each version.
class GmshSections {
 public:
  /// @param[out] blocks  of a binary file: gets the blocks of nodes and elements, whose content is then passed over
  ///                     unread. Null: the content is read
  GmshSections(GmshCursor& cursor, GmshContent& content, GmshBlocks* blocks = nullptr)
      : cursor_(cursor), content_(content), blocks_(blocks) {}
  GmshSections(GmshSections const&) = delete;
  GmshSections& operator=(GmshSections const&) = delete;
  virtual ~GmshSections() = default;

  /// Reads a section from after its first line, such as "$Nodes", up to its end mark. Returns false and reads
  /// nothing if it does not know the section.
  virtual bool Read(std::string_view section) = 0;

 protected:
  void AddNode(std::int64_t tag, Point const& point);

  /// The entry of the type. Fails for types that cannot be read.
  /// @param[in] element  number of the first element of that type, for the message
  GmshElementType const& TypeOf(int number, std::int64_t element) const;

  /// Reads `type`'s node tags and keeps the element if it is a surface or a volume.
  /// @param[in] wideTags  whether binary node tags have 8 bytes instead of 4
  void AddElement(GmshElementType const& type, std::int64_t element, std::int64_t physical, bool wideTags);

  GmshCursor& cursor_;
  GmshContent& content_;
  GmshBlocks* blocks_;
};

/// MSH 2.2: tables of nodes and of elements with their physical tags.
class GmshSections2 : public GmshSections {
 public:
  using GmshSections::GmshSections;
  bool Read(std::string_view section) override;

 private:
  void ReadNodes();
  void ReadElements();
  void ReadTextElement();
  std::int64_t ReadBinaryElements(std::int64_t nLeft);
  std::int64_t ReadElementTags(int nTags, GmshElementType const& type);
  void ReadPeriodic();
};

/// MSH 4.1: nodes and elements in blocks, one or more for each geometric entity. The entities have the
/// physical tags. A partitioned file has entities of its own for each partition, whose parents are those.
class GmshSections4 : public GmshSections {
 public:
  using GmshSections::GmshSections;
  bool Read(std::string_view section) override;

 private:
  void ReadEntities();
  void ReadEntity(int dimension);
  void ReadPartitionedEntities();
  void ReadPartitionedEntity(int dimension);
  std::int64_t ReadExtentAndPhysical(int dimension);
  void SkipBounding(int dimension);
  void ReadNodes();
  std::int64_t ReadNodeBlock();
  void ReadNodesOfBlock(std::int64_t nNodes, int nParameters);
  void ReadElements();
  std::int64_t ReadElementBlock();
  std::int64_t PhysicalOfSurface(int entity) const;
  void ReadPeriodic();

  std::map<int, std::int64_t> physicalOfSurfaceEntity_;       // without those of no physical surface
  std::map<int, std::int64_t> physicalOfPartitionedSurface_;  // 0: none
};

}  // namespace reference_host
