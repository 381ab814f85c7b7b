#include "cli/faces/FaceReport.h"

#include <nlohmann/json.hpp>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include "cli/base/OneLine.h"
#include "cli/base/TextTable.h"

namespace zyngrad {
namespace {

using nlohmann::ordered_json;
using Align = TextTable::Align;

std::string PlaceText(FacePlace const& place, int digits) {
  return Place(place.at[0], place.at[1], place.at[2], digits);
}

std::string CellsText(FacePlace const& place) {
  std::string const cell = std::to_string(place.cell);
  return place.other > 0 ? cell + " and " + std::to_string(place.other) : cell;
}

std::string FacesText(std::int64_t count) { return Grouped(count) + (count == 1 ? " face" : " faces"); }

/// "face 12 of rank 0 at (x, y, z)".
std::string FaceText(FacePlace const& place, int digits) {
  return "face " + std::to_string(place.face) + " of rank " + std::to_string(place.rank) + " at " +
         PlaceText(place, digits);
}

/// The place of the largest error or value, in the last columns of a table.
std::vector<TextTable::Column> PlaceColumns() {
  return {{"maximum"}, {"at face"}, {"of rank"}, {"of cells", Align::Left}, {"at", Align::Left}};
}

void AddPlace(std::vector<std::string>& row, FaceErrors const& errors, int digits) {
  bool const hasMax = errors.maxPlace.face > 0;
  row.push_back(Scientific(errors.max));
  row.push_back(hasMax ? std::to_string(errors.maxPlace.face) : "-");
  row.push_back(hasMax ? std::to_string(errors.maxPlace.rank) : "-");
  row.push_back(hasMax ? CellsText(errors.maxPlace) : "-");
  row.push_back(hasMax ? PlaceText(errors.maxPlace, digits) : "-");
}

void PrintErrors(std::ostream& out, FaceErrors const& errors, int digits) {
  std::vector<TextTable::Column> columns = {{"faces"}, {"L1"}, {"L2"}, {"L2 relative"}};
  for (TextTable::Column const& column : PlaceColumns()) columns.push_back(column);
  TextTable table(columns);
  std::vector<std::string> row = {Grouped(errors.nFaces), Scientific(errors.l1), Scientific(errors.l2),
                                  Scientific(errors.relativeL2)};
  AddPlace(row, errors, digits);
  table.AddRow(row);
  out << "errors against the exact value" << '\n' << '\n';
  table.Print(out);
}

void PrintSizes(std::ostream& out, FaceTime const& time, int digits) {
  std::vector<TextTable::Column> columns = {
      {"field", Align::Left}, {"faces"}, {"L1"}, {"L2"}, {"from"}, {"to"}};
  for (TextTable::Column const& column : PlaceColumns()) columns.push_back(column);
  TextTable table(columns);
  for (FaceSizes const& one : time.values) {
    std::vector<std::string> row = {OneLine(one.name),        Grouped(one.norms.nFaces),
                                    Scientific(one.norms.l1), Scientific(one.norms.l2),
                                    Scientific(one.lowest),   Scientific(one.highest)};
    AddPlace(row, one.norms, digits);
    table.AddRow(row);
  }
  if (!time.name.empty()) out << "\ntime " << time.name << '\n';
  out << '\n';
  table.Print(out);
}

void PrintValues(std::ostream& out, FaceResults const& results) {
  if (results.GivesNoValues()) {
    out << "search method 4 computes no values on boundary faces, only slopes along the normal: all values "
           "are 0 by design, so there are no errors to show\n";
  } else if (results.fromFiles.empty()) {
    PrintErrors(out, results.errors, results.placeDigits);
  } else {
    out << "sizes of the values; the exact values are not known\n";
    for (FaceTime const& time : results.fromFiles) PrintSizes(out, time, results.placeDigits);
  }
}

void PrintTimes(std::ostream& out, FaceTimes const& times) {
  constexpr double kMilli = 1e3;
  TextTable table({{"set-up ms"}, {"us per face"}, {"first call ms"}, {"later calls ms"}, {"ns per face"}});
  table.AddRow({Fixed(times.setUp * kMilli, 3), Fixed(times.usPerFace, 2), Fixed(times.first * kMilli, 3),
                Fixed(times.later * kMilli, 3), Fixed(times.nsPerFace, 1)});
  out << "\ntimes of the slowest rank\n\n";
  table.Print(out);
}

void PrintWarnings(std::ostream& out, FaceResults const& results) {
  FaceRowCheck const& rows = results.rows;
  if (rows.nOff > 0 && !results.GivesNoValues()) {  // otherwise the line above has said that all rows are 0
    out << "  warning: the weights of " << FacesText(rows.nOff) << " do not sum to 1 within "
        << Scientific(kRowSumTolerance, 1) << "; worst: " << Scientific(rows.worstSum, 6) << " at "
        << FaceText(rows.worst, results.placeDigits) << '\n';
  }
  if (rows.nNotFinite > 0) {
    out << "  warning: the weights of " << FacesText(rows.nNotFinite)
        << " are not finite; first: " << FaceText(rows.firstNotFinite, results.placeDigits) << '\n';
  }
  std::int64_t const n = results.NotFiniteFaces();
  if (n == 0 && !results.whyNotFinite.empty()) {
    out << "  search method " << results.settings.method
        << ": the values are meaningless: " << results.whyNotFinite << '\n';
  }
  if (n > 0) {
    out << "  search method " << results.settings.method << ": the values are not finite at " << Grouped(n)
        << " of " << Grouped(results.NumberOfFaces()) << ' ' << NameOf(results.group) << " faces"
        << (results.whyNotFinite.empty() ? "" : ": " + results.whyNotFinite) << '\n';
  }
}

ordered_json PlaceAsJson(FacePlace const& place) {
  if (place.face == 0) return nullptr;
  return {{"face", place.face},
          {"rank", place.rank},
          {"cell", place.cell},
          {"other", place.other},
          {"place", place.at}};
}

ordered_json ErrorsAsJson(FaceErrors const& errors) {
  return {{"area", errors.area},
          {"l1", errors.l1},
          {"l2", errors.l2},
          {"l2Relative", errors.relativeL2},
          {"max", errors.max},
          {"maxAt", PlaceAsJson(errors.maxPlace)},
          {"notFinite", errors.nNotFinite}};
}

/// Norms of the values themselves, without relative ones.
ordered_json SizesAsJson(FaceSizes const& one) {
  ordered_json json = {{"fieldName", one.name}};
  json.update(ErrorsAsJson(one.norms));
  json.erase("l2Relative");
  json["range"] = {one.lowest, one.highest};
  return json;
}

/// "values" and "boundaryValues" of one time; for several, the list "times".
void AddValues(ordered_json& json, FaceResults const& results) {
  for (FaceTime const& time : results.fromFiles) {
    ordered_json entry = {{"time", time.name}};
    for (FileField const& field : time.fields)
      entry["boundaryValues"][field.name] = BoundaryValuesAsJson(field);
    for (FaceSizes const& one : time.values)
      if (!results.GivesNoValues()) entry["values"].push_back(SizesAsJson(one));
    if (time.name.empty()) {
      entry.erase("time");
      json.update(entry);
    } else {
      json["times"].push_back(std::move(entry));
    }
  }
}

}  // namespace

void PrintFaceResults(std::ostream& out, FaceResults const& results) {
  out << Grouped(results.NumberOfFaces()) << ' ' << NameOf(results.group) << " faces by search method "
      << results.settings.method << ", " << StencilSizesInWords(results.stencils) << '\n';
  PrintValues(out, results);
  PrintTimes(out, results.times);
  PrintWarnings(out, results);
}

ordered_json FaceResultsAsJson(FaceResults const& results) {
  FaceTimes const& times = results.times;
  ordered_json json = {{"group", NameOf(results.group)}, {"faces", results.NumberOfFaces()}};
  json["valuesByDesignZero"] = results.GivesNoValues();
  json["stencils"] = StencilSizesAsJson(results.stencils);
  json["seconds"] = {{"setUp", times.setUp}, {"firstCall", times.first}, {"laterCalls", times.later}};
  json["usSetUpPerFace"] = times.usPerFace;
  json["nsPerFace"] = times.nsPerFace;
  if (results.fromFiles.empty())
    json["errors"] = results.GivesNoValues() ? ordered_json(nullptr) : ErrorsAsJson(results.errors);
  else
    AddValues(json, results);
  json["rows"] = {{"notSummingToOne", results.rows.nOff},
                  {"worstSum", results.rows.worstSum},
                  {"worstAt", PlaceAsJson(results.rows.worst)},
                  {"notFinite", results.rows.nNotFinite},
                  {"firstNotFiniteAt", PlaceAsJson(results.rows.firstNotFinite)}};
  if (!results.whyNotFinite.empty()) json["whyNotFinite"] = results.whyNotFinite;
  return json;
}

}  // namespace zyngrad
