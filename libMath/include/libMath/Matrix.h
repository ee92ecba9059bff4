#pragma once // SPDX-License-Identifier: MIT

#include <libMath/Vector.h>

#include <vesk/Exception.h>

namespace libMath {

/// `row` × `col` elements in one flat array, and nothing else.
///
/// Storage is row-major: flat index `col`·r + c is row r, column c. A point is a column vector on the right,
/// p' = M · p, so a translation is in the fourth column of a 4 by 4 matrix, and in a product the left factor is the
/// outer transform. A rotation by a positive angle about Z turns X towards Y.
template <class T, unsigned row, unsigned col>
class Matrix {
public:
    /// All elements 0, not the identity.
    Matrix() = default;

    /// All elements 0, then 1 on the diagonal.
    void setIdentity()
    {
        static_assert(row == col, "only a square matrix has an identity");
        *this = Matrix();
        for (unsigned i = 0; i < row; ++i) {
            m_elements[i * col + i] = T(1);
        }
    }

    /// Flat access. @throws vesk::AssertionFailure
    T& operator[](unsigned index)
    {
        check(index < (row * col), __LINE__, "index < (row * col)");
        return m_elements[index];
    }
    const T& operator[](unsigned index) const ///< As above.
    {
        check(index < (row * col), __LINE__, "index < (row * col)");
        return m_elements[index];
    }

    /// The element in row `x` and column `y`. @throws vesk::AssertionFailure
    T& operator()(unsigned x, unsigned y)
    {
        check((x < row) && (y < col), __LINE__, "(x<row) && (y<col)");
        return m_elements[x * col + y];
    }
    const T& operator()(unsigned x, unsigned y) const ///< As above.
    {
        check((x < row) && (y < col), __LINE__, "(x<row) && (y<col)");
        return m_elements[x * col + y];
    }

    /// Column `x`, from the first row down. @throws vesk::AssertionFailure
    Vector<T, row> column(unsigned x) const
    {
        check(x < col, __LINE__, "x < col");
        Vector<T, row> result;
        for (unsigned i = 0; i < row; ++i) {
            result[i] = m_elements[i * col + x];
        }
        return result;
    }

    /// Stores `v` in column `x`, from the first row down. @throws vesk::AssertionFailure
    void setColumn(unsigned x, const Vector<T, row>& v)
    {
        check(x < col, __LINE__, "x < col");
        for (unsigned i = 0; i < row; ++i) {
            m_elements[i * col + x] = v[i];
        }
    }

    /// `v` on the diagonal, all else 0.
    static Matrix diagonal(const Vector<T, row>& v)
    {
        static_assert(row == col, "only a square matrix has one diagonal element in each row");
        Matrix result;
        for (unsigned i = 0; i < row; ++i) {
            result(i, i) = v[i];
        }
        return result;
    }

    /// C[i][j] = A[i][0]·B[0][j] + A[i][1]·B[1][j] + ..., summed in that order.
    Matrix operator*(const Matrix& b) const
    {
        static_assert(row == col, "the product of two matrices of one type needs a square one");
        Matrix result;
        for (unsigned i = 0; i < row; ++i) {
            for (unsigned j = 0; j < col; ++j) {
                T sum = m_elements[i * col] * b.m_elements[j];
                for (unsigned k = 1; k < col; ++k) {
                    sum += m_elements[i * col + k] * b.m_elements[k * col + j];
                }
                result.m_elements[i * col + j] = sum;
            }
        }
        return result;
    }

private:
    static void check(bool holds, int line, const char* expression)
    {
        if (!holds) {
            throw vesk::AssertionFailure("libMath/include/libMath/Matrix", static_cast<unsigned long long>(line),
                                         expression);
        }
    }

    T m_elements[row * col] = {};
};

} // namespace libMath
