#include "cli/RunSettings.h"

#include <cerrno>
#include <charconv>
#include <cstddef>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <system_error>

#include "cli/OneLine.h"
#include "cli/UsageError.h"

namespace zyngrad {
namespace {

constexpr std::size_t kLongestName = 1023;  // the operators cut what is longer, and would read another file
constexpr std::size_t kExtensionLength = 4;

std::string SettingsName(int rank) { return "settings.rank" + std::to_string(rank); }

}  // namespace

std::string ShortestText(double value) {
  char buffer[32];
  const auto result = std::to_chars(buffer, buffer + sizeof buffer, value);
  return {buffer, result.ptr};
}

std::string WriteSettingsText(const std::string& file, const std::string& text) {
  if (file.size() > kLongestName) {
    throw UsageError("the name of the settings file " + Quoted(file) + " is longer than " +
                     std::to_string(kLongestName) + " characters");
  }
  // What an interrupted run left there may be a link to somewhere else.
  std::error_code ignored;
  std::filesystem::remove(file, ignored);
  std::ofstream out(file, std::ios::trunc);
  out << text << std::flush;
  if (!out) throw UsageError("cannot write " + Quoted(file) + ": " + std::strerror(errno));
  // An operator puts ".rbf" in the place of the last four characters, whatever they are.
  return file.substr(0, file.size() - kExtensionLength) + ".dat";
}

void StageRunSettings(const Ranks& ranks, reference_host::HostPartition& partition, OutputFolder& folder,
                      const std::optional<std::string>& text) {
  if (text) {
    ranks.Together([&] {
      const std::string own = SettingsName(ranks.rank());
      const std::string file = folder.StageAs(own + ".rbf", own + ".part.rbf");
      partition.SetBaseFileName(WriteSettingsText(file, *text));
    });
  }
  for (int rank = text ? ranks.count() : 0; folder.Has(SettingsName(rank) + ".rbf"); ++rank)
    folder.Discard(SettingsName(rank) + ".rbf");
}

}  // namespace zyngrad
