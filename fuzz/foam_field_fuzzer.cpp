// Field files of OpenFOAM for a small mesh: values of every cell and patch, or one line that says what is wrong. What
// stands before the first NUL is a pattern and a name besides, which must match as the C library's expressions do.

#include <regex.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

#include "fuzz/FuzzFolder.h"
#include "reference_host/mesh/MeshError.h"
#include "reference_host/openfoam/FoamField.h"
#include "reference_host/openfoam/FoamFieldLookup.h"
#include "reference_host/openfoam/NamePattern.h"

namespace {

reference_host::PolyMeshBoundary SmallBoundary() {
  reference_host::PolyMeshBoundary boundary;
  boundary.owner = {0, 1, 0, 2, 0, 1, 2, 1};
  boundary.patches = {
      {"inlet", "patch", {}}, {"wall_low", "wall", {}}, {"wall_high", "wall", {}}, {"none", "patch", {}}};
  boundary.facesOfPatch = {{2, 3}, {5, 2}, {7, 1}, {8, 0}};
  return boundary;
}

void ReadField(std::string const& file) {
  static reference_host::PolyMeshBoundary const boundary = SmallBoundary();
  try {
    auto const field = reference_host::ReadFoamField(file, 3, boundary);
    auto const nComponents = static_cast<std::size_t>(field.nComponents);
    if (nComponents != 1 && nComponents != 3) std::abort();
    if (field.cell.size() != 3 * nComponents || field.patchType.size() != 4 || field.patch.size() != 4 ||
        field.lacksValues.size() != 4)
      std::abort();
    for (std::size_t p = 0; p < 4; ++p)
      if (field.patch[p] &&
          field.patch[p]->size() != nComponents * static_cast<std::size_t>(boundary.facesOfPatch[p].count))
        std::abort();
    static_cast<void>(reference_host::FoamFieldLookup(field, boundary).At({0, 0, 1}, field.nComponents - 1));
  } catch (reference_host::MeshError const& error) {
    if (std::strchr(error.what(), '\n') != nullptr || std::strlen(error.what()) > 1000) std::abort();
  }
}

/// Whether the C library's matcher can be asked: it copies what is before a repeat, so that repeats of repeats fill the
/// memory.
bool IsModest(std::string const& pattern) {
  auto const isRepeat = [](char c) { return c == '+' || c == '*' || c == '?'; };
  return pattern.size() <= 60 && std::count_if(pattern.begin(), pattern.end(), isRepeat) <= 8;
}

void ComparePattern(std::string const& text, std::string const& name) {
  reference_host::NamePattern pattern;
  if (!pattern.Parse(text).empty() || !IsModest(text)) return;
  reference_host::NamePattern::Workspace workspace;
  bool const matches = pattern.Matches(name, workspace);
  if (workspace.nSteps > 12 * (text.size() + 2) * (name.size() + 2)) std::abort();
  if (pattern.IsLiteral() && matches != (name == pattern.Prefix())) std::abort();
  if (matches &&
      (name.rfind(pattern.Prefix(), 0) != 0 || name.size() < pattern.Suffix().size() ||
       name.compare(name.size() - pattern.Suffix().size(), std::string::npos, pattern.Suffix()) != 0))
    std::abort();
  regex_t expected;
  std::string const inner = text.substr(text[0] == '^' ? 1 : 0);
  if (regcomp(&expected, ("^(" + inner + ")$").c_str(), REG_EXTENDED | REG_NOSUB) != 0) return;
  bool const wanted = regexec(&expected, name.c_str(), 0, nullptr, 0) == 0;
  regfree(&expected);
  if (matches != wanted) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
  static fuzz::FuzzFolder const folder;
  char const* const begin = reinterpret_cast<char const*>(data);
  char const* const end = begin + size;
  char const* const stop = std::find(begin, end, '\0');
  if (stop != end) {
    std::string const line(begin, stop);
    std::size_t const blank = std::min(line.find(' '), line.size());
    ComparePattern(line.substr(0, blank), line.substr(std::min(blank + 1, line.size())));
  }
  char const* const text = stop == end ? begin : stop + 1;
  ReadField(folder.Write("field", text, static_cast<std::size_t>(end - text)));
  return 0;
}
