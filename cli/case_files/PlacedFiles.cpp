#include "cli/case_files/PlacedFiles.h"

#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <set>
#include <utility>

#include "cli/base/OutputNames.h"
#include "cli/base/UsageError.h"
#include "cli/output/Fingerprint.h"
#include "cli/output/MoveFile.h"
#include "cli/output/OutputFile.h"

namespace zyngrad {
namespace {

namespace fs = std::filesystem;

[[noreturn]] void FailToWrite(std::string const& path, std::string const& why) {
  throw UsageError("cannot write " + QuotedPath(path) + ": " + why);
}

/// Makes an empty file with a name of its own beside `path`, with the permissions of a new file.
std::string MakeHidden(std::string const& path) {
  fs::path const place(path);
  std::string name = (place.parent_path() / ("." + place.filename().string() + ".zyngrad-XXXXXX")).string();
  int const file = mkstemp(name.data());
  if (file < 0) FailToWrite(path, std::strerror(errno));
  mode_t const mask = umask(0);
  umask(mask);
  fchmod(file, 0666 & ~mask);
  close(file);
  return name;
}

std::string FolderOf(std::string const& path) {
  std::string const folder = fs::path(path).parent_path().string();
  return folder.empty() ? "." : folder;
}

}  // namespace

PlacedFiles::PlacedFiles(std::function<bool(std::string const&)> isOurs, bool overwrite)
    : isOurs_(std::move(isOurs)), overwrite_(overwrite) {
  cleanup_.emplace([this] { PutBack(); });
}

PlacedFiles::~PlacedFiles() {
  NoInterruption const wait;
  PutBack();
}

/// What the system knows of a file. A change of its content shows in the times.
std::optional<std::string> PlacedFiles::StateOf(std::string const& path) {
  struct stat s = {};
  if (lstat(path.c_str(), &s) != 0) return std::nullopt;
  std::string state;
  for (long long const number :
       {static_cast<long long>(s.st_dev), static_cast<long long>(s.st_ino), static_cast<long long>(s.st_size),
        static_cast<long long>(s.st_mtim.tv_sec), static_cast<long long>(s.st_mtim.tv_nsec)})
    state += std::to_string(number) + ' ';
  return state;
}

void PlacedFiles::CheckOne(std::string const& path) const {
  std::error_code error;
  fs::file_type const type = fs::symlink_status(path, error).type();
  if (type == fs::file_type::not_found) return;
  if (type == fs::file_type::none) FailToWrite(path, error.message());
  if (type == fs::file_type::directory) FailToWrite(path, "it is a folder");
  if (overwrite_ || (type == fs::file_type::regular && isOurs_(path))) return;
  FailToWrite(path, "zyngrad did not write it, or it has changed since; --overwrite replaces it");
}

void PlacedFiles::Check(std::string const& path, std::string const& twin) const {
  std::string const folder = FolderOf(path);
  if (access(folder.c_str(), W_OK | X_OK) != 0) FailToWrite(path, std::strerror(errno));
  CheckOne(path);
  CheckOne(twin);
}

std::string const& PlacedFiles::Begin(std::string const& path, std::string const& twin) {
  Check(path, twin);
  NoInterruption const wait;
  files_.push_back({path, twin, {}, StateOf(path), StateOf(twin)});
  return files_.back().hidden = MakeHidden(path);
}

void PlacedFiles::End() const { Settle(files_.back().hidden); }

void PlacedFiles::Write(std::string const& path, std::string const& twin, std::string const& content) {
  WriteText(Begin(path, twin), content);
  End();
}

void PlacedFiles::PlaceOne(File& file) {
  NoInterruption const wait;
  if (StateOf(file.path) != file.before || StateOf(file.twin) != file.twinBefore)
    FailToWrite(file.path, "it was changed during this run");
  if (file.twinBefore) {
    std::string const hidden = MakeHidden(file.twin);
    if (std::rename(file.twin.c_str(), hidden.c_str()) != 0) {
      int const reason = errno;
      unlink(hidden.c_str());
      FailToWrite(file.twin, std::strerror(reason));
    }
    file.hiddenTwin = hidden;
  }
  if (!file.before) {
    if (!MoveToFreePlace(file.hidden.c_str(), file.path.c_str()))
      FailToWrite(file.path, std::strerror(errno));
    file.placed = StateOf(file.path);
    return;
  }
  // One step where the file system can do it, so that there is always a file; else two.
  if (!ExchangeFiles(file.hidden.c_str(), file.path.c_str())) {
    std::string const old = MakeHidden(file.path);
    if (std::rename(file.path.c_str(), old.c_str()) != 0 ||
        !MoveToFreePlace(file.hidden.c_str(), file.path.c_str())) {
      int const reason = errno;
      if (StateOf(file.path)) {
        unlink(old.c_str());  // still empty: the first step has failed
      } else {
        std::rename(old.c_str(), file.path.c_str());
      }
      FailToWrite(file.path, std::strerror(reason));
    }
    file.hidden = old;
  }
  file.placed = StateOf(file.path);
  file.hasReplaced = true;
}

void PlacedFiles::Place() {
  std::set<std::string> folders;
  for (File& file : files_) {
    PlaceOne(file);
    folders.insert(FolderOf(file.path));
  }
  for (std::string const& folder : folders) SettleFolder(folder);
}

void PlacedFiles::Keep() {
  NoInterruption const wait;
  for (File const& file : files_) {
    if (file.hasReplaced) unlink(file.hidden.c_str());
    if (!file.hiddenTwin.empty()) unlink(file.hiddenTwin.c_str());
  }
  files_.clear();
}

/// The latest first. What cannot be put back stays under its hidden name.
void PlacedFiles::PutBack() {
  for (auto file = files_.rbegin(); file != files_.rend(); ++file) {
    if (file->placed) {
      if (StateOf(file->path) != file->placed) continue;  // somebody has changed it since
      if (file->hasReplaced) {
        std::rename(file->hidden.c_str(), file->path.c_str());
      } else {
        unlink(file->path.c_str());
      }
    } else if (!file->hidden.empty()) {
      unlink(file->hidden.c_str());
    }
    if (!file->hiddenTwin.empty()) MoveToFreePlace(file->hiddenTwin.c_str(), file->twin.c_str());
  }
  files_.clear();
}

}  // namespace zyngrad
