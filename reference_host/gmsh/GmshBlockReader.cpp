#include "reference_host/gmsh/GmshBlockReader.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <utility>

#include "reference_host/gmsh/GmshChecks.h"

namespace reference_host {
namespace {

constexpr std::size_t kBytesAtOnce = std::size_t{1} << 20;

template <class Value>
Value Get(char const* bytes) {
  Value value;
  std::memcpy(&value, bytes, sizeof value);
  return value;
}

/// Calls visit(block, begin, end) for the blocks that have some of the items first..last-1: those with the numbers
/// begin..end-1 in the block.
template <class Block, class Visit>
void ForEachBlock(std::vector<Block> const& blocks, std::int64_t first, std::int64_t last,
                  Visit const& visit) {
  auto block = std::upper_bound(blocks.begin(), blocks.end(), first,
                                [](std::int64_t item, Block const& b) { return item < b.first; });
  if (block != blocks.begin()) --block;
  for (; block != blocks.end() && block->first < last; ++block) {
    std::int64_t const begin = std::max(first - block->first, std::int64_t{0});
    std::int64_t const end = std::min(last - block->first, block->n);
    if (begin < end) visit(*block, begin, end);
  }
}

}  // namespace

GmshNumberError::GmshNumberError(std::string const& file, std::int64_t byte, std::string const& what)
    : MeshError(file + ": offset " + std::to_string(byte) + ": " + what), byte_(byte) {}

GmshBlockReader::GmshBlockReader(std::string file, GmshBlocks blocks)
    : file_(std::move(file)), blocks_(std::move(blocks)), bytes_(OpenPlainFile(file_)) {}

void GmshBlockReader::Load(std::size_t firstByte, std::size_t n) {
  if (piece_.size() < n) piece_.resize(n);
  bytes_->Read(firstByte, piece_.data(), n);
}

template <class Visit>
void GmshBlockReader::ForEachItem(std::int64_t firstByte, std::int64_t n, std::size_t itemBytes,
                                  Visit const& visit) {
  auto const most = static_cast<std::int64_t>(std::max(kBytesAtOnce / itemBytes, std::size_t{1}));
  for (std::int64_t begin = 0; begin < n; begin += most) {
    std::int64_t const end = std::min(begin + most, n);
    Load(static_cast<std::size_t>(firstByte) + static_cast<std::size_t>(begin) * itemBytes,
         static_cast<std::size_t>(end - begin) * itemBytes);
    char const* item = piece_.data();
    for (std::int64_t i = begin; i < end; ++i, item += itemBytes) visit(i, item);
  }
}

void GmshBlockReader::ReadNodes(std::int64_t first, std::int64_t end, std::vector<std::int64_t>& tags,
                                std::vector<Point>& points) {
  ForEachBlock(blocks_.nodes, first, end,
               [&](GmshNodeBlock const& block, std::int64_t begin, std::int64_t last) {
                 if (blocks_.is2) return ReadNodes2(block, begin, last, tags, points);
                 ReadNodes4(block, begin, last, tags, points);
               });
}

void GmshBlockReader::ReadNodes2(GmshNodeBlock const& block, std::int64_t begin, std::int64_t end,
                                 std::vector<std::int64_t>& tags, std::vector<Point>& points) {
  constexpr std::size_t kBytes = GmshBlocks::kNodeBytes2;
  std::int64_t const firstByte = block.firstByte + begin * static_cast<std::int64_t>(kBytes);
  ForEachItem(firstByte, end - begin, kBytes, [&](std::int64_t i, char const* item) {
    std::int64_t const tag = Get<std::int32_t>(item);
    if (tag < 1) {
      std::int64_t const last = firstByte + (i + 1) * static_cast<std::int64_t>(kBytes) - 8;
      throw GmshNumberError(file_, last, GmshNodeNotPositive(tag));
    }
    tags.push_back(tag);
    points.push_back(Get<Point>(item + 4));
  });
}

/// All tags of a block are read before its places. A tag that is zero is an error of the place that goes with it.
void GmshBlockReader::ReadNodes4(GmshNodeBlock const& block, std::int64_t begin, std::int64_t end,
                                 std::vector<std::int64_t>& tags, std::vector<Point>& points) {
  std::int64_t const tagByte = block.firstByte + begin * 8;
  std::int64_t zero = -1;
  ForEachItem(tagByte, end - begin, 8, [&](std::int64_t i, char const* item) {
    auto const tag = Get<std::int64_t>(item);
    if (tag < 0) throw GmshNumberError(file_, tagByte + i * 8, "a node number is out of range");
    if (tag == 0 && zero < 0) zero = i;
    tags.push_back(tag);
  });
  std::size_t const placeBytes = GmshBlocks::NodeBytes4(block.nParameters) - 8;
  std::int64_t const placeByte =
      block.firstByte + block.n * 8 + begin * static_cast<std::int64_t>(placeBytes);
  if (zero >= 0) {
    throw GmshNumberError(file_, placeByte + (zero + 1) * static_cast<std::int64_t>(placeBytes) - 8,
                          GmshNodeNotPositive(0));
  }
  ForEachItem(placeByte, end - begin, placeBytes,
              [&](std::int64_t, char const* item) { points.push_back(Get<Point>(item)); });
}

std::size_t GmshBlockReader::CountNodeTags(GmshBlocks::Kind kind, std::int64_t first,
                                           std::int64_t end) const {
  std::size_t n = 0;
  ForEachBlock(blocks_.elements[kind], first, end,
               [&n](GmshElementBlock const& block, std::int64_t begin, std::int64_t last) {
                 n += static_cast<std::size_t>(last - begin) *
                      static_cast<std::size_t>(FindGmshElementType(block.typeNumber)->nNodes);
               });
  return n;
}

void GmshBlockReader::ForEachElement(GmshBlocks::Kind kind, std::int64_t first, std::int64_t end,
                                     std::function<void(GmshElement const&)> const& visit) {
  ForEachBlock(blocks_.elements[kind], first, end,
               [&](GmshElementBlock const& block, std::int64_t begin, std::int64_t last) {
                 if (blocks_.is2) return ReadElements2(block, begin, last, visit);
                 ReadElements4(block, begin, last, visit);
               });
}

/// As GmshSections2 reads the tags of an element.
template <class Visit>
void GmshBlockReader::ReadElements2(GmshElementBlock const& block, std::int64_t begin, std::int64_t end,
                                    Visit const& visit) {
  GmshElement element;
  element.type = FindGmshElementType(block.typeNumber);
  element.hasPartition = block.nTags > 3 && element.type->dimension == 3;
  std::size_t const bytes = GmshBlocks::ElementBytes2(*element.type, block.nTags);
  auto const byteOf = [&](std::int64_t i) {
    return static_cast<std::size_t>(block.firstByte) + static_cast<std::size_t>(i) * bytes +
           static_cast<std::size_t>(i / block.nTogether) * GmshBlocks::kHeaderBytes2;
  };
  auto const most =
      static_cast<std::int64_t>(std::max(kBytesAtOnce / (bytes + GmshBlocks::kHeaderBytes2), std::size_t{1}));
  for (; begin < end; begin += most) {
    std::int64_t const last = std::min(begin + most, end);
    std::size_t const firstByte = byteOf(begin);
    Load(firstByte, byteOf(last - 1) + bytes - firstByte);
    for (std::int64_t i = begin; i < last; ++i) {
      char const* const item = piece_.data() + (byteOf(i) - firstByte);
      auto const number = [item](int k) { return std::int64_t{Get<std::int32_t>(item + 4 * k)}; };
      element.tag = number(0);
      if (block.nTags > 0) element.physical = std::abs(number(1));
      if (element.hasPartition) element.partition = number(4);
      for (int k = 0; k < element.type->nNodes; ++k) {
        element.nodeTag[static_cast<std::size_t>(k)] = number(1 + block.nTags + k);
      }
      visit(element);
    }
  }
}

template <class Visit>
void GmshBlockReader::ReadElements4(GmshElementBlock const& block, std::int64_t begin, std::int64_t end,
                                    Visit const& visit) {
  GmshElement element;
  element.type = FindGmshElementType(block.typeNumber);
  element.physical = block.physical;
  std::size_t const bytes = GmshBlocks::ElementBytes4(*element.type);
  std::int64_t const firstByte = block.firstByte + begin * static_cast<std::int64_t>(bytes);
  ForEachItem(firstByte, end - begin, bytes, [&](std::int64_t i, char const* item) {
    auto const number = [&](int k, char const* what) {
      auto const value = Get<std::int64_t>(item + 8 * k);
      if (value < 0) {
        throw GmshNumberError(file_, firstByte + i * static_cast<std::int64_t>(bytes) + 8 * k,
                              std::string(what) + " is out of range");
      }
      return value;
    };
    element.tag = number(0, "an element number");
    for (int k = 0; k < element.type->nNodes; ++k) {
      element.nodeTag[static_cast<std::size_t>(k)] = number(1 + k, "a node number");
    }
    visit(element);
  });
}

std::int64_t GmshBlockReader::TagOfNode(std::int64_t node) {
  std::vector<std::int64_t> tags;
  std::vector<Point> points;
  ReadNodes(node, node + 1, tags, points);
  return tags.front();
}

GmshElement GmshBlockReader::ElementAt(GmshBlocks::Kind kind, std::int64_t element) {
  GmshElement found;
  ForEachElement(kind, element, element + 1, [&found](GmshElement const& e) { found = e; });
  return found;
}

}  // namespace reference_host
