#include "cli/gradient/NormsReport.h"

#include <nlohmann/json.hpp>

namespace zyngrad {

std::vector<TextTable::Column> NormsColumns(std::vector<TextTable::Column> first, NormsOfWhat what) {
  first.insert(first.end(), {{"number"}, {"L1"}, {"L2"}});
  if (what == NormsOfWhat::Errors) first.push_back({"L2 relative"});
  first.insert(first.end(), {{"maximum"}, {"in cell"}, {"at", TextTable::Align::Left}});
  return first;
}

std::vector<std::string> NormsRow(std::vector<std::string> first, ErrorNorms const& norms, NormsOfWhat what,
                                  int placeDigits) {
  bool const hasMax = norms.maxCell > 0;
  first.insert(first.end(), {Grouped(norms.nCells), Scientific(norms.l1), Scientific(norms.l2)});
  if (what == NormsOfWhat::Errors) first.push_back(Scientific(norms.relativeL2));
  double const* const place = norms.maxPlace;
  first.insert(first.end(), {Scientific(norms.max), hasMax ? std::to_string(norms.maxCell) : "-",
                             hasMax ? Place(place[0], place[1], place[2], placeDigits) : "-"});
  return first;
}

nlohmann::ordered_json NormsAsJson(ErrorNorms const& norms, NormsOfWhat what) {
  nlohmann::ordered_json json = {
      {"cells", norms.nCells}, {"volume", norms.volume}, {"l1", norms.l1}, {"l2", norms.l2}};
  if (what == NormsOfWhat::Errors) json["l2Relative"] = norms.relativeL2;
  json["max"] = norms.max;
  if (norms.maxCell > 0) {
    json["maxCell"] = norms.maxCell;
    json["maxPlace"] = norms.maxPlace;
  } else {
    json["maxCell"] = nullptr;
    json["maxPlace"] = nullptr;
  }
  json["notFiniteCells"] = norms.nNotFinite;
  return json;
}

}  // namespace zyngrad
