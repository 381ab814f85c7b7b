#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "foundation/FaceGroups.h"
#include "reference_host/mesh/Vector3.h"
#include "tests/unit/host_check/CheckedRun.h"
#include "tests/unit/host_check/FaultyCommunication.h"
#include "tests/unit/reference_host/TestMeshes.h"

namespace {

using namespace test_meshes;
using host_check::HostBreach;
using host_check::HostCheckOptions;
using host_check::HostCheckReport;

constexpr int kMoved = 1;  // the partition that stands elsewhere, as the cells beyond a periodic boundary do

/// A box in partitions, each with an exchange that a test may change.
class BoxInPartitions {
 public:
  BoxInPartitions(FaceMesh const& mesh, std::vector<int> const& partOfCell, int nParts)
      : run(mesh, partOfCell, nParts) {
    for (int p = 0; p < nParts; ++p) {
      exchanges.push_back(std::make_unique<FaultyCommunication>(*run.communications[p]));
      run.lent[p].communication = exchanges.back().get();
    }
  }

  CZYN3DFiniteVolumeMesh& Mesh(int p) { return *run.lent[p].mesh; }
  LentFaces& Faces(int p) { return *run.faces[p]; }
  int FirstHalo(int p) { return *std::min_element(Faces(p).other + 1, Faces(p).other + 1 + Faces(p).count); }

  /// Changes what the blocking and the non-blocking exchange of a partition bring.
  void Change(int p, std::function<void(double*)> const& change) {
    exchanges[p]->exchange = [real = exchanges[p]->exchange, change](double* field) {
      real(field);
      change(field);
    };
    exchanges[p]->wait = [real = exchanges[p]->wait, change](double* field, ZYNNonBlockingBufferId id) {
      real(field, id);
      change(field);
    };
  }

  /// Moves a partition, with its own copies of the halo cells.
  void Move(int p, std::function<Point(Point const&)> const& place,
            std::function<Point(Point const&)> const& direction) {
    auto const change = [](double* x, double* y, double* z, int n, auto const& how) {
      for (int i = 1; i <= n; ++i) {
        Point const moved = how(Point{x[i], y[i], z[i]});
        x[i] = moved[0], y[i] = moved[1], z[i] = moved[2];
      }
    };
    CZYN3DFiniteVolumeMesh& m = Mesh(p);
    change(m.xc, m.yc, m.zc, m.NCell, place);
    change(m.xn, m.yn, m.zn, m.NNode, place);
    for (FaceGroupMembers const& members : face_groups::kTable) {
      if (members.kind == FaceKind::Partition) continue;
      change(m.*members.xc, m.*members.yc, m.*members.zc, m.*members.count, place);
      change(m.*members.sx, m.*members.sy, m.*members.sz, m.*members.count, direction);
    }
    LentFaces& faces = Faces(p);
    change(faces.xc, faces.yc, faces.zc, faces.count, place);
    change(faces.sx, faces.sy, faces.sz, faces.count, direction);
  }
  void Shift(int p, Point const& by) {
    Move(
        p, [by](Point const& x) { return reference_host::Sum(x, by); }, [](Point const& s) { return s; });
  }
  /// About the x axis.
  void Turn(int p, double angle) {
    auto const turned = [angle](Point const& x) {
      return Point{x[0], std::cos(angle) * x[1] - std::sin(angle) * x[2],
                   std::sin(angle) * x[1] + std::cos(angle) * x[2]};
    };
    Move(p, turned, turned);
  }

  CheckedRun run;
  std::vector<std::unique_ptr<FaultyCommunication>> exchanges;
};

/// Three partitions with cuts between all of them.
BoxInPartitions IrregularBox() { return {Perturbed(HexBox(4, 3, 3), 0.05), RandomParts(36, 3), 3}; }

/// Two halves of a box of regular cells.
BoxInPartitions RegularBox() {
  constexpr int kN = 4;
  std::vector<int> partOfCell;
  for (int c = 0; c < kN * kN * kN; ++c) partOfCell.push_back(c % kN < kN / 2 ? 0 : 1);
  return {HexBox(kN, kN, kN), partOfCell, 2};
}

bool HasNote(HostCheckReport const& report, std::string const& words) {
  auto const& notes = report.Notes();
  return std::any_of(notes.begin(), notes.end(),
                     [&](std::string const& note) { return note.find(words) != std::string::npos; });
}

// ---- periodic boundaries

TEST(PeriodicHalo, ShiftedCellsAreNotedAndNoBreach) {
  BoxInPartitions box = IrregularBox();
  box.Shift(kMoved, {3, -0.5, 0});
  auto const reports = box.run.Check();
  for (HostCheckReport const& report : reports) {
    EXPECT_EQ(0, report.Count()) << TextOf(report);
    EXPECT_EQ(1u, report.Notes().size()) << TextOf(report);
  }
  int const nHalo = box.run.partitions[kMoved]->nHaloCells();
  EXPECT_TRUE(HasNote(reports[kMoved], std::to_string(nHalo) +
                                           " halo cells stand (3, -0.5, 0) away from the cells whose data "
                                           "they hold: a periodic boundary"))
      << TextOf(reports[kMoved]);
  EXPECT_TRUE(HasNote(reports[0], " halo cells stand (-3, 0.5, 0) away")) << TextOf(reports[0]);
}

TEST(PeriodicHalo, TwoShiftsAreNotedEach) {
  BoxInPartitions box = IrregularBox();
  box.Shift(0, {0, 0, 4});
  box.Shift(2, {0, 5, 0});
  HostCheckReport const report = box.run.Check()[kMoved];
  EXPECT_EQ(0, report.Count()) << TextOf(report);
  EXPECT_TRUE(HasNote(report, "stand (0, 0, -4) away")) << TextOf(report);
  EXPECT_TRUE(HasNote(report, "stand (0, -5, 0) away")) << TextOf(report);
}

TEST(PeriodicHalo, TurnedCellsAreNotedAndNoBreach) {
  BoxInPartitions box = IrregularBox();
  // Turned alone, the cells at the axis would stay within half a cell of their places.
  box.Shift(kMoved, {0, 2, 0});
  box.Turn(kMoved, 0.7);
  auto const reports = box.run.Check();
  for (HostCheckReport const& report : reports) {
    EXPECT_EQ(0, report.Count()) << TextOf(report);
    EXPECT_EQ(1u, report.Notes().size()) << TextOf(report);
  }
  int const nHalo = box.run.partitions[kMoved]->nHaloCells();
  EXPECT_TRUE(
      HasNote(reports[kMoved], std::to_string(nHalo) + " halo cells stand for cells of another place"))
      << TextOf(reports[kMoved]);
}

// The shortest period there is: that of a mesh with one cell across.
TEST(PeriodicHalo, ShiftByOneCellIsNoBreach) {
  BoxInPartitions box = RegularBox();
  box.Shift(kMoved, {0.25, 0, 0});
  HostCheckReport const report = box.run.Check()[kMoved];
  EXPECT_EQ(0, report.Count()) << TextOf(report);
  EXPECT_TRUE(HasNote(report, "16 halo cells stand (0.25, 0, 0) away")) << TextOf(report);
}

TEST(PeriodicHalo, OneWrongCentreIsTold) {
  for (double const step : {1e-5, 1e-3, 0.3}) {
    for (auto const make : {RegularBox, IrregularBox}) {
      BoxInPartitions box = make();
      box.Shift(kMoved, {3, 0, 0});
      int const halo = box.Faces(kMoved).other[2];
      box.Mesh(kMoved).yc[halo] += step;
      HostCheckReport const report = box.run.Check()[kMoved];
      EXPECT_EQ(1, report.Count(HostBreach::HaloFromElsewhere)) << TextOf(report);
      EXPECT_TRUE(Tells(report, HostBreach::HaloFromElsewhere, halo, "the centre that DDM_Exch brings is"));
    }
  }
}

TEST(PeriodicHalo, WrongCentreInATurnedPartitionIsTold) {
  BoxInPartitions box = IrregularBox();
  box.Shift(kMoved, {0, 2, 0});
  box.Turn(kMoved, 0.7);
  int const halo = box.Faces(kMoved).other[2];
  box.Mesh(kMoved).xc[halo] += 1e-2;
  HostCheckReport const report = box.run.Check()[kMoved];
  EXPECT_EQ(1, report.Count(HostBreach::HaloFromElsewhere)) << TextOf(report);
}

// On a regular mesh, the shift is the same for all and the cells around look alike. Here even the cells beyond hold
// the data of the cells on this side.
TEST(PeriodicHalo, ListsThatAreOffByOneAreNoPeriod) {
  for (int const nSides : {1, 2}) {
    BoxInPartitions box = RegularBox();
    for (int p = 0; p < nSides; ++p) {
      int const first = box.FirstHalo(p), nCell = box.Mesh(p).NCell;
      box.Change(p, [=](double* field) {
        std::rotate(field + first, p == 0 ? field + first + 1 : field + nCell, field + nCell + 1);
      });
    }
    HostCheckReport const report = box.run.Check()[0];
    EXPECT_EQ(report.Count(HostBreach::HaloFromElsewhere), box.run.partitions[0]->nHaloCells())
        << TextOf(report);
    EXPECT_TRUE(report.Notes().empty()) << TextOf(report);
  }
}

// Again everything around looks alike; but the cells beyond hold the data of other cells.
TEST(PeriodicHalo, TwoHaloCellsInEachOthersPlaceAreTold) {
  BoxInPartitions box = RegularBox();
  box.Shift(kMoved, {3, 0, 0});
  int const first = box.FirstHalo(0), nCell = box.Mesh(0).NCell;
  box.Change(0, [=](double* field) { std::swap(field[first], field[nCell]); });
  HostCheckReport const report = box.run.Check()[0];
  EXPECT_TRUE(Tells(report, HostBreach::HaloFromElsewhere, first, "halo cell")) << TextOf(report);
  EXPECT_TRUE(Tells(report, HostBreach::HaloFromElsewhere, nCell, "halo cell")) << TextOf(report);
}

TEST(PeriodicHalo, CentresThatWereNeverExchangedAreNoPeriod) {
  BoxInPartitions box = RegularBox();
  CZYN3DFiniteVolumeMesh& m = box.Mesh(0);
  for (int c = box.FirstHalo(0); c <= m.NCell; ++c) m.xc[c] = m.yc[c] = m.zc[c] = 0;
  HostCheckReport const report = box.run.Check()[0];
  EXPECT_EQ(report.Count(HostBreach::HaloFromElsewhere), box.run.partitions[0]->nHaloCells())
      << TextOf(report);
}

// ---- interpolated halo cells

/// Lets each halo cell of a partition hold a mean of its owner's value and that of the first one's.
void Interpolate(BoxInPartitions& box, int p, double ownWeight, double otherWeight) {
  int const first = box.FirstHalo(p), nCell = box.Mesh(p).NCell;
  box.Change(p, [=](double* field) {
    for (int c = first + 1; c <= nCell; ++c) field[c] = ownWeight * field[c] + otherWeight * field[first];
  });
}

HostCheckOptions AllowingMeans() {
  HostCheckOptions options;
  options.interpolatedHalo = true;
  return options;
}

TEST(InterpolatedHalo, MeansAreToldAsMeans) {
  BoxInPartitions box = IrregularBox();
  Interpolate(box, kMoved, 0.9, 0.1);
  HostCheckReport const report = box.run.Check()[kMoved];
  EXPECT_EQ(report.Count(HostBreach::HaloIsMean), box.run.partitions[kMoved]->nHaloCells() - 1);
  EXPECT_EQ(report.Count(), report.Count(HostBreach::HaloIsMean)) << TextOf(report);
  EXPECT_TRUE(Tells(report, HostBreach::HaloIsMean, box.FirstHalo(kMoved) + 1, "but a mean of several"));
}

TEST(InterpolatedHalo, MeansAreNotedWhereTheyAreAllowed) {
  BoxInPartitions box = IrregularBox();
  Interpolate(box, kMoved, 0.9, 0.1);
  HostCheckReport const report = box.run.Check(AllowingMeans())[kMoved];
  EXPECT_EQ(0, report.Count()) << TextOf(report);
  EXPECT_TRUE(HasNote(report, std::to_string(box.run.partitions[kMoved]->nHaloCells() - 1) +
                                  " halo cells hold weighted means of cells' values"))
      << TextOf(report);
  EXPECT_FALSE(HasNote(report, "not checked"));
}

TEST(InterpolatedHalo, MeansOfCellsElsewhereAreCounted) {
  BoxInPartitions box = IrregularBox();
  Interpolate(box, kMoved, 0.9, 0.1);
  box.Shift(kMoved, {3, 0, 0});
  HostCheckReport const report = box.run.Check(AllowingMeans())[kMoved];
  EXPECT_EQ(0, report.Count()) << TextOf(report);
  EXPECT_TRUE(HasNote(report, "; the places of " +
                                  std::to_string(box.run.partitions[kMoved]->nHaloCells() - 1) +
                                  " were not checked"))
      << TextOf(report);
}

// A face that lies within one on the other side gets the value of one cell, but that one gets a mean.
TEST(InterpolatedHalo, CopyOpposedToAMeanElsewhereIsCounted) {
  BoxInPartitions box = IrregularBox();
  Interpolate(box, kMoved, 0.9, 0.1);
  box.Shift(kMoved, {3, 0, 0});
  HostCheckReport const report = box.run.Check(AllowingMeans())[0];
  EXPECT_EQ(0, report.Count()) << TextOf(report);
  EXPECT_TRUE(HasNote(report, " were not checked, because the cells stand elsewhere")) << TextOf(report);
  EXPECT_GT(box.run.Check()[0].Count(HostBreach::HaloFromElsewhere), 0) << "means are not allowed";

  int const halo = box.Faces(0).other[2];
  box.Mesh(0).yc[halo] += 0.1;
  HostCheckReport const wrong = box.run.Check(AllowingMeans())[0];
  EXPECT_EQ(1, wrong.Count(HostBreach::HaloFromElsewhere)) << TextOf(wrong);
}

TEST(InterpolatedHalo, WeightsThatDoNotSumToOneAreTold) {
  BoxInPartitions box = IrregularBox();
  Interpolate(box, kMoved, 0.7, 0.1);
  for (HostCheckOptions const& options : {HostCheckOptions(), AllowingMeans()}) {
    HostCheckReport const report = box.run.Check(options)[kMoved];
    EXPECT_TRUE(Tells(report, HostBreach::HaloLosesConstant, box.FirstHalo(kMoved) + 1,
                      "DDM_Exch brings 0.8 to halo cell"))
        << TextOf(report);
    EXPECT_EQ(0, report.Count(HostBreach::MinimumDiffers)) << TextOf(report);
  }
}

TEST(InterpolatedHalo, ExchangeInSinglePrecisionIsTold) {
  BoxInPartitions box = IrregularBox();
  int const first = box.FirstHalo(kMoved), nCell = box.Mesh(kMoved).NCell;
  box.Change(kMoved, [=](double* field) {
    for (int c = first; c <= nCell; ++c) field[c] = static_cast<float>(field[c]);
  });
  HostCheckReport const report = box.run.Check()[kMoved];
  EXPECT_GT(report.Count(HostBreach::HaloIsMean), 0) << TextOf(report);
  EXPECT_TRUE(Tells(report, HostBreach::HaloIsMean, first, "or a rounded value"));
}

TEST(InterpolatedHalo, MinimumThatDiffersIsStillTold) {
  BoxInPartitions box = RegularBox();
  Interpolate(box, 0, 0.5, 0.5);
  std::vector<std::unique_ptr<FaultyReduction>> reductions;
  for (int p = 0; p < 2; ++p) {
    auto& real = *box.run.reductions[p];
    reductions.push_back(std::make_unique<FaultyReduction>([&real](int& value) {
      int answer = value;
      real.AllMin(answer);  // and does not return it
    }));
    box.run.lent[p].reduction = reductions.back().get();
  }
  HostCheckReport const report = box.run.Check(AllowingMeans())[0];
  EXPECT_TRUE(Tells(report, HostBreach::MinimumDiffers, box.FirstHalo(0) + 1,
                    "but not on all partitions whose cells halo cell"))
      << TextOf(report);
}

}  // namespace
