#include "cli/output/OutputFolder.h"

#include <fcntl.h>
#include <unistd.h>

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

#include "cli/base/OneLine.h"
#include "cli/base/OutputNames.h"
#include "cli/base/StandardStreams.h"
#include "cli/base/StdoutToFile.h"
#include "cli/base/UsageError.h"
#include "cli/output/MoveFile.h"
#include "cli/output/OutputFile.h"

namespace zyngrad {
namespace {

namespace fs = std::filesystem;
using Kind = PlaceInFolder::Kind;

char const* const kAdvice = ": move it away, or choose another output folder with -o";

std::string LogName(int rank) { return "log.rank" + std::to_string(rank) + ".txt"; }

std::vector<std::string> WithLogs(std::vector<std::string> files, Ranks const& ranks) {
  for (int rank = 0; rank < ranks.count(); ++rank) files.push_back(LogName(rank));
  return files;
}

std::vector<std::string> With(std::vector<std::string> files, std::string const& name) {
  files.push_back(name);
  return files;
}

[[noreturn]] void RefusePlace(PlaceInFolder const& place) {
  throw UsageError("cannot write " + QuotedPath(place.path) + ": " +
                   (place.error != 0             ? std::strerror(place.error)
                    : place.kind == Kind::Folder ? "it is a folder"
                                                 : "no manifest lists it as written by zyngrad") +
                   kAdvice);
}

[[noreturn]] void RefuseChange(std::string const& path) {
  throw UsageError(QuotedPath(path) + " was changed during this run" + kAdvice);
}

/// The path without steps into a missing folder and out again, so that this folder is not created.
std::string WithoutDetours(std::string const& folder) {
  fs::path there, missing;
  std::error_code ignored;
  for (fs::path const& step : fs::path(folder)) {
    if (step == ".." && !missing.empty()) {
      missing = missing.parent_path();
    } else if (!missing.empty() || !fs::exists(fs::symlink_status(there / step, ignored))) {
      missing /= step;
    } else {
      there /= step;
    }
  }
  std::string const way = (missing.empty() ? there : there / missing).string();
  return way.empty() && !folder.empty() ? "." : way;
}

}  // namespace

OutputFolder::OutputFolder(Ranks const& ranks, std::string const& folder, OutputPlan plan)
    : ranks_(ranks),
      path_(WithoutDetours(folder)),
      plan_({std::move(plan.command), WithLogs(std::move(plan.files), ranks)}),
      unfinished_((fs::path(path_) / "unfinished.part").string(), With(plan_.files, kManifestName)) {
  cleanup_.emplace([this] { Leave(); });
  try {
    Open();
  } catch (...) {
    NoInterruption const wait;
    Leave();  // no destructor runs after a constructor that throws
    throw;
  }
}

OutputFolder::~OutputFolder() {
  NoInterruption const wait;
  Leave();
}

void OutputFolder::Open() {
  Occupy();
  ranks_.Together([this] {
    if (!ranks_.IsFirst()) return;
    ReadEarlierRun();
    CheckPlaces();
    CheckFolders();
  });
  ranks_.Together([this] {
    logFile_ = Stage(LogName(ranks_.rank()));
    WriteText(logFile_, "");
  });
}

/// @return false if one of the folders has gone in the meantime
bool OutputFolder::MakeFolder() {
  if (path_.empty()) throw UsageError("the name of the output folder is empty");
  std::error_code error;
  fs::path way;
  for (fs::path const& step : fs::path(path_)) {
    way /= step;
    if (step.empty() || fs::exists(way, error)) continue;
    std::string const made = fs::absolute(way, error).string();
    if (mkdir(way.c_str(), 0777) == 0) {
      if (std::find(madeFolders_.begin(), madeFolders_.end(), made) == madeFolders_.end())
        madeFolders_.push_back(made);
    } else if (errno == ENOENT) {
      return false;
    } else if (errno != EEXIST) {
      throw UsageError("cannot create the output folder " + QuotedPath(path_) + ": " + std::strerror(errno));
    }
  }
  if (fs::is_directory(path_, error)) return true;
  struct stat ignored = {};
  if (lstat(path_.c_str(), &ignored) != 0 && errno == ENOENT) return false;
  throw UsageError("the output folder " + QuotedPath(path_) + " is not a folder");
}

/// A run that ends removes empty folders that it created, perhaps between our steps, but hardly several times in a row.
FolderLock::Outcome OutputFolder::Take() {
  constexpr int kMostTriesToTake = 100;
  for (int attempt = 0; attempt < kMostTriesToTake; ++attempt) {
    if (!MakeFolder()) continue;
    FolderLock::Outcome const outcome = unfinished_.Take();
    if (outcome != FolderLock::Outcome::NoPlace) return outcome;
  }
  throw UsageError("cannot create the output folder " + QuotedPath(path_) + ": " + std::strerror(ENOENT));
}

/// The first rank alone checks that the folder is free and removes what a killed run left. Then all ranks hold the
/// lock, so that the folder stays taken while any of them is alive.
void OutputFolder::Occupy() {
  std::string holder;
  ranks_.Together([this, &holder] {
    if (!ranks_.IsFirst()) return;
    NoInterruption const wait;
    if (Take() != FolderLock::Outcome::Taken) {
      throw UsageError("the output folder " + QuotedPath(path_) + " is in use by another run (" +
                       unfinished_.PresentHolder() + ")");
    }
    holder = unfinished_.Holder();
  });
  ranks_.Broadcast(holder);
  ranks_.Together([this, &holder] {
    if (ranks_.IsFirst()) return;
    NoInterruption const wait;
    try {
      unfinished_.Join(holder);
    } catch (UsageError const& error) {
      throw UsageError("rank " + std::to_string(ranks_.rank()) + " does not share the output folder " +
                       QuotedPath(path_) + " with rank 0 (" + error.what() + ")");
    }
  });
  ShareMadeFolders();
}

/// Shares the list of folders, because any rank may be the last to leave. All ranks are now known to use the same
/// folder.
void OutputFolder::ShareMadeFolders() {
  std::string list;
  for (std::string const& folder : madeFolders_) (list += folder) += '\0';
  ranks_.Broadcast(list);
  if (ranks_.IsFirst()) return;
  NoInterruption const wait;
  std::istringstream in(list);
  for (std::string folder; std::getline(in, folder, '\0');) madeFolders_.push_back(folder);
}

std::string OutputFolder::PathOf(std::string const& name) const { return (fs::path(path_) / name).string(); }

std::string OutputFolder::UnfinishedPathOf(std::string const& name) const {
  return (fs::path(unfinished_.path()) / name).string();
}

void OutputFolder::ReadEarlierRun() {
  Know(kManifestName, {});
  std::optional<Manifest> const manifest = Manifest::Read(path_);
  if (!manifest) {
    known_.clear();
    return;
  }
  known_[kManifestName].contents = {FingerprintOf(PathOf(kManifestName))};
  if (IdentityOf(PathOf(kManifestName)) != known_[kManifestName].identity)
    RefuseChange(PathOf(kManifestName));
  if (manifest->command != plan_.command) {
    throw UsageError("the output folder " + QuotedPath(path_) + " contains results of zyngrad " +
                     Quoted(manifest->command) + ": choose another one with -o");
  }
  earlier_ = *manifest;
  std::map<std::string, std::vector<Fingerprint>> versions;
  for (Manifest::File const& file : earlier_.files) versions[file.name].push_back(file.fingerprint);
  for (auto const& [name, contents] : versions) {
    PlaceInFolder const place = LookAt(path_, name);
    if (place.kind == Kind::Free) continue;
    if (place.error != 0) RefusePlace(place);
    Know(name, contents);
    if (place.kind != Kind::File ||
        std::find(contents.begin(), contents.end(), FingerprintOf(place.path)) == contents.end()) {
      throw UsageError(QuotedPath(place.path) + " has changed since an earlier run of zyngrad wrote it" +
                       kAdvice);
    }
  }
}

/// Called before the file is read, so that a change in the meantime is noticed later.
void OutputFolder::Know(std::string const& name, std::vector<Fingerprint> const& contents) {
  std::optional<Identity> const identity = IdentityOf(PathOf(name));
  if (identity) known_[name] = {*identity, contents};
}

/// What the system knows of a file. A change of its content shows in the times.
std::optional<OutputFolder::Identity> OutputFolder::IdentityOf(std::string const& file) {
  struct stat s = {};
  if (lstat(file.c_str(), &s) != 0) return std::nullopt;
  return Identity{{s.st_dev, s.st_ino},
                  {s.st_size, s.st_mtim.tv_sec, s.st_mtim.tv_nsec, s.st_ctim.tv_sec, s.st_ctim.tv_nsec}};
}

/// Whether a known file still exists with its content. Permissions and links change its times, too, so the content
/// decides.
bool OutputFolder::IsUnchanged(std::string const& name) const {
  auto const known = known_.find(name);
  PlaceInFolder const place = LookAt(path_, name);
  if (known == known_.end() || place.kind != Kind::File) return false;
  if (IdentityOf(place.path) == known->second.identity) return true;
  std::vector<Fingerprint> const& contents = known->second.contents;
  return std::find(contents.begin(), contents.end(), FingerprintOf(place.path)) != contents.end();
}

/// Throws UsageError unless every planned name is free or has the file of an earlier run.
void OutputFolder::CheckPlaces() const {
  for (std::string const& name : plan_.files) {
    PlaceInFolder const place = LookAt(path_, name);
    if (place.kind != Kind::Free && known_.count(name) == 0) RefusePlace(place);
  }
}

/// Throws UsageError unless files can be moved into each folder that is already there.
void OutputFolder::CheckFolders() const {
  struct stat base = {}, inside = {};
  if (stat(path_.c_str(), &base) != 0)
    throw UsageError("cannot read " + QuotedPath(path_) + ": " + std::strerror(errno));
  for (std::string const& name : FoldersOf(plan_.files)) {
    PlaceInFolder const place = LookAt(path_, name);
    if (place.kind == Kind::Free) continue;
    int reason = 0;
    if (faccessat(AT_FDCWD, place.path.c_str(), W_OK | X_OK, AT_EACCESS) != 0 ||
        stat(place.path.c_str(), &inside) != 0) {
      reason = errno;
    } else if (inside.st_dev != base.st_dev) {
      reason = EXDEV;
    }
    if (reason != 0)
      throw UsageError("cannot write into " + QuotedPath(place.path) + ": " + std::strerror(reason));
  }
}

/// Throws UsageError if one of them has changed since the run began.
void OutputFolder::CheckEarlierFiles() const {
  for (auto const& [name, known] : known_) {
    if (LookAt(path_, name).kind != Kind::Free && !IsUnchanged(name)) RefuseChange(PathOf(name));
  }
  PlaceInFolder const manifest = LookAt(path_, kManifestName);
  if (manifest.kind != Kind::Free && known_.count(kManifestName) == 0)
    throw UsageError(QuotedPath(manifest.path) + " appeared during this run" + kAdvice);
}

std::string OutputFolder::Stage(std::string const& name) {
  if (std::find(plan_.files.begin(), plan_.files.end(), name) == plan_.files.end())
    throw std::logic_error("not in the plan of the output folder: " + name);
  staged_.push_back(name);
  return UnfinishedPathOf(name);
}

void OutputFolder::Commit(std::string const& closingText) {
  std::string own;
  ranks_.Together([this, &own] {
    StdoutToFile::CheckAll();
    unfinished_.Check();
    own = SettleStaged();
  });
  std::string const all = ranks_.GatherOnFirst(own);
  ranks_.Together([this, &all] {
    if (ranks_.IsFirst()) PrepareMove(all);
  });
  if (ranks_.IsFirst()) std::cout << closingText;
  FlushStandardOutput(ranks_);

  // From here on a signal waits. Every rank reaches this point before the first rank begins to move files.
  NoInterruption const wait;
  ranks_.Barrier();
  ranks_.Together([this] {
    if (!ranks_.IsFirst()) return;
    unfinished_.Check();
    CheckEarlierFiles();  // printing may have taken a long time
    CheckPlaces();
    MoveManifest(both_);
    MoveStaged();
    RemoveOutdated();
    RenewManifest();
  });
  for (std::string const& folder : madeFolders_) SettleFolder(fs::path(folder).parent_path().string());
  madeFolders_.clear();
}

/// One line for each file: size, checksum and name.
std::string OutputFolder::SettleStaged() const {
  std::ostringstream text;
  for (std::string const& name : staged_) {
    Fingerprint const found = Settle(UnfinishedPathOf(name));
    text << found.size << ' ' << found.crc << ' ' << name << '\n';
  }
  return text.str();
}

/// Does everything that needs space on the disk: the folders, and a manifest that lists whatever a run may leave
/// behind if it dies while it moves files.
void OutputFolder::PrepareMove(std::string const& staged) {
  CheckEarlierFiles();
  CheckPlaces();
  next_.command = plan_.command;
  std::istringstream in(staged);
  for (Manifest::File file;
       in >> file.fingerprint.size >> file.fingerprint.crc && std::getline(in >> std::ws, file.name);)
    next_.files.push_back(file);

  std::set<std::string> ours(earlier_.folders.begin(), earlier_.folders.end());
  for (std::string const& name : FoldersOf(plan_.files)) {
    NoInterruption const wait;
    std::string const folder = PathOf(name);
    if (mkdir(folder.c_str(), 0777) == 0) {
      madeFolders_.push_back(fs::absolute(folder).string());
      ours.insert(name);
    } else if (errno != EEXIST) {
      throw UsageError("cannot create the folder " + QuotedPath(folder) + ": " + std::strerror(errno));
    }
  }
  next_.folders.assign(ours.begin(), ours.end());

  both_ = next_;
  both_.files.insert(both_.files.end(), earlier_.files.begin(), earlier_.files.end());
  WriteManifest(both_);
}

/// Among the unfinished files.
void OutputFolder::WriteManifest(Manifest const& manifest) const {
  std::string const file = UnfinishedPathOf(kManifestName);
  WriteText(file, manifest.Text());
  Settle(file);
}

/// Checks the place once more, so that nothing is replaced that has appeared or changed since the last check.
void OutputFolder::Move(std::string const& name) const {
  std::string const from = UnfinishedPathOf(name);
  PlaceInFolder const place = LookAt(path_, name);
  std::string const to = PathOf(name);
  bool hasMoved = false;
  if (place.kind == Kind::Free) {
    hasMoved = MoveToFreePlace(from.c_str(), to.c_str());
  } else {
    if (!IsUnchanged(name)) RefuseChange(place.path);
    hasMoved = std::rename(from.c_str(), to.c_str()) == 0;
  }
  if (!hasMoved) throw UsageError("cannot write " + QuotedPath(to) + ": " + std::strerror(errno));
}

/// @param[in] manifest  the one among the unfinished files
void OutputFolder::MoveManifest(Manifest const& manifest) {
  Move(kManifestName);
  Know(kManifestName, {FingerprintOfText(manifest.Text())});
  SettleFolder(path_);
}

/// Moves the files of all ranks. One rank does this alone, because only it can recognise the earlier files.
void OutputFolder::MoveStaged() {
  std::vector<std::string> names;
  for (Manifest::File const& file : next_.files) names.push_back(file.name);
  auto const ownCount = static_cast<std::ptrdiff_t>(staged_.size());
  std::rotate(names.begin(), names.begin() + ownCount, names.end());

  std::set<std::string> folders = {""};
  for (std::string const& name : names) folders.insert(fs::path(name).parent_path().string());
  // A network file system then shows what other machines have written.
  for (std::string const& folder : folders) SettleFolder(UnfinishedPathOf(folder));
  bool hasMoved = false;
  for (std::string const& name : names) {
    try {
      Move(name);
    } catch (UsageError const& error) {
      if (!hasMoved) throw;
      throw UsageError(error.what() + std::string("; some results in ") + QuotedPath(path_) +
                       " are new and some are old, and the next run replaces both");
    }
    hasMoved = true;
  }
  for (std::string const& folder : folders) SettleFolder(PathOf(folder));
}

/// Removes earlier files that have no successor. A file that cannot be removed stays in the manifest. A file that
/// changed at the last moment belongs to somebody else and stays.
void OutputFolder::RemoveOutdated() {
  std::set<std::string> present;
  for (Manifest::File const& file : next_.files) present.insert(file.name);
  for (Manifest::File const& file : earlier_.files) {
    if (present.count(file.name) > 0 || known_.count(file.name) == 0) continue;
    try {
      if (!IsUnchanged(file.name)) continue;
    } catch (UsageError const&) {
      continue;  // it can no longer be read
    }
    if (unlink(PathOf(file.name).c_str()) != 0 && errno != ENOENT) next_.files.push_back(file);
  }
  std::vector<std::string> folders;
  std::swap(folders, next_.folders);
  for (auto folder = folders.rbegin(); folder != folders.rend(); ++folder) {
    PlaceInFolder const place = LookAt(path_, *folder);
    if (place.kind == Kind::Folder && rmdir(place.path.c_str()) != 0) next_.folders.push_back(*folder);
  }
  std::sort(next_.folders.begin(), next_.folders.end());
}

/// All results are in place, and the manifest lists them together with the earlier ones. If the disk does not take a
/// manifest without the earlier ones, the present one stays, and is still correct.
void OutputFolder::RenewManifest() {
  try {
    WriteManifest(next_);
    MoveManifest(next_);
  } catch (UsageError const&) {
    return;
  }
}

/// The last rank to leave removes the folders, without waiting for others. Only empty folders are removed, because
/// another run may already use them.
void OutputFolder::Leave() {
  unfinished_.Leave();
  for (auto folder = madeFolders_.rbegin(); folder != madeFolders_.rend(); ++folder) rmdir(folder->c_str());
  madeFolders_.clear();
}

}  // namespace zyngrad
