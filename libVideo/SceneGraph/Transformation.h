#pragma once // SPDX-License-Identifier: MIT

#include <libVideo/Export.h>
#include <libVideo/Handles.h>

#include <libMath/Matrix.h>
#include <libMath/Vector.h>

#include <vesk/SharedResource.h>
#include <vesk/String.h>

namespace libVideo {

/// One transform child of a `<node>`: what the document declared, the matrix that follows from it, the `sid` by which
/// an animation finds it, and the animation if one was attached. This class itself represents a `<matrix>`.
///
/// Matrices are row-major, with points as column vectors on the right and a translation in the fourth column. Values
/// that the document has not given are 0. Copies share the current matrix and the animation.
class LIBVIDEO_API Transformation {
public:
    /// Declares a zero matrix, and has no current one.
    Transformation() = default;
    /// Sixteen values, row by row.
    Transformation(const daeTArray<double>& values, const vesk::String& sid);
    Transformation(const Transformation& other);            ///< Shares the current matrix and the animation.
    Transformation& operator=(const Transformation& other); ///< Likewise.
    virtual ~Transformation();

    /// Sets the declared values, and makes their matrix the current one. @return true
    virtual bool setTransformation(const daeTArray<double>& values);

    /// Computes the matrix at a time in seconds and makes it the current one; without an animation, returns the current
    /// one. Nothing is cached by time.
    /// @throws vesk::IndexOutOfBounds if the animation's keys have too few values
    /// @throws vesk::NullPointer if there is an animation but no current matrix
    virtual const MatrixHandle& transformationAtTime(double time);

    /// The current matrix: the last one evaluated, else the declared one, which is made at the first call; empty if
    /// there is none.
    const MatrixHandle& transformation()
    {
        makeDeclared();
        return m_transformation;
    }

    /// The `sid`, by which an animation finds the transformation; empty without one.
    const vesk::String& sid() const { return m_sid; }
    /// Changes the `sid`. @return the new one
    const vesk::String& setSid(const vesk::String& sid);

    /// Replaces the animation.
    void setAnimation(AnimationHandle animation);
    /// Empty without an animation.
    const AnimationHandle& animation() const { return m_animation; }

protected:
    explicit Transformation(const vesk::String& sid) : m_sid(sid) {} ///< Has a `sid` and no values.

    /// Makes a new matrix the current one.
    void replaceTransformation(const libMath::Matrix<float, 4, 4>& matrix);
    /// Makes the declared matrix the current one. It is computed on first use.
    void declareTransformation();
    /// The matrix that follows from what the document declared.
    virtual libMath::Matrix<float, 4, 4> declaredMatrix() const;

private:
    friend class Node;

    void updateTransformation(libMath::Matrix<float, 4, 4> matrix);
    void makeDeclared() const
    {
        if (m_isDeclared) {
            m_transformation = MatrixHandle::make(declaredMatrix());
            m_isDeclared = false;
        }
    }

    libMath::Matrix<float, 4, 4> m_matrix; // as declared; zero in all subclasses
    mutable MatrixHandle m_transformation;
    vesk::String m_sid;
    AnimationHandle m_animation;
    mutable bool m_isDeclared = false; // the current matrix is the declared one, and has yet to be made
};

/// `<translate>`: three values, the translation. A vector animation drives all three.
class LIBVIDEO_API Translation : public Transformation {
public:
    Translation() = default;
    Translation(const daeTArray<double>& values, const vesk::String& sid); ///< Three values.
    Translation(const Translation&) = default;
    Translation& operator=(const Translation&) = default;
    ~Translation() override;

    bool setTransformation(const daeTArray<double>& values) override;
    const MatrixHandle& transformationAtTime(double time) override;

protected:
    libMath::Matrix<float, 4, 4> declaredMatrix() const override;

private:
    void updateTransformation(const libMath::Vector<float, 3>& translation);

    libMath::Vector<float, 3> m_translation;
};

/// `<rotate>`: an axis of any length, and an angle in degrees. A scalar animation drives the angle; the axis stays.
class LIBVIDEO_API Rotation : public Transformation {
public:
    Rotation() = default;
    /// Four values: the axis, then the angle in degrees.
    Rotation(const daeTArray<double>& values, const vesk::String& sid);
    Rotation(const Rotation&) = default;
    Rotation& operator=(const Rotation&) = default;
    ~Rotation() override;

    bool setTransformation(const daeTArray<double>& values) override;
    const MatrixHandle& transformationAtTime(double time) override;

protected:
    libMath::Matrix<float, 4, 4> declaredMatrix() const override;

private:
    void updateTransformation(double angle);

    libMath::Vector<float, 3> m_axis;
    double m_angle = 0.0; // in degrees
};

/// `<scale>`: three factors. A vector animation drives all three.
class LIBVIDEO_API Scale : public Transformation {
public:
    Scale() = default;
    Scale(const daeTArray<double>& values, const vesk::String& sid); ///< Three values.
    Scale(const Scale&) = default;
    Scale& operator=(const Scale&) = default;
    ~Scale() override;

    bool setTransformation(const daeTArray<double>& values) override;
    const MatrixHandle& transformationAtTime(double time) override;

protected:
    libMath::Matrix<float, 4, 4> declaredMatrix() const override;

private:
    void updateTransformation(const libMath::Vector<float, 3>& scale);

    libMath::Vector<float, 3> m_scale;
};

/// Nine values as the columns of the upper left block; all other elements are 0, the last one too. No loader makes one.
class LIBVIDEO_API View : public Transformation {
public:
    View() = default;
    View(const double* values, const vesk::String& sid); ///< Nine values, or null for none.
    View(const View&) = default;
    View& operator=(const View&) = default;
    ~View() override;

    /// @return false, with nothing changed, if `values` is null
    bool setTransformation(const double* values);

private:
    using Transformation::setTransformation; // hidden on purpose
};

/// Holds the identity, whatever its values: a skew has no effect. No loader makes one.
class LIBVIDEO_API Skew : public Transformation {
public:
    Skew() = default;
    Skew(const double* values, const vesk::String& sid); ///< Uses only the `sid`.
    Skew(const Skew&) = default;
    Skew& operator=(const Skew&) = default;
    ~Skew() override;

    /// @param values not read, may be null
    /// @return true
    bool setTransformation(const double* values);

private:
    using Transformation::setTransformation; // hidden on purpose
};

} // namespace libVideo
