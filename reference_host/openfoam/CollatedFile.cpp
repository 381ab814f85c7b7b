#include "reference_host/openfoam/CollatedFile.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>

#include "reference_host/mesh/MeshError.h"
#include "reference_host/mesh/MessageText.h"
#include "reference_host/mesh/TextCursor.h"
#include "reference_host/openfoam/FoamSyntax.h"

namespace reference_host {
namespace {

/// Enough for a header with its banner, and for the comment and the number before a piece.
constexpr std::size_t kHeaderWindow = 16384;
constexpr std::size_t kPieceWindow = 1024;

/// A file of which a stretch is in memory: text is read there, pieces are taken or passed over.
class PieceReader {
 public:
  explicit PieceReader(std::string const& name) : file_(name) {}

  /// Reads with readText(TextCursor&) from the next `window` bytes on.
  template <class ReadText>
  void Text(std::size_t window, ReadText const& readText) {
    Refill(window);
    std::size_t const begin = Position();
    FileContent copy = AllocateContent(file_.Name(), std::min(window, Buffered()));
    std::copy_n(buffer_.bytes.get() + used_, copy.size, copy.bytes.get());
    MeshFile stretch(file_.Name(), std::move(copy), begin);
    stretch.NamePlacesByOffset();
    TextCursor text(stretch, TextCursor::Comments::CStyle);
    readText(text);
    used_ += text.Position();
  }

  /// The next n bytes, or fewer at the end of the file.
  FileContent Take(std::size_t n) {
    std::size_t const nBuffered = std::min(n, Buffered());
    FileContent rest;
    if (n > nBuffered) rest = file_.Read(n - nBuffered);
    FileContent content = AllocateContent(file_.Name(), nBuffered + rest.size);
    std::copy_n(buffer_.bytes.get() + used_, nBuffered, content.bytes.get());
    std::copy_n(rest.bytes.get(), rest.size, content.bytes.get() + nBuffered);
    used_ += nBuffered;
    return content;
  }

  void Skip(std::size_t n) {
    std::size_t const nBuffered = std::min(n, Buffered());
    used_ += nBuffered;
    if (n > nBuffered) file_.Skip(n - nBuffered);
  }

  /// The position in the file.
  std::size_t Position() const { return file_.Position() - Buffered(); }

  /// The most bytes that can follow.
  std::size_t MostBytes() const { return file_.MostBytes() - std::min(Position(), file_.MostBytes()); }

 private:
  std::size_t Buffered() const { return buffer_.size - used_; }

  void Refill(std::size_t window) {
    if (Buffered() >= window) return;
    FileContent larger = Take(window);
    buffer_ = std::move(larger);
    used_ = 0;
  }

  GzipFile file_;
  FileContent buffer_;
  std::size_t used_ = 0;
};

// // Processor1
//
// N
// (
std::size_t ReadPieceSize(PieceReader& reader, int piece, int processor) {
  std::size_t size = 0;
  reader.Text(kPieceWindow, [&](TextCursor& text) {
    if (text.AtEnd()) {
      text.FailAt(text.Position(), "the file ends after " + std::to_string(piece) +
                                       " pieces, before that of processor " + std::to_string(processor));
    }
    std::int64_t const stated = text.Integer("the size of a processor's piece");
    if (stated < 0 || static_cast<std::size_t>(stated) > reader.MostBytes()) {
      text.Fail("the size of a processor's piece, " + std::to_string(stated) + " bytes, is not in 0 to " +
                std::to_string(reader.MostBytes()) + ", the rest of the file");
    }
    size = static_cast<std::size_t>(stated);
    text.Expect('(');
  });
  return size;
}

void ReadPieceEnd(PieceReader& reader) {
  reader.Text(kPieceWindow, [](TextCursor& text) { text.Expect(')'); });
}

}  // namespace

CollatedPiece ReadCollatedPiece(std::string const& name, int piece, int processor) {
  PieceReader reader(name);
  reader.Text(kHeaderWindow, [](TextCursor& text) {
    std::string const className = ReadFoamHeader(text).className;
    if (className == "decomposedBlockData") return;
    text.Fail("a file of class " + Quoted(className) +
              " where decomposedBlockData, the pieces of several processors, " + "is expected");
  });
  CollatedPiece result;
  for (int passed = 0; passed < piece; ++passed) {
    std::size_t size = ReadPieceSize(reader, passed, processor);
    if (passed == 0) {
      result.firstByteOfHeader = reader.Position();
      result.header = reader.Take(std::min(size, kHeaderWindow));
      size -= std::min(size, kHeaderWindow);
    }
    reader.Skip(size);
    ReadPieceEnd(reader);
  }
  std::size_t const size = ReadPieceSize(reader, piece, processor);
  result.firstByte = reader.Position();
  result.content = reader.Take(size);
  if (result.content.size < size) {
    throw MeshError(name + ": the piece of processor " + std::to_string(processor) + " has " +
                    std::to_string(size) + " bytes, but the file ends after " +
                    std::to_string(result.content.size));
  }
  ReadPieceEnd(reader);
  return result;
}

}  // namespace reference_host
