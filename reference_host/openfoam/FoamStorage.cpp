#include "reference_host/openfoam/FoamStorage.h"

#include <algorithm>
#include <cstddef>
#include <filesystem>
#include <optional>
#include <string_view>
#include <system_error>

namespace reference_host {
namespace {

namespace fs = std::filesystem;

constexpr std::string_view kCompressed = ".gz";

bool Exists(std::string const& path) {
  std::error_code ignored;
  return fs::exists(path, ignored);
}

/// PATH or PATH.gz, whichever is there; empty: neither.
std::string StoredAt(std::string const& path) {
  if (Exists(path)) return path;
  std::string const compressed = path + std::string(kCompressed);
  return Exists(compressed) ? compressed : std::string();
}

/// The number at the beginning of a text, which loses its digits; -1: there is none, or it has more than eight.
int TakeNumber(std::string_view& text) {
  std::size_t const n = std::min(text.find_first_not_of("0123456789"), text.size());
  if (n == 0 || n > 8) return -1;
  int number = 0;
  for (char const digit : text.substr(0, n)) number = 10 * number + (digit - '0');
  text.remove_prefix(n);
  return number;
}

bool TakeText(std::string_view& text, std::string_view beginning) {
  if (text.substr(0, beginning.size()) != beginning) return false;
  text.remove_prefix(beginning.size());
  return true;
}

/// What the name of a folder, processorsN or processorsN_A-B, says.
std::optional<CollatedFolder> ParseCollatedName(std::string_view name) {
  if (!TakeText(name, "processors")) return std::nullopt;
  CollatedFolder folder;
  folder.nProcessors = TakeNumber(name);
  folder.last = folder.nProcessors - 1;
  if (TakeText(name, "_")) {
    folder.first = TakeNumber(name);
    if (!TakeText(name, "-")) return std::nullopt;
    folder.last = TakeNumber(name);
  }
  bool const isValid =
      name.empty() && 0 <= folder.first && folder.first <= folder.last && folder.last < folder.nProcessors;
  return isValid ? std::optional(folder) : std::nullopt;
}

/// CASE, R and REST of CASE/processorR/REST.
struct ProcessorPath {
  fs::path folder;
  int processor;
  fs::path rest;
};

std::optional<ProcessorPath> ParseProcessorPath(std::string const& path) {
  fs::path rest;
  for (fs::path front = path; front.has_relative_path(); front = front.parent_path()) {
    std::string const name = front.filename().string();
    std::string_view digits = name;
    if (TakeText(digits, "processor")) {
      int const processor = TakeNumber(digits);
      if (processor >= 0 && digits.empty()) return ProcessorPath{front.parent_path(), processor, rest};
    }
    rest = rest.empty() ? fs::path(name) : name / rest;
  }
  return std::nullopt;
}

}  // namespace

bool FoamStorage::IsCompressed() const {
  return file.size() > kCompressed.size() &&
         std::string_view(file).substr(file.size() - kCompressed.size()) == kCompressed;
}

FoamStorage FindFoamFile(std::string const& path) {
  if (std::string const file = StoredAt(path); !file.empty()) return {file};
  std::optional<ProcessorPath> const parts = ParseProcessorPath(path);
  if (!parts) return {path};
  FoamStorage missing{path};
  for (CollatedFolder const& folder : CollatedFolders(parts->folder.string())) {
    if (parts->processor < folder.first || parts->processor > folder.last) continue;
    std::string const shared = (folder.path / parts->rest).string();
    FoamStorage found{StoredAt(shared), parts->processor - folder.first, parts->processor};
    if (!found.file.empty()) return found;
    missing.file = shared;
  }
  return missing;
}

bool FoamFileExists(std::string const& path) { return Exists(FindFoamFile(path).file); }

std::vector<CollatedFolder> CollatedFolders(std::string const& folder) {
  std::vector<CollatedFolder> folders;
  std::error_code error;
  fs::path const path = folder.empty() ? fs::path(".") : fs::path(folder);
  for (fs::directory_iterator entry(path, error), end; !error && entry != end; entry.increment(error)) {
    std::optional<CollatedFolder> found = ParseCollatedName(entry->path().filename().string());
    std::error_code ignored;
    if (!found || !entry->is_directory(ignored)) continue;
    found->path = (fs::path(folder) / entry->path().filename()).string();
    folders.push_back(*found);
  }
  std::sort(folders.begin(), folders.end(),
            [](CollatedFolder const& a, CollatedFolder const& b) { return a.path < b.path; });
  return folders;
}

}  // namespace reference_host
