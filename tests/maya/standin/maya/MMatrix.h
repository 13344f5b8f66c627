// Stand-in for the Maya devkit header of the same name. Row vectors: p * M, translation in row 3.
#pragma once

class MMatrix
{
  public:
    MMatrix();
    double operator()(unsigned int row, unsigned int col) const { return matrix[row][col]; }
    const double* operator[](unsigned int row) const { return matrix[row]; }
    double* operator[](unsigned int row) { return matrix[row]; }
    MMatrix operator*(const MMatrix&) const;
    double det3x3() const;
    static const MMatrix identity;
    double matrix[4][4];
};
