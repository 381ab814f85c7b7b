#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "reference_host/mesh/TextCursor.h"

namespace reference_host {

/// Reads "N (item item ...)" or "(item item ...)"; readItem reads one item.
template <class ReadItem>
void ReadFoamList(TextCursor& text, char const* what, ReadItem const& readItem) {
  bool const counted = text.Peek() != '(';
  std::size_t const announced = counted ? text.Count(what, 1) : 0;
  text.Expect('(');
  std::size_t n = 0;
  for (; !text.Accept(')'); ++n) readItem();
  if (counted && n != announced) {
    text.Fail(std::string(what) + " is " + std::to_string(announced) + ", but " + std::to_string(n) +
              " follow");
  }
}

/// The content of a list with a length: `count` items, which are `list`, or all equal to `same` if `list` is
/// empty.
template <class Item>
struct FoamValues {
  std::int64_t count = 0;
  Item same{};
  std::vector<Item> list;

  std::vector<Item> WrittenOut() && {
    if (list.empty()) list.assign(static_cast<std::size_t>(count), same);
    return std::move(list);
  }
};

/// Reads the length of a list. Throws MeshError unless it is in 0 to mostItems.
/// @param[in] what  the name of an item, for messages: "cell number"
std::int64_t ReadFoamLength(TextCursor& text, char const* what, std::int64_t mostItems);

/// Reads a list with a length, "N (item item ...)" or, for N equal items, "N{item}".
/// @param[in] readItem  reads one item and returns it
template <class Item, class ReadItem>
FoamValues<Item> ReadFoamValues(TextCursor& text, char const* what, std::int64_t mostItems,
                                ReadItem const& readItem) {
  FoamValues<Item> values;
  std::int64_t const n = values.count = ReadFoamLength(text, what, mostItems);
  if (text.Accept('{')) {
    values.same = readItem();
    text.Expect('}');
    return values;
  }
  text.Expect('(');
  while (!text.Accept(')')) values.list.push_back(readItem());
  if (values.list.size() != static_cast<std::size_t>(n)) {
    text.Fail(std::to_string(n) + " " + what + "s announced, " + std::to_string(values.list.size()) +
              " found");
  }
  return values;
}

/// A scalar, or the three components of a vector.
using FoamItem = std::array<double, 3>;

/// Reads a scalar, or a vector "(x y z)".
FoamItem ReadFoamItem(TextCursor& text, int nComponents);

/// A list of scalars or vectors with a length: `count` items, which are `list`, component by component, or all equal
/// to `same` if `list` is empty.
struct FoamReals {
  std::int64_t count = 0;
  FoamItem same{};
  std::vector<double> list;
};

/// Reads "N (item item ...)" or "N{item}".
/// @param[in] mostItems  a longer list is an error
FoamReals ReadFoamReals(TextCursor& text, int nComponents, std::int64_t mostItems);

}  // namespace reference_host
