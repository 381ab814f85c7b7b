#include "cli/output/OutputFile.h"

#include <cerrno>
#include <cstring>

#include "cli/base/Interruption.h"
#include "cli/base/OutputNames.h"
#include "cli/base/UsageError.h"

namespace zyngrad {

OutputFile::OutputFile(std::string const& file) : file_(file) {
  NoInterruption const wait;  // a signal may be removing files at this moment; do not create a new one
  errno = 0;
  out_.open(file, std::ios::binary | std::ios::trunc);
  if (!out_) Fail();
}

void OutputFile::Close() {
  // If closing gives no reason of its own, the reason of an earlier failed write is the best there is.
  int const before = out_ ? 0 : errno;
  errno = 0;
  out_.close();
  if (errno == 0) errno = before;
  if (!out_) Fail();
}

void OutputFile::Fail() const {
  int const reason = errno;
  throw UsageError("cannot write " + QuotedPath(file_) + ": " +
                   (reason != 0 ? std::strerror(reason) : "it was not written completely"));
}

void WriteText(std::string const& file, std::string const& text) {
  OutputFile out(file);
  out.stream() << text;
  out.Close();
}

}  // namespace zyngrad
