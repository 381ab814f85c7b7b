#pragma once

#include <fstream>
#include <sstream>
#include <string>

namespace zyngrad {

inline std::string TextOfFile(std::string const& name) {
  std::ostringstream text;
  text << std::ifstream(name).rdbuf();
  return text.str();
}

}  // namespace zyngrad
