#include "Trs.h"

#include <cmath>

namespace scenetool {

namespace {

using Column = std::array<double, 3>;
using Columns = std::array<Column, 3>; // of a 3 × 3 matrix

// A matrix shears if the cosine between two columns is larger.
constexpr double maxCosine = 1e-5;

double dot(const Column& a, const Column& b)
{
    return a[0] * b[0] + a[1] * b[1] + a[2] * b[2];
}

Column cross(const Column& a, const Column& b)
{
    return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}

Column times(const Column& a, double factor)
{
    return {a[0] * factor, a[1] * factor, a[2] * factor};
}

Columns columnsOf(const Matrix4& matrix)
{
    Columns result{};
    for (unsigned row = 0; row < 3; ++row) {
        for (unsigned column = 0; column < 3; ++column) {
            result[column][row] = static_cast<double>(matrix[4 * row + column]);
        }
    }
    return result;
}

// A unit vector perpendicular to a unit vector.
Column anyNormalTo(const Column& unit)
{
    const Column axis = std::fabs(unit[0]) < 0.6 ? Column{1, 0, 0} : Column{0, 1, 0};
    const Column result = cross(unit, axis);
    return times(result, 1 / std::sqrt(dot(result, result)));
}

// Replaces unknown columns so that all three are a right-handed orthonormal basis.
void completeBasis(Columns& basis, const std::array<bool, 3>& isKnown)
{
    const int known = int(isKnown[0]) + int(isKnown[1]) + int(isKnown[2]);
    if (known == 0) {
        basis = {Column{1, 0, 0}, Column{0, 1, 0}, Column{0, 0, 1}};
        return;
    }
    if (known == 1) {
        const unsigned at = isKnown[0] ? 0 : (isKnown[1] ? 1 : 2);
        basis[(at + 1) % 3] = anyNormalTo(basis[at]);
        basis[(at + 2) % 3] = cross(basis[at], basis[(at + 1) % 3]);
    } else if (known == 2) {
        const unsigned at = !isKnown[0] ? 0 : (!isKnown[1] ? 1 : 2);
        basis[at] = cross(basis[(at + 1) % 3], basis[(at + 2) % 3]);
    }
}

std::array<float, 4> quaternionOf(const Columns& r)
{
    const double trace = r[0][0] + r[1][1] + r[2][2];
    std::array<double, 4> q{};
    if (trace > 0) {
        const double s = 2 * std::sqrt(1 + trace);
        q = {(r[1][2] - r[2][1]) / s, (r[2][0] - r[0][2]) / s, (r[0][1] - r[1][0]) / s, s / 4};
    } else {
        const unsigned i = r[0][0] >= r[1][1] && r[0][0] >= r[2][2] ? 0 : (r[1][1] >= r[2][2] ? 1 : 2);
        const unsigned j = (i + 1) % 3;
        const unsigned k = (i + 2) % 3;
        const double s = 2 * std::sqrt(std::max(0.0, 1 + r[i][i] - r[j][j] - r[k][k]));
        q[i] = s / 4;
        q[j] = (r[i][j] + r[j][i]) / s;
        q[k] = (r[i][k] + r[k][i]) / s;
        q[3] = (r[j][k] - r[k][j]) / s;
    }
    const double length = std::sqrt(q[0] * q[0] + q[1] * q[1] + q[2] * q[2] + q[3] * q[3]);
    std::array<float, 4> result{};
    for (unsigned i = 0; i < 4; ++i) {
        result[i] = static_cast<float>(q[i] / length);
    }
    return result;
}

// Decomposes orthogonal columns into their lengths and a rotation. A reflection makes the X of the scale negative.
Trs trsOfOrthogonal(const Columns& columns)
{
    Columns basis{};
    std::array<bool, 3> isKnown{};
    std::array<double, 3> lengths{};
    for (unsigned i = 0; i < 3; ++i) {
        lengths[i] = std::sqrt(dot(columns[i], columns[i]));
        isKnown[i] = lengths[i] > 0;
        basis[i] = isKnown[i] ? times(columns[i], 1 / lengths[i]) : Column{};
    }
    if (isKnown[0] && isKnown[1] && isKnown[2] && dot(cross(basis[0], basis[1]), basis[2]) < 0) {
        lengths[0] = -lengths[0];
        basis[0] = times(basis[0], -1);
    }
    completeBasis(basis, isKnown);
    Trs result;
    result.rotation = quaternionOf(basis);
    for (unsigned i = 0; i < 3; ++i) {
        result.scale[i] = static_cast<float>(lengths[i]);
    }
    return result;
}

std::array<float, 3> translationOf(const Matrix4& matrix)
{
    return {matrix[3], matrix[7], matrix[11]};
}

} // namespace

std::optional<Trs> trsOf(const Matrix4& matrix)
{
    if (!isFinite(matrix)) {
        return std::nullopt;
    }
    const Columns columns = columnsOf(matrix);
    for (unsigned i = 0; i < 3; ++i) {
        const Column& a = columns[i];
        const Column& b = columns[(i + 1) % 3];
        if (std::fabs(dot(a, b)) > maxCosine * std::sqrt(dot(a, a) * dot(b, b))) {
            return std::nullopt;
        }
    }
    Trs result = trsOfOrthogonal(columns);
    result.translation = translationOf(matrix);
    return result;
}

TrsPair trsPairOf(const Matrix4& matrix)
{
    TrsPair result;
    if (!isFinite(matrix)) {
        return result;
    }
    // A = (A · V) · Vt, where V makes the columns of A · V orthogonal: one-sided Jacobi rotations.
    Columns av = columnsOf(matrix);
    Columns v{Column{1, 0, 0}, Column{0, 1, 0}, Column{0, 0, 1}};
    constexpr unsigned sweeps = 32;
    for (unsigned sweep = 0; sweep < sweeps; ++sweep) {
        for (unsigned p = 0; p < 2; ++p) {
            for (unsigned q = p + 1; q < 3; ++q) {
                const double apq = dot(av[p], av[q]);
                if (apq == 0) {
                    continue;
                }
                const double tau = (dot(av[q], av[q]) - dot(av[p], av[p])) / (2 * apq);
                const double t = (tau >= 0 ? 1 : -1) / (std::fabs(tau) + std::sqrt(1 + tau * tau));
                const double c = 1 / std::sqrt(1 + t * t);
                const double s = c * t;
                for (unsigned row = 0; row < 3; ++row) {
                    for (Columns* const m : {&av, &v}) {
                        const double x = (*m)[p][row];
                        const double y = (*m)[q][row];
                        (*m)[p][row] = c * x - s * y;
                        (*m)[q][row] = s * x + c * y;
                    }
                }
            }
        }
    }
    result.outer = trsOfOrthogonal(av);
    result.outer.translation = translationOf(matrix);
    Columns transposed{};
    for (unsigned i = 0; i < 3; ++i) {
        for (unsigned j = 0; j < 3; ++j) {
            transposed[i][j] = v[j][i];
        }
    }
    result.inner.rotation = quaternionOf(transposed);
    return result;
}

Matrix4 matrixOf(const Trs& trs)
{
    const double x = trs.rotation[0];
    const double y = trs.rotation[1];
    const double z = trs.rotation[2];
    const double w = trs.rotation[3];
    const double rotation[3][3] = {{1 - 2 * (y * y + z * z), 2 * (x * y - z * w), 2 * (x * z + y * w)},
                                   {2 * (x * y + z * w), 1 - 2 * (x * x + z * z), 2 * (y * z - x * w)},
                                   {2 * (x * z - y * w), 2 * (y * z + x * w), 1 - 2 * (x * x + y * y)}};
    Matrix4 result = identity();
    for (unsigned row = 0; row < 3; ++row) {
        for (unsigned column = 0; column < 3; ++column) {
            result(row, column) = static_cast<float>(rotation[row][column] * static_cast<double>(trs.scale[column]));
        }
        result(row, 3) = trs.translation[row];
    }
    return result;
}

} // namespace scenetool
