#include "reference_host/gmsh/GmshBlocks.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include "reference_host/gmsh/GmshBlockReader.h"
#include "reference_host/gmsh/GmshContentReader.h"
#include "reference_host/gmsh/GmshCursor.h"
#include "reference_host/mesh/MeshError.h"
#include "reference_host/mesh/MeshFile.h"
#include "tests/unit/reference_host/MeshTestSupport.h"
#include "tests/unit/reference_host/gmsh/GmshTestFile.h"

namespace {

using reference_host::GmshBlockReader;
using reference_host::GmshBlocks;
using reference_host::GmshContent;
using reference_host::GmshElement;
using reference_host::Point;

GmshContent ReadAtOnce(std::string const& name) {
  reference_host::MeshFile file(name);
  reference_host::GmshCursor cursor(file);
  GmshContent content;
  ReadGmshContent(cursor, content);
  return content;
}

/// What the blocks say of the whole file, read a few items at a time.
GmshContent ReadByBlocks(std::string const& name, std::int64_t nAtOnce) {
  GmshBlocks blocks;
  GmshContent content = IndexGmsh(name, blocks);
  if (!blocks.failure.empty()) throw reference_host::MeshError(blocks.failure);
  GmshBlockReader reader(name, blocks);
  for (std::int64_t first = 0; first < blocks.nNodes(); first += nAtOnce) {
    reader.ReadNodes(first, std::min(first + nAtOnce, blocks.nNodes()), content.nodeTag, content.point);
  }
  for (GmshBlocks::Kind const kind : {GmshBlocks::kVolumes, GmshBlocks::kSurfaces, GmshBlocks::kOthers}) {
    for (std::int64_t first = 0; first < blocks.nElements(kind); first += nAtOnce) {
      std::int64_t const end = std::min(first + nAtOnce, blocks.nElements(kind));
      std::size_t nNodes = 0;
      reader.ForEachElement(kind, first, end, [&](GmshElement const& element) {
        nNodes += static_cast<std::size_t>(element.type->nNodes);
        if (kind == GmshBlocks::kOthers) return;
        auto& elements = kind == GmshBlocks::kVolumes ? content.volumes : content.surfaces;
        elements.type.push_back(element.type->number);
        elements.tag.push_back(element.tag);
        elements.nodeTag.insert(elements.nodeTag.end(), element.nodeTag.begin(),
                                element.nodeTag.begin() + element.type->nNodes);
        if (kind == GmshBlocks::kSurfaces) content.physicalOfSurface.push_back(element.physical);
        if (element.hasPartition) content.partitionsWithVolumes.insert(element.partition);
      });
      EXPECT_EQ(reader.CountNodeTags(kind, first, end), nNodes);
    }
  }
  return content;
}

void ExpectSameContent(std::string const& file, std::int64_t nAtOnce) {
  GmshContent const expected = ReadAtOnce(file), content = ReadByBlocks(file, nAtOnce);
  EXPECT_EQ(content.surfaceName, expected.surfaceName);
  EXPECT_EQ(content.nodeTag, expected.nodeTag);
  EXPECT_EQ(content.point, expected.point);
  EXPECT_EQ(content.volumes.type, expected.volumes.type);
  EXPECT_EQ(content.volumes.tag, expected.volumes.tag);
  EXPECT_EQ(content.volumes.nodeTag, expected.volumes.nodeTag);
  EXPECT_EQ(content.surfaces.type, expected.surfaces.type);
  EXPECT_EQ(content.surfaces.tag, expected.surfaces.tag);
  EXPECT_EQ(content.surfaces.nodeTag, expected.surfaces.nodeTag);
  EXPECT_EQ(content.physicalOfSurface, expected.physicalOfSurface);
  EXPECT_EQ(content.nPartitions, expected.nPartitions);
  EXPECT_EQ(content.partitionsWithVolumes, expected.partitionsWithVolumes);
  ASSERT_EQ(content.periodicSurfaces.size(), expected.periodicSurfaces.size());
  for (std::size_t s = 0; s < content.periodicSurfaces.size(); ++s) {
    EXPECT_EQ(content.periodicSurfaces[s].nodeTags, expected.periodicSurfaces[s].nodeTags);
    EXPECT_EQ(content.periodicSurfaces[s].transformation, expected.periodicSurfaces[s].transformation);
  }
}

/// A mesh of version 2.2 with the elements of one type together, or some of them, and tags of partitions.
std::string PartitionedGmsh22(int nCells, int nTogether) {
  GmshTestFile file(true);
  file.Format("2.2").Text("$Nodes\n4\n");
  for (int i = 1; i <= 4; ++i) file.Int(i).Real(i == 2 ? 1 : 0).Real(i == 3 ? 1 : 0).Real(i == 4 ? 1 : 0);
  file.Text("\n$EndNodes\n$Elements\n" + std::to_string(nCells + 1) + "\n");
  file.Int(1).Int(1).Int(2).Int(1).Int(3).Int(4).Int(1).Int(2);
  for (int i = 0; i < nCells; ++i) {
    if (i % nTogether == 0) file.Int(4).Int(std::min(nTogether, nCells - i)).Int(4);
    file.Int(i + 2).Int(7).Int(1).Int(1).Int(i % 5 + 1);
    for (int node = 1; node <= 4; ++node) file.Int(node);
  }
  file.Text("\n$EndElements\n");
  return file.Content();
}

TEST(GmshBlocks, GiveTheContentOfTheFileForAnyRanges) {
  std::string const data = std::string(ZYN_TEST_DATA) + "/gmsh/";
  for (char const* const name : {"box_22_binary.msh", "box_41_binary.msh", "box_parts_41_binary.msh"}) {
    for (int const nAtOnce : {1, 7, 100000}) {
      SCOPED_TRACE(std::string(name) + " by " + std::to_string(nAtOnce));
      ExpectSameContent(data + name, nAtOnce);
    }
  }
  TemporaryFolder const folder;
  for (char const* const version : {"2.2", "4.1"}) {
    std::string const file = folder.Write("a.msh", WriteGmsh(MixedMesh(), version, true));
    for (int const nAtOnce : {1, 3, 100}) ExpectSameContent(file, nAtOnce);
  }
}

TEST(GmshBlocks, JoinElementsThatHaveAHeaderEach) {
  TemporaryFolder const folder;
  for (int const nTogether : {1, 3, 100}) {
    SCOPED_TRACE(nTogether);
    std::string const file = folder.Write("a.msh", PartitionedGmsh22(30, nTogether));
    GmshBlocks blocks;
    IndexGmsh(file, blocks);
    EXPECT_EQ(blocks.failure, "");
    EXPECT_EQ(blocks.elements[GmshBlocks::kVolumes].size(), 1U);
    EXPECT_EQ(blocks.nElements(GmshBlocks::kVolumes), 30);
    EXPECT_EQ(blocks.nElements(GmshBlocks::kOthers), 1);
    for (int const nAtOnce : {1, 4, 100}) ExpectSameContent(file, nAtOnce);
  }
}

/// Blocks that do not fit together stay apart.
TEST(GmshBlocks, KeepElementsOfOtherHeadersApart) {
  TemporaryFolder const folder;
  std::string const file =
      folder.Write("a.msh", PartitionedGmsh22(31, 3));  // the last header has one element
  GmshBlocks blocks;
  IndexGmsh(file, blocks);
  EXPECT_EQ(blocks.elements[GmshBlocks::kVolumes].size(), 2U);
  ExpectSameContent(file, 5);
}

TEST(GmshBlocks, StopAtTheFailureOfDamagedFiles) {
  TemporaryFolder const folder;
  for (char const* const version : {"2.2", "4.1"}) {
    std::string const content = WriteGmsh(MixedMesh(), version, true);
    for (std::size_t length = 40; length + 1 < content.size(); length += 5) {
      std::string const file = folder.Write("a.msh", content.substr(0, length));
      GmshBlocks blocks;
      IndexGmsh(file, blocks);
      EXPECT_EQ(blocks.failure, MeshErrorOf([&] { ReadAtOnce(file); }));
    }
  }
}

template <class Work>
bool Refuses(Work const& work) {
  try {
    work();
  } catch (reference_host::MeshError const&) {
    return true;
  }
  return false;
}

/// Random bytes after a good beginning: the blocks lie in the file, and what they hold is read or refused.
TEST(GmshBlocks, SurviveDamagedBytes) {
  TemporaryFolder const folder;
  std::mt19937 random(21);
  int nRefused = 0;
  for (char const* const version : {"2.2", "4.1"}) {
    std::string const content = WriteGmsh(MixedMesh(), version, true);
    for (int round = 0; round < 1000; ++round) {
      std::string damaged = content;
      for (int i = 0; i < 4; ++i)
        damaged[40 + random() % (damaged.size() - 40)] = static_cast<char>(random());
      std::string const file = folder.Write("a.msh", damaged);
      bool const isRefused = Refuses([&] { ReadAtOnce(file); });
      EXPECT_EQ(Refuses([&] { ReadByBlocks(file, 3); }), isRefused) << version << ", round " << round;
      if (isRefused) ++nRefused;
    }
  }
  EXPECT_GT(nRefused, 100);
}

}  // namespace
