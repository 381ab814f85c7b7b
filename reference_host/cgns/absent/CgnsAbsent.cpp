// Replaces the CGNS sources in a build without libcgns.
#include "reference_host/cgns/CgnsField.h"
#include "reference_host/cgns/CgnsReader.h"
#include "reference_host/mesh/MeshError.h"

namespace reference_host {
namespace {

[[noreturn]] void Refuse(std::string const& file) {
  throw MeshError(file +
                  ": this build cannot read CGNS files; configure it again with libcgns-dev installed");
}

}  // namespace

FaceMesh ReadCgns(std::string const& file) { Refuse(file); }

CgnsField ReadCgnsField(std::string const& file, std::string const&) { Refuse(file); }

CgnsFile::OpenFile::~OpenFile() = default;
CgnsFile::CgnsFile(std::string name) { Refuse(name); }
CgnsFile::~CgnsFile() = default;

CgnsFieldFile::CgnsFieldFile(std::string const& file, std::string const&) : file_(file) {}
std::vector<double> CgnsFieldFile::Read(std::int64_t, std::int64_t) const { return {}; }

}  // namespace reference_host
