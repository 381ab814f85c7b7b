#include "host/ZYNOptKer.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <limits>
#include <utility>
#include <vector>

#include "foundation/Processor.h"

// Named, since members of CZYNOptKer::Tree have types of it.
namespace packed_tree {

struct Box {
  double low[3], high[3];
};

struct Entry {
  Box box;
  int id;
};

// False for an inverted box and for one with a NaN, neither of which contains a point.
bool IsBox(Box const& box) {
  for (int d = 0; d < 3; ++d)
    if (!(box.low[d] <= box.high[d])) return false;
  return true;
}

/// Numbers side by side in one register: two or four doubles, four or eight ints.
struct Sse2 {
  typedef double Doubles __attribute__((vector_size(16), may_alias));
  typedef int Ints __attribute__((vector_size(16), may_alias));
};
struct Avx2 {
  typedef double Doubles __attribute__((vector_size(32), may_alias));
  typedef int Ints __attribute__((vector_size(32), may_alias));
};

template <class Vector>
constexpr int Lanes() {
  return static_cast<int>(sizeof(Vector) / sizeof(std::declval<Vector>()[0]));
}

/// Boxes packed into a tree of blocks of eight. They do not change.
///
/// Level 0 holds the boxes. The bounds of each of its blocks are a box of level 1, and so on, up to a level of one block.
/// All blocks but the last of a level are full, so that no pointers are needed: box i of a level bounds block i of the
/// level below. The boxes are put in an order in which those of a block are near each other: from the top, they are cut in
/// two at a multiple of what a full block below holds, again and again, here always across the longest extent of their
/// centres. The cuts are near the medians and thus follow the boxes on graded meshes, too. @cite garcia1998
class PackedBoxes {
 public:
  explicit PackedBoxes(std::vector<Entry> const& entries);

  std::size_t size() const { return ids_.size(); }

  /// Appends the boxes and their numbers to `entries`.
  void AppendTo(std::vector<Entry>& entries) const;

  /// Appends the numbers of the boxes that meet the query to `answer`. Contents and size of the two other arrays mean
  /// nothing; they are handed over so that not every search allocates them.
  template <class Registers>
  void Search(Box const& query, std::vector<int>& answer, std::vector<int>& blocks,
              std::vector<int>& children) const;

 private:
  static constexpr int kWidth = 8;

  /// Eight boxes, coordinate by coordinate. Where a box is missing there are NaNs, which meet no query.
  struct alignas(64) Block {
    double low[3][kWidth], high[3][kWidth];
  };
  typedef std::vector<Block> Level;

  struct Centre {
    double x[3];
    std::size_t entry;
  };
  typedef std::vector<Centre>::iterator CentreIterator;

  static void Arrange(CentreIterator first, CentreIterator last);
  static void Append(Level& level, std::size_t i, Box const& box);
  static Box BoundsOf(Block const& block);
  static void Prefetch(Block const& block);
  template <class Registers>
  static int* AppendMeeting(Block const& block, Box const& query, int firstChild, int* out);

  std::vector<Level> levels_;
  std::vector<int> ids_;  // of the boxes of level 0
};

PackedBoxes::PackedBoxes(std::vector<Entry> const& entries) {
  // Each coordinate is halved first, since the sum of two may overflow, and an infinite one counts as a very large one.
  constexpr double kLargest = std::numeric_limits<double>::max();
  std::vector<Centre> centres(entries.size());
  for (std::size_t i = 0; i < entries.size(); ++i) {
    for (int d = 0; d < 3; ++d)
      centres[i].x[d] =
          0.5 * std::max(entries[i].box.low[d], -kLargest) + 0.5 * std::min(entries[i].box.high[d], kLargest);
    centres[i].entry = i;
  }
  Arrange(centres.begin(), centres.end());

  Level level;
  for (Centre const& centre : centres) {
    Append(level, ids_.size(), entries[centre.entry].box);
    ids_.push_back(entries[centre.entry].id);
  }
  levels_.push_back(std::move(level));
  while (levels_.back().size() > 1) {
    Level bounds;
    for (Block const& block : levels_.back())
      Append(bounds, static_cast<std::size_t>(&block - levels_.back().data()), BoundsOf(block));
    levels_.push_back(std::move(bounds));
  }
}

// There are only full blocks, of every level, on the low side of each cut.
void PackedBoxes::Arrange(CentreIterator first, CentreIterator last) {
  std::ptrdiff_t const n = last - first;
  if (n <= kWidth) return;
  std::ptrdiff_t part = kWidth;  // boxes in each part of the smallest full block that holds all of these
  while (part * kWidth < n) part *= kWidth;
  CentreIterator const middle = first + (n + part - 1) / part / 2 * part;

  Centre low = *first, high = *first;
  for (CentreIterator centre = first; centre != last; ++centre) {
    for (int d = 0; d < 3; ++d) {
      low.x[d] = std::min(low.x[d], centre->x[d]);
      high.x[d] = std::max(high.x[d], centre->x[d]);
    }
  }
  int longest = 0;
  for (int d = 1; d < 3; ++d)
    if (high.x[d] - low.x[d] > high.x[longest] - low.x[longest]) longest = d;
  std::nth_element(first, middle, last,
                   [longest](Centre const& a, Centre const& b) { return a.x[longest] < b.x[longest]; });
  Arrange(first, middle);
  Arrange(middle, last);
}

// Box i of the level, which has i boxes.
void PackedBoxes::Append(Level& level, std::size_t i, Box const& box) {
  std::size_t const k = i % kWidth;
  if (k == 0) {
    level.emplace_back();
    for (int d = 0; d < 3; ++d) {
      std::fill_n(level.back().low[d], kWidth, std::numeric_limits<double>::quiet_NaN());
      std::fill_n(level.back().high[d], kWidth, std::numeric_limits<double>::quiet_NaN());
    }
  }
  for (int d = 0; d < 3; ++d) {
    level.back().low[d][k] = box.low[d];
    level.back().high[d][k] = box.high[d];
  }
}

Box PackedBoxes::BoundsOf(Block const& block) {
  Box bounds;
  for (int d = 0; d < 3; ++d) {
    bounds.low[d] = block.low[d][0];
    bounds.high[d] = block.high[d][0];
    for (int k = 1; k < kWidth; ++k) {
      // A missing box is neither smaller nor larger than anything.
      if (block.low[d][k] < bounds.low[d]) bounds.low[d] = block.low[d][k];
      if (block.high[d][k] > bounds.high[d]) bounds.high[d] = block.high[d][k];
    }
  }
  return bounds;
}

void PackedBoxes::AppendTo(std::vector<Entry>& entries) const {
  for (std::size_t i = 0; i < ids_.size(); ++i) {
    Block const& block = levels_[0][i / kWidth];
    Entry entry = {{}, ids_[i]};
    for (int d = 0; d < 3; ++d) {
      entry.box.low[d] = block.low[d][i % kWidth];
      entry.box.high[d] = block.high[d][i % kWidth];
    }
    entries.push_back(entry);
  }
}

inline void PackedBoxes::Prefetch(Block const& block) {
  constexpr std::size_t kLine = 64;
  char const* const bytes = reinterpret_cast<char const*>(&block);
  for (std::size_t i = 0; i < sizeof(Block); i += kLine) __builtin_prefetch(bytes + i);
}

// Appends the numbers of the block's boxes that meet the query, of which the first is `firstChild`. No branch depends on
// the answer, which nobody could predict: every number is written, and the next one overwrites it if its box does not meet
// the query. So there has to be room for eight numbers.
template <class Registers>
[[gnu::always_inline]] inline int* PackedBoxes::AppendMeeting(Block const& block, Box const& query,
                                                              int firstChild, int* out) {
  typedef typename Registers::Doubles Doubles;
  for (int k = 0; k < kWidth; k += Lanes<Doubles>()) {
    auto const at = [k](double const* x) -> Doubles const& {
      return *reinterpret_cast<Doubles const*>(x + k);
    };
    auto const meets = (at(block.low[0]) <= query.high[0]) & (at(block.high[0]) >= query.low[0]) &
                       (at(block.low[1]) <= query.high[1]) & (at(block.high[1]) >= query.low[1]) &
                       (at(block.low[2]) <= query.high[2]) & (at(block.high[2]) >= query.low[2]);
    for (int lane = 0; lane < Lanes<Doubles>(); ++lane) {
      *out = firstChild + k + lane;
      out -= meets[lane];  // -1 for true
    }
  }
  return out;
}

// One level at a time, from the top: the boxes that meet the query are the blocks to look at in the level below. All of
// these are known before the first is looked at, so that they come from memory at the same time.
template <class Registers>
[[gnu::always_inline]] inline void PackedBoxes::Search(Box const& query, std::vector<int>& answer,
                                                       std::vector<int>& blocks,
                                                       std::vector<int>& children) const {
  std::size_t n = 1;
  blocks.resize(std::max(blocks.size(), n));
  blocks[0] = 0;
  for (std::size_t level = levels_.size(); level-- > 0;) {
    Block const* const inLevel = levels_[level].data();
    for (std::size_t i = 0; i < n; ++i) Prefetch(inLevel[blocks[i]]);
    children.resize(std::max(children.size(), n * kWidth));
    int* end = children.data();
    for (std::size_t i = 0; i < n; ++i)
      end = AppendMeeting<Registers>(inLevel[blocks[i]], query, kWidth * blocks[i], end);
    n = static_cast<std::size_t>(end - children.data());
    blocks.swap(children);
  }
  std::size_t const before = answer.size();
  answer.resize(before + n);
  for (std::size_t i = 0; i < n; ++i) answer[before + i] = ids_[static_cast<std::size_t>(blocks[i])];
}

constexpr std::size_t kFew = 128;

// Sorts up to kFew numbers: each goes to the place that the number of smaller ones tells. That takes a square of
// comparisons, but many at a time and without branches.
template <class Registers>
[[gnu::always_inline]] inline void SortFew(std::vector<int>& numbers) {
  typedef typename Registers::Ints Ints;
  constexpr std::size_t kLanes = Lanes<Ints>(), kStep = 4 * kLanes;
  std::size_t const n = numbers.size();
  alignas(32) int copy[kFew] = {}, place[kFew];
  std::copy(numbers.begin(), numbers.end(), copy);
  for (std::size_t i = 0; i < n; i += kStep) {
    Ints const* const several = reinterpret_cast<Ints const*>(copy + i);
    Ints smaller[4] = {};
    for (std::size_t j = 0; j < n; ++j)
      for (int k = 0; k < 4; ++k) smaller[k] -= copy[j] < several[k];  // -1 for true
    for (int k = 0; k < 4; ++k) reinterpret_cast<Ints*>(place + i)[k] = smaller[k];
  }
  std::fill(numbers.begin(), numbers.end(), std::numeric_limits<int>::min());
  for (std::size_t i = 0; i < n; ++i) numbers[static_cast<std::size_t>(place[i])] = copy[i];
  // Equal numbers have all gone to one place and left those behind it empty.
  for (std::size_t i = 1; i < n; ++i) numbers[i] = std::max(numbers[i], numbers[i - 1]);
}

// Sorts by the last six bits, then by the six before them, and so on. Branches on comparisons of numbers would mostly be
// mispredicted.
void SortMany(std::vector<int>& numbers, std::vector<int>& work) {
  constexpr int kBits = 6;
  int least = numbers[0], greatest = numbers[0];
  for (int const x : numbers) least = std::min(least, x), greatest = std::max(greatest, x);
  unsigned const first = static_cast<unsigned>(least), range = static_cast<unsigned>(greatest) - first;
  work.resize(std::max(work.size(), numbers.size()));
  for (int shift = 0; shift < 32 && range >> shift != 0; shift += kBits) {
    auto const digit = [first, shift](int x) {
      return ((static_cast<unsigned>(x) - first) >> shift) % (1U << kBits);
    };
    std::array<unsigned, (1U << kBits) + 1> place = {};
    for (int const x : numbers) ++place[digit(x) + 1];
    for (std::size_t i = 1; i < place.size(); ++i) place[i] += place[i - 1];
    for (int const x : numbers) work[place[digit(x)]++] = x;
    std::copy_n(work.begin(), numbers.size(), numbers.begin());
  }
}

}  // namespace packed_tree

using namespace packed_tree;

/// What all copies of one CZYNOptKer share.
struct CZYNOptKer::Tree {
  std::vector<PackedBoxes> packed;  // each has at least twice as many boxes as the next
  std::vector<Entry> added;         // since the last search
  std::vector<int> answer;          // of the last search
  std::vector<int> work[2];         // of a search

  void TakeIn();
  template <class Registers>
  void SearchBy(Box const& query);
  void SearchBySse2(Box const& query);
  void SearchByAvx2(Box const& query);
};

// The first search packs the boxes. Later ones are packed by themselves, or together with the earlier ones if these are not
// many more: this way there are at most log n packed trees, and each box is packed log n times at most.
void CZYNOptKer::Tree::TakeIn() {
  if (added.empty()) return;
  std::vector<Entry> together = added;
  std::size_t nKept = packed.size();
  while (nKept > 0 && packed[nKept - 1].size() < 2 * together.size()) packed[--nKept].AppendTo(together);
  PackedBoxes newest(together);
  packed.reserve(nKept + 1);  // the last allocation: if memory runs out, nothing has changed
  packed.erase(packed.begin() + static_cast<std::ptrdiff_t>(nKept), packed.end());
  packed.push_back(std::move(newest));
  added.clear();
  added.shrink_to_fit();
}

template <class Registers>
[[gnu::always_inline]] inline void CZYNOptKer::Tree::SearchBy(Box const& query) {
  for (PackedBoxes const& boxes : packed) boxes.Search<Registers>(query, answer, work[0], work[1]);
  if (answer.size() <= kFew) {
    SortFew<Registers>(answer);
  } else {
    SortMany(answer, work[0]);
  }
}

void CZYNOptKer::Tree::SearchBySse2(Box const& query) { SearchBy<Sse2>(query); }

#if ZYN_HAS_TARGETS
ZYN_TARGET_AVX2 void CZYNOptKer::Tree::SearchByAvx2(Box const& query) { SearchBy<Avx2>(query); }
#endif

// Not std::make_shared: its unique symbol would keep the library from being unloaded.
CZYNOptKer::CZYNOptKer() : tree_(new Tree) {}

CZYNOptKer::~CZYNOptKer() = default;

// The tree grows with its boxes and needs no root box.
int CZYNOptKer::SetADTreeRange(double, double, double, double, double, double, int, int, int) { return 0; }

int CZYNOptKer::AddSurfaceToADTree(int id, double xhigh, double yhigh, double zhigh, double xlow, double ylow,
                                   double zlow) {
  Box const box = {{xlow, ylow, zlow}, {xhigh, yhigh, zhigh}};
  if (IsBox(box)) tree_->added.push_back({box, id});
  return 0;
}

int const* CZYNOptKer::SearchNearBlockID(double xlow, double ylow, double zlow, double xhigh, double yhigh,
                                         double zhigh, int& count, int) {
  Box const query = {{xlow, ylow, zlow}, {xhigh, yhigh, zhigh}};
  tree_->answer.clear();
  if (IsBox(query)) {
    tree_->TakeIn();
#if ZYN_HAS_TARGETS
    // Asked here, since processor::HasAvx2 belongs to another library.
    if (__builtin_cpu_supports("avx2")) {
      tree_->SearchByAvx2(query);
    } else {
      tree_->SearchBySse2(query);
    }
#else
    tree_->SearchBySse2(query);
#endif
  }
  count = static_cast<int>(tree_->answer.size());
  return tree_->answer.data();
}
