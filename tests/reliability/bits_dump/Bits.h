#pragma once

#include "tests/reliability/bits_dump/BitsFile.h"

namespace bits_dump {

/// All Green-Gauss and least-squares gradients of random partitions: any topology, empty groups, face types and weights
/// out of the ordinary, empty cells, fields full of ties, infinities and NaN.
void WriteGradientsOfRandomPartitions(BitsFile& file);

/// The same gradients on meshes of every element type, whole and in three parts, some cells without volume.
void WriteGradientsOnMeshes(BitsFile& file);

/// Weights and gradients of the cell operator on the same meshes.
void WriteCellOperator(BitsFile& file);

/// Weights and values of the face operator: its four methods on every group of faces.
void WriteFaceOperator(BitsFile& file);

/// Weights and values of the point operator: its three methods, all cells usable and few.
void WritePointOperator(BitsFile& file);

/// Least squares of cells with a pivot of zero, while a division by zero would end the program. Writes nothing.
void SolveSingularCellsWithTrapsArmed();

}  // namespace bits_dump
