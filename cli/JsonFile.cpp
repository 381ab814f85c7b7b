#include "cli/JsonFile.h"

#include <cerrno>
#include <cstring>
#include <fstream>

#include "cli/OneLine.h"
#include "cli/UsageError.h"
#include "cli/Version.h"

namespace zyngrad {

nlohmann::ordered_json StartResults(const std::string& command) {
  return {{"program", "zyngrad"}, {"version", ZYNGRAD_VERSION}, {"command", command}};
}

void WriteJson(const std::string& file, const nlohmann::ordered_json& json) {
  std::ofstream out(file);
  out << json.dump(2, ' ', false, nlohmann::ordered_json::error_handler_t::replace) << '\n';
  out.close();
  if (!out) throw UsageError("cannot write " + Quoted(file) + ": " + std::strerror(errno));
}

}  // namespace zyngrad
