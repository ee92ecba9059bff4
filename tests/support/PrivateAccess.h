#pragma once

/// @file
/// Reaches private members for tests: naming them in an explicit instantiation is allowed, and a friend function that
/// this instantiation defines returns the pointer.
///
///     PRIVATE_MEMBER(matrixOf, Matrix4 libVideo::Node::*, &libVideo::Node::m_transform)
///     PRIVATE_MEMBER(setId, void (libVideo::Node::*)(const vesk::String&), &libVideo::Node::setId)
///
///     matrixOf(node) = matrix;
///     setId(node, "lamp");
///
/// The type selects among overloads. A type with a comma in it needs an alias.

#include <functional>
#include <utility>

namespace testSupport {

/// Returns the private field of an object, or calls the private function.
template <class Tag>
struct PrivateMember {
    template <class... Arguments>
    constexpr decltype(auto) operator()(Arguments&&... arguments) const
    {
        return std::invoke(pointer(), std::forward<Arguments>(arguments)...);
    }
    /// The pointer to the member.
    constexpr auto pointer() const { return privateMember(Tag()); }
};

} // namespace testSupport

/// Defines `name`, which gives access to a member through a pointer of that type. Used at namespace scope.
#define PRIVATE_MEMBER(name, type, pointerToMember)                                                                    \
    struct name##Tag {                                                                                                 \
        using Type = type;                                                                                             \
        friend constexpr Type privateMember(name##Tag);                                                                \
    };                                                                                                                 \
    template <name##Tag::Type Member>                                                                                  \
    struct name##Access {                                                                                              \
        friend constexpr name##Tag::Type privateMember(name##Tag) { return Member; }                                   \
    };                                                                                                                 \
    template struct name##Access<pointerToMember>;                                                                     \
    constexpr testSupport::PrivateMember<name##Tag> name{};
