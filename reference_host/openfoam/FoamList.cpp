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

FoamReals ReadFoamReals(TextCursor& text, FoamFormat const& format, int nComponents, std::int64_t mostItems) {
  FoamReals values;
  values.count = ReadFoamLength(text, "value", mostItems);
  if (text.Accept('{')) {
    values.same = ReadFoamItem(text, nComponents);
    text.Expect('}');
    return values;
  }
  auto const components = static_cast<std::size_t>(nComponents);
  if (format.isBinary) {
    BinaryNumbers const numbers(text, components * static_cast<std::size_t>(values.count),
                                format.scalarBytes);
    values.list.resize(numbers.size());
    for (std::size_t i = 0; i < numbers.size(); ++i) values.list[i] = numbers.Real(i);
    return values;
  }
  values.list.reserve(components * FittingItems(text, values.count, 2 * nComponents));
  text.Expect('(');
  std::int64_t n = 0;
  for (; !text.Accept(')'); ++n) {
    FoamItem const item = ReadFoamItem(text, nComponents);
    values.list.insert(values.list.end(), item.begin(), item.begin() + nComponents);
  }
  if (n != values.count) {
    text.Fail(std::to_string(values.count) + " values announced, " + std::to_string(n) + " found");
  }
  return values;
}

}  // namespace reference_host
