#include <libVideo/SceneGraph/Transformation.h>

#include "detail/Dom.h"
#include "detail/Transforms.h"

#include <libVideo/SceneGraph/Animation.h>

namespace libVideo {

using Matrix = libMath::Matrix<float, 4, 4>;

Transformation::Transformation(const daeTArray<double>& values, const vesk::String& sid) : m_sid(sid)
{
    Transformation::setTransformation(values);
}

// Makes the declared matrix first, so that original and copy share it.
Transformation::Transformation(const Transformation& other)
    : m_matrix(other.m_matrix), m_sid(other.m_sid), m_animation(other.m_animation)
{
    other.makeDeclared(); // NOLINT(cert-oop58-cpp): not visible from outside
    m_transformation = other.m_transformation;
}

Transformation& Transformation::operator=(const Transformation& other)
{
    if (this != &other) {
        other.makeDeclared(); // NOLINT(cert-oop58-cpp): not visible from outside
        m_matrix = other.m_matrix;
        m_transformation = other.m_transformation;
        m_sid = other.m_sid;
        m_animation = other.m_animation;
        m_isDeclared = false;
    }
    return *this;
}

Transformation::~Transformation() = default;

bool Transformation::setTransformation(const daeTArray<double>& values)
{
    for (unsigned i = 0; i < 16; ++i) {
        m_matrix[i] = detail::floatAt(values, i);
    }
    declareTransformation();
    return true;
}

Matrix Transformation::declaredMatrix() const
{
    return m_matrix;
}

const MatrixHandle& Transformation::transformationAtTime(double time)
{
    if (m_animation) {
        updateTransformation(m_animation->applyAnimation(m_matrix, time));
    }
    return transformation();
}

const vesk::String& Transformation::setSid(const vesk::String& sid)
{
    m_sid = sid;
    return m_sid;
}

void Transformation::setAnimation(AnimationHandle animation)
{
    m_animation = animation;
}

void Transformation::replaceTransformation(const Matrix& matrix)
{
    m_transformation = MatrixHandle::make(matrix);
    m_isDeclared = false;
}

void Transformation::declareTransformation()
{
    m_transformation = MatrixHandle();
    m_isDeclared = true;
}

// Changes the matrix in place, so that the change is visible through all handles to it.
void Transformation::updateTransformation(Matrix matrix)
{
    makeDeclared();
    if (!m_transformation) {
        throw vesk::NullPointer("Cannot animate a transformation that has no matrix");
    }
    for (unsigned i = 0; i < 16; ++i) {
        (*m_transformation)[i] = matrix[i];
    }
}

Translation::Translation(const daeTArray<double>& values, const vesk::String& sid) : Transformation(sid)
{
    Translation::setTransformation(values);
}

Translation::~Translation() = default;

bool Translation::setTransformation(const daeTArray<double>& values)
{
    m_translation = detail::vectorOf(values);
    declareTransformation();
    return true;
}

Matrix Translation::declaredMatrix() const
{
    return detail::translationMatrix(m_translation);
}

const MatrixHandle& Translation::transformationAtTime(double time)
{
    if (animation()) {
        updateTransformation(animation()->applyAnimation(m_translation, time));
    }
    return transformation();
}

void Translation::updateTransformation(const libMath::Vector<float, 3>& translation)
{
    replaceTransformation(detail::translationMatrix(translation));
}

Rotation::Rotation(const daeTArray<double>& values, const vesk::String& sid) : Transformation(sid)
{
    Rotation::setTransformation(values);
}

Rotation::~Rotation() = default;

bool Rotation::setTransformation(const daeTArray<double>& values)
{
    m_axis = detail::vectorOf(values);
    m_angle = detail::valueAt(values, 3);
    declareTransformation();
    return true;
}

Matrix Rotation::declaredMatrix() const
{
    return detail::rotationMatrix(m_axis, m_angle);
}

const MatrixHandle& Rotation::transformationAtTime(double time)
{
    if (animation()) {
        updateTransformation(animation()->applyAnimation(m_angle, time));
    }
    return transformation();
}

void Rotation::updateTransformation(double angle)
{
    replaceTransformation(detail::rotationMatrix(m_axis, angle));
}

Scale::Scale(const daeTArray<double>& values, const vesk::String& sid) : Transformation(sid)
{
    Scale::setTransformation(values);
}

Scale::~Scale() = default;

bool Scale::setTransformation(const daeTArray<double>& values)
{
    m_scale = detail::vectorOf(values);
    declareTransformation();
    return true;
}

Matrix Scale::declaredMatrix() const
{
    return detail::scaleMatrix(m_scale);
}

const MatrixHandle& Scale::transformationAtTime(double time)
{
    if (animation()) {
        updateTransformation(animation()->applyAnimation(m_scale, time));
    }
    return transformation();
}

void Scale::updateTransformation(const libMath::Vector<float, 3>& scale)
{
    replaceTransformation(detail::scaleMatrix(scale));
}

View::View(const double* values, const vesk::String& sid) : Transformation(sid)
{
    setTransformation(values);
}

View::~View() = default;

bool View::setTransformation(const double* values)
{
    if (values == nullptr) {
        return false;
    }
    Matrix matrix;
    for (unsigned column = 0; column < 3; ++column) {
        for (unsigned row = 0; row < 3; ++row) {
            matrix(row, column) = static_cast<float>(values[3 * column + row]);
        }
    }
    replaceTransformation(matrix);
    return true;
}

Skew::Skew(const double* values, const vesk::String& sid) : Transformation(sid)
{
    setTransformation(values);
}

Skew::~Skew() = default;

bool Skew::setTransformation(const double* /*values*/)
{
    Matrix matrix;
    matrix.setIdentity();
    replaceTransformation(matrix);
    return true;
}

} // namespace libVideo
