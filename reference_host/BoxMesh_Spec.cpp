#include <algorithm>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <sstream>
#include <string>
#include <system_error>
#include <vector>

#include "reference_host/BoxMesh.h"
#include "reference_host/BoxShapes.h"
#include "reference_host/MeshError.h"

namespace reference_host {
namespace {

const std::string kPrefix = "box:";

constexpr double kMostStretch = 1e6;

std::vector<std::string> Split(const std::string& text, char separator) {
  std::vector<std::string> pieces;
  std::size_t begin = 0;
  for (std::size_t end; (end = text.find(separator, begin)) != std::string::npos; begin = end + 1) {
    pieces.push_back(text.substr(begin, end - begin));
  }
  pieces.push_back(text.substr(begin));
  return pieces;
}

/// Reads one text and keeps it for the messages.
class SpecParser {
 public:
  explicit SpecParser(const std::string& text) : text_(text) {}

  BoxSpec Parse() {
    if (!IsBoxSpec(text_))
      Fail(
          "a box is given as box:NX,NY,NZ[:hex|tet|prism|dual]"
          "[:perturb=A,seed=S,stretch=F,skew=W]");
    const std::vector<std::string> pieces = Split(text_.substr(kPrefix.size()), ':');
    ReadCounts(pieces[0]);
    std::size_t next = 1;
    if (next < pieces.size() && pieces[next].find('=') == std::string::npos) ReadShape(pieces[next++]);
    if (next < pieces.size()) ReadOptions(pieces[next++]);
    if (next < pieces.size()) Fail("\"" + pieces[next] + "\" is one piece too many");
    CheckBoxSpec(spec_, text_);
    return spec_;
  }

 private:
  [[noreturn]] void Fail(const std::string& what) const { throw MeshError(text_ + ": " + what); }

  /// The whole piece must be the number. from_chars, since the locale must not change what a text means.
  template <class Number>
  Number Read(const std::string& piece, const std::string& what) const {
    Number number{};
    const char* end = piece.data() + piece.size();
    const auto [stop, error] = std::from_chars(piece.data(), end, number);
    if (error == std::errc::result_out_of_range) Fail(what + " \"" + piece + "\" is too large");
    if (error != std::errc() || stop != end)
      Fail(what + " \"" + piece + "\" is not a number of the right kind");
    return number;
  }

  void ReadCounts(const std::string& piece) {
    const std::vector<std::string> counts = Split(piece, ',');
    if (counts.size() != 3) Fail("three cell counts NX,NY,NZ are needed, found \"" + piece + "\"");
    spec_.nx = Read<int>(counts[0], "cell count");
    spec_.ny = Read<int>(counts[1], "cell count");
    spec_.nz = Read<int>(counts[2], "cell count");
  }

  void ReadShape(const std::string& piece) {
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

  void ReadOptions(const std::string& piece) {
    for (const std::string& option : Split(piece, ',')) {
      const std::size_t equals = option.find('=');
      const std::string name = option.substr(0, equals);
      const std::string value = equals == std::string::npos ? "" : option.substr(equals + 1);
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

  const std::string text_;
  BoxSpec spec_;
};

// Counts in double: the product of three 32-bit numbers overflows every integer type, and up to the limit of
// 2^31 double is exact.
void CheckCounts(const BoxSpec& spec, const std::string& name) {
  for (const int n : {spec.nx, spec.ny, spec.nz}) {
    if (n < 1) throw MeshError(name + ": cell counts must be 1 or more, not " + std::to_string(n));
  }
  const double nx = spec.nx, ny = spec.ny, nz = spec.nz;
  const bool isDual = spec.shape == BoxSpec::Shape::Dual;  // its mesh of tetrahedra has more of everything
  const ShapeInCube& shape = ShapeTable(isDual ? BoxSpec::Shape::Tet : spec.shape);
  const double nCubes = nx * ny * nz;
  const double nNodes = (nx + 1) * (ny + 1) * (nz + 1);
  const double nFaces = nCubes * shape.nInnerFaces() + (nx + 1) * ny * nz * shape.nFacesOnSide(0) +
                        nx * (ny + 1) * nz * shape.nFacesOnSide(2) +
                        nx * ny * (nz + 1) * shape.nFacesOnSide(4);
  if (std::max({nCubes * shape.nCells(), nNodes, nFaces}) > std::numeric_limits<int>::max()) {
    throw MeshError(name + ": the box has more cells, faces or nodes than a 32-bit number can count");
  }
}

}  // namespace

bool IsBoxSpec(const std::string& text) { return text.compare(0, kPrefix.size(), kPrefix) == 0; }

BoxSpec ParseBoxSpec(const std::string& text) { return SpecParser(text).Parse(); }

void CheckBoxSpec(const BoxSpec& spec, const std::string& name) {
  CheckCounts(spec, name);
  const auto fail = [&name](const std::string& what, double value) {
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
