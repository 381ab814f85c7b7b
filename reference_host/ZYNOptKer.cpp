#include "host/ZYNOptKer.h"

// Boost's own headers include deprecated ones and would warn about it.
#define BOOST_ALLOW_DEPRECATED_HEADERS

#include <algorithm>
#include <boost/geometry/geometries/box.hpp>
#include <boost/geometry/geometries/point.hpp>
#include <boost/geometry/index/rtree.hpp>
#include <boost/iterator/function_output_iterator.hpp>
#include <cstddef>
#include <utility>
#include <vector>

namespace {

namespace bg = boost::geometry;
namespace bgi = boost::geometry::index;

using Corner = bg::model::point<double, 3, bg::cs::cartesian>;
using Box = bg::model::box<Corner>;
using Entry = std::pair<Box, int>;
// 16 boxes per node. The split rule matters only for boxes added after a search, since the first ones are
// bulk-loaded.
using RTree = bgi::rtree<Entry, bgi::quadratic<16>>;

// Building the tree computes lengths and volumes of boxes, which must stay finite. No mesh comes near this
// bound. Clamping keeps the order of coordinates, so no box that intersects the query is lost.
constexpr double kLargest = 1e100;

double Clamp(double x) { return std::clamp(x, -kLargest, kLargest); }

// False for an inverted box and for one with a NaN, neither of which contains a point.
bool IsBox(double xlow, double ylow, double zlow, double xhigh, double yhigh, double zhigh) {
  return xlow <= xhigh && ylow <= yhigh && zlow <= zhigh;
}

Box MakeBox(double xlow, double ylow, double zlow, double xhigh, double yhigh, double zhigh) {
  return {Corner(Clamp(xlow), Clamp(ylow), Clamp(zlow)), Corner(Clamp(xhigh), Clamp(yhigh), Clamp(zhigh))};
}

}  // namespace

/// What all copies of one CZYNOptKer share.
struct CZYNOptKer::Tree {
  RTree boxes;
  std::vector<Entry> added;  // since the last search
  std::vector<int> answer;   // of the last search

  void TakeIn();
};

// Bulk loading packs the nodes tightly and costs one sort, so the boxes are collected until the first search.
// A few later boxes are inserted one by one; for many, the tree is bulk-loaded anew.
void CZYNOptKer::Tree::TakeIn() {
  if (added.empty()) return;
  bool const few = added.size() < boxes.size() / 4;
  if (few) {
    boxes.insert(added.begin(), added.end());
  } else if (boxes.empty()) {
    boxes = RTree(added.begin(), added.end());
  } else {
    // Build a second tree first, so that nothing changes if memory runs out.
    std::vector<Entry> all(boxes.begin(), boxes.end());
    all.insert(all.begin(), added.begin(), added.end());
    boxes = RTree(all.begin(), all.end());
  }
  added.clear();
  added.shrink_to_fit();
}

// Not std::make_shared: its unique symbol would keep the library from being unloaded.
CZYNOptKer::CZYNOptKer() : tree_(new Tree) {}

CZYNOptKer::~CZYNOptKer() = default;

// An R-tree grows with its boxes and needs no root box.
int CZYNOptKer::SetADTreeRange(double, double, double, double, double, double, int, int, int) { return 0; }

int CZYNOptKer::AddSurfaceToADTree(int id, double xhigh, double yhigh, double zhigh, double xlow, double ylow,
                                   double zlow) {
  if (IsBox(xlow, ylow, zlow, xhigh, yhigh, zhigh)) {
    tree_->added.emplace_back(MakeBox(xlow, ylow, zlow, xhigh, yhigh, zhigh), id);
  }
  return 0;
}

int const* CZYNOptKer::SearchNearBlockID(double xlow, double ylow, double zlow, double xhigh, double yhigh,
                                         double zhigh, int& count, int) {
  std::vector<int>& answer = tree_->answer;
  answer.clear();
  if (IsBox(xlow, ylow, zlow, xhigh, yhigh, zhigh)) {
    tree_->TakeIn();
    Box const query = MakeBox(xlow, ylow, zlow, xhigh, yhigh, zhigh);
    auto const keepId = [&answer](Entry const& entry) { answer.push_back(entry.second); };
    tree_->boxes.query(bgi::intersects(query), boost::make_function_output_iterator(keepId));
  }
  count = static_cast<int>(answer.size());
  return answer.data();
}
