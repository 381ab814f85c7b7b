#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <deque>
#include <functional>
#include <limits>
#include <memory>
#include <sstream>
#include <vector>

#include "foundation/FaceGroups.h"
#include "tests/unit/host_check/CheckedRun.h"
#include "tests/unit/host_check/FaultyCommunication.h"
#include "tests/unit/reference_host/TestMeshes.h"

namespace {

using namespace test_meshes;
using host_check::HostBreach;
using host_check::HostCheckOptions;
using host_check::HostCheckReport;

constexpr int kBroken = 1;  // the partition that breaks the contract in most tests

/// Three partitions with cuts between all of them.
class FaultsBetweenPartitions : public testing::Test {
 protected:
  FaultsBetweenPartitions() : run_(Perturbed(HexBox(4, 3, 3), 0.05), RandomParts(36, 3), 3) {
    for (int p = 0; p < 3; ++p) {
      faulty_.push_back(std::make_unique<FaultyCommunication>(*run_.communications[p]));
      run_.lent[p].communication = faulty_.back().get();
    }
  }

  CZYN3DFiniteVolumeMesh& Mesh(int p = kBroken) { return *run_.lent[p].mesh; }
  LentFaces& Faces(int p = kBroken) { return *run_.faces[p]; }
  FaultyCommunication& Exchange(int p = kBroken) { return *faulty_[p]; }

  /// Runs the check and expects the broken partition to report the breach.
  std::vector<HostCheckReport> ExpectTold(HostBreach kind, int entity, std::string const& words) {
    std::vector<HostCheckReport> reports = run_.Check();
    EXPECT_TRUE(Tells(reports[kBroken], kind, entity, words))
        << "not told of entity " << entity << ": " << words << '\n'
        << TextOf(reports[kBroken]);
    return reports;
  }

  static void ExpectNothing(HostCheckReport const& report) {
    EXPECT_EQ(0, report.Count()) << TextOf(report);
    EXPECT_TRUE(report.Notes().empty()) << TextOf(report);
  }
  static void ExpectNothingElsewhere(std::vector<HostCheckReport> const& reports) {
    ExpectNothing(reports[0]);
    ExpectNothing(reports[2]);
  }

  /// Replaces every partition's AllMin by one that is made from the real one.
  using AllMin = std::function<void(int&)>;
  void ReplaceReductions(std::function<AllMin(int part, AllMin real)> const& make) {
    for (int p = 0; p < 3; ++p) {
      auto& real = *run_.reductions[p];
      reductions_.push_back(
          std::make_unique<FaultyReduction>(make(p, [&real](int& value) { real.AllMin(value); })));
      run_.lent[p].reduction = reductions_.back().get();
    }
  }

  CheckedRun run_;
  std::vector<std::unique_ptr<FaultyCommunication>> faulty_;
  std::vector<std::unique_ptr<FaultyReduction>> reductions_;
};

// ---- tables of the cut

TEST_F(FaultsBetweenPartitions, WithoutAFaultNothingIsTold) {
  for (HostCheckReport const& report : run_.Check()) ExpectNothing(report);
}

TEST_F(FaultsBetweenPartitions, HaloCellOutOfRangeStopsTheExchangesOfAll) {
  Faces().other[2] = Mesh().NCell + 1;
  auto const reports = ExpectTold(HostBreach::IndexOutOfRange, 2, "partition face 2: ijPar[2] =");
  ASSERT_EQ(1u, reports[0].Notes().size());
  EXPECT_NE(reports[0].Notes()[0].find("another partition"), std::string::npos);
  EXPECT_EQ(0, reports[0].Count());
  EXPECT_NE(reports[kBroken].Notes()[0].find("this partition"), std::string::npos);
}

TEST_F(FaultsBetweenPartitions, HaloCellThatIsInteriorIsTold) {
  int const interior = Faces().cv[3] == 1 ? 2 : 1;
  Faces().other[3] = interior;
  ExpectTold(HostBreach::IndexOutOfRange, 3, "ijPar[3] = " + std::to_string(interior) + " is outside");
}

TEST_F(FaultsBetweenPartitions, CellOfAPartitionFaceOutOfRangeIsTold) {
  Faces().cv[1] = -7;
  ExpectTold(HostBreach::IndexOutOfRange, 1, "ijParCV[1] = -7 is outside 1..");
}

TEST_F(FaultsBetweenPartitions, GhostCellThatIsAlsoAHaloCellIsTold) {
  int const ghost = Mesh().ijWall[1];
  Faces().other[4] = ghost;
  ExpectTold(HostBreach::GhostNamedTwice, ghost, "beyond wall face 1 and beyond partition face 4");
}

// The halo cells need room, too; without them, the count would fit.
TEST_F(FaultsBetweenPartitions, BoundaryCountThatLeavesNoRoomForHaloCellsIsTold) {
  for (FaceGroupMembers const& members : face_groups::kTable) {
    if (!IsBoundary(members.kind)) continue;
    ++(Mesh().*members.count);
    auto const reports =
        ExpectTold(HostBreach::BadCount, 0, "halo cells that ijPar names are more than NCell");
    EXPECT_EQ(0, reports[0].Count()) << TextOf(reports[0]);
    ASSERT_EQ(1u, reports[0].Notes().size());
    EXPECT_NE(reports[0].Notes()[0].find("another partition"), std::string::npos);
    --(Mesh().*members.count);
  }
}

TEST_F(FaultsBetweenPartitions, InteriorCountOneTooLargeIsTold) {
  ++Mesh().NInnerCells;
  ExpectTold(HostBreach::BadCount, 0, "are more than NCell - NInnerCells");
}

TEST_F(FaultsBetweenPartitions, RecordsThatAreAllEmptyAreTold) {
  for (int p = 0; p < 3; ++p) {
    Mesh(p) = CZYN3DFiniteVolumeMesh();
    Faces(p).count = 0;
  }
  for (HostCheckReport const& report :
       ExpectTold(HostBreach::BadCount, 0, "NInnerCells = 0 on every partition")) {
    EXPECT_EQ(1, report.Count()) << TextOf(report);
  }
}

TEST_F(FaultsBetweenPartitions, WorkArrayInTheCutIsTold) {
  for (double* array : {Faces().sx, Faces().xc, Faces().lamda}) {
    run_.lent[kBroken].globals->PrevGradZ = array;
    ExpectTold(HostBreach::ArraysOverlap, 0, "PrevGradZ, which is overwritten, and ");
  }
}

TEST_F(FaultsBetweenPartitions, NullArraysOfTheCutAreTold) {
  Faces().lamda = nullptr;
  Faces().type = nullptr;
  Faces().sz = nullptr;
  Mesh().ijParLnods = nullptr;
  auto const reports =
      ExpectTold(HostBreach::MissingArray, 0, "ParInterFace_Lamda is null, but NParInterFace()");
  EXPECT_TRUE(Tells(reports[kBroken], HostBreach::MissingArray, 0, "FaceType_Partition is null"));
  EXPECT_TRUE(Tells(reports[kBroken], HostBreach::MissingArray, 0, "ijParSz is null"));
  EXPECT_TRUE(Tells(reports[kBroken], HostBreach::MissingArray, 0, "ijParLnods is null"));
  ExpectNothingElsewhere(reports);
}

TEST_F(FaultsBetweenPartitions, AreaIntoTheOwnCellIsTold) {
  Faces().sx[2] *= -1;
  Faces().sy[2] *= -1;
  Faces().sz[2] *= -1;
  ExpectNothingElsewhere(ExpectTold(HostBreach::AreaWrongWay, 2, "partition face 2: its area vector"));
}

TEST_F(FaultsBetweenPartitions, WeightOutsideZeroToOneIsTold) {
  Faces().lamda[5] = 2;
  ExpectNothingElsewhere(
      ExpectTold(HostBreach::WeightOutOfRange, 5, "partition face 5: ParInterFace_Lamda[5] = 2"));
}

TEST_F(FaultsBetweenPartitions, PartitionFaceInNoCellFaceRowIsTold) {
  CZYN3DFiniteVolumeMesh& m = Mesh();
  int const c = Faces().cv[1];
  for (int k = 1; k <= m.CellFace[c][0]; ++k)
    if (m.CellFaceType[c][k] == 101) m.CellFaceType[c][k] = 100;
  ExpectTold(HostBreach::RowEntryMissing, c, "lacks its partition face");
}

// ---- breaches of one partition and the others

TEST_F(FaultsBetweenPartitions, LocalBreachDoesNotStopTheExchanges) {
  Mesh().Volume[1] = -1;
  Mesh().xc = nullptr;
  Mesh().CellCell[1] = nullptr;
  Exchange().exchange = [real = Exchange().exchange, n = Mesh().NCell](double* field) {
    real(field);
    field[n + 2] = 1;  // shows that the exchange was made
  };
  auto const reports = ExpectTold(HostBreach::MissingArray, 0, "xc is null");
  EXPECT_GT(reports[kBroken].Count(HostBreach::ExchangeOutsideCells), 0);
  EXPECT_TRUE(reports[kBroken].Notes().empty());
  ExpectNothingElsewhere(reports);
}

TEST_F(FaultsBetweenPartitions, PartitionWithoutMeshDoesNotLeaveTheOthersWaiting) {
  run_.lent[kBroken].mesh = nullptr;
  run_.lent[kBroken].partitionFaces = nullptr;
  auto const reports = ExpectTold(HostBreach::MissingObject, 0, "the CZYN3DFiniteVolumeMesh object is null");
  EXPECT_EQ(0, reports[2].Count());
  EXPECT_EQ(1u, reports[2].Notes().size());
}

TEST_F(FaultsBetweenPartitions, PartitionWithoutCommunicationDoesNotLeaveTheOthersWaiting) {
  run_.lent[kBroken].communication = nullptr;
  auto const reports = ExpectTold(HostBreach::MissingObject, 0, "the CCommunication object is null");
  EXPECT_EQ(1u, reports[0].Notes().size());
}

TEST_F(FaultsBetweenPartitions, NegativeCountOfPartitionFacesStopsTheExchangesOfAll) {
  Faces().count = -1;
  auto const reports = ExpectTold(HostBreach::BadCount, 0, "NParInterFace() = -1");
  EXPECT_EQ(1u, reports[0].Notes().size());
}

TEST_F(FaultsBetweenPartitions, NothingIsExchangedWhenThatIsNotAskedFor) {
  for (int p = 0; p < 3; ++p) {
    run_.lent[p].communication = nullptr;
    run_.lent[p].reduction = nullptr;
  }
  HostCheckOptions options;
  options.communication = false;
  for (HostCheckReport const& report : run_.Check(options)) {
    EXPECT_EQ(2, report.Count()) << TextOf(report);  // the two missing objects
    EXPECT_TRUE(report.Notes().empty());
  }
}

// ---- halo cells and blocking exchange

TEST_F(FaultsBetweenPartitions, HaloCellThatNoExchangeFillsIsTold) {
  int const halo = Faces().other[1];
  Exchange().exchange = [real = Exchange().exchange, halo](double* field) {
    double const before = field[halo];
    real(field);
    field[halo] = before;
  };
  auto const reports = ExpectTold(HostBreach::HaloNotFilled, halo, "which lies beyond partition face 1");
  EXPECT_EQ(1, reports[kBroken].Count(HostBreach::HaloNotFilled));
  ExpectNothingElsewhere(reports);
}

TEST_F(FaultsBetweenPartitions, ExchangeThatDoesNothingIsToldOfEveryHaloCell) {
  for (int p = 0; p < 3; ++p) {
    Exchange(p).exchange = [](double*) {};
    Exchange(p).start = Exchange(p).wait = [](double*, ZYNNonBlockingBufferId) {};
  }
  auto const reports = run_.Check();
  for (int p = 0; p < 3; ++p) {
    EXPECT_EQ(reports[p].Count(HostBreach::HaloNotFilled), run_.partitions[p]->nHaloCells());
  }
}

TEST_F(FaultsBetweenPartitions, HaloCentreThatIsNotItsOwnersIsTold) {
  int const halo = Faces().other[1];
  Mesh().yc[halo] += 1e-3;
  ExpectNothingElsewhere(
      ExpectTold(HostBreach::HaloFromElsewhere, halo, "the centre that DDM_Exch brings is"));
}

TEST_F(FaultsBetweenPartitions, HaloCellsInAnotherOrderThanTheirOwnersAreTold) {
  // The two last halo cells of the partition come from one neighbour and get each other's values.
  int const last = Mesh().NCell;
  Exchange().exchange = [real = Exchange().exchange, last](double* field) {
    real(field);
    std::swap(field[last - 1], field[last]);
  };
  auto const reports = ExpectTold(HostBreach::HaloFromElsewhere, last, "halo cell");
  EXPECT_TRUE(Tells(reports[kBroken], HostBreach::HaloFromElsewhere, last - 1, "halo cell"));
}

TEST_F(FaultsBetweenPartitions, ExchangeThatChangesAnInteriorCellIsTold) {
  Exchange().exchange = [real = Exchange().exchange](double* field) {
    real(field);
    field[4] = std::nextafter(field[4], 1e300);
  };
  ExpectTold(HostBreach::ExchangeChangesInterior, 4, "DDM_Exch changed the value of interior cell 4");
}

TEST_F(FaultsBetweenPartitions, ExchangeThatChangesAGhostCellIsTold) {
  int const ghost = Mesh().ijWall[3];
  Exchange().exchange = [real = Exchange().exchange, ghost](double* field) {
    real(field);
    field[ghost] = 0;
  };
  ExpectTold(HostBreach::ExchangeChangesGhost, ghost, "which lies beyond a boundary face");
}

TEST_F(FaultsBetweenPartitions, ExchangeThatCountsFromZeroIsTold) {
  Exchange().exchange = [real = Exchange().exchange](double* field) {
    real(field);
    field[0] = 1;
  };
  ExpectTold(HostBreach::ExchangeOutsideCells, 0, "wrote to element 0 of a field");
}

TEST_F(FaultsBetweenPartitions, ExchangeBeyondTheLastCellIsTold) {
  int const behind = Mesh().NCell + 1;
  Exchange().exchange = [real = Exchange().exchange, behind](double* field) {
    real(field);
    field[behind] = 1;
  };
  ExpectTold(HostBreach::ExchangeOutsideCells, behind, "outside 1..NCell");
}

// ---- non-blocking exchange

/// Withholds the halo values of a real wait and delivers them at the next call.
struct LateDelivery {
  int nInner, nCell;
  std::vector<std::function<void()>> late;

  void Deliver() {
    for (auto const& deliver : late) deliver();
    late.clear();
  }
  void Delay(double* field, std::function<void()> const& wait) {
    std::vector<double> const before(field, field + nCell + 1);
    wait();
    for (int c = nInner + 1; c <= nCell; ++c) {
      if (field[c] == before[c]) continue;
      late.emplace_back([field, c, value = field[c]] { field[c] = value; });
      field[c] = before[c];
    }
  }
};

TEST_F(FaultsBetweenPartitions, WaitThatReturnsEarlyIsTold) {
  auto state = std::make_shared<LateDelivery>(LateDelivery{Mesh().NInnerCells, Mesh().NCell, {}});
  Exchange().start = [state, real = Exchange().start](double* field, ZYNNonBlockingBufferId id) {
    state->Deliver();
    real(field, id);
  };
  Exchange().wait = [state, real = Exchange().wait](double* field, ZYNNonBlockingBufferId id) {
    state->Deliver();
    state->Delay(field, [&] { real(field, id); });
  };
  int const halo = *std::min_element(Faces().other + 1, Faces().other + 1 + Faces().count);
  ExpectNothingElsewhere(ExpectTold(HostBreach::NonBlockingEarly, halo,
                                    "DDM_IExch_Wait in buffer 2 came back before halo cell"));
}

TEST_F(FaultsBetweenPartitions, WaitThatDoesNotLookAtTheBufferIsTold) {
  // Delivers the exchange that was started first, whichever is waited for.
  struct Queue {
    std::deque<std::vector<double>> fields;
  };
  for (int p = 0; p < 3; ++p) {
    auto queue = std::make_shared<Queue>();
    int const nInner = Mesh(p).NInnerCells, nCell = Mesh(p).NCell;
    Exchange(p).start = [queue, nCell, real = Exchange(p).exchange](double* field, ZYNNonBlockingBufferId) {
      queue->fields.emplace_back(field, field + nCell + 1);
      real(queue->fields.back().data());
    };
    Exchange(p).wait = [queue, nInner, nCell](double* field, ZYNNonBlockingBufferId) {
      for (int c = nInner + 1; c <= nCell; ++c) field[c] = queue->fields.front()[c];
      queue->fields.pop_front();
    };
  }
  int const halo = *std::min_element(Faces().other + 1, Faces().other + 1 + Faces().count);
  ExpectTold(HostBreach::NonBlockingMixed, halo, "with the data of another exchange, started in buffer 0");
}

TEST_F(FaultsBetweenPartitions, BufferThatKeepsItsFirstArrayIsTold) {
  // Like persistent requests that are bound to the address of the first field.
  std::array<double*, 4> bound{};
  Exchange().start = [&bound, real = Exchange().start](double* field, ZYNNonBlockingBufferId id) {
    if (bound[id] == nullptr) bound[id] = field;
    real(bound[id], id);
  };
  Exchange().wait = [&bound, real = Exchange().wait](double*, ZYNNonBlockingBufferId id) {
    real(bound[id], id);
  };
  int const halo = *std::min_element(Faces().other + 1, Faces().other + 1 + Faces().count);
  auto const reports = ExpectTold(HostBreach::NonBlockingEarly, halo, "DDM_IExch_Wait in buffer 2");
  EXPECT_EQ(reports[kBroken].Count(HostBreach::NonBlockingEarly), run_.partitions[kBroken]->nHaloCells())
      << "only the fifth field goes astray";
}

TEST_F(FaultsBetweenPartitions, NonBlockingExchangeOfOtherDataIsTold) {
  int const halo = Faces().other[1];
  Exchange().wait = [real = Exchange().wait, halo](double* field, ZYNNonBlockingBufferId id) {
    real(field, id);
    if (id == ZYNNonBlockingBuffer3) field[halo] += 0.5;
  };
  ExpectNothingElsewhere(
      ExpectTold(HostBreach::NonBlockingDiffers, halo, "DDM_IExch_Wait in buffer 3 filled halo cell"));
}

TEST_F(FaultsBetweenPartitions, NonBlockingExchangeThatChangesAnInteriorCellIsTold) {
  Exchange().wait = [real = Exchange().wait](double* field, ZYNNonBlockingBufferId id) {
    real(field, id);
    if (id == ZYNNonBlockingBuffer1) field[2] = 0;
  };
  ExpectTold(HostBreach::ExchangeChangesInterior, 2, "DDM_IExch_Start and DDM_IExch_Wait changed");
}

TEST_F(FaultsBetweenPartitions, NonBlockingExchangeIsLeftAloneWhenNotAskedFor) {
  for (int p = 0; p < 3; ++p) {
    Exchange(p).start = Exchange(p).wait = [](double*, ZYNNonBlockingBufferId) {};
  }
  HostCheckOptions options;
  options.nonBlocking = false;
  for (HostCheckReport const& report : run_.Check(options)) ExpectNothing(report);
}

TEST_F(FaultsBetweenPartitions, DifferentChoicesOfTheExchangeAreToldByAll) {
  run_.lent[kBroken].globals->UseNonBlockingExch = 1;
  auto const reports =
      ExpectTold(HostBreach::ExchangeChoiceDiffers, 0, "UseNonBlockingExch is not zero here");
  EXPECT_TRUE(Tells(reports[0], HostBreach::ExchangeChoiceDiffers, 0, "UseNonBlockingExch is zero here"));
}

TEST_F(FaultsBetweenPartitions, AnyNonZeroChoiceIsTheSame) {
  for (int p = 0; p < 3; ++p) run_.lent[p].globals->UseNonBlockingExch = static_cast<unsigned char>(p + 1);
  for (HostCheckReport const& report : run_.Check()) ExpectNothing(report);
}

// ---- reduction

TEST_F(FaultsBetweenPartitions, MinimumThatDependsOnThePartitionIsTold) {
  ReplaceReductions([](int part, AllMin const& real) -> AllMin {
    return [=](int& value) {
      real(value);
      value += part == kBroken ? 1 : 0;
    };
  });
  ExpectTold(HostBreach::MinimumDiffers, 0, "of what it gave on all partitions the least is");
}

TEST_F(FaultsBetweenPartitions, MinimumThatIsOnlyTheOwnValueIsTold) {
  ReplaceReductions([](int, AllMin const& real) -> AllMin {
    return [=](int& value) {
      int answer = value;
      real(answer);  // and does not return it
    };
  });
  auto const reports = run_.Check();
  for (HostCheckReport const& report : reports) {
    EXPECT_GT(report.Count(HostBreach::MinimumDiffers), 0) << TextOf(report);
  }
  EXPECT_NE(TextOf(reports[0]).find("on the partition that owns halo cell"), std::string::npos);
}

TEST_F(FaultsBetweenPartitions, GreatestInsteadOfLeastIsTold) {
  ReplaceReductions([](int, AllMin const& real) -> AllMin {
    return [=](int& value) {
      value = -value;
      real(value);
      value = -value;
    };
  });
  int nTold = 0;
  for (HostCheckReport const& report : run_.Check()) nTold += report.Count(HostBreach::MinimumWrong);
  EXPECT_EQ(2, nTold) << "all partitions but the one with the greatest value";
}

TEST_F(FaultsBetweenPartitions, MinimumInSinglePrecisionIsTold) {
  ReplaceReductions([](int, AllMin const& real) -> AllMin {
    return [=](int& value) {
      volatile const float rounded = static_cast<float>(value);
      value = static_cast<int>(rounded);
      real(value);
    };
  });
  ExpectTold(HostBreach::MinimumWrong, 0, "AllMin gave 16777216 when every partition passed 16777217");
}

TEST_F(FaultsBetweenPartitions, MinimumThatStaysWithTheFirstPartitionIsTold) {
  ReplaceReductions([](int part, AllMin const& real) -> AllMin {
    return [=](int& value) {
      int answer = value;
      real(answer);
      if (part == 0) value = answer;  // a reduction to one partition
    };
  });
  auto const reports = run_.Check();
  int nTold = 0;
  for (HostCheckReport const& report : reports) nTold += report.Count(HostBreach::MinimumDiffers);
  EXPECT_GT(nTold, 0);
}

}  // namespace
