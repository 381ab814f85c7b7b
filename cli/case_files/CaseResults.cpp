#include "cli/case_files/CaseResults.h"

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <system_error>
#include <utility>

#include "cli/base/OutputNames.h"
#include "cli/base/UsageError.h"
#include "cli/case_files/CaseMark.h"
#include "reference_host/openfoam/GzipText.h"

namespace zyngrad {
namespace {

namespace fs = std::filesystem;
using reference_host::FoamOutput;

std::array<double, 7> DimensionsOf(std::array<double, 7> source, int power) {
  constexpr std::size_t kLength = 1;
  source[kLength] -= 1.0;
  for (double& exponent : source) exponent *= power;
  return source;
}

bool IsField(fs::path const& path) {
  std::error_code ignored;
  return fs::is_regular_file(path, ignored) || fs::is_regular_file(path.string() + ".gz", ignored);
}

}  // namespace

CaseResults::CaseResults(Ranks const& ranks, reference_host::LoadedMesh& mesh, bool overwrite)
    : ranks_(ranks), maker_(ranks.communicator(), mesh), files_(IsOurCaseFile, overwrite) {}

/// @pre this rank writes
CaseResults::Target CaseResults::TargetOf(std::string const& fieldSpec) const {
  fs::path const spec = fs::path(fieldSpec).lexically_normal();
  fs::path const inCase = spec.parent_path().filename() / spec.filename();
  fs::path const here = maker_.folder();
  Target target;
  target.time = spec.parent_path().filename().string();
  fs::path const path = here / inCase;
  std::error_code ignored;
  bool const isOfCase = !target.time.empty() && IsField(path) &&
                        (maker_.IsDecomposed() || !IsField(spec) ||
                         fs::equivalent(spec.parent_path(), path.parent_path(), ignored));
  if (!isOfCase) {
    throw UsageError("--write-case: " + QuotedPath(fieldSpec) +
                     " is not a field in a time folder of the case " + QuotedPath(here.string()));
  }
  target.folder = path.parent_path().string();
  target.source = reference_host::DescribeFoamField(path.string());
  return target;
}

std::string CaseResults::PathOf(Target const& target, std::string const& name, bool isCompressed) {
  return (fs::path(target.folder) / (isCompressed ? name + ".gz" : name)).string();
}

void CaseResults::Check(std::string const& fieldSpec, std::vector<std::string> const& names) const {
  ranks_.Together([&] {
    if (!WritesFiles()) return;
    Target const target = TargetOf(fieldSpec);
    bool const isCompressed = target.source.format.isCompressed;
    for (std::string const& name : names)
      files_.Check(PathOf(target, name, isCompressed), PathOf(target, name, !isCompressed));
  });
}

/// Collective. The text of the file that this rank writes, if it does.
std::string CaseResults::TextOf(Target const& target, FoamOutput const& field) const {
  reference_host::FoamFormat const& format = target.source.format;
  std::string text;
  ranks_.Together([&] {
    if (!maker_.Writes()) return;
    if (!maker_.IsCollated())
      text = FoamFieldText(field, format, CaseNote());
    else
      text = ranks_.IsFirst() ? FoamFieldText(field, format, "") : FoamFieldBody(field, format);
  });
  if (maker_.IsCollated()) {
    std::vector<std::int64_t> const sizes =
        ranks_.GatherOnFirst(std::vector<std::int64_t>{static_cast<std::int64_t>(text.size())});
    std::string const all = ranks_.GatherOnFirst(text);
    ranks_.Together([&] {
      if (!ranks_.IsFirst()) return;
      std::vector<std::string> pieces;
      std::size_t begin = 0;
      for (std::int64_t const size : sizes) {
        pieces.push_back(all.substr(begin, static_cast<std::size_t>(size)));
        begin += static_cast<std::size_t>(size);
      }
      std::string const folder = fs::path(maker_.folder()).filename().string();
      text = reference_host::FoamCollatedText(pieces, folder + '/' + target.time, field.name, CaseNote());
    });
  }
  return text;
}

void CaseResults::Write(std::string const& fieldSpec, CaseQuantity const& quantity) {
  Target target;
  FoamOutput field;
  field.name = quantity.name;
  field.nComponents = quantity.nComponents;
  ranks_.Together([&] {
    if (!maker_.Writes()) return;
    target = TargetOf(fieldSpec);
    field.location = target.time;
    field.dimensions = DimensionsOf(target.source.dimensions, quantity.power);
  });
  maker_.Make(quantity.values, field);
  std::string text = TextOf(target, field);
  ranks_.Together([&] {
    if (!WritesFiles()) return;
    Seal(text);
    bool const isCompressed = target.source.format.isCompressed;
    if (isCompressed) text = reference_host::Gzipped(text);
    files_.Write(PathOf(target, field.name, isCompressed), PathOf(target, field.name, !isCompressed), text);
  });
  names_.push_back((fs::path(fieldSpec).parent_path().filename() / quantity.name).string());
}

void CaseResults::Place() {
  ranks_.Together([this] { files_.Place(); });
}

void CaseResults::Keep() { files_.Keep(); }

}  // namespace zyngrad
