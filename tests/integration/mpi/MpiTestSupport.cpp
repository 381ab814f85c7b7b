#include "MpiTestSupport.h"

#include <gtest/gtest.h>
#include <stdlib.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <fstream>
#include <numeric>
#include <sstream>

#include "reference_host/mesh/MeshError.h"

namespace reference_host::test {

int Rank() {
  int rank = 0;
  MPI_Comm_rank(MPI_COMM_WORLD, &rank);
  return rank;
}

int RankCount() {
  int size = 1;
  MPI_Comm_size(MPI_COMM_WORLD, &size);
  return size;
}

LoadedMesh Load(std::string const& meshSpec) { return LoadMesh(MPI_COMM_WORLD, meshSpec, {}, {}); }

namespace {

/// Collective. The items of all ranks one after another, and the number of each rank's items.
template <class T>
std::vector<T> GatherItems(T const* items, std::size_t nItems, std::vector<int>& bytesOfRank) {
  int const nBytes = static_cast<int>(nItems * sizeof(T));
  bytesOfRank.resize(RankCount());
  MPI_Allgather(&nBytes, 1, MPI_INT, bytesOfRank.data(), 1, MPI_INT, MPI_COMM_WORLD);
  std::vector<int> offset(bytesOfRank.size(), 0);
  std::partial_sum(bytesOfRank.begin(), bytesOfRank.end() - 1, offset.begin() + 1);
  std::vector<T> all((offset.back() + bytesOfRank.back()) / sizeof(T));
  MPI_Allgatherv(items, nBytes, MPI_BYTE, all.data(), bytesOfRank.data(), offset.data(), MPI_BYTE,
                 MPI_COMM_WORLD);
  return all;
}

}  // namespace

std::vector<std::string> GatherTexts(std::string const& text) {
  std::vector<int> lengths;
  std::vector<char> const all = GatherItems(text.data(), text.size(), lengths);
  std::vector<std::string> texts;
  auto next = all.begin();
  for (int const length : lengths) {
    texts.emplace_back(next, next + length);
    next += length;
  }
  return texts;
}

std::vector<std::int64_t> GatherNumbers(std::vector<std::int64_t> const& numbers) {
  std::vector<int> lengths;
  return GatherItems(numbers.data(), numbers.size(), lengths);
}

std::string ErrorOnEveryRank(std::function<void()> const& work) {
  std::string text;
  try {
    work();
  } catch (MeshError const& error) {
    text = error.what();
  }
  EXPECT_NE("", text);
  EXPECT_EQ(text.find('\n'), std::string::npos);
  for (std::string const& other : GatherTexts(text)) EXPECT_EQ(other, text);
  return text;
}

SharedFolder::SharedFolder() {
  std::string name = testing::TempDir() + "mpi_tests_XXXXXX";
  if (Rank() == 0 && mkdtemp(name.data()) == nullptr) name.clear();
  path_ = GatherTexts(name).front();
  EXPECT_NE("", path_) << "no folder for the test's files";
}

SharedFolder::~SharedFolder() {
  MPI_Barrier(MPI_COMM_WORLD);
  std::error_code ignored;
  if (Rank() == 0) std::filesystem::remove_all(path_, ignored);
}

void SharedFolder::Write(std::string const& name, std::string const& text) const {
  if (Rank() == 0) std::ofstream(File(name)) << text;
  MPI_Barrier(MPI_COMM_WORLD);
}

std::string GmshTextOfCubes(int nx, int ny, int nz, std::string const& lowName) {
  auto const node = [=](int i, int j, int k) { return 1 + i + (nx + 1) * (j + (ny + 1) * k); };
  std::array<int, 3> const n = {nx, ny, nz};

  std::ostringstream elements;
  int nElements = 0;
  auto const add = [&](std::string const& typeAndTag, std::vector<int> const& nodes) {
    elements << ++nElements << " " << typeAndTag;
    for (int const number : nodes) elements << " " << number;
    elements << "\n";
  };
  // Quadrilaterals at the end `at` of direction d, over the cells of the other two directions.
  for (std::size_t d = 0; d < 3; ++d) {
    std::size_t const e = (d + 1) % 3, f = (d + 2) % 3;
    for (int const at : {0, n[d]}) {
      std::string const tag = d == 0 ? (at == 0 ? "3 2 1 1" : "3 2 2 2") : "3 2 3 3";
      for (int a = 0; a < n[e]; ++a) {
        for (int b = 0; b < n[f]; ++b) {
          std::vector<int> nodes;
          for (auto const& [da, db] : {std::array{0, 0}, {1, 0}, {1, 1}, {0, 1}}) {
            std::array<int, 3> place{};
            place[d] = at;
            place[e] = a + da;
            place[f] = b + db;
            nodes.push_back(node(place[0], place[1], place[2]));
          }
          add(tag, nodes);
        }
      }
    }
  }
  for (int k = 0; k < nz; ++k) {
    for (int j = 0; j < ny; ++j) {
      for (int i = 0; i < nx; ++i) {
        add("5 2 4 4",
            {node(i, j, k), node(i + 1, j, k), node(i + 1, j + 1, k), node(i, j + 1, k), node(i, j, k + 1),
             node(i + 1, j, k + 1), node(i + 1, j + 1, k + 1), node(i, j + 1, k + 1)});
      }
    }
  }

  std::ostringstream text;
  text << "$MeshFormat\n2.2 0 8\n$EndMeshFormat\n";
  text << "$PhysicalNames\n4\n2 1 \"" << lowName
       << "\"\n2 2 \"outlet\"\n2 3 \"walls\"\n3 4 \"fluid\"\n$EndPhysicalNames\n";
  text << "$Nodes\n" << (nx + 1) * (ny + 1) * (nz + 1) << "\n";
  for (int k = 0; k <= nz; ++k) {
    for (int j = 0; j <= ny; ++j) {
      for (int i = 0; i <= nx; ++i) text << node(i, j, k) << " " << i << " " << j << " " << k << "\n";
    }
  }
  text << "$EndNodes\n$Elements\n" << nElements << "\n" << elements.str() << "$EndElements\n";
  return text.str();
}

}  // namespace reference_host::test
