#include "cli/case_files/CaseResults.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <exception>
#include <filesystem>
#include <optional>
#include <system_error>
#include <utility>

#include "cli/base/OutputNames.h"
#include "cli/base/UsageError.h"
#include "cli/case_files/CaseMark.h"
#include "cli/output/OutputFile.h"
#include "reference_host/openfoam/GzipText.h"
#include "reference_host/slabs/RankStream.h"

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
    : ranks_(ranks),
      communicator_(ranks.communicator()),
      maker_(ranks.communicator(), mesh),
      files_(IsOurCaseFile, overwrite) {}

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

/// Collective. Calls take(text) with the pieces of the file that this rank writes, if it does. The first piece has the
/// header.
void CaseResults::MakeText(Target const& target, FoamOutput const& field, Take const& take) const {
  if (maker_.IsCollated()) return MakeCollatedText(target, field, take);
  if (!maker_.IsDecomposed()) return MakeWholeText(target, field, take);
  ranks_.Together([&] { take(FoamFieldText(field, target.source.format, CaseNote())); });
}

/// The ranks make the text of the cells that they have, one after the other.
void CaseResults::MakeWholeText(Target const& target, FoamOutput const& field, Take const& take) const {
  constexpr std::size_t kItems = 10000;
  reference_host::FoamFormat const& format = target.source.format;
  std::int64_t const nCells = maker_.cells().nItems();
  ranks_.Together([&] {
    if (ranks_.IsFirst()) take(FoamFieldHead(field, nCells, format, CaseNote()));
  });
  std::size_t const step = kItems * static_cast<std::size_t>(field.nComponents);
  StreamTextToRank0(
      communicator_,
      [&](auto const& send) {
        for (std::size_t i = 0; i < field.cell.size(); i += step) {
          std::size_t const n = std::min(step, field.cell.size() - i);
          send(reference_host::FoamFieldItems(field.cell.data() + i, n, field.nComponents, format));
        }
      },
      take);
  ranks_.Together([&] {
    if (ranks_.IsFirst()) take(FoamFieldTail(field, nCells, format));
  });
}

/// Each rank makes the block of its processor.
void CaseResults::MakeCollatedText(Target const& target, FoamOutput const& field, Take const& take) const {
  ranks_.Together([&] {
    if (!ranks_.IsFirst()) return;
    std::string const folder = fs::path(maker_.folder()).filename().string();
    take(reference_host::FoamCollatedHead(folder + '/' + target.time, field.name, CaseNote()));
  });
  StreamTextToRank0(
      communicator_,
      [&](auto const& send) {
        reference_host::FoamFormat const& format = target.source.format;
        std::string const block =
            ranks_.IsFirst() ? FoamFieldText(field, format, "") : FoamFieldBody(field, format);
        send(reference_host::FoamCollatedBlockHead(ranks_.rank(), block.size()));
        send(block);
        send(reference_host::kFoamCollatedBlockEnd);
      },
      take);
}

/// Collective. Makes the text twice, since its beginning has a checksum of all of it.
void CaseResults::WriteFile(Target const& target, FoamOutput const& field) {
  CaseSeal seal;
  MakeText(target, field, [&seal](std::string_view text) { seal.Add(text); });
  std::optional<OutputFile> file;
  std::optional<reference_host::GzipPacker> packer;
  bool const isCompressed = target.source.format.isCompressed;
  ranks_.Together([&] {
    if (!WritesFiles()) return;
    file.emplace(
        files_.Begin(PathOf(target, field.name, isCompressed), PathOf(target, field.name, !isCompressed)));
    if (isCompressed) packer.emplace();
  });
  bool isBeginning = true;
  std::exception_ptr failure;
  MakeText(target, field, [&](std::string_view text) {
    std::string beginning;
    if (failure) return;
    if (std::exchange(isBeginning, false)) {
      beginning = text;
      seal.PutInto(beginning);
      text = beginning;
    }
    if (packer)
      file->stream() << packer->Pack(text);
    else
      file->stream() << text;
    if (file->stream()) return;
    try {
      file->Close();  // which gives the reason while the system knows it
    } catch (...) {
      failure = std::current_exception();
    }
  });
  ranks_.Together([&] {
    if (failure) std::rethrow_exception(failure);
    if (!WritesFiles()) return;
    if (packer) file->stream() << packer->Finish();
    file->Close();
    files_.End();
  });
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
  // All ranks make text in the format of the first one's file.
  if (!maker_.IsDecomposed()) BroadcastFrom0(communicator_, target.source.format);
  maker_.Make(quantity.values, field);
  WriteFile(target, field);
  names_.push_back((fs::path(fieldSpec).parent_path().filename() / quantity.name).string());
}

void CaseResults::Place() {
  ranks_.Together([this] { files_.Place(); });
}

void CaseResults::Keep() { files_.Keep(); }

}  // namespace zyngrad
