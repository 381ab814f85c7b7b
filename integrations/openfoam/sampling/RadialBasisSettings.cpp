#include "sampling/RadialBasisSettings.h"

#include <algorithm>
#include <limits>

namespace Foam {
namespace zyn {
namespace {

void ReadInteger(dictionary const& dict, char const* key, label most, int& value) {
  label given = value;
  if (!dict.readIfPresent(key, given)) return;
  if (given < 1 || given > most) {
    FatalIOErrorInFunction(dict) << key << ' ' << given << " is outside 1.." << most << exit(FatalIOError);
  }
  value = static_cast<int>(given);
}

}  // namespace

dictionary DictionaryIn(dictionary const& dict, word const& key) {
  if (dict.found(key) && !dict.isDict(key)) {
    FatalIOErrorInFunction(dict) << key << " is no dictionary" << exit(FatalIOError);
  }
  return dict.subOrEmptyDict(key);
}

void CheckKeywords(dictionary const& dict, std::initializer_list<char const*> known) {
  for (word const& key : dict.toc()) {
    if (std::find(known.begin(), known.end(), key) != known.end()) continue;
    FatalIOErrorInFunction(dict) << "Unknown entry " << key << "; possible are";
    for (char const* name : known) FatalIOError << ' ' << name;
    FatalIOError << exit(FatalIOError);
  }
}

void RadialBasisSettings::Read(dictionary const& dict, int nMethods) {
  CheckKeywords(dict, {"method", "span", "number"});
  constexpr int kMost = std::numeric_limits<int>::max();
  ReadInteger(dict, "method", nMethods, method);
  ReadInteger(dict, "span", kMost, span);
  ReadInteger(dict, "number", kMost, number);
}

LentSettings::LentSettings(RadialBasisSettings const& settings) {
  constexpr double kDefaultDistance = -1.0;
  faces_.Span = points_.Span = settings.span;
  faces_.iSearch_method = points_.iSearch_method = settings.method;
  faces_.Search_distance = points_.Search_distance = kDefaultDistance;
  faces_.Search_number = points_.Search_number = settings.number;
}

}  // namespace zyn
}  // namespace Foam
