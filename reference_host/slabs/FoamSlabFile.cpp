#include "reference_host/slabs/FoamSlabFile.h"

#include "reference_host/parallel/MpiAgreement.h"

namespace reference_host {

FoamSlabFile::FoamSlabFile(MpiCommunicator const& communicator, std::string const& folder,
                           std::string const& name)
    : communicator_(communicator) {
  RunTogether(communicator_, [&] {
    if (communicator_.rank() != 0) return;
    file_ = std::make_unique<FoamFile>(folder, name, FoamFile::Reading::InPieces);
    name_ = file_->Name();
    facts_ = {file_->Format(), file_->IsAsOnDisk()};
  });
  BroadcastFrom0(communicator_, facts_);
  std::size_t length = name_.size();
  BroadcastFrom0(communicator_, length);
  name_.resize(length);
  MPI_Bcast(name_.data(), static_cast<int>(length), MPI_CHAR, 0, communicator_.get());
}

FoamListPlace FoamSlabFile::SkipList(FoamFile& file, std::int64_t n, int bytesOfNumber) {
  TextCursor& text = file.Text();
  FoamListPlace place;
  place.nNumbers = n;
  place.bytesOfNumber = bytesOfNumber;
  if (n == 0 && text.Peek() != '(') return place;
  place.position =
      text.SkipBytes("a binary list", static_cast<std::size_t>(n) * static_cast<std::size_t>(bytesOfNumber));
  place.byte = file.Content().ByteAt(place.position);
  place.closing = file.Content().ByteAt(text.Position() - 1);
  return place;
}

}  // namespace reference_host
