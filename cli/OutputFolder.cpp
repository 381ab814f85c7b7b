#include "cli/OutputFolder.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <iostream>
#include <set>
#include <sstream>
#include <stdexcept>
#include <system_error>

#include "cli/OneLine.h"
#include "cli/OutputFile.h"
#include "cli/OutputNames.h"
#include "cli/StandardStreams.h"
#include "cli/StdoutToFile.h"
#include "cli/UsageError.h"

namespace zyngrad {
namespace {

namespace fs = std::filesystem;
using Kind = PlaceInFolder::Kind;

const char* const kAdvice = ": move it away, or choose another output folder with -o";

std::string LogName(int rank) { return "log.rank" + std::to_string(rank) + ".txt"; }

std::vector<std::string> WithLogs(std::vector<std::string> files, const Ranks& ranks) {
  for (int rank = 0; rank < ranks.count(); ++rank) files.push_back(LogName(rank));
  return files;
}

std::vector<std::string> With(std::vector<std::string> files, const std::string& name) {
  files.push_back(name);
  return files;
}

/// The folders inside the output folder that a file stands in.
std::set<std::string> FoldersOf(const std::vector<std::string>& files) {
  std::set<std::string> folders;
  for (const std::string& file : files)
    for (fs::path way = fs::path(file).parent_path(); !way.empty(); way = way.parent_path())
      folders.insert(way.string());
  return folders;
}

[[noreturn]] void RefusePlace(const PlaceInFolder& place) {
  throw UsageError("cannot write " + QuotedPath(place.path) + ": " +
                   (place.kind == Kind::Folder ? "it is a folder"
                                               : "what stands there is not from an earlier run of zyngrad") +
                   kAdvice);
}

}  // namespace

OutputFolder::OutputFolder(const Ranks& ranks, std::string folder, OutputPlan plan)
    : ranks_(ranks),
      path_(std::move(folder)),
      plan_({std::move(plan.command), WithLogs(std::move(plan.files), ranks)}),
      unfinished_((fs::path(path_) / "unfinished.part").string(), With(plan_.files, kManifestName)) {
  cleanup_.emplace([this] { Leave(); });
  try {
    Open();
  } catch (...) {
    const NoInterruption wait;
    Leave();  // a constructor that throws has no destructor
    throw;
  }
}

OutputFolder::~OutputFolder() {
  const NoInterruption wait;
  Leave();
}

void OutputFolder::Open() {
  ranks_.Together([this] {
    const NoInterruption wait;
    if (ranks_.IsFirst()) MakeFolder();
  });
  Occupy();
  ranks_.Together([this] {
    if (!ranks_.IsFirst()) return;
    ReadEarlierRun();
    CheckPlaces();
  });
  ranks_.Together([this] {
    logFile_ = Stage(LogName(ranks_.rank()));
    WriteText(logFile_, "");
  });
}

void OutputFolder::MakeFolder() {
  if (path_.empty()) throw UsageError("the name of the output folder is empty");
  std::error_code error;
  fs::path way;
  for (const fs::path& step : fs::path(path_)) {
    way /= step;
    if (step.empty() || fs::exists(way, error)) continue;
    const std::string made = fs::absolute(way, error).string();
    if (mkdir(way.c_str(), 0777) == 0) {
      madeFolders_.push_back(made);
    } else if (errno != EEXIST) {
      throw UsageError("cannot make the output folder " + Quoted(path_) + ": " + std::strerror(errno));
    }
  }
  if (!fs::is_directory(path_, error)) throw UsageError("the output folder " + Quoted(path_) + " is a file");
}

/// The first rank alone looks whether the folder is free, and clears it of what a killed run left; then all ranks hold
/// its lock, so that it stays taken while any of them is alive.
void OutputFolder::Occupy() {
  std::string holder;
  ranks_.Together([this, &holder] {
    if (!ranks_.IsFirst()) return;
    const NoInterruption wait;
    if (!unfinished_.Take()) {
      throw UsageError("the output folder " + Quoted(path_) + " is in use by another run (" +
                       unfinished_.PresentHolder() + ")");
    }
    holder = unfinished_.Holder();
  });
  ranks_.Broadcast(holder);
  ranks_.Together([this, &holder] {
    if (ranks_.IsFirst()) return;
    const NoInterruption wait;
    try {
      unfinished_.Join(holder);
    } catch (const UsageError& error) {
      throw UsageError("rank " + std::to_string(ranks_.rank()) + " does not share the output folder " +
                       Quoted(path_) + " with rank 0 (" + error.what() + ")");
    }
  });
  ShareMadeFolders();
}

/// Any rank may be the last one to leave. Only now is it known that all mean the same folder.
void OutputFolder::ShareMadeFolders() {
  std::string list;
  for (const std::string& folder : madeFolders_) (list += folder) += '\0';
  ranks_.Broadcast(list);
  if (ranks_.IsFirst()) return;
  const NoInterruption wait;
  std::istringstream in(list);
  for (std::string folder; std::getline(in, folder, '\0');) madeFolders_.push_back(folder);
}

std::string OutputFolder::PathOf(const std::string& name) const { return (fs::path(path_) / name).string(); }

std::string OutputFolder::UnfinishedPathOf(const std::string& name) const {
  return (fs::path(unfinished_.path()) / name).string();
}

void OutputFolder::ReadEarlierRun() {
  const std::optional<Manifest> manifest = Manifest::Read(path_);
  if (!manifest) return;
  if (manifest->command != plan_.command) {
    throw UsageError("the output folder " + Quoted(path_) + " holds results of zyngrad " +
                     Quoted(manifest->command) + ": choose another one with -o");
  }
  earlier_ = *manifest;
  std::map<std::string, std::vector<Fingerprint>> versions;
  for (const Manifest::File& file : earlier_.files) versions[file.name].push_back(file.fingerprint);
  for (const auto& [name, known] : versions) {
    const PlaceInFolder place = LookAt(path_, name);
    if (place.kind == Kind::Free) continue;
    // Looked at before it is read: what changes meanwhile is noticed later.
    const std::optional<Identity> identity = IdentityOf(place.path);
    if (place.kind != Kind::File || !identity ||
        std::find(known.begin(), known.end(), FingerprintOf(place.path)) == known.end()) {
      throw UsageError(QuotedPath(place.path) + " has changed since an earlier run of zyngrad wrote it" +
                       kAdvice);
    }
    knownFile_.emplace(name, *identity);
  }
}

/// By what the system tells of a file: a change of its content shows in the times.
std::optional<OutputFolder::Identity> OutputFolder::IdentityOf(const std::string& file) {
  struct stat s = {};
  if (lstat(file.c_str(), &s) != 0) return std::nullopt;
  return Identity{{s.st_dev, s.st_ino},
                  {s.st_size, s.st_mtim.tv_sec, s.st_mtim.tv_nsec, s.st_ctim.tv_sec, s.st_ctim.tv_nsec}};
}

/// Throws UsageError unless every planned name is free or has the file of an earlier run.
void OutputFolder::CheckPlaces() const {
  for (const std::string& name : plan_.files) {
    const PlaceInFolder place = LookAt(path_, name);
    if (place.kind != Kind::Free && knownFile_.count(name) == 0) RefusePlace(place);
  }
}

/// Throws UsageError when one has changed while this run worked.
void OutputFolder::CheckEarlierFiles() const {
  for (const auto& [name, identity] : knownFile_) {
    const std::optional<Identity> now = IdentityOf(PathOf(name));
    if (now && *now != identity)
      throw UsageError(QuotedPath(PathOf(name)) + " was changed during this run" + kAdvice);
  }
}

std::string OutputFolder::Stage(const std::string& name) {
  if (std::find(plan_.files.begin(), plan_.files.end(), name) == plan_.files.end())
    throw std::logic_error("not in the plan of the output folder: " + name);
  staged_.push_back(name);
  return UnfinishedPathOf(name);
}

void OutputFolder::Commit(const std::string& closingText) {
  std::string own;
  ranks_.Together([this, &own] {
    StdoutToFile::CheckAll();
    own = SettleStaged();
  });
  const std::string all = ranks_.GatherOnFirst(own);
  ranks_.Together([this, &all] {
    if (ranks_.IsFirst()) PrepareMove(all);
  });
  if (ranks_.IsFirst()) std::cout << closingText;
  FlushStandardOutput(ranks_);

  // From here on a signal waits. Each rank says so before any of them begins to move.
  const NoInterruption wait;
  ranks_.Together([this] {
    if (!ranks_.IsFirst()) return;
    CheckEarlierFiles();  // printing may have taken long
    CheckPlaces();
  });
  ranks_.Together([this] {
    if (!ranks_.IsFirst()) return;
    MoveManifest();
  });
  ranks_.Together([this] {
    if (!ranks_.IsFirst()) MoveStaged();
  });
  ranks_.Together([this] {
    if (!ranks_.IsFirst()) return;
    MoveStaged();
    RemoveOutdated();
  });
  for (const std::string& folder : madeFolders_) SettleFolder(fs::path(folder).parent_path().string());
  madeFolders_.clear();
}

/// A line for each file: size, checksum and name.
std::string OutputFolder::SettleStaged() const {
  std::ostringstream text;
  for (const std::string& name : staged_) {
    const Fingerprint found = Settle(UnfinishedPathOf(name));
    text << found.size << ' ' << found.crc << ' ' << name << '\n';
  }
  return text.str();
}

/// All that needs space on the disk: the folders, and a manifest that holds whatever a run that dies while it moves files
/// leaves behind.
void OutputFolder::PrepareMove(const std::string& staged) {
  CheckEarlierFiles();
  CheckPlaces();
  next_.command = plan_.command;
  std::istringstream in(staged);
  for (Manifest::File file;
       in >> file.fingerprint.size >> file.fingerprint.crc && std::getline(in >> std::ws, file.name);)
    next_.files.push_back(file);

  std::set<std::string> ours(earlier_.folders.begin(), earlier_.folders.end());
  for (const std::string& name : FoldersOf(plan_.files)) {
    const NoInterruption wait;
    const std::string folder = PathOf(name);
    if (mkdir(folder.c_str(), 0777) == 0) {
      madeFolders_.push_back(fs::absolute(folder).string());
      ours.insert(name);
    } else if (errno != EEXIST) {
      throw UsageError("cannot make the folder " + QuotedPath(folder) + ": " + std::strerror(errno));
    }
  }
  next_.folders.assign(ours.begin(), ours.end());

  Manifest both = next_;
  both.files.insert(both.files.end(), earlier_.files.begin(), earlier_.files.end());
  WriteManifest(both);
}

/// Among the unfinished files.
void OutputFolder::WriteManifest(const Manifest& manifest) const {
  const std::string file = UnfinishedPathOf(kManifestName);
  WriteText(file, manifest.Text());
  Settle(file);
}

void OutputFolder::Move(const std::string& name) const {
  const std::string from = UnfinishedPathOf(name), to = PathOf(name);
  if (std::rename(from.c_str(), to.c_str()) != 0)
    throw UsageError("cannot write " + QuotedPath(to) + ": " + std::strerror(errno));
}

void OutputFolder::MoveManifest() const {
  Move(kManifestName);
  SettleFolder(path_);
}

void OutputFolder::MoveStaged() {
  std::set<std::string> folders = {path_};
  for (const std::string& name : staged_) {
    Move(name);
    folders.insert(fs::path(PathOf(name)).parent_path().string());
  }
  staged_.clear();
  for (const std::string& folder : folders) SettleFolder(folder);
}

/// Earlier files that have no successor. What cannot be removed stays in the manifest.
void OutputFolder::RemoveOutdated() {
  std::set<std::string> present;
  for (const Manifest::File& file : next_.files) present.insert(file.name);
  std::error_code ignored;
  for (const Manifest::File& file : earlier_.files) {
    if (present.count(file.name) > 0 || knownFile_.count(file.name) == 0) continue;
    fs::remove(PathOf(file.name), ignored);
    if (LookAt(path_, file.name).kind == Kind::File) next_.files.push_back(file);
  }
  std::vector<std::string> folders;
  std::swap(folders, next_.folders);
  for (auto folder = folders.rbegin(); folder != folders.rend(); ++folder) {
    const PlaceInFolder place = LookAt(path_, *folder);
    if (place.kind == Kind::Folder && !fs::remove(place.path, ignored)) next_.folders.push_back(*folder);
  }
  std::sort(next_.folders.begin(), next_.folders.end());
  WriteManifest(next_);
  MoveManifest();
}

/// Whoever leaves last clears the place, without waiting for others. Only empty folders go: another run may already be
/// there.
void OutputFolder::Leave() {
  unfinished_.Leave();
  for (auto folder = madeFolders_.rbegin(); folder != madeFolders_.rend(); ++folder) {
    std::error_code ignored;
    fs::remove(*folder, ignored);
  }
  madeFolders_.clear();
}

}  // namespace zyngrad
