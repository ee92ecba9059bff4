#pragma once // SPDX-License-Identifier: MIT

#include <libVideo/Export.h>
#include <libVideo/Handles.h>
#include <libVideo/SceneGraph/Transformation.h>

#include <libMath/Matrix.h>
#include <libMath/Vector.h>

#include <vesk/Array.h>
#include <vesk/CopiedResource.h>
#include <vesk/String.h>

namespace libVideo {

/// One element of the scene tree, read from a `<node>`: its names, parent and children, its transformations in
/// document order and one current matrix.
///
/// Matrices are row-major, points are column vectors on the right, a translation is in the fourth column. The
/// transformations T1, T2, ... Tn of a node compose to T1 · T2 · ... · Tn, so Tn acts on a point first. The meaning of
/// the current matrix depends on the last call: after a load it is local to the node, `updateTransform()` folds the
/// parent in, and `transform(double)` makes it local again.
///
/// Attributes `type` and `layer`, `<instance_node>` and `<instance_controller>` are not read.
///
/// A node owns neither its parent nor its children: the scene keeps them. Its transformations are shared by its copies.
class LIBVIDEO_API Node {
public:
    /// The identity, without names, parent, children and transformations.
    Node();
    /// Loads as `createFromCollada` does. Without any transform child the matrix is all zero, not the identity.
    explicit Node(const domNode& node);
    Node(const Node&) = default;
    Node& operator=(const Node&) = default;
    virtual ~Node();

    /// Reads `id`, `sid`, `name` and the children `<translate>`, `<rotate>`, `<scale>`, `<matrix>` and `<lookat>`. A
    /// `<skew>` has no effect. With any of these, the matrix starts from the identity; without, it is not changed. The
    /// transformations of an earlier call stay in the list. @return true
    bool createFromCollada(const domNode& node);

    /// The attributes of the element, empty where it has none.
    const vesk::String& id() const { return m_id; }
    const vesk::String& sid() const { return m_sid; }   ///< Empty without one.
    const vesk::String& name() const { return m_name; } ///< Empty without one.

    /// Empty without a parent.
    const NodeLink& parent() const { return m_parent; }
    /// Changes nothing in the parent.
    void setParent(const NodeLink& parent);
    /// In document order.
    const vesk::Array<NodeLink>& children() const { return m_children; }
    /// Changes nothing in the child.
    void addChild(const NodeLink& child);

    /// The current matrix.
    const libMath::Matrix<float, 4, 4>& transform() const { return m_transform; }
    /// Computes the local matrix of an animated node at a time in seconds, and makes it the current one. It has neither
    /// what `updateTransform` folded in nor a `<lookat>`. A node without animation keeps its current matrix. Neither
    /// parent nor children are evaluated.
    /// @throws vesk::IndexOutOfBounds if an animation's keys have too few values
    const libMath::Matrix<float, 4, 4>& transform(double time);
    /// Multiplies the current matrix by the parent's from the left, in each call again.
    const libMath::Matrix<float, 4, 4>& updateTransform();

    /// First three elements of the fourth column of the current matrix: the origin of the node.
    const libMath::Vector<float, 3> position() const;
    /// First three elements of the second column of the current matrix: the image of the Y axis, of any length.
    const libMath::Vector<float, 3> up() const;
    /// `transform(time)`, then as above.
    const libMath::Vector<float, 3> position(double time);
    const libMath::Vector<float, 3> up(double time); ///< `transform(time)`, then as `up()`.

    /// Attaches an animation to the first transformation whose `sid` is the animation's target, and replaces the one
    /// that it has.
    /// @return false, with nothing changed, if there is no such transformation
    /// @throws vesk::NullPointer if the handle is empty
    bool addAnimation(AnimationHandle animation);
    /// Whether an animation was attached.
    bool hasAnimation() const { return m_hasAnimation; }
    /// Length in seconds of the longest animation on the node, after which it repeats; 0 without any.
    double animationLength() const;

private:
    // Exported with the class; a load assigns what the document model gives.
    void setId(const vesk::String& id) { m_id = id; }
    void setSid(const vesk::String& sid) { m_sid = sid; }
    void setName(const vesk::String& name) { m_name = name; }

    void accumulateTransform(const daeTArray<daeSmartRef<daeElement>>& children);
    bool accumulateTransform(daeElement& child);
    template <class Kind, class Element>
    void accumulate(Element& element);
    void lookat(daeTArray<double>& values);
    // Exported with the class; no load calls these.
    void translate(const daeTArray<double>& values);
    void rotate(const daeTArray<double>& values);
    void scale(const daeTArray<double>& values);
    void transform(const daeTArray<double>& values);

    libMath::Matrix<float, 4, 4> m_transform;
    NodeLink m_parent;
    vesk::Array<NodeLink> m_children;
    vesk::String m_id;
    vesk::String m_sid;
    vesk::String m_name;
    bool m_hasAnimation = false;
    vesk::Array<TransformationHandle> m_transformations;
};

} // namespace libVideo
