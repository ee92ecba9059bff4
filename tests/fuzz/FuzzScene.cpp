// Any bytes as a document: loaded, walked, evaluated, folded. The mutator keeps most of them well-formed.

#include "Check.h"

#include "support/DocumentChange.h"
#include "support/SceneWalker.h"

#include <libVideo/SceneGraph/Scene.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>
#include <system_error>

extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t* data, std::size_t size, std::size_t maxSize);

namespace {

// A folder with the document of the moment and one that it may refer to; it goes when the process ends by itself.
class Folder {
public:
    Folder()
    {
        std::string name = (std::filesystem::temp_directory_path() / "libVideoFuzz-XXXXXX").string();
        if (mkdtemp(name.data()) == nullptr) {
            fuzz::fail("no temporary folder");
        }
        m_path = name;
        std::filesystem::copy_file(SEED_FOLDER "/neighbour.dae", m_path / "neighbour.dae");
    }

    ~Folder()
    {
        std::error_code ignored;
        std::filesystem::remove_all(m_path, ignored);
    }

    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;

    std::string write(const std::uint8_t* data, std::size_t size) const
    {
        const std::filesystem::path document = m_path / "document.dae";
        std::ofstream file(document, std::ios::binary);
        file.write(reinterpret_cast<const char*>(data), static_cast<std::streamsize>(size));
        return document.string();
    }

private:
    std::filesystem::path m_path;
};

std::string textOf(const std::uint8_t* data, std::size_t size)
{
    return std::string(reinterpret_cast<const char*>(data), size);
}

// 0 if the text does not fit.
std::size_t putText(const std::string& text, std::uint8_t* data, std::size_t maxSize)
{
    if (text.empty() || text.size() > maxSize) {
        return 0;
    }
    std::memcpy(data, text.data(), text.size());
    return text.size();
}

} // namespace

extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size, std::size_t maxSize, unsigned seed)
{
    constexpr unsigned bytewiseOneIn = 12;
    if (seed % bytewiseOneIn != 0) {
        std::string text = textOf(data, size);
        testSupport::DocumentMutator mutator(seed);
        const std::size_t changed = mutator.mutate(text) ? putText(text, data, maxSize) : 0;
        if (changed != 0) {
            return changed;
        }
    }
    return LLVMFuzzerMutate(data, size, maxSize);
}

extern "C" std::size_t LLVMFuzzerCustomCrossOver(const std::uint8_t* first, std::size_t firstSize,
                                                 const std::uint8_t* second, std::size_t secondSize, std::uint8_t* out,
                                                 std::size_t maxSize, unsigned seed)
{
    std::string text = textOf(first, firstSize);
    testSupport::DocumentMutator mutator(seed);
    return mutator.crossOver(text, textOf(second, secondSize)) ? putText(text, out, maxSize) : 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const Folder folder;
    const std::string path = folder.write(data, size);
    libVideo::Scene scene;
    const testSupport::LoadOutcome outcome = testSupport::loadAndWalk(scene, path);
    if (!outcome.fault.empty()) {
        fuzz::fail(outcome.fault);
    }
    return 0;
}
