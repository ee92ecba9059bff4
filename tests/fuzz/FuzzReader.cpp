// Any bytes as a document, read by the library's reader and by that of the document model, which have to agree on its tree.
// Both readers are kept, so that a document costs little more than its reading.

#include "Check.h"

#include "support/DocumentTree.h"

#include <libVideo/ColladaDom.h>
#include <libVideo/SceneGraph/document/ColladaReader.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <new>
#include <string>

namespace {

class SilentHandler : public daeErrorHandler {
public:
    SilentHandler() { setErrorHandler(this); }
    ~SilentHandler() override { setErrorHandler(nullptr); }
    void handleError(daeString /*message*/) override {}
    void handleWarning(daeString /*message*/) override {}
};

// The tree of a text; empty if the text is refused.
std::string treeOf(DAE& dae, const std::string& text)
{
    auto* const root = daeSafeCast<domCOLLADA>(dae.openFromMemory("file:/fuzz/document.dae", text.c_str()));
    std::string tree = root != nullptr ? testSupport::documentTree(dae, *root) : "";
    dae.clear();
    return tree;
}

struct Readers {
    SilentHandler silence;
    libVideo::detail::ColladaReader reader{own};
    DAE own{&reader.database(), &reader, "1.4.1"};
    DAE stock{nullptr, nullptr, "1.4.1"};
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static Readers readers;
    const std::string text(reinterpret_cast<const char*>(data), size);
    if (text.find('\0') != std::string::npos) {
        return 0; // both take the text up to there
    }
    const std::string tree = treeOf(readers.own, text);
    // What is refused may be more than the document model survives.
    if (!tree.empty() && tree != treeOf(readers.stock, text)) {
        fuzz::fail("the readers make different trees");
    }
    return 0;
}

// The document model leaves some values unset where their text is no number. Memory that is zero makes both trees equal then.
void* operator new(std::size_t size)
{
    void* const memory = std::calloc(1, size == 0 ? 1 : size);
    if (memory == nullptr) {
        throw std::bad_alloc();
    }
    return memory;
}

void* operator new(std::size_t size, const std::nothrow_t& /*tag*/) noexcept
{
    return std::calloc(1, size == 0 ? 1 : size);
}

void operator delete(void* memory) noexcept
{
    std::free(memory);
}

void operator delete(void* memory, std::size_t /*size*/) noexcept
{
    std::free(memory);
}
