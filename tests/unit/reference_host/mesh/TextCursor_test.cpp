// A cursor over a file in pieces does what one over the whole file does, however small the pieces are.

#include "reference_host/mesh/TextCursor.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "reference_host/mesh/MeshError.h"
#include "reference_host/mesh/MeshFile.h"
#include "tests/unit/reference_host/MeshTestSupport.h"

namespace {

using reference_host::MeshError;
using reference_host::MeshFile;
using reference_host::TextCursor;

constexpr int kOperations = 16;

/// What one operation returns, and the position behind it.
std::string Do(TextCursor& text, int operation) {
  std::string result;
  switch (operation) {
    case 0:
      result = std::to_string(text.Integer("an integer"));
      break;
    case 1:
      result = std::to_string(text.Real("a number"));
      break;
    case 2:
      result = text.Word("a word");
      break;
    case 3:
      result = text.Name("a name");
      break;
    case 4:
      result = text.QuotedString("a text");
      break;
    case 5:
      text.Verbatim();
      break;
    case 6:
      result = text.Macro();
      break;
    case 7:
      result = text.Bytes("a list", 5);
      break;
    case 8:
      result = text.Bytes("a list", 300);
      break;
    case 9:
      result = std::to_string(text.SkipBytes("a list", 300));
      break;
    case 10:
      result = std::to_string(text.Count("the number", 2));
      break;
    case 11:
      text.Expect('(');
      break;
    case 12:
      result = text.SkipToClosing() ? "closed" : "open";
      break;
    case 13:
      result = text.Since(text.Position() / 2, 20);
      break;
    case 14:
      text.MoveTo(text.Position() / 3);
      break;
    default:
      result = text.Accept(')') ? "accepted" : std::string(1, text.Peek());
      break;
  }
  return result + " at " + std::to_string(text.Position()) + " before " + std::to_string(text.Remaining());
}

std::string Outcome(TextCursor& text, int operation) {
  try {
    return Do(text, operation);
  } catch (MeshError const& error) {
    return error.what();
  }
}

std::string RandomText(std::mt19937& random) {
  std::vector<std::string> const items = {"12",
                                          "-7",
                                          "+3.25e-2",
                                          "word",
                                          "{",
                                          "}",
                                          ";",
                                          "(",
                                          ")",
                                          "\"a text\"",
                                          "$name",
                                          "${name}",
                                          "// a comment\n",
                                          "/* another\n one */",
                                          "/",
                                          "#{ code #}",
                                          "(12345)",
                                          "\n",
                                          "   ",
                                          std::string(90, '7'),
                                          std::string(150, 'w'),
                                          "(" + std::string(300, 'b') + ")",
                                          "/*" + std::string(400, '*') + "*/",
                                          std::string(200, ' '),
                                          "5",
                                          "1e-400"};
  std::string text;
  for (int n = 0; n < 40; ++n) {
    text += items[random() % items.size()];
    if (random() % 4 != 0) text += random() % 5 == 0 ? '\n' : ' ';
  }
  return text;
}

TEST(TextCursor, ReadsPiecesLikeTheWhole) {
  std::mt19937 random(5);
  TemporaryFolder const folder;
  int nFailures = 0, nResults = 0;
  for (int round = 0; round < 400; ++round) {
    folder.Write("text", RandomText(random));
    std::string const name = folder.Path() + "/text";
    MeshFile const whole(name);
    MeshFile const pieces(name, reference_host::OpenPlainFile(name), 1 + round % 70);
    for (auto const comments : {TextCursor::Comments::CStyle, TextCursor::Comments::None}) {
      TextCursor expected(whole, comments), text(pieces, comments);
      for (int n = 0; n < 60; ++n) {
        auto const operation = static_cast<int>(random() % kOperations);
        std::size_t const before = expected.Position();
        std::string const outcome = Outcome(expected, operation);
        ASSERT_EQ(outcome, Outcome(text, operation)) << "round " << round << " operation " << operation;
        bool const hasFailed = outcome.rfind(name, 0) == 0;
        ++(hasFailed ? nFailures : nResults);
        if (!hasFailed) continue;
        // Where a failure leaves the cursor is open; both go on from the same place.
        expected.MoveTo(before);
        text.MoveTo(before);
      }
    }
  }
  EXPECT_GT(nFailures, 1000);
  EXPECT_GT(nResults, 1000);
}

}  // namespace
