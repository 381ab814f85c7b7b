#include "cli/JsonFile.h"

#include "cli/OutputFile.h"
#include "cli/Version.h"

namespace zyngrad {

nlohmann::ordered_json StartResults(std::string const& command) {
  return {{"program", "zyngrad"}, {"version", ZYNGRAD_VERSION}, {"command", command}};
}

void WriteJson(std::string const& file, nlohmann::ordered_json const& json) {
  WriteText(file, json.dump(2, ' ', false, nlohmann::ordered_json::error_handler_t::replace) + '\n');
}

}  // namespace zyngrad
