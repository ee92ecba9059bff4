#include "Semantic.h"

namespace libVideo::detail {

VertexSemantic semanticOf(const vesk::String& word)
{
    struct Word {
        vesk::String text;
        VertexSemantic semantic;
    };
    static const Word words[] = {
        {"POSITION", SEMANTIC_POSITION},     {"BINORMAL", SEMANTIC_BINORMAL},
        {"TEXCOORD", SEMANTIC_TEXCOORD},     {"TANGENT", SEMANTIC_TANGENT},
        {"WEIGHT", SEMANTIC_WEIGHT},         {"COLOR", SEMANTIC_COLOR},
        {"NORMAL", SEMANTIC_NORMAL},         {"INPUT", SEMANTIC_INPUT},
        {"OUTPUT", SEMANTIC_OUTPUT},         {"INTERPOLATION", SEMANTIC_INTERPOLATION},
        {"IN_TANGENT", SEMANTIC_IN_TANGENT}, {"OUT_TANGENT", SEMANTIC_OUT_TANGENT},
    };
    for (const Word& known : words) {
        if (vesk::String::compareNoCase(word, known.text) == 0) {
            return known.semantic;
        }
    }
    return SEMANTIC_UNKNOWN;
}

} // namespace libVideo::detail
