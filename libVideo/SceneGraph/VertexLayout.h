#pragma once

#include <libVideo/Export.h>
#include <libVideo/Fwd.h>
#include <libVideo/SceneGraph/Accessor.h>

#include <vesk/String.h>

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

/// One attribute of a vertex: what it is, and where it lies in the bytes of a vertex.
struct LIBVIDEO_API VertexLayout {
    VertexLayout() = default;
    /// All else as the default has it. Implicit, since a layout of a semantic serves as a search key.
    VertexLayout(VertexSemantic layoutSemantic) : semantic(layoutSemantic) {}

    /// Compares the semantic alone.
    bool operator==(const VertexLayout& other) const { return semantic == other.semantic; }

    VertexSemantic semantic = SEMANTIC_UNKNOWN; ///< What the attribute is.
    unsigned byteSize = 0;                      ///< bytes that the attribute takes
    unsigned byteOffset = 0;                    ///< bytes from the start of the vertex
    DataType dataType = DATA_TYPE_INVALID;      ///< What its source is made of.
    unsigned reserved = 0;                      ///< always 0
};

/// Maps the `semantic` of an input, in any case, and stores the answer in `layout.semantic` as well.
/// @return `SEMANTIC_UNKNOWN` for a word that has none
LIBVIDEO_API VertexSemantic inputSemanticToVertexSemantic(const vesk::String& semantic, VertexLayout& layout);

} // namespace libVideo
