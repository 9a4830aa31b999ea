// Vector and matrix arithmetic. Inversion is Gauss-Jordan elimination with full pivoting, in place, as
// in the textbooks of numerical analysis.
#include "scene/Matrix.h"

#include <cmath>
#include <cstddef>
#include <utility>

void Normalize(Vec3& v) {
    const float length = std::sqrt((v.X * v.X + v.Y * v.Y) + v.Z * v.Z);
    if (static_cast<double>(length) > LengthThreshold) {
        const float inverse = 1.0f / length;
        v.X *= inverse;
        v.Y *= inverse;
        v.Z *= inverse;
    }
}

void Multiply(Matrix4& a, const Matrix4& b) {
    Matrix4 result;
    for (size_t i = 0; i < 16; i += 4) {
        for (size_t j = 0; j < 4; ++j) {
            result.M[i + j] = ((a.M[i] * b.M[j] + a.M[i + 1] * b.M[4 + j]) + a.M[i + 2] * b.M[8 + j]) +
                              a.M[i + 3] * b.M[12 + j];
        }
    }
    a = result;
}

void TransformNormal(const Matrix4& m, Vec3& n) {
    const float x = (n.X * m.M[0] + n.Y * m.M[4]) + n.Z * m.M[8];
    const float y = (n.X * m.M[1] + n.Y * m.M[5]) + n.Z * m.M[9];
    const float z = (n.X * m.M[2] + n.Y * m.M[6]) + n.Z * m.M[10];
    n = {x, y, z};
    Normalize(n);
}

namespace {

// The state of an elimination.
struct Elimination {
    Matrix4 Work;
    int UseCount[4] = {}; // how often each column was the pivot column
    int PivotRow = 0;     // where the pivot was found, before its row moves to the diagonal
    int PivotColumn = 0;

    float& At(int row, int column) {
        return Work.M[4 * row + column];
    }
};

// Finds the element of largest magnitude among the rows and columns not yet used, of equal ones the
// last. If none is found, as with values that are not numbers, the previous pivot remains. The next
// search then returns false, because a column is used twice.
bool FindPivot(Elimination& elimination) {
    float largest = 0.0f;
    for (int row = 0; row < 4; ++row) {
        if (elimination.UseCount[row] == 1) {
            continue;
        }
        for (int column = 0; column < 4; ++column) {
            if (elimination.UseCount[column] > 1) {
                return false;
            }
            const float magnitude = std::fabs(elimination.At(row, column));
            if (elimination.UseCount[column] == 0 && magnitude >= largest) {
                largest = magnitude;
                elimination.PivotRow = row;
                elimination.PivotColumn = column;
            }
        }
    }
    return true;
}

void SwapRows(Elimination& elimination, int a, int b) {
    for (int column = 0; a != b && column < 4; ++column) {
        std::swap(elimination.At(a, column), elimination.At(b, column));
    }
}

void SwapColumns(Elimination& elimination, int a, int b) {
    for (int row = 0; a != b && row < 4; ++row) {
        std::swap(elimination.At(row, a), elimination.At(row, b));
    }
}

// Divides the pivot row by the pivot, whose element becomes part of the inverse. Returns false if the
// pivot is 0.
bool ScalePivotRow(Elimination& elimination) {
    const int pivot = elimination.PivotColumn;
    const float value = elimination.At(pivot, pivot);
    if (value == 0.0f) {
        return false;
    }
    elimination.At(pivot, pivot) = 1.0f;
    const float inverse = 1.0f / value;
    for (int column = 0; column < 4; ++column) {
        elimination.At(pivot, column) *= inverse;
    }
    return true;
}

// Subtracts multiples of the pivot row so that the other rows have 0 in the pivot column.
void ClearPivotColumn(Elimination& elimination) {
    const int pivot = elimination.PivotColumn;
    for (int row = 0; row < 4; ++row) {
        if (row == pivot) {
            continue;
        }
        const float factor = elimination.At(row, pivot);
        elimination.At(row, pivot) = 0.0f;
        for (int column = 0; column < 4; ++column) {
            elimination.At(row, column) -= factor * elimination.At(pivot, column);
        }
    }
}

} // namespace

int Invert(Matrix4& m) {
    Elimination elimination = {.Work = m};
    int rows[4] = {};
    int columns[4] = {};
    for (int step = 0; step < 4; ++step) {
        if (!FindPivot(elimination)) {
            return 1;
        }
        rows[step] = elimination.PivotRow;
        columns[step] = elimination.PivotColumn;
        ++elimination.UseCount[columns[step]];
        SwapRows(elimination, rows[step], columns[step]);
        if (!ScalePivotRow(elimination)) {
            return 1;
        }
        ClearPivotColumn(elimination);
    }
    // Undo the row swaps, in reverse order, as column swaps of the inverse.
    for (int step = 3; step >= 0; --step) {
        SwapColumns(elimination, rows[step], columns[step]);
    }
    m = elimination.Work;
    return 0;
}

bool IsMirrored(const Matrix4& m) {
    Vec3 a = {m.M[0], m.M[1], m.M[2]};
    Vec3 b = {m.M[4], m.M[5], m.M[6]};
    Vec3 e = {m.M[8], m.M[9], m.M[10]};
    Normalize(a);
    Normalize(b);
    Normalize(e);
    Vec3 d = {a.Y * b.Z - a.Z * b.Y, a.Z * b.X - a.X * b.Z, a.X * b.Y - a.Y * b.X};
    Normalize(d);
    return (d.X * e.X + d.Y * e.Y) + d.Z * e.Z < 0.0f;
}
