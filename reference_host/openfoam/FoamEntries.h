#pragma once

#include <cstddef>
#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace reference_host {

/// The entries of a dictionary file by name, for its macros: $name stands for the entry `name` in the same dictionary
/// or the nearest one around it, $..name for one in the dictionary around it, $:a.b for entry b of dictionary a of the
/// file. An entry can be used after its end; if it is there twice, the later one counts from then on.
///
/// Dictionaries have numbers; the file itself is number 0.
class FoamEntries {
 public:
  static constexpr int kNone = -1;

  struct Entry {
    std::size_t begin = 0;   ///< position in the file behind the keyword
    int scope = 0;           ///< the dictionary that it is written in, where the names in it are looked up
    int dictionary = kNone;  ///< its number if it is one
    std::size_t from = 0;    ///< position in the file from which on it can be used
  };

  /// Begins a dictionary in the one that is open, whose content begins at this position.
  void Open(std::string const& key, std::size_t begin);

  /// Ends the dictionary that is open. @pre it is not the file itself
  void Close() { open_ = dictionaries_[static_cast<std::size_t>(open_)].parent; }

  /// Adds an entry to the dictionary that is open.
  void Add(std::string const& key, Entry const& entry);

  /// The dictionary that is open.
  int Scope() const { return open_; }

  /// What $name stands for at a position in a dictionary; nullptr if there is no such entry.
  Entry const* Find(std::string_view name, int scope, std::size_t position) const;

  /// The entry of a dictionary; nullptr if there is none.
  Entry const* FindIn(int dictionary, std::string_view key, std::size_t position) const;

 private:
  struct Dictionary {
    int parent = kNone;
    std::map<std::string, std::vector<Entry>, std::less<>> entries;  ///< those of a name ascend by `from`
  };

  Entry const* FindPath(int dictionary, std::string_view path, std::size_t position) const;
  Entry const* FindAround(int dictionary, std::string_view key, std::size_t position) const;

  std::vector<Dictionary> dictionaries_ = std::vector<Dictionary>(1);
  int open_ = 0;
};

}  // namespace reference_host
