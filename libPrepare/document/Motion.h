#pragma once

#include <libPrepare/document/Curve.h>
#include <libPrepare/document/Transforms.h>

namespace libPrepare {

/// The target and the curve of a `<channel>`.
struct Channel {
    pugi::xml_node element;             ///< The `<channel>`.
    pugi::xml_node target;              ///< Any element that holds numbers; of a `<source>` its `<float_array>`.
    std::optional<std::size_t> slot;    ///< The number among those of the target that it drives; all of them if absent.
    std::shared_ptr<const Curve> curve; ///< Never null.
};

/// The animations of a document: the values of elements over time. Changes of the document after the construction are
/// ignored, except for the texts of targets, which are read on each call.
class Motion {
public:
    /// @param reading of the values of the curves
    explicit Motion(Document& document, Reading reading = Reading::now);

    /// All channels with a target and keys, including those of nested animations, in document order.
    const std::vector<Channel>& channels() const { return m_channels; }
    /// The other `<channel>` elements: those without a target or without keys.
    const std::vector<pugi::xml_node>& brokenChannels() const { return m_brokenChannels; }
    /// Indices of the channels that drive an element, in document order: a later one overrides an earlier one.
    const std::vector<std::size_t>& channelsOf(pugi::xml_node element) const;
    bool isAnimated(pugi::xml_node element) const { return !channelsOf(element).empty(); }
    /// Whether one of the transforms of a `<node>` is.
    bool isNodeAnimated(pugi::xml_node node) const;

    /// The numbers of an element at a time in seconds; the declared ones without a time.
    std::vector<double> values(pugi::xml_node element, std::optional<double> time) const;
    /// As `values`, but overwrites the given declared numbers of the element, which must be complete.
    void apply(pugi::xml_node element, double time, std::vector<double>& values) const;
    /// The product of a node's transforms at a time, without its ancestors.
    Matrix4 localMatrix(pugi::xml_node node, std::optional<double> time) const;

private:
    Document& m_document;
    std::vector<Channel> m_channels;
    std::vector<pugi::xml_node> m_brokenChannels;
    std::unordered_map<std::size_t, std::vector<std::size_t>> m_byTarget;
};

/// World matrices of nodes at one time. Each is computed once.
class Pose {
public:
    /// @param time in seconds; the declared values if absent
    Pose(const Motion& motion, std::optional<double> time) : m_motion(motion), m_time(time) {}
    /// The world matrix of a `<node>`; the identity for any other element.
    const Matrix4& world(pugi::xml_node node);

private:
    const Motion& m_motion;
    std::optional<double> m_time;
    std::unordered_map<std::size_t, Matrix4> m_worlds;
};

} // namespace libPrepare
