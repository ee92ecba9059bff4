#include <libVideo/SceneGraph/Node.h>

#include "detail/Dom.h"
#include "detail/Transforms.h"

#include <libVideo/SceneGraph/Animation.h>

#include <libMath/MatrixBuilders.h>

namespace libVideo {

namespace {

using Matrix = libMath::Matrix<float, 4, 4>;
using Vector3 = libMath::Vector<float, 3>;

// Whether there is any of the elements that place a node, those that take no part in its matrix included.
bool hasTransform(const daeElementRefArray& children)
{
    for (std::size_t i = 0; i < children.getCount(); ++i) {
        const daeInt type = children[i]->typeID();
        if (type == domTranslate::ID() || type == domRotate::ID() || type == domMatrix::ID() ||
            type == domScale::ID() || type == domLookat::ID() || type == domSkew::ID()) {
            return true;
        }
    }
    return false;
}

Vector3 firstThree(const libMath::Vector<float, 4>& vector)
{
    return {vector[0], vector[1], vector[2]};
}

} // namespace

Node::Node()
{
    m_transform.setIdentity();
}

Node::Node(const domNode& node)
{
    createFromCollada(node);
}

Node::~Node() = default;

bool Node::createFromCollada(const domNode& node)
{
    setId(node.getId());
    setName(node.getName());
    setSid(node.getSid());
    // All children in document order, as getChildren() would copy them.
    const daeElementRefArray& children = node.getContents();
    if (!hasTransform(children)) {
        return true;
    }
    m_transform.setIdentity();
    accumulateTransform(children);
    return true;
}

void Node::setParent(const NodeLink& parent)
{
    m_parent = parent;
}

void Node::addChild(const NodeLink& child)
{
    m_children.append(child);
}

const Matrix& Node::transform(double time)
{
    if (!m_hasAnimation) {
        return m_transform;
    }
    m_transform.setIdentity();
    for (const TransformationHandle& transformation : m_transformations) {
        m_transform = m_transform * *transformation->transformationAtTime(time);
    }
    return m_transform;
}

const Matrix& Node::updateTransform()
{
    if (m_parent) {
        m_transform = m_parent->m_transform * m_transform;
    }
    return m_transform;
}

const Vector3 Node::position() const
{
    return firstThree(m_transform.column(3));
}

const Vector3 Node::up() const
{
    return firstThree(m_transform.column(1));
}

const Vector3 Node::position(double time)
{
    transform(time);
    return position();
}

const Vector3 Node::up(double time)
{
    transform(time);
    return up();
}

bool Node::addAnimation(AnimationHandle animation)
{
    if (!animation) {
        throw vesk::NullPointer("Cannot add an empty animation handle to node " + m_id);
    }
    const vesk::String target = animation->getTargetTransform();
    for (const TransformationHandle& transformation : m_transformations) {
        if (transformation->sid() == target) {
            transformation->setAnimation(animation);
            m_hasAnimation = true;
            return true;
        }
    }
    return false;
}

double Node::animationLength() const
{
    double longest = 0.0;
    for (const TransformationHandle& transformation : m_transformations) {
        const AnimationHandle& animation = transformation->animation();
        if (animation && animation->animationLength() > longest) {
            longest = animation->animationLength();
        }
    }
    return longest;
}

void Node::accumulateTransform(const daeTArray<daeSmartRef<daeElement>>& children)
{
    for (std::size_t i = 0; i < children.getCount(); ++i) {
        daeElement* const child = children[i];
        if (child == nullptr) {
            continue;
        }
        if (const domScale* const scale = daeSafeCast<domScale>(child)) {
            accumulate(new Scale(scale->getValue(), scale->getSid()));
        } else if (const domTranslate* const translate = daeSafeCast<domTranslate>(child)) {
            accumulate(new Translation(translate->getValue(), translate->getSid()));
        } else if (const domRotate* const rotate = daeSafeCast<domRotate>(child)) {
            accumulate(new Rotation(rotate->getValue(), rotate->getSid()));
        } else if (const domMatrix* const matrix = daeSafeCast<domMatrix>(child)) {
            accumulate(new Transformation(matrix->getValue(), matrix->getSid()));
        } else if (domLookat* const lookAt = daeSafeCast<domLookat>(child)) {
            lookat(lookAt->getValue());
        }
    }
}

// Takes over the transformation.
void Node::accumulate(Transformation* transformation)
{
    const TransformationHandle handle(transformation);
    m_transformations.append(handle);
    m_transform = m_transform * *handle->transformation();
}

void Node::lookat(daeTArray<double>& values)
{
    // sic: the first three numbers are eye and interest, and up stays zero, so no element of the result is a number
    const Vector3 eye = detail::vectorOf(values);
    const Vector3 interest = detail::vectorOf(values);
    const Vector3 up;
    m_transform = m_transform * libMath::lookAtTransformMatrix(eye, interest, up);
}

void Node::translate(const daeTArray<double>& values)
{
    m_transform = m_transform * detail::translationMatrix(detail::vectorOf(values));
}

void Node::rotate(const daeTArray<double>& values)
{
    m_transform = m_transform * detail::rotationMatrix(detail::vectorOf(values), detail::valueAt(values, 3));
}

void Node::scale(const daeTArray<double>& values)
{
    m_transform = m_transform * detail::scaleMatrix(detail::vectorOf(values));
}

void Node::transform(const daeTArray<double>& values)
{
    Matrix matrix;
    for (unsigned i = 0; i < 16; ++i) {
        matrix[i] = detail::floatAt(values, i);
    }
    m_transform = m_transform * matrix;
}

} // namespace libVideo
