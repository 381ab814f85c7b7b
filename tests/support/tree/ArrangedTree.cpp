#include "tests/support/tree/ArrangedTree.h"

#include <algorithm>

#include "host/ZYNOptKer.h"

namespace rbf_face_test {
namespace {

Arrangement& Current() {
  static Arrangement arrangement;
  return arrangement;
}

}  // namespace

std::vector<TreeCalls::Box> TreeCalls::BoxesOf(int tree) const {
  std::vector<Box> result;
  for (Box const& box : boxes)
    if (box.tree == tree) result.push_back(box);
  return result;
}

std::vector<TreeCalls::Range> TreeCalls::RangesOf(int tree) const {
  std::vector<Range> result;
  for (Range const& range : ranges)
    if (range.tree == tree) result.push_back(range);
  return result;
}

TreeCalls& Calls() {
  static TreeCalls calls;
  return calls;
}

void Arrange(Arrangement const& arrangement) { Current() = arrangement; }

void StartAnew() {
  Calls() = TreeCalls();
  Current() = nullptr;
}

}  // namespace rbf_face_test

using rbf_face_test::Calls;

struct CZYNOptKer::Tree {
  int number = 0;
  std::vector<rbf_face_test::TreeCalls::Box> boxes;
  std::vector<int> answer;
};

CZYNOptKer::CZYNOptKer() : tree_(std::make_shared<Tree>()) { tree_->number = ++Calls().constructed; }

CZYNOptKer::~CZYNOptKer() { ++Calls().destroyed; }

int CZYNOptKer::SetADTreeRange(double xmax, double ymax, double zmax, double xmin, double ymin, double zmin,
                               int a, int b, int c) {
  Calls().ranges.push_back({tree_->number,
                            {xmax, ymax, zmax, xmin, ymin, zmin, 1.0 * a, 1.0 * b, 1.0 * c},
                            static_cast<int>(tree_->boxes.size())});
  return -1;  // nobody looks at it
}

int CZYNOptKer::AddSurfaceToADTree(int id, double xhigh, double yhigh, double zhigh, double xlow, double ylow,
                                   double zlow) {
  tree_->boxes.push_back({tree_->number, id, {xhigh, yhigh, zhigh, xlow, ylow, zlow}});
  Calls().boxes.push_back(tree_->boxes.back());
  return -1;
}

int const* CZYNOptKer::SearchNearBlockID(double xlow, double ylow, double zlow, double xhigh, double yhigh,
                                         double zhigh, int& count, int last) {
  std::array<double, 6> const query = {xlow, ylow, zlow, xhigh, yhigh, zhigh};
  std::vector<int> ids;
  for (auto const& box : tree_->boxes) {
    bool meets = true;
    for (std::size_t axis = 0; axis < 3; ++axis)
      meets = meets && box.corners[axis] >= query[axis] && box.corners[axis + 3] <= query[axis + 3];
    if (meets) ids.push_back(box.id);
  }
  std::sort(ids.begin(), ids.end());
  if (rbf_face_test::Current()) rbf_face_test::Current()(ids);
  // The former answer is void from here on, and whoever still reads it sees numbers that are no cells.
  std::fill(tree_->answer.begin(), tree_->answer.end(), -1000000);
  tree_->answer.swap(ids);
  count = static_cast<int>(tree_->answer.size());
  Calls().queries.push_back({tree_->number, query, last, count});
  return tree_->answer.data();
}
