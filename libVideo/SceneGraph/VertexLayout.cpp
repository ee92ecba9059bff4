#include <libVideo/SceneGraph/VertexLayout.h>

#include "detail/Semantic.h"

namespace libVideo {

VertexSemantic inputSemanticToVertexSemantic(const vesk::String& semantic, VertexLayout& layout)
{
    layout.semantic = detail::semanticOf(semantic);
    return layout.semantic;
}

} // namespace libVideo
