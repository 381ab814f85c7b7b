#include "cli/OutputFolder.h"

#include <filesystem>
#include <system_error>

#include "cli/OneLine.h"
#include "cli/OutputFile.h"
#include "cli/StdoutToFile.h"
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

/// Everything in the folder of unfinished files but the lock itself.
void RemoveContent(const std::string& unfinished) {
  std::error_code ignored;
  for (const fs::directory_entry& entry : fs::directory_iterator(unfinished, ignored))
    if (entry.path().filename() != kLockFile) fs::remove_all(entry.path(), ignored);
}

std::string LogName(int rank) { return "log.rank" + std::to_string(rank) + ".txt"; }

}  // namespace

OutputFolder::OutputFolder(const Ranks& ranks, const std::string& folder)
    : ranks_(ranks), path_(folder), unfinished_((fs::path(folder) / "unfinished.part").string()) {
  try {
    MakeFolder(path_);
    Occupy();
    ranks_.Together([this] {
      logFile_ = Stage(LogName(ranks_.rank()));
      WriteText(logFile_, "");
    });
    for (int rank = ranks_.count(); Has(LogName(rank)); ++rank) Discard(LogName(rank));
  } catch (...) {
    Leave();  // a constructor that throws has no destructor
    throw;
  }
}

OutputFolder::~OutputFolder() { Leave(); }

/// The first rank alone looks whether the folder is free, and clears it of what a killed run left; then all ranks hold
/// its lock, so that it stays taken while any of them is alive.
void OutputFolder::Occupy() {
  ranks_.Together([this] {
    if (!ranks_.IsFirst()) return;
    if (!lock_.Take(unfinished_)) {
      throw UsageError("the output folder " + Quoted(path_) + " is in use by another run (" +
                       FolderLock::HolderOf(unfinished_) + ")");
    }
    RemoveContent(unfinished_);
    lock_.Share();
  });
  ranks_.Together([this] {
    if (!ranks_.IsFirst()) lock_.Join(unfinished_);
  });
}

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

void OutputFolder::MakeSubfolder(const std::string& name) {
  MakeFolder((fs::path(path_) / name).string());
  ranks_.Together([this, &name] {
    if (!ranks_.IsFirst()) return;
    const std::string folder = (fs::path(unfinished_) / name).string();
    std::error_code error;
    fs::create_directories(folder, error);
    if (error) throw UsageError("cannot make the folder " + Quoted(folder) + ": " + error.message());
  });
}

std::string OutputFolder::Stage(const std::string& name) {
  staged_.emplace_back((fs::path(unfinished_) / name).string(), (fs::path(path_) / name).string());
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
    StdoutToFile::CheckAll();
    CheckPlaces();
  });
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

void OutputFolder::CheckPlaces() const {
  std::error_code ignored;
  for (const auto& [from, to] : staged_)
    if (fs::is_directory(to, ignored)) throw UsageError("cannot write " + Quoted(to) + ": it is a folder");
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

void OutputFolder::Leave() {
  std::error_code ignored;
  for (const auto& [from, to] : staged_) fs::remove(from, ignored);
  staged_.clear();
  // The rank that leaves last clears the place, without waiting for others. Only empty folders go: another run may
  // already be there.
  if (lock_.Release()) {
    RemoveContent(unfinished_);
    lock_.Remove();
    fs::remove(unfinished_, ignored);
  }
  for (auto folder = madeFolders_.rbegin(); folder != madeFolders_.rend(); ++folder)
    fs::remove(*folder, ignored);
  madeFolders_.clear();
}

}  // namespace zyngrad
