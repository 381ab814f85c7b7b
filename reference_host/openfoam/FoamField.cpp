#include "reference_host/openfoam/FoamField.h"

#include <array>
#include <filesystem>
#include <map>
#include <string_view>
#include <utility>

#include "reference_host/mesh/MeshError.h"
#include "reference_host/mesh/MessageText.h"
#include "reference_host/openfoam/FoamFile.h"
#include "reference_host/openfoam/FoamList.h"
#include "reference_host/openfoam/NamePattern.h"
#include "reference_host/openfoam/PatternTable.h"

namespace reference_host {
namespace {

/// "uniform 3", "nonuniform List<scalar> 2 (3 4)" or "nonuniform List<scalar> 2{3}". The last one is not
/// expanded, since a few bytes could announce any number of values.
struct Values {
  bool isUniform = true;  ///< any number of `reals.same`
  FoamReals reals;
};

/// The entry of one patch or pattern in boundaryField.
struct PatchEntry {
  std::string type;
  std::optional<Values> value;
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

class FieldParser {
 public:
  FieldParser(std::string const& file, std::int64_t nCells, PolyMeshBoundary const& boundary)
      : file_(std::filesystem::path(file).parent_path().string(),
              std::filesystem::path(file).filename().string()),
        text_(file_.Text()),
        nCells_(nCells),
        boundary_(boundary),
        patterns_(StepsFor(text_.Remaining(), boundary)) {}

  FoamField Parse() {
    if (file_.ClassName() != "volScalarField" && file_.ClassName() != "volVectorField") {
      text_.Fail("a field of class " + Quoted(file_.ClassName()) +
                 "; only volScalarField and volVectorField can be read");
    }
    nComponents_ = file_.ClassName() == "volVectorField" ? 3 : 1;
    while (!text_.AtEnd()) ReadEntry();
    if (!internal_) Fail("there is no internalField");
    if (!hasBoundary_) Fail("there is no boundaryField");
    FoamField field;
    field.nComponents = nComponents_;
    field.cell = Expanded(*internal_, nCells_, "cells");
    for (std::size_t p = 0; p < boundary_.patches.size(); ++p) AddPatch(p, field);
    return field;
  }

 private:
  [[noreturn]] void Fail(std::string const& what) const { throw MeshError(file_.Name() + ": " + what); }

  /// Limit for looking up the patches. Patterns with literal beginnings or ends need far less, but thousands
  /// of patterns such as ".*a.*" for thousands of patches would cost their product.
  static std::uint64_t StepsFor(std::size_t nBytes, PolyMeshBoundary const& boundary) {
    for (Patch const& patch : boundary.patches) nBytes += patch.name.size();
    return 20'000'000 + 200 * std::uint64_t{nBytes};
  }

  void ReadEntry() {
    std::string const key = file_.Keyword();
    if (key.empty()) text_.Fail("one '}' too many");
    if (key == "internalField") {
      internal_ = ReadValues(nCells_);
    } else if (key == "boundaryField") {
      hasBoundary_ = true;
      text_.Expect('{');
      while (!text_.Accept('}')) ReadPatch();
    } else {
      file_.Value();
    }
  }

  // name { type fixedValue; value uniform 3; }
  void ReadPatch() {
    bool const isPattern = text_.Peek() == '"';
    std::string const name = isPattern ? std::string(text_.QuotedString("a patch name"))
                                       : std::string(text_.Name("a patch name or '}'"));
    if (isPattern) {
      AddPattern(name);
    } else if (name.front() == '#' || name.front() == '$') {
      text_.Fail("directives and macros cannot be read");
    }
    PatchEntry entry;
    text_.Expect('{');
    for (std::string key = file_.Keyword(); !key.empty(); key = file_.Keyword()) {
      if (key == "value") {
        entry.value = ReadValues(static_cast<std::int64_t>(boundary_.owner.size()));
        continue;
      }
      std::string const value = file_.Value();
      if (key == "type") entry.type = value;
    }
    if (isPattern) {
      ofPattern_.push_back(std::move(entry));
    } else {
      named_[name] = std::move(entry);
    }
  }

  void AddPattern(std::string const& text) {
    NamePattern pattern;
    std::string const fault = pattern.Parse(text);
    if (!fault.empty()) text_.Fail("the pattern " + Quoted(text) + " " + fault);
    patterns_.Add(std::move(pattern));
  }

  Values ReadValues(std::int64_t most) {
    Values values;
    std::string_view const kind = text_.Word("uniform or nonuniform");
    if (kind == "$internalField") {
      if (!internal_ || !internal_->isUniform)
        text_.Fail("$internalField can be used only if the internal field is uniform");
      values = *internal_;
    } else if (kind == "uniform") {
      values.reals.same = ReadFoamItem(text_, nComponents_);
    } else if (kind == "nonuniform") {
      ReadList(most, values);
    } else {
      text_.Fail("uniform or nonuniform expected instead of " + Quoted(kind));
    }
    text_.Expect(';');
    return values;
  }

  void ReadList(std::int64_t most, Values& values) {
    std::string const expected = nComponents_ == 1 ? "List<scalar>" : "List<vector>";
    char const first = text_.Peek();
    if (first != '(' && (first < '0' || first > '9')) {
      std::string_view const type = text_.Word(expected.c_str());
      if (type != expected) text_.Fail(expected + " expected instead of " + Quoted(type));
    }
    values.isUniform = false;
    values.reals = ReadFoamReals(text_, nComponents_, most);
  }

  std::vector<double> Expanded(Values const& values, std::int64_t n, std::string const& of) const {
    FoamReals const& reals = values.reals;
    if (!values.isUniform && reals.count != n) {
      Fail(std::to_string(reals.count) + " values for " + std::to_string(n) + " " + of);
    }
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

  FoamFile file_;
  TextCursor& text_;
  std::int64_t nCells_;
  int nComponents_ = 1;
  PolyMeshBoundary const& boundary_;
  std::optional<Values> internal_;
  bool hasBoundary_ = false;
  std::map<std::string, PatchEntry> named_;
  PatternTable patterns_;
  std::vector<PatchEntry> ofPattern_;  ///< by number in patterns_
};

}  // namespace

FoamField ReadFoamField(std::string const& file, std::int64_t nCells, PolyMeshBoundary const& boundary) {
  return FieldParser(file, nCells, boundary).Parse();
}

}  // namespace reference_host
