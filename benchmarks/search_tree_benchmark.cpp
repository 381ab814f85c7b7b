// Times of the search tree of the reference host beside an R-tree of Boost, on the boxes and queries of the
// radial-basis operators.
//
//   search_tree_benchmark [CELLS [POINTS]]
//
// Prints lines for run.sh: see Report.h.
//
// The program's CZYNOptKer operations stand in front of the tree's own, which they call. While an operator is set up, they
// record its boxes and queries. Then the recorded queries are put to both trees in turn. Their answers have to agree.

#include <dlfcn.h>
#include <mpi.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

// Boost's own headers include deprecated ones and would warn about it.
#define BOOST_ALLOW_DEPRECATED_HEADERS
#include <boost/geometry/geometries/box.hpp>
#include <boost/geometry/geometries/point.hpp>
#include <boost/geometry/index/rtree.hpp>
#include <boost/iterator/function_output_iterator.hpp>

#include "benchmarks/InterpolationCase.h"
#include "benchmarks/ProcessMeasures.h"
#include "benchmarks/Report.h"
#include "host/ZYNOptKer.h"
#include "rbf_face/CZynFaceRBFInternalObject.h"
#include "rbf_ib/CZynIBRBFInternalObject.h"

namespace {

using benchmarks::InterpolationCase;
using benchmarks::QuietOutput;
using benchmarks::Report;
using benchmarks::Seconds;

using Corners = std::array<double, 6>;  // low x, y, z, high x, y, z

struct Query {
  CZYNOptKer const* tree;
  Corners corners;
};
struct Entry {
  CZYNOptKer const* tree;
  int id;
  Corners corners;
};

struct Recording {
  bool isOn = false;
  std::vector<Entry> entries;
  std::vector<Query> queries;
} recording;

// The operations of the tree itself, by the names that the compiler gives them.
template <class Function>
Function Next(char const* name) {
  return reinterpret_cast<Function>(dlsym(RTLD_NEXT, name));
}
using AddFunction = int (*)(CZYNOptKer*, int, double, double, double, double, double, double);
using SearchFunction = int const* (*)(CZYNOptKer*, double, double, double, double, double, double, int&, int);

int AddToTree(CZYNOptKer& tree, int id, Corners const& c) {
  static auto const add = Next<AddFunction>("_ZN10CZYNOptKer18AddSurfaceToADTreeEidddddd");
  return add(&tree, id, c[3], c[4], c[5], c[0], c[1], c[2]);
}

int const* SearchTree(CZYNOptKer& tree, Corners const& c, int& count) {
  static auto const search = Next<SearchFunction>("_ZN10CZYNOptKer17SearchNearBlockIDEddddddRii");
  return search(&tree, c[0], c[1], c[2], c[3], c[4], c[5], count, 0);
}

}  // namespace

int CZYNOptKer::AddSurfaceToADTree(int id, double xhigh, double yhigh, double zhigh, double xlow, double ylow,
                                   double zlow) {
  Corners const corners = {xlow, ylow, zlow, xhigh, yhigh, zhigh};
  if (recording.isOn) recording.entries.push_back({this, id, corners});
  return AddToTree(*this, id, corners);
}

int const* CZYNOptKer::SearchNearBlockID(double xlow, double ylow, double zlow, double xhigh, double yhigh,
                                         double zhigh, int& count, int) {
  Corners const corners = {xlow, ylow, zlow, xhigh, yhigh, zhigh};
  if (recording.isOn) recording.queries.push_back({this, corners});
  return SearchTree(*this, corners, count);
}

namespace {

/// The reference host's tree and Boost's, with the same boxes.
class Ours {
 public:
  void Add(int id, Corners const& corners) { AddToTree(tree_, id, corners); }
  void Finish() {
    int count = 0;
    SearchTree(tree_, {0, 0, 0, 0, 0, 0}, count);  // the first search builds the tree
  }
  std::pair<int const*, int> Search(Corners const& corners) {
    int count = 0;
    int const* const ids = SearchTree(tree_, corners, count);
    return {ids, count};
  }

 private:
  CZYNOptKer tree_;
};

class Boosts {
 public:
  void Add(int id, Corners const& c) {
    entries_.emplace_back(Box({c[0], c[1], c[2]}, {c[3], c[4], c[5]}), id);
  }
  void Finish() { tree_ = Tree(entries_.begin(), entries_.end()); }
  std::pair<int const*, int> Search(Corners const& c) {
    answer_.clear();
    auto const keep = [this](std::pair<Box, int> const& entry) { answer_.push_back(entry.second); };
    tree_.query(boost::geometry::index::intersects(Box({c[0], c[1], c[2]}, {c[3], c[4], c[5]})),
                boost::make_function_output_iterator(keep));
    return {answer_.data(), static_cast<int>(answer_.size())};
  }

 private:
  using Point = boost::geometry::model::point<double, 3, boost::geometry::cs::cartesian>;
  using Box = boost::geometry::model::box<Point>;
  using Tree = boost::geometry::index::rtree<std::pair<Box, int>, boost::geometry::index::quadratic<16>>;

  std::vector<std::pair<Box, int>> entries_;
  Tree tree_;
  std::vector<int> answer_;
};

constexpr int kRounds = 5;
constexpr std::ptrdiff_t kMostQueries = 200000;

double Median(std::vector<double> values) {
  std::sort(values.begin(), values.end());
  return values[values.size() / 2];
}

/// One tree's part of the recording.
struct Session {
  std::vector<Entry> entries;
  std::vector<Query> queries;
};

template <class Tree>
double Build(Tree& tree, std::vector<Entry> const& entries) {
  return Seconds([&] {
    for (Entry const& entry : entries) tree.Add(entry.id, entry.corners);
    tree.Finish();
  });
}

template <class Tree>
double Ask(Tree& tree, std::vector<Query> const& queries, std::int64_t& nAnswer) {
  nAnswer = 0;
  return Seconds([&] {
    for (Query const& query : queries) nAnswer += tree.Search(query.corners).second;
  });
}

bool Agree(Ours& ours, Boosts& boosts, std::vector<Query> const& queries) {
  for (Query const& query : queries) {
    auto const [a, n] = ours.Search(query.corners);
    auto const [b, m] = boosts.Search(query.corners);
    std::vector<int> theirs(b, b + m);
    std::sort(theirs.begin(), theirs.end());
    if (!std::equal(a, a + n, theirs.begin(), theirs.end())) return false;
  }
  return true;
}

void Compare(std::string const& name, Session const& session) {
  std::vector<double> build[2], ask[2], ratio;
  std::int64_t nAnswer = 0;
  bool agree = true;
  for (int round = 0; round < kRounds; ++round) {
    Ours ours;
    Boosts boosts;
    build[0].push_back(Build(ours, session.entries));
    build[1].push_back(Build(boosts, session.entries));
    if (round == 0) agree = Agree(ours, boosts, session.queries);
    ask[0].push_back(Ask(ours, session.queries, nAnswer));
    ask[1].push_back(Ask(boosts, session.queries, nAnswer));
    ratio.push_back(ask[0].back() / ask[1].back());
  }
  double const nQuery = static_cast<double>(session.queries.size());
  double const nEntry = static_cast<double>(session.entries.size());
  if (!agree) {
    std::fprintf(stderr, "search_tree_benchmark: %s: the trees answer differently\n", name.c_str());
    std::exit(1);
  }
  Report("search-tree", name, "answers", static_cast<double>(nAnswer) / nQuery, 1);
  Report("search-tree", name, "ns per query", 1e9 * Median(ask[0]) / nQuery, 0);
  Report("search-tree", name, "Boost", 1e9 * Median(ask[1]) / nQuery, 0);
  Report("search-tree", name, "over Boost", Median(ratio), 2, 0.4);
  Report("search-tree", name, "build, ns per box", 1e9 * Median(build[0]) / nEntry, 0);
  Report("search-tree", name, "Boost's build", 1e9 * Median(build[1]) / nEntry, 0);
}

void Record(std::string const& name, std::function<void()> const& setUp) {
  recording = Recording();
  recording.isOn = true;
  {
    QuietOutput const quiet;
    setUp();
  }
  recording.isOn = false;
  std::vector<CZYNOptKer const*> trees;
  for (Entry const& entry : recording.entries)
    if (std::find(trees.begin(), trees.end(), entry.tree) == trees.end()) trees.push_back(entry.tree);
  for (CZYNOptKer const* tree : trees) {
    Session session;
    for (Entry const& entry : recording.entries)
      if (entry.tree == tree) session.entries.push_back(entry);
    for (Query const& query : recording.queries)
      if (query.tree == tree) session.queries.push_back(query);
    if (session.queries.empty()) continue;
    // Enough of them, one after the other as they came, from the middle.
    if (static_cast<std::ptrdiff_t>(session.queries.size()) > kMostQueries) {
      auto const first =
          session.queries.begin() + (static_cast<std::ptrdiff_t>(session.queries.size()) - kMostQueries) / 2;
      session.queries = std::vector<Query>(first, first + kMostQueries);
    }
    Compare(name, session);
  }
}

void RunFaces(InterpolationCase& host, std::string const& mesh, int method) {
  host.parameters.face = {0, 1000, method, -1.0, 20, 0};
  Record(mesh + " | faces, " + std::to_string(method), [&] {
    CZynFaceRBFInternalObject object;
    host.Connect(object);
    object.Initialize_FaceInterpolateData(1);
  });
}

void RunPoints(InterpolationCase& host, std::string const& mesh, int method, int nPoint) {
  host.parameters.points = {0, 500, method, -1.0, 20};
  std::vector<double> mark = host.AllCells();
  std::vector<double> place[3];
  for (int d = 0; d < 3; ++d) place[d] = host.RandomPlaces(nPoint, d);
  Record(mesh + " | points, " + std::to_string(method), [&] {
    CZynIBRBFInternalObject object;
    host.Connect(object);
    object.Initialize_IBInterpolateData(mark.data(), nPoint, place[0].data(), place[1].data(),
                                        place[2].data());
  });
}

void Run(double cells, int nPoint) {
  for (std::string const shape : {"hex", "tet", "hex:stretch=1000"}) {
    InterpolationCase host(benchmarks::BoxText(cells, shape.substr(0, 3)) + shape.substr(3));
    std::string const mesh = benchmarks::NameOf(shape) + (shape.size() > 3 ? ", stretched, " : ", ") +
                             benchmarks::Thousands(host.mesh.NInnerCells);
    for (int const method : {2, 4}) RunFaces(host, mesh, method);
    for (int const method : {2, 3}) RunPoints(host, mesh, method, nPoint);
  }
}

}  // namespace

int main(int argc, char** argv) {
  int threadLevel = 0;
  MPI_Init_thread(&argc, &argv, MPI_THREAD_MULTIPLE, &threadLevel);  // PT-Scotch needs it
  Run(argc > 1 ? std::atof(argv[1]) : 20000, argc > 2 ? std::atoi(argv[2]) : 5000);
  MPI_Finalize();
  return 0;
}
