// Changes documents for libFuzzer so that most of them stay well-formed.

#include "support/DocumentChange.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>

extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t* data, std::size_t size, std::size_t maxSize);

namespace {

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
