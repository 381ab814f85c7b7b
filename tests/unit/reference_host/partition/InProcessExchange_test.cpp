#include "reference_host/partition/InProcessExchange.h"

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "tests/unit/reference_host/TestMeshes.h"

namespace reference_host {
namespace {

using namespace test_meshes;
using Field = std::vector<double>;

constexpr double kUntouched = -1.0;

/// All partitions of a mesh with their communication.
struct ThreadedRun {
  ThreadedRun(FaceMesh const& mesh, std::vector<int> const& partOfCell, int nParts) : group(nParts) {
    for (MeshPart const& part : SplitMesh(mesh, partOfCell, nParts)) {
      partitions.push_back(std::make_unique<HostPartition>(part));
      communications.push_back(std::make_unique<InProcessCommunication>(group, *partitions.back()));
    }
  }

  InProcessGroup group;
  std::vector<std::unique_ptr<HostPartition>> partitions;
  std::vector<std::unique_ptr<InProcessCommunication>> communications;
};

double ValueOf(std::int64_t globalCell, int field) {
  return 1000.0 * field + static_cast<double>(globalCell);
}

/// Own values in the interior cells, kUntouched elsewhere.
Field InteriorField(HostPartition& partition, int field) {
  Field values(partition.mesh()->NCell + 1, kUntouched);
  for (int c = 1; c <= partition.mesh()->NInnerCells; ++c)
    values[c] = ValueOf(partition.globalCell()[c], field);
  return values;
}

/// Halo cells have their owners' values, ghost cells and element 0 are untouched.
void ExpectExchanged(HostPartition& partition, Field const& values, int field) {
  EXPECT_EQ(kUntouched, values[0]);
  for (int c = 1; c <= partition.mesh()->NCell; ++c) {
    std::int64_t const globalCell = partition.globalCell()[c];
    EXPECT_EQ(values[c], globalCell == 0 ? kUntouched : ValueOf(globalCell, field)) << "cell " << c;
  }
}

/// The text of the exception that a body throws.
template <class Exception>
std::string FailureOf(std::function<void()> const& body) {
  try {
    body();
  } catch (Exception const& failure) {
    return failure.what();
  }
  return "nothing of this kind was thrown";
}

TEST(InProcessExchange, BlockingExchangeFillsHaloCellsOnly) {
  FaceMesh const mesh = MixedBox(3);
  for (int nParts = 1; nParts <= 5; ++nParts) {
    ThreadedRun run(mesh, RandomParts(mesh.nCells, nParts), nParts);
    RunInProcess(run.group, [&run](int p) {
      Field values = InteriorField(*run.partitions[p], 1);
      run.communications[p]->DDM_Exch(values.data());
      ExpectExchanged(*run.partitions[p], values, 1);
    });
  }
}

TEST(InProcessExchange, FourInFlightAreWaitedForInAnyOrder) {
  FaceMesh const mesh = HexBox(4, 3, 3);
  ThreadedRun run(mesh, RandomParts(mesh.nCells, 3), 3);
  RunInProcess(run.group, [&run](int p) {
    HostPartition& partition = *run.partitions[p];
    InProcessCommunication& communication = *run.communications[p];
    std::vector<Field> fields;
    for (int i = 0; i < 4; ++i) fields.push_back(InteriorField(partition, i));
    // Every partition waits in a different order and makes another exchange in between.
    int const orders[3][4] = {{2, 0, 3, 1}, {3, 2, 1, 0}, {0, 1, 2, 3}};
    for (int i = 0; i < 4; ++i) {
      communication.DDM_IExch_Start(fields[i].data(), static_cast<ZYNNonBlockingBufferId>(i));
    }
    Field between = InteriorField(partition, 9);
    communication.DDM_Exch(between.data());
    for (int const i : orders[p]) {
      communication.DDM_IExch_Wait(fields[i].data(), static_cast<ZYNNonBlockingBufferId>(i));
      ExpectExchanged(partition, fields[i], i);
    }
    ExpectExchanged(partition, between, 9);
  });
}

TEST(InProcessExchange, BufferServesAgainAfterItsWait) {
  FaceMesh const mesh = HexBox(4, 2, 2);
  ThreadedRun run(mesh, RunParts(mesh.nCells, 2), 2);
  RunInProcess(run.group, [&run](int p) {
    // Partition 0 may be many rounds ahead of partition 1, so that messages queue up.
    for (int round = 0; round < 200; ++round) {
      Field values = InteriorField(*run.partitions[p], round);
      run.communications[p]->DDM_IExch_Start(values.data(), ZYNNonBlockingBuffer2);
      run.communications[p]->DDM_IExch_Wait(values.data(), ZYNNonBlockingBuffer2);
      ExpectExchanged(*run.partitions[p], values, round);
    }
  });
}

TEST(InProcessExchange, ValuesAreTakenAtTheStart) {
  ThreadedRun run(HexBox(2, 1, 1), {0, 1}, 2);
  RunInProcess(run.group, [&run](int p) {
    Field values = InteriorField(*run.partitions[p], 1);
    run.communications[p]->DDM_IExch_Start(values.data(), ZYNNonBlockingBuffer0);
    values[1] = 7;  // users must not do this; here it shows when the values are copied
    run.communications[p]->DDM_IExch_Wait(values.data(), ZYNNonBlockingBuffer0);
    values[1] = ValueOf(p + 1, 1);
    ExpectExchanged(*run.partitions[p], values, 1);
  });
}

TEST(InProcessExchange, SinglePartitionExchangesNothing) {
  ThreadedRun run(HexBox(2, 2, 2), std::vector<int>(8, 0), 1);
  Field values = InteriorField(*run.partitions[0], 3);
  run.communications[0]->DDM_Exch(values.data());  // in this thread: nobody to wait for
  run.communications[0]->DDM_IExch_Start(values.data(), ZYNNonBlockingBuffer3);
  run.communications[0]->DDM_IExch_Wait(values.data(), ZYNNonBlockingBuffer3);
  ExpectExchanged(*run.partitions[0], values, 3);
}

TEST(InProcessExchange, StartInABusyBufferFails) {
  ThreadedRun run(HexBox(1, 1, 1), {0}, 1);
  InProcessCommunication& communication = *run.communications[0];
  Field a(8), b(8);
  communication.DDM_IExch_Start(a.data(), ZYNNonBlockingBuffer1);
  EXPECT_EQ(
      "halo exchange of partition 0: start in buffer 1, which is still under way",
      FailureOf<std::logic_error>([&] { communication.DDM_IExch_Start(b.data(), ZYNNonBlockingBuffer1); }));
  communication.DDM_IExch_Start(b.data(), ZYNNonBlockingBuffer2);  // the others are free
}

TEST(InProcessExchange, WaitWithAnotherFieldFails) {
  ThreadedRun run(HexBox(1, 1, 1), {0}, 1);
  InProcessCommunication& communication = *run.communications[0];
  Field a(8), b(8);
  communication.DDM_IExch_Start(a.data(), ZYNNonBlockingBuffer0);
  EXPECT_EQ(
      "halo exchange of partition 0: wait for buffer 0 with another field",
      FailureOf<std::logic_error>([&] { communication.DDM_IExch_Wait(b.data(), ZYNNonBlockingBuffer0); }));
}

TEST(InProcessExchange, WaitWithoutStartFails) {
  ThreadedRun run(HexBox(1, 1, 1), {0}, 1);
  Field a(8);
  EXPECT_EQ("halo exchange of partition 0: wait for buffer 0, which was not started",
            FailureOf<std::logic_error>(
                [&] { run.communications[0]->DDM_IExch_Wait(a.data(), ZYNNonBlockingBuffer0); }));
}

TEST(InProcessExchange, MissingFieldFails) {
  ThreadedRun run(HexBox(1, 1, 1), {0}, 1);
  EXPECT_EQ("halo exchange of partition 0: start of the blocking exchange without a field",
            FailureOf<std::logic_error>([&] { run.communications[0]->DDM_Exch(nullptr); }));
}

TEST(InProcessExchange, PartitionsThatStartInAnotherOrderFail) {
  ThreadedRun run(HexBox(2, 1, 1), {0, 1}, 2);
  auto const body = [&run](int p) {
    Field a = InteriorField(*run.partitions[p], 1), b = InteriorField(*run.partitions[p], 2);
    auto const first = p == 0 ? ZYNNonBlockingBuffer0 : ZYNNonBlockingBuffer1;
    auto const second = p == 0 ? ZYNNonBlockingBuffer1 : ZYNNonBlockingBuffer0;
    run.communications[p]->DDM_IExch_Start(a.data(), first);
    run.communications[p]->DDM_IExch_Start(b.data(), second);
    run.communications[p]->DDM_IExch_Wait(a.data(), first);
    run.communications[p]->DDM_IExch_Wait(b.data(), second);
  };
  std::string const failure = FailureOf<std::logic_error>([&] { RunInProcess(run.group, body); });
  EXPECT_NE(failure.find("started its exchange number"), std::string::npos) << failure;
}

TEST(InProcessExchange, GroupOfAnotherSizeIsRefused) {
  InProcessGroup group(3);
  HostPartition const partition(ExtractPart(HexBox(2, 1, 1), {0, 1}, 0, 2));
  EXPECT_THROW(InProcessCommunication(group, partition), std::logic_error);
}

TEST(InProcessReduction, EveryPartitionGetsTheMinimumEachTime) {
  int const nParts = 5;
  InProcessGroup group(nParts);
  RunInProcess(group, [&group](int p) {
    InProcessReduction reduction(group);
    for (int round = 0; round < 500; ++round) {
      int value = 10 * round + (p + round) % nParts;
      reduction.AllMin(value);
      EXPECT_EQ(value, 10 * round);
    }
  });
}

TEST(InProcessReduction, SinglePartitionKeepsItsValue) {
  InProcessGroup group(1);
  InProcessReduction reduction(group);
  int value = -42;
  reduction.AllMin(value);
  EXPECT_EQ(-42, value);
}

TEST(RunInProcess, RunsEveryPartOnce) {
  std::array<std::atomic<int>, 6> count{};
  RunInProcess(6, [&count](int p) { ++count[p]; });
  for (auto const& n : count) EXPECT_EQ(1, n);
}

TEST(RunInProcess, ThrowsAgainWhatOnePartThrew) {
  EXPECT_EQ("part 1", FailureOf<std::out_of_range>([] {
              RunInProcess(3, [](int p) {
                if (p == 1) throw std::out_of_range("part 1");
              });
            }));
}

TEST(RunInProcess, PartsThatWaitForAFailedOneStop) {
  ThreadedRun run(HexBox(3, 1, 1), {0, 1, 2}, 3);
  auto const body = [&run](int p) {
    if (p == 1) throw std::out_of_range("part 1 came to an end");
    if (p == 0) {
      int value = 0;
      InProcessReduction(run.group).AllMin(value);
    } else {
      Field values = InteriorField(*run.partitions[p], 1);
      run.communications[p]->DDM_Exch(values.data());
    }
  };
  EXPECT_EQ("part 1 came to an end", FailureOf<std::out_of_range>([&] { RunInProcess(run.group, body); }));
}

}  // namespace
}  // namespace reference_host
