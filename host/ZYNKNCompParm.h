#pragma once

/// Settings of the interpolation to faces; the same values as in its settings file.
struct CZYNCMP_FaceRBF_Parm {
  int iFaceParmHead = 0;         ///< not read
  int Span = 0;                  ///< support multiple, widened to double by the reader
  int iSearch_method = 0;        ///< how stencils are found, 1..4
  double Search_distance = 0.0;  ///< L; a negative value selects the default
  int Search_number = 0;         ///< wanted size of a stencil
  int iDebugMode = 0;            ///< above 0: the debug report is printed
};

/// Settings of the interpolation to free points (immersed boundaries).
struct CZYNCMP_IBRBF_Parm {
  int iFaceParmHead = 0;         ///< not read
  int Span = 0;                  ///< support multiple, widened to double by the reader
  int iSearch_method = 0;        ///< how stencils are found, 1..3
  double Search_distance = 0.0;  ///< L; a negative value selects the default
  int Search_number = 0;         ///< wanted size of a stencil
};

/// The solver's computation parameters, as far as the operators use them. The blocks are lent: the solver
/// keeps them.
class CZYNKNCMPCompParm {
 public:
  virtual ~CZYNKNCMPCompParm() = default;

  virtual CZYNCMP_FaceRBF_Parm* getFaceRBFParm() = 0;
  virtual CZYNCMP_IBRBF_Parm* getIBRBFParm() = 0;
};
