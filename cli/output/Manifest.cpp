#include "cli/output/Manifest.h"

#include <charconv>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <fstream>
#include <nlohmann/json.hpp>

#include "cli/base/OutputNames.h"
#include "cli/base/UsageError.h"

namespace zyngrad {
namespace {

using nlohmann::ordered_json;

constexpr char const* kProgram = "zyngrad";
constexpr int kFormat = 1;
constexpr std::size_t kLargest = std::size_t{1} << 26;  // some 600 000 files

std::string Hexadecimal(std::uint64_t value) {
  char text[17];
  std::snprintf(text, sizeof text, "%016llx", static_cast<unsigned long long>(value));
  return text;
}

bool ReadHexadecimal(std::string const& text, std::uint64_t& value) {
  char const* const end = text.data() + text.size();
  auto const result = std::from_chars(text.data(), end, value, 16);
  return result.ec == std::errc() && result.ptr == end && text.size() == 16;
}

/// Turns the content of a manifest file into a Manifest. The functions return whether the content is valid.
class ManifestReader {
 public:
  explicit ManifestReader(Manifest& manifest) : manifest_(manifest) {}

  bool Read(ordered_json const& json) {
    if (!json.is_object() || json.size() != 5) return false;
    if (json.value("writtenBy", ordered_json()) != kProgram) return false;
    if (json.value("format", ordered_json()) != kFormat) return false;
    ordered_json const command = json.value("command", ordered_json());
    if (!command.is_string()) return false;
    manifest_.command = command.get<std::string>();
    return ReadFiles(json.value("files", ordered_json())) &&
           ReadFolders(json.value("folders", ordered_json()));
  }

 private:
  static bool IsName(ordered_json const& json) {
    return json.is_string() && IsSafeName(json.get_ref<std::string const&>()) && json != kManifestName;
  }

  bool ReadFiles(ordered_json const& files) {
    if (!files.is_array()) return false;
    for (ordered_json const& file : files) {
      if (!file.is_object() || file.size() != 3) return false;
      ordered_json const name = file.value("name", ordered_json()), size = file.value("size", ordered_json()),
                         crc = file.value("crc64", ordered_json());
      if (!IsName(name) || !size.is_number_unsigned() || !crc.is_string()) return false;
      Manifest::File known = {name.get<std::string>(), {size.get<std::uint64_t>(), 0}};
      if (!ReadHexadecimal(crc.get<std::string>(), known.fingerprint.crc)) return false;
      manifest_.files.push_back(std::move(known));
    }
    return true;
  }

  bool ReadFolders(ordered_json const& folders) {
    if (!folders.is_array()) return false;
    for (ordered_json const& folder : folders) {
      if (!IsName(folder)) return false;
      manifest_.folders.push_back(folder.get<std::string>());
    }
    return true;
  }

  Manifest& manifest_;
};

[[noreturn]] void Fail(std::string const& path, std::string const& what) {
  throw UsageError(QuotedPath(path) + ' ' + what + ": move it away, or choose another output folder with -o");
}

/// Throws UsageError if the file is larger than kLargest.
std::string Content(std::string const& path) {
  std::ifstream in(path, std::ios::binary);
  if (!in) Fail(path, "cannot be read");
  in.seekg(0, std::ios::end);
  std::streamoff const size = in.tellg();
  if (size < 0 || size > static_cast<std::streamoff>(kLargest)) Fail(path, "is too large for a manifest");
  std::string text(static_cast<std::size_t>(size), '\0');
  in.seekg(0);
  if (!in.read(text.data(), size)) Fail(path, "cannot be read");
  return text;
}

}  // namespace

std::string Manifest::Text() const {
  ordered_json json;
  json["writtenBy"] = kProgram;
  json["format"] = kFormat;
  json["command"] = command;
  json["files"] = ordered_json::array();
  for (File const& file : files) {
    json["files"].push_back(
        {{"name", file.name}, {"size", file.fingerprint.size}, {"crc64", Hexadecimal(file.fingerprint.crc)}});
  }
  json["folders"] = folders;
  return json.dump(2) + '\n';
}

std::optional<Manifest> Manifest::Read(std::string const& folder) {
  PlaceInFolder const place = LookAt(folder, kManifestName);
  if (place.kind == PlaceInFolder::Kind::Free) return std::nullopt;
  if (place.kind != PlaceInFolder::Kind::File) Fail(place.path, "is not a file that zyngrad wrote");
  ordered_json const json = ordered_json::parse(Content(place.path), nullptr, false);
  Manifest manifest;
  if (!ManifestReader(manifest).Read(json)) Fail(place.path, "is not a manifest of this version of zyngrad");
  return manifest;
}

}  // namespace zyngrad
