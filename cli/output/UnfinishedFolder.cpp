#include "cli/output/UnfinishedFolder.h"

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

#include "cli/base/OneLine.h"
#include "cli/base/OutputNames.h"
#include "cli/base/UsageError.h"

namespace zyngrad {
namespace {

namespace fs = std::filesystem;

std::string const kMarker = "zyngrad unfinished files, format 1";
std::string const kFileWord = "file ", kFolderWord = "folder ";

std::string Self() {
  char host[256] = "";
  gethostname(host, sizeof host - 1);
  return "process " + std::to_string(getpid()) + " on " + OneLine(host);
}

bool IsMarked(std::string const& listing) { return listing.rfind(kMarker + '\n', 0) == 0; }

/// The second complete line, which follows the marker.
std::string HolderIn(std::string const& listing) {
  std::size_t const begin = kMarker.size() + 1;
  std::size_t const end = listing.find('\n', begin);
  if (!IsMarked(listing) || end == std::string::npos) return "";
  return OneLine(listing.substr(begin, end - begin));
}

/// What a run has announced that it may put into the folder.
struct Listed {
  std::vector<std::string> files, folders;
};

/// Ignores a last line without an end, which was cut off.
Listed Parse(std::string const& listing) {
  Listed listed;
  std::istringstream in(listing);
  for (std::string line; std::getline(in, line) && !in.eof();) {
    for (auto const& [word, names] :
         {std::pair(kFileWord, &listed.files), std::pair(kFolderWord, &listed.folders)})
      if (line.rfind(word, 0) == 0 && IsSafeName(line.substr(word.size())))
        names->push_back(line.substr(word.size()));
  }
  return listed;
}

[[noreturn]] void Refuse(std::string const& path) {
  throw UsageError(QuotedPath(path) +
                   " is not from a run of zyngrad: move it away, or choose another output folder with -o");
}

/// Throws UsageError if the folder contains anything but the lock's file and what is listed.
void CheckForOthers(std::string const& folder, std::string const& listing) {
  if (!IsMarked(listing)) Refuse(folder);
  Listed const listed = Parse(listing);
  std::set<std::string> const files(listed.files.begin(), listed.files.end());
  std::set<std::string> const folders(listed.folders.begin(), listed.folders.end());
  for (fs::recursive_directory_iterator entry(folder), end; entry != end; ++entry) {
    std::string const name = entry->path().lexically_relative(folder).string();
    fs::file_type const type = entry->symlink_status().type();
    bool const isOurs = (type == fs::file_type::regular && (name == kLockFile || files.count(name) > 0)) ||
                        (type == fs::file_type::directory && folders.count(name) > 0);
    if (!isOurs) Refuse(entry->path().string());
  }
}

/// Whether the folder contains only the lock's file.
bool HoldsOneThing(std::string const& folder) {
  std::error_code error;
  int count = 0;
  for (fs::directory_iterator entry(folder, error), end; !error && entry != end; entry.increment(error))
    ++count;
  return count == 1;
}

}  // namespace

UnfinishedFolder::UnfinishedFolder(std::string path, std::vector<std::string> files,
                                   FolderLock::LockCall lockCall)
    : path_(std::move(path)), files_(std::move(files)), folders_(FoldersOf(files_)), lock_(lockCall) {}

FolderLock::Outcome UnfinishedFolder::Take() {
  using Outcome = FolderLock::Outcome;
  Outcome const outcome = lock_.Take(path_, Listing());
  if (outcome == Outcome::Unknown) {
    if (!IsMarked(FolderLock::ContentIn(path_))) Refuse(path_);
    throw UsageError(QuotedPath(path_) + " is in use or was left by a run that was killed (" +
                     PresentHolder() +
                     "); this file system has no locks: remove the folder if that run is gone");
  }
  if (outcome != Outcome::Taken) return outcome;
  try {
    std::string const listing = lock_.Content();
    CheckForOthers(path_, listing);
    Listed const left = Parse(listing);
    int const reason = RemoveListed(left.files, left.folders);
    for (fs::directory_entry const& entry : fs::directory_iterator(path_)) {
      if (entry.path().filename() == kLockFile) continue;
      throw UsageError("cannot remove " + QuotedPath(entry.path().string()) + ", which an earlier run left" +
                       (reason != 0 ? std::string(": ") + std::strerror(reason) : ""));
    }
  } catch (fs::filesystem_error const& error) {
    lock_.GiveUp();
    throw UsageError("cannot read " + QuotedPath(path_) + ": " + error.code().message());
  } catch (...) {
    lock_.GiveUp();  // so that Leave does not remove what is here
    throw;
  }
  lock_.Share(Listing());
  holder_ = Holder();
  for (std::string const& folder : folders_) {
    std::error_code error;
    fs::create_directory(fs::path(path_) / folder, error);
    if (error)
      throw UsageError("cannot create the folder " + QuotedPath(path_ + '/' + folder) + ": " +
                       error.message());
  }
  return Outcome::Taken;
}

std::string UnfinishedFolder::Holder() const { return HolderIn(lock_.Content()); }

void UnfinishedFolder::Join(std::string const& holder) {
  lock_.Join(path_);
  holder_ = holder;
  if (Holder() == holder) return;
  lock_.GiveUp();
  throw UsageError(QuotedPath(path_) + " is in use by another run");
}

std::string UnfinishedFolder::PresentHolder() const {
  std::string const holder = HolderIn(FolderLock::ContentIn(path_));
  return holder.empty() ? "another process" : holder;
}

void UnfinishedFolder::Check() const {
  if (!lock_.IsStillThere() || Holder() != holder_)
    throw UsageError(QuotedPath(path_) + " was removed or replaced during this run");
}

void UnfinishedFolder::Leave() {
  if (!lock_.Release()) return;
  // When a signal ends the run, an operator may be about to write its settings file.
  constexpr int kMostRemovals = 3;
  int reason = 0;
  for (int attempt = 0; attempt < kMostRemovals && !(attempt > 0 && HoldsOneThing(path_)); ++attempt)
    reason = RemoveListed(files_, folders_);
  if (reason != 0 && !HoldsOneThing(path_)) {
    lock_.GiveUp();
    return;
  }
  lock_.Remove();
  rmdir(path_.c_str());  // does nothing if somebody has put a file there
}

/// @return the system's error code if something could not be removed, otherwise 0
int UnfinishedFolder::RemoveListed(std::vector<std::string> const& files,
                                   std::vector<std::string> const& folders) const {
  int reason = 0;
  auto const remove = [this, &reason](std::string const& name, PlaceInFolder::Kind kind,
                                      int (*by)(char const*)) {
    PlaceInFolder const place = LookAt(path_, name);
    if (place.kind == kind && by(place.path.c_str()) != 0 && errno != ENOENT && reason == 0) reason = errno;
  };
  for (std::string const& file : files) remove(file, PlaceInFolder::Kind::File, unlink);
  for (auto folder = folders.rbegin(); folder != folders.rend(); ++folder)
    remove(*folder, PlaceInFolder::Kind::Folder, rmdir);
  return reason;
}

std::string UnfinishedFolder::Listing() const {
  std::string text = kMarker + '\n' + Self() + '\n';
  for (std::string const& folder : folders_) text.append(kFolderWord).append(folder) += '\n';
  for (std::string const& file : files_) text.append(kFileWord).append(file) += '\n';
  return text;
}

}  // namespace zyngrad
