// Turning a local transform matrix into the scene content's transform sample.
//
// The matrix is in the scene model's layout: row vectors, translation in elements 12 to 14, and the
// scene model rebuilds a node's local matrix as scaling x rotation x translation from the sample's
// scale, quaternion and position. NodeTMFromMatrix finds those three so that the rebuilt matrix is
// the given one: the scale factors are the lengths of the three axis rows (all negated when the
// axes are mirrored), the rotation is the orthonormalised axis rows turned into the quaternion by
// the scene model's own rule, and the position is the translation row. The matrix itself is stored
// unchanged for matrix export. Axes of zero length are completed from the others, so a matrix that
// flattens an axis is still rebuilt exactly. Cost: constant.
#pragma once

#include "Content.h"
#include "QMXTMath.h"

enum ENodeTMFit : int
{
    eNodeTMExact = 0,    // scaling x rotation x translation rebuilds the matrix
    eNodeTMSheared = 1,  // the axes are not perpendicular: the rebuilt matrix loses the shear
    eNodeTMNonFinite = 2 // the matrix holds NaN or infinity: the sample is the identity
};

// Fills tm (position, rotation, scale, zero stretch, matrix) from a local matrix.
ENodeTMFit NodeTMFromMatrix(SNodeTM& tm, const QMXTMATRIXf& local);

// The local matrix the scene model rebuilds from a sample: scaling x rotation x translation.
QMXTMATRIXf MatrixFromNodeTM(const SNodeTM& tm);
