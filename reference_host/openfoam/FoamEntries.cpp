#include "reference_host/openfoam/FoamEntries.h"

#include <algorithm>
#include <iterator>

namespace reference_host {

void FoamEntries::Open(std::string const& key, std::size_t begin) {
  int const number = static_cast<int>(dictionaries_.size());
  Add(key, {begin, open_, number, begin});
  dictionaries_.emplace_back();
  dictionaries_.back().parent = open_;
  open_ = number;
}

void FoamEntries::Add(std::string const& key, Entry const& entry) {
  dictionaries_[static_cast<std::size_t>(open_)].entries[key].push_back(entry);
}

FoamEntries::Entry const* FoamEntries::FindIn(int dictionary, std::string_view key,
                                              std::size_t position) const {
  auto const& entries = dictionaries_[static_cast<std::size_t>(dictionary)].entries;
  auto const found = entries.find(key);
  if (found == entries.end()) return nullptr;
  auto const later = std::upper_bound(found->second.begin(), found->second.end(), position,
                                      [](std::size_t at, Entry const& entry) { return at < entry.from; });
  return later == found->second.begin() ? nullptr : &*std::prev(later);
}

/// Entry a.b.c, beginning in the dictionary itself.
FoamEntries::Entry const* FoamEntries::FindPath(int dictionary, std::string_view path,
                                                std::size_t position) const {
  while (true) {
    if (Entry const* const entry = FindIn(dictionary, path, position)) return entry;  // names may have dots
    std::size_t const dot = path.find('.');
    if (dot == std::string_view::npos) return nullptr;
    Entry const* const inner = FindIn(dictionary, path.substr(0, dot), position);
    if (inner == nullptr || inner->dictionary == kNone) return nullptr;
    dictionary = inner->dictionary;
    path.remove_prefix(dot + 1);
  }
}

FoamEntries::Entry const* FoamEntries::FindAround(int dictionary, std::string_view key,
                                                  std::size_t position) const {
  for (; dictionary != kNone; dictionary = dictionaries_[static_cast<std::size_t>(dictionary)].parent) {
    if (Entry const* const entry = FindPath(dictionary, key, position)) return entry;
  }
  return nullptr;
}

FoamEntries::Entry const* FoamEntries::Find(std::string_view name, int scope, std::size_t position) const {
  if (name.empty()) return nullptr;
  if (name.front() == ':') return FindPath(0, name.substr(1), position);
  if (name.front() != '.') return FindAround(scope, name, position);
  for (name.remove_prefix(1); !name.empty() && name.front() == '.'; name.remove_prefix(1)) {
    scope = dictionaries_[static_cast<std::size_t>(scope)].parent;
    if (scope == kNone) return nullptr;
  }
  return FindPath(scope, name, position);
}

}  // namespace reference_host
