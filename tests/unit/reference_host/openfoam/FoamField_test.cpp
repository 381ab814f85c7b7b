#include "reference_host/openfoam/FoamField.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "reference_host/openfoam/FoamFieldLookup.h"
#include "tests/unit/reference_host/MeshTestSupport.h"
#include "tests/unit/reference_host/openfoam/FoamTestCase.h"

namespace {

using reference_host::FoamField;
using reference_host::FoamFieldLookup;
using reference_host::PatchFaces;
using reference_host::PolyMeshBoundary;
using reference_host::ReadFoamField;

using Numbers = std::vector<double>;

// Three cells. Faces 0 and 1 lie inside, 2 to 4 belong to inlet, 5 and 6 to wall_low, 7 to wall_high; "none" has none.
// Cell 0 has two faces in the inlet.
PolyMeshBoundary ThreeCells() {
  PolyMeshBoundary boundary;
  boundary.owner = {0, 1, 0, 2, 0, 1, 2, 1};
  boundary.patches = {
      {"inlet", "patch", {}}, {"wall_low", "wall", {}}, {"wall_high", "wall", {}}, {"none", "patch", {}}};
  boundary.facesOfPatch = {PatchFaces{2, 3}, PatchFaces{5, 2}, PatchFaces{7, 1}, PatchFaces{8, 0}};
  return boundary;
}

std::string Text(std::string const& internal, std::string const& patches) {
  return foam_test::Header("volScalarField") + "dimensions [0 2 -2 0 0 0 0];\ninternalField " + internal +
         ";\nboundaryField\n{\n" + patches + "}\n// the end\n";
}

FoamField Read(std::string const& text) {
  TemporaryFolder const folder;
  return ReadFoamField(folder.Write("0/p", text), 3, ThreeCells());
}

std::string Refusal(std::string const& text) {
  TemporaryFolder const folder;
  std::string const file = folder.Write("0/p", text);
  std::string const what = MeshErrorOf([&] { ReadFoamField(file, 3, ThreeCells()); });
  EXPECT_EQ(0U, what.rfind(file, 0)) << what;
  return what.substr(std::min(what.size(), file.size()));
}

std::string const kAllPatches = "\".*\" { type zeroGradient; }\n";

TEST(FoamField, ReadsUniformAndNonuniformValuesOfCells) {
  EXPECT_EQ(Read(Text("uniform -2.5e3", kAllPatches)).cell, (Numbers{-2500, -2500, -2500}));
  EXPECT_EQ(Read(Text("nonuniform List<scalar> \n3\n(\n1\n2.5\n-3e-2\n)\n", kAllPatches)).cell,
            (Numbers{1, 2.5, -0.03}));
  EXPECT_EQ(Read(Text("nonuniform List<scalar> 3{7}", kAllPatches)).cell, (Numbers{7, 7, 7}));
  EXPECT_EQ(Read(Text("nonuniform 3(1 2 3)", kAllPatches)).cell, (Numbers{1, 2, 3}));
}

std::string VectorText(std::string const& internal, std::string const& patches) {
  return foam_test::Header("volVectorField") + "dimensions [0 1 -1 0 0 0 0];\ninternalField " + internal +
         ";\nboundaryField\n{\n" + patches + "}\n";
}

TEST(FoamField, ReadsVectorsComponentByComponent) {
  FoamField const field = Read(VectorText("nonuniform List<vector> \n3\n(\n(1 2 3)\n(4 5 6)\n(7 8 9)\n)\n",
                                          "inlet { type fixedValue; value uniform (1 0 -2.5); }\n"
                                          "wall_low { type noSlip; }\nwall_high { type calculated; value "
                                          "nonuniform List<vector> 1((3 4 5)); }\n"));
  EXPECT_EQ(3, field.nComponents);
  EXPECT_EQ((Numbers{1, 2, 3, 4, 5, 6, 7, 8, 9}), field.cell);
  EXPECT_EQ((Numbers{1, 0, -2.5, 1, 0, -2.5, 1, 0, -2.5}), field.patch[0]);
  EXPECT_EQ((Numbers{0, 0, 0, 0, 0, 0}), field.patch[1]);
  EXPECT_EQ((Numbers{3, 4, 5}), field.patch[2]);
  EXPECT_EQ((std::vector<char>{0, 0, 0, 0}), field.lacksValues);
  EXPECT_EQ((std::vector<std::string>{"fixedValue", "noSlip", "calculated", ""}), field.patchType);
  EXPECT_EQ((Numbers{1, 2, 3, 1, 2, 3, 1, 2, 3}), Read(VectorText("uniform (1 2 3)", kAllPatches)).cell);
  EXPECT_EQ((Numbers{1, 2, 3, 1, 2, 3, 1, 2, 3}),
            Read(VectorText("nonuniform List<vector> 3{(1 2 3)}", kAllPatches)).cell);
}

TEST(FoamField, RefusesVectorsThatAreNotOfThreeNumbers) {
  EXPECT_EQ(":9: '(' expected instead of '1;'", Refusal(VectorText("uniform 1", kAllPatches)));
  EXPECT_EQ(":9: a component of a vector expected instead of ');'",
            Refusal(VectorText("uniform (1 2)", kAllPatches)));
  EXPECT_EQ(":9: ')' expected instead of '4);'", Refusal(VectorText("uniform (1 2 3 4)", kAllPatches)));
  EXPECT_EQ(":9: List<vector> expected instead of 'List<scalar>'",
            Refusal(VectorText("nonuniform List<scalar> 3(1 2 3)", kAllPatches)));
  EXPECT_EQ(": 2 values for 3 cells", Refusal(VectorText("nonuniform List<vector> 2{(1 2 3)}", kAllPatches)));
}

TEST(FoamField, TakesTheValueEntriesOfPatches) {
  FoamField const field = Read(Text("uniform 0",
                                    "inlet { type fixedValue; value nonuniform List<scalar> 3(1 2 3); }\n"
                                    "wall_low { type calculated; refs (a { b 1; }); value uniform 4; }\n"
                                    "wall_high { type inletOutlet; inletValue uniform 9; value uniform 5; }\n"
                                    "none { type calculated; value nonuniform List<scalar> 0(); }\n"));
  EXPECT_EQ(field.patch[0], (Numbers{1, 2, 3}));
  EXPECT_EQ(field.patch[1], (Numbers{4, 4}));
  EXPECT_EQ(field.patch[2], (Numbers{5}));
  EXPECT_EQ((std::vector<char>{0, 0, 0, 0}), field.lacksValues);
}

TEST(FoamField, LeavesFacesToTheirCellsWithAWordWhereValuesAreMissing) {
  FoamField const field = Read(Text("uniform 0",
                                    "inlet { type zeroGradient; value uniform 8; }\n"
                                    "wall_low { type fixedFluxPressure; gradient uniform 0; }\n"));
  for (auto const& patch : field.patch) EXPECT_EQ(std::nullopt, patch);
  // wall_high has no entry at all, "none" no faces.
  EXPECT_EQ((std::vector<char>{0, 1, 1, 0}), field.lacksValues);
}

TEST(FoamField, FindsPatchesByNameBeforePatternsAndByTheLastPattern) {
  FoamField const field = Read(Text("uniform 0",
                                    "\"wall_.*\" { type fixedValue; value uniform 1; }\n"
                                    "\"(inlet|wall_low)\" { type fixedValue; value uniform 2; }\n"
                                    "wall_high { type fixedValue; value uniform 3; }\n"
                                    "\"wall_h.*\" { type fixedValue; value uniform 4; }\n"));
  EXPECT_EQ(field.patch[0], (Numbers{2, 2, 2}));
  EXPECT_EQ(field.patch[1], (Numbers{2, 2}));
  EXPECT_EQ(field.patch[2], (Numbers{3}));
}

TEST(FoamField, KnowsTheMacroOfTheInternalField) {
  std::string const patches = "\".*\" { type fixedValue; value $internalField; }\n";
  EXPECT_EQ(Read(Text("uniform 6", patches)).patch[1], (Numbers{6, 6}));
  // Three cells, and three faces of the inlet.
  std::string const inlet = "inlet { type fixedValue; value $internalField; }\n";
  EXPECT_EQ((Numbers{1, 2, 3}), Read(Text("nonuniform List<scalar> 3(1 2 3)", inlet)).patch[0]);
  EXPECT_EQ(": 3 values for 2 faces of patch 'wall_low'",
            Refusal(Text("nonuniform List<scalar> 3(1 2 3)", patches)));
  // A patch that needs no values may say anything.
  std::string const unused = "\".*\" { type zeroGradient; value $internalField; }\n";
  EXPECT_EQ(std::nullopt, Read(Text("nonuniform List<scalar> 3(1 2 3)", unused)).patch[1]);
}

std::string WithEntries(std::string const& entries, std::string const& patches) {
  return foam_test::Header("volScalarField") + entries + "\ninternalField uniform 0;\nboundaryField\n{\n" +
         patches + "}\n";
}

TEST(FoamField, PutsInWhatMacrosStandFor) {
  auto const valueOf = [](std::string const& value) {
    return *Read(WithEntries("T0 300; hot { T 400; deep { value uniform 7; } } all uniform ${T0}; more $all;",
                             "cold { T0 250; } inlet { T0 200; below { T0 100; } type fixedValue; value " +
                                 value + "; }\n"))
                .patch[0];
  };
  EXPECT_EQ((Numbers{200, 200, 200}), valueOf("uniform $T0"));
  EXPECT_EQ((Numbers{200, 200, 200}), valueOf("uniform $.T0"));
  EXPECT_EQ((Numbers{300, 300, 300}), valueOf("uniform $...T0"));
  EXPECT_EQ((Numbers{300, 300, 300}), valueOf("uniform $:T0"));
  EXPECT_EQ((Numbers{250, 250, 250}), valueOf("uniform $..cold.T0"));
  EXPECT_EQ((Numbers{400, 400, 400}), valueOf("uniform $hot.T"));
  EXPECT_EQ((Numbers{7, 7, 7}), valueOf("$:hot.deep.value"));
  EXPECT_EQ((Numbers{300, 300, 300}), valueOf("$more"));
}

TEST(FoamField, PutsInTheLatestEntryBeforeTheMacro) {
  FoamField const field = Read(WithEntries("a 1; b $a; a 2;",
                                           "inlet { type fixedValue; value uniform $b; }\n"
                                           "wall_low { type fixedValue; value uniform $a; }\n"));
  EXPECT_EQ((Numbers{1, 1, 1}), field.patch[0]);
  EXPECT_EQ((Numbers{2, 2}), field.patch[1]);
}

TEST(FoamField, TakesThePatchThatAMacroStandsFor) {
  FoamField const field = Read(WithEntries("noFlow { type zeroGradient; } kind calculated;",
                                           "inlet { type fixedValue; value uniform 3; }\n"
                                           "wall_low { $inlet; type $kind; }\n"
                                           "wall_high { type fixedValue; $noFlow; }\n"));
  EXPECT_EQ((Numbers{3, 3}), field.patch[1]);
  EXPECT_EQ("calculated", field.patchType[1]);
  EXPECT_EQ(std::nullopt, field.patch[2]);
  EXPECT_EQ("zeroGradient", field.patchType[2]);
}

TEST(FoamField, PutsVectorsAndTheirComponentsIn) {
  auto const valueOf = [](std::string const& value) {
    return *Read(foam_test::Header("volVectorField") + "lid (1 2 3); u 4;\ninternalField uniform (0 0 0);\n" +
                 "boundaryField { wall_high { type fixedValue; value " + value + "; } }\n")
                .patch[2];
  };
  EXPECT_EQ((Numbers{1, 2, 3}), valueOf("uniform $lid"));
  EXPECT_EQ((Numbers{4, 0, 4}), valueOf("uniform ($u 0 $u)"));
}

TEST(FoamField, PassesOverTheCodeOfAPatch) {
  FoamField const field =
      Read(WithEntries("",
                       "inlet { type codedFixedValue; code #{ if (a < b) { c = \"}\"; } #};\n"
                       "codeOptions #{ -I$(LIB) #}; value uniform 2; }\n"));
  EXPECT_EQ((Numbers{2, 2, 2}), field.patch[0]);
  EXPECT_EQ(":12: '{' is not closed by '#}'", Refusal(WithEntries("", "inlet { code #{ a; }; }\n")));
}

TEST(FoamField, RefusesMacrosThatStandForNothing) {
  auto const refusal = [](std::string const& entries, std::string const& value) {
    return Refusal(WithEntries(entries, "inlet { type fixedValue; value " + value + "; }\n"));
  };
  EXPECT_EQ(":12: there is no entry before this for the macro 'later'",
            refusal("a 1;", "uniform $later; later 2"));
  EXPECT_EQ(":12: there is no entry before this for the macro '..'", refusal("", "uniform $.."));
  EXPECT_EQ(":12: there is no entry before this for the macro '....a'", refusal("a 1;", "uniform $....a"));
  EXPECT_EQ(":12: there is no entry before this for the macro 'a.b'", refusal("a 1;", "uniform $a.b"));
  EXPECT_EQ(":12: a macro's name expected instead of '$;'", refusal("", "uniform $"));
  EXPECT_EQ(":12: the macro stands for a dictionary, not for a value", refusal("a { b 1; }", "uniform $a"));
  EXPECT_EQ(":8: a value expected instead of 'b;'", refusal("a b;", "uniform $a"));
  EXPECT_EQ(":8: ';' expected instead of '2;'", refusal("a 1 2;", "uniform $a"));
  EXPECT_EQ(":8: uniform or nonuniform expected instead of '1'", refusal("a 1;", "$a"));
  EXPECT_EQ(":12: the macro stands for a value, not for a dictionary",
            Refusal(WithEntries("a 1;", "inlet { $a; }\n")));
  EXPECT_EQ(":12: a macro for a dictionary can be read only inside the entry of a patch",
            Refusal(WithEntries("a { b 1; }", "$a;\n")));
  std::string chain = "a0 1;";
  for (int i = 1; i <= 21; ++i) chain += " a" + std::to_string(i) + " $a" + std::to_string(i - 1) + ";";
  EXPECT_EQ((Numbers{1, 1, 1}),
            Read(WithEntries(chain, "inlet { type fixedValue; value uniform $a19; }\n")).patch[0]);
  EXPECT_EQ(":8: more than 20 macros stand for each other", refusal(chain, "uniform $a20"));
}

std::string Nested(int n) {
  std::string text;
  for (int i = 0; i < n; ++i) text += "a {";
  for (int i = 0; i < n; ++i) text += "}";
  return text + "\n";
}

TEST(FoamField, RefusesWhatItCannotRead) {
  EXPECT_EQ(":6: a field of class 'volTensorField'; only volScalarField and volVectorField can be read",
            Refusal(foam_test::Header("volTensorField") + "internalField uniform 0;"));
  EXPECT_EQ(": there is no internalField", Refusal(foam_test::Header("volScalarField")));
  EXPECT_EQ(": there is no boundaryField",
            Refusal(foam_test::Header("volScalarField") + "internalField uniform 1;\n"));
  EXPECT_EQ(": 2 values for 3 cells", Refusal(Text("nonuniform List<scalar> 2(1 2)", kAllPatches)));
  EXPECT_EQ(":9: the length of a list of values, 4, is not in 0 to 3",
            Refusal(Text("nonuniform List<scalar> 4(1 2 3 4)", kAllPatches)));
  EXPECT_EQ(":9: List<scalar> expected instead of 'List<vector>'",
            Refusal(Text("nonuniform List<vector> 0()", kAllPatches)));
  EXPECT_EQ(":9: uniform or nonuniform expected instead of 'constant'",
            Refusal(Text("constant 3", kAllPatches)));
  EXPECT_EQ(": 2 values for 3 faces of patch 'inlet'",
            Refusal(Text("uniform 1", "inlet { type fixedValue; value nonuniform List<scalar> 2(1 2); }\n")));
  EXPECT_EQ(":12: there is no entry before this for the macro 'wall'",
            Refusal(Text("uniform 1", "inlet { type fixedValue; value $wall; }\n")));
  EXPECT_EQ(":12: the directive '#include' cannot be read; replace it by the entries it stands for",
            Refusal(Text("uniform 1", "#include \"more\"\n")));
  EXPECT_EQ(":12: the pattern 'in(let' has a '(' that is not closed",
            Refusal(Text("uniform 1", "\"in(let\" { type zeroGradient; }\n")));
  EXPECT_EQ(":12: dictionaries are nested more than 100 deep", Refusal(Text("uniform 1", Nested(100))));
  EXPECT_EQ(":12: the pattern '' is empty", Refusal(Text("uniform 1", "\"\" { type zeroGradient; }\n")));
}

TEST(FoamField, RefusesPatternsThatWouldExhaustTheStackOrTheMemory) {
  std::string const deep = std::string(30000, '(') + "inlet" + std::string(30000, ')');
  EXPECT_EQ(
      ":12: the pattern '((((((((((((((((((((((((((((((((((((((((...' has 60005 characters, more than 1000",
      Refusal(Text("uniform 1", "\"" + deep + "\" { type zeroGradient; }\n")));
  EXPECT_EQ(
      ":12: the pattern '((a{1,255}){1,255}){1,255}' has a counted repeat '{'; only ?, + and * can be read",
      Refusal(Text("uniform 1", "\"((a{1,255}){1,255}){1,255}\" { type zeroGradient; }\n")));
}

PolyMeshBoundary ManyPatches(int n) {
  PolyMeshBoundary boundary;
  for (int p = 0; p < n; ++p) {
    boundary.owner.push_back(0);
    boundary.patches.push_back({"blade_" + std::to_string(p) + "_side", "wall", {}});
    boundary.facesOfPatch.push_back({p, 1});
  }
  return boundary;
}

TEST(FoamField, FindsAThousandPatchesAmongAThousandPatterns) {
  int const n = 1000;
  std::string entries;
  for (int p = 0; p < n; ++p) {
    entries += "\"blade_" + std::to_string(p) + "_.*\" { type fixedValue; value uniform " +
               std::to_string(p) + "; }\n";
  }
  TemporaryFolder const folder;
  std::string const file = folder.Write("p", Text("uniform 0", entries));
  FoamField const field = ReadFoamField(file, 1, ManyPatches(n));
  for (int p = 0; p < n; ++p) EXPECT_EQ(field.patch[p], (Numbers{double(p)}));
}

TEST(FoamField, RefusesPatternsWhoseMatchingWouldTakeTheProductOfAll) {
  int const n = 2000;
  std::string entries;
  for (int p = 0; p < n; ++p) entries += "\".*(" + std::to_string(p) + "x)+.*\" { type zeroGradient; }\n";
  TemporaryFolder const folder;
  std::string const file = folder.Write("p", Text("uniform 0", entries));
  EXPECT_EQ(
      MeshErrorOf([&] { ReadFoamField(file, 1, ManyPatches(n)); }),
      file + ": the 2000 patterns are too many, or too long, for 2000 patches; name the patches instead");
}

TEST(FoamField, DoesNotWriteOutRepeatedValuesThatNoPatchNeeds) {
  // Each entry of thirty bytes announces as many values as the mesh has faces.
  PolyMeshBoundary boundary = ManyPatches(1);
  boundary.owner.assign(1000000, 0);
  std::string entries;
  for (int p = 0; p < 1000; ++p) {
    entries += "p" + std::to_string(p) + " { type fixedValue; value nonuniform List<scalar> 1000000{1}; }\n";
  }
  TemporaryFolder const folder;
  std::string const file = folder.Write("p", Text("uniform 0", entries + kAllPatches));
  EXPECT_EQ(std::nullopt, ReadFoamField(file, 1, boundary).patch[0]);
}

TEST(FoamField, RefusesEveryTruncatedFile) {
  std::string const text =
      Text("nonuniform List<scalar> 3(1 2 3)", "inlet { type fixedValue; value uniform 1; }\n");
  std::size_t const end = text.find("}\n// the end");
  for (std::size_t length = 0; length < end; ++length) {
    TemporaryFolder const folder;
    std::string const file = folder.Write("p", text.substr(0, length));
    EXPECT_THROW(ReadFoamField(file, 3, ThreeCells()), reference_host::MeshError) << length;
  }
}

// Whichever single byte changes, the field is either read or rejected.
TEST(FoamField, SurvivesDamagedBytes) {
  std::string const whole =
      Text("nonuniform List<scalar> 3(1 2 3)",
           "inlet { type fixedValue; value nonuniform List<scalar> 3{1}; }\n\"w.*\" { type slip; }\n");
  for (std::size_t at = 0; at < whole.size(); ++at) {
    for (char const c : {'(', '}', ';', '"', '9', '-', '$', '\0'}) {
      std::string text = whole;
      text[at] = c;
      TemporaryFolder const folder;
      std::string const file = folder.Write("p", text);
      try {
        EXPECT_EQ(3U, ReadFoamField(file, 3, ThreeCells()).cell.size());
      } catch (reference_host::MeshError const& error) {
        EXPECT_EQ(std::string(error.what()).find('\n'), std::string::npos);
      }
    }
  }
}

TEST(FoamFieldLookup, FindsFacesByTheirCellPatchAndPlaceAmongItsFaces) {
  PolyMeshBoundary const boundary = ThreeCells();
  FoamField const field = Read(Text("nonuniform List<scalar> 3(10 20 30)",
                                    "inlet { type fixedValue; value nonuniform List<scalar> 3(1 2 3); }\n"
                                    "wall_low { type zeroGradient; }\n"
                                    "wall_high { type fixedValue; value uniform 5; }\n"));
  FoamFieldLookup const lookup(field, boundary);
  EXPECT_EQ(20, lookup.AtCell(1));
  EXPECT_EQ(1, lookup.At({0, 0, 0}));
  EXPECT_EQ(3, lookup.At({0, 0, 1}));
  EXPECT_EQ(2, lookup.At({2, 0, 0}));
  EXPECT_EQ(20, lookup.At({1, 1, 0}));
  EXPECT_EQ(5, lookup.At({1, 2, 0}));
}

TEST(FoamFieldLookup, FindsTheComponentsOfVectors) {
  PolyMeshBoundary const boundary = ThreeCells();
  FoamField const field = Read(VectorText(
      "nonuniform List<vector> 3((1 2 3) (4 5 6) (7 8 9))",
      "inlet { type fixedValue; value nonuniform List<vector> 3((10 11 12) (13 14 15) (16 17 18)); }\n"));
  FoamFieldLookup const lookup(field, boundary);
  EXPECT_EQ(5, lookup.AtCell(1, 1));
  EXPECT_EQ(12, lookup.At({0, 0, 0}, 2));
  EXPECT_EQ(16, lookup.At({0, 0, 1}));
  EXPECT_EQ(6, lookup.At({1, 1, 0}, 2));
}

}  // namespace
