#pragma once // SPDX-License-Identifier: MIT

namespace libVideo {

/// The role of an input, by the word in its `semantic`. The numbers are part of the interface.
enum VertexSemantic : unsigned {
    SEMANTIC_BINORMAL = 0,
    SEMANTIC_WEIGHT = 2,
    SEMANTIC_COLOR = 3,
    SEMANTIC_NORMAL = 4,
    SEMANTIC_POSITION = 5,
    SEMANTIC_TANGENT = 8,
    SEMANTIC_TEXCOORD = 9,
    SEMANTIC_INPUT = 10,         ///< times of keys
    SEMANTIC_OUTPUT = 11,        ///< values of keys
    SEMANTIC_INTERPOLATION = 12, ///< kinds of curve between keys
    SEMANTIC_IN_TANGENT = 13,
    SEMANTIC_OUT_TANGENT = 14,
    SEMANTIC_UNKNOWN = 15 ///< any other word
};

} // namespace libVideo
