#include "cli/field/FieldFiles.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <array>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <ostream>
#include <set>
#include <sstream>
#include <system_error>
#include <utility>

#include "cli/base/OneLine.h"
#include "cli/base/UsageError.h"
#include "cli/field/TimeChoice.h"
#include "cli/options/MeshOptions.h"
#include "reference_host/FieldReader.h"
#include "reference_host/mesh/MessageText.h"
#include "reference_host/openfoam/CaseTimes.h"

namespace zyngrad {
namespace {

using nlohmann::ordered_json;
using reference_host::FaceValues;

/// How each kind of values at the boundary is called in words and in results files.
struct FaceValuesName {
  FaceValues values;
  char const* words;
  char const* key;
};

constexpr std::array<FaceValuesName, 4> kFaceValuesNames = {
    {{FaceValues::File, "values of the file", "file"},
     {FaceValues::Cell, "values of the cells", "cell"},
     {FaceValues::Tangential, "values of the cells without their normal part", "cellWithoutNormalPart"},
     {FaceValues::Turned, "values of the cells turned to the sides of the wedge", "cellTurned"}}};

/// NAME, NAME_2, NAME_3 for fields of the same name.
std::vector<std::string> DistinctNames(std::vector<std::string> const& files) {
  std::set<std::string> used = {"rank", "cell"};  // arrays that every grid has
  std::vector<std::string> names;
  for (std::string const& file : files) {
    std::string const own = reference_host::FieldName(file);
    std::string name = own;
    for (int n = 2; !used.insert(name).second; ++n) name = own + '_' + std::to_string(n);
    names.push_back(name);
  }
  return names;
}

bool HasField(std::filesystem::path const& folder, std::string const& name) {
  std::error_code ignored;
  return std::filesystem::exists(folder / name, ignored) ||
         std::filesystem::exists(folder / (name + ".gz"), ignored);
}

void Warn(std::string const& file, FileField const& field, std::vector<std::string>& warnings) {
  reference_host::NameList patches;
  for (reference_host::PatchValues const& patch : field.patches)
    if (patch.isMissing && patch.values == FaceValues::Cell) patches.Add(Quoted(patch.patch));
  if (patches.IsEmpty()) return;
  std::string const text = Quoted(file) + " has no values for the faces of " + patches.Text() +
                           "; the values of their cells are used instead";
  if (std::find(warnings.begin(), warnings.end(), text) == warnings.end()) warnings.push_back(text);
}

}  // namespace

void AddFieldFileOptions(CLI::App& command, FieldFileOptions& options) {
  AddRepeatableOption(command, "--field-file", options.files,
                      "A field from a file, scalar or vector, instead of --field; may be repeated")
      ->type_name("FILE");
  command
      .add_option("--time", options.time,
                  "Times of the case at which to read the fields: latest, all, or times and ranges")
      ->type_name("0.1,0.5:2");
}

FieldFiles::FieldFiles(FieldFileOptions options) : options_(std::move(options)) {
  names_ = DistinctNames(options_.files);
  if (!HasTimes()) return;
  if (IsEmpty()) throw UsageError("--time chooses the times of --field-file, which is not given");
  TimeChoice const choice(options_.time);  // refuses a wrong form before anything is read
  for (std::string const& file : options_.files) {
    if (reference_host::IsCgnsField(file))
      throw UsageError("--time: " + Quoted(file) + " is an array of a CGNS file, which has no times");
    if (file.find('/') != std::string::npos)
      throw UsageError("--time chooses the folder of the field: give --field-file " +
                       OneLine(reference_host::FieldName(file)) + " instead of " + Quoted(file));
  }
}

void FieldFiles::FindTimes(Ranks const& ranks, std::string const& meshSpec) {
  if (!HasTimes()) return;
  std::string found;
  ranks.Together([&] {
    if (!ranks.IsFirst()) return;
    std::filesystem::path const folder = reference_host::FolderOfTimes(meshSpec);
    std::vector<CaseTime> times;
    for (std::string const& name : reference_host::TimesIn(folder.string())) {
      times.push_back(
          {name, std::all_of(options_.files.begin(), options_.files.end(),
                             [&](std::string const& field) { return HasField(folder / name, field); })});
    }
    if (times.empty())
      throw UsageError("--time: " + Quoted(meshSpec) + " is no OpenFOAM case with folders of times");
    TimeChoice const choice(options_.time);
    if (choice.NeedsFields() &&
        std::none_of(times.begin(), times.end(), [](CaseTime const& time) { return time.hasFields; })) {
      for (std::string const& field : options_.files) {
        if (HasField(folder / times.back().name, field)) continue;
        throw UsageError(
            "--time " + Quoted(options_.time) + ": no time has all fields, and " + times.back().name +
            " has no " + Quoted(field) +
            reference_host::WhatIsThereInstead(folder.string(), times.back().name + '/' + field));
      }
    }
    for (std::string const& time : choice.ChooseFrom(times)) {
      for (std::string const& field : options_.files) {
        if (HasField(folder / time, field)) continue;
        throw UsageError("--time " + Quoted(options_.time) + ": no field " + Quoted(field) +
                         reference_host::WhatIsThereInstead(folder.string(), time + '/' + field));
      }
      found += time + '\n';
    }
    folder_ = folder.string();
  });
  ranks.Broadcast(found);
  ranks.Broadcast(folder_);
  times_.clear();
  std::istringstream in(found);
  for (std::string time; std::getline(in, time);) times_.push_back(time);
}

std::string FieldFiles::PathAt(std::size_t time, std::size_t field) const {
  std::string const& file = options_.files[field];
  return times_[time].empty() ? file : folder_ + '/' + times_[time] + '/' + file;
}

FileField FieldFiles::ReadOne(Ranks const& ranks, reference_host::LoadedMesh& mesh, std::size_t field,
                              std::size_t time, std::vector<std::string>& warnings) const {
  std::string const& file = options_.files[field];
  reference_host::LoadedField loaded =
      reference_host::LoadField(ranks.communicator(), mesh, PathAt(time, field));
  FileField result;
  result.name = names_[field];
  result.patches = std::move(loaded.patches);
  std::string const shown = Quoted(HasTimes() ? times_[time] + '/' + file : file);
  for (std::size_t k = 0; k < static_cast<std::size_t>(loaded.nComponents); ++k) {
    std::string const of = loaded.nComponents == 1 ? "" : std::string("component ") + "xyz"[k] + " of ";
    CheckFinite(ranks, *mesh.partition, of + "the field " + shown, loaded.value[k]);
    result.component.emplace_back();
    result.component.back().value = std::move(loaded.value[k]);
  }
  Warn(file, result, warnings);
  return result;
}

std::vector<FileField> FieldFiles::Read(Ranks const& ranks, reference_host::LoadedMesh& mesh,
                                        std::size_t time, std::vector<std::string>& warnings) const {
  std::vector<FileField> fields;
  for (std::size_t k = 0; k < options_.files.size(); ++k)
    fields.push_back(ReadOne(ranks, mesh, k, time, warnings));
  return fields;
}

void FieldFiles::AddToQuestion(ordered_json& question) const {
  question["fieldFiles"] = options_.files;
  if (HasTimes()) question["time"] = options_.time;
}

std::string BoundaryValuesInWords(FileField const& field) {
  std::string text;
  for (FaceValuesName const& name : kFaceValuesNames) {
    reference_host::NameList patches;
    for (reference_host::PatchValues const& patch : field.patches)
      if (patch.values == name.values) patches.Add(Quoted(patch.patch));
    if (!patches.IsEmpty())
      text += (text.empty() ? "" : "; ") + std::string(name.words) + " at " + patches.Text();
  }
  return OneLine(field.name) + " at the boundary: " + (text.empty() ? "there are no faces" : text);
}

void PrintWarnings(std::ostream& out, std::vector<std::string> const& warnings) {
  for (std::string const& warning : warnings) out << "  warning: " << warning << '\n';
  if (!warnings.empty()) out << '\n';
}

void PrintBoundaryValues(std::ostream& out, std::vector<FieldsAtTime> const& times) {
  for (std::size_t k = 0; k < times.front().fields.size(); ++k) {
    std::string before;
    for (FieldsAtTime const& at : times) {
      std::string const text = BoundaryValuesInWords(at.fields[k]);
      if (text == before) continue;
      out << (before.empty() ? "" : "from time " + at.time + " on, ") << text << '\n';
      before = text;
    }
  }
  if (!times.front().fields.empty()) out << '\n';
}

ordered_json BoundaryValuesAsJson(FileField const& field) {
  ordered_json json = ordered_json::object();
  for (reference_host::PatchValues const& patch : field.patches)
    for (FaceValuesName const& name : kFaceValuesNames)
      if (patch.values == name.values) json[patch.patch] = name.key;
  return json;
}

}  // namespace zyngrad
