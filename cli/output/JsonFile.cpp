#include "cli/output/JsonFile.h"

#include <nlohmann/json.hpp>

#include "cli/base/Version.h"
#include "cli/output/OutputFile.h"

namespace zyngrad {

nlohmann::ordered_json StartResults(std::string const& command) {
  return {{"program", "zyngrad"}, {"version", ZYNGRAD_VERSION}, {"command", command}};
}

std::string JsonText(nlohmann::ordered_json const& json) {
  return json.dump(2, ' ', false, nlohmann::ordered_json::error_handler_t::replace) + '\n';
}

void WriteJson(std::string const& file, nlohmann::ordered_json const& json) {
  WriteText(file, JsonText(json));
}

}  // namespace zyngrad
