#include "cli/output/OutputFile.h"

#include <cerrno>
#include <cstring>

#include "cli/base/Interruption.h"
#include "cli/base/OutputNames.h"
#include "cli/base/UsageError.h"

namespace zyngrad {

OutputFile::OutputFile(std::string const& file) : file_(file) {
  NoInterruption const wait;  // no new file where a signal is just having the old ones removed
  errno = 0;
  out_.open(file, std::ios::binary | std::ios::trunc);
  if (!out_) Fail();
}

void OutputFile::Close() {
  // The reason of a write that failed on the way is the best there is, unless closing has one itself.
  int const before = out_ ? 0 : errno;
  errno = 0;
  out_.close();
  if (errno == 0) errno = before;
  if (!out_) Fail();
}

void OutputFile::Fail() const {
  int const reason = errno;
  throw UsageError("cannot write " + QuotedPath(file_) + ": " +
                   (reason != 0 ? std::strerror(reason) : "not all of it was written"));
}

void WriteText(std::string const& file, std::string const& text) {
  OutputFile out(file);
  out.stream() << text;
  out.Close();
}

}  // namespace zyngrad
