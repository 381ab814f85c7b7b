#include "reference_host/slabs/PartitionFile.h"

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <csignal>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "MpiTestSupport.h"
#include "reference_host/mesh/MeshError.h"

namespace reference_host::test {
namespace {

/// Parts 0, 1, ..., 6, 0, 1, ... of the own block of cells.
std::vector<int> PartsOfOwn(BlockRanges const& cells, int rank) {
  std::vector<int> parts;
  for (std::int64_t c = cells.First(rank); c < cells.End(rank); ++c) parts.push_back(static_cast<int>(c % 7));
  return parts;
}

std::string TextOfFile(std::string const& file) {
  std::ifstream in(file, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), {}};
}

/// All cells on one rank.
BlockRanges AllOn(int rank, std::int64_t nCells, int nRanks) {
  std::vector<std::int64_t> starts(static_cast<std::size_t>(nRanks) + 1, nCells);
  for (int r = 0; r <= rank; ++r) starts[static_cast<std::size_t>(r)] = 0;
  return BlockRanges(std::move(starts));
}

/// What every rank throws when it reads a file of this text for three cells and two parts.
std::string ErrorOf(SharedFolder const& folder, std::string const& text) {
  MpiCommunicator const world(MPI_COMM_WORLD);
  folder.Write("parts.txt", text);
  std::string const file = folder.File("parts.txt");
  std::string error =
      ErrorOnEveryRank([&] { ReadPartition(world, file, BlockRanges::Even(3, world.size()), 2); });
  try {
    ReadPartition(file, 3, 2);
    ADD_FAILURE() << "one process reads what several do not";
  } catch (MeshError const& ofOne) {
    EXPECT_EQ(error, ofOne.what());
  }
  return error.substr(error.rfind("parts.txt"));
}

/// Allows rank 0 to write files of so many bytes only.
class FileSizeLimit {
 public:
  explicit FileSizeLimit(rlim_t bytes) {
    if (Rank() != 0) return;
    getrlimit(RLIMIT_FSIZE, &before_);
    rlimit limit = before_;
    limit.rlim_cur = bytes;
    setrlimit(RLIMIT_FSIZE, &limit);
    handler_ = std::signal(SIGXFSZ, SIG_IGN);
  }
  ~FileSizeLimit() {
    if (Rank() != 0) return;
    setrlimit(RLIMIT_FSIZE, &before_);
    std::signal(SIGXFSZ, handler_);
  }
  FileSizeLimit(FileSizeLimit const&) = delete;
  FileSizeLimit& operator=(FileSizeLimit const&) = delete;

 private:
  rlimit before_ = {};
  void (*handler_)(int) = SIG_DFL;
};

}  // namespace

TEST(PartitionFile, HoldsThePartsInTheOrderOfTheCells) {
  MpiCommunicator const world(MPI_COMM_WORLD);
  SharedFolder const folder;
  int nFiles = 0;
  for (BlockRanges const& cells :
       {BlockRanges::Even(20, world.size()), AllOn(world.size() - 1, 20, world.size()),
        BlockRanges::Even(1, world.size())}) {
    std::string const file = folder.File(std::to_string(nFiles++));
    std::vector<int> const own = PartsOfOwn(cells, world.rank());
    WritePartition(world, file, cells, own);
    std::string expected;
    for (std::int64_t c = 0; c < cells.nItems(); ++c) expected += std::to_string(c % 7) + "\n";
    EXPECT_EQ(TextOfFile(file), expected);
    EXPECT_EQ(ReadPartition(world, file, cells, 7), own);
    EXPECT_EQ(ReadPartition(file, cells.nItems(), 7), PartsOfOwn(AllOn(0, cells.nItems(), 1), 0));
  }
}

TEST(PartitionFile, TravelsInPieces) {
  MpiCommunicator const world(MPI_COMM_WORLD);
  SharedFolder const folder;
  std::int64_t const nCells = (std::int64_t{1} << 20) + 5;
  BlockRanges const cells = AllOn(world.size() - 1, nCells, world.size());
  std::vector<int> const own = PartsOfOwn(cells, world.rank());
  WritePartition(world, folder.File("parts.txt"), cells, own);
  EXPECT_TRUE(ReadPartition(world, folder.File("parts.txt"), cells, 7) == own);
}

TEST(PartitionFile, TakesAnyBlanksBetweenNumbers) {
  MpiCommunicator const world(MPI_COMM_WORLD);
  SharedFolder const folder;
  folder.Write("parts.txt", "0 1\r\n\n  1");
  BlockRanges const cells = AllOn(0, 3, world.size());
  std::vector<int> const expected = world.rank() == 0 ? std::vector<int>{0, 1, 1} : std::vector<int>();
  EXPECT_EQ(ReadPartition(world, folder.File("parts.txt"), cells, 2), expected);
}

TEST(PartitionFile, NamesTheLineOfWhatIsNoPart) {
  SharedFolder const folder;
  EXPECT_EQ(ErrorOf(folder, "0\n2\n1\n"),
            "parts.txt:2: part 2 is none of the parts 0 to 1, one for each rank");
  EXPECT_EQ(ErrorOf(folder, "0\n1\n-1\n"),
            "parts.txt:3: part -1 is none of the parts 0 to 1, one for each rank");
  EXPECT_EQ(ErrorOf(folder, "a\n1\n1\n"), "parts.txt:1: a part number expected instead of 'a'");
  EXPECT_EQ(ErrorOf(folder, "0\n1\n99999999999999999999\n"),
            "parts.txt:3: a part number expected instead of '99999999999999999999'");
}

TEST(PartitionFile, HasAsManyPartsAsTheMeshHasCells) {
  SharedFolder const folder;
  EXPECT_EQ(ErrorOf(folder, "0\n1\n"), "parts.txt: 2 parts for the 3 cells of the mesh");
  EXPECT_EQ(ErrorOf(folder, ""), "parts.txt: 0 parts for the 3 cells of the mesh");
  EXPECT_EQ(ErrorOf(folder, "0\n1\n1\n0\n"), "parts.txt:4: more parts than the 3 cells of the mesh");
}

TEST(PartitionFile, MustBeThereToBeRead) {
  MpiCommunicator const world(MPI_COMM_WORLD);
  SharedFolder const folder;
  std::string const file = folder.File("absent");
  EXPECT_EQ(ErrorOnEveryRank([&] { ReadPartition(world, file, BlockRanges::Even(9, world.size()), 2); }),
            file + ": no such file");
}

TEST(PartitionFile, IsNeverReplaced) {
  MpiCommunicator const world(MPI_COMM_WORLD);
  SharedFolder const folder;
  folder.Write("mine", "precious");
  BlockRanges const cells = BlockRanges::Even(9, world.size());
  std::string const file = folder.File("mine");
  EXPECT_EQ(ErrorOnEveryRank([&] { WritePartition(world, file, cells, PartsOfOwn(cells, world.rank())); }),
            file + ": exists already, and is not replaced");
  EXPECT_EQ(TextOfFile(file), "precious");
}

TEST(PartitionFile, LeavesNothingBehindWhereItCannotBeWritten) {
  MpiCommunicator const world(MPI_COMM_WORLD);
  SharedFolder const folder;
  BlockRanges const cells = BlockRanges::Even(100'000, world.size());
  std::string const file = folder.File("parts.txt");
  auto const write = [&] { WritePartition(world, file, cells, PartsOfOwn(cells, world.rank())); };
  for (rlim_t const limit : {rlim_t{10}, rlim_t{199'999}}) {
    FileSizeLimit const limited(limit);
    EXPECT_EQ(ErrorOnEveryRank(write), file + ": File too large");
    EXPECT_FALSE(std::filesystem::exists(file));
    MPI_Barrier(MPI_COMM_WORLD);  // before rank 0 tries again
  }
  std::string const inFile = folder.File("a file/parts.txt");
  folder.Write("a file", "");
  EXPECT_EQ(ErrorOnEveryRank([&] { WritePartition(world, inFile, cells, PartsOfOwn(cells, world.rank())); }),
            inFile + ": Not a directory");
}

}  // namespace reference_host::test
