#include "reference_host/slabs/GmshNodeIndex.h"

#include <algorithm>

#include "reference_host/gmsh/GmshChecks.h"
#include "reference_host/parallel/MpiAgreement.h"
#include "reference_host/slabs/FirstFailure.h"
#include "reference_host/slabs/MpiLists.h"

namespace reference_host {
namespace {

constexpr std::size_t kTagsOfRound = std::size_t{1} << 18;  // 2 MB there, 2 MB back

}  // namespace

GmshNodeIndex::GmshNodeIndex(MpiCommunicator const& communicator, std::string const& file,
                             BlockRanges const& nodes, std::vector<std::int64_t> const& tags)
    : communicator_(communicator), nodes_(nodes) {
  if (!ShareStretches(tags)) ShareTags(file, tags);
}

/// Returns false if there are too many stretches, or if some have the same tags.
bool GmshNodeIndex::ShareStretches(std::vector<std::int64_t> const& tags) {
  std::int64_t node = nodes_.First(communicator_.rank());
  std::int64_t nOwn = 0;
  for (std::size_t i = 0; i < tags.size(); ++i) nOwn += i == 0 || tags[i] != tags[i - 1] + 1 ? 1 : 0;
  // All stretches take a rank no more memory than the tags of its nodes, or little.
  std::int64_t const most = std::min(
      std::max(std::int64_t{100000}, nodes_.nItems() / (3 * communicator_.size())), std::int64_t{10000000});
  BlockRanges const blocks = RangesOf(communicator_, nOwn);
  if (blocks.nItems() > most) return false;

  std::vector<Stretch> own;
  own.reserve(static_cast<std::size_t>(nOwn));
  for (std::size_t i = 0; i < tags.size(); ++i, ++node) {
    if (i == 0 || tags[i] != tags[i - 1] + 1) own.push_back({tags[i], node, 0});
    ++own.back().n;
  }
  stretches_.resize(static_cast<std::size_t>(blocks.nItems()));
  constexpr int kNumbers = sizeof(Stretch) / sizeof(std::int64_t);
  std::vector<int> counts, starts;
  for (int rank = 0; rank < communicator_.size(); ++rank) {
    counts.push_back(kNumbers * static_cast<int>(blocks.Size(rank)));
    starts.push_back(kNumbers * static_cast<int>(blocks.First(rank)));
  }
  MPI_Allgatherv(own.data(), counts[static_cast<std::size_t>(communicator_.rank())], MPI_INT64_T,
                 stretches_.data(), counts.data(), starts.data(), MPI_INT64_T, communicator_.get());
  std::sort(stretches_.begin(), stretches_.end(),
            [](Stretch const& a, Stretch const& b) { return a.firstTag < b.firstTag; });
  auto const overlap = [](Stretch const& a, Stretch const& b) { return b.firstTag - a.firstTag < a.n; };
  if (std::adjacent_find(stretches_.begin(), stretches_.end(), overlap) == stretches_.end()) return true;
  stretches_ = {};
  return false;
}

void GmshNodeIndex::ShareTags(std::string const& file, std::vector<std::int64_t> const& tags) {
  for (std::int64_t const tag : tags) highestTag_ = std::max(highestTag_, tag);
  MPI_Allreduce(MPI_IN_PLACE, &highestTag_, 1, MPI_INT64_T, MPI_MAX, communicator_.get());
  // The same bound as for one process, since it decides which of several repeated tags is named.
  isDense_ = highestTag_ <= 4 * nodes_.nItems() + 1000;
  if (isDense_) tagBlocks_ = BlockRanges::Even(highestTag_ + 1, communicator_.size());

  RankLists<TaggedNode> known;
  {
    std::int64_t const first = nodes_.First(communicator_.rank());
    known = SwapLists(communicator_, ListsByRank<TaggedNode>(
                                         communicator_.size(), tags.size(),
                                         [&](std::size_t i) { return RankOfTag(tags[i]); },
                                         [&](std::size_t i) {
                                           return TaggedNode{tags[i], first + static_cast<std::int64_t>(i)};
                                         }));
  }
  FirstFailure twice;
  RunTogether(communicator_, [&] {
    if (isDense_) {
      std::int64_t const firstTag = tagBlocks_.First(communicator_.rank());
      nodeOfTag_.assign(static_cast<std::size_t>(tagBlocks_.Size(communicator_.rank())), -1);
      for (auto const& [tag, node] : known.items) {
        std::int64_t& place = nodeOfTag_[static_cast<std::size_t>(tag - firstTag)];
        if (place >= 0) twice.Note(node, GmshNodeTwice(file, tag));
        place = node;
      }
      return;
    }
    taggedNodes_ = std::move(known.items);
    std::sort(taggedNodes_.begin(), taggedNodes_.end(),
              [](TaggedNode const& a, TaggedNode const& b) { return a.tag < b.tag; });
    auto const same = std::adjacent_find(taggedNodes_.begin(), taggedNodes_.end(),
                                         [](auto const& a, auto const& b) { return a.tag == b.tag; });
    if (same != taggedNodes_.end()) twice.Note(same->tag, GmshNodeTwice(file, same->tag));
  });
  twice.ThrowIfAny(communicator_);
}

/// The rank that knows the node of a tag; -1: no node has it.
int GmshNodeIndex::RankOfTag(std::int64_t tag) const {
  if (tag < 1 || tag > highestTag_) return -1;
  if (isDense_) return tagBlocks_.BlockOf(tag);
  return static_cast<int>(tag % communicator_.size());
}

/// The node of a tag that this rank knows.
std::int64_t GmshNodeIndex::NodeOf(std::int64_t tag) const {
  if (isDense_) return nodeOfTag_[static_cast<std::size_t>(tag - tagBlocks_.First(communicator_.rank()))];
  auto const found =
      std::lower_bound(taggedNodes_.begin(), taggedNodes_.end(), tag,
                       [](TaggedNode const& node, std::int64_t value) { return node.tag < value; });
  return found != taggedNodes_.end() && found->tag == tag ? found->node : -1;
}

void GmshNodeIndex::Replace(std::vector<std::int64_t>& tags) const {
  if (!stretches_.empty()) return ReplaceByStretches(tags);
  std::uint64_t nRounds = (tags.size() + kTagsOfRound - 1) / kTagsOfRound;
  MPI_Allreduce(MPI_IN_PLACE, &nRounds, 1, MPI_UINT64_T, MPI_MAX, communicator_.get());
  for (std::uint64_t round = 0; round < nRounds; ++round) {
    std::size_t const begin = std::min(tags.size(), round * kTagsOfRound);
    std::size_t const n = std::min(tags.size() - begin, kTagsOfRound);
    auto const rankOf = [&](std::size_t i) { return RankOfTag(tags[begin + i]); };
    RankLists<std::int64_t> asked =
        SwapLists(communicator_, ListsByRank<std::int64_t>(communicator_.size(), n, rankOf,
                                                           [&](std::size_t i) { return tags[begin + i]; }));
    for (std::int64_t& item : asked.items) item = NodeOf(item);
    RankLists<std::int64_t> const answers = SwapLists(communicator_, asked);
    std::vector<std::size_t> next(answers.start.begin(), answers.start.end() - 1);
    for (std::size_t i = 0; i < n; ++i) {
      int const rank = rankOf(i);
      tags[begin + i] = rank < 0 ? -1 : answers.items[next[static_cast<std::size_t>(rank)]++];
    }
  }
}

void GmshNodeIndex::ReplaceByStretches(std::vector<std::int64_t>& tags) const {
  Stretch last = stretches_.front();  // many tags one after the other are of one stretch
  for (std::int64_t& tag : tags) {
    if (tag < last.firstTag || tag - last.firstTag >= last.n) {
      auto const after = std::upper_bound(
          stretches_.begin(), stretches_.end(), tag,
          [](std::int64_t value, Stretch const& stretch) { return value < stretch.firstTag; });
      if (after != stretches_.begin()) last = *(after - 1);
    }
    bool const isThere = tag >= last.firstTag && tag - last.firstTag < last.n;
    tag = isThere ? last.firstNode + (tag - last.firstTag) : -1;
  }
}

}  // namespace reference_host
