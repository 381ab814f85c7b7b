#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "reference_host/gmsh/GmshContent.h"
#include "reference_host/gmsh/GmshElementType.h"

namespace reference_host {

/// Nodes that stand one after the other in a binary Gmsh file.
struct GmshNodeBlock {
  std::int64_t first;  ///< number of its first node in the order of the file, from 0
  std::int64_t n;
  std::int64_t
      firstByte;  ///< version 4.1: all tags come first, then the places; 2.2: tag and place of each node
  std::int64_t nParameters;  ///< numbers after each place
};

/// Elements of one type that stand one after the other in a binary Gmsh file.
struct GmshElementBlock {
  std::int64_t
      first;  ///< number of its first element among those of its kind in the order of the file, from 0
  std::int64_t n;
  std::int64_t firstByte;   ///< of the first element
  std::int64_t physical;    ///< version 4.1: physical tag of surface elements; 0: none
  std::int64_t nTogether;   ///< version 2.2: after so many elements comes another header
  std::int32_t typeNumber;  ///< one that FindGmshElementType has
  std::int32_t nTags;       ///< version 2.2: the tags of an element
};

/// Where the nodes and elements of a binary Gmsh file are, so that any range of them can be read.
struct GmshBlocks {
  enum Kind { kVolumes, kSurfaces, kOthers };

  static constexpr std::size_t kNodeBytes2 = 28;
  static constexpr std::size_t kHeaderBytes2 = 12;  ///< before the elements of a block in version 2.2
  static constexpr std::size_t NodeBytes4(std::int64_t nParameters) {
    return 8 * (4 + static_cast<std::size_t>(nParameters));
  }
  static std::size_t ElementBytes2(GmshElementType const& type, std::int64_t nTags) {
    return 4 * (1 + static_cast<std::size_t>(nTags) + static_cast<std::size_t>(type.nNodes));
  }
  static std::size_t ElementBytes4(GmshElementType const& type) {
    return 8 * (1 + static_cast<std::size_t>(type.nNodes));
  }

  bool is2 = false;  ///< version 2.2
  std::vector<GmshNodeBlock> nodes;
  std::array<std::vector<GmshElementBlock>, 3> elements;  ///< by Kind

  /// Why the file cannot be read beyond these blocks; empty: it can.
  std::string failure;

  std::int64_t nNodes() const { return nodes.empty() ? 0 : nodes.back().first + nodes.back().n; }
  std::int64_t nElements(Kind kind) const {
    return elements[kind].empty() ? 0 : elements[kind].back().first + elements[kind].back().n;
  }

  void AddNodes(std::int64_t n, int nParameters, std::size_t firstByte);
  void AddElements4(GmshElementType const& type, std::int64_t n, std::int64_t physical,
                    std::size_t firstByte);

  /// Joins the block to the one before it if they look like one: a file may have a header for each element.
  void AddElements2(GmshElementType const& type, std::int64_t n, int nTags, std::size_t firstByte);

 private:
  void AddElements(GmshElementType const& type, GmshElementBlock block);
};

/// Whether the file is a binary Gmsh file of version 4.1 or 2.2. Looks at its first bytes only; false for a file that
/// cannot be read.
bool IsBinaryGmsh(std::string const& file);

/// Finds the blocks of a binary Gmsh file in one pass, which passes over their content. The rest of the file is read.
///
/// A file that is damaged somewhere gives the blocks before that place and the failure, because something may be wrong
/// in those blocks, which comes first.
/// @pre IsBinaryGmsh(file)
/// @param[out] blocks  overwritten
/// @return the content without nodes and elements
GmshContent IndexGmsh(std::string const& file, GmshBlocks& blocks);

}  // namespace reference_host
