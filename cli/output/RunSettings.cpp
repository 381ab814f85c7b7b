#include "cli/output/RunSettings.h"

#include <charconv>
#include <cstddef>
#include <filesystem>
#include <system_error>

#include "cli/base/OneLine.h"
#include "cli/base/UsageError.h"
#include "cli/output/OutputFile.h"

namespace zyngrad {
namespace {

constexpr std::size_t kLongestName =
    1023;  // the operators truncate longer names, and would read another file
constexpr std::size_t kExtensionLength = 4;

std::string SettingsName(int rank) { return "settings.rank" + std::to_string(rank) + ".rbf"; }

}  // namespace

std::string ShortestText(double value) {
  char buffer[32];
  auto const result = std::to_chars(buffer, buffer + sizeof buffer, value);
  return {buffer, result.ptr};
}

std::string WriteSettingsText(std::string const& file, std::string const& text) {
  if (file.size() > kLongestName) {
    throw UsageError("the name of the settings file " + Quoted(file) + " is longer than " +
                     std::to_string(kLongestName) + " characters");
  }
  // A file that already exists there may be a link to somewhere else.
  std::error_code ignored;
  std::filesystem::remove(file, ignored);
  WriteText(file, text);
  // An operator replaces the last four characters, whatever they are, by ".rbf".
  return file.substr(0, file.size() - kExtensionLength) + ".dat";
}

std::vector<std::string> RunSettingsFiles(Ranks const& ranks) {
  std::vector<std::string> files;
  files.reserve(static_cast<std::size_t>(ranks.count()));
  for (int rank = 0; rank < ranks.count(); ++rank) files.push_back(SettingsName(rank));
  return files;
}

void StageRunSettings(Ranks const& ranks, reference_host::HostPartition& partition, OutputFolder& folder,
                      std::string const& text) {
  ranks.Together([&] {
    std::string const file = folder.Stage(SettingsName(ranks.rank()));
    partition.SetBaseFileName(WriteSettingsText(file, text));
  });
}

}  // namespace zyngrad
