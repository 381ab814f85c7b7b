#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "reference_host/mesh/TextCursor.h"
#include "reference_host/openfoam/BinaryNumbers.h"
#include "reference_host/openfoam/FoamSyntax.h"

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

/// The lesser of a number of items and of those that the rest of the file can hold.
/// @param[in] bytes  the least that one takes
inline std::size_t FittingItems(TextCursor const& text, std::int64_t n, int bytes) {
  return std::min(static_cast<std::size_t>(n), text.Remaining() / static_cast<std::size_t>(bytes) + 1);
}

/// A scalar, or the three components of a vector.
using FoamItem = std::array<double, 3>;

/// Reads a scalar, or a vector "(x y z)".
FoamItem ReadFoamItem(TextCursor& text, int nComponents);

/// A list of scalars or vectors with a length: `count` items, which are `list`, component by component, or all equal
/// to `same` if `list` is empty; or a list that was left in the file.
struct FoamReals {
  std::int64_t count = 0;
  FoamItem same{};
  std::vector<double> list;
  bool isLeft = false;
  std::size_t begin = 0;  ///< of a list that was left: the position behind its length
};

/// Reads "N (item item ...)", text or binary, or "N{item}".
/// @param[in] mostItems  a longer list is an error
FoamReals ReadFoamReals(TextCursor& text, FoamFormat const& format, int nComponents, std::int64_t mostItems);

/// The same, but passes over a list of items and leaves it in the file. What is wrong within a list of text is then told
/// by ReadTextReals; only one that does not end is an error here, too.
FoamReals LeaveFoamReals(TextCursor& text, FoamFormat const& format, int nComponents, std::int64_t mostItems);

/// Reads the text "(item item ...)" of n items and calls take(item) with each, also with those beyond the n.
template <class Take>
void ReadTextReals(TextCursor& text, int nComponents, std::int64_t n, Take const& take) {
  text.Expect('(');
  std::int64_t nFound = 0;
  for (; !text.Accept(')'); ++nFound) take(ReadFoamItem(text, nComponents));
  if (nFound != n) text.Fail(std::to_string(n) + " values announced, " + std::to_string(nFound) + " found");
}

/// The integers that a list may have.
struct FoamRange {
  char const* what;  ///< one of them: "cell"
  std::int64_t first;
  std::int64_t end;  ///< behind the last one

  /// Throws MeshError for an integer that it does not have; says where with fail(text).
  template <class FailHere>
  std::int64_t Checked(std::int64_t number, FailHere const& fail) const {
    if (number < first || number >= end) {
      fail(std::string(what) + " " + std::to_string(number) + " is not in " + std::to_string(first) + " to " +
           std::to_string(end - 1));
    }
    return number;
  }

  /// Reads one.
  std::int64_t Read(TextCursor& text) const {
    return Checked(text.Integer(what), [&text](std::string const& fault) { text.Fail(fault); });
  }
};

/// Reads integers in binary form and calls take(integer) with each.
template <class Take>
void ReadBinaryLabels(TextCursor& text, FoamFormat const& format, std::int64_t n, FoamRange const& range,
                      Take const& take) {
  BinaryNumbers const numbers(text, static_cast<std::size_t>(n), format.labelBytes);
  for (std::size_t i = 0; i < numbers.size(); ++i) {
    take(range.Checked(numbers.Integer(i),
                       [&](std::string const& fault) { text.FailAt(numbers.Position(i), fault); }));
  }
}

/// Reads the text "(i i ...)" of n integers and calls take(integer) with each, also with those beyond the n.
/// @param[in] what  the name of an item, for messages: "cell number"
template <class Take>
void ReadTextLabels(TextCursor& text, std::int64_t n, char const* what, FoamRange const& range,
                    Take const& take) {
  text.Expect('(');
  std::int64_t nFound = 0;
  for (; !text.Accept(')'); ++nFound) take(range.Read(text));
  if (nFound != n)
    text.Fail(std::to_string(n) + " " + what + "s announced, " + std::to_string(nFound) + " found");
}

/// Reads a list of integers with a length, "N (i i ...)", text or binary, or "N{i}".
/// @param[in] what  the name of an item, for messages: "cell number"
template <class Integer>
FoamValues<Integer> ReadFoamLabels(TextCursor& text, FoamFormat const& format, char const* what,
                                   std::int64_t mostItems, FoamRange const& range) {
  FoamValues<Integer> values;
  std::int64_t const n = values.count = ReadFoamLength(text, what, mostItems);
  if (format.isBinary && text.Peek() != '{') {
    values.list.reserve(FittingItems(text, n, format.labelBytes));
    ReadBinaryLabels(text, format, n, range,
                     [&values](std::int64_t number) { values.list.push_back(static_cast<Integer>(number)); });
    return values;
  }
  if (text.Accept('{')) {
    values.same = static_cast<Integer>(range.Read(text));
    text.Expect('}');
    return values;
  }
  values.list.reserve(FittingItems(text, n, 2));
  ReadTextLabels(text, n, what, range,
                 [&values](std::int64_t number) { values.list.push_back(static_cast<Integer>(number)); });
  return values;
}

}  // namespace reference_host
