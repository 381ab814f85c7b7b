#include "reference_host/partition/CuthillMcKee.h"

#include <algorithm>
#include <utility>

namespace reference_host {
namespace {

class Ordering {
 public:
  Ordering(std::vector<std::size_t> const& rowStart, std::vector<int> const& columns)
      : rowStart_(rowStart),
        columns_(columns),
        nVertices_(static_cast<int>(rowStart.size()) - 1),
        visitOf_(nVertices_, 0),
        placed_(nVertices_, 0) {
    order_.reserve(nVertices_);
    queue_.reserve(nVertices_);
  }

  std::vector<int> Compute() {
    for (int v = 0; v < nVertices_; ++v) {
      if (!placed_[v]) PlaceComponent(VertexAtRim(v));
    }
    return std::move(order_);
  }

 private:
  std::size_t Degree(int v) const { return rowStart_[v + 1] - rowStart_[v]; }
  bool LessConnected(int a, int b) const { return Degree(a) != Degree(b) ? Degree(a) < Degree(b) : a < b; }

  /// Breadth-first search from `root` into queue_. Returns the number of levels and the position where the
  /// last one begins.
  int SearchLevels(int root, std::size_t& lastLevelBegin) {
    ++visit_;
    queue_.assign(1, root);
    visitOf_[root] = visit_;
    int nLevels = 0;
    for (std::size_t begin = 0; begin < queue_.size(); ++nLevels) {
      lastLevelBegin = begin;
      std::size_t const end = queue_.size();
      for (; begin < end; ++begin) {
        int const v = queue_[begin];
        for (std::size_t i = rowStart_[v]; i < rowStart_[v + 1]; ++i) {
          int const neighbour = columns_[i];
          if (visitOf_[neighbour] == visit_) continue;
          visitOf_[neighbour] = visit_;
          queue_.push_back(neighbour);
        }
      }
    }
    return nLevels;
  }

  /// Goes from a vertex to the farthest one, as long as the distance grows.
  int VertexAtRim(int start) {
    auto const lessConnected = [this](int a, int b) { return LessConnected(a, b); };
    std::size_t lastLevel = 0;
    int root = start;
    int nLevels = SearchLevels(root, lastLevel);
    for (;;) {
      int const candidate = *std::min_element(queue_.begin() + static_cast<std::ptrdiff_t>(lastLevel),
                                              queue_.end(), lessConnected);
      int const nCandidateLevels = SearchLevels(candidate, lastLevel);
      if (nCandidateLevels <= nLevels) return root;
      root = candidate;
      nLevels = nCandidateLevels;
    }
  }

  void PlaceComponent(int root) {
    std::size_t next = order_.size();
    Place(root);
    std::vector<int> neighbours;
    for (; next < order_.size(); ++next) {
      int const v = order_[next];
      neighbours.clear();
      for (std::size_t i = rowStart_[v]; i < rowStart_[v + 1]; ++i) {
        if (!placed_[columns_[i]]) neighbours.push_back(columns_[i]);
      }
      std::sort(neighbours.begin(), neighbours.end(), [this](int a, int b) { return LessConnected(a, b); });
      for (int const neighbour : neighbours) {
        if (!placed_[neighbour]) Place(neighbour);
      }
    }
  }

  void Place(int v) {
    placed_[v] = 1;
    order_.push_back(v);
  }

  std::vector<std::size_t> const& rowStart_;
  std::vector<int> const& columns_;
  int nVertices_;
  int visit_ = 0;             // number of the current search
  std::vector<int> visitOf_;  // last search that has reached a vertex
  std::vector<char> placed_;
  std::vector<int> queue_;
  std::vector<int> order_;
};

}  // namespace

std::vector<int> CuthillMcKee(std::vector<std::size_t> const& rowStart, std::vector<int> const& columns) {
  return Ordering(rowStart, columns).Compute();
}

}  // namespace reference_host
