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
  std::int64_t count = kAny;  ///< kAny: any number
  double same = 0.0;
  std::vector<double> list;  ///< empty: `count` times `same`

  static constexpr std::int64_t kAny = -1;
  bool IsUniform() const { return count == kAny; }
};

/// The entry of one patch or pattern in boundaryField.
struct PatchEntry {
  std::string type;
  std::optional<Values> value;
};

/// Whether faces of this patch type have the value of their cell by definition.
bool TakesValueOfCell(std::string_view type) {
  constexpr std::array<std::string_view, 5> kTypes = {"zeroGradient", "symmetry", "symmetryPlane", "slip",
                                                      "empty"};
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
    if (file_.ClassName() != "volScalarField") {
      text_.Fail("a field of class " + Quoted(file_.ClassName()) + "; only volScalarField can be read");
    }
    while (!text_.AtEnd()) ReadEntry();
    if (!internal_) Fail("there is no internalField");
    if (!hasBoundary_) Fail("there is no boundaryField");
    FoamField field;
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
      if (!internal_ || !internal_->IsUniform())
        text_.Fail("$internalField can be used only if the internal field is uniform");
      values = *internal_;
    } else if (kind == "uniform") {
      values.same = text_.Real("a value");
    } else if (kind == "nonuniform") {
      ReadList(most, values);
    } else {
      text_.Fail("uniform or nonuniform expected instead of " + Quoted(kind));
    }
    text_.Expect(';');
    return values;
  }

  void ReadList(std::int64_t most, Values& values) {
    char const first = text_.Peek();
    if (first != '(' && (first < '0' || first > '9')) {
      std::string_view const type = text_.Word("List<scalar>");
      if (type != "List<scalar>") text_.Fail("List<scalar> expected instead of " + Quoted(type));
    }
    FoamValues<double> read =
        ReadFoamValues<double>(text_, "value", most, [this] { return text_.Real("a value"); });
    values.count = read.count;
    values.same = read.same;
    values.list = std::move(read.list);
  }

  std::vector<double> Expanded(Values const& values, std::int64_t n, std::string const& of) const {
    if (!values.IsUniform() && values.count != n) {
      Fail(std::to_string(values.count) + " values for " + std::to_string(n) + " " + of);
    }
    if (values.list.empty()) return std::vector<double>(static_cast<std::size_t>(n), values.same);
    return values.list;
  }

  void AddPatch(std::size_t p, FoamField& field) {
    PatchEntry const* const entry = EntryOf(boundary_.patches[p].name);
    std::int64_t const nFaces = boundary_.facesOfPatch[p].count;
    field.patch.emplace_back();
    field.lacksValues.push_back(0);
    if (nFaces == 0 || (entry != nullptr && TakesValueOfCell(entry->type))) return;
    if (entry != nullptr && entry->value) {
      field.patch.back() =
          Expanded(*entry->value, nFaces, "faces of patch " + Quoted(boundary_.patches[p].name));
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
