// Compiled for a processor with fused operations: the headers of libMath must not use them.

#include <libMath/MatrixBuilders.h>

#include <cmath>
#include <cstdio>
#include <cstring>
#include <random>

int countDifferences();

namespace {

using Matrix = libMath::Matrix<float, 4, 4>;
using Vector = libMath::Vector<float, 3>;

// A volatile result is rounded before it is used.
template <class T>
T product(T a, T b)
{
    volatile T result = a * b;
    return result;
}

bool isSame(float a, float b)
{
    return std::memcmp(&a, &b, sizeof(a)) == 0;
}

float plainDot(const Vector& a, const Vector& b)
{
    float sum = 0;
    for (unsigned i = 0; i < 3; ++i) {
        sum += product(a[i], b[i]);
    }
    return sum;
}

Vector plainCross(const Vector& a, const Vector& b)
{
    return Vector(product(a[1], b[2]) - product(a[2], b[1]), product(a[2], b[0]) - product(a[0], b[2]),
                  product(a[0], b[1]) - product(a[1], b[0]));
}

int differences(const Vector& a, const Vector& b)
{
    return !isSame(a[0], b[0]) + !isSame(a[1], b[1]) + !isSame(a[2], b[2]);
}

int productDifferences(const Matrix& a, const Matrix& b)
{
    const Matrix result = a * b;
    int count = 0;
    for (unsigned row = 0; row < 4; ++row) {
        for (unsigned column = 0; column < 4; ++column) {
            float sum = product(a(row, 0), b(0, column));
            for (unsigned k = 1; k < 4; ++k) {
                sum += product(a(row, k), b(k, column));
            }
            count += !isSame(sum, result(row, column));
        }
    }
    return count;
}

int rotationDifferences(const Vector& axis, double angle)
{
    const Matrix result = libMath::axisAngleRotationMatrix(axis, angle);
    const float length = std::sqrt(plainDot(axis, axis));
    const double x = axis[0] / length;
    const double y = axis[1] / length;
    const double c = std::cos(angle);
    const double t = 1 - c;
    const double z = axis[2] / length;
    const double s = std::sin(angle);
    return !isSame(static_cast<float>(product(product(x, t), x) + c), result(0, 0)) +
           !isSame(static_cast<float>(product(product(x, t), y) - product(z, s)), result(0, 1));
}

} // namespace

int countDifferences()
{
    std::minstd_rand numbers(1);
    std::uniform_real_distribution<float> between(-10, 10);
    int count = 0;
    for (int i = 0; i < 1000; ++i) {
        Matrix a;
        Matrix b;
        for (unsigned k = 0; k < 16; ++k) {
            a[k] = between(numbers);
            b[k] = between(numbers);
        }
        const Vector u(a[0], a[1], a[2]);
        const Vector v(b[0], b[1], b[2]);
        count += productDifferences(a, b) + differences(plainCross(u, v), u.cross(v)) +
                 !isSame(plainDot(u, v), u.dot(v)) + rotationDifferences(u, a[4]);
    }
    std::printf("%d differences\n", count);
    return count;
}
