#include "tests/support/tree/RecordingTree.h"

#include "host/ZYNOptKer.h"

namespace rbf_cell_test {

TreeCalls& Calls() {
  static TreeCalls calls;
  return calls;
}

}  // namespace rbf_cell_test

using rbf_cell_test::Calls;

struct CZYNOptKer::Tree {};

CZYNOptKer::CZYNOptKer() : tree_(std::make_shared<Tree>()) { ++Calls().constructed; }

CZYNOptKer::~CZYNOptKer() { ++Calls().destroyed; }

int CZYNOptKer::SetADTreeRange(double xmax, double ymax, double zmax, double xmin, double ymin, double zmin,
                               int a, int b, int c) {
  Calls().ranges.push_back({xmax, ymax, zmax, xmin, ymin, zmin, 1.0 * a, 1.0 * b, 1.0 * c});
  Calls().boxesBeforeTheLastRange = static_cast<int>(Calls().boxes.size());
  return -1;  // nobody looks at it
}

int CZYNOptKer::AddSurfaceToADTree(int id, double xhigh, double yhigh, double zhigh, double xlow, double ylow,
                                   double zlow) {
  Calls().boxes.push_back({id, {xhigh, yhigh, zhigh, xlow, ylow, zlow}});
  return -1;
}

int const* CZYNOptKer::SearchNearBlockID(double xlow, double ylow, double zlow, double xhigh, double yhigh,
                                         double zhigh, int& count, int last) {
  static std::vector<int> answer;
  answer.assign(answer.size(), -0x6badbeef);  // whoever still reads the former answer gets this
  std::array<double, 6> const corners = {xlow, ylow, zlow, xhigh, yhigh, zhigh};
  ++Calls().searches;
  Calls().queries.push_back({corners, last});
  answer = Calls().answer ? std::vector<int>(Calls().answer(corners)) : std::vector<int>();
  count = static_cast<int>(answer.size());
  return answer.empty() ? nullptr : answer.data();
}
