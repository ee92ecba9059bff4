#pragma once

/// @file
/// Reaches private members for tests: naming them in an explicit instantiation is allowed, and a friend function that
/// this instantiation defines hands the pointer out.
///
///     PRIVATE_MEMBER(NodeMatrix, Matrix4 libVideo::Node::*, &libVideo::Node::m_transform)
///     PRIVATE_MEMBER(NodeSetId, void (libVideo::Node::*)(const vesk::String&), &libVideo::Node::setId)
///
///     node.*privateMember(NodeMatrix())
///     (node.*privateMember(NodeSetId()))("lamp")
///
/// The type picks one of several overloads. A type with a comma in it needs an alias.

/// Declares `tag`, and lets `privateMember(tag())` give the pointer to the member. Stands outside of any function.
#define PRIVATE_MEMBER(tag, type, pointer)                                                                             \
    struct tag {                                                                                                       \
        using Type = type;                                                                                             \
        friend Type privateMember(tag);                                                                                \
    };                                                                                                                 \
    template <tag::Type Member>                                                                                        \
    struct tag##Access {                                                                                               \
        friend tag::Type privateMember(tag) { return Member; }                                                         \
    };                                                                                                                 \
    template struct tag##Access<pointer>;
