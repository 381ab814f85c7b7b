#include "cli/options/InterpolationSettings.h"

#include <nlohmann/json.hpp>

#include "cli/base/TextTable.h"
#include "cli/output/RunSettings.h"

namespace zyngrad {
namespace {

/// The lines that both operators read. The operators go by the place of a line; the keys are for people.
std::string CommonText(InterpolationSettings const& settings) {
  return "Span              = " + ShortestText(settings.span) +
         "\niSearch_method    = " + std::to_string(settings.method) +
         "\nSearch_distance   = " + Fixed(settings.distance, 6) +
         "\nSearch_number     = " + std::to_string(settings.number) + '\n';
}

}  // namespace

std::string FaceSettingsText(InterpolationSettings const& settings) {
  return "1004\n" + CommonText(settings) + "Debug mode        = " + (settings.printsReport ? "1" : "0") +
         '\n';
}

std::string PointSettingsText(InterpolationSettings const& settings) {
  return "1002\n" + CommonText(settings);
}

nlohmann::ordered_json InterpolationSettingsAsJson(InterpolationSettings const& settings) {
  return {{"searchMethod", settings.method}, {"span", settings.span}, {"searchNumber", settings.number}};
}

}  // namespace zyngrad
