#include "reference_host/openfoam/FoamList.h"

namespace reference_host {

std::int64_t ReadFoamLength(TextCursor& text, char const* what, std::int64_t mostItems) {
  if (text.Peek() == '(') text.Fail(std::string("a list of ") + what + "s without a length");
  std::int64_t const n = text.Integer("the length of a list");
  if (n < 0 || n > mostItems) {
    text.Fail("the length of a list of " + std::string(what) + "s, " + std::to_string(n) +
              ", is not in 0 to " + std::to_string(mostItems));
  }
  return n;
}

FoamItem ReadFoamItem(TextCursor& text, int nComponents) {
  FoamItem item{};
  if (nComponents == 1) {
    item[0] = text.Real("a value");
    return item;
  }
  text.Expect('(');
  for (double& component : item) component = text.Real("a component of a vector");
  text.Expect(')');
  return item;
}

namespace {

/// Reads the length, and the rest if all items are equal. Returns whether they are.
bool BeginReals(TextCursor& text, int nComponents, std::int64_t mostItems, FoamReals& values) {
  values.count = ReadFoamLength(text, "value", mostItems);
  values.begin = text.Position();
  if (!text.Accept('{')) return false;
  values.same = ReadFoamItem(text, nComponents);
  text.Expect('}');
  return true;
}

std::size_t NumbersIn(FoamReals const& values, int nComponents) {
  return static_cast<std::size_t>(nComponents) * static_cast<std::size_t>(values.count);
}

}  // namespace

FoamReals ReadFoamReals(TextCursor& text, FoamFormat const& format, int nComponents, std::int64_t mostItems) {
  FoamReals values;
  if (BeginReals(text, nComponents, mostItems, values)) return values;
  if (format.isBinary) {
    BinaryNumbers const numbers(text, NumbersIn(values, nComponents), format.scalarBytes);
    values.list.resize(numbers.size());
    for (std::size_t i = 0; i < numbers.size(); ++i) values.list[i] = numbers.Real(i);
    return values;
  }
  values.list.reserve(static_cast<std::size_t>(nComponents) *
                      FittingItems(text, values.count, 2 * nComponents));
  ReadTextReals(text, nComponents, values.count, [&](FoamItem const& item) {
    values.list.insert(values.list.end(), item.begin(), item.begin() + nComponents);
  });
  return values;
}

FoamReals LeaveFoamReals(TextCursor& text, FoamFormat const& format, int nComponents,
                         std::int64_t mostItems) {
  FoamReals values;
  if (BeginReals(text, nComponents, mostItems, values)) return values;
  values.isLeft = values.count > 0;
  if (format.isBinary) {
    std::size_t const nBytes = NumbersIn(values, nComponents) * static_cast<std::size_t>(format.scalarBytes);
    if (values.isLeft || text.Peek() == '(') text.SkipBytes("a binary list", nBytes);
    return values;
  }
  text.Expect('(');
  if (text.SkipToClosing()) return values;
  text.MoveTo(values.begin);
  ReadTextReals(text, nComponents, values.count, [](FoamItem const&) {});
  return values;
}

}  // namespace reference_host
