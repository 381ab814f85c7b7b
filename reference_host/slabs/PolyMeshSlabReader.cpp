#include "reference_host/slabs/PolyMeshSlabReader.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <utility>

#include "reference_host/mesh/MeshError.h"
#include "reference_host/openfoam/FoamList.h"
#include "reference_host/parallel/MpiAgreement.h"
#include "reference_host/slabs/FoamSlabFile.h"
#include "reference_host/slabs/MpiLists.h"

namespace reference_host {
namespace {

/// More items than any file has, so few that their bytes can be counted.
constexpr std::int64_t kMostItems = std::int64_t{1} << 52;

/// The length of a list, counted if the file does not state it. The text stays where it is.
/// @param[in] what  the length, for messages
template <class ReadItem>
std::int64_t LengthOfList(TextCursor& text, char const* what, ReadItem const& readItem) {
  std::size_t const begin = text.Position();
  std::int64_t n = 0;
  if (text.Peek() == '(') {
    ReadFoamList(text, what, [&] {
      readItem();
      ++n;
    });
  } else {
    n = static_cast<std::int64_t>(text.Count(what, 1));
  }
  text.MoveTo(begin);
  return n;
}

Point ReadTextPoint(TextCursor& text) {
  Point point{};
  text.Expect('(');
  for (double& x : point) x = text.Real("a coordinate");
  text.Expect(')');
  return point;
}

class PolyMeshSlabReader {
 public:
  PolyMeshSlabReader(MpiCommunicator const& communicator, std::string const& folder)
      : communicator_(communicator), rank_(communicator.rank()), folder_(folder) {}

  MeshSlab Read() {
    ReadPoints();
    ReadFaces();
    ReadCells();
    ReadPatches();
    slab_.names.nodeWord = "point";
    slab_.names.nodeNumber = [](std::int64_t point) { return point; };
    slab_.names.cell = [](std::int64_t cell) { return "cell " + std::to_string(cell); };
    slab_.names.face = [](std::int64_t face) { return "face " + std::to_string(face); };
    return std::move(slab_);
  }

 private:
  FoamSlabFile Open(char const* name) const { return {communicator_, folder_, name}; }

  BlockRanges Even(std::int64_t n) const { return BlockRanges::Even(n, communicator_.size()); }

  std::int64_t MostOfAll(std::int64_t own) const {
    MPI_Allreduce(MPI_IN_PLACE, &own, 1, MPI_INT64_T, MPI_MAX, communicator_.get());
    return own;
  }

  // Points.

  void ReadPoints() {
    FoamSlabFile file = Open("points");
    if (file.Format().isBinary) {
      FoamListPlace const list = file.OnRank0([](FoamFile& foam) {
        std::int64_t const n = ReadFoamLength(foam.Text(), "point", kMostItems);
        return FoamSlabFile::SkipList(foam, 3 * n, foam.Format().scalarBytes);
      });
      MakeRoomForPoints(list.nNumbers / 3);
      std::int64_t const first = 3 * slab_.nodes.First(rank_);
      file.ReadOwn<double>(list, first, 3 * slab_.nodes.End(rank_), [&](double x, std::int64_t i) {
        auto const own = static_cast<std::size_t>(i - first);
        slab_.points[own / 3][own % 3] = x;
      });
      return;
    }
    char const* const what = "the number of points";
    MakeRoomForPoints(file.OnRank0([what](FoamFile& foam) {
      return LengthOfList(foam.Text(), what, [&foam] { ReadTextPoint(foam.Text()); });
    }));
    std::size_t next = 0;
    file.Stream<Point>(
        [&](FoamFile& foam, auto const& send) {
          std::int64_t i = 0;
          ReadFoamList(foam.Text(), what, [&] {
            Point const point = ReadTextPoint(foam.Text());
            if (i < slab_.nodes.nItems()) send(slab_.nodes.BlockOf(i++), point);
          });
        },
        [&](Point const& point) { slab_.points[next++] = point; });
  }

  void MakeRoomForPoints(std::int64_t n) {
    slab_.nodes = Even(n);
    RunTogether(communicator_,
                [&] { slab_.points.resize(static_cast<std::size_t>(slab_.nodes.Size(rank_))); });
  }

  FoamRange PointRange() const { return {"point", 0, slab_.nodes.nItems()}; }

  // Faces.

  void ReadFaces() {
    FoamSlabFile file = Open("faces");
    bool const isCompact = file.OnRank0([](FoamFile& foam) { return foam.ClassName() == "faceCompactList"; });
    if (!isCompact) {
      ReadFaceRows(file);
    } else if (file.Format().isBinary) {
      ReadBinaryFaces(file);
    } else {
      ReadTextFaces(file);
    }
  }

  void MakeRoomForFaces(std::int64_t n) {
    slab_.faces = Even(n);
    RunTogether(communicator_, [&] {
      auto const own = static_cast<std::size_t>(slab_.faces.Size(rank_));
      slab_.faceStart.reserve(own + 1);
      slab_.faceNode.reserve(4 * own);
    });
  }

  /// The nodes of the next face, text or binary.
  void ReadRow(FoamFile& file, std::vector<std::int64_t>& nodes) const {
    TextCursor& text = file.Text();
    nodes.clear();
    if (file.Format().isBinary) {
      ReadBinaryLabels(text, file.Format(), ReadFoamLength(text, "node", std::numeric_limits<int>::max()),
                       PointRange(), [&](std::int64_t node) { nodes.push_back(node); });
    } else {
      ReadFoamList(text, "the number of nodes of a face", [&] { nodes.push_back(PointRange().Read(text)); });
    }
  }

  // N (n(node node ...) n(node node ...) ...)
  // Each face goes to its rank as its number of nodes, then the nodes.
  void ReadFaceRows(FoamSlabFile& file) {
    char const* const what = "the number of faces";
    std::vector<std::int64_t> nodes;
    MakeRoomForFaces(file.OnRank0(
        [&](FoamFile& foam) { return LengthOfList(foam.Text(), what, [&] { ReadRow(foam, nodes); }); }));
    std::int64_t nMissing = -1;  // nodes of the present face; -1: the next number is that of another face
    file.Stream<std::int64_t>(
        [&](FoamFile& foam, auto const& send) {
          std::int64_t face = 0;
          ReadFoamList(foam.Text(), what, [&] {
            ReadRow(foam, nodes);
            if (face == slab_.faces.nItems()) return;
            int const rank = slab_.faces.BlockOf(face++);
            send(rank, static_cast<std::int64_t>(nodes.size()));
            for (std::int64_t const node : nodes) send(rank, node);
          });
        },
        [&](std::int64_t number) {
          if (nMissing < 0) {
            nMissing = number;
          } else {
            slab_.faceNode.push_back(number);
            --nMissing;
          }
          if (nMissing > 0) return;
          slab_.faceStart.push_back(slab_.faceNode.size());
          nMissing = -1;
        });
  }

  static constexpr FoamRange kAnyStart = {"the start of a face", std::numeric_limits<std::int64_t>::min(),
                                          std::numeric_limits<std::int64_t>::max()};
  static constexpr char const* kMustRise = "the starts of the faces must begin with 0 and ascend";

  // N+1 (start of each face in the second list, and its length)   M (node node ...)
  void ReadBinaryFaces(FoamSlabFile& file) {
    FoamListPlace const starts = file.OnRank0([](FoamFile& foam) {
      FoamListPlace const list = FoamSlabFile::SkipList(foam, CountLabels(foam, "the number of face starts"),
                                                        foam.Format().labelBytes);
      if (list.nNumbers == 0) foam.Text().Fail(kMustRise);
      return list;
    });
    MakeRoomForFaces(starts.nNumbers - 1);
    StartBlock block(*this);
    std::int64_t previous = 0;
    file.ReadOwn<std::int64_t>(starts, block.First(), block.End(), [&](std::int64_t start, std::int64_t i) {
      kAnyStart.Checked(start, [&](std::string const& fault) { file.FailAt(starts, i, fault); });
      if (i == 0 ? start != 0 : i > block.First() && start < previous)
        file.FailAtByte(starts.closing, kMustRise);
      block.Add(previous = start);
    });
    block.Complete();
    RunTogether(communicator_, [&] {
      if (!block.Rises()) file.FailAtByte(starts.closing, kMustRise);
    });

    FoamListPlace const nodes = file.OnRank0([](FoamFile& foam) {
      return FoamSlabFile::SkipList(foam, CountLabels(foam, "the number of nodes of all faces"),
                                    foam.Format().labelBytes);
    });
    file.ReadOwn<std::int64_t>(nodes, block.FirstNode(nodes.nNumbers), block.EndNode(nodes.nNumbers),
                               [&](std::int64_t node, std::int64_t i) {
                                 slab_.faceNode.push_back(PointRange().Checked(
                                     node, [&](std::string const& fault) { file.FailAt(nodes, i, fault); }));
                               });
    CheckEnd(file, block, nodes.nNumbers);
  }

  static std::int64_t CountLabels(FoamFile& file, char const* what) {
    return static_cast<std::int64_t>(
        file.Text().Count(what, static_cast<std::size_t>(file.Format().labelBytes)));
  }

  void ReadTextFaces(FoamSlabFile& file) {
    char const* const whatStarts = "the number of face starts";
    char const* const whatNodes = "the number of nodes of all faces";
    MakeRoomForFaces(file.OnRank0([&](FoamFile& foam) {
      return std::max<std::int64_t>(
          0, LengthOfList(foam.Text(), whatStarts, [&] { kAnyStart.Read(foam.Text()); }) - 1);
    }));
    StartBlock block(*this);
    file.Stream<std::int64_t>(
        [&](FoamFile& foam, auto const& send) {
          std::int64_t i = 0, previous = 0;
          ReadFoamList(foam.Text(), whatStarts, [&] {
            std::int64_t const start = kAnyStart.Read(foam.Text());
            if (i == 0 ? start != 0 : start < previous) foam.Text().Fail(kMustRise);
            previous = start;
            if (i <= slab_.faces.nItems()) send(block.RankOf(i++), start);
          });
          if (i == 0) foam.Text().Fail(kMustRise);
        },
        [&](std::int64_t start) { block.Add(start); });
    block.Complete();
    std::vector<std::int64_t> const ends = block.EndsOfAll();
    std::int64_t const nNodes = file.OnRank0([&](FoamFile& foam) {
      return LengthOfList(foam.Text(), whatNodes, [&] { PointRange().Read(foam.Text()); });
    });
    file.Stream<std::int64_t>(
        [&](FoamFile& foam, auto const& send) {
          std::int64_t i = 0;
          std::size_t rank = 0;
          ReadFoamList(foam.Text(), whatNodes, [&] {
            std::int64_t const node = PointRange().Read(foam.Text());
            while (rank < ends.size() && i >= ends[rank]) ++rank;
            if (rank < ends.size()) send(static_cast<int>(rank), node);
            ++i;
          });
        },
        [&](std::int64_t node) { slab_.faceNode.push_back(node); });
    CheckEnd(file, block, nNodes);
  }

  /// The starts of the own faces in a list of the nodes of all faces, and the start of the next rank's.
  class StartBlock {
   public:
    explicit StartBlock(PolyMeshSlabReader& reader)
        : reader_(reader), faces_(reader.slab_.faces), isLast_(reader.rank_ == faces_.nBlocks() - 1) {
      reader.slab_.faceStart.clear();
    }

    /// The own starts; the last rank has the end of the last face, too.
    std::int64_t First() const { return faces_.First(reader_.rank_); }
    std::int64_t End() const { return faces_.End(reader_.rank_) + (isLast_ ? 1 : 0); }
    int RankOf(std::int64_t i) const {
      return i == faces_.nItems() ? faces_.nBlocks() - 1 : faces_.BlockOf(i);
    }

    void Add(std::int64_t start) {
      if (nAdded_++ == 0) first_ = start;
      last_ = start;
      reader_.slab_.faceStart.push_back(static_cast<std::size_t>(start - first_));
    }

    /// Collective. Adds the end of the last own face.
    void Complete() {
      constexpr std::int64_t kNone = -1;
      std::int64_t const own[2] = {nAdded_ > 0 ? first_ : kNone, last_};
      std::vector<std::int64_t> all(2 * static_cast<std::size_t>(faces_.nBlocks()));
      MPI_Allgather(own, 2, MPI_INT64_T, all.data(), 2, MPI_INT64_T, reader_.communicator_.get());
      endOfAll_ = all.back();
      end_ = endOfAll_;
      for (std::size_t r = static_cast<std::size_t>(faces_.nBlocks()) - 1;
           r > static_cast<std::size_t>(reader_.rank_); --r) {
        if (all[2 * r] != kNone) end_ = all[2 * r];
      }
      if (nAdded_ == 0) first_ = end_;
      if (!isLast_) reader_.slab_.faceStart.push_back(static_cast<std::size_t>(end_ - first_));
    }

    /// Whether the next rank goes on where this one ends.
    bool Rises() const { return nAdded_ == 0 || last_ <= end_; }

    /// Collective. By rank: the end of its nodes in the list.
    std::vector<std::int64_t> EndsOfAll() const {
      std::vector<std::int64_t> ends(static_cast<std::size_t>(faces_.nBlocks()));
      MPI_Allgather(&end_, 1, MPI_INT64_T, ends.data(), 1, MPI_INT64_T, reader_.communicator_.get());
      return ends;
    }

    std::int64_t EndOfAll() const { return endOfAll_; }

    /// The own nodes in a list of n nodes. What is beyond the last face belongs to the last rank.
    std::int64_t FirstNode(std::int64_t n) const { return std::min(first_, n); }
    std::int64_t EndNode(std::int64_t n) const { return isLast_ ? n : std::min(end_, n); }

   private:
    PolyMeshSlabReader& reader_;
    BlockRanges const& faces_;
    bool isLast_;
    std::size_t nAdded_ = 0;
    std::int64_t first_ = 0, last_ = 0, end_ = 0, endOfAll_ = 0;
  };

  void CheckEnd(FoamSlabFile& file, StartBlock const& block, std::int64_t nNodes) const {
    file.OnRank0([&](FoamFile& foam) {
      if (block.EndOfAll() != nNodes) {
        foam.Text().Fail("the last face ends at " + std::to_string(block.EndOfAll()) + " of " +
                         std::to_string(nNodes) + " nodes");
      }
      return true;
    });
  }

  // Cells.

  /// How a list of cell numbers is written.
  struct CellList {
    FoamListPlace place;
    std::int64_t count = 0;
    bool isBinary = false;
    bool isSame = false;  ///< "N{same}"
    std::int64_t same = 0;
  };

  void ReadCells() {
    slab_.owner = ReadCellNumbers("owner", [this](FoamFile& foam, std::int64_t n) {
      if (n != slab_.faces.nItems()) {
        foam.Text().Fail(std::to_string(n) + " owners of " + std::to_string(slab_.faces.nItems()) + " faces");
      }
    });
    slab_.neighbour = ReadCellNumbers("neighbour", [](FoamFile&, std::int64_t) {});
    CountCells();
    slab_.neighbour.resize(slab_.owner.size(), -1);
  }

  /// The number of faces is the most that a list may have. @param[in] check  check(file, length) on rank 0, at the end
  template <class Check>
  std::vector<std::int64_t> ReadCellNumbers(char const* name, Check const& check) {
    constexpr char const* kWhat = "cell number";
    FoamSlabFile file = Open(name);
    std::int64_t const nFaces = slab_.faces.nItems();
    // A number beyond this is not a cell, however many cells the faces close.
    FoamRange const range = {"cell", 0, std::max<std::int64_t>(std::numeric_limits<int>::max(), nFaces)};
    CellList const list = file.OnRank0([&](FoamFile& foam) {
      TextCursor& text = foam.Text();
      CellList found;
      found.count = ReadFoamLength(text, kWhat, nFaces);
      if (foam.Format().isBinary && text.Peek() != '{') {
        found.isBinary = true;
        found.place = FoamSlabFile::SkipList(foam, found.count, foam.Format().labelBytes);
      } else if (text.Accept('{')) {
        found.isSame = true;
        found.same = range.Read(text);
        text.Expect('}');
      }
      return found;
    });
    nNumbersRead_ += list.count;
    std::int64_t const first = std::min(slab_.faces.First(rank_), list.count);
    std::int64_t const end = std::min(slab_.faces.End(rank_), list.count);
    std::vector<std::int64_t> cells;
    RunTogether(communicator_, [&] {
      cells.reserve(static_cast<std::size_t>(slab_.faces.Size(rank_)));
      if (list.isSame) cells.assign(static_cast<std::size_t>(end - first), list.same);
    });
    if (list.isBinary) {
      file.ReadOwn<std::int64_t>(list.place, first, end, [&](std::int64_t cell, std::int64_t i) {
        cells.push_back(
            range.Checked(cell, [&](std::string const& fault) { file.FailAt(list.place, i, fault); }));
      });
    } else if (!list.isSame) {
      file.Stream<std::int64_t>(
          [&](FoamFile& foam, auto const& send) {
            std::int64_t i = 0;
            ReadTextLabels(foam.Text(), list.count, kWhat, range, [&](std::int64_t cell) {
              if (i < list.count) send(slab_.faces.BlockOf(i++), cell);
            });
          },
          [&](std::int64_t cell) { cells.push_back(cell); });
    }
    file.OnRank0([&](FoamFile& foam) {
      check(foam, list.count);
      return true;
    });
    nInner_ = list.count;
    return cells;
  }

  void CountCells() {
    std::int64_t most = -1;
    for (auto const* cells : {&slab_.owner, &slab_.neighbour})
      for (std::int64_t const cell : *cells) most = std::max(most, cell);
    std::int64_t const nCells = MostOfAll(most) + 1;
    // A cell has at least four faces.
    if (4 * nCells > nNumbersRead_) {
      throw MeshError(folder_ + ": owner and neighbour name cell " + std::to_string(nCells - 1) + ", but " +
                      std::to_string(slab_.faces.nItems()) + " faces cannot close that many cells");
    }
    slab_.cells = Even(nCells);
  }

  // Patches.

  void ReadPatches() {
    std::int64_t const first = slab_.faces.First(rank_), end = slab_.faces.End(rank_);
    RunTogether(communicator_, [&] {
      PolyMeshPatches read = ReadPolyMeshPatches(folder_, nInner_, slab_.faces.nItems());
      slab_.facePatch.assign(slab_.owner.size(), -1);
      for (std::size_t p = 0; p < read.patches.size(); ++p) {
        PatchFaces const& faces = read.facesOfPatch[p];
        for (std::int64_t f = std::max(first, faces.first); f < std::min(end, faces.first + faces.count); ++f)
          slab_.facePatch[static_cast<std::size_t>(f - first)] = static_cast<int>(p);
      }
      for (CyclicFaces const& cyclic : read.periods) {
        SlabPeriod& period = slab_.periods.emplace_back();
        period.description = cyclic.period;
        for (std::int64_t f = std::max(first, cyclic.firstFace);
             f < std::min(end, cyclic.firstFace + cyclic.count); ++f)
          period.faces.push_back({f, cyclic.firstPartner + (f - cyclic.firstFace)});
      }
      slab_.patches = std::move(read.patches);
    });
  }

  MpiCommunicator const& communicator_;
  int rank_;
  std::string const& folder_;
  MeshSlab slab_;
  std::int64_t nInner_ = 0;        ///< faces between cells
  std::int64_t nNumbersRead_ = 0;  ///< of cells, over all ranks
};

}  // namespace

MeshSlab ReadPolyMeshSlab(MpiCommunicator const& communicator, std::string const& folder) {
  return PolyMeshSlabReader(communicator, folder).Read();
}

PolyMeshBoundary GatherBoundary(MpiCommunicator const& communicator, MeshSlab const& slab) {
  struct BoundaryFace {
    std::int64_t owner;
    int patch;
  };
  std::size_t const n = slab.nOwnFaces();
  RankLists<BoundaryFace> const faces = SwapLists(
      communicator, ListsByRank<BoundaryFace>(
                        communicator.size(), n, [&](std::size_t f) { return slab.facePatch[f] < 0 ? -1 : 0; },
                        [&](std::size_t f) {
                          return BoundaryFace{slab.owner[f], slab.facePatch[f]};
                        }));
  PolyMeshBoundary boundary;
  boundary.patches = slab.patches;
  boundary.facesOfPatch.resize(slab.patches.size());
  for (BoundaryFace const& face : faces.items)
    ++boundary.facesOfPatch[static_cast<std::size_t>(face.patch)].count;
  std::vector<std::int64_t> next;
  std::int64_t nFaces = 0;
  for (PatchFaces& patch : boundary.facesOfPatch) {
    next.push_back(patch.first = nFaces);
    nFaces += patch.count;
  }
  boundary.owner.resize(static_cast<std::size_t>(nFaces));
  for (BoundaryFace const& face : faces.items)
    boundary.owner[static_cast<std::size_t>(next[static_cast<std::size_t>(face.patch)]++)] = face.owner;
  return boundary;
}

}  // namespace reference_host
