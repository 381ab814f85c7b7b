#include "reference_host/openfoam/FoamFieldSource.h"

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <filesystem>
#include <regex>
#include <sstream>
#include <system_error>

#include "reference_host/mesh/MeshError.h"
#include "reference_host/openfoam/GzipFile.h"

namespace reference_host {
namespace {

/// Header and dimensions come first; a licence in a comment may stand before them.
constexpr std::size_t kBeginning = std::size_t{1} << 15;

std::string BeginningOf(std::string const& file) {
  return std::string(GzipFile(file).Read(kBeginning).View());
}

std::string WithoutComments(std::string const& text) {
  std::string result;
  for (std::size_t i = 0; i < text.size();) {
    if (text.compare(i, 2, "//") == 0) {
      i = std::min(text.find('\n', i), text.size());
    } else if (text.compare(i, 2, "/*") == 0) {
      std::size_t const end = text.find("*/", i + 2);
      i = end == std::string::npos ? text.size() : end + 2;
    } else {
      result += text[i++];
    }
  }
  return result;
}

/// The value of an entry "key value;" or "key "value";"; empty if there is none.
std::string EntryOf(std::string const& header, std::string const& key) {
  std::smatch found;
  std::regex const entry("[{;\\s]" + key + "\\s+(\"[^\"]*\"|[^;\\s]+)\\s*;");
  return std::regex_search(header, found, entry) ? found[1].str() : std::string();
}

/// The header, which the text then no longer has.
std::string TakeHeader(std::string& text, std::string const& file) {
  std::size_t const end = text.find('}');
  if (text.find("FoamFile") >= end)
    throw MeshError(file + ": not an OpenFOAM file: it does not begin with FoamFile");
  std::string header = text.substr(0, end);
  text.erase(0, end + 1);
  return header;
}

/// Of "LSB;label=32;scalar=64", in bytes.
int WidthIn(std::string const& arch, std::string const& key, int otherwise) {
  std::size_t const place = arch.find(key + '=');
  if (place == std::string::npos) return otherwise;
  int const bits = std::atoi(arch.c_str() + place + key.size() + 1);
  return bits == 32 || bits == 64 ? bits / 8 : otherwise;
}

std::array<double, 7> DimensionsIn(std::string const& text, std::string const& file) {
  std::size_t const key = text.find("dimensions");
  std::size_t const open = text.find('[', key == std::string::npos ? text.size() : key);
  std::size_t const close = text.find(']', open == std::string::npos ? text.size() : open);
  std::array<double, 7> dimensions = {};
  std::size_t n = 0;
  if (close != std::string::npos) {
    std::istringstream in(text.substr(open + 1, close - open - 1));
    for (double exponent = 0.0; n < 8 && in >> exponent; ++n)
      if (n < 7) dimensions[n] = exponent;
    if (!in.eof()) n = 0;
  }
  if (n != 5 && n != 7) throw MeshError(file + ": no dimensions as in [0 1 -1 0 0 0 0]");
  return dimensions;
}

}  // namespace

FoamFieldSource DescribeFoamField(std::string const& file) {
  std::error_code ignored;
  bool const isThere = std::filesystem::exists(file, ignored);
  std::string const path = !isThere && std::filesystem::exists(file + ".gz", ignored) ? file + ".gz" : file;
  std::string text = WithoutComments(BeginningOf(path));
  std::string header = TakeHeader(text, path);
  if (EntryOf(header, "class") == "decomposedBlockData") header = TakeHeader(text, path);
  FoamFieldSource source;
  source.format.isCompressed = std::filesystem::path(path).extension() == ".gz";
  source.format.isBinary = EntryOf(header, "format") == "binary";
  std::string const arch = EntryOf(header, "arch");
  source.format.labelBytes = WidthIn(arch, "label", 4);
  source.format.scalarBytes = WidthIn(arch, "scalar", 8);
  source.dimensions = DimensionsIn(text, path);
  return source;
}

}  // namespace reference_host
