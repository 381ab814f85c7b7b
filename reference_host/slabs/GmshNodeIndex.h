#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "reference_host/parallel/MpiCommunicator.h"
#include "reference_host/slabs/BlockRanges.h"

namespace reference_host {

/// Finds the nodes of a Gmsh file by their tags, which may have any order and gaps. The nodes have the numbers 0, 1, 2, ...
/// in the order of the file.
///
/// The tags of most files ascend by one over long stretches; then every rank knows all stretches and asks nobody. In other
/// files each tag has a rank that knows its node, and which the others ask.
class GmshNodeIndex {
 public:
  /// Collective. Borrows the communicator.
  /// @param[in] tags  of the own block of `nodes`, in the order of the file; positive
  /// @throws MeshError  a tag that occurs twice, with the same text on every rank
  GmshNodeIndex(MpiCommunicator const& communicator, std::string const& file, BlockRanges const& nodes,
                std::vector<std::int64_t> const& tags);

  /// Collective. Replaces each tag by the number of its node; -1: there is no such node. Takes a bounded amount of memory
  /// for any number of tags.
  void Replace(std::vector<std::int64_t>& tags) const;

 private:
  /// Nodes one after the other whose tags are so as well.
  struct Stretch {
    std::int64_t firstTag, firstNode, n;
  };
  struct TaggedNode {
    std::int64_t tag, node;
  };

  bool ShareStretches(std::vector<std::int64_t> const& tags);
  void ShareTags(std::string const& file, std::vector<std::int64_t> const& tags);
  void ReplaceByStretches(std::vector<std::int64_t>& tags) const;
  int RankOfTag(std::int64_t tag) const;
  std::int64_t NodeOf(std::int64_t tag) const;

  MpiCommunicator const& communicator_;
  BlockRanges nodes_;
  std::vector<Stretch> stretches_;  ///< by ascending tag, all of the file; empty: not used
  std::int64_t highestTag_ = 0;
  bool isDense_ = false;                 ///< tags have few gaps
  BlockRanges tagBlocks_;                ///< if so: the tags that each rank knows
  std::vector<std::int64_t> nodeOfTag_;  ///< and by tag of the own block: its node; -1: none
  std::vector<TaggedNode> taggedNodes_;  ///< if not: those that this rank knows, by ascending tag
};

}  // namespace reference_host
