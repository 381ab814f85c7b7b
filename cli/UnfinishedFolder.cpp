#include "cli/UnfinishedFolder.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstring>
#include <filesystem>
#include <set>
#include <sstream>
#include <system_error>
#include <utility>

#include "cli/OneLine.h"
#include "cli/OutputNames.h"
#include "cli/UsageError.h"

namespace zyngrad {
namespace {

namespace fs = std::filesystem;

const std::string kMarker = "zyngrad unfinished files, format 1";
const std::string kFileWord = "file ", kFolderWord = "folder ";

std::string Self() {
  char host[256] = "";
  gethostname(host, sizeof host - 1);
  return "process " + std::to_string(getpid()) + " on " + OneLine(host);
}

bool IsMarked(const std::string& listing) { return listing.rfind(kMarker + '\n', 0) == 0; }

/// The second of the lines that end, behind the marker.
std::string HolderIn(const std::string& listing) {
  const std::size_t begin = kMarker.size() + 1;
  const std::size_t end = listing.find('\n', begin);
  if (!IsMarked(listing) || end == std::string::npos) return "";
  return OneLine(listing.substr(begin, end - begin));
}

/// What a run has said that it may put into the folder.
struct Listed {
  std::vector<std::string> files, folders;
};

/// A last line that does not end was cut off.
Listed Parse(const std::string& listing) {
  Listed listed;
  std::istringstream in(listing);
  for (std::string line; std::getline(in, line) && !in.eof();) {
    for (const auto& [word, names] :
         {std::pair(kFileWord, &listed.files), std::pair(kFolderWord, &listed.folders)})
      if (line.rfind(word, 0) == 0 && IsSafeName(line.substr(word.size())))
        names->push_back(line.substr(word.size()));
  }
  return listed;
}

[[noreturn]] void Refuse(const std::string& path) {
  throw UsageError(QuotedPath(path) +
                   " is not from a run of zyngrad: move it away, or choose another output folder with -o");
}

/// Throws UsageError when the folder holds anything but the lock's file and what is listed.
void CheckForOthers(const std::string& folder, const std::string& listing) {
  if (!IsMarked(listing)) Refuse(folder);
  const Listed listed = Parse(listing);
  const std::set<std::string> files(listed.files.begin(), listed.files.end());
  const std::set<std::string> folders(listed.folders.begin(), listed.folders.end());
  for (fs::recursive_directory_iterator entry(folder), end; entry != end; ++entry) {
    const std::string name = entry->path().lexically_relative(folder).string();
    const fs::file_type type = entry->symlink_status().type();
    const bool isOurs = (type == fs::file_type::regular && (name == kLockFile || files.count(name) > 0)) ||
                        (type == fs::file_type::directory && folders.count(name) > 0);
    if (!isOurs) Refuse(entry->path().string());
  }
}

/// The lock's file alone, then.
bool HoldsOneThing(const std::string& folder) {
  std::error_code error;
  int count = 0;
  for (fs::directory_iterator entry(folder, error), end; !error && entry != end; entry.increment(error))
    ++count;
  return count == 1;
}

/// The folders on the way to the files, each once, outer ones first.
std::vector<std::string> FoldersOf(const std::vector<std::string>& files) {
  std::set<std::string> folders;  // a folder's name sorts before those of the folders inside
  for (const std::string& file : files)
    for (fs::path way = fs::path(file).parent_path(); !way.empty(); way = way.parent_path())
      folders.insert(way.string());
  return {folders.begin(), folders.end()};
}

}  // namespace

UnfinishedFolder::UnfinishedFolder(std::string path, std::vector<std::string> files,
                                   FolderLock::LockCall lockCall)
    : path_(std::move(path)), files_(std::move(files)), folders_(FoldersOf(files_)), lock_(lockCall) {}

FolderLock::Outcome UnfinishedFolder::Take() {
  using Outcome = FolderLock::Outcome;
  const Outcome outcome = lock_.Take(path_, Listing());
  if (outcome == Outcome::Unknown) {
    if (!IsMarked(FolderLock::ContentIn(path_))) Refuse(path_);
    throw UsageError(QuotedPath(path_) + " is in use, or left by a run that was killed (" + PresentHolder() +
                     "); this file system has no locks: remove the folder if that run is gone");
  }
  if (outcome != Outcome::Taken) return outcome;
  try {
    const std::string listing = lock_.Content();
    CheckForOthers(path_, listing);
    const Listed left = Parse(listing);
    const int reason = RemoveListed(left.files, left.folders);
    for (const fs::directory_entry& entry : fs::directory_iterator(path_)) {
      if (entry.path().filename() == kLockFile) continue;
      throw UsageError("cannot remove " + QuotedPath(entry.path().string()) + ", which a run has left" +
                       (reason != 0 ? std::string(": ") + std::strerror(reason) : ""));
    }
  } catch (const fs::filesystem_error& error) {
    lock_.GiveUp();
    throw UsageError("cannot read " + QuotedPath(path_) + ": " + error.code().message());
  } catch (...) {
    lock_.GiveUp();  // what stands here is not for Leave to remove
    throw;
  }
  lock_.Share(Listing());
  holder_ = Holder();
  for (const std::string& folder : folders_) {
    std::error_code error;
    fs::create_directory(fs::path(path_) / folder, error);
    if (error)
      throw UsageError("cannot make the folder " + QuotedPath(path_ + '/' + folder) + ": " + error.message());
  }
  return Outcome::Taken;
}

std::string UnfinishedFolder::Holder() const { return HolderIn(lock_.Content()); }

void UnfinishedFolder::Join(const std::string& holder) {
  lock_.Join(path_);
  holder_ = holder;
  if (Holder() == holder) return;
  lock_.GiveUp();
  throw UsageError(QuotedPath(path_) + " is in use by another run");
}

std::string UnfinishedFolder::PresentHolder() const {
  const std::string holder = HolderIn(FolderLock::ContentIn(path_));
  return holder.empty() ? "another process" : holder;
}

void UnfinishedFolder::Check() const {
  if (!lock_.IsStillThere() || Holder() != holder_)
    throw UsageError(QuotedPath(path_) + " was removed or replaced during this run");
}

void UnfinishedFolder::Leave() {
  if (!lock_.Release()) return;
  // Where a signal ends the run, an operator may be about to write its settings file.
  constexpr int kMostTries = 3;
  int reason = 0;
  for (int attempt = 0; attempt < kMostTries && !(attempt > 0 && HoldsOneThing(path_)); ++attempt)
    reason = RemoveListed(files_, folders_);
  if (reason != 0 && !HoldsOneThing(path_)) {
    lock_.GiveUp();
    return;
  }
  lock_.Remove();
  rmdir(path_.c_str());  // should somebody have put a file there, it stays
}

/// @return the system's reason, where something could not be removed, else 0
int UnfinishedFolder::RemoveListed(const std::vector<std::string>& files,
                                   const std::vector<std::string>& folders) const {
  int reason = 0;
  const auto remove = [this, &reason](const std::string& name, PlaceInFolder::Kind kind,
                                      int (*by)(const char*)) {
    const PlaceInFolder place = LookAt(path_, name);
    if (place.kind == kind && by(place.path.c_str()) != 0 && errno != ENOENT && reason == 0) reason = errno;
  };
  for (const std::string& file : files) remove(file, PlaceInFolder::Kind::File, unlink);
  for (auto folder = folders.rbegin(); folder != folders.rend(); ++folder)
    remove(*folder, PlaceInFolder::Kind::Folder, rmdir);
  return reason;
}

std::string UnfinishedFolder::Listing() const {
  std::string text = kMarker + '\n' + Self() + '\n';
  for (const std::string& folder : folders_) text.append(kFolderWord).append(folder) += '\n';
  for (const std::string& file : files_) text.append(kFileWord).append(file) += '\n';
  return text;
}

}  // namespace zyngrad
