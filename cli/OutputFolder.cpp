#include "cli/OutputFolder.h"

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <system_error>

#include "cli/OneLine.h"
#include "cli/UsageError.h"

namespace zyngrad {
namespace {

namespace fs = std::filesystem;

/// The folders that are missing on the way to `folder`, outermost first.
std::vector<std::string> MissingFolders(const fs::path& folder) {
  std::vector<std::string> missing;
  std::error_code ignored;
  fs::path way;
  for (const fs::path& step : folder) {
    way /= step;
    if (!step.empty() && !fs::exists(way, ignored)) missing.push_back(way.string());
  }
  return missing;
}

void CreateFile(const std::string& file) {
  const std::ofstream out(file, std::ios::trunc);
  if (!out) throw UsageError("cannot write " + Quoted(file) + ": " + std::strerror(errno));
}

std::string LogName(int rank) { return "log.rank" + std::to_string(rank) + ".txt"; }

}  // namespace

OutputFolder::OutputFolder(const Ranks& ranks, const std::string& folder) : ranks_(ranks), path_(folder) {
  try {
    MakeFolder(path_);
    ranks_.Together([this] {
      logFile_ = Stage(LogName(ranks_.rank()));
      CreateFile(logFile_);
    });
    for (int rank = ranks_.count(); Has(LogName(rank)); ++rank) Discard(LogName(rank));
  } catch (...) {
    RemoveUnfinished();  // a constructor that throws has no destructor
    throw;
  }
}

OutputFolder::~OutputFolder() { RemoveUnfinished(); }

void OutputFolder::MakeFolder(const std::string& folder) {
  ranks_.Together([&folder] {
    if (folder.empty()) throw UsageError("the name of the output folder is empty");
  });
  // Every rank looks before the first one makes it: all of them may be the last to clean up.
  const std::vector<std::string> missing = MissingFolders(folder);
  ranks_.Barrier();
  madeFolders_.insert(madeFolders_.end(), missing.begin(), missing.end());
  ranks_.Together([this, &folder] {
    if (!ranks_.IsFirst()) return;
    std::error_code error;
    fs::create_directories(folder, error);
    if (error) throw UsageError("cannot make the output folder " + Quoted(folder) + ": " + error.message());
    if (!fs::is_directory(folder)) throw UsageError("the output folder " + Quoted(folder) + " is a file");
  });
}

void OutputFolder::MakeSubfolder(const std::string& name) { MakeFolder((fs::path(path_) / name).string()); }

std::string OutputFolder::Stage(const std::string& name) { return StageAs(name, name + ".part"); }

std::string OutputFolder::StageAs(const std::string& name, const std::string& unfinishedName) {
  const fs::path folder(path_);
  staged_.emplace_back((folder / unfinishedName).string(), (folder / name).string());
  return staged_.back().first;
}

bool OutputFolder::Has(const std::string& name) const {
  std::error_code ignored;
  return fs::exists(fs::path(path_) / name, ignored);
}

void OutputFolder::Discard(const std::string& name) {
  discarded_.push_back((fs::path(path_) / name).string());
}

void OutputFolder::Commit() {
  ranks_.Together([this] {
    if (!ranks_.IsFirst()) MoveStaged();
  });
  ranks_.Together([this] {
    if (!ranks_.IsFirst()) return;
    MoveStaged();
    std::error_code ignored;  // an old file that stays does no harm beyond itself
    for (const std::string& file : discarded_) fs::remove(file, ignored);
  });
  madeFolders_.clear();
}

void OutputFolder::MoveStaged() {
  while (!staged_.empty()) {
    const auto& [from, to] = staged_.front();
    std::error_code error;
    fs::rename(from, to, error);
    if (error) throw UsageError("cannot write " + Quoted(to) + ": " + error.message());
    staged_.erase(staged_.begin());
  }
}

void OutputFolder::RemoveUnfinished() {
  std::error_code ignored;
  for (const auto& [from, to] : staged_) fs::remove(from, ignored);
  // Only empty folders go, so the rank that removes its files last takes the folders along, without waiting
  // for others.
  for (auto folder = madeFolders_.rbegin(); folder != madeFolders_.rend(); ++folder)
    fs::remove(*folder, ignored);
  staged_.clear();
  madeFolders_.clear();
}

}  // namespace zyngrad
