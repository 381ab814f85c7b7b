#include "reference_host/gmsh/GmshPatches.h"

namespace reference_host {

GmshPatches::GmshPatches(std::map<std::int64_t, std::string> const& surfaceName,
                         std::set<std::int64_t> const& physicals) {
  for (auto const& [tag, name] : surfaceName) patchOfTag_.emplace(tag, 0);
  for (std::int64_t const tag : physicals) {
    if (tag != 0) patchOfTag_.emplace(tag, 0);
  }
  std::map<std::string, int> patchOfName;
  for (auto& [tag, patch] : patchOfTag_) {
    auto const named = surfaceName.find(tag);
    std::string const name = named != surfaceName.end() ? named->second : "surface_" + std::to_string(tag);
    patch = patchOfName.emplace(name, static_cast<int>(patches_.size())).first->second;
    if (patch == static_cast<int>(patches_.size())) patches_.push_back({name, "", {}});
  }
}

}  // namespace reference_host
