#pragma once // SPDX-License-Identifier: MIT

#include <cmath>
#include <type_traits>

namespace libMath {

/// `Size` elements and nothing else. Arithmetic is that of `T`, in the order of the formulas.
template <class T, unsigned Size>
class Vector {
public:
    /// All elements 0.
    Vector() = default;
    /// Only for a vector of three.
    template <unsigned N = Size, class = std::enable_if_t<N == 3>>
    Vector(T x, T y, T z) : m_elements{x, y, z}
    {}

    /// Unchecked, like a plain array.
    T& operator[](unsigned index) { return m_elements[index]; }
    const T& operator[](unsigned index) const { return m_elements[index]; } ///< Unchecked, like a plain array.

    /// Left minus right.
    Vector operator-(const Vector& other) const
    {
        Vector result;
        for (unsigned i = 0; i < Size; ++i) {
            result[i] = m_elements[i] - other[i];
        }
        return result;
    }

    /// Divided by its length. A zero vector gives NaN in all elements.
    Vector normalized() const
    {
        const T length = std::sqrt(dot(*this));
        Vector result;
        for (unsigned i = 0; i < Size; ++i) {
            result[i] = m_elements[i] / length;
        }
        return result;
    }

    /// a × b = (a.y·b.z − a.z·b.y, a.z·b.x − a.x·b.z, a.x·b.y − a.y·b.x)
    /// Only for vectors of three.
    template <unsigned N = Size, class = std::enable_if_t<N == 3>>
    Vector cross(const Vector& b) const
    {
        const Vector& a = *this;
        return Vector(a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]);
    }

    /// 0 + a.x·b.x + a.y·b.y + ..., summed in that order.
    T dot(const Vector& b) const
    {
        T sum = T(0);
        for (unsigned i = 0; i < Size; ++i) {
            sum += m_elements[i] * b[i];
        }
        return sum;
    }

private:
    T m_elements[Size] = {};
};

} // namespace libMath
