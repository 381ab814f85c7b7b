// How well the rows reproduce the field 1: its value is 1 and its derivatives are 0 on every face.

#include <cmath>
#include <initializer_list>

#include "foundation/Progress.h"
#include "foundation/Status.h"
#include "rbf_face/CZynFaceRBFInternalObjectImpl.h"

namespace {

constexpr double kExactValue = 1.0;
constexpr double kExactSlope = 0.0;
constexpr double kPrintedScale = 10.0;  // of coordinates

// Adds the error of a sum whose exact value is 0, and keeps the largest with its face.
void AddSlopeError(double sum, int i, double& squares, double& largest, int& face, double& sumThere) {
  double const error = std::fabs(sum);
  squares += error * error;
  if (error > largest) {
    largest = error;
    face = i;
    sumThere = sum;
  }
}

char const* Heading(FaceKind kind) {
  switch (kind) {
    case FaceKind::Inner:
      return "Inner Face FI = 1.e0\n\n";
    case FaceKind::Wall:
      return "Wall Face FI = 1.e0\n\n";
    case FaceKind::Inlet:
      return "Inlet Face FI = 1.e0\n\n";
    case FaceKind::Outlet:
      return "Outlet Face FI = 1.e0\n\n";
    case FaceKind::Partition:
      return "Partinter Face FI = 1.e0\n\n";
    case FaceKind::Symmetry:
      return "Symmetry Face FI = 1.e0\n\n";
    default:
      return "";
  }
}

void PrintPoint(char const* format, double x, double y, double z) {
  PrintFormatted(format, kPrintedScale * x, kPrintedScale * y, kPrintedScale * z);
}

}  // namespace

// The next set-up need not have the faces that this one found worst.
void CZynFaceRBFInternalObject::ClearReport() {
  NFaceDone = 0;
  for (int* const face :
       {&fiMAXFaceID, &dfidxMAXFaceID, &dfidyMAXFaceID, &dfidzMAXFaceID, &dfidnMAXFaceID, &MAXerrNodeID})
    *face = 0;
  for (double* const value :
       {&fiRMS, &fiMAX, &fiMAXAnalysis, &fiMAXRBF, &dfidxRMS, &dfidxMAX, &dfidxMAXRBF, &dfidyRMS, &dfidyMAX,
        &dfidyMAXRBF, &dfidzRMS, &dfidzMAX, &dfidzMAXRBF, &dfidnRMS, &dfidnMAX, &dfidnMAXRBF, &MAXerr})
    *value = 0.0;
}

void CZynFaceRBFInternalObject::AddValueError(double sum, int i) {
  double const error = std::fabs(kExactValue - sum);
  fiRMS += error * error;
  if (error > fiMAX) {
    fiMAX = error;
    fiMAXFaceID = i;
    fiMAXAnalysis = kExactValue;
    fiMAXRBF = sum;
  }
}

void CZynFaceRBFInternalObject::AddGradientErrors(double sum, DQVector const& gradientSum, int i) {
  AddValueError(sum, i);
  AddSlopeError(gradientSum.x, i, dfidxRMS, dfidxMAX, dfidxMAXFaceID, dfidxMAXRBF);
  AddSlopeError(gradientSum.y, i, dfidyRMS, dfidyMAX, dfidyMAXFaceID, dfidyMAXRBF);
  AddSlopeError(gradientSum.z, i, dfidzRMS, dfidzMAX, dfidzMAXFaceID, dfidzMAXRBF);
}

void CZynFaceRBFInternalObject::AccumulateNormalReport(int i) {
  int const n = m_ppFaceCellConn[i][0];
  double sum = 0.0, sumN = 0.0;
  for (int k = 1; k <= n; ++k) {
    sum += m_ppFaceFiCoef[i][k];
    sumN += m_ppFaceDnCoef[i][k];
  }
  AddSlopeError(sumN, i, dfidnRMS, dfidnMAX, dfidnMAXFaceID, dfidnMAXRBF);
  AddValueError(sum, i);
}

// Methods 1 and 2 do not count their faces: their root mean squares are quotients by 0 and are printed as such.
int CZynFaceRBFInternalObject::PrintDebugMessage() {
  double const count = NFaceDone;
  for (double* const rms : {&fiRMS, &dfidxRMS, &dfidyRMS, &dfidzRMS, &dfidnRMS})
    *rms = std::sqrt(*rms / count);
  PrintFlushed(Heading(Kind()));
  PrintValueReport();
  if (iSearch_method == 4) {
    PrintNormalReport();
  } else {
    PrintGradientReport();
  }
  return Status::kDone;
}

void CZynFaceRBFInternalObject::PrintValueReport() {
  PrintFormatted("fi RMS ERROR                = %le\n", fiRMS);
  PrintFormatted("fi MAX ERROR                = %le\n", fiMAX);
  PrintFormatted("fi MAX analysis ; RBF fi    = %le %le\n", fiMAXAnalysis, fiMAXRBF);
  PrintTarget("fi MAX Coord                = %le %le %le\n\n", fiMAXFaceID);
}

void CZynFaceRBFInternalObject::PrintNormalReport() {
  PrintFormatted("dfi/dn RMS ERROR                = %le\n", dfidnRMS);
  PrintFormatted("dfi/dn MAX ERROR                = %le\n", dfidnMAX);
  PrintFormatted("dfi/dn MAX Face ID              = %d\n", dfidnMAXFaceID);
  PrintFormatted("dfi/dn MAX analysis ; RBF dfi/dn= %le %le\n", kExactSlope, dfidnMAXRBF);
  PrintTarget("dfi/dn MAX Coord                = %le %le %le\n", dfidnMAXFaceID);
  PrintVirtualNode("dfi/dn MAX Virtual P Coord      = %le %le %le\n", dfidnMAXFaceID, kP);
  PrintVirtualNode("dfi/dn MAX Virtual E Coord      = %le %le %le\n\n", dfidnMAXFaceID, kE);
}

void CZynFaceRBFInternalObject::PrintGradientReport() {
  PrintFormatted("MAXerr NodeID = %d, ERROR = %le\n", MAXerrNodeID, MAXerr);

  PrintFormatted("dfi/dx RMS ERROR                = %le\n", dfidxRMS);
  PrintFormatted("dfi/dx MAX ERROR                = %le\n", dfidxMAX);
  PrintFormatted("dfi/dx MAX analysis ; RBF dfi/dx= %le %le\n", kExactSlope, dfidxMAXRBF);
  PrintTarget("dfi/dx MAX Coord                = %le %le %le\n", dfidxMAXFaceID);
  PrintVirtualNode("dfi/dx MAX Virtual P Coord      = %le %le %le\n", dfidxMAXFaceID, kP);
  PrintVirtualNode("dfi/dx MAX Virtual E Coord      = %le %le %le\n\n", dfidxMAXFaceID, kE);

  PrintFormatted("dfi/dy RMS ERROR                = %le\n", dfidyRMS);
  PrintFormatted("dfi/dy MAX ERROR                = %le\n", dfidyMAX);
  PrintFormatted("dfi/dy MAX analysis ; RBF dfi/dy= %le %le\n", kExactSlope, dfidyMAXRBF);
  PrintTarget("dfi/dy MAX Coord                = %le %le %le\n\n", dfidyMAXFaceID);

  PrintFormatted("dfi/dz RMS ERROR                = %le\n", dfidzRMS);
  PrintFormatted("dfi/dz MAX ERROR                = %le\n", dfidzMAX);
  PrintFormatted("dfi/dz MAX analysis ; RBF dfi/dz= %le %le\n", kExactSlope, dfidzMAXRBF);
  PrintTarget("dfi/dz MAX Coord                = %le %le %le\n\n", dfidzMAXFaceID);
}

// If no face had an error, that is element 0 of the tables, all zeros.
void CZynFaceRBFInternalObject::PrintTarget(char const* format, int i) {
  if (m_FaceX.Empty()) return PrintPoint(format, 0.0, 0.0, 0.0);
  PrintPoint(format, m_FaceX[i], m_FaceY[i], m_FaceZ[i]);
}

void CZynFaceRBFInternalObject::PrintVirtualNode(char const* format, int i, int k) {
  if (m_ppVirtualNode == nullptr) return PrintPoint(format, 0.0, 0.0, 0.0);
  IBCnode const& node = m_ppVirtualNode[i][k];
  PrintPoint(format, node.x, node.y, node.z);
}
