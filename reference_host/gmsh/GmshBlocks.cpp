#include "reference_host/gmsh/GmshBlocks.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <fstream>
#include <string_view>
#include <system_error>

#include "reference_host/gmsh/GmshContentReader.h"
#include "reference_host/gmsh/GmshCursor.h"
#include "reference_host/mesh/MeshError.h"
#include "reference_host/mesh/MeshFile.h"

namespace reference_host {
namespace {

/// Read at a time: blocks are far from each other, and what is between their headers is not read.
constexpr std::size_t kPiece = 16384;

GmshBlocks::Kind KindOf(GmshElementType const& type) {
  if (type.dimension == 3) return GmshBlocks::kVolumes;
  return type.dimension == 2 ? GmshBlocks::kSurfaces : GmshBlocks::kOthers;
}

}  // namespace

void GmshBlocks::AddNodes(std::int64_t n, int nParameters, std::size_t firstByte) {
  if (n > 0) nodes.push_back({nNodes(), n, static_cast<std::int64_t>(firstByte), nParameters});
}

void GmshBlocks::AddElements4(GmshElementType const& type, std::int64_t n, std::int64_t physical,
                              std::size_t firstByte) {
  if (n == 0) return;
  Kind const kind = KindOf(type);
  elements[kind].push_back(
      {nElements(kind), n, static_cast<std::int64_t>(firstByte), physical, n, type.number, 0});
}

void GmshBlocks::AddElements2(GmshElementType const& type, std::int64_t n, int nTags, std::size_t firstByte) {
  Kind const kind = KindOf(type);
  if (!elements[kind].empty()) {
    GmshElementBlock& last = elements[kind].back();
    auto const bytes = static_cast<std::int64_t>(ElementBytes2(type, nTags));
    std::int64_t const end =
        last.firstByte + last.n * bytes + last.n / last.nTogether * static_cast<std::int64_t>(kHeaderBytes2);
    if (last.typeNumber == type.number && last.nTags == nTags && last.nTogether == n &&
        static_cast<std::int64_t>(firstByte) == end) {
      last.n += n;
      return;
    }
  }
  elements[kind].push_back(
      {nElements(kind), n, static_cast<std::int64_t>(firstByte), 0, n, type.number, nTags});
}

bool IsBinaryGmsh(std::string const& file) {
  std::error_code error;
  if (!std::filesystem::is_regular_file(file, error)) return false;  // opening a pipe could wait forever
  std::ifstream stream(file, std::ios::binary);
  std::array<char, 64> bytes{};
  stream.read(bytes.data(), bytes.size());
  std::string_view rest(bytes.data(), static_cast<std::size_t>(stream.gcount()));
  auto const word = [&rest] {
    constexpr std::string_view kBlanks = " \t\r\n\v\f";
    rest.remove_prefix(std::min(rest.find_first_not_of(kBlanks), rest.size()));
    std::string_view const taken = rest.substr(0, rest.find_first_of(kBlanks));
    rest.remove_prefix(taken.size());
    return taken;
  };
  if (word() != "$MeshFormat") return false;
  std::string_view const number = word();
  return (number == "4.1" || number == "2.2") && word() == "1";
}

GmshContent IndexGmsh(std::string const& file, GmshBlocks& blocks) {
  blocks = {};
  GmshContent content;
  try {
    MeshFile mesh(file, OpenPlainFile(file), kPiece);
    GmshCursor cursor(mesh);
    ReadGmshContent(cursor, content, &blocks);
  } catch (MeshError const& error) {
    blocks.failure = error.what();
  }
  return content;
}

}  // namespace reference_host
