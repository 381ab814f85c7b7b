#pragma once

#include <gtest/gtest.h>

#include <string>
#include <type_traits>
#include <vector>

#include "tests/support/mesh/SmallMeshes.h"
#include "tests/support/rbf_cell/CellBed.h"
#include "tests/support/rbf_face/FaceBed.h"
#include "tests/support/rbf_ib/PointBed.h"

/// @file
/// The three operators of radial basis functions, with what they have in common under one name. Their members keep the
/// names that solvers know.

namespace zyn_test {

/// Two cells whose distance, and so the mean distance, is 1.25.
inline TestMesh CellsOneAndAQuarterApart() { return LooseCells({Point{0, 0, 0}, Point{1.25, 0, 0}}); }

struct CellOperator {
  using Object = CZynRBFInternalObject;
  using Bed = CellBed;

  static constexpr auto kGlobals = &Object::m_pGV;
  static constexpr auto kGPU = &Object::m_pGVGPU;
  static constexpr auto kOpenMP = &Object::m_pGVOpenMP;
  static constexpr auto kMesh = &Object::m_pMesh;
  static constexpr auto kPartitionFaces = &Object::m_pPartFace;
  static constexpr auto kCommunication = &Object::m_pComm;
  static constexpr auto kFirstWordOfGPU = &Object::m_GPUHead;
  static constexpr auto kFailureText = &Object::m_szError;
  static constexpr auto kSettingsFileName = &Object::m_szRBFFileName;

  static Object& In(Bed& bed) { return *bed.object; }

  static constexpr char const* kFormat = "1001";
  static constexpr std::size_t kCharactersOfTheFirstLine = 254;
  static std::string DefaultFile() { return "1001\nSpan              = 500\nShape Normalize   = 0\n"; }
  static std::vector<double> Defaults() { return {500.0, 0.0}; }

  /// The lines behind the format number, with keys that nobody reads.
  static std::string Lines(std::string const& span) { return "\nSpam = " + span + "\ns = 2\n"; }
  static std::vector<double> ValuesOfLines(double span) { return {span, 2.0}; }

  static std::vector<double> Values(Object const& o) { return {o.Span, 1.0 * o.iShape_Normalize}; }
  static void SetUnusualValues(Object& o) { o.Span = 123.5, o.iShape_Normalize = 7; }
};

struct FaceOperator {
  using Object = CZynFaceRBFInternalObject;
  using Bed = FaceBed;

  static constexpr auto kGlobals = &Object::pGV;
  static constexpr auto kGPU = &Object::pGVGPU;
  static constexpr auto kOpenMP = &Object::pGVOpenMP;
  static constexpr auto kMesh = &Object::pMesh;
  static constexpr auto kPartitionFaces = &Object::pPartFace;
  static constexpr auto kCommunication = &Object::pCommunication;
  static constexpr auto kFirstWordOfGPU = &Object::GPUFirstWord;
  static constexpr auto kFailureText = &Object::ErrorMsg;
  static constexpr auto kSettingsFileName = &Object::RBFFileName;

  static Object& In(Bed& bed) { return bed.object; }

  static constexpr char const* kFormat = "1004";
  static constexpr std::size_t kCharactersOfTheFirstLine = 255;
  static std::string DefaultFile() {
    return "1004\nSpan              = 1000\niSearch_method    = 4\nSearch_distance   = 2.500000\n"
           "Search_number     = 20\nDebug mode        = 0\n";
  }
  static std::vector<double> Defaults() { return {1000.0, 4.0, 2.5, 20.0, 0.0}; }

  static std::string Lines(std::string const& span) {
    return "\nSpam = " + span + "\nm = 2\nd = 0.75\nn = 12\ng = 1\n";
  }
  static std::vector<double> ValuesOfLines(double span) { return {span, 2.0, 0.75, 12.0, 1.0}; }

  static std::vector<double> Values(Object const& o) {
    return {o.Span, 1.0 * o.iSearch_method, o.Search_distance, 1.0 * o.Search_number, o.bDebug ? 1.0 : 0.0};
  }
  static void SetUnusualValues(Object& o) {
    o.Span = 123.5, o.iSearch_method = 7, o.Search_distance = 8.25, o.Search_number = 9;
    o.MeanDistance = 1.25;
  }
};

struct PointOperator {
  using Object = CZynIBRBFInternalObject;
  using Bed = PointBed;

  static constexpr auto kGlobals = &Object::m_pGV;
  static constexpr auto kGPU = &Object::m_pGVGPU;
  static constexpr auto kOpenMP = &Object::m_pGVOpenMP;
  static constexpr auto kMesh = &Object::m_pMesh;
  static constexpr auto kPartitionFaces = &Object::m_pPartFace;
  static constexpr auto kCommunication = &Object::m_pComm;
  static constexpr auto kFirstWordOfGPU = &Object::m_GPUHead;
  static constexpr auto kFailureText = &Object::ErrorMsg;
  static constexpr auto kSettingsFileName = &Object::RBFFileName;

  static Object& In(Bed& bed) { return bed.object; }

  static constexpr char const* kFormat = "1002";
  static constexpr std::size_t kCharactersOfTheFirstLine = 255;
  static std::string DefaultFile() {
    return "1002\nSpan              = 500\niSearch_method    = 3\nSearch_distance   = 2.500000\n"
           "Search_number     = 20\n";
  }
  static std::vector<double> Defaults() { return {500.0, 3.0, 2.5, 20.0}; }

  static std::string Lines(std::string const& span) { return "\nSpam = " + span + "\nm = 1\nd = 2\nn = 3\n"; }
  static std::vector<double> ValuesOfLines(double span) { return {span, 1.0, 2.0, 3.0}; }

  static std::vector<double> Values(Object const& o) {
    return {o.Span, 1.0 * o.iSearch_method, o.Search_distance, 1.0 * o.Search_number};
  }
  static void SetUnusualValues(Object& o) {
    o.Span = 123.5, o.iSearch_method = 7, o.Search_distance = -3.5, o.Search_number = 77;
    o.MeanDistance = 1.25;
  }
};

using AllOperators = ::testing::Types<CellOperator, FaceOperator, PointOperator>;

struct OperatorNames {
  template <typename Operator>
  static std::string GetName(int) {
    if (std::is_same_v<Operator, CellOperator>) return "Cells";
    return std::is_same_v<Operator, FaceOperator> ? "Faces" : "Points";
  }
};

}  // namespace zyn_test
