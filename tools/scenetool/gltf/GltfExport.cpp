#include "GltfExport.h"

#include "GltfAnimations.h"
#include "GltfImages.h"
#include "GltfMaterials.h"
#include "GltfMeshes.h"
#include "GltfNodes.h"

namespace scenetool {

GltfDocument gltfOf(LoadedScene& loaded, const GltfOptions& options, ConversionNotes& notes)
{
    GltfDocument document(options.maxBytes);
    GltfImages images(document, notes, options.documentFiles);
    GltfMaterials materials(loaded, options.isPrepared, document, images, notes);
    GltfMeshes meshes(document, materials, notes);
    GltfNodes nodes(loaded, options, document, meshes, notes);
    nodes.add();
    addAnimations(loaded, options, document, nodes, notes);
    return document;
}

} // namespace scenetool
