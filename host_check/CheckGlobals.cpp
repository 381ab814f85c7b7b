#include <cctype>
#include <cstring>
#include <functional>

#include "host_check/LocalChecks.h"
#include "host_check/Text.h"

namespace host_check {
namespace {

constexpr int kLongestName = 1023;  // the operators keep a settings file's name in 1024 characters
constexpr int kExtension = 4;       // the dot and three letters

struct WorkArray {
  const char* name;
  const double* data;
};

void RequireArray(const void* array, const char* name, const char* extent, HostCheckReport& report) {
  if (array != nullptr) return;
  report.Add(HostBreach::MissingArray, 0, [&] { return Text(name, ", an array ", extent, ", is null"); });
}

/// Elements 1..nCell of two arrays share memory.
bool Overlap(const double* a, const double* b, int nCell) {
  const std::less<> isBefore;
  return isBefore(a + 1, b + nCell + 1) && isBefore(b + 1, a + nCell + 1);
}

void CheckPreviousGradient(const HostView& view, const CZyn3dGV& globals, HostCheckReport& report) {
  if (view.nCell == 0) return;
  const WorkArray arrays[] = {
      {"PrevGradX", globals.PrevGradX}, {"PrevGradY", globals.PrevGradY}, {"PrevGradZ", globals.PrevGradZ}};
  for (const WorkArray& array : arrays) RequireArray(array.data, array.name, "[1..NCell]", report);
  const WorkArray centres[] = {{"xc", view.mesh.xc}, {"yc", view.mesh.yc}, {"zc", view.mesh.zc}};
  const auto compare = [&](const WorkArray& a, const WorkArray& b) {
    if (a.data == nullptr || b.data == nullptr || !Overlap(a.data, b.data, view.nCell)) return;
    report.Add(HostBreach::ArraysOverlap, 0,
               [&] { return Text(a.name, " and ", b.name, " share memory within 1..NCell = ", view.nCell); });
  };
  for (int i = 0; i < 3; ++i) {
    for (int j = i + 1; j < 3; ++j) compare(arrays[i], arrays[j]);
    for (const WorkArray& centre : centres) compare(arrays[i], centre);
  }
}

/// What is wrong with a file name of at most kLongestName characters; empty: nothing.
std::string FaultOf(const std::string& name) {
  if (name.empty()) return "is empty";
  const std::size_t dot = name.size() - std::min<std::size_t>(name.size(), kExtension);
  bool endsRight = name.size() > kExtension && name[dot] == '.' && name[dot - 1] != '/';
  for (std::size_t i = dot + 1; i < name.size(); ++i) {
    endsRight = endsRight && std::isalnum(static_cast<unsigned char>(name[i])) != 0;
  }
  return endsRight ? "" : "does not end in a dot and three letters";
}

void CheckFileName(const char* name, HostCheckReport& report) {
  if (name == nullptr) {
    report.Add(HostBreach::BadFileName, 0, [] { return std::string("BaseFileName is null"); });
    return;
  }
  if (std::memchr(name, '\0', kLongestName + 1) == nullptr) {
    report.Add(HostBreach::BadFileName, 0, [] {
      return Text("BaseFileName has no end within ", kLongestName,
                  " characters, more than a settings file's ", "name can have");
    });
    return;
  }
  const std::string fault = FaultOf(name);
  if (fault.empty()) return;
  report.Add(HostBreach::BadFileName, 0, [&] {
    return Text("BaseFileName \"", name, "\" ", fault, ", of which the settings files' names are made");
  });
}

}  // namespace

void CheckGlobals(const HostView& view, const CZyn3dGV& globals, HostCheckReport& report) {
  CheckPreviousGradient(view, globals, report);
  RequireArray(globals.ResetRealBlock, "ResetRealBlock", "[1..4]", report);
  RequireArray(globals.ResetIntBlock, "ResetIntBlock", "[1..4]", report);
  CheckFileName(globals.BaseFileName, report);
}

}  // namespace host_check
