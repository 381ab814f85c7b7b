#include "reference_host/slabs/PartitionFile.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <exception>
#include <optional>
#include <utility>

#include "reference_host/mesh/MeshError.h"
#include "reference_host/mesh/MeshFile.h"
#include "reference_host/mesh/TextCursor.h"
#include "reference_host/parallel/MpiAgreement.h"
#include "reference_host/parallel/MpiBytes.h"

namespace reference_host {
namespace {

/// Parts that travel at a time.
constexpr std::int64_t kPartsOfPiece = std::int64_t{1} << 20;

/// Calls action(first, n) for pieces of n items, with the numbers first.. of them.
template <class Action>
void ForEachPieceOf(std::int64_t nItems, Action const& action) {
  for (std::int64_t first = 0; first < nItems; first += kPartsOfPiece) {
    action(static_cast<std::size_t>(first),
           static_cast<std::size_t>(std::min(kPartsOfPiece, nItems - first)));
  }
}

/// Work in steps, of which none is done after one that failed, while the communication goes on.
class FirstFailure {
 public:
  template <class Work>
  void Attempt(Work const& work) {
    try {
      if (!failure_) work();
    } catch (...) {
      failure_ = std::current_exception();
    }
  }

  bool HasHappened() const { return failure_ != nullptr; }
  void Rethrow() const {
    if (failure_) std::rethrow_exception(failure_);
  }

 private:
  std::exception_ptr failure_;
};

/// The numbers of a partition file from its beginning to its end.
class PartitionText {
 public:
  PartitionText(std::string const& file, std::int64_t nCells, int nParts)
      : file_(file, OpenPlainFile(file)),
        cursor_(file_, TextCursor::Comments::None),
        nCells_(nCells),
        nParts_(nParts) {}

  /// The parts of the next n cells.
  void Read(int* parts, std::size_t n) {
    for (std::size_t i = 0; i < n; ++i, ++nRead_) {
      if (cursor_.AtEnd()) {
        throw MeshError(file_.Name() + ": " + std::to_string(nRead_) + " parts for the " +
                        std::to_string(nCells_) + " cells of the mesh");
      }
      std::int64_t const part = cursor_.Integer("a part number");
      if (part < 0 || part >= nParts_) {
        cursor_.Fail("part " + std::to_string(part) + " is none of the parts 0 to " +
                     std::to_string(nParts_ - 1) + ", one for each rank");
      }
      parts[i] = static_cast<int>(part);
    }
  }

  void RequireEnd() {
    if (cursor_.AtEnd()) return;
    cursor_.FailAt(cursor_.Position(),
                   "more parts than the " + std::to_string(nCells_) + " cells of the mesh");
  }

 private:
  MeshFile file_;
  TextCursor cursor_;
  std::int64_t nCells_, nRead_ = 0;
  int nParts_;
};

/// Rank 0: reads all parts, sends those of the other ranks, and returns its own. After a failure, the ranks that still
/// wait get nothing.
std::vector<int> SendPartition(MpiCommunicator const& communicator, std::string const& file,
                               BlockRanges const& cells, int nParts) {
  std::optional<PartitionText> text;
  FirstFailure failure;
  std::vector<int> own;
  failure.Attempt([&] {
    text.emplace(file, cells.nItems(), nParts);
    own.resize(static_cast<std::size_t>(cells.Size(0)));
    text->Read(own.data(), own.size());
  });
  std::vector<int> parts;
  std::vector<char> bytes;
  for (int rank = 1; rank < communicator.size(); ++rank) {
    bool isWaiting = true;
    ForEachPieceOf(cells.Size(rank), [&](std::size_t, std::size_t n) {
      if (!isWaiting) return;
      failure.Attempt([&] {
        parts.resize(n);
        text->Read(parts.data(), n);
        bytes.resize(n * sizeof(int));
        std::memcpy(bytes.data(), parts.data(), bytes.size());
      });
      isWaiting = !failure.HasHappened();
      if (isWaiting) {
        SendBytes(communicator, rank, bytes);
      } else {
        SendNothing(communicator, rank);
      }
    });
  }
  failure.Attempt([&] { text->RequireEnd(); });
  failure.Rethrow();
  return own;
}

/// The other ranks: their parts, or some of them after a failure of rank 0.
std::vector<int> ReceivePartition(MpiCommunicator const& communicator, std::int64_t nOwn) {
  std::vector<int> own(static_cast<std::size_t>(nOwn));
  bool hasFailed = false;
  ForEachPieceOf(nOwn, [&](std::size_t first, std::size_t n) {
    if (hasFailed) return;
    std::optional<std::vector<char>> const bytes = ReceiveBytes(communicator, 0);
    hasFailed = !bytes.has_value();
    if (!hasFailed) std::memcpy(own.data() + first, bytes->data(), n * sizeof(int));
  });
  return own;
}

/// A new partition file. It is removed unless it was closed.
class NewPartitionFile {
 public:
  explicit NewPartitionFile(std::string const& name) : name_(name), file_(std::fopen(name.c_str(), "wx")) {
    if (file_ == nullptr)
      Fail(errno == EEXIST ? "exists already, and is not replaced" : std::strerror(errno));
  }
  ~NewPartitionFile() {
    if (file_ == nullptr) return;
    std::fclose(file_);
    std::remove(name_.c_str());
  }
  NewPartitionFile(NewPartitionFile const&) = delete;
  NewPartitionFile& operator=(NewPartitionFile const&) = delete;

  void Write(int const* parts, std::size_t n) {
    constexpr std::size_t kLongest = 12;  // digits, a sign, the end of the line
    text_.resize(n * kLongest);
    char* at = text_.data();
    for (std::size_t i = 0; i < n; ++i) {
      at = std::to_chars(at, at + kLongest - 1, parts[i]).ptr;
      *at++ = '\n';
    }
    auto const size = static_cast<std::size_t>(at - text_.data());
    if (std::fwrite(text_.data(), 1, size, file_) != size) Fail(std::strerror(errno));
  }

  void Close() {
    if (std::fclose(std::exchange(file_, nullptr)) == 0) return;
    int const reason = errno;  // what was in the buffer did not reach the disk
    std::remove(name_.c_str());
    Fail(std::strerror(reason));
  }

 private:
  [[noreturn]] void Fail(std::string const& reason) const { throw MeshError(name_ + ": " + reason); }

  std::string name_, text_;
  std::FILE* file_;
};

/// Rank 0. After a failure, it takes what the other ranks send, and drops it.
void WriteAll(MpiCommunicator const& communicator, std::string const& file, BlockRanges const& cells,
              std::vector<int> const& own) {
  std::optional<NewPartitionFile> text;
  FirstFailure failure;
  failure.Attempt([&] {
    text.emplace(file);
    ForEachPieceOf(cells.Size(0),
                   [&](std::size_t first, std::size_t n) { text->Write(own.data() + first, n); });
  });
  std::vector<int> parts(static_cast<std::size_t>(kPartsOfPiece));
  for (int rank = 1; rank < communicator.size(); ++rank) {
    ForEachPieceOf(cells.Size(rank), [&](std::size_t, std::size_t n) {
      MPI_Recv(parts.data(), static_cast<int>(n), MPI_INT, rank, 0, communicator.get(), MPI_STATUS_IGNORE);
      failure.Attempt([&] { text->Write(parts.data(), n); });
    });
  }
  failure.Attempt([&] { text->Close(); });
  failure.Rethrow();
}

}  // namespace

std::vector<int> ReadPartition(MpiCommunicator const& communicator, std::string const& file,
                               BlockRanges const& cells, int nParts) {
  std::vector<int> own;
  RunTogether(communicator, [&] {
    own = communicator.rank() == 0 ? SendPartition(communicator, file, cells, nParts)
                                   : ReceivePartition(communicator, cells.Size(communicator.rank()));
  });
  return own;
}

std::vector<int> ReadPartition(std::string const& file, std::int64_t nCells, int nParts) {
  PartitionText text(file, nCells, nParts);
  std::vector<int> parts(static_cast<std::size_t>(nCells));
  text.Read(parts.data(), parts.size());
  text.RequireEnd();
  return parts;
}

void WritePartition(MpiCommunicator const& communicator, std::string const& file, BlockRanges const& cells,
                    std::vector<int> const& partOfOwn) {
  RunTogether(communicator, [&] {
    if (communicator.rank() == 0) {
      WriteAll(communicator, file, cells, partOfOwn);
      return;
    }
    ForEachPieceOf(cells.Size(communicator.rank()), [&](std::size_t first, std::size_t n) {
      MPI_Send(partOfOwn.data() + first, static_cast<int>(n), MPI_INT, 0, 0, communicator.get());
    });
  });
}

}  // namespace reference_host
