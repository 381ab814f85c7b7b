#pragma once

#include <nlohmann/json.hpp>
#include <string>

namespace zyngrad {

/// The beginning of every results file: program, version, command.
nlohmann::ordered_json StartResults(std::string const& command);

/// Writes the text with an indent of two spaces; numbers keep all their digits, what is not finite becomes
/// null, and bytes that are not UTF-8 become U+FFFD. Throws UsageError when the file cannot be written whole.
void WriteJson(std::string const& file, nlohmann::ordered_json const& json);

}  // namespace zyngrad
