#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <type_traits>
#include <vector>

#include "reference_host/mesh/MeshError.h"
#include "reference_host/openfoam/BinaryNumbers.h"
#include "reference_host/openfoam/FoamFile.h"
#include "reference_host/parallel/MpiCommunicator.h"
#include "reference_host/slabs/RankStream.h"

namespace reference_host {

/// Where the numbers of a binary list are in a file; the same on every rank.
struct FoamListPlace {
  std::int64_t nNumbers = 0;
  std::size_t position = 0;  ///< of the first one in the content
  std::size_t byte = 0;      ///< what messages call that position
  std::size_t closing = 0;   ///< what messages call the position of the closing bracket
  int bytesOfNumber = 8;
};

/// A file of OpenFOAM of which each rank reads a share. Rank 0 has it open, in pieces, and finds the lists; then each rank
/// reads its own bytes of a binary list. If the file is text or compressed, rank 0 sends each rank its share.
class FoamSlabFile {
 public:
  /// Collective. Borrows the communicator. @throws MeshError as FoamFile
  FoamSlabFile(MpiCommunicator const& communicator, std::string const& folder, std::string const& name);

  std::string const& Name() const { return name_; }
  FoamFormat const& Format() const { return facts_.format; }

  /// Collective. Runs `work` on rank 0, with the file, and gives all ranks what it returns.
  template <class Work>
  auto OnRank0(Work const& work) {
    std::invoke_result_t<Work, FoamFile&> result{};
    RunTogether(communicator_, [&] {
      if (file_) result = work(*file_);
    });
    BroadcastFrom0(communicator_, result);
    return result;
  }

  /// Rank 0: passes over the n numbers of a binary list; if n is 0, the brackets may be absent.
  static FoamListPlace SkipList(FoamFile& file, std::int64_t n, int bytesOfNumber);

  /// Collective. Calls take(number, i) with the numbers i = begin .. end-1 of a binary list.
  /// @param[in] begin,end  of this rank; not before those of the rank before
  template <class Number, class Take>
  void ReadOwn(FoamListPlace const& place, std::int64_t begin, std::int64_t end, Take const& take);

  /// Collective. Rank 0 parses the file and sends items to their ranks; see StreamFromRank0.
  /// @param[in] make  make(file, send)
  template <class Item, class Make, class Take>
  void Stream(Make const& make, Take const& take) {
    StreamFromRank0<Item>(
        communicator_, [&](auto const& send) { make(*file_, send); }, take);
  }

  /// Throws MeshError about number i of a binary list.
  [[noreturn]] void FailAt(FoamListPlace const& place, std::int64_t i, std::string const& what) const {
    FailAtByte(place.byte + static_cast<std::size_t>(i * place.bytesOfNumber), what);
  }
  [[noreturn]] void FailAtByte(std::size_t byte, std::string const& what) const {
    throw MeshError(name_ + ": offset " + std::to_string(byte) + ": " + what);
  }

 private:
  struct Facts {
    FoamFormat format;
    bool isAsOnDisk = false;
  };

  template <class Number, class Take>
  static void ReadNumbers(MeshFile const& file, FoamListPlace const& place, std::int64_t begin,
                          std::int64_t end, Take const& take);

  MpiCommunicator const& communicator_;
  std::unique_ptr<FoamFile> file_;  ///< on rank 0
  std::string name_;
  Facts facts_;
};

// Implementation of the templates.

/// In pieces.
template <class Number, class Take>
void FoamSlabFile::ReadNumbers(MeshFile const& file, FoamListPlace const& place, std::int64_t begin,
                               std::int64_t end, Take const& take) {
  auto const size = static_cast<std::size_t>(place.bytesOfNumber);
  auto const most = static_cast<std::int64_t>(MeshFile::kPiece / size);
  std::vector<char> bytes(MeshFile::kPiece);
  while (begin < end) {
    std::int64_t const n = std::min(most, end - begin);
    file.Read(place.position + static_cast<std::size_t>(begin) * size, bytes.data(),
              static_cast<std::size_t>(n) * size);
    for (std::int64_t i = 0; i < n; ++i, ++begin) {
      Number number{};
      GetBinaryNumber(bytes.data() + static_cast<std::size_t>(i) * size, size, number);
      take(number, begin);
    }
  }
}

template <class Number, class Take>
void FoamSlabFile::ReadOwn(FoamListPlace const& place, std::int64_t begin, std::int64_t end,
                           Take const& take) {
  if (facts_.isAsOnDisk) {
    RunTogether(communicator_, [&] {
      if (begin < end) ReadNumbers<Number>(MeshFile(name_, OpenPlainFile(name_)), place, begin, end, take);
    });
    return;
  }
  std::vector<std::int64_t> ranges(2 * static_cast<std::size_t>(communicator_.size()));
  std::int64_t const own[2] = {begin, end};
  MPI_Allgather(own, 2, MPI_INT64_T, ranges.data(), 2, MPI_INT64_T, communicator_.get());
  std::int64_t next = begin;
  StreamFromRank0<Number>(
      communicator_,
      [&](auto const& send) {
        for (int rank = 0; rank < communicator_.size(); ++rank) {
          auto const r = 2 * static_cast<std::size_t>(rank);
          ReadNumbers<Number>(file_->Content(), place, ranges[r], ranges[r + 1],
                              [&](Number const number, std::int64_t) { send(rank, number); });
        }
      },
      [&](Number const number) { take(number, next++); });
}

}  // namespace reference_host
