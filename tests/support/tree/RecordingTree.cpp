#include "tests/support/tree/RecordingTree.h"

#include <algorithm>

#include "host/ZYNOptKer.h"

namespace zyn_test {
namespace {

template <typename Call>
std::vector<Call> OfTree(std::vector<Call> const& calls, int tree) {
  std::vector<Call> result;
  for (Call const& call : calls)
    if (call.tree == tree) result.push_back(call);
  return result;
}

bool Meet(Corners const& box, Corners const& query) {
  for (std::size_t axis = 0; axis < 3; ++axis)
    if (!(box[axis] >= query[axis] && box[axis + 3] <= query[axis + 3])) return false;
  return true;
}

std::vector<int> Answer(std::vector<TreeCalls::Box> const& boxes, Corners const& query) {
  if (Calls().answer) return Calls().answer(query);
  std::vector<int> ids;
  for (TreeCalls::Box const& box : boxes)
    if (Meet(box.corners, query)) ids.push_back(box.id);
  std::sort(ids.begin(), ids.end());
  if (Calls().arrange) Calls().arrange(ids);
  return ids;
}

}  // namespace

std::vector<TreeCalls::Box> TreeCalls::BoxesOf(int tree) const { return OfTree(boxes, tree); }

std::vector<TreeCalls::Range> TreeCalls::RangesOf(int tree) const { return OfTree(ranges, tree); }

TreeCalls& Calls() {
  static TreeCalls calls;
  return calls;
}

void StartAnew() { Calls() = TreeCalls(); }

void StartAnewWithoutAnswers() {
  StartAnew();
  Calls().answer = [](Corners const&) { return std::vector<int>(); };
}

}  // namespace zyn_test

using zyn_test::Calls;

struct CZYNOptKer::Tree {
  int number = 0;
  std::vector<zyn_test::TreeCalls::Box> boxes;
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
  return -1;  // nobody looks at it
}

int const* CZYNOptKer::SearchNearBlockID(double xlow, double ylow, double zlow, double xhigh, double yhigh,
                                         double zhigh, int& count, int last) {
  zyn_test::Corners const query = {xlow, ylow, zlow, xhigh, yhigh, zhigh};
  std::vector<int> ids = zyn_test::Answer(tree_->boxes, query);
  // The former answer is void from here on, and whoever still reads it sees numbers that are no cells.
  std::fill(tree_->answer.begin(), tree_->answer.end(), -0x6badbeef);
  tree_->answer.swap(ids);
  count = static_cast<int>(tree_->answer.size());
  Calls().queries.push_back({tree_->number, query, last, count});
  return tree_->answer.empty() ? nullptr : tree_->answer.data();
}
