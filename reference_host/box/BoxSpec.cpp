#include "reference_host/box/BoxSpec.h"

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <sstream>
#include <string>
#include <system_error>
#include <vector>

#include "reference_host/mesh/MeshError.h"

namespace reference_host {
namespace {

std::string const kPrefix = "box:";

constexpr double kMostStretch = 1e6;

std::vector<std::string> Split(std::string const& text, char separator) {
  std::vector<std::string> pieces;
  std::size_t begin = 0;
  for (std::size_t end; (end = text.find(separator, begin)) != std::string::npos; begin = end + 1) {
    pieces.push_back(text.substr(begin, end - begin));
  }
  pieces.push_back(text.substr(begin));
  return pieces;
}

/// Parses one text and keeps it for the messages.
class SpecParser {
 public:
  explicit SpecParser(std::string const& text) : text_(text) {}

  BoxSpec Parse() {
    if (!IsBoxSpec(text_))
      Fail(
          "a box is given as box:NX,NY,NZ[:hex|tet|prism|dual]"
          "[:perturb=A,seed=S,stretch=F,skew=W]");
    std::vector<std::string> const pieces = Split(text_.substr(kPrefix.size()), ':');
    ReadCounts(pieces[0]);
    std::size_t next = 1;
    if (next < pieces.size() && pieces[next].find('=') == std::string::npos) ReadShape(pieces[next++]);
    if (next < pieces.size()) ReadOptions(pieces[next++]);
    if (next < pieces.size()) Fail("\"" + pieces[next] + "\" is one piece too many");
    CheckBoxSpec(spec_, text_);
    return spec_;
  }

 private:
  [[noreturn]] void Fail(std::string const& what) const { throw MeshError(text_ + ": " + what); }

  /// The number must fill the whole piece. It uses from_chars, which does not depend on the locale.
  template <class Number>
  Number Read(std::string const& piece, std::string const& what) const {
    Number number{};
    char const* end = piece.data() + piece.size();
    auto const [stop, error] = std::from_chars(piece.data(), end, number);
    if (error == std::errc::result_out_of_range) Fail(what + " \"" + piece + "\" is too large");
    if (error != std::errc() || stop != end) Fail(what + " \"" + piece + "\" is not a valid number");
    return number;
  }

  void ReadCounts(std::string const& piece) {
    std::vector<std::string> const counts = Split(piece, ',');
    if (counts.size() != 3) Fail("three cell counts NX,NY,NZ are needed, found \"" + piece + "\"");
    spec_.nx = Read<int>(counts[0], "cell count");
    spec_.ny = Read<int>(counts[1], "cell count");
    spec_.nz = Read<int>(counts[2], "cell count");
  }

  void ReadShape(std::string const& piece) {
    if (piece == "hex") {
      spec_.shape = BoxSpec::Shape::Hex;
    } else if (piece == "tet") {
      spec_.shape = BoxSpec::Shape::Tet;
    } else if (piece == "prism") {
      spec_.shape = BoxSpec::Shape::Prism;
    } else if (piece == "dual") {
      spec_.shape = BoxSpec::Shape::Dual;
    } else {
      Fail("cells are hex, tet, prism or dual, not \"" + piece + "\"");
    }
  }

  void ReadOptions(std::string const& piece) {
    for (std::string const& option : Split(piece, ',')) {
      std::size_t const equals = option.find('=');
      std::string const name = option.substr(0, equals);
      std::string const value = equals == std::string::npos ? "" : option.substr(equals + 1);
      if (name == "perturb") {
        spec_.perturb = Read<double>(value, name);
      } else if (name == "seed") {
        spec_.seed = Read<std::uint64_t>(value, name);
      } else if (name == "stretch") {
        spec_.stretch = Read<double>(value, name);
      } else if (name == "skew") {
        spec_.skew = Read<double>(value, name);
      } else {
        Fail("unknown option \"" + option + "\", there are perturb=A, seed=S, stretch=F and skew=W");
      }
    }
  }

  std::string const text_;
  BoxSpec spec_;
};

// Counts in double: the product of three 32-bit numbers overflows every integer type.
void CheckCounts(BoxSpec const& spec, std::string const& name) {
  // There is one node more than cells, and the number after the last must fit, too.
  constexpr int kMost = std::numeric_limits<int>::max() - 2;
  for (int const n : {spec.nx, spec.ny, spec.nz}) {
    if (n < 1) throw MeshError(name + ": cell counts must be 1 or more, not " + std::to_string(n));
    if (n > kMost) {
      throw MeshError(name + ": cell counts must be " + std::to_string(kMost) + " or less, not " +
                      std::to_string(n));
    }
  }
  // No shape has more than 48 of anything at a node of the grid; nodes of faces are the most.
  constexpr double kMostAtNode = 48.0;
  double const nNodes = (spec.nx + 1.0) * (spec.ny + 1.0) * (spec.nz + 1.0);
  if (kMostAtNode * nNodes > 0x1p62)
    throw MeshError(name + ": the box has more cells, faces or nodes than a 64-bit number can count");
}

}  // namespace

bool IsBoxSpec(std::string const& text) { return text.compare(0, kPrefix.size(), kPrefix) == 0; }

BoxSpec ParseBoxSpec(std::string const& text) { return SpecParser(text).Parse(); }

std::string BoxText(BoxSpec const& spec) {
  return kPrefix + std::to_string(spec.nx) + "," + std::to_string(spec.ny) + "," + std::to_string(spec.nz);
}

void CheckBoxSpec(BoxSpec const& spec, std::string const& name) {
  CheckCounts(spec, name);
  auto const fail = [&name](std::string const& what, double value) {
    std::ostringstream text;
    text << name << ": " << what << ", not " << value;
    throw MeshError(text.str());
  };
  if (!(spec.perturb >= 0.0 && spec.perturb < 0.5))
    fail("perturb must be at least 0 and less than 0.5", spec.perturb);
  if (!(spec.stretch >= 1.0 && spec.stretch <= kMostStretch))
    fail("stretch must be at least 1 and at most 1e+06", spec.stretch);
  if (!(spec.skew >= 0.0 && spec.skew < 0.3)) fail("skew must be at least 0 and less than 0.3", spec.skew);
}

}  // namespace reference_host
