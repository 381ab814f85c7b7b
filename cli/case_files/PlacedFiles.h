#pragma once

#include <sys/stat.h>

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "cli/base/Interruption.h"

namespace zyngrad {

/// Files that one process puts into folders of the user: all of them or none.
///
/// Each file is written beside its place under a hidden name. Place moves all of them to their places and keeps what
/// was there, until Keep removes it. Without Keep, the destructor puts everything back, as does a signal that ends the
/// program. Only a process that is killed may leave files with hidden names, ".NAME.zyngrad-...".
class PlacedFiles {
 public:
  /// @param[in] isOurs     whether an existing file may be replaced because a run has written it
  /// @param[in] overwrite  whether files of others may be replaced, too
  PlacedFiles(std::function<bool(std::string const&)> isOurs, bool overwrite);
  ~PlacedFiles();
  PlacedFiles(PlacedFiles const&) = delete;
  PlacedFiles& operator=(PlacedFiles const&) = delete;

  /// Throws UsageError unless a file can be written to `path`: its folder must be writable, and what is there must be
  /// replaceable. The same for `twin`, which is removed when the file is placed.
  void Check(std::string const& path, std::string const& twin) const;

  /// Writes a file under a hidden name and makes sure that it is on the disk. Throws UsageError.
  void Write(std::string const& path, std::string const& twin, std::string const& content);

  /// The same for content in pieces: an empty file under a hidden name, which is returned. Write it and close it, then
  /// call End.
  std::string const& Begin(std::string const& path, std::string const& twin);
  void End() const;

  /// Moves all files to their places. Throws UsageError if that fails or if something has changed since Write; the
  /// destructor then puts everything back.
  void Place();

  /// Removes what the files replaced. After this, the destructor changes nothing.
  void Keep();

 private:
  struct File {
    std::string path, twin;
    std::string hidden;  ///< the new file; once placed, what it replaced, if hasReplaced
    std::optional<std::string> before, twinBefore;  ///< what the system knew of those that existed at Write
    std::optional<std::string> placed = {};         ///< what it knew of the new file at its place
    bool hasReplaced = false;
    std::string hiddenTwin = {};  ///< the twin, once it has been moved out of the way
  };

  void CheckOne(std::string const& path) const;
  static std::optional<std::string> StateOf(std::string const& path);
  void PlaceOne(File& file);
  void PutBack();

  std::function<bool(std::string const&)> isOurs_;
  bool overwrite_;
  std::vector<File> files_;
  std::optional<Cleanup> cleanup_;
};

}  // namespace zyngrad
