#include "reference_host/parallel/MpiAgreement.h"

#include <exception>
#include <new>
#include <string>

#include "reference_host/mesh/MeshError.h"

namespace reference_host {
namespace {

/// The text of the exception that the work threw; empty if it threw none.
std::string TextOfFailure(std::function<void()> const& work, int rank) {
  try {
    work();
  } catch (std::bad_alloc const&) {
    return "not enough memory on rank " + std::to_string(rank);
  } catch (std::exception const& error) {
    std::string const text = error.what();
    return text.empty() ? "unknown failure" : text;
  }
  return "";
}

void BroadcastText(MpiCommunicator const& communicator, int from, std::string& text) {
  int length = static_cast<int>(text.size());
  MPI_Bcast(&length, 1, MPI_INT, from, communicator.get());
  text.resize(static_cast<std::size_t>(length));
  MPI_Bcast(text.data(), length, MPI_CHAR, from, communicator.get());
}

}  // namespace

void RunTogether(MpiCommunicator const& communicator, std::function<void()> const& work) {
  std::string failure = TextOfFailure(work, communicator.rank());
  int firstFailed = failure.empty() ? communicator.size() : communicator.rank();
  MPI_Allreduce(MPI_IN_PLACE, &firstFailed, 1, MPI_INT, MPI_MIN, communicator.get());
  if (firstFailed == communicator.size()) return;
  BroadcastText(communicator, firstFailed, failure);
  throw MeshError(failure);
}

}  // namespace reference_host
