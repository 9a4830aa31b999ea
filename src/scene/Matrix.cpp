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

void TransformPoint(const Matrix4& m, Vec3& p) {
    const float x = ((p.X * m.M[0] + p.Y * m.M[4]) + p.Z * m.M[8]) + m.M[12];
    const float y = ((p.X * m.M[1] + p.Y * m.M[5]) + p.Z * m.M[9]) + m.M[13];
    const float z = ((p.X * m.M[2] + p.Y * m.M[6]) + p.Z * m.M[10]) + m.M[14];
    const float w = ((p.X * m.M[3] + p.Y * m.M[7]) + p.Z * m.M[11]) + m.M[15];
    const double reciprocal = 1.0 / static_cast<double>(w);
    p.X = static_cast<float>(static_cast<double>(x) * reciprocal);
    p.Y = static_cast<float>(static_cast<double>(y) * reciprocal);
    p.Z = static_cast<float>(static_cast<double>(z) * reciprocal);
}

void TransformNormal(const Matrix4& m, Vec3& n) {
    const float x = (n.X * m.M[0] + n.Y * m.M[4]) + n.Z * m.M[8];
    const float y = (n.X * m.M[1] + n.Y * m.M[5]) + n.Z * m.M[9];
    const float z = (n.X * m.M[2] + n.Y * m.M[6]) + n.Z * m.M[10];
    n = {x, y, z};
    Normalize(n);
}

int Invert(Matrix4& m) {
    Matrix4 work = m;
    const auto element = [&work](int row, int column) -> float& {
        return work.M[4 * row + column];
    };
    int pivotCount[4] = {};
    int pivotRows[4] = {};
    int pivotColumns[4] = {};
    int pivotRow = 0;
    int pivotColumn = 0;
    for (int step = 0; step < 4; ++step) {
        // The last of equal maxima wins. Where nothing is found, as among values that are not numbers,
        // the pivot of the step before stands and the next search ends the elimination.
        float big = 0.0f;
        for (int row = 0; row < 4; ++row) {
            if (pivotCount[row] == 1) {
                continue;
            }
            for (int column = 0; column < 4; ++column) {
                if (pivotCount[column] == 0) {
                    const float value = std::fabs(element(row, column));
                    if (value >= big) {
                        big = value;
                        pivotRow = row;
                        pivotColumn = column;
                    }
                } else if (pivotCount[column] > 1) {
                    return 1;
                }
            }
        }
        ++pivotCount[pivotColumn];
        if (pivotRow != pivotColumn) {
            for (int column = 0; column < 4; ++column) {
                std::swap(element(pivotRow, column), element(pivotColumn, column));
            }
        }
        pivotRows[step] = pivotRow;
        pivotColumns[step] = pivotColumn;

        const float pivot = element(pivotColumn, pivotColumn);
        if (pivot == 0.0f) {
            return 1;
        }
        element(pivotColumn, pivotColumn) = 1.0f;
        const float inverse = 1.0f / pivot;
        for (int column = 0; column < 4; ++column) {
            element(pivotColumn, column) *= inverse;
        }
        for (int row = 0; row < 4; ++row) {
            if (row == pivotColumn) {
                continue;
            }
            const float factor = element(row, pivotColumn);
            element(row, pivotColumn) = 0.0f;
            for (int column = 0; column < 4; ++column) {
                element(row, column) -= factor * element(pivotColumn, column);
            }
        }
    }
    for (int step = 3; step >= 0; --step) {
        if (pivotRows[step] != pivotColumns[step]) {
            for (int row = 0; row < 4; ++row) {
                std::swap(element(row, pivotRows[step]), element(row, pivotColumns[step]));
            }
        }
    }
    m = work;
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

static void ExtendRange(float& min, float& max, float value) {
    if (min > value) {
        min = value;
    }
    if (value > max) {
        max = value;
    }
}

void ExtendBox(BoundingBox& box, const Vec3& p) {
    ExtendRange(box.Min.X, box.Max.X, p.X);
    ExtendRange(box.Min.Y, box.Max.Y, p.Y);
    ExtendRange(box.Min.Z, box.Max.Z, p.Z);
}
