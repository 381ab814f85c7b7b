// Stands in for the CGNS sources in a build without libcgns.
#include "reference_host/CgnsField.h"
#include "reference_host/CgnsReader.h"
#include "reference_host/MeshError.h"

namespace reference_host {
namespace {

[[noreturn]] void Refuse(const std::string& file) {
  throw MeshError(file +
                  ": this build cannot read CGNS files; configure it again with libcgns-dev installed");
}

}  // namespace

FaceMesh ReadCgns(const std::string& file) { Refuse(file); }

std::vector<double> ReadCgnsField(const std::string& file, const std::string&) { Refuse(file); }

}  // namespace reference_host
