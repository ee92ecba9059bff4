#include <libVideo/SceneGraph/Node.h>

#include "detail/Dom.h"
#include "detail/Transforms.h"

#include <libVideo/SceneGraph/Animation.h>

#include <libMath/MatrixBuilders.h>

namespace libVideo {

namespace {

using Matrix = libMath::Matrix<float, 4, 4>;
using Vector3 = libMath::Vector<float, 3>;

// Number of transform elements of a node, including those that have no effect on its matrix.
std::size_t transformCount(const domNode& node)
{
    return node.getLookat_array().getCount() + node.getMatrix_array().getCount() + node.getRotate_array().getCount() +
           node.getScale_array().getCount() + node.getSkew_array().getCount() + node.getTranslate_array().getCount();
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
    m_id = node.getId();
    m_name = node.getName();
    m_sid = node.getSid();
    std::size_t left = transformCount(node);
    if (left == 0) {
        return true;
    }
    m_transform.setIdentity();
    // All children in document order, like getChildren() but without a copy. Stops after the last transform.
    const daeElementRefArray& children = node.getContents();
    for (std::size_t i = 0; i < children.getCount() && left > 0; ++i) {
        if (children[i] != nullptr && accumulateTransform(*children[i])) {
            --left;
        }
    }
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
        if (children[i] != nullptr) {
            accumulateTransform(*children[i]);
        }
    }
}

// @return whether the element is a transform
bool Node::accumulateTransform(daeElement& child)
{
    const daeInt type = child.typeID();
    if (type == domTranslate::ID()) {
        accumulate<Translation>(static_cast<domTranslate&>(child));
    } else if (type == domRotate::ID()) {
        accumulate<Rotation>(static_cast<domRotate&>(child));
    } else if (type == domMatrix::ID()) {
        accumulate<Transformation>(static_cast<domMatrix&>(child));
    } else if (type == domScale::ID()) {
        accumulate<Scale>(static_cast<domScale&>(child));
    } else if (type == domLookat::ID()) {
        lookat(static_cast<domLookat&>(child).getValue());
    } else {
        return type == domSkew::ID();
    }
    return true;
}

template <class Kind, class Element>
void Node::accumulate(Element& element)
{
    const TransformationHandle transformation = TransformationHandle::make<Kind>(element.getValue(), vesk::String());
    transformation->m_sid = element.getSid();
    m_transformations.append(transformation);
    m_transform = m_transform * transformation->declaredMatrix();
}

void Node::lookat(daeTArray<double>& values)
{
    // sic: the first three numbers are both eye and interest, and up is zero, so every element of the result is NaN
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
