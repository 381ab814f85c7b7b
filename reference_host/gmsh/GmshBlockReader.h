#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "reference_host/gmsh/GmshBlocks.h"
#include "reference_host/mesh/FaceMesh.h"
#include "reference_host/mesh/MeshError.h"
#include "reference_host/mesh/MeshFile.h"

namespace reference_host {

/// A number in a Gmsh file that cannot be right.
class GmshNumberError : public MeshError {
 public:
  GmshNumberError(std::string const& file, std::int64_t byte, std::string const& what);

  /// Its position in the file, which decides which of several is named.
  std::int64_t byte() const { return byte_; }

 private:
  std::int64_t byte_;
};

/// An element as it is in the file.
struct GmshElement {
  GmshElementType const* type = nullptr;
  std::int64_t tag = 0;
  std::int64_t physical = 0;   ///< of a surface element; 0: none
  std::int64_t partition = 0;  ///< version 2.2, of a volume element; meaningless unless hasPartition
  bool hasPartition = false;
  std::array<std::int64_t, 8> nodeTag = {};
};

/// Reads any range of the nodes and elements of a binary Gmsh file, with the messages of ReadGmsh.
class GmshBlockReader {
 public:
  /// Opens the file. Throws MeshError if it cannot be read.
  GmshBlockReader(std::string file, GmshBlocks blocks);

  std::string const& File() const { return file_; }
  GmshBlocks const& Blocks() const { return blocks_; }

  /// Appends the tags and places of the nodes first..end-1 in the order of the file.
  void ReadNodes(std::int64_t first, std::int64_t end, std::vector<std::int64_t>& tags,
                 std::vector<Point>& points);

  /// How many node tags the elements first..end-1 of a kind have together.
  std::size_t CountNodeTags(GmshBlocks::Kind kind, std::int64_t first, std::int64_t end) const;

  /// Calls visit for the elements first..end-1 of a kind in the order of the file.
  void ForEachElement(GmshBlocks::Kind kind, std::int64_t first, std::int64_t end,
                      std::function<void(GmshElement const&)> const& visit);

  std::int64_t TagOfNode(std::int64_t node);
  GmshElement ElementAt(GmshBlocks::Kind kind, std::int64_t element);

 private:
  void Load(std::size_t firstByte, std::size_t n);

  /// Calls visit(item, bytes) for n items of `itemBytes` each from a position on.
  template <class Visit>
  void ForEachItem(std::int64_t firstByte, std::int64_t n, std::size_t itemBytes, Visit const& visit);

  void ReadNodes2(GmshNodeBlock const& block, std::int64_t begin, std::int64_t end,
                  std::vector<std::int64_t>& tags, std::vector<Point>& points);
  void ReadNodes4(GmshNodeBlock const& block, std::int64_t begin, std::int64_t end,
                  std::vector<std::int64_t>& tags, std::vector<Point>& points);
  template <class Visit>
  void ReadElements2(GmshElementBlock const& block, std::int64_t begin, std::int64_t end, Visit const& visit);
  template <class Visit>
  void ReadElements4(GmshElementBlock const& block, std::int64_t begin, std::int64_t end, Visit const& visit);

  std::string file_;
  GmshBlocks blocks_;
  std::unique_ptr<FileBytes> bytes_;
  std::vector<char> piece_;
};

}  // namespace reference_host
