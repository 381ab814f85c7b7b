#pragma once

#include <nlohmann/json_fwd.hpp>
#include <string>

namespace zyngrad {

/// The beginning of every results file: program, version, command.
nlohmann::ordered_json StartResults(std::string const& command);

/// The text with an indent of two spaces and a line end. Numbers keep all digits, numbers that are not finite become
/// null, and bytes that are not UTF-8 become U+FFFD.
std::string JsonText(nlohmann::ordered_json const& json);

/// Writes JsonText. Throws UsageError if the file cannot be written completely.
void WriteJson(std::string const& file, nlohmann::ordered_json const& json);

}  // namespace zyngrad
