#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <string_view>

#include "reference_host/mesh/TextCursor.h"
#include "reference_host/openfoam/FoamEntries.h"
#include "reference_host/openfoam/FoamFile.h"
#include "reference_host/openfoam/FoamList.h"

namespace reference_host {

/// Values of a field file: "uniform 3", "nonuniform List<scalar> 2 (3 4)" or "nonuniform List<scalar> 2{3}". The last
/// one is not written out, since a few bytes could announce any number of values.
struct FoamFieldValues {
  bool isUniform = true;  ///< any number of `reals.same`
  FoamReals reals;
};

/// Reads the values of a field file, and what the macros in them stand for.
class FoamFieldValueReader {
 public:
  /// Borrows both.
  FoamFieldValueReader(FoamFile& file, FoamEntries const& entries, int nComponents)
      : text_(file.Text()), format_(file.Format()), entries_(entries), nComponents_(nComponents) {}

  using Values = std::shared_ptr<FoamFieldValues const>;

  /// Reads the values that come next, with the ';' after them. Reading the same place again, as macros do, costs
  /// nothing.
  /// @param[in] most   a longer list is an error
  /// @param[in] scope  the dictionary that the values are written in
  Values Read(std::int64_t most, int scope) { return Read(most, scope, 0); }

  /// The same, but passes over a list of items, see LeaveFoamReals.
  Values Leave(std::int64_t most, int scope) {
    leavesLists_ = true;
    Values values = Read(most, scope, 0);
    leavesLists_ = false;
    return values;
  }

  /// Reads a list that was left. The present place stays.
  std::vector<double> ReadLeft(FoamReals const& left);

  /// Throws what is wrong with lists that were left, except for one of them (null: for none).
  void CheckLeft(FoamReals const* except);

  /// Reads the values of an entry and returns to the present place.
  Values ReadEntry(FoamEntries::Entry const& entry, std::int64_t most);

  /// The first word of an entry's value; empty if it does not begin with a word.
  std::string WordOf(FoamEntries::Entry const& entry);

  /// Reads "$name" and returns its entry. Throws MeshError if there is none.
  FoamEntries::Entry const& Macro(int scope);

 private:
  /// So many macros may stand for each other.
  static constexpr int kMostMacros = 20;

  Values Read(std::int64_t most, int scope, int nMacros);
  FoamFieldValues ReadHere(std::int64_t most, int scope, int nMacros);
  FoamReals List(std::int64_t most);
  FoamItem Item(int scope, int nMacros);
  double Real(int scope, int nMacros);
  std::string WordHere(int scope, int nMacros);

  template <class ReadValue>
  auto AtMacro(int scope, int nMacros, ReadValue const& readValue);
  template <class ReadValue>
  auto AtEntry(FoamEntries::Entry const& entry, ReadValue const& readValue);

  TextCursor& text_;
  FoamFormat const& format_;
  FoamEntries const& entries_;
  int nComponents_;
  std::map<std::size_t, Values> known_;  ///< by position
  bool leavesLists_ = false;
  std::map<std::size_t, std::int64_t> left_;  ///< lists that were left: their lengths, by position
};

}  // namespace reference_host
