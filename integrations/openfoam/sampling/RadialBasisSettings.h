#pragma once

#include "dictionary.H"
#include "host/ZYNKNCompParm.h"

namespace Foam {
namespace zyn {

/// The settings of an operator: how stencils are found and how wide the radial functions are.
struct RadialBasisSettings {
  int method;
  int span;
  int number;

  /// The method that is the most accurate on most meshes, and a span at which rounding does not show.
  static RadialBasisSettings Defaults() { return {2, 200, 20}; }

  /// Reads the entries `method`, `span` and `number`, all of them optional. Ends the program with a message if one is
  /// out of range or if there is another entry.
  void Read(dictionary const& dict, int nMethods);
};

/// Hands settings to the operators, which otherwise read and write a file in the working folder.
class LentSettings : public CZYNKNCMPCompParm {
 public:
  explicit LentSettings(RadialBasisSettings const& settings);

  CZYNCMP_FaceRBF_Parm* getFaceRBFParm() override { return &faces_; }
  CZYNCMP_IBRBF_Parm* getIBRBFParm() override { return &points_; }

 private:
  CZYNCMP_FaceRBF_Parm faces_;
  CZYNCMP_IBRBF_Parm points_;
};

/// The dictionary in an entry. Ends the program with a message if the entry is there but no dictionary.
/// @param key  an entry that is missing counts as an empty dictionary
dictionary DictionaryIn(dictionary const& dict, word const& key);

/// Ends the program with a message unless all keywords of a dictionary are among those given.
void CheckKeywords(dictionary const& dict, std::initializer_list<char const*> known);

}  // namespace zyn
}  // namespace Foam
