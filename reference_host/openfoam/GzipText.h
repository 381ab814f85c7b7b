#pragma once

#include <string>

namespace reference_host {

/// The text as a gzip file has it.
std::string Gzipped(std::string const& text);

}  // namespace reference_host
