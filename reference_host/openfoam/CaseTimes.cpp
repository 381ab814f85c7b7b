#include "reference_host/openfoam/CaseTimes.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <system_error>
#include <utility>

#include "reference_host/mesh/MessageText.h"
#include "reference_host/openfoam/DecomposedCase.h"
#include "reference_host/openfoam/PolyMeshReader.h"

namespace reference_host {
namespace {

namespace fs = std::filesystem;

void ForEachEntry(std::string const& folder, std::function<void(fs::directory_entry const&)> const& visit) {
  std::error_code error;
  for (fs::directory_iterator entry(folder, error), end; !error && entry != end; entry.increment(error))
    visit(*entry);
}

/// Whether the whole name is a finite decimal number. strtod alone would take "inf" and "0x1", too.
bool IsTime(std::string const& name, double& value) {
  if (name.empty() || name.find_first_not_of("+-.0123456789eE") != std::string::npos) return false;
  char* end = nullptr;
  value = std::strtod(name.c_str(), &end);
  return *end == '\0' && std::isfinite(value);
}

std::string TextOf(std::vector<std::string> const& names) {
  NameList list;
  for (std::string const& name : names) list.Add(name);
  return list.Text();
}

}  // namespace

std::string CaseOfPolyMesh(std::string const& polyMesh) {
  fs::path folder = fs::path(polyMesh).lexically_normal();
  if (!folder.has_filename()) folder = folder.parent_path();  // polyMesh/
  folder = folder.parent_path();
  if (folder.filename() == "constant") folder = folder.parent_path();
  return folder.empty() ? "." : folder.string();
}

std::string FolderOfTimes(std::string const& meshSpec) {
  std::error_code ignored;
  if (!fs::is_directory(meshSpec, ignored)) return {};
  if (IsDecomposedCase(meshSpec)) return StoredProcessorFolder(meshSpec, 0);
  std::string const polyMesh = FindPolyMesh(meshSpec);
  return polyMesh.empty() ? std::string() : CaseOfPolyMesh(polyMesh);
}

std::vector<std::string> TimesIn(std::string const& folder) {
  std::vector<std::pair<double, std::string>> times;
  ForEachEntry(folder, [&times](fs::directory_entry const& entry) {
    std::error_code ignored;
    double value = 0.0;
    std::string const name = entry.path().filename().string();
    if (IsTime(name, value) && entry.is_directory(ignored)) times.emplace_back(value, name);
  });
  std::sort(times.begin(), times.end());
  std::vector<std::string> names;
  names.reserve(times.size());
  for (auto const& time : times) names.push_back(time.second);
  return names;
}

std::vector<std::string> FieldsIn(std::string const& folder) {
  std::vector<std::string> names;
  ForEachEntry(folder, [&names](fs::directory_entry const& entry) {
    std::error_code ignored;
    if (!entry.is_regular_file(ignored)) return;
    fs::path const name = entry.path().filename();
    names.push_back(name.extension() == ".gz" ? name.stem().string() : name.string());
  });
  std::sort(names.begin(), names.end());
  names.erase(std::unique(names.begin(), names.end()), names.end());
  return names;
}

std::string WhatIsThereInstead(std::string const& folder, std::string const& field) {
  std::vector<std::string> const times = TimesIn(folder);
  if (times.empty()) return {};
  fs::path const wanted(field), time = wanted.parent_path().filename();
  std::error_code ignored;
  if (time.empty())
    return "; name its time, as in " + times.back() + "/" + wanted.filename().string() +
           "; times: " + TextOf(times);
  if (fs::is_directory(fs::path(folder) / time, ignored)) {
    return "; fields of time " + time.string() + ": " + TextOf(FieldsIn((fs::path(folder) / time).string()));
  }
  return "; times: " + TextOf(times);
}

}  // namespace reference_host
