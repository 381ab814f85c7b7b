// Partitions of meshes that continue beyond their boundary.

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <memory>
#include <set>
#include <tuple>
#include <vector>

#include "reference_host/mesh/Vector3.h"
#include "reference_host/partition/HostPartition.h"
#include "reference_host/partition/InProcessExchange.h"
#include "reference_host/partition/MeshQuality.h"
#include "tests/unit/reference_host/PeriodicMeshes.h"
#include "tests/unit/reference_host/partition/GroupsOfPartition.h"

namespace reference_host {
namespace {

using namespace test_meshes;

/// A periodic mesh in parts, each a thread.
class Parts {
 public:
  Parts(FaceMesh const& mesh, std::vector<int> const& partOfCell, int nParts) : group_(nParts) {
    for (MeshPart const& part : SplitMesh(mesh, partOfCell, nParts)) {
      partitions_.push_back(std::make_unique<HostPartition>(part));
      exchanges_.push_back(std::make_unique<InProcessCommunication>(group_, *partitions_.back()));
    }
    RunInProcess(group_, [this](int p) { partitions_[p]->CompleteHalo(*exchanges_[p]); });
  }

  /// The field of the cells' numbers after an exchange.
  std::vector<double> Numbers(int p) {
    std::vector<double> numbers(partitions_[p]->globalCell().size(), -1.0);
    for (int c = 1; c <= partitions_[p]->mesh()->NInnerCells; ++c) {
      numbers[c] = static_cast<double>(partitions_[p]->globalCell()[c]);
    }
    exchanges_[p]->DDM_Exch(numbers.data());
    return numbers;
  }

  int size() const { return static_cast<int>(partitions_.size()); }
  HostPartition& operator[](int p) { return *partitions_[p]; }
  InProcessGroup& group() { return group_; }

 private:
  InProcessGroup group_;
  std::vector<std::unique_ptr<HostPartition>> partitions_;
  std::vector<std::unique_ptr<InProcessCommunication>> exchanges_;
};

template <class Check>
void ForAllPeriodicDecompositions(Check const& check) {
  for (auto const& [name, mesh] : PeriodicMeshes()) {
    for (int nParts = 1; nParts <= 4; ++nParts) {
      SCOPED_TRACE(std::string(name) + " in " + std::to_string(nParts) + " parts");
      Parts contiguous(mesh, RunParts(mesh.nCells, nParts), nParts);
      check(contiguous);
      Parts scattered(mesh, RandomParts(mesh.nCells, nParts), nParts);
      check(scattered);
    }
  }
}

TEST(HostPartitionPeriods, HaloCellsGetTheValuesOfTheirOwners) {
  ForAllPeriodicDecompositions([](Parts& parts) {
    RunInProcess(parts.group(), [&](int p) {
      std::vector<double> const numbers = parts.Numbers(p);
      for (std::size_t c = 1; c < numbers.size(); ++c) {
        if (parts[p].globalCell()[c] == 0) continue;  // a ghost
        EXPECT_EQ(numbers[c], static_cast<double>(parts[p].globalCell()[c])) << "cell " << c;
      }
    });
  });
}

/// Both sides of a periodic face, wherever they are, by its cells and the period.
struct Side {
  Point area, toFace, toOther;  ///< the latter from the cell on this side
  double weight;
};

// The cells at a face of a period see the same picture from its two sides: the area is the opposite one, and the
// face lies between the centres in the same place. Coordinates of the two sides differ by the shift, so that
// rounding is all that is left: some 1e-16 of coordinates near 1.
TEST(HostPartitionPeriods, TheTwoSidesOfAFaceAgree) {
  ForAllPeriodicDecompositions([](Parts& parts) {
    std::map<std::tuple<std::int64_t, std::int64_t, int, Point>, std::vector<Side>> sides;
    int nSides = 0;
    for (int p = 0; p < parts.size(); ++p) {
      HostPartition& own = parts[p];
      CZYN3DFiniteVolumeMesh const& mesh = *own.mesh();
      FaceGroup const faces = PartitionFaces(*own.partitionFaces(), mesh);
      int const firstHalo = mesh.NCell - own.nHaloCells() + 1;
      for (int f = 1; f <= faces.count; ++f) {
        int const period = own.haloPeriod()[faces.other[f] - firstHalo];
        if (period == 0) continue;
        auto const centre = [&mesh](int c) { return Point{mesh.xc[c], mesh.yc[c], mesh.zc[c]}; };
        Point const cell = centre(faces.cv[f]), face = CentreOf(faces, f);
        std::int64_t a = own.globalCell()[faces.cv[f]], b = own.globalCell()[faces.other[f]];
        if (period > 0) std::swap(a, b);  // as the first side sees it
        Point key = face;
        for (std::size_t d = 0; d < 3; ++d) {
          if (std::abs(key[d] - 1.0) < 1e-9) key[d] = 0.0;  // both sides at the low end
          key[d] = std::round(key[d] * 1e6);
        }
        sides[{a, b, std::abs(period), key}].push_back({AreaOf(faces, f), Difference(face, cell),
                                                        Difference(centre(faces.other[f]), cell),
                                                        faces.weight[f]});
        ++nSides;
      }
    }
    EXPECT_EQ(2 * sides.size(), static_cast<std::size_t>(nSides));
    for (auto const& [key, both] : sides) {
      ASSERT_EQ(both.size(), 2u);
      EXPECT_LT(Length(Sum(both[0].area, both[1].area)), 1e-15);
      EXPECT_LT(Length(Sum(both[0].toOther, both[1].toOther)), 1e-15);
      EXPECT_LT(Length(Difference(Difference(both[0].toFace, both[1].toFace), both[0].toOther)), 1e-15);
      EXPECT_NEAR(both[0].weight + both[1].weight, 1.0, 1e-14);
      EXPECT_GT(Dot(both[0].area, both[0].toOther), 0.0);
    }
  });
}

TEST(HostPartitionPeriods, FormulasAreEvaluatedWhereTheOwnersAre) {
  ForAllPeriodicDecompositions([](Parts& parts) {
    std::map<std::int64_t, Point> centre;
    for (int p = 0; p < parts.size(); ++p) {
      CZYN3DFiniteVolumeMesh const& mesh = *parts[p].mesh();
      for (int c = 1; c <= mesh.NInnerCells; ++c) {
        centre[parts[p].globalCell()[c]] = {mesh.xc[c], mesh.yc[c], mesh.zc[c]};
      }
    }
    for (int p = 0; p < parts.size(); ++p) {
      for (int c = 1; c <= parts[p].mesh()->NCell; ++c) {
        if (parts[p].globalCell()[c] == 0) continue;  // a ghost
        EXPECT_EQ(parts[p].OwnerCentre(c), centre[parts[p].globalCell()[c]]);
      }
    }
  });
}

TEST(HostPartitionPeriods, QualityCountsEachFaceOnceInAnyNumberOfParts) {
  for (auto const& [name, mesh] : PeriodicMeshes()) {
    SCOPED_TRACE(name);
    std::int64_t nExpected =
        std::count_if(mesh.neighbour.begin(), mesh.neighbour.end(), [](int n) { return n >= 0; });
    for (Period const& period : mesh.periods) nExpected += static_cast<std::int64_t>(period.faces.size());
    for (int nParts = 1; nParts <= 4; ++nParts) {
      Parts parts(mesh, RandomParts(mesh.nCells, nParts), nParts);
      QualitySums sums;
      for (int p = 0; p < nParts; ++p) AddQuality(sums, MeasureQuality(parts[p]));
      EXPECT_EQ(sums.nFaces, nExpected);
    }
  }
}

}  // namespace
}  // namespace reference_host
