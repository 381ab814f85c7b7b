#include "reference_host/openfoam/FoamField.h"

#include <array>
#include <filesystem>
#include <locale>
#include <map>
#include <sstream>
#include <string_view>
#include <utility>

#include "reference_host/mesh/MeshError.h"
#include "reference_host/mesh/MessageText.h"
#include "reference_host/openfoam/FoamEntries.h"
#include "reference_host/openfoam/FoamFieldValues.h"
#include "reference_host/openfoam/FoamFile.h"
#include "reference_host/openfoam/FoamList.h"
#include "reference_host/openfoam/NamePattern.h"
#include "reference_host/openfoam/PatternTable.h"

namespace reference_host {
namespace {

/// The entry of one patch or pattern in boundaryField.
struct PatchEntry {
  std::string type;
  FoamFieldValueReader::Values value;  ///< null: none
};

/// Whether faces of this patch type have the value of their cell by definition.
bool TakesValueOfCell(std::string_view type) {
  constexpr std::array<std::string_view, 6> kTypes = {"zeroGradient", "symmetry", "symmetryPlane",
                                                      "slip",         "wedge",    "empty"};
  for (std::string_view const known : kTypes) {
    if (type == known) return true;
  }
  return false;
}

/// Goes through the entries of a field file once, from front to back.
class FieldParser {
 public:
  FieldParser(FoamFile& file, std::int64_t nCells, PolyMeshBoundary const& boundary, bool leavesCells)
      : file_(file),
        text_(file_.Text()),
        nComponents_(ComponentsOf(file_)),
        nCells_(nCells),
        boundary_(boundary),
        leavesCells_(leavesCells),
        values_(file_, entries_, nComponents_),
        patterns_(StepsFor(text_.Remaining(), boundary)) {}

  FoamField Parse() {
    FoamField field = ParseAll();
    field.cell = Expanded(*internal_, nCells_, "cells");
    AddPatches(field);
    return field;
  }

  FoamFieldOutline Outline() {
    try {
      FoamField field = ParseAll();
      CheckCount(*internal_, nCells_, "cells");
      AddPatches(field);
      values_.CheckLeft(&internal_->reals);
      return {std::move(field), internal_->reals};
    } catch (MeshError const&) {
      values_.CheckLeft(nullptr);  // an error in a list comes first, as it does in the file
      throw;
    }
  }

 private:
  struct Key {
    std::string name;
    bool isPattern;
  };

  static constexpr std::size_t kDeepest = 100;
  static constexpr std::string_view kBoundaryField = "boundaryField";

  [[noreturn]] void Fail(std::string const& what) const { throw MeshError(file_.Name() + ": " + what); }

  /// All but the values of cells and faces.
  FoamField ParseAll() {
    ReadEntries();
    if (!internal_) Fail("there is no internalField");
    if (!hasBoundary_) Fail("there is no boundaryField");
    FoamField field;
    field.nComponents = nComponents_;
    field.dimensions = dimensions_;
    field.file = file_.Name();
    field.format = file_.Format();
    return field;
  }

  void AddPatches(FoamField& field) {
    for (std::size_t p = 0; p < boundary_.patches.size(); ++p) AddPatch(p, field);
  }

  static int ComponentsOf(FoamFile& file) {
    if (file.ClassName() == "volScalarField") return 1;
    if (file.ClassName() == "volVectorField") return 3;
    file.Text().Fail("a field of class " + Quoted(file.ClassName()) +
                     "; only volScalarField and volVectorField can be read");
  }

  /// Limit for looking up the patches. Patterns with literal beginnings or ends need far less, but thousands
  /// of patterns such as ".*a.*" for thousands of patches would cost their product.
  static std::uint64_t StepsFor(std::size_t nBytes, PolyMeshBoundary const& boundary) {
    for (Patch const& patch : boundary.patches) nBytes += patch.name.size();
    return 20'000'000 + 200 * std::uint64_t{nBytes};
  }

  /// Reads the file to its end, entry by entry. The stack has the keys of the dictionaries that are open.
  void ReadEntries() {
    while (!keys_.empty() || !text_.AtEnd()) {
      if (text_.Peek() == '}') {
        EndDictionary();
      } else if (text_.Peek() == '$') {
        TakeDictionary();
      } else {
        ReadEntry();
      }
    }
  }

  bool IsInBoundaryField() const { return keys_.size() == 1 && keys_[0].name == kBoundaryField; }
  bool IsInPatch() const { return keys_.size() == 2 && keys_[0].name == kBoundaryField; }

  void ReadEntry() {
    bool const isPattern = text_.Peek() == '"';
    std::string const key(isPattern ? text_.QuotedString("a keyword")
                                    : text_.Name(keys_.empty() ? "a keyword" : "a keyword or '}'"));
    if (!isPattern && key.front() == '#') {
      text_.Fail("the directive " + Quoted(key) + " cannot be read; replace it by the entries it stands for");
    }
    if (text_.Peek() == '{' || IsInBoundaryField()) {
      BeginDictionary(key, isPattern);
      return;
    }
    FoamEntries::Entry entry{text_.Position(), entries_.Scope()};
    if (keys_.empty() && key == "internalField") {
      internal_ = leavesCells_ ? values_.Leave(nCells_, entry.scope) : values_.Read(nCells_, entry.scope);
    } else if (IsInPatch() && key == "value") {
      values_.Read(MostFaces(), entry.scope);
    } else if (keys_.empty() && key == "dimensions") {
      ReadDimensions();
    } else {
      file_.Value();
    }
    entry.from = text_.Position();
    entries_.Add(key, entry);
  }

  /// "[0 2 -2 0 0 0 0]", where the last two numbers may be absent. Units in words are left alone.
  void ReadDimensions() {
    std::size_t const begin = text_.Position();
    file_.Value();
    std::string exponents(text_.Since(begin, 200));
    for (char& c : exponents) {
      if (c == '[' || c == ']') c = ' ';
    }
    std::array<double, 7> dimensions{};
    std::istringstream numbers(exponents);
    numbers.imbue(std::locale::classic());
    std::size_t n = 0;
    while (n < dimensions.size() && numbers >> dimensions[n]) ++n;
    if (n == 5 || n == dimensions.size()) dimensions_ = dimensions;
  }

  void BeginDictionary(std::string const& key, bool isPattern) {
    if (IsInBoundaryField() && isPattern) AddPattern(key);
    text_.Expect('{');
    if (keys_.size() == kDeepest) {
      text_.Fail("dictionaries are nested more than " + std::to_string(kDeepest) + " deep");
    }
    entries_.Open(key, text_.Position());
    keys_.push_back({key, isPattern});
    hasBoundary_ = hasBoundary_ || IsInBoundaryField();
  }

  void EndDictionary() {
    text_.Expect('}');
    if (keys_.empty()) text_.Fail("one '}' too many");
    if (IsInPatch()) AddPatchEntry(keys_.back());
    keys_.pop_back();
    entries_.Close();
  }

  /// "$name;" in place of an entry: takes from another dictionary what patches need.
  void TakeDictionary() {
    FoamEntries::Entry const source = values_.Macro(entries_.Scope());
    if (source.dictionary == FoamEntries::kNone)
      text_.Fail("the macro stands for a value, not for a dictionary");
    if (keys_.empty() || IsInBoundaryField()) {
      text_.Fail("a macro for a dictionary can be read only inside the entry of a patch");
    }
    std::size_t const here = text_.Position();
    for (char const* const key : {"type", "value"}) {
      FoamEntries::Entry const* const entry = entries_.FindIn(source.dictionary, key, here);
      if (entry == nullptr) continue;
      FoamEntries::Entry taken = *entry;
      taken.from = here;
      entries_.Add(key, taken);
    }
    text_.Expect(';');
  }

  /// Keeps what the dictionary that is open says of a patch.
  void AddPatchEntry(Key const& key) {
    PatchEntry patch;
    std::size_t const here = text_.Position();
    if (auto const* const type = entries_.FindIn(entries_.Scope(), "type", here))
      patch.type = values_.WordOf(*type);
    if (auto const* const value = entries_.FindIn(entries_.Scope(), "value", here))
      patch.value = values_.ReadEntry(*value, MostFaces());
    if (key.isPattern) {
      ofPattern_.push_back(std::move(patch));
    } else {
      named_[key.name] = std::move(patch);
    }
  }

  void AddPattern(std::string const& text) {
    NamePattern pattern;
    std::string const fault = pattern.Parse(text);
    if (!fault.empty()) text_.Fail("the pattern " + Quoted(text) + " " + fault);
    patterns_.Add(std::move(pattern));
  }

  std::int64_t MostFaces() const { return static_cast<std::int64_t>(boundary_.owner.size()); }

  void CheckCount(FoamFieldValues const& values, std::int64_t n, std::string const& of) const {
    if (!values.isUniform && values.reals.count != n)
      Fail(std::to_string(values.reals.count) + " values for " + std::to_string(n) + " " + of);
  }

  std::vector<double> Expanded(FoamFieldValues const& values, std::int64_t n, std::string const& of) {
    CheckCount(values, n, of);
    FoamReals const& reals = values.reals;
    if (reals.isLeft) return values_.ReadLeft(reals);
    return reals.list.empty() ? Repeated(reals.same, n) : reals.list;
  }

  std::vector<double> Repeated(FoamItem const& item, std::int64_t n) const {
    std::vector<double> values;
    values.reserve(static_cast<std::size_t>(nComponents_ * n));
    for (std::int64_t i = 0; i < n; ++i)
      values.insert(values.end(), item.begin(), item.begin() + nComponents_);
    return values;
  }

  void AddPatch(std::size_t p, FoamField& field) {
    PatchEntry const* const entry = EntryOf(boundary_.patches[p].name);
    std::int64_t const nFaces = boundary_.facesOfPatch[p].count;
    field.patch.emplace_back();
    field.lacksValues.push_back(0);
    field.patchType.push_back(entry != nullptr ? entry->type : "");
    if (nFaces == 0 || (entry != nullptr && TakesValueOfCell(entry->type))) return;
    if (entry != nullptr && entry->value) {
      field.patch.back() =
          Expanded(*entry->value, nFaces, "faces of patch " + Quoted(boundary_.patches[p].name));
    } else if (nComponents_ == 3 && entry != nullptr && entry->type == "noSlip") {
      field.patch.back() = Repeated(FoamItem{}, nFaces);
    } else {
      field.lacksValues.back() = 1;
    }
  }

  PatchEntry const* EntryOf(std::string const& patch) {
    auto const found = named_.find(patch);
    if (found != named_.end()) return &found->second;
    int const last = patterns_.FindLast(patch);
    if (patterns_.IsExhausted()) {
      Fail("the " + std::to_string(ofPattern_.size()) + " patterns are too many, or too long, for " +
           std::to_string(boundary_.patches.size()) + " patches; name the patches instead");
    }
    return last < 0 ? nullptr : &ofPattern_[static_cast<std::size_t>(last)];
  }

  FoamFile& file_;
  TextCursor& text_;
  int nComponents_;
  std::int64_t nCells_;
  PolyMeshBoundary const& boundary_;
  bool leavesCells_;
  FoamEntries entries_;
  FoamFieldValueReader values_;
  std::vector<Key> keys_;  ///< of the dictionaries that are open
  FoamFieldValueReader::Values internal_;
  std::optional<std::array<double, 7>> dimensions_;
  bool hasBoundary_ = false;
  std::map<std::string, PatchEntry> named_;
  PatternTable patterns_;
  std::vector<PatchEntry> ofPattern_;  ///< by number in patterns_
};

}  // namespace

FoamField ReadFoamField(std::string const& file, std::int64_t nCells, PolyMeshBoundary const& boundary) {
  std::filesystem::path const path(file);
  FoamFile foam(path.parent_path().string(), path.filename().string());
  return FieldParser(foam, nCells, boundary, false).Parse();
}

FoamFieldOutline ReadFoamFieldOutline(FoamFile& file, std::int64_t nCells, PolyMeshBoundary const& boundary) {
  return FieldParser(file, nCells, boundary, true).Outline();
}

}  // namespace reference_host
