#include "host/GradientMethod.h"

#include "OStringStream.H"
#include "error.H"
#include "token.H"

namespace Foam {
namespace zyn {
namespace {

constexpr label kMaxSweeps = 1000;

/// What stands at the place of a token, for a message.
string Shown(token const& t) {
  if (!t.good()) return "nothing";
  OStringStream text;
  if (t.isWord())
    text << '"' << t.wordToken() << '"';
  else
    text << t;
  return text.str();
}

int ReadSweeps(Istream& is) {
  token const t(is);
  if (!t.isLabel() || t.labelToken() < 1 || t.labelToken() > kMaxSweeps) {
    FatalIOErrorInFunction(is) << "Entry " << is.name() << ": " << Shown(t).c_str()
                               << " after \"zyn iterated\"; possible is a number of sweeps, 1 to "
                               << kMaxSweeps << exit(FatalIOError);
  }
  return static_cast<int>(t.labelToken());
}

}  // namespace

GradientMethod GradientMethod::Read(Istream& is) {
  token const t(is);
  word const name = t.isWord() ? t.wordToken() : word();
  if (name == "plain") return {Kind::kPlain, 1};
  if (name == "iterated") return {Kind::kIterated, ReadSweeps(is)};
  if (name == "leastSquares") return {Kind::kLeastSquares, 1};
  if (name == "radialBasis") return {Kind::kRadialBasis, 1};
  FatalIOErrorInFunction(is) << "Entry " << is.name() << ": " << Shown(t).c_str()
                             << " after \"zyn\"; possible are plain, iterated N, leastSquares, radialBasis"
                             << exit(FatalIOError);
  return {};
}

}  // namespace zyn
}  // namespace Foam
