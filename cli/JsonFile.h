#pragma once

#include <nlohmann/json.hpp>
#include <string>

namespace zyngrad {

/// The beginning of every results file: program, version, command.
nlohmann::ordered_json StartResults(const std::string& command);

/// Writes the text with an indent of two spaces; numbers keep all their digits, what is not finite becomes
/// null, and bytes that are not UTF-8 become U+FFFD. Throws UsageError when the file cannot be written whole.
void WriteJson(const std::string& file, const nlohmann::ordered_json& json);

}  // namespace zyngrad
