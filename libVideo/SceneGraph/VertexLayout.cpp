#include <libVideo/SceneGraph/VertexLayout.h>

namespace libVideo {

namespace {

struct SemanticWord {
    vesk::String word;
    VertexSemantic semantic;
};

} // namespace

VertexSemantic inputSemanticToVertexSemantic(const vesk::String& semantic, VertexLayout& layout)
{
    static const SemanticWord words[] = {
        {"POSITION", SEMANTIC_POSITION},     {"BINORMAL", SEMANTIC_BINORMAL},
        {"TEXCOORD", SEMANTIC_TEXCOORD},     {"TANGENT", SEMANTIC_TANGENT},
        {"WEIGHT", SEMANTIC_WEIGHT},         {"COLOR", SEMANTIC_COLOR},
        {"NORMAL", SEMANTIC_NORMAL},         {"INPUT", SEMANTIC_INPUT},
        {"OUTPUT", SEMANTIC_OUTPUT},         {"INTERPOLATION", SEMANTIC_INTERPOLATION},
        {"IN_TANGENT", SEMANTIC_IN_TANGENT}, {"OUT_TANGENT", SEMANTIC_OUT_TANGENT},
    };
    layout.semantic = SEMANTIC_UNKNOWN;
    for (const SemanticWord& known : words) {
        if (vesk::String::compareNoCase(semantic, known.word) == 0) {
            layout.semantic = known.semantic;
        }
    }
    return layout.semantic;
}

} // namespace libVideo
