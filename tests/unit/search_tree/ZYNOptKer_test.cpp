#include "host/ZYNOptKer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <limits>
#include <memory>
#include <random>
#include <vector>

namespace {

struct TestBox {
  int id;
  std::array<double, 3> low, high;
};

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

bool Meet(TestBox const& a, TestBox const& b) {
  for (std::size_t d = 0; d < 3; ++d) {
    if (a.low[d] > b.high[d] || b.low[d] > a.high[d]) return false;
  }
  return true;
}

/// In ascending order, as the tree answers.
std::vector<int> BruteForce(std::vector<TestBox> const& boxes, TestBox const& query) {
  std::vector<int> ids;
  for (TestBox const& box : boxes) {
    if (Meet(box, query)) ids.push_back(box.id);
  }
  std::sort(ids.begin(), ids.end());
  return ids;
}

void Add(CZYNOptKer& tree, TestBox const& box) {
  tree.AddSurfaceToADTree(box.id, box.high[0], box.high[1], box.high[2], box.low[0], box.low[1], box.low[2]);
}

std::vector<int> Search(CZYNOptKer& tree, TestBox const& query) {
  int count = -1;
  int const* ids = tree.SearchNearBlockID(query.low[0], query.low[1], query.low[2], query.high[0],
                                          query.high[1], query.high[2], count, 0);
  return {ids, ids + count};
}

void SetUnitRange(CZYNOptKer& tree) { tree.SetADTreeRange(1, 1, 1, 0, 0, 0, 1, 10000, 200000); }

TestBox Around(int id, double x, double y, double z, double halfWidth) {
  return {id, {x - halfWidth, y - halfWidth, z - halfWidth}, {x + halfWidth, y + halfWidth, z + halfWidth}};
}

// Corners on a grid of quarters between -0.5 and 1.5: many boxes touch, coincide, have no extent in a
// direction or leave the range of the tree.
TestBox RandomBox(int id, std::mt19937& random) {
  std::uniform_int_distribution<int> quarter(-2, 6), length(0, 3);
  TestBox box{id, {}, {}};
  for (std::size_t d = 0; d < 3; ++d) {
    box.low[d] = 0.25 * quarter(random);
    box.high[d] = box.low[d] + 0.25 * length(random);
  }
  return box;
}

std::vector<TestBox> RandomBoxes(int n, unsigned seed) {
  std::mt19937 random(seed);
  std::vector<TestBox> boxes;
  for (int id = 1; id <= n; ++id) boxes.push_back(RandomBox(id, random));
  return boxes;
}

void ExpectBruteForceAnswers(CZYNOptKer& tree, std::vector<TestBox> const& boxes, unsigned seed) {
  for (TestBox const& query : RandomBoxes(200, seed))
    EXPECT_EQ(Search(tree, query), BruteForce(boxes, query));
}

}  // namespace

TEST(ZYNOptKer, FindsWhatBruteForceFindsAmongTiesAndTouchingBoxes) {
  for (int const n : {1, 2, 15, 16, 17, 300, 2000}) {
    std::vector<TestBox> const boxes = RandomBoxes(n, 7);
    CZYNOptKer tree;
    SetUnitRange(tree);
    for (TestBox const& box : boxes) Add(tree, box);
    ExpectBruteForceAnswers(tree, boxes, 11);
  }
}

TEST(ZYNOptKer, FindsWhatBruteForceFindsAmongSmallBoxesAroundRandomPoints) {
  std::mt19937 random(3);
  std::uniform_real_distribution<double> coordinate(0.0, 1.0);
  std::vector<TestBox> boxes;
  CZYNOptKer tree;
  SetUnitRange(tree);
  for (int id = 1; id <= 5000; ++id) {
    boxes.push_back(Around(id, coordinate(random), coordinate(random), coordinate(random), 1e-9));
    Add(tree, boxes.back());
  }
  for (int q = 0; q < 100; ++q) {
    TestBox const query = Around(0, coordinate(random), coordinate(random), coordinate(random), 0.1);
    std::vector<int> const expected = BruteForce(boxes, query);
    EXPECT_FALSE(expected.empty());
    EXPECT_EQ(Search(tree, query), expected);
  }
}

// Cells that grow from 1e-6 to 1 along x and y, each with a box around its centre. Queries are as large as the cells near
// them, or larger.
TEST(ZYNOptKer, FindsWhatBruteForceFindsOnAGradedMesh) {
  constexpr int kAcross = 20, kLayers = 5;
  double const growth = std::pow(1e6, 1.0 / (kAcross - 1));
  auto const size = [growth](int i) { return 1e-6 * std::pow(growth, i); };
  auto const centre = [growth, size](int i) { return (size(i) - size(0)) / (growth - 1) + 0.5 * size(i); };
  std::vector<TestBox> boxes;
  CZYNOptKer tree;
  SetUnitRange(tree);
  for (int i = 0; i < kAcross; ++i)
    for (int j = 0; j < kAcross; ++j)
      for (int k = 0; k < kLayers; ++k)
        boxes.push_back(Around(static_cast<int>(boxes.size()), centre(i), centre(j), k, 1e-9));
  for (TestBox const& box : boxes) Add(tree, box);
  for (int i = 0; i < kAcross; ++i) {
    for (double const widths : {0.1, 1.0, 1.5, 20.0}) {
      double const d = widths * size(i);
      TestBox const query = {
          0, {centre(i) - d, centre(5) - d, 1.5 - widths}, {centre(i) + d, centre(5) + d, 1.5 + widths}};
      EXPECT_EQ(Search(tree, query), BruteForce(boxes, query)) << "cell " << i << ", " << widths << " widths";
    }
  }
}

TEST(ZYNOptKer, FindsBoxesWithoutExtentAndInOnePlace) {
  std::vector<TestBox> boxes;
  CZYNOptKer tree;
  SetUnitRange(tree);
  for (int id = 1; id <= 500; ++id) boxes.push_back(Around(id, 0.5, 0.5, 0.5, 0));  // all in one place
  for (int id = 501; id <= 700; ++id)
    boxes.push_back(Around(id, 0.5, 0.01 * (id - 600), 0.5, 0));  // on a line
  for (TestBox const& box : boxes) Add(tree, box);
  ExpectBruteForceAnswers(tree, boxes, 23);
  EXPECT_EQ(501U, Search(tree, Around(0, 0.5, 0.5, 0.5, 0)).size());  // one of the line is there, too
}

TEST(ZYNOptKer, AnswersInAscendingOrderWhateverTheNumbersAre) {
  constexpr int kLowest = std::numeric_limits<int>::min(), kHighest = std::numeric_limits<int>::max();
  std::mt19937 random(29);
  // Numbers near each other, far apart, with repetitions; short and long answers.
  for (int const range : {3, 100, 5000, kHighest}) {
    std::uniform_int_distribution<int> number(range == kHighest ? kLowest : -range, range);
    for (int const n : {1, 2, 7, 31, 32, 33, 127, 128, 129, 1000}) {
      CZYNOptKer tree;
      SetUnitRange(tree);
      std::vector<int> ids;
      for (int i = 0; i < n; ++i) {
        ids.push_back(i == 1 && range == kHighest ? kLowest : number(random));
        Add(tree, Around(ids.back(), 0.001 * i, 0.5, 0.5, 0.1));
      }
      std::sort(ids.begin(), ids.end());
      EXPECT_EQ(ids, Search(tree, Around(0, 0.5, 0.5, 0.5, 2.0))) << n << " up to " << range;
    }
  }
}

TEST(ZYNOptKer, AnswersTheSameInWhateverOrderTheBoxesCome) {
  std::vector<TestBox> boxes = RandomBoxes(400, 31);
  CZYNOptKer tree, other;
  for (TestBox const& box : boxes) Add(tree, box);
  std::shuffle(boxes.begin(), boxes.end(), std::mt19937(37));
  for (TestBox const& box : boxes) Add(other, box);
  for (TestBox const& query : RandomBoxes(100, 41)) EXPECT_EQ(Search(tree, query), Search(other, query));
}

TEST(ZYNOptKer, EmptyTreeAnswersNothing) {
  CZYNOptKer tree;
  EXPECT_TRUE(Search(tree, Around(0, 0, 0, 0, kInfinity)).empty());
  SetUnitRange(tree);
  EXPECT_TRUE(Search(tree, Around(0, 0, 0, 0, 10.0)).empty());
}

TEST(ZYNOptKer, CountsBoxesThatOnlyTouchTheQuery) {
  CZYNOptKer tree;
  SetUnitRange(tree);
  Add(tree, {7, {0, 0, 0}, {1, 1, 1}});
  EXPECT_EQ(std::vector<int>{7}, Search(tree, {0, {1, 0, 0}, {2, 1, 1}}));              // face
  EXPECT_EQ(std::vector<int>{7}, Search(tree, {0, {1, 1, 1}, {2, 2, 2}}));              // corner
  EXPECT_TRUE(Search(tree, {0, {std::nextafter(1.0, 2.0), 1, 1}, {2, 2, 2}}).empty());  // one bit apart
}

TEST(ZYNOptKer, FindsBoxesBeyondTheRange) {
  CZYNOptKer tree;
  SetUnitRange(tree);
  Add(tree, Around(1, 0.5, 0.5, 0.5, 0.1));
  Add(tree, Around(2, 50.0, -3.0, 0.5, 0.1));
  EXPECT_EQ(std::vector<int>{2}, Search(tree, Around(0, 50.0, -3.0, 0.5, 0.2)));
  EXPECT_EQ((std::vector<int>{1, 2}), Search(tree, Around(0, 0, 0, 0, kInfinity)));
}

TEST(ZYNOptKer, AnswersEveryBoxOfARepeatedNumber) {
  CZYNOptKer tree;
  SetUnitRange(tree);
  for (int n = 0; n < 3; ++n) Add(tree, Around(5, 0.5, 0.5, 0.5, 0.1));
  EXPECT_EQ((std::vector<int>{5, 5, 5}), Search(tree, Around(0, 0.5, 0.5, 0.5, 0.1)));
}

TEST(ZYNOptKer, FindsBoxesAddedAfterASearch) {
  std::vector<TestBox> const all = RandomBoxes(600, 5);
  std::vector<TestBox> boxes;
  CZYNOptKer tree;
  SetUnitRange(tree);
  // Batches that are small and large compared with the content of the tree.
  for (std::size_t const until : {1u, 2u, 200u, 210u, 211u, 600u}) {
    while (boxes.size() < until) {
      boxes.push_back(all[boxes.size()]);
      Add(tree, boxes.back());
    }
    ExpectBruteForceAnswers(tree, boxes, 13);
  }
}

// Each box is followed by a search, so that the tree takes in one box at a time.
TEST(ZYNOptKer, FindsEachBoxThatIsAddedBetweenSearches) {
  std::vector<TestBox> const all = RandomBoxes(300, 43);
  std::vector<TestBox> boxes;
  CZYNOptKer tree;
  SetUnitRange(tree);
  for (TestBox const& box : all) {
    boxes.push_back(box);
    Add(tree, box);
    EXPECT_EQ(Search(tree, box), BruteForce(boxes, box)) << boxes.size() << " boxes";
  }
  ExpectBruteForceAnswers(tree, boxes, 47);
}

TEST(ZYNOptKer, InvertedOrNaNQueryFindsNothing) {
  CZYNOptKer tree;
  SetUnitRange(tree);
  Add(tree, {1, {0, 0, 0}, {1, 1, 1}});
  EXPECT_TRUE(Search(tree, {0, {0.8, 0, 0}, {0.2, 1, 1}}).empty());
  EXPECT_TRUE(Search(tree, {0, {0, kNaN, 0}, {1, 1, 1}}).empty());
  EXPECT_TRUE(Search(tree, {0, {0, 0, 0}, {1, 1, kNaN}}).empty());
  EXPECT_EQ(std::vector<int>{1}, Search(tree, {0, {0, 0, 0}, {1, 1, 1}}));
}

TEST(ZYNOptKer, InvertedNaNAndInfiniteBoxesLeaveTheOthersFindable) {
  std::vector<TestBox> boxes = RandomBoxes(100, 17);
  CZYNOptKer tree;
  SetUnitRange(tree);
  for (TestBox const& box : boxes) Add(tree, box);
  Add(tree, {101, {1, 0, 0}, {0, 1, 1}});
  Add(tree, {102, {kNaN, 0, 0}, {1, 1, 1}});
  Add(tree, {103, {0, 0, 0}, {1, 1, kNaN}});
  // Whole planes, half a line, points at infinity, and the largest numbers there are.
  constexpr double kLargest = std::numeric_limits<double>::max();
  boxes.push_back({104, {-kInfinity, -kInfinity, 0}, {kInfinity, kInfinity, 0.5}});
  boxes.push_back({105, {0, 0, 0}, {kInfinity, 0, 0}});
  boxes.push_back({106, {kInfinity, kInfinity, kInfinity}, {kInfinity, kInfinity, kInfinity}});
  boxes.push_back({107, {-kInfinity, 0, 0}, {-kInfinity, 0, 0}});
  boxes.push_back({108, {-kLargest, -kLargest, -kLargest}, {kLargest, kLargest, kLargest}});
  boxes.push_back({109, {kLargest, 0, 0}, {kLargest, 0, 0}});
  for (std::size_t i = 100; i < boxes.size(); ++i) Add(tree, boxes[i]);
  ExpectBruteForceAnswers(tree, boxes, 19);
  for (double const far : {1e200, kLargest, kInfinity}) {
    for (TestBox const& query : {Around(0, 0, 0, 0, far), TestBox{0, {far, 0, 0}, {far, 1, 1}},
                                 TestBox{0, {-far, 0, 0}, {-far, 1, 1}}})
      EXPECT_EQ(Search(tree, query), BruteForce(boxes, query)) << far;
  }
}

TEST(ZYNOptKer, TreeOfBoxesThatAreNoneAnswersNothing) {
  CZYNOptKer tree;
  SetUnitRange(tree);
  for (int id = 1; id <= 20; ++id) Add(tree, {id, {kNaN, kNaN, kNaN}, {kNaN, kNaN, kNaN}});
  for (int id = 21; id <= 40; ++id) Add(tree, {id, {1, 1, 1}, {0, 0, 0}});
  EXPECT_TRUE(Search(tree, Around(0, 0, 0, 0, kInfinity)).empty());
}

TEST(ZYNOptKer, CopiesShareBoxesAndAnswer) {
  CZYNOptKer tree;
  SetUnitRange(tree);
  Add(tree, Around(1, 0.5, 0.5, 0.5, 0.1));
  CZYNOptKer copy(tree);
  Add(copy, Around(2, 0.5, 0.5, 0.5, 0.1));
  EXPECT_EQ((std::vector<int>{1, 2}), Search(tree, Around(0, 0.5, 0.5, 0.5, 0.1)));

  CZYNOptKer assigned;
  Add(assigned, Around(9, 0.5, 0.5, 0.5, 0.1));
  assigned = tree;
  EXPECT_EQ((std::vector<int>{1, 2}), Search(assigned, Around(0, 0.5, 0.5, 0.5, 0.1)));
}

TEST(ZYNOptKer, AnswerOutlivesTheCopyThatSearched) {
  CZYNOptKer tree;
  SetUnitRange(tree);
  Add(tree, Around(4, 0.5, 0.5, 0.5, 0.1));
  int count = 0;
  int const* ids = nullptr;
  {
    CZYNOptKer copy(tree);
    ids = copy.SearchNearBlockID(0, 0, 0, 1, 1, 1, count, 0);
  }
  Add(tree, Around(5, 0.5, 0.5, 0.5, 0.1));
  ASSERT_EQ(1, count);
  EXPECT_EQ(4, ids[0]);
}

TEST(ZYNOptKer, CopiesMayBeDestroyedInAnyOrder) {
  for (bool const originalFirst : {true, false}) {
    auto original = std::make_unique<CZYNOptKer>();
    SetUnitRange(*original);
    Add(*original, Around(1, 0.5, 0.5, 0.5, 0.1));
    auto copy = std::make_unique<CZYNOptKer>(*original);
    (originalFirst ? original : copy).reset();
    CZYNOptKer& left = originalFirst ? *copy : *original;
    EXPECT_EQ(std::vector<int>{1}, Search(left, Around(0, 0.5, 0.5, 0.5, 0.1)));
  }
}
