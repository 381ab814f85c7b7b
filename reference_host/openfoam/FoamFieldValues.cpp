#include "reference_host/openfoam/FoamFieldValues.h"

#include <utility>

#include "reference_host/mesh/MessageText.h"

namespace reference_host {

FoamEntries::Entry const& FoamFieldValueReader::Macro(int scope) {
  std::string_view const name = text_.Macro();
  FoamEntries::Entry const* const entry = entries_.Find(name, scope, text_.Position());
  if (entry == nullptr) text_.Fail("there is no entry before this for the macro " + Quoted(name));
  return *entry;
}

/// Reads with readValue what an entry holds and returns to the present place.
template <class ReadValue>
auto FoamFieldValueReader::AtEntry(FoamEntries::Entry const& entry, ReadValue const& readValue) {
  std::size_t const here = text_.Position();
  text_.MoveTo(entry.begin);
  auto value = readValue();
  text_.MoveTo(here);
  return value;
}

/// Reads with readValue(scope, nMacros) what the macro that comes next stands for.
template <class ReadValue>
auto FoamFieldValueReader::AtMacro(int scope, int nMacros, ReadValue const& readValue) {
  FoamEntries::Entry const& entry = Macro(scope);
  if (entry.dictionary != FoamEntries::kNone)
    text_.Fail("the macro stands for a dictionary, not for a value");
  if (nMacros == kMostMacros) {
    text_.Fail("more than " + std::to_string(kMostMacros) + " macros stand for each other");
  }
  return AtEntry(entry, [&] { return readValue(entry.scope, nMacros + 1); });
}

FoamFieldValueReader::Values FoamFieldValueReader::ReadEntry(FoamEntries::Entry const& entry,
                                                             std::int64_t most) {
  return AtEntry(entry, [&] { return Read(most, entry.scope, 0); });
}

FoamFieldValueReader::Values FoamFieldValueReader::Read(std::int64_t most, int scope, int nMacros) {
  auto const [known, isNew] = known_.emplace(text_.Position(), nullptr);
  if (!isNew && known->second) return known->second;
  Values values;
  if (text_.Peek() == '$') {
    values = AtMacro(scope, nMacros, [&](int inner, int n) { return Read(most, inner, n); });
  } else {
    values = std::make_shared<FoamFieldValues const>(ReadHere(most, scope, nMacros));
  }
  text_.Expect(';');
  return known->second = std::move(values);
}

FoamFieldValues FoamFieldValueReader::ReadHere(std::int64_t most, int scope, int nMacros) {
  FoamFieldValues values;
  std::string_view const kind = text_.Word("uniform or nonuniform");
  if (kind == "uniform") {
    values.reals.same = Item(scope, nMacros);
  } else if (kind == "nonuniform") {
    values.isUniform = false;
    values.reals = List(most);
  } else {
    text_.Fail("uniform or nonuniform expected instead of " + Quoted(kind));
  }
  return values;
}

FoamReals FoamFieldValueReader::List(std::int64_t most) {
  std::string const expected = nComponents_ == 1 ? "List<scalar>" : "List<vector>";
  char const first = text_.Peek();
  if (first != '(' && (first < '0' || first > '9')) {
    std::string_view const type = text_.Word(expected.c_str());
    if (type != expected) text_.Fail(expected + " expected instead of " + Quoted(type));
  }
  if (!leavesLists_) return ReadFoamReals(text_, format_, nComponents_, most);
  FoamReals reals = LeaveFoamReals(text_, format_, nComponents_, most);
  if (reals.isLeft) left_[reals.begin] = reals.count;
  return reals;
}

std::vector<double> FoamFieldValueReader::ReadLeft(FoamReals const& left) {
  std::vector<double> list;
  std::size_t const here = text_.Position();
  text_.MoveTo(left.begin);
  if (format_.isBinary) {
    BinaryNumbers const numbers(text_, static_cast<std::size_t>(nComponents_ * left.count),
                                format_.scalarBytes);
    for (std::size_t i = 0; i < numbers.size(); ++i) list.push_back(numbers.Real(i));
  } else {
    ReadTextReals(text_, nComponents_, left.count, [&](FoamItem const& item) {
      list.insert(list.end(), item.begin(), item.begin() + nComponents_);
    });
  }
  text_.MoveTo(here);
  return list;
}

void FoamFieldValueReader::CheckLeft(FoamReals const* except) {
  if (format_.isBinary) return;
  for (auto const& [begin, count] : left_) {
    if (except != nullptr && begin == except->begin) continue;
    text_.MoveTo(begin);
    ReadTextReals(text_, nComponents_, count, [](FoamItem const&) {});
  }
}

FoamItem FoamFieldValueReader::Item(int scope, int nMacros) {
  if (nComponents_ == 1) return {Real(scope, nMacros), 0.0, 0.0};
  if (text_.Peek() == '$') {
    return AtMacro(scope, nMacros, [&](int inner, int n) {
      FoamItem const item = Item(inner, n);
      text_.Expect(';');
      return item;
    });
  }
  FoamItem item{};
  text_.Expect('(');
  for (double& component : item) component = Real(scope, nMacros);
  text_.Expect(')');
  return item;
}

double FoamFieldValueReader::Real(int scope, int nMacros) {
  if (text_.Peek() != '$') return text_.Real(nComponents_ == 1 ? "a value" : "a component of a vector");
  return AtMacro(scope, nMacros, [&](int inner, int n) {
    double const value = Real(inner, n);
    text_.Expect(';');
    return value;
  });
}

std::string FoamFieldValueReader::WordOf(FoamEntries::Entry const& entry) {
  return AtEntry(entry, [&] { return WordHere(entry.scope, 0); });
}

std::string FoamFieldValueReader::WordHere(int scope, int nMacros) {
  char const first = text_.Peek();
  if (std::string_view("(){};\"").find(first) != std::string_view::npos) return {};
  if (first != '$') return std::string(text_.Word("a word"));
  return AtMacro(scope, nMacros, [this](int inner, int n) { return WordHere(inner, n); });
}

}  // namespace reference_host
