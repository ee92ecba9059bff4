// Any bytes as a document: loaded, walked, evaluated, folded. The mutator keeps most of them well-formed.

#include "Check.h"

#include "support/SceneWalker.h"
#include "support/TortureFolder.h"

#include <libVideo/SceneGraph/Scene.h>

#include <cstddef>
#include <cstdint>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const testSupport::TortureFolder folder; // removed when the process exits normally
    const std::string path = folder.write(std::string(reinterpret_cast<const char*>(data), size));
    libVideo::Scene scene;
    const testSupport::LoadOutcome outcome = testSupport::loadAndWalk(scene, path);
    if (!outcome.fault.empty()) {
        fuzz::fail(outcome.fault);
    }
    return 0;
}
