#pragma once

#include "host/Zyn3dGV.h"

/// Partition faces with the arrays of another object, each of which a test can replace.
class LentFaces : public CPartitionFace_DLL {
 public:
  explicit LentFaces(CPartitionFace_DLL& from)
      : count(from.NParInterFace()),
        cv(from.ijParCV()),
        other(from.ijPar()),
        sx(from.ijParSx()),
        sy(from.ijParSy()),
        sz(from.ijParSz()),
        xc(from.ijParxc()),
        yc(from.ijParyc()),
        zc(from.ijParzc()),
        lamda(from.ParInterFace_Lamda()),
        type(from.FaceType_Partition()) {}

  int NParInterFace() override { return count; }
  int* ijParCV() override { return cv; }
  int* ijPar() override { return other; }
  double* ijParSx() override { return sx; }
  double* ijParSy() override { return sy; }
  double* ijParSz() override { return sz; }
  double* ijParxc() override { return xc; }
  double* ijParyc() override { return yc; }
  double* ijParzc() override { return zc; }
  double* ParInterFace_Lamda() override { return lamda; }
  int* FaceType_Partition() override { return type; }

  int count;
  int *cv, *other;
  double *sx, *sy, *sz, *xc, *yc, *zc, *lamda;
  int* type;
};
