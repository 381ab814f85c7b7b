#include "reference_host/FoamField.h"

#include <regex.h>

#include <array>
#include <filesystem>
#include <map>
#include <string_view>
#include <utility>

#include "reference_host/FoamFile.h"
#include "reference_host/FoamList.h"
#include "reference_host/MeshError.h"

namespace reference_host {
namespace {

/// "uniform 3" or "nonuniform List<scalar> 2 (3 4)".
struct Values {
  bool isUniform = true;
  double uniform = 0.0;
  std::vector<double> list;
};

/// What boundaryField tells about one patch or pattern.
struct PatchEntry {
  std::string type;
  std::optional<Values> value;
};

/// The faces of these types have the value of their cell by definition.
bool TakesValueOfCell(std::string_view type) {
  constexpr std::array<std::string_view, 5> kTypes = {"zeroGradient", "symmetry", "symmetryPlane", "slip",
                                                      "empty"};
  for (const std::string_view known : kTypes) {
    if (type == known) return true;
  }
  return false;
}

class FieldParser {
 public:
  FieldParser(const std::string& file, std::int64_t nCells, const PolyMeshBoundary& boundary)
      : file_(std::filesystem::path(file).parent_path().string(),
              std::filesystem::path(file).filename().string()),
        text_(file_.Text()),
        nCells_(nCells),
        boundary_(boundary) {}

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
  [[noreturn]] void Fail(const std::string& what) const { throw MeshError(file_.Name() + ": " + what); }

  void ReadEntry() {
    const std::string key = file_.Keyword();
    if (key.empty()) text_.Fail("a '}' too many");
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
    const bool isPattern = text_.Peek() == '"';
    const std::string name = isPattern ? std::string(text_.QuotedString("a patch name"))
                                       : std::string(text_.Name("a patch name or '}'"));
    if (name.front() == '#' || name.front() == '$') text_.Fail("directives and macros cannot be read");
    PatchEntry entry;
    text_.Expect('{');
    for (std::string key = file_.Keyword(); !key.empty(); key = file_.Keyword()) {
      if (key == "value") {
        entry.value = ReadValues(static_cast<std::int64_t>(boundary_.owner.size()));
        continue;
      }
      const std::string value = file_.Value();
      if (key == "type") entry.type = value;
    }
    if (isPattern) {
      patterns_.emplace_back(name, std::move(entry));
    } else {
      named_[name] = std::move(entry);
    }
  }

  Values ReadValues(std::int64_t most) {
    Values values;
    const std::string_view kind = text_.Word("uniform or nonuniform");
    if (kind == "$internalField") {
      if (!internal_ || !internal_->isUniform)
        text_.Fail("$internalField stands for values only of a uniform field");
      values = *internal_;
    } else if (kind == "uniform") {
      values.uniform = text_.Real("a value");
    } else if (kind == "nonuniform") {
      values.isUniform = false;
      values.list = ReadList(most);
    } else {
      text_.Fail("uniform or nonuniform expected instead of " + Quoted(kind));
    }
    text_.Expect(';');
    return values;
  }

  std::vector<double> ReadList(std::int64_t most) {
    const char first = text_.Peek();
    if (first != '(' && (first < '0' || first > '9')) {
      const std::string_view type = text_.Word("List<scalar>");
      if (type != "List<scalar>") text_.Fail("List<scalar> expected instead of " + Quoted(type));
    }
    return ReadFoamValues<double>(text_, "value", most, [this] { return text_.Real("a value"); });
  }

  std::vector<double> Expanded(const Values& values, std::int64_t n, const std::string& of) const {
    if (values.isUniform) return std::vector<double>(static_cast<std::size_t>(n), values.uniform);
    if (static_cast<std::int64_t>(values.list.size()) != n) {
      Fail(std::to_string(values.list.size()) + " values for " + std::to_string(n) + " " + of);
    }
    return values.list;
  }

  void AddPatch(std::size_t p, FoamField& field) const {
    const PatchEntry* const entry = EntryOf(boundary_.patches[p].name);
    const std::int64_t nFaces = boundary_.facesOfPatch[p].count;
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

  const PatchEntry* EntryOf(const std::string& patch) const {
    const auto found = named_.find(patch);
    if (found != named_.end()) return &found->second;
    for (auto pattern = patterns_.rbegin(); pattern != patterns_.rend(); ++pattern) {
      if (Matches(patch, pattern->first)) return &pattern->second;
    }
    return nullptr;
  }

  /// The whole name must match. std::regex would recurse as deep as the name is long.
  bool Matches(const std::string& patch, const std::string& pattern) const {
    regex_t compiled;
    if (regcomp(&compiled, pattern.c_str(), REG_EXTENDED) != 0) {
      Fail("the pattern " + Quoted(pattern) + " is no regular expression");
    }
    regmatch_t match;
    const bool found = regexec(&compiled, patch.c_str(), 1, &match, 0) == 0;
    regfree(&compiled);
    return found && match.rm_so == 0 && match.rm_eo == static_cast<regoff_t>(patch.size());
  }

  FoamFile file_;
  TextCursor& text_;
  std::int64_t nCells_;
  const PolyMeshBoundary& boundary_;
  std::optional<Values> internal_;
  bool hasBoundary_ = false;
  std::map<std::string, PatchEntry> named_;
  std::vector<std::pair<std::string, PatchEntry>> patterns_;
};

}  // namespace

FoamField ReadFoamField(const std::string& file, std::int64_t nCells, const PolyMeshBoundary& boundary) {
  return FieldParser(file, nCells, boundary).Parse();
}

}  // namespace reference_host
