#include "reference_host/slabs/FieldSlab.h"

#include <algorithm>
#include <cstddef>
#include <filesystem>
#include <utility>

#include "reference_host/FieldReader.h"
#include "reference_host/cgns/CgnsField.h"
#include "reference_host/openfoam/FoamList.h"
#include "reference_host/parallel/MpiAgreement.h"
#include "reference_host/slabs/FoamSlabFile.h"

namespace reference_host {
namespace {

class FieldSlabReader {
 public:
  FieldSlabReader(MpiCommunicator const& communicator, std::int64_t nCells) : communicator_(communicator) {
    slab_.cells = BlockRanges::Even(nCells, communicator.size());
  }

  FieldSlab ReadCgns(std::string const& fieldSpec, std::vector<std::int64_t> const& nFaces) {
    RunTogether(communicator_, [&] {
      auto const parts = CgnsFieldParts(fieldSpec);
      CgnsFieldFile const file(parts->first, parts->second);
      CheckCgnsValueCount(fieldSpec, file.nCells(), slab_.cells.nItems());
      slab_.nComponents = file.nComponents();
      slab_.value = file.Read(First(), nOwn());
      if (communicator_.rank() == 0) slab_.boundary = CgnsFieldWithoutCells(slab_.nComponents, nFaces);
    });
    return std::move(slab_);
  }

  FieldSlab ReadFoam(std::string const& fieldSpec, std::string const& polyMesh,
                     PolyMeshBoundary const& boundary) {
    std::filesystem::path path;
    RunTogether(communicator_, [&] {
      if (communicator_.rank() == 0) path = FindFoamField(polyMesh, fieldSpec);
    });
    FoamSlabFile file(communicator_, path.parent_path().string(), path.filename().string());
    FoamReals inMemory;  // on rank 0
    Cells const cells = file.OnRank0([&](FoamFile& foam) {
      FoamFieldOutline outline = ReadFoamFieldOutline(foam, slab_.cells.nItems(), boundary);
      slab_.boundary = std::move(outline.field);
      inMemory = std::move(outline.cells);
      return Cells{slab_.boundary.nComponents, inMemory.isLeft, inMemory.list.empty(), inMemory.same,
                   inMemory.begin};
    });
    slab_.nComponents = cells.nComponents;
    RunTogether(communicator_, [&] { MakeRoom(cells); });
    if (cells.isLeft) {
      ReadLeft(file, cells);
    } else if (!cells.areSame) {
      Distribute(inMemory.list);
    }
    return std::move(slab_);
  }

 private:
  /// Where the values of the cells are: in the file, in the memory of rank 0, or all the same.
  struct Cells {
    int nComponents = 1;
    bool isLeft = false, areSame = false;
    FoamItem same{};
    std::size_t begin = 0;
  };

  std::int64_t First() const { return slab_.cells.First(communicator_.rank()); }
  std::int64_t nOwn() const { return slab_.cells.Size(communicator_.rank()); }

  void MakeRoom(Cells const& cells) {
    slab_.value.reserve(static_cast<std::size_t>(nOwn() * cells.nComponents));
    if (cells.isLeft || !cells.areSame) return;
    for (std::int64_t c = 0; c < nOwn(); ++c)
      slab_.value.insert(slab_.value.end(), cells.same.begin(), cells.same.begin() + cells.nComponents);
  }

  void ReadLeft(FoamSlabFile& file, Cells const& cells) {
    std::int64_t const n = slab_.nComponents;
    if (file.Format().isBinary) {
      FoamListPlace const list = file.OnRank0([&](FoamFile& foam) {
        foam.Text().MoveTo(cells.begin);
        return FoamSlabFile::SkipList(foam, n * slab_.cells.nItems(), foam.Format().scalarBytes);
      });
      file.ReadOwn<double>(list, n * First(), n * (First() + nOwn()),
                           [&](double value, std::int64_t) { slab_.value.push_back(value); });
      return;
    }
    file.Stream<FoamItem>(
        [&](FoamFile& foam, auto const& send) {
          foam.Text().MoveTo(cells.begin);
          std::int64_t c = 0;
          ReadTextReals(foam.Text(), slab_.nComponents, slab_.cells.nItems(), [&](FoamItem const& item) {
            if (c < slab_.cells.nItems()) send(slab_.cells.BlockOf(c++), item);
          });
        },
        [&](FoamItem const& item) { slab_.value.insert(slab_.value.end(), item.begin(), item.begin() + n); });
  }

  void Distribute(std::vector<double> const& list) {
    StreamFromRank0<double>(
        communicator_,
        [&](auto const& send) {
          for (std::size_t i = 0; i < list.size(); ++i)
            send(slab_.cells.BlockOf(static_cast<std::int64_t>(i) / slab_.nComponents), list[i]);
        },
        [&](double value) { slab_.value.push_back(value); });
  }

  MpiCommunicator const& communicator_;
  FieldSlab slab_;
};

}  // namespace

FieldSlab ReadFieldSlab(MpiCommunicator const& communicator, std::string const& fieldSpec,
                        std::string const& polyMesh, std::int64_t nCells, PolyMeshBoundary const& boundary,
                        std::vector<std::int64_t> const& nFaces) {
  bool isCgns = false;
  RunTogether(communicator, [&] { isCgns = IsCgnsField(fieldSpec); });
  FieldSlabReader reader(communicator, nCells);
  return isCgns ? reader.ReadCgns(fieldSpec, nFaces) : reader.ReadFoam(fieldSpec, polyMesh, boundary);
}

}  // namespace reference_host
